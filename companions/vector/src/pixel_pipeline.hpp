// The pixel algorithm of both vector libraries, written once over an instruction-set layer
// `Isa` (pixel_pipeline_sse41.cpp, pixel_pipeline_avx2.cpp). Isa::Sums supplies a group of
// Isa::Sums::width pixels' values of one channel as 32-bit lanes and as doubles, the arithmetic
// on the doubles and the input loads of each layout; Isa::Finish supplies groups of
// Isa::Finish::width 32-bit lanes with the clamp, shifts and output stores of each layout, and
// the 16-bit multiply-adds of the fixed-point sums, which work at that width too.
//
// A call claims the largest multiple of Isa::width pixels (a multiple of both group widths) and
// leaves the rest to the scalar engine. It runs in blocks: the sums stage reads a block of
// pixels, applies the input tables and the matrix, and stores the truncated sums of each channel
// into a small array; the finish stage clamps, applies the output tables, shifts, narrows and
// stores them. Each stage is a separate instance per combination of the options it involves (72
// sums stages, 192 finish stages per sample width), chosen once per call, so no stage loop tests
// an option while the library stays small. The block also lets each stage use the vector width
// that suits it.
//
// Exactness: see exactness_tier.hpp. In the fixed-point tier the sums are integer arithmetic
// (fixed_point_matrix.hpp). Otherwise the products are exact in double, the sums are exact (or
// exactly compensated) and the truncation of cvttpd2dq gives 0x80000000 for NaN and for values
// outside the int32 range, like the x87 conversion of the scalar engine. Everything after the
// sums is integer arithmetic, identical by construction.
#pragma once

#include "exactness_tier.hpp"
#include "fixed_point_matrix.hpp"
#include "rounding_scope.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
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
template <typename Sums>
struct Matrix_constants {
    typename Sums::Doubles coefficient[9];
    typename Sums::Doubles half;
};

// The fixed-point form of the matrix (fixed_point_matrix.hpp) as vectors of word pairs.
template <typename Ints>
struct Fixed_point_row_constants {
    typename Ints::Lanes low_red_green;      // (low red piece, low green piece)
    typename Ints::Lanes low_blue_constant;  // (low blue piece, low constant piece)
    typename Ints::Lanes high_red_green;
    typename Ints::Lanes high_blue_constant;
    typename Ints::Shift_count shift;
};

// What the sums stages of one instruction set read of the matrix: the doubles in the plain and
// compensated tiers, the fixed-point form in the fixed_point tier.
template <typename Isa>
struct Sums_constants {
    Matrix_constants<typename Isa::Sums> doubles;
    Fixed_point_row_constants<typename Isa::Finish> fixed_point[3];  // rows yielding red, green, blue
};

template <typename Finish>
struct Channel_constants {
    typename Finish::Lanes min;
    typename Finish::Lanes max;
    typename Finish::Shift_count left;   // 0 unless the channel shifts left
    typename Finish::Shift_count right;  // 0 unless the channel shifts right
    const LUT_entry* output_LUT;
};

template <typename Finish, typename T>
struct Finish_constants {
    T* output;
    std::size_t plane;
    Channel_constants<Finish> blue;
    Channel_constants<Finish> green;
    Channel_constants<Finish> red;
};

// --- table look-ups ---------------------------------------------------------------------------
//
// Each look-up loads the table's entry on its own into a vector register, and the entries of four
// pixels are joined there (lanes_128.hpp): on the processors these libraries are written for, a
// scalar index load and a vector load beat a vector gather, and unlike a pass that writes the
// entries back into the block they cost no store and no reload.

// The samples of one channel of Sums::width pixels from pixel i on, through its input table
// when APPLIED. CHANNEL is 0 for blue, 1 for green, 2 for red.
template <typename Sums, int INPUT_FORMAT, int CHANNEL, bool APPLIED>
[[gnu::always_inline]] inline typename Sums::Lanes channel_lanes(const Sums_inputs& in, std::size_t i,
                                                                 const LUT_entry* table)
{
    constexpr bool interleaved = INPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL || INPUT_FORMAT == NQ_COLOR_FORMAT_RGB_PIXEL;
    if constexpr (interleaved) {
        constexpr int position = INPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL ? CHANNEL : 2 - CHANNEL;
        const uint16_t* first = in.input + 3 * i + position;
        if constexpr (APPLIED) return Sums::four_through_table(first, 3, table);
        static_cast<void>(table);
        return Sums::four_samples(first, 3);
    } else {
        const uint16_t* first = in.input + CHANNEL * in.plane + i;
        if constexpr (APPLIED) return Sums::four_through_table(first, 1, table);
        static_cast<void>(table);
        return Sums::load_plane(first);
    }
}

