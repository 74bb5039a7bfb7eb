// The two transposition tables (one for lower bounds, one for upper bounds, same slot for the
// same key) and the history counters, all allocated once at start-up.
#pragma once

#include <cstddef>
#include <cstdint>

// One table entry, 24 bytes:
//   keyLow, keyHigh   the PositionKey of the position, low and high halves
//   value             the bound, in table form (mate values made relative to the storing node)
//   age               searchAge of the search that wrote the entry or last used it
//   fromFile .. promotion  the best move, one byte per Move field
//   movedPiece        PieceCode on the move's from-square when written (100: empty entry)
//   targetPiece       PieceCode on its to-square when written, 0 if empty (100: empty entry)
//   depthLeft         remaining depth of the search that produced the bound, in eighths of a
//                     ply; negative in quiescence; -4000 in an empty or invalidated entry
//   storePly          distance from the root of the writing node, in eighths; 4000 when empty
struct HashEntry {
    uint32_t keyLow;
    uint32_t keyHigh;
    int32_t value;
    uint8_t age;
    int8_t fromFile;
    int8_t fromRank;
    int8_t toFile;
    int8_t toRank;
    int8_t promotion;
    int8_t movedPiece;
    int8_t targetPiece;
    int16_t depthLeft;
    int16_t storePly;
};
static_assert(sizeof(HashEntry) == 24, "a table entry is 24 bytes");

// Values of an entry in the empty state; 100 is no PieceCode, so an empty entry is never usable.
constexpr int8_t emptyPiece = 100;
constexpr int16_t emptyDepthLeft = -4000;
constexpr int16_t emptyStorePly = 4000;

// Accepted range of hashBits: at 0 the slot shift is undefined, and from 60 on 24 * 2^n bytes
// no longer fit in 64 bits.
constexpr int64_t minHashBits = 1;
constexpr int64_t maxHashBits = 59;

// Counters of the history heuristic: index ((((toRank * 8 + toFile) * 8 + fromRank) * 8 +
// fromFile) * 6 + kind - 1) * 2 + (1 for White, 0 for Black).
constexpr size_t historySize = 8 * 8 * 8 * 8 * 6 * 2;

extern int32_t hashBits;           // log2 of the entries per table; set by -hash at start-up
extern HashEntry* lowerBoundTable; // 2^hashBits entries, allocated at start-up, freed at exit
extern HashEntry* upperBoundTable; // same size; the same slot holds the same key's other bound
extern uint32_t* historyTable;     // historySize counters, allocated at start-up
extern uint8_t searchAge;          // raised by every search; 0 after clearSearchTables

// Allocates both tables with 2^hashBits entries each. Returns false when hashBits is out of
// range or an allocation fails (nothing stays allocated then).
bool allocateTranspositionTables();

// Allocates historyTable; false when that fails.
bool allocateHistoryTable();

// Frees whatever the two allocations above obtained.
void freeSearchTables();

// searchAge = 0, every entry of both tables empty (age 255), every history counter 0.
void clearSearchTables();
