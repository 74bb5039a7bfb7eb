#include "ui/xboard.h"

#include <cstring>

#include "ui/input.h"
#include "ui/setup.h"

// Kind of a piece letter of the edit protocol, 0 for none.
static int32_t editedKind(char letter) {
    const char* letters = "PNBRQK";
    const char* at = std::strchr(letters, letter);
    return letter != '\0' && at != nullptr ? static_cast<int32_t>(at - letters) + 1 : 0;
}

bool editByProtocol(GameState& game) {
    Position& pos = game.position;
    Side colour = white;
    char word[inputWordSize];
    while (readWord(word)) {
        // The square named by the word's second and third characters (a1 when they are not).
        const int32_t file = word[1] >= 'a' && word[1] <= 'h' ? word[1] - 'a' : 0;
        const int32_t rank =
            word[1] != '\0' && word[2] >= '1' && word[2] <= '8' ? word[2] - '1' : 0;
        if (word[0] == '#') {
            for (PieceCode& square : pos.squares)
                square = 0;
        } else if (word[0] == 'c') {
            colour = -colour;
        } else if (editedKind(word[0]) != 0) {
            pos.squares[squareIndex(file, rank)] = colour * editedKind(word[0]);
        } else if (word[0] == 'x') {
            pos.squares[squareIndex(file, rank)] = 0;
        } else {
            break;
        }
    }
    pos.enPassant = 0; // an edited position has no double step behind it
    if (!validateSetup(game)) return false;
    game.userSide = 0;
    return true;
}