// --- sums stage ------------------------------------------------------------------------------

// All three channels of Sums::width pixels straight as doubles, when no input table applies.
template <typename Sums, int INPUT_FORMAT>
inline void load_input_doubles(const Sums_inputs& in, std::size_t i, typename Sums::Doubles& blue,
                               typename Sums::Doubles& green, typename Sums::Doubles& red)
{
    if constexpr (INPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL) {
        Sums::load_pixels_as_doubles(in.input + 3 * i, blue, green, red);
    } else if constexpr (INPUT_FORMAT == NQ_COLOR_FORMAT_RGB_PIXEL) {
        Sums::load_pixels_as_doubles(in.input + 3 * i, red, green, blue);
    } else {
        blue = Sums::load_plane_as_doubles(in.input + i);
        green = Sums::load_plane_as_doubles(in.input + in.plane + i);
        red = Sums::load_plane_as_doubles(in.input + 2 * in.plane + i);
    }
}

template <typename Doubles>
struct Two_sum {
    Doubles value;
    Doubles error;  // value + error is the exact sum
};

// Knuth's TwoSum: exact for any two doubles whose sum does not overflow.
template <typename Sums>
inline Two_sum<typename Sums::Doubles> two_sum(typename Sums::Doubles a, typename Sums::Doubles b)
{
    const auto sum = Sums::add(a, b);
    const auto b_part = Sums::subtract(sum, a);
    const auto a_part = Sums::subtract(sum, b_part);
    const auto error = Sums::add(Sums::subtract(a, a_part), Sums::subtract(b, b_part));
    return {sum, error};
}

// red * row[0] + green * row[1] + blue * row[2] + 0.5, rounded once to double.
template <typename Sums, Exactness_tier TIER>
inline typename Sums::Doubles rounded_sum(const Matrix_constants<Sums>& matrix, int row,
                                          typename Sums::Doubles red, typename Sums::Doubles green,
                                          typename Sums::Doubles blue)
{
    const auto* coefficient = matrix.coefficient + 3 * row;
    if constexpr (TIER == Exactness_tier::plain) {
        // Every intermediate value is exact, so the order and the fusing do not matter.
        return Sums::multiply_add(coefficient[0], red,
                                  Sums::multiply_add(coefficient[1], green,
                                                     Sums::multiply_add(coefficient[2], blue, matrix.half)));
    } else {
        const auto first = two_sum<Sums>(Sums::multiply(coefficient[0], red), Sums::multiply(coefficient[1], green));
        const auto second = two_sum<Sums>(first.value, Sums::multiply(coefficient[2], blue));
        const auto third = two_sum<Sums>(second.value, matrix.half);
        return Sums::add(third.value, Sums::add(Sums::add(first.error, second.error), third.error));
    }
}

template <typename Sums, Exactness_tier TIER>
inline void store_matrix_product(const Matrix_constants<Sums>& matrix, typename Sums::Doubles r,
                                 typename Sums::Doubles g, typename Sums::Doubles b, Block& block, int32_t k)
{
    Sums::store_lanes(block.red + k, Sums::truncate(rounded_sum<Sums, TIER>(matrix, 0, r, g, b)));
    Sums::store_lanes(block.green + k, Sums::truncate(rounded_sum<Sums, TIER>(matrix, 1, r, g, b)));
    Sums::store_lanes(block.blue + k, Sums::truncate(rounded_sum<Sums, TIER>(matrix, 2, r, g, b)));
}

template <typename Isa, int INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT,
          Exactness_tier TIER>
