#include <gtest/gtest.h>

#include "eval/material.h"

TEST(MaterialScale, TellingEntries) {
    fillMaterialScale();
    EXPECT_EQ(materialScale[0], -18339);
    EXPECT_EQ(materialScale[1], -18086);
    EXPECT_EQ(materialScale[7], -16577);  // a pawn
    EXPECT_EQ(materialScale[23], -12628); // a knight or bishop
    EXPECT_EQ(materialScale[39], -8788);  // a rook
    EXPECT_EQ(materialScale[70], -1661);
    EXPECT_EQ(materialScale[296], 37889); // a full set less a pawn
    EXPECT_EQ(materialScale[304], 38889); // a full set of pieces
    EXPECT_EQ(materialScale[591], 56669);
    EXPECT_EQ(materialScale[1023], 17054);
}

TEST(MaterialScale, LargestEntry) {
    fillMaterialScale();
    for (int32_t i = 0; i < materialScaleSize; ++i)
        EXPECT_LE(materialScale[i], materialScale[591]) << "entry " << i;
    // The curve rises up to there and falls after it.
    EXPECT_LT(materialScale[300], materialScale[400]);
    EXPECT_GT(materialScale[700], materialScale[800]);
}

TEST(MaterialScale, WorthOfALeadGrowsAsMaterialFalls) {
    fillMaterialScale();
    // One pawn up at full material, and a king and pawn against a bare king.
    EXPECT_EQ(materialScale[304] - materialScale[296], 1000);
    EXPECT_EQ(materialScale[7] - materialScale[0], 1762);
}

// Entries whose exact value is a whole number come out one lower in extended precision.
TEST(MaterialScale, ExtendedPrecisionEntries) {
    fillMaterialScale();
    EXPECT_EQ(materialScale[225], 27815);
    EXPECT_EQ(materialScale[325], 41383);
    EXPECT_EQ(materialScale[800], 47463);
    EXPECT_EQ(materialScale[900], 36455);
}
