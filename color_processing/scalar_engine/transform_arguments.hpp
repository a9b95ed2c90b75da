// The record that describes one transform completely. The vector libraries are built apart
// from this library and read the record through a pointer, so its byte layout is a binary
// interface: the static assertions below pin every offset on the 32-bit build.
#pragma once

#include <corvane_xvr_color_processing.h>

#include <cstddef>
#include <cstdint>

// What is done with one output channel's final 32-bit value before it is narrowed.
enum SINGLE_CHANNEL_SHIFTER_STATE : int32_t {
    SINGLE_CHANNEL_SHIFTER_STATE_NO_SHIFT = 0,
    SINGLE_CHANNEL_SHIFTER_STATE_LEFT_SHIFT = 1,
    SINGLE_CHANNEL_SHIFTER_STATE_RIGHT_SHIFT = 2,
};

// One entry of a look-up table: input tables contribute the low 16 bits, output tables the
// whole value, read as signed.
using LUT_entry = int32_t;

template <typename T>
struct Transform_arguments {
    const uint16_t* input_buffer;
    NQ_COLOR_FORMAT input_buffer_format;
    const LUT_entry* blue_input_LUT;
    bool blue_input_LUT_enabled;
    const LUT_entry* green_input_LUT;
    bool green_input_LUT_enabled;
    const LUT_entry* red_input_LUT;
    bool red_input_LUT_enabled;
    const float* matrix;  // nine floats, row-major, rows yield red, green, blue
    uint16_t blue_clamp_min;
    uint16_t blue_clamp_max;
    uint16_t green_clamp_min;
    uint16_t green_clamp_max;
    uint16_t red_clamp_min;
    uint16_t red_clamp_max;
    const LUT_entry* blue_output_LUT;
    bool blue_output_LUT_enabled;
    const LUT_entry* green_output_LUT;
    bool green_output_LUT_enabled;
    const LUT_entry* red_output_LUT;
    bool red_output_LUT_enabled;
    int32_t blue_shift_distance;
    int32_t green_shift_distance;
    int32_t red_shift_distance;
    T* output_buffer;
    NQ_COLOR_FORMAT output_buffer_format;
    bool fourth_channel_enabled;
    int32_t pixel_count;
};

#if defined(__i386__)
template <typename T>
constexpr bool transform_arguments_layout_is_fixed()
{
    using A = Transform_arguments<T>;
    static_assert(sizeof(A) == 100, "record size");
    static_assert(alignof(A) == 4, "record alignment");
    static_assert(offsetof(A, input_buffer) == 0);
    static_assert(offsetof(A, input_buffer_format) == 4);
    static_assert(offsetof(A, blue_input_LUT) == 8);
    static_assert(offsetof(A, blue_input_LUT_enabled) == 12);
    static_assert(offsetof(A, green_input_LUT) == 16);
    static_assert(offsetof(A, green_input_LUT_enabled) == 20);
    static_assert(offsetof(A, red_input_LUT) == 24);
    static_assert(offsetof(A, red_input_LUT_enabled) == 28);
    static_assert(offsetof(A, matrix) == 32);
    static_assert(offsetof(A, blue_clamp_min) == 36);
    static_assert(offsetof(A, blue_clamp_max) == 38);
    static_assert(offsetof(A, green_clamp_min) == 40);
    static_assert(offsetof(A, green_clamp_max) == 42);
    static_assert(offsetof(A, red_clamp_min) == 44);
    static_assert(offsetof(A, red_clamp_max) == 46);
    static_assert(offsetof(A, blue_output_LUT) == 48);
    static_assert(offsetof(A, blue_output_LUT_enabled) == 52);
    static_assert(offsetof(A, green_output_LUT) == 56);
    static_assert(offsetof(A, green_output_LUT_enabled) == 60);
    static_assert(offsetof(A, red_output_LUT) == 64);
    static_assert(offsetof(A, red_output_LUT_enabled) == 68);
    static_assert(offsetof(A, blue_shift_distance) == 72);
    static_assert(offsetof(A, green_shift_distance) == 76);
    static_assert(offsetof(A, red_shift_distance) == 80);
    static_assert(offsetof(A, output_buffer) == 84);
    static_assert(offsetof(A, output_buffer_format) == 88);
    static_assert(offsetof(A, fourth_channel_enabled) == 92);
    static_assert(offsetof(A, pixel_count) == 96);
    return true;
}
static_assert(transform_arguments_layout_is_fixed<unsigned short>());
static_assert(transform_arguments_layout_is_fixed<unsigned char>());
#endif
