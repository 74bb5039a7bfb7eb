// The move language and the game files of the analysis tools: SAN written and read (every
// expected text below is the standard notation of the move, worked out on the diagram), and the
// PGN reader on the inputs that go wrong in real files.
#include <cstdio>
#include <cstring>
#include <string>

#include "analysis/annotate.h"
#include "analysis/pgn.h"
#include "analysis/san.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "helpers.h"
#include "search/transtable.h"

namespace {

// Positions of the tables.
//   knights   knights on b1 and f3 can both go to d2 (disambiguated by file)
//   rooks     rooks on a1 and a5 can both go to a3 (by rank)
//   queens    queens on e4, h4 and h1 can all go to e1 (Qee1, Q1e1, Qh4e1)
//   promote   a pawn on e7 that can push or take the rook on d8; the king on h8
//   castle    both sides may castle both ways
//   backRank  Ra8 mates; the same with h7 free only checks
//   passant   Black has just played d7-d5 beside the pawn on e5
constexpr const char* knights = "rnbqkbnr/pppppppp/8/8/8/5N2/PPP1PPPP/RNBQKB1R w KQkq - 0 1";
constexpr const char* rooks = "4k3/8/8/R7/8/8/8/R3K3 w - - 0 1";
constexpr const char* queens = "1k6/8/8/8/4Q2Q/8/8/K6Q w - - 0 1";
constexpr const char* promote = "3r3k/4P3/8/8/8/8/8/K7 w - - 0 1";
constexpr const char* castle = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
constexpr const char* backRank = "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1";
constexpr const char* checkOnly = "6k1/5pp1/8/8/8/8/8/R5K1 w - - 0 1";
constexpr const char* passant = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";

TEST(Analysis, SanIsWrittenWithWhatTheMoveNeeds) {
    struct Case {
        const char* fen;
        const char* move;
        const char* san;
    };
    const Case cases[] = {
        {startFen, "e2e4", "e4"},
        {startFen, "g1f3", "Nf3"},
        {knights, "b1d2", "Nbd2"},   // by file
        {knights, "f3d2", "Nfd2"},   //
        {rooks, "a1a3", "R1a3"},     // by rank: both rooks are on the a-file
        {rooks, "a5a3", "R5a3"},     //
        {queens, "e4e1", "Qee1"},    // the file tells e4 from h4 and h1
        {queens, "h1e1", "Q1e1"},    // h4 shares the file, nobody the rank
        {queens, "h4e1", "Qh4e1"},   // e4 shares the rank, h1 the file: both
        {promote, "e7e8q", "e8=Q+"}, // the new queen sees h8 along the rank; Kg7 escapes
        {promote, "e7e8n", "e8=N"},
        {promote, "e7d8q", "exd8=Q+"},
        {castle, "e1g1", "O-O"},
        {castle, "e1c1", "O-O-O"},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "e8c8", "O-O-O"},
        {castle, "a1a8", "Rxa8+"},
        {backRank, "a1a8", "Ra8#"}, // the pawns wall in their own king
        {checkOnly, "a1a8", "Ra8+"},
        {passant, "e5d6", "exd6"}, // en passant is written as the pawn's capture
        {passant, "e5e6", "e6"},
    };
    for (const Case& c : cases) {
        Position pos = fromFen(c.fen);
        const Position before = pos;
        EXPECT_STREQ(moveToSan(pos, pos.sideToMove, mv(c.move)).text, c.san)
            << c.fen << " " << c.move;
        EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0) << "position changed: " << c.san;
    }
}

