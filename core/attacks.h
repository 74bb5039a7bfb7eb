// The attack tests of the program: is a square attacked, is a king left attacked by a move,
// does a move give check. All of them answer exactly what the full test of a square answers;
// the faster ones use the board's geometry to look only where the answer can have changed.
#pragma once

#include <cstdint>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/position.h"
#include "core/types.h"

// Knight offsets in the program's fixed order: (f-1, r+2), (f-1, r-2), (f+1, r+2), (f+1, r-2),
// (f+2, r-1), (f+2, r+1), (f-2, r-1), (f-2, r+1). Generation, exchange and threats share it.
constexpr int32_t knightSteps[8][2] = {{-1, 2}, {-1, -2}, {1, 2},   {1, -2},
                                       {2, -1}, {2, 1},   {-2, -1}, {-2, 1}};

// The queen's eight lines from a square: the four diagonals (up-right, up-left, down-right,
// down-left), then the four straight lines (file +1, file -1, rank +1, rank -1).
constexpr int32_t lineSteps[8][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1},
                                     {1, 0}, {-1, 0}, {0, 1},  {0, -1}};
constexpr bool isDiagonal(int32_t line) {
    return line < 4;
}

// The board's geometry, worked out once when the program is compiled.
//   line[a][b]      the index (0..7) of the line from square a towards square b, -1 when the two
//                   share no line (or are the same square)
//   length[a][l]    squares from a to the edge of the board along line l
//   step[l]         the change of the square index for one step along line l
//   knights[a]      the squares a knight on a attacks, knightCount[a] of them
//   ray[a][l]       the squares along line l from a, as a bit set over square indices
//   knightMask[a], kingMask[a]   the squares a knight or a king on a attacks, as bit sets
struct BoardGeometry {
    uint64_t ray[64][8];
    uint64_t knightMask[64];
    uint64_t kingMask[64];
    int8_t line[64][64];
    int8_t length[64][8];
    int8_t step[8];
    int8_t knights[64][8];
    int8_t knightCount[64];
};

constexpr BoardGeometry makeBoardGeometry() {
    BoardGeometry g{};
    for (int32_t l = 0; l < 8; ++l)
        g.step[l] = static_cast<int8_t>(squareIndex(lineSteps[l][0], lineSteps[l][1]));
    for (int32_t a = 0; a < 64; ++a) {
        for (int32_t b = 0; b < 64; ++b)
            g.line[a][b] = -1;
        const int32_t f = a / 8;
        const int32_t r = a % 8;
        for (int32_t l = 0; l < 8; ++l) {
            int32_t n = 0;
            for (int32_t tf = f + lineSteps[l][0], tr = r + lineSteps[l][1]; onBoard(tf, tr);
                 tf += lineSteps[l][0], tr += lineSteps[l][1]) {
                g.line[a][squareIndex(tf, tr)] = static_cast<int8_t>(l);
                g.ray[a][l] |= uint64_t{1} << squareIndex(tf, tr);
                ++n;
            }
            g.length[a][l] = static_cast<int8_t>(n);
            if (n > 0)
                g.kingMask[a] |= uint64_t{1}
                                 << squareIndex(f + lineSteps[l][0], r + lineSteps[l][1]);
        }
        for (const auto& s : knightSteps) {
            if (!onBoard(f + s[0], r + s[1])) continue;
            const int32_t t = squareIndex(f + s[0], r + s[1]);
            g.knights[a][g.knightCount[a]++] = static_cast<int8_t>(t);
            g.knightMask[a] |= uint64_t{1} << t;
        }
    }
    return g;
}
inline constexpr BoardGeometry geometry = makeBoardGeometry();

// Whether a step along line l raises the square index: the even lines do (up-right,
// down-right, file +1, rank +1), so that the nearest square of a ray is its lowest bit there
// and its highest bit on the odd lines.
constexpr bool stepsUp(int32_t l) {
    return (l & 1) == 0;
}
static_assert([] {
    for (int32_t l = 0; l < 8; ++l) {
        if ((geometry.step[l] > 0) != stepsUp(l)) return false;
    }
    return true;
}());

