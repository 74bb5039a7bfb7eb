// The search on hand-made positions: the transposition tables and their replacement rules, the
// principal-variation walk, the threat scan, the draw, mate and futility rules of the
// alpha-beta search, the driver's shortcuts, pondering's credit and the opening book files.
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <unistd.h>

#include "core/movegen.h"
#include "eval/evaluate.h"
#include "helpers.h"
#include "search/alphabeta.h"
#include "search/book.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/threats.h"
#include "search/transtable.h"
#include "ui/gamestate.h"
#include "ui/record.h"

namespace {

const Move e2e4 = mv("e2e4");
const Move d2d4 = mv("d2d4");
const Move e7e5 = mv("e7e5");

// The start position's key as a book line writes it: high half, low half.
const std::string startKeyText = "2129221332 3019585587";

void noPoll(SearchControl&) {}

// Small tables, cleared before every test; a game record at the start position whose poll does
// nothing; the search settings put back afterwards.
class Search : public ::testing::Test {
protected:
    void SetUp() override {
        freshKeys();
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
        hashBits = saved[0];
        fullWidthDepth = saved[1];
        quiescenceDepth = saved[2];
        searchTimeLimit = saved[3];
        bookEnabled = saved[4];
        searchRunning = 0;
    }

    // alphaBetaWithMemory on the board with the moves generateMoves makes for `side`.
    int32_t search(Side side, int32_t depthLimit, int32_t testBound, int32_t distance,
                   ThreatKind moveThreat, int32_t mode = allMoves) {
        MoveList moves;
        const int32_t last = generateMoves(side, moves, board.pos, board.lists, mode);
        return alphaBetaWithMemory(game.search, board.key, depthLimit, board.material, testBound,
                                   distance, moveThreat, side, moves, last, board.pos, board.lists);
    }
    // The node count a call of search adds.
    int64_t nodesOf(Side side, int32_t depthLimit, int32_t testBound, int32_t& value) {
        const int64_t before = nodeCount;
        value = search(side, depthLimit, testBound, 8, 0);
        return nodeCount - before;
    }

    // runSearch over the legal moves of `side`, its standard output kept.
    int32_t drive(Side side, std::string& output, int32_t ponderTime = 0) {
        MoveList moves;
        const int32_t last = generateLegalMoves(side, moves, board.pos, allMoves);
        int32_t chosen = 0;
        output = captureStdout([&] {
            chosen = runSearch(game.search, side, moves, last, board.pos, 0, ponderTime, 0);
        });
        return chosen;
    }

    // The game's key history: keyCount entries that no position here has, so that only the keys
    // a test puts in can repeat.
    void fillHistory(int32_t keyCount, int32_t fiftyMoveCounter) {
        for (int32_t i = 0; i <= keyCount; ++i)
            game.search.keyHistory[i] = 0x1000 + static_cast<PositionKey>(i);
        game.search.keyCount = keyCount;
        game.search.fiftyMoveCounter = fiftyMoveCounter;
    }

    // A bound for the board's position (or `key`) in its slot of `table`.
    void store(HashEntry* table, int32_t value, int32_t ply, int32_t depth, int32_t level,
               const Move& m, PositionKey key = 0) {
        storeBound(table, hashIndex(board.key), key ? key : board.key, value, ply, depth, level, m,
                   board.pos);
    }
    HashEntry& lower() { return lowerBoundTable[hashIndex(board.key)]; }
    HashEntry& upper() { return upperBoundTable[hashIndex(board.key)]; }

    // The principal variation shown from the board's position.
    std::string pv(int32_t distance = 8, int32_t budget = 248) {
        const Position before = board.pos;
        char text[pvTextSize] = "";
        walkPrincipalVariation(board.key, board.pos, board.lists, white, distance, budget, text);
        EXPECT_EQ(std::memcmp(&board.pos, &before, sizeof before), 0);
        return text;
    }

