// The whole command interpreter fed an arbitrary word stream on standard input: searches are
// cut short by the fuzzing poll, files stay in the scratch folder, Auto232 waits give up at
// once, and quit or a fatal position ends one input. After every input the game record is
// consistent.
#include <cstdlib>
#include <unistd.h>

#include "fuzz_support.h"
#include "search/settings.h"
#include "ui/input.h"
#include "ui/loop.h"
#include "ui/record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    setUpProgramOnce();
    if (size > 60000) return 0; // the pipe holds the whole input
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    if (size > 0 && write(ends[1], data, size) != static_cast<ssize_t>(size)) std::abort();
    close(ends[1]);
    if (dup2(ends[0], 0) < 0) std::abort();
    close(ends[0]);
    resetInput();

    GameState& game = freshGame();
    auto232Mode = 0;
    startNewGame(game);
    runCommandLoop(game);
    if (game.loopState != loopFatal) checkGame(game);
    return 0;
}
