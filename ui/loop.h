// Start-up, the new-game reset and the command loop: the program's spine.
#pragma once

#include "ui/gamestate.h"

// The whole program: start-up, options, tables, the loop and the ending. Returns the exit
// status: -1 after a fatal error, 0 otherwise.
int runProgram(int argc, char** argv);

// Puts every field of the record and the program-wide settings to their values at program
// start (before the options are read): the start position with its lists, material and key.
// The key tables must be drawn first.
void resetGameState(GameState& game);

// The new-game reset: banner, cleared tables, start position, user plays White.
void startNewGame(GameState& game);

// Records and plays one legal move of game.turn (not changing turn): the move and key
// histories, the fifty-move counter, the position.
void recordMove(GameState& game, const Move& move);

// recordMove, then a new game once maxGamePlies plies are played.
void playMove(GameState& game, const Move& move);

// The user's move `moveIndex` of legalMoves arrives after a pondering search: pondering is on
// again, and its time counts for the engine's next search only when the move is the one the
// pondering search predicted.
void creditPondering(GameState& game, int32_t moveIndex);

// Cycles of the command loop until the program is to end (loopState 3 or 4).
void runCommandLoop(GameState& game);
