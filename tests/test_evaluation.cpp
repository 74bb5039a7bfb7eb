#include <gtest/gtest.h>

#include <initializer_list>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/position.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "eval/values.h"
#include "eval/work.h"

namespace {

struct LoadedPosition {
    Position pos;
    PieceLists lists;
    Material material;
    PositionKey key;
};

// Reads a position and derives its lists, material, gamePhase and lazyMargin.
LoadedPosition load(const char* fen) {
    static const bool ready = [] {
        initPositionKeys();
        fillMaterialScale();
        return true;
    }();
    (void)ready;
    LoadedPosition s{};
    const char* error = readFen(fen, s.pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    derivePositionState(s.pos, s.key, s.lists, s.material);
    return s;
}

// Square index from its name, "e4".
int32_t sq(const char* name) {
    return squareIndex(name[0] - 'a', name[1] - '1');
}

// The first pass as the evaluation runs it, with the second pass's running values set up:
// effectivePhase 6 without pieces, kingSafetyWeight 7 - 2 * phase with pieces up to phase 3.
EvalWork firstPass(const LoadedPosition& s, Side toMove) {
    EvalWork w{};
    startEvalWork(w, s.pos, toMove);
    scorePlacementAndAttacks(w, s.pos, s.lists);
    w.effectivePhase = w.piecesPresent ? gamePhase : 6;
    w.kingSafetyWeight = w.piecesPresent && gamePhase <= 3 ? 7 - 2 * gamePhase : 0;
    return w;
}

// Both passes over every piece, black first, each list from its highest slot, without the
// final settling of threats.
EvalWork bothPasses(const LoadedPosition& s, Side toMove) {
    EvalWork w = firstPass(s, toMove);
    for (Side side : {black, white}) {
        const int32_t(*list)[2] = s.lists.slots[sideIndex(side)];
        for (int32_t slot = list[0][0]; slot >= 1; --slot) {
            const int32_t f = list[slot][0];
            if (f == -1) continue;
            const int32_t r = list[slot][1];
            const int32_t kind = side * s.pos.squares[squareIndex(f, r)];
            if (kind == pawn) {
                scorePawn(w, s.pos, side, f, r);
            } else if (kind == king) {
                scoreKing(w, s.pos, s.lists, side, f, r);
            } else {
                scorePiece(w, s.pos, side, f, r);
            }
        }
    }
    return w;
}

int32_t exactEvaluation(const LoadedPosition& s, Side toMove) {
    return evaluate(s.material, s.pos, s.lists, toMove, 0);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Material term and the lazy cut-off

TEST(MaterialTerm, ScaledMaterialDifference) {
    load(startFen);
    // Indices (51000 - 12000) / 128 = 304 on both sides.
    EXPECT_EQ(materialTerm(Material{{51000, 51000}}), 0);
    // One pawn up: index 304 against (50000 - 12000) / 128 = 296: 38889 - 37889.
    EXPECT_EQ(materialTerm(Material{{50000, 51000}}), 1000);
    EXPECT_EQ(materialTerm(Material{{51000, 50000}}), -1000);
    // King and pawn against a bare king: index 7 against 0: -16577 + 18339.
    EXPECT_EQ(materialTerm(Material{{12000, 13000}}), 1762);
    // A knight up: index 304 against 36000 / 128 = 281; y = 35.968 pawns,
    // f = 35.968 - 3 * 1.032 * 2.032 / 230 = 35.9406 -> 35940; 38889 - 35940.
    EXPECT_EQ(materialTerm(Material{{48000, 51000}}), 2949);
}

TEST(MaterialTerm, StartPositionEvaluatesToZero) {
    const LoadedPosition s = load(startFen);
    EXPECT_EQ(materialTerm(s.material), 0);
    EXPECT_EQ(exactEvaluation(s, white), 0);
    EXPECT_EQ(exactEvaluation(s, black), 0);
}

TEST(LazyEvaluation, CutOffBoundaries) {
    const LoadedPosition s = load(startFen);
    ASSERT_EQ(lazyMargin, 1200); // phase 0
    const int64_t nodesBefore = nodeCount;
    positionalTotal[0] = 111;
    positionalTotal[1] = 222;
    // 2 * (0 + 1200) = 2400 < 2401: fails low at once, the totals stay untouched.
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, 2401), 1200);
    EXPECT_EQ(positionalTotal[0], 111);
    EXPECT_EQ(positionalTotal[1], 222);
    // 2 * (0 - 1200) = -2400 > -2401: fails high at once.
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, -2401), -1200);
    EXPECT_EQ(positionalTotal[0], 111);
    EXPECT_EQ(positionalTotal[1], 222);
    // Equality never cuts: both run the full evaluation (2642 a side, see the start position).
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, 2400), 0);
    EXPECT_EQ(positionalTotal[0], 2642);
    EXPECT_EQ(positionalTotal[1], 2642);
    positionalTotal[0] = positionalTotal[1] = 7;
    EXPECT_EQ(evaluate(s.material, s.pos, s.lists, white, -2400), 0);
    EXPECT_EQ(positionalTotal[1], 2642);
    EXPECT_EQ(nodeCount - nodesBefore, 4);
}

