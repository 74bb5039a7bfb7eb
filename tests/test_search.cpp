// The search on hand-made positions: the transposition tables and their replacement rules, the
// principal-variation walk, the threat scan, the draw, mate and futility rules of the
// alpha-beta search, the driver's shortcuts and the opening book files.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <string>
#include <unistd.h>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/position.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/alphabeta.h"
#include "search/book.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/threats.h"
#include "search/transtable.h"
#include "ui/gamestate.h"
#include "ui/record.h"

namespace {

constexpr Move e2e4 = {4, 1, 4, 3, 0};
constexpr Move d2d4 = {3, 1, 3, 3, 0};
constexpr Move e7e5 = {4, 6, 4, 4, 0};

// The start position's key: high half 0x7EE956D4, low half 0xB3FB3833.
constexpr PositionKey startKey = 0x7EE956D4B3FB3833ULL;

void noPoll(SearchControl&) {}

// A position with its companions, read from FEN.
struct Board {
    Position pos;
    PieceLists lists;
    Material material;
    PositionKey key;

    void load(const char* fen) {
        ASSERT_EQ(readFen(fen, pos), nullptr) << fen;
        derivePositionState(pos, key, lists, material);
    }
    void start() {
        setInitialPosition(pos);
        derivePositionState(pos, key, lists, material);
    }
    // Plays a move for good (the key and material follow it).
    void play(Side side, const Move& m) {
        int32_t capturedSlot = 0;
        makeMove(key, side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
                 material, capturedSlot);
    }
};

// Index of a move in a list, -1 when absent.
int32_t indexOf(const MoveList& list, int32_t lastIndex, const Move& m) {
    for (int32_t i = 0; i <= lastIndex; ++i) {
        if (sameMove(list.moves[i], m)) return i;
    }
    return -1;
}

void expectThreat(const Threat& t, int32_t value, int32_t file, int32_t rank) {
    EXPECT_EQ(t.value, value);
    EXPECT_EQ(t.file, file);
    EXPECT_EQ(t.rank, rank);
}

void expectInvalidated(const HashEntry& e) {
    EXPECT_EQ(e.depthLeft, -4000);
    EXPECT_EQ(e.storePly, 4000);
    EXPECT_EQ(e.age, static_cast<uint8_t>(searchAge - 1));
}

// Small tables, cleared before every test; a game record at the start position whose poll does
// nothing; the search settings put back afterwards.
class SearchFixture : public ::testing::Test {
protected:
    void SetUp() override {
        resetRandom();
        initPositionKeys();
        fillMaterialScale();
        savedHashBits = hashBits;
        savedFullWidth = fullWidthDepth;
        savedQuiescence = quiescenceDepth;
        savedTimeLimit = searchTimeLimit;
        savedBook = bookEnabled;
        hashBits = 12;
        ASSERT_TRUE(allocateTranspositionTables());
        ASSERT_TRUE(allocateHistoryTable());
        clearSearchTables();
        resetGameState(game);
        game.search.pollFunction = noPoll;
        game.search.StopFlag = 0;
        game.search.searchStartTime = static_cast<int32_t>(std::time(nullptr));
        searchRunning = 1;
        pollCountdown = pollInterval;
        searchTimeLimit = 0;
    }
    void TearDown() override {
        freeSearchTables();
        hashBits = savedHashBits;
        fullWidthDepth = savedFullWidth;
        quiescenceDepth = savedQuiescence;
        searchTimeLimit = savedTimeLimit;
        bookEnabled = savedBook;
        searchRunning = 0;
    }

    // alphaBetaWithMemory on the board with the moves generateMoves makes for `side` (mode 0,
    // or -1 for captures only).
    int32_t search(Side side, int32_t depthLimit, int32_t testBound, int32_t distance,
                   ThreatKind moveThreat, int32_t mode = allMoves) {
        MoveList moves;
        const int32_t last = generateMoves(side, moves, board.pos, board.lists, mode);
        return alphaBetaWithMemory(game.search, board.key, depthLimit, board.material, testBound,
                                   distance, moveThreat, side, moves, last, board.pos, board.lists);
    }

    // runSearch over the legal moves of `side`, its standard output captured.
    int32_t drive(Side side, std::string& output) {
        MoveList moves;
        const int32_t last = generateLegalMoves(side, moves, board.pos, allMoves);
        std::fflush(stdout);
        ::testing::internal::CaptureStdout();
        const int32_t chosen = runSearch(game.search, side, moves, last, board.pos, 0, 0, 0);
        std::fflush(stdout);
        output = ::testing::internal::GetCapturedStdout();
        return chosen;
    }

    // The game's key history: keyCount entries of keys that no position here has, so that
    // only the keys a test puts in can repeat.
    void fillHistory(int32_t keyCount, int32_t fiftyMoveCounter) {
        for (int32_t i = 0; i <= keyCount; ++i)
            game.search.keyHistory[i] = 0x1000 + static_cast<PositionKey>(i);
        game.search.keyCount = keyCount;
        game.search.fiftyMoveCounter = fiftyMoveCounter;
    }

    GameState game;
    Board board;
    int32_t savedHashBits = 0;
    int32_t savedFullWidth = 0;
    int32_t savedQuiescence = 0;
    int32_t savedTimeLimit = 0;
    int32_t savedBook = 0;
};

class SearchTables : public SearchFixture {};
class SearchThreatScan : public SearchFixture {};
class SearchDraws : public SearchFixture {};
class SearchLeafValues : public SearchFixture {};
class SearchDriverShortcuts : public SearchFixture {};

// Book tests run in a scratch directory of their own, since the file names are fixed.
class SearchBook : public SearchFixture {
protected:
    void SetUp() override {
        SearchFixture::SetUp();
        ASSERT_NE(getcwd(oldDirectory, sizeof oldDirectory), nullptr);
        std::strcpy(scratch, "/tmp/kovrel-book-XXXXXX");
        ASSERT_NE(mkdtemp(scratch), nullptr);
        ASSERT_EQ(chdir(scratch), 0);
    }
    void TearDown() override {
        std::remove("openings.txt");
        std::remove("openings.dat");
        EXPECT_EQ(chdir(oldDirectory), 0);
        rmdir(scratch);
        SearchFixture::TearDown();
    }

