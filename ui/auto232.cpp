#include "ui/auto232.h"

#include <cctype>
#include <cstdio>
#include <ctime>

#include "core/movetext.h"
#include "core/textfile.h"
#include "ui/gamestate.h"
#include "ui/input.h"

int32_t auto232PauseMilliseconds = 200;
int32_t auto232WaitLimit = -1;

static void pauseBetweenLooks() {
    if (auto232PauseMilliseconds <= 0) return;
    timespec wait = {auto232PauseMilliseconds / 1000, (auto232PauseMilliseconds % 1000) * 1000000L};
    nanosleep(&wait, nullptr); // Ctrl-C may cut it short; the caller looks at the mode
}

void waitForOpponentFile(char* word) {
    word[0] = '\0';
    std::printf("waiting for the input in \"hismove.txt\":");
    std::fflush(stdout);
    for (int32_t looks = 0; auto232Mode; ++looks) {
        if (auto232WaitLimit >= 0 && looks >= auto232WaitLimit) auto232Mode = 0;
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
        if (!auto232Mode) break;
        std::printf(".");
        std::fflush(stdout);
        pauseBetweenLooks();
    }
    std::printf("interrupted\nAuto232 Mode is off\n");
}

void writeMoveFile(const Move& move, int32_t plyCount) {
    pauseBetweenLooks();
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
