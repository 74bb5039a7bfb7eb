// Position keys (Zobrist) and the program's one random source. The keys are the first 1580
// draws of a fixed-seed generator, so a position's key is the same in every run and book files
// built earlier stay valid.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Row of the key table for a non-zero PieceCode: black king 0 .. black pawn 5, white pawn 6 ..
// white king 11.
constexpr int32_t keyKind(PieceCode code) {
    return code < 0 ? code + 6 : code + 5;
}

// Key tables, filled once by initPositionKeys and read-only afterwards.
extern PositionKey pieceSquareKeys[12][64]; // [keyKind][file * 8 + rank]
extern PositionKey enPassantKeys[16];       // enPassant e: entry e + 8 (e < 0), e + 7 (e > 0)
extern PositionKey castlingKeys[2][3];      // [White 0, Black 1][rights - 1]

inline PositionKey pieceKey(PieceCode code, int32_t file, int32_t rank) {
    return pieceSquareKeys[keyKind(code)][squareIndex(file, rank)];
}
inline PositionKey enPassantKey(int32_t enPassant) {
    return enPassantKeys[enPassant < 0 ? enPassant + 8 : enPassant + 7];
}
inline PositionKey castlingKey(Side side, int32_t rights) {
    return castlingKeys[side > 0 ? 0 : 1][rights - 1];
}

// Next number of the additive lagged-Fibonacci generator (lags 24 and 55, modulo 2^32). Seeds
// itself on the first call.
uint32_t nextRandom();

// Puts the random source back to its unseeded start state (for tests).
void resetRandom();

// Draws the key tables: piece-square keys row by row, file by file, rank by rank; then the
// en-passant keys; then the castling keys (White 1, Black 1, White 2, Black 2, White 3, Black 3).
// Must be the first user of the random source.
void initPositionKeys();

// The key of a position from scratch: pieces, en passant and castling rights, not the side to
// move.
PositionKey computeKey(const Position& pos);
