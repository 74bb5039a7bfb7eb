// Piece values: the one table that material sums, exchanges, threats and the evaluation share.
#pragma once

#include <cstdint>

// pieceValue[kind]: worth of a piece of kind 1..6 (pawn .. king), in 1/1000 pawn. Entry 0 (an
// empty square) is worth nothing. The king's 12000 makes a bare king's Material 12000.
constexpr int32_t pieceValue[7] = {0, 1000, 3000, 3000, 5000, 9000, 12000};
