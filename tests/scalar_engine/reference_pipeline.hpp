// An independent reference of the per-pixel pipeline: one plain function that tests every
// option at run time, written from the pipeline's definition and not from the kernels. The
// engine must agree with it bit for bit.
#pragma once

#include "scalar_engine/transform_arguments.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace reference {

// Truncation toward zero with the fixed out-of-range result, spelled with explicit range tests
// so that no conversion is ever undefined.
inline int32_t truncate_to_int32(double value)
{
    if (std::isnan(value) || value >= 2147483648.0 || value <= -2147483649.0) {
        return std::numeric_limits<int32_t>::min();
    }
    return static_cast<int32_t>(value);
}

inline int32_t rounded_sum(const float* row, long double red, long double green, long double blue)
{
    long double sum = row[0] * red;
    sum = sum + row[1] * green;
    sum = sum + row[2] * blue;
    sum = sum + 0.5f;
    volatile double stored = static_cast<double>(sum);  // forces the rounding to double
    return truncate_to_int32(stored);
}

inline std::size_t position(int32_t format, int channel, std::size_t i, std::size_t n,
                            std::size_t channels)
{
    // channel: 0 blue, 1 green, 2 red, 3 fourth
    if (format == 1) return channels * i + static_cast<std::size_t>(channel);
    if (format == 2) {
        const int rgb_order[4] = {2, 1, 0, 3};
        return channels * i + static_cast<std::size_t>(rgb_order[channel]);
    }
    return static_cast<std::size_t>(channel) * n + i;
}

inline int32_t finish_channel(int32_t value, int32_t min, int32_t max, bool output_LUT_enabled,
                              const LUT_entry* output_LUT, int32_t shift)
{
    if (value > max) value = max;
    if (value < min) value = min;
    if (output_LUT_enabled) value = output_LUT[value];
    if (shift > 0) {
        value = static_cast<int32_t>(static_cast<uint32_t>(value) << (shift & 31));
    } else if (shift < 0) {
        const int distance = static_cast<int>((0u - static_cast<uint32_t>(shift)) & 31u);
        // Arithmetic shift written without relying on the compiler's choice for negatives.
        value = value >= 0 ? value >> distance : ~(~value >> distance);
    }
    return value;
}

template <typename T>
void process(const Transform_arguments<T>& a, int start)
{
    const std::size_t n = static_cast<std::size_t>(a.pixel_count);
    const std::size_t out_channels = a.fourth_channel_enabled ? 4 : 3;
    for (int32_t pixel = start; pixel < a.pixel_count; ++pixel) {
        const std::size_t i = static_cast<std::size_t>(pixel);
        uint32_t b = a.input_buffer[position(a.input_buffer_format, 0, i, n, 3)];
        uint32_t g = a.input_buffer[position(a.input_buffer_format, 1, i, n, 3)];
        uint32_t r = a.input_buffer[position(a.input_buffer_format, 2, i, n, 3)];
        if (a.blue_input_LUT_enabled) b = static_cast<uint32_t>(a.blue_input_LUT[b]) % 65536u;
        if (a.green_input_LUT_enabled) g = static_cast<uint32_t>(a.green_input_LUT[g]) % 65536u;
        if (a.red_input_LUT_enabled) r = static_cast<uint32_t>(a.red_input_LUT[r]) % 65536u;

        const int32_t red = rounded_sum(a.matrix, r, g, b);
        const int32_t green = rounded_sum(a.matrix + 3, r, g, b);
        const int32_t blue = rounded_sum(a.matrix + 6, r, g, b);

        const int32_t out[3] = {
            finish_channel(blue, a.blue_clamp_min, a.blue_clamp_max, a.blue_output_LUT_enabled,
                           a.blue_output_LUT, a.blue_shift_distance),
            finish_channel(green, a.green_clamp_min, a.green_clamp_max, a.green_output_LUT_enabled,
                           a.green_output_LUT, a.green_shift_distance),
            finish_channel(red, a.red_clamp_min, a.red_clamp_max, a.red_output_LUT_enabled,
                           a.red_output_LUT, a.red_shift_distance)};
        for (int channel = 0; channel < 3; ++channel) {
            const uint32_t narrowed = static_cast<uint32_t>(out[channel]) &
                                      static_cast<uint32_t>(std::numeric_limits<T>::max());
            a.output_buffer[position(a.output_buffer_format, channel, i, n, out_channels)] =
                static_cast<T>(narrowed);
        }
        if (a.fourth_channel_enabled) {
            a.output_buffer[position(a.output_buffer_format, 3, i, n, out_channels)] = 0;
        }
    }
}

}  // namespace reference
