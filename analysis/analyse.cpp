#include "analysis/analyse.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "analysis/san.h"
#include "core/derive.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/transtable.h"

namespace {

// Time limit of the driver and the poll when only a depth is asked for: none.
constexpr int32_t noTimeLimit = -1000;
// Full-width depth (eighths) that no search reaches: a timed search iterates until the clock
// ends it, every iteration allowed the whole time.
constexpr int32_t unreachedDepth = 248;
// A time after which a search whose move holds may end early: never.
constexpr int32_t neverStopEarly = 2000000000;
// Single legal moves followed before the position is searched.
constexpr int32_t maxForcedMoves = 16;

const auto programStart = std::chrono::steady_clock::now();

// What the running search was asked for and what it has reported.
//   depth          plies after which it ends (0: none)
//   reported       an iteration has been kept
//   kept           the last finished iteration, or an interrupted one that changed the move
struct Running {
    int32_t depth;
    bool reported;
    IterationReport kept;
};
Running running;

GameLine work; // the analysed position, searched in place
MoveList legal;

void keepReport(SearchControl&, const IterationReport& r) {
    if (r.finished || (running.reported && !sameMove(r.chosen, running.kept.chosen))) {
        if (!r.finished) {
            // The driver takes an interrupted iteration's move only on a clear proven gain;
            // its value is the one proven, its depth that of the last finished iteration.
            const int32_t depth = running.kept.depth;
            running.kept = r;
            running.kept.depth = depth;
        } else {
            running.kept = r;
        }
        running.reported = true;
    }
    if (running.depth > 0 && r.finished && r.depth >= running.depth) searchRunning = 0;
}

void pollClock(SearchControl& control) {
    if (searchTimeLimit > 0 && control.now() - control.searchStartTime >= searchTimeLimit)
        control.StopFlag = 1;
}

// The value of a report's front move: exact when the search pinned it, else the proven bound.
int32_t reportedValue(const IterationReport& r) {
    if (r.lowerProven) return r.lower;
    if (r.upperProven) return r.upper;
    return r.lower;
}

// The evaluation after `m` for the side that plays it, in search units: the value of a depth-1
// (static) choice.
int32_t staticValue(GameLine& g, const Move& m) {
    Position after = g.pos;
    PositionKey key;
    PieceLists lists;
    Material material;
    derivePositionState(after, key, lists, material);
    playOnBoard(key, g.side, after, lists, m, material);
    derivePositionState(after, key, lists, material);
    return 2 * g.side * evaluate(material, after, lists, -g.side, 0);
}

// Searches `g` (at least two legal moves, list[0..last]) within the limits.
void search(GameLine& g, int32_t last, const SearchLimits& limits, Analysis& a) {
    SearchControl& control = g.control;
    control.pollFunction = pollClock;
    control.now = milliseconds;
    control.output = SearchOutput::report;
    control.report = keepReport;
    control.bookMissingIsFatal = 0;
    bookEnabled = 0;
    quiescenceDepth = 48;
    if (limits.depth == 1) {
        fullWidthDepth = 8; // the driver's static choice, without a clock
        searchTimeLimit = 0;
    } else {
        fullWidthDepth = limits.depth > 0 ? 8 * limits.depth : unreachedDepth;
        searchTimeLimit = limits.moveTime > 0 ? limits.moveTime : noTimeLimit;
    }
    running = Running{};
    running.depth = limits.depth;
    control.StopFlag = 0;
    control.searchStartTime = milliseconds();
    const int32_t chosen = runSearch(control, g.side, legal, last, g.pos, 0, 0, neverStopEarly);
    a.best = legal.moves[chosen];
    if (running.reported && sameMove(running.kept.chosen, a.best)) {
        a.value = reportedValue(running.kept);
        a.depth = running.kept.depth;
        std::memcpy(a.line, running.kept.line, sizeof a.line);
        a.lineLength = running.kept.lineLength;
    } else {
        a.value = staticValue(g, a.best);
        a.depth = 1;
        a.line[0] = a.best;
        a.lineLength = 1;
    }
}

// The value of a position without legal moves for the side to move: mated, or stalemate.
int32_t finalValue(const GameLine& g) {
    return sideInCheck(g.pos, g.side) ? -mateValue : 0;
}

} // namespace

int64_t milliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 programStart)
        .count();
}

bool startEngine(int32_t megabytes) {
    initPositionKeys();
    fillMaterialScale();
    hashBits = hashBitsFor(megabytes);
    if (!allocateTranspositionTables() || !allocateHistoryTable()) {
        freeSearchTables();
        return false;
    }
    clearSearchTables();
    return true;
}

void stopEngine() {
    freeSearchTables();
}

Analysis analysePosition(const GameLine& line, const SearchLimits& limits) {
    const int64_t start = milliseconds();
    Analysis a = {};
    work = line;
    int32_t last = generateLegalMoves(work.side, legal, work.pos, allMoves);
    a.moves = last + 1;
    if (last < 0) {
        a.value = finalValue(work);
        return a;
    }

    // Single legal moves are followed: the driver plays them without a search.
    Move forced[maxForcedMoves];
    int32_t forcedCount = 0;
    while (last == 0 && forcedCount < maxForcedMoves) {
        forced[forcedCount++] = legal.moves[0];
        playGameMove(work, legal.moves[0]);
        last = generateLegalMoves(work.side, legal, work.pos, allMoves);
    }
    if (last < 0) {
        // The forced line ends the game: mate or stalemate on the board.
        a.value = finalValue(work);
        a.depth = forcedCount;
        a.lineLength = 0;
    } else if (last == 0) {
        a.value = staticValue(work, legal.moves[0]);
        a.depth = 1;
        a.line[0] = legal.moves[0];
        a.lineLength = 1;
    } else {
        search(work, last, limits, a);
    }
    if (forcedCount > 0) {
        for (int32_t i = 0; i < forcedCount; ++i)
            a.value = parentValue(a.value);
        const int32_t kept =
            a.lineLength < maxLineLength - forcedCount ? a.lineLength : maxLineLength - forcedCount;
        std::memmove(a.line + forcedCount, a.line, sizeof a.line[0] * static_cast<size_t>(kept));
        std::memcpy(a.line, forced, sizeof forced[0] * static_cast<size_t>(forcedCount));
        a.lineLength = kept + forcedCount;
        a.best = forced[0];
    }
    a.time = milliseconds() - start;
    return a;
}

int32_t parentValue(int32_t value) {
    if (value >= mateValue - mateRange) return -value + 8;
    if (value <= -(mateValue - mateRange)) return -value - 8;
    return -value;
}

bool isMateValue(int32_t value) {
    return value >= mateValue - mateRange || value <= -(mateValue - mateRange);
}

int32_t mateInMoves(int32_t value) {
    if (value >= mateValue - mateRange) {
        const int32_t plies = (mateValue - value + 7) / 8;
        return (plies + 1) / 2;
    }
    const int32_t plies = (value + mateValue + 7) / 8;
    return -(plies / 2);
}

bool readWholeNumber(const char* text, int64_t low, int64_t high, int64_t& value) {
    char* rest = nullptr;
    errno = 0;
    const long long v = std::strtoll(text, &rest, 10);
    if (rest == text || *rest != '\0' || errno != 0 || v < low || v > high) return false;
    value = v;
    return true;
}
