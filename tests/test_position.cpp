#include <gtest/gtest.h>

#include <cstring>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/position.h"

namespace {

void freshKeys() {
    resetRandom();
    initPositionKeys();
}

Position fromFen(const char* fen) {
    Position pos;
    const char* error = readFen(fen, pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    return pos;
}

struct Derived {
    PositionKey key = 0;
    PieceLists lists;
    Material material;
};

Derived derive(const Position& pos) {
    Derived d;
    derivePositionState(pos, d.key, d.lists, d.material);
    return d;
}

void expectPhase(const char* fen, int32_t phase, int32_t margin) {
    SCOPED_TRACE(fen);
    derive(fromFen(fen));
    EXPECT_EQ(gamePhase, phase);
    EXPECT_EQ(lazyMargin, margin);
}

} // namespace

TEST(Position, InitialPositionFillsEveryField) {
    Position pos;
    std::memset(&pos, 0x5a, sizeof pos);
    setInitialPosition(pos);
    const PieceCode firstRank[8] = {4, 2, 3, 5, 6, 3, 2, 4};
    for (int32_t file = 0; file < 8; ++file) {
        EXPECT_EQ(pos.squares[squareIndex(file, 0)], firstRank[file]);
        EXPECT_EQ(pos.squares[squareIndex(file, 1)], 1);
        for (int32_t rank = 2; rank < 6; ++rank)
            EXPECT_EQ(pos.squares[squareIndex(file, rank)], 0);
        EXPECT_EQ(pos.squares[squareIndex(file, 6)], -1);
        EXPECT_EQ(pos.squares[squareIndex(file, 7)], -firstRank[file]);
    }
    EXPECT_EQ(pos.squares[4 * 8 + 0], 6);  // white king on e1
    EXPECT_EQ(pos.squares[3 * 8 + 7], -5); // black queen on d8
    EXPECT_EQ(pos.whiteKingFile, 4);
    EXPECT_EQ(pos.whiteKingRank, 0);
    EXPECT_EQ(pos.blackKingFile, 4);
    EXPECT_EQ(pos.blackKingRank, 7);
    EXPECT_EQ(pos.whiteCastling, 3);
    EXPECT_EQ(pos.blackCastling, 3);
    EXPECT_EQ(pos.enPassant, 0);
    EXPECT_EQ(pos.sideToMove, 1);
}

TEST(PieceLists, StartPositionSlotsFollowSquareOrder) {
    Position pos;
    setInitialPosition(pos);
    PieceLists lists;
    for (int32_t& slot : lists.slotOf)
        slot = 99;
    buildPieceLists(pos, lists);

    const int32_t(*whiteList)[2] = lists.slots[1];
    const int32_t(*blackList)[2] = lists.slots[0];
    EXPECT_EQ(whiteList[0][0], 16);
    EXPECT_EQ(blackList[0][0], 16);
    // White meets a1, a2, b1, b2, ... h1, h2; black meets a7, a8, b7, b8, ... h7, h8.
    for (int32_t file = 0; file < 8; ++file) {
        EXPECT_EQ(whiteList[2 * file + 1][0], file);
        EXPECT_EQ(whiteList[2 * file + 1][1], 0);
        EXPECT_EQ(whiteList[2 * file + 2][0], file);
        EXPECT_EQ(whiteList[2 * file + 2][1], 1);
        EXPECT_EQ(blackList[2 * file + 1][0], file);
        EXPECT_EQ(blackList[2 * file + 1][1], 6);
        EXPECT_EQ(blackList[2 * file + 2][0], file);
        EXPECT_EQ(blackList[2 * file + 2][1], 7);
    }
    EXPECT_EQ(lists.slotOf[squareIndex(0, 0)], 1);  // a1
    EXPECT_EQ(lists.slotOf[squareIndex(0, 1)], 2);  // a2
    EXPECT_EQ(lists.slotOf[squareIndex(4, 0)], 9);  // e1
    EXPECT_EQ(lists.slotOf[squareIndex(7, 1)], 16); // h2
    EXPECT_EQ(lists.slotOf[squareIndex(0, 6)], 1);  // a7
    EXPECT_EQ(lists.slotOf[squareIndex(4, 7)], 10); // e8
    EXPECT_EQ(lists.slotOf[squareIndex(7, 7)], 16); // h8
    // Empty squares are left alone.
    for (int32_t file = 0; file < 8; ++file) {
        for (int32_t rank = 2; rank < 6; ++rank)
            EXPECT_EQ(lists.slotOf[squareIndex(file, rank)], 99);
    }
}

TEST(PieceLists, SparsePositionNumbersSlotsBySquare) {
    // White pieces on c3, e1 and h7; black pieces on a8, d5 and g2.
    const Position pos = fromFen("k7/7P/8/3p4/8/2N5/6p1/4K3 w - - 0 1");
    PieceLists lists;
    buildPieceLists(pos, lists);
    const int32_t whiteSquares[3][2] = {{2, 2}, {4, 0}, {7, 6}};
    const int32_t blackSquares[3][2] = {{0, 7}, {3, 4}, {6, 1}};
    EXPECT_EQ(lists.slots[1][0][0], 3);
    EXPECT_EQ(lists.slots[0][0][0], 3);
    for (int32_t slot = 1; slot <= 3; ++slot) {
        EXPECT_EQ(lists.slots[1][slot][0], whiteSquares[slot - 1][0]);
        EXPECT_EQ(lists.slots[1][slot][1], whiteSquares[slot - 1][1]);
        EXPECT_EQ(lists.slots[0][slot][0], blackSquares[slot - 1][0]);
        EXPECT_EQ(lists.slots[0][slot][1], blackSquares[slot - 1][1]);
    }
    EXPECT_EQ(lists.slotOf[squareIndex(7, 6)], 3);
    EXPECT_EQ(lists.slotOf[squareIndex(6, 1)], 3);
}

TEST(Material, StartPositionAndDeadSlot) {
    Position pos;
    setInitialPosition(pos);
    PieceLists lists;
    buildPieceLists(pos, lists);
    Material material;
    sumMaterial(pos, lists, material);
    EXPECT_EQ(material.sum[0], 51000);
    EXPECT_EQ(material.sum[1], 51000);

    // The knight on b1 (white slot 3) has been captured: its slot is dead but still counted.
    lists.slots[1][3][0] = -1;
    sumMaterial(pos, lists, material);
    EXPECT_EQ(material.sum[1], 48000);
    EXPECT_EQ(material.sum[0], 51000);

    // A side without any slot sums to nothing.
    lists.slots[0][0][0] = 0;
    sumMaterial(pos, lists, material);
    EXPECT_EQ(material.sum[0], 0);
}

TEST(Material, DeriveSetsKeyListsAndBalance) {
    freshKeys();
    Position pos;
    setInitialPosition(pos);
    Derived d = derive(pos);
    EXPECT_EQ(d.key, 0x7EE956D4B3FB3833ULL);
    EXPECT_EQ(d.lists.slots[1][0][0], 16);
    EXPECT_EQ(d.material.sum[1], 51000);
    EXPECT_EQ(materialBalance, 0);

    // Queen and knight against a rook: 12000 + 12000 against 17000.
    d = derive(fromFen("4k3/8/8/3r4/8/8/8/1N1QK3 w - - 0 1"));
    EXPECT_EQ(d.material.sum[1], 24000);
    EXPECT_EQ(d.material.sum[0], 17000);
    EXPECT_EQ(materialBalance, 7000);
}

TEST(GamePhase, ExtremesAndStrongerSide) {
    expectPhase("4k3/8/8/8/8/8/8/4K3 w - - 0 1", 5, 3200);
    expectPhase(startFen, 0, 1200);
    // Full white army against a bare king: the stronger side decides.
    expectPhase("4k3/8/8/8/8/8/PPPPPPPP/RNBQKBNR w KQ - 0 1", 0, 1200);
    derive(fromFen("4k3/8/8/8/8/8/PPPPPPPP/RNBQKBNR w KQ - 0 1"));
    EXPECT_EQ(materialBalance, 39000);
    // The same with colours reversed.
    expectPhase("rnbqkbnr/pppppppp/8/8/8/8/8/4K3 w kq - 0 1", 0, 1200);
}

TEST(GamePhase, BoundariesInPawnUnits) {
    // Queen, rook, bishop, knight and eight pawns: 28.
    expectPhase("4k3/8/8/8/8/8/PPPPPPPP/1NBQK2R w - - 0 1", 1, 1600);
    // Queen, rook, bishop, knight and two pawns: 22; one pawn more: 23.
    expectPhase("4k3/8/8/8/8/8/PP6/1NBQK2R w - - 0 1", 2, 2000);
    expectPhase("4k3/8/8/8/8/8/PPP5/1NBQK2R w - - 0 1", 1, 1600);
    // The same 22 on the black side against a bare white king.
    expectPhase("1nbqk2r/pp6/8/8/8/8/8/4K3 w - - 0 1", 2, 2000);
    // Four pawns: 4; a rook: 5.
    expectPhase("4k3/8/8/8/8/8/PPPP4/4K3 w - - 0 1", 5, 3200);
    expectPhase("4k3/8/8/8/8/8/8/R3K3 w - - 0 1", 4, 2800);
    // Two rooks: 10; two rooks and a pawn: 11; two rooks and a knight: 13.
    expectPhase("4k3/8/8/8/8/8/8/R3K2R w - - 0 1", 4, 2800);
    expectPhase("4k3/8/8/8/8/8/P7/R3K2R w - - 0 1", 3, 2400);
    expectPhase("4k3/8/8/8/8/8/8/RN2K2R w - - 0 1", 3, 2400);
    // Queen, rook and two pawns: 16; queen, rook and bishop: 17.
    expectPhase("4k3/8/8/8/8/8/PP6/3QK2R w - - 0 1", 3, 2400);
    expectPhase("4k3/8/8/8/8/8/8/2BQK2R w - - 0 1", 2, 2000);
    // Queen, two rooks, bishop, knight and five pawns: 30; six pawns: 31.
    expectPhase("4k3/8/8/8/8/8/PPPPP3/RNBQK2R w - - 0 1", 1, 1600);
    expectPhase("4k3/8/8/8/8/8/PPPPPP2/RNBQK2R w - - 0 1", 0, 1200);
}
