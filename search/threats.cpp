#include "search/threats.h"

#include <initializer_list>

#include "core/attacks.h"
#include "eval/values.h"

Threat discoveredThreat = {0, -1, -1};
Threat directThreat = {0, -1, -1};
Threat secondThreat = {0, -1, -1};

namespace {

constexpr Threat noThreat = {0, -1, -1};

// The four lines through a square as pairs of opposite directions (see lineSteps), each by its
// first direction: the rising diagonal, the falling diagonal, the rank, the file.
constexpr int32_t linePairs[4][2] = {{0, 3}, {2, 1}, {4, 5}, {6, 7}};
// The rays of a bishop and of a rook in the order they are scanned: (1, 1), (1, -1), (-1, -1),
// (-1, 1) and (1, 0), (0, -1), (-1, 0), (0, 1).
constexpr int32_t bishopRays[4] = {0, 2, 3, 1};
constexpr int32_t rookRays[4] = {4, 7, 5, 6};

// Worth of a threat: almost the victim, a little more when the attacker is cheap.
inline int32_t threatValue(int32_t victimKind, int32_t attackerKind) {
    return pieceValue[victimKind] - pieceValue[attackerKind] / 128;
}

// The best two threats of a phase; equal values keep the one found first.
struct BestTwo {
    Threat best;
    Threat runnerUp;
};

void keep(BestTwo& pair, int32_t value, int32_t file, int32_t rank) {
    if (value > pair.best.value) {
        pair.runnerUp = pair.best;
        pair.best = {value, file, rank};
    } else if (value > pair.runnerUp.value) {
        pair.runnerUp = {value, file, rank};
    }
}

inline bool slidesAlong(int32_t kind, bool diagonal) {
    return kind == queen || kind == (diagonal ? bishop : rook);
}

void discoveredThreats(const Position& pos, uint64_t occupied, Side side, int32_t ff, int32_t fr,
                       int32_t tf, int32_t tr, BestTwo& pair) {
    const int32_t df = tf - ff;
    const int32_t dr = tr - fr;
    const bool ranAlong[4] = {df == dr, df == -dr, dr == 0, df == 0};
    const int32_t from = squareIndex(ff, fr);
    for (int32_t line = 0; line < 4; ++line) {
        if (ranAlong[line]) continue;
        const bool diagonal = line < 2;
        const int32_t at1 = firstOnLine(occupied, from, linePairs[line][0]);
        if (at1 < 0) continue;
        const int32_t at2 = firstOnLine(occupied, from, linePairs[line][1]);
        if (at2 < 0) continue;
        const int32_t first = side * pos.squares[at1];
        const int32_t second = side * pos.squares[at2];
        if (first > 0 && slidesAlong(first, diagonal) && second < 0) {
            keep(pair, threatValue(-second, first), at2 >> 3, at2 & 7);
        } else if (first < 0 && second > 0 && slidesAlong(second, diagonal)) {
            keep(pair, threatValue(-first, second), at1 >> 3, at1 & 7);
        }
    }
}

void rayThreats(const Position& pos, uint64_t occupied, Side side, int32_t to, int32_t attacker,
                const int32_t* rays, BestTwo& pair) {
    for (int32_t ray = 0; ray < 4; ++ray) {
        const int32_t at = firstOnLine(occupied, to, rays[ray]);
        if (at < 0) continue;
        const int32_t seen = side * pos.squares[at];
        if (seen < 0) keep(pair, threatValue(-seen, attacker), at >> 3, at & 7);
    }
}

void directThreats(const Position& pos, uint64_t occupied, Side side, int32_t tf, int32_t tr,
                   BestTwo& pair) {
    const int32_t to = squareIndex(tf, tr);
    const int32_t attacker = side * pos.squares[squareIndex(tf, tr)];
    switch (attacker) {
    case pawn:
        for (int32_t df : {1, -1}) {
            const int32_t f = tf + df;
            const int32_t r = tr + side;
            if (!onBoard(f, r)) continue;
            const int32_t seen = side * pos.squares[squareIndex(f, r)];
            if (seen < 0) keep(pair, threatValue(-seen, pawn), f, r);
        }
        break;
    case knight:
        for (int32_t k = 0; k < geometry.knightCount[to]; ++k) {
            const int32_t t = geometry.knights[to][k];
            const int32_t seen = side * pos.squares[t];
            if (seen < 0) keep(pair, threatValue(-seen, knight), t >> 3, t & 7);
        }
        break;
    case bishop:
        rayThreats(pos, occupied, side, to, bishop, bishopRays, pair);
        break;
    case rook:
        rayThreats(pos, occupied, side, to, rook, rookRays, pair);
        break;
    case queen:
        rayThreats(pos, occupied, side, to, queen, bishopRays, pair);
        rayThreats(pos, occupied, side, to, queen, rookRays, pair);
        break;
    default:
        break;
    }
}

} // namespace

ThreatKind threatScan(const Position& pos, Side side, int32_t fromFile, int32_t fromRank,
                      int32_t toFile, int32_t toRank) {
    discoveredThreat = noThreat;
    directThreat = noThreat;
    secondThreat = noThreat;
    const uint64_t occupied = occupancy(pos);
    BestTwo discovered = {noThreat, noThreat};
    discoveredThreats(pos, occupied, side, fromFile, fromRank, toFile, toRank, discovered);
    BestTwo direct = {noThreat, noThreat};
    directThreats(pos, occupied, side, toFile, toRank, direct);

    discoveredThreat = discovered.best;
    directThreat = direct.best;
    if (discovered.runnerUp.value >= direct.runnerUp.value) {
        secondThreat = discovered.runnerUp;
        secondThreat.value = -secondThreat.value;
    } else {
        secondThreat = direct.runnerUp;
    }
    const int32_t most =
        discovered.best.value > direct.best.value ? discovered.best.value : direct.best.value;
    if (most == 0) return 0;
    return most >= kingThreatValue ? 2 : 1;
}
