#include "analysis/san.h"

#include <cstring>

#include "core/attacks.h"
#include "core/makemove.h"
#include "core/movegen.h"

namespace {

// Letters of the piece kinds 1..6 in SAN (a pawn has none).
constexpr char pieceLetter[7] = {' ', ' ', 'N', 'B', 'R', 'Q', 'K'};

// Kind named by an upper-case SAN piece letter, 0 for anything else.
int32_t kindOfLetter(char c) {
    for (int32_t kind = knight; kind <= king; ++kind) {
        if (pieceLetter[kind] == c) return kind;
    }
    return 0;
}

// Promotion kind of a letter in either case (game files from some sources write "e8=q"), 0 for
// anything else.
int32_t promotionOfLetter(char c) {
    const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    const int32_t kind = kindOfLetter(upper);
    return kind >= knight && kind <= queen ? kind : 0;
}

bool isFile(char c) {
    return c >= 'a' && c <= 'h';
}
bool isRank(char c) {
    return c >= '1' && c <= '8';
}

bool isCastling(const Position& pos, const Move& m) {
    const PieceCode mover = pos.squares[squareIndex(m.fromFile, m.fromRank)];
    return (mover == king || mover == -king) &&
           (m.toFile - m.fromFile == 2 || m.fromFile - m.toFile == 2);
}

// What a SAN word asks for; -1 in the fields it leaves open.
struct SanPattern {
    int32_t kind;
    int32_t fromFile;
    int32_t fromRank;
    int32_t toFile;
    int32_t toRank;
    int32_t promotion;
    int32_t castleToFile; // 6 or 2 for castling, else -1
};

// Parses the word (check marks already removed) into a pattern; false when it is no SAN.
bool parsePattern(const char* t, int32_t length, SanPattern& p) {
    p = {pawn, -1, -1, -1, -1, 0, -1};
    if (std::strncmp(t, "O-O-O", 5) == 0 || std::strncmp(t, "0-0-0", 5) == 0) {
        p.castleToFile = 2;
        return length == 5;
    }
    if (std::strncmp(t, "O-O", 3) == 0 || std::strncmp(t, "0-0", 3) == 0) {
        p.castleToFile = 6;
        return length == 3;
    }
    int32_t end = length; // one past the destination square
    const int32_t promotion = length >= 3 ? promotionOfLetter(t[length - 1]) : 0;
    if (isFile(t[0])) {
        // A pawn: "e4", "exd5", "e8=Q" (the sign may be left out), "exd8=Q".
        if (promotion != 0) {
            p.promotion = promotion;
            end = t[length - 2] == '=' ? length - 2 : length - 1;
        }
        if (end == 2) {
            p.fromFile = t[0] - 'a';
        } else if (end == 4 && t[1] == 'x') {
            p.fromFile = t[0] - 'a';
        } else {
            return false;
        }
    } else {
        p.kind = kindOfLetter(t[0]);
        if (p.kind == 0 || length < 3) return false;
        // Between the letter and the destination: a file, a rank, both, then a capture sign.
        int32_t at = 1;
        if (at < end - 2 && isFile(t[at])) p.fromFile = t[at++] - 'a';
        if (at < end - 2 && isRank(t[at])) p.fromRank = t[at++] - '1';
        if (at < end - 2 && t[at] == 'x') ++at;
        if (at != end - 2) return false;
    }
    if (end < 2 || !isFile(t[end - 2]) || !isRank(t[end - 1])) return false;
    p.toFile = t[end - 2] - 'a';
    p.toRank = t[end - 1] - '1';
    return true;
}

bool fits(const SanPattern& p, const Position& pos, Side side, const Move& m) {
    if (p.castleToFile >= 0) {
        const int32_t home = side > 0 ? 0 : 7;
        return isCastling(pos, m) && m.fromRank == home && m.toFile == p.castleToFile;
    }
    if (pos.squares[squareIndex(m.fromFile, m.fromRank)] != side * p.kind) return false;
    if (p.kind == king && isCastling(pos, m)) return false; // castling is written O-O
    return m.toFile == p.toFile && m.toRank == p.toRank && m.promotion == p.promotion &&
           (p.fromFile < 0 || m.fromFile == p.fromFile) &&
           (p.fromRank < 0 || m.fromRank == p.fromRank);
}

} // namespace