TEST(LazyEvaluation, BoundZeroAlwaysEvaluatesFully) {
    // Two bare kings, phase 5. White king e4: 16 * 5 * 16 = 1280, eight safe moves in four
    // lines (150 + 20) * 4 = 680: 1960. Black king e8: 3 * 5 * 16 = 240, moves d8+f8 170,
    // d7, e7, f7 150 each: 860. Material indices 0 and 0.
    const LoadedPosition s = load("4k3/8/8/8/4K3/8/8/8 w - - 0 1");
    positionalTotal[0] = positionalTotal[1] = -5;
    const int64_t nodesBefore = nodeCount;
    EXPECT_EQ(exactEvaluation(s, white), 1960 - 860);
    EXPECT_EQ(positionalTotal[1], 1960);
    EXPECT_EQ(positionalTotal[0], 860);
    EXPECT_EQ(nodeCount - nodesBefore, 1);

    // White a queen up: m = materialScale[70] - materialScale[0] = -1661 + 18339 = 16678 and
    // lazyMargin 1200 + 4 * 400 = 2800 (phase 4); bound 0 still runs the full evaluation.
    const LoadedPosition q = load("4k3/8/8/8/8/8/8/Q3K3 w - - 0 1");
    ASSERT_EQ(lazyMargin, 2800);
    positionalTotal[0] = positionalTotal[1] = -5;
    const int32_t score = exactEvaluation(q, white);
    EXPECT_NE(positionalTotal[1], -5);
    EXPECT_EQ(score, 16678 + positionalTotal[1] - positionalTotal[0]);
    // A bound far below the most favourable estimate: 2 * (16678 - 2800) > 1001.
    EXPECT_EQ(evaluate(q.material, q.pos, q.lists, white, 1001), 16678 - 2800);
}

// ---------------------------------------------------------------------------------------------
// First pass: piece-square values, attack bonuses, batteries, pins, forks, the attack map

TEST(PlacementStart, RookOnA1SeesOnlyItsNeighbours) {
    const LoadedPosition s = load(startFen);
    const EvalWork w = firstPass(s, white);
    // 10 (table) + 2 (own pawn a2) + 0 (pawn a7 at half weight) + 6 (knight b1) + 3 (bishop c1 at
    // half weight).
    EXPECT_EQ(w.squareValue[sq("a1")], 21);
    EXPECT_EQ(w.squareValue[sq("h1")], 21);
    EXPECT_EQ(w.leastAttacker[sq("a2")][1], 5000);
    EXPECT_EQ(w.leastAttacker[sq("b1")][1], 5000);
    EXPECT_EQ(w.attackBalance[sq("b1")], 1);
    // Beyond its blockers: c1 is seen by the queen only, a4 by nobody, a7 by the a8 rook only.
    EXPECT_EQ(w.attackBalance[sq("c1")], 1);
    EXPECT_EQ(w.leastAttacker[sq("c1")][1], 9000);
    EXPECT_EQ(w.attackBalance[sq("a4")], 0);
    EXPECT_EQ(w.attackBalance[sq("a7")], -1);
    // King e1: 3 + queen 1 + bishop 2 + pawns d2, e2, f2 1 each.
    EXPECT_EQ(w.squareValue[sq("e1")], 9);
    EXPECT_EQ(w.squareValue[sq("e2")], 0);
}

TEST(PlacementStart, SlidersBackUpTheirPawnsCaptures) {
    const LoadedPosition s = load(startFen);
    const EvalWork w = firstPass(s, white);
    // f3: pawns e2 and g2, knight g1, and the queen behind e2 on its capture diagonal.
    EXPECT_EQ(w.attackBalance[sq("f3")], 4);
    EXPECT_EQ(w.leastAttacker[sq("f3")][1], 1000);
    EXPECT_EQ(w.leastAttacker[sq("f3")][0], noAttacker);
    // b3: pawns a2, c2 and the queen behind c2; e3: pawns d2, f2 and the bishop behind d2.
    EXPECT_EQ(w.attackBalance[sq("b3")], 3);
    EXPECT_EQ(w.attackBalance[sq("e3")], 3);
    // g3: only the pawns f2 and h2. d2: bishop, queen, king and knight.
    EXPECT_EQ(w.attackBalance[sq("g3")], 2);
    EXPECT_EQ(w.attackBalance[sq("d2")], 4);
    EXPECT_EQ(w.leastAttacker[sq("d2")][1], 3000);
    // The mirror image for black.
    EXPECT_EQ(w.attackBalance[sq("f6")], -4);
    EXPECT_EQ(w.attackBalance[sq("g6")], -2);
}

