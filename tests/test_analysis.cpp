// The analysis tools' SAN, written and read, their value text, and the PGN reader on bad input.
#include "analysis/annotate.h"
#include "analysis/pgn.h"
#include "analysis/san.h"
#include "core/movetext.h"
#include "helpers.h"
#include "search/transtable.h"

namespace {

// Positions: knights b1 and f3 both reach d2 (told apart by file), rooks a1 and a5 both reach a3
// (by rank); queens e4, h4 and h1 all reach e1 (e4 by file, h1 by rank, h4 needs both); a pawn on
// e7 can push or take d8, a new queen on e8 checking h8; Ra8 mates behind the pawns, with h7 free
// it only checks; d7-d5 was just played beside e5 (e6 a push, exd6 a capture).
constexpr const char* knights = "rnbqkbnr/pppppppp/8/8/8/5N2/PPP1PPPP/RNBQKB1R w KQkq - 0 1";
constexpr const char* rooks = "4k3/8/8/R7/8/8/8/R3K3 w - - 0 1";
constexpr const char* queens = "1k6/8/8/8/4Q2Q/8/8/K6Q w - - 0 1";
constexpr const char* promote = "3r3k/4P3/8/8/8/8/8/K7 w - - 0 1";
constexpr const char* castle = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
constexpr const char* backRank = "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1";
constexpr const char* checkOnly = "6k1/5pp1/8/8/8/8/8/R5K1 w - - 0 1";
constexpr const char* passant = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";

// The plain moves, both castlings, en passant (exf6) and a promotion without check are written in
// the annotate session's games; the rows here are what those games do not hold.
TEST(Analysis, SanIsWrittenWithWhatTheMoveNeeds) {
    const std::tuple<Text, Text, Text> cases[] = {
        {knights, "b1d2", "Nbd2"},     {knights, "f3d2", "Nfd2"},   {rooks, "a1a3", "R1a3"},
        {rooks, "a5a3", "R5a3"},       {queens, "e4e1", "Qee1"},    {queens, "h1e1", "Q1e1"},
        {queens, "h4e1", "Qh4e1"},     {promote, "e7e8q", "e8=Q+"}, {promote, "e7e8n", "e8=N"},
        {promote, "e7d8q", "exd8=Q+"}, {castle, "a1a8", "Rxa8+"},   {backRank, "a1a8", "Ra8#"},
        {checkOnly, "a1a8", "Ra8+"},   {passant, "e5e6", "e6"},
    };
    for (const auto& [fen, move, san] : cases) {
        Position pos = fromFen(fen);
        const Position before = pos;
        EXPECT_STREQ(moveToSan(pos, pos.sideToMove, mv(move)).text, san) << fen << " " << move;
        EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0) << "position changed: " << san;
    }
}

// The move a SAN text names, or why it is refused; capture and check marks are not checked. The
// annotate session reads plain moves, O-O, en passant (exf6) and an illegal king move (bad.pgn).
// The moves are shown as the program writes them (moveText), the four promotion letters among them.
TEST(Analysis, SanIsReadStrictlyWhereItMatters) {
    const char* const overlong = "Nbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbd2";
    const char* const illegal = "illegal move";
    const char* const ambiguous = "ambiguous move";
    const char* const noMove = "not a move";
    const std::tuple<Text, Text, Text> cases[] = {
        {startFen, "e5", illegal},   {knights, "Nbd2", "b1d2 "},   {knights, "N1d2", "b1d2 "},
        {knights, "Nd2", ambiguous}, {queens, "Qh4e1", "h4e1 "},   {queens, "Qh4xe1+", "h4e1 "},
        {queens, "Qe1", ambiguous},  {queens, "Qhe1", ambiguous},  {queens, "Q4e1", ambiguous},
        {rooks, "R5a3", "a5a3 "},    {rooks, "Ra3", ambiguous},    {promote, "e8=Q", "e7e8q"},
        {promote, "e8Q+", "e7e8q"},  {promote, "exd8=N", "e7d8n"}, {promote, "e8=B", "e7e8b"},
        {promote, "e8=R", "e7e8r"},  {promote, "e8", illegal},     {promote, "e8=K", noMove},
        {castle, "0-0-0", "e1c1 "},  {castle, "Kg1", illegal},     {backRank, "O-O", illegal},
        {backRank, "Ra8", "a1a8 "},  {passant, "dxe6", illegal},   {startFen, "nf3", noMove},
        {startFen, "Nf3xx", noMove}, {startFen, "", noMove},       {startFen, overlong, noMove},
    };
    for (const auto& [fen, san, expected] : cases) {
        Position pos = fromFen(fen);
        MoveList list;
        const int32_t last = generateLegalMoves(pos.sideToMove, list, pos, allMoves);
        const SanReading read = sanToMove(san, pos.sideToMove, pos, list, last);
        EXPECT_STREQ(read.index >= 0 ? moveText(list.moves[read.index]).text : read.problem,
                     expected)
            << fen << " " << san;
        EXPECT_EQ(read.index >= 0, std::strlen(expected) == 5) << san;
    }
}

