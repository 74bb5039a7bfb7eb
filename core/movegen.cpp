#include "core/movegen.h"

#include "core/attacks.h"
#include "core/makemove.h"

// Slider directions in generation order, as lines of the board's geometry: the bishop's
// (1, 1), (1, -1), (-1, -1), (-1, 1); the rook's (1, 0), (0, -1), (-1, 0), (0, 1).
constexpr int32_t bishopLines[4] = {0, 2, 3, 1};
constexpr int32_t rookLines[4] = {4, 7, 5, 6};

// Promotion kinds in the order they are written: queen first for pushes and captures towards
// the lower file, knight first for captures towards the higher file.
constexpr int32_t promotionsQueenFirst[4] = {5, 4, 3, 2};
constexpr int32_t promotionsKnightFirst[4] = {2, 3, 4, 5};

static inline void addMove(MoveList& list, int32_t& last, int32_t fromFile, int32_t fromRank,
                           int32_t toFile, int32_t toRank, int32_t promotion) {
    Move& m = list.moves[++last];
    m.fromFile = fromFile;
    m.fromRank = fromRank;
    m.toFile = toFile;
    m.toRank = toRank;
    m.promotion = promotion;
}

static inline void addPawnMove(MoveList& list, int32_t& last, int32_t f, int32_t r, int32_t tf,
                               int32_t tr, bool promotes, const int32_t (&kinds)[4]) {
    if (!promotes) {
        addMove(list, last, f, r, tf, tr, 0);
        return;
    }
    for (int32_t kind : kinds)
        addMove(list, last, f, r, tf, tr, kind);
}

static void pawnMoves(Side side, MoveList& list, int32_t& last, const Position& pos, int32_t f,
                      int32_t r, int32_t mode) {
    const int32_t lastButOne = side > 0 ? 6 : 1;
    const int32_t startRank = side > 0 ? 1 : 6;
    const int32_t enPassantRank = side > 0 ? 4 : 3;
    const int32_t ahead = r + side;
    const bool promotes = r == lastButOne;
    const PieceCode* sq = pos.squares;

    if (sq[squareIndex(f, ahead)] == 0 && (mode == 0 || promotes)) {
        addPawnMove(list, last, f, r, f, ahead, promotes, promotionsQueenFirst);
        if (r == startRank && sq[squareIndex(f, r + 2 * side)] == 0)
            addMove(list, last, f, r, f, r + 2 * side, 0);
    }
    const int32_t passedFile = -side * pos.enPassant; // file + 1 of a capturable double step
    if (f > 0 &&
        (side * sq[squareIndex(f - 1, ahead)] < 0 || (r == enPassantRank && passedFile == f)))
        addPawnMove(list, last, f, r, f - 1, ahead, promotes, promotionsQueenFirst);
    if (f < 7 &&
        (side * sq[squareIndex(f + 1, ahead)] < 0 || (r == enPassantRank && passedFile == f + 2)))
        addPawnMove(list, last, f, r, f + 1, ahead, promotes, promotionsKnightFirst);
}

static void knightMoves(Side side, MoveList& list, int32_t& last, const Position& pos, int32_t f,
                        int32_t r, int32_t mode) {
    const int32_t from = squareIndex(f, r);
    for (int32_t k = 0; k < geometry.knightCount[from]; ++k) {
        const int32_t t = geometry.knights[from][k];
        if (side * pos.squares[t] <= mode) addMove(list, last, f, r, t >> 3, t & 7, 0);
    }
}

static void sliderMoves(Side side, MoveList& list, int32_t& last, const Position& pos, int32_t f,
                        int32_t r, int32_t mode, const int32_t* lines) {
    const int32_t from = squareIndex(f, r);
    for (int32_t i = 0; i < 4; ++i) {
        const int32_t line = lines[i];
        const int32_t step = geometry.step[line];
        int32_t t = from;
        for (int32_t k = geometry.length[from][line]; k > 0; --k) {
            t += step;
            const int32_t seen = side * pos.squares[t];
            if (seen <= mode) addMove(list, last, f, r, t >> 3, t & 7, 0);
            if (seen != 0) break;
        }
    }
}

