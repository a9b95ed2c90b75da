// The pixel kernel family. Every option that a per-pixel loop would otherwise test is a
// template parameter, so each instance runs only the operations its parameters ask for.
//
// A kernel works in blocks: it computes the three rounded sums of a block of pixels into an
// array of doubles, converts the block to integers under a single switch to truncation, then
// clamps, looks up, shifts and stores the block. The first and last steps are the stages of
// pixel_stages.hpp. Kernels run only inside the X87_arithmetic_scope that the dispatch takes
// for each call, so the sums have 64-bit significands and round to nearest.
#pragma once

#include "pixel_stages.hpp"
#include "transform_arguments.hpp"
#include "truncating_conversion.hpp"

#include <cstdint>

constexpr int pixel_kernel_block = 128;

template <NQ_COLOR_FORMAT INPUT_FORMAT, bool BLUE_INPUT_LUT, bool GREEN_INPUT_LUT, bool RED_INPUT_LUT,
          bool BLUE_OUTPUT_LUT, bool GREEN_OUTPUT_LUT, bool RED_OUTPUT_LUT,
          SINGLE_CHANNEL_SHIFTER_STATE BLUE_SHIFTER, SINGLE_CHANNEL_SHIFTER_STATE GREEN_SHIFTER,
          SINGLE_CHANNEL_SHIFTER_STATE RED_SHIFTER, bool FOURTH_CHANNEL, NQ_COLOR_FORMAT OUTPUT_FORMAT,
          typename T>
void scalar_process_impl(const Transform_arguments<T>& arguments, int start)
{
    double sums[3 * pixel_kernel_block];
    int32_t values[3 * pixel_kernel_block];
    const int32_t pixel_count = arguments.pixel_count;
    for (int32_t block_begin = start; block_begin < pixel_count;) {
        const int64_t remaining = static_cast<int64_t>(pixel_count) - block_begin;
        const int count = remaining < pixel_kernel_block ? static_cast<int>(remaining) : pixel_kernel_block;
        compute_block_sums<INPUT_FORMAT, BLUE_INPUT_LUT, GREEN_INPUT_LUT, RED_INPUT_LUT>(
            arguments, block_begin, count, sums);
        convert_to_int32_truncating(sums, values, 3 * count);
        finish_block<BLUE_OUTPUT_LUT, GREEN_OUTPUT_LUT, RED_OUTPUT_LUT, BLUE_SHIFTER, GREEN_SHIFTER,
                     RED_SHIFTER, FOURTH_CHANNEL, OUTPUT_FORMAT>(arguments, block_begin, count,
                                                                 values);
        block_begin += count;
    }
}
