// What every fuzz target shares: a program set up once (keys, material scale, small tables),
// a scratch folder to run in, and the checks that the game record is consistent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "ui/gamestate.h"

// Draws the keys, fills the material scale, allocates small tables, silences standard output
// and moves into a fresh scratch folder. Idempotent.
void setUpProgramOnce();

// A game record at the start position, with the fuzzing poll (searches stop after a few
// thousand nodes, input is never looked at).
GameState& freshGame();

// Aborts unless the game's position agrees with its lists, material and key, and its record's
// counts are in range.
void checkGame(const GameState& game);

// The bytes as a read-only FILE (closed by the caller).
FILE* openBytes(const uint8_t* data, size_t size);

// Writes the bytes to a file of the scratch folder.
void writeFile(const char* name, const uint8_t* data, size_t size);
