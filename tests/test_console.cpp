// The console program's game-end adjudication and its word reader on standard input.
#include <array>
#include <cctype>
#include <climits>
#include <unistd.h>

#include "helpers.h"
#include "ui/gameend.h"
#include "ui/input.h"
#include "ui/record.h"

namespace {

class GameEnd : public ::testing::Test {
protected:
    void SetUp() override { resetGameState(game); }

    // A game whose start is `fen`, the user playing White against the engine.
    void setUpFen(const char* fen) {
        game.position = fromFen(fen);
        game.turn = game.position.sideToMove;
        game.userSide = white;
        game.plyCount = 0;
        game.search.keyCount = 0;
        game.search.fiftyMoveCounter = 0;
        derivePositionState(game.position, game.search.keyHistory[0], game.lists, game.material);
    }

    // The lines checkGameEnd prints, after the legal moves are built as the loop builds them.
    std::string adjudicate() {
        game.lastLegalIndex =
            generateLegalMoves(game.turn, game.legalMoves, game.position, allMoves);
        return captureStdout([&] { checkGameEnd(game); });
    }

    GameState game;
};

// Mates stop the engine in every mode, draws only in console mode; king and three pawns play on.
// Black's mate, stalemate and a lone bishop in the console are played out in the game-end session.
TEST_F(GameEnd, MatesAndMaterialDraws) {
    const char* const noMaterial = "1/2-1/2 {Neither player has mating material}\n";
    const std::tuple<Text, int32_t, Text, bool> cases[] = {
        {"R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", 1, "1-0 {White mates}\n", true},
        {"8/8/8/4k3/8/8/8/4K3 w - - 0 1", 0, noMaterial, true},
        {"8/8/8/3nk3/8/8/8/4K3 b - - 0 1", 0, noMaterial, true},
        {"8/8/8/4k3/8/8/8/4K3 w - - 0 1", 1, noMaterial, false},
        {"8/8/8/4k3/8/8/PPP5/4K3 w - - 0 1", 0, "", false},
        {"8/8/8/3nk3/8/8/8/3NK3 w - - 0 1", 0, "", false},
    };
    for (const auto& [fen, xboard, lines, stops] : cases) {
        game.xboardMode = xboard;
        setUpFen(fen);
        EXPECT_EQ(adjudicate(), lines) << fen;
        EXPECT_EQ(game.userSide, stops ? 0 : white) << fen;
        EXPECT_EQ(game.lastLegalIndex == -1, stops) << fen;
    }
}

// Two earlier occurrences, same side to move, since the last irreversible move; 100 plies (the
// game-end session reaches the 100th); the draw of the first row beside its near misses.
TEST_F(GameEnd, RepetitionAndFiftyMoves) {
    setUpFen("8/8/8/4k3/8/8/8/R3K3 w - - 0 1");
    const PositionKey now = game.search.keyHistory[0];
    // Key count, fifty-move counter, earlier entries holding the current key, the lines printed.
    const std::tuple<int32_t, int32_t, std::array<int32_t, 2>, Text> cases[] = {
        {8, 8, {0, 4}, "1/2-1/2 {Draw by repetition}\n"},
        {8, 6, {0, 4}, ""}, // a pawn move or capture six plies ago
        {8, 8, {3, 5}, ""}, // the other side to move
        {99, 99, {-1, -1}, ""},
    };
    for (const auto& [keyCount, fifty, repeated, lines] : cases) {
        for (int32_t i = 0; i < keyCount; ++i)
            game.search.keyHistory[i] = 100 + i;
        for (const int32_t entry : repeated)
            if (entry >= 0) game.search.keyHistory[entry] = now;
        game.search.keyHistory[keyCount] = now;
        game.search.keyCount = keyCount;
        game.search.fiftyMoveCounter = fifty;
        game.userSide = white;
        EXPECT_EQ(adjudicate(), lines) << fifty << " " << repeated[0];
        EXPECT_EQ(game.lastLegalIndex == -1, *lines != '\0');
    }
}

// Each test puts a pipe holding its text on descriptor 0.
class Input : public ::testing::Test {
protected:
    void SetUp() override { savedStdin = dup(0); }
    void TearDown() override {
        dup2(savedStdin, 0);
        close(savedStdin);
        resetInput();
    }

    // Standard input becomes a pipe holding `text`; the writing end returned when kept open.
    int feed(const std::string& text, bool keepOpen = false) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        EXPECT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        if (!keepOpen) close(ends[1]);
        dup2(ends[0], 0);
        close(ends[0]);
        resetInput();
        return keepOpen ? ends[1] : -1;
    }

    std::string nextWord() {
        char word[inputWordSize];
        return readWord(word) ? std::string(word) : std::string("<end>");
    }

    int savedStdin = -1;
};

// Any white space separates words; an overlong word is cut to 511 characters, its rest dropped.
TEST_F(Input, Words) {
    feed("  e4\te5\r\n\n Nf3  \vquit " + std::string(600, 'x') + " next");
    for (const std::string& word : std::vector<std::string>{
             "e4", "e5", "Nf3", "quit", std::string(511, 'x'), "next", "<end>", "<end>"})
        EXPECT_EQ(nextWord(), word);
}

// Numbers are read as "%ld" would: the rest of a word stays, no number reads nothing, clamped.
TEST_F(Input, NumbersAreReadLikeScanfLong) {
    feed("12 -7\n+3 40moves x -y 99999999999999999999 -99999999999999999999");
    // A number read, "-" for none (the value kept), or the word read next.
    const std::string max = std::to_string(LONG_MAX), min = std::to_string(LONG_MIN);
    const std::string steps[] = {"12", "-7", "3",  "40", "moves", "-",
                                 "x",  "-",  "-y", max,  min,     "-"};
    for (const std::string& step : steps) {
        long n = 5;
        if (std::isalpha(step.back())) {
            EXPECT_EQ(nextWord(), step);
        } else {
            EXPECT_EQ(readLong(n), step != "-") << step;
            EXPECT_EQ(std::to_string(n), step == "-" ? "5" : step);
        }
    }
}

// Input waits while bytes are unread or at the end; not for the line end behind a word read.
TEST_F(Input, WaitingInput) {
    feed("go stop");
    EXPECT_TRUE(inputWaiting());
    EXPECT_EQ(nextWord(), "go");
    EXPECT_TRUE(inputWaiting());
    EXPECT_EQ(nextWord(), "stop");
    EXPECT_EQ(nextWord(), "<end>");
    EXPECT_TRUE(inputWaiting());
    const int writer = feed("", true);
    EXPECT_FALSE(inputWaiting());
    ASSERT_EQ(write(writer, "e4\n", 3), 3);
    EXPECT_TRUE(inputWaiting());
    EXPECT_EQ(nextWord(), "e4");
    EXPECT_FALSE(inputWaiting());
    ASSERT_EQ(write(writer, "\n", 1), 1);
    EXPECT_TRUE(inputWaiting());
    close(writer);
}

} // namespace
