// The scaled material term of the evaluation.
#pragma once

#include <cstdint>

// Entries of materialScale: one per 128 units of material besides the king.
constexpr int32_t materialScaleSize = 1024;

// materialScale[i]: worth, in 1/1000 pawn, of i * 128 units of material besides the king, so
// that the same material lead counts for more when less material is left. Filled once at
// start-up by fillMaterialScale, read-only afterwards.
extern int32_t materialScale[materialScaleSize];

// Fills materialScale: for material y = 0.128 * i pawns, 1000 * (1.978.. y - 0.01304.. y^2 -
// 18.339..), truncated toward zero, computed in 64-bit-significand extended precision in a fixed
// order of operations (so entries 225 and 325 are 27815 and 41383).
void fillMaterialScale();
