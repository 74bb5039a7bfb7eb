// The search's own record: what a front end hands the search and what the search reads and
// writes while it runs. Each front end owns one and fills it; the search knows no front end.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"

// Capacity of the key history: the game's positions since the last set-up, then the keys the
// search appends for its own line (at most 62 plies deep).
constexpr int32_t historyCapacity = 500;

struct SearchControl;

// Called by the search every pollInterval nodes; raises control.StopFlag to end the search.
using PollFunction = void (*)(SearchControl&);
// The front end's clock: the current time in its own unit (seconds in the console program,
// milliseconds in the UCI program). searchTimeLimit, the ponder time and the early-stop time
// of a search are counted in the same unit.
using ClockFunction = int64_t (*)();

// What the search's reports look like.
enum class SearchOutput : int32_t {
    console, // the static list, the iterations and their value ranges
    xboard,  // only the thinking line "depth score centiseconds nodes move", when asked
    report,  // nothing printed: control.report is called after every iteration
};

// The driver's summary of one iteration, for a front end that reports in its own words.
//   depth        plies of the iteration as reported (its depth in eighths / 8 + 1)
//   lower/upper  the range of the move at the front of the order, in search values
//   lowerProven, upperProven   whether the iteration's tests proved those bounds
//   finished     the iteration ran to its end (not stopped)
//   chosen       the move the search would play now
//   line         the principal variation: the chosen move, then the table's replies
//   lineLength   moves in `line`
constexpr int32_t maxLineLength = 33; // the chosen move and a walk of up to 32 moves
struct IterationReport {
    int32_t depth;
    int32_t lower;
    int32_t upper;
    bool lowerProven;
    bool upperProven;
    bool finished;
    Move chosen;
    Move line[maxLineLength];
    int32_t lineLength;
};
using ReportFunction = void (*)(SearchControl&, const IterationReport&);

// The search-side record.
//   StopFlag          raised by the poll to end a search; the front end clears it before a search
//   searchStartTime   the clock's time at which the current search began
//   pollFunction      called by the search every pollInterval nodes
//   now               the front end's clock
//   output            how the driver reports; report: the callback for SearchOutput::report
//   bookMissingIsFatal  1: a book that cannot be opened ends the search with the first move of
//                     the list, as the console program's design has it; 0: the search goes on
//   minimumDepth      during a search: the minimum full-width depth in eighths of a ply (the
//                     value fullWidthDepth had at its start); a poll may change it
//   ponderTime        during a search: time of pondering counted as spent (clock units)
//   earlyStopTime     during a search: time after which a search whose move holds may end
//   keyHistory        keys of the game's positions since the last set-up, then the search's line
//   keyCount          index of the current position's key in keyHistory
//   fiftyMoveCounter  plies since the last capture or pawn move
struct SearchControl {
    int32_t StopFlag;
    int64_t searchStartTime;
    PollFunction pollFunction;
    ClockFunction now;
    SearchOutput output;
    ReportFunction report;
    int32_t bookMissingIsFatal;
    int32_t minimumDepth;
    int32_t ponderTime;
    int32_t earlyStopTime;
    PositionKey keyHistory[historyCapacity];
    int32_t keyCount;
    int32_t fiftyMoveCounter;
};

// A game as a front end keeps it for the search: the position the search starts from and the
// record of the line that led there.
//   pos, lists, material   the current position and its companions
//   side                   the side to move
//   control                the search's record: the keys of the positions since the start (the
//                          last 102 once the line is long: older ones can no longer repeat
//                          before the fifty-move rule), the fifty-move counter, clock and poll
struct GameLine {
    Position pos;
    PieceLists lists;
    Material material;
    Side side;
    SearchControl control;
};

// Starts a line at `start` (its sideToMove is the side to move) with the fifty-move counter:
// its companions and first key, an empty history behind it.
void startGameLine(GameLine& line, const Position& start, int32_t fifty);

// Plays a legal move on the line: the new key joins the history (trimmed to its last keys when
// it fills), the fifty-move counter counts on (from 0 after a capture or a pawn move, at most
// 10000), and the other side is to move.
void playGameMove(GameLine& line, const Move& m);
