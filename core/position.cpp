#include "core/position.h"

#include "eval/values.h"

int32_t materialBalance = 0;
int32_t gamePhase = 0;
int32_t lazyMargin = 1200;

void setInitialPosition(Position& pos) {
    for (int32_t file = 0; file < 8; ++file) {
        for (int32_t rank = 0; rank < 8; ++rank) {
            PieceCode code = initialDiagram[(7 - rank) * 8 + file];
            pos.squares[squareIndex(file, rank)] = code;
            if (code == king) setKingSquare(pos, white, file, rank);
            if (code == -king) setKingSquare(pos, black, file, rank);
        }
    }
    pos.whiteCastling = 3;
    pos.blackCastling = 3;
    pos.enPassant = 0;
    pos.sideToMove = white;
}

void buildPieceLists(const Position& pos, PieceLists& lists) {
    lists.slots[0][0][0] = 0;
    lists.slots[1][0][0] = 0;
    for (int32_t file = 0; file < 8; ++file) {
        for (int32_t rank = 0; rank < 8; ++rank) {
            PieceCode code = pos.squares[squareIndex(file, rank)];
            if (code == 0) continue;
            int32_t(*list)[2] = lists.slots[code > 0 ? 1 : 0];
            int32_t slot = ++list[0][0];
            list[slot][0] = file;
            list[slot][1] = rank;
            lists.slotOf[squareIndex(file, rank)] = slot;
        }
    }
}

// Sum of one side's live slots, walked from the highest slot down.
static int32_t sideMaterial(const Position& pos, const PieceLists& lists, Side side) {
    const int32_t(*list)[2] = lists.slots[sideIndex(side)];
    int32_t sum = 0;
    for (int32_t slot = list[0][0]; slot >= 1; --slot) {
        int32_t file = list[slot][0];
        if (file == -1) continue;
        sum += pieceValue[side * pos.squares[squareIndex(file, list[slot][1])]];
    }
    return sum;
}

void sumMaterial(const Position& pos, const PieceLists& lists, Material& material) {
    material.sum[1] = sideMaterial(pos, lists, white);
    material.sum[0] = sideMaterial(pos, lists, black);
}

// Material of a bare king, and of a king with one minor piece (or with three pawns).
constexpr int32_t bareKing = 12000;
constexpr int32_t kingAndMinor = 15000;

// Live pieces of one side, the king included, counted up to 3.
static int32_t livePieces(const PieceLists& lists, Side side) {
    const int32_t(*list)[2] = lists.slots[sideIndex(side)];
    int32_t count = 0;
    for (int32_t slot = 1; slot <= list[0][0] && count <= 2; ++slot) {
        if (list[slot][0] != -1) ++count;
    }
    return count;
}

bool noMatingMaterial(const Material& material, const PieceLists& lists) {
    const int32_t whiteSum = material.sum[sideIndex(white)];
    const int32_t blackSum = material.sum[sideIndex(black)];
    Side stronger = 0;
    if (blackSum == bareKing && (whiteSum == bareKing || whiteSum == kingAndMinor)) {
        stronger = white;
    } else if (whiteSum == bareKing && (blackSum == bareKing || blackSum == kingAndMinor)) {
        stronger = black;
    }
    return stronger != 0 && livePieces(lists, stronger) <= 2;
}
