// The integer layer of both vector libraries: four pixels' channel values as four 32-bit lanes
// of a 128-bit vector, with the loads, stores and shuffles of each buffer layout. SSE4.1
// instructions; the AVX2 library compiles the same code with VEX encodings and keeps its
// 256-bit registers for the doubles, because on the processors it targets every 256-bit
// operation that crosses the two 128-bit halves (conversions aside) competes for one port.
#pragma once

#include "lane_shuffles.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <smmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lanes_128 {

inline __m128i pattern(const lane_shuffles::Pattern& p)
{
    return _mm_load_si128(reinterpret_cast<const __m128i*>(p.bytes));
}

inline void store_4_bytes(void* destination, __m128i v)
{
    const int32_t low = _mm_cvtsi128_si32(v);
    std::memcpy(destination, &low, sizeof low);
}

// Four 32-bit values, each loaded on its own into a vector and then joined: loads and two-source
// shuffles run on more ports here than inserts from memory do.
[[gnu::always_inline]] inline __m128i joined(const void* v0, const void* v1, const void* v2, const void* v3)
{
    auto load = [](const void* value) {
        int32_t bits;
        std::memcpy(&bits, value, sizeof bits);
        return _mm_cvtsi32_si128(bits);
    };
    return _mm_unpacklo_epi64(_mm_unpacklo_epi32(load(v0), load(v1)), _mm_unpacklo_epi32(load(v2), load(v3)));
}

// The whole entries of a table at four indices.
[[gnu::always_inline]] inline __m128i four_entries(const int32_t* indices, const LUT_entry* table)
{
    return joined(table + indices[0], table + indices[1], table + indices[2], table + indices[3]);
}

}  // namespace lanes_128

struct Lanes_128 {
    using Lanes = __m128i;
    using Shift_count = __m128i;
    static constexpr int32_t width = 4;