    static void writeFile(const char* name, const std::string& text) {
        FILE* f = std::fopen(name, "w");
        ASSERT_NE(f, nullptr);
        std::fputs(text.c_str(), f);
        std::fclose(f);
    }
    static std::string readFile(const char* name) {
        std::string text;
        FILE* f = std::fopen(name, "r");
        if (f == nullptr) return "<missing>";
        for (int c = std::fgetc(f); c != EOF; c = std::fgetc(f))
            text += static_cast<char>(c);
        std::fclose(f);
        return text;
    }
    static std::string buildBook(const std::string& source) {
        writeFile("openings.txt", source);
        std::fflush(stdout);
        ::testing::internal::CaptureStdout();
        createBook();
        std::fflush(stdout);
        return ::testing::internal::GetCapturedStdout();
    }
    // One book line: the key's halves, the mark and the move.
    static std::string record(PositionKey key, int32_t mark, const Move& m) {
        char line[128];
        std::snprintf(line, sizeof line, "%lu %lu %d %d %d %d %d %d\n",
                      static_cast<unsigned long>(key >> 32),
                      static_cast<unsigned long>(key & 0xFFFFFFFFu), mark, m.fromFile, m.fromRank,
                      m.toFile, m.toRank, m.promotion);
        return line;
    }
    // probeBook over the legal moves of `side` in the board's position, in generation order.
    int32_t probe(Side side, MoveList& moves, int32_t& last) {
        last = generateLegalMoves(side, moves, board.pos, allMoves);
        for (int32_t i = 0; i <= last; ++i)
            order[i] = i;
        return probeBook(board.key, side, moves, order, last);
    }

