// The parts of a float coefficient that the exactness decisions work with, read from its bits
// so that they do not depend on the caller's floating-point control state.
#pragma once

#include <cstdint>
#include <cstring>

namespace float_parts {

// A finite float's magnitude as integer * 2^exponent, the integer odd (or 0) and below 2^24.
struct Scaled_integer {
    uint32_t integer;
    int exponent;
};

inline uint32_t bits_of(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline bool is_finite(float value)
{
    return ((bits_of(value) >> 23) & 0xFFu) != 0xFFu;
}

inline Scaled_integer scaled_magnitude(float value)
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

inline bool is_negative(float value)
{
    return (bits_of(value) >> 31) != 0;
}

inline int bit_length(uint64_t value)
{
    int length = 0;
    while (value != 0) {
        value >>= 1;
        ++length;
    }
    return length;
}

}  // namespace float_parts
