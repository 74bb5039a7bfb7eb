// Second pass of the evaluation for a king: its safe moves, the control of the squares around
// it, the pawn shelter of a castled king or the prospects of one that may still castle, and a
// check, booked as the largest threat against its side.
#include "core/attacks.h"
#include "eval/values.h"
#include "eval/work.h"

namespace {

constexpr int32_t kingLineMobility[2] = {150, 20}; // first and second safe move along a line
constexpr int32_t kingSquareControlBonus = 50;
constexpr int32_t kingSquareLossPenalty = 160;
constexpr int32_t kingShelterWeight = 1200;
// Divisors of the shelter and castling-prospect bonuses, and of the share per empty square
// between king and rook.
constexpr int32_t shelterDivisor = 35;
constexpr int32_t prospectDivisor = 46;
constexpr int32_t emptySquareDivisor = 300;

// The four lines through the king, each as its two opposite neighbours.
constexpr int32_t kingLines[4][2][2] = {
    {{-1, 1}, {1, -1}},
    {{1, 1}, {-1, -1}},
    {{0, 1}, {0, -1}},
    {{-1, 0}, {1, 0}},
};

// Whether an enemy slider stands first beyond the king, opposite to (df, dr), and would still
// reach the neighbour in direction (df, dr) once the king stepped there.
bool sliderBeyond(const Position& pos, Side side, int32_t f, int32_t r, int32_t df, int32_t dr) {
    const bool diagonal = df != 0 && dr != 0;
    for (int32_t tf = f - df, tr = r - dr; onBoard(tf, tr); tf -= df, tr -= dr) {
        const int32_t seen = side * pos.squares[squareIndex(tf, tr)];
        if (seen == 0) continue;
        return seen == -queen || seen == (diagonal ? -bishop : -rook);
    }
    return false;
}

// Safe king moves, each line counted on its own; returns their number and adds their bonus to
// `worth`.
int32_t kingMobility(const EvalWork& w, const Position& pos, Side side, int32_t f, int32_t r,
                     int32_t& worth) {
    const int32_t enemy = sideIndex(-side);
    int32_t moves = 0;
    for (const auto& line : kingLines) {
        int32_t count = 0;
        for (const auto& step : line) {
            const int32_t tf = f + step[0];
            const int32_t tr = r + step[1];
            if (!onBoard(tf, tr)) continue;
            const int32_t t = squareIndex(tf, tr);
            if (side * pos.squares[t] > 0 || w.leastAttacker[t][enemy] != noAttacker) continue;
            if (sliderBeyond(pos, side, f, r, step[0], step[1])) continue;
            worth += kingLineMobility[count++];
        }
        moves += count;
    }
    return moves;
}

inline bool ownPawnOn(const Position& pos, Side side, int32_t f, int32_t r) {
    return onBoard(f, r) && pos.squares[squareIndex(f, r)] == side * pawn;
}

// A shelter pawn is under pressure when an enemy pawn attacks its square, or when the enemy
// attacks it more often and with an attacker no dearer than the own cheapest plus a pawn.
bool underPressure(const EvalWork& w, Side side, int32_t square) {
    const int32_t colour = sideIndex(side);
    const int32_t enemy = 1 - colour;
    if (w.leastAttacker[square][enemy] <= pieceValue[pawn]) return true;
    return side * w.attackBalance[square] < 0 &&
           w.leastAttacker[square][enemy] <= w.leastAttacker[square][colour] + 1000;
}

// Shelter count of a castled king from the pawns of the three files on its wing; 0 or less
// means no shelter.
int32_t shelterCount(const EvalWork& w, const Position& pos, Side side, int32_t f, int32_t r) {
    const int32_t firstFile = f <= 2 ? 0 : 5;
    const int32_t outerFile = f <= 2 ? 2 : 5;
    int32_t shelter = 5;
    for (int32_t x = firstFile; x < firstFile + 3; ++x) {
        if (ownPawnOn(pos, side, x, r + side)) {
            if (underPressure(w, side, squareIndex(x, r + side))) shelter -= 4;
        } else {
            if (x != outerFile) shelter -= 1;
            if (ownPawnOn(pos, side, x, r + 2 * side)) {
                if (underPressure(w, side, squareIndex(x, r + 2 * side))) shelter -= 2;
            } else if (x != outerFile) {
                shelter -= 4;
            }
        }
        if (shelter <= 0) return 0;
    }
    return shelter;
}

// Prospects of castling on one wing: 2 for an own pawn of `mainFile` one step in front of the
// king's rank, 1 for two steps, 0 otherwise; one less when `otherFile` has no own pawn one step
// in front, and one less again when it has none two steps in front either. The queen side reads
// the a-pawn with the b-pawn, the king side the g-pawn with the h-pawn.
int32_t castlingProspect(const Position& pos, Side side, int32_t r, int32_t mainFile,
                         int32_t otherFile) {
    int32_t p = 0;
    if (ownPawnOn(pos, side, mainFile, r + side)) {
        p = 2;
    } else if (ownPawnOn(pos, side, mainFile, r + 2 * side)) {
        p = 1;
    }
    if (!ownPawnOn(pos, side, otherFile, r + side)) {
        --p;
        if (!ownPawnOn(pos, side, otherFile, r + 2 * side)) --p;
    }
    return p;
}

bool isCastled(const Position& pos, Side side, int32_t f, int32_t r) {
    const int32_t home = side > 0 ? 0 : 7;
    if (r != home) return false;
    const PieceCode ownRook = side * rook;
    const auto rookOn = [&](int32_t file) { return pos.squares[squareIndex(file, r)] == ownRook; };
    return (f >= 6 && !rookOn(7)) || (f <= 1 && !rookOn(0)) || (f == 2 && !rookOn(0) && !rookOn(1));
}

int32_t emptySquares(const Position& pos, int32_t r, int32_t from, int32_t to) {
    int32_t count = 0;
    for (int32_t file = from; file <= to; ++file)
        count += pos.squares[squareIndex(file, r)] == 0;
    return count;
}

// The bonus of one wing the king may still castle to: its pawn prospect, and a share for each
// empty square between king and rook (files firstEmpty..lastEmpty of the king's rank).
int32_t wingProspect(const Position& pos, Side side, int32_t r, int32_t weight, int32_t mainFile,
                     int32_t otherFile, int32_t firstEmpty, int32_t lastEmpty) {
    const int32_t p = castlingProspect(pos, side, r, mainFile, otherFile);
    if (p <= 0) return 0;
    const int32_t worth = weight * kingShelterWeight * p;
    return worth / prospectDivisor +
           worth / emptySquareDivisor * emptySquares(pos, r, firstEmpty, lastEmpty);
}

int32_t shelterOrProspects(const EvalWork& w, const Position& pos, Side side, int32_t f,
                           int32_t r) {
    const int32_t weight = w.kingSafetyWeight;
    if (isCastled(pos, side, f, r)) {
        const int32_t shelter = shelterCount(w, pos, side, f, r);
        return shelter > 0 ? weight * kingShelterWeight * shelter / shelterDivisor : 0;
    }
    const int32_t rights = side > 0 ? pos.whiteCastling : pos.blackCastling;
    int32_t bonus = 0;
    if (rights & queenSideCastling) bonus += wingProspect(pos, side, r, weight, 0, 1, 1, 3);
    if (rights & kingSideCastling) bonus += wingProspect(pos, side, r, weight, 6, 7, 5, 6);
    return bonus;
}

} // namespace

