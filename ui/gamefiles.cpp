#include "ui/gamefiles.h"

#include <cstdio>
#include <cstring>

#include "core/attacks.h"
#include "core/derive.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "core/textfile.h"
#include "ui/display.h"
#include "ui/input.h"
#include "ui/record.h"
#include "ui/setup.h"

bool plainFileNamesOnly = false;

namespace {

// Reads the file name word of save or load; false (with the error line) when there is none or
// it is too long.
bool readFileName(const GameState& game, const char* prompt, const char* command, char* name) {
    if (!game.xboardMode) std::printf("%s", prompt);
    std::fflush(stdout);
    char word[inputWordSize];
    const bool read = readWord(word);
    if (!game.xboardMode) std::printf("\n");
    if (!read) {
        std::printf("Error (no file name): %s\n", command);
        return false;
    }
    if (plainFileNamesOnly && std::strchr(word, '/') != nullptr) {
        std::printf("Error (file name with a folder): %s\n", command);
        return false;
    }
    if (std::strlen(word) >= static_cast<size_t>(fileNameSize)) {
        std::printf("Error (file name longer than %d characters): %s\n", fileNameSize - 1, command);
        return false;
    }
    std::strcpy(name, word);
    return true;
}

// The set-up start position as nine numbers a rank, rank 8 first: the rank's piece codes from
// a to h, then one field of the record (side to move, en passant, Black's and White's castling
// rights, Black's king rank and file, White's king rank and file).
void writeSetupBlock(FILE* file, const Position& start) {
    const int32_t fields[8] = {start.sideToMove,    start.enPassant,     start.blackCastling,
                               start.whiteCastling, start.blackKingRank, start.blackKingFile,
                               start.whiteKingRank, start.whiteKingFile};
    std::fprintf(file, "{ Kovrel edited position: $E\n");
    for (int32_t row = 0; row < 8; ++row) {
        const int32_t rank = 7 - row;
        for (int32_t f = 0; f < 8; ++f)
            std::fprintf(file, "%2ld ", static_cast<long>(start.squares[squareIndex(f, rank)]));
        std::fprintf(file, "%2ld \n", static_cast<long>(fields[row]));
    }
    std::fprintf(file, "}\n");
}

bool startsWith(const char* word, const char* prefix) {
    return std::strncmp(word, prefix, std::strlen(prefix)) == 0;
}

// An en-passant field is kept only when it names a real double step of the side not to move:
// the square passed over and the pawn's start square empty, the pawn beyond them.
int32_t checkedEnPassant(const Position& pos, Side toMove, int32_t file, int32_t rank) {
    const int32_t passedRank = toMove > 0 ? 5 : 2;
    const int32_t startRank = toMove > 0 ? 6 : 1;
    const int32_t pawnRank = toMove > 0 ? 4 : 3;
    if (file < 0 || file > 7 || rank != passedRank) return 0;
    if (pos.squares[squareIndex(file, rank)] != 0) return 0;
    if (pos.squares[squareIndex(file, startRank)] != 0) return 0;
    if (pos.squares[squareIndex(file, pawnRank)] != -toMove * pawn) return 0;
    return -toMove * (file + 1);
}

// The private start-position block: 72 numbers, each in its range, and a legal set-up.
bool readSetupBlock(GameState& game, FILE* file) {
    long values[72];
    for (long& v : values) {
        if (std::fscanf(file, "%ld", &v) != 1) return false;
    }
    Position& pos = game.position;
    for (int32_t row = 0; row < 8; ++row) {
        for (int32_t f = 0; f < 8; ++f) {
            const long code = values[row * 9 + f];
            if (code < -king || code > king) return false;
            pos.squares[squareIndex(f, 7 - row)] = static_cast<PieceCode>(code);
        }
    }
    const long side = values[8];
    const long enPassant = values[17];
    const long blackRights = values[26];
    const long whiteRights = values[35];
    if (side != 1 && side != -1) return false;
    if (enPassant < -8 || enPassant > 8) return false;
    if (blackRights < 0 || blackRights > 3 || whiteRights < 0 || whiteRights > 3) return false;
    game.turn = static_cast<Side>(side);
    pos.sideToMove = game.turn;
    pos.whiteCastling = static_cast<int32_t>(whiteRights);
    pos.blackCastling = static_cast<int32_t>(blackRights);
    // The double step must have been made by the side not to move, on a file that shows it.
    pos.enPassant = 0;
    if (enPassant != 0 && enPassant * game.turn < 0) {
        const int32_t f = static_cast<int32_t>(enPassant < 0 ? -enPassant : enPassant) - 1;
        pos.enPassant = checkedEnPassant(pos, game.turn, f, game.turn > 0 ? 5 : 2);
    }
    return validateSetup(game);
}

// Records and plays a move read from a game file (as the loop plays a move, without the
// new-game limit).
void playFromFile(GameState& game, const Move& m) {
    recordMove(game, m);
    game.turn = -game.turn;
}

constexpr const char* fenCharacters = "12345678PNBRQKpnbrqk";

PieceCode fenPiece(int c) {
    const char* letters = "PNBRQKpnbrqk";
    const char* at = std::strchr(letters, c);
    const int32_t index = static_cast<int32_t>(at - letters);
    return index < 6 ? index + 1 : -(index - 5);
}

} // namespace

