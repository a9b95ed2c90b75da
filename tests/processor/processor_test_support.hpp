// What the processor tests share: an initialised module per test, one transform call described
// by its arguments, and readers of what the logger and vector doubles received.
#pragma once

#include <corvane_xvr_color_processing.h>

#include "probe_queries.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Events = std::vector<std::string>;

// The arguments of one transform call; the defaults pass validation.
template <typename T>
struct Transform_call {
    const uint16_t* input = nullptr;
    NQ_COLOR_FORMAT input_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    uint16_t blue_min = 0, blue_max = 65535, green_min = 0, green_max = 65535;
    uint16_t red_min = 0, red_max = 65535;
    int32_t blue_shift = 0, green_shift = 0, red_shift = 0;
    T* output = nullptr;
    NQ_COLOR_FORMAT output_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    int32_t pixel_count = 0;

    Transform_call(const uint16_t* in = nullptr, T* out = nullptr, int32_t count = 0)
        : input(in), output(out), pixel_count(count) {}

    template <typename Transform>
    int run(Transform transform, void* processor) const
    {
        return transform(processor, input, input_format, blue_min, blue_max, green_min, green_max,
                         red_min, red_max, blue_shift, green_shift, red_shift, output,
                         output_format, pixel_count);
    }
};

inline NQ_COLOR_FORMAT format_value(int32_t value) { return static_cast<NQ_COLOR_FORMAT>(value); }

const char* const interface_file = "color_processing/corvane_xvr_color_processing.cpp";
const char* const processor_file = "color_processing/color_correction.cpp";
const char* const null_handle_text = "ERROR:  The specified color processor handle is NULL!";

// The six table getters: blue, green, red input tables, then blue, green, red output tables.
using Table_getter = int32_t* (*)(void*);
const Table_getter table_getters[6] = {
    nq_color_get_blue_input_LUT,  nq_color_get_green_input_LUT,  nq_color_get_red_input_LUT,
    nq_color_get_blue_output_LUT, nq_color_get_green_output_LUT, nq_color_get_red_output_LUT};

// Each test starts from a fresh journal with the module initialised; the processors it made
// with make() are destroyed before the module is terminated.
class Initialised_module : public testing::Test {
protected:
    void SetUp() override
    {
        nq_probe_reset();
        ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    }
    void TearDown() override
    {
        for (void* processor : m_made) destroy(processor);
        nq_color_processing_module_terminate();
    }

    // A processor, with the journal of its creation forgotten.
    void* make(int input_depth, int output_depth, int level)
    {
        void* processor = nq_color_create_color_processor_test(input_depth, output_depth, level);
        EXPECT_NE(processor, nullptr);
        if (processor != nullptr) m_made.push_back(processor);
        nq_probe_reset();
        return processor;
    }
    void destroy(void* processor)
    {
        m_made.erase(std::remove(m_made.begin(), m_made.end(), processor), m_made.end());
        EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    }

    std::vector<void*> m_made;
};

inline void expect_record(const Probe_log_record& record, int priority, const char* file_suffix,
                          int line, const std::string& function, const std::string& text)
{
    EXPECT_EQ(record.priority, priority);
    EXPECT_TRUE(ends_with(record.file, file_suffix)) << record.file;
    EXPECT_EQ(record.line, line);
    EXPECT_EQ(record.function, function);
    EXPECT_EQ(record.text, text);
}

// The timing record of a transform; the elapsed time itself is not examined.
inline void expect_timing_record(const Probe_log_record& record, const std::string& label)
{
    EXPECT_EQ(record.priority, 2);
    EXPECT_TRUE(ends_with(record.file, interface_file)) << record.file;
    EXPECT_EQ(record.line, 101);
    EXPECT_EQ(record.function, "nq_color_processor_transform_impl");
    EXPECT_EQ(record.text.rfind(label + " takes ", 0), 0u) << record.text;
    EXPECT_TRUE(ends_with(record.text, ".000000 microseconds.")) << record.text;
}

// The record that the vector double `kind` ("sse" or "avx2") was handed last.
template <typename T = unsigned short>
Transform_arguments<T> recorded_record(const std::string& kind)
{
    Transform_arguments<T> record{};
    EXPECT_TRUE(probe_kept((kind + (sizeof(T) == 1 ? ".record_8" : ".record_16")).c_str(), record));
    return record;
}

// The record the SSE double is handed by a transform of no pixels (processor at level 1).
inline Transform_arguments<unsigned short> sse_record_of(void* processor)
{
    const uint16_t input[3] = {};
    uint16_t output[3] = {};
    Transform_call<uint16_t> call(input, output);
    call.blue_max = call.green_max = call.red_max = 0;  // valid whatever tables are enabled
    EXPECT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    return recorded_record("sse");
}

inline std::vector<float> matrix_of(void* processor)
{
    const float* matrix = sse_record_of(processor).matrix;
    return matrix == nullptr ? std::vector<float>{} : std::vector<float>(matrix, matrix + 9);
}
