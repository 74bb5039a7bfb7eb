// The opening book: built from the hand-written source "openings.txt" into "openings.dat", one
// record per line: key high, key low, mark (1 White won, 0 neutral, -1 Black won) and the move's
// five fields.
#pragma once

#include <cstdint>

// Longest source token (and comment rest) that is kept; the rest of a longer one is dropped.
constexpr int32_t bookTokenLength = 49;

// Reads "openings.txt" and writes "openings.dat", reporting on standard output: comments are
// echoed, tokens that are no legal move in the position reached are echoed and skipped. Before
// the first "new" token the board is the start position, White to move, mark 0.
void createBook();
