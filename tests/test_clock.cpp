// The console engine's clock, budget and depth cut, the poll and Ctrl-C; the UCI time plan.
#include <climits>
#include <csignal>
#include <ctime>

#include "helpers.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "uci/options.h"
#include "uci/timeman.h"
#include "ui/clock.h"
#include "ui/interrupt.h"
#include "ui/record.h"

namespace {

constexpr int32_t any = INT_MIN; // a figure a row leaves unchecked

int32_t now() {
    return static_cast<int32_t>(std::time(nullptr));
}

// A game record at the start position; the search settings are put back afterwards.
class Clock : public ::testing::Test {
protected:
    void SetUp() override {
        resetGameState(game);
        interruptMode = 0;
    }
    void TearDown() override {
        fullWidthDepth = saved[0];
        quiescenceDepth = saved[1];
        searchTimeLimit = saved[2];
        interruptMode = saved[3];
        auto232Mode = 0;
    }

    // The level (moves per session, seconds, bonus), the ply, the engine's clock and surplus.
    void setUp(int32_t moves, int32_t seconds, int32_t bonus, int32_t ply, int32_t clock,
               int32_t surplus) {
        game.sessionMoves = moves;
        game.totalTime = seconds;
        game.bonusTime = bonus;
        game.clockReset = seconds - 5;
        game.engineClock = clock == any ? seconds - 5 : clock;
        game.timeSurplus = surplus;
        game.plyCount = ply;
    }