bool sideInCheck(const Position& pos, Side side) {
    return isSquareSafe(pos, side, -1, 0) == 0;
}

SanText moveToSan(Position& pos, Side side, const Move& m) {
    SanText san = {};
    char* out = san.text;
    const int32_t kind = side * pos.squares[squareIndex(m.fromFile, m.fromRank)];
    const bool capture = pos.squares[squareIndex(m.toFile, m.toRank)] != 0 || // en passant:
                         (kind == pawn && m.fromFile != m.toFile);            // a pawn's diagonal
    if (isCastling(pos, m)) {
        std::strcpy(out, m.toFile == 6 ? "O-O" : "O-O-O");
        out += std::strlen(out);
    } else if (kind == pawn) {
        if (capture) {
            *out++ = static_cast<char>('a' + m.fromFile);
            *out++ = 'x';
        }
    } else {
        *out++ = pieceLetter[kind];
        // Disambiguation: the file if it tells the pieces apart, else the rank, else both.
        static MoveList legal;
        const int32_t last = generateLegalMoves(side, legal, pos, allMoves);
        bool rival = false;
        bool sameFile = false;
        bool sameRank = false;
        for (int32_t i = 0; i <= last; ++i) {
            const Move& o = legal.moves[i];
            if (o.toFile != m.toFile || o.toRank != m.toRank) continue;
            if (o.fromFile == m.fromFile && o.fromRank == m.fromRank) continue;
            if (pos.squares[squareIndex(o.fromFile, o.fromRank)] != side * kind) continue;
            rival = true;
            sameFile = sameFile || o.fromFile == m.fromFile;
            sameRank = sameRank || o.fromRank == m.fromRank;
        }
        if (rival && (!sameFile || sameRank)) *out++ = static_cast<char>('a' + m.fromFile);
        if (rival && sameFile) *out++ = static_cast<char>('1' + m.fromRank);
        if (capture) *out++ = 'x';
    }
    if (!isCastling(pos, m)) {
        *out++ = static_cast<char>('a' + m.toFile);
        *out++ = static_cast<char>('1' + m.toRank);
        if (m.promotion >= knight && m.promotion <= queen) {
            *out++ = '=';
            *out++ = pieceLetter[m.promotion];
        }
    }

    // Check or mate: play the move on a copy and look at the opponent.
    Position after = pos;
    PieceLists lists;
    buildPieceLists(after, lists);
    Material material;
    sumMaterial(after, lists, material);
    PositionKey key = 0;
    int32_t capturedSlot = 0;
    makeMove(key, side, after, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
             material, capturedSlot);
    if (sideInCheck(after, -side)) {
        static MoveList replies;
        *out++ = generateLegalMoves(-side, replies, after, allMoves) < 0 ? '#' : '+';
    }
    *out = '\0';
    return san;
}

SanReading sanToMove(const char* text, Side side, const Position& pos, const MoveList& list,
                     int32_t lastIndex) {
    int32_t length = 0;
    while (length < sanSize && text[length] != '\0')
        ++length;
    if (length == sanSize) return {-1, "not a move"};
    while (length > 0 && (text[length - 1] == '+' || text[length - 1] == '#'))
        --length;
    SanPattern pattern;
    if (length < 2 || !parsePattern(text, length, pattern)) return {-1, "not a move"};
    int32_t found = -1;
    for (int32_t i = 0; i <= lastIndex; ++i) {
        if (!fits(pattern, pos, side, list.moves[i])) continue;
        if (found >= 0) return {-1, "ambiguous move"};
        found = i;
    }
    if (found < 0) return {-1, "illegal move"};
    return {found, nullptr};
}
