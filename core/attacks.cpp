#include "core/attacks.h"

// Diagonal rays in the order of the test: up-right, up-left, down-right, down-left. A pawn on
// the first two attacks a White square (Black pawns capture downwards), on the last two a Black
// square.
constexpr int32_t diagonalSteps[4][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
// Straight rays: file +1, file -1, rank +1, rank -1.
constexpr int32_t straightSteps[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};

int32_t isSquareSafe(const Position& pos, Side side, int32_t file, int32_t rank) {
    if (file == -1) {
        file = kingFile(pos, side);
        rank = kingRank(pos, side);
    }
    const PieceCode* squares = pos.squares;

    // Diagonals: queen or bishop at any distance, king or capturing pawn next to the square.
    for (int32_t dir = 0; dir < 4; ++dir) {
        int32_t df = diagonalSteps[dir][0];
        int32_t dr = diagonalSteps[dir][1];
        int32_t f = file + df;
        int32_t r = rank + dr;
        if (!onBoard(f, r)) continue;
        int32_t kind = -side * squares[squareIndex(f, r)];
        if (kind != 0) {
            if (kind == bishop || kind == queen || kind == king) return 0;
            if (kind == pawn && dr == side) return 0;
            continue;
        }
        for (f += df, r += dr; onBoard(f, r); f += df, r += dr) {
            kind = -side * squares[squareIndex(f, r)];
            if (kind == 0) continue;
            if (kind == bishop || kind == queen) return 0;
            break;
        }
    }

    // Straight lines: queen or rook at any distance, king next to the square.
    for (int32_t dir = 0; dir < 4; ++dir) {
        int32_t df = straightSteps[dir][0];
        int32_t dr = straightSteps[dir][1];
        int32_t f = file + df;
        int32_t r = rank + dr;
        if (!onBoard(f, r)) continue;
        int32_t kind = -side * squares[squareIndex(f, r)];
        if (kind != 0) {
            if (kind == rook || kind == queen || kind == king) return 0;
            continue;
        }
        for (f += df, r += dr; onBoard(f, r); f += df, r += dr) {
            kind = -side * squares[squareIndex(f, r)];
            if (kind == 0) continue;
            if (kind == rook || kind == queen) return 0;
            break;
        }
    }

    // Knights.
    PieceCode enemyKnight = -side * knight;
    for (int32_t n = 0; n < 8; ++n) {
        int32_t f = file + knightSteps[n][0];
        int32_t r = rank + knightSteps[n][1];
        if (onBoard(f, r) && squares[squareIndex(f, r)] == enemyKnight) return 0;
    }
    return 1;
}
