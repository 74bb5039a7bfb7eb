// The threat scan: what a move that has just been made attacks, directly from its new square
// and by discovery through the square it left.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"

// A threatened piece: the threat's value and the square of the piece; 0 and (-1, -1) for none.
struct Threat {
    int32_t value;
    int32_t file;
    int32_t rank;
};

// Threat of the move scanned last; rewritten by every threatScan.
extern Threat discoveredThreat; // the greatest discovered threat
extern Threat directThreat;     // the greatest direct threat
extern Threat secondThreat;     // the runner-up: a discovered one with its value negated, or a
                                // direct one with its value positive

// A threat on a king is worth at least this; every other threat less.
constexpr int32_t kingThreatValue = 11930;

// Scans the move of `side` from (fromFile, fromRank) to (toFile, toRank) in the position after
// it; returns 0 when it attacks nothing, 2 when it attacks the enemy king, else 1.
ThreatKind threatScan(const Position& pos, Side side, int32_t fromFile, int32_t fromRank,
                      int32_t toFile, int32_t toRank);
