#include "fuzz_support.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "core/derive.h"
#include "core/keys.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/settings.h"
#include "search/transtable.h"
#include "ui/auto232.h"
#include "ui/gamefiles.h"
#include "ui/record.h"

// Nodes a search may visit before the fuzzing poll stops it.
constexpr int64_t fuzzNodeLimit = 3000;

static void fuzzPoll(SearchControl& control) {
    if (nodeCount > fuzzNodeLimit) control.StopFlag = 1;
}

void setUpProgramOnce() {
    static bool done = false;
    if (done) return;
    done = true;
    initPositionKeys();
    fillMaterialScale();
    hashBits = 10;
    if (!allocateTranspositionTables() || !allocateHistoryTable()) std::abort();
    clearSearchTables();
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
    char folder[] = "/tmp/kovrel-fuzz-XXXXXX";
    if (mkdtemp(folder) == nullptr || chdir(folder) != 0) std::abort();
    plainFileNamesOnly = true;
    auto232PauseMilliseconds = 0;
    auto232WaitLimit = 2;
}

GameState& freshGame() {
    static GameState game;
    resetGameState(game);
    game.search.pollFunction = fuzzPoll;
    searchTimeLimit = 0;
    return game;
}

void checkGame(const GameState& game) {
    if (game.plyCount < 0 || game.plyCount > maxGamePlies) std::abort();
    if (game.search.keyCount != game.plyCount) std::abort();
    if (game.turn != white && game.turn != black) std::abort();
    if (game.search.fiftyMoveCounter < 0 || game.search.fiftyMoveCounter > game.search.keyCount)
        std::abort();
    if (!positionIsOk(game.position, game.lists, game.material,
                      game.search.keyHistory[game.search.keyCount]))
        std::abort();
}

FILE* openBytes(const uint8_t* data, size_t size) {
    // fmemopen of zero bytes is refused on some systems: keep one byte of room.
    static char buffer[1 << 16];
    const size_t n = size < sizeof buffer ? size : sizeof buffer;
    std::memcpy(buffer, data, n);
    FILE* file = fmemopen(buffer, n > 0 ? n : 1, "r");
    if (file == nullptr) std::abort();
    if (n == 0) std::fgetc(file);
    return file;
}

void writeFile(const char* name, const uint8_t* data, size_t size) {
    FILE* file = std::fopen(name, "wb");
    if (file == nullptr) std::abort();
    if (size > 0 && std::fwrite(data, 1, size, file) != size) std::abort();
    std::fclose(file);
}
