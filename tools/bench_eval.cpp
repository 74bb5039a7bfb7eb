// Speed of one full positional evaluation over a fixed set of positions, by game phase.
//   build/kovrel-bench-eval [--benchmark_...]
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/fen.h"
#include "core/keys.h"
#include "eval/evaluate.h"
#include "eval/material.h"

namespace {

// Openings, middlegames with many pieces, and endgames (the phase comes from the material).
constexpr const char* benchPositions[] = {
    // openings
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2",
    "r1bqkbnr/pppp1ppp/2n5/1B2p3/4P3/5N2/PPPP1PPP/RNBQK2R b KQkq - 3 3",
    "rnbqkb1r/pp2pppp/3p1n2/8/3NP3/8/PPP2PPP/RNBQKB1R w KQkq - 1 5",
    "rnbqk2r/ppp1ppbp/3p1np1/8/2PPP3/2N5/PP3PPP/R1BQKBNR w KQkq - 0 5",
    "r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/3P1N2/PPP2PPP/RNBQK2R w KQkq - 1 5",
    // middlegames
    "r4rk1/ppp2ppp/2n5/2bqp3/8/P2PB3/1PP1NPPP/R2Q1RK1 w - - 0 1",
    "r1bqr1k1/pp1nb1p1/4p2p/3p1p2/3P4/P1N1PNP1/1PQ2PP1/3RKB1R w K - 0 1",
    "r1b1qrk1/2p2ppp/pb1pnn2/1p2pNB1/3PP3/1BP5/PP2QPPP/RN1R2K1 w - - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
    "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1",
    "rr4k1/p1pq2pp/Q1n1pn2/2bpp3/4P3/2PP1NN1/PP3PPP/R1B1K2R b KQ - 0 1",
    "r1bqrk2/pp1n1n1p/3p1p2/P1pP1P1Q/2PpP1NP/6R1/2PB4/4RBK1 w - - 0 1",
    // reduced material
    "2qr2k1/4b1p1/2p2p1p/1pP1p3/p2nP3/PbQNB1PP/1P3PK1/4RB2 b - - 0 1",
    "6kr/1q2r1p1/1p2N1Q1/5p2/1P1p4/6R1/7P/2R3K1 w - - 0 1",
    "3r1k2/1p6/p4P2/2pP2Qb/8/1P1KB3/P6r/8 b - - 0 1",
    "8/3b2kp/4p1p1/pr1n4/N1N4P/1P4P1/1K3P2/3R4 w - - 0 1",
    // endgames
    "8/7p/5k2/5p2/p1p2P2/Pr1pPK2/1P1R3P/8 b - - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "8/8/p7/1p1k4/1P6/P1K5/8/8 w - - 0 1",
    "8/5pk1/6p1/7p/7P/6P1/5PK1/8 w - - 0 1",
    "8/8/8/4k3/8/P7/8/4K3 w - - 0 1",
    "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1",
};

struct BenchPosition {
    Position pos;
    PieceLists lists;
    int32_t phase;
};

std::vector<BenchPosition>& positions() {
    static std::vector<BenchPosition> list = [] {
        initPositionKeys();
        fillMaterialScale();
        std::vector<BenchPosition> result;
        for (const char* fen : benchPositions) {
            BenchPosition b;
            if (const char* problem = readFen(fen, b.pos)) {
                std::fprintf(stderr, "Error (%s): %s\n", problem, fen);
                std::exit(1);
            }
            PositionKey key;
            Material material;
            derivePositionState(b.pos, key, b.lists, material);
            b.phase = gamePhase;
            result.push_back(b);
        }
        return result;
    }();
    return list;
}

// Evaluates every position whose phase lies in [minPhase, maxPhase] once per iteration.
void evaluatePhases(benchmark::State& state, int32_t minPhase, int32_t maxPhase) {
    std::vector<const BenchPosition*> chosen;
    for (const BenchPosition& b : positions()) {
        if (b.phase >= minPhase && b.phase <= maxPhase) chosen.push_back(&b);
    }
    int64_t total = 0;
    for (auto _ : state) {
        for (const BenchPosition* b : chosen) {
            gamePhase = b->phase;
            evaluatePosition(b->pos, b->lists, b->pos.sideToMove);
            total += positionalTotal[1] - positionalTotal[0];
        }
    }
    benchmark::DoNotOptimize(total);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(chosen.size()));
    state.counters["positions"] = static_cast<double>(chosen.size());
    state.counters["ns_per_eval"] = benchmark::Counter(
        static_cast<double>(state.iterations() * static_cast<int64_t>(chosen.size())),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_EvaluateAll(benchmark::State& state) {
    evaluatePhases(state, 0, 6);
}
void BM_EvaluatePhase0(benchmark::State& state) {
    evaluatePhases(state, 0, 0);
}
void BM_EvaluatePhase1to2(benchmark::State& state) {
    evaluatePhases(state, 1, 2);
}
void BM_EvaluatePhase3to5(benchmark::State& state) {
    evaluatePhases(state, 3, 5);
}

} // namespace

BENCHMARK(BM_EvaluateAll);
BENCHMARK(BM_EvaluatePhase0);
BENCHMARK(BM_EvaluatePhase1to2);
BENCHMARK(BM_EvaluatePhase3to5);
BENCHMARK_MAIN();
