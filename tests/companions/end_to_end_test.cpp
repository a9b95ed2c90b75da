// The colour-processing library running with the real table and logger libraries of this
// project, as a host sees it through the public header: no test doubles anywhere. The test
// process's library search path holds the build's libraries, and its log destination is a
// file named by CORVANE_XVR_LOG_DESTINATION=file:<path>.
#include "log_lines.hpp"

#include <corvane_xvr_color_processing.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int full_table = 65536;

std::string log_path_from_environment()
{
    const char* destination = std::getenv("CORVANE_XVR_LOG_DESTINATION");
    const std::string prefix = "file:";
    if (destination == nullptr || std::string(destination).rfind(prefix, 0) != 0) return "";
    return std::string(destination).substr(prefix.size());
}

// Tables alive in the table library that the colour-processing library opened, read through
// the library's own counter; -1 when that library is not loaded.
int live_tables_in_loaded_LUT_library()
{
    void* library = dlopen("libcorvane_xvr_LUT.so", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) return -1;
    using Count_function = std::int32_t (*)();
    auto count = reinterpret_cast<Count_function>(dlsym(library, "nq_LUT_live_table_count"));
    const int live = count != nullptr ? count() : -1;
    dlclose(library);
    return live;
}

// Deterministic 16-bit samples, with the extremes first.
std::vector<std::uint16_t> test_samples(std::size_t count)
{
    std::vector<std::uint16_t> samples(count);
    const std::uint16_t extremes[] = {0, 65535, 1, 65534, 32767, 32768, 255, 256, 4095, 4096};
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        samples[i] = i < std::size(extremes) ? extremes[i] : static_cast<std::uint16_t>(state >> 16);
    }
    return samples;
}

class Core_with_real_companions : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_log_path = log_path_from_environment();
        ASSERT_FALSE(m_log_path.empty()) << "CORVANE_XVR_LOG_DESTINATION must name a file";
        ::unlink(m_log_path.c_str());
        ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR)
            << "libcorvane_xvr_LUT.so was not found on the library search path";
        m_initialized = true;
    }

    void TearDown() override
    {
        if (m_processor != nullptr) nq_color_destroy_color_processor(m_processor);
        if (m_initialized) nq_color_processing_module_terminate();
    }

    std::vector<Log_line> log_lines() const
    {
        std::vector<Log_line> parsed;
        for (const std::string& text : read_lines(m_log_path)) {
            const auto line = parse_log_line(text);
            EXPECT_TRUE(line) << "not a record line: " << text;
            if (line) parsed.push_back(*line);
        }
        return parsed;
    }

    std::string m_log_path;
    bool m_initialized = false;
    void* m_processor = nullptr;
};

using Info_level = Core_with_real_companions;
using Default_level = Core_with_real_companions;

TEST_F(Info_level, tables_are_made_aligned_and_zeroed_by_the_LUT_library_and_released_with_the_processor)
{
    const int live_before = live_tables_in_loaded_LUT_library();
    ASSERT_GE(live_before, 0);
    m_processor = nq_color_create_color_processor(16, 12);
    ASSERT_NE(m_processor, nullptr);
    EXPECT_EQ(live_tables_in_loaded_LUT_library(), live_before + 6);

    using Getter = std::int32_t* (*)(void*);
    const struct {
        Getter get;
        std::size_t entries;
    } tables[] = {{nq_color_get_blue_input_LUT, 65536},  {nq_color_get_green_input_LUT, 65536},
                  {nq_color_get_red_input_LUT, 65536},   {nq_color_get_blue_output_LUT, 4096},
                  {nq_color_get_green_output_LUT, 4096}, {nq_color_get_red_output_LUT, 4096}};
    for (const auto& table : tables) {
        std::int32_t* data = table.get(m_processor);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 64, 0u);
        EXPECT_GE(malloc_usable_size(data), table.entries * 4 + 16);
        std::size_t non_zero = 0;
        for (std::size_t i = 0; i < table.entries; ++i) non_zero += data[i] != 0;
        EXPECT_EQ(non_zero, 0u);
        EXPECT_EQ(table.get(m_processor), data);
    }

    EXPECT_EQ(nq_color_destroy_color_processor(m_processor), NQ_COLOR_NO_ERROR);
    m_processor = nullptr;
    EXPECT_EQ(live_tables_in_loaded_LUT_library(), live_before);
}