    char oldDirectory[4096] = {};
    char scratch[64] = {};
    int32_t order[maxMoves] = {};
};

// ---------------------------------------------------------------------------------------------
// Transposition tables

TEST_F(SearchTables, ClearedTablesHoldOnlyEmptyUnprotectedEntries) {
    searchAge = 7;
    historyTable[123] = 5;
    clearSearchTables();
    EXPECT_EQ(searchAge, 0);
    const size_t entries = size_t{1} << hashBits;
    for (size_t i = 0; i < entries; ++i) {
        for (const BoundTable& table : {lowerBoundTable, upperBoundTable}) {
            const HashEntry& e = table[i];
            ASSERT_EQ(e.age, 255) << i; // searchAge - 1 as a byte
            ASSERT_EQ(e.movedPiece, 100) << i;
            ASSERT_EQ(e.targetPiece, 100) << i;
            ASSERT_EQ(e.depthLeft, -4000) << i;
            ASSERT_EQ(e.storePly, 4000) << i;
            ASSERT_EQ(e.keyLow | e.keyHigh | static_cast<uint32_t>(e.value), 0u) << i;
        }
    }
    for (size_t i = 0; i < historySize; ++i)
        ASSERT_EQ(historyTable[i], 0u) << i;

    // An empty entry is never usable: not for its own key 0 (100 is no piece), nor for the
    // start position whose slot it occupies.
    board.start();
    EXPECT_FALSE(usableEntry(lowerBoundTable[0], 0, board.pos, white));
    EXPECT_FALSE(usableEntry(lowerBoundTable[hashIndex(board.key)], board.key, board.pos, white));
    EXPECT_FALSE(usableEntry(upperBoundTable[hashIndex(board.key)], board.key, board.pos, white));

    // Unprotected: even the shallowest result from far down the tree replaces it.
    storeBound(lowerBoundTable, 5, board.key, 2, 400, -100, 2, e2e4, board.pos);
    EXPECT_EQ(lowerBoundTable[5].storePly, 400);
    EXPECT_EQ(lowerBoundTable[5].depthLeft, -100);
}

TEST_F(SearchTables, MateValuesAreStoredRelativeToTheNode) {
    // Mate 40 eighths from the root, seen from a node at distance 16: 24 eighths away there.
    EXPECT_EQ(toTableValue(1000000 - 40, 16), 1000000 - 24);
    // Read back at distance 8: 32 eighths from the root.
    EXPECT_EQ(fromTableValue(1000000 - 24, 8), 1000000 - 32);
    // The losing side's view, mirrored.
    EXPECT_EQ(toTableValue(-(1000000 - 40), 16), -(1000000 - 24));
    EXPECT_EQ(fromTableValue(-(1000000 - 24), 8), -(1000000 - 32));
    // 996000 lies 4000 from the mate value: an ordinary value, unchanged both ways.
    EXPECT_EQ(toTableValue(996000, 16), 996000);
    EXPECT_EQ(fromTableValue(996000, 8), 996000);
    EXPECT_EQ(toTableValue(-996000, 16), -996000);
    EXPECT_EQ(fromTableValue(-996000, 8), -996000);
    // 996001 is within 3999 of the mate value.
    EXPECT_EQ(toTableValue(996001, 16), 996017);
    EXPECT_EQ(fromTableValue(-996001, 8), -995993);
    EXPECT_EQ(toTableValue(0, 16), 0);
}

TEST_F(SearchTables, ProtectedEntryKeepsAnEqualOrDeeperBound) {
    board.start();
    const size_t slot = hashIndex(board.key);
    storeBound(lowerBoundTable, slot, board.key, 100, 8, 16, 0, e2e4, board.pos);
    const HashEntry& lower = lowerBoundTable[slot];
    EXPECT_EQ(lower.keyHigh, 0x7EE956D4u);
    EXPECT_EQ(lower.keyLow, 0xB3FB3833u);
    EXPECT_EQ(lower.value, 100);
    EXPECT_EQ(lower.age, 0);
    EXPECT_EQ(lower.movedPiece, 1); // a white pawn on e2
    EXPECT_EQ(lower.targetPiece, 0);
    EXPECT_EQ(lower.depthLeft, 16);
    EXPECT_EQ(lower.storePly, 8);

    // The same lower bound, depth, key and age: nothing written (the move stays e2e4).
    storeBound(lowerBoundTable, slot, board.key, 100, 8, 16, 0, d2d4, board.pos);
    EXPECT_EQ(lower.fromFile, 4);
    // A shallower result does not replace a deeper one.
    storeBound(lowerBoundTable, slot, board.key, 500, 8, 8, 0, d2d4, board.pos);
    EXPECT_EQ(lower.fromFile, 4);
    EXPECT_EQ(lower.value, 100);
    // A higher lower bound is tighter and replaces it.
    storeBound(lowerBoundTable, slot, board.key, 102, 8, 16, 0, d2d4, board.pos);
    EXPECT_EQ(lower.value, 102);
    EXPECT_EQ(lower.fromFile, 3);

    // The upper-bound table the other way round: only a lower upper bound is tighter.
    const HashEntry& upper = upperBoundTable[slot];
    storeBound(upperBoundTable, slot, board.key, 200, 8, 16, 0, e2e4, board.pos);
    storeBound(upperBoundTable, slot, board.key, 200, 8, 16, 0, d2d4, board.pos);
    EXPECT_EQ(upper.fromFile, 4);
    storeBound(upperBoundTable, slot, board.key, 198, 8, 16, 0, d2d4, board.pos);
    EXPECT_EQ(upper.value, 198);
    EXPECT_EQ(upper.fromFile, 3);
}

TEST_F(SearchTables, EntryNearerTheRootStaysUntilTheSearchMovesOn) {
    board.start();
    const size_t slot = hashIndex(board.key);
    const HashEntry& e = lowerBoundTable[slot];
    storeBound(lowerBoundTable, slot, board.key, 100, 8, 8, 0, e2e4, board.pos);

    // Distance 16 in the same search: not written, however deep.
    storeBound(lowerBoundTable, slot, board.key, 300, 16, 200, 0, d2d4, board.pos);
    EXPECT_EQ(e.value, 100);
    EXPECT_EQ(e.storePly, 8);
    EXPECT_EQ(e.depthLeft, 8);

    // The next search: the entry is old, but a deep quiescence node (level 2) still leaves an
    // entry of depth 0 or more alone, and this one was written nearer the root.
    searchAge = 1;
    storeBound(lowerBoundTable, slot, board.key, 300, 16, -8, 2, d2d4, board.pos);
    EXPECT_EQ(e.value, 100);
    EXPECT_EQ(e.age, 0);

    // Any other node replaces the old entry, even a shallower one from farther down.
    storeBound(lowerBoundTable, slot, board.key, 300, 16, 0, 1, d2d4, board.pos);
    EXPECT_EQ(e.value, 300);
    EXPECT_EQ(e.storePly, 16);
    EXPECT_EQ(e.depthLeft, 0);
    EXPECT_EQ(e.age, 1);
    EXPECT_EQ(e.fromFile, 3);
}

TEST_F(SearchTables, ContradictingBoundOfTheSameKeyIsInvalidated) {
    board.start();
    const PositionKey key = board.key;
    const size_t slot = hashIndex(key);
    const HashEntry& lower = lowerBoundTable[slot];
    const HashEntry& upper = upperBoundTable[slot];

    storeBound(upperBoundTable, slot, key, 50, 8, 16, 0, e2e4, board.pos);
    // A lower bound below the upper bound agrees with it.
    storeBound(lowerBoundTable, slot, key, 40, 8, 16, 0, d2d4, board.pos);
    EXPECT_EQ(upper.depthLeft, 16);
    // A lower bound above it: the upper-bound entry is freed, keeping key, value and move.
    storeBound(lowerBoundTable, slot, key, 60, 8, 16, 0, d2d4, board.pos);
    expectInvalidated(upper);
    EXPECT_EQ(upper.value, 50);
    EXPECT_EQ(upper.keyLow, static_cast<uint32_t>(key));
    EXPECT_EQ(upper.fromFile, 4);
    EXPECT_EQ(lower.depthLeft, 16);

    // The other way round: a new upper bound below the stored lower bound frees the latter.
    clearSearchTables();
    storeBound(lowerBoundTable, slot, key, 60, 8, 16, 0, d2d4, board.pos);
    storeBound(upperBoundTable, slot, key, 50, 8, 16, 0, e2e4, board.pos);
    expectInvalidated(lower);
    EXPECT_EQ(upper.depthLeft, 16);

    // An entry of another key in the slot (the low bit differs, the slot is the same) stays.
    clearSearchTables();
    storeBound(upperBoundTable, slot, key ^ 1, 50, 8, 16, 0, e2e4, board.pos);
    storeBound(lowerBoundTable, slot, key, 60, 8, 16, 0, d2d4, board.pos);
    EXPECT_EQ(upper.depthLeft, 16);
    EXPECT_EQ(upper.storePly, 8);
}

TEST_F(SearchTables, UsableEntryChecksKeyPiecesAndPseudoLegality) {
    board.start();
    const size_t slot = hashIndex(board.key);
    storeBound(lowerBoundTable, slot, board.key, 100, 8, 16, 0, e2e4, board.pos);
    const HashEntry entry = lowerBoundTable[slot];
    EXPECT_TRUE(usableEntry(entry, board.key, board.pos, white));

    // Another key, in either half.
    EXPECT_FALSE(usableEntry(entry, board.key ^ 1, board.pos, white));
    EXPECT_FALSE(usableEntry(entry, board.key ^ (PositionKey{1} << 40), board.pos, white));
    // The piece on the from-square or the to-square is not the one written.
    HashEntry changed = entry;
    changed.movedPiece = 2;
    EXPECT_FALSE(usableEntry(changed, board.key, board.pos, white));
    changed = entry;
    changed.targetPiece = -1;
    EXPECT_FALSE(usableEntry(changed, board.key, board.pos, white));
    // Pieces as written, but e2e5 is no pawn move; nor is e2e4 a move for Black.
    changed = entry;
    changed.toRank = 4;
    EXPECT_FALSE(usableEntry(changed, board.key, board.pos, white));
    EXPECT_FALSE(usableEntry(entry, board.key, board.pos, black));
}

TEST_F(SearchTables, WalkShowsTheStoredMovesAndEndsWithAFullStop) {
    board.start();
    const Position startPos = board.pos;
    const PositionKey startKeyHere = board.key;
    ASSERT_EQ(startKeyHere, startKey);
    char text[pvTextSize] = "";
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, ".");

