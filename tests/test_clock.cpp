// The engine's chess clock: the time budget of a search, the depth cut for a nearly empty
// clock, the account after the search, the interface's time command, and the poll's clock
// and Ctrl-C handling.
#include <gtest/gtest.h>

#include <csignal>
#include <ctime>

#include "core/keys.h"
#include "search/settings.h"
#include "ui/clock.h"
#include "ui/interrupt.h"
#include "ui/record.h"

namespace {

int32_t now() {
    return static_cast<int32_t>(std::time(nullptr));
}

// A game record at the start position with the default level (all moves in 60 minutes, no
// bonus, the engine's clock at 3595 seconds); the search settings are put back afterwards.
class ClockTest : public ::testing::Test {
protected:
    void SetUp() override {
        savedFullWidth = fullWidthDepth;
        savedQuiescence = quiescenceDepth;
        savedTimeLimit = searchTimeLimit;
        savedInterruptMode = interruptMode;
        initPositionKeys();
        resetGameState(game);
        interruptMode = 0;
    }
    void TearDown() override {
        fullWidthDepth = savedFullWidth;
        quiescenceDepth = savedQuiescence;
        searchTimeLimit = savedTimeLimit;
        interruptMode = savedInterruptMode;
        auto232Mode = 0;
    }

    // The level command's settings: the clock starts again.
    void level(int32_t moves, int32_t seconds, int32_t bonus) {
        game.sessionMoves = moves;
        game.totalTime = seconds;
        game.bonusTime = bonus;
        game.timeSurplus = 0;
        game.clockReset = seconds - 5;
        game.engineClock = game.clockReset;
    }

    // updateClock after a search that has run `elapsed` whole seconds. The calendar second is
    // read before and after; a run that straddles a second boundary is repeated, so that the
    // search's elapsed time is exactly `elapsed`.
    void chargeAfter(int32_t elapsed, const TimeBudget& budget) {
        const GameState before = game;
        const int32_t depthBefore = fullWidthDepth;
        for (int attempt = 0; attempt < 20; ++attempt) {
            game = before;
            fullWidthDepth = depthBefore;
            const int32_t start = now();
            game.search.searchStartTime = start - elapsed;
            updateClock(game, budget);
            if (now() == start) return;
        }
        FAIL() << "the calendar second changed during every attempt";
    }

