// The evaluation, worked by hand on small positions: the material scale and the lazy cut-off,
// the first pass (piece-square values, attacks, batteries, pins, forks, the attack map), the
// second pass of each kind of piece (mobility, defence, threats, pawns' paths, kings' shelter)
// and the settling of threats.
#include <climits>

#include "eval/evaluate.h"
#include "eval/values.h"
#include "eval/work.h"
#include "helpers.h"

namespace {

constexpr int32_t any = INT_MIN; // a figure a row leaves unchecked

// The first pass as the evaluation runs it, with the second pass's running values set up:
// effectivePhase 6 without pieces, kingSafetyWeight 7 - 2 * phase with pieces up to phase 3.
EvalWork firstPass(const Board& b, Side toMove) {
    EvalWork w{};
    startEvalWork(w, b.pos, toMove);
    scorePlacementAndAttacks(w, b.pos, b.lists);
    w.effectivePhase = w.piecesPresent ? gamePhase : 6;
    w.kingSafetyWeight = w.piecesPresent && gamePhase <= 3 ? 7 - 2 * gamePhase : 0;
    return w;
}

// The second pass of the piece on square q.
void secondPass(EvalWork& w, const Board& b, int32_t q) {
    const Side side = b.pos.squares[q] > 0 ? white : black;
    const int32_t kind = side * b.pos.squares[q];
    if (kind == pawn) {
        scorePawn(w, b.pos, side, q / 8, q % 8);
    } else if (kind == king) {
        scoreKing(w, b.pos, b.lists, side, q / 8, q % 8);
    } else {
        scorePiece(w, b.pos, side, q / 8, q % 8);
    }
}

// Both passes over every piece, Black first, each list from its highest slot, without the final
// settling of threats.
EvalWork bothPasses(const Board& b, Side toMove) {
    EvalWork w = firstPass(b, toMove);
    for (const Side side : {black, white}) {
        const auto& list = b.lists.slots[sideIndex(side)];
        for (int32_t slot = list[0][0]; slot >= 1; --slot) {
            if (list[slot][0] != -1) secondPass(w, b, squareIndex(list[slot][0], list[slot][1]));
        }
    }
    return w;
}

void expectFigure(int32_t actual, int32_t expected, const char* what) {
    if (expected != any) EXPECT_EQ(actual, expected) << what;
}

// ---- material and the lazy cut-off --------------------------------------------------------------

// The scale rises to its top at index 591 and falls after; entries whose exact value is a whole
// number come out one lower in extended precision (225, 325, 800, 900).
TEST(MaterialScale, Entries) {
    const int32_t cases[][2] = {
        {0, -18339},  {1, -18086},  {7, -16577},  {23, -12628}, {39, -8788},
        {70, -1661},  {296, 37889}, {304, 38889}, {591, 56669}, {1023, 17054},
        {225, 27815}, {325, 41383}, {800, 47463}, {900, 36455},
    };
    for (const auto& c : cases)
        EXPECT_EQ(materialScale[c[0]], c[1]) << "entry " << c[0];
    for (int32_t i = 0; i < materialScaleSize; ++i)
        EXPECT_LE(materialScale[i], materialScale[591]) << "entry " << i;
    EXPECT_LT(materialScale[300], materialScale[400]);
    EXPECT_GT(materialScale[700], materialScale[800]);
}

// The entries of (material - 12000) / 128 of each side, White's less Black's.
TEST(MaterialScale, MaterialTerm) {
    const struct {
        Material material;
        int32_t term;
    } cases[] = {
        {{{51000, 51000}}, 0},
        {{{50000, 51000}}, 1000}, // 304 against 296
        {{{51000, 50000}}, -1000},
        {{{12000, 13000}}, 1762}, // 7 against 0
        // A knight up: 304 against 281; 35.968 - 3 * 1.032 * 2.032 / 230 = 35.9406 pawns.
        {{{48000, 51000}}, 38889 - 35940},
    };
    for (const auto& c : cases)
        EXPECT_EQ(materialTerm(c.material), c.term)
            << c.material.sum[0] << " " << c.material.sum[1];
    const Board start;
    EXPECT_EQ(evaluate(start.material, start.pos, start.lists, white, 0), 0);
    EXPECT_EQ(evaluate(start.material, start.pos, start.lists, black, 0), 0);
}

TEST(Evaluate, LazyCutOffBoundaries) {
    const Board s;
    ASSERT_EQ(lazyMargin, 1200);
    const int64_t nodesBefore = nodeCount;
    positionalTotal[0] = 111;
    positionalTotal[1] = 222;
    // 2 * (0 + 1200) < 2401 fails low at once, 2 * (0 - 1200) > -2401 high; the totals stay.
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, 2401), 1200);
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, -2401), -1200);
    EXPECT_EQ(positionalTotal[0], 111);
    EXPECT_EQ(positionalTotal[1], 222);
    // Equality never cuts: the full evaluation, 2642 a side (see the start piece by piece).
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, 2400), 0);
    EXPECT_EQ(positionalTotal[0], 2642);
    EXPECT_EQ(positionalTotal[1], 2642);
    positionalTotal[1] = 7;
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, -2400), 0);
    EXPECT_EQ(positionalTotal[1], 2642);
    EXPECT_EQ(nodeCount - nodesBefore, 4);
}

