// Move generation: pseudo-legal moves in a fixed order, the legal filter, and a test of one move.
//
// The order in which generateMoves writes moves is the order in which the search meets moves
// that its ordering scores do not tell apart: pieces from the highest list slot down to slot 1;
// for each piece its moves in the piece's fixed direction order.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Generation modes: a piece may move to a square whose code c satisfies side * c <= mode.
constexpr int32_t allMoves = 0;      // empty or enemy-occupied targets
constexpr int32_t capturesOnly = -1; // enemy-occupied targets (pawn pushes to the last rank too)

// Writes the pseudo-legal moves of `side` into `list` and returns the index of the last one, -1
// for none. Non-king moves may leave the own king attacked; king moves go to safe squares only
// and castling is generated only when fully legal. The moving king is lifted off its square
// during its own turn and put back.
int32_t generateMoves(Side side, MoveList& list, Position& pos, const PieceLists& lists,
                      int32_t mode);

// The strictly legal moves of `side`, in generation order; returns the index of the last one, -1
// for mate or stalemate. Builds its own piece lists; leaves the position as it found it.
int32_t generateLegalMoves(Side side, MoveList& list, Position& pos, int32_t mode);

// 1 when generateMoves in mode allMoves would produce exactly this move for `side`, else 0.
// Leaves the position as it found it.
int32_t isPseudoLegalMove(Position& pos, Side side, int32_t fromFile, int32_t fromRank,
                          int32_t toFile, int32_t toRank, int32_t promotion);

// Kind (1..6) of the enemy piece that move m of `side` takes, 0 for a move that takes nothing.
// A pawn's diagonal move to the empty square behind an enemy pawn that has just stepped two
// squares takes that pawn: en passant is a capture of a pawn.
inline int32_t capturedKind(const Position& pos, Side side, const Move& m) {
    const int32_t target = -side * pos.squares[squareIndex(m.toFile, m.toRank)];
    if (target > 0) return target;
    if (m.fromFile != m.toFile && side * pos.squares[squareIndex(m.fromFile, m.fromRank)] == pawn)
        return pawn;
    return 0;
}
