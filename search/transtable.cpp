#include "search/transtable.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "core/attacks.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"

int32_t hashBits = 18;
BoundTable lowerBoundTable;
BoundTable upperBoundTable;
uint32_t* historyTable = nullptr;
uint8_t searchAge = 0;

static size_t tableEntries() {
    return static_cast<size_t>(1) << hashBits;
}

// The tables are read at random places all through the search, so each probe would also miss
// the processor's page translation cache with small pages. They are aligned to 2 MiB and the
// system is asked for large pages where it has them; elsewhere they are plain blocks.
static HashEntry* allocateTable(size_t bytes) {
    constexpr size_t largePage = size_t{1} << 21;
    if (bytes > SIZE_MAX - largePage) return nullptr;
    const size_t rounded = (bytes + largePage - 1) / largePage * largePage;
    void* table = std::aligned_alloc(largePage, rounded);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (table != nullptr) madvise(table, rounded, MADV_HUGEPAGE);
#endif
    return static_cast<HashEntry*>(table);
}

bool allocateTranspositionTables() {
    if (hashBits < minHashBits || hashBits > maxHashBits) return false;
    // Beyond what an address can count, the allocation fails as a too large one would.
    if (tableEntries() > SIZE_MAX / (2 * sizeof(HashEntry))) return false;
    HashEntry* both = allocateTable(2 * sizeof(HashEntry) * tableEntries());
    if (both == nullptr) return false;
    lowerBoundTable.entries = both;
    upperBoundTable.entries = both + 1;
    return true;
}

bool allocateHistoryTable() {
    historyTable = static_cast<uint32_t*>(std::malloc(sizeof(uint32_t) * historySize));
    return historyTable != nullptr;
}

void freeSearchTables() {
    std::free(lowerBoundTable.entries);
    std::free(historyTable);
    lowerBoundTable.entries = nullptr;
    upperBoundTable.entries = nullptr;
    historyTable = nullptr;
}

static void emptyEntry(HashEntry& e) {
    e.keyLow = 0;
    e.keyHigh = 0;
    e.value = 0;
    e.age = static_cast<uint8_t>(searchAge - 1);
    e.fromFile = 0;
    e.fromRank = 0;
    e.toFile = 0;
    e.toRank = 0;
    e.promotion = 0;
    e.movedPiece = emptyPiece;
    e.targetPiece = emptyPiece;
    e.depthLeft = emptyDepthLeft;
    e.storePly = emptyStorePly;
}

void clearSearchTables() {
    searchAge = 0;
    const size_t entries = tableEntries();
    for (size_t i = 0; i < entries; ++i) {
        emptyEntry(lowerBoundTable[i]);
        emptyEntry(upperBoundTable[i]);
    }
    for (size_t i = 0; i < historySize; ++i)
        historyTable[i] = 0;
}

static bool isMateValue(int32_t v) {
    return v >= 0 ? mateValue - v <= mateRange : v + mateValue <= mateRange;
}

int32_t toTableValue(int32_t value, int32_t distance) {
    if (!isMateValue(value)) return value;
    return value >= 0 ? value + distance : value - distance;
}

int32_t fromTableValue(int32_t stored, int32_t distance) {
    if (!isMateValue(stored)) return stored;
    return stored >= 0 ? stored - distance : stored + distance;
}

static PositionKey entryKey(const HashEntry& e) {
    return (static_cast<PositionKey>(e.keyHigh) << 32) | e.keyLow;
}

static Move entryMove(const HashEntry& e) {
    return Move{e.fromFile, e.fromRank, e.toFile, e.toRank, e.promotion};
}

bool usableEntry(const HashEntry& entry, PositionKey key, Position& pos, Side side) {
    if (entryKey(entry) != key) return false;
    const Move m = entryMove(entry);
    if (!onBoard(m.fromFile, m.fromRank) || !onBoard(m.toFile, m.toRank)) return false;
    if (entry.movedPiece != pos.squares[squareIndex(m.fromFile, m.fromRank)]) return false;
    if (entry.targetPiece != pos.squares[squareIndex(m.toFile, m.toRank)]) return false;
    return isPseudoLegalMove(pos, side, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion) !=
           0;
}

void invalidateEntry(const BoundTable& table, size_t slot) {
    HashEntry& e = table[slot];
    e.depthLeft = emptyDepthLeft;
    e.storePly = emptyStorePly;
    e.age = static_cast<uint8_t>(searchAge - 1);
}

