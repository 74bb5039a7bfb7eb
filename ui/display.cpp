#include "ui/display.h"

#include <cstdio>
#include <cstring>

#include "core/derive.h"
#include "core/movetext.h"
#include "eval/evaluate.h"
#include "search/settings.h"

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

// Width the help lines are padded to when every value takes its narrowest width.
constexpr int32_t helpWidth = 78;

// Length of a help template with every "%ld" taken as one character and every "%2ld" as two:
// the padding is fixed by the template, so a wider value makes its line longer.
static int32_t narrowestLength(const char* format) {
    int32_t length = 0;
    for (const char* c = format; *c != '\0'; ++c) {
        if (std::strncmp(c, "%2ld", 4) == 0) {
            length += 2;
            c += 3;
        } else if (std::strncmp(c, "%ld", 3) == 0) {
            length += 1;
            c += 2;
        } else {
            ++length;
        }
    }
    return length;
}

// One help line: the template filled with up to four values, then its fixed padding.
static void helpLine(const char* format, long a = 0, long b = 0, long c = 0, long d = 0) {
    char line[256];
    std::snprintf(line, sizeof line, format, a, b, c, d);
    std::printf("%s%*s\n", line, helpWidth - narrowestLength(format), "");
}

void showHelp(const GameState& game) {
    std::printf("\nKovrel %s\n", programVersion);
    helpLine("  Commands:");
    helpLine("  =========");
    helpLine(" |To move:");
    helpLine("  a) short algebraic: e4 (Pawn), Ne2 (Knight), Nbc3 (Knight in b-column),");
    helpLine("     o-o/o-o-o (castle), a8=Q (promote)");
    helpLine("  b) standard algebraic: e2e4, g1e2, b1c3, e1g1, e1c1, a7a8q");
    helpLine(" |go:       launch computer for this side |new:       new game");
    helpLine(" |st(op):   =%ld disable computer           |lo(ad):    load a .pgn/.fen game",
             game.userSide == 0 ? 1 : 0);
    helpLine(" |rem(ove): take n plies back             |sa(ve):    save the game in .pgn");
    helpLine(" |rep(lay): replay n moves from beginning |qu(it):    exit the program");
    helpLine(" |n/p:      replay next/previous 1/2-move |edi(t):    edit a position");
    helpLine(" |ev(al):   display the board and give    |in(verse): =%ld flip the view in eval",
             game.flipView);
    helpLine(" |          an evaluation                 |hard/easy: =%ld pondering",
             game.ponderMode);
    helpLine(" |se(t):    =%2ld,%2ld modify search depth    |pv:        =%ld Principal Variation",
             fullWidthDepth / 8, quiescenceDepth / 8, game.showPv);
    helpLine(" |le(vel):  =%2ld,%2ld,%2ld modify time control |au(to232): =%ld Auto232 Mode",
             game.sessionMoves, game.totalTime / 60, game.bonusTime,
             static_cast<long>(auto232Mode));
    helpLine(" |fl(ush):  clear Transpositions, Evalu-  |wb(oard):  =%ld X-/WinBoard Mode",
             game.xboardMode);
    helpLine(" |          ations and History Tables     |sw(itch), wh(ite), bl(ack) & ti(me)");
    helpLine(" |hel(p):   show this summary             | are reserved for X-/WinBoard & ICS");
}
