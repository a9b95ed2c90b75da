// How a vector library can reproduce the scalar engine's sums exactly for one colour matrix.
//
// The scalar engine forms, per output channel, RN53(RN64(RN64(RN64(p0 + p1) + p2) + 0.5)) with
// p_k = m_k * X_k, m_k a float coefficient and X_k an integer below 2^16, then truncates. Every
// p_k is exact in double (24 + 16 significant bits). Let 2^L be the smallest of 2^-1 and the
// lowest set bit of each non-zero coefficient of a row: every partial sum is then an integer
// multiple of 2^L, bounded in magnitude by N * 2^L with N = (sum |m_k| * 65535 + 0.5) / 2^L.
//   N < 2^53: every double operation on these values is exact, fused or not, in any order, and
//             the x87 roundings are identities: plain double arithmetic gives the same result.
//   N < 2^64: the x87 additions are still exact, so its result is the exact sum rounded once
//             to double; double additions with the error term of each one (TwoSum) recover the
//             exact sum as value plus a small exactly representable error, and adding the two
//             rounds once: the same result.
//   otherwise an intermediate x87 rounding may decide the result; such a matrix is left to the
//             scalar engine.
// A row with an infinite or NaN coefficient gives NaN or an infinity on both paths, hence the
// same out-of-range integer, whatever the arithmetic: it does not constrain the tier. Subnormal
// coefficients always fall in the last tier.
//
// The decision uses integer arithmetic on the coefficients' bits only, so it does not depend on
// the caller's floating-point control state.
#pragma once

#include "fixed_point_matrix.hpp"

enum class Exactness_tier {
    fixed_point,  // 16-bit multiply-adds on integers are exact (fixed_point_matrix.hpp)
    plain,        // plain (or fused) double arithmetic is exact
    compensated,  // double arithmetic with TwoSum error terms reproduces the x87 result
    scalar_only,  // the call must be left to the scalar engine
};

// The tier of the whole call: fixed_point when every row has a fixed-point form, which is then
// written to `form`; otherwise the most demanding tier of the three rows of the row-major matrix.
Exactness_tier exactness_tier(const float* matrix, Fixed_point_matrix& form);
