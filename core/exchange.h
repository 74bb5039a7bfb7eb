// Static exchange evaluation: the material outcome of a series of captures on one square.
#pragma once

#include "core/position.h"
#include "core/types.h"

// What a caller may know of the kings when an exchange begins: the king of `side` (of its
// opponent) is not attacked, the target square counted as holding a piece of the king's own
// side. The series then tests a king only along the lines its captures have opened.
constexpr int32_t sideKingSafe = 1;
constexpr int32_t opponentKingSafe = 2;

// Material balance, White's view, of the best stopping point of the capture series on
// (file, rank) that `side` starts with its least valuable capturer; side * result is never
// negative. The square must be empty or hold an enemy piece of `side`. With pinCheck 1 a
// capturer whose departure would leave its king attacked takes no part. Changes the squares
// during the call and restores them. kingsSafe: sideKingSafe, opponentKingSafe or both, for
// what the caller knows; 0 for nothing.
int32_t staticExchange(Side side, Position& pos, int32_t file, int32_t rank, int32_t pinCheck,
                       int32_t kingsSafe = 0);