// Castling that directly follows the king's single step from e1/e8 onto the d- or f-file square
// of the home rank: true when the rights, the empty squares and the safe squares allow it. The
// king is already lifted off its square. The rook itself is not looked at: the rights stand
// for it.
static bool castlingAllowed(Side side, const Position& pos, int32_t home, int32_t steppedFile) {
    const int32_t rights = side > 0 ? pos.whiteCastling : pos.blackCastling;
    const PieceCode* sq = pos.squares;
    if (steppedFile == 3) {
        return (rights & queenSideCastling) && sq[squareIndex(1, home)] == 0 &&
               sq[squareIndex(2, home)] == 0 && sq[squareIndex(3, home)] == 0 &&
               isSquareSafe(pos, side, 4, home) && isSquareSafe(pos, side, 2, home);
    }
    if (steppedFile == 5) {
        return (rights & kingSideCastling) && sq[squareIndex(5, home)] == 0 &&
               sq[squareIndex(6, home)] == 0 && isSquareSafe(pos, side, 4, home) &&
               isSquareSafe(pos, side, 6, home);
    }
    return false;
}

static void kingMoves(Side side, MoveList& list, int32_t& last, Position& pos, int32_t f, int32_t r,
                      int32_t mode) {
    const int32_t home = side > 0 ? 0 : 7;
    const bool onHomeSquare = f == 4 && r == home;
    pos.squares[squareIndex(f, r)] = 0;
    const uint64_t occupied = occupancy(pos);
    // The neighbours file by file and rank by rank upwards, which is square index order.
    for (uint64_t around = geometry.kingMask[squareIndex(f, r)]; around != 0;
         around &= around - 1) {
        const int32_t t = __builtin_ctzll(around);
        if (side * pos.squares[t] > mode) continue;
        if (!squareSafe(pos, occupied, side, t)) continue;
        const int32_t tf = t >> 3;
        const int32_t tr = t & 7;
        addMove(list, last, f, r, tf, tr, 0);
        if (onHomeSquare && tr == home && castlingAllowed(side, pos, home, tf))
            addMove(list, last, f, r, tf == 3 ? 2 : 6, r, 0);
    }
    pos.squares[squareIndex(f, r)] = king * side;
}

int32_t generateMoves(Side side, MoveList& list, Position& pos, const PieceLists& lists,
                      int32_t mode) {
    const int32_t(*own)[2] = lists.slots[sideIndex(side)];
    int32_t last = -1;
    for (int32_t slot = own[0][0]; slot >= 1; --slot) {
        const int32_t f = own[slot][0];
        if (f == -1) continue;
        const int32_t r = own[slot][1];
        switch (side * pos.squares[squareIndex(f, r)]) {
        case pawn:
            pawnMoves(side, list, last, pos, f, r, mode);
            break;
        case knight:
            knightMoves(side, list, last, pos, f, r, mode);
            break;
        case bishop:
            sliderMoves(side, list, last, pos, f, r, mode, bishopLines);
            break;
        case rook:
            sliderMoves(side, list, last, pos, f, r, mode, rookLines);
            break;
        case queen:
            sliderMoves(side, list, last, pos, f, r, mode, bishopLines);
            sliderMoves(side, list, last, pos, f, r, mode, rookLines);
            break;
        case king:
            kingMoves(side, list, last, pos, f, r, mode);
            break;
        default:
            break;
        }
    }
    return last;
}

int32_t generateLegalMoves(Side side, MoveList& list, Position& pos, int32_t mode) {
    const int32_t whiteCastling = pos.whiteCastling;
    const int32_t blackCastling = pos.blackCastling;
    const int32_t enPassant = pos.enPassant;
    PieceLists lists;
    buildPieceLists(pos, lists);
    int32_t last = generateMoves(side, list, pos, lists, mode);
    for (int32_t i = 0; i <= last;) {
        const Move m = list.moves[i];
        const PieceCode captured = pos.squares[squareIndex(m.toFile, m.toRank)];
        PositionKey scratchKey = 0;
        Material scratchMaterial = {{0, 0}};
        int32_t capturedSlot = 0;
        makeMove(scratchKey, side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank,
                 m.promotion, scratchMaterial, capturedSlot);
        const bool legal = isSquareSafe(pos, side, -1, 0);
        unmakeMove(side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
                   captured, capturedSlot);
        pos.whiteCastling = whiteCastling;
        pos.blackCastling = blackCastling;
        pos.enPassant = enPassant;
        if (legal) {
            ++i;
            continue;
        }
        for (int32_t j = i; j < last; ++j)
            list.moves[j] = list.moves[j + 1];
        --last;
    }
    return last;
}

