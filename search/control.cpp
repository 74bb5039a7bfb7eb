#include "search/control.h"

#include <cstring>

#include "core/derive.h"
#include "core/makemove.h"

namespace {

// Keys kept when the history fills: a position more than 100 plies back can no longer repeat
// before the fifty-move rule ends the game.
constexpr int32_t keptKeys = 102;
// The history is trimmed at this many keys, leaving room for the search's own line.
constexpr int32_t trimAt = historyCapacity - 80;

} // namespace

void startGameLine(GameLine& line, const Position& start, int32_t fifty) {
    line.pos = start;
    line.side = start.sideToMove;
    line.control.keyCount = 0;
    line.control.fiftyMoveCounter = fifty;
    derivePositionState(line.pos, line.control.keyHistory[0], line.lists, line.material);
}

void playGameMove(GameLine& line, const Move& m) {
    SearchControl& control = line.control;
    const PieceCode victim = line.pos.squares[squareIndex(m.toFile, m.toRank)];
    const PieceCode mover = line.pos.squares[squareIndex(m.fromFile, m.fromRank)];
    control.fiftyMoveCounter =
        victim != 0 || mover == line.side * pawn // en passant is a pawn move
            ? 0
            : (control.fiftyMoveCounter < 10000 ? control.fiftyMoveCounter + 1 : 10000);
    if (control.keyCount >= trimAt) {
        std::memmove(control.keyHistory, control.keyHistory + control.keyCount - keptKeys + 1,
                     keptKeys * sizeof control.keyHistory[0]);
        control.keyCount = keptKeys - 1;
    }
    control.keyHistory[control.keyCount + 1] = control.keyHistory[control.keyCount];
    ++control.keyCount;
    int32_t capturedSlot = 0;
    makeMove(control.keyHistory[control.keyCount], line.side, line.pos, line.lists, m.fromFile,
             m.fromRank, m.toFile, m.toRank, m.promotion, line.material, capturedSlot);
    line.side = -line.side;
    line.pos.sideToMove = line.side;
}