void compute_block_double_sums(const Sums_inputs& in, const Sums_constants<Isa>& constants, int32_t begin,
                               int32_t count, Block& block)
{
    using Sums = typename Isa::Sums;
    const Sums_inputs inputs = in;  // local copies, which the block's stores cannot alias
    const Matrix_constants<Sums> matrix = constants.doubles;
    if constexpr (BLUE_INPUT_LUT || GREEN_INPUT_LUT || RED_INPUT_LUT) {
        for (int32_t k = 0; k < count; k += Sums::width) {
            const std::size_t i = static_cast<std::size_t>(begin + k);
            const auto b = Sums::to_doubles(channel_lanes<Sums, INPUT_FORMAT, 0, BLUE_INPUT_LUT>(inputs, i, inputs.blue_input_LUT));
            const auto g = Sums::to_doubles(channel_lanes<Sums, INPUT_FORMAT, 1, GREEN_INPUT_LUT>(inputs, i, inputs.green_input_LUT));
            const auto r = Sums::to_doubles(channel_lanes<Sums, INPUT_FORMAT, 2, RED_INPUT_LUT>(inputs, i, inputs.red_input_LUT));
            store_matrix_product<Sums, TIER>(matrix, r, g, b, block, k);
        }
    } else {
        for (int32_t k = 0; k < count; k += Sums::width) {
            typename Sums::Doubles b, g, r;
            load_input_doubles<Sums, INPUT_FORMAT>(inputs, static_cast<std::size_t>(begin + k), b, g, r);
            store_matrix_product<Sums, TIER>(matrix, r, g, b, block, k);
        }
    }
}

// A 32-bit lane of two words.
inline int32_t word_pair(int16_t low, int16_t high)
{
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint16_t>(low)) |
                                static_cast<uint32_t>(static_cast<uint16_t>(high)) << 16);
}

// One channel of Ints::width pixels as 32-bit lanes, through its input table when APPLIED.
template <typename Isa, int INPUT_FORMAT, int CHANNEL, bool APPLIED>
[[gnu::always_inline]] inline typename Isa::Finish::Lanes wide_channel_lanes(const Sums_inputs& in, std::size_t i,
                                                                             const LUT_entry* table)
{
    using Ints = typename Isa::Finish;
    using Quarter = typename Isa::Sums;  // four pixels' lanes
    constexpr bool planar = INPUT_FORMAT != NQ_COLOR_FORMAT_BGR_PIXEL && INPUT_FORMAT != NQ_COLOR_FORMAT_RGB_PIXEL;
    if constexpr (planar && !APPLIED) {
        static_cast<void>(table);
        return Ints::load_plane(in.input + CHANNEL * in.plane + i);
    } else if constexpr (Ints::width == 4) {
        return channel_lanes<Quarter, INPUT_FORMAT, CHANNEL, APPLIED>(in, i, table);
    } else {
        return Ints::join(channel_lanes<Quarter, INPUT_FORMAT, CHANNEL, APPLIED>(in, i, table),
                          channel_lanes<Quarter, INPUT_FORMAT, CHANNEL, APPLIED>(in, i + 4, table));
    }
}

// The fixed-point sums' word pairs of Ints::width pixels: (red, green) and (blue, 2^14), each
// sample (or table entry) minus 32768 as a signed word.
template <typename Isa, int INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT>
[[gnu::always_inline]] inline void signed_word_pairs(const Sums_inputs& in, std::size_t i,
                                                     typename Isa::Finish::Lanes& red_green,
                                                     typename Isa::Finish::Lanes& blue_constant)
{
    using Ints = typename Isa::Finish;
    constexpr bool interleaved = INPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL || INPUT_FORMAT == NQ_COLOR_FORMAT_RGB_PIXEL;
    typename Ints::Lanes blue;
    if constexpr (interleaved && !BLUE_INPUT_LUT && !GREEN_INPUT_LUT && !RED_INPUT_LUT) {
        Ints::template load_pixel_pairs<INPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL ? 0 : 1>(in.input + 3 * i, red_green,
                                                                                          blue);
    } else {
        const auto red = wide_channel_lanes<Isa, INPUT_FORMAT, 2, RED_INPUT_LUT>(in, i, in.red_input_LUT);
        const auto green = wide_channel_lanes<Isa, INPUT_FORMAT, 1, GREEN_INPUT_LUT>(in, i, in.green_input_LUT);
        blue = wide_channel_lanes<Isa, INPUT_FORMAT, 0, BLUE_INPUT_LUT>(in, i, in.blue_input_LUT);
        red_green = Ints::word_pairs(red, green);
    }
    // Flipping bit 15 subtracts 32768 from a word read as signed; blue's partner word 0 becomes
    // the constant word.
    red_green = Ints::bitwise_xor(red_green, Ints::broadcast_lanes(static_cast<int32_t>(0x80008000u)));
    blue_constant = Ints::bitwise_xor(blue, Ints::broadcast_lanes(word_pair(int16_t{-32768}, constant_word)));
}

