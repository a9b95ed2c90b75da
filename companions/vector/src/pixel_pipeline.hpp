// The pixel algorithm of both vector libraries, written once over an instruction-set layer
// `Isa` (pixel_pipeline_sse41.cpp, pixel_pipeline_avx2.cpp) that supplies vectors of
// Isa::width 32-bit lanes (one pixel's channel per lane), vectors of Isa::width / 2 doubles,
// and the loads, stores and shuffles of each buffer layout.
//
// A call claims the largest multiple of Isa::width pixels and leaves the rest to the scalar
// engine. It runs in blocks: the sums stage reads a block of pixels, applies the input tables
// and the matrix, and stores the truncated sums of each channel into a small array; the finish
// stage clamps, applies the output tables, shifts, narrows and stores them. Each stage is a
// separate instance per combination of the options it involves (48 sums stages, 96 finish
// stages per sample width), chosen once per call, so no stage loop tests an option while the
// library stays small.
//
// Exactness: see exactness_tier.hpp. The products are exact in double, the sums are exact (or
// exactly compensated) and the truncation of cvttpd2dq gives 0x80000000 for NaN and for values
// outside the int32 range, like the x87 conversion of the scalar engine. Everything after the
// conversion is integer arithmetic, identical by construction.
#pragma once

#include "exactness_tier.hpp"
#include "rounding_scope.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace pixel_pipeline {

constexpr int32_t block_pixels = 256;

// The truncated sums of one block, channel by channel.
struct Block {
    alignas(64) int32_t blue[block_pixels];
    alignas(64) int32_t green[block_pixels];
    alignas(64) int32_t red[block_pixels];
};

// What the sums stage reads; the same for both output sample widths.
struct Sums_inputs {
    const uint16_t* input;
    std::size_t plane;  // planar stride: the whole call's pixel count
    const LUT_entry* blue_input_LUT;
    const LUT_entry* green_input_LUT;
    const LUT_entry* red_input_LUT;
};

// The matrix as vectors of doubles, row-major (rows yield red, green, blue), and the rounding
// half. Products of these with 16-bit samples are exact.
template <typename Isa>
struct Matrix_constants {
    typename Isa::Doubles coefficient[9];
    typename Isa::Doubles half;
};

template <typename Isa>
struct Channel_constants {
    typename Isa::Lanes min;
    typename Isa::Lanes max;
    typename Isa::Shift_count left;   // 0 unless the channel shifts left
    typename Isa::Shift_count right;  // 0 unless the channel shifts right
    const LUT_entry* output_LUT;
};

template <typename Isa, typename T>
struct Finish_constants {
    T* output;
    std::size_t plane;
    Channel_constants<Isa> blue;
    Channel_constants<Isa> green;
    Channel_constants<Isa> red;
};

// --- sums stage ------------------------------------------------------------------------------

template <typename Isa, int INPUT_FORMAT>
inline void load_input(const Sums_inputs& in, std::size_t i, typename Isa::Lanes& blue,
                       typename Isa::Lanes& green, typename Isa::Lanes& red)
{
    if constexpr (INPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL) {
        Isa::load_pixels(in.input + 3 * i, blue, green, red);
    } else if constexpr (INPUT_FORMAT == NQ_COLOR_FORMAT_RGB_PIXEL) {
        Isa::load_pixels(in.input + 3 * i, red, green, blue);
    } else {
        blue = Isa::load_plane(in.input + i);
        green = Isa::load_plane(in.input + in.plane + i);
        red = Isa::load_plane(in.input + 2 * in.plane + i);
    }
}

// Replaces each value of a block by its table entry (only the low 16 bits for an input table),
// one scalar load per value: on the processors this library is written for, scalar loads beat a
// vector gather, and the pass keeps the vector loops free of table accesses. The count is a
// multiple of four.
template <bool LOW_16_BITS>
inline void look_up_in_place(int32_t* values, int32_t count, const LUT_entry* table)
{
    for (int32_t k = 0; k < count; k += 4) {
        const int32_t e0 = table[values[k]], e1 = table[values[k + 1]];
        const int32_t e2 = table[values[k + 2]], e3 = table[values[k + 3]];
        values[k] = LOW_16_BITS ? (e0 & 0xFFFF) : e0;
        values[k + 1] = LOW_16_BITS ? (e1 & 0xFFFF) : e1;
        values[k + 2] = LOW_16_BITS ? (e2 & 0xFFFF) : e2;
        values[k + 3] = LOW_16_BITS ? (e3 & 0xFFFF) : e3;
    }
}

