#include <gtest/gtest.h>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/position.h"

namespace {

constexpr PositionKey startKey = 0x7EE956D4B3FB3833ULL;
constexpr PositionKey startKeyWithoutCastling = 0xBAD1816F98AA9949ULL;
constexpr PositionKey keyAfterE4 = 0x42EC401D68E52886ULL;

// Every test that reads the key tables draws them afresh, so that the random source is where
// start-up leaves it whatever ran before.
class Keys : public ::testing::Test {
protected:
    void SetUp() override {
        resetRandom();
        initPositionKeys();
    }
};

Position startPosition() {
    Position pos;
    setInitialPosition(pos);
    return pos;
}

} // namespace

TEST(RandomSource, FirstOutputsAndWrapOfTheShortLag) {
    resetRandom();
    EXPECT_EQ(nextRandom(), 0x039B11BFu);
    EXPECT_EQ(nextRandom(), 0x4890D6A4u);
    // Seeds 21 and 52 added.
    EXPECT_EQ(nextRandom(), 0x37539B8Au);
    // Seeds 20 and 51 added.
    EXPECT_EQ(nextRandom(), 0xA7E3A104u);
    for (int32_t i = 5; i <= 24; ++i)
        nextRandom();
    // The 25th draw reads entry 54 again, which now holds the first output, plus seed 30.
    EXPECT_EQ(nextRandom(), 0xABF131AAu);

    // Back to the unseeded state: the sequence starts over.
    resetRandom();
    EXPECT_EQ(nextRandom(), 0x039B11BFu);
    resetRandom();
    initPositionKeys();
}

TEST_F(Keys, FirstKeysAreTheFirstDraws) {
    EXPECT_EQ(pieceSquareKeys[0][0], 0x039B11BF4890D6A4ULL);
    EXPECT_EQ(pieceSquareKeys[0][1], 0x37539B8AA7E3A104ULL);
    EXPECT_EQ(pieceKey(-6, 0, 0), 0x039B11BF4890D6A4ULL);
}

TEST_F(Keys, LaterKeysFollowTheDrawOrder) {
    EXPECT_EQ(pieceSquareKeys[11][63], 0x15B45CD59475361BULL); // white king on h8
    EXPECT_EQ(enPassantKeys[0], 0x9550B69B55772368ULL);
    EXPECT_EQ(enPassantKeys[15], 0x53630E1F8FA3E91CULL);
    EXPECT_EQ(castlingKeys[0][0], 0xB7F48C0816573A4EULL);
    EXPECT_EQ(castlingKeys[1][0], 0x9690E409E1C1E4BCULL);
    EXPECT_EQ(castlingKeys[0][1], 0x2DDE33BB5F2BF442ULL);
    EXPECT_EQ(castlingKeys[1][1], 0x64F407A1CD4CEFBAULL);
    EXPECT_EQ(castlingKeys[0][2], 0xB197E00B9AB36C33ULL);
    EXPECT_EQ(castlingKeys[1][2], 0x75AF37B0B1E2CD49ULL);

    Position pos = startPosition();
    pos.blackCastling = 0;
    EXPECT_EQ(computeKey(pos), 0x0B4661640219F57AULL);
    pos.blackCastling = 3;
    pos.whiteCastling = 0;
    EXPECT_EQ(computeKey(pos), 0xCF7EB6DF29485400ULL);
}

TEST_F(Keys, StartPosition) {
    Position pos = startPosition();
    const PositionKey key = computeKey(pos);
    EXPECT_EQ(key, startKey);
    EXPECT_EQ(static_cast<uint32_t>(key >> 32), 0x7EE956D4u);
    EXPECT_EQ(static_cast<uint32_t>(key), 0xB3FB3833u);

    pos.whiteCastling = 0;
    pos.blackCastling = 0;
    EXPECT_EQ(computeKey(pos), startKeyWithoutCastling);
    // So the two castling keys of value 3 make up the difference.
    EXPECT_EQ(castlingKeys[0][2] ^ castlingKeys[1][2], startKey ^ startKeyWithoutCastling);
}

TEST_F(Keys, SideToMoveIsNotPartOfTheKey) {
    Position pos = startPosition();
    pos.sideToMove = -1;
    EXPECT_EQ(computeKey(pos), startKey);
    pos.sideToMove = 0;
    EXPECT_EQ(computeKey(pos), startKey);
}

TEST_F(Keys, KingsPawnOpeningFromScratchAndIncrementally) {
    Position pos = startPosition();
    pos.squares[squareIndex(4, 1)] = 0;
    pos.squares[squareIndex(4, 3)] = 1;
    pos.enPassant = 5;
    EXPECT_EQ(computeKey(pos), keyAfterE4);

    Position played = startPosition();
    PositionKey key = 0;
    PieceLists lists;
    Material material;
    derivePositionState(played, key, lists, material);
    int32_t capturedSlot = 0;
    makeMove(key, 1, played, lists, 4, 1, 4, 3, 0, material, capturedSlot);
    EXPECT_EQ(key, keyAfterE4);
    EXPECT_EQ(computeKey(played), keyAfterE4);
}

TEST_F(Keys, CastlingRightsContributeOneKeyPerSide) {
    Position pos = startPosition();
    pos.whiteCastling = 0;
    pos.blackCastling = 0;
    const PositionKey bare = computeKey(pos);
    for (int32_t rights = 1; rights <= 3; ++rights) {
        pos.whiteCastling = rights;
        pos.blackCastling = 0;
        EXPECT_EQ(computeKey(pos) ^ bare, castlingKeys[0][rights - 1]);
        pos.whiteCastling = 0;
        pos.blackCastling = rights;
        EXPECT_EQ(computeKey(pos) ^ bare, castlingKeys[1][rights - 1]);
    }
    // Value 3 is a key of its own, not the keys of 1 and 2 together.
    pos.whiteCastling = 3;
    pos.blackCastling = 0;
    EXPECT_NE(computeKey(pos) ^ bare, castlingKeys[0][0] ^ castlingKeys[0][1]);
}

TEST_F(Keys, EnPassantEntries) {
    Position pos = startPosition();
    const PositionKey base = computeKey(pos);
    // White's double step on file f (value f + 1) uses entry f + 8; black's (value -(f + 1))
    // uses entry 7 - f, so entries 0..7 run from the h-file to the a-file.
    for (int32_t file = 0; file < 8; ++file) {
        pos.enPassant = -(file + 1);
        EXPECT_EQ(computeKey(pos) ^ base, enPassantKeys[7 - file]);
        pos.enPassant = file + 1;
        EXPECT_EQ(computeKey(pos) ^ base, enPassantKeys[8 + file]);
    }
}

TEST_F(Keys, PiecesUseTheirRowAndSquare) {
    Position pos;
    ASSERT_TRUE(readFen("4k3/8/8/8/8/8/8/4K3 w - - 0 1", pos) == nullptr);
    const PositionKey kings = computeKey(pos);
    EXPECT_EQ(kings,
              pieceSquareKeys[0][squareIndex(4, 7)] ^ pieceSquareKeys[11][squareIndex(4, 0)]);
    // A white knight on c3 is row 7, square 2 * 8 + 2; a black rook on h5 row 2, square 60.
    pos.squares[squareIndex(2, 2)] = 2;
    pos.squares[squareIndex(7, 4)] = -4;
    EXPECT_EQ(computeKey(pos) ^ kings, pieceSquareKeys[7][18] ^ pieceSquareKeys[2][60]);
}
