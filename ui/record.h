// The game record's operations that the loop, the command interpreter and the game files share:
// the reset at start-up, the new game, and playing a move into the record.
#pragma once

#include "ui/gamestate.h"

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
