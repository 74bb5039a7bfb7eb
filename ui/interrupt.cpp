#include "ui/interrupt.h"

#include <csignal>
#include <cstdio>
#include <ctime>

#include "search/control.h"
#include "search/settings.h"
#include "ui/gamestate.h"
#include "ui/input.h"

volatile sig_atomic_t auto232Mode = 0;
int32_t interruptMode = 0;

int64_t calendarSeconds() {
    return static_cast<int64_t>(std::time(nullptr));
}

void onInterruptSignal(int signalNumber) {
    if (signalNumber != SIGINT) return;
    installInterruptHandler(); // sigaction is async-signal-safe
    searchRunning = 0;
    auto232Mode = 0;
}

void installInterruptHandler() {
    struct sigaction action = {};
    action.sa_handler = onInterruptSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
}

void pollInterruption(SearchControl& control) {
    // Standard input, console or pipe alike: input waiting means a read would not block, and
    // a question that cannot be answered counts as waiting input.
    if (interruptMode != 0 && inputWaiting()) control.StopFlag = 1;
    if (auto232Mode) {
        if (FILE* file = std::fopen("hismove.txt", "rt")) {
            std::fclose(file);
            control.StopFlag = 1;
        }
    }
    if (searchTimeLimit > 0 && control.now() - control.searchStartTime >= searchTimeLimit)
        control.StopFlag = 1;
}
