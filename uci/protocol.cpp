#include "uci/protocol.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/book.h"
#include "search/driver.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "uci/options.h"
#include "uci/output.h"
#include "uci/reader.h"
#include "uci/timeman.h"

namespace {

// The game as the GUI last set it up.
GameLine game;
GameLine scratch; // a position command is built here and taken only when all of it is good

// What the running search was asked for, and what has happened to it since.
//   plan          the time plan of the go command (applied at ponderhit when pondering)
//   maxDepth      plies after which the search ends (0: none)
//   nodeLimit     nodes after which it ends (0: none)
//   waitForStop   infinite or ponder: bestmove only after stop or ponderhit
//   pondering     a ponder search that ponderhit has not yet turned into a real one
//   stopped       stop (or ponderhit after the search ended) came
//   quitting      quit came, or the input ended
//   deferred      a line that cannot be handled during a search waits for the loop
//   reported      an info line with a principal variation has been sent for this search
//   lastReported  the first move of that line
//   goTime        when the go command came (info lines count their time from it, also after
//                 ponderhit restarts the clock of the limits)
struct RunningSearch {
    TimePlan plan;
    int32_t maxDepth;
    int64_t nodeLimit;
    bool waitForStop;
    bool pondering;
    bool stopped;
    bool quitting;
    bool deferred;
    bool reported;
    Move lastReported;
    int64_t goTime;
};
RunningSearch running;

MoveList legalMoves;
MoveList rootMoves;

const auto programStart = std::chrono::steady_clock::now();

int64_t milliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 programStart)
        .count();
}

const char* skipBlanks(const char* p) {
    while (*p == ' ' || *p == '\t')
        ++p;
    return p;
}

// The first word of `text` into `word` (at most size - 1 characters); returns what follows.
const char* nextWord(const char* text, char* word, size_t size) {
    const char* p = skipBlanks(text);
    size_t n = 0;
    while (*p != '\0' && *p != ' ' && *p != '\t') {
        if (n + 1 < size) word[n++] = *p;
        ++p;
    }
    word[n] = '\0';
    return p;
}

// A move in UCI form, "e2e4" or "e7e8q", without the console's trailing blank.
struct UciMoveText {
    char text[6];
};
UciMoveText uciMove(const Move& m) {
    UciMoveText t;
    moveToText(m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion, t.text);
    if (t.text[4] == ' ') t.text[4] = '\0';
    return t;
}

// The index in list[0..last] of the move `text` names in coordinates (a missing promotion
// letter reads as a queen), -1 for none.
int32_t findMove(const char* text, const MoveList& list, int32_t last) {
    const size_t length = std::strlen(text);
    if (length != 4 && length != 5) return -1;
    if (text[0] < 'a' || text[0] > 'h' || text[1] < '1' || text[1] > '8' || text[2] < 'a' ||
        text[2] > 'h' || text[3] < '1' || text[3] > '8')
        return -1;
    int32_t promotion = 0;
    if (length == 5) {
        const char* letters = "nbrq";
        const char* at = std::strchr(letters, text[4]);
        if (at == nullptr || text[4] == '\0') return -1;
        promotion = static_cast<int32_t>(at - letters) + knight;
    }
    for (int32_t i = 0; i <= last; ++i) {
        const Move& m = list.moves[i];
        if (m.fromFile != text[0] - 'a' || m.fromRank != text[1] - '1' ||
            m.toFile != text[2] - 'a' || m.toRank != text[3] - '1')
            continue;
        if (m.promotion == promotion || (length == 4 && m.promotion == queen)) return i;
    }
    return -1;
}