TEST(Analysis, SanIsReadStrictlyWhereItMatters) {
    struct Case {
        const char* fen;
        const char* san;
        const char* move;    // the move it names, in coordinates; nullptr when refused
        const char* problem; // why it is refused
    };
    const Case cases[] = {
        {startFen, "e4", "e2e4 ", nullptr},
        {startFen, "Nf3", "g1f3 ", nullptr},
        {startFen, "e5", nullptr, "illegal move"},
        {startFen, "Ke2", nullptr, "illegal move"},
        {knights, "Nbd2", "b1d2 ", nullptr},
        {knights, "N1d2", "b1d2 ", nullptr}, // more than needed, still one move
        {knights, "Nd2", nullptr, "ambiguous move"},
        {queens, "Qh4e1", "h4e1 ", nullptr},
        {queens, "Qh4xe1+", "h4e1 ", nullptr}, // capture and check marks are not checked
        {queens, "Qe1", nullptr, "ambiguous move"},
        {queens, "Qhe1", nullptr, "ambiguous move"},
        {queens, "Q4e1", nullptr, "ambiguous move"},
        {rooks, "R5a3", "a5a3 ", nullptr},
        {rooks, "Ra3", nullptr, "ambiguous move"},
        {promote, "e8=Q", "e7e8q", nullptr},
        {promote, "e8Q+", "e7e8q", nullptr},
        {promote, "exd8=N", "e7d8n", nullptr},
        {promote, "e8", nullptr, "illegal move"}, // the piece must be named
        {promote, "e8=K", nullptr, "not a move"},
        {castle, "O-O", "e1g1 ", nullptr},
        {castle, "0-0-0", "e1c1 ", nullptr},
        {castle, "Kg1", nullptr, "illegal move"}, // castling is written O-O
        {backRank, "O-O", nullptr, "illegal move"},
        {backRank, "Ra8", "a1a8 ", nullptr},
        {passant, "exd6", "e5d6 ", nullptr},
        {passant, "dxe6", nullptr, "illegal move"},
        {startFen, "nf3", nullptr, "not a move"},
        {startFen, "Nf3xx", nullptr, "not a move"},
        {startFen, "", nullptr, "not a move"},
        {startFen, "Nbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbd2", nullptr, "not a move"},
    };
    for (const Case& c : cases) {
        Position pos = fromFen(c.fen);
        MoveList list;
        const int32_t last = generateLegalMoves(pos.sideToMove, list, pos, allMoves);
        const SanReading read = sanToMove(c.san, pos.sideToMove, pos, list, last);
        if (c.move == nullptr) {
            EXPECT_EQ(read.index, -1) << c.fen << " " << c.san;
            EXPECT_STREQ(read.problem, c.problem) << c.fen << " " << c.san;
        } else {
            ASSERT_GE(read.index, 0) << c.fen << " " << c.san << ": " << read.problem;
            EXPECT_STREQ(moveText(list.moves[read.index]).text, c.move) << c.san;
        }
    }
}

// Every game of a PGN text: the plies of the good ones, how many were skipped, the errors.
struct PgnRun {
    std::string plies; // "12 0 5": the plies of each good game
    int32_t bad;
    std::string errors;
    int32_t startNumber; // of the last good game
    Side startSide;
};

PgnRun readAll(const std::string& text) {
    PgnRun run = {"", 0, "", 0, 0};
    FILE* in = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    char* errorText = nullptr;
    size_t errorSize = 0;
    FILE* errors = open_memstream(&errorText, &errorSize);
    static PgnGame game;
    PgnReader reader;
    startPgnReader(reader, in, "t.pgn", errors);
    for (int32_t guard = 0; guard < 100; ++guard) {
        const GameRead read = readPgnGame(reader, game);
        if (read == GameRead::end) break;
        if (read == GameRead::bad) {
            ++run.bad;
            continue;
        }
        if (!run.plies.empty()) run.plies += ' ';
        run.plies += std::to_string(game.plyCount);
        run.startNumber = game.startNumber;
        run.startSide = game.start.sideToMove;
    }
    std::fclose(in);
    std::fclose(errors);
    run.errors = errorText;
    std::free(errorText);
    return run;
}