template <bool APPLIED, bool LOW_16_BITS>
inline void look_up_block(int32_t* values, int32_t count, const LUT_entry* table)
{
    if constexpr (APPLIED) {
        look_up_in_place<LOW_16_BITS>(values, count, table);
    } else {
        static_cast<void>(values);
        static_cast<void>(count);
        static_cast<void>(table);
    }
}

template <typename Doubles>
struct Two_sum {
    Doubles value;
    Doubles error;  // value + error is the exact sum
};

// Knuth's TwoSum: exact for any two doubles whose sum does not overflow.
template <typename Isa>
inline Two_sum<typename Isa::Doubles> two_sum(typename Isa::Doubles a, typename Isa::Doubles b)
{
    const auto sum = Isa::add(a, b);
    const auto b_part = Isa::subtract(sum, a);
    const auto a_part = Isa::subtract(sum, b_part);
    const auto error = Isa::add(Isa::subtract(a, a_part), Isa::subtract(b, b_part));
    return {sum, error};
}

// red * row[0] + green * row[1] + blue * row[2] + 0.5, rounded once to double.
template <typename Isa, Exactness_tier TIER>
inline typename Isa::Doubles rounded_sum(const Matrix_constants<Isa>& matrix, int row,
                                         typename Isa::Doubles red, typename Isa::Doubles green,
                                         typename Isa::Doubles blue)
{
    const auto* coefficient = matrix.coefficient + 3 * row;
    if constexpr (TIER == Exactness_tier::plain) {
        // Every intermediate value is exact, so the order and the fusing do not matter.
        return Isa::multiply_add(coefficient[0], red,
                                 Isa::multiply_add(coefficient[1], green,
                                                   Isa::multiply_add(coefficient[2], blue, matrix.half)));
    } else {
        const auto first = two_sum<Isa>(Isa::multiply(coefficient[0], red), Isa::multiply(coefficient[1], green));
        const auto second = two_sum<Isa>(first.value, Isa::multiply(coefficient[2], blue));
        const auto third = two_sum<Isa>(second.value, matrix.half);
        return Isa::add(third.value, Isa::add(Isa::add(first.error, second.error), third.error));
    }
}

template <typename Isa, Exactness_tier TIER>
inline void matrix_product(const Matrix_constants<Isa>& matrix, typename Isa::Lanes red_in,
                           typename Isa::Lanes green_in, typename Isa::Lanes blue_in,
                           typename Isa::Lanes& red, typename Isa::Lanes& green,
                           typename Isa::Lanes& blue)
{
    const auto r_low = Isa::low_half_to_doubles(red_in);
    const auto g_low = Isa::low_half_to_doubles(green_in);
    const auto b_low = Isa::low_half_to_doubles(blue_in);
    const auto red_low = rounded_sum<Isa, TIER>(matrix, 0, r_low, g_low, b_low);
    const auto green_low = rounded_sum<Isa, TIER>(matrix, 1, r_low, g_low, b_low);
    const auto blue_low = rounded_sum<Isa, TIER>(matrix, 2, r_low, g_low, b_low);
    const auto r_high = Isa::high_half_to_doubles(red_in);
    const auto g_high = Isa::high_half_to_doubles(green_in);
    const auto b_high = Isa::high_half_to_doubles(blue_in);
    red = Isa::truncate(red_low, rounded_sum<Isa, TIER>(matrix, 0, r_high, g_high, b_high));
    green = Isa::truncate(green_low, rounded_sum<Isa, TIER>(matrix, 1, r_high, g_high, b_high));
    blue = Isa::truncate(blue_low, rounded_sum<Isa, TIER>(matrix, 2, r_high, g_high, b_high));
}

template <typename Isa, int INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT,
          Exactness_tier TIER>