// position startpos|fen <fen> [moves <move>...]: built on the scratch record, taken whole.
void positionCommand(const char* text) {
    char word[16];
    const char* p = nextWord(text, word, sizeof word);
    Position pos;
    int32_t fifty = 0;
    if (std::strcmp(word, "startpos") == 0) {
        setInitialPosition(pos);
        pos.sideToMove = white;
    } else if (std::strcmp(word, "fen") == 0) {
        // The FEN runs up to the word "moves".
        char fen[256];
        p = skipBlanks(p);
        const char* movesAt = std::strstr(p, " moves");
        while (movesAt != nullptr && movesAt[6] != '\0' && movesAt[6] != ' ' && movesAt[6] != '\t')
            movesAt = std::strstr(movesAt + 6, " moves");
        const size_t length =
            movesAt != nullptr ? static_cast<size_t>(movesAt - p) : std::strlen(p);
        if (length == 0) return sendLine("info string position fen: the FEN is missing");
        if (length >= sizeof fen)
            return sendLine("info string position fen: the FEN is too long (%zu characters)",
                            length);
        std::memcpy(fen, p, length);
        fen[length] = '\0';
        if (const char* problem = readFen(fen, pos))
            return sendLine("info string position fen: %s: %s", problem, fen);
        fifty = fenHalfmoveClock(fen);
        p += length;
    } else {
        return sendLine("info string position: expected startpos or fen, not '%s'", word);
    }
    startGameLine(scratch, pos, fifty);

    p = nextWord(p, word, sizeof word);
    if (word[0] != '\0') {
        if (std::strcmp(word, "moves") != 0)
            return sendLine("info string position: expected moves, not '%s'", word);
        int32_t ply = 0;
        for (;;) {
            p = nextWord(p, word, sizeof word);
            if (word[0] == '\0') break;
            ++ply;
            const int32_t last =
                generateLegalMoves(scratch.side, legalMoves, scratch.pos, allMoves);
            const int32_t found = findMove(word, legalMoves, last);
            if (found < 0)
                return sendLine("info string position: illegal move %d '%s'; the position is "
                                "unchanged",
                                ply, word);
            playGameMove(scratch, legalMoves.moves[found]);
        }
    }
    game.pos = scratch.pos;
    game.lists = scratch.lists;
    game.material = scratch.material;
    game.side = scratch.side;
    std::memcpy(game.control.keyHistory, scratch.control.keyHistory,
                sizeof(PositionKey) * static_cast<size_t>(scratch.control.keyCount + 1));
    game.control.keyCount = scratch.control.keyCount;
    game.control.fiftyMoveCounter = scratch.control.fiftyMoveCounter;
}

// A value for the info line: centipawns, or mate in moves (negative: being mated).
void scoreText(int32_t value, char* text, size_t size) {
    if (value >= mateValue - mateRange) {
        const int32_t plies = (mateValue - value + 7) / 8;
        std::snprintf(text, size, "mate %d", (plies + 1) / 2);
    } else if (value <= -(mateValue - mateRange)) {
        const int32_t plies = (value + mateValue + 7) / 8;
        std::snprintf(text, size, "mate -%d", plies / 2);
    } else {
        std::snprintf(text, size, "cp %d", value / 20);
    }
}

// Nodes, speed and time of a report line, the time counted from the go command.
struct Progress {
    long long nodes;
    long long nps;
    long long time;
};
Progress progress(const SearchControl& control) {
    const int64_t time = control.now() - running.goTime;
    return {static_cast<long long>(nodeCount), time > 0 ? nodeCount * 1000 / time : 0,
            static_cast<long long>(time)};
}

void sendProgress(const SearchControl& control) {
    const Progress p = progress(control);
    sendLine("info nodes %lld nps %lld time %lld", p.nodes, p.nps, p.time);
}

// After every iteration: depth, score, nodes, speed, time and the principal variation. An
// interrupted iteration that did not change the move only says how far the search got.
void reportIteration(SearchControl& control, const IterationReport& r) {
    if (running.maxDepth > 0 && r.finished && r.depth >= running.maxDepth) searchRunning = 0;
    if (!r.finished && running.reported && sameMove(r.chosen, running.lastReported))
        return sendProgress(control);
    int32_t value = r.lower;
    const char* bound = " lowerbound";
    if (r.lowerProven && r.upperProven && r.lower >= r.upper) {
        bound = "";
    } else if (r.lowerProven && r.lower >= mateValue - mateRange) {
        bound = ""; // a mate proven from below: mate in at most this many moves
    } else if (!r.lowerProven && r.upperProven) {
        value = r.upper;
        bound = " upperbound";
    }
    char score[32];
    scoreText(value, score, sizeof score);
    char line[maxLineLength * 6 + 1] = "";
    size_t at = 0;
    for (int32_t i = 0; i < r.lineLength; ++i) {
        const UciMoveText t = uciMove(r.line[i]);
        at += static_cast<size_t>(std::snprintf(line + at, sizeof line - at, " %s", t.text));
    }
    const Progress p = progress(control);
    sendLine("info depth %d score %s%s nodes %lld nps %lld time %lld pv%s", r.depth, score, bound,
             p.nodes, p.nps, p.time, line);
    running.reported = true;
    running.lastReported = r.chosen;
}

