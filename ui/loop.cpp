#include "ui/loop.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "core/keys.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "eval/material.h"
#include "search/book.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "ui/auto232.h"
#include "ui/clock.h"
#include "ui/commands.h"
#include "ui/gameend.h"
#include "ui/input.h"
#include "ui/interrupt.h"
#include "ui/record.h"

// Width the option summary's lines are padded to.
constexpr int summaryWidth = 78;

// Lines of the -? option summary, after its title and blank line.
constexpr const char* optionSummary[] = {
    "Command line options (\"Readme.txt\" for more info):",
    " -xboard : put Kovrel in X-/WinBoard or ICS mode.",
    " -hash#n : use 2^n entries in two hashtables.",
    " -easy   : Kovrel is fixed in easy mode (no pondering).",
    " -hard   : Kovrel is fixed in hard mode (pondering).",
    " -mvnw   : enable 'move now!' feature, recommended with X-/WinBoard.",
    " -nobk   : disable the openings book.",
    " -crbk   : create the openings book.",
};

static void printOptionSummary() {
    std::printf("\nKovrel %s\n%*s\n", programVersion, summaryWidth, "");
    for (const char* line : optionSummary)
        std::printf("%-*s\n", summaryWidth, line);
}

// The -hash option: n read as a decimal number right after "hash". Outside 1..59 the tables
// cannot be allocated, which start-up reports as an allocation failure.
static void readHashOption(const char* afterPrefix) {
    const char* number = afterPrefix + 4;
    char* end = nullptr;
    const long n = std::strtol(number, &end, 10);
    if (end == number) return; // no number: hashBits keeps its value
    hashBits = n >= minHashBits && n <= maxHashBits ? static_cast<int32_t>(n) : 0;
}

// Reads the options in the order given. An option is a word beginning with "-" or "/",
// recognised by the first characters after that prefix; anything else is ignored. Returns true
// when -mvnw was given.
static bool readOptions(GameState& game, int argc, char** argv) {
    bool moveNow = false;
    for (int i = 1; i < argc; ++i) {
        const char* word = argv[i];
        if (word[0] != '-' && word[0] != '/') continue;
        const char* name = word + 1;
        if (std::strncmp(name, "?", 1) == 0 || std::strncmp(name, "help", 4) == 0) {
            printOptionSummary();
            game.loopState = loopQuit;
        } else if (std::strncmp(name, "xboa", 4) == 0) {
            game.xboardMode = 1;
            game.xboardFixed = 1;
            if (!game.ponderFixed) game.ponderMode = 1;
        } else if (std::strncmp(name, "hard", 4) == 0) {
            game.ponderMode = 1;
            game.ponderFixed = 1;
        } else if (std::strncmp(name, "easy", 4) == 0) {
            game.ponderMode = 0;
            game.ponderFixed = 1;
        } else if (std::strncmp(name, "hash", 4) == 0) {
            readHashOption(name);
        } else if (std::strncmp(name, "mvnw", 4) == 0) {
            moveNow = true;
        } else if (std::strncmp(name, "nobk", 4) == 0) {
            bookEnabled = 0;
        } else if (std::strncmp(name, "crbk", 4) == 0) {
            createBook();
        }
    }
    return moveNow;
}

// The echo of the user's (or opponent's) move: "  1. e2e4 ", "  1. ... e7e5 " in the console,
// without the dots in xboard mode.
static void echoUserMove(const GameState& game, const Move& move) {
    const MoveText text = moveText(move);
    const long number = (game.plyCount + 2) / 2;
    if (game.xboardMode) {
        std::printf("%3ld. %s\n", number, text.text);
    } else {
        std::printf("%3ld. %s%s\n", number, game.plyCount % 2 ? "... " : "", text.text);
    }
}

// The engine's move: the clock gives the search its time, the search its move, which is echoed
// ("  1. ... e7e5 " in the console; in xboard mode "  1. ... e2e4 " for either side and
// "My move is: e2e4 ").
static void engineMove(GameState& game, Move& chosen) {
    const TimeBudget budget = computeTimeBudget(game);
    std::fflush(stdout);
    game.search.searchStartTime = game.search.now();
    game.search.StopFlag = 0;
    game.search.output = game.xboardMode ? SearchOutput::xboard : SearchOutput::console;
    const int32_t index =
        runSearch(game.search, game.turn, game.legalMoves, game.lastLegalIndex, game.position,
                  game.showPv, game.ponderTime, budget.earlyStopTime);
    updateClock(game, budget);
    chosen = game.legalMoves.moves[index];
    const MoveText text = moveText(chosen);
    const long number = (game.plyCount + 2) / 2;
    if (game.xboardMode) {
        std::printf("%3ld. ... %s\nMy move is: %s\n", number, text.text, text.text);
    } else {
        std::printf("%3ld. %s%s\n", number, game.plyCount % 2 ? "... " : "", text.text);
    }
    if (auto232Mode) writeMoveFile(chosen, game.plyCount);
}

