// The opening book: built from the hand-written source "openings.txt" into "openings.dat", one
// record per line: key high, key low, mark (1 White won, 0 neutral, -1 Black won) and the move's
// five fields.
#pragma once

#include <cstdint>

#include "core/types.h"

// Longest source token (and comment rest) that is kept; the rest of a longer one is dropped.
constexpr int32_t bookTokenLength = 49;

// Reads "openings.txt" and writes "openings.dat", reporting on standard output: comments are
// echoed, tokens that are no legal move in the position reached are echoed and skipped. Before
// the first "new" token the board is the start position, White to move, mark 0.
void createBook();

// Longest path of the built book, with its NUL.
constexpr int32_t bookPathSize = 4096;
// The built book probeBook reads: "openings.dat" in the current folder unless a front end
// names another file. Program-wide, set before a search.
extern char bookFile[bookPathSize];

// What a look at a built book finds: whether it opens, how many complete records it holds, and
// whether anything in it is not a record this program writes (reading stops there).
struct BookCheck {
    bool opened;
    int32_t records;
    bool damaged;
};
BookCheck checkBook(const char* path);

// probeBook's answers besides a move index.
constexpr int32_t noBookMove = -1;
constexpr int32_t bookMissing = -2; // bookFile cannot be opened

// Looks the root position up in bookFile: among the records of this key that were not
// lost by the side to move, those of the best mark are chosen from uniformly (one draw of the
// random source per candidate record). Returns the index in `moves` of the chosen move, found in
// the order of `order`, or noBookMove, or bookMissing.
int32_t probeBook(PositionKey key, Side side, const MoveList& moves, const int32_t* order,
                  int32_t lastIndex);
