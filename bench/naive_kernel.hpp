// The baseline the kernel family is measured against: one loop that tests every option per
// pixel and converts each sum the straightforward x87 way, switching the control word to
// truncation and back around every conversion (what a compiler emits for a double-to-int
// cast). Same results as the kernels; only the speed differs.
#pragma once

#include "scalar_engine/transform_arguments.hpp"

#include <cstddef>
#include <cstdint>

namespace naive {

inline int32_t convert_with_control_word_switch(double value)
{
    uint16_t saved;
    asm volatile("fnstcw %0" : "=m"(saved));
    const uint16_t truncating = saved | 0x0C00;
    int32_t result;
    asm volatile("fldcw %0" : : "m"(truncating));
    asm volatile("fistpl %0" : "=m"(result) : "t"(value) : "st");
    asm volatile("fldcw %0" : : "m"(saved));
    return result;
}

inline int32_t channel_value(const float* row, int32_t red, int32_t green, int32_t blue)
{
    const long double sum = (static_cast<long double>(row[0]) * red +
                             static_cast<long double>(row[1]) * green) +
                            static_cast<long double>(row[2]) * blue;
    const double rounded = static_cast<double>(sum + 0.5L);
    return convert_with_control_word_switch(rounded);
}

inline int32_t finish(int32_t value, int32_t min, int32_t max, bool table_enabled,
                      const LUT_entry* table, int32_t shift)
{
    if (value > max) value = max;
    if (value < min) value = min;
    if (table_enabled) value = table[value];
    if (shift > 0) return static_cast<int32_t>(static_cast<uint32_t>(value) << (shift & 31));
    if (shift < 0) return value >> ((0u - static_cast<uint32_t>(shift)) & 31u);
    return value;
}

template <typename T>
void process(const Transform_arguments<T>& a, int start)
{
    const std::size_t n = static_cast<std::size_t>(a.pixel_count);
    const std::size_t channels = a.fourth_channel_enabled ? 4 : 3;
    for (int32_t pixel = start; pixel < a.pixel_count; ++pixel) {
        const std::size_t i = static_cast<std::size_t>(pixel);
        int32_t b, g, r;
        if (a.input_buffer_format == NQ_COLOR_FORMAT_BGR_PIXEL) {
            b = a.input_buffer[3 * i]; g = a.input_buffer[3 * i + 1]; r = a.input_buffer[3 * i + 2];
        } else if (a.input_buffer_format == NQ_COLOR_FORMAT_RGB_PIXEL) {
            r = a.input_buffer[3 * i]; g = a.input_buffer[3 * i + 1]; b = a.input_buffer[3 * i + 2];
        } else {
            b = a.input_buffer[i]; g = a.input_buffer[n + i]; r = a.input_buffer[2 * n + i];
        }
        if (a.blue_input_LUT_enabled) b = a.blue_input_LUT[b] & 0xFFFF;
        if (a.green_input_LUT_enabled) g = a.green_input_LUT[g] & 0xFFFF;
        if (a.red_input_LUT_enabled) r = a.red_input_LUT[r] & 0xFFFF;

        const T red = static_cast<T>(finish(channel_value(a.matrix, r, g, b), a.red_clamp_min,
                                            a.red_clamp_max, a.red_output_LUT_enabled,
                                            a.red_output_LUT, a.red_shift_distance));
        const T green = static_cast<T>(finish(channel_value(a.matrix + 3, r, g, b), a.green_clamp_min,
                                              a.green_clamp_max, a.green_output_LUT_enabled,
                                              a.green_output_LUT, a.green_shift_distance));
        const T blue = static_cast<T>(finish(channel_value(a.matrix + 6, r, g, b), a.blue_clamp_min,
                                             a.blue_clamp_max, a.blue_output_LUT_enabled,
                                             a.blue_output_LUT, a.blue_shift_distance));
        T* out = a.output_buffer;
        if (a.output_buffer_format == NQ_COLOR_FORMAT_BGR_PIXEL) {
            out[channels * i] = blue; out[channels * i + 1] = green; out[channels * i + 2] = red;
            if (a.fourth_channel_enabled) out[channels * i + 3] = 0;
        } else if (a.output_buffer_format == NQ_COLOR_FORMAT_RGB_PIXEL) {
            out[channels * i] = red; out[channels * i + 1] = green; out[channels * i + 2] = blue;
            if (a.fourth_channel_enabled) out[channels * i + 3] = 0;
        } else {
            out[i] = blue; out[n + i] = green; out[2 * n + i] = red;
            if (a.fourth_channel_enabled) out[3 * n + i] = 0;
        }
    }
}

}  // namespace naive
