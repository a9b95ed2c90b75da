// The pixel pipeline on AVX2 with FMA: eight pixels per step, as eight 32-bit lanes or two
// vectors of four doubles. Compiled with -mavx2 -mfma; only reached after initialize has found
// both on the processor and the YMM state enabled by the operating system.
#include "lane_shuffles.hpp"
#include "pixel_pipeline.hpp"
#include "vector_transforms.hpp"

#include <immintrin.h>

namespace {

__m256i pattern(const lane_shuffles::Pattern& p)
{
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(p.bytes));
}

// Two 128-bit loads, the second into the high lane.
__m256i load_two_lanes(const uint16_t* low, const uint16_t* high)
{
    const __m128i low_lane = _mm_loadu_si128(reinterpret_cast<const __m128i*>(low));
    const __m128i high_lane = _mm_loadu_si128(reinterpret_cast<const __m128i*>(high));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low_lane), high_lane, 1);
}

// Stores the low 24 bytes of v.
void store_24_bytes(void* destination, __m256i v)
{
    auto* bytes = static_cast<uint8_t*>(destination);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm256_castsi256_si128(v));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes + 16), _mm256_extracti128_si256(v, 1));
}

// Lanes whose low 12 bytes are valid, made contiguous: bytes 0..11 of each lane to 0..23.
__m256i join_twelve_byte_lanes(__m256i v)
{
    return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
}

struct Avx2 {
    using Lanes = __m256i;
    using Doubles = __m256d;
    using Shift_count = __m128i;
    static constexpr int32_t width = 8;

