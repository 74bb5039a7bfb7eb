#include "ui/display.h"

#include <cstdio>

#include "core/movetext.h"
#include "eval/evaluate.h"

// Letters of the pieces by kind: White's and Black's; "@" and "*" are the pawns.
constexpr char whiteLetters[7] = {' ', '@', 'N', 'B', 'R', 'Q', 'K'};
constexpr char blackLetters[7] = {' ', '*', 'n', 'b', 'r', 'q', 'k'};

constexpr const char* borderLine = "\n   +---+---+---+---+---+---+---+---+";

static void printFileLine(int32_t orientation) {
    std::printf(orientation > 0 ? "\n     a   b   c   d   e   f   g   h"
                                : "\n     h   g   f   e   d   c   b   a");
}

void showBoard(const Position& pos, int32_t orientation) {
    printFileLine(orientation);
    for (int32_t row = 0; row < 8; ++row) {
        const int32_t rank = orientation > 0 ? 7 - row : row;
        std::printf("%s\n %ld |", borderLine, static_cast<long>(rank + 1));
        for (int32_t column = 0; column < 8; ++column) {
            const int32_t file = orientation > 0 ? column : 7 - column;
            const PieceCode code = pos.squares[squareIndex(file, rank)];
            const bool dark = (file + rank) % 2 == 0; // a1 is dark
            if (code == 0) {
                std::printf(dark ? " ." : "  ");
            } else if (code >= -king && code <= king) {
                const char letter = code > 0 ? whiteLetters[code] : blackLetters[-code];
                std::printf("%c%c", dark ? '.' : ' ', letter);
            }
            std::printf(" |");
        }
        std::printf(" %ld", static_cast<long>(rank + 1));
    }
    std::printf("%s", borderLine);
    printFileLine(orientation);
    std::printf("\n");
}

void showLastMove(const GameState& game) {
    if (game.plyCount != 0) {
        const MoveText text = moveText(game.moveHistory[game.plyCount - 1]);
        std::printf("%3ld. %s%s is the last move\n", static_cast<long>((game.plyCount + 1) / 2),
                    game.plyCount % 2 == 0 ? "... " : "", text.text);
    }
    std::printf(game.turn > 0 ? "White to move\n" : "Black to move\n");
}

void showEvaluation(GameState& game) {
    showBoard(game.position, 1 - 2 * game.flipView);
    showLastMove(game);
    if (game.xboardMode) return;
    // Fresh lists and material for the position as it stands; the phase and the lazy margin
    // become those of this position.
    PositionKey key;
    PieceLists lists;
    Material material;
    derivePositionState(game.position, key, lists, material);
    const int32_t score = evaluate(material, game.position, lists, game.turn, 0) * game.turn;
    std::printf("- White: position=%ld material=%ld / Black: position=%ld material=%ld\n",
                static_cast<long>(positionalTotal[1]), static_cast<long>(material.sum[1] - 12000),
                static_cast<long>(positionalTotal[0]), static_cast<long>(material.sum[0] - 12000));
    std::printf("- global evaluation for %s: %ld\n", game.turn > 0 ? "White" : "Black",
                static_cast<long>(score));
}
