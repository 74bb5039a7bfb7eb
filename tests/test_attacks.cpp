#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>

#include "core/attacks.h"
#include "core/fen.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"
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

// Every square of `attacked` is covered against `side`, every square of `open` is not.
void expectSafety(const Position& pos, Side side, std::initializer_list<const char*> attacked,
                  std::initializer_list<const char*> open) {
    for (const char* square : attacked)
        EXPECT_EQ(safe(pos, side, square), 0) << square;
    for (const char* square : open)
        EXPECT_EQ(safe(pos, side, square), 1) << square;
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
    expectSafety(blackPawn, white, {"e4", "c4"}, {"d4", "e5", "c5", "e6", "f3"});
    // A black pawn attacks nothing of its own side.
    expectSafety(blackPawn, black, {}, {"e4"});
    const Position whitePawn = fromFen("7k/8/8/8/4P3/8/8/K7 b - - 0 1");
    expectSafety(whitePawn, black, {"d5", "f5"}, {"d3", "e5", "g6"});
}

TEST(SquareSafety, KingsReachOneSquare) {
    expectSafety(fromFen("8/8/8/8/3k4/8/8/K7 w - - 0 1"), white,
                 {"c3", "c4", "c5", "d3", "d5", "e3", "e4", "e5"},
                 {"b4", "f4", "d2", "d6", "b2", "f6", "f5"});
}

TEST(SquareSafety, SlidersAndKnights) {
    expectSafety(fromFen("7k/8/8/8/3q4/8/8/K7 w - - 0 1"), white,
                 {"d8", "d1", "a4", "h4", "g7", "a7", "g1", "b2"}, {"e6", "c2", "f5", "b8"});
    expectSafety(fromFen("7k/8/8/8/3b4/8/8/K7 w - - 0 1"), white, {"g7", "a1"}, {"d8", "a4"});
    expectSafety(fromFen("7k/8/8/8/3r4/8/8/K7 w - - 0 1"), white, {"d8", "a4"}, {"g6", "e5"});
    expectSafety(fromFen("7k/8/8/8/3n4/8/8/K7 w - - 0 1"), white,
                 {"c6", "c2", "e6", "e2", "f3", "f5", "b3", "b5"}, {"d5", "e5", "d6", "f6", "d4"});

    // Every piece ends a ray, own or enemy: the white pawn on d6 shields d7, the black pawn on
    // f4 shields g4.
    expectSafety(fromFen("7k/8/3P4/8/3q1p2/8/8/K7 w - - 0 1"), white, {"d6"}, {"d7", "g4"});
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

// The quick tests of a king left attacked and of a check given look only where the move can
// have changed something. Walked over every move of a few plies from positions rich in pins,
// checks, promotions, castling and en passant, they must agree with the full test everywhere
// they apply.
namespace {

int64_t compareQuickTests(Position& pos, PieceLists& lists, Side side, int32_t depth) {
    MoveList moves;
    const int32_t last = generateMoves(side, moves, pos, lists, allMoves);
    const bool inCheck = !isSquareSafe(pos, side, -1, 0);
    int64_t compared = 0;
    for (int32_t i = 0; i <= last; ++i) {
        const Move& m = moves.moves[i];
        const int32_t mover = side * pos.squares[squareIndex(m.fromFile, m.fromRank)];
        const bool enPassant = mover == pawn && m.fromFile != m.toFile &&
                               pos.squares[squareIndex(m.toFile, m.toRank)] == 0;
        const bool castles =
            mover == king && (m.toFile - m.fromFile) * (m.toFile - m.fromFile) == 4;
        PositionKey key = 0;
        Material material = {{0, 0}};
        const MoveUndo undo = playOnBoard(key, side, pos, lists, m, material);
        const bool legal = isSquareSafe(pos, side, -1, 0) != 0;
        if (mover != king && !inCheck && !enPassant) {
            EXPECT_EQ(kingSafeAfterMoveFrom(pos, side, squareIndex(m.fromFile, m.fromRank)), legal)
                << moveText(m).text;
            ++compared;
        }
        if (legal) {
            if (!enPassant && !castles) {
                EXPECT_EQ(givesCheck(pos, side, m), isSquareSafe(pos, -side, -1, 0) == 0)
                    << moveText(m).text;
                ++compared;
            }
            if (depth > 1) compared += compareQuickTests(pos, lists, -side, depth - 1);
        }
        takeBack(side, pos, lists, m, undo);
    }
    return compared;
}

} // namespace

TEST(QuickAttackTests, AgreeWithTheFullTestOverWholeTrees) {
    for (const char* fen : {
             "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
             "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
             "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
             "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
         }) {
        Position pos = fromFen(fen);
        PieceLists lists;
        buildPieceLists(pos, lists);
        EXPECT_GT(compareQuickTests(pos, lists, pos.sideToMove, 3), 1000) << fen;
    }
}

// The attack map agrees with the full test on every square, for both sides, in positions with
// every kind of piece, pawns on both wings and kings in the open.
TEST(QuickAttackTests, AttackMapAgreesWithTheFullTest) {
    for (const char* fen : {
             startFen,
             "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
             "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
             "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
             "7k/P7/8/3Qq3/8/2n5/6pp/K7 b - - 0 1",
         }) {
        const Position pos = fromFen(fen);
        PieceLists lists;
        buildPieceLists(pos, lists);
        for (Side side : {white, black}) {
            const uint64_t map = attackedSquares(pos, lists, side, occupancy(pos));
            for (int32_t sq = 0; sq < 64; ++sq) {
                EXPECT_EQ((map >> sq & 1) != 0, isSquareSafe(pos, -side, sq / 8, sq % 8) == 0)
                    << fen << " side " << side << " square " << sq;
            }
        }
    }
}
