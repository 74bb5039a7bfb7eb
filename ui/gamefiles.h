// Game files: saving the game as PGN (with a private block for a set-up start position) and
// loading PGN games or FEN positions.
#pragma once

#include <cstdint>

#include "ui/gamestate.h"

// Capacity of a file name, the NUL included: longer names are refused.
constexpr int32_t fileNameSize = 64;

// The sa(ve) command: asks for a file name (console), writes the game. Reads on afterwards.
void saveGame(GameState& game);

// The lo(ad) command: asks for a file name (console) and reads a FEN position (names whose
// extension begins with "fen") or a PGN game. Returns true when the game was replaced (the
// command then ends as "changed"; loopState is the fatal 4 after an invalid position), false
// when nothing changed.
bool loadGame(GameState& game);
