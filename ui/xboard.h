// What xboard mode has beyond the console commands: the interface's edit sub-protocol.
#pragma once

#include "ui/gamestate.h"

// Reads edit words ("#" clears the board, "c" switches the colour placed, "Pe4" places a
// piece, "xe4" empties a square, anything else ends) and validates the position without console
// messages; the side to move stays, the en-passant field is cleared, the engine stops playing.
// Returns false for an invalid position.
bool editByProtocol(GameState& game);
