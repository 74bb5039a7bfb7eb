#include "ui/auto232.h"

#include <cctype>
#include <cstdio>
#include <ctime>

#include "core/movetext.h"
#include "core/textfile.h"
#include "ui/gamestate.h"
#include "ui/input.h"

// Pause between two looks for the opponent's file, and before a move is written.
static void waitAFifthOfASecond() {
    timespec wait = {0, 200 * 1000 * 1000};
    nanosleep(&wait, nullptr); // Ctrl-C may cut it short; the caller looks at the mode
}

void waitForOpponentFile(char* word) {
    word[0] = '\0';
    std::printf("waiting for the input in \"hismove.txt\":");
    while (auto232Mode) {
        FILE* file = std::fopen("hismove.txt", "rt");
        if (file != nullptr && auto232Mode) {
            std::printf("ok\n");
            readFileWord(file, word, inputWordSize);
            std::fclose(file);
            if (std::remove("hismove.txt") != 0)
                std::printf("Error (remove(\"hismove.txt\")): auto232\n");
            return;
        }
        if (file != nullptr) std::fclose(file);
        std::printf(".");
        std::fflush(stdout);
        waitAFifthOfASecond();
    }
    std::printf("interrupted\nAuto232 Mode is off\n");
}

void writeMoveFile(const Move& move, int32_t plyCount) {
    waitAFifthOfASecond();
    FILE* file = std::fopen("mymove.txt", "wt");
    if (file == nullptr) {
        std::printf("Error (fopen(\"mymove.txt\", \"wt\")): auto232\n");
        return;
    }
    const MoveText text = moveText(move);
    if (plyCount % 2 == 1) std::fputc('\t', file);
    std::fprintf(file, "%c%c-%c%c", text.text[0], text.text[1], text.text[2], text.text[3]);
    if (move.promotion != 0)
        std::fprintf(file, "/%c", std::toupper(static_cast<unsigned char>(text.text[4])));
    std::fputs("\r\n", file);
    std::fflush(file);
    std::fclose(file);
}
