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

// What a caller of the pair saves, following the calling protocol: the captured code, the
// captured slot makeMove reports, and the three fields unmakeMove does not restore.
struct MoveUndo {
    PieceCode captured;
    int32_t capturedSlot;
    int32_t whiteCastling;
    int32_t blackCastling;
    int32_t enPassant;
};

// makeMove of `m`, saving what takeBack needs.
inline MoveUndo playOnBoard(PositionKey& key, Side side, Position& pos, PieceLists& lists,
                            const Move& m, Material& material) {
    MoveUndo undo = {pos.squares[squareIndex(m.toFile, m.toRank)], 0, pos.whiteCastling,
                     pos.blackCastling, pos.enPassant};
    makeMove(key, side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
             material, undo.capturedSlot);
    return undo;
}

// unmakeMove of `m`, then the saved fields written back.
inline void takeBack(Side side, Position& pos, PieceLists& lists, const Move& m,
                     const MoveUndo& undo) {
    unmakeMove(side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
               undo.captured, undo.capturedSlot);
    pos.whiteCastling = undo.whiteCastling;
    pos.blackCastling = undo.blackCastling;
    pos.enPassant = undo.enPassant;
}

// The key the position would have after the move of `side`, exactly as makeMove leaves it, with
// the position untouched: the search uses it to look at a child's table entry before (or
// without) making the move.
PositionKey keyAfterMove(PositionKey key, Side side, const Position& pos, const Move& m);

// keyAfterMove for moves.moves[order[i]], i from 0 to lastIndex, into keys[i]: the node's
// children all at once, with what every move changes alike worked out once.
void keysAfterMoves(PositionKey key, Side side, const Position& pos, const MoveList& moves,
                    const int32_t* order, int32_t lastIndex, PositionKey* keys);
