// kovrel-epd: runs a test suite of EPD positions, each from cleared tables, and counts the
// positions where the engine plays a best move (bm) or avoids the moves to avoid (am).
#include <cstdio>
#include <cstring>

#include "analysis/analyse.h"
#include "analysis/epd.h"
#include "analysis/options.h"
#include "analysis/san.h"
#include "search/transtable.h"

namespace {

// Reads one line into `text` without its line end; `overlong` when it did not fit (the rest is
// read over). False at the end of the file.
bool readLine(FILE* in, char* text, int32_t size, bool& overlong) {
    overlong = false;
    if (std::fgets(text, size, in) == nullptr) return false;
    size_t length = std::strlen(text);
    if (length > 0 && text[length - 1] == '\n') {
        text[--length] = '\0';
    } else if (!std::feof(in)) {
        overlong = true;
        int c = std::fgetc(in);
        while (c != '\n' && c != EOF)
            c = std::fgetc(in);
    }
    if (length > 0 && text[length - 1] == '\r') text[length - 1] = '\0';
    return true;
}

// " (bm Qg6 Rxh7)" or " (am Qxb2)": what a missed position asked for.
void printWanted(EpdPosition& position) {
    const Side side = position.pos.sideToMove;
    std::printf("  (");
    if (position.bestCount > 0) std::printf("bm");
    for (int32_t i = 0; i < position.bestCount; ++i)
        std::printf(" %s", moveToSan(position.pos, side, position.best[i]).text);
    if (position.bestCount > 0 && position.avoidCount > 0) std::printf("; ");
    if (position.avoidCount > 0) std::printf("am");
    for (int32_t i = 0; i < position.avoidCount; ++i)
        std::printf(" %s", moveToSan(position.pos, side, position.avoid[i]).text);
    std::printf(")");
}

char lineText[epdLineSize];
EpdPosition position;
GameLine line;

} // namespace

int main(int argc, char** argv) {
    ToolOptions options;
    bool help = false;
    if (!readToolOptions(argc, argv, false, options, stdout, help)) {
        if (help) printUsage(stdout, false);
        return help ? exitDone : exitUsage;
    }
    const bool standardInput = std::strcmp(options.input, "-") == 0;
    FILE* in = standardInput ? stdin : std::fopen(options.input, "r");
    if (in == nullptr) {
        std::printf("Error (cannot open '%s'): kovrel-epd\n", options.input);
        return exitTrouble;
    }
    if (!startEngine(options.hashMegabytes)) {
        std::printf("Error (not enough memory for %d MB of tables): kovrel-epd\n",
                    static_cast<int>(options.hashMegabytes));
        return exitTrouble;
    }

    const char* where = standardInput ? "standard input" : options.input;
    int32_t number = 0;
    int32_t solved = 0;
    int32_t total = 0;
    bool overlong = false;
    while (readLine(in, lineText, epdLineSize, overlong)) {
        ++number;
        if (overlong) {
            std::printf("Error (line longer than %d characters): %s line %d\n",
                        static_cast<int>(epdLineSize - 1), where, static_cast<int>(number));
            continue;
        }
        const EpdReading reading = readEpdLine(lineText, position);
        if (reading.kind == EpdLineKind::comment) continue;
        if (reading.kind == EpdLineKind::bad) {
            std::printf("Error (%s): %s line %d\n", reading.problem, where,
                        static_cast<int>(number));
            std::fflush(stdout);
            continue;
        }
        ++total;
        clearSearchTables();
        startGameLine(line, position.pos, position.fifty);
        const Analysis a = analysePosition(line, options.limits);
        const bool found = solvesPosition(position, a.best);
        solved += found ? 1 : 0;
        char name[epdIdSize + 16];
        if (position.id[0] != '\0') {
            std::snprintf(name, sizeof name, "%s", position.id);
        } else {
            std::snprintf(name, sizeof name, "line %d", static_cast<int>(number));
        }
        std::printf("%-10s  %-6s  %-7s  depth %2d  time %lld ms", name, found ? "found" : "missed",
                    moveToSan(position.pos, position.pos.sideToMove, a.best).text,
                    static_cast<int>(a.depth), static_cast<long long>(a.time));
        if (!found) printWanted(position);
        std::printf("\n");
        std::fflush(stdout);
    }
    std::printf("solved %d of %d\n", static_cast<int>(solved), static_cast<int>(total));
    if (!standardInput) std::fclose(in);
    stopEngine();
    return exitDone;
}
