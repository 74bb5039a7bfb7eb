// Replacing the game's position: take-back and replay through the record, the console position
// editor, and the check every set-up position passes.
#pragma once

#include <cstdint>

#include "ui/gamestate.h"

// Highest ply goToPly goes to; the record holds the moves of up to maxGamePlies plies.
constexpr int32_t maxReplayPly = 405;

// Rebuilds the game from its start up to ply `target` of the record (0 when target is outside
// 1..405), stopping early at the end mark or at a recorded move that is not legal. The moves
// after it stay recorded, so that the game can be stepped forward again. Shows the board in the
// console, and stops the engine when it would now be to move.
void goToPly(GameState& game, int64_t target);

// Checks the edited or loaded position (the side to move is game.turn) and makes it the game's
// start: drops castling rights whose rook is missing; refuses more than 16 pieces a side, not
// exactly one king each, a pawn on a back rank and the side not to move in check. Returns
// false for an invalid position; on success the record starts afresh from it.
bool validateSetup(GameState& game);

// The console position editor: rows of piece codes, castling rights and the side to move, then
// validateSetup. The en-passant field is cleared. Returns false for an invalid position.
bool editPosition(GameState& game);
