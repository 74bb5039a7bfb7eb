#include "core/fen.h"

#include <cstring>
#include <initializer_list>

#include "core/attacks.h"

static const char* pieceLetters = "PNBRQKpnbrqk";

static PieceCode codeOfLetter(char c) {
    const char* at = std::strchr(pieceLetters, c);
    if (c == '\0' || at == nullptr) return 0;
    const int32_t index = static_cast<int32_t>(at - pieceLetters);
    return index < 6 ? index + 1 : -(index - 5);
}

static const char* skipBlanks(const char* p) {
    while (*p == ' ' || *p == '\t')
        ++p;
    return p;
}

// True when the en-passant square (file, rank) names a real double step of the side not to
// move: the square and the one it was crossed from are empty and the pawn stands beyond it.
static bool isRealDoubleStep(const Position& pos, Side toMove, int32_t file, int32_t rank) {
    const int32_t passedRank = toMove > 0 ? 5 : 2;
    if (rank != passedRank) return false;
    const int32_t startRank = toMove > 0 ? 6 : 1;
    const int32_t pawnRank = toMove > 0 ? 4 : 3;
    return pos.squares[squareIndex(file, rank)] == 0 &&
           pos.squares[squareIndex(file, startRank)] == 0 &&
           pos.squares[squareIndex(file, pawnRank)] == -toMove * pawn;
}

const char* readFen(const char* fen, Position& pos) {
    std::memset(&pos, 0, sizeof pos);
    const char* p = skipBlanks(fen);
    int32_t count[2] = {0, 0};
    int32_t kings[2] = {0, 0};
    for (int32_t rank = 7; rank >= 0; --rank) {
        int32_t file = 0;
        while (*p != '/' && *p != ' ' && *p != '\0') {
            if (*p >= '1' && *p <= '8') {
                file += *p - '0';
            } else {
                const PieceCode code = codeOfLetter(*p);
                if (code == 0) return "bad character in the placement";
                if (file > 7) return "rank too long";
                if ((code == pawn || code == -pawn) && (rank == 0 || rank == 7))
                    return "pawn on a back rank";
                pos.squares[squareIndex(file, rank)] = code;
                ++count[code > 0 ? 1 : 0];
                if (code == king || code == -king) {
                    ++kings[code > 0 ? 1 : 0];
                    setKingSquare(pos, code > 0 ? white : black, file, rank);
                }
                ++file;
            }
            if (file > 8) return "rank too long";
            ++p;
        }
        if (file != 8) return "rank too short";
        if (rank > 0) {
            if (*p != '/') return "too few ranks";
            ++p;
        }
    }
    if (kings[0] != 1 || kings[1] != 1) return "not exactly one king each";
    if (count[0] > 16 || count[1] > 16) return "more than 16 pieces of one side";

    p = skipBlanks(p);
    if (*p != 'w' && *p != 'b') return "side to move is neither w nor b";
    const Side toMove = *p == 'w' ? white : black;
    pos.sideToMove = toMove;
    ++p;

    p = skipBlanks(p);
    if (*p == '-') {
        ++p;
    } else {
        while (*p != ' ' && *p != '\0') {
            switch (*p) {
            case 'K':
                pos.whiteCastling |= kingSideCastling;
                break;
            case 'Q':
                pos.whiteCastling |= queenSideCastling;
                break;
            case 'k':
                pos.blackCastling |= kingSideCastling;
                break;
            case 'q':
                pos.blackCastling |= queenSideCastling;
                break;
            default:
                return "bad castling field";
            }
            ++p;
        }
    }
    // A right stays only with the king at home and its rook on its corner.
    for (Side side : {white, black}) {
        const int32_t home = side > 0 ? 0 : 7;
        int32_t& rights = castlingOf(pos, side);
        if (pos.squares[squareIndex(4, home)] != king * side) rights = 0;
        if (pos.squares[squareIndex(7, home)] != rook * side) rights &= ~kingSideCastling;
        if (pos.squares[squareIndex(0, home)] != rook * side) rights &= ~queenSideCastling;
    }

    p = skipBlanks(p);
    if (*p == '-') {
        ++p;
    } else if (*p >= 'a' && *p <= 'h' && p[1] >= '1' && p[1] <= '8') {
        const int32_t file = *p - 'a';
        if (isRealDoubleStep(pos, toMove, file, p[1] - '1')) pos.enPassant = -toMove * (file + 1);
        p += 2;
    } else {
        return "bad en-passant field";
    }
    p = skipBlanks(p);
    while (*p != '\0') {
        if ((*p < '0' || *p > '9') && *p != ' ' && *p != '\t' && *p != '\n' && *p != '\r')
            return "bad move counters";
        ++p;
    }
    if (!isSquareSafe(pos, -toMove, -1, 0)) return "the side not to move is in check";
    return nullptr;
}

int32_t fenHalfmoveClock(const char* fen) {
    // Skip the four fields before it.
    const char* p = skipBlanks(fen);
    for (int32_t field = 0; field < 4; ++field) {
        while (*p != ' ' && *p != '\t' && *p != '\0')
            ++p;
        p = skipBlanks(p);
    }
    int32_t clock = 0;
    while (*p >= '0' && *p <= '9') {
        clock = clock * 10 + (*p - '0');
        if (clock > 10000) clock = 10000;
        ++p;
    }
    return clock;
}