void scoreKing(EvalWork& w, const Position& pos, const PieceLists& lists, Side side, int32_t file,
               int32_t rank) {
    const int32_t colour = sideIndex(side);
    const int32_t enemy = 1 - colour;
    const int32_t q = squareIndex(file, rank);
    int32_t worth = w.squareValue[q]; // the king's value in this evaluation so far
    const int32_t moves = kingMobility(w, pos, side, file, rank, worth);

    for (uint64_t around = geometry.kingMask[q]; around != 0; around &= around - 1) {
        const int32_t held = side * w.attackBalance[__builtin_ctzll(around)];
        if (held >= 2) {
            worth += kingSquareControlBonus;
        } else if (held < 0) {
            w.total[enemy] += kingSquareLossPenalty;
        }
    }
    if (w.effectivePhase == 0) worth /= 4;
    if (w.kingSafetyWeight != 0) worth += shelterOrProspects(w, pos, side, file, rank);
    w.squareValue[q] = worth;
    w.total[colour] += worth;

    if (w.leastAttacker[q][enemy] != noAttacker) {
        // In check: the king is the most threatened piece of its side.
        if (lists.slots[colour][0][0] != 1) {
            w.total[enemy] += pieceValue[king] / hangingDivisor;
            if (moves == 0) w.total[enemy] += pieceValue[king] / trappedDivisor;
        }
        w.threat2 = w.threat1;
        w.threat1 = pieceValue[king] / threatDivisor + worth;
        w.threat1Square = q;
    }
}
