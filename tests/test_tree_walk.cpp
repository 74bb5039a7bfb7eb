// Walks perft trees and checks at every node that make and unmake keep the position and its
// companions consistent: the incremental key equals the key computed from scratch (and the key
// predicted without making the move), the lists
// and slotOf describe the squares, the material is the sum of the live pieces, and taking a move
// back (with the three saved fields written back) restores everything exactly.
#include <gtest/gtest.h>

#include <cstring>

#include "core/attacks.h"
#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"

namespace {

struct Walk {
    Position pos;
    PieceLists lists;
    uint64_t nodes = 0;
    uint64_t failures = 0;
};

bool sameLists(const PieceLists& a, const PieceLists& b, const Position& pos) {
    for (int32_t side = 0; side < 2; ++side) {
        if (a.slots[side][0][0] != b.slots[side][0][0]) return false;
        for (int32_t slot = 1; slot <= a.slots[side][0][0]; ++slot) {
            if (a.slots[side][slot][0] != b.slots[side][slot][0]) return false;
            // A dead slot's rank is never read; a live one must match.
            if (a.slots[side][slot][0] != -1 && a.slots[side][slot][1] != b.slots[side][slot][1])
                return false;
        }
    }
    for (int32_t sq = 0; sq < 64; ++sq) {
        if (pos.squares[sq] != 0 && a.slotOf[sq] != b.slotOf[sq]) return false;
    }
    return true;
}

void walk(Walk& w, Side side, int32_t depth, PositionKey key, const Material& material) {
    ++w.nodes;
    if (!positionIsOk(w.pos, w.lists, material, key)) {
        ++w.failures;
        return;
    }
    if (depth == 0) return;
    MoveList moves;
    const int32_t last = generateMoves(side, moves, w.pos, w.lists, allMoves);
    for (int32_t i = 0; i <= last; ++i) {
        const Move m = moves.moves[i];
        const Position before = w.pos;
        const PieceLists listsBefore = w.lists;
        const PieceCode captured = w.pos.squares[squareIndex(m.toFile, m.toRank)];
        const PositionKey predicted = keyAfterMove(key, side, w.pos, m);
        PositionKey childKey = key;
        Material childMaterial = material;
        int32_t capturedSlot = 0;
        makeMove(childKey, side, w.pos, w.lists, m.fromFile, m.fromRank, m.toFile, m.toRank,
                 m.promotion, childMaterial, capturedSlot);
        if (childKey != computeKey(w.pos) || predicted != childKey) ++w.failures;
        if (isSquareSafe(w.pos, side, -1, 0)) walk(w, -side, depth - 1, childKey, childMaterial);
        unmakeMove(side, w.pos, w.lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
                   captured, capturedSlot);
        w.pos.whiteCastling = before.whiteCastling;
        w.pos.blackCastling = before.blackCastling;
        w.pos.enPassant = before.enPassant;
        if (std::memcmp(&w.pos, &before, sizeof before) != 0) ++w.failures;
        if (!sameLists(w.lists, listsBefore, w.pos)) ++w.failures;
    }
}

struct WalkCase {
    const char* fen;
    int32_t depth;
    uint64_t nodes; // every node of the legal tree down to `depth`, the root included
};

// Node totals are the sums of the well-known perft counts of each depth, plus one for the root.
const WalkCase walkCases[] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 4, 1 + 20 + 400 + 8902 + 197281},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -", 3, 1 + 48 + 2039 + 97862},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -", 4, 1 + 14 + 191 + 2812 + 43238},
    {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 3, 1 + 6 + 264 + 9467},
    {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 3, 1 + 44 + 1486 + 62379},
};

TEST(TreeWalk, MakeAndUnmakeKeepEveryCompanionExact) {
    initPositionKeys();
    for (const WalkCase& c : walkCases) {
        Walk w;
        ASSERT_EQ(readFen(c.fen, w.pos), nullptr) << c.fen;
        PositionKey key;
        Material material;
        derivePositionState(w.pos, key, w.lists, material);
        walk(w, w.pos.sideToMove, c.depth, key, material);
        EXPECT_EQ(w.failures, 0u) << c.fen;
        EXPECT_EQ(w.nodes, c.nodes) << c.fen;
    }
}

} // namespace
