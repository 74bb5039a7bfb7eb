// Extended Position Description: one test position a line, its four FEN fields followed by
// operations ("bm Qg6 Rxh7;", "am Qxb2;", "id \"WAC.001\";"). Blank lines and lines beginning
// with '#' are comments.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"

// Moves kept of one bm or am operation.
constexpr int32_t maxEpdMoves = 16;
constexpr int32_t epdIdSize = 64; // longer ids are cut
// The longest line read; a longer one is reported and skipped.
constexpr int32_t epdLineSize = 4096;

// One test position.
//   pos            the position (pos.sideToMove is the side to move)
//   fifty          the hmvc operation, else the FEN's fifth field, else 0
//   id             the id operation, empty when there is none
//   best, bestCount     the moves of bm (any of them solves the position)
//   avoid, avoidCount   the moves of am (none of them may be played)
struct EpdPosition {
    Position pos;
    int32_t fifty;
    char id[epdIdSize];
    Move best[maxEpdMoves];
    int32_t bestCount;
    Move avoid[maxEpdMoves];
    int32_t avoidCount;
};

enum class EpdLineKind {
    position, // a test position was read
    comment,  // a blank line or a comment
    bad,      // something is wrong; problem says what
};

// The outcome of reading a line; problem holds a short description when it is bad.
struct EpdReading {
    EpdLineKind kind;
    char problem[128];
};

// Reads one line (without its line end; a carriage return before it is ignored).
EpdReading readEpdLine(const char* text, EpdPosition& out);

// Whether playing `m` solves the position: one of its bm moves (if it has any), none of its am.
bool solvesPosition(const EpdPosition& position, const Move& m);
