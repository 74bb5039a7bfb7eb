// Standard algebraic notation, the move language of PGN and EPD: written with exactly the
// disambiguation it needs, a capture sign, the promotion piece and a check or mate mark; read
// with the same rules, leniently only where game files commonly differ (check marks, zeros in
// castling, a superfluous disambiguation).
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"

// Room for the longest move ("Qh4xe1#", "exd8=Q#") and its NUL, with a margin.
constexpr int32_t sanSize = 12;

// A move in SAN: "e4", "Nbd2", "R1e2", "Qh4xe1+", "exd8=Q#", "O-O-O".
struct SanText {
    char text[sanSize];
};

// The outcome of reading one SAN word: the index of the move in the legal list, or -1 and a
// short description of what is wrong ("not a move", "illegal move", "ambiguous move").
struct SanReading {
    int32_t index;
    const char* problem;
};

// The SAN of `m`, a legal move of `side` in `pos`. The position is left as it was found.
SanText moveToSan(Position& pos, Side side, const Move& m);

// Reads `text` as a move of `side` in `pos`, whose legal moves are list[0..lastIndex]. Accepts
// check and mate marks whether or not they are right, "0-0" for "O-O", and a disambiguation
// that is not needed; refuses a piece letter in the wrong case, a promotion without its piece
// and a move that two legal moves fit. Reads at most sanSize characters; never builds a move.
SanReading sanToMove(const char* text, Side side, const Position& pos, const MoveList& list,
                     int32_t lastIndex);

// Whether `side` (to move) is in check in `pos`.
bool sideInCheck(const Position& pos, Side side);
