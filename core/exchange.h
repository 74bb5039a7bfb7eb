// Static exchange evaluation: the material outcome of a series of captures on one square.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Material balance, White's view, of the best stopping point of the capture series on
// (file, rank) that `side` starts with its least valuable capturer; side * result is never
// negative. The square must be empty or hold an enemy piece of `side`. With pinCheck 1 a
// capturer whose departure would leave its king attacked takes no part. Changes the squares
// during the call and restores them.
int32_t staticExchange(Side side, Position& pos, int32_t file, int32_t rank, int32_t pinCheck);