    GameState game;
    Board board;
    int32_t saved[5] = {hashBits, fullWidthDepth, quiescenceDepth, searchTimeLimit, bookEnabled};
};

void expectInvalidated(const HashEntry& e) {
    EXPECT_EQ(e.depthLeft, -4000);
    EXPECT_EQ(e.storePly, 4000);
    EXPECT_EQ(e.age, static_cast<uint8_t>(searchAge - 1));
}

// ---- transposition tables -----------------------------------------------------------------------

TEST_F(Search, ClearedTablesHoldOnlyEmptyUnprotectedEntries) {
    searchAge = 7;
    historyTable[123] = 5;
    clearSearchTables();
    EXPECT_EQ(searchAge, 0);
    for (size_t i = 0; i < (size_t{1} << hashBits); ++i) {
        for (const HashEntry* table : {lowerBoundTable, upperBoundTable}) {
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
    // Never usable: not for its own key 0 (100 is no piece), nor for the start position.
    EXPECT_FALSE(usableEntry(lowerBoundTable[0], 0, board.pos, white));
    EXPECT_FALSE(usableEntry(lower(), board.key, board.pos, white));
    EXPECT_FALSE(usableEntry(upper(), board.key, board.pos, white));
    // Unprotected: even the shallowest result from far down the tree replaces it.
    storeBound(lowerBoundTable, 5, board.key, 2, 400, -100, 2, e2e4, board.pos);
    EXPECT_EQ(lowerBoundTable[5].storePly, 400);
    EXPECT_EQ(lowerBoundTable[5].depthLeft, -100);
}

// A mate is stored as its distance from the storing node and read back from the reading one;
// values 4000 or more from a mate are ordinary.
TEST_F(Search, MateValuesAreStoredRelativeToTheNode) {
    const int32_t cases[][4] = {
        // value, distance when stored, table value, the value read back at distance 8
        {1000000 - 40, 16, 1000000 - 24, 1000000 - 32},
        {-(1000000 - 40), 16, -(1000000 - 24), -(1000000 - 32)},
        {996000, 16, 996000, 996000},
        {-996000, 16, -996000, -996000},
        {996001, 16, 996017, 996009},
        {-996001, 16, -996017, -996009},
        {0, 16, 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(toTableValue(c[0], c[1]), c[2]) << c[0];
        EXPECT_EQ(fromTableValue(c[2], 8), c[3]) << c[0];
    }
}

TEST_F(Search, ProtectedEntryKeepsAnEqualOrDeeperBound) {
    store(lowerBoundTable, 100, 8, 16, 0, e2e4);
    EXPECT_EQ(lower().keyHigh, 0x7EE956D4u);
    EXPECT_EQ(lower().keyLow, 0xB3FB3833u);
    EXPECT_EQ(lower().value, 100);
    EXPECT_EQ(lower().age, 0);
    EXPECT_EQ(lower().movedPiece, 1); // a white pawn on e2
    EXPECT_EQ(lower().targetPiece, 0);
    EXPECT_EQ(lower().depthLeft, 16);
    EXPECT_EQ(lower().storePly, 8);
    store(lowerBoundTable, 100, 8, 16, 0, d2d4); // the same bound: nothing written
    store(lowerBoundTable, 500, 8, 8, 0, d2d4);  // shallower: nothing written
    EXPECT_EQ(lower().fromFile, 4);
    EXPECT_EQ(lower().value, 100);
    store(lowerBoundTable, 102, 8, 16, 0, d2d4); // a higher lower bound is tighter
    EXPECT_EQ(lower().value, 102);
    EXPECT_EQ(lower().fromFile, 3);
    // The upper-bound table the other way round.
    store(upperBoundTable, 200, 8, 16, 0, e2e4);
    store(upperBoundTable, 200, 8, 16, 0, d2d4);
    EXPECT_EQ(upper().fromFile, 4);
    store(upperBoundTable, 198, 8, 16, 0, d2d4);
    EXPECT_EQ(upper().value, 198);
    EXPECT_EQ(upper().fromFile, 3);
}

TEST_F(Search, EntryNearerTheRootStaysUntilTheSearchMovesOn) {
    store(lowerBoundTable, 100, 8, 8, 0, e2e4);
    store(lowerBoundTable, 300, 16, 200, 0, d2d4); // same search, farther down: not written
    EXPECT_EQ(lower().value, 100);
    EXPECT_EQ(lower().storePly, 8);
    EXPECT_EQ(lower().depthLeft, 8);
    // The next search: a deep quiescence node (level 2) still leaves an entry of depth 0 or more
    // alone; any other node replaces it, even a shallower one from farther down.
    searchAge = 1;
    store(lowerBoundTable, 300, 16, -8, 2, d2d4);
    EXPECT_EQ(lower().value, 100);
    EXPECT_EQ(lower().age, 0);
    store(lowerBoundTable, 300, 16, 0, 1, d2d4);
    EXPECT_EQ(lower().value, 300);
    EXPECT_EQ(lower().storePly, 16);
    EXPECT_EQ(lower().depthLeft, 0);
    EXPECT_EQ(lower().age, 1);
    EXPECT_EQ(lower().fromFile, 3);
}

TEST_F(Search, ContradictingBoundOfTheSameKeyIsInvalidated) {
    store(upperBoundTable, 50, 8, 16, 0, e2e4);
    store(lowerBoundTable, 40, 8, 16, 0, d2d4); // below the upper bound: agrees
    EXPECT_EQ(upper().depthLeft, 16);
    // Above it: the upper-bound entry is freed, keeping key, value and move.
    store(lowerBoundTable, 60, 8, 16, 0, d2d4);
    expectInvalidated(upper());
    EXPECT_EQ(upper().value, 50);
    EXPECT_EQ(upper().keyLow, static_cast<uint32_t>(board.key));
    EXPECT_EQ(upper().fromFile, 4);
    EXPECT_EQ(lower().depthLeft, 16);
    // The other way round.
    clearSearchTables();
    store(lowerBoundTable, 60, 8, 16, 0, d2d4);
    store(upperBoundTable, 50, 8, 16, 0, e2e4);
    expectInvalidated(lower());
    EXPECT_EQ(upper().depthLeft, 16);
    // An entry of another key in the slot (the low bit differs) stays.
    clearSearchTables();
    store(upperBoundTable, 50, 8, 16, 0, e2e4, board.key ^ 1);
    store(lowerBoundTable, 60, 8, 16, 0, d2d4);
    EXPECT_EQ(upper().depthLeft, 16);
    EXPECT_EQ(upper().storePly, 8);
}

TEST_F(Search, UsableEntryChecksKeyPiecesAndPseudoLegality) {
    store(lowerBoundTable, 100, 8, 16, 0, e2e4);
    const HashEntry entry = lower();
    EXPECT_TRUE(usableEntry(entry, board.key, board.pos, white));
    EXPECT_FALSE(usableEntry(entry, board.key ^ 1, board.pos, white));
    EXPECT_FALSE(usableEntry(entry, board.key ^ (PositionKey{1} << 40), board.pos, white));
    EXPECT_FALSE(usableEntry(entry, board.key, board.pos, black)); // e2e4 is no move for Black
    // Another piece on the from- or to-square than written; e2e5 is no pawn move.
    for (const auto change :
         {+[](HashEntry& e) { e.movedPiece = 2; }, +[](HashEntry& e) { e.targetPiece = -1; },
          +[](HashEntry& e) { e.toRank = 4; }}) {
        HashEntry changed = entry;
        change(changed);
        EXPECT_FALSE(usableEntry(changed, board.key, board.pos, white));
    }
}

TEST_F(Search, WalkShowsTheStoredMovesAndEndsWithAFullStop) {
    EXPECT_EQ(pv(), ".");
    // e2e4 stored for the start position, e7e5 for the position after it.
    store(lowerBoundTable, 10, 8, 16, 0, e2e4);
    Board afterE4 = board;
    afterE4.play(white, e2e4);
    ASSERT_NE(hashIndex(afterE4.key), hashIndex(board.key));
    storeBound(lowerBoundTable, hashIndex(afterE4.key), afterE4.key, -10, 16, 8, 0, e7e5,
               afterE4.pos);
    EXPECT_EQ(pv(), "-e2e4 -e7e5 .");
    EXPECT_EQ(pv(8, 8), "-e2e4 ."); // a budget of one ply
    EXPECT_EQ(pv(256), ".");        // beyond distance 248 nothing is shown
}

// The deeper of the two entries, equally deep the lower bound unless it was written farther
// from the root.
TEST_F(Search, WalkChoosesTheDeeperEntryThenTheOneNearerTheRoot) {
    const int32_t cases[][4] = {
        // ply and depth of the lower bound (e2e4), of the upper bound (d2d4); the move shown
        {8, 8, 8, 16},
        {16, 16, 8, 16},
        {8, 16, 16, 16}};
    const char* shown[] = {"-d2d4 .", "-d2d4 .", "-e2e4 ."};
    for (int32_t i = 0; i < 3; ++i) {
        clearSearchTables();
        store(lowerBoundTable, 10, cases[i][0], cases[i][1], 0, e2e4);
        store(upperBoundTable, 20, cases[i][2], cases[i][3], 0, d2d4);
        EXPECT_EQ(pv(), shown[i]) << i;
    }
}

TEST_F(Search, WalkStopsAtAnIllegalMoveOrANegativeDepth) {
    // The rook on e2 is pinned by the rook on e8: Re2-a2 leaves the king in check.
    board = Board("4r1k1/8/8/8/8/8/4R3/4K3 w - - 0 1");
    store(lowerBoundTable, 10, 8, 16, 0, mv("e2a2"));
    EXPECT_EQ(pv(), ".");
    // Along the pin line the rook may move: Rxe8 is shown (deeper, so it replaces e2a2).
    store(lowerBoundTable, 10, 8, 24, 0, mv("e2e8"));
    EXPECT_EQ(pv(), "-e2e8 .");
    // The same entry invalidated, or written by a quiescence node: the walk stops at once.
    invalidateEntry(lowerBoundTable, hashIndex(board.key));
    EXPECT_EQ(pv(), ".");
    searchAge = 1; // an older entry: always replaced
    store(lowerBoundTable, 10, 8, -8, 2, mv("e2e8"));
    ASSERT_EQ(lower().depthLeft, -8);
    EXPECT_EQ(pv(), ".");
}

// ---- threat scan --------------------------------------------------------------------------------

// What White's move attacks: the largest direct threat, the runner-up (negated when discovered)
// and the discovered one, each the victim's worth less the attacker's / 128 (pawn 7, minor 23,
// rook 39, queen 70). A king threatens nothing directly; a piece moving along a line uncovers
// nothing on it. Earlier records are reset.
TEST_F(Search, ThreatScan) {
    const struct {
        const char* fen;
        const char* move;
        int32_t result;
        Threat discovered, direct, second;
    } cases[] = {
        {"3r3k/5N2/8/8/8/8/8/4K3 b - - 0 1",
         "g5f7",
         2,
         {0, -1, -1},
         {12000 - 23, 7, 7},
         {5000 - 23, 3, 7}},
        {"k7/8/5q2/3P4/8/8/1B6/7K b - - 0 1",
         "d4d5",
         1,
         {9000 - 23, 5, 5},
         {0, -1, -1},
         {0, -1, -1}},
        {"k7/8/2n2q2/3P4/8/8/1B6/7K b - - 0 1",
         "d4d5",
         1,
         {9000 - 23, 5, 5},
         {3000 - 7, 2, 5},
         {0, -1, -1}},
        {"3r3k/8/5q2/8/8/1N6/1B6/3R3K b - - 0 1",
         "d4b3",
         1,
         {9000 - 23, 5, 5},
         {0, -1, -1},
         {-(5000 - 39), 3, 7}},
        {"4r2k/8/8/8/8/8/4R3/K3Q3 b - - 0 1",
         "e4e2",
         1,
         {0, -1, -1},
         {5000 - 39, 4, 7},
         {0, -1, -1}},
        {"4r2k/8/8/8/8/8/1R6/K3Q3 b - - 0 1",
         "e2b2",
         1,
         {5000 - 70, 4, 7},
         {0, -1, -1},
         {0, -1, -1}},
        {"4q2k/8/8/8/2n5/3K4/8/4R3 b - - 0 1",
         "e2d3",
         1,
         {9000 - 39, 4, 7},
         {0, -1, -1},
         {0, -1, -1}},
        {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
         "e2e4",
         0,
         {0, -1, -1},
         {0, -1, -1},
         {0, -1, -1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.fen) + " " + c.move);
        board = Board(c.fen);
        discoveredThreat = directThreat = secondThreat = {5, 1, 1};
        const Move m = mv(c.move);
        EXPECT_EQ(threatScan(board.pos, white, m.fromFile, m.fromRank, m.toFile, m.toRank),
                  c.result);
        for (const auto& [actual, expected] :
             {std::pair{discoveredThreat, c.discovered}, std::pair{directThreat, c.direct},
              std::pair{secondThreat, c.second}}) {
            EXPECT_EQ(actual.value, expected.value);
            EXPECT_EQ(actual.file, expected.file);
            EXPECT_EQ(actual.rank, expected.rank);
        }
    }
}

// ---- draws --------------------------------------------------------------------------------------

// Too little material to mate is a draw at once, one node, nothing stored; king and three pawns
// (also 15000) and a minor piece each are played on.
TEST_F(Search, TooLittleMaterialIsADrawAtOnce) {
    const struct {
        const char* fen;
        bool draw;
    } cases[] = {
        {"8/8/8/4k3/8/8/8/3BK3 w - - 0 1", true},
        {"8/8/8/3nk3/8/8/8/4K3 b - - 0 1", true},
        {"8/8/8/4k3/8/8/PPP5/4K3 w - - 0 1", false},
        {"8/8/8/3nk3/8/8/8/3BK3 w - - 0 1", false},
    };
    fullWidthDepth = 16;
    for (const auto& c : cases) {
        board = Board(c.fen);
        int32_t value = 0;
        if (!c.draw) {
            EXPECT_GT(nodesOf(board.pos.sideToMove, 16, 1, value), 1) << c.fen;
            continue;
        }
        for (const int32_t bound : {1, -1}) {
            EXPECT_EQ(nodesOf(board.pos.sideToMove, 16, bound, value), 1) << c.fen;
            EXPECT_EQ(value, 0) << c.fen;
        }
        EXPECT_EQ(lower().movedPiece, 100) << c.fen;
        EXPECT_EQ(upper().movedPiece, 100) << c.fen;
    }
}

// King and queen against king, White to move: searched, the value is far above 1.
constexpr const char* queenUp = "4k3/8/8/8/8/8/8/3QK3 w - - 0 1";

// keyCount is the parent's entry; with the fifty-move counter n (rounded down to even), the
// positions with White to move since the last irreversible move are entries 7, 5, ... down to
// keyCount - n + 1. Two earlier occurrences there make a draw at once, the slot left as it was;
// one makes the node searched and then both entries of its slot freed, whatever their key.
TEST_F(Search, RepetitionsInTheWindow) {
    enum Outcome { draw, searched, freed, stored };
    const struct {
        int32_t fifty;
        int32_t repeated[2]; // entries holding the node's key, -1 for none
        Outcome outcome;
    } cases[] = {
        {8, {3, 7}, draw},     {5, {5, 7}, draw},     {4, {3, 7}, freed}, // 3 is too old
        {8, {4, 6}, searched},                                            // Black to move there
        {8, {7, -1}, freed},   {8, {-1, -1}, stored},
    };
    fullWidthDepth = 16;
    board = Board(queenUp);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fifty * 100 + c.repeated[0] * 10 + c.repeated[1]);
        clearSearchTables();
        if (c.outcome != stored) {
            store(lowerBoundTable, 0, 8, 0, 0, d2d4, board.key ^ 1);
            store(upperBoundTable, 0, 8, 0, 0, d2d4, board.key ^ 1);
        }
        fillHistory(8, c.fifty);
        for (const int32_t entry : c.repeated) {
            if (entry >= 0) game.search.keyHistory[entry] = board.key;
        }
        int32_t value = 0;
        const int64_t nodes = nodesOf(white, 16, 1, value);
        EXPECT_EQ(game.search.keyCount, 8);
        EXPECT_EQ(game.search.fiftyMoveCounter, c.fifty);
        EXPECT_EQ(value == 0 && nodes == 1, c.outcome == draw) << value << " " << nodes;
        if (c.outcome != draw) EXPECT_GT(value, 1);
        if (c.outcome == draw) {
            EXPECT_EQ(lower().depthLeft, 0);
            EXPECT_EQ(upper().depthLeft, 0);
        } else if (c.outcome == freed) {
            expectInvalidated(lower());
            expectInvalidated(upper());
        } else if (c.outcome == stored) {
            EXPECT_EQ(lower().keyLow, static_cast<uint32_t>(board.key));
            EXPECT_EQ(lower().depthLeft, 8);
            EXPECT_EQ(lower().storePly, 8);
        }
    }
}

TEST_F(Search, FiftyMovesComeBeforeTheTables) {
    fullWidthDepth = 16;
    board = Board(queenUp);
    // A deep stored lower bound of 5000 (Qd1-d7) would answer the node at once.
    store(lowerBoundTable, 5000, 8, 100, 0, mv("d1d7"));
    searchAge = 5;
    fillHistory(100, 100);
    EXPECT_EQ(search(white, 16, 1, 8, 0), 0);
    EXPECT_EQ(lower().age, 0); // not even looked at
    fillHistory(100, 99);
    EXPECT_EQ(search(white, 16, 1, 8, 0), 5000);
    EXPECT_EQ(lower().age, 5); // used, so refreshed
}

// ---- mate, stalemate and futility ---------------------------------------------------------------

// Mate scores distance - 1000000 at any depth; stalemate 0 down to level 1 (remaining depth
// above -8); at level 2 no move means no capture: the node is worth nothing to its parent.
TEST_F(Search, MateAndStalemate) {
    const char* const mate = "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1";
    const char* const stalemate = "k7/2Q5/1K6/8/8/8/8/8 b - - 0 1";
    const struct {
        const char* fen;
        int32_t depthLimit, bound, distance, threat, mode, value;
    } cases[] = {
        {mate, 40, -1, 24, 2, allMoves, 24 - 1000000},
        {mate, 16, -1, 24, 2, capturesOnly, 24 - 1000000}, // remaining depth -8
        {stalemate, 40, -1, 24, 0, allMoves, 0},
        {stalemate, 24, 1, 24, 0, allMoves, 0},
        {stalemate, 17, 1, 24, 0, allMoves, 0},
        {stalemate, 16, -1, 24, 0, allMoves, -1000000000},
        {startFen, 0, -1, 8, 0, capturesOnly, -1000000000},
    };
    fullWidthDepth = 16;
    for (const auto& c : cases) {
        board = Board(c.fen);
        EXPECT_EQ(search(board.pos.sideToMove, c.depthLimit, c.bound, c.distance, c.threat, c.mode),
                  c.value)
            << c.fen << " depth " << c.depthLimit;
    }
    board = Board(mate);
    search(black, 40, -1, 24, 2);
    EXPECT_EQ(lower().movedPiece, 100); // nothing stored
    EXPECT_EQ(upper().movedPiece, 100);
}

TEST_F(Search, FutilityPrunesQuietMovesNearTheHorizon) {
    // A bare king (Ka1-b1, Ka1-b2) against queen and rook, iteration depth 8: a quiet king move
    // is reduced by 3. Depth limit 10 gives the child 7 <= distance 8 < 15: margin 6000; limit
    // 13 gives 10, 10 - 8 <= 8 < 10: the two-ply margin of 12000. The node and its own static
    // evaluation only.
    fullWidthDepth = 8;
    board = Board("7k/7r/8/3q4/8/8/8/K7 w - - 0 1");
    int32_t value = 0;
    EXPECT_EQ(nodesOf(white, 10, -1, value), 2);
    EXPECT_EQ(value, -1 - 6001);
    clearSearchTables();
    EXPECT_EQ(nodesOf(white, 13, -1, value), 2);
    EXPECT_EQ(value, -1 - 12001);
    // A test bound far below the static value: the moves are looked at.
    clearSearchTables();
    EXPECT_GT(nodesOf(white, 10, -2000001, value), 2);
    EXPECT_GT(value, -2000001);
    EXPECT_NE(value, -2000001 - 6001);
    // En passant is a capture, never pruned: exd6 is White's only move here, far behind.
    clearSearchTables();
    board = Board("1r5k/8/4b3/3pP3/8/8/7q/K7 w - d6 0 1");
    EXPECT_GT(nodesOf(white, 10, -1, value), 2);
    EXPECT_NE(value, -1 - 6001);
}

// En passant is ordered as the capture of a pawn: victim 1000 * 128 less the mover 1000 in deep
// quiescence; (2 * 1000 + exchange 0) * 2048 - 1000 * 32 with empty tables and history.
TEST_F(Search, EnPassantIsOrderedAsACapture) {
    board = Board("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1");
    const Move e5d6 = mv("e5d6");
    EXPECT_EQ(captureOrderScore(board.pos, white, e5d6), 127000);
    MoveList moves;
    const int32_t last = generateMoves(white, moves, board.pos, board.lists, allMoves);
    int32_t identity[maxMoves];
    int64_t scores[maxMoves];
    for (int32_t i = 0; i <= last; ++i)
        identity[i] = i;
    const int32_t at = indexOf(moves, last, e5d6);
    ASSERT_GE(at, 0);
    NodeAttacks attacks;
    const Ordering o = scoreMoves(board.key, board.material, 1, 8, 16, white, moves, last, identity,
                                  0, noValue, scores, attacks, board.pos, board.lists);
    EXPECT_FALSE(o.cutoff);
    EXPECT_EQ(scores[at], 4064000);
}

// ---- the driver ---------------------------------------------------------------------------------

const char* const staticList = "current best-first move list with respective evaluation:\n";
// Ka1, Pe4, Nh1 against Ke8 and a hanging queen: exd5 is the best move by static score, but the
// knight's moves (highest slot) come first.
constexpr const char* hangingQueen = "4k3/8/8/3q4/4P3/8/8/K6N w - - 0 1";

TEST_F(Search, DriverShortcuts) {
    bookEnabled = 0;
    // A single legal move (Kh1-g1) is played without a search, whatever the depth.
    fullWidthDepth = 24;
    board = Board("k7/8/8/8/8/8/r7/7K w - - 0 1");
    std::string output;
    EXPECT_EQ(drive(white, output), 0);
    EXPECT_EQ(output.rfind(std::string(staticList) + "h1g1 =", 0), 0u) << output;
    EXPECT_NE(output.find("- time for this move: ? sec -"), std::string::npos);
    EXPECT_EQ(output.find("new iteration"), std::string::npos) << output;
    EXPECT_EQ(fullWidthDepth, 24);
    // One ply without a time limit: the static best.
    fullWidthDepth = 8;
    board = Board(hangingQueen);
    MoveList moves;
    const int32_t capture =
        indexOf(moves, generateLegalMoves(white, moves, board.pos, allMoves), mv("e4d5"));
    ASSERT_GT(capture, 0);
    EXPECT_EQ(drive(white, output), capture);
    EXPECT_EQ(output.rfind(std::string(staticList) + "e4d5 =", 0), 0u) << output;
    EXPECT_EQ(output.find("new iteration"), std::string::npos) << output;
    EXPECT_EQ(fullWidthDepth, 8);
    // Two plies and a limit of -1000, so that the clock refuses the next iteration: one
    // iteration is searched and reported.
    fullWidthDepth = 16;
    searchTimeLimit = -1000;
    EXPECT_EQ(drive(white, output), capture);
    EXPECT_NE(output.find("new iteration with depth 2\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("new iteration with depth 3"), std::string::npos) << output;
    EXPECT_EQ(fullWidthDepth, 16);
    EXPECT_EQ(searchTimeLimit, -1000);
}

// Time spent pondering counts for the next search only when the opponent plays the predicted
// move; the credit counts as time spent, so a credited search stops deepening sooner.
TEST_F(Search, PonderingCredit) {
    game.ponderMode = -1; // a pondering search has just run
    game.lastSearchIndex = 5;
    game.ponderTime = 9;
    creditPondering(game, 5);
    EXPECT_EQ(game.ponderMode, 1);
    EXPECT_EQ(game.ponderTime, 9);
    game.ponderMode = -1;
    creditPondering(game, 4);
    EXPECT_EQ(game.ponderMode, 1);
    EXPECT_EQ(game.ponderTime, 0);
    game.ponderTime = 3; // without a pondering search before it, a move changes nothing
    creditPondering(game, 7);
    EXPECT_EQ(game.ponderTime, 3);

    // 55 seconds and two plies at least; taking the queen on d4 is plainly best. The depth-2
    // iteration always runs; another starts while credit plus elapsed time stays within a
    // quarter of credit plus limit: with 1000 seconds of credit (> 1055 / 4) none does. Without,
    // the depth-3 iteration runs, after which the best move has held twice and the search ends.
    bookEnabled = 0;
    fullWidthDepth = 16;
    searchTimeLimit = 55;
    for (const auto& [credit, iterations] : {std::pair{1000, 1}, std::pair{0, 2}}) {
        clearSearchTables();
        board = Board("rnb1kbnr/pppp1ppp/8/4p3/3q4/4P3/PPPP1PPP/RNBQKBNR w KQkq - 0 3");
        game.search.StopFlag = 0;
        game.search.searchStartTime = static_cast<int32_t>(std::time(nullptr));
        std::string output;
        drive(white, output, credit);
        int32_t found = 0;
        for (size_t at = output.find("new iteration"); at != std::string::npos;
             at = output.find("new iteration", at + 1))
            ++found;
        EXPECT_EQ(found, iterations) << "credit " << credit;
    }
}

// ---- the opening book ---------------------------------------------------------------------------

// Runs in a scratch directory of its own, since the file names are fixed.
class Book : public Search {
protected:
    void SetUp() override {
        Search::SetUp();
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
        Search::TearDown();
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
        return captureStdout([] { createBook(); });
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
    // probeBook over the legal moves of `side`, in generation order.
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

TEST_F(Book, SourceGivesOneRecordPerMoveMarkedByTheResult) {
    EXPECT_EQ(buildBook("new white e4 e5 new black d4\n"),
              "processing file...\nopenings book created in \"openings.dat\"\n");
    Board afterE4 = board;
    afterE4.play(white, e2e4);
    EXPECT_EQ(readFile("openings.dat"), startKeyText + " 1 4 1 4 3 0\n" +
                                            record(afterE4.key, 1, e7e5) + startKeyText +
                                            " -1 3 1 3 3 0\n");
    // White at the start: e4 from a won game (1 x 1), never d4 (-1 x 1), whatever the order.
    MoveList moves;
    int32_t last = 0;
    for (int32_t i = 0; i < 50; ++i) {
        const int32_t chosen = probe(white, moves, last);
        ASSERT_GE(chosen, 0);
        ASSERT_TRUE(sameMove(moves.moves[chosen], e2e4)) << i;
    }
    for (int32_t i = 0; i <= last; ++i)
        order[i] = last - i;
    EXPECT_EQ(probeBook(board.key, white, moves, order, last), indexOf(moves, last, e2e4));
    // Black after 1. e4: e5 comes from a game White won (1 x -1): no book move.
    board.play(white, e2e4);
    EXPECT_EQ(probe(black, moves, last), noBookMove);
}

TEST_F(Book, EquallyMarkedMovesAreChosenUniformly) {
    writeFile("openings.dat", record(board.key, 1, e2e4) + record(board.key, 1, d2d4));
    MoveList moves;
    int32_t last = 0;
    int32_t counts[2] = {0, 0};
    for (int32_t i = 0; i < 400; ++i) {
        const int32_t chosen = probe(white, moves, last);
        ASSERT_GE(chosen, 0);
        counts[0] += sameMove(moves.moves[chosen], e2e4);
        counts[1] += sameMove(moves.moves[chosen], d2d4);
    }
    EXPECT_EQ(counts[0] + counts[1], 400);
    EXPECT_GE(counts[0], 120); // about 200 each; a band of 30 to 70 percent
    EXPECT_GE(counts[1], 120);
}

// A comment's first token is not repeated, the rest of its line is; an unknown token is echoed
// and changes nothing; tokens and comment lines are cut to 49 characters.
TEST_F(Book, CommentsAndUnknownTokensAreEchoed) {
    std::string output = buildBook("#opening lines of a test\nnew white e4 Zz9 e5\n");
    EXPECT_NE(output.find("# lines of a test\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("#opening"), std::string::npos) << output;
    EXPECT_NE(output.find("Zz9 "), std::string::npos) << output;
    board.play(white, e2e4);
    EXPECT_EQ(readFile("openings.dat"),
              startKeyText + " 1 4 1 4 3 0\n" + record(board.key, 1, e7e5));
    output = buildBook("new white " + std::string(200, 'x') + " e4\n");
    EXPECT_NE(output.find(std::string(49, 'x') + " "), std::string::npos) << output;
    EXPECT_EQ(output.find(std::string(50, 'x')), std::string::npos) << output;
    EXPECT_EQ(readFile("openings.dat"), startKeyText + " 1 4 1 4 3 0\n");
    output = buildBook("# " + std::string(200, 'y') + "\nnew white e4\n");
    EXPECT_NE(output.find("# " + std::string(48, 'y') + "\n"), std::string::npos) << output;
    EXPECT_EQ(output.find(std::string(49, 'y')), std::string::npos) << output;
}

TEST_F(Book, DriverAsksTheBookFirst) {
    game.search.output = SearchOutput::xboard; // no static list
    fullWidthDepth = 8;
    bookEnabled = 1;
    writeFile("openings.dat", record(board.key, 1, d2d4));
    MoveList moves;
    int32_t last = generateLegalMoves(white, moves, board.pos, allMoves);
    std::string output;
    EXPECT_EQ(drive(white, output), indexOf(moves, last, d2d4));
    EXPECT_EQ(output, "");
    // An empty book names no move: the search goes on to its shortcut, the static best.
    board = Board(hangingQueen);
    last = generateLegalMoves(white, moves, board.pos, allMoves);
    writeFile("openings.dat", "");
    int32_t probeLast = 0;
    EXPECT_EQ(probe(white, moves, probeLast), noBookMove);
    EXPECT_EQ(drive(white, output), indexOf(moves, last, mv("e4d5")));
    EXPECT_EQ(output, "");
    // A missing book: the error line and the first move of the list, not the static best.
    std::remove("openings.dat");
    EXPECT_EQ(probe(white, moves, probeLast), bookMissing);
    EXPECT_EQ(drive(white, output), 0);
    EXPECT_EQ(output, "Error (fopen(\"openings.dat\", \"rt\")): mtdriver\n");
}

} // namespace