// ponderhit: the predicted move was played; the clock of the go command starts now, and the
// time already spent counts as pondering. A search that has pondered at least the move's
// share of the clock already knows what a search of its own would find: it plays at once.
void applyPonderHit(SearchControl& control) {
    running.pondering = false;
    const int64_t now = control.now();
    control.ponderTime = static_cast<int32_t>(now - control.searchStartTime);
    if (control.ponderTime >= 2 * int64_t{running.plan.earlyStopTime}) control.StopFlag = 1;
    control.searchStartTime = now;
    control.minimumDepth = running.plan.minimumDepth;
    control.earlyStopTime = running.plan.earlyStopTime;
    searchTimeLimit = running.plan.timeLimit;
    running.waitForStop = false;
}

enum class Handled { done, deferred };

bool isCommand(const char* word, const char* name) {
    return std::strcmp(word, name) == 0;
}

// The lines that are answered while a search runs: isready, stop, ponderhit, quit, debug and
// unknown words. Anything else (position, go, setoption, ucinewgame) ends the search and
// waits for the loop.
Handled handleDuringSearch(SearchControl& control, const char* line) {
    char word[32];
    const char* rest = nextWord(line, word, sizeof word);
    if (word[0] == '\0') return Handled::done;
    if (isCommand(word, "isready")) {
        sendLine("readyok");
    } else if (isCommand(word, "stop")) {
        running.stopped = true;
        control.StopFlag = 1;
    } else if (isCommand(word, "ponderhit")) {
        if (running.pondering) applyPonderHit(control);
    } else if (isCommand(word, "quit")) {
        running.quitting = true;
        control.StopFlag = 1;
    } else if (isCommand(word, "debug")) {
        char value[8];
        nextWord(rest, value, sizeof value);
        uciSettings.debug = isCommand(value, "on");
    } else if (isCommand(word, "uci")) {
        printIdentity();
    } else if (isCommand(word, "position") || isCommand(word, "go") ||
               isCommand(word, "setoption") || isCommand(word, "ucinewgame") ||
               isCommand(word, "register")) {
        control.StopFlag = 1;
        return Handled::deferred;
    } else {
        sendLine("info string unknown command '%s'", word);
    }
    return Handled::done;
}

// Handles the lines that have arrived, up to one that must wait for the search to end.
void serviceInput(SearchControl& control) {
    if (running.deferred) return;
    if (!readWaitingInput() && peekLine() == nullptr) {
        running.quitting = true; // the GUI has gone
        control.StopFlag = 1;
        return;
    }
    if (takeOverlongNotice())
        sendLine("info string a line longer than %d characters was ignored", maxInputLine);
    while (!running.quitting) {
        const char* line = peekLine();
        if (line == nullptr) break;
        if (handleDuringSearch(control, line) == Handled::deferred) {
            running.deferred = true;
            return;
        }
        dropLine();
    }
}

// The search's poll, every 1000 nodes: the input, the clock and the node limit.
void pollUci(SearchControl& control) {
    serviceInput(control);
    if (searchTimeLimit > 0 && control.now() - control.searchStartTime >= searchTimeLimit)
        control.StopFlag = 1;
    if (running.nodeLimit > 0 && nodeCount >= running.nodeLimit) control.StopFlag = 1;
}

// A number after a go keyword, at least `least`; false (and one info string) when none
// follows. A word that is no number is taken as the missing number and skipped.
bool goNumber(const char*& p, const char* keyword, int64_t& value, int64_t least = 0) {
    char word[32];
    const char* after = nextWord(p, word, sizeof word);
    char* end = nullptr;
    errno = 0;
    const long long v = std::strtoll(word, &end, 10);
    if (word[0] == '\0' || *end != '\0' || errno != 0) {
        sendLine("info string go: %s needs a number", keyword);
        if (word[0] != '\0') p = after;
        return false;
    }
    value = v < least ? least : v;
    p = after;
    return true;
}

// Whether the book is to be used now: OwnBook on and the file good; a problem with the file is
// said once. A file found good is not read again here (the search reads it at every move, and
// searches on should it have gone).
bool bookUsable() {
    if (!uciSettings.ownBook) return false;
    if (uciSettings.bookFound) return true;
    const BookCheck check = checkBook(bookFile);
    if (!uciSettings.bookNoticed) {
        if (!check.opened) {
            sendLine("info string book file %s cannot be opened; searching without a book",
                     bookFile);
        } else if (check.records == 0 && !check.damaged) {
            sendLine("info string book file %s holds no moves", bookFile);
        } else if (check.damaged) {
            sendLine("info string book file %s is damaged after %d records; only those are used",
                     bookFile, check.records);
        }
        uciSettings.bookNoticed = !check.opened || check.records == 0 || check.damaged;
    }
    uciSettings.bookFound = check.opened && check.records > 0 && !check.damaged;
    return check.opened && check.records > 0;
}