TEST(Evaluate, BoundZeroAlwaysEvaluatesFully) {
    // Bare kings, phase 5. White e4: 16 * 5 * 16 = 1280 and eight safe moves in four lines,
    // (150 + 20) * 4: 1960. Black e8: 3 * 5 * 16 = 240, d8 + f8 170, d7, e7, f7 150 each: 860.
    const Board s("4k3/8/8/8/4K3/8/8/8 w - - 0 1");
    positionalTotal[0] = positionalTotal[1] = -5;
    const int64_t nodesBefore = nodeCount;
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, 0), 1960 - 860);
    EXPECT_EQ(positionalTotal[1], 1960);
    EXPECT_EQ(positionalTotal[0], 860);
    EXPECT_EQ(nodeCount - nodesBefore, 1);
    // A queen up: -1661 + 18339 = 16678, margin 2800 (phase 4); bound 0 still runs in full, a
    // bound far below 2 * (16678 - 2800) does not.
    const Board q("4k3/8/8/8/8/8/8/Q3K3 w - - 0 1");
    ASSERT_EQ(lazyMargin, 2800);
    positionalTotal[0] = positionalTotal[1] = -5;
    const int32_t score = evaluate(q.material, q.pos, q.lists, white, 0);
    EXPECT_NE(positionalTotal[1], -5);
    EXPECT_EQ(score, 16678 + positionalTotal[1] - positionalTotal[0]);
    EXPECT_EQ(evaluate(q.material, q.pos, q.lists, white, 1001), 16678 - 2800);
}

// ---- the first pass -----------------------------------------------------------------------------

const char* const castled = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 w kq - 0 1";

