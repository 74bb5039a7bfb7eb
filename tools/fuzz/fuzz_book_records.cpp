// The book's record reader on any file: the answer is a move of the list, none, or nothing at
// all, for positions reached by fuzz-chosen moves.
#include <cstdlib>

#include "core/movegen.h"
#include "fuzz_support.h"
#include "search/book.h"
#include "ui/record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    setUpProgramOnce();
    GameState& game = freshGame();
    // The first byte chooses how many moves of the start position to play first.
    const int32_t plies = size > 0 ? data[0] % 4 : 0;
    for (int32_t i = 0; i < plies; ++i) {
        const int32_t last = generateLegalMoves(game.turn, game.legalMoves, game.position, 0);
        recordMove(game, game.legalMoves.moves[(i * 7) % (last + 1)]);
        game.turn = -game.turn;
    }
    writeFile("openings.dat", data, size);
    const int32_t last = generateLegalMoves(game.turn, game.legalMoves, game.position, 0);
    int32_t order[maxMoves];
    for (int32_t i = 0; i <= last; ++i)
        order[i] = last - i;
    const int32_t chosen = probeBook(game.search.keyHistory[game.search.keyCount], game.turn,
                                     game.legalMoves, order, last);
    if (chosen != noBookMove && (chosen < 0 || chosen > last)) std::abort();
    return 0;
}
