#include "uci/timeman.h"

namespace {

int32_t clampToInt32(int64_t v) {
    if (v > 2000000000) return 2000000000;
    if (v < -2000000000) return -2000000000;
    return static_cast<int32_t>(v);
}

} // namespace

TimePlan planTime(const GoCommand& go, Side side, int32_t overhead, int32_t minimumDepth) {
    TimePlan plan = {noTimeLimit, noTimeLimit, unreachedDepth, false};
    const int32_t colour = side > 0 ? 1 : 0;
    if (go.moveTime >= 0) {
        // Think exactly this long: every iteration may use the whole of it.
        plan.timeLimit = clampToInt32(go.moveTime - overhead);
        if (plan.timeLimit < 1) plan.timeLimit = 1;
        plan.earlyStopTime = 2000000000;
        plan.timed = true;
        return plan;
    }
    if (go.time[colour] >= 0) {
        const int64_t time = go.time[colour];
        int64_t movesToGo = go.movesToGo > 0 ? go.movesToGo : suddenDeathMoves;
        if (movesToGo > longestSession) movesToGo = longestSession;
        const int64_t increment = go.increment[colour] > 0 ? go.increment[colour] : 0;
        // What the moves to go may spend: the clock and the increments still to come, less the
        // overhead of each of them and a little more.
        int64_t pool = time + increment * (movesToGo - 1) - int64_t{overhead} * (movesToGo + 2);
        if (pool < 1) pool = 1;
        const int64_t share = pool / movesToGo;
        int64_t available = time - overhead;
        if (available < 1) available = 1;
        const int64_t ceiling = movesToGo == 1 ? available * 3 / 4 : available / 3;
        int64_t limit = 2 * share;
        if (limit > ceiling) limit = ceiling;
        if (limit < 1) limit = 1;
        plan.timeLimit = clampToInt32(limit);
        plan.earlyStopTime = clampToInt32(share / 2);
        plan.minimumDepth = minimumDepth;
        plan.timed = true;
        return plan;
    }
    // Depth, nodes, infinite, or nothing at all: no clock.
    if (go.depth > 0 && !go.infinite)
        plan.minimumDepth = clampToInt32(go.depth > 31 ? unreachedDepth : go.depth * 8);
    return plan;
}
