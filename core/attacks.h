// The one attack test of the program.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Knight offsets in the program's fixed order: (f-1, r+2), (f-1, r-2), (f+1, r+2), (f+1, r-2),
// (f+2, r-1), (f+2, r+1), (f-2, r-1), (f-2, r+1). Generation, exchange and threats share it.
constexpr int32_t knightSteps[8][2] = {{-1, 2}, {-1, -2}, {1, 2},   {1, -2},
                                       {2, -1}, {2, 1},   {-2, -1}, {-2, 1}};

// Returns 1 when no piece of the opponent of `side` attacks (file, rank), else 0. A file of -1
// asks about the king of `side` (its square from the king fields; rank ignored). The content of
// the tested square is never looked at. En passant plays no part. Reads only.
int32_t isSquareSafe(const Position& pos, Side side, int32_t file, int32_t rank);
