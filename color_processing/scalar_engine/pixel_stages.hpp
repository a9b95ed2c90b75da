// The two per-pixel stages of a kernel, each specialised on the options it involves: the sums
// of a block (input layout and input tables) and its finish (clamp, output tables, shifts,
// fourth channel, output layout and sample width). A kernel chains them around the block
// conversion. Kernels that differ only in their finishing options share one instance of the
// sums stage and vice versa, which keeps the family small in code and cheap to compile, while no
// stage loop tests any option.
#pragma once

#include "buffer_layout.hpp"
#include "transform_arguments.hpp"

#include <cstddef>
#include <cstdint>

namespace pixel_kernel_detail {

template <bool APPLIED>
inline uint32_t through_input_LUT(uint32_t sample, const LUT_entry* table)
{
    if constexpr (APPLIED) {
        return static_cast<uint32_t>(table[sample]) & 0xFFFFu;
    } else {
        static_cast<void>(table);
        return sample;
    }
}

// One product of a coefficient and a sample, exact in the 64-bit significand (24 by 16 bits).
// The coefficient is multiplied straight from memory: left to itself the compiler keeps nine
// 80-bit copies of the coefficients and reloads them every pixel, which is much slower.
inline long double product(const float& coefficient, uint32_t sample)
{
    long double value = static_cast<int32_t>(sample);
    asm("fmuls %1" : "+t"(value) : "m"(coefficient));
    return value;
}

// The sum of one output channel, in extended precision with the first two products added
// first, plus one half, then rounded to double by the store into the block.
inline double rounded_channel_sum(const float* row, uint32_t red, uint32_t green, uint32_t blue)
{
    const long double first_two = product(row[0], red) + product(row[1], green);
    const long double sum = first_two + product(row[2], blue);
    return static_cast<double>(sum + static_cast<long double>(0.5f));
}

// Clamp (max first, then min: a min above the max would win), then the output table.
template <bool APPLIED>
inline int32_t clamped_through_output_LUT(int32_t value, int32_t min, int32_t max,
                                          const LUT_entry* table)
{
    if (value > max) value = max;
    if (value < min) value = min;
    if constexpr (APPLIED) {
        return table[value];
    } else {
        static_cast<void>(table);
        return value;
    }
}

template <SINGLE_CHANNEL_SHIFTER_STATE STATE>
inline int32_t shifted(int32_t value, int32_t distance)
{
    if constexpr (STATE == SINGLE_CHANNEL_SHIFTER_STATE_LEFT_SHIFT) {
        return static_cast<int32_t>(static_cast<uint32_t>(value) << (static_cast<uint32_t>(distance) & 31u));
    } else if constexpr (STATE == SINGLE_CHANNEL_SHIFTER_STATE_RIGHT_SHIFT) {
        return value >> ((0u - static_cast<uint32_t>(distance)) & 31u);
    } else {
        static_cast<void>(distance);
        return value;
    }
}

// Everything one output channel needs after the conversion, loaded once per block.
struct Channel_finish {
    int32_t min;
    int32_t max;
    const LUT_entry* output_LUT;
    int32_t shift_distance;
};

}  // namespace pixel_kernel_detail

// Rounded sums of pixels block_begin .. block_begin + count - 1: red, green and blue of pixel k
// of the block at sums[3k], sums[3k+1], sums[3k+2].
template <NQ_COLOR_FORMAT INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT,
          typename T>
__attribute__((noinline)) void compute_block_sums(const Transform_arguments<T>& arguments,
                                                  int32_t block_begin, int count, double* sums)
{
    using namespace pixel_kernel_detail;
    const Buffer_layout<INPUT_FORMAT, const uint16_t, 3> input(
        arguments.input_buffer, static_cast<std::size_t>(arguments.pixel_count));
    const LUT_entry* const blue_input_LUT = arguments.blue_input_LUT;
    const LUT_entry* const green_input_LUT = arguments.green_input_LUT;
    const LUT_entry* const red_input_LUT = arguments.red_input_LUT;
    float matrix[9];
    for (int k = 0; k < 9; ++k) matrix[k] = arguments.matrix[k];

    for (int k = 0; k < count; ++k) {
        const std::size_t i = static_cast<std::size_t>(block_begin + k);
        const uint32_t b = through_input_LUT<BLUE_INPUT_LUT>(input.blue(i), blue_input_LUT);
        const uint32_t g = through_input_LUT<GREEN_INPUT_LUT>(input.green(i), green_input_LUT);
        const uint32_t r = through_input_LUT<RED_INPUT_LUT>(input.red(i), red_input_LUT);
        sums[3 * k] = rounded_channel_sum(matrix, r, g, b);
        sums[3 * k + 1] = rounded_channel_sum(matrix + 3, r, g, b);
        sums[3 * k + 2] = rounded_channel_sum(matrix + 6, r, g, b);
    }
}

// Clamps, looks up, shifts, narrows and stores the converted values of a block.
template <bool BLUE_OUTPUT_LUT, bool GREEN_OUTPUT_LUT, bool RED_OUTPUT_LUT,
          SINGLE_CHANNEL_SHIFTER_STATE BLUE_SHIFTER, SINGLE_CHANNEL_SHIFTER_STATE GREEN_SHIFTER,
          SINGLE_CHANNEL_SHIFTER_STATE RED_SHIFTER, bool FOURTH_CHANNEL, NQ_COLOR_FORMAT OUTPUT_FORMAT,
          typename T>
__attribute__((noinline)) void finish_block(const Transform_arguments<T>& arguments,
                                            int32_t block_begin, int count, const int32_t* values)
{
    using namespace pixel_kernel_detail;
    constexpr std::size_t output_channels = FOURTH_CHANNEL ? 4 : 3;
    const Buffer_layout<OUTPUT_FORMAT, T, output_channels> output(
        arguments.output_buffer, static_cast<std::size_t>(arguments.pixel_count));
    const Channel_finish blue{arguments.blue_clamp_min, arguments.blue_clamp_max,
                              arguments.blue_output_LUT, arguments.blue_shift_distance};
    const Channel_finish green{arguments.green_clamp_min, arguments.green_clamp_max,
                               arguments.green_output_LUT, arguments.green_shift_distance};
    const Channel_finish red{arguments.red_clamp_min, arguments.red_clamp_max,
                             arguments.red_output_LUT, arguments.red_shift_distance};

    for (int k = 0; k < count; ++k) {
        const std::size_t i = static_cast<std::size_t>(block_begin + k);
        const int32_t r = clamped_through_output_LUT<RED_OUTPUT_LUT>(values[3 * k], red.min,
                                                                     red.max, red.output_LUT);
        const int32_t g = clamped_through_output_LUT<GREEN_OUTPUT_LUT>(
            values[3 * k + 1], green.min, green.max, green.output_LUT);
        const int32_t b = clamped_through_output_LUT<BLUE_OUTPUT_LUT>(
            values[3 * k + 2], blue.min, blue.max, blue.output_LUT);
        output.blue(i) = static_cast<T>(shifted<BLUE_SHIFTER>(b, blue.shift_distance));
        output.green(i) = static_cast<T>(shifted<GREEN_SHIFTER>(g, green.shift_distance));
        output.red(i) = static_cast<T>(shifted<RED_SHIFTER>(r, red.shift_distance));
        if constexpr (FOURTH_CHANNEL) output.fourth(i) = T{0};
    }
}
