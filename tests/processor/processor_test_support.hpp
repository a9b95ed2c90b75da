// What the processor tests share: an initialised module per test, and readers of what the
// logger and vector doubles received.
#pragma once

#include "companion_probe.hpp"
#include "public_calls.hpp"
#include "scalar_engine/transform_arguments.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Events = std::vector<std::string>;

const char* const interface_file = "color_processing/corvane_xvr_color_processing.cpp";
const char* const processor_file = "color_processing/color_correction.cpp";

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
    expect_record(record, 2, interface_file, 101, "nq_color_processor_transform_impl", record.text);
    EXPECT_EQ(record.text.rfind(label + " takes ", 0), 0u) << record.text;
    EXPECT_TRUE(ends_with(record.text, ".000000 microseconds.")) << record.text;
}

// The record that the vector double `kind` ("sse" or "avx2") was handed last.
template <typename T = unsigned short>
Transform_arguments<T> recorded_record(const std::string& kind)
{
    Transform_arguments<T> record{};
    EXPECT_TRUE(probe_kept(kind + (sizeof(T) == 1 ? ".record_8" : ".record_16"), record));
    return record;
}

// The record the SSE double is handed by a transform of no pixels (processor at level 1).
inline Transform_arguments<unsigned short> sse_record_of(void* processor)
{
    const uint16_t input[3] = {};
    uint16_t output[3] = {};
    Transform_call call = call_of(processor, input, output, 0);
    std::fill_n(call.clamp_max, 3, 0);  // valid whatever tables are enabled
    EXPECT_EQ(to_48.run(call), NQ_COLOR_NO_ERROR);
    return recorded_record("sse");
}

inline std::vector<float> matrix_of(void* processor)
{
    const float* matrix = sse_record_of(processor).matrix;
    return matrix == nullptr ? std::vector<float>{} : std::vector<float>(matrix, matrix + 9);
}
