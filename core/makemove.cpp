#include "core/makemove.h"

#include "core/keys.h"
#include "eval/values.h"

// Moves the rook of a castling king from its corner file to the square beside the king.
static void castleRookOut(PositionKey& key, Side side, Position& pos, PieceLists& lists,
                          int32_t cornerFile, int32_t rookFile, int32_t rank) {
    PieceCode rookCode = rook * side;
    int32_t to = squareIndex(rookFile, rank);
    int32_t from = squareIndex(cornerFile, rank);
    pos.squares[to] = rookCode;
    key ^= pieceSquareKeys[keyKind(rookCode)][to];
    pos.squares[from] = 0;
    key ^= pieceSquareKeys[keyKind(rookCode)][from];
    lists.slotOf[to] = lists.slotOf[from];
    lists.slots[sideIndex(side)][lists.slotOf[to]][0] = rookFile;
}

// Castling rights lost on the board as it now stands: a right stays only while its corner
// still holds the side's own rook.
static int32_t rightsAfter(const Position& pos, int32_t rights, Side side) {
    if (rights == 0) return 0;
    int32_t home = side > 0 ? 0 : 7;
    PieceCode ownRook = rook * side;
    if (pos.squares[squareIndex(0, home)] != ownRook) rights &= kingSideCastling;
    if (pos.squares[squareIndex(7, home)] != ownRook) rights &= queenSideCastling;
    return rights;
}

// The change of the key when the castling rights of `side` go from `before` to `after`.
static inline PositionKey castlingKeyChange(Side side, int32_t before, int32_t after) {
    if (before == after) return 0;
    return (before != 0 ? castlingKey(side, before) : 0) ^
           (after != 0 ? castlingKey(side, after) : 0);
}

// The change of the key when the en-passant value goes from `before` to `after`.
static inline PositionKey enPassantKeyChange(int32_t before, int32_t after) {
    if (before == after) return 0;
    return (before != 0 ? enPassantKey(before) : 0) ^ (after != 0 ? enPassantKey(after) : 0);
}

void makeMove(PositionKey& key, Side side, Position& pos, PieceLists& lists, int32_t fromFile,
              int32_t fromRank, int32_t toFile, int32_t toRank, int32_t promotion,
              Material& material, int32_t& capturedSlot) {
    const int32_t oldWhiteCastling = pos.whiteCastling;
    const int32_t oldBlackCastling = pos.blackCastling;
    const int32_t oldEnPassant = pos.enPassant;
    int32_t newEnPassant = 0;
    const int32_t from = squareIndex(fromFile, fromRank);
    const int32_t to = squareIndex(toFile, toRank);
    const int32_t own = sideIndex(side);
    const int32_t enemy = 1 - own;
    const int32_t kind = side * pos.squares[from];

    // Ordinary capture: the enemy piece on the target square leaves the board.
    const PieceCode victim = pos.squares[to];
    if (victim != 0) {
        key ^= pieceSquareKeys[keyKind(victim)][to];
        material.sum[enemy] -= pieceValue[-side * victim];
        capturedSlot = lists.slotOf[to];
        lists.slots[enemy][capturedSlot][0] = -1;
    }

    if (kind == pawn) {
        if (victim == 0 && toFile != fromFile) {
            // En passant: the enemy pawn beside the from square is taken.
            const int32_t passed = squareIndex(toFile, fromRank);
            pos.squares[passed] = 0;
            key ^= pieceSquareKeys[keyKind(-side)][passed];
            material.sum[enemy] -= pieceValue[pawn];
            capturedSlot = lists.slotOf[passed];
            lists.slots[enemy][capturedSlot][0] = -1;
        }
        if (toRank == 0 || toRank == 7) {
            pos.squares[to] = side * promotion;
            key ^= pieceSquareKeys[keyKind(side * promotion)][to];
            material.sum[own] += pieceValue[promotion] - pieceValue[pawn];
        } else {
            pos.squares[to] = side;
            key ^= pieceSquareKeys[keyKind(side)][to];
        }
        if ((toRank - fromRank) * side == 2) newEnPassant = (toFile + 1) * side;
        pos.squares[from] = 0;
        key ^= pieceSquareKeys[keyKind(side)][from];
    } else if (kind == king) {
        setKingSquare(pos, side, toFile, toRank);
        if (toFile - fromFile == 2) castleRookOut(key, side, pos, lists, 7, 5, toRank);
        if (toFile - fromFile == -2) castleRookOut(key, side, pos, lists, 0, 3, toRank);
        const PieceCode code = king * side;
        pos.squares[to] = code;
        key ^= pieceSquareKeys[keyKind(code)][to];
        pos.squares[from] = 0;
        key ^= pieceSquareKeys[keyKind(code)][from];
        castlingOf(pos, side) = 0;
    } else {
        const PieceCode code = kind * side;
        pos.squares[to] = code;
        key ^= pieceSquareKeys[keyKind(code)][to];
        pos.squares[from] = 0;
        key ^= pieceSquareKeys[keyKind(code)][from];
    }

    // The moving piece keeps its slot.
    const int32_t slot = lists.slotOf[from];
    lists.slotOf[to] = slot;
    lists.slots[own][slot][0] = toFile;
    lists.slots[own][slot][1] = toRank;

    // Castling rights follow the rooks on their corners, for both sides.
    pos.whiteCastling = rightsAfter(pos, pos.whiteCastling, white);
    pos.blackCastling = rightsAfter(pos, pos.blackCastling, black);
    key ^= castlingKeyChange(white, oldWhiteCastling, pos.whiteCastling) ^
           castlingKeyChange(black, oldBlackCastling, pos.blackCastling);

    pos.enPassant = newEnPassant;
    key ^= enPassantKeyChange(oldEnPassant, newEnPassant);
}

