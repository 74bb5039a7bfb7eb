// The units and basic types every subsystem shares. No other file redefines a scale.
//
//   Board       a square is (file 0..7 = a..h, rank 0..7 = ranks 1..8), always passed as two
//               integers; a board array is indexed file * 8 + rank, so a file's squares are
//               consecutive (a1, a2, ..., a8, b1, ...).
//   Evaluation  a pawn is 1000, seen from White's side (positive is good for White).
//   Search      twice the evaluation, seen from the side to move, always even; the bound a
//               search call is asked about is odd; a side mated at distance d (eighths of a ply)
//               scores d - 1000000.
//   Depth       depths and distances of the search count in eighths of a ply (8 = one half-move).
//   Time        whole seconds of the calendar clock (xboard's centiseconds excepted).
#pragma once

#include <cstdint>

// A piece on a square: 0 empty; 1 pawn, 2 knight, 3 bishop, 4 rook, 5 queen, 6 king;
// positive for White, negative for Black.
using PieceCode = int32_t;

// +1 White, -1 Black. Used as a multiplier: side * code is the piece's kind (1..6) for a piece of
// `side`, minus the kind for an enemy piece, 0 for an empty square.
using Side = int32_t;

// Zobrist key over pieces, castling rights and en passant (not the side to move).
// Where it is stored in halves, the high half is bits 63..32.
using PositionKey = uint64_t;

constexpr Side white = 1;
constexpr Side black = -1;

constexpr int32_t pawn = 1;
constexpr int32_t knight = 2;
constexpr int32_t bishop = 3;
constexpr int32_t rook = 4;
constexpr int32_t queen = 5;
constexpr int32_t king = 6;

// Index of a side in two-element per-side arrays (Material, PieceLists): Black 0, White 1.
constexpr int32_t sideIndex(Side side) {
    return (side + 1) >> 1;
}

constexpr int32_t squareIndex(int32_t file, int32_t rank) {
    return file * 8 + rank;
}

constexpr bool onBoard(int32_t file, int32_t rank) {
    return static_cast<uint32_t>(file) < 8 && static_cast<uint32_t>(rank) < 8;
}

// One move, as the generator writes it:
//   fromFile, fromRank, toFile, toRank   0..7 each
//   promotion                            0, or the new kind 2..5 of a pawn reaching the last rank
// Castling is the king's two-file step; en passant is the pawn's diagonal step to the empty
// square behind the enemy pawn. A from-file of -1 marks the end of a game record.
struct Move {
    int32_t fromFile;
    int32_t fromRank;
    int32_t toFile;
    int32_t toRank;
    int32_t promotion;
};

constexpr bool sameMove(const Move& a, const Move& b) {
    return a.fromFile == b.fromFile && a.fromRank == b.fromRank && a.toFile == b.toFile &&
           a.toRank == b.toRank && a.promotion == b.promotion;
}

// Capacity of every move list. A side has at most 16 pieces and no piece more than 27 moves, so
// a king and 15 others make at most 15 * 27 + 8 = 413 moves.
constexpr int32_t maxMoves = 500;

// A caller-provided list of moves. Generators return the index of the last move written, -1 for
// none, so the number of moves is that index plus one.
struct MoveList {
    Move moves[maxMoves];
};

// A move as text: from square, to square, then a promotion letter (n, b, r, q) or a blank, and
// a terminating NUL. "e2e4 ", "a7a8q".
struct MoveText {
    char text[6];
};

// What a move attacks: 0 nothing, 1 a piece, 2 the king.
using ThreatKind = int32_t;
