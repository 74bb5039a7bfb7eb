#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "core/fen.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/position.h"

namespace {

using Names = std::vector<std::string>;

// Letters of the promotion kinds 2..5.
const std::string promotionLetters = "..nbrq";

Position fromFen(const char* fen) {
    Position pos;
    const char* error = readFen(fen, pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    return pos;
}

// "e2e4", or "b7a8q" for a promotion.
std::string name(const Move& m) {
    std::string text = {static_cast<char>('a' + m.fromFile), static_cast<char>('1' + m.fromRank),
                        static_cast<char>('a' + m.toFile), static_cast<char>('1' + m.toRank)};
    if (m.promotion != 0) text += promotionLetters[m.promotion];
    return text;
}

Names names(const MoveList& list, int32_t last) {
    Names result;
    for (int32_t i = 0; i <= last; ++i)
        result.push_back(name(list.moves[i]));
    return result;
}

Names generated(Position& pos, Side side, int32_t mode) {
    PieceLists lists;
    buildPieceLists(pos, lists);
    MoveList list;
    return names(list, generateMoves(side, list, pos, lists, mode));
}

Names legal(Position& pos, Side side) {
    MoveList list;
    return names(list, generateLegalMoves(side, list, pos, allMoves));
}

// The moves of the piece standing on `from`, e.g. "e1", in generation order.
Names movesFrom(const Names& all, const std::string& from) {
    Names result;
    for (const std::string& move : all) {
        if (move.compare(0, 2, from) == 0) result.push_back(move);
    }
    return result;
}

int32_t pseudoLegal(Position& pos, Side side, const char* text) {
    const int32_t promotion =
        text[4] == '\0' ? 0 : static_cast<int32_t>(promotionLetters.find(text[4]));
    return isPseudoLegalMove(pos, side, text[0] - 'a', text[1] - '1', text[2] - 'a', text[3] - '1',
                             promotion);
}

int64_t countLeaves(Position& pos, Side side, int32_t depth) {
    MoveList list;
    const int32_t last = generateLegalMoves(side, list, pos, allMoves);
    if (depth == 1) return last + 1;
    PieceLists lists;
    buildPieceLists(pos, lists);
    int64_t leaves = 0;
    for (int32_t i = 0; i <= last; ++i) {
        const Move& m = list.moves[i];
        const PieceCode captured = pos.squares[squareIndex(m.toFile, m.toRank)];
        const Position saved = pos;
        PositionKey key = 0;
        Material material = {{0, 0}};
        int32_t slot = 0;
        makeMove(key, side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
                 material, slot);
        leaves += countLeaves(pos, -side, depth - 1);
        unmakeMove(side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
                   captured, slot);
        pos.whiteCastling = saved.whiteCastling;
        pos.blackCastling = saved.blackCastling;
        pos.enPassant = saved.enPassant;
    }
    return leaves;
}

const char* const perftFens[] = {
    startFen,
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
};

const char* const castlingFen = "4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1";
const char* const bishopOnF1Fen = "4k3/8/8/8/8/7b/8/R3K2R w KQ - 0 1";
const char* const rookCheckFen = "4r1k1/8/8/8/8/8/8/R3K2R w KQ - 0 1";
const char* const rookOnB8Fen = "1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1";
const char* const pawnOnB7Fen = "n1r4k/1P6/8/8/8/8/8/K7 w - - 0 1";
const char* const pinnedKnightFen = "4r2k/8/8/8/8/8/P3N2P/4K3 w - - 0 1";

} // namespace

TEST(MoveGen, StartPositionOrder) {
    Position pos = fromFen(startFen);
    const Names expected = {"h2h3", "h2h4", "g2g3", "g2g4", "g1f3", "g1h3", "f2f3",
                            "f2f4", "e2e3", "e2e4", "d2d3", "d2d4", "c2c3", "c2c4",
                            "b2b3", "b2b4", "b1a3", "b1c3", "a2a3", "a2a4"};
    EXPECT_EQ(generated(pos, white, allMoves), expected);
    EXPECT_EQ(legal(pos, white), expected);
    EXPECT_TRUE(generated(pos, white, capturesOnly).empty());
}

TEST(MoveGen, EmptyListGivesNoMove) {
    Position pos = fromFen(startFen);
    PieceLists lists;
    buildPieceLists(pos, lists);
    lists.slots[1][0][0] = 0;
    MoveList list;
    EXPECT_EQ(generateMoves(white, list, pos, lists, allMoves), -1);
}

TEST(MoveGen, PromotionOrder) {
    Position pos = fromFen(pawnOnB7Fen);
    const Names pawnMoves = {"b7b8q", "b7b8r", "b7b8b", "b7b8n", "b7a8q", "b7a8r",
                             "b7a8b", "b7a8n", "b7c8n", "b7c8b", "b7c8r", "b7c8q"};
    Names all = pawnMoves;
    all.insert(all.end(), {"a1a2", "a1b1", "a1b2"});
    EXPECT_EQ(generated(pos, white, allMoves), all);
    // Pushes to the last rank count as captures.
    EXPECT_EQ(generated(pos, white, capturesOnly), pawnMoves);
}

TEST(MoveGen, EnPassantBothDirections) {
    // Right after d7-d5, a pawn on e5 takes towards the lower file, one on c5 towards the higher.
    Position right = fromFen("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1");
    ASSERT_EQ(right.enPassant, -4);
    EXPECT_EQ(movesFrom(generated(right, white, allMoves), "e5"), (Names{"e5e6", "e5d6"}));
    EXPECT_EQ(generated(right, white, capturesOnly), Names{"e5d6"});
    Position left = fromFen("4k3/8/8/2Pp4/8/8/8/4K3 w - d6 0 1");
    EXPECT_EQ(movesFrom(generated(left, white, allMoves), "c5"), (Names{"c5c6", "c5d6"}));
    EXPECT_EQ(generated(left, white, capturesOnly), Names{"c5d6"});
    // Without the double step just played there is nothing to take.
    Position late = fromFen("4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1");
    EXPECT_TRUE(generated(late, white, capturesOnly).empty());
    // Black's pawn on e4 after d2-d4.
    Position blackTakes = fromFen("4k3/8/8/8/3Pp3/8/8/4K3 b - d3 0 1");
    EXPECT_EQ(generated(blackTakes, black, capturesOnly), Names{"e4d3"});
    EXPECT_EQ(pseudoLegal(blackTakes, black, "e4d3"), 1);
    EXPECT_EQ(pseudoLegal(blackTakes, black, "e4f3"), 0);
}

// What a move takes: the piece on its target square, or the pawn beside it en passant.
TEST(MoveGen, CapturedKindCountsEnPassantAsAPawn) {
    // Black has just played d7-d5 beside White's pawn on e5; White's rook on a1 faces a knight.
    Position pos = fromFen("4k3/8/8/3pP3/8/8/8/Rn2K3 w - d6 0 1");
    const struct {
        Move move;
        int32_t kind;
    } cases[] = {
        {{4, 4, 3, 5, 0}, pawn},   // exd6 en passant: the d5 pawn
        {{4, 4, 4, 5, 0}, 0},      // e6: a push takes nothing
        {{0, 0, 1, 0, 0}, knight}, // Rxb1
        {{0, 0, 0, 4, 0}, 0},      // Ra5
        {{4, 0, 3, 1, 0}, 0},      // Kd2: a king's diagonal step is no capture
    };
    for (const auto& c : cases)
        EXPECT_EQ(capturedKind(pos, white, c.move), c.kind) << name(c.move);
    // Black's view: ...Nxa1 takes the rook.
    EXPECT_EQ(capturedKind(pos, black, Move{1, 0, 0, 0, 0}), rook);
}

TEST(MoveGen, CastlingFollowsTheKingsStepOntoThePassedSquare) {
    Position pos = fromFen(castlingFen);
    EXPECT_EQ(movesFrom(generated(pos, white, allMoves), "e1"),
              (Names{"e1d1", "e1c1", "e1d2", "e1e2", "e1f1", "e1g1", "e1f2"}));
    // Black visits its seventh rank before its home rank on each file.
    Position blackPos = fromFen("r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1");
    EXPECT_EQ(movesFrom(generated(blackPos, black, allMoves), "e8"),
              (Names{"e8d7", "e8d8", "e8c8", "e8e7", "e8f7", "e8f8", "e8g8"}));
    // No castling in capture mode.
    EXPECT_TRUE(generated(pos, white, capturesOnly).empty());
}

TEST(MoveGen, CastlingNeedsSafeSquaresRightsAndRoom) {
    // A bishop on h3 covers f1: neither f1 nor the king-side castling.
    Position bishopPos = fromFen(bishopOnF1Fen);
    EXPECT_EQ(movesFrom(generated(bishopPos, white, allMoves), "e1"),
              (Names{"e1d1", "e1c1", "e1d2", "e1e2", "e1f2"}));
    // A rook giving check on the e-file: no castling at all.
    Position check = fromFen(rookCheckFen);
    EXPECT_EQ(movesFrom(generated(check, white, allMoves), "e1"),
              (Names{"e1d1", "e1d2", "e1f1", "e1f2"}));
    // A rook attacking b1 does not stop the queen side: only c1, d1 and e1 must be safe.
    Position rookB8 = fromFen(rookOnB8Fen);
    EXPECT_EQ(movesFrom(generated(rookB8, white, allMoves), "e1"),
              (Names{"e1d1", "e1c1", "e1d2", "e1e2", "e1f1", "e1g1", "e1f2"}));
    // A knight on b1 blocks the queen side.
    Position knightPos = fromFen("4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1");
    EXPECT_EQ(movesFrom(generated(knightPos, white, allMoves), "e1"),
              (Names{"e1d1", "e1d2", "e1e2", "e1f1", "e1g1", "e1f2"}));
    // With only the king-side right left, only that castling.
    Position kingSide = fromFen("4k3/8/8/8/8/8/8/R3K2R w K - 0 1");
    EXPECT_EQ(movesFrom(generated(kingSide, white, allMoves), "e1"),
              (Names{"e1d1", "e1d2", "e1e2", "e1f1", "e1g1", "e1f2"}));
}

TEST(MoveGen, KingCannotStepBackAlongTheCheckingLine) {
    Position pos = fromFen("4r2k/8/8/8/4K3/8/8/8 w - - 0 1");
    EXPECT_EQ(generated(pos, white, allMoves),
              (Names{"e4d3", "e4d4", "e4d5", "e4f3", "e4f4", "e4f5"}));
}

TEST(MoveGen, KingMovesOnlyToSafeSquares) {
    // The black king on e6 covers d5, e5 and f5; the knight on c4 covers e3 and e5.
    Position pos = fromFen("8/8/4k3/8/2n1K3/8/8/8 w - - 0 1");
    EXPECT_EQ(generated(pos, white, allMoves), (Names{"e4d3", "e4d4", "e4f3", "e4f4"}));
}

TEST(MoveGen, SliderAndKnightOrder) {
    // A queen walks the bishop directions, then the rook directions, each up to the first piece.
    Position queenPos = fromFen("8/7k/8/8/8/1p6/1Q6/K7 w - - 0 1");
    EXPECT_EQ(movesFrom(generated(queenPos, white, allMoves), "b2"),
              (Names{"b2c3", "b2d4", "b2e5", "b2f6", "b2g7", "b2h8", "b2c1", "b2a3", "b2c2", "b2d2",
                     "b2e2", "b2f2", "b2g2", "b2h2", "b2b1", "b2a2", "b2b3"}));
    EXPECT_EQ(movesFrom(generated(queenPos, white, capturesOnly), "b2"), Names{"b2b3"});
    Position knightPos = fromFen("7k/8/8/8/3N4/8/8/K7 w - - 0 1");
    EXPECT_EQ(movesFrom(generated(knightPos, white, allMoves), "d4"),
              (Names{"d4c6", "d4c2", "d4e6", "d4e2", "d4f3", "d4f5", "d4b3", "d4b5"}));
}

TEST(MoveGen, LegalFilterDropsPinnedKnightMovesKeepingOrder) {
    Position pos = fromFen(pinnedKnightFen);
    const Position before = pos;
    EXPECT_EQ(generated(pos, white, allMoves).size(), 14u);
    EXPECT_EQ(legal(pos, white),
              (Names{"h2h3", "h2h4", "e1d1", "e1d2", "e1f1", "e1f2", "a2a3", "a2a4"}));
    EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0);
}