    static Lanes load_plane(const uint16_t* samples)
    {
        return _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples)));
    }

    // Four interleaved pixels of three words: `first` holds words 0..7, `second` words 4..11.
    static void load_pixels(const uint16_t* pixels, Lanes& c0, Lanes& c1, Lanes& c2)
    {
        using namespace lane_shuffles;
        const Lanes first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
        const Lanes second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + 4));
        c0 = _mm_or_si128(_mm_shuffle_epi8(first, lanes_128::pattern(channel_of_first_pixels[0])),
                          _mm_shuffle_epi8(second, lanes_128::pattern(channel_of_last_pixels[0])));
        c1 = _mm_or_si128(_mm_shuffle_epi8(first, lanes_128::pattern(channel_of_first_pixels[1])),
                          _mm_shuffle_epi8(second, lanes_128::pattern(channel_of_last_pixels[1])));
        c2 = _mm_or_si128(_mm_shuffle_epi8(first, lanes_128::pattern(channel_of_first_pixels[2])),
                          _mm_shuffle_epi8(second, lanes_128::pattern(channel_of_last_pixels[2])));
    }

    // Samples first[0], first[stride], first[2 * stride], first[3 * stride], each inserted
    // straight from memory: no sample is read that the scalar engine would not read.
    [[gnu::always_inline]] static Lanes four_samples(const uint16_t* first, std::size_t stride)
    {
        Lanes v = _mm_cvtsi32_si128(first[0]);
        v = _mm_insert_epi16(v, first[stride], 2);
        v = _mm_insert_epi16(v, first[2 * stride], 4);
        return _mm_insert_epi16(v, first[3 * stride], 6);
    }

    // The same samples through an input table: the low 16 bits of each one's entry, the only
    // bits of it the matrix uses.
    [[gnu::always_inline]] static Lanes four_through_table(const uint16_t* first, std::size_t stride,
                                                           const LUT_entry* table)
    {
        const __m128i entries = lanes_128::joined(table + first[0], table + first[stride], table + first[2 * stride],
                                                  table + first[3 * stride]);
        return low_16_bits(entries);
    }

    [[gnu::always_inline]] static Lanes look_up(const int32_t* indices, const LUT_entry* table)
    {
        return lanes_128::four_entries(indices, table);
    }

    // Four interleaved pixels (`ORDER` 0: blue, green, red; 1: red, green, blue) as the word
    // pairs of the fixed-point sums: (red, green) and (blue, 0) in each 32-bit lane.
    template <int ORDER>
    static void load_pixel_pairs(const uint16_t* pixels, Lanes& red_green, Lanes& blue)
    {
        using namespace lane_shuffles;
        const Lanes first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
        const Lanes second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + 4));
        red_green = _mm_or_si128(_mm_shuffle_epi8(first, lanes_128::pattern(red_green_pairs[ORDER].first_pixels)),
                                 _mm_shuffle_epi8(second, lanes_128::pattern(red_green_pairs[ORDER].last_pixels)));
        blue = _mm_or_si128(_mm_shuffle_epi8(first, lanes_128::pattern(blue_words[ORDER].first_pixels)),
                            _mm_shuffle_epi8(second, lanes_128::pattern(blue_words[ORDER].last_pixels)));
    }

    // The low 16 bits of `low` and of `high` as the low and high halves of each lane.
    static Lanes word_pairs(Lanes low, Lanes high) { return _mm_blend_epi16(low, _mm_slli_epi32(high, 16), 0xAA); }
    static Lanes multiply_add_pairs(Lanes a, Lanes b) { return _mm_madd_epi16(a, b); }
    static Lanes add(Lanes a, Lanes b) { return _mm_add_epi32(a, b); }
    static Lanes bitwise_xor(Lanes a, Lanes b) { return _mm_xor_si128(a, b); }
    template <int BITS>
    static Lanes shift_right_arithmetic_by(Lanes v) { return _mm_srai_epi32(v, BITS); }

    static Lanes low_16_bits(Lanes v) { return _mm_blend_epi16(v, _mm_setzero_si128(), 0xAA); }
    static Lanes zero() { return _mm_setzero_si128(); }
    static Lanes broadcast_lanes(int32_t value) { return _mm_set1_epi32(value); }
    static Shift_count shift_count(int bits) { return _mm_cvtsi32_si128(bits); }

    static Lanes load_lanes(const int32_t* values) { return _mm_load_si128(reinterpret_cast<const __m128i*>(values)); }
    static void store_lanes(int32_t* values, Lanes v) { _mm_store_si128(reinterpret_cast<__m128i*>(values), v); }
    static Lanes min(Lanes a, Lanes b) { return _mm_min_epi32(a, b); }
    static Lanes max(Lanes a, Lanes b) { return _mm_max_epi32(a, b); }
    static Lanes shift_left(Lanes v, Shift_count bits) { return _mm_sll_epi32(v, bits); }
    static Lanes shift_right_arithmetic(Lanes v, Shift_count bits) { return _mm_sra_epi32(v, bits); }

    static void store_plane(uint16_t* samples, Lanes v)
    {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), _mm_shuffle_epi8(v, lanes_128::pattern(lane_shuffles::low_words)));
    }

    static void store_plane(uint8_t* samples, Lanes v)
    {
        lanes_128::store_4_bytes(samples, _mm_shuffle_epi8(v, lanes_128::pattern(lane_shuffles::low_bytes)));
    }

    // Channels c0, c1, c2 in memory order, then a zero fourth sample when FOURTH_CHANNEL. With
    // PAST_END, three channels are stored as whole 16-byte pieces, the last of which writes 4
    // bytes past the pixels; without, exactly the pixels' bytes.
    template <bool FOURTH_CHANNEL, bool PAST_END>
    static void store_pixels(uint16_t* pixels, Lanes c0, Lanes c1, Lanes c2)
    {
        const __m128i first_two = _mm_blend_epi16(c0, _mm_slli_epi32(c1, 16), 0xAA);
        const __m128i third = low_16_bits(c2);
        const __m128i pixels_0_1 = _mm_unpacklo_epi32(first_two, third);
        const __m128i pixels_2_3 = _mm_unpackhi_epi32(first_two, third);
        if constexpr (FOURTH_CHANNEL) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), pixels_0_1);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 8), pixels_2_3);
        } else {
            const __m128i drop = lanes_128::pattern(lane_shuffles::drop_fourth_words);
            const __m128i first_twelve = _mm_shuffle_epi8(pixels_0_1, drop);
            const __m128i last_twelve = _mm_shuffle_epi8(pixels_2_3, drop);
            if constexpr (PAST_END) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), first_twelve);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 6), last_twelve);
                return;
            }
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels),
                             _mm_or_si128(first_twelve, _mm_slli_si128(last_twelve, 12)));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(pixels + 8), _mm_srli_si128(last_twelve, 4));
        }
    }

    template <bool FOURTH_CHANNEL, bool PAST_END>
    static void store_pixels(uint8_t* pixels, Lanes c0, Lanes c1, Lanes c2)
    {
        using namespace lane_shuffles;
        const Pattern* placement = FOURTH_CHANNEL ? byte_of_four_channel_pixel : byte_of_three_channel_pixel;
        const __m128i bytes = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(c0, lanes_128::pattern(placement[0])),
                                                        _mm_shuffle_epi8(c1, lanes_128::pattern(placement[1]))),
                                           _mm_shuffle_epi8(c2, lanes_128::pattern(placement[2])));
        if constexpr (FOURTH_CHANNEL || PAST_END) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), bytes);
        } else {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(pixels), bytes);
            lanes_128::store_4_bytes(pixels + 8, _mm_srli_si128(bytes, 8));
        }
    }
};
