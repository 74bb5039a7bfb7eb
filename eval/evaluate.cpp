#include "eval/evaluate.h"

#include <initializer_list>

#include "core/attacks.h"
#include "eval/material.h"
#include "eval/work.h"

int32_t positionalTotal[2] = {0, 0};
int64_t nodeCount = 0;
int64_t boundedEvaluations = 0;
int64_t lazyEvaluations = 0;

// Material index of a side: its material besides the king in steps of 128.
static int32_t materialIndex(int32_t sum) {
    return (sum - 12000) / 128;
}

int32_t materialTerm(const Material& material) {
    return materialScale[materialIndex(material.sum[1])] -
           materialScale[materialIndex(material.sum[0])];
}

bool evaluateLazily(const Material& material, int32_t bound, int32_t& value) {
    ++nodeCount;
    if (bound == 0) return false;
    // Even the most favourable (or least favourable) estimate for White decides the bound.
    ++boundedEvaluations;
    const int32_t m = materialTerm(material);
    if (2 * (m + lazyMargin) < bound) {
        ++lazyEvaluations;
        value = m + lazyMargin;
        return true;
    }
    if (2 * (m - lazyMargin) > bound) {
        ++lazyEvaluations;
        value = m - lazyMargin;
        return true;
    }
    return false;
}

int32_t evaluateExactly(const Material& material, const Position& pos, const PieceLists& lists,
                        Side side) {
    evaluatePosition(pos, lists, side);
    return materialTerm(material) + positionalTotal[1] - positionalTotal[0];
}

int32_t evaluate(const Material& material, const Position& pos, const PieceLists& lists, Side side,
                 int32_t bound) {
    int32_t value = 0;
    if (evaluateLazily(material, bound, value)) return value;
    return evaluateExactly(material, pos, lists, side);
}

// Settles the threats of the pass: the side to move saves its most threatened piece (unless it
// is pinned) and loses the next one, or cashes its own largest threat and gives up its most
// threatened piece.
static void settleThreats(EvalWork& w) {
    const int32_t mover = sideIndex(w.toMove);
    const int32_t other = 1 - mover;
    const int32_t t1 = w.threat1 / 2;
    const int32_t t2 = w.threat2 / 2;
    const int32_t m = w.otherThreat;
    if (m == 0) {
        if (t1 == 0) return;
        w.total[other] += w.pinnedFlag[w.threat1Square] ? t1 : t2;
        return;
    }
    if (t1 < m || t1 - m < t2 || w.pinnedFlag[w.threat1Square]) {
        w.total[mover] += m;
        w.total[other] += t1;
    } else {
        w.total[other] += t2;
    }
}

void startEvalWork(EvalWork& w, const Position& pos, Side side) {
    for (int32_t& a : w.attackBalance)
        a = 0;
    for (int32_t(&least)[2] : w.leastAttacker) {
        least[0] = noAttacker;
        least[1] = noAttacker;
    }
    for (uint8_t& pinned : w.pinnedFlag)
        pinned = 0;
    w.occupied = occupancy(pos);
    w.piecesPresent = 0;
    w.toMove = side;
}

void evaluatePosition(const Position& pos, const PieceLists& lists, Side side) {
    EvalWork w;
    startEvalWork(w, pos, side);
    scorePlacementAndAttacks(w, pos, lists);

    w.effectivePhase = w.piecesPresent ? gamePhase : 6;
    w.kingSafetyWeight = w.piecesPresent && gamePhase <= 3 ? 7 - 2 * gamePhase : 0;
    w.threat1 = 0;
    w.threat2 = 0;
    w.threat1Square = 0;
    w.otherThreat = 0;
    w.total[0] = 0;
    w.total[1] = 0;
    for (Side s : {black, white}) {
        const int32_t(*list)[2] = lists.slots[sideIndex(s)];
        for (int32_t slot = list[0][0]; slot >= 1; --slot) {
            const int32_t f = list[slot][0];
            if (f == -1) continue;
            const int32_t r = list[slot][1];
            switch (s * pos.squares[squareIndex(f, r)]) {
            case pawn:
                scorePawn(w, pos, s, f, r);
                break;
            case king:
                scoreKing(w, pos, lists, s, f, r);
                break;
            default:
                scorePiece(w, pos, s, f, r);
                break;
            }
        }
    }
    settleThreats(w);
    positionalTotal[0] = w.total[0];
    positionalTotal[1] = w.total[1];
}
