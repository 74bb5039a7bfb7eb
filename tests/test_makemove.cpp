#include <gtest/gtest.h>

#include <cstring>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/position.h"

namespace {

// A position with its companions, as the game controller keeps it.
struct Game {
    Position pos;
    PositionKey key = 0;
    PieceLists lists;
    Material material;
};

// What a caller keeps to take a move back.
struct Undo {
    Side side;
    Move move;
    PieceCode captured;
    int32_t whiteCastling;
    int32_t blackCastling;
    int32_t enPassant;
    int32_t capturedSlot;
};

constexpr int32_t untouchedSlot = 77;

Game setUp(const char* fen) {
    Game game;
    const char* error = readFen(fen, game.pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    derivePositionState(game.pos, game.key, game.lists, game.material);
    return game;
}

Undo play(Game& game, Side side, Move move) {
    Undo undo = {side,
                 move,
                 game.pos.squares[squareIndex(move.toFile, move.toRank)],
                 game.pos.whiteCastling,
                 game.pos.blackCastling,
                 game.pos.enPassant,
                 untouchedSlot};
    makeMove(game.key, side, game.pos, game.lists, move.fromFile, move.fromRank, move.toFile,
             move.toRank, move.promotion, game.material, undo.capturedSlot);
    return undo;
}

void takeBack(Game& game, const Undo& undo) {
    const Move& m = undo.move;
    unmakeMove(undo.side, game.pos, game.lists, m.fromFile, m.fromRank, m.toFile, m.toRank,
               m.promotion, undo.captured, undo.capturedSlot);
    game.pos.whiteCastling = undo.whiteCastling;
    game.pos.blackCastling = undo.blackCastling;
    game.pos.enPassant = undo.enPassant;
}

// The companions agree with the board: the key, the material, and every live slot with slotOf.
void expectConsistent(const Game& game) {
    EXPECT_EQ(game.key, computeKey(game.pos));
    Material summed;
    sumMaterial(game.pos, game.lists, summed);
    EXPECT_EQ(game.material.sum[0], summed.sum[0]);
    EXPECT_EQ(game.material.sum[1], summed.sum[1]);
    int32_t pieces[2] = {0, 0};
    for (int32_t sq = 0; sq < 64; ++sq) {
        const PieceCode code = game.pos.squares[sq];
        if (code == 0) continue;
        const int32_t side = code > 0 ? 1 : 0;
        ++pieces[side];
        const int32_t slot = game.lists.slotOf[sq];
        ASSERT_GE(slot, 1);
        ASSERT_LE(slot, game.lists.slots[side][0][0]);
        EXPECT_EQ(squareIndex(game.lists.slots[side][slot][0], game.lists.slots[side][slot][1]),
                  sq);
    }
    for (int32_t side = 0; side < 2; ++side) {
        int32_t live = 0;
        for (int32_t slot = 1; slot <= game.lists.slots[side][0][0]; ++slot)
            live += game.lists.slots[side][slot][0] != -1;
        EXPECT_EQ(live, pieces[side]);
    }
    EXPECT_EQ(game.pos.squares[squareIndex(game.pos.whiteKingFile, game.pos.whiteKingRank)], 6);
    EXPECT_EQ(game.pos.squares[squareIndex(game.pos.blackKingFile, game.pos.blackKingRank)], -6);
}

// Board, king fields, castling, en passant, the lists with their dead marks, and slotOf of
// every occupied square.
void expectSameState(const Game& actual, const Game& expected) {
    // All 72 fields: squares, king fields, castling, en passant and side to move.
    ASSERT_EQ(std::memcmp(&actual.pos, &expected.pos, sizeof(Position)), 0);
    for (int32_t side = 0; side < 2; ++side) {
        const int32_t count = expected.lists.slots[side][0][0];
        ASSERT_EQ(actual.lists.slots[side][0][0], count);
        for (int32_t slot = 1; slot <= count; ++slot) {
            ASSERT_EQ(actual.lists.slots[side][slot][0], expected.lists.slots[side][slot][0]);
            if (expected.lists.slots[side][slot][0] != -1) {
                ASSERT_EQ(actual.lists.slots[side][slot][1], expected.lists.slots[side][slot][1]);
            }
        }
    }
    for (int32_t sq = 0; sq < 64; ++sq) {
        if (expected.pos.squares[sq] != 0) {
            ASSERT_EQ(actual.lists.slotOf[sq], expected.lists.slotOf[sq]) << "square " << sq;
        }
    }
}

void expectSlot(const Game& game, Side side, int32_t slot, int32_t file, int32_t rank) {
    EXPECT_EQ(game.lists.slots[sideIndex(side)][slot][0], file);
    EXPECT_EQ(game.lists.slots[sideIndex(side)][slot][1], rank);
}

PieceCode at(const Game& game, int32_t file, int32_t rank) {
    return game.pos.squares[squareIndex(file, rank)];
}

class MakeMove : public ::testing::Test {
protected:
    void SetUp() override {
        resetRandom();
        initPositionKeys();
    }
};

} // namespace

TEST_F(MakeMove, KingsPawnOpening) {
    Game game = setUp(startFen);
    const Game before = game;
    const Undo undo = play(game, white, {4, 1, 4, 3, 0});
    EXPECT_EQ(at(game, 4, 1), 0);
    EXPECT_EQ(at(game, 4, 3), 1);
    EXPECT_EQ(game.pos.enPassant, 5);
    // The e2 pawn is white's tenth piece in square order: a1 a2 b1 b2 c1 c2 d1 d2 e1 e2.
    expectSlot(game, white, 10, 4, 3);
    EXPECT_EQ(game.lists.slotOf[squareIndex(4, 3)], 10);
    EXPECT_EQ(game.material.sum[0], 51000);
    EXPECT_EQ(game.material.sum[1], 51000);
    EXPECT_EQ(game.key, 0x42EC401D68E52886ULL);
    EXPECT_EQ(undo.capturedSlot, untouchedSlot);
    expectConsistent(game);

    takeBack(game, undo);
    expectSameState(game, before);
}

TEST_F(MakeMove, WhiteCastlesKingSide) {
    Game game = setUp("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQK2R w KQkq - 0 1");
    const Game before = game;
    // White's slots: a1 a2 b1 b2 c1 c2 d1 d2 e1(9) e2 f2 g2 h1(13) h2.
    ASSERT_EQ(game.lists.slotOf[squareIndex(7, 0)], 13);
    const Undo undo = play(game, white, {4, 0, 6, 0, 0});
    EXPECT_EQ(game.pos.whiteKingFile, 6);
    EXPECT_EQ(game.pos.whiteKingRank, 0);
    EXPECT_EQ(at(game, 5, 0), 4);
    EXPECT_EQ(at(game, 7, 0), 0);
    EXPECT_EQ(at(game, 6, 0), 6);
    EXPECT_EQ(at(game, 4, 0), 0);
    EXPECT_EQ(game.lists.slotOf[squareIndex(5, 0)], 13);
    expectSlot(game, white, 13, 5, 0);
    expectSlot(game, white, 9, 6, 0);
    EXPECT_EQ(game.pos.whiteCastling, 0);
    EXPECT_EQ(game.pos.blackCastling, 3);
    EXPECT_EQ(undo.capturedSlot, untouchedSlot);
    expectConsistent(game);
    // Exactly white's castling key of value 3 has gone from the key.
    Position withRights = game.pos;
    withRights.whiteCastling = 3;
    EXPECT_EQ(game.key ^ castlingKeys[0][2], computeKey(withRights));

    takeBack(game, undo);
    expectSameState(game, before);
}

TEST_F(MakeMove, BlackCastlesQueenSide) {
    Game game = setUp("r3kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1");
    const Game before = game;
    // Black's slots: a7 a8(2) b7 c7 d7 e7 e8(7) ...
    const Undo undo = play(game, black, {4, 7, 2, 7, 0});
    EXPECT_EQ(at(game, 2, 7), -6);
    EXPECT_EQ(at(game, 3, 7), -4);
    EXPECT_EQ(at(game, 0, 7), 0);
    EXPECT_EQ(at(game, 4, 7), 0);
    EXPECT_EQ(game.pos.blackKingFile, 2);
    EXPECT_EQ(game.pos.blackKingRank, 7);
    EXPECT_EQ(game.lists.slotOf[squareIndex(3, 7)], 2);
    expectSlot(game, black, 2, 3, 7);
    expectSlot(game, black, 7, 2, 7);
    EXPECT_EQ(game.pos.blackCastling, 0);
    EXPECT_EQ(game.pos.whiteCastling, 3);
    expectConsistent(game);

    takeBack(game, undo);
    expectSameState(game, before);
}

TEST_F(MakeMove, WhiteTakesEnPassant) {
    Game game = setUp("4k3/3p4/8/4P3/8/8/8/4K3 b - - 0 1");
    // Black's slots: d7(1) e8(2).
    const Undo doubleStep = play(game, black, {3, 6, 3, 4, 0});
    EXPECT_EQ(game.pos.enPassant, -4);
    expectSlot(game, black, 1, 3, 4);
    expectConsistent(game);
    const Game before = game;

    const Undo undo = play(game, white, {4, 4, 3, 5, 0});
    EXPECT_EQ(at(game, 3, 4), 0);
    EXPECT_EQ(at(game, 3, 5), 1);
    EXPECT_EQ(at(game, 4, 4), 0);
    EXPECT_EQ(game.material.sum[0], 12000);
    EXPECT_EQ(game.material.sum[1], 13000);
    EXPECT_EQ(undo.capturedSlot, 1);
    EXPECT_EQ(game.lists.slots[0][1][0], -1);
    EXPECT_EQ(game.lists.slots[0][0][0], 2);
    EXPECT_EQ(game.pos.enPassant, 0);
    expectConsistent(game);

    // The captured code of an en-passant capture is 0: the target square was empty.
    EXPECT_EQ(undo.captured, 0);
    takeBack(game, undo);
    EXPECT_EQ(at(game, 3, 4), -1);
    expectSlot(game, black, 1, 3, 4);
    expectSameState(game, before);

    takeBack(game, doubleStep);
    expectSameState(game, setUp("4k3/3p4/8/4P3/8/8/8/4K3 b - - 0 1"));
}

TEST_F(MakeMove, BlackTakesEnPassant) {
    Game game = setUp("4k3/8/8/8/3p4/8/2P5/4K3 w - - 0 1");
    // White's slots: c2(1) e1(2).
    play(game, white, {2, 1, 2, 3, 0});
    EXPECT_EQ(game.pos.enPassant, 3);
    const Game before = game;

    const Undo undo = play(game, black, {3, 3, 2, 2, 0});
    EXPECT_EQ(at(game, 2, 3), 0);
    EXPECT_EQ(at(game, 2, 2), -1);
    EXPECT_EQ(game.material.sum[1], 12000);
    EXPECT_EQ(undo.capturedSlot, 1);
    EXPECT_EQ(game.lists.slots[1][1][0], -1);
    expectConsistent(game);

    takeBack(game, undo);
    expectSameState(game, before);
}

TEST_F(MakeMove, PromotionWithCapture) {
    Game game = setUp("r3k3/1P6/8/8/8/8/8/4K3 w q - 0 1");
    ASSERT_EQ(game.pos.blackCastling, 2);
    const Game before = game;
    // White's slots: b7(1) e1(2); black's: a8(1) e8(2).
    const Undo undo = play(game, white, {1, 6, 0, 7, 5});
    EXPECT_EQ(at(game, 0, 7), 5);
    EXPECT_EQ(at(game, 1, 6), 0);
    EXPECT_EQ(game.material.sum[0], 17000 - 5000);
    EXPECT_EQ(game.material.sum[1], 13000 + 8000);
    EXPECT_EQ(game.pos.blackCastling, 0);
    EXPECT_EQ(undo.capturedSlot, 1);
    EXPECT_EQ(game.lists.slots[0][1][0], -1);
    expectSlot(game, white, 1, 0, 7);
    EXPECT_EQ(game.lists.slotOf[squareIndex(0, 7)], 1);
    expectConsistent(game);

    EXPECT_EQ(undo.captured, -4);
    takeBack(game, undo);
    EXPECT_EQ(at(game, 1, 6), 1);
    EXPECT_EQ(at(game, 0, 7), -4);
    expectSameState(game, before);
}

TEST_F(MakeMove, QuietPromotionsOfBothSides) {
    Game game = setUp("4k3/1P6/8/8/8/8/p7/4K3 w - - 0 1");
    const Game before = game;
    const Undo underPromotion = play(game, white, {1, 6, 1, 7, 2});
    EXPECT_EQ(at(game, 1, 7), 2);
    EXPECT_EQ(game.material.sum[1], 13000 + 2000);
    EXPECT_EQ(underPromotion.capturedSlot, untouchedSlot);
    expectConsistent(game);

    const Undo promotion = play(game, black, {0, 1, 0, 0, 5});
    EXPECT_EQ(at(game, 0, 0), -5);
    EXPECT_EQ(game.material.sum[0], 13000 + 8000);
    expectConsistent(game);

    takeBack(game, promotion);
    takeBack(game, underPromotion);
    expectSameState(game, before);
}

TEST_F(MakeMove, RooksLeavingOrLosingTheirCorners) {
    const char* fen = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    Game game = setUp(fen);
    Undo undo = play(game, white, {7, 0, 7, 1, 0});
    EXPECT_EQ(game.pos.whiteCastling, 2);
    EXPECT_EQ(game.pos.blackCastling, 3);
    expectConsistent(game);
    takeBack(game, undo);
    expectSameState(game, setUp(fen));

    // Taking the rook on h8 costs black the king side although black did not move.
    game = setUp(fen);
    undo = play(game, white, {7, 0, 7, 7, 0});
    EXPECT_EQ(game.pos.whiteCastling, 2);
    EXPECT_EQ(game.pos.blackCastling, 2);
    EXPECT_EQ(game.material.sum[0], 22000 - 5000);
    expectConsistent(game);
    takeBack(game, undo);
    expectSameState(game, setUp(fen));

    game = setUp(fen);
    play(game, white, {0, 0, 0, 7, 0});
    EXPECT_EQ(game.pos.whiteCastling, 1);
    EXPECT_EQ(game.pos.blackCastling, 1);
    expectConsistent(game);

    // A king step gives up both sides.
    game = setUp(fen);
    undo = play(game, black, {4, 7, 3, 7, 0});
    EXPECT_EQ(game.pos.blackCastling, 0);
    EXPECT_EQ(game.pos.whiteCastling, 3);
    expectConsistent(game);
    takeBack(game, undo);
    expectSameState(game, setUp(fen));

    // With only the king side left, the a1 rook may move without changing anything.
    game = setUp("r3k2r/8/8/8/8/8/8/R3K2R w Kkq - 0 1");
    play(game, white, {0, 0, 0, 3, 0});
    EXPECT_EQ(game.pos.whiteCastling, 1);
    expectConsistent(game);
}

TEST_F(MakeMove, EnPassantFieldLastsOneMove) {
    Game game = setUp(startFen);
    play(game, white, {4, 1, 4, 3, 0});
    EXPECT_EQ(game.pos.enPassant, 5);
    // One double step replaces the other.
    play(game, black, {3, 6, 3, 4, 0});
    EXPECT_EQ(game.pos.enPassant, -4);
    expectConsistent(game);
    // A knight move clears it, key included.
    play(game, white, {6, 0, 5, 2, 0});
    EXPECT_EQ(game.pos.enPassant, 0);
    expectConsistent(game);
    // A single pawn step does not set it.
    play(game, black, {7, 6, 7, 5, 0});
    EXPECT_EQ(game.pos.enPassant, 0);
    expectConsistent(game);
}

TEST_F(MakeMove, CapturedSlotAndSideToMove) {
    Game game = setUp("4k3/p7/8/3n4/8/8/8/3QK3 b - - 0 1");
    game.pos.sideToMove = 1;
    // A quiet move leaves the output alone.
    const Undo quiet = play(game, black, {3, 4, 1, 5, 0});
    EXPECT_EQ(quiet.capturedSlot, untouchedSlot);
    EXPECT_EQ(game.pos.sideToMove, 1);
    expectConsistent(game);
    game = setUp("4k3/p7/8/3n4/8/8/8/3QK3 b - - 0 1");
    game.pos.sideToMove = 1;
    // A capture writes the slot of the captured piece: black's slots are a7, d5, e8.
    const Undo capture = play(game, white, {3, 0, 3, 4, 0});
    EXPECT_EQ(capture.capturedSlot, 2);
    EXPECT_EQ(game.pos.sideToMove, 1);
    expectConsistent(game);
}

TEST_F(MakeMove, EveryMoveAndReplyRoundTrips) {
    const char* fens[] = {
        startFen,
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
        "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
        "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
    };
    for (const char* fen : fens) {
        SCOPED_TRACE(fen);
        Game game = setUp(fen);
        const Game original = game;
        const Side side = game.pos.sideToMove;
        // Legal first moves, so that no reply can take the king.
        MoveList moves;
        const int32_t last = generateLegalMoves(side, moves, game.pos, allMoves);
        ASSERT_GE(last, 0);
        for (int32_t i = 0; i <= last; ++i) {
            const Undo undo = play(game, side, moves.moves[i]);
            expectConsistent(game);
            const Game afterFirst = game;
            MoveList replies;
            const int32_t lastReply = generateMoves(-side, replies, game.pos, game.lists, 0);
            for (int32_t j = 0; j <= lastReply; ++j) {
                const Undo reply = play(game, -side, replies.moves[j]);
                expectConsistent(game);
                takeBack(game, reply);
                expectSameState(game, afterFirst);
                game.key = afterFirst.key;
                game.material = afterFirst.material;
            }
            takeBack(game, undo);
            expectSameState(game, original);
            game.key = original.key;
            game.material = original.material;
            if (HasFatalFailure()) return;
        }
    }
}
