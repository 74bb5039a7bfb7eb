#include "search/book.h"

#include <cstdio>

#include "core/derive.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "core/position.h"
#include "core/textfile.h"

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
    while (readFileWord(source, token, bookTokenLength + 1)) {
        if (token[0] == '#') {
            char rest[bookTokenLength + 1];
            readRestOfFileLine(source, rest, bookTokenLength + 1);
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

char bookFile[bookPathSize] = "openings.dat";

BookCheck checkBook(const char* path) {
    BookCheck check = {false, 0, false};
    FILE* book = std::fopen(path, "rt");
    if (book == nullptr) return check;
    check.opened = true;
    unsigned long high;
    unsigned long low;
    long mark;
    long fields[5];
    int read;
    while ((read = std::fscanf(book, "%lu %lu %ld %ld %ld %ld %ld %ld", &high, &low, &mark,
                               &fields[0], &fields[1], &fields[2], &fields[3], &fields[4])) == 8) {
        const bool sane = mark >= -1 && mark <= 1 && fields[0] >= 0 && fields[0] <= 7 &&
                          fields[1] >= 0 && fields[1] <= 7 && fields[2] >= 0 && fields[2] <= 7 &&
                          fields[3] >= 0 && fields[3] <= 7 && fields[4] >= 0 && fields[4] <= 5;
        if (!sane) check.damaged = true;
        ++check.records;
    }
    if (read != EOF) check.damaged = true; // reading stopped at something that is no record
    std::fclose(book);
    return check;
}

int32_t probeBook(PositionKey key, Side side, const MoveList& moves, const int32_t* order,
                  int32_t lastIndex) {
    FILE* book = std::fopen(bookFile, "rt");
    if (book == nullptr) return bookMissing;
    const unsigned long keyHigh = static_cast<unsigned long>(key >> 32);
    const unsigned long keyLow = static_cast<unsigned long>(key & 0xFFFFFFFFu);
    long best = -1000000000;
    long count = 0;
    int32_t chosen = noBookMove;
    unsigned long high;
    unsigned long low;
    long mark;
    long fields[5];
    while (std::fscanf(book, "%lu %lu %ld %ld %ld %ld %ld %ld", &high, &low, &mark, &fields[0],
                       &fields[1], &fields[2], &fields[3], &fields[4]) == 8) {
        if (high != keyHigh || low != keyLow) continue;
        if (mark < -1 || mark > 1) continue; // not a record this program writes
        const long v = mark * side;
        if (v == -1) continue; // from a game the side to move lost
        if (v > best) {
            count = 1;
        } else if (v == best) {
            ++count;
        } else {
            continue;
        }
        if (nextRandom() % static_cast<unsigned long>(count) != 0) continue;
        for (int32_t i = 0; i <= lastIndex; ++i) {
            const Move& m = moves.moves[order[i]];
            if (m.fromFile == fields[0] && m.fromRank == fields[1] && m.toFile == fields[2] &&
                m.toRank == fields[3] && m.promotion == fields[4]) {
                chosen = order[i];
                best = v;
                break;
            }
        }
    }
    std::fclose(book);
    return chosen;
}