    // updateClock after `elapsed` seconds, repeated when it straddles a second boundary.
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
    int32_t saved[4] = {fullWidthDepth, quiescenceDepth, searchTimeLimit, interruptMode};
};

// The budget: a 60th or the surplus + 7 per move, a tenth of the clock from move 50; a short clock
// or a budget of -5 cuts the depth.
TEST_F(Clock, BudgetsAndDepthCuts) {
    const struct {
        const char* what;
        int32_t moves, seconds, bonus, ply, clock, surplus, depthBefore;
        int32_t budget, limit, earlyStop, depthAfter;
    } cases[] = {
        {"default, White's first move", 0, 3600, 0, 0, 3595, 0, 24, 55, 55, 27, 24},
        {"default, Black's first move", 0, 3600, 0, 1, 3595, 0, 24, 55, 55, 27, 24},
        {"default, move 2, ahead", 0, 3600, 0, 2, 3595, 13, 24, 73, 73, 30, 24},
        {"default, move 2, behind", 0, 3600, 0, 2, 3595, -20, 24, 40, 40, 20, 24},
        {"40 in 5, first move", 40, 300, 0, 0, 295, 0, 24, 2, 2, 3, 24},
        {"40 in 5, move 6", 40, 300, 0, 10, 295, 5, 24, 12, 12, 3, 24},
        {"40 in 5, budget 0", 40, 300, 0, 10, 295, -7, 24, 0, 1, 3, 24},
        {"40 in 5, budget 1", 40, 300, 0, 10, 295, -6, 24, 1, 1, 3, 24},
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
        {"20 seconds left", 0, 3600, 0, 10, 20, 0, 24, 60, 60, 30, 16},
        {"21 seconds left", 0, 3600, 0, 10, 21, 0, 24, 60, 60, 30, 24},
        {"sessions, 4 seconds left", 40, 300, 0, 10, 4, 0, 24, 7, 7, 3, 24},
        {"sessions, 3 seconds left", 40, 300, 0, 10, 3, 0, 24, 7, 7, 3, 8},
        {"bonus 3, 3 seconds left", 0, 3600, 3, 10, 3, 0, 24, 60, 60, 30, 24},
        {"bonus 2, 15 seconds left", 0, 3600, 2, 10, 15, 0, 24, 60, 60, 30, 16},
        // No time control: no limit, no cut; min(0 / 120, -1000 / 2).
        {"no time control", 0, 0, 0, 0, 2, 0, 24, any, -1000, -500, 24},
    };
    for (const auto& c : cases) {
        setUp(c.moves, c.seconds, c.bonus, c.ply, c.clock, c.surplus);
        fullWidthDepth = c.depthBefore;
        const TimeBudget b = computeTimeBudget(game);
        EXPECT_EQ(c.budget != any ? b.budget : any, c.budget) << c.what;
        EXPECT_EQ(searchTimeLimit, c.limit) << c.what;
        EXPECT_EQ(b.earlyStopTime, c.earlyStop) << c.what;
        EXPECT_EQ(fullWidthDepth, c.depthAfter) << c.what;
        EXPECT_EQ(b.keptDepth, c.depthBefore) << c.what;
    }
}

// After the search: the depth back, the clock + bonus - elapsed, the surplus + budget - elapsed.
TEST_F(Clock, ChargingAfterTheSearch) {
    const struct {
        const char* what;
        int32_t moves, seconds, bonus, ply, clock, surplus, elapsed;
        int32_t depthDuring, clockAfter, surplusAfter;
    } cases[] = {
        {"default, first move", 0, 3600, 0, 0, any, 0, 10, 24, 3585, 45},
        {"2 minutes + 2 s", 0, 120, 2, 4, any, 0, 3, 24, 114, 1},  // budget 2
        {"budget -3", 40, 300, 2, 10, any, -10, 1, 24, 296, -2},   // not 2 + 1 - 1
        {"budget -13", 40, 300, 0, 10, any, -20, 1, 16, 294, -14}, // cut to two plies
        {"15 seconds left", 0, 3600, 0, 10, 15, 0, 2, 16, 13, 58}, // budget 60
        {"3 seconds left", 0, 3600, 0, 10, 3, 0, 0, 8, 3, 60},
        {"no time control", 0, 0, 0, 0, 2, 17, 6, 24, 2, 17},
    };
    for (const auto& c : cases) {
        setUp(c.moves, c.seconds, c.bonus, c.ply, c.clock, c.surplus);
        fullWidthDepth = 24;
        const TimeBudget b = computeTimeBudget(game);
        EXPECT_EQ(fullWidthDepth, c.depthDuring) << c.what;
        chargeAfter(c.elapsed, b);
        EXPECT_EQ(fullWidthDepth, 24) << c.what;
        EXPECT_EQ(game.engineClock, c.clockAfter) << c.what;
        EXPECT_EQ(game.timeSurplus, c.surplusAfter) << c.what;
    }
}

// The time command: the clock 5 s short, the surplus the clock less the share still to play. The
// level-and-time session sets it within a session of 40 moves and of all moves.
TEST_F(Clock, TimeCommand) {
    // moves per session, seconds, ply, the command's centiseconds; the clock and surplus set
    const std::tuple<int32_t, int32_t, int32_t, long, int32_t, int32_t> cases[] = {
        {40, 300, 0, 30000, 295, -5},    {40, 300, 81, 20000, 195, -97},
        {40, 300, 80, 20000, 195, -105}, {0, 3600, 0, 360000, 3595, -5},
        {0, 3600, 119, 10000, 95, 95},   {0, 100, 13, 9000, 85, -3},
        {0, 3600, 121, 4550, 40, 40},    {0, 3600, 0, 250, -3, any},
    };
    for (const auto& [moves, seconds, ply, centiseconds, clock, surplus] : cases) {
        setUp(moves, seconds, 0, ply, any, 0);
        setEngineClock(game, centiseconds);
        EXPECT_EQ(game.engineClock, clock) << ply << " " << centiseconds;
        EXPECT_EQ(surplus != any ? game.timeSurplus : any, surplus) << ply;
    }
}

// The poll stops a search past its limit, never without one; Ctrl-C ends search and file wait.
TEST_F(Clock, PollAndInterrupt) {
    // The limit, how long ago the search started, the stop flag before and after.
    const int32_t cases[][4] = {
        {5, -100, 0, 0}, {5, 5, 0, 1}, {5, -100, 1, 1}, {0, 100000, 0, 0}, {-1000, 100000, 0, 0}};
    for (const auto& [limit, startedAgo, flagBefore, flagAfter] : cases) {
        searchTimeLimit = limit;
        game.search.StopFlag = flagBefore;
        game.search.searchStartTime = now() - startedAgo;
        pollInterruption(game.search);
        EXPECT_EQ(game.search.StopFlag, flagAfter) << limit << " " << startedAgo;
    }
    searchRunning = 1;
    auto232Mode = 1;
    onInterruptSignal(SIGINT);
    EXPECT_EQ(searchRunning, 0);
    EXPECT_EQ(auto232Mode, 0);
}

// White's clock (index 1): time, increment, movestogo; Black's clock plays no part.
GoCommand go(int64_t time, int64_t increment, int64_t movesToGo) {
    return GoCommand{{99999, time}, {-1, increment}, movesToGo, -1, -1, -1, false, false};
}

GoCommand other(int64_t moveTime, int64_t depth, bool infinite) {
    return GoCommand{{-1, -1}, {-1, -1}, -1, moveTime, depth, -1, infinite, false};
}

// Twice a share of time + increments - overheads over n moves (30, at most 40), within a third.
// The UCI clock session has debug print the plan of sudden death, 20 and 100 moves to go, one
// move to go, Black's clock, an increment above the clock, clocks under the overheads, no
// overhead, a move time and a depth or node limit with a clock; the rows here are the rest.
TEST(UciTime, PlansFollowTheSharingRule) {
    const int32_t never = 2000000000; // an early stop that never comes
    const std::tuple<Text, GoCommand, TimePlan> cases[] = {
        {"movetime under the overhead", other(30, -1, false), {1, never, unreachedDepth, true}},
        {"movestogo 0, as none", go(60000, 0, 0), {3892, 973, 24, true}}, // 58400 / 30
        {"two moves to go", go(10000, 0, 2), {3316, 2450, 24, true}},     // a third of 9950
        {"clock for the overheads only", go(1550, 0, -1), {1, 0, 24, true}},
        // No clock: depth 5 is a minimum depth of 40 eighths, no time limit.
        {"depth 5", other(-1, 5, false), {noTimeLimit, noTimeLimit, 40, false}},
        {"depth 40", other(-1, 40, false), {noTimeLimit, noTimeLimit, unreachedDepth, false}},
        {"infinite", other(-1, -1, true), {noTimeLimit, noTimeLimit, unreachedDepth, false}},
    };
    for (const auto& [what, command, expected] : cases) {
        const TimePlan plan = planTime(command, white, 50, 24);
        EXPECT_EQ(plan.timeLimit, expected.timeLimit) << what;
        EXPECT_EQ(plan.earlyStopTime, expected.earlyStopTime) << what;
        EXPECT_EQ(plan.minimumDepth, expected.minimumDepth) << what;
        EXPECT_EQ(plan.timed, expected.timed) << what;
    }
}

// Two tables of 24-byte entries: 2^n entries take 48 x 2^n bytes.
TEST(UciTime, HashMegabytesGiveTheLargestPowerOfTwoThatFits) {
    const int64_t cases[][2] = {{1, 14}, {16, 18}, {24, 19}, {23, 18}, {16384, 28}};
    for (const auto& c : cases)
        EXPECT_EQ(hashBitsFor(c[0]), c[1]) << c[0] << " MB";
}

} // namespace
