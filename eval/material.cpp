#include "eval/material.h"

int32_t materialScale[materialScaleSize];

// Coefficients of the scale polynomial f(y) = (-3y^2 + 455y - 4218) / 230, as double constants.
constexpr double scaleLinear = 1.9782608695652173;
constexpr double scaleQuadratic = -0.013043478260869566;
constexpr double scaleConstant = -18.339130434782607;

void fillMaterialScale() {
    static_assert(sizeof(long double) >= 10, "the fill needs x87 extended precision");
    for (int32_t i = 0; i < materialScaleSize; ++i) {
        // Each operation is rounded to the 64-bit significand, in exactly this order.
        const long double x = static_cast<long double>(i * 128) * static_cast<long double>(0.001);
        const long double a = x * static_cast<long double>(scaleLinear);
        const long double b = (x * x) * static_cast<long double>(scaleQuadratic);
        const long double v = ((a + b) + static_cast<long double>(scaleConstant)) * 1000.0L;
        materialScale[i] = static_cast<int32_t>(v);
    }
}