// floor(S) of one row for Ints::width pixels (see fixed_point_matrix.hpp).
template <typename Ints>
[[gnu::always_inline]] inline typename Ints::Lanes fixed_point_sum(const Fixed_point_row_constants<Ints>& row,
                                                                   typename Ints::Lanes red_green,
                                                                   typename Ints::Lanes blue_constant)
{
    const auto low = Ints::add(Ints::multiply_add_pairs(red_green, row.low_red_green),
                               Ints::multiply_add_pairs(blue_constant, row.low_blue_constant));
    const auto high = Ints::add(Ints::multiply_add_pairs(red_green, row.high_red_green),
                                Ints::multiply_add_pairs(blue_constant, row.high_blue_constant));
    return Ints::shift_right_arithmetic(Ints::add(high, Ints::template shift_right_arithmetic_by<14>(low)), row.shift);
}

template <typename Isa, int INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT>
void compute_block_fixed_point_sums(const Sums_inputs& in, const Sums_constants<Isa>& constants, int32_t begin,
                                    int32_t count, Block& block)
{
    using Ints = typename Isa::Finish;
    const Sums_inputs inputs = in;  // local copies, which the block's stores cannot alias
    const Fixed_point_row_constants<Ints> red_row = constants.fixed_point[0];
    const Fixed_point_row_constants<Ints> green_row = constants.fixed_point[1];
    const Fixed_point_row_constants<Ints> blue_row = constants.fixed_point[2];
    for (int32_t k = 0; k < count; k += Ints::width) {
        typename Ints::Lanes red_green, blue_constant;
        signed_word_pairs<Isa, INPUT_FORMAT, BLUE_INPUT_LUT, GREEN_INPUT_LUT, RED_INPUT_LUT>(
            inputs, static_cast<std::size_t>(begin + k), red_green, blue_constant);
        Ints::store_lanes(block.red + k, fixed_point_sum(red_row, red_green, blue_constant));
        Ints::store_lanes(block.green + k, fixed_point_sum(green_row, red_green, blue_constant));
        Ints::store_lanes(block.blue + k, fixed_point_sum(blue_row, red_green, blue_constant));
    }
}

template <typename Isa, int INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT,
          Exactness_tier TIER>
__attribute__((noinline)) void compute_block_sums(const Sums_inputs& in, const Sums_constants<Isa>& constants,
                                                  int32_t begin, int32_t count, Block& block)
{
    if constexpr (TIER == Exactness_tier::fixed_point) {
        compute_block_fixed_point_sums<Isa, INPUT_FORMAT, BLUE_INPUT_LUT, GREEN_INPUT_LUT, RED_INPUT_LUT>(
            in, constants, begin, count, block);
    } else {
        compute_block_double_sums<Isa, INPUT_FORMAT, BLUE_INPUT_LUT, GREEN_INPUT_LUT, RED_INPUT_LUT, TIER>(
            in, constants, begin, count, block);
    }
}

// --- finish stage ----------------------------------------------------------------------------

// Clamp: max first, then min, both signed.
template <typename Finish>
inline typename Finish::Lanes clamped(typename Finish::Lanes value, const Channel_constants<Finish>& channel)
{
    return Finish::max(Finish::min(value, channel.max), channel.min);
}

// Shift: left logical, right arithmetic, by counts already reduced modulo 32 (0 for a channel
// that does not shift that way). A call without any left (right) shift skips that step.
template <typename Finish, bool SHIFT_LEFT, bool SHIFT_RIGHT>
inline typename Finish::Lanes shifted(typename Finish::Lanes value, const Channel_constants<Finish>& channel)
{
    if constexpr (SHIFT_LEFT) value = Finish::shift_left(value, channel.left);
    if constexpr (SHIFT_RIGHT) value = Finish::shift_right_arithmetic(value, channel.right);
    static_cast<void>(channel);
    return value;
}