// The reply the tables expect to the chosen move, for "bestmove X ponder Y".
bool ponderMove(const Move& best, Move& reply) {
    PositionKey key = game.control.keyHistory[game.control.keyCount];
    Material material = game.material;
    const MoveUndo undo = playOnBoard(key, game.side, game.pos, game.lists, best, material);
    Move line[pvMoves];
    const int32_t n = principalVariation(key, game.pos, game.lists, -game.side, 8, 8, line);
    takeBack(game.side, game.pos, game.lists, best, undo);
    if (n > 0) reply = line[0];
    return n > 0;
}

void goCommand(const char* text) {
    GoCommand go = {{-1, -1}, {-1, -1}, -1, -1, -1, -1, false, false};
    const char* p = text;
    char word[32];
    bool restricted = false;
    int32_t last = generateLegalMoves(game.side, legalMoves, game.pos, allMoves);
    int32_t rootLast = -1;
    for (;;) {
        p = nextWord(p, word, sizeof word);
        if (word[0] == '\0') break;
        int64_t mate = 0;
        if (isCommand(word, "wtime")) {
            goNumber(p, word, go.time[1]);
        } else if (isCommand(word, "btime")) {
            goNumber(p, word, go.time[0]);
        } else if (isCommand(word, "winc")) {
            goNumber(p, word, go.increment[1]);
        } else if (isCommand(word, "binc")) {
            goNumber(p, word, go.increment[0]);
        } else if (isCommand(word, "movestogo")) {
            goNumber(p, word, go.movesToGo);
        } else if (isCommand(word, "movetime")) {
            goNumber(p, word, go.moveTime);
        } else if (isCommand(word, "depth")) {
            goNumber(p, word, go.depth, 1);
        } else if (isCommand(word, "nodes")) {
            goNumber(p, word, go.nodes, 1);
        } else if (isCommand(word, "mate")) {
            if (goNumber(p, word, mate, 1)) go.depth = 2 * mate; // a mate in n lies within 2n plies
        } else if (isCommand(word, "infinite")) {
            go.infinite = true;
        } else if (isCommand(word, "ponder")) {
            go.ponder = true;
        } else if (isCommand(word, "searchmoves")) {
            // The moves that follow, up to the next keyword, are the only ones searched.
            restricted = true;
            for (;;) {
                char moveWord[32];
                const char* after = nextWord(p, moveWord, sizeof moveWord);
                if (moveWord[0] == '\0') break;
                const int32_t found = findMove(moveWord, legalMoves, last);
                if (found < 0) {
                    if (std::strlen(moveWord) >= 4 && moveWord[1] >= '1' && moveWord[1] <= '8')
                        sendLine("info string go searchmoves: '%s' is not a legal move", moveWord);
                    else
                        break; // the next keyword
                } else {
                    bool listed = false;
                    for (int32_t i = 0; i <= rootLast; ++i)
                        listed = listed || sameMove(rootMoves.moves[i], legalMoves.moves[found]);
                    if (!listed) rootMoves.moves[++rootLast] = legalMoves.moves[found];
                }
                p = after;
            }
        } else {
            sendLine("info string go: unknown parameter '%s'", word);
        }
    }
    if (!restricted || rootLast < 0) {
        if (restricted) sendLine("info string go searchmoves: no legal move named; all searched");
        rootMoves = legalMoves;
        rootLast = last;
        restricted = false;
    }

    SearchControl& control = game.control;
    control.searchStartTime = control.now();
    running = RunningSearch{};
    running.goTime = control.searchStartTime;
    running.plan = planTime(go, game.side, uciSettings.moveOverhead, 24);
    running.maxDepth = go.depth > 0 ? static_cast<int32_t>(go.depth > 248 ? 248 : go.depth) : 0;
    running.nodeLimit = go.nodes > 0 ? go.nodes : 0;
    const bool clockless = !running.plan.timed && go.depth <= 0 && go.nodes <= 0;
    running.waitForStop = go.infinite || go.ponder || clockless;
    running.pondering = go.ponder;
    if (uciSettings.debug) {
        sendLine("info string plan: limit %d ms, early stop %d ms, minimum depth %d, max depth %d, "
                 "nodes %lld%s",
                 running.plan.timeLimit, running.plan.earlyStopTime, running.plan.minimumDepth / 8,
                 running.maxDepth, static_cast<long long>(running.nodeLimit),
                 go.ponder ? ", pondering" : "");
    }

    Move best = {0, 0, 0, 0, 0};
    bool found = false;
    if (last < 0) {
        sendLine("info string no legal move: the game is over");
    } else {
        // The book answers games on a clock (and their pondering), not analysis.
        bookEnabled = (running.plan.timed || go.ponder) && !restricted && bookUsable() ? 1 : 0;
        if (go.ponder) {
            fullWidthDepth = unreachedDepth;
            searchTimeLimit = noTimeLimit;
        } else {
            fullWidthDepth = running.plan.minimumDepth;
            searchTimeLimit = running.plan.timeLimit;
        }
        quiescenceDepth = 48;
        control.StopFlag = 0;
        const int32_t earlyStop = go.ponder ? noTimeLimit : running.plan.earlyStopTime;
        const int32_t chosen =
            runSearch(control, game.side, rootMoves, rootLast, game.pos, 0, 0, earlyStop);
        best = rootMoves.moves[chosen];
        found = true;
    }

    // Infinite and pondering searches answer only when told to.
    while (running.waitForStop && !running.stopped && !running.quitting && !running.deferred) {
        const char* line = waitForLine();
        if (line == nullptr) {
            running.quitting = true;
            break;
        }
        char command[32];
        nextWord(line, command, sizeof command);
        if (isCommand(command, "ponderhit")) {
            dropLine();
            break;
        }
        if (handleDuringSearch(control, line) == Handled::deferred) {
            running.deferred = true;
            break;
        }
        dropLine();
    }
    running.deferred = false;

    if (!found) return sendLine("bestmove 0000");
    Move reply;
    if (ponderMove(best, reply)) {
        sendLine("bestmove %s ponder %s", uciMove(best).text, uciMove(reply).text);
    } else {
        sendLine("bestmove %s", uciMove(best).text);
    }
}

