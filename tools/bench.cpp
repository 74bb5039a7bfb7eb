// kovrel-bench: searches a fixed list of positions to a fixed depth, without book, time limit
// or input poll, with the tables and history cleared before each position. The node total is
// the signature of the engine: the same binary gives the same number on every run and machine.
//
//   kovrel-bench [DEPTH]     full-width depth in plies, default 4
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>

#include "bench_positions.h"
#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/movegen.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/transtable.h"

namespace {

// The bench searches without looking at the input or the clock.
void noPoll(SearchControl&) {}
int64_t noClock() {
    return 0;
}

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
    static SearchControl control;
    control.pollFunction = noPoll;
    control.now = noClock;
    control.output = SearchOutput::xboard; // quiet: no lists, no thinking lines
    bookEnabled = 0;
    searchTimeLimit = -1000;
    quiescenceDepth = 48;
    Position pos;
    PieceLists lists;
    Material material;
    static MoveList legalMoves;

    int64_t totalNodes = 0;
    std::chrono::steady_clock::duration searching{};
    for (const char* fen : benchPositions) {
        if (const char* problem = readFen(fen, pos)) {
            std::printf("Error (%s): kovrel-bench %s\n", problem, fen);
            return 1;
        }
        clearSearchTables();
        const Side side = pos.sideToMove;
        control.keyCount = 0;
        control.fiftyMoveCounter = 0;
        derivePositionState(pos, control.keyHistory[0], lists, material);
        const int32_t last = generateLegalMoves(side, legalMoves, pos, allMoves);
        fullWidthDepth = static_cast<int32_t>(depth * 8);
        control.StopFlag = 0;
        control.searchStartTime = 0;
        const auto started = std::chrono::steady_clock::now();
        const int32_t chosen = runSearch(control, side, legalMoves, last, pos, 0, 0, -1000);
        searching += std::chrono::steady_clock::now() - started;
        const Move& m = legalMoves.moves[chosen];
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
