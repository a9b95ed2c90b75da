// Byte shuffles (pshufb patterns) that both instruction sets apply to 128-bit lanes of four
// pixels: the SSE4.1 library to its whole vector, the AVX2 library to each of its two lanes.
// Each pattern is stored twice, once per lane of a 256-bit vector; a negative byte writes 0.
#pragma once

#include <cstdint>

namespace lane_shuffles {

struct Pattern {
    alignas(32) int8_t bytes[32];
};

// A pattern from its 16 bytes per lane, given as the source byte of each result byte.
struct Lane_bytes {
    int source[16];
};

constexpr Pattern repeated(const Lane_bytes& lane)
{
    Pattern pattern{};
    for (int copy = 0; copy < 2; ++copy) {
        for (int k = 0; k < 16; ++k) pattern.bytes[16 * copy + k] = static_cast<int8_t>(lane.source[k]);
    }
    return pattern;
}

// Moves 16-bit words of the source into the 16-bit halves of the lane: words[k] to half k; a
// negative word leaves its half zero.
constexpr Pattern words_to_halves(const int (&words)[8])
{
    Lane_bytes lane{};
    for (int k = 0; k < 8; ++k) {
        lane.source[2 * k] = words[k] < 0 ? -1 : 2 * words[k];
        lane.source[2 * k + 1] = words[k] < 0 ? -1 : 2 * words[k] + 1;
    }
    return repeated(lane);
}

// Moves 16-bit word words[k] of the source into the low half of 32-bit lane k (zero-extended);
// a negative word leaves lane k zero.
constexpr Pattern words_to_lanes(int w0, int w1, int w2, int w3)
{
    return words_to_halves({w0, -1, w1, -1, w2, -1, w3, -1});
}

// Moves the low byte of 32-bit lane k to byte stride * k + offset; the other bytes are 0.
constexpr Pattern low_bytes_to(int stride, int offset)
{
    Lane_bytes lane{};
    for (int k = 0; k < 16; ++k) lane.source[k] = -1;
    for (int k = 0; k < 4; ++k) lane.source[stride * k + offset] = 4 * k;
    return repeated(lane);
}

// Interleaved 16-bit input, three words per pixel. A lane loaded at a group's first pixel holds
// words 0..7 (pixels 0 and 1 whole); one loaded four words later holds words 4..11 (pixels 2
// and 3 whole). Channel c (in memory order) of pixels 0, 1 comes from the first, of pixels 2, 3
// from the second.
inline constexpr Pattern channel_of_first_pixels[3] = {words_to_lanes(0, 3, -1, -1), words_to_lanes(1, 4, -1, -1),
                                                       words_to_lanes(2, 5, -1, -1)};
inline constexpr Pattern channel_of_last_pixels[3] = {words_to_lanes(-1, -1, 2, 5), words_to_lanes(-1, -1, 3, 6),
                                                      words_to_lanes(-1, -1, 4, 7)};

// Interleaved 16-bit input as word pairs in 32-bit lanes, from the same two loads: for each of
// four pixels, its word `low` (0..2) in the lane's low half and its word `high` in the high
// half (0 when `high` is negative).
struct Pair_patterns {
    Pattern first_pixels;  // pixels 0, 1 from words 0..7
    Pattern last_pixels;   // pixels 2, 3 from words 4..11
};

constexpr int word_at(int word, int offset)
{
    return word < 0 ? -1 : word + offset;
}

constexpr Pair_patterns word_pairs(int low, int high)
{
    return {words_to_halves({low, high, word_at(low, 3), word_at(high, 3), -1, -1, -1, -1}),
            words_to_halves({-1, -1, -1, -1, word_at(low, 2), word_at(high, 2), word_at(low, 5), word_at(high, 5)})};
}

// Index 0: blue, green, red in memory order; 1: red, green, blue.
inline constexpr Pair_patterns red_green_pairs[2] = {word_pairs(2, 1), word_pairs(0, 1)};
inline constexpr Pair_patterns blue_words[2] = {word_pairs(0, -1), word_pairs(2, -1)};

// The low 16 bits of each 32-bit lane, packed into the lane's low 8 bytes.
inline constexpr Pattern low_words =
    repeated({{0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1}});

// The low byte of each 32-bit lane, packed into the lane's low 4 bytes.
inline constexpr Pattern low_bytes = low_bytes_to(1, 0);

// Interleaved 8-bit output: channel c of pixel k at byte 4k + c (four channels) or 3k + c
// (three channels, the last four bytes 0).
inline constexpr Pattern byte_of_four_channel_pixel[3] = {low_bytes_to(4, 0), low_bytes_to(4, 1),
                                                          low_bytes_to(4, 2)};
inline constexpr Pattern byte_of_three_channel_pixel[3] = {low_bytes_to(3, 0), low_bytes_to(3, 1),
                                                           low_bytes_to(3, 2)};

// Two 16-bit pixels of four channels (16 bytes) to three channels each (the low 12 bytes).
inline constexpr Pattern drop_fourth_words =
    repeated({{0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1}});

}  // namespace lane_shuffles