// Moves a castled rook back to its corner.
static void castleRookBack(Side side, Position& pos, PieceLists& lists, int32_t rookFile,
                           int32_t cornerFile, int32_t rank) {
    const int32_t at = squareIndex(rookFile, rank);
    const int32_t corner = squareIndex(cornerFile, rank);
    pos.squares[at] = 0;
    pos.squares[corner] = rook * side;
    lists.slotOf[corner] = lists.slotOf[at];
    lists.slots[sideIndex(side)][lists.slotOf[corner]][0] = cornerFile;
}

void unmakeMove(Side side, Position& pos, PieceLists& lists, int32_t fromFile, int32_t fromRank,
                int32_t toFile, int32_t toRank, int32_t promotion, PieceCode capturedCode,
                int32_t capturedSlot) {
    const int32_t from = squareIndex(fromFile, fromRank);
    const int32_t to = squareIndex(toFile, toRank);
    const int32_t own = sideIndex(side);
    const int32_t enemy = 1 - own;

    if (promotion != 0) pos.squares[to] = side;
    const int32_t kind = side * pos.squares[to];

    if (kind == pawn) {
        if (capturedCode == 0 && toFile != fromFile) {
            const int32_t passed = squareIndex(toFile, fromRank);
            pos.squares[passed] = -side;
            lists.slotOf[passed] = capturedSlot;
            lists.slots[enemy][capturedSlot][0] = toFile;
            lists.slots[enemy][capturedSlot][1] = fromRank;
        }
        pos.squares[from] = side;
    } else if (kind == king) {
        setKingSquare(pos, side, fromFile, fromRank);
        if (toFile - fromFile == 2) castleRookBack(side, pos, lists, 5, 7, toRank);
        if (toFile - fromFile == -2) castleRookBack(side, pos, lists, 3, 0, toRank);
        pos.squares[from] = king * side;
    } else {
        pos.squares[from] = pos.squares[to];
    }
    const int32_t slot = lists.slotOf[to];
    lists.slotOf[from] = slot;
    lists.slots[own][slot][0] = fromFile;
    lists.slots[own][slot][1] = fromRank;

    pos.squares[to] = capturedCode;
    if (capturedCode != 0) {
        lists.slotOf[to] = capturedSlot;
        lists.slots[enemy][capturedSlot][0] = toFile;
        lists.slots[enemy][capturedSlot][1] = toRank;
    }
}

// Castling rights of `side` after a move from `from` to `to` (rookFrom: the square a castling
// rook leaves, or -1): a right stays only while its corner still holds the side's own rook.
static int32_t rightsAfterMove(const Position& pos, Side side, int32_t rights, int32_t from,
                               int32_t to, int32_t rookFrom) {
    if (rights == 0) return 0;
    const int32_t home = side > 0 ? 0 : 7;
    const PieceCode ownRook = rook * side;
    const auto rookStays = [&](int32_t file) {
        const int32_t corner = squareIndex(file, home);
        return pos.squares[corner] == ownRook && corner != from && corner != to &&
               corner != rookFrom;
    };
    if (!rookStays(0)) rights &= kingSideCastling;
    if (!rookStays(7)) rights &= queenSideCastling;
    return rights;
}

