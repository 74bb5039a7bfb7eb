// Move generation, attacked squares, the static exchange, and moves as text.
#include "core/attacks.h"
#include "core/exchange.h"
#include "core/movetext.h"
#include "helpers.h"

namespace {

// Moves 0..last as "e2e4 e2e3 ...", those of the piece on `from` only when it is given.
std::string listed(const MoveList& list, int32_t last, const std::string& from = "") {
    std::string text;
    for (int32_t i = 0; i <= last; ++i) {
        const std::string move = name(list.moves[i]);
        if (from.empty() || move.compare(0, 2, from) == 0) text += (text.empty() ? "" : " ") + move;
    }
    return text;
}

std::string generated(const char* fen, int32_t mode, const std::string& from = "") {
    Board b(fen);
    MoveList list;
    return listed(list, generateMoves(b.pos.sideToMove, list, b.pos, b.lists, mode), from);
}

std::string legal(const char* fen) {
    Position pos = fromFen(fen);
    const Position before = pos;
    MoveList list;
    const int32_t last = generateLegalMoves(pos.sideToMove, list, pos, allMoves);
    EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0) << fen;
    return listed(list, last);
}

const char* const castling = "4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1";
const char* const bishopOnH3 = "4k3/8/8/8/8/7b/8/R3K2R w KQ - 0 1";
const char* const rookCheck = "4r1k1/8/8/8/8/8/8/R3K2R w KQ - 0 1";
const char* const rookOnB8 = "1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1";
const char* const pawnOnB7 = "n1r4k/1P6/8/8/8/8/8/K7 w - - 0 1";
const char* const pinnedKnight = "4r2k/8/8/8/8/8/P3N2P/4K3 w - - 0 1";
const char* const passantRight = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";
const char* const passantBlack = "4k3/8/8/8/3Pp3/8/8/4K3 b - d3 0 1";
const char* const blackCastling = "r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1";
const char* const perftFens[] = {
    startFen,
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
};

// Highest slot first, each piece in its direction order; castling after the square it passes.
TEST(MoveGen, GenerationOrder) {
    const std::tuple<Text, int32_t, Text, Text> cases[] = {
        {startFen, allMoves, "",
         "h2h3 h2h4 g2g3 g2g4 g1f3 g1h3 f2f3 f2f4 e2e3 e2e4 d2d3 d2d4 c2c3 c2c4 b2b3 b2b4 b1a3 "
         "b1c3 a2a3 a2a4"},
        {startFen, capturesOnly, "", ""},
        {pawnOnB7, allMoves, "",
         "b7b8q b7b8r b7b8b b7b8n b7a8q b7a8r b7a8b b7a8n b7c8n b7c8b b7c8r b7c8q a1a2 a1b1 a1b2"},
        // Pushes to the last rank count as captures.
        {pawnOnB7, capturesOnly, "",
         "b7b8q b7b8r b7b8b b7b8n b7a8q b7a8r b7a8b b7a8n b7c8n b7c8b b7c8r b7c8q"},
        {passantRight, allMoves, "e5", "e5e6 e5d6"},
        {passantRight, capturesOnly, "", "e5d6"},
        {"4k3/8/8/2Pp4/8/8/8/4K3 w - d6 0 1", allMoves, "c5", "c5c6 c5d6"},
        {"4k3/8/8/2Pp4/8/8/8/4K3 w - d6 0 1", capturesOnly, "", "c5d6"},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1", capturesOnly, "", ""}, // no double step just played
        {passantBlack, capturesOnly, "", "e4d3"},
        {castling, allMoves, "e1", "e1d1 e1c1 e1d2 e1e2 e1f1 e1g1 e1f2"},
        {castling, capturesOnly, "", ""},
        {blackCastling, allMoves, "e8", "e8d7 e8d8 e8c8 e8e7 e8f7 e8f8 e8g8"},
        {bishopOnH3, allMoves, "e1", "e1d1 e1c1 e1d2 e1e2 e1f2"}, // f1 covered
        {rookCheck, allMoves, "e1", "e1d1 e1d2 e1f1 e1f2"},       // no castling out of check
        {rookOnB8, allMoves, "e1", "e1d1 e1c1 e1d2 e1e2 e1f1 e1g1 e1f2"}, // b1 may be attacked
        {"4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1", allMoves, "e1", "e1d1 e1d2 e1e2 e1f1 e1g1 e1f2"},
        {"4k3/8/8/8/8/8/8/R3K2R w K - 0 1", allMoves, "e1", "e1d1 e1d2 e1e2 e1f1 e1g1 e1f2"},
        // Not back along the checking line; not next to the enemy king or onto a knight's square.
        {"4r2k/8/8/8/4K3/8/8/8 w - - 0 1", allMoves, "", "e4d3 e4d4 e4d5 e4f3 e4f4 e4f5"},
        {"8/8/4k3/8/2n1K3/8/8/8 w - - 0 1", allMoves, "", "e4d3 e4d4 e4f3 e4f4"},
        {"8/7k/8/8/8/1p6/1Q6/K7 w - - 0 1", allMoves, "b2",
         "b2c3 b2d4 b2e5 b2f6 b2g7 b2h8 b2c1 b2a3 b2c2 b2d2 b2e2 b2f2 b2g2 b2h2 b2b1 b2a2 b2b3"},
        {"8/7k/8/8/8/1p6/1Q6/K7 w - - 0 1", capturesOnly, "b2", "b2b3"},
        {"7k/8/8/8/3N4/8/8/K7 w - - 0 1", allMoves, "d4",
         "d4c6 d4c2 d4e6 d4e2 d4f3 d4f5 d4b3 d4b5"},
    };
    for (const auto& [fen, mode, from, moves] : cases)
        EXPECT_EQ(generated(fen, mode, from), moves) << fen << " mode " << mode;
    Board start; // a side without slots has no moves
    start.lists.slots[1][0][0] = 0;
    MoveList list;
    EXPECT_EQ(generateMoves(white, list, start.pos, start.lists, allMoves), -1);
}