// One channel's values of Finish::width pixels from the block: the output table's entries at
// them when APPLIED (the block then holds clamped values, always within the table), otherwise
// the values themselves.
template <typename Finish, bool APPLIED>
[[gnu::always_inline]] inline typename Finish::Lanes output_lanes(const int32_t* values, const LUT_entry* table)
{
    if constexpr (APPLIED) return Finish::look_up(values, table);
    static_cast<void>(table);
    return Finish::load_lanes(values);
}

// PAST_END: the store of three interleaved channels may also write a few bytes after the pixels,
// which the next group's store then overwrites.
template <typename Finish, int OUTPUT_FORMAT, bool FOURTH_CHANNEL, bool PAST_END, typename T>
inline void store_output(T* output, std::size_t plane, std::size_t i, typename Finish::Lanes blue,
                         typename Finish::Lanes green, typename Finish::Lanes red)
{
    constexpr std::size_t channels = FOURTH_CHANNEL ? 4 : 3;
    if constexpr (OUTPUT_FORMAT == NQ_COLOR_FORMAT_BGR_PIXEL) {
        Finish::template store_pixels<FOURTH_CHANNEL, PAST_END>(output + channels * i, blue, green, red);
    } else if constexpr (OUTPUT_FORMAT == NQ_COLOR_FORMAT_RGB_PIXEL) {
        Finish::template store_pixels<FOURTH_CHANNEL, PAST_END>(output + channels * i, red, green, blue);
    } else {
        Finish::store_plane(output + i, blue);
        Finish::store_plane(output + plane + i, green);
        Finish::store_plane(output + 2 * plane + i, red);
        if constexpr (FOURTH_CHANNEL) Finish::store_plane(output + 3 * plane + i, Finish::zero());
    }
}

template <typename Finish, bool BLUE_OUTPUT_LUT, bool GREEN_OUTPUT_LUT, bool RED_OUTPUT_LUT, bool SHIFT_LEFT,
          bool SHIFT_RIGHT, bool FOURTH_CHANNEL, int OUTPUT_FORMAT, typename T>
