// The search on hand-made positions, its tables, driver, pondering and opening book.
#include <array>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <numeric>
#include <unistd.h>

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

void noPoll(SearchControl&) {}

// Small cleared tables, a game record whose poll does nothing; the settings put back afterwards.
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
    // The nodes a search of the side to move at distance 8 visits, `value` its result.
    int64_t nodesOf(int32_t depthLimit, int32_t testBound, int32_t& value) {
        const int64_t before = nodeCount;
        value = search(board.pos.sideToMove, depthLimit, testBound, 8, 0);
        return nodeCount - before;
    }

    // Keys no position here has, so that only keys a test puts in can repeat.
    void fillHistory(int32_t keyCount, int32_t fiftyMoveCounter) {
        for (int32_t i = 0; i <= keyCount; ++i)
            game.search.keyHistory[i] = 0x1000 + static_cast<PositionKey>(i);
        game.search.keyCount = keyCount;
        game.search.fiftyMoveCounter = fiftyMoveCounter;
    }

    // A bound for the board's position (or another key) in its slot of `table`.
    void store(const BoundTable& table, int32_t value, int32_t ply, int32_t depth, int32_t level,
               const Move& m, PositionKey key = 0) {
        storeBound(table, hashIndex(board.key), key ? key : board.key, value, ply, depth, level, m,
                   board.pos);
    }
    HashEntry& lower() { return lowerBoundTable[hashIndex(board.key)]; }
    HashEntry& upper() { return upperBoundTable[hashIndex(board.key)]; }
    // An entry as "value move depthLeft storePly age", "other" for another key than the board's.
    std::string shown(const HashEntry& e) {
        const bool same = e.keyLow == static_cast<uint32_t>(board.key) &&
                          e.keyHigh == static_cast<uint32_t>(board.key >> 32);
        return std::to_string(e.value) + " " +
               name({e.fromFile, e.fromRank, e.toFile, e.toRank, e.promotion}) + " " +
               std::to_string(e.depthLeft) + " " + std::to_string(e.storePly) + " " +
               std::to_string(e.age) + (same ? "" : " other");
    }

    // The principal variation shown from the board's position, which it leaves alone.
    std::string pv(int32_t distance = 8, int32_t budget = 248) {
        const Position before = board.pos;
        char text[pvTextSize] = "";
        walkPrincipalVariation(board.key, board.pos, board.lists, white, distance, budget, text);
        EXPECT_EQ(std::memcmp(&board.pos, &before, sizeof before), 0);
        return text;
    }

    GameState game;
    Board board;
    MoveList legal;
    int32_t saved[5] = {hashBits, fullWidthDepth, quiescenceDepth, searchTimeLimit, bookEnabled};
};

TEST_F(Search, ClearedTablesHoldOnlyEmptyUnprotectedEntries) {
    searchAge = 7;
    historyTable[123] = 5;
    clearSearchTables();
    EXPECT_EQ(searchAge, 0);
    // Key, value and move 0, age 255 (searchAge - 1), pieces 100, depth -4000, ply 4000.
    const HashEntry empty = {0, 0, 0, 255, 0, 0, 0, 0, 0, 100, 100, -4000, 4000};
    for (size_t i = 0; i < (size_t{1} << hashBits); ++i) {
        ASSERT_EQ(std::memcmp(&lowerBoundTable[i], &empty, sizeof empty), 0) << i;
        ASSERT_EQ(std::memcmp(&upperBoundTable[i], &empty, sizeof empty), 0) << i;
    }
    for (size_t i = 0; i < historySize; ++i)
        ASSERT_EQ(historyTable[i], 0u) << i;
    // Never usable, not even for key 0; replaced by the shallowest result from far down.
    EXPECT_FALSE(usableEntry(lowerBoundTable[0], 0, board.pos, white));
    EXPECT_FALSE(usableEntry(lower(), board.key, board.pos, white));
    store(lowerBoundTable, 2, 400, -100, 2, e2e4);
    EXPECT_EQ(shown(lower()), "2 e2e4 -100 400 0");
    EXPECT_TRUE(usableEntry(lower(), board.key, board.pos, white));
    lower().targetPiece = -1; // written as taking a black pawn, but e4 is empty
    EXPECT_FALSE(usableEntry(lower(), board.key, board.pos, white));
}

