// The colour-processing library with the real table and logger libraries of this project, as
// a host sees it through the public header: no test doubles anywhere. The test's environment
// puts the build's libraries on the search path and names the log file and the info level.
#include "log_lines.hpp"

#include "public_calls.hpp"

#include "modules/shared_library.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

namespace {

// Tables alive in the table library that the core opened, by that library's own counter.
int live_tables_in_loaded_LUT_library()
{
    const Shared_library library = Shared_library::find_loaded("libcorvane_xvr_LUT.so");
    std::int32_t (*count)() = nullptr;
    return library && library.bind(count, "nq_LUT_live_table_count") ? count() : -1;
}

// Independent model of one output channel after the matrix: round half up, clamp, output
// table, shift, narrow to 16 bits.
std::uint16_t finish_channel(double sum, int minimum, int maximum,
                             const std::function<std::int32_t(int)>& table, int shift)
{
    const auto clamped = std::min(std::max(static_cast<std::int32_t>(std::floor(sum + 0.5)), minimum), maximum);
    const std::int32_t value = table(clamped);
    return static_cast<std::uint16_t>(shift >= 0 ? value << shift : value >> -shift);
}

TEST(Core_with_real_companions, fills_and_applies_real_tables_and_logs_the_notice_and_timing_at_info)
{
    const char* destination = std::getenv("CORVANE_XVR_LOG_DESTINATION");
    ASSERT_TRUE(destination && std::string(destination).rfind("file:", 0) == 0) << "no log file named";
    const std::string log_path = destination + 5;
    ::unlink(log_path.c_str());
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR) << "libcorvane_xvr_LUT.so not found";
    const int live_before = live_tables_in_loaded_LUT_library();
    ASSERT_GE(live_before, 0);
    void* processor = nq_color_create_color_processor(16, 16);
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(live_tables_in_loaded_LUT_library(), live_before + 6);

    // Entries chosen so that every product and sum is exact in binary; the red input table
    // carries high bits that only the low 16 bits may survive.
    const std::function<std::int32_t(int)> contents[6] = {
        [](int v) { return v / 2; }, [](int v) { return v; }, [](int v) { return (65535 - v) + (5 << 16); },
        [](int v) { return v >> 4; }, [](int v) { return 65535 - v; }, [](int v) { return v; }};
    for (int t = 0; t < 6; ++t) {
        std::int32_t* data = table_getters[t](processor);
        ASSERT_NE(data, nullptr) << "table " << t;
        EXPECT_EQ(std::count(data, data + 65536, 0), 65536) << "table " << t;
        for (int v = 0; v < 65536; ++v) data[v] = contents[t](v);
    }
    ASSERT_EQ(nq_color_enable_input_LUTs(processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(nq_color_enable_output_LUTs(processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    // Rows yield red, green, blue; columns weight red, green, blue.
    const float matrix[9] = {0.5f, 0.25f, 0.0f, 0.125f, 0.75f, 0.125f, 0.0f, 0.5f, 3.0f};
    ASSERT_EQ(nq_color_append_matrix(processor, matrix), NQ_COLOR_NO_ERROR);

    const int pixel_count = 3000;
    std::vector<std::uint16_t> input = {0, 65535, 1, 65534, 32767, 32768, 255, 256, 4095, 4096};
    for (std::uint32_t state = 12345; input.size() < 3 * pixel_count;)
        input.push_back(static_cast<std::uint16_t>((state = state * 1664525u + 1013904223u) >> 16));
    std::vector<std::uint16_t> output(3 * pixel_count, 0xBEEF);
    const Transform_call call{processor, input.data(), NQ_COLOR_FORMAT_BGR_PIXEL, {0, 1000, 0}, {65535, 50000, 65535},
                              {4, -2, 0}, output.data(), NQ_COLOR_FORMAT_RGB_PIXEL, pixel_count};
    ASSERT_EQ(to_48.run(call), NQ_COLOR_NO_ERROR);
    for (int i = 0; i < pixel_count; ++i) {
        const double b = contents[0](input[3 * i]) & 0xFFFF;
        const double g = contents[1](input[3 * i + 1]) & 0xFFFF;
        const double r = contents[2](input[3 * i + 2]) & 0xFFFF;
        ASSERT_EQ(output[3 * i], finish_channel(0.5 * r + 0.25 * g, 0, 65535, contents[5], 0)) << "pixel " << i;
        ASSERT_EQ(output[3 * i + 1], finish_channel(0.125 * r + 0.75 * g + 0.125 * b, 1000, 50000, contents[4], -2))
            << "pixel " << i;
        ASSERT_EQ(output[3 * i + 2], finish_channel(0.5 * g + 3.0 * b, 0, 65535, contents[3], 4)) << "pixel " << i;
    }

    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(live_tables_in_loaded_LUT_library(), live_before);
    nq_color_processing_module_terminate();

    const std::vector<std::string> lines = read_lines(log_path);
    ASSERT_EQ(lines.size(), 2u);
    const auto notice = parse_log_line(lines[0]);
    const auto timing = parse_log_line(lines[1]);
    ASSERT_TRUE(notice && timing) << lines[0] << "\n" << lines[1];
    for (const Log_line* line : {&*notice, &*timing}) {
        EXPECT_EQ(line->priority, "INFO");
        EXPECT_EQ(line->origin, "CORVANE_XVR_COLOR_PROCESSING");
        EXPECT_EQ(line->process, ::getpid());
        EXPECT_NE(line->file.find("color_processing/corvane_xvr_color_processing"), std::string::npos) << line->file;
    }
    EXPECT_EQ(notice->line, 133);
    EXPECT_EQ(notice->function, "nq_color_create_color_processor");
    EXPECT_EQ(notice->message, "Creating a color processor instance!");
    EXPECT_TRUE(std::regex_match(timing->message,
                                 std::regex("color processing transform 48 to 48 takes -?[0-9.]+ microseconds\\.")))
        << timing->message;
}

// Samples are 16-bit whatever the input tables' size: one at or above a table's entry count reads
// the zero that the table library keeps there, so the channel enters the matrix as 0. Run under
// the address sanitizer, this also shows that the read stays inside the table's memory.
TEST(Core_with_real_companions, samples_past_a_small_input_table_enter_the_matrix_as_zero)
{
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    void* processor = nq_color_create_color_processor(4, 16);
    ASSERT_NE(processor, nullptr);
    for (int t = 0; t < 3; ++t) {
        for (int v = 0; v < 16; ++v) table_getters[t](processor)[v] = 1000 + 7 * v;
    }
    ASSERT_EQ(nq_color_enable_input_LUTs(processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    const std::vector<std::uint16_t> samples = {0, 15, 16, 17, 255, 4096, 65535};
    std::vector<std::uint16_t> input, output(3 * samples.size(), 0xBEEF), expected;
    for (std::uint16_t sample : samples) {
        input.insert(input.end(), 3, sample);
        expected.insert(expected.end(), 3, static_cast<std::uint16_t>(sample < 16 ? 1000 + 7 * sample : 0));
    }
    const auto pixels = static_cast<std::int32_t>(samples.size());
    ASSERT_EQ(to_48.run(call_of(processor, input.data(), output.data(), pixels)), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(output, expected);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    nq_color_processing_module_terminate();
}

}  // namespace
