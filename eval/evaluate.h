// The evaluation entry: scaled material with a lazy cut-off, then the two-pass positional
// evaluation. Scores are in 1/1000 pawn from White's side.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"

// Positional score of each side from the last full evaluation, counted positive for that side:
// positionalTotal[sideIndex(side)]. Kept until the next full evaluation (a lazy return leaves
// them); the evaluation display reads them.
extern int32_t positionalTotal[2];

// Evaluations and search nodes counted since the search last reset it.
extern int64_t nodeCount;

// Statistics for the benchmarks: calls of evaluate with a bound, and how many of them the lazy
// margin answered without the positional evaluation.
extern int64_t boundedEvaluations;
extern int64_t lazyEvaluations;

// Material term: materialScale of White's material index minus that of Black's.
int32_t materialTerm(const Material& material);

// Scores the position for `side` to move. bound 0 asks for the exact value; otherwise bound is
// a search bound in search units (twice these) from White's side, and the score may be a lazy
// estimate (material plus or minus lazyMargin) when material alone decides against the bound.
int32_t evaluate(const Material& material, const Position& pos, const PieceLists& lists, Side side,
                 int32_t bound);

// evaluate in two steps, for a caller that may end up not needing the exact value: the entry
// with its counting and the lazy test (true, with the estimate in `value`, when the material
// alone decides against the bound), then the rest, the positional evaluation and the exact
// value. evaluate is the two in a row.
bool evaluateLazily(const Material& material, int32_t bound, int32_t& value);
int32_t evaluateExactly(const Material& material, const Position& pos, const PieceLists& lists,
                        Side side);

// The positional evaluation alone: fills positionalTotal.
void evaluatePosition(const Position& pos, const PieceLists& lists, Side side);
