// The two transposition tables (one for lower bounds, one for upper bounds, same slot for the
// same key) and the history counters, all allocated once at start-up.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/position.h"
#include "core/types.h"

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

// Asks the processor to fetch an entry ahead of its use: both ends, since a quarter of the
// 24-byte entries straddle two cache lines.
inline void prefetchEntry(const HashEntry& e) {
    __builtin_prefetch(&e);
    __builtin_prefetch(reinterpret_cast<const char*>(&e) + sizeof(HashEntry) - 1);
}

// Values of an entry in the empty state; 100 is no PieceCode, so an empty entry is never usable.
constexpr int8_t emptyPiece = 100;
constexpr int16_t emptyDepthLeft = -4000;
constexpr int16_t emptyStorePly = 4000;

// Search values: a side mated at distance d (eighths of a ply) scores d - mateValue; values
// within mateRange of +-mateValue are mate values. noValue stands for no value or an unbounded
// side.
constexpr int32_t mateValue = 1000000;
constexpr int32_t mateRange = 3999;
constexpr int32_t noValue = 1000000000;

// Text capacity of a principal variation: at most 31 moves of "-" and five characters, and ".".
constexpr int32_t pvTextSize = 256;

// Accepted range of hashBits: at 0 the slot shift is undefined, and from 60 on 24 * 2^n bytes
// no longer fit in 64 bits.
constexpr int64_t minHashBits = 1;
constexpr int64_t maxHashBits = 59;

// Counters of the history heuristic: index ((((toRank * 8 + toFile) * 8 + fromRank) * 8 +
// fromFile) * 6 + kind - 1) * 2 + (1 for White, 0 for Black).
constexpr size_t historySize = 8 * 8 * 8 * 8 * 6 * 2;

extern int32_t hashBits; // log2 of the entries per table; set by -hash at start-up
// One of the two tables: 2^hashBits entries, allocated at start-up, freed at exit. The same
// slot of both holds the same key's two bounds, and the two tables are interleaved in memory:
// slot i of the lower-bound table lies right beside slot i of the upper-bound table, so that a
// node reads its two entries from one or two neighbouring cache lines.
struct BoundTable {
    HashEntry* entries = nullptr; // this table's slot 0; its slots follow two entries apart
    HashEntry& operator[](size_t slot) const { return entries[2 * slot]; }
};

extern BoundTable lowerBoundTable;
extern BoundTable upperBoundTable;
extern uint32_t* historyTable; // historySize counters, allocated at start-up
extern uint8_t searchAge;      // raised by every search; 0 after clearSearchTables

// Allocates both tables with 2^hashBits entries each. Returns false when hashBits is out of
// range or an allocation fails (nothing stays allocated then).
bool allocateTranspositionTables();

// Allocates historyTable; false when that fails.
bool allocateHistoryTable();

// Frees whatever the two allocations above obtained.
void freeSearchTables();

// log2 of the entries per table for `megabytes` of tables: the largest n with two tables of
// 2^n entries (24 bytes each) within the megabytes.
int32_t hashBitsFor(int64_t megabytes);

// searchAge = 0, every entry of both tables empty (age 255), every history counter 0.
void clearSearchTables();

// Slot of a key: its top hashBits bits, the same in both tables.
inline size_t hashIndex(PositionKey key) {
    return static_cast<size_t>(key >> (64 - hashBits));
}

// Whether an entry was written for the position with this key.
inline bool entryHasKey(const HashEntry& entry, PositionKey key) {
    return entry.keyLow == static_cast<uint32_t>(key) &&
           entry.keyHigh == static_cast<uint32_t>(key >> 32);
}

// A mate value made relative to the storing node at `distance`, and back at the probing node.
int32_t toTableValue(int32_t value, int32_t distance);
int32_t fromTableValue(int32_t stored, int32_t distance);

// True when the entry belongs to this position: same key, the pieces on its move's squares are
// those it was written with, and the move is pseudo-legal for `side`.
bool usableEntry(const HashEntry& entry, PositionKey key, Position& pos, Side side);

// Writes a bound into `table` at `slot` unless the entry there is protected (written or used
// by this search, or any non-negative depth against a deep quiescence node) and better: nearer
// the root, deeper, or as deep with as tight a bound. Then an older entry of the other table
// that contradicts the new bound for the same key is invalidated.
void storeBound(const BoundTable& table, size_t slot, PositionKey key, int32_t result,
                int32_t distance, int32_t remaining, int32_t quiescenceLevel, const Move& best,
                const Position& pos);

// Makes an entry useless as a bound and unprotected; its key and move stay.
void invalidateEntry(const BoundTable& table, size_t slot);

// Longest principal variation a walk gives: one move per ply of distance up to 248.
constexpr int32_t pvMoves = 32;

// Writes into `line` (room for pvMoves) the principal variation stored from the position with
// `key`, `side` to move: each step takes the deeper of the position's two entries (the one
// stored nearer the root on equal depth) while its move is legal and was stored for the pieces
// now on its squares; at most budget / 8 moves, none once distance passes 248. Returns the
// number of moves; the position is restored.
int32_t principalVariation(PositionKey key, Position& pos, PieceLists& lists, Side side,
                           int32_t distance, int32_t budget, Move* line);

// Appends to `text` the principal variation stored from the position with `key`, `side` to
// move: "-e7e5 -g1f3 ." (each move as "-" and its five-character text), at most budget / 8
// moves, always ending with ".". The position is restored.
void walkPrincipalVariation(PositionKey key, Position& pos, PieceLists& lists, Side side,
                            int32_t distance, int32_t budget, char* text);