    GameState game;
    int32_t savedFullWidth = 0;
    int32_t savedQuiescence = 0;
    int32_t savedTimeLimit = 0;
    int32_t savedInterruptMode = 0;
};

// ---- the budget and the depth cut -------------------------------------------------------------

// One search's clock: the level (moves per session, seconds, bonus), the ply about to be
// played, the engine's clock and surplus and the depth setting before; then the budget, the
// time limit, the early-stop time and the depth setting the search gets.
struct BudgetCase {
    const char* what;
    int32_t moves, seconds, bonus, ply, clock, surplus, depthBefore;
    int32_t budget, limit, earlyStop, depthAfter;
};

// All moves in 60 minutes: a 60th plus the surplus (minus 5 on the first move), a tenth of the
// clock from move 50 with a bonus of at most 2 (and beyond move 60 the surplus alone with a
// larger bonus); early stop at min(3600 / 120, limit / 2). 40 moves in 5 minutes: the surplus
// plus 7; early stop (300 / 40) / 2 = 3. A budget of 0 or less still gets one second, and one
// of -5 or less cuts a deeper setting to two plies. With a bonus of at most 2, a clock of 3
// seconds means one ply, and up to 20 seconds two plies when all moves share one session.
const BudgetCase budgetCases[] = {
    {"default, White's first move", 0, 3600, 0, 0, 3595, 0, 24, 55, 55, 27, 24},
    {"default, Black's first move", 0, 3600, 0, 1, 3595, 0, 24, 55, 55, 27, 24},
    {"default, move 2, ahead", 0, 3600, 0, 2, 3595, 13, 24, 73, 73, 30, 24},
    {"default, move 2, behind", 0, 3600, 0, 2, 3595, -20, 24, 40, 40, 20, 24},
    {"40 in 5, first move", 40, 300, 0, 0, 295, 0, 24, 2, 2, 3, 24},
    {"40 in 5, move 6", 40, 300, 0, 10, 295, 5, 24, 12, 12, 3, 24},
    {"40 in 5, budget 0", 40, 300, 0, 10, 295, -7, 24, 0, 1, 3, 24},
    {"40 in 5, budget 1", 40, 300, 0, 10, 295, -6, 24, 1, 1, 3, 24},
    {"40 in 5, first move behind", 40, 300, 0, 0, 295, -3, 24, -1, 1, 3, 24},
    {"40 in 5, budget -4", 40, 300, 0, 10, 295, -11, 24, -4, 1, 3, 24},
    {"40 in 5, budget -5 cuts", 40, 300, 0, 10, 295, -12, 24, -5, 1, 3, 16},
    {"far behind, two plies stay", 40, 300, 0, 10, 295, -40, 16, -33, 1, 3, 16},
    {"far behind, one ply stays", 40, 300, 0, 10, 295, -40, 8, -33, 1, 3, 8},
    {"move 49", 0, 3600, 0, 96, 900, 4, 24, 64, 64, 30, 24},
    {"move 50, a tenth", 0, 3600, 0, 98, 900, 4, 24, 90, 90, 30, 24},
    {"move 50, bonus 3", 0, 3600, 3, 98, 900, 4, 24, 64, 64, 30, 24},
    {"move 60, bonus 3", 0, 3600, 3, 118, 3595, 9, 24, 69, 69, 30, 24},
    {"move 61, bonus 3", 0, 3600, 3, 120, 900, 9, 24, 9, 9, 4, 24},
    {"move 61, bonus 2", 0, 3600, 2, 120, 457, 9, 24, 45, 45, 22, 24},
    {"3 seconds left", 0, 3600, 0, 10, 3, 0, 24, 60, 60, 30, 8},
    {"4 seconds left", 0, 3600, 0, 10, 4, 0, 24, 60, 60, 30, 16},
    {"15 seconds left", 0, 3600, 0, 10, 15, 0, 24, 60, 60, 30, 16},
    {"20 seconds left", 0, 3600, 0, 10, 20, 0, 24, 60, 60, 30, 16},
    {"21 seconds left", 0, 3600, 0, 10, 21, 0, 24, 60, 60, 30, 24},
    {"sessions, 4 seconds left", 40, 300, 0, 10, 4, 0, 24, 7, 7, 3, 24},
    {"sessions, 20 seconds left", 40, 300, 0, 10, 20, 0, 24, 7, 7, 3, 24},
    {"sessions, 3 seconds left", 40, 300, 0, 10, 3, 0, 24, 7, 7, 3, 8},
    {"bonus 3, 3 seconds left", 0, 3600, 3, 10, 3, 0, 24, 60, 60, 30, 24},
    {"bonus 3, 15 seconds left", 0, 3600, 3, 10, 15, 0, 24, 60, 60, 30, 24},
    {"bonus 2, 15 seconds left", 0, 3600, 2, 10, 15, 0, 24, 60, 60, 30, 16},
};

TEST_F(ClockTest, BudgetsAndDepthCuts) {
    for (const BudgetCase& c : budgetCases) {
        level(c.moves, c.seconds, c.bonus);
        game.plyCount = c.ply;
        game.engineClock = c.clock;
        game.timeSurplus = c.surplus;
        fullWidthDepth = c.depthBefore;
        const TimeBudget b = computeTimeBudget(game);
        EXPECT_EQ(b.budget, c.budget) << c.what;
        EXPECT_EQ(searchTimeLimit, c.limit) << c.what;
        EXPECT_EQ(b.earlyStopTime, c.earlyStop) << c.what;
        EXPECT_EQ(fullWidthDepth, c.depthAfter) << c.what;
        EXPECT_EQ(b.keptDepth, c.depthBefore) << c.what;
    }
}

TEST_F(ClockTest, NoTimeControl) {
    level(0, 0, 0);
    game.engineClock = 2; // would cut the depth with a time control
    const TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(searchTimeLimit, -1000);
    EXPECT_EQ(fullWidthDepth, 24);
    // min(0 / 120, -1000 / 2)
    EXPECT_EQ(b.earlyStopTime, -500);

    // The clocks are not charged afterwards.
    game.timeSurplus = 17;
    chargeAfter(6, b);
    EXPECT_EQ(game.engineClock, 2);
    EXPECT_EQ(game.timeSurplus, 17);
    EXPECT_EQ(fullWidthDepth, 24);
}

TEST_F(ClockTest, TheCutIsUndoneAfterTheSearch) {
    game.plyCount = 10;
    game.engineClock = 15;
    const TimeBudget b = computeTimeBudget(game);
    ASSERT_EQ(fullWidthDepth, 16);
    chargeAfter(2, b);
    EXPECT_EQ(fullWidthDepth, 24);
    EXPECT_EQ(game.engineClock, 13); // 15 + 0 - 2
    EXPECT_EQ(game.timeSurplus, 58); // 0 + 60 - 2

    game.engineClock = 3;
    const TimeBudget c = computeTimeBudget(game);
    ASSERT_EQ(fullWidthDepth, 8);
    chargeAfter(0, c);
    EXPECT_EQ(fullWidthDepth, 24);
}

// ---- charging the clock ------------------------------------------------------------------------

TEST_F(ClockTest, ChargingTheDefaultLevel) {
    const TimeBudget b = computeTimeBudget(game); // 55 on the first move
    chargeAfter(10, b);
    EXPECT_EQ(game.engineClock, 3585); // 3595 + 0 - 10
    EXPECT_EQ(game.timeSurplus, 45);   // 0 + 55 - 10
}

TEST_F(ClockTest, ChargingWithABonus) {
    level(0, 120, 2); // 2 minutes, 2 seconds a move: clock 115
    game.plyCount = 4;
    const TimeBudget b = computeTimeBudget(game); // 120 / 60 + 0 = 2
    EXPECT_EQ(b.budget, 2);
    chargeAfter(3, b);
    EXPECT_EQ(game.engineClock, 114); // 115 + 2 - 3
    EXPECT_EQ(game.timeSurplus, 1);   // 2 + 2 - 3
}

TEST_F(ClockTest, ChargingUsesTheBudgetBeforeTheFloor) {
    level(40, 300, 2);
    game.plyCount = 10;
    game.timeSurplus = -10; // budget -3, searchTimeLimit 1
    const TimeBudget b = computeTimeBudget(game);
    ASSERT_EQ(b.budget, -3);
    ASSERT_EQ(searchTimeLimit, 1);
    chargeAfter(1, b);
    EXPECT_EQ(game.engineClock, 296); // 295 + 2 - 1
    EXPECT_EQ(game.timeSurplus, -2);  // 2 + (-3) - 1, not 2 + 1 - 1
}

TEST_F(ClockTest, ChargingRestoresTheDepthAfterTheBehindScheduleCut) {
    level(40, 300, 0);
    game.plyCount = 10;
    game.timeSurplus = -20; // budget -13: two plies
    const TimeBudget b = computeTimeBudget(game);
    ASSERT_EQ(fullWidthDepth, 16);
    chargeAfter(1, b);
    EXPECT_EQ(fullWidthDepth, 24);
    EXPECT_EQ(game.engineClock, 294); // 295 - 1
    EXPECT_EQ(game.timeSurplus, -14); // -13 - 1
}

// ---- the interface's time command --------------------------------------------------------------

TEST_F(ClockTest, TimeCommandWithSessions) {
    level(40, 300, 0);
    // Move 0 done: all 40 moves still to play.
    setEngineClock(game, 30000);
    EXPECT_EQ(game.engineClock, 295);
    EXPECT_EQ(game.timeSurplus, -5); // 295 - (40 × 300) / 40

    // 21 plies: m = 11, 29 moves left: (29 × 300) / 40 = 217 (217.5 truncated).
    game.plyCount = 21;
    setEngineClock(game, 25099); // 250 - 5 (centiseconds truncated)
    EXPECT_EQ(game.engineClock, 245);
    EXPECT_EQ(game.timeSurplus, 28);

    // 81 plies: m = 41, the second session: 41 mod 40 = 1, (39 × 300) / 40 = 292.
    game.plyCount = 81;
    setEngineClock(game, 20000);
    EXPECT_EQ(game.engineClock, 195);
    EXPECT_EQ(game.timeSurplus, -97);

    // 80 plies: m = 40, a session just ended: 40 mod 40 = 0, all 40 moves again.
    game.plyCount = 80;
    setEngineClock(game, 20000);
    EXPECT_EQ(game.timeSurplus, -105);
}

TEST_F(ClockTest, TimeCommandAllMovesBeforeMoveSixty) {
    // Default level: 3600 seconds for all moves.
    setEngineClock(game, 360000);
    EXPECT_EQ(game.engineClock, 3595);
    EXPECT_EQ(game.timeSurplus, -5); // 3595 - 3600 × 60 / 60

    game.plyCount = 59; // m = 30
    setEngineClock(game, 200000);
    EXPECT_EQ(game.engineClock, 1995);
    EXPECT_EQ(game.timeSurplus, 195); // 1995 - 3600 × 30 / 60

    game.plyCount = 117; // m = 59
    setEngineClock(game, 10000);
    EXPECT_EQ(game.engineClock, 95);
    EXPECT_EQ(game.timeSurplus, 35); // 95 - 3600 × 1 / 60

    game.plyCount = 119; // m = 60: nothing left to reserve
    setEngineClock(game, 10000);
    EXPECT_EQ(game.timeSurplus, 95);
}

TEST_F(ClockTest, TimeCommandAllMovesTruncates) {
    level(0, 100, 0);
    game.plyCount = 13; // m = 7: 100 × 53 / 60 = 88 (88.3 truncated)
    setEngineClock(game, 9000);
    EXPECT_EQ(game.engineClock, 85);
    EXPECT_EQ(game.timeSurplus, -3);
}

TEST_F(ClockTest, TimeCommandAllMovesBeyondMoveSixty) {
    game.plyCount = 121; // m = 61: the surplus is the whole clock
    setEngineClock(game, 4550);
    EXPECT_EQ(game.engineClock, 40);
    EXPECT_EQ(game.timeSurplus, 40);

    game.plyCount = 300; // m = 150
    setEngineClock(game, 1000);
    EXPECT_EQ(game.engineClock, 5);
    EXPECT_EQ(game.timeSurplus, 5);
}

TEST_F(ClockTest, TimeCommandFeedsTheBudget) {
    // After the time command, move 61 with a bonus above 2 plans exactly the surplus.
    game.bonusTime = 3;
    game.plyCount = 121;
    setEngineClock(game, 4550);
    const TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 40);
}

