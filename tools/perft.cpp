// kovrel-perft: counts the leaves of the legal move tree with the engine's own generator,
// make/unmake and legality test, exactly as the search uses them.
//
//   kovrel-perft [--divide] DEPTH [FEN]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/attacks.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"

// Deepest tree the tool agrees to walk (far beyond anything that finishes).
constexpr long maxPerftDepth = 30;

namespace {

struct Tree {
    Position pos;
    PieceLists lists;
};

// Leaves below the position at `depth`, `side` to move. A move is legal when the mover's king
// is not attacked after it; king moves are legal by construction of the generator.
uint64_t countLeaves(Tree& tree, Side side, int32_t depth, PositionKey key,
                     const Material& material) {
    MoveList moves;
    const int32_t last = generateMoves(side, moves, tree.pos, tree.lists, allMoves);
    const int32_t whiteCastling = tree.pos.whiteCastling;
    const int32_t blackCastling = tree.pos.blackCastling;
    const int32_t enPassant = tree.pos.enPassant;
    uint64_t leaves = 0;
    for (int32_t i = 0; i <= last; ++i) {
        const Move& m = moves.moves[i];
        const PieceCode captured = tree.pos.squares[squareIndex(m.toFile, m.toRank)];
        const bool kingMoves = side * tree.pos.squares[squareIndex(m.fromFile, m.fromRank)] == king;
        PositionKey childKey = key;
        Material childMaterial = material;
        int32_t capturedSlot = 0;
        makeMove(childKey, side, tree.pos, tree.lists, m.fromFile, m.fromRank, m.toFile, m.toRank,
                 m.promotion, childMaterial, capturedSlot);
        if (kingMoves || isSquareSafe(tree.pos, side, -1, 0)) {
            leaves += depth <= 1 ? 1 : countLeaves(tree, -side, depth - 1, childKey, childMaterial);
        }
        unmakeMove(side, tree.pos, tree.lists, m.fromFile, m.fromRank, m.toFile, m.toRank,
                   m.promotion, captured, capturedSlot);
        tree.pos.whiteCastling = whiteCastling;
        tree.pos.blackCastling = blackCastling;
        tree.pos.enPassant = enPassant;
    }
    return leaves;
}

int fail(const char* what) {
    std::printf("Error (%s): kovrel-perft\n", what);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    initPositionKeys();
    bool divide = false;
    int arg = 1;
    if (arg < argc && std::strcmp(argv[arg], "--divide") == 0) {
        divide = true;
        ++arg;
    }
    if (arg >= argc || argc - arg > 2) return fail("usage: kovrel-perft [--divide] DEPTH [FEN]");
    char* end = nullptr;
    const long depth = std::strtol(argv[arg], &end, 10);
    if (end == argv[arg] || *end != '\0' || depth < 0 || depth > maxPerftDepth)
        return fail("depth must be a number from 0 to 30");
    const char* fen = arg + 1 < argc ? argv[arg + 1] : startFen;

    static Tree tree;
    const char* problem = readFen(fen, tree.pos);
    if (problem != nullptr) {
        char what[128];
        std::snprintf(what, sizeof what, "invalid FEN, %s", problem);
        return fail(what);
    }
    PositionKey key;
    Material material;
    derivePositionState(tree.pos, key, tree.lists, material);
    const Side side = tree.pos.sideToMove;

    const auto started = std::chrono::steady_clock::now();
    uint64_t nodes = 0;
    if (depth == 0) {
        nodes = 1;
    } else if (!divide) {
        nodes = countLeaves(tree, side, static_cast<int32_t>(depth), key, material);
    } else {
        // One line per legal root move, in generation order.
        MoveList roots;
        const int32_t last = generateLegalMoves(side, roots, tree.pos, allMoves);
        PieceLists rootLists = tree.lists;
        for (int32_t i = 0; i <= last; ++i) {
            const Move& m = roots.moves[i];
            const Position saved = tree.pos;
            PositionKey childKey = key;
            Material childMaterial = material;
            int32_t capturedSlot = 0;
            makeMove(childKey, side, tree.pos, tree.lists, m.fromFile, m.fromRank, m.toFile,
                     m.toRank, m.promotion, childMaterial, capturedSlot);
            const uint64_t below = depth == 1
                                       ? 1
                                       : countLeaves(tree, -side, static_cast<int32_t>(depth - 1),
                                                     childKey, childMaterial);
            tree.pos = saved;
            tree.lists = rootLists;
            const MoveText text = moveText(m);
            std::printf("%.4s%s: %llu\n", text.text, m.promotion ? text.text + 4 : "",
                        static_cast<unsigned long long>(below));
            nodes += below;
        }
    }
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
                             std::chrono::steady_clock::now() - started)
                             .count();
    const long long ms = elapsed;
    const unsigned long long nps =
        ms > 0 ? nodes * 1000ULL / static_cast<unsigned long long>(ms) : nodes * 1000ULL;
    std::printf("nodes %llu time %lld ms nps %llu\n", static_cast<unsigned long long>(nodes), ms,
                nps);
    return 0;
}