// Every game of a PGN text: the plies of the good ones, how many were skipped, the errors.
struct PgnRun {
    std::string plies; // "12 0 5": the plies of each good game
    int32_t bad;
    std::string errors;
};

PgnRun readAll(const std::string& text) {
    PgnRun run = {"", 0, ""};
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
    }
    std::fclose(in);
    std::fclose(errors);
    run.errors = errorText;
    std::free(errorText);
    return run;
}

// An illegal move, a bad FEN tag and a comment not closed at the end, each skipping its game and
// no more, are in the annotate session's bad.pgn, and a set-up position with Black to move in its
// second game; the rows here are the rest.
TEST(Analysis, PgnReaderKeepsTheMainLineAndSkipsOnlyWhatIsBad) {
    const std::string deep = std::string(20000, '(') + "1. d4" + std::string(20000, ')');
    const std::tuple<std::string, Text, int32_t, Text> cases[] = {
        // Comments of both kinds, an escape line, glyphs, NAGs, nested variations, CRLF.
        {"% a line for the program\r\n[Event \"a\"]\r\n\r\n1. e4 {best by test} e5!? 2. Nf3 $1 "
         "(2. f4 exf4 (2... d5) 3. Nf3) ; rest of line\r\n2... Nc6 *\r\n",
         "4", 0, ""},
        // Two games, the first ending without a result at the next game's tags.
        {"[Event \"a\"]\n1. e4 e5\n[Event \"b\"]\n1. d4 1-0\n", "2 1", 0, ""},
        // Moves with numbers glued to them, and a black move after its number's dots.
        {"1.e4 e5 2.Nf3 2...Nc6 3.Bb5 1/2-1/2", "5", 0, ""},
        {"[FEN \"4k3/8/8/R7/8/8/8/R3K3 w - - 0 1\"]\n1. Ra3 *\n", "", 1,
         "Error (ambiguous move 'Ra3'; game 1 skipped): t.pgn line 2\n"},
        // A comment that never ends swallows the rest of the file.
        {"1. e4 e5 {a comment\n\n[Event \"b\"]\n1. d4 *\n", "", 1,
         "Error (comment not closed; game 1 skipped): t.pgn line 1\n"},
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
    for (const auto& [text, plies, bad, errors] : cases) {
        const PgnRun run = readAll(text);
        EXPECT_EQ(run.plies, plies) << text.substr(0, 80);
        EXPECT_EQ(run.bad, bad) << text.substr(0, 80);
        EXPECT_EQ(run.errors, errors) << text.substr(0, 80);
    }
}

// A search value (twice the evaluation, the mover's view) in pawns, or Mn for a mate in n moves,
// from White's side.
TEST(Analysis, ValuesAreWrittenFromWhitesSide) {
    const std::tuple<int32_t, Side, Text> cases[] = {
        {700, white, "+0.35"},          {700, black, "-0.35"},
        {-61000, white, "-30.50"},      {10, white, "0.00"},
        {mateValue - 8, white, "+M1"},  {mateValue - 24, black, "-M2"},
        {16 - mateValue, black, "+M1"}, {32 - mateValue, white, "-M2"},
    };
    for (const auto& [value, side, expected] : cases) {
        char text[16];
        valueText(value, side, text, sizeof text);
        EXPECT_STREQ(text, expected) << value << " " << side;
    }
}

} // namespace
