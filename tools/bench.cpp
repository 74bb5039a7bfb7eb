// kovrel-bench: searches a fixed list of positions to a fixed depth, without book, time limit
// or input poll, with the tables and history cleared before each position. The node total is
// the signature of the engine: the same binary gives the same number on every run and machine.
//
//   kovrel-bench [DEPTH]     full-width depth in plies, default 4
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>

#include "core/fen.h"
#include "core/keys.h"
#include "core/movegen.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "ui/loop.h"

namespace {

constexpr const char* benchPositions[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2",
    "r1bqkbnr/pppp1ppp/2n5/1B2p3/4P3/5N2/PPPP1PPP/RNBQK2R b KQkq - 3 3",
    "rnbqkb1r/pp2pppp/3p1n2/8/3NP3/8/PPP2PPP/RNBQKB1R w KQkq - 1 5",
    "rnbqk2r/ppp1ppbp/3p1np1/8/2PPP3/2N5/PP3PPP/R1BQKBNR w KQkq - 0 5",
    "r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/3P1N2/PPP2PPP/RNBQK2R w KQkq - 1 5",
    "r4rk1/ppp2ppp/2n5/2bqp3/8/P2PB3/1PP1NPPP/R2Q1RK1 w - - 0 1",
    "r1bqr1k1/pp1nb1p1/4p2p/3p1p2/3P4/P1N1PNP1/1PQ2PP1/3RKB1R w K - 0 1",
    "r1b1qrk1/2p2ppp/pb1pnn2/1p2pNB1/3PP3/1BP5/PP2QPPP/RN1R2K1 w - - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
    "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1",
    "rr4k1/p1pq2pp/Q1n1pn2/2bpp3/4P3/2PP1NN1/PP3PPP/R1B1K2R b KQ - 0 1",
    "r1bqrk2/pp1n1n1p/3p1p2/P1pP1P1Q/2PpP1NP/6R1/2PB4/4RBK1 w - - 0 1",
    "5rk1/1ppb3p/p1pb4/6q1/3P1p1r/2P1R2P/PP1BQ1P1/5RKN w - - 0 1",
    "r1bq2rk/pp3pbp/2p1p1pQ/7P/3P4/2PB1N2/PP3PPR/2KR4 w - - 0 1",
    "rb3qk1/pQ3ppp/4p3/3P4/8/1P3N2/1P3PPP/3R2K1 w - - 0 1",
    "3qrbk1/ppp1r2n/3pP2p/3P4/2P4P/1P3Q2/PB6/R4R1K w - - 0 1",
    "2qr2k1/4b1p1/2p2p1p/1pP1p3/p2nP3/PbQNB1PP/1P3PK1/4RB2 b - - 0 1",
    "4rrk1/pppb4/7p/3P2pq/3Qn3/P5P1/1PP4P/R3RNNK b - - 0 1",
    "6k1/5p1p/2bP2pb/4p3/2P5/1p1pNPPP/1P1Q1BK1/1q6 b - - 0 1",
    "6kr/1q2r1p1/1p2N1Q1/5p2/1P1p4/6R1/7P/2R3K1 w - - 0 1",
    "r3r1k1/5pp1/p1p4p/2Pp4/8/q1NQP1BP/5PP1/4K2R b K - 0 1",
    "3r1k2/1p6/p4P2/2pP2Qb/8/1P1KB3/P6r/8 b - - 0 1",
    "8/3b2kp/4p1p1/pr1n4/N1N4P/1P4P1/1K3P2/3R4 w - - 0 1",
    "2kr4/ppp3Pp/4RP1B/2r5/5P2/1P6/P2p4/3K4 w - - 0 1",
    "8/7p/5k2/5p2/p1p2P2/Pr1pPK2/1P1R3P/8 b - - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "8/8/p7/1p1k4/1P6/P1K5/8/8 w - - 0 1",
    "8/5pk1/6p1/7p/7P/6P1/5PK1/8 w - - 0 1",
    "8/8/8/4k3/8/P7/8/4K3 w - - 0 1",
    "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1",
};

// The bench searches without looking at the input or the clock.
void noPoll(GameState&) {}

long residentKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main(int argc, char** argv) {
    long depth = 4;
    if (argc > 1) {
        char* end = nullptr;
        depth = std::strtol(argv[1], &end, 10);
        if (end == argv[1] || *end != '\0' || depth < 1 || depth > 31) {
            std::printf("Error (depth must be a number from 1 to 31): kovrel-bench\n");
            return 1;
        }
    }
    initPositionKeys();
    fillMaterialScale();
    if (!allocateTranspositionTables() || !allocateHistoryTable()) {
        std::printf("Error (not enough memory for hashtables): kovrel-bench\n");
        return 1;
    }
    static GameState game;
    resetGameState(game);
    game.xboardMode = 1; // quiet: no lists, no reports
    game.pollFunction = noPoll;
    bookEnabled = 0;
    searchTimeLimit = -1000;

    int64_t totalNodes = 0;
    std::chrono::steady_clock::duration searching{};
    for (const char* fen : benchPositions) {
        if (const char* problem = readFen(fen, game.position)) {
            std::printf("Error (%s): kovrel-bench %s\n", problem, fen);
            return 1;
        }
        clearSearchTables();
        game.turn = game.position.sideToMove;
        game.keyCount = 0;
        game.fiftyMoveCounter = 0;
        derivePositionState(game.position, game.keyHistory[0], game.lists, game.material);
        const int32_t last =
            generateLegalMoves(game.turn, game.legalMoves, game.position, allMoves);
        fullWidthDepth = static_cast<int32_t>(depth * 8);
        game.StopFlag = 0;
        game.searchStartTime = 0;
        const auto started = std::chrono::steady_clock::now();
        const int32_t chosen =
            runSearch(game, game.turn, game.legalMoves, last, game.position, 0, 0, -1000);
        searching += std::chrono::steady_clock::now() - started;
        const Move& m = game.legalMoves.moves[chosen];
        std::printf("%-70s %c%c%c%c %10lld nodes\n", fen, 'a' + m.fromFile, '1' + m.fromRank,
                    'a' + m.toFile, '1' + m.toRank, static_cast<long long>(nodeCount));
        totalNodes += nodeCount;
    }
    const long long ms = std::chrono::duration_cast<std::chrono::milliseconds>(searching).count();
    const long long nps = ms > 0 ? totalNodes * 1000 / ms : totalNodes * 1000;
    std::printf("lazy evaluations %lld of %lld bounded (%.1f%%), resident %ld kB\n",
                static_cast<long long>(lazyEvaluations), static_cast<long long>(boundedEvaluations),
                boundedEvaluations ? 100.0 * lazyEvaluations / boundedEvaluations : 0.0,
                residentKilobytes());
    std::printf("bench %lld nodes %lld ms %lld nps\n", static_cast<long long>(totalNodes), ms, nps);
    freeSearchTables();
    return 0;
}