__attribute__((noinline)) void compute_block_sums(const Sums_inputs& in, const Matrix_constants<Isa>& matrix,
                                                  int32_t begin, int32_t count, Block& block)
{
    const Sums_inputs inputs = in;  // a local copy, which the block's stores cannot alias
    constexpr bool any_input_LUT = BLUE_INPUT_LUT || GREEN_INPUT_LUT || RED_INPUT_LUT;
    if constexpr (any_input_LUT) {
        // Samples into the block, through the tables in place, then the matrix from the block.
        for (int32_t k = 0; k < count; k += Isa::width) {
            typename Isa::Lanes b, g, r;
            load_input<Isa, INPUT_FORMAT>(inputs, static_cast<std::size_t>(begin + k), b, g, r);
            Isa::store_lanes(block.blue + k, b);
            Isa::store_lanes(block.green + k, g);
            Isa::store_lanes(block.red + k, r);
        }
        look_up_block<BLUE_INPUT_LUT, true>(block.blue, count, inputs.blue_input_LUT);
        look_up_block<GREEN_INPUT_LUT, true>(block.green, count, inputs.green_input_LUT);
        look_up_block<RED_INPUT_LUT, true>(block.red, count, inputs.red_input_LUT);
    }
    for (int32_t k = 0; k < count; k += Isa::width) {
        typename Isa::Lanes b, g, r;
        if constexpr (any_input_LUT) {
            b = Isa::load_lanes(block.blue + k);
            g = Isa::load_lanes(block.green + k);
            r = Isa::load_lanes(block.red + k);
        } else {
            load_input<Isa, INPUT_FORMAT>(inputs, static_cast<std::size_t>(begin + k), b, g, r);
        }
        typename Isa::Lanes red, green, blue;
        matrix_product<Isa, TIER>(matrix, r, g, b, red, green, blue);
        Isa::store_lanes(block.red + k, red);
        Isa::store_lanes(block.green + k, green);
        Isa::store_lanes(block.blue + k, blue);
    }
}

// --- finish stage ----------------------------------------------------------------------------

// Clamp: max first, then min, both signed.
template <typename Isa>
inline typename Isa::Lanes clamped(typename Isa::Lanes value, const Channel_constants<Isa>& channel)
{
    return Isa::max(Isa::min(value, channel.max), channel.min);
}

// Shift: left logical, right arithmetic, by counts already reduced modulo 32.
template <typename Isa, bool SHIFTED>
inline typename Isa::Lanes shifted(typename Isa::Lanes value, const Channel_constants<Isa>& channel)
{
    if constexpr (SHIFTED) {
        return Isa::shift_right_arithmetic(Isa::shift_left(value, channel.left), channel.right);
    } else {
        static_cast<void>(channel);
        return value;
    }
}

template <typename Isa, int OUTPUT_FORMAT, bool FOURTH_CHANNEL, typename T>
inline void store_output(T* output, std::size_t plane, std::size_t i, typename Isa::Lanes blue,
                         typename Isa::Lanes green, typename Isa::Lanes red)
{
    constexpr std::size_t channels = FOURTH_CHANNEL ? 4 : 3;
    if constexpr (OUTPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL) {
        Isa::template store_pixels<FOURTH_CHANNEL>(output + channels * i, blue, green, red);
    } else if constexpr (OUTPUT_FORMAT == NQ_COLOR_FORMAT_RGB_PIXEL) {
        Isa::template store_pixels<FOURTH_CHANNEL>(output + channels * i, red, green, blue);
    } else {
        Isa::store_plane(output + i, blue);
        Isa::store_plane(output + plane + i, green);
        Isa::store_plane(output + 2 * plane + i, red);
        if constexpr (FOURTH_CHANNEL) Isa::store_plane(output + 3 * plane + i, Isa::zero());
    }
}

template <typename Isa, bool BLUE_OUTPUT_LUT, bool GREEN_OUTPUT_LUT, bool RED_OUTPUT_LUT, bool SHIFTED,
          bool FOURTH_CHANNEL, int OUTPUT_FORMAT, typename T>
