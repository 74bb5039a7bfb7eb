#include "search/transtable.h"

#include <cstdlib>

int32_t hashBits = 18;
HashEntry* lowerBoundTable = nullptr;
HashEntry* upperBoundTable = nullptr;
uint32_t* historyTable = nullptr;
uint8_t searchAge = 0;

static size_t tableEntries() {
    return static_cast<size_t>(1) << hashBits;
}

bool allocateTranspositionTables() {
    if (hashBits < minHashBits || hashBits > maxHashBits) return false;
    const size_t bytes = sizeof(HashEntry) * tableEntries();
    lowerBoundTable = static_cast<HashEntry*>(std::malloc(bytes));
    upperBoundTable = static_cast<HashEntry*>(std::malloc(bytes));
    if (lowerBoundTable != nullptr && upperBoundTable != nullptr) return true;
    std::free(lowerBoundTable);
    std::free(upperBoundTable);
    lowerBoundTable = nullptr;
    upperBoundTable = nullptr;
    return false;
}

bool allocateHistoryTable() {
    historyTable = static_cast<uint32_t*>(std::malloc(sizeof(uint32_t) * historySize));
    return historyTable != nullptr;
}

void freeSearchTables() {
    std::free(lowerBoundTable);
    std::free(upperBoundTable);
    std::free(historyTable);
    lowerBoundTable = nullptr;
    upperBoundTable = nullptr;
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