void newGame() {
    clearSearchTables();
    Position pos;
    setInitialPosition(pos);
    pos.sideToMove = white;
    startGameLine(game, pos, 0);
}

} // namespace

int runUci() {
    std::signal(SIGINT, SIG_IGN); // GUIs may signal their whole process group
    std::signal(SIGPIPE, SIG_IGN);
    initPositionKeys();
    fillMaterialScale();
    hashBits = hashBitsFor(defaultHashMegabytes);
    if (!allocateTranspositionTables() || !allocateHistoryTable()) {
        sendLine("info string not enough memory for the hash tables");
        return 1;
    }
    clearSearchTables();
    findDefaultBook();
    game.control.pollFunction = pollUci;
    game.control.now = milliseconds;
    game.control.output = SearchOutput::report;
    game.control.report = reportIteration;
    game.control.bookMissingIsFatal = 0;
    newGame();

    while (!running.quitting) {
        const char* line = waitForLine();
        if (line == nullptr) break;
        if (takeOverlongNotice())
            sendLine("info string a line longer than %d characters was ignored", maxInputLine);
        char command[32];
        const char* rest = nextWord(line, command, sizeof command);
        if (isCommand(command, "uci")) {
            printIdentity();
        } else if (isCommand(command, "isready")) {
            sendLine("readyok");
        } else if (isCommand(command, "setoption")) {
            setOption(rest);
        } else if (isCommand(command, "ucinewgame")) {
            newGame();
        } else if (isCommand(command, "position")) {
            positionCommand(rest);
        } else if (isCommand(command, "go")) {
            // The go line stays in the buffer while the search runs; its text is copied.
            static char goText[maxInputLine + 1];
            std::strcpy(goText, rest);
            dropLine();
            goCommand(goText);
            continue;
        } else if (isCommand(command, "quit")) {
            running.quitting = true;
        } else if (isCommand(command, "debug")) {
            char value[8];
            nextWord(rest, value, sizeof value);
            uciSettings.debug = isCommand(value, "on");
        } else if (isCommand(command, "stop") || isCommand(command, "ponderhit") ||
                   isCommand(command, "register") || command[0] == '\0') {
            // Nothing to stop, nothing to register.
        } else {
            sendLine("info string unknown command '%s'", command);
        }
        dropLine();
    }
    freeSearchTables();
    return 0;
}