// The king's part of isPseudoLegalMove: a safe neighbour square, or the castling move the
// generator writes right after such a neighbour. The king is lifted for the test.
static int32_t kingMoveIsPseudoLegal(Position& pos, Side side, int32_t ff, int32_t fr, int32_t tf,
                                     int32_t tr) {
    const int32_t home = side > 0 ? 0 : 7;
    int32_t accepted = 0;
    pos.squares[squareIndex(ff, fr)] = 0;
    for (uint64_t around = geometry.kingMask[squareIndex(ff, fr)]; around != 0 && !accepted;
         around &= around - 1) {
        const int32_t n = __builtin_ctzll(around);
        const int32_t nf = n >> 3;
        const int32_t nr = n & 7;
        if (side * pos.squares[n] > 0) continue;
        if (!isSquareSafe(pos, side, nf, nr)) continue;
        if (nf == tf && nr == tr) {
            accepted = 1;
        } else if (ff == 4 && fr == home && nr == home && tr == home && tf - ff == 2 * (nf - ff)) {
            accepted = castlingAllowed(side, pos, home, nf) ? 1 : 0;
        }
    }
    pos.squares[squareIndex(ff, fr)] = king * side;
    return accepted;
}

static int32_t lineIsClear(const Position& pos, int32_t ff, int32_t fr, int32_t tf, int32_t tr) {
    const int32_t df = (tf > ff) - (tf < ff);
    const int32_t dr = (tr > fr) - (tr < fr);
    for (int32_t f = ff + df, r = fr + dr; f != tf || r != tr; f += df, r += dr) {
        if (pos.squares[squareIndex(f, r)] != 0) return 0;
    }
    return 1;
}

int32_t isPseudoLegalMove(Position& pos, Side side, int32_t fromFile, int32_t fromRank,
                          int32_t toFile, int32_t toRank, int32_t promotion) {
    if (!onBoard(fromFile, fromRank) || !onBoard(toFile, toRank)) return 0;
    const int32_t target = side * pos.squares[squareIndex(toFile, toRank)];
    const int32_t kind = side * pos.squares[squareIndex(fromFile, fromRank)];
    if (target > 0 || kind <= 0) return 0;
    const int32_t df = toFile - fromFile;
    const int32_t dr = toRank - fromRank;
    const int32_t adf = df < 0 ? -df : df;
    const int32_t adr = dr < 0 ? -dr : dr;

    switch (kind) {
    case pawn: {
        const int32_t lastButOne = side > 0 ? 6 : 1;
        const int32_t startRank = side > 0 ? 1 : 6;
        const int32_t enPassantRank = side > 0 ? 4 : 3;
        const bool promotes = fromRank == lastButOne;
        bool accepted = false;
        if (df == 0 && dr == side && target == 0) {
            accepted = true;
        } else if (df == 0 && dr == 2 * side && fromRank == startRank && target == 0 &&
                   pos.squares[squareIndex(fromFile, fromRank + side)] == 0) {
            accepted = !promotes;
        } else if (adf == 1 && dr == side) {
            accepted =
                target < 0 || (fromRank == enPassantRank && -side * pos.enPassant == toFile + 1);
        }
        if (!accepted) return 0;
        if (promotes) return promotion >= knight && promotion <= queen ? 1 : 0;
        return promotion == 0 ? 1 : 0;
    }
    case knight:
        return promotion == 0 && ((adf == 1 && adr == 2) || (adf == 2 && adr == 1)) ? 1 : 0;
    case bishop:
        return promotion == 0 && adf == adr && adf != 0 &&
                       lineIsClear(pos, fromFile, fromRank, toFile, toRank)
                   ? 1
                   : 0;
    case rook:
        return promotion == 0 && (df == 0) != (dr == 0) &&
                       lineIsClear(pos, fromFile, fromRank, toFile, toRank)
                   ? 1
                   : 0;
    case queen:
        return promotion == 0 && (adf == adr || df == 0 || dr == 0) && (adf | adr) != 0 &&
                       lineIsClear(pos, fromFile, fromRank, toFile, toRank)
                   ? 1
                   : 0;
    case king:
        if (promotion != 0) return 0;
        return kingMoveIsPseudoLegal(pos, side, fromFile, fromRank, toFile, toRank);
    default:
        return 0;
    }
}
