#include "ui/setup.h"

#include <cstdio>

#include "core/attacks.h"
#include "core/derive.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "ui/display.h"
#include "ui/input.h"

static void stopEngineIfToMove(GameState& game) {
    if (game.turn + game.userSide != 0) return;
    game.userSide = 0;
    if (!game.xboardMode) std::printf("stop computer playing (human-human game type)\n");
}

void goToPly(GameState& game, int64_t target) {
    game.plyCount = target >= 1 && target <= maxReplayPly ? static_cast<int32_t>(target) : 0;
    if (game.startPosition.sideToMove != 0) {
        game.position = game.startPosition;
        game.turn = game.startPosition.sideToMove;
    } else {
        setInitialPosition(game.position);
        game.turn = white;
    }
    derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
    game.search.keyCount = 0;
    game.search.fiftyMoveCounter = 0;
    for (int32_t i = 0; i < game.plyCount; ++i) {
        const Move m = game.moveHistory[i];
        const int32_t last =
            generateLegalMoves(game.turn, game.legalMoves, game.position, allMoves);
        bool legal = false;
        for (int32_t j = 0; j <= last && !legal; ++j)
            legal = sameMove(game.legalMoves.moves[j], m);
        if (!legal) {
            game.plyCount = i;
            break;
        }
        // As a move is played, but keeping the record after it.
        game.search.keyHistory[game.search.keyCount + 1] =
            game.search.keyHistory[game.search.keyCount];
        ++game.search.keyCount;
        const PieceCode victim = game.position.squares[squareIndex(m.toFile, m.toRank)];
        const PieceCode mover = game.position.squares[squareIndex(m.fromFile, m.fromRank)];
        game.search.fiftyMoveCounter =
            victim == 0 && mover != game.turn * pawn ? game.search.fiftyMoveCounter + 1 : 0;
        int32_t capturedSlot = 0;
        makeMove(game.search.keyHistory[game.search.keyCount], game.turn, game.position, game.lists,
                 m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion, game.material,
                 capturedSlot);
        game.turn = -game.turn;
    }
    if (!game.xboardMode) {
        showBoard(game.position, 1 - 2 * game.flipView);
        showLastMove(game);
    }
    stopEngineIfToMove(game);
}

bool validateSetup(GameState& game) {
    Position& pos = game.position;
    const PieceCode whiteRook = rook;
    const PieceCode blackRook = -rook;
    if (pos.squares[squareIndex(0, 0)] != whiteRook) pos.whiteCastling &= ~queenSideCastling;
    if (pos.squares[squareIndex(7, 0)] != whiteRook) pos.whiteCastling &= ~kingSideCastling;
    if (pos.squares[squareIndex(0, 7)] != blackRook) pos.blackCastling &= ~queenSideCastling;
    if (pos.squares[squareIndex(7, 7)] != blackRook) pos.blackCastling &= ~kingSideCastling;

    int32_t pieces[2] = {0, 0};
    int32_t kings[2] = {0, 0};
    bool pawnOnBackRank = false;
    for (int32_t file = 0; file < 8; ++file) {
        for (int32_t rank = 0; rank < 8; ++rank) {
            const int32_t sq = squareIndex(file, rank);
            const PieceCode code = pos.squares[sq];
            game.startPosition.squares[sq] = code;
            if (code == 0) continue;
            const int32_t colour = code > 0 ? 1 : 0;
            ++pieces[colour];
            if ((code == pawn || code == -pawn) && (rank == 0 || rank == 7)) pawnOnBackRank = true;
            if (code == king || code == -king) {
                ++kings[colour];
                setKingSquare(pos, code > 0 ? white : black, file, rank);
            }
        }
    }
    game.startPosition.whiteKingFile = pos.whiteKingFile;
    game.startPosition.whiteKingRank = pos.whiteKingRank;
    game.startPosition.blackKingFile = pos.blackKingFile;
    game.startPosition.blackKingRank = pos.blackKingRank;
    game.startPosition.whiteCastling = pos.whiteCastling;
    game.startPosition.blackCastling = pos.blackCastling;
    game.startPosition.enPassant = pos.enPassant;
    game.startPosition.sideToMove = game.turn;

    const bool valid = pieces[0] <= 16 && pieces[1] <= 16 && kings[0] == 1 && kings[1] == 1 &&
                       !pawnOnBackRank && isSquareSafe(pos, -game.turn, -1, 0);
    if (!valid) return false;
    game.plyCount = 0;
    game.moveHistory[0] = endMark;
    derivePositionState(pos, game.search.keyHistory[0], game.lists, game.material);
    game.search.keyCount = 0;
    game.search.fiftyMoveCounter = 0;
    return true;
}

// Reads one number for the editor (no newline after it); `fallback` when none follows.
static long editorNumber(long fallback) {
    long value = fallback;
    return readLong(value) ? value : fallback;
}

static void askCastling(const char* colour, int32_t& rights) {
    std::printf("enter %s castle (0=none, 1=right, 2=left, 3=both): ", colour);
    std::fflush(stdout);
    const long c = editorNumber(-1);
    if (c >= 0 && c <= 3) rights = static_cast<int32_t>(c);
}

bool editPosition(GameState& game) {
    Position& pos = game.position;
    for (;;) {
        showBoard(pos, 1 - 2 * game.flipView);
        std::printf("enter #row to change (0=exit): ");
        std::fflush(stdout);
        const long row = editorNumber(0);
        if (row < 1 || row > 8) break;
        std::printf("enter the 8 values (0=none, 1 to 6 for PNBRQK and -1 to -6 for pnbrqk): ");
        std::fflush(stdout);
        for (int32_t file = 0; file < 8; ++file) {
            long code = 0;
            if (!readLong(code)) continue; // no number: the square stays as it was
            if (code >= -king && code <= king)
                pos.squares[squareIndex(file, static_cast<int32_t>(row - 1))] =
                    static_cast<PieceCode>(code);
        }
    }
    askCastling("White", pos.whiteCastling);
    askCastling("Black", pos.blackCastling);
    std::printf("White or Black to move? (1, -1): ");
    std::fflush(stdout);
    const long side = editorNumber(0);
    if (side == 1 || side == -1) game.turn = static_cast<Side>(side);
    pos.enPassant = 0; // an edited position has no double step behind it
    if (!validateSetup(game)) return false;
    std::printf("done\n");
    stopEngineIfToMove(game);
    game.userSide = 0;
    return true;
}
