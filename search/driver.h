// The search driver: iterative deepening over the root moves, each carrying a range of values
// that MTD(f) null-window tests narrow until one move is proven best.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"
#include "search/control.h"

// ponderTime argument of a pondering search: no clock, no static list, "best move:" reports.
constexpr int32_t ponderingSearch = -1;

// Chooses a move of `side` among moves[0..lastIndex] (the legal moves, at least one) in `pos`
// and returns its index. ponderTime: seconds of pondering that count as spent, or
// ponderingSearch; earlyStopTime: seconds after which a search whose best move stays the same
// may end; both in the units of control.now. The caller sets control.StopFlag = 0 and
// control.searchStartTime before the call. Leaves the position, fiftyMoveCounter,
// fullWidthDepth and searchTimeLimit as it found them.
int32_t runSearch(SearchControl& control, Side side, MoveList& moves, int32_t lastIndex,
                  Position& pos, int32_t showPv, int32_t ponderTime, int32_t earlyStopTime);
