#include "search/book.h"

#include <cstdio>

#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "core/position.h"

static bool isBlank(int c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Next whitespace-separated token of the source, cut to bookTokenLength characters. False at
// the end of the file.
static bool readToken(FILE* file, char* token) {
    int c = std::getc(file);
    while (c != EOF && isBlank(c))
        c = std::getc(file);
    int32_t length = 0;
    while (c != EOF && !isBlank(c)) {
        if (length < bookTokenLength) token[length++] = static_cast<char>(c);
        c = std::getc(file);
    }
    if (c != EOF) std::ungetc(c, file);
    token[length] = '\0';
    return length > 0;
}

// The rest of the current line, cut to bookTokenLength characters; the line end stays unread.
static void readRestOfLine(FILE* file, char* rest) {
    int32_t length = 0;
    int c = std::getc(file);
    while (c != EOF && c != '\n') {
        if (length < bookTokenLength) rest[length++] = static_cast<char>(c);
        c = std::getc(file);
    }
    if (c != EOF) std::ungetc(c, file);
    rest[length] = '\0';
}

void createBook() {
    FILE* source = std::fopen("openings.txt", "rt");
    if (source == nullptr) {
        std::printf("Error (fopen(\"openings.txt\", \"rt\")): createbook\n");
        return;
    }
    FILE* target = std::fopen("openings.dat", "wt");
    if (target == nullptr) {
        std::printf("Error (fopen(\"openings.dat\", \"wt\")): createbook\n");
        std::fclose(source);
        return;
    }
    std::printf("processing file...");
    bool atLineStart = false;

    Position pos;
    setInitialPosition(pos);
    Side side = white;
    long mark = 0;
    char token[bookTokenLength + 1];
    while (readToken(source, token)) {
        if (token[0] == '#') {
            char rest[bookTokenLength + 1];
            readRestOfLine(source, rest);
            std::printf("#%s\n", rest);
            atLineStart = true;
        } else if (token[0] == 'n' && token[1] == 'e') {
            setInitialPosition(pos);
            side = white;
            mark = 0;
        } else if (token[0] == 'w' && token[1] == 'h') {
            mark = 1;
        } else if (token[0] == 'b' && token[1] == 'l') {
            mark = -1;
        } else {
            PositionKey key;
            PieceLists lists;
            Material material;
            derivePositionState(pos, key, lists, material);
            MoveList moves;
            const int32_t last = generateLegalMoves(side, moves, pos, allMoves);
            const int32_t found = parseMoveInput(token, side, pos, moves, last);
            if (found < 0) {
                std::printf("%s ", token);
                atLineStart = false;
                continue;
            }
            const Move& m = moves.moves[found];
            std::fprintf(
                target, "%lu %lu %ld %ld %ld %ld %ld %ld\n", static_cast<unsigned long>(key >> 32),
                static_cast<unsigned long>(key & 0xFFFFFFFFu), mark, static_cast<long>(m.fromFile),
                static_cast<long>(m.fromRank), static_cast<long>(m.toFile),
                static_cast<long>(m.toRank), static_cast<long>(m.promotion));
            int32_t capturedSlot = 0;
            makeMove(key, side, pos, lists, m.fromFile, m.fromRank, m.toFile, m.toRank, m.promotion,
                     material, capturedSlot);
            side = -side;
        }
    }
    std::fflush(target);
    std::fclose(target);
    if (!atLineStart) std::printf("\n");
    std::printf("openings book created in \"openings.dat\"\n");
    std::fclose(source);
}