// The knight on e2 is pinned: 8 of its side's 14 moves are legal, listed in generation order; mate
// and stalemate have none. (That generation itself and the filter's counts are right is the tree
// walk's and the generation table's.)
TEST(MoveGen, LegalFilterKeepsTheOrder) {
    EXPECT_EQ(legal(pinnedKnight), "h2h3 h2h4 e1d1 e1d2 e1f1 e1f2 a2a3 a2a4");
    EXPECT_EQ(legal("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3"), "");
    EXPECT_EQ(legal("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"), "");
}

// What a move takes: the piece on its target, the pawn beside en passant; a king's step nothing.
TEST(MoveGen, CapturedKindCountsEnPassantAsAPawn) {
    const Position pos = fromFen("4k3/8/8/3pP3/8/8/8/Rn2K3 w - d6 0 1");
    const std::tuple<Side, Text, int32_t> cases[] = {
        {white, "e5d6", pawn}, {white, "e5e6", 0}, {white, "a1b1", knight},
        {white, "a1a5", 0},    {white, "e1d2", 0}, {black, "b1a1", rook},
    };
    for (const auto& [side, move, kind] : cases)
        EXPECT_EQ(capturedKind(pos, side, mv(move)), kind) << move;
}

// The one-move test accepts exactly the generated moves, every from, to and promotion tried.
TEST(MoveGen, PseudoLegalAgreesWithTheGenerator) {
    std::vector<const char*> fens(std::begin(perftFens), std::end(perftFens));
    fens.insert(fens.end(), {castling, bishopOnH3, rookCheck, rookOnB8, pawnOnB7, pinnedKnight,
                             passantRight, passantBlack, blackCastling,
                             "4k3/8/8/8/8/8/8/R3K2R w - - 0 1", "4k3/8/8/8/P7/8/8/R3K3 w - - 0 1"});
    for (const char* fen : fens) {
        for (const Side side : {white, black}) {
            Board b(fen);
            const Position before = b.pos;
            MoveList list;
            const int32_t last = generateMoves(side, list, b.pos, b.lists, allMoves);
            const std::string wanted = ' ' + listed(list, last) + ' ';
            int32_t accepted = 0;
            for (int32_t from = 0; from < 64; ++from) {
                for (int32_t to = 0; to < 64; ++to) {
                    for (const int32_t promotion : {0, 2, 3, 4, 5}) {
                        const int32_t answer = isPseudoLegalMove(b.pos, side, from / 8, from % 8,
                                                                 to / 8, to % 8, promotion);
                        const std::string move =
                            name({from / 8, from % 8, to / 8, to % 8, promotion});
                        EXPECT_EQ(answer != 0, wanted.find(' ' + move + ' ') != std::string::npos)
                            << fen << " side " << side << " " << move;
                        accepted += answer;
                    }
                }
            }
            EXPECT_EQ(accepted, last + 1);
            EXPECT_EQ(std::memcmp(&b.pos, &before, sizeof before), 0);
        }
    }
}

