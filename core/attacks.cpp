#include "core/attacks.h"

int32_t isSquareSafe(const Position& pos, Side side, int32_t file, int32_t rank) {
    if (file == -1) {
        file = kingFile(pos, side);
        rank = kingRank(pos, side);
    }
    return squareSafe(pos, occupancy(pos), side, squareIndex(file, rank));
}

uint64_t checkAnswerSquares(const Position& pos, Side side, uint64_t occupied) {
    const int32_t home = squareIndex(kingFile(pos, side), kingRank(pos, side));
    uint64_t answers = 0;
    int32_t checkers = 0;
    for (int32_t l = 0; l < 8; ++l) {
        const int32_t t = firstOnLine(occupied, home, l);
        if (t < 0) continue;
        const int32_t kind = -side * pos.squares[t];
        if (kind == queen || kind == (isDiagonal(l) ? bishop : rook)) {
            answers |= geometry.ray[home][l] & ~geometry.ray[t][l];
            ++checkers;
        } else if (kind == pawn && t == home + geometry.step[l] && isDiagonal(l) &&
                   lineSteps[l][1] == side) {
            answers |= uint64_t{1} << t;
            ++checkers;
        }
    }
    const PieceCode enemyKnight = -side * knight;
    for (int32_t k = 0; k < geometry.knightCount[home]; ++k) {
        const int32_t t = geometry.knights[home][k];
        if (pos.squares[t] == enemyKnight) {
            answers |= uint64_t{1} << t;
            ++checkers;
        }
    }
    return checkers == 1 ? answers : 0;
}

int32_t sliderOnLine(const Position& pos, Side side, int32_t from, int32_t line) {
    const int32_t step = geometry.step[line];
    const int32_t slider = isDiagonal(line) ? bishop : rook;
    int32_t t = from;
    for (int32_t k = geometry.length[from][line]; k > 0; --k) {
        t += step;
        const int32_t kind = -side * pos.squares[t];
        if (kind == 0) continue;
        return kind == slider || kind == queen ? 1 : 0;
    }
    return 0;
}

bool givesCheck(const Position& pos, Side side, const Move& m) {
    const int32_t target = squareIndex(kingFile(pos, -side), kingRank(pos, -side));
    const int32_t to = squareIndex(m.toFile, m.toRank);
    const int32_t kind = side * pos.squares[to];

    // The piece on the target square.
    switch (kind) {
    case pawn:
        if (kingRank(pos, -side) == m.toRank + side &&
            (kingFile(pos, -side) == m.toFile + 1 || kingFile(pos, -side) == m.toFile - 1))
            return true;
        break;
    case knight:
        for (int32_t k = 0; k < geometry.knightCount[to]; ++k) {
            if (geometry.knights[to][k] == target) return true;
        }
        break;
    case bishop:
    case rook:
    case queen: {
        const int32_t line = geometry.line[target][to];
        if (line >= 0 && (kind == queen || (kind == bishop) == isDiagonal(line))) {
            int32_t t = target + geometry.step[line];
            while (t != to && pos.squares[t] == 0)
                t += geometry.step[line];
            if (t == to) return true;
        }
        break;
    }
    default:
        break;
    }

    // A line opened through the from-square: the first piece behind it, seen from the enemy
    // king, is one of the mover's sliders on that line.
    const int32_t line = geometry.line[target][squareIndex(m.fromFile, m.fromRank)];
    return line >= 0 && sliderOnLine(pos, -side, target, line);
}

uint64_t attackedSquares(const Position& pos, const PieceLists& lists, Side side,
                         uint64_t occupied) {
    const int32_t(*list)[2] = lists.slots[sideIndex(side)];
    uint64_t attacked = 0;
    for (int32_t slot = list[0][0]; slot >= 1; --slot) {
        const int32_t f = list[slot][0];
        if (f == -1) continue;
        const int32_t r = list[slot][1];
        const int32_t square = squareIndex(f, r);
        const int32_t kind = side * pos.squares[square];
        int32_t firstLine = 0;
        int32_t endLine = 0;
        switch (kind) {
        case pawn:
            if (r + side >= 0 && r + side <= 7) {
                if (f > 0) attacked |= uint64_t{1} << squareIndex(f - 1, r + side);
                if (f < 7) attacked |= uint64_t{1} << squareIndex(f + 1, r + side);
            }
            break;
        case knight:
            attacked |= geometry.knightMask[square];
            break;
        case king:
            attacked |= geometry.kingMask[square];
            break;
        case bishop:
            endLine = 4;
            break;
        case rook:
            firstLine = 4;
            endLine = 8;
            break;
        case queen:
            endLine = 8;
            break;
        default:
            break;
        }
        for (int32_t l = firstLine; l < endLine; ++l) {
            const int32_t t = firstOnLine(occupied, square, l);
            attacked |=
                t < 0 ? geometry.ray[square][l] : geometry.ray[square][l] & ~geometry.ray[t][l];
        }
    }
    return attacked;
}