TEST(MoveGen, MateAndStalemateHaveNoLegalMove) {
    Position mate = fromFen("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3");
    EXPECT_FALSE(generated(mate, white, allMoves).empty());
    MoveList list;
    EXPECT_EQ(generateLegalMoves(white, list, mate, allMoves), -1);
    Position stalemate = fromFen("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(generateLegalMoves(black, list, stalemate, allMoves), -1);
}

TEST(MoveGen, LegalMoveCountsOfKnownPositions) {
    const int64_t depthOne[] = {20, 48, 14, 6, 44, 46};
    const int64_t depthTwo[] = {400, 2039, 191, 264, 1486, 2079};
    for (int32_t i = 0; i < 6; ++i) {
        SCOPED_TRACE(perftFens[i]);
        Position pos = fromFen(perftFens[i]);
        const Position before = pos;
        EXPECT_EQ(countLeaves(pos, pos.sideToMove, 1), depthOne[i]);
        EXPECT_EQ(countLeaves(pos, pos.sideToMove, 2), depthTwo[i]);
        EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0);
    }
}

TEST(PseudoLegal, Rejections) {
    Position start = fromFen(startFen);
    EXPECT_EQ(pseudoLegal(start, white, "g1f3"), 1);
    EXPECT_EQ(pseudoLegal(start, white, "g1f3q"), 0); // a knight does not promote
    EXPECT_EQ(pseudoLegal(start, white, "e2e4"), 1);
    EXPECT_EQ(pseudoLegal(start, white, "e2e5"), 0);
    EXPECT_EQ(pseudoLegal(start, white, "a1a3"), 0); // through the a2 pawn
    EXPECT_EQ(pseudoLegal(start, white, "a1a2"), 0); // onto an own piece
    EXPECT_EQ(pseudoLegal(start, white, "e4e5"), 0); // from an empty square
    EXPECT_EQ(pseudoLegal(start, white, "e7e5"), 0); // an enemy pawn
    EXPECT_EQ(pseudoLegal(start, black, "e7e5"), 1);
    EXPECT_EQ(pseudoLegal(start, black, "e7e6q"), 0);

    Position pawnPos = fromFen(pawnOnB7Fen);
    EXPECT_EQ(pseudoLegal(pawnPos, white, "b7b8"), 0); // the last rank needs a promotion
    EXPECT_EQ(pseudoLegal(pawnPos, white, "b7b8q"), 1);
    EXPECT_EQ(pseudoLegal(pawnPos, white, "b7c8n"), 1);
    EXPECT_EQ(pseudoLegal(pawnPos, white, "b7a8"), 0);

    Position rookPos = fromFen("4k3/8/8/8/P7/8/8/R3K3 w - - 0 1");
    EXPECT_EQ(pseudoLegal(rookPos, white, "a1a3"), 1);
    EXPECT_EQ(pseudoLegal(rookPos, white, "a1a8"), 0);
    EXPECT_EQ(pseudoLegal(rookPos, white, "a1d1"), 1);
    EXPECT_EQ(pseudoLegal(rookPos, white, "a1b2"), 0);
}

