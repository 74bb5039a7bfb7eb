// Static exchange evaluation: the material outcome of a series of captures on one square.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Material balance, White's view, of the best stopping point of the capture series on
// (file, rank) that `side` starts with its least valuable capturer; side * result is never
// negative. The square must be empty or hold an enemy piece of `side`. With pinCheck 1 a
// capturer whose departure would leave its king attacked takes no part. Changes the squares
// during the call and restores them. kingAttacked, when the caller knows it, says whether the
// king of `side` is attacked with the square held by a piece of its own, as the series' first
// test sees it (0 or 1), which spares that test; -1: unknown.
int32_t staticExchange(Side side, Position& pos, int32_t file, int32_t rank, int32_t pinCheck,
                       int32_t kingAttacked = -1);
