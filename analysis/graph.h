// The evaluation graph of one game as a plain SVG line chart: the engine's value after every
// move from White's side, clipped at five pawns (mates on the edge), the move numbers along the
// bottom and the mistakes marked on the curve.
#pragma once

#include <cstdint>
#include <cstdio>

#include "analysis/pgn.h"
#include "analysis/san.h"
#include "core/types.h"

// Values beyond this many centipawns are drawn on the edge.
constexpr int32_t chartLimit = 500;

// What a point of the curve shows: nothing special, a mistake, a blunder.
enum class Mark : int32_t { none, mistake, blunder };

// One point: the value after a ply (point 0: the start position).
//   centipawns   from White's side, clipped to +-chartLimit
//   mate         a mate was found (the point is on the edge)
//   mark, move   a mistake or blunder, and the move with its number ("24. Qxd5?")
struct ChartPoint {
    int32_t centipawns;
    bool mate;
    Mark mark;
    char move[sanSize + 12];
};

// The chart of one game.
//   title        White - Black, event and date, as the tags give them
//   startNumber  number of the game's first move; blackFirst: Black made it
//   thresholds   the mistake and blunder thresholds, centipawns, for the legend
//   points, count   points 0..count-1
struct GameChart {
    char title[200];
    int32_t startNumber;
    bool blackFirst;
    int32_t mistakeThreshold;
    int32_t blunderThreshold;
    ChartPoint points[maxGamePlies + 1];
    int32_t count;
};

// Writes the chart as a whole SVG document.
void writeChart(FILE* out, const GameChart& chart);