TEST(PseudoLegal, CastlingAsTheGeneratorHasIt) {
    Position pos = fromFen(castlingFen);
    EXPECT_EQ(pseudoLegal(pos, white, "e1g1"), 1);
    EXPECT_EQ(pseudoLegal(pos, white, "e1c1"), 1);
    Position bishopPos = fromFen(bishopOnF1Fen);
    EXPECT_EQ(pseudoLegal(bishopPos, white, "e1g1"), 0);
    EXPECT_EQ(pseudoLegal(bishopPos, white, "e1c1"), 1);
    EXPECT_EQ(pseudoLegal(bishopPos, white, "e1f1"), 0);
    Position check = fromFen(rookCheckFen);
    EXPECT_EQ(pseudoLegal(check, white, "e1g1"), 0);
    EXPECT_EQ(pseudoLegal(check, white, "e1c1"), 0);
    EXPECT_EQ(pseudoLegal(check, white, "e1e2"), 0);
    Position rookB8 = fromFen(rookOnB8Fen);
    EXPECT_EQ(pseudoLegal(rookB8, white, "e1c1"), 1);
    Position noRights = fromFen("4k3/8/8/8/8/8/8/R3K2R w - - 0 1");
    EXPECT_EQ(pseudoLegal(noRights, white, "e1g1"), 0);
    EXPECT_EQ(pseudoLegal(noRights, white, "e1c1"), 0);
}

