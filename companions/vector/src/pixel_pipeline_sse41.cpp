// The pixel pipeline on SSE4.1: four pixels per step in both stages, as four 32-bit lanes or two
// vectors of two doubles. Compiled with -msse4.1; only reached after initialize has found SSE2, SSE3,
// SSSE3 and SSE4.1 on the processor. Without FMA the sums are products and additions, which the
// exactness tiers allow: in the plain tier every one of them is exact.
#include "lanes_128.hpp"
#include "pixel_pipeline.hpp"
#include "vector_transforms.hpp"

namespace {

// Four pixels' values of one channel as doubles: pixels 0, 1 and pixels 2, 3.
struct Double_pair {
    __m128d low;
    __m128d high;
};

struct Sse41_sums : Lanes_128 {
    using Doubles = Double_pair;

    static Doubles broadcast_double(double value) { return {_mm_set1_pd(value), _mm_set1_pd(value)}; }
    static Doubles to_doubles(Lanes v) { return {_mm_cvtepi32_pd(v), _mm_cvtepi32_pd(_mm_unpackhi_epi64(v, v))}; }
    static Doubles load_plane_as_doubles(const uint16_t* samples) { return to_doubles(load_plane(samples)); }
    static void load_pixels_as_doubles(const uint16_t* pixels, Doubles& c0, Doubles& c1, Doubles& c2)
    {
        Lanes l0, l1, l2;
        load_pixels(pixels, l0, l1, l2);
        c0 = to_doubles(l0);
        c1 = to_doubles(l1);
        c2 = to_doubles(l2);
    }

    // Two roundings, which is no rounding at all where it is used: in the plain tier.
    static Doubles multiply_add(const Doubles& a, Doubles b, Doubles c)
    {
        return {_mm_add_pd(_mm_mul_pd(a.low, b.low), c.low), _mm_add_pd(_mm_mul_pd(a.high, b.high), c.high)};
    }
    static Doubles multiply(const Doubles& a, Doubles b)
    {
        return {_mm_mul_pd(a.low, b.low), _mm_mul_pd(a.high, b.high)};
    }
    static Doubles add(Doubles a, Doubles b) { return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)}; }
    static Doubles subtract(Doubles a, Doubles b) { return {_mm_sub_pd(a.low, b.low), _mm_sub_pd(a.high, b.high)}; }

    // Truncation toward zero; NaN and values outside the int32 range give 0x80000000.
    static Lanes truncate(Doubles v) { return _mm_unpacklo_epi64(_mm_cvttpd_epi32(v.low), _mm_cvttpd_epi32(v.high)); }
};

// Both stages work on four pixels at a time.
struct Sse41 {
    using Sums = Sse41_sums;
    using Finish = Lanes_128;
    static constexpr int32_t width = 4;
};

}  // namespace

namespace sse41 {

int transform(const Transform_arguments<unsigned char>& arguments)
{
    return pixel_pipeline::transform<Sse41>(arguments);
}

int transform(const Transform_arguments<unsigned short>& arguments)
{
    return pixel_pipeline::transform<Sse41>(arguments);
}

}  // namespace sse41
