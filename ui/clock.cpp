#include "ui/clock.h"

#include <ctime>

#include "search/settings.h"

// Without a time control a search has no time limit at all.
constexpr int32_t unlimited = -1000;

TimeBudget computeTimeBudget(GameState& game) {
    TimeBudget b = {0, 0, fullWidthDepth};
    if (game.totalTime == 0) {
        searchTimeLimit = unlimited;
    } else {
        const int32_t moveNumber = (game.plyCount + 2) / 2;
        const int32_t base = moveNumber == 1 ? -5 : 0; // the first move is played quicker
        int32_t budget;
        if (game.sessionMoves != 0) {
            budget = game.timeSurplus + game.totalTime / game.sessionMoves;
        } else if (moveNumber > 60) {
            budget = game.bonusTime <= 2 ? game.engineClock / 10 : game.timeSurplus;
        } else if (game.bonusTime <= 2 && moveNumber > 49) {
            budget = game.engineClock / 10;
        } else {
            budget = game.totalTime / 60 + game.timeSurplus;
        }
        budget += base;
        b.budget = budget;
        searchTimeLimit = budget;
        if (budget <= 0) {
            if (fullWidthDepth > 16 && budget <= -5) fullWidthDepth = 16;
            searchTimeLimit = 1;
        }
        if (game.bonusTime <= 2) {
            // A nearly empty clock: one ply, or two with all moves in one session.
            if (game.engineClock <= 3) {
                fullWidthDepth = 8;
            } else if (game.engineClock <= 20 && game.sessionMoves == 0) {
                fullWidthDepth = 16;
            }
        }
    }
    if (game.sessionMoves != 0) {
        b.earlyStopTime = (game.totalTime / game.sessionMoves) / 2;
    } else {
        const int32_t share = game.totalTime / 120;
        const int32_t half = searchTimeLimit / 2;
        b.earlyStopTime = share < half ? share : half;
    }
    return b;
}

void updateClock(GameState& game, const TimeBudget& budget) {
    if (game.totalTime == 0) return;
    const int32_t elapsed = static_cast<int32_t>(game.search.now() - game.search.searchStartTime);
    fullWidthDepth = budget.keptDepth;
    game.engineClock += game.bonusTime - elapsed;
    game.timeSurplus = game.bonusTime + budget.budget - elapsed;
}

void setEngineClock(GameState& game, long centiseconds) {
    // Cut absurd clocks so that every sum below stays in range.
    constexpr long limit = 100000000L * 100;
    const long t = centiseconds < -limit ? -limit : centiseconds > limit ? limit : centiseconds;
    game.engineClock = static_cast<int32_t>(t / 100 - 5);
    const int32_t m = (game.plyCount + 1) / 2;
    if (game.sessionMoves != 0) {
        const int64_t left = game.sessionMoves - m % game.sessionMoves;
        game.timeSurplus =
            game.engineClock - static_cast<int32_t>(left * game.totalTime / game.sessionMoves);
    } else if (m <= 60) {
        game.timeSurplus =
            game.engineClock - static_cast<int32_t>(int64_t{game.totalTime} * (60 - m) / 60);
    } else {
        game.timeSurplus = game.engineClock;
    }
}