TEST(Placement, PawnForksTwoKnights) {
    const LoadedPosition s = load("4k3/8/8/3n1n2/4P3/8/8/4K3 w - - 0 1");
    const EvalWork w = firstPass(s, white);
    // 200 (table e4) + 35 + 35 (two knights attacked) + 3000 / 8 (fork) = 645.
    EXPECT_EQ(w.squareValue[sq("e4")], 645);
    EXPECT_EQ(w.leastAttacker[sq("d5")][1], 1000);
    EXPECT_EQ(w.leastAttacker[sq("f5")][1], 1000);
}

TEST(Placement, EdgePawnHasOneCaptureSquareAndNoFork) {
    const LoadedPosition a = load("4k3/8/8/1n6/P7/8/8/4K3 w - - 0 1");
    // 0 (table a4) + 35 (knight b5), no second capture square.
    EXPECT_EQ(firstPass(a, white).squareValue[sq("a4")], 35);
    // The same pawn one file in, between two knights: 0 + 35 + 35 + 375.
    const LoadedPosition b = load("4k3/8/8/n1n5/1P6/8/8/4K3 w - - 0 1");
    EXPECT_EQ(firstPass(b, white).squareValue[sq("b4")], 445);
}

TEST(Placement, BishopBehindQueenFormsABattery) {
    const LoadedPosition s = load("k7/8/8/8/8/2Q5/1B6/4K3 w - - 0 1");
    const EvalWork w = firstPass(s, white);
    // 100 (table b2) + 3 (defends the queen) + 30 (battery); its other rays are empty.
    EXPECT_EQ(w.squareValue[sq("b2")], 133);
    // Behind the queen both count in the balance, but only the queen attacks directly.
    for (const char* name : {"d4", "e5", "h8"}) {
        EXPECT_EQ(w.attackBalance[sq(name)], 2) << name;
        EXPECT_EQ(w.leastAttacker[sq(name)][1], 9000) << name;
    }
    EXPECT_EQ(w.leastAttacker[sq("c3")][1], 3000);
}

TEST(Placement, RookPinsKnightAgainstKingOrQueen) {
    // Rook e1: 60 (table) + 3 (knight e5) + 25 / 2 (king e8 behind) + 3000 / 8 (pin) = 450;
    // 12000 - 5000 > 2999 flags the knight.
    const LoadedPosition k = load("4k3/8/8/4n3/8/8/7K/4R3 w - - 0 1");
    EvalWork w = firstPass(k, white);
    EXPECT_EQ(w.squareValue[sq("e1")], 450);
    EXPECT_EQ(w.pinnedFlag[sq("e5")], 1);
    // Queen behind: 60 + 3 + 35 / 2 + 375 = 455; 9000 - 5000 = 4000 > 2999.
    const LoadedPosition q = load("4q2k/8/8/4n3/8/8/7K/4R3 w - - 0 1");
    w = firstPass(q, white);
    EXPECT_EQ(w.squareValue[sq("e1")], 455);
    EXPECT_EQ(w.pinnedFlag[sq("e5")], 1);
    // Rook behind: 5000 - 5000 is no gain, so 60 + 3 + 0 and no flag.
    const LoadedPosition r = load("4r2k/8/8/4n3/8/8/7K/4R3 w - - 0 1");
    w = firstPass(r, white);
    EXPECT_EQ(w.squareValue[sq("e1")], 63);
    EXPECT_EQ(w.pinnedFlag[sq("e5")], 0);
    // The white rook's ray ends its count at the knight: e6 is seen by the black rook alone.
    EXPECT_EQ(w.leastAttacker[sq("e5")][1], 5000);
    EXPECT_EQ(w.attackBalance[sq("e6")], -1);
    EXPECT_EQ(w.leastAttacker[sq("e6")][1], noAttacker);
}

TEST(Placement, BishopPinsKnightAgainstRookWithoutFlag) {
    const LoadedPosition s = load("7k/8/8/4r3/8/2n5/8/B6K w - - 0 1");
    const EvalWork w = firstPass(s, white);
    // 20 (table a1) + 10 (knight c3) + 35 / 2 (rook e5) + 3000 / 8 (pin) = 422; the rook is worth
    // 5000 - 3000 = 2000 more than the bishop, not enough for the flag.
    EXPECT_EQ(w.squareValue[sq("a1")], 422);
    EXPECT_EQ(w.pinnedFlag[sq("c3")], 0);
}

TEST(Placement, BishopSkewersQueenAndRook) {
    const LoadedPosition s = load("7k/8/8/6r1/8/4q3/8/2B4K w - - 0 1");
    const EvalWork w = firstPass(s, white);
    // Queen e3 in front is worth more than rook g5 behind, which beats the bishop by 2000:
    // 0 (table c1) + 40 (queen) + 35 / 2 (rook) + 5000 / 8 (skewer) = 682.
    EXPECT_EQ(w.squareValue[sq("c1")], 682);
    EXPECT_EQ(w.pinnedFlag[sq("e3")], 0);
}

