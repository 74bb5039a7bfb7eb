// Ctrl-C: the one piece of asynchronous code. It stops a running search (which then plays its
// best move so far) and ends a wait for the Auto232 file; the program goes on.
#pragma once

// The SIGINT handler: re-arms itself, clears searchRunning and auto232Mode, nothing else.
void onInterruptSignal(int signalNumber);

// Installs onInterruptSignal for SIGINT; reads interrupted by it are restarted.
void installInterruptHandler();

#include <cstdint>

#include "search/control.h"

// The console program's clock: calendar seconds.
int64_t calendarSeconds();

// The search's poll, called every 1000 nodes: raises control.StopFlag when input is waiting and
// interruptMode is not 0, when the Auto232 opponent's file has appeared, or when the search's
// time limit has run out. Never clears the flag.
void pollInterruption(SearchControl& control);
