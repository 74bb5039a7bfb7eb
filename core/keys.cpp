#include "core/keys.h"

PositionKey pieceSquareKeys[12][64];
PositionKey enPassantKeys[16];
PositionKey castlingKeys[2][3];

// The generator's 55 seeds, entries 0 to 54.
constexpr uint32_t randomSeeds[55] = {
    0x5414D5F4, 0xB3935330, 0xD0773E27, 0xAC62A182, 0x5DB20C92, 0xC1E618AC, 0xD003926A, 0x171FA3B3,
    0x9AD12101, 0x762172C1, 0xBC5D9DC3, 0x07B72A70, 0x6E5AC890, 0xF7BE54D1, 0x0D6332FA, 0x56BA8FBE,
    0xEBA585EC, 0x571421C5, 0x96B3C079, 0x12EB9B92, 0xC07C0978, 0x0700C5BD, 0x31A43513, 0x74EBA4AA,
    0x4EC55DB5, 0x2C91C2E9, 0x208771F6, 0x304EE204, 0x1E004673, 0xF3AC22F9, 0xA8561FEB, 0xDED13435,
    0xD03E7513, 0xDAE66BC2, 0x01C20BE1, 0x46638997, 0xFB26CE62, 0x01F87FC3, 0xC0016099, 0x44429270,
    0xB04F4481, 0xF31B8AD7, 0x86DD7A46, 0x03E72091, 0x96A22589, 0x74DCB7D4, 0x12D0FC03, 0x474A16E8,
    0x2FF5717C, 0x54BDED92, 0x783A9487, 0xE767978C, 0x3052D5CD, 0x16ECA191, 0x8EAF6D15,
};

// State of the random source: the lag table, its two indices, and whether it is seeded yet.
static struct {
    uint32_t table[55];
    int32_t j;
    int32_t k;
    bool unseeded = true;
} randomSource;

uint32_t nextRandom() {
    if (randomSource.unseeded) {
        for (int32_t i = 0; i < 55; ++i)
            randomSource.table[i] = randomSeeds[i];
        randomSource.j = 54;
        randomSource.k = 23;
        randomSource.unseeded = false;
    }
    uint32_t x = randomSource.table[randomSource.k] + randomSource.table[randomSource.j];
    if (--randomSource.k < 0) randomSource.k = 54;
    randomSource.table[randomSource.j] = x;
    if (--randomSource.j < 0) randomSource.j = 54;
    return x;
}

void resetRandom() {
    randomSource.unseeded = true;
}

// A key is two consecutive draws: the high half first.
static PositionKey drawKey() {
    PositionKey high = nextRandom();
    PositionKey low = nextRandom();
    return (high << 32) | low;
}

void initPositionKeys() {
    for (int32_t row = 0; row < 12; ++row) {
        for (int32_t sq = 0; sq < 64; ++sq)
            pieceSquareKeys[row][sq] = drawKey();
    }
    for (int32_t e = 0; e < 16; ++e)
        enPassantKeys[e] = drawKey();
    for (int32_t rights = 0; rights < 3; ++rights) {
        castlingKeys[0][rights] = drawKey();
        castlingKeys[1][rights] = drawKey();
    }
}

PositionKey computeKey(const Position& pos) {
    PositionKey key = 0;
    for (int32_t sq = 0; sq < 64; ++sq) {
        PieceCode code = pos.squares[sq];
        if (code != 0) key ^= pieceSquareKeys[keyKind(code)][sq];
    }
    if (pos.enPassant != 0) key ^= enPassantKey(pos.enPassant);
    if (pos.whiteCastling != 0) key ^= castlingKey(white, pos.whiteCastling);
    if (pos.blackCastling != 0) key ^= castlingKey(black, pos.blackCastling);
    return key;
}
