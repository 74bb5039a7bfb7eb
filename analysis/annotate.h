// Annotating a game: the engine's value after every move, and where a move loses enough against
// the engine's choice, a glyph and the engine's line.
#pragma once

#include <cstdint>

#include "analysis/analyse.h"
#include "analysis/graph.h"
#include "analysis/pgn.h"

// A move that loses at least this much against the engine's choice is a mistake ("?"), at least
// blunderLoss a blunder ("??"); centipawns of the mover's value.
constexpr int32_t mistakeLoss = 50;
constexpr int32_t blunderLoss = 150;
// Plies of the engine's line shown in a variation.
constexpr int32_t shownLinePlies = 10;

// What annotating a game found.
struct GameSummary {
    int32_t plies;
    int32_t mistakes;
    int32_t blunders;
};

// Analyses every position of the game from cleared tables, within the limits, and writes the
// annotated game; fills `chart` (when not null) with its graph.
GameSummary annotateGame(const PgnGame& game, const SearchLimits& limits, PgnWriter& writer,
                         GameChart* chart);

// A value for a comment, from White's side: "+0.35", "-1.20", "0.00", "+M3" (White mates in
// three), "-M2". `value` is a search value of the side `side` to move.
void valueText(int32_t value, Side side, char* text, int32_t size);