    // e2e4 stored for the start position, e7e5 for the position after it.
    storeBound(lowerBoundTable, hashIndex(board.key), board.key, 10, 8, 16, 0, e2e4, board.pos);
    Board afterE4 = board;
    afterE4.play(white, e2e4);
    ASSERT_NE(hashIndex(afterE4.key), hashIndex(startKeyHere));
    storeBound(lowerBoundTable, hashIndex(afterE4.key), afterE4.key, -10, 16, 8, 0, e7e5,
               afterE4.pos);

    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, "-e2e4 -e7e5 .");
    EXPECT_EQ(std::memcmp(&board.pos, &startPos, sizeof startPos), 0);

    // A budget of one ply shows one move.
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 8, text);
    EXPECT_STREQ(text, "-e2e4 .");
    // Beyond distance 248 nothing is shown.
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 256, 248, text);
    EXPECT_STREQ(text, ".");
}

TEST_F(SearchTables, WalkChoosesTheDeeperEntryThenTheOneNearerTheRoot) {
    board.start();
    const size_t slot = hashIndex(board.key);
    char text[pvTextSize] = "";
    // The upper-bound entry is deeper.
    storeBound(lowerBoundTable, slot, board.key, 10, 8, 8, 0, e2e4, board.pos);
    storeBound(upperBoundTable, slot, board.key, 20, 8, 16, 0, d2d4, board.pos);
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, "-d2d4 .");

    // Equally deep: the lower-bound entry unless it was written farther from the root.
    clearSearchTables();
    storeBound(lowerBoundTable, slot, board.key, 10, 16, 16, 0, e2e4, board.pos);
    storeBound(upperBoundTable, slot, board.key, 20, 8, 16, 0, d2d4, board.pos);
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, "-d2d4 .");
    clearSearchTables();
    storeBound(lowerBoundTable, slot, board.key, 10, 8, 16, 0, e2e4, board.pos);
    storeBound(upperBoundTable, slot, board.key, 20, 16, 16, 0, d2d4, board.pos);
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, "-e2e4 .");
}

TEST_F(SearchTables, WalkStopsAtAnIllegalMoveOrANegativeDepth) {
    // The white rook on e2 is pinned by the rook on e8: Re2-a2 leaves the king in check.
    board.load("4r1k1/8/8/8/8/8/4R3/4K3 w - - 0 1");
    const Position before = board.pos;
    const size_t slot = hashIndex(board.key);
    const Move e2a2 = {4, 1, 0, 1, 0};
    const Move e2e8 = {4, 1, 4, 7, 0};
    char text[pvTextSize] = "";
    storeBound(lowerBoundTable, slot, board.key, 10, 8, 16, 0, e2a2, board.pos);
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, ".");
    EXPECT_EQ(std::memcmp(&board.pos, &before, sizeof before), 0);

    // Along the pin line the rook may move: Rxe8 is shown (deeper, so it replaces e2a2).
    storeBound(lowerBoundTable, slot, board.key, 10, 8, 24, 0, e2e8, board.pos);
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, "-e2e8 .");
    EXPECT_EQ(std::memcmp(&board.pos, &before, sizeof before), 0);

    // The same entry invalidated, or written by a quiescence node: the walk stops at once.
    invalidateEntry(lowerBoundTable, slot);
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, ".");
    searchAge = 1; // an older entry: always replaced
    storeBound(lowerBoundTable, slot, board.key, 10, 8, -8, 2, e2e8, board.pos);
    ASSERT_EQ(lowerBoundTable[slot].depthLeft, -8);
    text[0] = '\0';
    walkPrincipalVariation(board.key, board.pos, board.lists, white, 8, 248, text);
    EXPECT_STREQ(text, ".");
}

// ---------------------------------------------------------------------------------------------
// Threat scan. Threat values: victim's worth minus attacker's worth / 128 (pawn 7, knight and
// bishop 23, rook 39, queen 70).

