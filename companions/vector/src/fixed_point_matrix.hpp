// A colour matrix as 16-bit multiply-adds whose integer results give the scalar engine's sums.
//
// For one row, with coefficients m_r, m_g, m_b (finite floats) and the scale 2^D, D the larger
// of 15 and the number of fractional bits of the row's coefficients and of the rounding half,
// every M_k = m_k * 2^D is an integer, and the scalar engine's sum S = sum m_k X_k + 0.5 is
// T / 2^D with the integer T = sum M_k X_k + 2^(D-1). The samples X_k (0..65535) enter as the
// signed 16-bit Y_k = X_k - 32768, so T = sum M_k Y_k + C with C = 2^(D-1) + 32768 sum M_k, a
// multiple of 2^14 since D >= 15. Each M_k is split into a high and a low piece,
// M = H * 2^14 + L with L in [-2^13, 2^13), and so is C / 2^14 = K_H * 2^14 + K_L. Blue's word
// is paired with the constant word 2^14, so that two multiply-adds of word pairs give each of
//   low  = L_r Y_r + L_g Y_g + L_b Y_b + 2^14 K_L
//   high = H_r Y_r + H_g Y_g + H_b Y_b + 2^14 K_H
//   T    = high * 2^14 + low,   floor(S) = (high + (low >> 14)) >> (D - 14)
// with arithmetic shifts, which are floors; the nested floors equal the single one. A row is
// accepted only when no 32-bit intermediate can overflow and |S| < 2^31.
//
// The scalar engine truncates S toward zero; floor(S) differs only for negative non-integer S,
// where both results are at most 0 and the clamp, whose lower bound is at least 0, makes them
// equal. Such a row also needs far fewer than 53 bits, so the scalar engine's x87 sums are exact
// (see exactness_tier.hpp) and S is what it computes.
#pragma once

#include <cstdint>

// The word that multiplies the constant pieces, paired with blue's word.
constexpr int16_t constant_word = 1 << 14;

struct Fixed_point_row {
    int16_t low[3];  // low pieces of the red, green and blue coefficients
    int16_t low_constant;
    int16_t high[3];
    int16_t high_constant;
    int32_t shift;  // D - 14
};

struct Fixed_point_matrix {
    Fixed_point_row rows[3];  // yielding red, green, blue
};

// Whether every row of the row-major matrix has a fixed-point form; if so, writes it.
bool fixed_point_matrix(const float* matrix, Fixed_point_matrix& form);
