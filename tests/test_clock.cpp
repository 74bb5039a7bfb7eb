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
#include "ui/loop.h"

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
            game.searchStartTime = start - elapsed;
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

// ---- the budget -------------------------------------------------------------------------------

TEST_F(ClockTest, DefaultLevelFirstMoveAsWhite) {
    // 3600 / 60 + 0, minus 5 on the first move; early stop min(3600 / 120, 55 / 2).
    ASSERT_EQ(game.plyCount, 0);
    const TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 55);
    EXPECT_EQ(searchTimeLimit, 55);
    EXPECT_EQ(b.earlyStopTime, 27);
    EXPECT_EQ(fullWidthDepth, 24);
    EXPECT_EQ(b.keptDepth, 24);
}

TEST_F(ClockTest, DefaultLevelFirstMoveAsBlackIsStillMoveOne) {
    game.plyCount = 1; // move number (1 + 2) / 2 = 1
    const TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 55);
    EXPECT_EQ(searchTimeLimit, 55);
}

TEST_F(ClockTest, DefaultLevelLaterMovesAddTheSurplus) {
    game.plyCount = 2; // move 2: no first-move discount
    game.timeSurplus = 13;
    TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 73);
    EXPECT_EQ(searchTimeLimit, 73);
    // min(30, 73 / 2 = 36)
    EXPECT_EQ(b.earlyStopTime, 30);

    game.timeSurplus = -20;
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 40);
    // min(30, 40 / 2 = 20)
    EXPECT_EQ(b.earlyStopTime, 20);
}

TEST_F(ClockTest, FortyMovesInFiveMinutes) {
    level(40, 300, 0);
    // First move: 0 + 300 / 40 = 7, minus 5.
    TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 2);
    EXPECT_EQ(searchTimeLimit, 2);
    EXPECT_EQ(b.earlyStopTime, 3); // (300 / 40) / 2
    EXPECT_EQ(fullWidthDepth, 24);

    // Later moves: surplus + 7.
    game.plyCount = 10;
    game.timeSurplus = 5;
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 12);
    EXPECT_EQ(searchTimeLimit, 12);
    EXPECT_EQ(b.earlyStopTime, 3);

    game.timeSurplus = -7; // budget exactly 0: a search still gets one second
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 0);
    EXPECT_EQ(searchTimeLimit, 1);
    EXPECT_EQ(fullWidthDepth, 24);

    game.timeSurplus = -6; // budget 1
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 1);
    EXPECT_EQ(searchTimeLimit, 1);
}

TEST_F(ClockTest, FortyMovesInFiveMinutesFirstMoveBehindSchedule) {
    level(40, 300, 0);
    game.timeSurplus = -3; // -3 + 7 - 5 = -1: one second, the depth setting stays
    TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, -1);
    EXPECT_EQ(searchTimeLimit, 1);
    EXPECT_EQ(fullWidthDepth, 24);
}

TEST_F(ClockTest, FarBehindScheduleCutsTheDepthToTwoPlies) {
    level(40, 300, 0);
    game.plyCount = 10;
    game.timeSurplus = -11; // budget -4: one second, depth kept
    TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, -4);
    EXPECT_EQ(searchTimeLimit, 1);
    EXPECT_EQ(fullWidthDepth, 24);

    game.timeSurplus = -12; // budget -5: one second and two plies
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, -5);
    EXPECT_EQ(searchTimeLimit, 1);
    EXPECT_EQ(fullWidthDepth, 16);
    EXPECT_EQ(b.keptDepth, 24);
}

TEST_F(ClockTest, FarBehindScheduleLeavesAShallowSettingAlone) {
    level(40, 300, 0);
    game.plyCount = 10;
    game.timeSurplus = -40;
    fullWidthDepth = 16; // not above two plies: stays
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 16);
    fullWidthDepth = 8;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 8);
    EXPECT_EQ(searchTimeLimit, 1);
}