// Independent model of one output channel after the matrix: round half up, clamp, output
// table, shift, narrow to 16 bits.
std::uint16_t finish_channel(double sum, int minimum, int maximum, const std::vector<std::int32_t>& table,
                             int shift)
{
    auto value = static_cast<std::int32_t>(std::floor(sum + 0.5));
    value = std::min(std::max(value, minimum), maximum);
    value = table[static_cast<std::size_t>(value)];
    value = shift >= 0 ? value << shift : value >> -shift;
    return static_cast<std::uint16_t>(value);
}

TEST_F(Info_level, transform_48_to_48_applies_tables_matrix_clamp_and_shifts)
{
    m_processor = nq_color_create_color_processor(16, 16);
    ASSERT_NE(m_processor, nullptr);

    // Entries chosen so that every product and sum is exact in binary and the reference
    // below needs no extended precision. The red input table carries high bits that only the
    // low 16 bits may survive.
    std::vector<std::int32_t> blue_in(full_table), green_in(full_table), red_in(full_table);
    std::vector<std::int32_t> blue_out(full_table), green_out(full_table), red_out(full_table);
    for (int v = 0; v < full_table; ++v) {
        blue_in[v] = v / 2;
        green_in[v] = v;
        red_in[v] = (65535 - v) + (5 << 16);
        blue_out[v] = v >> 4;
        green_out[v] = 65535 - v;
        red_out[v] = v;
    }
    const std::vector<std::int32_t>* sources[] = {&blue_in, &green_in, &red_in, &blue_out, &green_out, &red_out};
    std::int32_t* destinations[] = {
        nq_color_get_blue_input_LUT(m_processor),  nq_color_get_green_input_LUT(m_processor),
        nq_color_get_red_input_LUT(m_processor),   nq_color_get_blue_output_LUT(m_processor),
        nq_color_get_green_output_LUT(m_processor), nq_color_get_red_output_LUT(m_processor)};
    for (int t = 0; t < 6; ++t) std::copy(sources[t]->begin(), sources[t]->end(), destinations[t]);
    ASSERT_EQ(nq_color_enable_input_LUTs(m_processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(nq_color_enable_output_LUTs(m_processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    // Rows yield red, green, blue; columns weight red, green, blue.
    const float matrix[9] = {0.5f, 0.25f, 0.0f, 0.125f, 0.75f, 0.125f, 0.0f, 0.5f, 3.0f};
    ASSERT_EQ(nq_color_append_matrix(m_processor, matrix), NQ_COLOR_NO_ERROR);

    const int pixel_count = 3000;
    const std::vector<std::uint16_t> input = test_samples(3 * pixel_count);  // B, G, R per pixel
    std::vector<std::uint16_t> output(3 * pixel_count, 0xBEEF);
    ASSERT_EQ(nq_color_transform_48_to_48(m_processor, input.data(), NQ_COLOR_FORMAT_BGR_PIXEL,
                                          0, 65535, 1000, 50000, 0, 65535, 4, -2, 0,
                                          output.data(), NQ_COLOR_FORMAT_RGB_PIXEL, pixel_count),
              NQ_COLOR_NO_ERROR);

    for (int i = 0; i < pixel_count; ++i) {
        const double b = blue_in[input[3 * i]] & 0xFFFF;
        const double g = green_in[input[3 * i + 1]] & 0xFFFF;
        const double r = red_in[input[3 * i + 2]] & 0xFFFF;
        const std::uint16_t red = finish_channel(0.5 * r + 0.25 * g, 0, 65535, red_out, 0);
        const std::uint16_t green = finish_channel(0.125 * r + 0.75 * g + 0.125 * b, 1000, 50000, green_out, -2);
        const std::uint16_t blue = finish_channel(0.5 * g + 3.0 * b, 0, 65535, blue_out, 4);
        ASSERT_EQ(output[3 * i], red) << "pixel " << i;
        ASSERT_EQ(output[3 * i + 1], green) << "pixel " << i;
        ASSERT_EQ(output[3 * i + 2], blue) << "pixel " << i;
    }
}

TEST_F(Info_level, transform_48_to_32_narrows_to_8_bits_and_zeroes_the_fourth_plane)
{
    m_processor = nq_color_create_color_processor(16, 16);
    ASSERT_NE(m_processor, nullptr);
    const int pixel_count = 777;
    const std::vector<std::uint16_t> input = test_samples(3 * pixel_count);  // planar B, G, R
    std::vector<std::uint8_t> output(4 * pixel_count, 0xAA);
    ASSERT_EQ(nq_color_transform_48_to_32(m_processor, input.data(), NQ_COLOR_FORMAT_BGR_PLANAR,
                                          0, 65535, 0, 65535, 0, 65535, -8, -8, -8,
                                          output.data(), NQ_COLOR_FORMAT_BGR_PLANAR, pixel_count),
              NQ_COLOR_NO_ERROR);
    for (int plane = 0; plane < 3; ++plane) {
        for (int i = 0; i < pixel_count; ++i) {
            ASSERT_EQ(output[plane * pixel_count + i], input[plane * pixel_count + i] >> 8)
                << "plane " << plane << " pixel " << i;
        }
    }
    for (int i = 0; i < pixel_count; ++i) ASSERT_EQ(output[3 * pixel_count + i], 0) << "pixel " << i;
}

bool is_timing_text(const std::string& message, const std::string& label)
{
    const std::string head = label + " takes ";
    const std::string tail = " microseconds.";
    if (message.rfind(head, 0) != 0 || message.size() <= head.size() + tail.size()) return false;
    if (message.compare(message.size() - tail.size(), tail.size(), tail) != 0) return false;
    const std::string number = message.substr(head.size(), message.size() - head.size() - tail.size());
    char* end = nullptr;
    std::strtod(number.c_str(), &end);
    return *end == '\0';
}

TEST_F(Info_level, creation_notice_and_timing_record_reach_the_log)
{
    m_processor = nq_color_create_color_processor(8, 8);
    ASSERT_NE(m_processor, nullptr);
    const std::uint16_t input[3] = {10, 20, 30};
    std::uint16_t output[3] = {};
    ASSERT_EQ(nq_color_transform_48_to_48(m_processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535, 0,
                                          65535, 0, 65535, 0, 0, 0, output, NQ_COLOR_FORMAT_BGR_PIXEL, 1),
              NQ_COLOR_NO_ERROR);

    const std::vector<Log_line> lines = log_lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].priority, "INFO");
    EXPECT_EQ(lines[0].origin, "CORVANE_XVR_COLOR_PROCESSING");
    EXPECT_EQ(lines[0].process, ::getpid());
    EXPECT_NE(lines[0].file.find("color_processing/corvane_xvr_color_processing"), std::string::npos)
        << lines[0].file;
    EXPECT_EQ(lines[0].line, 133);
    EXPECT_EQ(lines[0].function, "nq_color_create_color_processor");
    EXPECT_EQ(lines[0].message, "Creating a color processor instance!");

    EXPECT_EQ(lines[1].priority, "INFO");
    EXPECT_EQ(lines[1].origin, "CORVANE_XVR_COLOR_PROCESSING");
    EXPECT_EQ(lines[1].line, 101);
    EXPECT_EQ(lines[1].function, "nq_color_processor_transform_impl");
    EXPECT_TRUE(is_timing_text(lines[1].message, "color processing transform 48 to 48")) << lines[1].message;
}

TEST_F(Info_level, bad_input_gets_its_code_an_error_record_and_nothing_written)
{
    m_processor = nq_color_create_color_processor(8, 8);
    ASSERT_NE(m_processor, nullptr);
    std::uint8_t output[3] = {7, 8, 9};
    EXPECT_EQ(nq_color_transform_48_to_24(m_processor, nullptr, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 255, 0,
                                          255, 0, 255, 0, 0, 0, output, NQ_COLOR_FORMAT_BGR_PIXEL, 1),
              NQ_COLOR_NULL_INPUT_BUFFER);
    EXPECT_EQ(output[0], 7);
    EXPECT_EQ(output[1], 8);
    EXPECT_EQ(output[2], 9);

    const std::vector<Log_line> lines = log_lines();
    ASSERT_EQ(lines.size(), 3u);  // notice, error, timing
    EXPECT_EQ(lines[1].priority, "ERROR");
    EXPECT_NE(lines[1].file.find("color_processing/color_correction"), std::string::npos) << lines[1].file;
    EXPECT_EQ(lines[1].line, 114);
    EXPECT_EQ(lines[1].function, "transform");
    EXPECT_EQ(lines[1].message, "ERROR:  The specified input buffer is NULL!");
    EXPECT_TRUE(is_timing_text(lines[2].message, "color processing transform 48 to 24")) << lines[2].message;
}

// Caps the address space a little above what the process uses and creates processors with
// 65536-entry tables until creation fails. Child exit codes: 0 a creation returned null,
// 1 none did.
[[noreturn]] void create_processors_until_memory_runs_out()
{
    long pages = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld", &pages) != 1) pages = 0;
        std::fclose(statm);
    }
    const rlim_t cap = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) +
                       (24u << 20);
    const rlimit limit{cap, cap};
    setrlimit(RLIMIT_AS, &limit);
    std::vector<void*> processors;
    bool refused = false;
    for (int i = 0; i < 200 && !refused; ++i) {
        void* processor = nq_color_create_color_processor(16, 16);
        refused = processor == nullptr;
        if (processor != nullptr) processors.push_back(processor);
    }
    for (void* processor : processors) nq_color_destroy_color_processor(processor);
    _exit(refused ? 0 : 1);
}

