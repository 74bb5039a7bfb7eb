#include "ui/gameend.h"

#include <cstdio>

#include "core/attacks.h"

// A decided draw stops the game in the console; in xboard mode the interface decides.
static void stopOnDraw(GameState& game) {
    if (game.xboardMode) return;
    game.lastLegalIndex = -1;
    game.userSide = 0;
}

// True when the position has occurred twice before with the same side to move since the last
// capture or pawn move.
static bool thirdOccurrence(const GameState& game) {
    const int32_t span = game.search.fiftyMoveCounter & ~1;
    const PositionKey now = game.search.keyHistory[game.search.keyCount];
    int32_t seen = 0;
    for (int32_t i = game.search.keyCount - span; i <= game.search.keyCount - 2 && seen < 2;
         i += 2) {
        if (i >= 0 && game.search.keyHistory[i] == now) ++seen;
    }
    return seen == 2;
}

void checkGameEnd(GameState& game) {
    if (game.lastLegalIndex == -1) {
        if (isSquareSafe(game.position, game.turn, -1, 0)) {
            std::printf("1/2-1/2 {Stalemate}\n");
        } else if (game.turn > 0) {
            std::printf("0-1 {Black mates}\n");
        } else {
            std::printf("1-0 {White mates}\n");
        }
        game.userSide = 0;
        return;
    }
    if (thirdOccurrence(game)) {
        stopOnDraw(game);
        std::printf("1/2-1/2 {Draw by repetition}\n");
    }
    if (game.lastLegalIndex != -1 && noMatingMaterial(game.material, game.lists)) {
        stopOnDraw(game);
        std::printf("1/2-1/2 {Neither player has mating material}\n");
    }
    if (game.lastLegalIndex != -1 && game.search.fiftyMoveCounter > 99) {
        stopOnDraw(game);
        std::printf("1/2-1/2 {Rule of 50 moves}\n");
    }
}
