// Game-end adjudication on hand-made game records: the result lines and what a decided game
// does to the loop's state in the console and in xboard mode.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/movegen.h"
#include "ui/gameend.h"
#include "ui/record.h"

namespace {

class GameEnd : public ::testing::Test {
protected:
    void SetUp() override {
        initPositionKeys();
        resetGameState(game);
    }

    // A game whose start is `fen`, the user playing White against the engine.
    void setUpFen(const char* fen) {
        ASSERT_EQ(readFen(fen, game.position), nullptr) << fen;
        game.turn = game.position.sideToMove;
        game.userSide = white;
        game.plyCount = 0;
        game.search.keyCount = 0;
        game.search.fiftyMoveCounter = 0;
        derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
    }

    // The lines checkGameEnd prints, after the legal moves are built as the loop builds them.
    std::string adjudicate() {
        game.lastLegalIndex =
            generateLegalMoves(game.turn, game.legalMoves, game.position, allMoves);
        std::fflush(stdout);
        ::testing::internal::CaptureStdout();
        checkGameEnd(game);
        std::fflush(stdout);
        return ::testing::internal::GetCapturedStdout();
    }

    GameState game;
};

TEST_F(GameEnd, MateAndStalemateStopTheEngineInEveryMode) {
    // Fool's mate: White to move is mated.
    setUpFen("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3");
    EXPECT_EQ(adjudicate(), "0-1 {Black mates}\n");
    EXPECT_EQ(game.userSide, 0);
    EXPECT_EQ(game.lastLegalIndex, -1);

    // Black to move is mated by a rook on the back rank, in xboard mode too.
    game.xboardMode = 1;
    setUpFen("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1");
    EXPECT_EQ(adjudicate(), "1-0 {White mates}\n");
    EXPECT_EQ(game.userSide, 0);

    // The black king in the corner has no move and is not in check.
    game.xboardMode = 0;
    setUpFen("k7/2Q5/1K6/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Stalemate}\n");
    EXPECT_EQ(game.userSide, 0);
}

TEST_F(GameEnd, TooLittleMaterial) {
    setUpFen("8/8/8/4k3/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Neither player has mating material}\n");
    EXPECT_EQ(game.lastLegalIndex, -1);
    EXPECT_EQ(game.userSide, 0);

    setUpFen("8/8/8/4k3/8/8/8/3BK3 w - - 0 1");
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Neither player has mating material}\n");
    setUpFen("8/8/8/3nk3/8/8/8/4K3 b - - 0 1");
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Neither player has mating material}\n");

    // King and three pawns also make 15000 but play on; so do a knight each.
    setUpFen("8/8/8/4k3/8/8/PPP5/4K3 w - - 0 1");
    EXPECT_EQ(adjudicate(), "");
    setUpFen("8/8/8/3nk3/8/8/8/3NK3 w - - 0 1");
    EXPECT_EQ(adjudicate(), "");
    EXPECT_EQ(game.userSide, white);
}

TEST_F(GameEnd, DrawsOnlyAnnouncedInXboardMode) {
    game.xboardMode = 1;
    setUpFen("8/8/8/4k3/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Neither player has mating material}\n");
    EXPECT_NE(game.lastLegalIndex, -1);
    EXPECT_EQ(game.userSide, white);
}

TEST_F(GameEnd, FiftyMoves) {
    setUpFen("8/8/8/4k3/8/8/8/R3K3 w - - 0 1");
    game.search.keyCount = 99;
    for (int32_t i = 0; i <= 99; ++i)
        game.search.keyHistory[i] = i + 1; // no repetition
    game.search.fiftyMoveCounter = 99;
    EXPECT_EQ(adjudicate(), "");
    game.search.keyCount = 100;
    game.search.keyHistory[100] = 1000;
    game.search.fiftyMoveCounter = 100;
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Rule of 50 moves}\n");
    EXPECT_EQ(game.lastLegalIndex, -1);
}

TEST_F(GameEnd, RepetitionCountsOnlySameSidePositionsSinceTheLastIrreversibleMove) {
    setUpFen("8/8/8/4k3/8/8/8/R3K3 w - - 0 1");
    const PositionKey now = game.search.keyHistory[0];
    // Keys 0..8: the current position occurred at plies 0 and 4 (same side to move).
    for (int32_t i = 0; i <= 8; ++i)
        game.search.keyHistory[i] = 100 + i;
    game.search.keyHistory[0] = now;
    game.search.keyHistory[4] = now;
    game.search.keyHistory[8] = now;
    game.search.keyCount = 8;
    game.search.fiftyMoveCounter = 8;
    EXPECT_EQ(adjudicate(), "1/2-1/2 {Draw by repetition}\n");
    EXPECT_EQ(game.lastLegalIndex, -1);

    // A pawn move or capture six plies ago: the occurrence at ply 0 no longer counts.
    game.userSide = white;
    game.search.fiftyMoveCounter = 6;
    EXPECT_EQ(adjudicate(), "");

    // Occurrences with the other side to move (odd distance) never count.
    game.search.keyHistory[4] = 104;
    game.search.keyHistory[3] = now;
    game.search.keyHistory[5] = now;
    game.search.fiftyMoveCounter = 8;
    EXPECT_EQ(adjudicate(), "");
}

} // namespace
