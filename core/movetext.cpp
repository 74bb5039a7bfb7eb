#include "core/movetext.h"

// Letters of the promotion kinds 2..5 in move text; index 0 and 1 stand for "no promotion".
constexpr char promotionLetters[6] = {' ', ' ', 'n', 'b', 'r', 'q'};

void moveToText(int32_t fromFile, int32_t fromRank, int32_t toFile, int32_t toRank,
                int32_t promotion, char* text) {
    text[0] = static_cast<char>('a' + fromFile);
    text[1] = static_cast<char>('1' + fromRank);
    text[2] = static_cast<char>('a' + toFile);
    text[3] = static_cast<char>('1' + toRank);
    text[4] = promotion >= knight && promotion <= queen ? promotionLetters[promotion] : ' ';
    text[5] = '\0';
}

static bool isFileLetter(char c) {
    return c >= 'a' && c <= 'h';
}
static bool isRankDigit(char c) {
    return c >= '1' && c <= '8';
}

// Promotion kind named by a letter in either case; `otherwise` for any other character.
static int32_t promotionKind(char c, int32_t otherwise) {
    switch (c) {
    case 'B':
    case 'b':
        return bishop;
    case 'N':
    case 'n':
        return knight;
    case 'Q':
    case 'q':
        return queen;
    case 'R':
    case 'r':
        return rook;
    default:
        return otherwise;
    }
}

// Piece kind named by a piece letter in either case, -1 for anything else.
static int32_t pieceKind(char c) {
    switch (c) {
    case 'K':
    case 'k':
        return king;
    default:
        return promotionKind(c, -1);
    }
}

static int32_t findMove(const MoveList& list, int32_t lastIndex, const Move& wanted) {
    for (int32_t i = 0; i <= lastIndex; ++i) {
        if (sameMove(list.moves[i], wanted)) return i;
    }
    return -1;
}

// Short algebraic reading, scanning the text from the right. Fields of `wanted` that the text
// does not settle stay -1, so that no move matches them.
static int32_t readShortAlgebraic(const char* t, int32_t length, Side side, const Position& pos,
                                  const MoveList& list, int32_t lastIndex) {
    Move wanted = {-1, -1, -1, -1, -1};
    const int32_t last = length - 1;

    if ((t[last] == 'o' || t[last] == 'O') && last >= 1 && t[last - 1] == '-') {
        // Castling: the king's two-file step on its home rank.
        const int32_t home = side > 0 ? 0 : 7;
        wanted = {4, home, last == 4 ? 2 : 6, home, 0};
        return findMove(list, lastIndex, wanted);
    }

    // Promotion: the character after the rightmost '=' or '/'.
    int32_t mark = last;
    while (mark >= 0 && t[mark] != '=' && t[mark] != '/')
        --mark;
    if (mark < 0) {
        wanted.promotion = 0;
    } else if (mark > 0) {
        wanted.promotion = promotionKind(mark + 1 < length ? t[mark + 1] : '\0', -1);
    }

    // Destination: the rightmost rank digit at position 1 or later, after a file letter.
    int32_t digit = last;
    while (digit >= 1 && !isRankDigit(t[digit]))
        --digit;
    if (digit < 1 || !isFileLetter(t[digit - 1])) return -1;
    wanted.toFile = t[digit - 1] - 'a';
    wanted.toRank = t[digit] - '1';

    // What stands left of the destination: a capture or move sign, a from rank, a from file,
    // then the piece letter (none for a pawn).
    int32_t at = digit - 2;
    if (at >= 0 && (t[at] == 'x' || t[at] == '-')) --at;
    int32_t fromRank = -1;
    int32_t fromFile = -1;
    if (at >= 0 && isRankDigit(t[at])) fromRank = t[at--] - '1';
    if (at >= 0 && isFileLetter(t[at])) fromFile = t[at--] - 'a';
    const int32_t kind = at >= 0 ? pieceKind(t[at]) : pawn;

    for (int32_t i = 0; i <= lastIndex && kind > 0; ++i) {
        const Move& m = list.moves[i];
        if (m.toFile != wanted.toFile || m.toRank != wanted.toRank) continue;
        if (fromRank >= 0 && m.fromRank != fromRank) continue;
        if (fromFile >= 0 && m.fromFile != fromFile) continue;
        if (pos.squares[squareIndex(m.fromFile, m.fromRank)] != side * kind) continue;
        wanted.fromFile = m.fromFile;
        wanted.fromRank = m.fromRank;
        break;
    }
    return findMove(list, lastIndex, wanted);
}

// Coordinate reading: from square, an optional '-' or 'x', to square, then a promotion letter,
// optionally after '/' or '='.
static int32_t readCoordinates(const char* t, int32_t length, const MoveList& list,
                               int32_t lastIndex) {
    auto at = [&](int32_t i) { return i < length ? t[i] : '\0'; };
    Move wanted;
    wanted.fromFile = at(0) - 'a';
    wanted.fromRank = at(1) - '1';
    const int32_t dest = at(2) == '-' || at(2) == 'x' ? 3 : 2;
    wanted.toFile = at(dest) - 'a';
    wanted.toRank = at(dest + 1) - '1';
    int32_t promo = dest + 2;
    if (at(promo) == '/' || at(promo) == '=') ++promo;
    wanted.promotion = promotionKind(at(promo), 0);
    return findMove(list, lastIndex, wanted);
}

int32_t parseMoveInput(const char* text, Side side, const Position& pos, const MoveList& list,
                       int32_t lastIndex) {
    int32_t length = 0;
    while (length < moveInputLength && text[length] != '\0')
        ++length;
    if (length == 0 || lastIndex < 0) return -1;
    const int32_t found = readShortAlgebraic(text, length, side, pos, list, lastIndex);
    if (found >= 0) return found;
    return readCoordinates(text, length, list, lastIndex);
}
