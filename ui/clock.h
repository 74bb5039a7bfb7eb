// The engine's clock: how long a search may take, and the account after it.
#pragma once

#include <cstdint>

#include "ui/gamestate.h"

// What computeTimeBudget settles for one search of the engine.
//   budget           seconds planned for the move, before the floor of one second
//   earlyStopTime    seconds after which a search whose best move holds may end
//   keptDepth        fullWidthDepth before the budget lowered it for a short clock
struct TimeBudget {
    int32_t budget;
    int32_t earlyStopTime;
    int32_t keptDepth;
};

// Sets searchTimeLimit (and, when the clock is short, fullWidthDepth) for the engine's move.
TimeBudget computeTimeBudget(GameState& game);

// After the search: restores the depth setting and charges the elapsed time to the engine's
// clock and schedule (nothing without time control).
void updateClock(GameState& game, const TimeBudget& budget);

// The interface's time command: the engine's clock in centiseconds; the schedule surplus follows
// from the moves still to play in the session.
void setEngineClock(GameState& game, long centiseconds);