TEST_F(ClockTest, TimeCommandOnAnAlmostEmptyClock) {
    setEngineClock(game, 250); // 2 - 5
    EXPECT_EQ(game.engineClock, -3);
    game.plyCount = 10;
    game.timeSurplus = 0;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 8);
}

// ---- the poll's clock and Ctrl-C ---------------------------------------------------------------

TEST_F(ClockTest, PollStopsTheSearchWhenItsTimeIsUp) {
    searchTimeLimit = 5;
    game.search.StopFlag = 0;
    game.search.searchStartTime = now() + 100; // far from used up
    pollInterruption(game.search);
    EXPECT_EQ(game.search.StopFlag, 0);

    game.search.searchStartTime = now() - 5;
    pollInterruption(game.search);
    EXPECT_EQ(game.search.StopFlag, 1);

    // The poll never clears the flag.
    game.search.searchStartTime = now() + 100;
    pollInterruption(game.search);
    EXPECT_EQ(game.search.StopFlag, 1);
}

TEST_F(ClockTest, PollWithoutTimeLimit) {
    game.search.StopFlag = 0;
    game.search.searchStartTime = now() - 100000;
    searchTimeLimit = 0;
    pollInterruption(game.search);
    EXPECT_EQ(game.search.StopFlag, 0);
    searchTimeLimit = -1000;
    pollInterruption(game.search);
    EXPECT_EQ(game.search.StopFlag, 0);
}

TEST_F(ClockTest, InterruptSignalStopsTheSearchAndTheFileWait) {
    searchRunning = 1;
    auto232Mode = 1;
    onInterruptSignal(SIGINT);
    EXPECT_EQ(searchRunning, 0);
    EXPECT_EQ(auto232Mode, 0);
}

} // namespace