TEST_F(Info_level, memory_exhaustion_in_the_LUT_library_is_reported_as_a_memory_failure)
{
    EXPECT_EXIT(create_processors_until_memory_runs_out(), ::testing::ExitedWithCode(0), "");
    int memory_failures = 0;
    for (const Log_line& line : log_lines()) {
        EXPECT_NE(line.line, 63) << "reported as an unknown error: " << line.message;
        if (line.priority == "ERROR" && line.line == 58 && line.function == "create_color_processor_impl" &&
            line.message == "Memory allocation failure when trying to create a color correction instance!")
            ++memory_failures;
    }
    EXPECT_EQ(memory_failures, 1);
}

TEST_F(Default_level, keeps_errors_and_leaves_out_the_notice_and_the_timing)
{
    m_processor = nq_color_create_color_processor(16, 16);
    ASSERT_NE(m_processor, nullptr);
    const std::uint16_t input[3] = {1, 2, 3};
    std::uint16_t output[4] = {};
    EXPECT_EQ(nq_color_transform_48_to_64(m_processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535, 0,
                                          65535, 0, 65535, 0, 0, 0, output, NQ_COLOR_FORMAT_BGR_PIXEL, 1),
              NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_transform_48_to_64(m_processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535, 0,
                                          65535, 0, 65535, 0, 0, 0, nullptr, NQ_COLOR_FORMAT_BGR_PIXEL, 1),
              NQ_COLOR_NULL_OUTPUT_BUFFER);

    const std::vector<Log_line> lines = log_lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].priority, "ERROR");
    EXPECT_EQ(lines[0].line, 120);
    EXPECT_EQ(lines[0].message, "ERROR:  The specified output buffer is NULL!");
}

}  // namespace
