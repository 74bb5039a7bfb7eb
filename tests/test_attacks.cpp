#include <gtest/gtest.h>

#include <cstring>

#include "core/attacks.h"
#include "core/fen.h"
#include "core/position.h"

namespace {

Position fromFen(const char* fen) {
    Position pos;
    const char* error = readFen(fen, pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    return pos;
}

// isSquareSafe on a square given as text, e.g. "e3"; checks that nothing is written.
int32_t safe(const Position& pos, Side side, const char* square) {
    const Position before = pos;
    const int32_t answer = isSquareSafe(pos, side, square[0] - 'a', square[1] - '1');
    EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0);
    return answer;
}

} // namespace

TEST(SquareSafety, StartPosition) {
    const Position pos = fromFen(startFen);
    // The pawns on d2 and f2 cover e3.
    EXPECT_EQ(safe(pos, black, "e3"), 0);
    EXPECT_EQ(safe(pos, white, "e3"), 1);
    EXPECT_EQ(safe(pos, white, "e4"), 1);
    EXPECT_EQ(safe(pos, white, "e6"), 0);
    // The g1 knight covers h3 and f3.
    EXPECT_EQ(safe(pos, black, "h3"), 0);
    EXPECT_EQ(safe(pos, black, "h4"), 1);
}

TEST(SquareSafety, RookOnTheFileAndABlockingPawn) {
    const Position open = fromFen("4r2k/8/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(safe(open, white, "e1"), 0);
    EXPECT_EQ(isSquareSafe(open, white, -1, 0), 0);
    const Position closed = fromFen("4r2k/8/8/8/8/8/4P3/4K3 w - - 0 1");
    EXPECT_EQ(safe(closed, white, "e1"), 1);
    EXPECT_EQ(isSquareSafe(closed, white, -1, 0), 1);
    // The pawn's own square is attacked, the one below it is not.
    EXPECT_EQ(safe(closed, white, "e2"), 0);
}

TEST(SquareSafety, PawnsCaptureForwardDiagonallyOnly) {
    const Position blackPawn = fromFen("7k/8/8/3p4/8/8/8/K7 w - - 0 1");
    EXPECT_EQ(safe(blackPawn, white, "e4"), 0);
    EXPECT_EQ(safe(blackPawn, white, "c4"), 0);
    EXPECT_EQ(safe(blackPawn, white, "d4"), 1);
    EXPECT_EQ(safe(blackPawn, white, "e5"), 1);
    EXPECT_EQ(safe(blackPawn, white, "c5"), 1);
    EXPECT_EQ(safe(blackPawn, white, "e6"), 1);
    EXPECT_EQ(safe(blackPawn, white, "f3"), 1);
    // A black pawn attacks nothing of its own side.
    EXPECT_EQ(safe(blackPawn, black, "e4"), 1);

    const Position whitePawn = fromFen("7k/8/8/8/4P3/8/8/K7 b - - 0 1");
    EXPECT_EQ(safe(whitePawn, black, "d5"), 0);
    EXPECT_EQ(safe(whitePawn, black, "f5"), 0);
    EXPECT_EQ(safe(whitePawn, black, "d3"), 1);
    EXPECT_EQ(safe(whitePawn, black, "e5"), 1);
    EXPECT_EQ(safe(whitePawn, black, "g6"), 1);
}

TEST(SquareSafety, KingsReachOneSquare) {
    const Position pos = fromFen("8/8/8/8/3k4/8/8/K7 w - - 0 1");
    for (const char* square : {"c3", "c4", "c5", "d3", "d5", "e3", "e4", "e5"})
        EXPECT_EQ(safe(pos, white, square), 0) << square;
    for (const char* square : {"b4", "f4", "d2", "d6", "b2", "f6", "f5"})
        EXPECT_EQ(safe(pos, white, square), 1) << square;
}

TEST(SquareSafety, SlidersAndKnights) {
    const Position queenPos = fromFen("7k/8/8/8/3q4/8/8/K7 w - - 0 1");
    for (const char* square : {"d8", "d1", "a4", "h4", "g7", "a7", "g1", "b2"})
        EXPECT_EQ(safe(queenPos, white, square), 0) << square;
    for (const char* square : {"e6", "c2", "f5", "b8"})
        EXPECT_EQ(safe(queenPos, white, square), 1) << square;

    const Position bishopPos = fromFen("7k/8/8/8/3b4/8/8/K7 w - - 0 1");
    EXPECT_EQ(safe(bishopPos, white, "g7"), 0);
    EXPECT_EQ(safe(bishopPos, white, "a1"), 0);
    EXPECT_EQ(safe(bishopPos, white, "d8"), 1);
    EXPECT_EQ(safe(bishopPos, white, "a4"), 1);

    const Position rookPos = fromFen("7k/8/8/8/3r4/8/8/K7 w - - 0 1");
    EXPECT_EQ(safe(rookPos, white, "d8"), 0);
    EXPECT_EQ(safe(rookPos, white, "a4"), 0);
    EXPECT_EQ(safe(rookPos, white, "g6"), 1);
    EXPECT_EQ(safe(rookPos, white, "e5"), 1);

    // Every piece ends a ray, own or enemy: the white pawn on d6 shields d7, the black pawn on
    // f4 shields g4.
    const Position blocked = fromFen("7k/8/3P4/8/3q1p2/8/8/K7 w - - 0 1");
    EXPECT_EQ(safe(blocked, white, "d6"), 0);
    EXPECT_EQ(safe(blocked, white, "d7"), 1);
    EXPECT_EQ(safe(blocked, white, "g4"), 1);

    const Position knightPos = fromFen("7k/8/8/8/3n4/8/8/K7 w - - 0 1");
    for (const char* square : {"c6", "c2", "e6", "e2", "f3", "f5", "b3", "b5"})
        EXPECT_EQ(safe(knightPos, white, square), 0) << square;
    for (const char* square : {"d5", "e5", "d6", "f6", "d4"})
        EXPECT_EQ(safe(knightPos, white, square), 1) << square;
}

TEST(SquareSafety, ContentOfTheSquareIsNotLookedAt) {
    // A white knight on e4 does not stop the queen's attack on its own square.
    const Position pos = fromFen("4q2k/8/8/8/4N3/8/8/K7 w - - 0 1");
    EXPECT_EQ(safe(pos, white, "e4"), 0);
    EXPECT_EQ(safe(pos, white, "e3"), 1);
    // The queen does not attack the square it stands on.
    EXPECT_EQ(safe(pos, white, "e8"), 1);
}

TEST(SquareSafety, EnPassantPlaysNoPart) {
    // After e2-e4 the black pawn on d4 may take en passant, but e4 does not count as attacked.
    const Position pos = fromFen("4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1");
    ASSERT_EQ(pos.enPassant, 5);
    EXPECT_EQ(safe(pos, white, "e4"), 1);
    EXPECT_EQ(safe(pos, white, "e3"), 0);
}

TEST(SquareSafety, KingSquareComesFromTheKingFields) {
    Position pos = fromFen("4k3/8/8/8/8/8/8/R3K3 b - - 0 1");
    EXPECT_EQ(isSquareSafe(pos, black, -1, 0), 1);
    // The black king goes to a8, on the rook's file.
    pos.squares[squareIndex(4, 7)] = 0;
    pos.squares[squareIndex(0, 7)] = -6;
    pos.blackKingFile = 0;
    EXPECT_EQ(isSquareSafe(pos, black, -1, 0), 0);
    // The rank argument is ignored.
    EXPECT_EQ(isSquareSafe(pos, black, -1, 5), 0);
    EXPECT_EQ(isSquareSafe(pos, white, -1, 7), 1);
}
