#include "core/exchange.h"

#include "core/attacks.h"
#include "eval/values.h"

// Every capture removes a piece, so a series has at most 32 captures and changes at most 33
// squares (the target itself first).
constexpr int32_t maxExchangeSteps = 34;

// Value a pawn gains by promoting to a queen on the capture square.
constexpr int32_t promotionGain = 9000 - 1000;

// Beyond any balance a series can reach.
constexpr int32_t noExchangeBound = 1000000000;

// A capturer: its square and kind; kind 0 for none.
struct Capturer {
    int32_t square;
    int32_t kind;
};

// What can reach the target during a series: the knights a knight's jump away and the first
// piece on each of the eight lines from the target. Captures only ever empty squares, so the
// first piece of a line changes only when it leaves, and then the next one behind it along
// the line comes forward (an x-ray). Sixteen slots hold them, in the order capturers of equal
// kind are taken: the knight squares in the board's knight order, then the lines 0 to 7.
//   square[slot]          the square in the slot, -1 for none
//   capturers[c][kind]    bit set of the slots holding a piece of colour c (0 Black, 1 White)
//                         and that kind that can capture on the target from there: a knight,
//                         a slider along its line, a pawn next to the target diagonally and
//                         towards its own advance (the king is never one: it comes last)
struct Reach {
    int32_t square[16];
    uint32_t capturers[2][7];
};

constexpr int32_t lineSlot = 8;

// Records the piece on t as the first one on line l from the target.
static inline void enterLine(const Position& pos, Reach& reach, int32_t target, int32_t l,
                             int32_t t) {
    reach.square[lineSlot + l] = t;
    if (t < 0) return;
    const PieceCode code = pos.squares[t];
    const Side owner = code > 0 ? white : black;
    const int32_t kind = owner * code;
    if (kind == queen || kind == (isDiagonal(l) ? bishop : rook) ||
        // A pawn above the square captures downwards (Black), one below upwards (White).
        (kind == pawn && isDiagonal(l) && t == target + geometry.step[l] &&
         lineSteps[l][1] == -owner))
        reach.capturers[sideIndex(owner)][kind] |= 1u << (lineSlot + l);
}

static void findReach(const Position& pos, uint64_t occupied, int32_t target, Reach& reach) {
    for (auto& colour : reach.capturers) {
        for (uint32_t& kind : colour)
            kind = 0;
    }
    for (int32_t k = 0; k < 8; ++k) {
        reach.square[k] = -1;
        if (k >= geometry.knightCount[target]) continue;
        const int32_t t = geometry.knights[target][k];
        const PieceCode code = pos.squares[t];
        if (code != knight && code != -knight) continue;
        reach.square[k] = t;
        reach.capturers[code > 0 ? 1 : 0][knight] |= 1u << k;
    }
    for (int32_t l = 0; l < 8; ++l)
        enterLine(pos, reach, target, l, firstOnLine(occupied, target, l));
}

// The capturer on `from`, of colour `colour`, has left (its square is already clear in
// `occupied`); a king leaves its line too.
static void leave(const Position& pos, Reach& reach, uint64_t occupied, int32_t target,
                  int32_t from, int32_t colour) {
    const int32_t l = geometry.line[target][from];
    if (l >= 0) {
        for (uint32_t& kind : reach.capturers[colour])
            kind &= ~(1u << (lineSlot + l));
        enterLine(pos, reach, target, l, firstOnLine(occupied, from, l));
        return;
    }
    for (int32_t k = 0; k < 8; ++k) {
        if (reach.square[k] == from) reach.capturers[colour][knight] &= ~(1u << k);
    }
}

// With the pin check on, a candidate may capture only if lifting it leaves its king safe. The
// king is safe when this is asked, so only the line from the king through the candidate can
// open.
static bool usable(const Position& pos, uint64_t occupied, Side side, int32_t sq,
                   int32_t pinCheck) {
    if (!pinCheck) return true;
    const int32_t home = squareIndex(kingFile(pos, side), kingRank(pos, side));
    const int32_t line = geometry.line[home][sq];
    if (line < 0) return true;
    const int32_t t = firstOnLine(occupied & ~(uint64_t{1} << sq), home, line);
    if (t < 0) return true;
    const int32_t kind = -side * pos.squares[t];
    return kind != queen && kind != (isDiagonal(line) ? bishop : rook);
}

// Whether the king of `side` is attacked now, where safeSince is the count of changed squares
// at which it was last found safe (-1: not known to be safe): since then only squares have
// been emptied (the target holds a piece of the side's own whenever it is asked), so only the
// lines from the king through those squares can have opened.
static bool kingAttackedNow(const Position& pos, uint64_t occupied, Side side,
                            const int32_t* changedSquare, int32_t changes, int32_t safeSince) {
    const int32_t home = squareIndex(kingFile(pos, side), kingRank(pos, side));
    if (safeSince < 0) return !squareSafe(pos, occupied, side, home);
    for (int32_t k = safeSince; k < changes; ++k) {
        const int32_t line = geometry.line[home][changedSquare[k]];
        if (line < 0) continue;
        const int32_t t = firstOnLine(occupied, home, line);
        if (t < 0) continue;
        const int32_t kind = -side * pos.squares[t];
        if (kind == queen || kind == (isDiagonal(line) ? bishop : rook)) return true;
    }
    return false;
}

