// The PGN reader with its set-up block: any bytes give a consistent game record or the fatal
// invalid-position ending, and a loaded game can be stepped back and forth through its record.
#include <cstdlib>

#include "fuzz_support.h"
#include "ui/gamefiles.h"
#include "ui/setup.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    setUpProgramOnce();
    GameState& game = freshGame();
    FILE* file = openBytes(data, size);
    readGameFile(game, file);
    std::fclose(file);
    if (game.loopState == loopFatal) return 0;
    checkGame(game);
    const int32_t plies = game.plyCount;
    goToPly(game, plies / 2);
    checkGame(game);
    goToPly(game, plies);
    checkGame(game);
    if (game.plyCount != plies) std::abort();
    return 0;
}
