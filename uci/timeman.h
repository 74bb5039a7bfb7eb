// The UCI program's clock: what a go command asks for, turned into the limits the search
// driver works with, in milliseconds.
#pragma once

#include <cstdint>

#include "core/types.h"

// No time limit for the driver and the poll (as the console program's "no time control").
constexpr int32_t noTimeLimit = -1000;
// Full-width depth that no search reaches: the iterations go on until a limit ends them.
constexpr int32_t unreachedDepth = 248;

// The parameters of one go command; -1 where it gave none.
//   time[1], time[0]   wtime and btime, ms left on White's and Black's clocks
//   increment[1], [0]  winc and binc, ms
//   movesToGo          moves to the next time control
//   moveTime           think exactly this long, ms
//   depth              plies (as the info lines count them)
//   nodes              nodes
//   infinite, ponder   until stop (or, pondering, until ponderhit turns the clock on)
struct GoCommand {
    int64_t time[2];
    int64_t increment[2];
    int64_t movesToGo;
    int64_t moveTime;
    int64_t depth;
    int64_t nodes;
    bool infinite;
    bool ponder;
};

// What a search of the side to move may spend.
//   timeLimit       the driver's budget and the poll's hard stop, ms; noTimeLimit for none
//   earlyStopTime   ms after which a search whose move holds for two iterations may end
//   minimumDepth    the full-width depth (eighths) below which iterations use the whole budget
//   timed           the clock or a move time governs the search
struct TimePlan {
    int32_t timeLimit;
    int32_t earlyStopTime;
    int32_t minimumDepth;
    bool timed;
};

// Time still on the clock is shared among this many moves when no moves-to-go is given.
constexpr int32_t suddenDeathMoves = 30;
// Longest stretch of moves-to-go that is planned for.
constexpr int32_t longestSession = 40;

// The plan for `side` to move. overhead: ms that every move costs outside the search (the
// GUI, an adapter, the pipe, the operating system); minimumDepth: the program's full-width
// depth setting (eighths). A move time is spent in full, less the overhead. A clock is shared
// out over the moves to go (n; 30 when none is given, at most 40):
//   share = (time + increment * (n - 1) - overhead * (n + 2)) / n,   the pool at least 1 ms,
// with a hard stop at twice the share, never past a third of the time left less the overhead
// (three quarters with one move to go), never under 1 ms; the driver starts a new iteration
// beyond the minimum depth only within the first quarter of it, and may end early after
// share / 2. Counting the overhead of every move to go keeps the clock above what the moves
// still to come will cost even when each costs more than the increment gives back.
TimePlan planTime(const GoCommand& go, Side side, int32_t overhead, int32_t minimumDepth);
