#include "search/threats.h"

#include <initializer_list>

#include "core/attacks.h"
#include "eval/values.h"

Threat discoveredThreat = {0, -1, -1};
Threat directThreat = {0, -1, -1};
Threat secondThreat = {0, -1, -1};

namespace {

constexpr Threat noThreat = {0, -1, -1};

// The four lines through a square, each by its first direction: the rising diagonal, the
// falling diagonal, the rank, the file.
constexpr int32_t lineSteps[4][2] = {{1, 1}, {1, -1}, {1, 0}, {0, 1}};
constexpr int32_t bishopRays[4][2] = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
constexpr int32_t rookRays[4][2] = {{1, 0}, {0, -1}, {-1, 0}, {0, 1}};

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

// First occupied square from (file, rank) in direction (df, dr), or false at the edge.
bool firstPiece(const Position& pos, int32_t file, int32_t rank, int32_t df, int32_t dr,
                int32_t& atFile, int32_t& atRank) {
    for (int32_t f = file + df, r = rank + dr; onBoard(f, r); f += df, r += dr) {
        if (pos.squares[squareIndex(f, r)] != 0) {
            atFile = f;
            atRank = r;
            return true;
        }
    }
    return false;
}

inline bool slidesAlong(int32_t kind, bool diagonal) {
    return kind == queen || kind == (diagonal ? bishop : rook);
}

void discoveredThreats(const Position& pos, Side side, int32_t ff, int32_t fr, int32_t tf,
                       int32_t tr, BestTwo& pair) {
    const int32_t df = tf - ff;
    const int32_t dr = tr - fr;
    const bool ranAlong[4] = {df == dr, df == -dr, dr == 0, df == 0};
    for (int32_t line = 0; line < 4; ++line) {
        if (ranAlong[line]) continue;
        const int32_t sf = lineSteps[line][0];
        const int32_t sr = lineSteps[line][1];
        const bool diagonal = sf != 0 && sr != 0;
        int32_t f1;
        int32_t r1;
        int32_t f2;
        int32_t r2;
        if (!firstPiece(pos, ff, fr, sf, sr, f1, r1)) continue;
        if (!firstPiece(pos, ff, fr, -sf, -sr, f2, r2)) continue;
        const int32_t first = side * pos.squares[squareIndex(f1, r1)];
        const int32_t second = side * pos.squares[squareIndex(f2, r2)];
        if (first > 0 && slidesAlong(first, diagonal) && second < 0) {
            keep(pair, threatValue(-second, first), f2, r2);
        } else if (first < 0 && second > 0 && slidesAlong(second, diagonal)) {
            keep(pair, threatValue(-first, second), f1, r1);
        }
    }
}

void rayThreats(const Position& pos, Side side, int32_t tf, int32_t tr, int32_t attacker,
                const int32_t (*rays)[2], BestTwo& pair) {
    for (int32_t ray = 0; ray < 4; ++ray) {
        int32_t f;
        int32_t r;
        if (!firstPiece(pos, tf, tr, rays[ray][0], rays[ray][1], f, r)) continue;
        const int32_t seen = side * pos.squares[squareIndex(f, r)];
        if (seen < 0) keep(pair, threatValue(-seen, attacker), f, r);
    }
}

void directThreats(const Position& pos, Side side, int32_t tf, int32_t tr, BestTwo& pair) {
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
        for (const auto& step : knightSteps) {
            const int32_t f = tf + step[0];
            const int32_t r = tr + step[1];
            if (!onBoard(f, r)) continue;
            const int32_t seen = side * pos.squares[squareIndex(f, r)];
            if (seen < 0) keep(pair, threatValue(-seen, knight), f, r);
        }
        break;
    case bishop:
        rayThreats(pos, side, tf, tr, bishop, bishopRays, pair);
        break;
    case rook:
        rayThreats(pos, side, tf, tr, rook, rookRays, pair);
        break;
    case queen:
        rayThreats(pos, side, tf, tr, queen, bishopRays, pair);
        rayThreats(pos, side, tf, tr, queen, rookRays, pair);
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
    BestTwo discovered = {noThreat, noThreat};
    discoveredThreats(pos, side, fromFile, fromRank, toFile, toRank, discovered);
    BestTwo direct = {noThreat, noThreat};
    directThreats(pos, side, toFile, toRank, direct);

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
