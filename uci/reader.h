// Lines from standard input. The program reads them one at a time while it waits, and looks
// at them without waiting while a search runs, so that isready, stop and ponderhit are
// answered at once. One fixed buffer holds what has arrived and is not yet handled.
#pragma once

#include <cstdint>

// Longest line kept; a longer one is dropped whole and reported.
constexpr int32_t maxInputLine = 65535;

// Reads what is waiting on standard input without blocking. Returns false once the input has
// ended (nothing more will come).
bool readWaitingInput();

// The first complete line not yet handled, without its end-of-line characters and with its
// tabs made blanks, or nullptr
// when none has arrived. The text stays valid until dropLine. At the end of the input a last
// line without a newline counts as complete.
const char* peekLine();

// Forgets the line peekLine gave.
void dropLine();

// Waits for the next complete line; nullptr when the input has ended and no line is left.
const char* waitForLine();

// True once a line longer than maxInputLine has been dropped since the last call.
bool takeOverlongNotice();