// The occupied squares of a position as a bit set over square indices.
inline uint64_t occupancy(const Position& pos) {
#if defined(__SSE2__)
    // Sixteen codes at a time narrowed to bytes (codes lie in -6..6) and compared with zero.
    const __m128i zero = _mm_setzero_si128();
    const auto* at = reinterpret_cast<const __m128i*>(pos.squares);
    uint64_t occupied = 0;
    for (int32_t i = 0; i < 4; ++i) {
        const __m128i low =
            _mm_packs_epi32(_mm_loadu_si128(at + 4 * i), _mm_loadu_si128(at + 4 * i + 1));
        const __m128i high =
            _mm_packs_epi32(_mm_loadu_si128(at + 4 * i + 2), _mm_loadu_si128(at + 4 * i + 3));
        const uint32_t empty = static_cast<uint32_t>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_packs_epi16(low, high), zero)));
        occupied |= static_cast<uint64_t>(~empty & 0xFFFFu) << (16 * i);
    }
    return occupied;
#else
    uint64_t occupied = 0;
    for (int32_t i = 0; i < 64; ++i)
        occupied |= static_cast<uint64_t>(pos.squares[i] != 0) << i;
    return occupied;
#endif
}

// The first occupied square along line l from square a, -1 when the line runs free to the edge.
inline int32_t firstOnLine(uint64_t occupied, int32_t a, int32_t l) {
    const uint64_t blockers = occupied & geometry.ray[a][l];
    if (blockers == 0) return -1;
    return stepsUp(l) ? __builtin_ctzll(blockers) : 63 - __builtin_clzll(blockers);
}

// Returns 1 when no piece of the opponent of `side` attacks (file, rank), else 0. A file of -1
// asks about the king of `side` (its square from the king fields; rank ignored). The content of
// the tested square is never looked at. En passant plays no part. Reads only.
int32_t isSquareSafe(const Position& pos, Side side, int32_t file, int32_t rank);

// isSquareSafe for a square index, with the position's occupied squares given (they must agree
// with the squares).
inline int32_t squareSafe(const Position& pos, uint64_t occupied, Side side, int32_t square) {
    const PieceCode* squares = pos.squares;

    // The first piece on each line: a queen, a bishop on a diagonal or a rook on a straight
    // line at any distance; the king next to the square; a pawn next to it on a diagonal that
    // it captures along (on the two upper diagonals it attacks a White square, on the lower two
    // a Black one).
    for (int32_t l = 0; l < 8; ++l) {
        const int32_t t = firstOnLine(occupied, square, l);
        if (t < 0) continue;
        const int32_t kind = -side * squares[t];
        if (kind <= 0) continue;
        if (kind == queen || kind == (isDiagonal(l) ? bishop : rook)) return 0;
        if (t == square + geometry.step[l] &&
            (kind == king || (kind == pawn && isDiagonal(l) && lineSteps[l][1] == side)))
            return 0;
    }

    // Knights.
    const PieceCode enemyKnight = -side * knight;
    for (int32_t k = 0; k < geometry.knightCount[square]; ++k) {
        if (squares[geometry.knights[square][k]] == enemyKnight) return 0;
    }
    return 1;
}

// 1 when the first piece met from square `from` outward along line l is a slider of the
// opponent of `side` that moves along that line (a queen, a bishop on a diagonal, a rook on a
// straight line).
int32_t sliderOnLine(const Position& pos, Side side, int32_t from, int32_t line);

// Whether the king of `side` is safe after a move of one of its other pieces from square
// `from`, the move already made. Before the move the king was safe and the move was no en
// passant: then only a line through `from` can have opened, and only that line is looked at.
inline bool kingSafeAfterMoveFrom(const Position& pos, Side side, int32_t from) {
    const int32_t home = squareIndex(kingFile(pos, side), kingRank(pos, side));
    const int32_t line = geometry.line[home][from];
    return line < 0 || !sliderOnLine(pos, side, home, line);
}

// For the king of `side` in check: the squares a move of one of its other pieces must reach to
// answer the check, the checking piece's square and, when it is a slider, the squares between
// it and the king; none when two pieces give check. A move that reaches one may still be
// illegal (a pinned piece, en passant); one that reaches none never answers the check.
uint64_t checkAnswerSquares(const Position& pos, Side side, uint64_t occupied);

// The squares the pieces of `side` attack, as a bit set over square indices; `occupied` must
// agree with the squares. A pawn attacks its two forward diagonals, a slider every square of
// its lines up to and including the first piece.
uint64_t attackedSquares(const Position& pos, const PieceLists& lists, Side side,
                         uint64_t occupied);

// Whether move m of `side`, already made on the board, gives check. The move must be neither
// castling nor en passant (the full test answers those), and the opponent's king was safe
// before it: then the check comes from the piece now on the target square, or along the line
// the move opened through its from-square.
bool givesCheck(const Position& pos, Side side, const Move& m);
