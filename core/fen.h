// A strict reader of standard FEN for the developer tools and tests (the game-file loader of
// the console program has its own, more forgiving rules).
#pragma once

#include "core/position.h"
#include "core/types.h"

constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// Reads placement, side to move, castling and en-passant fields (the two counters optional and
// ignored). Castling rights whose rook is not on its corner are dropped, and an en-passant
// square that names no real double step is read as "-". Returns nullptr on success, else a
// short description of what is wrong; the position is then unspecified.
const char* readFen(const char* fen, Position& pos);

// The halfmove clock of a FEN that readFen accepted: its fifth field, 0 when it is missing,
// at most 10000.
int32_t fenHalfmoveClock(const char* fen);
