// Start-up and the command loop: the program's spine.
#pragma once

#include "ui/gamestate.h"

// The whole program: start-up, options, tables, the loop and the ending. Returns the exit
// status: -1 after a fatal error, 0 otherwise.
int runProgram(int argc, char** argv);

// Cycles of the command loop until the program is to end (loopState 3 or 4).
void runCommandLoop(GameState& game);