// Reads PGN games; the last game of the file (games are separated by "new" words) stays.
void readGameFile(GameState& game, FILE* file) {
    char word[inputWordSize];
    bool have = readFileWord(file, word, inputWordSize);
    for (;;) {
        setInitialPosition(game.position);
        game.startPosition.sideToMove = 0;
        game.turn = white;
        // Header, comments and the set-up block up to the first move number.
        while (have && !startsWith(word, "1.") && word[0] != '*') {
            if (word[0] == '$' && word[1] == 'E' && !readSetupBlock(game, file)) {
                std::printf("Error (invalid position): load\n");
                game.loopState = loopFatal;
                return;
            }
            have = readFileWord(file, word, inputWordSize);
        }
        game.plyCount = 0;
        derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
        game.search.keyCount = 0;
        game.search.fiftyMoveCounter = 0;
        bool another = false;
        // A word that the end of the file cut off (no line end after it) is not taken.
        while (have && !std::feof(file) && word[0] != '*' && word[0] != '[') {
            const int32_t last =
                generateLegalMoves(game.turn, game.legalMoves, game.position, allMoves);
            const int32_t found =
                parseMoveInput(word, game.turn, game.position, game.legalMoves, last);
            if (found >= 0 && game.plyCount < maxReplayPly)
                playFromFile(game, game.legalMoves.moves[found]);
            have = readFileWord(file, word, inputWordSize);
            if (have && startsWith(word, "new")) {
                // A "new" that is not the file's last word ends this game.
                have = readFileWord(file, word, inputWordSize);
                if (have) {
                    another = true;
                    break;
                }
            }
        }
        game.moveHistory[game.plyCount] = endMark;
        if (!another) return;
    }
}

