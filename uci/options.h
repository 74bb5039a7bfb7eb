// The UCI program's options: what `uci` announces, what `setoption` changes.
#pragma once

#include <cstdint>

// Hash: megabytes for the two transposition tables together.
constexpr int32_t defaultHashMegabytes = 16;
constexpr int32_t maxHashMegabytes = 16384;
// Move Overhead: milliseconds kept back from every time budget.
constexpr int32_t defaultMoveOverhead = 50;
constexpr int32_t maxMoveOverhead = 5000;

// The settings the options hold, program-wide for the run.
//   hashMegabytes  the Hash option (the tables use the largest power of two entries that fit)
//   ownBook        the OwnBook option: the book is consulted for games played on a clock
//   ponder         the Ponder option (the GUI decides whether to send go ponder)
//   moveOverhead   the Move Overhead option, ms
//   debug          debug on: an info string line with each search's plan
//   bookNoticed    the problem with the current book file has been said (once per file)
//   bookFound      the current book file has been read once and holds records: the search's
//                  own reading of it is enough from then on
struct UciSettings {
    int32_t hashMegabytes;
    bool ownBook;
    bool ponder;
    int32_t moveOverhead;
    bool debug;
    bool bookNoticed;
    bool bookFound;
};
extern UciSettings uciSettings;

// Where the built book is looked for when BookFile is not set: the installed data folder, the
// data folder of an installation around the executable (../share/games/kovrel), the folder of
// the executable, the current folder. Writes the first that exists into bookFile (the current
// folder's "openings.dat" when none does).
void findDefaultBook();

// The `uci` answer: id lines, the options with their defaults, uciok.
void printIdentity();

// `setoption name <id> [value <x>]`, the text after "setoption". Bad names and values are
// answered with an info string line; nothing else changes then.
void setOption(const char* text);
