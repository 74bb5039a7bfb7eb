// The console board from both sides and the last-move lines.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "core/keys.h"
#include "ui/display.h"
#include "ui/record.h"

namespace {

std::string captured(void (*draw)(const GameState&), const GameState& game) {
    std::fflush(stdout);
    ::testing::internal::CaptureStdout();
    draw(game);
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

void drawFlipped(const GameState& game) {
    showBoard(game.position, -1);
}

const char* const border = "   +---+---+---+---+---+---+---+---+\n";

TEST(Display, BlackAtTheBottomReadsFilesHToA) {
    initPositionKeys();
    static GameState game;
    resetGameState(game);
    // Rank 1 on top, h1 first: h1 is a light square, so its rook shows as " R".
    std::string expected = std::string("\n     h   g   f   e   d   c   b   a\n") + border +
                           " 1 | R |.N | B |.K | Q |.B | N |.R | 1\n" + border +
                           " 2 |.@ | @ |.@ | @ |.@ | @ |.@ | @ | 2\n" + border +
                           " 3 |   | . |   | . |   | . |   | . | 3\n" + border +
                           " 4 | . |   | . |   | . |   | . |   | 4\n" + border +
                           " 5 |   | . |   | . |   | . |   | . | 5\n" + border +
                           " 6 | . |   | . |   | . |   | . |   | 6\n" + border +
                           " 7 | * |.* | * |.* | * |.* | * |.* | 7\n" + border +
                           " 8 |.r | n |.b | k |.q | b |.n | r | 8\n" + border +
                           "     h   g   f   e   d   c   b   a\n";
    EXPECT_EQ(captured(drawFlipped, game), expected);
}

TEST(Display, LastMoveLines) {
    initPositionKeys();
    static GameState game;
    resetGameState(game);
    EXPECT_EQ(captured(showLastMove, game), "White to move\n");

    playMove(game, Move{4, 1, 4, 3, 0});
    game.turn = black;
    EXPECT_EQ(captured(showLastMove, game), "  1. e2e4  is the last move\nBlack to move\n");

    playMove(game, Move{4, 6, 4, 4, 0});
    game.turn = white;
    EXPECT_EQ(captured(showLastMove, game), "  1. ... e7e5  is the last move\nWhite to move\n");
}

} // namespace
