// kovrel-uci: the Kovrel engine for graphical interfaces, tournament managers and bots that
// speak the Universal Chess Interface.
#include "uci/protocol.h"

int main() {
    return runUci();
}