// The keys of the pieces a move takes, lifts and sets down (the castling rook aside): the
// victim, en passant's pawn, the mover, a promoted pawn as its new piece.
static inline PositionKey pieceKeysOfMove(Side side, const Position& pos, const Move& m,
                                          int32_t from, int32_t to) {
    const PieceCode victim = pos.squares[to];
    const PieceCode code = pos.squares[from];
    PositionKey key = pieceSquareKeys[keyKind(code)][from];
    if (victim != 0) key ^= pieceSquareKeys[keyKind(victim)][to];
    if (code != side) return key ^ pieceSquareKeys[keyKind(code)][to];
    if (victim == 0 && m.toFile != m.fromFile)
        key ^= pieceSquareKeys[keyKind(-side)][squareIndex(m.toFile, m.fromRank)];
    const PieceCode arriving = m.toRank == 0 || m.toRank == 7 ? side * m.promotion : side;
    return key ^ pieceSquareKeys[keyKind(arriving)][to];
}

// The en-passant value a move leaves: a pawn's double step marks its file.
static inline int32_t enPassantAfterMove(Side side, const Position& pos, const Move& m,
                                         int32_t from) {
    return pos.squares[from] == side && (m.toRank - m.fromRank) * side == 2 ? (m.toFile + 1) * side
                                                                            : 0;
}

PositionKey keyAfterMove(PositionKey key, Side side, const Position& pos, const Move& m) {
    const int32_t from = squareIndex(m.fromFile, m.fromRank);
    const int32_t to = squareIndex(m.toFile, m.toRank);
    const int32_t kind = side * pos.squares[from];
    const int32_t newEnPassant = enPassantAfterMove(side, pos, m, from);
    int32_t rookFrom = -1;
    int32_t whiteRights = pos.whiteCastling;
    int32_t blackRights = pos.blackCastling;
    key ^= pieceKeysOfMove(side, pos, m, from, to);
    if (kind == king) {
        const PieceCode ownRook = rook * side;
        if (m.toFile - m.fromFile == 2) {
            rookFrom = squareIndex(7, m.toRank);
            key ^= pieceSquareKeys[keyKind(ownRook)][squareIndex(5, m.toRank)] ^
                   pieceSquareKeys[keyKind(ownRook)][rookFrom];
        } else if (m.toFile - m.fromFile == -2) {
            rookFrom = squareIndex(0, m.toRank);
            key ^= pieceSquareKeys[keyKind(ownRook)][squareIndex(3, m.toRank)] ^
                   pieceSquareKeys[keyKind(ownRook)][rookFrom];
        }
        (side > 0 ? whiteRights : blackRights) = 0;
    }
    whiteRights = rightsAfterMove(pos, white, whiteRights, from, to, rookFrom);
    blackRights = rightsAfterMove(pos, black, blackRights, from, to, rookFrom);
    return key ^ castlingKeyChange(white, pos.whiteCastling, whiteRights) ^
           castlingKeyChange(black, pos.blackCastling, blackRights) ^
           enPassantKeyChange(pos.enPassant, newEnPassant);
}

void keysAfterMoves(PositionKey key, Side side, const Position& pos, const MoveList& moves,
                    const int32_t* order, int32_t lastIndex, PositionKey* keys) {
    // What every move changes alike: the en-passant square of the node goes, and the rights
    // become those the corners allow. Only a king's move and a move from or to a corner can
    // change the rights beyond that; they are left to keyAfterMove.
    const bool rights = (pos.whiteCastling | pos.blackCastling) != 0;
    const PositionKey base =
        key ^ enPassantKeyChange(pos.enPassant, 0) ^
        castlingKeyChange(white, pos.whiteCastling, rightsAfter(pos, pos.whiteCastling, white)) ^
        castlingKeyChange(black, pos.blackCastling, rightsAfter(pos, pos.blackCastling, black));
    constexpr uint64_t corners =
        uint64_t{1} << squareIndex(0, 0) | uint64_t{1} << squareIndex(0, 7) |
        uint64_t{1} << squareIndex(7, 0) | uint64_t{1} << squareIndex(7, 7);
    for (int32_t i = 0; i <= lastIndex; ++i) {
        const Move& m = moves.moves[order[i]];
        const int32_t from = squareIndex(m.fromFile, m.fromRank);
        const int32_t to = squareIndex(m.toFile, m.toRank);
        if (rights &&
            (pos.squares[from] == side * king || ((corners >> from | corners >> to) & 1) != 0)) {
            keys[i] = keyAfterMove(key, side, pos, m);
            continue;
        }
        keys[i] = base ^ pieceKeysOfMove(side, pos, m, from, to) ^
                  enPassantKeyChange(0, enPassantAfterMove(side, pos, m, from));
    }
}