// A mate is stored as its distance from the storing node and read back from the reading one.
TEST_F(Search, MateValuesAreStoredRelativeToTheNode) {
    // value, distance when stored, table value, value read back at distance 8
    const int32_t cases[][4] = {
        {mateValue - 40, 16, mateValue - 24, mateValue - 32},
        {40 - mateValue, 16, 24 - mateValue, 32 - mateValue},
        {996000, 16, 996000, 996000}, // 4000 from a mate: ordinary
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

// Stores into the start position's slot, then both entries ("" unchecked). That the key and the
// pieces of the move are written is seen by shown() and by the walks of the principal variation,
// which follow only entries whose key and pieces match the board.
TEST_F(Search, ReplacementRules) {
    const struct {
        char table; // L or U; l or u after both tables are cleared
        int32_t value = 0, ply = 0, depth = 0, level = 0, age = 0;
        Text move = "", lower = "", upper = "";
        PositionKey otherKey = 0;
    } steps[] = {
        {'L', 100, 8, 16, 0, 0, "e2e4", "100 e2e4 16 8 0", ""},
        {'L', 100, 8, 16, 0, 0, "d2d4", "100 e2e4 16 8 0", ""}, // the same bound
        {'L', 500, 8, 8, 0, 0, "d2d4", "100 e2e4 16 8 0", ""},  // shallower
        {'L', 102, 8, 16, 0, 0, "d2d4", "102 d2d4 16 8 0", ""}, // tighter
        {'U', 200, 8, 16, 0, 0, "e2e4", "", "200 e2e4 16 8 0"},
        {'U', 200, 8, 16, 0, 0, "d2d4", "", "200 e2e4 16 8 0"},
        {'U', 198, 8, 16, 0, 0, "d2d4", "102 d2d4 16 8 0", "198 d2d4 16 8 0"},
        {'l', 100, 8, 8, 0, 0, "e2e4", "100 e2e4 8 8 0", ""},
        {'L', 300, 16, 200, 0, 0, "d2d4", "100 e2e4 8 8 0", ""}, // farther from the root
        {'L', 300, 16, -8, 2, 1, "d2d4", "100 e2e4 8 8 0", ""},  // the next search
        {'L', 300, 16, 0, 1, 1, "d2d4", "300 d2d4 0 16 1", ""},
        {'u', 50, 8, 16, 0, 0, "e2e4", "", "50 e2e4 16 8 0"},
        {'L', 40, 8, 16, 0, 0, "d2d4", "40 d2d4 16 8 0", "50 e2e4 16 8 0"},
        {'L', 60, 8, 16, 0, 0, "d2d4", "60 d2d4 16 8 0", "50 e2e4 -4000 4000 255"},
        {'l', 60, 8, 16, 0, 0, "d2d4", "60 d2d4 16 8 0", ""},
        {'U', 50, 8, 16, 0, 0, "e2e4", "60 d2d4 -4000 4000 255", "50 e2e4 16 8 0"},
        {'u', 50, 8, 16, 0, 0, "e2e4", "", "50 e2e4 16 8 0 other", 1}, // another key
        {'L', 60, 8, 16, 0, 0, "d2d4", "60 d2d4 16 8 0", "50 e2e4 16 8 0 other"},
    };
    for (const auto& s : steps) {
        if (std::islower(s.table)) clearSearchTables();
        searchAge = static_cast<uint8_t>(s.age);
        store(std::toupper(s.table) == 'L' ? lowerBoundTable : upperBoundTable, s.value, s.ply,
              s.depth, s.level, mv(s.move), board.key ^ s.otherKey);
        const std::string step = std::string(1, s.table) + " " + std::to_string(s.value);
        EXPECT_EQ(*s.lower ? shown(lower()) : "", s.lower) << step;
        EXPECT_EQ(*s.upper ? shown(upper()) : "", s.upper) << step;
    }
}

// The deeper entry, equally deep the lower bound unless farther from the root; stops at illegal,
// invalidated or quiescence entries, distance 248 or the budget.
TEST_F(Search, PrincipalVariationWalk) {
    EXPECT_EQ(pv(), ".");
    store(lowerBoundTable, 10, 8, 16, 0, mv("e2e5")); // no pawn moves three squares
    EXPECT_EQ(pv(), ".");
    clearSearchTables();
    store(lowerBoundTable, 10, 8, 16, 0, e2e4);
    Board afterE4 = board;
    afterE4.play(white, e2e4);
    ASSERT_NE(hashIndex(afterE4.key), hashIndex(board.key));
    storeBound(lowerBoundTable, hashIndex(afterE4.key), afterE4.key, -10, 16, 8, 0, e7e5,
               afterE4.pos);
    EXPECT_EQ(pv(), "-e2e4 -e7e5 .");
    EXPECT_EQ(pv(8, 8), "-e2e4 .");
    EXPECT_EQ(pv(256), ".");
    // ply and depth of the lower bound (e2e4) and of the upper bound (d2d4); the move shown
    const int32_t cases[][4] = {{8, 8, 8, 16}, {16, 16, 8, 16}, {8, 16, 16, 16}};
    const char* shown[] = {"-d2d4 .", "-d2d4 .", "-e2e4 ."};
    for (int32_t i = 0; i < 3; ++i) {
        clearSearchTables();
        store(lowerBoundTable, 10, cases[i][0], cases[i][1], 0, e2e4);
        store(upperBoundTable, 20, cases[i][2], cases[i][3], 0, d2d4);
        EXPECT_EQ(pv(), shown[i]) << i;
    }
    // The rook on e2 is pinned: Re2-a2 is illegal, Rxe8 along the pin line is not.
    board = Board("4r1k1/8/8/8/8/8/4R3/4K3 w - - 0 1");
    store(lowerBoundTable, 10, 8, 16, 0, mv("e2a2"));
    EXPECT_EQ(pv(), ".");
    store(lowerBoundTable, 10, 8, 24, 0, mv("e2e8"));
    EXPECT_EQ(pv(), "-e2e8 .");
    invalidateEntry(lowerBoundTable, hashIndex(board.key));
    EXPECT_EQ(pv(), ".");
    searchAge = 1; // an older entry: always replaced
    store(lowerBoundTable, 10, 8, -8, 2, mv("e2e8"));
    ASSERT_EQ(lower().depthLeft, -8);
    EXPECT_EQ(pv(), ".");
}

// "discovered direct second": victim less attacker / 128 (pawn 7, minor 23, rook 39, queen 70).
TEST_F(Search, ThreatScan) {
    const std::tuple<Text, Text, int32_t, Text> cases[] = {
        {"3r3k/5N2/8/8/8/8/8/4K3 b - - 0 1", "g5f7", 2, "0 11977h8 4977d8"},
        {"k7/8/5q2/3P4/8/8/1B6/7K b - - 0 1", "d4d5", 1, "8977f6 0 0"},
        {"k7/8/2n2q2/3P4/8/8/1B6/7K b - - 0 1", "d4d5", 1, "8977f6 2993c6 0"},
        {"3r3k/8/5q2/8/8/1N6/1B6/3R3K b - - 0 1", "d4b3", 1, "8977f6 0 -4961d8"},
        {"4r2k/8/8/8/8/8/4R3/K3Q3 b - - 0 1", "e4e2", 1, "0 4961e8 0"},
        {"4r2k/8/8/8/8/8/1R6/K3Q3 b - - 0 1", "e2b2", 1, "4930e8 0 0"},
        {"4q2k/8/8/8/2n5/3K4/8/4R3 b - - 0 1", "e2d3", 1, "8961e8 0 0"},
        {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", "e2e4", 0, "0 0 0"},
    };
    const auto shown = [](const Threat& t) {
        if (t.value == 0 && t.file == -1 && t.rank == -1) return std::string("0");
        return std::to_string(t.value) + static_cast<char>('a' + t.file) +
               static_cast<char>('1' + t.rank);
    };
    for (const auto& [fen, move, result, threats] : cases) {
        board = Board(fen);
        discoveredThreat = directThreat = secondThreat = {5, 1, 1};
        const Move m = mv(move);
        EXPECT_EQ(threatScan(board.pos, white, m.fromFile, m.fromRank, m.toFile, m.toRank), result)
            << fen;
        EXPECT_EQ(shown(discoveredThreat) + " " + shown(directThreat) + " " + shown(secondThreat),
                  threats)
            << fen;
    }
}

// Too little to mate is a draw at once, nothing stored; king and three pawns are played on. Which
// material is too little is the game end's rule (noMatingMaterial), tabled in test_console.
TEST_F(Search, TooLittleMaterialIsADrawAtOnce) {
    const std::pair<Text, bool> cases[] = {{"8/8/8/4k3/8/8/8/3BK3 w - - 0 1", true},
                                           {"8/8/8/4k3/8/8/PPP5/4K3 w - - 0 1", false}};
    fullWidthDepth = 16;
    for (const auto& [fen, draw] : cases) {
        board = Board(fen);
        int32_t value = 0;
        EXPECT_EQ(nodesOf(16, 1, value) == 1, draw) << fen;
        if (!draw) continue;
        EXPECT_EQ(value, 0) << fen;
        EXPECT_EQ(nodesOf(16, -1, value), 1) << fen;
        EXPECT_EQ(value, 0) << fen;
        EXPECT_EQ(lower().movedPiece, 100) << fen;
    }
}

// King and queen against king, White to move: searched, the value is far above 1.
constexpr const char* queenUp = "4k3/8/8/8/8/8/8/3QK3 w - - 0 1";

// Entries 7, 5, ... down to 9 - n hold White to move; two there draw, one frees the slot.
TEST_F(Search, RepetitionsInTheWindow) {
    const char* const other = "0 d2d4 0 8 0 other";
    const char* const freed = "0 d2d4 -4000 4000 255 other";
    // The fifty-move counter, entries holding the node's key (-1 none), a draw or not, both table
    // entries afterwards ("" unchecked).
    const std::tuple<int32_t, std::array<int32_t, 2>, bool, Text> cases[] = {
        {8, {3, 7}, true, other},   {5, {5, 7}, true, other},
        {4, {3, 7}, false, freed}, // 3 is too old
        {8, {4, 6}, false, ""},    // Black to move there
        {8, {7, -1}, false, freed}, {8, {-1, -1}, false, ""},
    };
    fullWidthDepth = 16;
    board = Board(queenUp);
    for (const auto& [fifty, repeated, draw, slot] : cases) {
        SCOPED_TRACE(fifty * 100 + repeated[0] * 10 + repeated[1]);
        clearSearchTables();
        store(lowerBoundTable, 0, 8, 0, 0, d2d4, board.key ^ 1);
        store(upperBoundTable, 0, 8, 0, 0, d2d4, board.key ^ 1);
        fillHistory(8, fifty);
        for (const int32_t entry : repeated)
            if (entry >= 0) game.search.keyHistory[entry] = board.key;
        int32_t value = 0;
        const int64_t nodes = nodesOf(16, 1, value);
        EXPECT_EQ(game.search.keyCount, 8);
        EXPECT_EQ(game.search.fiftyMoveCounter, fifty);
        EXPECT_EQ(value == 0 && nodes == 1, draw) << value << " " << nodes;
        EXPECT_TRUE(draw || value > 1) << value;
        EXPECT_EQ(*slot ? shown(lower()) : "", slot);
        EXPECT_EQ(*slot ? shown(upper()) : "", slot);
    }
    // Without repetition the node's lower bound is stored in its slot.
    EXPECT_EQ(lower().keyLow, static_cast<uint32_t>(board.key));
    EXPECT_EQ(lower().depthLeft, 8);
    EXPECT_EQ(lower().storePly, 8);
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

// Mate scores distance - 1000000; stalemate 0 down to level 1; at level 2 nothing for the parent.
// Each row: position, depth limit, bound, distance, threat, mode, value.
TEST_F(Search, MateAndStalemate) {
    const char* const mate = "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1";
    const char* const stalemate = "k7/2Q5/1K6/8/8/8/8/8 b - - 0 1";
    const std::tuple<Text, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t> cases[] = {
        {mate, 40, -1, 24, 2, allMoves, 24 - 1000000},
        {mate, 16, -1, 24, 2, capturesOnly, 24 - 1000000},
        {stalemate, 40, -1, 24, 0, allMoves, 0},
        {stalemate, 24, 1, 24, 0, allMoves, 0},
        {stalemate, 17, 1, 24, 0, allMoves, 0},
        {stalemate, 16, -1, 24, 0, allMoves, -1000000000},
        {startFen, 0, -1, 8, 0, capturesOnly, -1000000000},
    };
    fullWidthDepth = 16;
    for (const auto& [fen, depthLimit, bound, distance, threat, mode, value] : cases) {
        board = Board(fen);
        EXPECT_EQ(search(board.pos.sideToMove, depthLimit, bound, distance, threat, mode), value)
            << fen << " depth " << depthLimit;
        EXPECT_TRUE(fen != mate || lower().movedPiece + upper().movedPiece == 200); // unstored
    }
}

// A quiet move is pruned with margin 6000 (child 7 <= 8 < 15) or 12000; never en passant. Each
// row: position, depth limit, bound, pruned or not, the value when pruned.
TEST_F(Search, FutilityPrunesQuietMovesNearTheHorizon) {
    const char* const bare = "7k/7r/8/3q4/8/8/8/K7 w - - 0 1";
    const std::tuple<Text, int32_t, int32_t, bool, int32_t> cases[] = {
        {bare, 10, -1, true, -1 - 6001},
        {bare, 13, -1, true, -1 - 12001},
        {bare, 10, -2000001, false, -2000001 - 6001},
        {"1r5k/8/4b3/3pP3/8/8/7q/K7 w - d6 0 1", 10, -1, false, -1 - 6001},
    };
    fullWidthDepth = 8;
    for (const auto& [fen, depthLimit, bound, pruned, prunedValue] : cases) {
        clearSearchTables();
        board = Board(fen);
        int32_t value = 0;
        const int64_t nodes = nodesOf(depthLimit, bound, value);
        EXPECT_EQ(nodes == 2, pruned) << fen << " " << depthLimit;
        EXPECT_EQ(value == prunedValue, pruned) << fen << " " << depthLimit;
    }
}

// En passant is ordered as a pawn's capture: 1000 * 128 - 1000; (2 * 1000 + 0) * 2048 - 32000.
TEST_F(Search, EnPassantIsOrderedAsACapture) {
    board = Board("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1");
    const Move e5d6 = mv("e5d6");
    EXPECT_EQ(captureOrderScore(board.pos, white, e5d6), 127000);
    MoveList moves;
    const int32_t last = generateMoves(white, moves, board.pos, board.lists, allMoves);
    int32_t identity[maxMoves];
    int64_t scores[maxMoves];
    bool pending[maxMoves];
    std::iota(identity, identity + last + 1, 0);
    NodeAttacks attacks;
    const Ordering o = scoreMoves(board.key, board.material, 1, 8, 16, white, moves, last, identity,
                                  0, noValue, scores, pending, attacks, board.pos, board.lists);
    EXPECT_FALSE(o.cutoff);
    const int32_t at = indexOf(moves, last, e5d6);
    ASSERT_GE(at, 0);
    // A reachable capture's exchange term is added when its turn comes.
    if (pending[at])
        scores[at] += exchangeTerm(board.key, board.material, white, e5d6, board.pos, board.lists);
    EXPECT_EQ(scores[at], 4064000);
}

// Pondering time counts only when the predicted move comes (5 here), and counts as time spent; a
// mode of 1 means no pondering search came before. Each row: mode and ponder time before, the
// move played, mode and time after.
TEST_F(Search, PonderingCredit) {
    const int32_t cases[][5] = {{-1, 9, 5, 1, 9}, {-1, 9, 4, 1, 0}, {1, 3, 7, 1, 3}};
    for (const auto& [modeBefore, timeBefore, played, modeAfter, timeAfter] : cases) {
        game.ponderMode = modeBefore;
        game.ponderTime = timeBefore;
        game.lastSearchIndex = 5;
        creditPondering(game, played);
        EXPECT_EQ(game.ponderMode, modeAfter) << played;
        EXPECT_EQ(game.ponderTime, timeAfter) << played;
    }
    // 55 s, Qxd4 plainly best: a credit of 1000 exceeds (1000 + 55) / 4 after depth 2; without it
    // depth 3 runs, after which the move has held twice.
    bookEnabled = 0;
    fullWidthDepth = 16;
    searchTimeLimit = 55;
    for (const auto& [credit, iterations] : {std::pair{1000, 1}, std::pair{0, 2}}) {
        clearSearchTables();
        board = Board("rnb1kbnr/pppp1ppp/8/4p3/3q4/4P3/PPPP1PPP/RNBQKBNR w KQkq - 0 3");
        game.search.StopFlag = 0;
        game.search.searchStartTime = static_cast<int32_t>(std::time(nullptr));
        const int32_t last = generateLegalMoves(white, legal, board.pos, allMoves);
        const std::string output = captureStdout(
            [&] { runSearch(game.search, white, legal, last, board.pos, 0, credit, 0); });
        EXPECT_NE(output.find("new iteration with depth 2\n"), std::string::npos) << credit;
        EXPECT_EQ(output.find("new iteration with depth 3\n") != std::string::npos,
                  iterations == 2);
        EXPECT_EQ(output.find("new iteration with depth 4"), std::string::npos) << credit;
    }
}

// The opening book runs in a scratch directory of its own, since the file names are fixed.
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

    static std::string readFile(const char* name) {
        std::ostringstream text;
        text << std::ifstream(name).rdbuf();
        return text.str();
    }
    static std::string buildBook(const std::string& source) {
        std::ofstream("openings.txt") << source;
        return captureStdout([] { createBook(); });
    }
    // One book line: the key's halves, the mark and the move.
    static std::string record(PositionKey key, int32_t mark, const Move& m) {
        std::string line = std::to_string(key >> 32) + " " + std::to_string(key & 0xFFFFFFFFu);
        for (const int32_t field : {mark, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion})
            line.append(" ").append(std::to_string(field));
        return line + "\n";
    }
    // probeBook over the legal moves of `side` in generation order: the index chosen.
    int32_t probe(Side side) {
        const int32_t last = generateLegalMoves(side, legal, board.pos, allMoves);
        int32_t order[maxMoves];
        std::iota(order, order + last + 1, 0);
        return probeBook(board.key, side, legal, order, last);
    }

    char oldDirectory[4096] = {};
    char scratch[64] = {};
};

// Two moves of one mark are each chosen about half the time (the start has 20 moves, 0..19); a move
// from a game the side to move lost is never played, even alone: after 1. e4 its one record, e5
// from a game White won, leaves Black without a book move. The records a book holds, and White's
// choice of its best-marked move, are seen in the book sessions of both programs.
TEST_F(Book, EqualMarksAreChosenUniformlyLostGamesNever) {
    std::ofstream("openings.dat") << record(board.key, 1, e2e4) + record(board.key, 1, d2d4);
    int32_t e4 = 0;
    for (int32_t i = 0; i < 400; ++i) {
        const int32_t chosen = probe(white);
        ASSERT_TRUE(chosen == indexOf(legal, 19, e2e4) || chosen == indexOf(legal, 19, d2d4));
        e4 += chosen == indexOf(legal, 19, e2e4);
    }
    EXPECT_GE(e4, 120); // about 200 each; a band of 30 to 70 percent
    EXPECT_LE(e4, 280);
    buildBook("new white e4 e5\n");
    board.play(white, e2e4);
    EXPECT_EQ(probe(black), noBookMove);
}

// Comments echoed without their first token, unknown tokens echoed (the book session shows one)
// and the moves after them still recorded; both cut to 49 characters.
TEST_F(Book, CommentsAndUnknownTokensAreEchoed) {
    std::string output = buildBook("#opening lines of a test\nnew white e4 Zz9 e5\n");
    EXPECT_NE(output.find("# lines of a test\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("#opening"), std::string::npos) << output;
    const std::string e4Record = "2129221332 3019585587 1 4 1 4 3 0\n";
    board.play(white, e2e4);
    EXPECT_EQ(readFile("openings.dat"), e4Record + record(board.key, 1, e7e5));
    output = buildBook("new white " + std::string(200, 'x') + " e4\n");
    EXPECT_NE(output.find(std::string(49, 'x') + " "), std::string::npos) << output;
    EXPECT_EQ(output.find(std::string(50, 'x')), std::string::npos) << output;
    EXPECT_EQ(readFile("openings.dat"), e4Record);
    output = buildBook("# " + std::string(200, 'y') + "\nnew white e4\n");
    EXPECT_NE(output.find("# " + std::string(48, 'y') + "\n"), std::string::npos) << output;
    EXPECT_EQ(output.find(std::string(49, 'y')), std::string::npos) << output;
}

} // namespace