__attribute__((noinline)) void finish_block(const Finish_constants<Isa, T>& out, int32_t begin, int32_t count,
                                            Block& block)
{
    T* const output = out.output;  // locals, which the output stores cannot alias
    const std::size_t plane = out.plane;
    constexpr bool any_output_LUT = BLUE_OUTPUT_LUT || GREEN_OUTPUT_LUT || RED_OUTPUT_LUT;
    if constexpr (any_output_LUT) {
        // Clamped values into the block, through the tables in place, then shift and store.
        for (int32_t k = 0; k < count; k += Isa::width) {
            Isa::store_lanes(block.blue + k, clamped(Isa::load_lanes(block.blue + k), out.blue));
            Isa::store_lanes(block.green + k, clamped(Isa::load_lanes(block.green + k), out.green));
            Isa::store_lanes(block.red + k, clamped(Isa::load_lanes(block.red + k), out.red));
        }
        look_up_block<BLUE_OUTPUT_LUT, false>(block.blue, count, out.blue.output_LUT);
        look_up_block<GREEN_OUTPUT_LUT, false>(block.green, count, out.green.output_LUT);
        look_up_block<RED_OUTPUT_LUT, false>(block.red, count, out.red.output_LUT);
    }
    for (int32_t k = 0; k < count; k += Isa::width) {
        typename Isa::Lanes blue = Isa::load_lanes(block.blue + k);
        typename Isa::Lanes green = Isa::load_lanes(block.green + k);
        typename Isa::Lanes red = Isa::load_lanes(block.red + k);
        if constexpr (!any_output_LUT) {
            blue = clamped(blue, out.blue);
            green = clamped(green, out.green);
            red = clamped(red, out.red);
        }
        store_output<Isa, OUTPUT_FORMAT, FOURTH_CHANNEL>(output, plane, static_cast<std::size_t>(begin + k),
                                                         shifted<Isa, SHIFTED>(blue, out.blue),
                                                         shifted<Isa, SHIFTED>(green, out.green),
                                                         shifted<Isa, SHIFTED>(red, out.red));
    }
}

// --- choice of the stages, once per call ------------------------------------------------------

// The dispatch reads formats 1 and 2 as interleaved and every other value as planar, like the
// scalar engine.
inline int format_index(NQ_COLOR_FORMAT format)
{
    return format == NQ_COLOR_FORMAT_BGR_PIXEL ? 1 : format == NQ_COLOR_FORMAT_RGB_PIXEL ? 2 : 0;
}

template <typename Isa>
using Sums_stage = void (*)(const Sums_inputs&, const Matrix_constants<Isa>&, int32_t, int32_t, Block&);

// Index: input format * 16 + red, green, blue input table bits * 2 + tier.
template <typename Isa, int INDEX>
constexpr Sums_stage<Isa> sums_stage()
{
    constexpr Exactness_tier tier = INDEX % 2 == 0 ? Exactness_tier::plain : Exactness_tier::compensated;
    return &compute_block_sums<Isa, INDEX / 16, (INDEX / 2) % 2 != 0, (INDEX / 4) % 2 != 0,
                               (INDEX / 8) % 2 != 0, tier>;
}

template <typename Isa, int... INDEX>
constexpr std::array<Sums_stage<Isa>, sizeof...(INDEX)> sums_stages(std::integer_sequence<int, INDEX...>)
{
    return {sums_stage<Isa, INDEX>()...};
}

template <typename Isa, typename T>
Sums_stage<Isa> choose_sums_stage(const Transform_arguments<T>& a, Exactness_tier tier)
{
    static constexpr auto stages = sums_stages<Isa>(std::make_integer_sequence<int, 48>());
    const int index = format_index(a.input_buffer_format) * 16 + (a.red_input_LUT_enabled ? 8 : 0) +
                      (a.green_input_LUT_enabled ? 4 : 0) + (a.blue_input_LUT_enabled ? 2 : 0) +
                      (tier == Exactness_tier::compensated ? 1 : 0);
    return stages[static_cast<std::size_t>(index)];
}

template <typename Isa, typename T>
using Finish_stage = void (*)(const Finish_constants<Isa, T>&, int32_t, int32_t, Block&);

// Index: output format * 32 + fourth channel * 16 + shifted * 8 + red, green, blue output
// table bits.
template <typename Isa, typename T, int INDEX>
constexpr Finish_stage<Isa, T> finish_stage()
{
    return &finish_block<Isa, INDEX % 2 != 0, (INDEX / 2) % 2 != 0, (INDEX / 4) % 2 != 0, (INDEX / 8) % 2 != 0,
                         (INDEX / 16) % 2 != 0, INDEX / 32, T>;
}

