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

// A capturer: its square, its kind (0 for none) and its bit in the capturer sets (below).
struct Capturer {
    int32_t square;
    int32_t kind;
    int32_t bit;
};

// What can reach the target during a series: the knights a knight's jump away and the first
// piece on each of the eight lines from the target. Captures only ever empty squares, so the
// first piece of a line changes only when it leaves, and then the next one behind it along
// the line comes forward (an x-ray). Sixteen slots hold their squares: the knight squares in
// the board's knight order (0 to 7), then the lines 0 to 7 (8 to 15).
//   square[slot]     the square in the slot (meaningful only where a capturer bit is set)
//   capturers[c]     the pieces of colour c (0 Black, 1 White) that can capture on the target
//                    from their slot: a knight, a slider along its line, a pawn next to the
//                    target diagonally and towards its own advance (the king is never one: it
//                    comes last). Eight bits a group, the groups in the order capturers are
//                    taken: pawns (by line), knights (by knight slot), bishops, rooks, queens
//                    (by line). The lowest bit is thus the least valuable capturer, the first
//                    in slot order among equal kinds.
struct Reach {
    int32_t square[16];
    uint64_t capturers[2];
};

constexpr int32_t lineSlot = 8;
constexpr int32_t groupKind[5] = {pawn, knight, bishop, rook, queen};
// The first bit of a kind's group; the knights' group is filled by knight slot.
constexpr int32_t groupBase[7] = {0, 0, 8, 16, 24, 32, 0};
// Bit l of every group filled by line.
constexpr uint64_t lineGroups =
    uint64_t{1} | uint64_t{1} << 16 | uint64_t{1} << 24 | uint64_t{1} << 32;

// The slot of a capturer bit.
inline int32_t slotOfBit(int32_t bit) {
    return (bit >> 3) == 1 ? (bit & 7) : lineSlot + (bit & 7);
}

// Records t (-1 for none) as the first piece on line l from the target and returns its
// capturer bit, 0 when it cannot capture from there; its colour goes to `colour`. Worked out
// without branches: which piece stands first on a line is hard to foresee.
[[gnu::always_inline]] inline uint64_t enterLine(const Position& pos, Reach& reach, int32_t target,
                                                 int32_t l, int32_t t, int32_t& colour) {
    reach.square[lineSlot + l] = t;
    const PieceCode code = t >= 0 ? pos.squares[t & 63] : 0;
    colour = code > 0 ? 1 : 0;
    const int32_t kind = code > 0 ? code : -code;
    // A queen, and a bishop on a diagonal or a rook on a file or rank, capture from afar.
    const uint32_t sliders =
        isDiagonal(l) ? (1u << bishop | 1u << queen) : (1u << rook | 1u << queen);
    uint32_t can = sliders >> kind & 1;
    // A pawn above the square captures downwards (Black), one below upwards (White).
    if (isDiagonal(l)) {
        can |= static_cast<uint32_t>(kind == pawn) &
               static_cast<uint32_t>(t == target + geometry.step[l]) &
               static_cast<uint32_t>(lineSteps[l][1] == (code > 0 ? -1 : 1));
    }
    return uint64_t{can} << (groupBase[kind] + l);
}

static void findReach(const Position& pos, uint64_t occupied, int32_t target, Reach& reach) {
    uint64_t sets[2] = {0, 0};
    for (int32_t k = 0; k < geometry.knightCount[target]; ++k) {
        const int32_t t = geometry.knights[target][k];
        const PieceCode code = pos.squares[t];
        reach.square[k] = t;
        sets[0] |= uint64_t{code == -knight} << (groupBase[knight] + k);
        sets[1] |= uint64_t{code == knight} << (groupBase[knight] + k);
    }
    for (int32_t l = 0; l < 8; ++l) {
        int32_t colour;
        const uint64_t bit =
            enterLine(pos, reach, target, l, firstOnLine(occupied, target, l), colour);
        sets[0] |= colour ? 0 : bit;
        sets[1] |= colour ? bit : 0;
    }
    reach.capturers[0] = sets[0];
    reach.capturers[1] = sets[1];
}

// The capturer `leaving` of colour `colour` has left its square `from` (already clear in
// `occupied`); a king, which has no bit, leaves its line too.
static void leave(const Position& pos, Reach& reach, uint64_t occupied, int32_t target,
                  int32_t from, int32_t colour, const Capturer& leaving) {
    const int32_t l = geometry.line[target][from];
    if (l < 0) {
        reach.capturers[colour] &= ~(uint64_t{1} << leaving.bit); // a knight
        return;
    }
    reach.capturers[colour] &= ~(lineGroups << l);
    int32_t owner;
    const uint64_t bit = enterLine(pos, reach, target, l, firstOnLine(occupied, from, l), owner);
    reach.capturers[owner] |= bit;
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
    const uint64_t own = reach.capturers[sideIndex(side)];
    if (own == 0) return {-1, 0, 0};
    if (pinCheck) {
        if (kingAttackedNow(pos, occupied, side, changedSquare, changes, safeSince)) {
            safeSince = -1;
            return {-1, 0, 0};
        }
        safeSince = changes;
    }
    // In bit order; a candidate that may not leave its square is passed over.
    for (uint64_t bits = own; bits != 0; bits &= bits - 1) {
        const int32_t bit = __builtin_ctzll(bits);
        const int32_t square = reach.square[slotOfBit(bit)];
        if (usable(pos, occupied, side, square, pinCheck))
            return {square, groupKind[bit >> 3], bit};
    }
    return {-1, 0, 0};
}

// The king of `side` as the last resort: it captures when it stands next to the square and the
// square is not attacked once the king has left its own.
static Capturer kingCapturer(const Position& pos, uint64_t occupied, Side side, int32_t target) {
    const int32_t at = squareIndex(kingFile(pos, side), kingRank(pos, side));
    const int32_t df = (at >> 3) - (target >> 3);
    const int32_t dr = (at & 7) - (target & 7);
    if (df < -1 || df > 1 || dr < -1 || dr > 1) return {-1, 0, 0};
    // The king's own square counts as empty for the test; its content is never looked at.
    const bool safe = squareSafe(pos, occupied & ~(uint64_t{1} << at), side, target) != 0;
    return safe ? Capturer{at, king, 0} : Capturer{-1, 0, 0};
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
        leave(pos, reach, occupied, target, from, sideIndex(s), capturer);
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