// Thinking on the opponent's time: a search for the side to move, without a time limit, until
// input arrives; its move is the prediction, and the time it took counts for the engine's next
// search when the prediction comes true.
static void ponder(GameState& game) {
    if (!game.xboardMode)
        std::printf("\nKovrel is pondering... Ctrl-C or hit any key to stop it\n");
    std::fflush(stdout);
    searchTimeLimit = 0;
    game.search.searchStartTime = game.search.now();
    const int32_t keptDepth = fullWidthDepth;
    fullWidthDepth = 248;
    game.search.StopFlag = 0;
    game.search.output = game.xboardMode ? SearchOutput::xboard : SearchOutput::console;
    game.lastSearchIndex = runSearch(game.search, game.turn, game.legalMoves, game.lastLegalIndex,
                                     game.position, game.showPv, ponderingSearch, ponderingSearch);
    game.ponderTime = static_cast<int32_t>(game.search.now() - game.search.searchStartTime);
    game.ponderMode = -1;
    fullWidthDepth = keptDepth;
}

// Loop steps 3 to 5: reads words until one is a legal move (returned in `move`, loopState 1)
// or a command sends the loop on. Returns false when standard input has ended.
static bool readInput(GameState& game, Move& move) {
    char word[inputWordSize];
    for (;;) {
        std::fflush(stdout);
        if (game.ponderMode == 1 && game.plyCount != 0 && game.userSide != 0 &&
            game.lastLegalIndex >= 0)
            ponder(game);
        if (auto232Mode) {
            waitForOpponentFile(word);
        } else if (!readWord(word)) {
            return false;
        }
        game.loopState = loopWaiting;
        if (game.lastLegalIndex != -1) {
            const int32_t found = parseMoveInput(word, game.turn, game.position, game.legalMoves,
                                                 game.lastLegalIndex);
            if (found >= 0) {
                game.loopState = loopMoved;
                creditPondering(game, found);
                move = game.legalMoves.moves[found];
                echoUserMove(game, move);
                if (auto232Mode) writeMoveFile(move, game.plyCount);
                return true;
            }
        }
        if (interpretCommand(game, word) == CommandEnd::nextCycle) return true;
    }
}

void runCommandLoop(GameState& game) {
    while (game.loopState <= loopMoved) {
        // 1. The legal moves of the side to move, and the end of the game.
        game.lastLegalIndex =
            generateLegalMoves(game.turn, game.legalMoves, game.position, allMoves);
        checkGameEnd(game);

        // 2. The user's turn (or nobody's engine): read input. The engine's turn: it moves
        //    when the last word asked for it.
        Move move = endMark;
        const bool userToMove = game.turn == game.userSide || game.userSide == 0;
        if (userToMove || game.loopState != loopMoved) {
            if (!readInput(game, move)) {
                game.loopState = loopQuit; // end of input ends the program as quit does
                break;
            }
        }

        // 6. and 7. Play the user's move, or let the engine choose and play its own.
        if (game.loopState == loopMoved && game.lastLegalIndex != -1) {
            if (game.turn + game.userSide == 0) engineMove(game, move);
            playMove(game, move);
            game.turn = -game.turn;
        }

        // 8. A new game after maxGamePlies; quit and fatal errors end the loop.
        if (game.loopState == loopNewGame) startNewGame(game);
    }
}

int runProgram(int argc, char** argv) {
    // The key tables must be the first draws of the random source.
    initPositionKeys();
    fillMaterialScale();
    static GameState game;
    resetGameState(game);
    installInterruptHandler();

    const bool moveNow = readOptions(game, argc, argv);
    interruptMode = moveNow ? -1 : game.ponderMode;
    game.flipView = 0;
    game.showPv = 0;

    if (!allocateTranspositionTables()) {
        std::printf("Error (not enough memory for hashtables): initialisation\n");
        game.loopState = loopFatal;
    }
    if (!allocateHistoryTable()) {
        std::printf("Error (not enough memory for history heuristic): initialisation\n");
        game.loopState = loopFatal;
    }

    if (game.loopState <= loopNewGame) {
        game.clockReset = 3595;
        startNewGame(game);
        runCommandLoop(game);
    }

    std::printf("exiting...\n");
    std::fflush(stdout);
    freeSearchTables();
    return game.loopState == loopFatal ? -1 : 0;
}