TEST(Placement, SkewerOfTwoEqualPieces) {
    // Two queens: the one behind is not worth more than the front one, so it is a skewer, not a
    // pin, and no flag although 9000 - 3000 > 2999: 0 + 40 + 40 / 2 + 9000 / 8 = 1185.
    const LoadedPosition s = load("7k/8/8/6q1/8/4q3/8/2B4K w - - 0 1");
    const EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.squareValue[sq("c1")], 1185);
    EXPECT_EQ(w.pinnedFlag[sq("e3")], 0);
}

TEST(Placement, SliderBacksUpOnlyForwardPawnCaptures) {
    const LoadedPosition s = load("8/8/8/5P2/4B3/3P4/8/k3K3 w - - 0 1");
    const EvalWork w = firstPass(s, white);
    // Behind f5 on the bishop's forward diagonal: g6 counts for the pawn and the bishop.
    EXPECT_EQ(w.attackBalance[sq("g6")], 2);
    // Behind d3 the diagonal runs backwards: c2 gets nothing.
    EXPECT_EQ(w.attackBalance[sq("c2")], 0);
}

TEST(Placement, BareKingGrowsWithThePhase) {
    // Kings only: phase 5. Table e4 16 * 5 * 16; black e8: 3 * 5 * 16.
    const LoadedPosition s = load("4k3/8/8/8/4K3/8/8/8 w - - 0 1");
    ASSERT_EQ(gamePhase, 5);
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.squareValue[sq("e4")], 1280);
    EXPECT_EQ(w.squareValue[sq("e8")], 240);
    EXPECT_EQ(w.leastAttacker[sq("d5")][1], 12000);
    // A black pawn beside it adds the king's bonus of 1 on top of the multiplied entry.
    const LoadedPosition p = load("4k3/8/8/3p4/4K3/8/8/8 w - - 0 1");
    ASSERT_EQ(gamePhase, 5);
    w = firstPass(p, white);
    EXPECT_EQ(w.squareValue[sq("e4")], 1281);
    // Black's king is not bare here: only its table entry.
    EXPECT_EQ(w.squareValue[sq("e8")], 3);
}

// ---------------------------------------------------------------------------------------------
// Second pass: mobility, defence, threats

TEST(Mobility, KnightWithEightSafeTargets) {
    const LoadedPosition s = load("7k/8/8/8/4N3/8/8/K7 w - - 0 1");
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.squareValue[sq("e4")], 100);
    scorePiece(w, s.pos, white, 4, 3);
    // 170 + 60 + 40 + 20 + 20 + 15 + 5 + 5 = 335 on top of its table entry; nothing defends it.
    EXPECT_EQ(w.squareValue[sq("e4")], 100 + 335);
    EXPECT_EQ(w.total[1], 435);
}

TEST(Mobility, QueenCountsEachLineOnItsOwn) {
    const LoadedPosition s = load("8/7k/K7/8/8/8/8/3Q4 w - - 0 1");
    EvalWork w = firstPass(s, white);
    scorePiece(w, s.pos, white, 3, 0);
    // Rank and file: seven safe moves each, 90 + 25 + 10 + 5 + 1 + 1 + 1 = 133 per line.
    // Diagonals c2-a4 (3): 125 and e2-h5 (4): 130. Table d1: 10.
    EXPECT_EQ(w.squareValue[sq("d1")], 10 + 133 + 133 + 125 + 130);
}

TEST(Mobility, RookSeenThroughByAnEnemyRookBehindIt) {
    const LoadedPosition s = load("7K/8/8/8/4R3/8/8/k3r3 w - - 0 1");
    EvalWork w = firstPass(s, white);
    scorePiece(w, s.pos, white, 4, 3);
    // Up the file the rook e1 stands behind it: the balance there less one is 0, so e5-e8 are not
    // safe; e3, e2 are held evenly and not safe; the capture on e1 is. Along the rank: 7.
    // 8 moves: 200 + 90 + 30 + 20 + 10 + 10 + 4 + 4 = 368, table e4 30.
    EXPECT_EQ(w.squareValue[sq("e4")], 30 + 368);
}

TEST(Mobility, QueenSeenThroughByACheaperRookBehindIt) {
    const LoadedPosition s = load("7K/8/8/8/3PQ3/8/8/k3r3 w - - 0 1");
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.squareValue[sq("e4")], 3); // table 0, pawn d4 2, rook e1 1
    scorePiece(w, s.pos, white, 4, 3);
    // File: e5 is held twice (queen, pawn d4) but the rook behind is worth less than the queen,
    // so only the capture on e1 is safe: 90. Rank: f4-h4: 125. Diagonals f5-h7 with d3, c2 (b1
    // is the rook's and the king's): 131; f3, g2 (h1 even) with d5-a8: 132.
    EXPECT_EQ(w.squareValue[sq("e4")], 3 + 90 + 125 + 131 + 132);
}

