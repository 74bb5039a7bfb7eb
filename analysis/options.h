// The command lines of the two analysis tools.
#pragma once

#include <cstdint>
#include <cstdio>

#include "analysis/analyse.h"

// What a search gets when the command line names no limit: a second.
constexpr int32_t defaultMoveTime = 1000;

// Exit statuses: done (bad lines and games are reported and skipped), a file that cannot be
// read or written or memory that is not there, a command line that cannot be used.
constexpr int exitDone = 0;
constexpr int exitTrouble = 1;
constexpr int exitUsage = 2;

// What the command line asks for.
//   input           the EPD or PGN file ("-": standard input)
//   limits          --depth N, --movetime MS (at least one is set: a second when neither is)
//   hashMegabytes   --hash MB
//   svg, output     kovrel-annotate's --svg FILE and -o FILE; nullptr when not given
struct ToolOptions {
    const char* input;
    SearchLimits limits;
    int32_t hashMegabytes;
    const char* svg;
    const char* output;
};

// Reads the arguments; `annotating` allows --svg and -o. On a problem writes one error line
// and the usage to `errors` and returns false; `help` is set for --help (usage on stdout).
bool readToolOptions(int argc, char** argv, bool annotating, ToolOptions& options, FILE* errors,
                     bool& help);

// The usage line of a tool.
void printUsage(FILE* out, bool annotating);
