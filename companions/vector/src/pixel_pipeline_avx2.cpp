// The pixel pipeline on AVX2 with FMA. Compiled with -mavx2 -mfma; only reached after
// initialize has found both on the processor and the YMM state enabled by the operating system.
//
// The sums stage works on four pixels at a time: one vector of four doubles per channel, and
// 128-bit integer lanes on either side of it, so that no conversion needs a separate step across
// the two halves of a 256-bit register (on the processors this library targets, such steps and
// the conversions compete for one port). The finish stage works on eight pixels at a time in
// 256-bit integer lanes.
#include "lanes_128.hpp"
#include "pixel_pipeline.hpp"
#include "vector_transforms.hpp"

#include <immintrin.h>

namespace {

using lane_shuffles::Pattern;

__m256i pattern(const Pattern& p)
{
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(p.bytes));
}

// Interleaved input as doubles without a conversion instruction: a 16-bit sample X placed in
// the low bits of the double 2^52 (bits 0x4330000000000000) makes the double 2^52 + X exactly,
// and subtracting 2^52 leaves X. Lane 0 of the loaded vector holds a group's bytes 0..15
// (pixels 0 and 1), lane 1 its bytes 8..23 (pixels 2 and 3 from byte 4 of the lane); channel c
// of the four pixels goes to the low 16 bits of the four 64-bit slots.
constexpr Pattern channel_into_double_slots(int c)
{
    Pattern p{};
    for (int k = 0; k < 32; ++k) p.bytes[k] = -1;
    const int first_byte[4] = {2 * c, 6 + 2 * c, 16 + 4 + 2 * c, 16 + 10 + 2 * c};
    for (int slot = 0; slot < 4; ++slot) {
        p.bytes[8 * slot] = static_cast<int8_t>(first_byte[slot] % 16);
        p.bytes[8 * slot + 1] = static_cast<int8_t>(first_byte[slot] % 16 + 1);
    }
    return p;
}

constexpr Pattern channels_into_double_slots[3] = {channel_into_double_slots(0), channel_into_double_slots(1),
                                                   channel_into_double_slots(2)};

struct Avx2_sums : Lanes_128 {
    using Doubles = __m256d;

    static Doubles broadcast_double(double value) { return _mm256_set1_pd(value); }
    static Doubles to_doubles(Lanes v) { return _mm256_cvtepi32_pd(v); }
    static Doubles load_plane_as_doubles(const uint16_t* samples) { return to_doubles(load_plane(samples)); }

    static void load_pixels_as_doubles(const uint16_t* pixels, Doubles& c0, Doubles& c1, Doubles& c2)
    {
        const __m256i first = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels)));
        const __m256i last = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + 4)));
        const __m256i group = _mm256_blend_epi32(first, last, 0xF0);
        const __m256i two_to_52_bits = _mm256_set1_epi64x(0x4330000000000000LL);
        const __m256d two_to_52 = _mm256_castsi256_pd(two_to_52_bits);
        auto channel = [&](int c) {
            const __m256i bits = _mm256_or_si256(_mm256_shuffle_epi8(group, pattern(channels_into_double_slots[c])),
                                                 two_to_52_bits);
            return _mm256_sub_pd(_mm256_castsi256_pd(bits), two_to_52);
        };
        c0 = channel(0);
        c1 = channel(1);
        c2 = channel(2);
    }

    static Doubles multiply_add(Doubles a, Doubles b, Doubles c) { return _mm256_fmadd_pd(a, b, c); }
    static Doubles multiply(Doubles a, Doubles b) { return _mm256_mul_pd(a, b); }
    static Doubles add(Doubles a, Doubles b) { return _mm256_add_pd(a, b); }
    static Doubles subtract(Doubles a, Doubles b) { return _mm256_sub_pd(a, b); }

    // Truncation toward zero; NaN and values outside the int32 range give 0x80000000.
    static Lanes truncate(Doubles v) { return _mm256_cvttpd_epi32(v); }
};

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

// Eight pixels' values of one channel as 32-bit lanes, and the output stores of each layout.
struct Lanes_256 {
    using Lanes = __m256i;
    using Shift_count = __m128i;
    static constexpr int32_t width = 8;

    static Lanes zero() { return _mm256_setzero_si256(); }
    static Lanes broadcast_lanes(int32_t value) { return _mm256_set1_epi32(value); }
    static Shift_count shift_count(int bits) { return _mm_cvtsi32_si128(bits); }
    static Lanes low_16_bits(Lanes v) { return _mm256_blend_epi16(v, _mm256_setzero_si256(), 0xAA); }

