// Pondering's credit: the time spent thinking on the opponent's time counts for the engine's
// next search only when the opponent plays the predicted move, and a credited search stops
// deepening sooner.
#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/movegen.h"
#include "eval/material.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "ui/record.h"

namespace {

TEST(Pondering, OnlyThePredictedMoveKeepsThePonderingTime) {
    initPositionKeys();
    static GameState game;
    resetGameState(game);
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

    // Without a pondering search before it, a move changes nothing.
    game.ponderMode = 1;
    game.ponderTime = 3;
    creditPondering(game, 7);
    EXPECT_EQ(game.ponderTime, 3);
}

void noPoll(SearchControl&) {}

// Iterations a search runs with a 55-second limit, a minimum depth of two plies and the given
// pondering credit, in a position where taking the queen left en prise on d4 is plainly best (so
// the best move holds from one iteration to the next).
int iterationsWithCredit(int32_t ponderTime) {
    static GameState game;
    resetGameState(game);
    game.search.pollFunction = noPoll;
    EXPECT_EQ(
        readFen("rnb1kbnr/pppp1ppp/8/4p3/3q4/4P3/PPPP1PPP/RNBQKBNR w KQkq - 0 3", game.position),
        nullptr);
    derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
    bookEnabled = 0;
    clearSearchTables();
    const int32_t last = generateLegalMoves(game.turn, game.legalMoves, game.position, 0);
    fullWidthDepth = 16;
    searchTimeLimit = 55;
    game.search.StopFlag = 0;
    game.search.searchStartTime = static_cast<int32_t>(std::time(nullptr));
    std::fflush(stdout);
    ::testing::internal::CaptureStdout();
    runSearch(game.search, game.turn, game.legalMoves, last, game.position, 0, ponderTime, 0);
    std::fflush(stdout);
    const std::string out = ::testing::internal::GetCapturedStdout();
    int iterations = 0;
    for (size_t at = out.find("new iteration"); at != std::string::npos;
         at = out.find("new iteration", at + 1))
        ++iterations;
    return iterations;
}

TEST(Pondering, CreditedTimeCountsAsSpent) {
    initPositionKeys();
    fillMaterialScale();
    hashBits = 12;
    ASSERT_TRUE(allocateTranspositionTables());
    ASSERT_TRUE(allocateHistoryTable());
    // Up to the minimum depth less one ply (the depth-2 iteration) an iteration always runs.
    // Beyond it a new iteration starts only while the credit plus the elapsed time stays within
    // a quarter of credit plus limit: with 1000 seconds of credit (1000 > 1055 / 4) none does.
    EXPECT_EQ(iterationsWithCredit(1000), 1);
    // Without credit a quarter of 55 seconds leaves room for the depth-3 iteration; after it the
    // best move (taking the queen, the static best) has held twice and the search ends, as the
    // early-stop time is 0.
    EXPECT_EQ(iterationsWithCredit(0), 2);
    freeSearchTables();
    fullWidthDepth = 24;
    searchTimeLimit = 0;
}

} // namespace
