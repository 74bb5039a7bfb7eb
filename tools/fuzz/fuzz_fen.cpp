// The FEN reader of the game files: any bytes give a valid position with consistent lists,
// material and key, or the fatal invalid-position ending; a valid one generates and plays its
// legal moves cleanly.
#include <cstdlib>

#include "core/derive.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "fuzz_support.h"
#include "ui/gamefiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    setUpProgramOnce();
    GameState& game = freshGame();
    FILE* file = openBytes(data, size);
    readFenFile(game, file);
    std::fclose(file);
    if (game.loopState == loopFatal) return 0;
    checkGame(game);
    const int32_t last = generateLegalMoves(game.turn, game.legalMoves, game.position, 0);
    for (int32_t i = 0; i <= last; ++i) {
        const Move& m = game.legalMoves.moves[i];
        PositionKey key = game.search.keyHistory[0];
        Material material = game.material;
        const Position before = game.position;
        const PieceCode captured = game.position.squares[squareIndex(m.toFile, m.toRank)];
        int32_t slot = 0;
        makeMove(key, game.turn, game.position, game.lists, m.fromFile, m.fromRank, m.toFile,
                 m.toRank, m.promotion, material, slot);
        if (!positionIsOk(game.position, game.lists, material, key)) std::abort();
        unmakeMove(game.turn, game.position, game.lists, m.fromFile, m.fromRank, m.toFile, m.toRank,
                   m.promotion, captured, slot);
        game.position.whiteCastling = before.whiteCastling;
        game.position.blackCastling = before.blackCastling;
        game.position.enPassant = before.enPassant;
    }
    checkGame(game);
    return 0;
}
