// Portable Game Notation: reading games from any PGN file, writing them back in the export
// form (the seven-tag roster first, lines under 80 characters, a move number before every
// White move and before a Black move that follows a comment or a variation).
//
// The reader keeps a game's tags, its start position and the moves of its main line; comments,
// glyphs and variations are read over (their moves are not checked). A game with anything wrong
// in its moves or its set-up is reported and skipped whole; a bad tag is reported and left out.
#pragma once

#include <cstdint>
#include <cstdio>

#include "core/position.h"
#include "core/types.h"

constexpr int32_t maxTags = 32;
constexpr int32_t tagNameSize = 32;   // longer names are cut
constexpr int32_t tagValueSize = 256; // longer values are cut
// Plies of the longest game kept; a longer one is reported and skipped.
constexpr int32_t maxGamePlies = 1200;
// Room for a result: "1-0", "0-1", "1/2-1/2" or "*".
constexpr int32_t resultSize = 8;

struct PgnTag {
    char name[tagNameSize];
    char value[tagValueSize];
};

// One game as read.
//   tags, tagCount   the tags in the order read (the first of two with the same name kept)
//   start            the start position: the standard one, or the FEN tag's; start.sideToMove
//                    is the side to move there
//   startFifty       the FEN's halfmove clock (0 for the standard start)
//   startNumber      the number of the first move (the FEN's fullmove number, else 1)
//   moves, plyCount  the main line
//   result           the termination marker read ("*" when the game had none)
//   line             the line of the file on which the game began
struct PgnGame {
    PgnTag tags[maxTags];
    int32_t tagCount;
    Position start;
    int32_t startFifty;
    int32_t startNumber;
    Move moves[maxGamePlies];
    int32_t plyCount;
    char result[resultSize];
    int32_t line;
};

// The state of reading one file.
//   file, name   the open file and the name used in error lines
//   errors       where error lines go
//   line         the current line (1 = first)
//   peeked       a character read ahead and not yet used (EOF + 1 for none)
//   atLineStart  nothing but blanks read on the current line yet ('%' escapes a line there)
//   tagPending   the last game ended at a '[' that begins the next game's tags
//   games        games begun so far (for error lines)
struct PgnReader {
    FILE* file;
    const char* name;
    FILE* errors;
    int32_t line;
    int peeked;
    bool atLineStart;
    bool tagPending;
    int32_t games;
};

enum class GameRead {
    game, // a good game was read
    bad,  // a game was reported and skipped; reading may go on
    end,  // no more games
};

// Starts reading `file`; error lines name `name` and go to `errors`.
void startPgnReader(PgnReader& reader, FILE* file, const char* name, FILE* errors);

// Reads the next game into `game`.
GameRead readPgnGame(PgnReader& reader, PgnGame& game);

// The value of tag `name`, nullptr when the game has none.
const char* tagValue(const PgnGame& game, const char* name);

// Whether `text` is one of the four termination markers.
bool isResult(const char* text);

// The FEN of a position (`side` to move, the two counters given) into `text` (at least 100
// characters).
void writeFen(const Position& pos, Side side, int32_t fifty, int32_t number, char* text);

// Writing: movetext tokens are gathered into lines of at most pgnLineWidth characters.
//   out        where the game goes
//   line       the line being gathered, length characters of it
constexpr int32_t pgnLineWidth = 79;
struct PgnWriter {
    FILE* out;
    char line[pgnLineWidth + 1];
    int32_t length;
};

void startPgnWriter(PgnWriter& writer, FILE* out);

// The tag section: the seven-tag roster in its order (filled with "?", "????.??.??" or the
// result where the game has none), SetUp "1" when a FEN tag needs it, then the other tags as
// read; then an empty line.
void writeTags(PgnWriter& writer, const PgnGame& game, const char* result);

// One movetext token (a move with its number, a comment, ")"), separated from the one before by
// a blank unless `glued` (")" glues to the move before it). A token longer than a line gets a
// line of its own.
void writeToken(PgnWriter& writer, const char* token, bool glued);

// Ends the movetext with the termination marker and an empty line after the game.
void finishGame(PgnWriter& writer, const char* result);
