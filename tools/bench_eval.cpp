// Speed of one full positional evaluation over a fixed set of positions, by game phase.
//   build/kovrel-bench-eval [--benchmark_...]
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench_positions.h"
#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "eval/evaluate.h"
#include "eval/material.h"

namespace {

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
