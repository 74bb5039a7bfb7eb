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

struct Capturer {
    int32_t file;
    int32_t rank;
    int32_t kind; // 0: none found
};

// With the pin check on, a candidate may capture only if lifting it leaves its king safe. The
// king is safe when this is asked, so only the line from the king through the candidate can
// open.
static bool usable(const Position& pos, uint64_t occupied, Side side, int32_t file, int32_t rank,
                   int32_t pinCheck) {
    if (!pinCheck) return true;
    const int32_t sq = squareIndex(file, rank);
    const int32_t home = squareIndex(kingFile(pos, side), kingRank(pos, side));
    const int32_t line = geometry.line[home][sq];
    if (line < 0) return true;
    const int32_t t = firstOnLine(occupied & ~(uint64_t{1} << sq), home, line);
    if (t < 0) return true;
    const int32_t kind = -side * pos.squares[t];
    return kind != queen && kind != (isDiagonal(line) ? bishop : rook);
}

// The pieces of `side` other than the king that attack (file, rank) directly, in scan order:
// knights, then the first piece of each diagonal ray, then of each straight ray.
struct Candidates {
    Capturer piece[16];
    int32_t count = 0;
};

static Candidates capturersOf(const Position& pos, uint64_t occupied, Side side, int32_t file,
                              int32_t rank) {
    Candidates c;
    const int32_t square = squareIndex(file, rank);
    const PieceCode* squares = pos.squares;
    for (int32_t k = 0; k < geometry.knightCount[square]; ++k) {
        const int32_t t = geometry.knights[square][k];
        if (side * squares[t] == knight) c.piece[c.count++] = {t / 8, t % 8, knight};
    }
    for (int32_t l = 0; l < 8; ++l) {
        const int32_t t = firstOnLine(occupied, square, l);
        if (t < 0) continue;
        const int32_t kind = side * squares[t];
        if (kind == queen || kind == (isDiagonal(l) ? bishop : rook) ||
            // A pawn above the square captures downwards (Black), one below upwards (White).
            (kind == pawn && isDiagonal(l) && t == square + geometry.step[l] &&
             lineSteps[l][1] == -side))
            c.piece[c.count++] = {t / 8, t % 8, kind};
    }
    return c;
}

// Least valuable capturer of `side` on (file, rank), the king excluded: the usable candidate of
// the smallest kind, the first found (knights, diagonals, straights) among equal kinds. With
// the pin check on, none while the own king is attacked.
static Capturer leastValuableCapturer(Position& pos, uint64_t occupied, Side side, int32_t file,
                                      int32_t rank, int32_t pinCheck, int32_t kingAttacked) {
    const Candidates c = capturersOf(pos, occupied, side, file, rank);
    if (c.count == 0) return {-1, -1, 0};
    if (pinCheck &&
        (kingAttacked >= 0 ? kingAttacked == 1
                           : !squareSafe(pos, occupied, side,
                                         squareIndex(kingFile(pos, side), kingRank(pos, side)))))
        return {-1, -1, 0};
    for (int32_t kind = pawn; kind <= queen; ++kind) {
        for (int32_t i = 0; i < c.count; ++i) {
            const Capturer& p = c.piece[i];
            if (p.kind == kind && usable(pos, occupied, side, p.file, p.rank, pinCheck)) return p;
        }
    }
    return {-1, -1, 0};
}

// The king of `side` as the last resort: it captures when it stands next to the square and the
// square is not attacked once the king has left its own.
static Capturer kingCapturer(Position& pos, uint64_t occupied, Side side, int32_t file,
                             int32_t rank) {
    const int32_t kf = kingFile(pos, side);
    const int32_t kr = kingRank(pos, side);
    const int32_t df = kf - file;
    const int32_t dr = kr - rank;
    if (df < -1 || df > 1 || dr < -1 || dr > 1) return {-1, -1, 0};
    const int32_t at = squareIndex(kf, kr);
    const PieceCode code = pos.squares[at];
    pos.squares[at] = 0;
    const bool safe =
        squareSafe(pos, occupied & ~(uint64_t{1} << at), side, squareIndex(file, rank)) != 0;
    pos.squares[at] = code;
    return safe ? Capturer{kf, kr, king} : Capturer{-1, -1, 0};
}

int32_t staticExchange(Side side, Position& pos, int32_t file, int32_t rank, int32_t pinCheck,
                       int32_t kingAttacked) {
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
        // What the caller knows of the king holds for the first capture only.
        Capturer capturer = leastValuableCapturer(pos, occupied, s, file, rank, pinCheck,
                                                  captures == 0 ? kingAttacked : -1);
        if (capturer.kind == 0) capturer = kingCapturer(pos, occupied, s, file, rank);
        if (capturer.kind == 0) break;

        const int32_t from = squareIndex(capturer.file, capturer.rank);
        changedSquare[changes] = from;
        changedCode[changes++] = pos.squares[from];
        pos.squares[from] = 0;
        occupied &= ~(uint64_t{1} << from);
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
