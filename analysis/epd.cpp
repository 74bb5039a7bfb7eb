#include "analysis/epd.h"

#include <cstdio>
#include <cstring>

#include "analysis/san.h"
#include "core/fen.h"
#include "core/movegen.h"

namespace {

// Room for one word of a line (a FEN field, an opcode, an operand); longer ones are cut.
constexpr int32_t wordSize = 128;

MoveList legal;

bool isBlankChar(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

const char* skipBlanks(const char* p) {
    while (isBlankChar(*p))
        ++p;
    return p;
}

// The next word (up to a blank, a ';' or the end) into `word`; returns what follows.
const char* readWord(const char* p, char* word) {
    int32_t n = 0;
    while (*p != '\0' && !isBlankChar(*p) && *p != ';') {
        if (n + 1 < wordSize) word[n++] = *p;
        ++p;
    }
    word[n] = '\0';
    return p;
}

bool allDigits(const char* word) {
    if (*word == '\0') return false;
    for (; *word != '\0'; ++word) {
        if (*word < '0' || *word > '9') return false;
    }
    return true;
}

// Appends as much of `text` as fits to `to` (size bytes, NUL included).
void append(char* to, size_t size, const char* text) {
    size_t n = std::strlen(to);
    for (; *text != '\0' && n + 1 < size; ++text)
        to[n++] = *text;
    to[n] = '\0';
}

// A bad line: `what`, and where given the word concerned in quotes and the opcode it belongs to.
EpdReading bad(const char* what, const char* word = nullptr, const char* opcode = nullptr) {
    EpdReading r = {EpdLineKind::bad, ""};
    append(r.problem, sizeof r.problem, what);
    if (word != nullptr) {
        append(r.problem, sizeof r.problem, " '");
        append(r.problem, sizeof r.problem, word);
        append(r.problem, sizeof r.problem, "'");
    }
    if (opcode != nullptr) {
        append(r.problem, sizeof r.problem, " in ");
        append(r.problem, sizeof r.problem, opcode);
    }
    return r;
}

// One operand: a quoted string (without its quotes) or a word. False for a string not closed.
bool readOperand(const char*& p, char* operand) {
    if (*p != '"') {
        p = readWord(p, operand);
        return true;
    }
    ++p;
    int32_t n = 0;
    while (*p != '\0' && *p != '"') {
        if (n + 1 < wordSize) operand[n++] = *p;
        ++p;
    }
    operand[n] = '\0';
    if (*p != '"') return false;
    ++p;
    return true;
}

} // namespace

EpdReading readEpdLine(const char* text, EpdPosition& out) {
    out.fifty = 0;
    out.id[0] = '\0';
    out.bestCount = 0;
    out.avoidCount = 0;
    const char* p = skipBlanks(text);
    if (*p == '\0' || *p == '#') return {EpdLineKind::comment, ""};

    // 1. The four FEN fields, and the two counters where a full FEN stands there.
    char fen[5 * wordSize];
    char word[wordSize];
    fen[0] = '\0';
    for (int32_t field = 0; field < 4; ++field) {
        p = readWord(skipBlanks(p), word);
        if (word[0] == '\0') return bad("fewer than four FEN fields");
        if (field > 0) std::strcat(fen, " ");
        std::strcat(fen, word);
    }
    char counter[wordSize];
    const char* afterCounter = readWord(skipBlanks(p), counter);
    if (allDigits(counter)) {
        char number[wordSize];
        const char* afterNumber = readWord(skipBlanks(afterCounter), number);
        if (allDigits(number)) {
            std::strcat(fen, " ");
            std::strcat(fen, counter);
            p = afterNumber;
        }
    }
    if (const char* problem = readFen(fen, out.pos)) {
        char what[wordSize] = "bad FEN: ";
        append(what, sizeof what, problem);
        return bad(what);
    }
    out.fifty = fenHalfmoveClock(fen);
    const Side side = out.pos.sideToMove;
    const int32_t last = generateLegalMoves(side, legal, out.pos, allMoves);
    if (last < 0) return bad("no legal move in the position");

    // 2. The operations: an opcode, its operands, a ';' (the last one may lack it).
    for (;;) {
        p = skipBlanks(p);
        if (*p == '\0') break;
        if (*p == ';') {
            ++p;
            continue;
        }
        char opcode[wordSize];
        p = readWord(p, opcode);
        if (!((opcode[0] >= 'a' && opcode[0] <= 'z') || (opcode[0] >= 'A' && opcode[0] <= 'Z')))
            return bad("bad opcode", opcode);
        const bool best = std::strcmp(opcode, "bm") == 0;
        const bool avoid = std::strcmp(opcode, "am") == 0;
        for (;;) {
            p = skipBlanks(p);
            if (*p == '\0' || *p == ';') break;
            char operand[wordSize];
            if (!readOperand(p, operand)) return bad("string not closed", nullptr, opcode);
            if (best || avoid) {
                const SanReading read = sanToMove(operand, side, out.pos, legal, last);
                if (read.index < 0) return bad(read.problem, operand, opcode);
                Move* moves = best ? out.best : out.avoid;
                int32_t& count = best ? out.bestCount : out.avoidCount;
                if (count < maxEpdMoves) moves[count++] = legal.moves[read.index];
            } else if (std::strcmp(opcode, "id") == 0 && out.id[0] == '\0') {
                append(out.id, sizeof out.id, operand);
            } else if (std::strcmp(opcode, "hmvc") == 0 && allDigits(operand)) {
                int32_t fifty = 0;
                for (const char* d = operand; *d != '\0' && fifty < 10000; ++d)
                    fifty = fifty * 10 + (*d - '0');
                out.fifty = fifty < 10000 ? fifty : 10000;
            }
        }
    }
    if (out.bestCount == 0 && out.avoidCount == 0) return bad("no bm or am operation");
    return {EpdLineKind::position, ""};
}

bool solvesPosition(const EpdPosition& position, const Move& m) {
    bool found = position.bestCount == 0;
    for (int32_t i = 0; i < position.bestCount; ++i)
        found = found || sameMove(position.best[i], m);
    for (int32_t i = 0; i < position.avoidCount; ++i)
        found = found && !sameMove(position.avoid[i], m);
    return found;
}
