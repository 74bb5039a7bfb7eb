// Playing a move on a Position in place and taking it back.
//
// Calling protocol, followed by every caller:
//   - before makeMove, read the captured code from the target square and save whiteCastling,
//     blackCastling and enPassant;
//   - give makeMove a copy of the key and of the Material when the old values are needed again;
//   - after unmakeMove, write the three saved fields back: unmakeMove restores neither key,
//     Material, castling fields nor enPassant;
//   - neither operation touches sideToMove.
// Moves are trusted: they must be moves that generateMoves would produce for `side`.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Plays the move of `side` from (fromFile, fromRank) to (toFile, toRank), a pawn becoming
// `promotion` on the last rank. Updates squares, king fields, lists with slotOf, key, material,
// castling rights and enPassant. On a capture (en passant included) writes the captured piece's
// slot to capturedSlot; otherwise leaves it untouched.
void makeMove(PositionKey& key, Side side, Position& pos, PieceLists& lists, int32_t fromFile,
              int32_t fromRank, int32_t toFile, int32_t toRank, int32_t promotion,
              Material& material, int32_t& capturedSlot);

// Takes the move back on squares, king fields and lists only. capturedCode is the code that
// stood on the target square before the move (0 for a quiet move and for en passant);
// capturedSlot is what makeMove wrote.
void unmakeMove(Side side, Position& pos, PieceLists& lists, int32_t fromFile, int32_t fromRank,
                int32_t toFile, int32_t toRank, int32_t promotion, PieceCode capturedCode,
                int32_t capturedSlot);
