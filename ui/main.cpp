// Kovrel: a chess program for the text console, xboard/WinBoard interfaces and Auto232 matches.
#include "ui/loop.h"

int main(int argc, char** argv) {
    return runProgram(argc, argv);
}
