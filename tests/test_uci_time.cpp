// The UCI program's time plan and hash sizes, worked by hand from the rules in uci/timeman.h
// and uci/options.h.
#include <gtest/gtest.h>

#include "search/transtable.h"
#include "uci/options.h"
#include "uci/timeman.h"

namespace {

GoCommand noLimits() {
    return GoCommand{{-1, -1}, {-1, -1}, -1, -1, -1, -1, false, false};
}

struct PlanCase {
    const char* what;
    GoCommand go;
    Side side;
    int32_t overhead;
    TimePlan expected;
};

// A clock for White: wtime, winc, movestogo.
GoCommand clock(int64_t time, int64_t increment, int64_t movesToGo, Side side = white) {
    GoCommand go = noLimits();
    go.time[side > 0 ? 1 : 0] = time;
    go.time[side > 0 ? 0 : 1] = 99999; // the opponent's clock plays no part
    go.increment[side > 0 ? 1 : 0] = increment;
    go.movesToGo = movesToGo;
    return go;
}

GoCommand moveTime(int64_t ms) {
    GoCommand go = noLimits();
    go.moveTime = ms;
    return go;
}

GoCommand depth(int64_t plies, bool infinite = false) {
    GoCommand go = noLimits();
    go.depth = plies;
    go.infinite = infinite;
    return go;
}

TEST(UciTime, PlansFollowTheSharingRule) {
    const int32_t always = 2000000000; // an early stop that never comes
    const PlanCase cases[] = {
        // movetime is spent in full, less the overhead, never under 1 ms.
        {"movetime 1000", moveTime(1000), white, 50, {950, always, unreachedDepth, true}},
        {"movetime under the overhead", moveTime(30), white, 50, {1, always, unreachedDepth, true}},
        // pool = time + increment * (n - 1) - overhead * (n + 2); share = pool / n.
        // 1+0: 60000 - 50 * 32 = 58400; share 1946; budget 3892, early stop 973.
        {"1 minute", clock(60000, 0, -1), white, 50, {3892, 973, 24, true}},
        // 3+2: 180000 + 2000 * 29 - 1600 = 236400; share 7880; budget 15760.
        {"3 minutes + 2 s", clock(180000, 2000, -1), white, 50, {15760, 3940, 24, true}},
        // 10+0.1 with 2 s left: 2000 + 2900 - 1600 = 3300; share 110; budget 220 (a third of
        // 1950 is 650).
        {"2 s left + 0.1 s", clock(2000, 100, -1), white, 50, {220, 55, 24, true}},
        // 40 moves in 2 minutes: 120000 - 50 * 42 = 117900; share 2947; budget 5894.
        {"40 moves in 2 minutes", clock(120000, 0, 40), white, 50, {5894, 1473, 24, true}},
        // movestogo beyond 40 is planned as 40.
        {"movestogo 80", clock(120000, 0, 80), white, 50, {5894, 1473, 24, true}},
        // One move to go: 5000 - 150 = 4850; the budget is three quarters of 4950.
        {"one move to go", clock(5000, 0, 1), white, 50, {3712, 2425, 24, true}},
        // Two moves to go: 10000 - 200 = 9800, share 4900; twice that passes a third of 9950.
        {"two moves to go", clock(10000, 0, 2), white, 50, {3316, 2450, 24, true}},
        // Black reads btime: 30000 - 1600 = 28400; share 946.
        {"Black's clock", clock(30000, 0, -1, black), black, 50, {1892, 473, 24, true}},
        // 1.5 s in sudden death is what 30 moves of 50 ms overhead cost: 1 ms a move.
        {"clock for the overheads only", clock(1550, 0, -1), white, 50, {1, 0, 24, true}},
        // Less on the clock than the overhead: 1 ms, never a negative budget.
        {"clock under the overhead", clock(20, 0, -1), white, 50, {1, 0, 24, true}},
        // A large increment lives on the increments: 650 + 29000 - 1600 = 28050, share 935,
        // but never past a third of 600.
        {"increment above the clock", clock(650, 1000, -1), white, 50, {200, 467, 24, true}},
        // No clock: depth 5 is the minimum depth of 40 eighths, no time limit.
        {"depth 5", depth(5), white, 50, {noTimeLimit, noTimeLimit, 40, false}},
        {"depth 40", depth(40), white, 50, {noTimeLimit, noTimeLimit, unreachedDepth, false}},
        {"infinite", depth(-1, true), white, 50, {noTimeLimit, noTimeLimit, unreachedDepth, false}},
    };
    for (const PlanCase& c : cases) {
        const TimePlan plan = planTime(c.go, c.side, c.overhead, 24);
        EXPECT_EQ(plan.timeLimit, c.expected.timeLimit) << c.what;
        EXPECT_EQ(plan.earlyStopTime, c.expected.earlyStopTime) << c.what;
        EXPECT_EQ(plan.minimumDepth, c.expected.minimumDepth) << c.what;
        EXPECT_EQ(plan.timed, c.expected.timed) << c.what;
    }
}

TEST(UciTime, HashMegabytesGiveTheLargestPowerOfTwoThatFits) {
    // Two tables of 24-byte entries: 2^n entries take 48 * 2^n bytes.
    EXPECT_EQ(hashBitsFor(1), 14);  // 48 * 16384 = 786432 <= 1048576 < 48 * 32768
    EXPECT_EQ(hashBitsFor(16), 18); // 12 MB of 16; 2^19 would take 24 MB
    EXPECT_EQ(hashBitsFor(24), 19); // exactly 24 MB
    EXPECT_EQ(hashBitsFor(23), 18);
    EXPECT_EQ(hashBitsFor(16384), 28); // 12 GB of 16
}

} // namespace
