// Second pass of the evaluation for a pawn: its free front square and move options, its
// neighbours, its advance, and with few pieces left its path to promotion and the rule of the
// square; then the defence and threat step.
#include <initializer_list>

#include "eval/values.h"
#include "eval/work.h"

namespace {

constexpr int32_t pawnFrontBonus = 30; // half of it when a piece stands on the front square
constexpr int32_t pawnOptionBonus[4] = {10, 5, 3, 3}; // the n-th move option, from 0
constexpr int32_t pawnSupportBonus = 40;              // an own pawn diagonally behind or ahead
constexpr int32_t pawnPhalanxExtra = 20;              // more for an own pawn beside it
constexpr int32_t pawnRunBonus = 500;                 // a path that reaches the last rank
constexpr int32_t weakPawnPenalty = 200;
// In a pawn ending a pawn the enemy king cannot catch is worth this much more.
constexpr int32_t unstoppablePawnBonus = 4500;

// pawnAdvance[relative rank]: worth of a pawn's advance by its rank counted from its own side
// (1..8; entries for ranks 2 to 7 are used).
constexpr int32_t pawnAdvance[9] = {0, 0, 0, 30, 60, 90, 120, 150, 150};

inline int32_t relativeRank(Side side, int32_t rank) {
    return side > 0 ? rank + 1 : 8 - rank;
}
inline int32_t advance(Side side, int32_t rank) {
    return pawnAdvance[relativeRank(side, rank)];
}

inline bool safeFor(const EvalWork& w, Side side, int32_t square) {
    return side * w.attackBalance[square] >= 0;
}

inline bool isPawn(PieceCode code) {
    return code == pawn || code == -pawn;
}

struct PawnPath {
    int32_t bonus;
    bool free;
};

// The walk to the last rank: the bonus grows for a path that gets far, and the weight W shrinks
// behind every square a lone pawn could not simply pass.
PawnPath pathToPromotion(const EvalWork& w, const Position& pos, Side side, int32_t file,
                         int32_t rank, bool supported) {
    const int32_t colour = sideIndex(side);
    const int32_t enemy = 1 - colour;
    int32_t weight = w.effectivePhase * 4;
    PawnPath path = {advance(side, rank) * weight / 4, true};
    for (int32_t r = rank + side;; r += side) {
        const int32_t before = r - side;
        if (r < 0 || r > 7) {
            path.bonus += weight * pawnRunBonus / 8;
            return path;
        }
        const int32_t t = squareIndex(file, r);
        if (pos.squares[t] == -side * pawn || w.leastAttacker[t][enemy] == pieceValue[pawn]) {
            path.bonus += weight * advance(side, before) / 8;
            path.free = false;
            return path;
        }
        if (supported) continue;
        const bool contested = side * w.attackBalance[t] < 0 &&
                               w.leastAttacker[t][enemy] <= w.leastAttacker[t][colour] + 1000;
        if (pos.squares[t] != 0 || contested) {
            path.bonus += weight * advance(side, before) * 3 / 32;
            weight /= 4;
            path.free = false;
        }
    }
}

// The rule of the square and the weak-pawn charge, for a pawn worth `worth` so far; returns
// the path bonus as it stands after the rule.
int32_t ruleOfTheSquare(EvalWork& w, const Position& pos, Side side, int32_t file, int32_t rank,
                        int32_t worth, PawnPath path) {
    const int32_t colour = sideIndex(side);
    const int32_t enemy = 1 - colour;
    const int32_t q = squareIndex(file, rank);
    const int32_t r0 = side == w.toMove ? rank : rank - side; // the opponent gains a tempo
    const int32_t distance = side > 0 ? 7 - r0 : r0;
    const int32_t kf = kingFile(pos, -side);
    const int32_t kr = kingRank(pos, -side);
    if (side * kr < side * r0 || kf < file - distance || kf > file + distance) {
        if (path.free) {
            path.bonus *= 2;
            if (w.effectivePhase == 6) path.bonus += unstoppablePawnBonus;
        }
        return path.bonus;
    }
    // The enemy king is inside the square: can the own king or a pawn hold the pawn?
    const int32_t enemyDistance = chebyshev(kf, kr, file, rank);
    const int32_t ownDistance =
        chebyshev(kingFile(pos, side), kingRank(pos, side), file, rank) - (side == w.toMove);
    const bool held =
        w.leastAttacker[q][colour] == pieceValue[pawn] || ownDistance <= enemyDistance;
    if (w.effectivePhase == 6) {
        if (held) return path.bonus / 2;
        w.total[enemy] += (worth + 1000) / enemyDistance;
        return 0;
    }
    if (!held && w.leastAttacker[q][colour] == noAttacker)
        w.total[enemy] += (worth + path.bonus + 1000) / (2 * enemyDistance);
    return path.bonus;
}

} // namespace

void scorePawn(EvalWork& w, const Position& pos, Side side, int32_t file, int32_t rank) {
    const int32_t colour = sideIndex(side);
    const int32_t enemy = 1 - colour;
    const int32_t q = squareIndex(file, rank);
    const int32_t front = squareIndex(file, rank + side);
    const PieceCode frontCode = pos.squares[front];
    const bool frontFree = frontCode == 0 && safeFor(w, side, front);
    int32_t value = w.squareValue[q]; // the pawn's value in this evaluation so far

    if (!isPawn(frontCode) && safeFor(w, side, front))
        value += frontCode == 0 ? pawnFrontBonus : pawnFrontBonus / 2;

    // Move options: single step, double step, captures towards file + 1 and file - 1.
    int32_t options = 0;
    if (frontFree) {
        value += pawnOptionBonus[options++];
        const int32_t startRank = side > 0 ? 1 : 6;
        if (rank == startRank) {
            const int32_t second = squareIndex(file, rank + 2 * side);
            if (pos.squares[second] == 0 && safeFor(w, side, second))
                value += pawnOptionBonus[options++];
        }
    }
    bool supported = false;
    for (int32_t df : {1, -1}) {
        const int32_t nf = file + df;
        if (nf < 0 || nf > 7) continue;
        if (side * pos.squares[squareIndex(nf, rank + side)] < 0)
            value += pawnOptionBonus[options++];
        // Neighbours: an own pawn diagonally behind, beside, or diagonally ahead.
        const PieceCode ownPawn = side * pawn;
        const int32_t behindRank = rank - side;
        if (behindRank >= 0 && behindRank <= 7 &&
            pos.squares[squareIndex(nf, behindRank)] == ownPawn) {
            value += pawnSupportBonus;
            supported = true;
        } else if (pos.squares[squareIndex(nf, rank)] == ownPawn) {
            value += pawnSupportBonus + pawnPhalanxExtra;
            supported = true;
        } else if (pos.squares[squareIndex(nf, rank + side)] == ownPawn && frontFree) {
            value += pawnSupportBonus;
        }
    }

    if (w.effectivePhase < 3) {
        value += advance(side, rank) * (w.effectivePhase * 4) / 8;
    } else {
        const PawnPath path = pathToPromotion(w, pos, side, file, rank, supported);
        value += ruleOfTheSquare(w, pos, side, file, rank, value, path);
        if (w.leastAttacker[q][colour] > pieceValue[pawn] &&
            w.leastAttacker[q][enemy] != noAttacker)
            w.total[enemy] += weakPawnPenalty;
    }
    settlePiece(w, side, q, pawn, value, options == 0);
}
