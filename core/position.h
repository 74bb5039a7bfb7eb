// The board record and its two companions, the piece lists and the material sums, with the
// start position and the derived values of the root position that the evaluation reads.
#pragma once

#include "core/types.h"

// Start position, eighth rank first, files a to h within a row (so as a diagram reads).
constexpr PieceCode initialDiagram[64] = {
    -4, -2, -3, -5, -6, -3, -2, -4, //
    -1, -1, -1, -1, -1, -1, -1, -1, //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    1,  1,  1,  1,  1,  1,  1,  1,  //
    4,  2,  3,  5,  6,  3,  2,  4,  //
};

// Castling rights of one side, a bit set: 1 king side (h-file rook), 2 queen side (a-file rook).
constexpr int32_t kingSideCastling = 1;
constexpr int32_t queenSideCastling = 2;

// The board: 72 signed 32-bit fields, in the order in which game files write a set-up position.
//   squares[64]     PieceCode of each square, index file * 8 + rank
//   whiteKingFile   square of the White king; always equal to the square that holds it
//   whiteKingRank
//   blackKingFile   square of the Black king
//   blackKingRank
//   whiteCastling   CastlingRights of White (bits 1 and 2)
//   blackCastling   CastlingRights of Black
//   enPassant       0, or (file + 1) * side for the pawn of `side` that has just stepped two
//                   squares on `file`: White's double step on e sets 5, Black's on d sets -4
//   sideToMove      +1 or -1 for a position read from a file; the game's start-position record
//                   holds 0 here for the normal start. The move primitives never read it.
struct Position {
    PieceCode squares[64];
    int32_t whiteKingFile;
    int32_t whiteKingRank;
    int32_t blackKingFile;
    int32_t blackKingRank;
    int32_t whiteCastling;
    int32_t blackCastling;
    int32_t enPassant;
    int32_t sideToMove;
};
static_assert(sizeof(Position) == 72 * sizeof(int32_t), "Position is 72 int32 fields");

inline int32_t kingFile(const Position& pos, Side side) {
    return side > 0 ? pos.whiteKingFile : pos.blackKingFile;
}
inline int32_t kingRank(const Position& pos, Side side) {
    return side > 0 ? pos.whiteKingRank : pos.blackKingRank;
}
inline void setKingSquare(Position& pos, Side side, int32_t file, int32_t rank) {
    if (side > 0) {
        pos.whiteKingFile = file;
        pos.whiteKingRank = rank;
    } else {
        pos.blackKingFile = file;
        pos.blackKingRank = rank;
    }
}
inline int32_t& castlingOf(Position& pos, Side side) {
    return side > 0 ? pos.whiteCastling : pos.blackCastling;
}

// Where each piece of each side stands.
//   slots[i][n]   i = sideIndex (Black 0, White 1); n = 1..16 a slot holding {file, rank} of one
//                 piece, file -1 once the piece is captured (a dead slot stays counted);
//                 slots[i][0][0] is the number of slots in use, slots[i][0][1] unused.
//   slotOf[64]    for an occupied square, the slot of its piece in its own side's list; entries
//                 of empty squares are stale and never read.
// buildPieceLists numbers the slots in square order (a1, a2, ..., h8); during play a piece keeps
// its slot for good, a promoted pawn included.
struct PieceLists {
    int32_t slots[2][17][2];
    int32_t slotOf[64];
};

// Summed pieceValue of each side's live pieces, king included: sum[sideIndex(side)].
struct Material {
    int32_t sum[2];
};

// Derived values of the last position given to derivePositionState (core/derive; normally the
// search's root); they stay fixed for a whole search. Written only by derivePositionState.
extern int32_t materialBalance; // White's Material minus Black's
extern int32_t gamePhase;       // 0 full material .. 5 little material left
extern int32_t lazyMargin;      // gamePhase * 400 + 1200: the evaluation's lazy cut-off margin

// Writes the start position: both castling fields 3, no en passant, White to move.
void setInitialPosition(Position& pos);

// Builds both lists and slotOf from squares alone, numbering slots in square order.
void buildPieceLists(const Position& pos, PieceLists& lists);

// Sums pieceValue over the live slots of both lists.
void sumMaterial(const Position& pos, const PieceLists& lists, Material& material);

// Too little material to mate: a bare king against a bare king or a king with a single knight
// or bishop (material 15000 with three pawns plays on). The game's adjudication and the search's
// draw test share it.
bool noMatingMaterial(const Material& material, const PieceLists& lists);