TEST(EvalStart, SymmetricTotals) {
    const LoadedPosition s = load(startFen);
    ASSERT_EQ(gamePhase, 0);
    evaluatePosition(s.pos, s.lists, white);
    // Pawns 115 + 181 + 170 + 181 + 181 + 169 + 181 + 115 = 1293, rooks 42, knights 498,
    // bishops 26, queen 26, king 757.
    EXPECT_EQ(positionalTotal[1], 2642);
    EXPECT_EQ(positionalTotal[0], 2642);
}

TEST(EvalStart, PieceByPiece) {
    const LoadedPosition s = load(startFen);
    const EvalWork w = bothPasses(s, white);
    // a2: front a3 30, steps 10 + 5, phalanx b2 60, defended by the rook 50000 / 5000 = 10.
    // b2: 45 + 60 + 60 + bishop 16; c2: 165 + queen 5; f2: 165 + king 4; h2 like a2.
    // b1, g1: 3 (defends d2 / e2) + 230 (two safe jumps) + 80000 / 5000 (rook).
    // c1: 6 (defends b2, d2) + 80000 / 9000 (queen); f1: 6 + 80000 / 12000 (king).
    // d1: 10 (table) + 2 + 2 + 2 (pawns c2, d2, e2) + 4 (bishop c1) + 2 (knight b1 at half) + 0
    // (king) + 2 (bishop f1 at half) = 24, + 25000 / 12000 (king).
    const struct {
        const char* square;
        int32_t value;
    } expected[] = {{"a2", 115}, {"b2", 181}, {"c2", 170}, {"d2", 181}, {"e2", 181}, {"f2", 169},
                    {"g2", 181}, {"h2", 115}, {"a1", 21},  {"h1", 21},  {"b1", 249}, {"g1", 249},
                    {"c1", 14},  {"f1", 12},  {"d1", 26},  {"e1", 757}};
    for (const auto& e : expected) {
        EXPECT_EQ(w.squareValue[sq(e.square)], e.value) << e.square;
        // Black's piece on the mirrored square is worth the same.
        const char mirror[3] = {e.square[0], static_cast<char>('1' + '8' - e.square[1]), 0};
        EXPECT_EQ(w.squareValue[sq(mirror)], e.value) << mirror;
    }
    EXPECT_EQ(w.threat1, 0);
    EXPECT_EQ(w.otherThreat, 0);
}

TEST(Threat, HangingRookAttackedByPawn) {
    const LoadedPosition s = load("k7/8/8/4p3/3R4/8/8/7K w - - 0 1");
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.attackBalance[sq("d4")], -1);
    scorePiece(w, s.pos, white, 3, 3);
    // Safe moves: a4 b4 c4 e4 g4 h4 (f4 is the pawn's), d5-d8, d1-d3: 13, worth
    // 200 + 90 + 30 + 20 + 10 + 10 + 4 * 4 + 2 * 3 = 382. Table d4: 30.
    EXPECT_EQ(w.squareValue[sq("d4")], 412);
    // Undefended: L = 5000, black gains 5000 / 32; T = 5000 / 4 + 412.
    EXPECT_EQ(w.total[0], 156);
    EXPECT_EQ(w.threat1, 1662);
    EXPECT_EQ(w.threat1Square, sq("d4"));
}

TEST(Threat, TrappedHangingRook) {
    // The rook is boxed in by its own pawns c4, d3, d5, e4.
    const LoadedPosition s = load("k7/8/8/3Pp3/2PRP3/3P4/8/7K w - - 0 1");
    EvalWork w = firstPass(s, white);
    scorePiece(w, s.pos, white, 3, 3);
    // 30 + 4 * 2 (own pawns), no move: black gains 156 + 5000 / 4; T = 1250 + 38.
    EXPECT_EQ(w.squareValue[sq("d4")], 38);
    EXPECT_EQ(w.total[0], 156 + 1250);
    EXPECT_EQ(w.threat1, 1288);
}

TEST(Threat, RookDefendedByPawn) {
    const LoadedPosition s = load("k7/8/8/4p3/3R4/2P5/8/7K w - - 0 1");
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.attackBalance[sq("d4")], 0);
    scorePiece(w, s.pos, white, 3, 3);
    // 30 + 382 (the same 13 moves) + 50000 / 1000 (pawn defence) = 462; held evenly:
    // L = 5000 - 1000, black gains 4000 / 32; T = 1000 + 462.
    EXPECT_EQ(w.squareValue[sq("d4")], 462);
    EXPECT_EQ(w.total[0], 125);
    EXPECT_EQ(w.threat1, 1462);

    const LoadedPosition boxed = load("k7/8/8/3Pp3/2PRP3/2PP4/8/7K w - - 0 1");
    w = firstPass(boxed, white);
    scorePiece(w, boxed.pos, white, 3, 3);
    // 38 + 50; trapped: 125 + 4000 / 4.
    EXPECT_EQ(w.squareValue[sq("d4")], 88);
    EXPECT_EQ(w.total[0], 125 + 1000);
    EXPECT_EQ(w.threat1, 1088);
}

