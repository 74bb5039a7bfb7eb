// Running the search on one position of a game or a test suite, on a millisecond clock, to a
// depth or for a time, and collecting what it found: move, value, depth and line.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"
#include "search/control.h"

// Depths as the search reports them: depth 1 is the static choice (no search), depth 2 the first
// iteration (the move and its reply).
constexpr int32_t maxAnalysisDepth = 31;
// A search's time, ms (a day).
constexpr int32_t maxMoveTime = 86400000;
// Megabytes for the two tables together, as the UCI program's Hash option allows.
constexpr int32_t defaultAnalysisHash = 16;
constexpr int32_t maxAnalysisHash = 16384;

// What each search may use: a depth, a time or both (whichever ends it first); 0 for none.
struct SearchLimits {
    int32_t depth;
    int32_t moveTime;
};

// What one analysis found.
//   moves        legal moves in the position (0: mate or stalemate; only value is set then,
//                to minus mate or 0)
//   best         the move the search chose
//   value        its value for the side to move, in search units (twice the evaluation; mate
//                values as the search gives them)
//   depth        the depth of the last finished iteration (1: the static choice)
//   time         ms the analysis took
//   line, lineLength   the principal variation, best first
struct Analysis {
    int32_t moves;
    Move best;
    int32_t value;
    int32_t depth;
    int64_t time;
    Move line[maxLineLength];
    int32_t lineLength;
};

// Allocates the tables for `megabytes` and sets up the engine's tables once per run; false
// (nothing allocated) when the memory is not there.
bool startEngine(int32_t megabytes);
void stopEngine();

// Milliseconds since the program started.
int64_t milliseconds();

// Searches the line's current position within the limits; the tables are kept (the caller
// clears them where it wants a fresh start). A position with a single legal move is analysed
// through its forced reply, so that it gets a value too.
Analysis analysePosition(const GameLine& line, const SearchLimits& limits);

// The value of a position seen from the position before it: the other side's view, a mate one
// ply further away.
int32_t parentValue(int32_t value);

// Whether a search value is a mate value; the moves to mate (positive: the side to move mates).
bool isMateValue(int32_t value);
int32_t mateInMoves(int32_t value);

// Reads a whole number in [low, high] from the whole of `text`; false for anything else.
bool readWholeNumber(const char* text, int64_t low, int64_t high, int64_t& value);
