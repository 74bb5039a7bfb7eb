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

namespace {

// The positional totals of recent full evaluations. A search meets the same position again and
// again, since every test of the driver walks the tree anew and the positions evaluated from
// the parent's side have no table entries of their own. An entry is found by a check value of
// everything the positional evaluation reads: each side's list slot by slot with the piece in
// it (the order of the lists decides ties between threats, so a position whose pieces sit in
// other slots is another entry), the castling rights, the side to move and gamePhase. The check
// has 64 bits, as the keys of the transposition tables do.
struct CachedEvaluation {
    uint64_t check; // 0 for an empty entry
    int32_t total[2];
};
constexpr int32_t evaluationCacheBits = 14;
CachedEvaluation evaluationCache[1 << evaluationCacheBits];

inline uint64_t mixCheck(uint64_t h, uint64_t word) {
    h = (h ^ word) * 0xff51afd7ed558ccdu;
    return h ^ (h >> 32);
}

uint64_t evaluationCheck(const Position& pos, const PieceLists& lists, Side side) {
    uint64_t checks[2];
    for (int32_t c = 0; c < 2; ++c) {
        const int32_t(*list)[2] = lists.slots[c];
        uint64_t h = 0x9e3779b97f4a7c15u * static_cast<uint64_t>(c + 1);
        h = mixCheck(h, static_cast<uint64_t>(list[0][0]));
        for (int32_t slot = list[0][0]; slot >= 1; --slot) {
            const int32_t f = list[slot][0];
            const int32_t r = list[slot][1];
            // A captured piece's slot counts as such; a live one by its square and code.
            const uint64_t word =
                f < 0 ? 0xffff
                      : static_cast<uint64_t>(squareIndex(f, r)) |
                            static_cast<uint64_t>(pos.squares[squareIndex(f, r)] + 8) << 6;
            h = mixCheck(h, word);
        }
        checks[c] = h;
    }
    const uint64_t rest = static_cast<uint64_t>(gamePhase + 1) << 8 |
                          static_cast<uint64_t>(pos.whiteCastling) << 4 |
                          static_cast<uint64_t>(pos.blackCastling) << 2 | (side > 0 ? 1u : 2u);
    const uint64_t check = mixCheck(mixCheck(checks[0], checks[1]), rest);
    return check != 0 ? check : 1;
}

} // namespace

int32_t evaluateExactly(const Material& material, const Position& pos, const PieceLists& lists,
                        Side side) {
    const uint64_t check = evaluationCheck(pos, lists, side);
    CachedEvaluation& cached = evaluationCache[check & ((1u << evaluationCacheBits) - 1)];
    if (cached.check == check) {
        positionalTotal[0] = cached.total[0];
        positionalTotal[1] = cached.total[1];
    } else {
        evaluatePosition(pos, lists, side);
        cached = {check, {positionalTotal[0], positionalTotal[1]}};
    }
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