// Reads a FEN position from the start of the file and validates it.
void readFenFile(GameState& game, FILE* file) {
    Position& pos = game.position;
    for (PieceCode& square : pos.squares)
        square = 0;
    for (int32_t rank = 7; rank >= 0; --rank) {
        // The run of placement characters of this rank, then its "/"; an empty run leaves the
        // rank empty.
        int32_t f = 0;
        bool any = false;
        int c = std::getc(file);
        while (c != EOF && c != '\0' && std::strchr(fenCharacters, c) != nullptr) {
            any = true;
            if (c >= '1' && c <= '8') {
                for (int32_t k = 0; k < c - '0'; ++k) {
                    pos.squares[squareIndex(f, rank)] = 0;
                    if (f < 7) ++f;
                }
            } else {
                pos.squares[squareIndex(f, rank)] = fenPiece(c);
                if (f < 7) ++f;
            }
            c = std::getc(file);
        }
        if (!(any && c == '/') && c != EOF) std::ungetc(c, file);
    }
    char rest[inputWordSize];
    readRestOfFileLine(file, rest, inputWordSize);
    const char* p = rest;
    while (*p == ' ' || *p == '\t')
        ++p;
    game.turn = *p == 'w' ? white : black;
    if (*p != '\0') ++p;
    pos.sideToMove = game.turn;
    while (*p == ' ' || *p == '\t')
        ++p;
    pos.whiteCastling = 0;
    pos.blackCastling = 0;
    for (;; ++p) {
        if (*p == 'K') {
            pos.whiteCastling |= kingSideCastling;
        } else if (*p == 'Q') {
            pos.whiteCastling |= queenSideCastling;
        } else if (*p == 'k') {
            pos.blackCastling |= kingSideCastling;
        } else if (*p == 'q') {
            pos.blackCastling |= queenSideCastling;
        } else {
            break;
        }
    }
    // The first other character ends the rights; the rest of the field (a "-") is passed over.
    while (*p != '\0' && *p != ' ' && *p != '\t')
        ++p;
    while (*p == ' ' || *p == '\t')
        ++p;
    pos.enPassant = 0;
    if (p[0] >= 'a' && p[0] <= 'h' && p[1] >= '1' && p[1] <= '8')
        pos.enPassant = checkedEnPassant(pos, game.turn, p[0] - 'a', p[1] - '1');
    if (!validateSetup(game)) {
        std::printf("Error (invalid position): load\n");
        game.loopState = loopFatal;
    }
}

void saveGame(GameState& game) {
    char name[fileNameSize];
    if (!readFileName(game, "save to file: ", "save", name)) return;
    FILE* file = std::fopen(name, "wt");
    if (file == nullptr) {
        std::printf("Error (fopen(\"%s\", \"wt\")): save\n", name);
        return;
    }
    std::fprintf(file, "[Event \"Kovrel game\"]\n");
    if (game.startPosition.sideToMove != 0) {
        writeSetupBlock(file, game.startPosition);
        if (!game.xboardMode) {
            std::printf("this game starts with an edited position and is readable with Kovrel "
                        "only,\nto be readable with X-/WinBoard, use edit/save position from "
                        "X-/WinBoard\n");
        }
    }
    for (int32_t ply = 0; ply < game.plyCount; ++ply) {
        if (ply % 2 == 0) std::fprintf(file, "%3ld. ", static_cast<long>((ply + 2) / 2));
        std::fprintf(file, "%s ", moveText(game.moveHistory[ply]).text);
        if (ply % 2 == 1) std::fprintf(file, "\n");
    }
    std::fprintf(file, "*\n");
    std::fclose(file);
    std::printf("game \"%s\" saved\n", name);
}

bool loadGame(GameState& game) {
    char name[fileNameSize];
    if (!readFileName(game, "open file: ", "load", name)) return false;
    FILE* file = std::fopen(name, "rt");
    if (file == nullptr) {
        std::printf("Error (fopen(\"%s\", \"rt\")): load\n", name);
        return false;
    }
    // The extension is what follows the first "." (with something before it).
    const char* dot = std::strchr(name, '.');
    const bool fen = dot != nullptr && dot != name && startsWith(dot + 1, "fen");
    if (fen) {
        readFenFile(game, file);
    } else {
        readGameFile(game, file);
    }
    std::fclose(file);
    if (game.loopState == loopFatal) return true;
    game.userSide = 0;
    if (!game.xboardMode) {
        showBoard(game.position, 1 - 2 * game.flipView);
        showLastMove(game);
    }
    std::printf("game \"%s\" loaded\n", name);
    return true;
}
