// Second pass of the evaluation for knights, bishops, rooks and queens (safe mobility), the
// defence and threat step that pawns share, and the threat bookkeeping.
#include "core/attacks.h"
#include "eval/values.h"
#include "eval/work.h"

namespace {

// Bonus for the n-th safe move of a piece (counting from 0), in 1/1000 pawn.
constexpr int32_t knightMobility[8] = {170, 60, 40, 20, 20, 15, 5, 5};
constexpr int32_t bishopMobility[13] = {170, 50, 30, 10, 10, 4, 4, 4, 4, 2, 2, 2, 2};
constexpr int32_t rookMobility[14] = {200, 90, 30, 20, 10, 10, 4, 4, 4, 4, 2, 2, 2, 2};
// The queen counts each line (both directions of a diagonal, file or rank) on its own.
constexpr int32_t queenLineMobility[7] = {90, 25, 10, 5, 1, 1, 1};

// The bonus of the first `count` safe moves together: sum[count].
template <int32_t N> struct FirstSums { int32_t sum[N + 1]; };
template <int32_t N> constexpr FirstSums<N> firstSums(const int32_t (&table)[N]) {
    FirstSums<N> t{};
    for (int32_t i = 0; i < N; ++i)
        t.sum[i + 1] = t.sum[i] + table[i];
    return t;
}
constexpr auto knightMobilitySum = firstSums(knightMobility);
constexpr auto bishopMobilitySum = firstSums(bishopMobility);
constexpr auto rookMobilitySum = firstSums(rookMobility);
constexpr auto queenLineMobilitySum = firstSums(queenLineMobility);

// The four lines through a square, as the two opposite directions of each (see lineSteps);
// diagonals first.
constexpr int32_t lineDirections[4][2] = {{0, 3}, {2, 1}, {4, 5}, {6, 7}};

// Value of the enemy slider that stands first behind `square` looking along `line` and moves
// along it (bishop or queen on a diagonal, rook or queen on a file or rank); -1 when there is
// none. It would x-ray through the square the piece leaves.
int32_t sliderBehind(const EvalWork& w, const Position& pos, Side side, int32_t square,
                     int32_t line) {
    const int32_t t = firstOnLine(w.occupied, square, line);
    if (t < 0) return -1;
    const int32_t seen = side * pos.squares[t];
    if (seen == -queen || seen == (isDiagonal(line) ? -bishop : -rook)) return pieceValue[-seen];
    return -1;
}

// Whether the piece of value `value` may go to t (empty or enemy) without losing material:
// where the side does not hold t in majority only a capture worth the piece is safe; where it
// does, the enemy's cheapest attacker must be worth at least what the piece risks.
bool safeMove(const EvalWork& w, const Position& pos, Side side, int32_t value, int32_t t,
              int32_t behind) {
    const int32_t seen = side * pos.squares[t];
    const int32_t risk = value - (seen < 0 ? pieceValue[-seen] : 0);
    const bool xray = behind >= 0;
    if ((xray && behind < risk) || side * w.attackBalance[t] - (xray ? 1 : 0) <= 0)
        return risk <= 0;
    return risk <= w.leastAttacker[t][sideIndex(-side)];
}

// Safe moves of a slider along one direction, up to and including the first occupied square;
// `behind` is the line the other way. On an empty square the piece risks its whole value, so a
// slider behind it worth less makes every empty square unsafe, and otherwise an empty square is
// safe where the side holds it in majority (one more with the slider behind) and no enemy
// attacker is cheaper than the piece.
[[gnu::always_inline]] inline int32_t safeMovesAlong(const EvalWork& w, const Position& pos,
                                                     Side side, int32_t value, int32_t square,
                                                     int32_t line, int32_t behindLine) {
    const int32_t behind = sliderBehind(w, pos, side, square, behindLine);
    const int32_t step = geometry.step[line];
    const int32_t first = firstOnLine(w.occupied, square, line);
    const int32_t end = first >= 0 ? first : square + step * (geometry.length[square][line] + 1);
    int32_t count = 0;
    if (behind < 0 || behind >= value) {
        const int32_t held = behind >= 0 ? 1 : 0; // the balance must exceed this
        const int32_t enemy = sideIndex(-side);
        for (int32_t t = square + step; t != end; t += step) {
            if (side * w.attackBalance[t] > held && value <= w.leastAttacker[t][enemy]) ++count;
        }
    }
    if (first >= 0 && side * pos.squares[first] < 0 && safeMove(w, pos, side, value, first, behind))
        ++count;
    return count;
}

} // namespace

void scorePiece(EvalWork& w, const Position& pos, Side side, int32_t file, int32_t rank) {
    const int32_t square = squareIndex(file, rank);
    const int32_t kind = side * pos.squares[square];
    const int32_t value = pieceValue[kind];
    int32_t worth = w.squareValue[square]; // the piece's value in this evaluation so far
    int32_t moves = 0;
    if (kind == knight) {
        for (int32_t k = 0; k < geometry.knightCount[square]; ++k) {
            const int32_t t = geometry.knights[square][k];
            if (side * pos.squares[t] <= 0 && safeMove(w, pos, side, value, t, -1)) ++moves;
        }
        worth += knightMobilitySum.sum[moves];
    } else {
        // The diagonals are lines 0 and 1, the file and the rank 2 and 3.
        const int32_t firstLine = kind == rook ? 2 : 0;
        const int32_t endLine = kind == bishop ? 2 : 4;
        for (int32_t line = firstLine; line < endLine; ++line) {
            const int32_t one = lineDirections[line][0];
            const int32_t other = lineDirections[line][1];
            const int32_t count = safeMovesAlong(w, pos, side, value, square, one, other) +
                                  safeMovesAlong(w, pos, side, value, square, other, one);
            if (kind == queen) worth += queenLineMobilitySum.sum[count];
            moves += count;
        }
        if (kind == bishop) worth += bishopMobilitySum.sum[moves];
        if (kind == rook) worth += rookMobilitySum.sum[moves];
    }
    settlePiece(w, side, square, kind, worth, moves == 0);
}
