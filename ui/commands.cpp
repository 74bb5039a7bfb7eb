#include "ui/commands.h"

#include <cstdio>
#include <cstring>

#include "search/settings.h"
#include "ui/display.h"
#include "ui/input.h"
#include "ui/loop.h"

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

// Largest number of moves, seconds or minutes the time control takes; larger answers are cut
// to it, so that no clock arithmetic can overflow.
constexpr long maxClockSetting = 100000000;

// Reads a number for a command: the next word when it is one (the newline after it is printed
// in every mode). Returns false, consuming nothing, when the next word is no number.
static bool readNumber(long& value) {
    const bool read = readLong(value);
    std::printf("\n");
    return read;
}

static bool readRealNumber(double& value) {
    const bool read = readReal(value);
    std::printf("\n");
    return read;
}

static int32_t clockSetting(long value) {
    return static_cast<int32_t>(value < maxClockSetting ? value : maxClockSetting);
}

// go: the engine takes the side to move and moves at once.
static Then goCommand(GameState& game) {
    game.userSide = -game.turn;
    game.ponderTime = 0;
    return Then::move;
}

// new: a new game, the user playing White.
static Then newCommand(GameState& game) {
    startNewGame(game);
    return Then::cycleEnd;
}

// se(t): the minimum full-width depth (1 to 31 plies) and the quiescence depth (0 to 31).
static Then setCommand(GameState& game) {
    long n = 0;
    if (!game.xboardMode)
        std::printf("#half-moves minimum for full-width search (current=%ld): ",
                    static_cast<long>(fullWidthDepth / 8));
    std::fflush(stdout);
    if (readNumber(n) && n >= 1 && n <= 31) fullWidthDepth = static_cast<int32_t>(8 * n);
    if (!game.xboardMode)
        std::printf("#half-moves for quiescence (current=%ld): ",
                    static_cast<long>(quiescenceDepth / 8));
    std::fflush(stdout);
    if (readNumber(n) && n >= 0 && n <= 31) quiescenceDepth = static_cast<int32_t>(8 * n);
    return Then::read;
}

// le(vel): moves per session, total time in minutes, bonus seconds per move; the engine's
// clock starts again.
static Then levelCommand(GameState& game) {
    const bool console = !game.xboardMode;
    if (console) {
        std::printf("(after each session, the total time is added again to the player's clocks;\n"
                    "enter 0 if ALL moves must be played into the total time)\n"
                    "#moves per session (current=%ld): ",
                    static_cast<long>(game.sessionMoves));
    }
    std::fflush(stdout);
    long n = 0;
    if (readNumber(n) && n >= 0) game.sessionMoves = clockSetting(n);

    if (console) {
        std::printf("(total time can be set to 0 to disable time control)\ntotal time (for ");
        if (game.sessionMoves != 0) {
            std::printf("%ld", static_cast<long>(game.sessionMoves));
        } else {
            std::printf("all");
        }
        std::printf(" moves) in minutes (current=%ld): ", static_cast<long>(game.totalTime / 60));
    }
    std::fflush(stdout);
    double minutes = 0;
    const bool minutesRead = readRealNumber(minutes);
    if (minutesRead && minutes >= 0) {
        const double seconds = minutes * 60;
        game.totalTime = seconds < maxClockSetting ? static_cast<int32_t>(seconds)
                                                   : static_cast<int32_t>(maxClockSetting);
    }

    if (console)
        std::printf("bonus time (for each played move) in seconds (current=%ld): ",
                    static_cast<long>(game.bonusTime));
    std::fflush(stdout);
    long bonus = 0;
    if (readNumber(bonus) && bonus >= 0) {
        game.bonusTime = clockSetting(bonus);
        if (bonus != 0 && game.totalTime == 0) game.totalTime = 1;
    }
    game.timeSurplus = 0;
    game.clockReset = game.totalTime - 5;
    game.engineClock = game.clockReset;
    return Then::read;
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
    {"qu", false, quitCommand}, {"st", false, stopCommand},  {"fo", false, stopCommand},
    {"ev", false, evalCommand}, {"go", false, goCommand},    {"new", false, newCommand},
    {"se", false, setCommand},  {"le", false, levelCommand},
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
