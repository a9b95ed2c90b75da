// What the processor tests share: an initialised module per test, one transform call described
// by its arguments, and readers of the records the logger and vector doubles received.
#pragma once

#include <corvane_xvr_color_processing.h>

#include "probe_queries.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

template <typename T>
using Transform_function = int (*)(void*, const uint16_t*, NQ_COLOR_FORMAT, uint16_t, uint16_t,
                                   uint16_t, uint16_t, uint16_t, uint16_t, int32_t, int32_t,
                                   int32_t, T*, NQ_COLOR_FORMAT, int32_t);

// The arguments of one transform call; the defaults pass validation.
template <typename T>
struct Transform_call {
    const uint16_t* input = nullptr;
    NQ_COLOR_FORMAT input_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    uint16_t blue_min = 0;
    uint16_t blue_max = 65535;
    uint16_t green_min = 0;
    uint16_t green_max = 65535;
    uint16_t red_min = 0;
    uint16_t red_max = 65535;
    int32_t blue_shift = 0;
    int32_t green_shift = 0;
    int32_t red_shift = 0;
    T* output = nullptr;
    NQ_COLOR_FORMAT output_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    int32_t pixel_count = 0;

    int run(Transform_function<T> transform, void* processor) const
    {
        return transform(processor, input, input_format, blue_min, blue_max, green_min, green_max,
                         red_min, red_max, blue_shift, green_shift, red_shift, output,
                         output_format, pixel_count);
    }
};

inline NQ_COLOR_FORMAT format_value(int32_t value)
{
    return static_cast<NQ_COLOR_FORMAT>(value);
}

const char* const interface_file = "color_processing/corvane_xvr_color_processing.cpp";
const char* const processor_file = "color_processing/color_correction.cpp";
const char* const null_handle_text = "ERROR:  The specified color processor handle is NULL!";

// Each test starts from a fresh journal with the module initialised, and ends it.
class Initialised_module : public testing::Test {
protected:
    void SetUp() override
    {
        nq_probe_reset();
        ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    }
    void TearDown() override { nq_color_processing_module_terminate(); }
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
    const std::string start = label + " takes ";
    const std::string end = ".000000 microseconds.";
    EXPECT_EQ(record.text.compare(0, start.size(), start), 0) << record.text;
    EXPECT_TRUE(ends_with(record.text, end)) << record.text;
}

// The record that the vector double `kind` ("sse" or "avx2") was handed last.
inline Transform_arguments<unsigned short> recorded_16_bit_record(const std::string& kind)
{
    Transform_arguments<unsigned short> record{};
    EXPECT_TRUE(probe_kept((kind + ".record_16").c_str(), record));
    return record;
}

inline Transform_arguments<unsigned char> recorded_8_bit_record(const std::string& kind)
{
    Transform_arguments<unsigned char> record{};
    EXPECT_TRUE(probe_kept((kind + ".record_8").c_str(), record));
    return record;
}

// The processor's matrix as the SSE double sees it through a transform of no pixels. The
// processor must have been created at vector level 1.
inline std::vector<float> matrix_seen_by_vector_library(void* processor)
{
    const uint16_t input[3] = {};
    uint16_t output[3] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    // Valid whatever output tables are enabled.
    call.blue_max = call.green_max = call.red_max = 0;
    EXPECT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    const auto record = recorded_16_bit_record("sse");
    if (record.matrix == nullptr) return {};
    return std::vector<float>(record.matrix, record.matrix + 9);
}