template <typename Isa, typename T, int... INDEX>
constexpr std::array<Finish_stage<Isa, T>, sizeof...(INDEX)> finish_stages(std::integer_sequence<int, INDEX...>)
{
    return {finish_stage<Isa, T, INDEX>()...};
}

template <typename Isa, typename T>
Finish_stage<Isa, T> choose_finish_stage(const Transform_arguments<T>& a)
{
    static constexpr auto stages = finish_stages<Isa, T>(std::make_integer_sequence<int, 96>());
    const bool shifted = a.blue_shift_distance != 0 || a.green_shift_distance != 0 || a.red_shift_distance != 0;
    const int index = format_index(a.output_buffer_format) * 32 + (a.fourth_channel_enabled ? 16 : 0) +
                      (shifted ? 8 : 0) + (a.red_output_LUT_enabled ? 4 : 0) +
                      (a.green_output_LUT_enabled ? 2 : 0) + (a.blue_output_LUT_enabled ? 1 : 0);
    return stages[static_cast<std::size_t>(index)];
}

// --- per-call constants ----------------------------------------------------------------------

template <typename Isa>
Matrix_constants<Isa> matrix_constants(const float* matrix)
{
    Matrix_constants<Isa> constants;
    for (int k = 0; k < 9; ++k) constants.coefficient[k] = Isa::broadcast(static_cast<double>(matrix[k]));
    constants.half = Isa::broadcast(0.5);
    return constants;
}

// The scalar engine shifts by the distance modulo 32: left for a positive distance, right for a
// negative one by its negation.
template <typename Isa>
Channel_constants<Isa> channel_constants(uint16_t min, uint16_t max, int32_t shift_distance,
                                         const LUT_entry* output_LUT)
{
    const uint32_t distance = static_cast<uint32_t>(shift_distance);
    Channel_constants<Isa> channel;
    channel.min = Isa::broadcast(static_cast<int32_t>(min));
    channel.max = Isa::broadcast(static_cast<int32_t>(max));
    channel.left = Isa::shift_count(shift_distance > 0 ? static_cast<int>(distance & 31u) : 0);
    channel.right = Isa::shift_count(shift_distance < 0 ? static_cast<int>((0u - distance) & 31u) : 0);
    channel.output_LUT = output_LUT;
    return channel;
}

// --- the transform entry --------------------------------------------------------------------

// Processes pixels 0 .. claimed - 1 exactly as the scalar engine would and returns claimed:
// the largest multiple of Isa::width not above the pixel count, or 0 when the matrix leaves the
// call to the scalar engine or the count is below one vector (or negative).
template <typename Isa, typename T>
int transform(const Transform_arguments<T>& a)
{
    if (a.pixel_count < Isa::width) return 0;
    const Exactness_tier tier = exactness_tier(a.matrix);
    if (tier == Exactness_tier::scalar_only) return 0;
    const int32_t claimed = a.pixel_count - a.pixel_count % Isa::width;

    const Rounding_scope rounding;
    const std::size_t plane = static_cast<std::size_t>(a.pixel_count);
    const Sums_inputs inputs{a.input_buffer, plane, a.blue_input_LUT, a.green_input_LUT, a.red_input_LUT};
    const Matrix_constants<Isa> matrix = matrix_constants<Isa>(a.matrix);
    const Finish_constants<Isa, T> outputs{
        a.output_buffer, plane,
        channel_constants<Isa>(a.blue_clamp_min, a.blue_clamp_max, a.blue_shift_distance, a.blue_output_LUT),
        channel_constants<Isa>(a.green_clamp_min, a.green_clamp_max, a.green_shift_distance, a.green_output_LUT),
        channel_constants<Isa>(a.red_clamp_min, a.red_clamp_max, a.red_shift_distance, a.red_output_LUT)};
    const Sums_stage<Isa> sums = choose_sums_stage<Isa>(a, tier);
    const Finish_stage<Isa, T> finish = choose_finish_stage<Isa>(a);

    Block block;
    for (int32_t begin = 0; begin < claimed; begin += block_pixels) {
        const int32_t count = claimed - begin < block_pixels ? claimed - begin : block_pixels;
        sums(inputs, matrix, begin, count, block);
        finish(outputs, begin, count, block);
    }
    return claimed;
}

}  // namespace pixel_pipeline
