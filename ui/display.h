// The console board, the last-move line and the evaluation display.
#pragma once

#include "core/position.h"
#include "ui/gamestate.h"

// Draws the board: orientation +1 with White at the bottom, -1 with Black at the bottom.
void showBoard(const Position& pos, int32_t orientation);

// The last move played ("  1. e2e4  is the last move") and the side to move.
void showLastMove(const GameState& game);

// The ev(al) command: board and last move in every mode; in the console also both sides'
// positional and material totals and the evaluation from the side to move's view.
void showEvaluation(GameState& game);

// The help screen: the commands, with the current settings in place.
void showHelp(const GameState& game);
