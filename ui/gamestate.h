// The game controller's record: everything about the game in progress, its modes and clocks.
#pragma once

#include <csignal>
#include <cstdint>

#include "core/position.h"
#include "core/types.h"
#include "core/version.h"
#include "search/control.h"

// A game stops at this many plies; the record then starts a new game.
constexpr int32_t maxGamePlies = 406;

// The end mark of the move record: a move whose from-file is -1.
constexpr Move endMark = {-1, 0, 0, 0, 0};

// loopState values.
constexpr int32_t loopChanged = -1; // position replaced: re-examine it, then read input
constexpr int32_t loopWaiting = 0;  // reading input
constexpr int32_t loopMoved = 1;    // a move was played, or the engine was asked to move
constexpr int32_t loopNewGame = 2;  // start a new game (after maxGamePlies)
constexpr int32_t loopQuit = 3;     // end the program, status 0
constexpr int32_t loopFatal = 4;    // end the program, status -1

// One game in progress, owned by the entry function for the whole run.
//   position          the game's current position, with its lists and material beside it
//   turn              whose move it is in the game (this, not position.sideToMove, is passed on)
//   userSide          side of the user or opponent program; the engine moves when
//                     turn == -userSide; 0: the engine makes no moves
//   startPosition     the position a set-up game began from; sideToMove 0 for the normal start
//   plyCount          plies played since the start position
//   moveHistory       entry i is the move of ply i + 1; entry plyCount is the end mark
//   search            the record the search works with: the key history of the game's
//                     positions since the last set-up (keyHistory, keyCount), the fifty-move
//                     counter, the stop flag, the start time of a search (calendar seconds)
//                     and the poll
//   legalMoves        legal moves of turn, rebuilt at the top of every loop cycle;
//   lastLegalIndex    the index of the last one, -1 when there is none or the game is decided
//   loopState         see the loop* constants
//   xboardMode        quiet protocol mode; xboardFixed: set by -xboard, wb is then ignored
//   ponderMode        1 hard (think on the opponent's time), 0 easy, -1 hard but suspended
//   ponderFixed       set by -easy or -hard: hard and easy are then ignored
//   showPv            principal-variation output
//   flipView          board shown with Black at the bottom
//   sessionMoves      moves per time-control session, 0 = all moves in totalTime
//   totalTime         seconds per session, 0 = no time control
//   bonusTime         seconds added to the engine's clock for each move it plays
//   engineClock       the engine's remaining seconds, kept 5 short; reset to clockReset
//   timeSurplus       seconds the engine is ahead of its schedule
//   clockReset        totalTime - 5
//   ponderTime        seconds of pondering that count for the engine's next search
//   lastSearchIndex   index in legalMoves of the move the last search returned
struct GameState {
    Position position;
    PieceLists lists;
    Material material;
    Side turn;
    Side userSide;
    Position startPosition;
    int32_t plyCount;
    Move moveHistory[historyCapacity];
    SearchControl search;
    MoveList legalMoves;
    int32_t lastLegalIndex;
    int32_t loopState;
    int32_t xboardMode;
    int32_t xboardFixed;
    int32_t ponderMode;
    int32_t ponderFixed;
    int32_t showPv;
    int32_t flipView;
    int32_t sessionMoves;
    int32_t totalTime;
    int32_t bonusTime;
    int32_t engineClock;
    int32_t timeSurplus;
    int32_t clockReset;
    int32_t ponderTime;
    int32_t lastSearchIndex;
};

// Moves through the Auto232 files; every new game turns it off, and so does Ctrl-C, which may
// write it at any moment (so it lives outside the record, as a signal-safe flag).
extern volatile sig_atomic_t auto232Mode;

// -1: any input stops a search (-mvnw); otherwise equal to ponderMode (1 or 0). Read by the
// interruption poll.
extern int32_t interruptMode;
