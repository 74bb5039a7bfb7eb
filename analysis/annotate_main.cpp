// kovrel-annotate: writes the games of a PGN file back with the engine's value after every move,
// its line where a move loses half a pawn or more, and with --svg a graph of each game.
#include <cstdio>
#include <cstring>

#include "analysis/annotate.h"
#include "analysis/options.h"
#include "analysis/pgn.h"

namespace {

// Room for the name of a graph file.
constexpr size_t svgNameSize = 4096;

// The graph of game `number` of the file: the name given for the first game, the name with
// "-N" before its ".svg" (or at its end) for game N after it.
bool graphName(const char* given, int32_t number, char* name) {
    if (number == 1) return std::snprintf(name, svgNameSize, "%s", given) < int{svgNameSize};
    const size_t length = std::strlen(given);
    const bool svg = length >= 4 && std::strcmp(given + length - 4, ".svg") == 0;
    const int stem = static_cast<int>(svg ? length - 4 : length);
    return std::snprintf(name, svgNameSize, "%.*s-%d%s", stem, given, static_cast<int>(number),
                         svg ? ".svg" : "") < int{svgNameSize};
}

PgnGame game;
GameChart chart;

} // namespace

int main(int argc, char** argv) {
    ToolOptions options;
    bool help = false;
    if (!readToolOptions(argc, argv, true, options, stderr, help)) {
        if (help) printUsage(stdout, true);
        return help ? exitDone : exitUsage;
    }
    const bool standardInput = std::strcmp(options.input, "-") == 0;
    FILE* in = standardInput ? stdin : std::fopen(options.input, "r");
    if (in == nullptr) {
        std::fprintf(stderr, "Error (cannot open '%s'): kovrel-annotate\n", options.input);
        return exitTrouble;
    }
    FILE* out = options.output != nullptr ? std::fopen(options.output, "w") : stdout;
    if (out == nullptr) {
        std::fprintf(stderr, "Error (cannot write '%s'): kovrel-annotate\n", options.output);
        return exitTrouble;
    }
    if (!startEngine(options.hashMegabytes)) {
        std::fprintf(stderr, "Error (not enough memory for %d MB of tables): kovrel-annotate\n",
                     static_cast<int>(options.hashMegabytes));
        return exitTrouble;
    }

    PgnReader reader;
    startPgnReader(reader, in, standardInput ? "standard input" : options.input, stderr);
    PgnWriter writer;
    startPgnWriter(writer, out);
    int status = exitDone;
    for (;;) {
        const GameRead read = readPgnGame(reader, game);
        if (read == GameRead::end) break;
        if (read == GameRead::bad) continue;
        annotateGame(game, options.limits, writer, options.svg != nullptr ? &chart : nullptr);
        std::fflush(out);
        if (options.svg == nullptr) continue;
        char name[svgNameSize];
        FILE* graph = graphName(options.svg, reader.games, name) ? std::fopen(name, "w") : nullptr;
        if (graph == nullptr) {
            std::fprintf(stderr, "Error (cannot write '%s'): kovrel-annotate\n", options.svg);
            status = exitTrouble;
            continue;
        }
        writeChart(graph, chart);
        if (std::fclose(graph) != 0) {
            std::fprintf(stderr, "Error (cannot write '%s'): kovrel-annotate\n", name);
            status = exitTrouble;
        }
    }
    if (!standardInput) std::fclose(in);
    if (std::fflush(out) != 0 || std::ferror(out) != 0 ||
        (out != stdout && std::fclose(out) != 0)) {
        std::fprintf(stderr, "Error (cannot write '%s'): kovrel-annotate\n",
                     options.output != nullptr ? options.output : "standard output");
        status = exitTrouble;
    }
    stopEngine();
    return status;
}
