#include "ui/commands.h"

#include <cstdio>
#include <cstring>

#include "ui/display.h"

// What a command's handler asks of the loop afterwards.
enum class Then {
    read,            // read the next word
    readClearPonder, // ponderTime = 0, then read
    changed,         // the position was replaced: reset the clock, re-examine the position
    move,            // the engine moves at once
    cycleEnd,        // loopState already set (new game, quit, fatal error)
};

using CommandHandler = Then (*)(GameState&);

// qu(it): the program ends with status 0.
static Then quitCommand(GameState& game) {
    game.loopState = loopQuit;
    return Then::cycleEnd;
}

// st(op) and fo(rce): the engine stops playing; both sides' moves are typed.
static Then stopCommand(GameState& game) {
    if (!game.xboardMode) std::printf("stop computer playing (human-human game type)\n");
    game.userSide = 0;
    return Then::readClearPonder;
}

// ev(al): the board, the last move and, in the console, the evaluation.
static Then evalCommand(GameState& game) {
    showEvaluation(game);
    return Then::read;
}

// One command: the first characters that select it (the whole word when `alone`).
struct Command {
    const char* prefix;
    bool alone;
    CommandHandler handler;
};

// The commands, tried in this order; a word selects the first whose prefix it begins with.
constexpr Command commandTable[] = {
    {"qu", false, quitCommand},
    {"st", false, stopCommand},
    {"fo", false, stopCommand},
    {"ev", false, evalCommand},
};

static bool selects(const Command& command, const char* word) {
    const size_t length = std::strlen(command.prefix);
    if (std::strncmp(word, command.prefix, length) != 0) return false;
    return !command.alone || word[length] == '\0';
}

CommandEnd interpretCommand(GameState& game, const char* word) {
    for (const Command& command : commandTable) {
        if (!selects(command, word)) continue;
        switch (command.handler(game)) {
        case Then::read:
            return CommandEnd::read;
        case Then::readClearPonder:
            game.ponderTime = 0;
            return CommandEnd::read;
        case Then::changed:
            game.ponderTime = 0;
            game.timeSurplus = 0;
            game.engineClock = game.clockReset;
            game.loopState = loopChanged;
            return CommandEnd::nextCycle;
        case Then::move:
            game.loopState = loopMoved;
            return CommandEnd::nextCycle;
        case Then::cycleEnd:
            return CommandEnd::nextCycle;
        }
    }
    std::printf("Error (unknown command): %s\n", word);
    return CommandEnd::read;
}
