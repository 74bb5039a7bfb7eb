// Game files: saving the game as PGN (with a private block for a set-up start position) and
// loading PGN games or FEN positions.
#pragma once

#include <cstdint>
#include <cstdio>

#include "ui/gamestate.h"

// Capacity of a file name, the NUL included: longer names are refused.
constexpr int32_t fileNameSize = 64;

// Set when file names must stay in the current folder (names with "/" are refused); off in the
// program, on where it runs untrusted command streams.
extern bool plainFileNamesOnly;

// The sa(ve) command: asks for a file name (console), writes the game. Reads on afterwards.
void saveGame(GameState& game);

// The lo(ad) command: asks for a file name (console) and reads a FEN position (names whose
// extension begins with "fen") or a PGN game. Returns true when the game was replaced (the
// command then ends as "changed"; loopState is the fatal 4 after an invalid position), false
// when nothing changed.
bool loadGame(GameState& game);

// Reads the games of a PGN file (the last one separated by "new" words stays, at most 405
// plies recorded) into the game, from its start position or its set-up block. An invalid set-up
// block prints its error line and sets loopState to the fatal 4.
void readGameFile(GameState& game, FILE* file);

// Reads a FEN position from the start of the file and makes it the game's start; an invalid
// position prints its error line and sets loopState to the fatal 4.
void readFenFile(GameState& game, FILE* file);
