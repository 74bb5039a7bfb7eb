#include "ui/gameend.h"

#include <cstdio>

#include "core/attacks.h"

// Material of a bare king, and of a king with one minor piece (or with three pawns).
constexpr int32_t bareKing = 12000;
constexpr int32_t kingAndMinor = 15000;

// A decided draw stops the game in the console; in xboard mode the interface decides.
static void stopOnDraw(GameState& game) {
    if (game.xboardMode) return;
    game.lastLegalIndex = -1;
    game.userSide = 0;
}

// True when the position has occurred twice before with the same side to move since the last
// capture or pawn move.
static bool thirdOccurrence(const GameState& game) {
    const int32_t span = game.fiftyMoveCounter & ~1;
    const PositionKey now = game.keyHistory[game.keyCount];
    int32_t seen = 0;
    for (int32_t i = game.keyCount - span; i <= game.keyCount - 2 && seen < 2; i += 2) {
        if (i >= 0 && game.keyHistory[i] == now) ++seen;
    }
    return seen == 2;
}

// Live pieces of one side, the king included, counted up to 3.
static int32_t livePieces(const PieceLists& lists, Side side) {
    const int32_t(*list)[2] = lists.slots[sideIndex(side)];
    int32_t count = 0;
    for (int32_t slot = 1; slot <= list[0][0] && count <= 2; ++slot) {
        if (list[slot][0] != -1) ++count;
    }
    return count;
}

// A bare king against a bare king or a king with a single knight or bishop.
static bool noMatingMaterial(const GameState& game) {
    const int32_t whiteSum = game.material.sum[sideIndex(white)];
    const int32_t blackSum = game.material.sum[sideIndex(black)];
    Side stronger = 0;
    if (blackSum == bareKing && (whiteSum == bareKing || whiteSum == kingAndMinor)) {
        stronger = white;
    } else if (whiteSum == bareKing && (blackSum == bareKing || blackSum == kingAndMinor)) {
        stronger = black;
    }
    if (stronger == 0) return false;
    const int32_t count = livePieces(game.lists, stronger);
    return count == 1 || count == 2;
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
    if (game.lastLegalIndex != -1 && noMatingMaterial(game)) {
        stopOnDraw(game);
        std::printf("1/2-1/2 {Neither player has mating material}\n");
    }
    if (game.lastLegalIndex != -1 && game.fiftyMoveCounter > 99) {
        stopOnDraw(game);
        std::printf("1/2-1/2 {Rule of 50 moves}\n");
    }
}
