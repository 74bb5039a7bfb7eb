#include "core/exchange.h"

#include "core/attacks.h"
#include "eval/values.h"

// Every capture removes a piece, so a series has at most 32 captures and changes at most 33
// squares (the target itself first).
constexpr int32_t maxExchangeSteps = 34;

// Value a pawn gains by promoting to a queen on the capture square.
constexpr int32_t promotionGain = 9000 - 1000;

constexpr int32_t exchangeDiagonals[4][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
constexpr int32_t exchangeStraights[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};

struct Capturer {
    int32_t file;
    int32_t rank;
    int32_t kind; // 0: none found
};

// With the pin check on, a candidate may capture only if lifting it leaves its king safe.
static bool usable(Position& pos, Side side, int32_t file, int32_t rank, int32_t pinCheck) {
    if (!pinCheck) return true;
    const int32_t sq = squareIndex(file, rank);
    const PieceCode code = pos.squares[sq];
    pos.squares[sq] = 0;
    const bool safe = isSquareSafe(pos, side, -1, 0) != 0;
    pos.squares[sq] = code;
    return safe;
}

// The pieces of `side` other than the king that attack (file, rank) directly, in scan order:
// knights, then the first piece of each diagonal ray, then of each straight ray.
struct Candidates {
    Capturer piece[16];
    int32_t count = 0;
};

static Candidates capturersOf(const Position& pos, Side side, int32_t file, int32_t rank) {
    Candidates c;
    for (const auto& step : knightSteps) {
        const int32_t f = file + step[0];
        const int32_t r = rank + step[1];
        if (onBoard(f, r) && side * pos.squares[squareIndex(f, r)] == knight)
            c.piece[c.count++] = {f, r, knight};
    }
    for (const auto& step : exchangeDiagonals) {
        int32_t f = file + step[0];
        int32_t r = rank + step[1];
        int32_t distance = 1;
        while (onBoard(f, r) && pos.squares[squareIndex(f, r)] == 0) {
            f += step[0];
            r += step[1];
            ++distance;
        }
        if (!onBoard(f, r)) continue;
        const int32_t kind = side * pos.squares[squareIndex(f, r)];
        // A pawn above the square captures downwards (Black), one below upwards (White).
        if (kind == bishop || kind == queen || (kind == pawn && distance == 1 && step[1] == -side))
            c.piece[c.count++] = {f, r, kind};
    }
    for (const auto& step : exchangeStraights) {
        int32_t f = file + step[0];
        int32_t r = rank + step[1];
        while (onBoard(f, r) && pos.squares[squareIndex(f, r)] == 0) {
            f += step[0];
            r += step[1];
        }
        if (!onBoard(f, r)) continue;
        const int32_t kind = side * pos.squares[squareIndex(f, r)];
        if (kind == rook || kind == queen) c.piece[c.count++] = {f, r, kind};
    }
    return c;
}

// Least valuable capturer of `side` on (file, rank), the king excluded: the usable candidate of
// the smallest kind, the first found (knights, diagonals, straights) among equal kinds. With
// the pin check on, none while the own king is attacked.
static Capturer leastValuableCapturer(Position& pos, Side side, int32_t file, int32_t rank,
                                      int32_t pinCheck) {
    const Candidates c = capturersOf(pos, side, file, rank);
    if (c.count == 0) return {-1, -1, 0};
    if (pinCheck && !isSquareSafe(pos, side, -1, 0)) return {-1, -1, 0};
    for (int32_t kind = pawn; kind <= queen; ++kind) {
        for (int32_t i = 0; i < c.count; ++i) {
            const Capturer& p = c.piece[i];
            if (p.kind == kind && usable(pos, side, p.file, p.rank, pinCheck)) return p;
        }
    }
    return {-1, -1, 0};
}

// The king of `side` as the last resort: it captures when it stands next to the square and the
// square is not attacked once the king has left its own.
static Capturer kingCapturer(Position& pos, Side side, int32_t file, int32_t rank) {
    const int32_t kf = kingFile(pos, side);
    const int32_t kr = kingRank(pos, side);
    const int32_t df = kf - file;
    const int32_t dr = kr - rank;
    if (df < -1 || df > 1 || dr < -1 || dr > 1) return {-1, -1, 0};
    const int32_t at = squareIndex(kf, kr);
    const PieceCode code = pos.squares[at];
    pos.squares[at] = 0;
    const bool safe = isSquareSafe(pos, side, file, rank) != 0;
    pos.squares[at] = code;
    return safe ? Capturer{kf, kr, king} : Capturer{-1, -1, 0};
}

int32_t staticExchange(Side side, Position& pos, int32_t file, int32_t rank, int32_t pinCheck) {
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

    Side s = side;
    for (;;) {
        // A pawn of s on the square keeps lines through it closed and counts it as occupied.
        pos.squares[target] = s;
        Capturer capturer = leastValuableCapturer(pos, s, file, rank, pinCheck);
        if (capturer.kind == 0) capturer = kingCapturer(pos, s, file, rank);
        if (capturer.kind == 0) break;

        const int32_t from = squareIndex(capturer.file, capturer.rank);
        changedSquare[changes] = from;
        changedCode[changes++] = pos.squares[from];
        pos.squares[from] = 0;
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
