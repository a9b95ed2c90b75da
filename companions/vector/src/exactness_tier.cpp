#include "exactness_tier.hpp"

#include <cstdint>
#include <cstring>

namespace {

constexpr uint64_t largest_sample = 65535;
constexpr int plain_bits = 53;
constexpr int compensated_bits = 64;

// A finite float's magnitude as integer * 2^exponent, the integer odd (or 0) and below 2^24.
struct Scaled_integer {
    uint32_t integer;
    int exponent;
};

uint32_t bits_of(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

bool is_finite(float value)
{
    return ((bits_of(value) >> 23) & 0xFFu) != 0xFFu;
}

Scaled_integer scaled_magnitude(float value)
{
    const uint32_t bits = bits_of(value);
    const uint32_t biased_exponent = (bits >> 23) & 0xFFu;
    const uint32_t fraction = bits & 0x7FFFFFu;
    Scaled_integer scaled = biased_exponent == 0
                                ? Scaled_integer{fraction, -149}  // zero or subnormal
                                : Scaled_integer{fraction | 0x800000u, static_cast<int>(biased_exponent) - 150};
    if (scaled.integer == 0) return scaled;
    while ((scaled.integer & 1u) == 0) {
        scaled.integer >>= 1;
        ++scaled.exponent;
    }
    return scaled;
}

int bit_length(uint64_t value)
{
    int length = 0;
    while (value != 0) {
        value >>= 1;
        ++length;
    }
    return length;
}

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

Exactness_tier exactness_tier(const float* matrix)
{
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
