// The work record the two evaluation passes share, and the constants of more than one pass.
// Internal to the evaluation.
#pragma once

#include <cstdint>

#include "core/position.h"
#include "core/types.h"
#include "eval/values.h"

// leastAttacker value of a square that no piece of that colour attacks.
constexpr int32_t noAttacker = 1000000000;

// Threat bookkeeping: a value is divided by these before it is charged or booked.
constexpr int32_t threatDivisor = 4;
constexpr int32_t hangingDivisor = 32;
constexpr int32_t trappedDivisor = 4;

// One evaluation's work arrays and running values, all indexed by square (file * 8 + rank).
//   squareValue      value of the piece on each square, built up by both passes (each
//                    piece's own step works on a copy and writes it back when done)
//   attackBalance    White attacks minus Black attacks of each square
//   leastAttacker    [square][colour]: value of the cheapest direct attacker, noAttacker if none
//   pinnedFlag       1 for a piece pinned against a piece worth 3000 more than the pinner
//   piecesPresent    1 once a knight, bishop, rook or queen of either side is seen
//   effectivePhase   gamePhase, or 6 when only kings and pawns are left
//   kingSafetyWeight 7 - 2 * gamePhase with pieces on the board in phases 0..3, else 0
//   threat1, threat2 largest and second largest threat against the side to move, and the
//   threat1Square    square of the piece behind threat1
//   otherThreat      largest threat against the other side
//   total            positional totals being summed, [colour]
//   toMove           the side to move
//   occupied         the occupied squares, a bit set over square indices
struct EvalWork {
    int32_t squareValue[64];
    int32_t attackBalance[64];
    int32_t leastAttacker[64][2];
    uint8_t pinnedFlag[64];
    int32_t piecesPresent;
    int32_t effectivePhase;
    int32_t kingSafetyWeight;
    int32_t threat1;
    int32_t threat2;
    int32_t threat1Square;
    int32_t otherThreat;
    int32_t total[2];
    Side toMove;
    uint64_t occupied;
};

// Clears the attack map and the flags and notes the occupied squares and the side to move,
// ready for the first pass.
void startEvalWork(EvalWork& w, const Position& pos, Side side);

// First pass: piece values from the tables and attacks, and the attack map.
void scorePlacementAndAttacks(EvalWork& w, const Position& pos, const PieceLists& lists);

// Second pass, knights, bishops, rooks and queens: safe mobility, defence and threats.
void scorePiece(EvalWork& w, const Position& pos, Side side, int32_t file, int32_t rank);

// Second pass, a pawn: front square, options, neighbours, advance, path and the rule of the
// square, defence and threats.
void scorePawn(EvalWork& w, const Position& pos, Side side, int32_t file, int32_t rank);

// Second pass, a king: safe moves, square control, shelter or castling prospects, check.
void scoreKing(EvalWork& w, const Position& pos, const PieceLists& lists, Side side, int32_t file,
               int32_t rank);

// Books a threat value against `side`.
inline void bookThreat(EvalWork& w, Side side, int32_t value, int32_t square) {
    if (side != w.toMove) {
        if (value > w.otherThreat) w.otherThreat = value;
        return;
    }
    if (value > w.threat1) {
        w.threat2 = w.threat1;
        w.threat1 = value;
        w.threat1Square = square;
    } else if (value > w.threat2) {
        w.threat2 = value;
    }
}

// defenceWeight[kind]: bonus of a defended piece, divided by its cheapest defender's value
// over 1000.
constexpr int32_t defenceWeight[7] = {0, 50, 80, 80, 50, 25, 0};

// The same bonus read from a table instead of divided out: defenceBonus[kind][v] is
// defenceWeight[kind] * 1000 / (v * 1000) for a cheapest defender worth v pawns, since every
// piece is worth a whole number of pawns.
struct DefenceBonus {
    int32_t byPawns[7][13];
};
constexpr DefenceBonus makeDefenceBonus() {
    DefenceBonus t{};
    for (int32_t kind = 0; kind < 7; ++kind) {
        for (int32_t v = 1; v < 13; ++v)
            t.byPawns[kind][v] = defenceWeight[kind] * 1000 / (v * 1000);
    }
    return t;
}
constexpr DefenceBonus defenceBonus = makeDefenceBonus();
static_assert(pieceValue[pawn] == 1000 && pieceValue[knight] % 1000 == 0 &&
                  pieceValue[bishop] % 1000 == 0 && pieceValue[rook] % 1000 == 0 &&
                  pieceValue[queen] % 1000 == 0 && pieceValue[king] == 12000,
              "defenders are worth whole pawns, at most a king's 12");

// The defence and threat step shared by pieces and pawns: the defence bonus, then the charge
// for an attacked and insufficiently defended piece and the booking of its threat; then the
// piece's value (`worth`, as both passes have built it up) joins its side's total. `trapped`
// when the piece has no safe move.
inline void settlePiece(EvalWork& w, Side side, int32_t square, int32_t kind, int32_t worth,
                        bool trapped) {
    const int32_t colour = sideIndex(side);
    const int32_t enemy = 1 - colour;
    const int32_t defender = w.leastAttacker[square][colour];
    if (defender != noAttacker) worth += defenceBonus.byPawns[kind][defender / 1000];

    const int32_t attacker = w.leastAttacker[square][enemy];
    if (attacker != noAttacker) {
        const int32_t value = pieceValue[kind];
        int32_t loss;
        if (side * w.attackBalance[square] < 0) {
            // Attacked more often than defended.
            loss = attacker <= defender ? value : value - attacker + defender;
        } else {
            // Held at least evenly: only an attacker cheaper than the piece wins something.
            loss = value - attacker;
        }
        if (loss >= 1) {
            w.total[enemy] += loss / hangingDivisor;
            if (trapped) w.total[enemy] += loss / trappedDivisor;
            bookThreat(w, side, loss / threatDivisor + worth, square);
        }
    }
    w.squareValue[square] = worth;
    w.total[colour] += worth;
}

inline int32_t chebyshev(int32_t f1, int32_t r1, int32_t f2, int32_t r2) {
    const int32_t df = f1 > f2 ? f1 - f2 : f2 - f1;
    const int32_t dr = r1 > r2 ? r1 - r2 : r2 - r1;
    return df > dr ? df : dr;
}
