// The evaluation, worked by hand on small positions.
#include <map>

#include "eval/evaluate.h"
#include "eval/values.h"
#include "eval/work.h"
#include "helpers.h"

namespace {

// The first pass, with the second pass's phase (6 without pieces) and king safety weight set up.
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

// Both passes over every piece, Black first, highest slot first, threats not settled.
EvalWork bothPasses(const Board& b, Side toMove) {
    EvalWork w = firstPass(b, toMove);
    for (const Side side : {black, white}) {
        const auto& list = b.lists.slots[sideIndex(side)];
        for (int32_t slot = list[0][0]; slot >= 1; --slot)
            if (list[slot][0] != -1) secondPass(w, b, squareIndex(list[slot][0], list[slot][1]));
    }
    return w;
}

// Checks "kind square=figure ..." ("-" no attacker) and "total=figure" words against the record.
void expectFigures(const EvalWork& w, const std::string& text) {
    std::istringstream words(text);
    std::string kind;
    for (std::string word; words >> word;) {
        const size_t at = word.find('=');
        if (at == std::string::npos) {
            kind = word;
            continue;
        }
        const std::string name = word.substr(0, at);
        const std::string figure = word.substr(at + 1);
        const int32_t q = at == 2 ? sq(name.c_str()) : 0;
        const std::map<std::string, int32_t> actual = {{"value", w.squareValue[q]},
                                                       {"balance", w.attackBalance[q]},
                                                       {"cheapestWhite", w.leastAttacker[q][1]},
                                                       {"cheapestBlack", w.leastAttacker[q][0]},
                                                       {"pinned", w.pinnedFlag[q]},
                                                       {"blackTotal", w.total[0]},
                                                       {"whiteTotal", w.total[1]},
                                                       {"threat1", w.threat1},
                                                       {"threat2", w.threat2},
                                                       {"other", w.otherThreat},
                                                       {"threatSquare", w.threat1Square}};
        const int32_t expected = figure == "-"      ? noAttacker
                                 : figure[0] >= 'a' ? sq(figure.c_str())
                                                    : std::stoi(figure);
        EXPECT_EQ(actual.at(at == 2 ? kind : name), expected) << word;
    }
}

// The scale tops at 591; whole-number entries (225, 325, 800, 900) come out one lower.
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

// 304 against 296 (a pawn down of 39): 1000; 7 against 0: 1762; a knight up, 304 against 281:
// 35.968 - 3 * 1.032 * 2.032 / 230 = 35.9406 pawns.
TEST(MaterialScale, MaterialTerm) {
    const std::pair<Material, int32_t> cases[] = {
        {{{51000, 51000}}, 0},    {{{50000, 51000}}, 1000},          {{{51000, 50000}}, -1000},
        {{{12000, 13000}}, 1762}, {{{48000, 51000}}, 38889 - 35940},
    };
    for (const auto& [material, term] : cases)
        EXPECT_EQ(materialTerm(material), term) << material.sum[0];
}

// Material +- lazyMargin when twice that fails the bound (equality never cuts); 0 means in full.
// Each row: position, side, bound, lazy or not, the value and Black's and White's totals. The start
// in full is 2642 a side, a2-h2 115 181 170 181 181 169 181 115 and a1-h1 21 249 14 26 757 12 249
// 21 (a2 30 + 10 + 5 + 60 + rook 10, knights 3 + 230 + 16, d1 24 + 2, e1 (9 + 50 + 50) / 4 +
// shelter 730), with either side to move: no threat is left to settle.
TEST(Evaluate, LazyCutOff) {
    const char* const kings = "4k3/8/8/8/4K3/8/8/8 w - - 0 1";
    const char* const queen = "4k3/8/8/8/8/8/8/Q3K3 w - - 0 1";
    const std::tuple<Text, Side, int32_t, bool, int32_t, int32_t, int32_t> cases[] = {
        {startFen, white, 2401, true, 1200, 0, 0},   // 2 * (0 + 1200) < 2401
        {startFen, white, -2401, true, -1200, 0, 0}, // 2 * (0 - 1200) > -2401
        {startFen, white, 2400, false, 0, 2642, 2642},
        {startFen, white, -2400, false, 0, 2642, 2642},
        {startFen, black, 0, false, 0, 2642, 2642},
        // White e4: 16 * 5 * 16 + (150 + 20) * 4; Black e8: 3 * 5 * 16 + 170 + 3 * 150.
        {kings, white, 0, false, 1960 - 860, 860, 1960},
        {queen, white, 0, false, 0, 0, 0},              // in full however far ahead
        {queen, white, 1001, true, 16678 - 2800, 0, 0}, // -1661 + 18339, margin 1200 + 4 * 400
    };
    for (const auto& [fen, side, bound, lazy, expected, blackTotal, whiteTotal] : cases) {
        SCOPED_TRACE(std::string(fen) + " bound " + std::to_string(bound));
        const Board b(fen);
        positionalTotal[0] = positionalTotal[1] = -5;
        const int64_t nodes = nodeCount;
        const int32_t value = evaluate(b.material, b.pos, b.lists, side, bound);
        EXPECT_EQ(nodeCount - nodes, 1);
        if (lazy) {
            EXPECT_EQ(value, expected);
            EXPECT_EQ(positionalTotal[0] + positionalTotal[1], -10);
            continue;
        }
        EXPECT_NE(positionalTotal[1], -5);
        EXPECT_EQ(value, materialTerm(b.material) + positionalTotal[1] - positionalTotal[0]);
        if (fen == queen) continue;
        EXPECT_EQ(value, expected);
        EXPECT_EQ(positionalTotal[0], blackTotal);
        EXPECT_EQ(positionalTotal[1], whiteTotal);
    }
}

const char* const castled = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 w kq - 0 1";
const char* const pinByRook = "4r2k/8/8/4n3/8/8/7K/4R3 w - - 0 1";

// Table entry plus attacks: forks, pins, skewers, batteries; attack balance; pin flags.
TEST(Evaluate, FirstPass) {
    const std::pair<Text, Text> cases[] = {
        // a1: 10 + pawn a2 2 + knight 6 + bishop 3 at half; e1: 3 + queen 1 + bishop 2 + pawns.
        {startFen, "value a1=21 h1=21 e1=9 e2=0 balance b1=1 c1=1 a4=0 a7=-1 f3=4 b3=3 e3=3 g3=2 "
                   "d2=4 f6=-4 g6=-2 cheapestWhite a2=5000 b1=5000 c1=9000 f3=1000 d2=3000 "
                   "cheapestBlack f3=-"},
        {"4k3/8/8/3n1n2/4P3/8/8/4K3 w - - 0 1", "value e4=645"}, // 200 + 35 + 35 + 3000 / 8
        {"4k3/8/8/1n6/P7/8/8/4K3 w - - 0 1", "value a4=35"},     // one capture square, no fork
        {"4k3/8/8/n1n5/1P6/8/8/4K3 w - - 0 1", "value b4=445"},
        {"k7/8/8/8/8/2Q5/1B6/4K3 w - - 0 1", // 100 + 3 + 30
         "value b2=133 balance d4=2 e5=2 h8=2 cheapestWhite d4=9000 e5=9000 h8=9000 c3=3000"},
        {"4k3/8/8/4n3/8/8/7K/4R3 w - - 0 1", "value e1=450 pinned e5=1"},  // 60 + 3 + 25/2 + 375
        {"4q2k/8/8/4n3/8/8/7K/4R3 w - - 0 1", "value e1=455 pinned e5=1"}, // 60 + 3 + 35/2 + 375
        {pinByRook, "value e1=63 pinned e5=0 balance e6=-1 cheapestWhite e5=5000 e6=-"},
        {"7k/8/8/4r3/8/2n5/8/B6K w - - 0 1", "value a1=422 pinned c3=0"},   // 20 + 10 + 17 + 375
        {"7k/8/8/6r1/8/4q3/8/2B4K w - - 0 1", "value c1=682 pinned e3=0"},  // 40 + 17 + 5000 / 8
        {"7k/8/8/6q1/8/4q3/8/2B4K w - - 0 1", "value c1=1185 pinned e3=0"}, // 40 + 20 + 9000 / 8
        {"8/8/8/5P2/4B3/3P4/8/k3K3 w - - 0 1", "balance g6=2 c2=0"},
        {"4k3/8/8/8/4K3/8/8/8 w - - 0 1", "value e4=1280 e8=240 cheapestWhite d5=12000"},
        {"4k3/8/8/3p4/4K3/8/8/8 w - - 0 1", "value e4=1281 e8=3"}, // + 1 for the pawn; not bare
        {"7k/8/8/8/4N3/8/8/K7 w - - 0 1", "value e4=100"},
        {"7K/8/8/8/3PQ3/8/8/k3r3 w - - 0 1", "value e4=3"}, // pawn d4 2 + rook e1 1
        {castled, "value g1=5"},                            // 1 + rook f1 + pawns f2 g2 h2
        {"8/8/1k6/P7/8/8/8/7K b - - 0 1", "value a5=25"},   // attacking the king
        {"k7/8/8/4p3/3R4/8/8/7K w - - 0 1", "balance d4=-1"},
        {"k7/8/8/4p3/3R4/2P5/8/7K w - - 0 1", "balance d4=0"},
        {"3r2k1/8/8/8/3B4/2P5/8/K7 w - - 0 1", "balance d4=0"},
        {"k7/8/1b6/3Pp3/2PRP3/3P4/1p6/N5K1 w - - 0 1", "pinned d4=1"},
    };
    for (const auto& [fen, figures] : cases) {
        SCOPED_TRACE(fen);
        const Board b(fen);
        expectFigures(firstPass(b, b.pos.sideToMove), figures);
    }
}

// Mobility, defence, threats (L / 32 and L / 4 + value), pawns' paths and kings' checks. The
// start's pieces are summed in the lazy cut-off test.
TEST(Evaluate, SecondPassOfOnePiece) {
    const char* const boxed = "k7/8/8/3Pp3/2PRP3/3P4/8/7K w - - 0 1";
    const struct {
        Text fen, square, figures;
        int32_t earlierThreat = 0;
    } cases[] = {
        // 100 + 170 + 60 + 40 + 20 + 20 + 15 + 5 + 5; nothing defends it.
        {"7k/8/8/8/4N3/8/8/K7 w - - 0 1", "e4", "value e4=435 whiteTotal=435"},
        // Rank and file 133 each, diagonals of 3 and 4 moves 125 and 130, table 10.
        {"8/7k/K7/8/8/8/8/3Q4 w - - 0 1", "d1", "value d1=531"},
        // The rook e1 behind makes e2-e8 unsafe but for the capture: 30 + 8 moves 368.
        {"7K/8/8/8/4R3/8/8/k3r3 w - - 0 1", "e4", "value e4=398"},
        // A cheaper rook behind: 3 + Qxe1 90 + rank 125 + diagonals 131 and 132.
        {"7K/8/8/8/3PQ3/8/8/k3r3 w - - 0 1", "e4", "value e4=481"},
        // 30 + 382 for 13 moves; undefended: 5000 / 32, threat 1250 + 412.
        {"k7/8/8/4p3/3R4/8/8/7K w - - 0 1", "d4",
         "value d4=412 blackTotal=156 threat1=1662 threatSquare=d4"},
        {boxed, "d4", "value d4=38 blackTotal=1406 threat1=1288"}, // 30 + 8, no move: 1250 too
        // Defended by c3: + 50000 / 1000; L = 4000: 125, threat 1000 + 462.
        {"k7/8/8/4p3/3R4/2P5/8/7K w - - 0 1", "d4", "value d4=462 blackTotal=125 threat1=1462"},
        {"k7/8/8/3Pp3/2PRP3/2PP4/8/7K w - - 0 1", "d4", "value d4=88 blackTotal=1125 threat1=1088"},
        // Attacked by a rook and defended: L = 3000 - 5000 < 1, nothing.
        {"3r2k1/8/8/8/3B4/2P5/8/K7 w - - 0 1", "d4", "blackTotal=0 threat1=0 other=0"},
        // A runaway in a pawn ending: 120 * 24 / 4 + 24 * 500 / 8 doubled, + 4500, + 30 + 10.
        {"7k/8/P7/8/8/8/8/4K3 w - - 0 1", "a6", "value a6=8980 blackTotal=0"},
        {"7k/8/P7/8/8/8/8/4K3 b - - 0 1", "a6", "value a6=8980 blackTotal=0"},
        // Caught: Black gains 35 + 1000, 200 and 1000 / 32; White's threat 250 + 35 is other.
        {"8/8/1k6/P7/8/8/8/7K b - - 0 1", "a5",
         "value a5=35 blackTotal=1266 whiteTotal=35 other=285"},
        // Own king a7 in the path: 40 + 540 + 270 + 375, not free, not doubled.
        {"7k/K7/8/P7/8/8/8/8 w - - 0 1", "a5", "value a5=1225"},
        // The own king holds it with the move (2040 / 2); without, Black gains 1040 / 2.
        {"8/8/2k5/P7/8/3K4/8/8 w - - 0 1", "a5", "value a5=1060 blackTotal=0"},
        {"8/8/2k5/P7/8/3K4/8/8 b - - 0 1", "a5", "value a5=40 blackTotal=520"},
        // Phase 2: 200 + 30 + 10 + the advance 90 * 8 / 8.
        {"7k/8/8/4P3/8/8/8/RRQ3K1 w - - 0 1", "e5", "value e5=330 blackTotal=0"},
        // h1 150, f1 and f2 held twice 100; (5 + 250) / 4 + shelter 1200.
        {castled, "g1", "value g1=1263 whiteTotal=1263"},
        // In check, no safe move: 12000 / 32 + 12000 / 4; 3000 + 2 over the earlier 5000.
        {"4k3/8/8/8/8/8/6PP/r6K w - - 0 1", "h1",
         "value h1=2 blackTotal=3375 threat1=3002 threat2=5000 threatSquare=h1", 5000},
        // Not back along the checking rank: 1024 + three lines of 170; threat 3000 + 1534.
        {"7k/8/8/8/r2K4/8/8/8 w - - 0 1", "d4", "value d4=1534 blackTotal=0 threat1=4534"},
        // A bare king in check costs nothing but books 3000 + g2 and h2 150 each.
        {"4k3/8/8/8/8/8/8/r6K w - - 0 1", "h1",
         "value h1=300 blackTotal=0 threat1=3300 threatSquare=h1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.fen) + " " + c.square);
        const Board b(c.fen);
        EvalWork w = firstPass(b, b.pos.sideToMove);
        w.threat1 = c.earlierThreat;
        secondPass(w, b, sq(c.square));
        expectFigures(w, c.figures);
    }
}

// Shelter: 7 * 1200 * p / 46 per wing with rights, / 35 once castled, p the pawns in front.
TEST(Evaluate, KingShelter) {
    const std::tuple<Text, Text, int32_t> cases[] = {
        {startFen, "e1", 730}, // p = 2 on each wing: 365 twice
        {castled, "g1", 1200}, // f2 g2 h2: 5
        {"rnbqkbnr/pppppppp/8/8/8/6P1/PPPPPP1P/RNBQ1RK1 w kq - 0 1", "g1", 960}, // g3: 4
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPP1/RNBQ1RK1 w kq - 0 1", "g1", 0},     // no h-pawn
        {"rnbqkbnr/ppppppp1/8/8/8/7p/PPPPPPPP/RNBQ1RK1 w kq - 0 1", "g1", 240},  // h3 hits g2
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ2KR w kq - 0 1", "g1", 0},      // rook still on h1
    };
    for (const auto& [fen, king, bonus] : cases) {
        const Board b(fen);
        EvalWork with = firstPass(b, white);
        ASSERT_EQ(with.kingSafetyWeight, 7);
        EvalWork without = with;
        without.kingSafetyWeight = 0;
        secondPass(with, b, sq(king));
        secondPass(without, b, sq(king));
        EXPECT_EQ(with.squareValue[sq(king)] - without.squareValue[sq(king)], bonus) << fen;
    }
}

// The side to move saves its largest threatened piece (not when pinned), loses half the second.
TEST(Evaluate, SettlingOfThreats) {
    const std::tuple<Text, Text, int32_t> cases[] = {
        {"k7/8/8/3Pp3/2PRP3/3P4/8/7K w - - 0 1", "threat1=1288 threat2=0 other=0", 0},
        // The knight a1 attacked by b2 as well: 750 + 230.
        {"k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K w - - 0 1", "threat1=1288 threat2=980 other=0", 490},
        {"k7/8/1b6/3Pp3/2PRP3/3P4/1p6/N5K1 w - - 0 1", "threat1=1288 threat2=980", 1288 / 2},
        {"k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K b - - 0 1", "threat1=0 other=1288", 1288},
    };
    for (const auto& [fen, figures, blackGain] : cases) {
        SCOPED_TRACE(fen);
        const Board b(fen);
        const EvalWork w = bothPasses(b, b.pos.sideToMove);
        expectFigures(w, figures);
        evaluatePosition(b.pos, b.lists, b.pos.sideToMove);
        EXPECT_EQ(positionalTotal[0] - w.total[0], blackGain);
        EXPECT_EQ(positionalTotal[1], w.total[1]);
    }
}

// The totals of positions evaluated before are kept and given again; a position that differs
// from a kept one only in its castling rights, the side to move or the game phase is evaluated
// afresh. Each pair is checked to differ when evaluated directly, then evaluated in turn through
// the entry, twice, against the direct figures.
TEST(Evaluate, KeptTotalsOfRepeatedPositions) {
    const char* const hanging = "k7/8/8/3Pp3/2PRP3/3P4/1p6/N6K w - - 0 1";
    const std::tuple<Text, Side, int32_t, Text, Side, int32_t> pairs[] = {
        {startFen, white, 0, "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w kq - 0 1", white, 0},
        {hanging, white, 5, hanging, black, 5}, // Black gains 490 or 1288
        {castled, white, 0, castled, white, 3},
    };
    const int32_t phase = gamePhase;
    for (const auto& [fenA, sideA, phaseA, fenB, sideB, phaseB] : pairs) {
        SCOPED_TRACE(std::string(fenA) + " / " + fenB);
        const Board a(fenA);
        const Board b(fenB);
        const auto direct = [](const Board& board, Side side, int32_t p) {
            gamePhase = p;
            evaluatePosition(board.pos, board.lists, side);
            return materialTerm(board.material) + positionalTotal[1] - positionalTotal[0];
        };
        const int32_t valueA = direct(a, sideA, phaseA);
        const int32_t valueB = direct(b, sideB, phaseB);
        ASSERT_NE(valueA, valueB);
        for (int32_t round = 0; round < 2; ++round) {
            gamePhase = phaseA;
            EXPECT_EQ(evaluate(a.material, a.pos, a.lists, sideA, 0), valueA);
            gamePhase = phaseB;
            EXPECT_EQ(evaluate(b.material, b.pos, b.lists, sideB, 0), valueB);
        }
    }
    gamePhase = phase;
}

} // namespace