    static Lanes load_plane(const uint16_t* samples)
    {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples)));
    }

    // Eight interleaved pixels of three words; each lane of `first` holds its four pixels'
    // words 0..7, each lane of `second` words 4..11.
    static void load_pixels(const uint16_t* pixels, Lanes& c0, Lanes& c1, Lanes& c2)
    {
        using namespace lane_shuffles;
        const Lanes first = load_two_lanes(pixels, pixels + 12);
        const Lanes second = load_two_lanes(pixels + 4, pixels + 16);
        c0 = _mm256_or_si256(_mm256_shuffle_epi8(first, pattern(channel_of_first_pixels[0])),
                             _mm256_shuffle_epi8(second, pattern(channel_of_last_pixels[0])));
        c1 = _mm256_or_si256(_mm256_shuffle_epi8(first, pattern(channel_of_first_pixels[1])),
                             _mm256_shuffle_epi8(second, pattern(channel_of_last_pixels[1])));
        c2 = _mm256_or_si256(_mm256_shuffle_epi8(first, pattern(channel_of_first_pixels[2])),
                             _mm256_shuffle_epi8(second, pattern(channel_of_last_pixels[2])));
    }

    static Lanes look_up(const LUT_entry* table, Lanes index)
    {
        return _mm256_i32gather_epi32(table, index, 4);
    }

    static Lanes low_16_bits(Lanes v) { return _mm256_blend_epi16(v, _mm256_setzero_si256(), 0xAA); }
    static Lanes zero() { return _mm256_setzero_si256(); }
    static Lanes broadcast(int32_t value) { return _mm256_set1_epi32(value); }
    static Doubles broadcast(double value) { return _mm256_set1_pd(value); }
    static Shift_count shift_count(int bits) { return _mm_cvtsi32_si128(bits); }

    static Doubles low_half_to_doubles(Lanes v) { return _mm256_cvtepi32_pd(_mm256_castsi256_si128(v)); }
    static Doubles high_half_to_doubles(Lanes v) { return _mm256_cvtepi32_pd(_mm256_extracti128_si256(v, 1)); }
    static Doubles multiply_add(Doubles a, Doubles b, Doubles c) { return _mm256_fmadd_pd(a, b, c); }
    static Doubles multiply(Doubles a, Doubles b) { return _mm256_mul_pd(a, b); }
    static Doubles add(Doubles a, Doubles b) { return _mm256_add_pd(a, b); }
    static Doubles subtract(Doubles a, Doubles b) { return _mm256_sub_pd(a, b); }

    // Truncation toward zero; NaN and values outside the int32 range give 0x80000000.
    static Lanes truncate(Doubles low, Doubles high)
    {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm256_cvttpd_epi32(low)), _mm256_cvttpd_epi32(high), 1);
    }

    static Lanes load_lanes(const int32_t* values) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(values)); }
    static void store_lanes(int32_t* values, Lanes v) { _mm256_store_si256(reinterpret_cast<__m256i*>(values), v); }
    static Lanes min(Lanes a, Lanes b) { return _mm256_min_epi32(a, b); }
    static Lanes max(Lanes a, Lanes b) { return _mm256_max_epi32(a, b); }
    static Lanes shift_left(Lanes v, Shift_count bits) { return _mm256_sll_epi32(v, bits); }
    static Lanes shift_right_arithmetic(Lanes v, Shift_count bits) { return _mm256_sra_epi32(v, bits); }

    static void store_plane(uint16_t* samples, Lanes v)
    {
        const __m256i words = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(v, pattern(lane_shuffles::low_words)), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(samples), _mm256_castsi256_si128(words));
    }

    static void store_plane(uint8_t* samples, Lanes v)
    {
        const __m256i bytes = _mm256_shuffle_epi8(v, pattern(lane_shuffles::low_bytes));
        const __m128i joined = _mm_unpacklo_epi32(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), joined);
    }

    // Channels c0, c1, c2 in memory order, then a zero fourth sample when FOURTH_CHANNEL.
    template <bool FOURTH_CHANNEL>
    static void store_pixels(uint16_t* pixels, Lanes c0, Lanes c1, Lanes c2)
    {
        const __m256i first_two = _mm256_blend_epi16(c0, _mm256_slli_epi32(c1, 16), 0xAA);
        const __m256i third = low_16_bits(c2);
        const __m256i pairs_low = _mm256_unpacklo_epi32(first_two, third);   // pixels 0, 1 | 4, 5
        const __m256i pairs_high = _mm256_unpackhi_epi32(first_two, third);  // pixels 2, 3 | 6, 7
        const __m256i pixels_0_to_3 = _mm256_permute2x128_si256(pairs_low, pairs_high, 0x20);
        const __m256i pixels_4_to_7 = _mm256_permute2x128_si256(pairs_low, pairs_high, 0x31);
        if constexpr (FOURTH_CHANNEL) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), pixels_0_to_3);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels + 16), pixels_4_to_7);
        } else {
            const __m256i drop = pattern(lane_shuffles::drop_fourth_words);
            store_24_bytes(pixels, join_twelve_byte_lanes(_mm256_shuffle_epi8(pixels_0_to_3, drop)));
            store_24_bytes(pixels + 12, join_twelve_byte_lanes(_mm256_shuffle_epi8(pixels_4_to_7, drop)));
        }
    }

    template <bool FOURTH_CHANNEL>
    static void store_pixels(uint8_t* pixels, Lanes c0, Lanes c1, Lanes c2)
    {
        using namespace lane_shuffles;
        const Pattern* placement = FOURTH_CHANNEL ? byte_of_four_channel_pixel : byte_of_three_channel_pixel;
        const __m256i bytes = _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(c0, pattern(placement[0])),
                                                              _mm256_shuffle_epi8(c1, pattern(placement[1]))),
                                              _mm256_shuffle_epi8(c2, pattern(placement[2])));
        if constexpr (FOURTH_CHANNEL) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), bytes);
        } else {
            store_24_bytes(pixels, join_twelve_byte_lanes(bytes));
        }
    }
};

}  // namespace

namespace avx2 {

int transform(const Transform_arguments<unsigned char>& arguments)
{
    return pixel_pipeline::transform<Avx2>(arguments);
}

int transform(const Transform_arguments<unsigned short>& arguments)
{
    return pixel_pipeline::transform<Avx2>(arguments);
}

}  // namespace avx2
