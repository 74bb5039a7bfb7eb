// The move reader against the legal moves of positions reached by fuzz-chosen moves: whatever
// the text, it names a legal move or none, and the position is left alone; every legal move's
// own text reads back as that move.
#include <cstdlib>
#include <cstring>

#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "fuzz_support.h"
#include "ui/record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    setUpProgramOnce();
    GameState& game = freshGame();
    // The first bytes choose moves from the start position (0 ends the walk).
    size_t at = 0;
    while (at < size && at < 40 && data[at] != 0) {
        const int32_t last = generateLegalMoves(game.turn, game.legalMoves, game.position, 0);
        if (last < 0) break;
        recordMove(game, game.legalMoves.moves[data[at] % (last + 1)]);
        game.turn = -game.turn;
        ++at;
    }
    if (at < size) ++at;
    checkGame(game);
    const int32_t last = generateLegalMoves(game.turn, game.legalMoves, game.position, 0);
    const Position before = game.position;

    char text[64] = {};
    const size_t length = size - at < sizeof text - 1 ? size - at : sizeof text - 1;
    std::memcpy(text, data + at, length);
    const int32_t found = parseMoveInput(text, game.turn, game.position, game.legalMoves, last);
    if (found < -1 || found > last) std::abort();
    if (std::memcmp(&before, &game.position, sizeof before) != 0) std::abort();

    for (int32_t i = 0; i <= last; ++i) {
        MoveText own = moveText(game.legalMoves.moves[i]);
        if (own.text[4] == ' ') own.text[4] = '\0';
        if (parseMoveInput(own.text, game.turn, game.position, game.legalMoves, last) != i)
            std::abort();
    }
    return 0;
}