__attribute__((noinline)) void finish_block(const Finish_constants<Finish, T>& constants, int32_t begin, int32_t count,
                                            Block& block)
{
    const Finish_constants<Finish, T> out = constants;  // a local copy, which the output stores cannot alias
    T* const output = out.output;
    const std::size_t plane = out.plane;
    constexpr bool any_output_LUT = BLUE_OUTPUT_LUT || GREEN_OUTPUT_LUT || RED_OUTPUT_LUT;
    if constexpr (any_output_LUT) {
        // The clamped values into the block: they are the tables' indices.
        for (int32_t k = 0; k < count; k += Finish::width) {
            Finish::store_lanes(block.blue + k, clamped(Finish::load_lanes(block.blue + k), out.blue));
            Finish::store_lanes(block.green + k, clamped(Finish::load_lanes(block.green + k), out.green));
            Finish::store_lanes(block.red + k, clamped(Finish::load_lanes(block.red + k), out.red));
        }
    }
    // Three interleaved channels are stored with bytes past each group (see store_output), so
    // the block's last group goes to a scratch group first and then exactly to the output.
    constexpr bool past_end = OUTPUT_FORMAT != 0 && !FOURTH_CHANNEL;
    constexpr std::size_t group_samples = 3 * Finish::width;
    constexpr std::size_t room_past_end = 16;  // more samples than any store writes past a group
    alignas(32) T scratch[group_samples + room_past_end];
    for (int32_t k = 0; k < count; k += Finish::width) {
        typename Finish::Lanes blue = output_lanes<Finish, BLUE_OUTPUT_LUT>(block.blue + k, out.blue.output_LUT);
        typename Finish::Lanes green = output_lanes<Finish, GREEN_OUTPUT_LUT>(block.green + k, out.green.output_LUT);
        typename Finish::Lanes red = output_lanes<Finish, RED_OUTPUT_LUT>(block.red + k, out.red.output_LUT);
        if constexpr (!any_output_LUT) {
            blue = clamped(blue, out.blue);
            green = clamped(green, out.green);
            red = clamped(red, out.red);
        }
        const bool to_scratch = past_end && k + Finish::width == count;
        store_output<Finish, OUTPUT_FORMAT, FOURTH_CHANNEL, past_end>(
            to_scratch ? scratch : output, plane, to_scratch ? 0 : static_cast<std::size_t>(begin + k),
            shifted<Finish, SHIFT_LEFT, SHIFT_RIGHT>(blue, out.blue),
            shifted<Finish, SHIFT_LEFT, SHIFT_RIGHT>(green, out.green),
            shifted<Finish, SHIFT_LEFT, SHIFT_RIGHT>(red, out.red));
    }
    if constexpr (past_end) {
        const std::size_t last = static_cast<std::size_t>(begin + count - Finish::width);
        std::memcpy(output + 3 * last, scratch, group_samples * sizeof(T));
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
using Sums_stage = void (*)(const Sums_inputs&, const Sums_constants<Isa>&, int32_t, int32_t, Block&);

constexpr int tier_count = 3;  // every tier but scalar_only

// Index: (input format * 8 + red, green, blue input table bits) * tier_count + tier.
template <typename Isa, int INDEX>
constexpr Sums_stage<Isa> sums_stage()
{
    constexpr int options = INDEX / tier_count;
    return &compute_block_sums<Isa, options / 8, options % 2 != 0, (options / 2) % 2 != 0, (options / 4) % 2 != 0,
                               static_cast<Exactness_tier>(INDEX % tier_count)>;
}

template <typename Isa, int... INDEX>
constexpr std::array<Sums_stage<Isa>, sizeof...(INDEX)> sums_stages(std::integer_sequence<int, INDEX...>)
{
    return {sums_stage<Isa, INDEX>()...};
}

template <typename Isa, typename T>
Sums_stage<Isa> choose_sums_stage(const Transform_arguments<T>& a, Exactness_tier tier)
{
    static constexpr auto stages = sums_stages<Isa>(std::make_integer_sequence<int, 3 * 8 * tier_count>());
    const int options = format_index(a.input_buffer_format) * 8 + (a.red_input_LUT_enabled ? 4 : 0) +
                        (a.green_input_LUT_enabled ? 2 : 0) + (a.blue_input_LUT_enabled ? 1 : 0);
    return stages[static_cast<std::size_t>(options * tier_count + static_cast<int>(tier))];
}

template <typename Finish, typename T>
using Finish_stage = void (*)(const Finish_constants<Finish, T>&, int32_t, int32_t, Block&);

// Index: output format * 64 + fourth channel * 32 + any left shift * 16 + any right shift * 8
// + red, green, blue output table bits.
template <typename Finish, typename T, int INDEX>
constexpr Finish_stage<Finish, T> finish_stage()
{
    return &finish_block<Finish, INDEX % 2 != 0, (INDEX / 2) % 2 != 0, (INDEX / 4) % 2 != 0, (INDEX / 16) % 2 != 0,
                         (INDEX / 8) % 2 != 0, (INDEX / 32) % 2 != 0, INDEX / 64, T>;
}

template <typename Finish, typename T, int... INDEX>
constexpr std::array<Finish_stage<Finish, T>, sizeof...(INDEX)> finish_stages(std::integer_sequence<int, INDEX...>)
{
    return {finish_stage<Finish, T, INDEX>()...};
}

template <typename Finish, typename T>
Finish_stage<Finish, T> choose_finish_stage(const Transform_arguments<T>& a)
{
    static constexpr auto stages = finish_stages<Finish, T>(std::make_integer_sequence<int, 192>());
    const bool left = a.blue_shift_distance > 0 || a.green_shift_distance > 0 || a.red_shift_distance > 0;
    const bool right = a.blue_shift_distance < 0 || a.green_shift_distance < 0 || a.red_shift_distance < 0;
    const int index = format_index(a.output_buffer_format) * 64 + (a.fourth_channel_enabled ? 32 : 0) +
                      (left ? 16 : 0) + (right ? 8 : 0) + (a.red_output_LUT_enabled ? 4 : 0) +
                      (a.green_output_LUT_enabled ? 2 : 0) + (a.blue_output_LUT_enabled ? 1 : 0);
    return stages[static_cast<std::size_t>(index)];
}

// --- per-call constants ----------------------------------------------------------------------

template <typename Sums>
Matrix_constants<Sums> matrix_constants(const float* matrix)
{
    Matrix_constants<Sums> constants;
    for (int k = 0; k < 9; ++k) constants.coefficient[k] = Sums::broadcast_double(static_cast<double>(matrix[k]));
    constants.half = Sums::broadcast_double(0.5);
    return constants;
}

template <typename Ints>
Fixed_point_row_constants<Ints> fixed_point_row_constants(const Fixed_point_row& row)
{
    Fixed_point_row_constants<Ints> constants;
    constants.low_red_green = Ints::broadcast_lanes(word_pair(row.low[0], row.low[1]));
    constants.low_blue_constant = Ints::broadcast_lanes(word_pair(row.low[2], row.low_constant));
    constants.high_red_green = Ints::broadcast_lanes(word_pair(row.high[0], row.high[1]));
    constants.high_blue_constant = Ints::broadcast_lanes(word_pair(row.high[2], row.high_constant));
    constants.shift = Ints::shift_count(row.shift);
    return constants;
}

template <typename Isa>
Sums_constants<Isa> sums_constants(const float* matrix, Exactness_tier tier, const Fixed_point_matrix& form)
{
    Sums_constants<Isa> constants{};
    if (tier == Exactness_tier::fixed_point) {
        for (int row = 0; row < 3; ++row) {
            constants.fixed_point[row] = fixed_point_row_constants<typename Isa::Finish>(form.rows[row]);
        }
    } else {
        constants.doubles = matrix_constants<typename Isa::Sums>(matrix);
    }
    return constants;
}

// The scalar engine shifts by the distance modulo 32: left for a positive distance, right for a
// negative one by its negation.
template <typename Finish>
Channel_constants<Finish> channel_constants(uint16_t min, uint16_t max, int32_t shift_distance,
                                            const LUT_entry* output_LUT)
{
    const uint32_t distance = static_cast<uint32_t>(shift_distance);
    Channel_constants<Finish> channel;
    channel.min = Finish::broadcast_lanes(static_cast<int32_t>(min));
    channel.max = Finish::broadcast_lanes(static_cast<int32_t>(max));
    channel.left = Finish::shift_count(shift_distance > 0 ? static_cast<int>(distance & 31u) : 0);
    channel.right = Finish::shift_count(shift_distance < 0 ? static_cast<int>((0u - distance) & 31u) : 0);
    channel.output_LUT = output_LUT;
    return channel;
}

// --- the transform entry --------------------------------------------------------------------

// Processes pixels 0 .. claimed - 1 exactly as the scalar engine would and returns claimed:
// the largest multiple of Isa::width not above the pixel count, or 0 when the matrix leaves the
// call to the scalar engine or the count is below one step (or negative).
template <typename Isa, typename T>
int transform(const Transform_arguments<T>& a)
{
    using Sums = typename Isa::Sums;
    using Finish = typename Isa::Finish;
    static_assert(Isa::width % Sums::width == 0 && Isa::width % Finish::width == 0 && block_pixels % Isa::width == 0);
    if (a.pixel_count < Isa::width) return 0;
    Fixed_point_matrix form;
    const Exactness_tier tier = exactness_tier(a.matrix, form);
    if (tier == Exactness_tier::scalar_only) return 0;
    const int32_t claimed = a.pixel_count - a.pixel_count % Isa::width;

    const Rounding_scope rounding;
    const std::size_t plane = static_cast<std::size_t>(a.pixel_count);
    const Sums_inputs inputs{a.input_buffer, plane, a.blue_input_LUT, a.green_input_LUT, a.red_input_LUT};
    const Sums_constants<Isa> matrix = sums_constants<Isa>(a.matrix, tier, form);
    const Finish_constants<Finish, T> outputs{
        a.output_buffer, plane,
        channel_constants<Finish>(a.blue_clamp_min, a.blue_clamp_max, a.blue_shift_distance, a.blue_output_LUT),
        channel_constants<Finish>(a.green_clamp_min, a.green_clamp_max, a.green_shift_distance, a.green_output_LUT),
        channel_constants<Finish>(a.red_clamp_min, a.red_clamp_max, a.red_shift_distance, a.red_output_LUT)};
    const Sums_stage<Isa> sums = choose_sums_stage<Isa>(a, tier);
    const Finish_stage<Finish, T> finish = choose_finish_stage<Finish>(a);

    Block block;
    for (int32_t begin = 0; begin < claimed;) {  // never steps past claimed, so never overflows
        const int32_t count = claimed - begin < block_pixels ? claimed - begin : block_pixels;
        sums(inputs, matrix, begin, count, block);
        finish(outputs, begin, count, block);
        begin += count;
    }
    return claimed;
}

}  // namespace pixel_pipeline