TEST(Threat, BishopAttackedByRookAndDefendedOnce) {
    const LoadedPosition s = load("3r2k1/8/8/8/3B4/2P5/8/K7 w - - 0 1");
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.attackBalance[sq("d4")], 0);
    scorePiece(w, s.pos, white, 3, 3);
    // L = 3000 - 5000 < 1: nothing charged, nothing booked.
    EXPECT_EQ(w.total[0], 0);
    EXPECT_EQ(w.threat1, 0);
    EXPECT_EQ(w.otherThreat, 0);
    EXPECT_EQ(w.total[1], w.squareValue[sq("d4")]);
}

// The settling of threats is what evaluatePosition adds after both passes.
TEST(Threat, SettlingWithOneHangingPiece) {
    const LoadedPosition s = load("k7/8/8/3Pp3/2PRP3/3P4/8/7K w - - 0 1");
    const EvalWork w = bothPasses(s, white);
    EXPECT_EQ(w.threat1, 1288);
    EXPECT_EQ(w.threat2, 0);
    EXPECT_EQ(w.otherThreat, 0);
    evaluatePosition(s.pos, s.lists, white);
    // White saves the rook and has nothing else to lose: t2 = 0.
    EXPECT_EQ(positionalTotal[0], w.total[0]);
    EXPECT_EQ(positionalTotal[1], w.total[1]);
}

TEST(Threat, SettlingWithTwoHangingPieces) {
    // The boxed rook d4 (T = 1288) and the knight a1 attacked by the pawn b2: moves b3, c2
    // 170 + 60, L = 3000, T = 750 + 230 = 980.
    const char* fen = "k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K w - - 0 1";
    const LoadedPosition s = load(fen);
    const EvalWork w = bothPasses(s, white);
    EXPECT_EQ(w.threat1, 1288);
    EXPECT_EQ(w.threat2, 980);
    EXPECT_EQ(w.otherThreat, 0);
    evaluatePosition(s.pos, s.lists, white);
    // White saves the rook and loses the knight: black gains 980 / 2.
    EXPECT_EQ(positionalTotal[0] - w.total[0], 490);
    EXPECT_EQ(positionalTotal[1], w.total[1]);
}

TEST(Threat, SettlingWhenTheLargerPieceIsPinned) {
    // The bishop b6 pins the rook d4 against the king g1 (12000 - 3000 > 2999).
    const LoadedPosition s = load("k7/8/1b6/3Pp3/2PRP3/3P4/1p6/N5K1 w - - 0 1");
    const EvalWork w = bothPasses(s, white);
    EXPECT_EQ(w.pinnedFlag[sq("d4")], 1);
    EXPECT_EQ(w.threat1, 1288);
    EXPECT_EQ(w.threat2, 980);
    evaluatePosition(s.pos, s.lists, white);
    // The pinned rook cannot be saved: black gains 1288 / 2.
    EXPECT_EQ(positionalTotal[0] - w.total[0], 644);
    EXPECT_EQ(positionalTotal[1], w.total[1]);
}

TEST(Threat, SettlingWhenTheThreatenedSideHasMoved) {
    // Black to move with the two white pieces hanging: M = 1288, black has no threatened
    // piece (t1 = 0 < M): black cashes 1288 and white gets t1 = 0.
    const LoadedPosition s = load("k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K b - - 0 1");
    const EvalWork w = bothPasses(s, black);
    EXPECT_EQ(w.otherThreat, 1288);
    EXPECT_EQ(w.threat1, 0);
    evaluatePosition(s.pos, s.lists, black);
    EXPECT_EQ(positionalTotal[0] - w.total[0], 1288);
    EXPECT_EQ(positionalTotal[1], w.total[1]);
}

// ---------------------------------------------------------------------------------------------
// Pawns

TEST(PawnStructure, StartPawnOnE2) {
    const LoadedPosition s = load(startFen);
    EvalWork w = firstPass(s, white);
    EXPECT_EQ(w.squareValue[sq("e2")], 0);
    scorePawn(w, s.pos, white, 4, 1);
    // 30 + 10 + 5 + 60 + 60 = 165, no advance in phase 0, defended by bishop f1 / knight g1:
    // 50000 / 3000 = 16.
    EXPECT_EQ(w.squareValue[sq("e2")], 165 + 16);
    EXPECT_EQ(w.total[0], 0);
}

TEST(PawnStructure, RunawayPawnInPawnEnding) {
    // Pawn ending: effectivePhase 6, W = 24. Pawn a6, black king h8 outside the square.
    // B = 120 * 24 / 4 + 24 * 500 / 8 = 2220, doubled 4440, + 4500 = 8940; plus front a7 30 and
    // the single step 10; no defender, no attacker.
    for (const char* fen : {"7k/8/P7/8/8/8/8/4K3 w - - 0 1", "7k/8/P7/8/8/8/8/4K3 b - - 0 1"}) {
        const LoadedPosition s = load(fen);
        const Side toMove = s.pos.sideToMove;
        EvalWork w = firstPass(s, toMove);
        ASSERT_EQ(w.effectivePhase, 6);
        scorePawn(w, s.pos, white, 0, 5);
        EXPECT_EQ(w.squareValue[sq("a6")], 30 + 10 + 8940) << fen;
        EXPECT_EQ(w.total[0], 0) << fen;
    }
}