// A piece's table entry plus what it attacks and defends: a forked pair adds the smaller victim
// / 8, a pin or skewer the piece behind / 8 (behind at half weight), a battery 30; a bare king's
// entry is multiplied by phase * 16.
TEST(FirstPass, SquareValues) {
    const struct {
        const char* fen;
        const char* square;
        int32_t value;
    } cases[] = {
        {startFen, "a1", 21}, // 10 + pawn a2 2 + pawn a7 0 + knight 6 + bishop 3 at half
        {startFen, "h1", 21},
        {startFen, "e1", 9}, // 3 + queen 1 + bishop 2 + pawns 1 each
        {startFen, "e2", 0},
        {"4k3/8/8/3n1n2/4P3/8/8/4K3 w - - 0 1", "e4", 645}, // 200 + 35 + 35 + 3000 / 8
        {"4k3/8/8/1n6/P7/8/8/4K3 w - - 0 1", "a4", 35},     // one capture square, no fork
        {"4k3/8/8/n1n5/1P6/8/8/4K3 w - - 0 1", "b4", 445},
        {"k7/8/8/8/8/2Q5/1B6/4K3 w - - 0 1", "b2", 133},   // 100 + 3 + 30
        {"4k3/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e1", 450},   // 60 + 3 + 25 / 2 + 375
        {"4q2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e1", 455},  // 60 + 3 + 35 / 2 + 375
        {"4r2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e1", 63},   // an equal rook behind: no pin
        {"7k/8/8/4r3/8/2n5/8/B6K w - - 0 1", "a1", 422},   // 20 + 10 + 35 / 2 + 375
        {"7k/8/8/6r1/8/4q3/8/2B4K w - - 0 1", "c1", 682},  // 0 + 40 + 35 / 2 + 5000 / 8
        {"7k/8/8/6q1/8/4q3/8/2B4K w - - 0 1", "c1", 1185}, // 40 + 40 / 2 + 9000 / 8
        {"4k3/8/8/8/4K3/8/8/8 w - - 0 1", "e4", 1280},     // 16 * 5 * 16
        {"4k3/8/8/8/4K3/8/8/8 w - - 0 1", "e8", 240},      // 3 * 5 * 16
        {"4k3/8/8/3p4/4K3/8/8/8 w - - 0 1", "e4", 1281},   // + 1 for the pawn beside
        {"4k3/8/8/3p4/4K3/8/8/8 w - - 0 1", "e8", 3},      // not bare
        {"7k/8/8/8/4N3/8/8/K7 w - - 0 1", "e4", 100},
        {"7K/8/8/8/3PQ3/8/8/k3r3 w - - 0 1", "e4", 3}, // 0 + pawn d4 2 + rook e1 1
        {castled, "g1", 5},                            // 1 + rook f1 1 + pawns 1 each
        {"8/8/1k6/P7/8/8/8/7K b - - 0 1", "a5", 25},   // 0 + 25 for attacking the king
    };
    for (const auto& c : cases) {
        const Board b(c.fen);
        EXPECT_EQ(firstPass(b, b.pos.sideToMove).squareValue[sq(c.square)], c.value)
            << c.fen << " " << c.square;
    }
}

// Pieces attacking a square less the enemy's, and the cheapest attacker of each side: a slider
// behind a pawn's capture or behind its own piece counts, but only the front piece attacks.
TEST(FirstPass, AttackMap) {
    const char* const battery = "k7/8/8/8/8/2Q5/1B6/4K3 w - - 0 1";
    const struct {
        const char* fen;
        const char* square;
        int32_t balance;
        int32_t leastWhite;
        int32_t leastBlack;
    } cases[] = {
        {startFen, "a2", any, 5000, any},
        {startFen, "b1", 1, 5000, any},
        {startFen, "c1", 1, 9000, any},
        {startFen, "a4", 0, any, any},
        {startFen, "a7", -1, any, any},
        {startFen, "f3", 4, 1000, noAttacker},
        {startFen, "b3", 3, any, any},
        {startFen, "e3", 3, any, any}, // bishop behind d2
        {startFen, "g3", 2, any, any},
        {startFen, "d2", 4, 3000, any},
        {startFen, "f6", -4, any, any},
        {startFen, "g6", -2, any, any},
        {battery, "d4", 2, 9000, any},
        {battery, "e5", 2, 9000, any},
        {battery, "h8", 2, 9000, any},
        {battery, "c3", any, 3000, any},
        {"4r2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e5", any, 5000, any},
        {"4r2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e6", -1, noAttacker, any},
        {"8/8/8/5P2/4B3/3P4/8/k3K3 w - - 0 1", "g6", 2, any, any}, // forward capture only
        {"8/8/8/5P2/4B3/3P4/8/k3K3 w - - 0 1", "c2", 0, any, any},
        {"4k3/8/8/8/4K3/8/8/8 w - - 0 1", "d5", any, 12000, any},
        {"k7/8/8/4p3/3R4/8/8/7K w - - 0 1", "d4", -1, any, any},
        {"k7/8/8/4p3/3R4/2P5/8/7K w - - 0 1", "d4", 0, any, any},
        {"3r2k1/8/8/8/3B4/2P5/8/K7 w - - 0 1", "d4", 0, any, any},
    };
    for (const auto& c : cases) {
        const Board b(c.fen);
        const EvalWork w = firstPass(b, b.pos.sideToMove);
        const int32_t q = sq(c.square);
        SCOPED_TRACE(std::string(c.fen) + " " + c.square);
        expectFigure(w.attackBalance[q], c.balance, "balance");
        expectFigure(w.leastAttacker[q][1], c.leastWhite, "least white attacker");
        expectFigure(w.leastAttacker[q][0], c.leastBlack, "least black attacker");
    }
}

