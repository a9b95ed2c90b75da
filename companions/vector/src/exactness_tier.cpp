#include "exactness_tier.hpp"

#include "float_parts.hpp"

#include <cstdint>

namespace {

using namespace float_parts;

constexpr uint64_t largest_sample = 65535;
constexpr int plain_bits = 53;
constexpr int compensated_bits = 64;

// Bits needed by N (see the header) for one finite row; more than compensated_bits is reported
// as compensated_bits + 1.
int row_bits(const float* row)
{
    Scaled_integer terms[3];
    int unit = -1;  // L: the 0.5 of the rounding is a multiple of 2^-1
    for (int k = 0; k < 3; ++k) {
        terms[k] = scaled_magnitude(row[k]);
        if (terms[k].integer != 0 && terms[k].exponent < unit) unit = terms[k].exponent;
    }
    // Each part fits 62 bits or the row is taken as too wide (a little early, which only
    // leaves a few more exotic matrices to the scalar engine), so the sum of the half and the
    // three terms cannot overflow 64 bits.
    const int too_wide = compensated_bits + 1;
    const int half_shift = -1 - unit;
    if (half_shift > 61) return too_wide;
    uint64_t total = uint64_t{1} << half_shift;
    for (const Scaled_integer& term : terms) {
        if (term.integer == 0) continue;
        const uint64_t product = term.integer * largest_sample;
        const int shift = term.exponent - unit;
        if (bit_length(product) + shift > 62) return too_wide;
        total += product << shift;
    }
    return bit_length(total);
}

}  // namespace

Exactness_tier exactness_tier(const float* matrix, Fixed_point_matrix& form)
{
    if (fixed_point_matrix(matrix, form)) return Exactness_tier::fixed_point;
    int bits = 0;
    for (int row = 0; row < 3; ++row) {
        const float* coefficients = matrix + 3 * row;
        if (!is_finite(coefficients[0]) || !is_finite(coefficients[1]) || !is_finite(coefficients[2])) {
            continue;
        }
        const int needed = row_bits(coefficients);
        if (needed > bits) bits = needed;
    }
    if (bits <= plain_bits) return Exactness_tier::plain;
    if (bits <= compensated_bits) return Exactness_tier::compensated;
    return Exactness_tier::scalar_only;
}
