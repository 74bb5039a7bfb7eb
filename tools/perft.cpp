// kovrel-perft: counts the leaves of the legal move tree with the engine's own generator,
// make/unmake and attack tests, as the search uses them.
//
//   kovrel-perft [--divide] [--full] DEPTH [FEN]
//
// The moves of the last ply are counted without being made (bulk counting): a move is legal
// unless it is a pinned piece's move off its line, a move while in check or en passant (those
// are made and the king tested). --full makes and tests every move of every ply.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/attacks.h"
#include "core/derive.h"
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

// Pieces of `side` pinned against their own king: pinLine[square] is the line (0..7) from the
// king through the piece, -1 for a piece that may leave its square.
void findPins(const Position& pos, Side side, int8_t* pinLine) {
    const uint64_t occupied = occupancy(pos);
    const int32_t home = squareIndex(kingFile(pos, side), kingRank(pos, side));
    for (int32_t l = 0; l < 8; ++l) {
        const int32_t first = firstOnLine(occupied, home, l);
        if (first < 0 || side * pos.squares[first] <= 0) continue;
        const int32_t second = firstOnLine(occupied, first, l);
        if (second < 0) continue;
        const int32_t kind = -side * pos.squares[second];
        if (kind == queen || kind == (isDiagonal(l) ? bishop : rook))
            pinLine[first] = static_cast<int8_t>(l);
    }
}

// Leaves below the position at `depth`, `side` to move. King moves are legal by construction
// of the generator; another piece's move is legal when its king is not attacked after it.
uint64_t countLeaves(Tree& tree, Side side, int32_t depth, PositionKey key,
                     const Material& material, bool bulk) {
    MoveList moves;
    const int32_t last = generateMoves(side, moves, tree.pos, tree.lists, allMoves);
    const bool inCheck = !isSquareSafe(tree.pos, side, -1, 0);
    int8_t pinLine[64];
    for (int8_t& p : pinLine)
        p = -1;
    if (bulk && !inCheck) findPins(tree.pos, side, pinLine);
    const int32_t home = squareIndex(kingFile(tree.pos, side), kingRank(tree.pos, side));
    uint64_t leaves = 0;
    for (int32_t i = 0; i <= last; ++i) {
        const Move& m = moves.moves[i];
        const int32_t from = squareIndex(m.fromFile, m.fromRank);
        const int32_t to = squareIndex(m.toFile, m.toRank);
        const int32_t mover = side * tree.pos.squares[from];
        const bool enPassant = mover == pawn && m.fromFile != m.toFile && tree.pos.squares[to] == 0;
        // Without check or en passant, only a pinned piece can expose its king, and only by
        // leaving the line of its pin.
        const bool known = mover == king || (bulk && !inCheck && !enPassant);
        const bool legal =
            mover == king || pinLine[from] < 0 || geometry.line[home][to] == pinLine[from];
        if (known && !legal) continue;
        if (known && bulk && depth <= 1) {
            ++leaves;
            continue;
        }
        PositionKey childKey = key;
        Material childMaterial = material;
        const MoveUndo undo = playOnBoard(childKey, side, tree.pos, tree.lists, m, childMaterial);
        if (known || isSquareSafe(tree.pos, side, -1, 0)) {
            leaves +=
                depth <= 1 ? 1 : countLeaves(tree, -side, depth - 1, childKey, childMaterial, bulk);
        }
        takeBack(side, tree.pos, tree.lists, m, undo);
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
    bool bulk = true;
    int arg = 1;
    for (; arg < argc; ++arg) {
        if (std::strcmp(argv[arg], "--divide") == 0) {
            divide = true;
        } else if (std::strcmp(argv[arg], "--full") == 0) {
            bulk = false;
        } else {
            break;
        }
    }
    if (arg >= argc || argc - arg > 2)
        return fail("usage: kovrel-perft [--divide] [--full] DEPTH [FEN]");
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
        nodes = countLeaves(tree, side, static_cast<int32_t>(depth), key, material, bulk);
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
                                                     childKey, childMaterial, bulk);
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
    std::printf("nodes %llu time %lld ms nps %llu%s\n", static_cast<unsigned long long>(nodes), ms,
                nps, bulk && depth > 0 ? " (last ply counted in bulk)" : "");
    return 0;
}
