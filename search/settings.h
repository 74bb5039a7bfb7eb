// Settings of the search that the game controller sets and the search reads, and the flag that
// stops a running search.
#pragma once

#include <csignal>
#include <cstdint>

extern int32_t bookEnabled;     // 1: the opening book is consulted; -nobk sets 0
extern int32_t fullWidthDepth;  // minimum full-width depth, eighths of a ply (default 24);
                                // during a search the current iteration depth
extern int32_t quiescenceDepth; // quiescence depth, eighths of a ply (default 48)
extern int32_t searchTimeLimit; // time a search may run, in the units of the front end's
                                // clock (SearchControl::now); 0 or less: no limit

// 1 while a search runs; cleared by the search when the poll raises the stop flag, and by the
// Ctrl-C handler, which may write it at any moment.
extern volatile sig_atomic_t searchRunning;
