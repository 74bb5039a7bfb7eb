#include <gtest/gtest.h>

#include <cstring>

#include "core/exchange.h"
#include "core/fen.h"
#include "core/position.h"

namespace {

// The exchange on a square given as text, e.g. "d5"; the position must come back unchanged.
int32_t exchange(const char* fen, Side side, const char* square, int32_t pinCheck) {
    Position pos;
    const char* error = readFen(fen, pos);
    EXPECT_TRUE(error == nullptr) << fen << ": " << error;
    const Position before = pos;
    const int32_t result = staticExchange(side, pos, square[0] - 'a', square[1] - '1', pinCheck);
    EXPECT_EQ(std::memcmp(&pos, &before, sizeof pos), 0) << fen;
    return result;
}

void expectExchange(const char* fen, Side side, const char* square, int32_t expected) {
    EXPECT_EQ(exchange(fen, side, square, 0), expected) << fen << " " << square;
    EXPECT_EQ(exchange(fen, side, square, 1), expected) << fen << " " << square;
}

} // namespace

TEST(StaticExchange, NothingToTake) {
    expectExchange("4k3/8/8/8/8/8/8/4K3 w - - 0 1", white, "d4", 0);
    // A knight that can go to an empty square gains nothing there.
    expectExchange("4k3/8/8/8/8/8/8/4K1N1 w - - 0 1", white, "f3", 0);
}

TEST(StaticExchange, UndefendedPiece) {
    expectExchange("4k3/8/8/3n4/4P3/8/8/4K3 w - - 0 1", white, "d5", 3000);
    // Seen from white: black winning a knight counts negative.
    expectExchange("4k3/8/8/3p4/4N3/8/8/4K3 b - - 0 1", black, "e4", -3000);
}

TEST(StaticExchange, CapturerMayDecline) {
    // Rook takes knight (+3000), pawn takes rook (-5000): white does better not to start.
    expectExchange("4k3/8/2p5/3n4/8/8/8/3RK3 w - - 0 1", white, "d5", 0);
    // Pawn takes knight (+3000), pawn takes pawn (-1000).
    expectExchange("4k3/8/2p5/3n4/4P3/8/8/4K3 w - - 0 1", white, "d5", 2000);
}

TEST(StaticExchange, LeastValuablePieceCapturesFirst) {
    // With the pawn first: +5000, -1000, +1000 for 5000. The rook first would give only 1000.
    expectExchange("4k3/8/2p5/3r4/4P3/8/8/3RK3 w - - 0 1", white, "d5", 5000);
}

TEST(StaticExchange, RearRookJoinsThroughTheFrontRook) {
    // Rd2xd5 +5000, Rd8xd5 -5000, Rd1xd5 +5000.
    expectExchange("3r3k/8/8/3r4/8/8/3R4/3RK3 w - - 0 1", white, "d5", 5000);
    // Without the rear rook the recapture leaves white even.
    expectExchange("3r3k/8/8/3r4/8/8/3R4/4K3 w - - 0 1", white, "d5", 0);
}

TEST(StaticExchange, CaptureWithPromotion) {
    // b7xa8 wins the rook and becomes a queen: 5000 + 8000.
    expectExchange("r3k3/1P6/8/8/8/8/8/4K3 w - - 0 1", white, "a8", 13000);
    // The knight on b6 takes the new queen: 13000 - 9000.
    expectExchange("r3k3/1P6/1n6/8/8/8/8/4K3 w - - 0 1", white, "a8", 4000);
    // And the rook on a1 takes the knight: 4000 + 3000.
    expectExchange("r3k3/1P6/1n6/8/8/8/8/R3K3 w - - 0 1", white, "a8", 7000);
    // Black promotes on the first rank.
    expectExchange("4k3/8/8/8/8/8/1p6/R3K3 b - - 0 1", black, "a1", -13000);
}

TEST(StaticExchange, PinnedPieces) {
    // The rook on e4 shields its king from the rook on e8: it may not leave the file for a4.
    const char* rookPin = "4r2k/8/8/8/n3R3/8/8/4K3 w - - 0 1";
    EXPECT_EQ(exchange(rookPin, white, "a4", 1), 0);
    EXPECT_EQ(exchange(rookPin, white, "a4", 0), 3000);
    // Taking the pinning rook itself is allowed.
    EXPECT_EQ(exchange(rookPin, white, "e8", 1), 5000);

    // The bishop on c3 shields its king on a1 from the bishop on e5.
    const char* bishopPin = "7k/8/8/4b3/8/2B5/3n4/K7 w - - 0 1";
    EXPECT_EQ(exchange(bishopPin, white, "d2", 1), 0);
    EXPECT_EQ(exchange(bishopPin, white, "d2", 0), 3000);
    EXPECT_EQ(exchange(bishopPin, white, "e5", 1), 3000);
}

TEST(StaticExchange, PinnedKnight) {
    // The knight on e2 shields its king from the rook on e8 and may not take on d4.
    const char* pinned = "4r2k/8/8/8/3p4/8/4N3/4K3 w - - 0 1";
    EXPECT_EQ(exchange(pinned, white, "d4", 1), 0);
    EXPECT_EQ(exchange(pinned, white, "d4", 0), 1000);
    // A second knight on f3 is free to take.
    EXPECT_EQ(exchange("4r2k/8/8/8/3p4/5N2/4N3/4K3 w - - 0 1", white, "d4", 1), 1000);
}

TEST(StaticExchange, NoCaptureWhileInCheck) {
    // The rook on e8 gives check: the knight on a1 may not take on c2.
    const char* fen = "4r2k/8/8/8/8/8/2n5/N3K3 w - - 0 1";
    EXPECT_EQ(exchange(fen, white, "c2", 1), 0);
    EXPECT_EQ(exchange(fen, white, "c2", 0), 3000);
}

TEST(StaticExchange, KingCapturesOnlyUndefendedPieces) {
    expectExchange("4k3/8/8/8/8/8/3n4/4K3 w - - 0 1", white, "d2", 3000);
    // The pawn on e3 defends d2.
    expectExchange("4k3/8/8/8/8/4p3/3n4/4K3 w - - 0 1", white, "d2", 0);
}