// A piece in front of a king or a piece worth more than 2999 above it is flagged pinned.
TEST(FirstPass, PinFlags) {
    const struct {
        const char* fen;
        const char* square;
        int32_t flag;
    } cases[] = {
        {"4k3/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e5", 1},           // 12000 - 5000 behind
        {"4q2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e5", 1},          // 9000 - 5000
        {"4r2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "e5", 0},          // 5000 - 5000
        {"7k/8/8/4r3/8/2n5/8/B6K w - - 0 1", "c3", 0},           // 5000 - 3000
        {"7k/8/8/6r1/8/4q3/8/2B4K w - - 0 1", "e3", 0},          // a skewer
        {"7k/8/8/6q1/8/4q3/8/2B4K w - - 0 1", "e3", 0},          // equal pieces: a skewer
        {"k7/8/1b6/3Pp3/2PRP3/3P4/1p6/N5K1 w - - 0 1", "d4", 1}, // 12000 - 3000
    };
    for (const auto& c : cases) {
        const Board b(c.fen);
        EXPECT_EQ(firstPass(b, b.pos.sideToMove).pinnedFlag[sq(c.square)], c.flag) << c.fen;
    }
}

// ---- the second pass ----------------------------------------------------------------------------

// One piece's second pass after the first: its value, what each side's total gains, and the
// threats booked. Mobility counts safe moves per line with falling weights; an attacked piece
// not held costs L / 32 (L its worth less the cheapest attacker's if defended) and books
// L / 4 + its value as a threat, or charges it at once when the piece has no safe move.
TEST(SecondPass, OnePiece) {
    const char* const hanging = "k7/8/8/4p3/3R4/8/8/7K w - - 0 1";
    const char* const boxed = "k7/8/8/3Pp3/2PRP3/3P4/8/7K w - - 0 1";
    const struct Case {
        const char* fen;
        const char* square;
        int32_t value = any, black = any, white = any, threat1 = any, threat2 = any, other = any,
                earlierThreat = 0;
    } cases[] = {
        // 100 + 170 + 60 + 40 + 20 + 20 + 15 + 5 + 5; nothing defends it.
        {"7k/8/8/8/4N3/8/8/K7 w - - 0 1", "e4", 435, any, 435},
        // Rank and file 133 each, diagonals of 3 and 4 moves 125 and 130, table 10.
        {"8/7k/K7/8/8/8/8/3Q4 w - - 0 1", "d1", 531},
        // The rook e1 behind makes e2-e8 unsafe but for the capture: 30 + 8 moves 368.
        {"7K/8/8/8/4R3/8/8/k3r3 w - - 0 1", "e4", 398},
        // A cheaper rook behind: only Qxe1 on the file 90, rank 125, diagonals 131 and 132.
        {"7K/8/8/8/3PQ3/8/8/k3r3 w - - 0 1", "e4", 3 + 90 + 125 + 131 + 132},
        // 30 + 382 for 13 moves; undefended: 5000 / 32 to Black, threat 1250 + 412.
        {hanging, "d4", 412, 156, any, 1662},
        // Boxed in: 30 + 8; no move, so 1250 is charged as well.
        {boxed, "d4", 38, 156 + 1250, any, 1288},
        // Defended by c3: + 50000 / 1000; L = 4000: 125 to Black, threat 1000 + 462.
        {"k7/8/8/4p3/3R4/2P5/8/7K w - - 0 1", "d4", 462, 125, any, 1462},
        {"k7/8/8/3Pp3/2PRP3/2PP4/8/7K w - - 0 1", "d4", 88, 125 + 1000, any, 1088},
        // A bishop attacked by a rook and defended: L = 3000 - 5000 < 1, nothing.
        {"3r2k1/8/8/8/3B4/2P5/8/K7 w - - 0 1", "d4", any, 0, any, 0, any, 0},
        // e2: 30 + 10 + 5 + 60 + 60, defended by f1 and g1: 50000 / 3000.
        {startFen, "e2", 181, 0},
        // A runaway in a pawn ending: 120 * 24 / 4 + 24 * 500 / 8 doubled, + 4500, + 30 + 10.
        {"7k/8/P7/8/8/8/8/4K3 w - - 0 1", "a6", 40 + 8940, 0},
        {"7k/8/P7/8/8/8/8/4K3 b - - 0 1", "a6", 40 + 8940, 0},
        // Caught: Black gains 35 + 1000, the weak pawn 200, and 1000 / 32; White to move not, so
        // its threat 250 + 35 is the other side's.
        {"8/8/1k6/P7/8/8/8/7K b - - 0 1", "a5", 35, 1035 + 200 + 31, 35, any, any, 285},
        // Own king a7 in the path: 540 + 270 + 375, not free, not doubled.
        {"7k/K7/8/P7/8/8/8/8 w - - 0 1", "a5", 40 + 1185},
        // The own king holds the pawn with the move (2040 / 2); without, Black gains 1040 / 2.
        {"8/8/2k5/P7/8/3K4/8/8 w - - 0 1", "a5", 40 + 1020, 0},
        {"8/8/2k5/P7/8/3K4/8/8 b - - 0 1", "a5", 40, 520},
        // Phase 2: 200 + 30 + 10 + the advance 90 * 8 / 8.
        {"7k/8/8/4P3/8/8/8/RRQ3K1 w - - 0 1", "e5", 330, 0},
        // (9 + 50 + 50) / 4 + castling prospects 730.
        {startFen, "e1", 757},
        // h1 150, f1 and f2 held twice 100; (5 + 250) / 4 + shelter 1200.
        {castled, "g1", 1263, any, 1263},
        // In check with no safe move: 12000 / 32 + 12000 / 4; the check becomes the largest
        // threat (3000 + 2) without comparing, the earlier 5000 moves down.
        {.fen = "4k3/8/8/8/8/8/6PP/r6K w - - 0 1",
         .square = "h1",
         .value = 2,
         .black = 375 + 3000,
         .threat1 = 3002,
         .threat2 = 5000,
         .earlierThreat = 5000},
        // Not back along the checking rank: 1024 + three lines of 170; threat 3000 + 1534.
        {"7k/8/8/8/r2K4/8/8/8 w - - 0 1", "d4", 1024 + 510, 0, any, 4534},
        // A bare king in check costs nothing but books 3000 + g2 and h2 150 each.
        {"4k3/8/8/8/8/8/8/r6K w - - 0 1", "h1", 300, 0, any, 3300},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.fen) + " " + c.square);
        const Board b(c.fen);
        EvalWork w = firstPass(b, b.pos.sideToMove);
        w.threat1 = c.earlierThreat;
        secondPass(w, b, sq(c.square));
        expectFigure(w.squareValue[sq(c.square)], c.value, "value");
        expectFigure(w.total[0], c.black, "Black's total");
        expectFigure(w.total[1], c.white, "White's total");
        expectFigure(w.threat1, c.threat1, "largest threat");
        expectFigure(w.threat2, c.threat2, "second threat");
        expectFigure(w.otherThreat, c.other, "the other side's threat");
        if (c.threat1 > 0) EXPECT_EQ(w.threat1Square, sq(c.square));
    }
}