TEST_F(ClockTest, AllMovesInOneSessionLateInTheGame) {
    // Move 49: still a 60th of the total time plus the surplus.
    game.plyCount = 96;
    game.engineClock = 900;
    game.timeSurplus = 4;
    TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 64);

    // Move 50: a tenth of the clock (bonus at most 2).
    game.plyCount = 98;
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 90);

    // ... but with a larger bonus still the 60th and the surplus.
    game.bonusTime = 3;
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 64);

    // Beyond move 60 with a larger bonus: the surplus alone.
    game.plyCount = 120; // move 61
    game.timeSurplus = 9;
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 9);

    // Beyond move 60 with bonus 2: a tenth of the clock.
    game.bonusTime = 2;
    game.engineClock = 457;
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 45);
    EXPECT_EQ(searchTimeLimit, 45);
    // min(3600 / 120 = 30, 45 / 2 = 22)
    EXPECT_EQ(b.earlyStopTime, 22);
}

TEST_F(ClockTest, MoveSixtyIsNotBeyondSixty) {
    game.bonusTime = 3;
    game.plyCount = 118; // move 60: the 60th and the surplus
    game.timeSurplus = 9;
    EXPECT_EQ(computeTimeBudget(game).budget, 69);
    game.plyCount = 120; // move 61: the surplus alone
    EXPECT_EQ(computeTimeBudget(game).budget, 9);
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

// ---- the depth cut for a nearly empty clock --------------------------------------------------
// Every case keeps its budget well above -5 (move 6 of all moves in 60 minutes: 60 seconds
// plus the surplus of 0), so only the clock decides.

TEST_F(ClockTest, ThreeSecondsLeftMeanOnePly) {
    game.plyCount = 10;
    game.engineClock = 3;
    const TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 60);
    EXPECT_EQ(searchTimeLimit, 60);
    EXPECT_EQ(fullWidthDepth, 8);
    EXPECT_EQ(b.keptDepth, 24);
}

TEST_F(ClockTest, FourSecondsLeftMeanTwoPlies) {
    game.plyCount = 10;
    game.engineClock = 4;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 16);
}

TEST_F(ClockTest, FifteenSecondsLeftMeanTwoPlies) {
    game.plyCount = 10;
    game.engineClock = 15;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 16);
}

TEST_F(ClockTest, TwentySecondsLeftMeanTwoPlies) {
    game.plyCount = 10;
    game.engineClock = 20;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 16);
}

TEST_F(ClockTest, TwentyOneSecondsLeftKeepTheSetting) {
    game.plyCount = 10;
    game.engineClock = 21;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 24);
}

TEST_F(ClockTest, SessionsCutOnlyAtThreeSeconds) {
    level(40, 300, 0);
    game.plyCount = 10;
    game.engineClock = 4; // with sessions, no two-ply cut
    TimeBudget b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 7);
    EXPECT_EQ(fullWidthDepth, 24);

    game.engineClock = 20;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 24);

    game.engineClock = 3; // one ply with sessions too
    b = computeTimeBudget(game);
    EXPECT_EQ(b.budget, 7);
    EXPECT_EQ(fullWidthDepth, 8);
}

TEST_F(ClockTest, BonusAboveTwoSecondsSkipsTheCut) {
    game.plyCount = 10;
    game.engineClock = 3;
    game.bonusTime = 3;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 24);

    game.engineClock = 15;
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 24);

    game.bonusTime = 2; // at most 2: cut again
    computeTimeBudget(game);
    EXPECT_EQ(fullWidthDepth, 16);
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
    game.StopFlag = 0;
    game.searchStartTime = now() + 100; // far from used up
    pollInterruption(game);
    EXPECT_EQ(game.StopFlag, 0);

    game.searchStartTime = now() - 5;
    pollInterruption(game);
    EXPECT_EQ(game.StopFlag, 1);

    // The poll never clears the flag.
    game.searchStartTime = now() + 100;
    pollInterruption(game);
    EXPECT_EQ(game.StopFlag, 1);
}

TEST_F(ClockTest, PollWithoutTimeLimit) {
    game.StopFlag = 0;
    game.searchStartTime = now() - 100000;
    searchTimeLimit = 0;
    pollInterruption(game);
    EXPECT_EQ(game.StopFlag, 0);
    searchTimeLimit = -1000;
    pollInterruption(game);
    EXPECT_EQ(game.StopFlag, 0);
}

TEST_F(ClockTest, InterruptSignalStopsTheSearchAndTheFileWait) {
    searchRunning = 1;
    auto232Mode = 1;
    onInterruptSignal(SIGINT);
    EXPECT_EQ(searchRunning, 0);
    EXPECT_EQ(auto232Mode, 0);
}

} // namespace