TEST(PawnStructure, PawnCaughtByTheKing) {
    // Pawn a5 gives check to the king b6 (black to move); the white king h1 is far away.
    const LoadedPosition s = load("8/8/1k6/P7/8/8/8/7K b - - 0 1");
    EvalWork w = firstPass(s, black);
    // 0 (table) + 25 (attacks the king).
    EXPECT_EQ(w.squareValue[sq("a5")], 25);
    scorePawn(w, s.pos, white, 0, 4);
    // Front a6 is the king's: no front bonus, no step; capturing on b6 is option 10: 35.
    // Inside the square, not held (own king 7 > 1): black gains (35 + 1000) / 1 and B = 0;
    // weak pawn 200; attacked, undefended: L = 1000, 1000 / 32 = 31, not trapped.
    EXPECT_EQ(w.squareValue[sq("a5")], 35);
    EXPECT_EQ(w.total[0], 1035 + 200 + 31);
    EXPECT_EQ(w.total[1], 35);
    // White is not to move: its threat 1000 / 4 + 35 goes to the other side's maximum.
    EXPECT_EQ(w.otherThreat, 285);
}

TEST(PawnStructure, BlockedPathIsNotDoubled) {
    // Pawn a5, own king a7 in its path, black king h8 outside the square. B = 90 * 24 / 4 = 540,
    // a7 occupied: + 24 * 120 * 3 / 32 = 270 and W = 6, past the last rank + 6 * 500 / 8 = 375:
    // 1185, not free so not doubled. Front a6 30, step 10.
    const LoadedPosition s = load("7k/K7/8/P7/8/8/8/8 w - - 0 1");
    EvalWork w = firstPass(s, white);
    scorePawn(w, s.pos, white, 0, 4);
    EXPECT_EQ(w.squareValue[sq("a5")], 40 + 1185);
}

TEST(PawnStructure, OwnKingHoldsThePawnWithTheMove) {
    // Pawn a5 (front 30, step 10), black king c6 inside the square at distance 2, white king d3
    // at distance 3. Path: 540 + 24 * 500 / 8 = 2040.
    const LoadedPosition w1 = load("8/8/2k5/P7/8/3K4/8/8 w - - 0 1");
    EvalWork w = firstPass(w1, white);
    scorePawn(w, w1.pos, white, 0, 4);
    // White to move: 3 - 1 <= 2, held: B = 2040 / 2.
    EXPECT_EQ(w.squareValue[sq("a5")], 40 + 1020);
    EXPECT_EQ(w.total[0], 0);
    const LoadedPosition b1 = load("8/8/2k5/P7/8/3K4/8/8 b - - 0 1");
    w = firstPass(b1, black);
    scorePawn(w, b1.pos, white, 0, 4);
    // Black to move: 3 > 2, lost: black gains (40 + 1000) / 2 and B = 0.
    EXPECT_EQ(w.squareValue[sq("a5")], 40);
    EXPECT_EQ(w.total[0], 520);
}

TEST(PawnStructure, AdvanceOnlyBeforeTheEnding) {
    // White Q + 2R + P: 20 pawns' worth besides the king, phase 2.
    const LoadedPosition s = load("7k/8/8/4P3/8/8/8/RRQ3K1 w - - 0 1");
    ASSERT_EQ(gamePhase, 2);
    EvalWork w = firstPass(s, white);
    ASSERT_EQ(w.effectivePhase, 2);
    scorePawn(w, s.pos, white, 4, 4);
    // 200 (table) + 30 (front) + 10 (step) + 90 * 8 / 8 (advance), no path, no defender.
    EXPECT_EQ(w.squareValue[sq("e5")], 330);
    EXPECT_EQ(w.total[0], 0);
}

// ---------------------------------------------------------------------------------------------
// Kings

namespace {

// What the shelter or castling prospects add to the king: its second pass with the phase's
// weight minus the same without it.
int32_t shelterBonus(const char* fen, int32_t file, int32_t rank) {
    const LoadedPosition s = load(fen);
    EvalWork with = firstPass(s, white);
    EXPECT_EQ(with.kingSafetyWeight, 7) << fen;
    EvalWork without = with;
    without.kingSafetyWeight = 0;
    scoreKing(with, s.pos, s.lists, white, file, rank);
    scoreKing(without, s.pos, s.lists, white, file, rank);
    const int32_t q = squareIndex(file, rank);
    return with.squareValue[q] - without.squareValue[q];
}

} // namespace

