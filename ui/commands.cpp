#include "ui/commands.h"

#include <cstdio>
#include <cstring>

#include "search/settings.h"
#include "search/transtable.h"
#include "ui/clock.h"
#include "ui/display.h"
#include "ui/gamefiles.h"
#include "ui/input.h"
#include "ui/record.h"
#include "ui/setup.h"
#include "ui/xboard.h"

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
    double seconds = 0;
    const bool baseRead = readClockBase(seconds);
    std::printf("\n");
    if (baseRead && seconds >= 0) {
        game.totalTime = seconds < maxClockSetting ? static_cast<int32_t>(seconds)
                                                   : static_cast<int32_t>(maxClockSetting);
    }

    if (console)
        std::printf("bonus time (for each played move) in seconds (current=%ld): ",
                    static_cast<long>(game.bonusTime));
    std::fflush(stdout);
    long bonus = 0;
    if (readNumber(bonus)) {
        if (bonus >= 0) game.bonusTime = clockSetting(bonus);
        // Any bonus answered turns "no time control" into one second, even a refused one.
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

// sw(itch): the engine takes over the side to move.
static Then switchCommand(GameState& game) {
    std::printf("%3ld. switch\n", static_cast<long>((game.plyCount + 2) / 2));
    return goCommand(game);
}

// wh(ite) and bl(ack): the user takes the side to move, the engine the other one; pondering
// waits for the user's next move.
static Then colourCommand(GameState& game) {
    if (game.ponderMode == 1) game.ponderMode = -1;
    game.userSide = game.turn;
    return Then::readClearPonder;
}

// in(verse): the board is shown from the other side.
static Then inverseCommand(GameState& game) {
    game.flipView = 1 - game.flipView;
    if (!game.xboardMode) std::printf("flip view\n");
    return Then::read;
}

// edi(t): the console editor, or the interface's edit sub-protocol in xboard mode.
static Then editCommand(GameState& game) {
    const bool valid = game.xboardMode ? editByProtocol(game) : editPosition(game);
    if (valid) return Then::changed;
    std::printf("Error (invalid position): edit\n");
    game.loopState = loopFatal;
    return Then::cycleEnd;
}

// ti(me): the engine's clock in centiseconds, from the interface.
static Then timeCommand(GameState& game) {
    long centiseconds = 0;
    if (readLong(centiseconds)) setEngineClock(game, centiseconds);
    return Then::read;
}

// ot(im): the opponent's clock, read and ignored.
static Then otimCommand(GameState&) {
    long ignored = 0;
    readLong(ignored);
    return Then::read;
}

// fl(ush): both tables and the history cleared.
static Then flushCommand(GameState& game) {
    clearSearchTables();
    if (!game.xboardMode) std::printf("tables cleared\n");
    return Then::readClearPonder;
}

// res(ult): the interface's result line; the engine stops playing.
static Then resultCommand(GameState& game) {
    skipRestOfLine();
    game.userSide = 0;
    return Then::readClearPonder;
}

// au(to232): moves through the files "mymove.txt" and "hismove.txt", on or off.
static Then auto232Command(GameState& game) {
    auto232Mode = 1 - auto232Mode;
    if (!game.xboardMode) {
        if (auto232Mode) {
            std::printf("Auto232 Mode is on\nKovrel's output goes into \"mymove.txt\" and input "
                        "in \"hismove.txt\"\n");
        } else {
            std::printf("Auto232 Mode is off\n");
        }
    }
    return Then::read;
}

// wb(oard): quiet protocol mode on or off, unless fixed by -xboard.
static Then wboardCommand(GameState& game) {
    if (game.xboardFixed) return Then::read;
    game.xboardMode = 1 - game.xboardMode;
    std::printf("X-/WinBoard Mode is %s\n",
                game.xboardMode ? "on (=quiet mode)" : "off (=verbose mode)");
    return Then::read;
}

// pv: the principal variations in the search's reports, on or off (console only).
static Then pvCommand(GameState& game) {
    if (game.xboardMode) return Then::read;
    game.showPv = 1 - game.showPv;
    std::printf("Principal Variation is %s\n",
                game.showPv ? "on (this need some CPU extra time)" : "off (so is Kovrel faster)");
    return Then::read;
}

static Then postCommand(GameState& game) {
    game.showPv = 1;
    return Then::read;
}

static Then nopostCommand(GameState& game) {
    game.showPv = 0;
    return Then::read;
}

// hard: pondering on; the engine plays the side not to move.
static Then hardCommand(GameState& game) {
    if (game.ponderFixed && game.ponderMode != -1) return Then::readClearPonder;
    game.ponderMode = 1;
    if (interruptMode != -1) interruptMode = 1;
    if (!game.xboardMode) std::printf("pondering is on (Kovrel thinks while you have to play)\n");
    game.userSide = game.turn;
    return Then::readClearPonder;
}

// easy: pondering off.
static Then easyCommand(GameState& game) {
    if (game.ponderFixed) return Then::readClearPonder;
    game.ponderMode = 0;
    if (interruptMode != -1) interruptMode = 0;
    if (!game.xboardMode)
        std::printf("pondering is off (Kovrel thinks only when he has to play)\n");
    return Then::readClearPonder;
}

// hel(p): the summary of commands with the current settings.
static Then helpCommand(GameState& game) {
    showHelp(game);
    return Then::read;
}

// Plies to go back or the move to replay: huge answers lead to the start like any other answer
// outside the record.
static int64_t plyArithmetic(long value) {
    constexpr long limit = 1000000;
    return value < -limit ? -limit : value > limit ? limit : value;
}

// rem(ove): takes back n plies (default 2).
static Then removeCommand(GameState& game) {
    if (!game.xboardMode) std::printf("\n#plies to take back: ");
    std::fflush(stdout);
    long n = 2;
    if (!readNumber(n)) n = 2;
    goToPly(game, game.plyCount - plyArithmetic(n));
    return Then::changed;
}

// rep(lay): goes to move n of the record (default 0, the start).
static Then replayCommand(GameState& game) {
    if (!game.xboardMode) std::printf("\ngo to #move: ");
    std::fflush(stdout);
    long n = 0;
    if (!readNumber(n)) n = 0;
    goToPly(game, 2 * plyArithmetic(n));
    return Then::changed;
}

// sa(ve): the game into a PGN file.
static Then saveCommand(GameState& game) {
    saveGame(game);
    return Then::read;
}

// lo(ad): a game or a FEN position from a file.
static Then loadCommand(GameState& game) {
    if (!loadGame(game)) return Then::read;
    return game.loopState == loopFatal ? Then::cycleEnd : Then::changed;
}

// n: one ply forward through the record.
static Then nextCommand(GameState& game) {
    goToPly(game, game.plyCount + 1);
    return Then::changed;
}

// p and un(do): one ply back.
static Then previousCommand(GameState& game) {
    goToPly(game, game.plyCount - 1);
    return Then::changed;
}

// One command: the first characters that select it (the whole word when `alone`).
struct Command {
    const char* prefix;
    bool alone;
    CommandHandler handler;
};

// The commands, tried in this order; a word selects the first whose prefix it begins with.
constexpr Command commandTable[] = {
    {"go", false, goCommand},      {"sw", false, switchCommand},   {"wh", false, colourCommand},
    {"bl", false, colourCommand},  {"new", false, newCommand},     {"qu", false, quitCommand},
    {"in", false, inverseCommand}, {"ev", false, evalCommand},     {"edi", false, editCommand},
    {"se", false, setCommand},     {"le", false, levelCommand},    {"ti", false, timeCommand},
    {"ot", false, otimCommand},    {"lo", false, loadCommand},     {"sa", false, saveCommand},
    {"fl", false, flushCommand},   {"st", false, stopCommand},     {"fo", false, stopCommand},
    {"res", false, resultCommand}, {"au", false, auto232Command},  {"wb", false, wboardCommand},
    {"pv", false, pvCommand},      {"po", false, postCommand},     {"no", false, nopostCommand},
    {"hard", false, hardCommand},  {"easy", false, easyCommand},   {"hel", false, helpCommand},
    {"rem", false, removeCommand}, {"rep", false, replayCommand},  {"n", true, nextCommand},
    {"p", true, previousCommand},  {"un", false, previousCommand},
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