TEST(PseudoLegal, AgreesWithTheGeneratorOnEveryFromToPair) {
    std::vector<const char*> fens(std::begin(perftFens), std::end(perftFens));
    fens.insert(fens.end(),
                {castlingFen, bishopOnF1Fen, rookCheckFen, rookOnB8Fen, pawnOnB7Fen,
                 pinnedKnightFen, "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1",
                 "4k3/8/8/8/3Pp3/8/8/4K3 b - d3 0 1", "r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1"});
    for (const char* fen : fens) {
        SCOPED_TRACE(fen);
        for (const Side side : {white, black}) {
            Position pos = fromFen(fen);
            const Position before = pos;
            PieceLists lists;
            buildPieceLists(pos, lists);
            MoveList list;
            const int32_t last = generateMoves(side, list, pos, lists, allMoves);
            std::set<std::tuple<int32_t, int32_t, int32_t>> wanted;
            for (int32_t i = 0; i <= last; ++i) {
                const Move& m = list.moves[i];
                wanted.insert({squareIndex(m.fromFile, m.fromRank), squareIndex(m.toFile, m.toRank),
                               m.promotion});
            }
            int32_t accepted = 0;
            for (int32_t from = 0; from < 64; ++from) {
                for (int32_t to = 0; to < 64; ++to) {
                    for (const int32_t promotion : {0, 2, 3, 4, 5}) {
                        const int32_t answer = isPseudoLegalMove(pos, side, from / 8, from % 8,
                                                                 to / 8, to % 8, promotion);
                        const bool isGenerated = wanted.count({from, to, promotion}) != 0;
                        EXPECT_EQ(answer, isGenerated ? 1 : 0)
                            << "side " << side << " "
                            << name({from / 8, from % 8, to / 8, to % 8, promotion});
                        accepted += answer;
                    }
                }
            }
            EXPECT_EQ(accepted, last + 1);
            EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0);
        }
    }
}
