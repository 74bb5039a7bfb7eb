// First pass of the evaluation: every piece gets its base value (piece-square table, a bonus for
// each piece it attacks or defends, batteries, pins, skewers and forks) while the attack map is
// built for the second pass.
#include <initializer_list>

#include "core/attacks.h"
#include "eval/values.h"
#include "eval/work.h"

namespace {

// Piece-square tables of White, drawn as a diagram (rank 8 first, files a to h), in 1/1000
// pawn. Black's are these mirrored by rank, except the queen's, which has a table of its own.
constexpr int32_t pawnDiagram[64] = {
    -1, -1, -1, -1,  -1,  -1, -1, -1, //
    0,  0,  0,  0,   0,   0,  0,  0,  //
    0,  0,  20, 40,  40,  20, 0,  0,  //
    0,  0,  60, 200, 200, 60, 0,  0,  //
    0,  0,  40, 200, 200, 40, 0,  0,  //
    0,  0,  20, 20,  20,  20, 0,  0,  //
    0,  0,  0,  0,   0,   0,  0,  0,  //
    -1, -1, -1, -1,  -1,  -1, -1, -1, //
};
constexpr int32_t knightDiagram[64] = {
    0, 0,  0,  0,   0,   0,  0,  0, //
    0, 10, 10, 10,  10,  10, 10, 0, //
    0, 10, 80, 40,  40,  80, 10, 0, //
    0, 10, 40, 100, 100, 40, 10, 0, //
    0, 10, 40, 100, 100, 40, 10, 0, //
    0, 10, 80, 40,  40,  80, 10, 0, //
    0, 10, 10, 10,  10,  10, 10, 0, //
    0, 0,  0,  0,   0,   0,  0,  0, //
};
constexpr int32_t bishopDiagram[64] = {
    0,  0,   0,  0,  0,  0,  0,   0,  //
    5,  10,  5,  0,  0,  5,  10,  5,  //
    0,  10,  20, 10, 10, 20, 10,  0,  //
    0,  0,   20, 55, 55, 20, 0,   0,  //
    0,  0,   20, 90, 90, 20, 0,   0,  //
    0,  25,  80, 40, 40, 80, 25,  0,  //
    5,  100, 50, 0,  0,  50, 100, 5,  //
    20, 10,  0,  0,  0,  0,  10,  20, //
};
constexpr int32_t rookDiagram[64] = {
    80,  80,  80,  80,  80,  80,  80,  80,  //
    100, 100, 100, 100, 100, 100, 100, 100, //
    0,   0,   0,   10,  10,  0,   0,   0,   //
    0,   0,   0,   20,  20,  0,   0,   0,   //
    0,   0,   0,   30,  30,  0,   0,   0,   //
    0,   0,   0,   40,  40,  0,   0,   0,   //
    0,   0,   0,   50,  50,  0,   0,   0,   //
    10,  20,  40,  60,  60,  40,  20,  10,  //
};
constexpr int32_t whiteQueenDiagram[64] = {
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    5,  10, 10, 10, 10, 10, 10, 5,  //
    10, 15, 20, 20, 20, 20, 15, 10, //
    0,  0,  0,  10, 0,  10, 0,  0,  //
};
constexpr int32_t blackQueenDiagram[64] = {
    0,  0,  10, 10, 10, 10, 0,  0,  //
    10, 15, 20, 20, 20, 20, 15, 10, //
    5,  10, 10, 10, 10, 10, 10, 5,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
    0,  0,  0,  0,  0,  0,  0,  0,  //
};
constexpr int32_t kingDiagram[64] = {
    0,  1,  2,  3,  3,  2,  1,  0,  //
    11, 22, 23, 29, 29, 23, 22, 11, //
    10, 19, 20, 25, 25, 20, 19, 10, //
    9,  16, 17, 21, 21, 17, 16, 9,  //
    7,  12, 13, 16, 16, 13, 12, 7,  //
    4,  7,  8,  10, 10, 8,  7,  4,  //
    1,  2,  3,  4,  4,  3,  2,  1,  //
    0,  1,  2,  3,  3,  2,  1,  0,  //
};

// pieceSquareTable.value[kind][colour][file * 8 + rank], colour 0 Black, 1 White.
struct PieceSquareTable {
    int32_t value[7][2][64];
};

constexpr PieceSquareTable makePieceSquareTable() {
    PieceSquareTable t{};
    const int32_t* whiteDiagrams[7] = {nullptr,     pawnDiagram,       knightDiagram, bishopDiagram,
                                       rookDiagram, whiteQueenDiagram, kingDiagram};
    for (int32_t kind = pawn; kind <= king; ++kind) {
        for (int32_t file = 0; file < 8; ++file) {
            for (int32_t rank = 0; rank < 8; ++rank) {
                const int32_t sq = file * 8 + rank;
                t.value[kind][1][sq] = whiteDiagrams[kind][(7 - rank) * 8 + file];
                t.value[kind][0][sq] = kind == queen ? blackQueenDiagram[(7 - rank) * 8 + file]
                                                     : whiteDiagrams[kind][rank * 8 + file];
            }
        }
    }
    return t;
}
constexpr PieceSquareTable pieceSquareTable = makePieceSquareTable();

// attackBonus[kind][6 + rel]: bonus of a piece of `kind` for a piece it attacks (rel -6..-1,
// enemy king .. enemy pawn) or defends (rel 1..6, own pawn .. own king); rel 0, an empty square,
// is never scored. The same for the side to move and the other side.
constexpr int32_t attackBonus[7][13] = {
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {25, 50, 40, 30, 35, 0, -1, 5, 15, 15, 8, 5, 0}, // pawn
    {25, 40, 35, 10, 0, 5, -1, 3, 8, 8, 5, 3, 0},    // knight
    {25, 40, 35, 0, 10, 5, -1, 3, 8, 8, 5, 3, 0},    // bishop
    {25, 35, 0, 8, 3, 0, -1, 2, 6, 6, 4, 2, 0},      // rook
    {25, 0, 1, 1, 5, 1, -1, 2, 4, 4, 3, 2, 0},       // queen
    {-1, 0, 0, 0, 1, 1, -1, 1, 2, 2, 1, 1, -1},      // king
};

constexpr int32_t forkDivisor = 8;
constexpr int32_t pinDivisor = 8;
constexpr int32_t diagonalBatteryBonus = 30;
constexpr int32_t lineBatteryBonus = 60;
// A pin of a piece in front of one worth more than this above the pinner sets pinnedFlag.
constexpr int32_t pinnedFlagMargin = 2999;

// The two largest values among the enemy pieces a piece attacks directly, starting from the
// piece's own value: a fork counts when the second largest exceeds the attacker.
struct TwoLargest {
    int32_t largest;
    int32_t second;
};

inline void keepTwoLargest(TwoLargest& t, int32_t value) {
    if (value > t.largest) {
        t.second = t.largest;
        t.largest = value;
    } else if (value > t.second) {
        t.second = value;
    }
}

struct Piece {
    Side side;
    int32_t colour;
    int32_t kind;
    int32_t value;
    int32_t square;
};

inline void attack(EvalWork& w, const Piece& p, int32_t target) {
    w.attackBalance[target] += p.side;
    int32_t& least = w.leastAttacker[target][p.colour];
    if (p.value < least) least = p.value;
}

// The attack bonus for the piece on `target` (which must be occupied).
inline int32_t bonusFor(const Position& pos, const Piece& p, int32_t target) {
    return attackBonus[p.kind][6 + p.side * pos.squares[target]];
}

// The same divided by 2^shift, rounded towards zero as a division is.
inline int32_t bonusHalved(const Position& pos, const Piece& p, int32_t target, int32_t shift) {
    const int32_t bonus = attackBonus[p.kind][6 + p.side * pos.squares[target]];
    return bonus >= 0 ? bonus >> shift : -(-bonus >> shift);
}

// Each placement step takes the piece's value so far and returns it with its own terms added;
// the value stays in a register until the piece is done.
int32_t pawnPlacement(EvalWork& w, const Position& pos, const Piece& p, int32_t f, int32_t r,
                      int32_t value) {
    int32_t forked = 0; // enemy pieces above a pawn's worth on the capture squares
    int32_t smaller = pieceValue[king];
    for (int32_t df : {1, -1}) {
        const int32_t tf = f + df;
        if (tf < 0 || tf > 7) continue;
        const int32_t t = squareIndex(tf, r + p.side);
        attack(w, p, t);
        const int32_t seen = p.side * pos.squares[t];
        if (seen == 0) continue;
        value += bonusFor(pos, p, t);
        if (seen < -pawn) {
            ++forked;
            if (pieceValue[-seen] < smaller) smaller = pieceValue[-seen];
        }
    }
    if (forked == 2) value += smaller / forkDivisor;
    return value;
}

int32_t knightPlacement(EvalWork& w, const Position& pos, const Piece& p, int32_t value) {
    TwoLargest attacked = {p.value, p.value};
    // The order of the jumps does not matter: every step below adds up or keeps a maximum.
    for (int32_t k = 0; k < geometry.knightCount[p.square]; ++k) {
        const int32_t t = geometry.knights[p.square][k];
        attack(w, p, t);
        const int32_t seen = p.side * pos.squares[t];
        if (seen == 0) continue;
        value += bonusFor(pos, p, t);
        if (seen < 0) keepTwoLargest(attacked, pieceValue[-seen]);
    }
    if (attacked.second > p.value) value += attacked.second / forkDivisor;
    w.piecesPresent = 1;
    return value;
}

// A slider's attack on a square of its ray before the ray's first blocker: it counts in the
// balance, and as a direct attacker only before any piece stands between (no halving yet).
inline void attackAlongRay(EvalWork& w, const Piece& p, int32_t t, int32_t halvings) {
    w.attackBalance[t] += p.side;
    if (halvings == 0) {
        int32_t& least = w.leastAttacker[t][p.colour];
        if (p.value < least) least = p.value;
    }
}

// One ray of a bishop, rook or queen. It ends at its second blocker; battery pieces (a bishop or
// queen right in front on a diagonal, rooks and queens in an unbroken row on a line) do not
// block. Each occupied square after the first is scored at half the weight of the one before.
// The walk jumps from piece to piece along the ray; the empty squares between only take the
// attack while nothing blocks yet.
[[gnu::always_inline]] inline void sliderRay(EvalWork& w, const Position& pos, const Piece& p,
                                             int32_t line, bool diagonal, TwoLargest& attacked,
                                             int32_t& value) {
    int32_t halvings = 0; // each occupied square after the first counts half the one before
    int32_t blockers = 0;
    int32_t firstEnemyValue = 0;
    int32_t firstEnemySquare = -1;
    const int32_t step = geometry.step[line];
    uint64_t pieces = w.occupied & geometry.ray[p.square][line];
    int32_t t = p.square;
    while (blockers < 2) {
        if (pieces == 0) {
            // Nothing further along: while nothing blocks, the piece attacks up to the edge.
            if (blockers == 0) {
                for (int32_t k = geometry.length[t][line]; k > 0; --k) {
                    t += step;
                    attackAlongRay(w, p, t, halvings);
                }
            }
            break;
        }
        const int32_t next = step > 0 ? __builtin_ctzll(pieces) : 63 - __builtin_clzll(pieces);
        pieces &= ~(uint64_t{1} << next);
        if (blockers == 0) {
            for (int32_t u = t + step; u != next; u += step)
                attackAlongRay(w, p, u, halvings);
            attackAlongRay(w, p, next, halvings);
        }
        t = next;
        const int32_t seen = p.side * pos.squares[t];
        value += bonusHalved(pos, p, t, halvings);
        if (seen < 0) {
            const int32_t enemyValue = pieceValue[-seen];
            if (halvings == 0) {
                keepTwoLargest(attacked, enemyValue);
                firstEnemyValue = enemyValue;
                firstEnemySquare = t;
            } else if (halvings == 1 && firstEnemySquare >= 0 && enemyValue - p.value > 0) {
                if (firstEnemyValue < enemyValue) {
                    // A pin: the first enemy may not move without exposing the piece behind it.
                    value += firstEnemyValue / pinDivisor;
                    if (enemyValue - p.value > pinnedFlagMargin) w.pinnedFlag[firstEnemySquare] = 1;
                } else {
                    // A skewer: the first enemy moves away and the piece behind it falls.
                    value += enemyValue / forkDivisor;
                }
            }
            ++blockers;
        } else if (diagonal) {
            if (halvings == 0 && (seen == bishop || seen == queen)) {
                value += diagonalBatteryBonus;
            } else {
                // The slider backs up the capture of an own pawn that stands in its way.
                if (blockers == 0 && seen == pawn && lineSteps[line][1] == p.side &&
                    geometry.length[t][line] > 0)
                    w.attackBalance[t + step] += p.side;
                ++blockers;
            }
        } else {
            if (blockers == 0 && (seen == rook || seen == queen)) {
                value += lineBatteryBonus;
            } else {
                ++blockers;
            }
        }
        ++halvings;
    }
}

int32_t sliderPlacement(EvalWork& w, const Position& pos, const Piece& p, int32_t value) {
    TwoLargest attacked = {p.value, p.value};
    if (p.kind != rook) {
        for (int32_t line = 0; line < 4; ++line)
            sliderRay(w, pos, p, line, true, attacked, value);
    }
    if (p.kind != bishop) {
        for (int32_t line = 4; line < 8; ++line)
            sliderRay(w, pos, p, line, false, attacked, value);
    }
    if (attacked.second > p.value) value += attacked.second / forkDivisor;
    w.piecesPresent = 1;
    return value;
}

int32_t kingPlacement(EvalWork& w, const Position& pos, const PieceLists& lists, const Piece& p,
                      int32_t value) {
    // A bare king (nothing else in its list) is worth more in the centre the less is left.
    if (lists.slots[p.colour][0][0] == 1) value *= gamePhase * 16;
    for (uint64_t around = geometry.kingMask[p.square]; around != 0; around &= around - 1) {
        const int32_t t = __builtin_ctzll(around);
        attack(w, p, t);
        if (pos.squares[t] != 0) value += bonusFor(pos, p, t);
    }
    return value;
}

} // namespace

void scorePlacementAndAttacks(EvalWork& w, const Position& pos, const PieceLists& lists) {
    for (Side side : {black, white}) {
        const int32_t colour = sideIndex(side);
        const int32_t(*list)[2] = lists.slots[colour];
        for (int32_t slot = list[0][0]; slot >= 1; --slot) {
            const int32_t f = list[slot][0];
            if (f == -1) continue;
            const int32_t r = list[slot][1];
            const int32_t sq = squareIndex(f, r);
            const int32_t kind = side * pos.squares[sq];
            const Piece p = {side, colour, kind, pieceValue[kind], sq};
            int32_t value = pieceSquareTable.value[kind][colour][sq];
            switch (kind) {
            case pawn:
                value = pawnPlacement(w, pos, p, f, r, value);
                break;
            case knight:
                value = knightPlacement(w, pos, p, value);
                break;
            case bishop:
            case rook:
            case queen:
                value = sliderPlacement(w, pos, p, value);
                break;
            case king:
                value = kingPlacement(w, pos, lists, p, value);
                break;
            default:
                break;
            }
            w.squareValue[sq] = value;
        }
    }
}