TEST(KingSafety, StartKingCastlingProspects) {
    // p = 2 on each wing: 7 * 1200 * 2 / 46 = 365 twice, no empty square beside the king.
    EXPECT_EQ(shelterBonus(startFen, 4, 0), 730);
    const LoadedPosition s = load(startFen);
    EvalWork w = firstPass(s, white);
    scoreKing(w, s.pos, s.lists, white, 4, 0);
    // 9 + 50 (d2) + 50 (e2) = 109, / 4 = 27, + 730.
    EXPECT_EQ(w.squareValue[sq("e1")], 757);
}

TEST(KingSafety, ShelterOfTheCastledKing) {
    // f2 g2 h2 untouched: 7 * 1200 * 5 / 35.
    EXPECT_EQ(shelterBonus("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 w kq - 0 1", 6, 0), 1200);
    // g-pawn on g3: 5 - 1 = 4, 7 * 1200 * 4 / 35 = 960.
    EXPECT_EQ(shelterBonus("rnbqkbnr/pppppppp/8/8/8/6P1/PPPPPP1P/RNBQ1RK1 w kq - 0 1", 6, 0), 960);
    // No h-pawn: 5 - 1 - 4 = 0, no bonus.
    EXPECT_EQ(shelterBonus("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPP1/RNBQ1RK1 w kq - 0 1", 6, 0), 0);
    // The black pawn h3 attacks g2: 5 - 4 = 1, 8400 / 35 = 240.
    EXPECT_EQ(shelterBonus("rnbqkbnr/ppppppp1/8/8/8/7p/PPPPPPPP/RNBQ1RK1 w kq - 0 1", 6, 0), 240);
    // The rook still on h1 and no rights left: neither shelter nor prospects.
    EXPECT_EQ(shelterBonus("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ2KR w kq - 0 1", 6, 0), 0);
}

TEST(KingSafety, CastledKingWholeValue) {
    const LoadedPosition s = load("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 w kq - 0 1");
    EvalWork w = firstPass(s, white);
    // 1 (table g1) + 1 (rook f1) + 1 + 1 + 1 (pawns f2, g2, h2).
    EXPECT_EQ(w.squareValue[sq("g1")], 5);
    scoreKing(w, s.pos, s.lists, white, 6, 0);
    // Safe move h1 150; f1 (king, queen) and f2 (king, rook) held twice: 100; (5 + 250) / 4 = 63;
    // shelter 1200.
    EXPECT_EQ(w.squareValue[sq("g1")], 1263);
    EXPECT_EQ(w.total[1], 1263);
}

TEST(KingSafety, CheckWithNoSafeMove) {
    // The rook a1 checks the king h1 behind its pawns g2, h2. Phase 4: no opening division, no
    // shelter. King: 0 (table) + 1 + 1 (pawns), no safe move (g1 is the rook's).
    const LoadedPosition s = load("4k3/8/8/8/8/8/6PP/r6K w - - 0 1");
    EvalWork w = firstPass(s, white);
    w.threat1 = 5000; // an earlier, larger threat against white
    scoreKing(w, s.pos, s.lists, white, 7, 0);
    EXPECT_EQ(w.squareValue[sq("h1")], 2);
    // 12000 / 32 + 12000 / 4.
    EXPECT_EQ(w.total[0], 375 + 3000);
    // The check becomes the largest threat without comparing: 3000 + 2, the old one moves down.
    EXPECT_EQ(w.threat1, 3002);
    EXPECT_EQ(w.threat2, 5000);
    EXPECT_EQ(w.threat1Square, sq("h1"));
}

TEST(KingSafety, NoRetreatAlongTheCheckingLine) {
    // The rook a4 checks the bare king d4 (phase 4: 16 * 4 * 16 = 1024). c4 is attacked and e4
    // would still be on the rook's rank: the other three lines give 170 each.
    const LoadedPosition s = load("7k/8/8/8/r2K4/8/8/8 w - - 0 1");
    EvalWork w = firstPass(s, white);
    scoreKing(w, s.pos, s.lists, white, 3, 3);
    EXPECT_EQ(w.squareValue[sq("d4")], 1024 + 510);
    EXPECT_EQ(w.total[0], 0);
    EXPECT_EQ(w.threat1, 3000 + 1534);
}

TEST(KingSafety, BareKingInCheck) {
    const LoadedPosition s = load("4k3/8/8/8/8/8/8/r6K w - - 0 1");
    EvalWork w = firstPass(s, white);
    // Bare king: 0 (table h1) * 4 * 16; safe moves g2 and h2 in two lines: 150 + 150.
    scoreKing(w, s.pos, s.lists, white, 7, 0);
    EXPECT_EQ(w.squareValue[sq("h1")], 300);
    // Nothing charged for the check of a bare king, but the threat is booked: 3000 + 300.
    EXPECT_EQ(w.total[0], 0);
    EXPECT_EQ(w.threat1, 3300);
    EXPECT_EQ(w.threat1Square, sq("h1"));
}