// Attacked and open squares for `side`; K is its king from the king fields, rank ignored.
TEST(Attacks, SquareSafety) {
    const std::tuple<Text, Side, Text, Text> cases[] = {
        {startFen, black, "e3 h3", "h4"}, // pawns d2, f2 and the knight on g1
        {startFen, white, "e6", "e3 e4"},
        {"4r2k/8/8/8/8/8/8/4K3 w - - 0 1", white, "e1 K", ""},
        {"4r2k/8/8/8/8/8/4P3/4K3 w - - 0 1", white, "e2", "e1 K"},
        {"4k3/8/8/8/8/8/8/R3K3 b - - 0 1", black, "", "K"},
        {"k7/8/8/8/8/8/8/R3K3 b - - 0 1", black, "K", ""},
        {"k7/8/8/8/8/8/8/R3K3 b - - 0 1", white, "", "K"},
        {"7k/8/8/3p4/8/8/8/K7 w - - 0 1", white, "e4 c4", "d4 e5 c5 e6 f3"},
        {"7k/8/8/3p4/8/8/8/K7 w - - 0 1", black, "", "e4"},
        {"7k/8/8/8/4P3/8/8/K7 b - - 0 1", black, "d5 f5", "d3 e5 g6"},
        {"8/8/8/8/3k4/8/8/K7 w - - 0 1", white, "c3 c4 c5 d3 d5 e3 e4 e5", "b4 f4 d2 d6 b2 f6 f5"},
        {"7k/8/8/8/3q4/8/8/K7 w - - 0 1", white, "d8 d1 a4 h4 g7 a7 g1 b2", "e6 c2 f5 b8"},
        {"7k/8/8/8/3b4/8/8/K7 w - - 0 1", white, "g7 a1", "d8 a4"},
        {"7k/8/8/8/3r4/8/8/K7 w - - 0 1", white, "d8 a4", "g6 e5"},
        {"7k/8/8/8/3n4/8/8/K7 w - - 0 1", white, "c6 c2 e6 e2 f3 f5 b3 b5", "d5 e5 d6 f6 d4"},
        {"7k/8/3P4/8/3q1p2/8/8/K7 w - - 0 1", white, "d6", "d7 g4"},
        {"4q2k/8/8/8/4N3/8/8/K7 w - - 0 1", white, "e4", "e3 e8"},
        {"4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", white, "e3", "e4"},
    };
    for (const auto& [fen, side, attackedSquares, openSquares] : cases) {
        const Position pos = fromFen(fen);
        for (const bool attacked : {true, false}) {
            std::istringstream squares(attacked ? attackedSquares : openSquares);
            for (std::string s; squares >> s;) {
                const int32_t file = s == "K" ? -1 : s[0] - 'a';
                EXPECT_EQ(isSquareSafe(pos, side, file, s == "K" ? 5 : s[1] - '1'), !attacked)
                    << fen << " " << s;
            }
        }
    }
}

