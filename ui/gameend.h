// Adjudication at the top of every loop cycle: mate, stalemate and the three draws.
#pragma once

#include "ui/gamestate.h"

// Prints the result line of a decided game. Mate or stalemate (no legal move): the line, and
// the engine stops playing. Repetition, too little material and fifty moves: the line; in the
// console the game is also stopped (lastLegalIndex -1, userSide 0), in xboard mode play goes on.
void checkGameEnd(GameState& game);
