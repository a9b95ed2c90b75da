#include "fixed_point_matrix.hpp"

#include "float_parts.hpp"

#include <algorithm>
#include <cstdlib>

namespace {

using namespace float_parts;

constexpr int piece_bits = 14;
constexpr int smallest_scale = piece_bits + 1;  // makes the constant a multiple of 2^14
constexpr int64_t sample_offset = 32768;  // X - 32768 is a signed 16-bit word
constexpr int64_t largest_sample = 65535;
constexpr int64_t largest_high_piece = int64_t{1} << piece_bits;  // keeps each product below 2^29
constexpr int64_t int32_limit = int64_t{1} << 31;
// The rounding half 2^(scale - 1) alone must fit the constant's pieces, which it does up to a scale
// of about 43.
constexpr int largest_scale = 40;
constexpr int largest_coefficient_bits = 29;  // checked before shifting, so no shift overflows

// With every high piece at most 2^14 (and low pieces below 2^13 in magnitude), every sum lies
// within the int32 range, so the scalar engine's conversion never gives its out-of-range value.
static_assert(3 * ((largest_high_piece << piece_bits) + (int64_t{1} << (piece_bits - 1))) * largest_sample <
                  (int32_limit - 1) << smallest_scale,
              "the pieces' bound keeps |S| below 2^31");

struct Pieces {
    int64_t high;
    int64_t low;  // in [-2^13, 2^13)
};

Pieces pieces_of(int64_t value)
{
    const int64_t half_piece = int64_t{1} << (piece_bits - 1);
    const int64_t low = ((value + half_piece) & ((int64_t{1} << piece_bits) - 1)) - half_piece;
    return {(value - low) / (int64_t{1} << piece_bits), low};
}

// m * 2^scale as an integer, from m's magnitude, when it has at most largest_coefficient_bits
// bits; false otherwise.
bool scaled_coefficient(float m, const Scaled_integer& magnitude, int scale, int64_t& scaled)
{
    if (magnitude.integer == 0) {
        scaled = 0;
        return true;
    }
    const int shift = magnitude.exponent + scale;  // >= 0: the scale covers every fraction bit
    if (bit_length(magnitude.integer) + shift > largest_coefficient_bits) return false;
    scaled = static_cast<int64_t>(magnitude.integer) << shift;
    if (is_negative(m)) scaled = -scaled;
    return true;
}

bool fixed_point_row(const float* row, Fixed_point_row& form)
{
    int unit = -1;  // the half of the rounding has one fraction bit
    Scaled_integer magnitudes[3];
    for (int k = 0; k < 3; ++k) {
        if (!is_finite(row[k])) return false;
        magnitudes[k] = scaled_magnitude(row[k]);
        if (magnitudes[k].integer != 0) unit = std::min(unit, magnitudes[k].exponent);
    }
    const int scale = std::max(-unit, smallest_scale);
    if (scale > largest_scale) return false;

    int64_t scaled[3];
    for (int k = 0; k < 3; ++k) {
        if (!scaled_coefficient(row[k], magnitudes[k], scale, scaled[k])) return false;
    }
    const int64_t half = int64_t{1} << (scale - 1);

    const int64_t constant = half + sample_offset * (scaled[0] + scaled[1] + scaled[2]);
    const Pieces constant_pieces = pieces_of(constant / (int64_t{1} << piece_bits));  // exact: see smallest_scale
    if (std::llabs(constant_pieces.high) >= 32768) return false;
    int64_t high_bound = std::llabs(constant_pieces.high) * constant_word;
    for (int k = 0; k < 3; ++k) {
        const Pieces p = pieces_of(scaled[k]);
        if (std::llabs(p.high) > largest_high_piece) return false;
        high_bound += std::llabs(p.high) * sample_offset;
        form.low[k] = static_cast<int16_t>(p.low);
        form.high[k] = static_cast<int16_t>(p.high);
    }
    // high + (low >> 14) must stay within int32; |low| < 2^30 always.
    if (high_bound + (int64_t{1} << 16) >= int32_limit) return false;
    form.low_constant = static_cast<int16_t>(constant_pieces.low);
    form.high_constant = static_cast<int16_t>(constant_pieces.high);
    form.shift = scale - piece_bits;
    return true;
}

}  // namespace

bool fixed_point_matrix(const float* matrix, Fixed_point_matrix& form)
{
    Fixed_point_matrix candidate{};
    for (int row = 0; row < 3; ++row) {
        if (!fixed_point_row(matrix + 3 * row, candidate.rows[row])) return false;
    }
    form = candidate;
    return true;
}
