#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "core/fen.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "core/position.h"

namespace {

// A position with the legal moves of its side to move, as the game controller has them.
struct Legal {
    Position pos;
    Side side = white;
    MoveList list;
    int32_t last = -1;
};

Legal legalMoves(const char* fen) {
    Legal legal;
    const char* error = readFen(fen, legal.pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    legal.side = legal.pos.sideToMove;
    legal.last = generateLegalMoves(legal.side, legal.list, legal.pos, allMoves);
    return legal;
}

int32_t parse(const Legal& legal, const char* text) {
    return parseMoveInput(text, legal.side, legal.pos, legal.list, legal.last);
}

// Index of a move given as from and to squares ("g1f3") and a promotion kind.
int32_t indexOf(const Legal& legal, const char* squares, int32_t promotion = 0) {
    const Move wanted = {squares[0] - 'a', squares[1] - '1', squares[2] - 'a', squares[3] - '1',
                         promotion};
    for (int32_t i = 0; i <= legal.last; ++i) {
        if (sameMove(legal.list.moves[i], wanted)) return i;
    }
    return -1;
}

void expectSelects(const Legal& legal, const char* text, const char* squares,
                   int32_t promotion = 0) {
    const int32_t index = indexOf(legal, squares, promotion);
    ASSERT_GE(index, 0) << squares << " is not legal here";
    EXPECT_EQ(parse(legal, text), index) << text;
}

std::string text(int32_t fromFile, int32_t fromRank, int32_t toFile, int32_t toRank,
                 int32_t promotion) {
    char buffer[8];
    std::memset(buffer, 'x', sizeof buffer);
    moveToText(fromFile, fromRank, toFile, toRank, promotion, buffer);
    EXPECT_EQ(buffer[5], '\0');
    EXPECT_EQ(buffer[6], 'x');
    return std::string(buffer, 5);
}

} // namespace

TEST(MoveToText, CoordinatesAndPromotionLetter) {
    EXPECT_EQ(text(4, 1, 4, 3, 0), "e2e4 ");
    EXPECT_EQ(text(0, 6, 0, 7, 5), "a7a8q");
    EXPECT_EQ(text(1, 6, 2, 7, 2), "b7c8n");
    EXPECT_EQ(text(7, 1, 7, 0, 3), "h2h1b");
    EXPECT_EQ(text(7, 1, 6, 0, 4), "h2g1r");
    EXPECT_EQ(text(4, 0, 6, 0, 0), "e1g1 ");
    EXPECT_EQ(text(7, 7, 0, 0, 0), "h8a1 ");
    const MoveText written = moveText({6, 0, 5, 2, 0});
    EXPECT_STREQ(written.text, "g1f3 ");
}

TEST(MoveInput, PawnMovesInTheStartPosition) {
    const Legal start = legalMoves(startFen);
    expectSelects(start, "e4", "e2e4");
    expectSelects(start, "e2e4", "e2e4");
    expectSelects(start, "e2-e4", "e2e4");
    expectSelects(start, "e3", "e2e3");
    EXPECT_EQ(parse(start, "e5"), -1);
    EXPECT_EQ(parse(start, "E2E4"), -1);
    EXPECT_EQ(parse(start, ""), -1);

    const Legal blackToMove =
        legalMoves("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1");
    expectSelects(blackToMove, "e5", "e7e5");
    expectSelects(blackToMove, "e7e5", "e7e5");
    expectSelects(blackToMove, "Nc6", "b8c6");
}

TEST(MoveInput, KnightMoves) {
    const Legal start = legalMoves(startFen);
    expectSelects(start, "Nf3", "g1f3");
    expectSelects(start, "nf3", "g1f3");
    expectSelects(start, "Ngf3", "g1f3");
    expectSelects(start, "g1f3", "g1f3");
    expectSelects(start, "g1-f3", "g1f3");
    expectSelects(start, "Nc3", "b1c3");
    EXPECT_EQ(parse(start, "Nbf3"), -1);
    EXPECT_EQ(parse(start, "Xf3"), -1);
    // Signs after the destination are ignored.
    expectSelects(start, "Nf3+", "g1f3");
    // Only the first nine characters count; read in full, this would name e5.
    expectSelects(start, "Nf3++++++e5", "g1f3");
}

TEST(MoveInput, AmbiguousKnightTakesTheFirstInListOrder) {
    const Legal legal = legalMoves("4k3/8/8/8/8/5N2/8/1N2K3 w - - 0 1");
    const int32_t fromB1 = indexOf(legal, "b1d2");
    const int32_t fromF3 = indexOf(legal, "f3d2");
    ASSERT_GE(fromB1, 0);
    ASSERT_GE(fromF3, 0);
    EXPECT_EQ(parse(legal, "Nd2"), std::min(fromB1, fromF3));
    EXPECT_EQ(parse(legal, "Nbd2"), fromB1);
    EXPECT_EQ(parse(legal, "Nfd2"), fromF3);
    EXPECT_EQ(parse(legal, "N1d2"), fromB1);
    EXPECT_EQ(parse(legal, "N3d2"), fromF3);
}

TEST(MoveInput, Castling) {
    const Legal legal = legalMoves("4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1");
    expectSelects(legal, "o-o", "e1g1");
    expectSelects(legal, "O-O", "e1g1");
    expectSelects(legal, "e1g1", "e1g1");
    expectSelects(legal, "o-o-o", "e1c1");
    expectSelects(legal, "O-O-O", "e1c1");
    expectSelects(legal, "e1c1", "e1c1");
    EXPECT_EQ(parse(legal, "0-0"), -1);
    EXPECT_EQ(parse(legal, "0-0-0"), -1);
    expectSelects(legal, "Kf1", "e1f1");
    expectSelects(legal, "kf1", "e1f1");

    const Legal blackToMove = legalMoves("r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1");
    expectSelects(blackToMove, "O-O", "e8g8");
    expectSelects(blackToMove, "o-o-o", "e8c8");

    const Legal noRights = legalMoves("4k3/8/8/8/8/8/8/R3K2R w - - 0 1");
    EXPECT_EQ(parse(noRights, "O-O"), -1);
    EXPECT_EQ(parse(noRights, "e1g1"), -1);
}

TEST(MoveInput, Promotion) {
    const Legal legal = legalMoves("4k3/P7/8/8/8/8/8/4K3 w - - 0 1");
    expectSelects(legal, "a8=Q", "a7a8", 5);
    expectSelects(legal, "a8/Q", "a7a8", 5);
    expectSelects(legal, "a8=q", "a7a8", 5);
    expectSelects(legal, "a7a8q", "a7a8", 5);
    expectSelects(legal, "a7a8=q", "a7a8", 5);
    expectSelects(legal, "a7-a8=q", "a7a8", 5);
    expectSelects(legal, "a8=N", "a7a8", 2);
    expectSelects(legal, "a8=b", "a7a8", 3);
    expectSelects(legal, "a7a8r", "a7a8", 4);
    // Every move to a8 carries a promotion.
    EXPECT_EQ(parse(legal, "a8"), -1);
    EXPECT_EQ(parse(legal, "a7a8"), -1);
    EXPECT_EQ(parse(legal, "a8=K"), -1);
    EXPECT_EQ(parse(legal, "a7a8k"), -1);
}

TEST(MoveInput, PawnCaptureOrBishopCapture) {
    const Legal legal = legalMoves("4k3/8/8/4B3/8/2n5/1P6/4K3 w - - 0 1");
    expectSelects(legal, "bxc3", "b2c3");
    expectSelects(legal, "b2c3", "b2c3");
    expectSelects(legal, "Bxc3", "e5c3");
    expectSelects(legal, "Bc3", "e5c3");
}

TEST(MoveInput, EmptyListSelectsNothing) {
    const Legal legal = legalMoves(startFen);
    EXPECT_EQ(parseMoveInput("e4", white, legal.pos, legal.list, -1), -1);
}
