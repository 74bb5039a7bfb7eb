#include "analysis/options.h"

#include <cstring>

namespace {

const char* toolName(bool annotating) {
    return annotating ? "kovrel-annotate" : "kovrel-epd";
}

bool refuse(FILE* errors, bool annotating, const char* what, const char* word) {
    std::fprintf(errors, "Error (%s '%s'): %s\n", what, word, toolName(annotating));
    printUsage(errors, annotating);
    return false;
}

} // namespace

void printUsage(FILE* out, bool annotating) {
    if (annotating) {
        std::fprintf(out, "usage: kovrel-annotate GAME.pgn [--depth N] [--movetime MS] "
                          "[--hash MB] [--svg GRAPH.svg] [-o OUT.pgn]\n");
    } else {
        std::fprintf(out, "usage: kovrel-epd FILE [--depth N] [--movetime MS] [--hash MB]\n");
    }
}

bool readToolOptions(int argc, char** argv, bool annotating, ToolOptions& options, FILE* errors,
                     bool& help) {
    options = {nullptr, {0, 0}, defaultAnalysisHash, nullptr, nullptr};
    help = false;
    for (int i = 1; i < argc; ++i) {
        const char* word = argv[i];
        if (std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0) {
            help = true;
            return false;
        }
        const bool depth = std::strcmp(word, "--depth") == 0;
        const bool moveTime = std::strcmp(word, "--movetime") == 0;
        const bool hash = std::strcmp(word, "--hash") == 0;
        const bool svg = annotating && std::strcmp(word, "--svg") == 0;
        const bool output = annotating && std::strcmp(word, "-o") == 0;
        if (depth || moveTime || hash || svg || output) {
            if (i + 1 == argc) return refuse(errors, annotating, "missing value after", word);
            const char* value = argv[++i];
            int64_t number = 0;
            if (depth) {
                if (!readWholeNumber(value, 1, maxAnalysisDepth, number))
                    return refuse(errors, annotating, "depth must be 1 to 31, not", value);
                options.limits.depth = static_cast<int32_t>(number);
            } else if (moveTime) {
                if (!readWholeNumber(value, 1, maxMoveTime, number))
                    return refuse(errors, annotating, "move time must be 1 to 86400000 ms, not",
                                  value);
                options.limits.moveTime = static_cast<int32_t>(number);
            } else if (hash) {
                if (!readWholeNumber(value, 1, maxAnalysisHash, number))
                    return refuse(errors, annotating, "hash must be 1 to 16384 MB, not", value);
                options.hashMegabytes = static_cast<int32_t>(number);
            } else if (svg) {
                options.svg = value;
            } else {
                options.output = value;
            }
        } else if (word[0] == '-' && word[1] != '\0') {
            return refuse(errors, annotating, "unknown option", word);
        } else if (options.input != nullptr) {
            return refuse(errors, annotating, "a second input file", word);
        } else {
            options.input = word;
        }
    }
    if (options.input == nullptr) {
        std::fprintf(errors, "Error (no input file): %s\n", toolName(annotating));
        printUsage(errors, annotating);
        return false;
    }
    if (options.limits.depth == 0 && options.limits.moveTime == 0)
        options.limits.moveTime = defaultMoveTime;
    return true;
}