// The best stopping point, White's view, without and with the pin (and check) test.
TEST(Exchange, OutcomesOfCaptureSeries) {
    const std::tuple<Text, Text, int32_t, int32_t> cases[] = {
        {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", "d4", 0, 0},
        {"4k3/8/8/8/8/8/8/4K1N1 w - - 0 1", "f3", 0, 0},
        {"4k3/8/8/3n4/4P3/8/8/4K3 w - - 0 1", "d5", 3000, 3000},
        {"4k3/8/8/3p4/4N3/8/8/4K3 b - - 0 1", "e4", -3000, -3000},
        {"4k3/8/2p5/3n4/8/8/8/3RK3 w - - 0 1", "d5", 0, 0},         // +3000 -5000: declined
        {"4k3/8/2p5/3n4/4P3/8/8/4K3 w - - 0 1", "d5", 2000, 2000},  // +3000 -1000
        {"4k3/8/2p5/3r4/4P3/8/8/3RK3 w - - 0 1", "d5", 5000, 5000}, // pawn first: +5 -1 +1
        {"3r3k/8/8/3r4/8/8/3R4/3RK3 w - - 0 1", "d5", 5000, 5000},  // +5 -5 +5
        {"3r3k/8/8/3r4/8/8/3R4/4K3 w - - 0 1", "d5", 0, 0},
        {"r3k3/1P6/8/8/8/8/8/4K3 w - - 0 1", "a8", 13000, 13000},  // 5000 + 8000
        {"r3k3/1P6/1n6/8/8/8/8/4K3 w - - 0 1", "a8", 4000, 4000},  // - 9000
        {"r3k3/1P6/1n6/8/8/8/8/R3K3 w - - 0 1", "a8", 7000, 7000}, // + 3000
        {"4k3/8/8/8/8/8/1p6/R3K3 b - - 0 1", "a1", -13000, -13000},
        {"4r2k/8/8/8/n3R3/8/8/4K3 w - - 0 1", "a4", 3000, 0},
        {"4r2k/8/8/8/n3R3/8/8/4K3 w - - 0 1", "e8", 5000, 5000}, // the pinner itself
        {"7k/8/8/4b3/8/2B5/3n4/K7 w - - 0 1", "d2", 3000, 0},
        {"7k/8/8/4b3/8/2B5/3n4/K7 w - - 0 1", "e5", 3000, 3000},
        {"4r2k/8/8/8/3p4/8/4N3/4K3 w - - 0 1", "d4", 1000, 0},
        {"4r2k/8/8/8/3p4/5N2/4N3/4K3 w - - 0 1", "d4", 1000, 1000},
        {"4r2k/8/8/8/8/8/2n5/N3K3 w - - 0 1", "c2", 3000, 0}, // in check
        {"4k3/8/8/8/8/8/3n4/4K3 w - - 0 1", "d2", 3000, 3000},
        {"4k3/8/8/8/8/4p3/3n4/4K3 w - - 0 1", "d2", 0, 0},
    };
    for (const auto& [fen, square, unchecked, checked] : cases) {
        Position pos = fromFen(fen);
        const Position before = pos;
        for (const int32_t pinCheck : {0, 1}) {
            EXPECT_EQ(
                staticExchange(pos.sideToMove, pos, square[0] - 'a', square[1] - '1', pinCheck),
                pinCheck ? checked : unchecked)
                << fen << " " << square << " pin check " << pinCheck;
            EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0) << fen;
        }
    }
}

// The console's lenient reader: nine characters at most; ambiguity takes the first in list order.
// The plain forms (e4, e2-e4, Nf3, nf6, Ngf3, Bxc3, exd5, e7e5, a8=Q, g1/N, c7-b8=r, g2h1q, E2E4,
// o-o, O-O-O, e8c8, 0-0 and moves with no piece to make them) are typed in the move-notation and
// castling sessions; the rows here are the forms those sessions do not type.
TEST(MoveText, InputSelectsTheLegalMoveNamed) {
    const char* const knights = "4k3/8/8/8/8/5N2/8/1N2K3 w - - 0 1";
    const char* const promote = "4k3/P7/8/8/8/8/8/4K3 w - - 0 1";
    const std::tuple<Text, Text, Text> cases[] = {
        {startFen, "", ""},
        {startFen, "Xf3", ""},
        {startFen, "Nf3++++++e5", "g1f3"}, // the e5 past the ninth character unread
        {startFen, "g1-f3", "g1f3"},       // coordinates with a sign, no pawn on g1
        {knights, "Nd2", "f3d2"},          // the f3 knight has the higher slot
        {knights, "N1d2", "b1d2"},         // the rank tells
        {castling, "Kf1", "e1f1"},
        {castling, "kf1", "e1f1"},
        {"4k3/8/8/8/8/8/8/R3K2R w - - 0 1", "O-O", ""}, // no rights
        {promote, "a8=b", "a7a8b"},                     // b a piece here, not a file
        {promote, "a8=K", ""},
        {"4k3/8/8/4B3/8/2n5/1P6/4K3 w - - 0 1", "Bc3", "e5c3"}, // a capture without its x
    };
    for (const auto& [fen, text, move] : cases) {
        Position pos = fromFen(fen);
        MoveList list;
        const int32_t last = generateLegalMoves(pos.sideToMove, list, pos, allMoves);
        const int32_t wanted = *move ? indexOf(list, last, mv(move)) : -1;
        ASSERT_TRUE(wanted >= 0 || !*move) << move << " is not legal in " << fen;
        EXPECT_EQ(parseMoveInput(text, pos.sideToMove, pos, list, last), wanted)
            << fen << " " << text;
    }
    Position pos = fromFen(startFen);
    MoveList list;
    generateLegalMoves(white, list, pos, allMoves);
    EXPECT_EQ(parseMoveInput("e4", white, pos, list, -1), -1); // an empty list selects nothing
}

} // namespace
