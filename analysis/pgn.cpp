#include "analysis/pgn.h"

#include <cstring>

#include "analysis/san.h"
#include "core/fen.h"
#include "core/makemove.h"
#include "core/movegen.h"

namespace {

// No character read ahead.
constexpr int noChar = EOF - 1;
// Longest symbol (move, number, result) kept; PGN asks for at most 255 characters.
constexpr int32_t tokenSize = 256;

// The seven-tag roster in its order, with the value written when a game has none.
struct RosterTag {
    const char* name;
    const char* unknown;
};
constexpr RosterTag roster[7] = {{"Event", "?"}, {"Site", "?"},  {"Date", "????.??.??"},
                                 {"Round", "?"}, {"White", "?"}, {"Black", "?"},
                                 {"Result", "*"}};

enum class TokenKind {
    end,            // the end of the file
    symbol,         // a move, a move number or a result
    string,         // a tag's value
    nag,            // $n
    glyph,          // !, ?, !!, ??, !?, ?!
    comment,        // {...} or ;... (its text is not kept)
    tagOpen,        // [
    tagClose,       // ]
    variationOpen,  // (
    variationClose, // )
    period,         // .
    asterisk,       // *
    bad,            // something that cannot be read; problem says what
};

// One token. text holds a symbol or a string (cut at tokenSize - 1 characters); line is where
// the token began.
struct Token {
    TokenKind kind;
    char text[tokenSize];
    int32_t line;
    const char* problem;
};

int peekChar(PgnReader& r) {
    if (r.peeked == noChar) r.peeked = std::fgetc(r.file);
    return r.peeked;
}

int takeChar(PgnReader& r) {
    const int c = peekChar(r);
    r.peeked = noChar;
    if (c == '\n') {
        ++r.line;
        r.atLineStart = true;
    } else if (c != ' ' && c != '\t' && c != '\r' && c != EOF) {
        r.atLineStart = false;
    }
    return c;
}

void skipLine(PgnReader& r) {
    int c = takeChar(r);
    while (c != '\n' && c != EOF)
        c = takeChar(r);
}

bool isBlankChar(int c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

bool isSymbolChar(int c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '+' || c == '#' || c == '=' || c == ':' || c == '-' || c == '/';
}

// The byte-order mark some editors put before the first line.
bool isByteOrderMark(const PgnReader& r, int c) {
    return r.line == 1 && r.atLineStart && (c == 0xEF || c == 0xBB || c == 0xBF);
}

void readString(PgnReader& r, Token& t) {
    int32_t n = 0;
    for (;;) {
        int c = takeChar(r);
        if (c == EOF || c == '\n') {
            t.kind = TokenKind::bad;
            t.problem = "tag value not closed";
            break;
        }
        if (c == '"') break;
        if (c == '\\') {
            c = takeChar(r);
            if (c == EOF || c == '\n') continue;
        }
        if (n + 1 < tokenSize) t.text[n++] = static_cast<char>(c);
    }
    t.text[n] = '\0';
}

void nextToken(PgnReader& r, Token& t) {
    t.text[0] = '\0';
    t.problem = nullptr;
    for (;;) {
        const int c = peekChar(r);
        t.line = r.line;
        if (c == EOF) {
            t.kind = TokenKind::end;
            return;
        }
        if (isBlankChar(c) || isByteOrderMark(r, c)) {
            takeChar(r);
            continue;
        }
        if (c == '%' && r.atLineStart) { // an escaped line
            skipLine(r);
            continue;
        }
        break;
    }
    const int c = takeChar(r);
    switch (c) {
    case '[':
        t.kind = TokenKind::tagOpen;
        return;
    case ']':
        t.kind = TokenKind::tagClose;
        return;
    case '(':
        t.kind = TokenKind::variationOpen;
        return;
    case ')':
        t.kind = TokenKind::variationClose;
        return;
    case '.':
        t.kind = TokenKind::period;
        return;
    case '*':
        t.kind = TokenKind::asterisk;
        return;
    case ';':
        t.kind = TokenKind::comment;
        skipLine(r);
        return;
    case '{': {
        t.kind = TokenKind::comment;
        int d = takeChar(r);
        while (d != '}' && d != EOF)
            d = takeChar(r);
        if (d == EOF) {
            t.kind = TokenKind::bad;
            t.problem = "comment not closed";
        }
        return;
    }
    case '"':
        t.kind = TokenKind::string;
        readString(r, t);
        return;
    case '$':
        t.kind = TokenKind::nag;
        while (peekChar(r) >= '0' && peekChar(r) <= '9')
            takeChar(r);
        return;
    case '!':
    case '?':
        t.kind = TokenKind::glyph;
        while (peekChar(r) == '!' || peekChar(r) == '?')
            takeChar(r);
        return;
    default:
        break;
    }
    if (!isSymbolChar(c)) {
        t.kind = TokenKind::bad;
        t.problem = "unexpected character";
        if (c > ' ' && c < 127) {
            t.text[0] = static_cast<char>(c);
            t.text[1] = '\0';
        } else {
            std::snprintf(t.text, sizeof t.text, "byte %d", c);
        }
        return;
    }
    t.kind = TokenKind::symbol;
    int32_t n = 0;
    t.text[n++] = static_cast<char>(c);
    while (isSymbolChar(peekChar(r))) {
        const int d = takeChar(r);
        if (n + 1 < tokenSize) {
            t.text[n++] = static_cast<char>(d);
        } else {
            t.kind = TokenKind::bad;
            t.problem = "word longer than 255 characters";
        }
    }
    t.text[t.kind == TokenKind::bad ? 0 : n] = '\0';
}

void report(PgnReader& r, int32_t line, const char* what, const char* detail, const char* after) {
    std::fprintf(r.errors, "Error (%s%s%s%s%s): %s line %d\n", what, detail[0] ? " '" : "", detail,
                 detail[0] ? "'" : "", after, r.name, static_cast<int>(line));
}

bool allDigits(const char* text) {
    for (; *text != '\0'; ++text) {
        if (*text < '0' || *text > '9') return false;
    }
    return true;
}

void copyText(char* to, const char* from, int32_t size) {
    std::strncpy(to, from, static_cast<size_t>(size - 1));
    to[size - 1] = '\0';
}

bool isTagName(const char* text) {
    for (const char* p = text; *p != '\0'; ++p) {
        if (!((*p >= 'a' && *p <= 'z') || (*p >= 'A' && *p <= 'Z') || (*p >= '0' && *p <= '9') ||
              *p == '_'))
            return false;
    }
    return text[0] != '\0';
}

// The rest of a tag pair after its '['. A bad pair is reported and the rest of its line skipped.
void readTag(PgnReader& r, PgnGame& g, int32_t line) {
    Token name;
    Token value;
    Token close;
    nextToken(r, name);
    if (name.kind != TokenKind::symbol || !isTagName(name.text)) {
        report(r, line, "bad tag", "", "");
        if (name.kind != TokenKind::tagClose && name.kind != TokenKind::end && name.line == r.line)
            skipLine(r);
        return;
    }
    nextToken(r, value);
    if (value.kind == TokenKind::string) nextToken(r, close);
    if (value.kind != TokenKind::string || close.kind != TokenKind::tagClose) {
        report(r, line, "bad tag", name.text, "");
        const Token& last = value.kind == TokenKind::string ? close : value;
        if (last.kind != TokenKind::tagClose && last.kind != TokenKind::end && last.line == r.line)
            skipLine(r);
        return;
    }
    if (tagValue(g, name.text) != nullptr) return; // the first of two is kept
    if (g.tagCount == maxTags) {
        report(r, line, "too many tags; left out", name.text, "");
        return;
    }
    copyText(g.tags[g.tagCount].name, name.text, tagNameSize);
    copyText(g.tags[g.tagCount].value, value.text, tagValueSize);
    ++g.tagCount;
}

// The fullmove number of a FEN: its sixth field, 1 when missing or out of range.
int32_t fenMoveNumber(const char* fen) {
    const char* p = fen;
    for (int32_t field = 0; field < 5; ++field) {
        while (*p == ' ' || *p == '\t')
            ++p;
        while (*p != ' ' && *p != '\t' && *p != '\0')
            ++p;
    }
    while (*p == ' ' || *p == '\t')
        ++p;
    int32_t number = 0;
    while (*p >= '0' && *p <= '9' && number < 100000)
        number = number * 10 + (*p++ - '0');
    return number >= 1 ? number : 1;
}

// The start position from the FEN tag, or the standard one; false (reported) for a bad FEN.
bool setUpStart(PgnReader& r, PgnGame& g) {
    const char* fen = tagValue(g, "FEN");
    if (fen == nullptr) {
        setInitialPosition(g.start);
        g.start.sideToMove = white;
        return true;
    }
    if (const char* problem = readFen(fen, g.start)) {
        char what[96];
        std::snprintf(what, sizeof what, "bad FEN tag: %s; game %d skipped", problem,
                      static_cast<int>(r.games));
        report(r, g.line, what, "", "");
        return false;
    }
    g.startFifty = fenHalfmoveClock(fen);
    g.startNumber = fenMoveNumber(fen);
    return true;
}

// The state of the main line while its moves are read.
struct LineState {
    Position pos;
    Side side;
    MoveList legal;
    int32_t lastLegal;
};

void playOnLine(LineState& s, const Move& m) {
    PieceLists lists;
    buildPieceLists(s.pos, lists);
    Material material;
    sumMaterial(s.pos, lists, material);
    PositionKey key = 0;
    playOnBoard(key, s.side, s.pos, lists, m, material);
    s.side = -s.side;
    s.pos.sideToMove = s.side;
    s.lastLegal = generateLegalMoves(s.side, s.legal, s.pos, allMoves);
}

LineState lineState;

} // namespace

bool isResult(const char* text) {
    return std::strcmp(text, "1-0") == 0 || std::strcmp(text, "0-1") == 0 ||
           std::strcmp(text, "1/2-1/2") == 0 || std::strcmp(text, "*") == 0;
}

const char* tagValue(const PgnGame& game, const char* name) {
    for (int32_t i = 0; i < game.tagCount; ++i) {
        if (std::strcmp(game.tags[i].name, name) == 0) return game.tags[i].value;
    }
    return nullptr;
}

void startPgnReader(PgnReader& reader, FILE* file, const char* name, FILE* errors) {
    reader = {file, name, errors, 1, noChar, true, false, 0};
}

GameRead readPgnGame(PgnReader& r, PgnGame& g) {
    g.tagCount = 0;
    g.plyCount = 0;
    g.startFifty = 0;
    g.startNumber = 1;
    std::strcpy(g.result, "*");
    g.line = r.line;
    static Token t;

    // 1. The tags, and comments before the moves.
    bool begun = false;
    if (r.tagPending) {
        r.tagPending = false;
        t.kind = TokenKind::tagOpen;
        t.line = r.line;
    } else {
        nextToken(r, t);
    }
    for (;; nextToken(r, t)) {
        if (t.kind == TokenKind::comment) continue;
        if (t.kind != TokenKind::tagOpen) break;
        if (!begun) {
            ++r.games;
            g.line = t.line;
            begun = true;
        }
        readTag(r, g, t.line);
    }
    if (t.kind == TokenKind::end && !begun) return GameRead::end;
    if (!begun) {
        ++r.games;
        g.line = t.line;
    }

    // 2. The start position.
    bool bad = !setUpStart(r, g);
    LineState& s = lineState;
    if (!bad) {
        s.pos = g.start;
        s.side = g.start.sideToMove;
        s.lastLegal = generateLegalMoves(s.side, s.legal, s.pos, allMoves);
    }

    // 3. The moves, up to the termination marker (or the next game's tags, or the end). After
    //    a problem the rest of the game is read over.
    char after[48];
    std::snprintf(after, sizeof after, "; game %d skipped", static_cast<int>(r.games));
    int32_t depth = 0; // variations open
    for (;; nextToken(r, t)) {
        if (t.kind == TokenKind::end) break;
        if (t.kind == TokenKind::tagOpen) {
            r.tagPending = true;
            break;
        }
        if (t.kind == TokenKind::bad) {
            if (!bad) report(r, t.line, t.problem, t.text, after);
            bad = true;
            continue;
        }
        if (t.kind == TokenKind::variationOpen) {
            ++depth;
            continue;
        }
        if (t.kind == TokenKind::variationClose) {
            if (depth == 0 && !bad) report(r, t.line, "')' without '('", "", after);
            if (depth == 0) bad = true;
            if (depth > 0) --depth;
            continue;
        }
        if (depth > 0) continue;
        if (t.kind == TokenKind::asterisk || (t.kind == TokenKind::symbol && isResult(t.text))) {
            std::strcpy(g.result, t.kind == TokenKind::asterisk ? "*" : t.text);
            break;
        }
        if (t.kind == TokenKind::string || t.kind == TokenKind::tagClose) {
            if (!bad) report(r, t.line, "unexpected tag text in the moves", "", after);
            bad = true;
            continue;
        }
        if (t.kind != TokenKind::symbol || bad || allDigits(t.text)) continue;
        const SanReading read = sanToMove(t.text, s.side, s.pos, s.legal, s.lastLegal);
        if (read.index < 0) {
            report(r, t.line, read.problem, t.text, after);
            bad = true;
        } else if (g.plyCount == maxGamePlies) {
            report(r, t.line, "game longer than 1200 plies", "", after);
            bad = true;
        } else {
            g.moves[g.plyCount++] = s.legal.moves[read.index];
            playOnLine(s, s.legal.moves[read.index]);
        }
    }
    if (depth > 0) {
        if (!bad) report(r, t.line, "variation not closed", "", after);
        bad = true;
    }
    return bad ? GameRead::bad : GameRead::game;
}

void writeFen(const Position& pos, Side side, int32_t fifty, int32_t number, char* text) {
    const char* letters = " PNBRQK";
    char* out = text;
    for (int32_t rank = 7; rank >= 0; --rank) {
        int32_t empty = 0;
        for (int32_t file = 0; file < 8; ++file) {
            const PieceCode code = pos.squares[squareIndex(file, rank)];
            if (code == 0) {
                ++empty;
                continue;
            }
            if (empty > 0) *out++ = static_cast<char>('0' + empty);
            empty = 0;
            const char letter = letters[code > 0 ? code : -code];
            *out++ = code > 0 ? letter : static_cast<char>(letter - 'A' + 'a');
        }
        if (empty > 0) *out++ = static_cast<char>('0' + empty);
        if (rank > 0) *out++ = '/';
    }
    *out++ = ' ';
    *out++ = side > 0 ? 'w' : 'b';
    *out++ = ' ';
    const char* before = out;
    if (pos.whiteCastling & kingSideCastling) *out++ = 'K';
    if (pos.whiteCastling & queenSideCastling) *out++ = 'Q';
    if (pos.blackCastling & kingSideCastling) *out++ = 'k';
    if (pos.blackCastling & queenSideCastling) *out++ = 'q';
    if (out == before) *out++ = '-';
    *out++ = ' ';
    if (pos.enPassant != 0) {
        // The square the pawn of the side not to move passed over.
        *out++ = static_cast<char>('a' + (pos.enPassant > 0 ? pos.enPassant : -pos.enPassant) - 1);
        *out++ = pos.enPassant > 0 ? '3' : '6';
    } else {
        *out++ = '-';
    }
    std::sprintf(out, " %d %d", static_cast<int>(fifty), static_cast<int>(number));
}

void startPgnWriter(PgnWriter& writer, FILE* out) {
    writer.out = out;
    writer.line[0] = '\0';
    writer.length = 0;
}

namespace {

void writeTagLine(FILE* out, const char* name, const char* value) {
    std::fprintf(out, "[%s \"", name);
    for (const char* p = value; *p != '\0'; ++p) {
        if (*p == '"' || *p == '\\') std::fputc('\\', out);
        std::fputc(*p, out);
    }
    std::fputs("\"]\n", out);
}

void flushLine(PgnWriter& w) {
    if (w.length == 0) return;
    w.line[w.length] = '\0';
    std::fprintf(w.out, "%s\n", w.line);
    w.length = 0;
}

} // namespace

void writeTags(PgnWriter& writer, const PgnGame& game, const char* result) {
    for (const RosterTag& tag : roster) {
        const char* value = tagValue(game, tag.name);
        if (std::strcmp(tag.name, "Result") == 0) value = result;
        writeTagLine(writer.out, tag.name, value != nullptr ? value : tag.unknown);
    }
    if (tagValue(game, "FEN") != nullptr) {
        char fen[128];
        writeFen(game.start, game.start.sideToMove, game.startFifty, game.startNumber, fen);
        writeTagLine(writer.out, "SetUp", "1");
        writeTagLine(writer.out, "FEN", fen);
    }
    for (int32_t i = 0; i < game.tagCount; ++i) {
        const char* name = game.tags[i].name;
        bool known = std::strcmp(name, "SetUp") == 0 || std::strcmp(name, "FEN") == 0;
        for (const RosterTag& tag : roster)
            known = known || std::strcmp(name, tag.name) == 0;
        if (!known) writeTagLine(writer.out, name, game.tags[i].value);
    }
    std::fputc('\n', writer.out);
}

void writeToken(PgnWriter& w, const char* token, bool glued) {
    const int32_t length = static_cast<int32_t>(std::strlen(token));
    const bool blank = w.length > 0 && !glued;
    if (w.length + (blank ? 1 : 0) + length > pgnLineWidth) flushLine(w);
    if (length > pgnLineWidth) {
        std::fprintf(w.out, "%s\n", token);
        return;
    }
    if (w.length > 0 && !glued) w.line[w.length++] = ' ';
    std::memcpy(w.line + w.length, token, static_cast<size_t>(length));
    w.length += length;
}

void finishGame(PgnWriter& writer, const char* result) {
    writeToken(writer, result, false);
    flushLine(writer);
    std::fputc('\n', writer.out);
}
