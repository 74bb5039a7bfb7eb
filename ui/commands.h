// The console command interpreter: every input word that is not a legal move.
#pragma once

#include "ui/gamestate.h"

// How the loop goes on after a command.
enum class CommandEnd {
    read,      // back to reading the next word, the position not re-examined
    nextCycle, // loopState is set: on to the engine's move (loopMoved) or the cycle's end
};

// Carries out the command that `word` begins with, or prints the unknown-command line.
CommandEnd interpretCommand(GameState& game, const char* word);