// What shelter or castling prospects add to a white king, weight 7 in phase 0: 7 * 1200 * p /
// 46 per wing with rights, or 7 * 1200 * p / 35 once castled, p counting the pawns in front.
TEST(SecondPass, KingShelter) {
    const struct {
        const char* fen;
        const char* king;
        int32_t bonus;
    } cases[] = {
        {startFen, "e1", 730}, // p = 2 on each wing: 365 twice
        {castled, "g1", 1200}, // f2 g2 h2: 5
        {"rnbqkbnr/pppppppp/8/8/8/6P1/PPPPPP1P/RNBQ1RK1 w kq - 0 1", "g1", 960}, // g3: 4
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPP1/RNBQ1RK1 w kq - 0 1", "g1", 0},     // no h-pawn
        {"rnbqkbnr/ppppppp1/8/8/8/7p/PPPPPPPP/RNBQ1RK1 w kq - 0 1", "g1", 240},  // h3 hits g2
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ2KR w kq - 0 1", "g1", 0},      // rook still on h1
    };
    for (const auto& c : cases) {
        const Board b(c.fen);
        EvalWork with = firstPass(b, white);
        ASSERT_EQ(with.kingSafetyWeight, 7);
        EvalWork without = with;
        without.kingSafetyWeight = 0;
        secondPass(with, b, sq(c.king));
        secondPass(without, b, sq(c.king));
        EXPECT_EQ(with.squareValue[sq(c.king)] - without.squareValue[sq(c.king)], c.bonus) << c.fen;
    }
}