TEST(Analysis, PgnReaderKeepsTheMainLineAndSkipsOnlyWhatIsBad) {
    const std::string deep = std::string(20000, '(') + "1. d4" + std::string(20000, ')');
    struct Case {
        std::string text;
        const char* plies;
        int32_t bad;
        const char* errors;
    };
    const Case cases[] = {
        // Comments of both kinds, an escape line, glyphs, NAGs, nested variations, CRLF.
        {"% a line for the program\r\n[Event \"a\"]\r\n\r\n1. e4 {best by test} e5!? 2. Nf3 $1 "
         "(2. f4 exf4 (2... d5) 3. Nf3) ; rest of line\r\n2... Nc6 *\r\n",
         "4", 0, ""},
        // Two games, the first ending without a result at the next game's tags.
        {"[Event \"a\"]\n1. e4 e5\n[Event \"b\"]\n1. d4 1-0\n", "2 1", 0, ""},
        // Moves with numbers glued to them, and a black move after its number's dots.
        {"1.e4 e5 2.Nf3 2...Nc6 3.Bb5 1/2-1/2", "5", 0, ""},
        // An illegal move skips its game, the next is read.
        {"[Event \"a\"]\n\n1. e4 e5 2. Nf6 Nc6 1-0\n\n[Event \"b\"]\n\n1. c4 0-1\n", "1", 1,
         "Error (illegal move 'Nf6'; game 1 skipped): t.pgn line 3\n"},
        // An ambiguous move.
        {"[FEN \"4k3/8/8/R7/8/8/8/R3K3 w - - 0 1\"]\n1. Ra3 *\n", "", 1,
         "Error (ambiguous move 'Ra3'; game 1 skipped): t.pgn line 2\n"},
        // A set-up position: Black to move, move 12.
        {"[SetUp \"1\"]\n[FEN \"4k3/8/8/8/8/8/4P3/4K3 b - - 3 12\"]\n12... Kd7 13. e4 *", "2", 0,
         ""},
        {"[FEN \"4k3/8/8/8/8/8/8/4K2K w - - 0 1\"]\n1. Kd2 *\n[Event \"x\"]\n1. e4 *", "1", 1,
         "Error (bad FEN tag: not exactly one king each; game 1 skipped): t.pgn line 1\n"},
        // A comment that never ends swallows the rest of the file.
        {"1. e4 e5 {a comment\n\n[Event \"b\"]\n1. d4 *\n", "", 1,
         "Error (comment not closed; game 1 skipped): t.pgn line 1\n"},
        // A variation that never ends, and one closed twice.
        {"1. e4 (1. d4 (1. c4 e5) *", "", 1,
         "Error (variation not closed; game 1 skipped): t.pgn line 1\n"},
        {"1. e4 (1. d4)) e5 *", "", 1, "Error (')' without '('; game 1 skipped): t.pgn line 1\n"},
        {"1. e4 " + deep + " e5 *", "2", 0, ""},
        // A very long comment on one line, and a word no move can be.
        {"1. e4 {" + std::string(100000, 'x') + "} e5 *", "2", 0, ""},
        {"1. e4 " + std::string(300, 'N') + " e5 *\n1. d4 *", "1", 1,
         "Error (word longer than 255 characters; game 1 skipped): t.pgn line 1\n"},
        // No move after mate, a stray byte, bad tags (left out, the game kept).
        {"1. f3 e5 2. g4 Qh4# 3. a3 0-1", "", 1,
         "Error (illegal move 'a3'; game 1 skipped): t.pgn line 1\n"},
        {"1. e4 \x01 e5 *", "", 1,
         "Error (unexpected character 'byte 1'; game 1 skipped): t.pgn line 1\n"},
        {"[Event]\n[White \"x\n[Black \"y\"]\n1. e4 *", "1", 0,
         "Error (bad tag 'Event'): t.pgn line 1\nError (bad tag 'White'): t.pgn line 2\n"},
        {"", "", 0, ""},
        {"\n\n  \n", "", 0, ""},
    };
    for (const Case& c : cases) {
        const PgnRun run = readAll(c.text);
        const std::string shown = c.text.substr(0, 80);
        EXPECT_EQ(run.plies, c.plies) << shown;
        EXPECT_EQ(run.bad, c.bad) << shown;
        EXPECT_EQ(run.errors, c.errors) << shown;
    }
    const PgnRun setUp = readAll(cases[5].text);
    EXPECT_EQ(setUp.startNumber, 12);
    EXPECT_EQ(setUp.startSide, black);
}

TEST(Analysis, ValuesAreWrittenFromWhitesSide) {
    struct Case {
        int32_t value; // search value: twice the evaluation (pawn 1000), side to move's view
        Side side;
        const char* text;
    };
    const Case cases[] = {
        {700, white, "+0.35"}, // 700 / 2 = 350 thousandths of a pawn
        {700, black, "-0.35"},          {-61000, white, "-30.50"}, {10, white, "0.00"},
        {mateValue - 8, white, "+M1"},  // White mates on the next ply
        {mateValue - 24, black, "-M2"}, // Black mates on its second move (three plies)
        {16 - mateValue, black, "+M1"}, // Black is mated after one move of each side
        {32 - mateValue, white, "-M2"}, // White is mated four plies on: Black's second move
    };
    for (const Case& c : cases) {
        char text[16];
        valueText(c.value, c.side, text, sizeof text);
        EXPECT_STREQ(text, c.text) << c.value << " " << c.side;
    }
}

} // namespace
