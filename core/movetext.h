// Moves as text: the program's fixed five-character output form, and the reading of what a user
// or an opponent program types.
#pragma once

#include "core/position.h"
#include "core/types.h"

// How many characters of an input word the move reader examines.
constexpr int32_t moveInputLength = 9;

// Writes from square, to square and a promotion letter ('n', 'b', 'r', 'q' for 2..5) or a blank,
// then NUL, into a buffer of at least 6 characters.
void moveToText(int32_t fromFile, int32_t fromRank, int32_t toFile, int32_t toRank,
                int32_t promotion, char* text);

inline MoveText moveText(const Move& m) {
    MoveText t;
    moveToText(m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion, t.text);
    return t;
}

// Index in `list` (moves 0..lastIndex, normally the legal moves of `side`) of the move that
// `text` names, -1 for none. Reads short algebraic first (e4, Nbd2, exd5, a8=Q, o-o-o), then
// coordinates (e2e4, e2-e4, a7a8q). Only the first nine characters are examined. Never builds
// a move: whatever it returns comes from the list.
int32_t parseMoveInput(const char* text, Side side, const Position& pos, const MoveList& list,
                       int32_t lastIndex);
