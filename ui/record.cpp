#include "ui/record.h"

#include <cstdio>
#include <cstring>

#include "core/derive.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/version.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "ui/auto232.h"
#include "ui/interrupt.h"

void resetGameState(GameState& game) {
    std::memset(&game, 0, sizeof game);
    setInitialPosition(game.position);
    derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
    game.turn = white;
    game.userSide = white;
    game.startPosition.sideToMove = 0;
    game.moveHistory[0] = endMark;
    game.lastLegalIndex = -1;
    game.search.pollFunction = pollInterruption;
    game.search.now = calendarSeconds;
    game.search.bookMissingIsFatal = 1;
    game.totalTime = 3600;
    game.bonusTime = 0;
    game.sessionMoves = 0;
    game.clockReset = 3595;
    game.engineClock = game.clockReset;
    game.loopState = loopWaiting;
    game.xboardMode = 0;
    game.ponderMode = 0;
    game.xboardFixed = 0;
    game.ponderFixed = 0;
    fullWidthDepth = 24;
    quiescenceDepth = 48;
    interruptMode = 0;
    bookEnabled = 1;
    auto232Mode = 0;
}

void startNewGame(GameState& game) {
    std::printf("Kovrel %s\nnew game\n", programVersion);
    clearSearchTables();
    setInitialPosition(game.position);
    game.startPosition.sideToMove = 0;
    game.userSide = white;
    game.turn = white;
    game.plyCount = 0;
    game.moveHistory[0] = endMark;
    derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
    game.search.keyCount = 0;
    game.search.fiftyMoveCounter = 0;
    auto232Mode = 0;
    game.timeSurplus = 0;
    game.ponderTime = 0;
    game.loopState = loopWaiting;
    game.engineClock = game.clockReset;
}

void recordMove(GameState& game, const Move& move) {
    game.moveHistory[game.plyCount] = move;
    game.search.keyHistory[game.search.keyCount + 1] = game.search.keyHistory[game.search.keyCount];
    ++game.search.keyCount;
    const PieceCode target = game.position.squares[squareIndex(move.toFile, move.toRank)];
    const PieceCode mover = game.position.squares[squareIndex(move.fromFile, move.fromRank)];
    if (target == 0 && mover != game.turn * pawn) {
        ++game.search.fiftyMoveCounter;
    } else {
        game.search.fiftyMoveCounter = 0; // a capture or pawn move (en passant included)
    }
    int32_t capturedSlot = 0;
    makeMove(game.search.keyHistory[game.search.keyCount], game.turn, game.position, game.lists,
             move.fromFile, move.fromRank, move.toFile, move.toRank, move.promotion, game.material,
             capturedSlot);
    ++game.plyCount;
    game.moveHistory[game.plyCount] = endMark;
}

void playMove(GameState& game, const Move& move) {
    recordMove(game, move);
    if (game.plyCount == maxGamePlies) {
        std::printf("%ld plies played, memory overflow!\n", static_cast<long>(maxGamePlies));
        game.loopState = loopNewGame;
    }
}

void creditPondering(GameState& game, int32_t moveIndex) {
    if (game.ponderMode != -1) return;
    game.ponderMode = 1;
    if (moveIndex != game.lastSearchIndex) game.ponderTime = 0;
}