// Least valuable capturer of `side` on the target, the king excluded: the usable one of the
// smallest kind, the first in slot order among equal kinds. With the pin check on, none while
// the own king is attacked (safeSince as for kingAttackedNow; updated).
static Capturer leastValuableCapturer(const Position& pos, uint64_t occupied, const Reach& reach,
                                      Side side, int32_t pinCheck, const int32_t* changedSquare,
                                      int32_t changes, int32_t& safeSince) {
    const uint32_t(&own)[7] = reach.capturers[sideIndex(side)];
    if ((own[pawn] | own[knight] | own[bishop] | own[rook] | own[queen]) == 0) return {-1, 0};
    if (pinCheck) {
        if (kingAttackedNow(pos, occupied, side, changedSquare, changes, safeSince)) {
            safeSince = -1;
            return {-1, 0};
        }
        safeSince = changes;
    }
    // The smallest kind first, in slot order; a candidate that may not leave its square is
    // passed over.
    for (int32_t kind = pawn; kind <= queen; ++kind) {
        for (uint32_t slots = own[kind]; slots != 0; slots &= slots - 1) {
            const int32_t square = reach.square[__builtin_ctz(slots)];
            if (usable(pos, occupied, side, square, pinCheck)) return {square, kind};
        }
    }
    return {-1, 0};
}

// The king of `side` as the last resort: it captures when it stands next to the square and the
// square is not attacked once the king has left its own.
static Capturer kingCapturer(const Position& pos, uint64_t occupied, Side side, int32_t target) {
    const int32_t at = squareIndex(kingFile(pos, side), kingRank(pos, side));
    const int32_t df = (at >> 3) - (target >> 3);
    const int32_t dr = (at & 7) - (target & 7);
    if (df < -1 || df > 1 || dr < -1 || dr > 1) return {-1, 0};
    // The king's own square counts as empty for the test; its content is never looked at.
    const bool safe = squareSafe(pos, occupied & ~(uint64_t{1} << at), side, target) != 0;
    return safe ? Capturer{at, king} : Capturer{-1, 0};
}

int32_t staticExchange(Side side, Position& pos, int32_t file, int32_t rank, int32_t pinCheck,
                       int32_t kingsSafe) {
    const int32_t target = squareIndex(file, rank);
    int32_t balances[maxExchangeSteps];
    int32_t changedSquare[maxExchangeSteps];
    PieceCode changedCode[maxExchangeSteps];
    int32_t changes = 0;
    int32_t captures = 0;
    int32_t balance = 0;
    int32_t kindOnSquare = -side * pos.squares[target];
    balances[0] = 0;
    changedSquare[changes] = target;
    changedCode[changes++] = pos.squares[target];

    // The series ends early once its outcome is known: each side may stop where it stands, so
    // `side` is sure of the best balance it could have stopped at (floor) and the opponent of
    // the worst (ceiling), both from `side`'s view. When all that s can still reach by going
    // on (what it has now, up to the next capture's gain) lies beyond one of them, the earlier
    // stop decides and the rest of the series cannot change the result.
    int32_t floor = -noExchangeBound;
    int32_t ceiling = noExchangeBound;
    // The target counts as occupied throughout (the capturer of the moment stands on it).
    uint64_t occupied = occupancy(pos) | uint64_t{1} << target;
    Reach reach;
    findReach(pos, occupied, target, reach);
    // For each side's king (Black 0, White 1): the count of changed squares at which it was
    // last known safe, -1 when it is not known to be.
    int32_t safeSince[2] = {-1, -1};
    if (kingsSafe & sideKingSafe) safeSince[side > 0 ? 1 : 0] = changes;
    if (kingsSafe & opponentKingSafe) safeSince[side > 0 ? 0 : 1] = changes;
    Side s = side;
    for (;;) {
        const int32_t now = side * balance;
        const int32_t gain =
            pieceValue[kindOnSquare] + (rank == (s > 0 ? 7 : 0) ? promotionGain : 0);
        if (s == side) {
            if (now >= ceiling || now + gain <= floor) break;
            if (now > floor) floor = now;
        } else {
            if (now <= floor || now - gain >= ceiling) break;
            if (now < ceiling) ceiling = now;
        }
        // A pawn of s on the square keeps lines through it closed and counts it as occupied.
        pos.squares[target] = s;
        Capturer capturer = leastValuableCapturer(pos, occupied, reach, s, pinCheck, changedSquare,
                                                  changes, safeSince[s > 0 ? 1 : 0]);
        if (capturer.kind == 0) capturer = kingCapturer(pos, occupied, s, target);
        if (capturer.kind == 0) break;

        const int32_t from = capturer.square;
        changedSquare[changes] = from;
        changedCode[changes++] = pos.squares[from];
        pos.squares[from] = 0;
        occupied &= ~(uint64_t{1} << from);
        leave(pos, reach, occupied, target, from, sideIndex(s));
        if (kindOnSquare != 0) balance += s * pieceValue[kindOnSquare];
        kindOnSquare = capturer.kind;
        if (capturer.kind == pawn && rank == (s > 0 ? 7 : 0)) {
            kindOnSquare = queen;
            balance += s * promotionGain;
        }
        balances[++captures] = balance;
        s = -s;
    }

    // Each side may stop the series where it suits it best, walking back from the end.
    int32_t result = balance;
    if (captures >= 2) {
        for (int32_t i = captures - 2; i >= 0; --i) {
            if (s * balances[i] > s * result) result = balances[i];
            s = -s;
        }
    }
    while (changes > 0) {
        --changes;
        pos.squares[changedSquare[changes]] = changedCode[changes];
    }
    return result;
}
