// Every one of the 62,208 option combinations through the public calls: a processor at the
// vector level under test against one at level 0 (the scalar engine alone), bit for bit,
// including sentinel samples after the pixels. Pixel counts around the step widths make the
// scalar engine finish after the vector library. Runs with the build's real libraries.
#include "public_calls.hpp"
#include "vector_test_support.hpp"

#include "modules/loaded_vector_library.hpp"

#include <gtest/gtest.h>

#include <array>
#include <climits>

namespace {

using namespace vector_test;

// Row-major (rows yield red, green, blue); the processor's matrix is identity x first x second.
struct Matrix_case {
    const char* name;
    float first[9], second[9];
};
#define NQ_IDENTITY {1, 0, 0, 0, 1, 0, 0, 0, 1}
const Matrix_case matrices[] = {
    {"ordinary", {1.164f, 0, 1.596f, 1.164f, -0.392f, -0.813f, 1.164f, 2.017f, 0}, NQ_IDENTITY},
    {"ties, negative sums", {0.5f, 0.25f, 0.25f, 1.5f, -0.5f, 0, -1.5f, 0.5f, -0.75f}, NQ_IDENTITY},
    {"tiny cross terms", {1, 1e-5f, -3e-6f, 2e-6f, 1, 1e-5f, -1e-5f, 5e-6f, 1}, NQ_IDENTITY},
    {"beyond int32", {40000, -30000, 50000, -65536, 1, 0, 32768.5f, 32768.5f, 1}, NQ_IDENTITY},
    {"cancelling", {524288, 0.49999997f, -524288, 1, 0, 0, 0, 0, 1}, NQ_IDENTITY},
    {"spread left to the scalar engine", {1, 8.6736174e-19f, 0, 0, 1, 0, 0, 0, 1}, NQ_IDENTITY},
    {"NaN column", {1, __builtin_nanf(""), 0, 0, 1, 0, 0, 0, 1}, NQ_IDENTITY},
    {"infinite diagonal", {1e30f, 0, 0, 0, 0.5f, 0, 0, 0, -1e30f}, {1e30f, 0, 0, 0, 1, 0, 0, 0, 1e30f}},
};

struct Call {
    Options o;
    Transform_call arguments;  // without processor and buffers
};

Call next_call(int index, Sample_source& source)
{
    static constexpr int32_t counts[] = {0, 1, 3, 4, 5, 7, 8, 9, 15, 16, 17, 23, 33, 255, 256, 257, 301, 389, 515};
    static constexpr int32_t planar[3] = {0, -1, INT32_MIN};  // values the calls accept and read as planar
    Call c{decode_options(index), {}};
    Transform_call& a = c.arguments;
    a.pixel_count = counts[source.uniform(0, 18)];
    a.input_format = c.o.input_format ? c.o.input_format : planar[source.uniform(0, 2)];
    a.output_format = c.o.output_format ? c.o.output_format : planar[source.uniform(0, 2)];
    for (int k = 0; k < 3; ++k) {
        source.clamp_bounds(a.clamp_min[k], a.clamp_max[k]);
        const int state = c.o.shift_state[k];
        a.shift[k] = state == 1 ? source.uniform(1, 15) : state == 2 ? source.uniform(-15, -1) : 0;
    }
    return c;
}

template <typename T>
std::vector<T> run(void* processor, const Call& c, const std::vector<uint16_t>& input)
{
    const bool fourth = c.o.fourth_channel;
    const Transform_kind& kind = sizeof(T) == 2 ? (fourth ? to_64 : to_48) : (fourth ? to_32 : to_24);
    std::vector<T> output(kind.output_bytes(c.arguments.pixel_count) / sizeof(T) + 64, T(0xA5A5));
    nq_color_enable_input_LUTs(processor, c.o.input_LUT[0], c.o.input_LUT[1], c.o.input_LUT[2]);
    nq_color_enable_output_LUTs(processor, c.o.output_LUT[0], c.o.output_LUT[1], c.o.output_LUT[2]);
    Transform_call call = c.arguments;
    call.processor = processor;
    call.input = input.data();
    call.output = output.data();
    EXPECT_EQ(kind.run(call), NQ_COLOR_NO_ERROR) << kind.name << call;
    return output;
}

template <typename T>
void compare(void* scalar, void* vector, const Call& c, const std::vector<uint16_t>& input, const std::string& context)
{
    const std::vector<T> expected = run<T>(scalar, c, input), actual = run<T>(vector, c, input);
    const long at = first_difference(expected, actual);
    ASSERT_EQ(at, -1) << context << ": sample " << at << " is " << +actual[static_cast<std::size_t>(at)]
                      << ", the scalar engine wrote " << +expected[static_cast<std::size_t>(at)];
}

class Differential_sweep : public testing::TestWithParam<int> {};

TEST_P(Differential_sweep, EveryCombinationMatchesTheScalarEngine)
{
    const int level = GetParam();
    if (!processor_runs_level(level)) GTEST_SKIP() << "this processor cannot run the " << level_name(level) << " library";
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR) << "libcorvane_xvr_LUT.so not found";
    void* const processors[2] = {nq_color_create_color_processor_test(16, 16, 0),
                                 nq_color_create_color_processor_test(16, 16, level)};
    ASSERT_TRUE(processors[0] && processors[1]);
    EXPECT_TRUE(loaded_vector_library(level).starts) << level_name(level) << " library missing or refused";

    // Random 32-bit entries (the input tables' high bits must be ignored, output entries are
    // used whole); the second set has equal input tables, which keep grey pixels grey.
    Sample_source source(20261123u + static_cast<uint32_t>(level));
    std::array<std::vector<int32_t>, 6> tables[2];
    for (auto& set : tables) {
        for (auto& table : set) table.resize(65536);
        source.fill_tables(set);
    }
    tables[1][1] = tables[1][2] = tables[1][0];
    for (int index = 0; index < option_combinations && !HasFatalFailure(); ++index) {
        const Matrix_case& matrix = matrices[(index / 2) % std::size(matrices)];
        for (void* processor : processors) {
            for (int t = 0; index % 4096 == 0 && t < 6; ++t) {
                const auto& table = tables[index / 4096 % 2][static_cast<std::size_t>(t)];
                std::copy(table.begin(), table.end(), table_getters[t](processor));
            }
            nq_color_clear_matrix(processor);
            nq_color_append_matrix(processor, matrix.first);
            nq_color_append_matrix(processor, matrix.second);
        }
        const Call c = next_call(index, source);
        const std::vector<uint16_t> input = source.pixels(c.arguments.pixel_count, c.o.input_format);
        const std::string context = describe(c.o) + ", " + std::to_string(c.arguments.pixel_count) + " pixels, " + matrix.name;
        if (c.o.eight_bit) {
            compare<uint8_t>(processors[0], processors[1], c, input, context);
        } else {
            compare<uint16_t>(processors[0], processors[1], c, input, context);
        }
    }
    for (void* processor : processors) nq_color_destroy_color_processor(processor);
    nq_color_processing_module_terminate();
}

INSTANTIATE_TEST_SUITE_P(Level, Differential_sweep, testing::Values(1, 2),
                         [](const testing::TestParamInfo<int>& p) { return std::string(level_name(p.param)); });

}  // namespace
