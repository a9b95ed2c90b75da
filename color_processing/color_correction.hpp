// The colour processor behind a host's handle: its matrix, its six look-up tables with their
// enable flags, the vector level chosen at creation and the bindings to both vector libraries.
#pragma once

#include "color_matrix.hpp"
#include "modules/lut_wrapper.hpp"
#include "modules/vector_color_processing_module.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <cstdint>

// Three tables of the table library, blue, green and red, each with its enable flag. The
// tables' memory belongs to the table library; this only holds their handles.
class RGB_LUT {
public:
    // Creates the blue, green and red tables of `entries` entries and clears them. If any step
    // throws, the tables made so far are destroyed, the latest first.
    RGB_LUT(int entries, bool avx2_flag);

    // Destroys the red, the green and the blue table.
    ~RGB_LUT();

    RGB_LUT(const RGB_LUT&) = delete;
    RGB_LUT& operator=(const RGB_LUT&) = delete;

    // Any non-zero argument enables its channel; all three flags are set.
    void enable(int blue, int green, int red);

    LUT_handle m_blue_LUT = nullptr;
    bool m_blue_enabled = false;
    LUT_handle m_green_LUT = nullptr;
    bool m_green_enabled = false;
    LUT_handle m_red_LUT = nullptr;
    bool m_red_enabled = false;

private:
    void clear_tables(int entries);
    void destroy_tables() noexcept;
};

class Color_processor {
public:
    // Depths must be 0 to 16; the caller checks them. Members are made in declaration order, and
    // on an exception those already made are released in reverse order: the SSE binding, then
    // the output tables, then the input tables.
    Color_processor(int input_bit_depth, int output_bit_depth, int vector_level);

    Color_processor(const Color_processor&) = delete;
    Color_processor& operator=(const Color_processor&) = delete;

    // Validates the call and, if valid, processes pixel_count pixels into output_buffer with T
    // samples. Returns 0 or the code of the first failed check, which is logged; a failed call
    // writes nothing.
    template <typename T>
    int transform(const uint16_t* input_buffer, NQ_COLOR_FORMAT input_buffer_format,
                  uint16_t blue_clamp_min, uint16_t blue_clamp_max, uint16_t green_clamp_min,
                  uint16_t green_clamp_max, uint16_t red_clamp_min, uint16_t red_clamp_max,
                  int32_t blue_shift_distance, int32_t green_shift_distance,
                  int32_t red_shift_distance, T* output_buffer,
                  NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count,
                  bool fourth_channel_enabled);

    // First member: the transform record points at it, and its address is the processor's.
    Color_matrix m_matrix;
    RGB_LUT m_input_LUTs;
    RGB_LUT m_output_LUTs;
    int32_t m_output_LUT_size;  // entries of each output table; bounds the clamp maximum
    int32_t m_vector_level;     // as given at creation, unchecked
    Vector_color_processing_module m_sse_module;
    Vector_color_processing_module m_avx2_module;

private:
    template <typename T>
    int validate(const Transform_arguments<T>& record) const;
    bool clamp_is_valid(uint16_t min, uint16_t max, bool output_LUT_enabled) const;
    template <typename T>
    void attach_tables(Transform_arguments<T>& record) const;
    template <typename T>
    int vector_start_index(const Transform_arguments<T>& record) const;
};

extern template int Color_processor::transform<unsigned short>(
    const uint16_t*, NQ_COLOR_FORMAT, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
    int32_t, int32_t, int32_t, unsigned short*, NQ_COLOR_FORMAT, int32_t, bool);
extern template int Color_processor::transform<unsigned char>(
    const uint16_t*, NQ_COLOR_FORMAT, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
    int32_t, int32_t, int32_t, unsigned char*, NQ_COLOR_FORMAT, int32_t, bool);