TEST_F(SearchThreatScan, KnightForkOfKingAndRook) {
    // Ng5-f7 attacks the king on h8 and the rook on d8.
    board.load("3r3k/5N2/8/8/8/8/8/4K3 b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 6, 4, 5, 6), 2);
    expectThreat(directThreat, 12000 - 23, 7, 7);
    expectThreat(secondThreat, 5000 - 23, 3, 7);
    expectThreat(discoveredThreat, 0, -1, -1);
}

TEST_F(SearchThreatScan, PawnAdvanceUncoversTheBishop) {
    // d4-d5 opens the diagonal b2-f6 from the white bishop to the black queen.
    board.load("k7/8/5q2/3P4/8/8/1B6/7K b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 3, 3, 3, 4), 1);
    expectThreat(discoveredThreat, 9000 - 23, 5, 5);
    expectThreat(directThreat, 0, -1, -1);
    expectThreat(secondThreat, 0, -1, -1);

    // With a black knight on c6 the pawn on d5 attacks it as well.
    board.load("k7/8/2n2q2/3P4/8/8/1B6/7K b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 3, 3, 3, 4), 1);
    expectThreat(discoveredThreat, 9000 - 23, 5, 5);
    expectThreat(directThreat, 3000 - 7, 2, 5);
    expectThreat(secondThreat, 0, -1, -1);
}

TEST_F(SearchThreatScan, SecondDiscoveredThreatIsStoredNegative) {
    // Nd4-b3 uncovers the bishop on b2 against the queen on f6 and the rook on d1 against the
    // rook on d8; the smaller one is the runner-up, negated as a discovered threat.
    board.load("3r3k/8/5q2/8/8/1N6/1B6/3R3K b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 3, 3, 1, 2), 1);
    expectThreat(discoveredThreat, 9000 - 23, 5, 5);
    expectThreat(secondThreat, -(5000 - 39), 3, 7);
    expectThreat(directThreat, 0, -1, -1);
}

TEST_F(SearchThreatScan, RookMovingAlongTheFileUncoversNothingOnIt) {
    // Re4-e2 along the e-file of the white queen on e1 and the black rook on e8: the rook now
    // attacks e8 itself, but nothing is discovered on the file it ran along.
    board.load("4r2k/8/8/8/8/8/4R3/K3Q3 b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 4, 3, 4, 1), 1);
    expectThreat(discoveredThreat, 0, -1, -1);
    expectThreat(directThreat, 5000 - 39, 4, 7);
    expectThreat(secondThreat, 0, -1, -1);

    // Re2-b2 leaves the file: the queen on e1 now attacks the rook on e8.
    board.load("4r2k/8/8/8/8/8/1R6/K3Q3 b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 4, 1, 1, 1), 1);
    expectThreat(discoveredThreat, 5000 - 70, 4, 7);
    expectThreat(directThreat, 0, -1, -1);
}

TEST_F(SearchThreatScan, KingMoveOnlyDiscovers) {
    // Ke2-d3 stands next to a black knight (no direct threat from a king) and opens the e-file
    // from the rook on e1 to the queen on e8.
    board.load("4q2k/8/8/8/2n5/3K4/8/4R3 b - - 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 4, 1, 3, 2), 1);
    expectThreat(discoveredThreat, 9000 - 39, 4, 7);
    expectThreat(directThreat, 0, -1, -1);
    expectThreat(secondThreat, 0, -1, -1);
}

TEST_F(SearchThreatScan, QuietMoveResetsAllRecords) {
    discoveredThreat = {5, 1, 1};
    directThreat = {6, 2, 2};
    secondThreat = {-7, 3, 3};
    // 1. e4: the pawn attacks the empty d5 and f5; nothing is uncovered.
    board.load("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1");
    EXPECT_EQ(threatScan(board.pos, white, 4, 1, 4, 3), 0);
    expectThreat(discoveredThreat, 0, -1, -1);
    expectThreat(directThreat, 0, -1, -1);
    expectThreat(secondThreat, 0, -1, -1);
}

// ---------------------------------------------------------------------------------------------
// Draw tests of the search

TEST_F(SearchDraws, TooLittleMaterialIsADrawAtOnce) {
    fullWidthDepth = 16;
    // King and bishop against a bare king, either side to move, either test bound.
    board.load("8/8/8/4k3/8/8/8/3BK3 w - - 0 1");
    const size_t slot = hashIndex(board.key);
    int64_t nodes = nodeCount;
    EXPECT_EQ(search(white, 16, 1, 8, 0), 0);
    EXPECT_EQ(search(white, 16, -1, 8, 0), 0);
    EXPECT_EQ(nodeCount, nodes + 2); // one node per call, nothing beyond
    EXPECT_EQ(lowerBoundTable[slot].movedPiece, 100);
    EXPECT_EQ(upperBoundTable[slot].movedPiece, 100);
    // King and knight on the black side, black to move.
    board.load("8/8/8/3nk3/8/8/8/4K3 b - - 0 1");
    nodes = nodeCount;
    EXPECT_EQ(search(black, 16, 1, 8, 0), 0);
    EXPECT_EQ(nodeCount, nodes + 1);

    // King and three pawns also make 15000 but are played on; so are a minor piece each.
    board.load("8/8/8/4k3/8/8/PPP5/4K3 w - - 0 1");
    nodes = nodeCount;
    search(white, 16, 1, 8, 0);
    EXPECT_GT(nodeCount, nodes + 1);
    board.load("8/8/8/3nk3/8/8/8/3BK3 w - - 0 1");
    nodes = nodeCount;
    search(white, 16, 1, 8, 0);
    EXPECT_GT(nodeCount, nodes + 1);
}

// King and queen against king, white to move: searched, the value is far above 1.
constexpr const char* queenUp = "4k3/8/8/8/8/8/8/3QK3 w - - 0 1";

TEST_F(SearchDraws, ThirdOccurrenceIsADraw) {
    fullWidthDepth = 16;
    board.load(queenUp);
    const size_t slot = hashIndex(board.key);
    // Entries of another key in the node's slot, to see that nothing is written.
    storeBound(lowerBoundTable, slot, board.key ^ 1, 0, 8, 0, 0, d2d4, board.pos);
    storeBound(upperBoundTable, slot, board.key ^ 1, 0, 8, 0, 0, d2d4, board.pos);

    // keyCount 8 is the parent's key; with 8 plies since the last capture or pawn move the
    // positions with White to move are entries 1, 3, 5 and 7.
    fillHistory(8, 8);
    game.search.keyHistory[3] = board.key;
    game.search.keyHistory[7] = board.key;
    const int64_t nodes = nodeCount;
    EXPECT_EQ(search(white, 16, 1, 8, 0), 0);
    EXPECT_EQ(nodeCount, nodes + 1);
    EXPECT_EQ(lowerBoundTable[slot].depthLeft, 0);
    EXPECT_EQ(upperBoundTable[slot].depthLeft, 0);
    EXPECT_EQ(game.search.keyCount, 8);

    // A counter of 5 is rounded down to 4: entries 5 and 7.
    fillHistory(8, 5);
    game.search.keyHistory[5] = board.key;
    game.search.keyHistory[7] = board.key;
    EXPECT_EQ(search(white, 16, 1, 8, 0), 0);
}

TEST_F(SearchDraws, RepetitionsOutsideTheWindowDoNotCount) {
    fullWidthDepth = 16;
    board.load(queenUp);
    // 4 plies since the last capture or pawn move: only entries 5 and 7 are compared, so the
    // key in entry 3 is too old.
    fillHistory(8, 4);
    game.search.keyHistory[3] = board.key;
    game.search.keyHistory[7] = board.key;
    int64_t nodes = nodeCount;
    EXPECT_GT(search(white, 16, 1, 8, 0), 1);
    EXPECT_GT(nodeCount, nodes + 1);

    // Entries 4 and 6 are positions with Black to move.
    clearSearchTables();
    fillHistory(8, 8);
    game.search.keyHistory[4] = board.key;
    game.search.keyHistory[6] = board.key;
    nodes = nodeCount;
    EXPECT_GT(search(white, 16, 1, 8, 0), 1);
    EXPECT_GT(nodeCount, nodes + 1);
    EXPECT_EQ(game.search.keyCount, 8);
    EXPECT_EQ(game.search.fiftyMoveCounter, 8);
}

TEST_F(SearchDraws, SecondOccurrenceIsSearchedButLeavesBothSlotsInvalidated) {
    fullWidthDepth = 16;
    board.load(queenUp);
    const size_t slot = hashIndex(board.key);

    // First the ordinary case: the node's lower bound is stored in its slot.
    fillHistory(8, 8);
    EXPECT_GT(search(white, 16, 1, 8, 0), 1);
    EXPECT_EQ(lowerBoundTable[slot].keyLow, static_cast<uint32_t>(board.key));
    EXPECT_EQ(lowerBoundTable[slot].depthLeft, 8);
    EXPECT_EQ(lowerBoundTable[slot].storePly, 8);

    // Seen once before: searched, then both entries of the slot are freed, whatever their key.
    clearSearchTables();
    storeBound(lowerBoundTable, slot, board.key ^ 1, 0, 8, 0, 0, d2d4, board.pos);
    storeBound(upperBoundTable, slot, board.key ^ 1, 0, 8, 0, 0, d2d4, board.pos);
    fillHistory(8, 8);
    game.search.keyHistory[7] = board.key;
    const int64_t nodes = nodeCount;
    EXPECT_GT(search(white, 16, 1, 8, 0), 1);
    EXPECT_GT(nodeCount, nodes + 1);
    expectInvalidated(lowerBoundTable[slot]);
    expectInvalidated(upperBoundTable[slot]);
    EXPECT_EQ(game.search.keyCount, 8);
}

TEST_F(SearchDraws, FiftyMovesComeBeforeTheTables) {
    fullWidthDepth = 16;
    board.load(queenUp);
    const size_t slot = hashIndex(board.key);
    // A deep stored lower bound of 5000 (Qd1-d7 as its move) would answer the node at once.
    const Move d1d7 = {3, 0, 3, 6, 0};
    storeBound(lowerBoundTable, slot, board.key, 5000, 8, 100, 0, d1d7, board.pos);
    searchAge = 5;

    fillHistory(100, 100);
    EXPECT_EQ(search(white, 16, 1, 8, 0), 0);
    EXPECT_EQ(lowerBoundTable[slot].age, 0); // not even looked at

    fillHistory(100, 99);
    EXPECT_EQ(search(white, 16, 1, 8, 0), 5000);
    EXPECT_EQ(lowerBoundTable[slot].age, 5); // used, so refreshed
}

// ---------------------------------------------------------------------------------------------
// Mate, stalemate and futility

TEST_F(SearchLeafValues, MateAndStalemate) {
    fullWidthDepth = 16;
    // Back-rank mate: Black's pawn moves all leave the king on g8 in check.
    board.load("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1");
    const size_t slot = hashIndex(board.key);
    EXPECT_EQ(search(black, 40, -1, 24, 2), 24 - 1000000);
    EXPECT_EQ(lowerBoundTable[slot].movedPiece, 100); // nothing stored
    EXPECT_EQ(upperBoundTable[slot].movedPiece, 100);
    // Also deep in quiescence (remaining depth -8), with the captures only.
    EXPECT_EQ(search(black, 16, -1, 24, 2, capturesOnly), 24 - 1000000);

    // Stalemate: the king on a8 has no square, and Black has nothing else.
    board.load("k7/2Q5/1K6/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(search(black, 40, -1, 24, 0), 0); // remaining depth 16
    EXPECT_EQ(search(black, 24, 1, 24, 0), 0);  // remaining depth 0: level 1
    EXPECT_EQ(search(black, 17, 1, 24, 0), 0);  // remaining depth -7: level 1
    // Remaining depth -8: level 2, where no move means no capture, not stalemate.
    EXPECT_EQ(search(black, 16, -1, 24, 0), -1000000000);

    // No capture in the start position at level 2.
    board.start();
    EXPECT_EQ(search(white, 0, -1, 8, 0, capturesOnly), -1000000000);
}

// White has a bare king (two quiet king moves, Ka1-b1 and Ka1-b2) against queen and rook.
constexpr const char* farBehind = "7k/7r/8/3q4/8/8/8/K7 w - - 0 1";

TEST_F(SearchLeafValues, FutilityPrunesQuietMovesNearTheHorizon) {
    // Iteration depth 8: the child depth limit is at least 4. A quiet king move that threatens
    // nothing is reduced by 3: depth limit 10 gives the child 7, and 7 <= distance 8 < 15.
    fullWidthDepth = 8;
    board.load(farBehind);
    MoveList moves;
    ASSERT_EQ(generateMoves(white, moves, board.pos, board.lists, allMoves), 1);

    int64_t nodes = nodeCount;
    // Down a queen and a rook the static value is far below -1 - 6000.
    EXPECT_EQ(search(white, 10, -1, 8, 0), -1 - 6001);
    // The node and its own static evaluation; no child visited or evaluated.
    EXPECT_EQ(nodeCount, nodes + 2);

    // Depth limit 13: the child gets 10, and 10 - 8 <= 8 < 10: the two-ply margin of 12000.
    clearSearchTables();
    nodes = nodeCount;
    EXPECT_EQ(search(white, 13, -1, 8, 0), -1 - 12001);
    EXPECT_EQ(nodeCount, nodes + 2);

    // A test bound far below the static value: the moves are looked at.
    clearSearchTables();
    nodes = nodeCount;
    const int32_t value = search(white, 10, -2000001, 8, 0);
    EXPECT_GT(value, -2000001);
    EXPECT_NE(value, -2000001 - 6001);
    EXPECT_GT(nodeCount, nodes + 2);
}

// ---------------------------------------------------------------------------------------------
// En passant is a capture of a pawn wherever the search asks what a move takes

// Black has just played d7-d5 beside White's pawn on e5; nothing can retake on d6.
constexpr const char* enPassantOpen = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";
constexpr Move e5d6 = {4, 4, 3, 5, 0};

TEST_F(SearchLeafValues, EnPassantIsOrderedAsACaptureInDeepQuiescence) {
    board.load(enPassantOpen);
    // Victim pawn 1000 × 128 less the mover pawn 1000.
    EXPECT_EQ(captureOrderScore(board.pos, white, e5d6), 127000);
}

TEST_F(SearchLeafValues, EnPassantGetsTheOrderingsCaptureTerm) {
    board.load(enPassantOpen);
    MoveList moves;
    const int32_t last = generateMoves(white, moves, board.pos, board.lists, allMoves);
    int32_t identity[maxMoves];
    int64_t scores[maxMoves];
    bool pending[maxMoves];
    int32_t at = -1;
    for (int32_t i = 0; i <= last; ++i) {
        identity[i] = i;
        if (sameMove(moves.moves[i], e5d6)) at = i;
    }
    ASSERT_GE(at, 0);
    NodeAttacks attacks;
    const Ordering o = scoreMoves(board.key, board.material, 1, 8, 16, white, moves, last, identity,
                                  0, noValue, scores, pending, attacks, board.pos, board.lists);
    EXPECT_FALSE(o.cutoff);
    if (pending[at])
        scores[at] += exchangeTerm(board.key, board.material, white, e5d6, board.pos, board.lists);
    // Empty tables and history: (2 × 1000 + exchange 0) × 2048 − 1000 × 32.
    EXPECT_EQ(scores[at], 4064000);
}

TEST_F(SearchLeafValues, EnPassantIsNeverPrunedAsAQuietMove) {
    // White's king on a1 has no square (rook b8, queen h2) and the e-pawn is blocked: exd6 is
    // White's only move, far behind. A quiet move here is pruned (see the test above); a
    // capture is searched.
    fullWidthDepth = 8;
    board.load("1r5k/8/4b3/3pP3/8/8/7q/K7 w - d6 0 1");
    MoveList moves;
    ASSERT_EQ(generateMoves(white, moves, board.pos, board.lists, allMoves), 0);
    const int64_t nodes = nodeCount;
    EXPECT_NE(search(white, 10, -1, 8, 0), -1 - 6001);
    EXPECT_GT(nodeCount, nodes + 2);
}

// ---------------------------------------------------------------------------------------------
// Driver shortcuts

// White: Ka1, Pe4, Nh1 against Ke8 and a hanging queen on d5. The knight has the highest list
// slot, so its moves come first; exd5 wins the queen and is the best move by static score.
constexpr const char* hangingQueen = "4k3/8/8/3q4/4P3/8/8/K6N w - - 0 1";
constexpr Move e4d5 = {4, 3, 3, 4, 0};

TEST_F(SearchDriverShortcuts, SingleLegalMoveIsReturnedWithoutSearch) {
    bookEnabled = 0;
    fullWidthDepth = 24;
    // Kh1 with the black rook on the second rank: only Kg1.
    board.load("k7/8/8/8/8/8/r7/7K w - - 0 1");
    MoveList moves;
    ASSERT_EQ(generateLegalMoves(white, moves, board.pos, allMoves), 0);
    std::string output;
    EXPECT_EQ(drive(white, output), 0);
    EXPECT_EQ(output.rfind("current best-first move list with respective evaluation:\nh1g1 =", 0),
              0u)
        << output;
    EXPECT_NE(output.find("- time for this move: ? sec -"), std::string::npos);
    EXPECT_EQ(output.find("new iteration"), std::string::npos) << output;
    EXPECT_EQ(fullWidthDepth, 24);
}

TEST_F(SearchDriverShortcuts, OnePlyWithoutTimeLimitPlaysTheStaticBest) {
    bookEnabled = 0;
    fullWidthDepth = 8;
    searchTimeLimit = 0;
    board.load(hangingQueen);
    MoveList moves;
    const int32_t last = generateLegalMoves(white, moves, board.pos, allMoves);
    const int32_t capture = indexOf(moves, last, e4d5);
    ASSERT_GT(capture, 0);
    std::string output;
    EXPECT_EQ(drive(white, output), capture);
    EXPECT_EQ(output.rfind("current best-first move list with respective evaluation:\ne4d5 =", 0),
              0u)
        << output;
    EXPECT_EQ(output.find("new iteration"), std::string::npos) << output;
    EXPECT_EQ(fullWidthDepth, 8);

    // Two plies (and a time limit of -1000, so that the clock refuses the next iteration):
    // one iteration is searched and reported.
    fullWidthDepth = 16;
    searchTimeLimit = -1000;
    EXPECT_EQ(drive(white, output), capture);
    EXPECT_NE(output.find("new iteration with depth 2\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("new iteration with depth 3"), std::string::npos) << output;
    EXPECT_EQ(fullWidthDepth, 16);
    EXPECT_EQ(searchTimeLimit, -1000);
}

// ---------------------------------------------------------------------------------------------
// Opening book

TEST_F(SearchBook, SourceGivesOneRecordPerMove) {
    const std::string output = buildBook("new white e4 e5 new black d4\n");
    EXPECT_EQ(output, "processing file...\nopenings book created in \"openings.dat\"\n");
    board.start();
    Board afterE4 = board;
    afterE4.play(white, e2e4);
    ASSERT_EQ(afterE4.key, computeKey(afterE4.pos));
    EXPECT_EQ(readFile("openings.dat"), "2129221332 3019585587 1 4 1 4 3 0\n" +
                                            record(afterE4.key, 1, e7e5) +
                                            "2129221332 3019585587 -1 3 1 3 3 0\n");
}

TEST_F(SearchBook, MovesOfLostGamesAreNeverPlayed) {
    buildBook("new white e4 e5 new black d4\n");
    MoveList moves;
    int32_t last = 0;
    // White at the start: e4 from a won game (1 x 1), never d4 (-1 x 1).
    board.start();
    for (int32_t i = 0; i < 50; ++i) {
        const int32_t chosen = probe(white, moves, last);
        ASSERT_GE(chosen, 0);
        ASSERT_TRUE(sameMove(moves.moves[chosen], e2e4)) << i;
    }
    // The index is that of the move list, whatever the order array: reversed here.
    for (int32_t i = 0; i <= last; ++i)
        order[i] = last - i;
    EXPECT_EQ(probeBook(board.key, white, moves, order, last), indexOf(moves, last, e2e4));

    // Black after 1. e4: e5 comes from a game White won (1 x -1): no book move.
    board.play(white, e2e4);
    EXPECT_EQ(probe(black, moves, last), noBookMove);
}

TEST_F(SearchBook, EquallyMarkedMovesAreChosenUniformly) {
    board.start();
    writeFile("openings.dat", record(board.key, 1, e2e4) + record(board.key, 1, d2d4));
    MoveList moves;
    int32_t last = 0;
    int32_t e4Count = 0;
    int32_t d4Count = 0;
    for (int32_t i = 0; i < 400; ++i) {
        const int32_t chosen = probe(white, moves, last);
        ASSERT_GE(chosen, 0);
        e4Count += sameMove(moves.moves[chosen], e2e4);
        d4Count += sameMove(moves.moves[chosen], d2d4);
    }
    EXPECT_EQ(e4Count + d4Count, 400);
    // About 200 each; a band of 30 to 70 percent.
    EXPECT_GE(e4Count, 120);
    EXPECT_GE(d4Count, 120);
}

TEST_F(SearchBook, CommentsAndUnknownTokensAreEchoed) {
    std::string output = buildBook("#opening lines of a test\nnew white e4 Zz9 e5\n");
    // The comment's first token is not repeated; the rest of its line is.
    EXPECT_NE(output.find("# lines of a test\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("#opening"), std::string::npos) << output;
    EXPECT_NE(output.find("Zz9 "), std::string::npos) << output;
    // The unknown token changes nothing: e5 is still Black's reply to e4.
    board.start();
    board.play(white, e2e4);
    EXPECT_EQ(readFile("openings.dat"),
              "2129221332 3019585587 1 4 1 4 3 0\n" + record(board.key, 1, e7e5));

    // A 200-character token is cut to 49 characters and echoed once; e4 still follows it.
    const std::string longToken(200, 'x');
    output = buildBook("new white " + longToken + " e4\n");
    EXPECT_NE(output.find(std::string(49, 'x') + " "), std::string::npos) << output;
    EXPECT_EQ(output.find(std::string(50, 'x')), std::string::npos) << output;
    EXPECT_EQ(readFile("openings.dat"), "2129221332 3019585587 1 4 1 4 3 0\n");
    // A 200-character comment line is cut as well.
    output = buildBook("# " + std::string(200, 'y') + "\nnew white e4\n");
    EXPECT_NE(output.find("# " + std::string(48, 'y') + "\n"), std::string::npos) << output;
    EXPECT_EQ(output.find(std::string(49, 'y')), std::string::npos) << output;
}

TEST_F(SearchBook, DriverAsksTheBookFirst) {
    game.search.output = SearchOutput::xboard; // no static list
    fullWidthDepth = 8;
    searchTimeLimit = 0;
    bookEnabled = 1;
    board.start();
    writeFile("openings.dat", record(board.key, 1, d2d4));
    MoveList moves;
    int32_t last = generateLegalMoves(white, moves, board.pos, allMoves);
    std::string output;
    EXPECT_EQ(drive(white, output), indexOf(moves, last, d2d4));
    EXPECT_EQ(output, "");

    // An empty book names no move: the search goes on to its shortcut, the static best.
    board.load(hangingQueen);
    last = generateLegalMoves(white, moves, board.pos, allMoves);
    writeFile("openings.dat", "");
    int32_t probeLast = 0;
    EXPECT_EQ(probe(white, moves, probeLast), noBookMove);
    EXPECT_EQ(drive(white, output), indexOf(moves, last, e4d5));
    EXPECT_EQ(output, "");

    // A missing book: the error line and the first move of the list, not the static best.
    std::remove("openings.dat");
    EXPECT_EQ(probe(white, moves, probeLast), bookMissing);
    EXPECT_EQ(drive(white, output), 0);
    EXPECT_EQ(output, "Error (fopen(\"openings.dat\", \"rt\")): mtdriver\n");
}

} // namespace