    // --- the fixed-point sums (see Lanes_128 for the 128-bit forms) ---
    static Lanes join(__m128i first_four, __m128i last_four)
    {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(first_four), last_four, 1);
    }
    static Lanes load_plane(const uint16_t* samples)
    {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples)));
    }
    template <int ORDER>
    static void load_pixel_pairs(const uint16_t* pixels, Lanes& red_green, Lanes& blue)
    {
        using namespace lane_shuffles;
        auto load = [](const uint16_t* words) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words)); };
        const __m256i first = join(load(pixels), load(pixels + 12));        // pixels 0, 1 | 4, 5 whole
        const __m256i second = join(load(pixels + 4), load(pixels + 16));  // pixels 2, 3 | 6, 7 whole
        red_green = _mm256_or_si256(_mm256_shuffle_epi8(first, pattern(red_green_pairs[ORDER].first_pixels)),
                                    _mm256_shuffle_epi8(second, pattern(red_green_pairs[ORDER].last_pixels)));
        blue = _mm256_or_si256(_mm256_shuffle_epi8(first, pattern(blue_words[ORDER].first_pixels)),
                               _mm256_shuffle_epi8(second, pattern(blue_words[ORDER].last_pixels)));
    }
    static Lanes word_pairs(Lanes low, Lanes high)
    {
        return _mm256_blend_epi16(low, _mm256_slli_epi32(high, 16), 0xAA);
    }
    static Lanes multiply_add_pairs(Lanes a, Lanes b) { return _mm256_madd_epi16(a, b); }
    static Lanes add(Lanes a, Lanes b) { return _mm256_add_epi32(a, b); }
    static Lanes bitwise_xor(Lanes a, Lanes b) { return _mm256_xor_si256(a, b); }
    template <int BITS>
    static Lanes shift_right_arithmetic_by(Lanes v) { return _mm256_srai_epi32(v, BITS); }

    [[gnu::always_inline]] static Lanes look_up(const int32_t* indices, const LUT_entry* table)
    {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(lanes_128::four_entries(indices, table)),
                                       lanes_128::four_entries(indices + 4, table), 1);
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

    // Channels c0, c1, c2 in memory order, then a zero fourth sample when FOURTH_CHANNEL. With
    // PAST_END, three channels are stored as four overlapping 16-byte pieces, each lane as it
    // is, the last of which writes 4 bytes past the pixels; without, the lanes are joined first.
    template <bool FOURTH_CHANNEL, bool PAST_END>
    static void store_pixels(uint16_t* pixels, Lanes c0, Lanes c1, Lanes c2)
    {
        const __m256i first_two = _mm256_blend_epi16(c0, _mm256_slli_epi32(c1, 16), 0xAA);
        const __m256i third = low_16_bits(c2);
        const __m256i pairs_low = _mm256_unpacklo_epi32(first_two, third);   // pixels 0, 1 | 4, 5
        const __m256i pairs_high = _mm256_unpackhi_epi32(first_two, third);  // pixels 2, 3 | 6, 7
        if constexpr (FOURTH_CHANNEL) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), _mm256_permute2x128_si256(pairs_low, pairs_high, 0x20));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels + 16),
                                _mm256_permute2x128_si256(pairs_low, pairs_high, 0x31));
        } else if constexpr (PAST_END) {
            const __m256i drop = pattern(lane_shuffles::drop_fourth_words);
            const __m256i low = _mm256_shuffle_epi8(pairs_low, drop);
            const __m256i high = _mm256_shuffle_epi8(pairs_high, drop);
            auto store_16 = [](uint16_t* at, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(at), v); };
            store_16(pixels, _mm256_castsi256_si128(low));
            store_16(pixels + 6, _mm256_castsi256_si128(high));
            store_16(pixels + 12, _mm256_extracti128_si256(low, 1));
            store_16(pixels + 18, _mm256_extracti128_si256(high, 1));
        } else {
            const __m256i pixels_0_to_3 = _mm256_permute2x128_si256(pairs_low, pairs_high, 0x20);
            const __m256i pixels_4_to_7 = _mm256_permute2x128_si256(pairs_low, pairs_high, 0x31);
            const __m256i drop = pattern(lane_shuffles::drop_fourth_words);
            store_24_bytes(pixels, join_twelve_byte_lanes(_mm256_shuffle_epi8(pixels_0_to_3, drop)));
            store_24_bytes(pixels + 12, join_twelve_byte_lanes(_mm256_shuffle_epi8(pixels_4_to_7, drop)));
        }
    }

    template <bool FOURTH_CHANNEL, bool PAST_END>
    static void store_pixels(uint8_t* pixels, Lanes c0, Lanes c1, Lanes c2)
    {
        using namespace lane_shuffles;
        const Pattern* placement = FOURTH_CHANNEL ? byte_of_four_channel_pixel : byte_of_three_channel_pixel;
        const __m256i bytes = _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(c0, pattern(placement[0])),
                                                              _mm256_shuffle_epi8(c1, pattern(placement[1]))),
                                              _mm256_shuffle_epi8(c2, pattern(placement[2])));
        if constexpr (FOURTH_CHANNEL) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), bytes);
        } else if constexpr (PAST_END) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), _mm256_castsi256_si128(bytes));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 12), _mm256_extracti128_si256(bytes, 1));
        } else {
            store_24_bytes(pixels, join_twelve_byte_lanes(bytes));
        }
    }
};

struct Avx2 {
    using Sums = Avx2_sums;
    using Finish = Lanes_256;
    static constexpr int32_t width = 8;
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