TEST(SecondPass, StartPositionPieceByPiece) {
    const Board s;
    const EvalWork w = bothPasses(s, white);
    // a2: front 30, steps 10 + 5, phalanx 60, rook 50000 / 5000; b2: 45 + 60 + 60 + bishop 16;
    // c2: 165 + queen 5; f2: 165 + king 4. Knights: 3 + two jumps 230 + rook 16. c1: 6 + queen
    // 8; f1: 6 + king 6; d1: 24 + king 2.
    const struct {
        const char* square;
        int32_t value;
    } cases[] = {{"a2", 115}, {"b2", 181}, {"c2", 170}, {"d2", 181}, {"e2", 181}, {"f2", 169},
                 {"g2", 181}, {"h2", 115}, {"a1", 21},  {"h1", 21},  {"b1", 249}, {"g1", 249},
                 {"c1", 14},  {"f1", 12},  {"d1", 26},  {"e1", 757}};
    for (const auto& c : cases) {
        const char mirror[3] = {c.square[0], static_cast<char>('1' + '8' - c.square[1]), 0};
        EXPECT_EQ(w.squareValue[sq(c.square)], c.value) << c.square;
        EXPECT_EQ(w.squareValue[sq(mirror)], c.value) << mirror;
    }
    EXPECT_EQ(w.threat1, 0);
    EXPECT_EQ(w.otherThreat, 0);
}

// After both passes the side to move saves its largest threatened piece and loses half the
// second; a pinned largest piece cannot be saved; threats against the side not to move are
// cashed by the side to move.
TEST(SecondPass, SettlingOfThreats) {
    const struct {
        const char* fen;
        int32_t threat1, threat2, other, blackGain;
    } cases[] = {
        {"k7/8/8/3Pp3/2PRP3/3P4/8/7K w - - 0 1", 1288, 0, 0, 0},
        // The knight a1 attacked by b2 as well: 750 + 230.
        {"k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K w - - 0 1", 1288, 980, 0, 980 / 2},
        {"k7/8/1b6/3Pp3/2PRP3/3P4/1p6/N5K1 w - - 0 1", 1288, 980, any, 1288 / 2},
        {"k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K b - - 0 1", 0, any, 1288, 1288},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fen);
        const Board b(c.fen);
        const EvalWork w = bothPasses(b, b.pos.sideToMove);
        expectFigure(w.threat1, c.threat1, "largest threat");
        expectFigure(w.threat2, c.threat2, "second threat");
        expectFigure(w.otherThreat, c.other, "the other side's threat");
        evaluatePosition(b.pos, b.lists, b.pos.sideToMove);
        EXPECT_EQ(positionalTotal[0] - w.total[0], c.blackGain);
        EXPECT_EQ(positionalTotal[1], w.total[1]);
    }
}

} // namespace
