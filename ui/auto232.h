// Auto232 matches: moves go out through "mymove.txt" and come in through "hismove.txt", both in
// the current folder, while a separate driver carries them between the two programs.
#pragma once

#include <cstdint>

#include "core/types.h"

// Pause between two looks for the opponent's file, and before a move is written; 200 in the
// program.
extern int32_t auto232PauseMilliseconds;

// Looks for the opponent's file before a wait gives up as if interrupted; -1 (the program's
// setting) for no limit. Runs of untrusted command streams bound it.
extern int32_t auto232WaitLimit;

// Waits for "hismove.txt" (a try about every 0.2 seconds, printing a dot for each), reads its
// first word into `word` (inputWordSize bytes) and deletes the file. When Ctrl-C switches the
// mode off meanwhile, says so and yields an empty word.
void waitForOpponentFile(char* word);

// Writes the move about to be recorded at ply `plyCount` to "mymove.txt": a TAB first for a
// Black move, then "e2-e4", "/Q" for a promotion, then carriage return and line feed.
void writeMoveFile(const Move& move, int32_t plyCount);
