// The word reader on standard input: words, numbers read as "%ld" would, overlong words, and
// the end of input. Each test puts a pipe holding its text on descriptor 0.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <unistd.h>

#include "ui/input.h"

namespace {

class Input : public ::testing::Test {
protected:
    void SetUp() override { savedStdin = dup(0); }
    void TearDown() override {
        dup2(savedStdin, 0);
        close(savedStdin);
        resetInput();
    }

    // Standard input becomes a pipe holding `text`, closed behind it.
    void feed(const std::string& text) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(ends[1]);
        dup2(ends[0], 0);
        close(ends[0]);
        resetInput();
    }

    std::string nextWord() {
        char word[inputWordSize];
        return readWord(word) ? std::string(word) : std::string("<end>");
    }

    int savedStdin = -1;
};

TEST_F(Input, WordsAreSeparatedByAnyWhiteSpace) {
    feed("  e4\te5\r\n\n Nf3  \vquit");
    EXPECT_EQ(nextWord(), "e4");
    EXPECT_EQ(nextWord(), "e5");
    EXPECT_EQ(nextWord(), "Nf3");
    EXPECT_EQ(nextWord(), "quit");
    EXPECT_EQ(nextWord(), "<end>");
    EXPECT_EQ(nextWord(), "<end>");
}

TEST_F(Input, AnOverlongWordIsCutAndItsRestDiscarded) {
    feed(std::string(600, 'x') + " next");
    EXPECT_EQ(nextWord(), std::string(511, 'x'));
    EXPECT_EQ(nextWord(), "next");
}

TEST_F(Input, NumbersAreReadLikeScanfLong) {
    feed("12 -7\n+3 40moves x -y 99999999999999999999 -99999999999999999999");
    long n = 0;
    ASSERT_TRUE(readLong(n));
    EXPECT_EQ(n, 12);
    ASSERT_TRUE(readLong(n));
    EXPECT_EQ(n, -7);
    ASSERT_TRUE(readLong(n));
    EXPECT_EQ(n, 3);
    // A number at the start of a word is taken; the rest of the word stays for the next read.
    ASSERT_TRUE(readLong(n));
    EXPECT_EQ(n, 40);
    EXPECT_EQ(nextWord(), "moves");
    // Not a number: nothing is consumed and the value is left alone.
    n = 5;
    EXPECT_FALSE(readLong(n));
    EXPECT_EQ(n, 5);
    EXPECT_EQ(nextWord(), "x");
    EXPECT_FALSE(readLong(n));
    EXPECT_EQ(nextWord(), "-y");
    // Out of range: clamped.
    ASSERT_TRUE(readLong(n));
    EXPECT_EQ(n, LONG_MAX);
    ASSERT_TRUE(readLong(n));
    EXPECT_EQ(n, LONG_MIN);
    EXPECT_FALSE(readLong(n));
}

TEST_F(Input, BufferedInputCountsAsWaiting) {
    feed("go stop");
    EXPECT_TRUE(inputWaiting()); // bytes on the pipe
    EXPECT_EQ(nextWord(), "go");
    EXPECT_TRUE(inputWaiting()); // " stop" is buffered, unread
    EXPECT_EQ(nextWord(), "stop");
    EXPECT_EQ(nextWord(), "<end>");
    EXPECT_TRUE(inputWaiting()); // at the end of input a read would not block either
}

TEST_F(Input, NothingWaitingOnAnOpenEmptyPipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    dup2(ends[0], 0);
    close(ends[0]);
    resetInput();
    EXPECT_FALSE(inputWaiting());
    ASSERT_EQ(write(ends[1], "e4\n", 3), 3);
    EXPECT_TRUE(inputWaiting());
    // Once the word is read, the line end behind it is no new input.
    EXPECT_EQ(nextWord(), "e4");
    EXPECT_FALSE(inputWaiting());
    // A new line, even an empty one, is a key pressed: it counts.
    ASSERT_EQ(write(ends[1], "\n", 1), 1);
    EXPECT_TRUE(inputWaiting());
    close(ends[1]);
}

} // namespace