void storeBound(const BoundTable& table, size_t slot, PositionKey key, int32_t result,
                int32_t distance, int32_t remaining, int32_t quiescenceLevel, const Move& best,
                const Position& pos) {
    HashEntry& e = table[slot];
    const bool lowerTable = table.entries == lowerBoundTable.entries;
    const int32_t stored = toTableValue(result, distance);
    const bool isProtected = e.age == searchAge || (quiescenceLevel == 2 && e.depthLeft >= 0);
    if (isProtected) {
        if (e.storePly < distance) return; // written nearer the root
        if (e.depthLeft > remaining) return;
        if (e.depthLeft == remaining && entryKey(e) == key &&
            (lowerTable ? e.value >= stored : e.value <= stored))
            return; // as deep, and the bound already stored is as tight
    }
    e.keyLow = static_cast<uint32_t>(key);
    e.keyHigh = static_cast<uint32_t>(key >> 32);
    e.value = stored;
    e.age = searchAge;
    e.fromFile = static_cast<int8_t>(best.fromFile);
    e.fromRank = static_cast<int8_t>(best.fromRank);
    e.toFile = static_cast<int8_t>(best.toFile);
    e.toRank = static_cast<int8_t>(best.toRank);
    e.promotion = static_cast<int8_t>(best.promotion);
    e.movedPiece = static_cast<int8_t>(pos.squares[squareIndex(best.fromFile, best.fromRank)]);
    e.targetPiece = static_cast<int8_t>(pos.squares[squareIndex(best.toFile, best.toRank)]);
    e.depthLeft = static_cast<int16_t>(remaining);
    e.storePly = static_cast<int16_t>(distance);

    // The fresh bound wins over a contradicting one of the same position in the other table.
    const HashEntry& lower = lowerBoundTable[slot];
    const HashEntry& upper = upperBoundTable[slot];
    const BoundTable& other = lowerTable ? upperBoundTable : lowerBoundTable;
    if (lower.value > upper.value && entryKey(other[slot]) == key) invalidateEntry(other, slot);
}

int32_t principalVariation(PositionKey key, Position& pos, PieceLists& lists, Side side,
                           int32_t distance, int32_t budget, Move* line) {
    if (budget < 1 || distance > 248) return 0;
    const size_t slot = hashIndex(key);
    const HashEntry& lower = lowerBoundTable[slot];
    const HashEntry& upper = upperBoundTable[slot];
    const bool lowerTakesPart = entryKey(lower) == key;
    const bool upperTakesPart = entryKey(upper) == key;
    const HashEntry* chosen = nullptr;
    if (lowerTakesPart && upperTakesPart) {
        if (lower.depthLeft != upper.depthLeft) {
            chosen = lower.depthLeft > upper.depthLeft ? &lower : &upper;
        } else {
            chosen = lower.storePly > upper.storePly ? &upper : &lower;
        }
    } else if (lowerTakesPart) {
        chosen = &lower;
    } else if (upperTakesPart) {
        chosen = &upper;
    }
    if (chosen == nullptr || chosen->depthLeft < 0) return 0;

    // The stored move must be legal here: one the generator makes, not leaving the king
    // attacked.
    const Move m = entryMove(*chosen);
    if (!onBoard(m.fromFile, m.fromRank) || !onBoard(m.toFile, m.toRank) ||
        !isPseudoLegalMove(pos, side, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion))
        return 0;
    const PieceCode moved = pos.squares[squareIndex(m.fromFile, m.fromRank)];
    const PieceCode target = pos.squares[squareIndex(m.toFile, m.toRank)];
    const int32_t whiteCastling = pos.whiteCastling;
    const int32_t blackCastling = pos.blackCastling;
    const int32_t enPassant = pos.enPassant;
    PositionKey childKey = key;
    Material scratch = {{0, 0}};
    int32_t capturedSlot = 0;
    makeMove(childKey, side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
             scratch, capturedSlot);
    const bool legal = isSquareSafe(pos, side, -1, 0) != 0;
    int32_t length = 0;
    if (legal && chosen->movedPiece == moved && chosen->targetPiece == target) {
        line[0] = m;
        length =
            1 + principalVariation(childKey, pos, lists, -side, distance + 8, budget - 8, line + 1);
    }
    unmakeMove(side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion, target,
               capturedSlot);
    pos.whiteCastling = whiteCastling;
    pos.blackCastling = blackCastling;
    pos.enPassant = enPassant;
    return length;
}

void walkPrincipalVariation(PositionKey key, Position& pos, PieceLists& lists, Side side,
                            int32_t distance, int32_t budget, char* text) {
    Move line[pvMoves];
    const int32_t length = principalVariation(key, pos, lists, side, distance, budget, line);
    size_t at = std::strlen(text);
    for (int32_t i = 0; i < length; ++i) {
        text[at] = '-';
        std::memcpy(text + at + 1, moveText(line[i]).text, 6);
        at += 6;
    }
    text[at] = '.';
    text[at + 1] = '\0';
}

int32_t hashBitsFor(int64_t megabytes) {
    const uint64_t bytes = static_cast<uint64_t>(megabytes) << 20;
    int32_t bits = static_cast<int32_t>(minHashBits);
    while (bits < maxHashBits && 2 * sizeof(HashEntry) * (uint64_t{1} << (bits + 1)) <= bytes)
        ++bits;
    return bits;
}
