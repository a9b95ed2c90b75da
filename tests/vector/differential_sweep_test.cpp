// Every one of the 62,208 option combinations through the public calls: a processor at the
// vector level under test against one at level 0 (the scalar engine alone), bit for bit,
// including a margin of sentinel samples after the pixels. Pixel counts around the vector
// widths make the scalar engine finish every call the vector library leaves a remainder of.
// Runs with the build's real libraries on the search path.
#include "vector_test_support.hpp"

#include <corvane_xvr_color_processing.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <array>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace vector_test;

// Row-major; rows yield red, green and blue. Each reaches another case of the vector
// libraries' exactness argument; the last three are appended to the identity twice.
struct Matrix_case {
    const char* name;
    std::array<float, 9> first;
    std::array<float, 9> second;
};

constexpr std::array<float, 9> identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

const Matrix_case matrices[] = {
    {"ordinary", {1.164f, 0.0f, 1.596f, 1.164f, -0.392f, -0.813f, 1.164f, 2.017f, 0.0f}, identity},
    {"exact ties and negative sums", {0.5f, 0.25f, 0.25f, 1.5f, -0.5f, 0.0f, -1.5f, 0.5f, -0.75f}, identity},
    {"identity with tiny cross terms", {1.0f, 1e-5f, -3e-6f, 2e-6f, 1.0f, 1e-5f, -1e-5f, 5e-6f, 1.0f}, identity},
    {"beyond int32", {40000.0f, -30000.0f, 50000.0f, -65536.0f, 1.0f, 0.0f, 32768.5f, 32768.5f, 1.0f}, identity},
    {"cancelling, exact only with error terms", {524288.0f, 0.49999997f, -524288.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f},
     identity},
    {"spread left to the scalar engine", {1.0f, 8.6736174e-19f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f}, identity},
    {"NaN column", {1.0f, __builtin_nanf(""), 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f}, identity},
    // 1e30 squared overflows to an infinity on the diagonal, the rest stays finite.
    {"infinite diagonal", {1e30f, 0.0f, 0.0f, 0.0f, 0.5f, 0.0f, 0.0f, 0.0f, -1e30f},
     {1e30f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1e30f}},
};

using Table_getter = int32_t* (*)(void*);
constexpr Table_getter table_getters[6] = {nq_color_get_blue_input_LUT,  nq_color_get_green_input_LUT,
                                           nq_color_get_red_input_LUT,   nq_color_get_blue_output_LUT,
                                           nq_color_get_green_output_LUT, nq_color_get_red_output_LUT};

// Six tables of random 32-bit entries: the input tables' high bits must be ignored, the output
// entries are used whole, negative ones included.
using Table_set = std::array<std::vector<int32_t>, 6>;

Table_set random_tables(Sample_source& source, bool same_input_tables)
{
    Table_set tables;
    for (auto& table : tables) {
        table.resize(65536);
        for (auto& entry : table) entry = static_cast<int32_t>(source.engine()());
    }
    // Identical input tables keep grey pixels grey, where the cancelling matrix matters.
    if (same_input_tables) tables[1] = tables[2] = tables[0];
    return tables;
}

// The arguments of one transform call besides the processor and the buffers.
struct Call {
    Options options;
    NQ_COLOR_FORMAT input_format, output_format;
    uint16_t min[3], max[3];  // blue, green, red
    int32_t shift[3];
    int32_t pixel_count;
};

class Processor {
public:
    explicit Processor(int level) : m_handle(nq_color_create_color_processor_test(16, 16, level)) {}
    ~Processor() { nq_color_destroy_color_processor(m_handle); }
    Processor(const Processor&) = delete;
    Processor& operator=(const Processor&) = delete;

    bool made() const { return m_handle != nullptr; }

    void load(const Table_set& tables)
    {
        for (int t = 0; t < 6; ++t) {
            int32_t* data = table_getters[t](m_handle);
            std::copy(tables[static_cast<std::size_t>(t)].begin(), tables[static_cast<std::size_t>(t)].end(), data);
        }
    }

    void set_matrix(const Matrix_case& matrix)
    {
        nq_color_clear_matrix(m_handle);
        nq_color_append_matrix(m_handle, matrix.first.data());
        nq_color_append_matrix(m_handle, matrix.second.data());
    }

    template <typename T>
    int run(const Call& c, const uint16_t* input, std::vector<T>& output)
    {
        const Options& o = c.options;
        nq_color_enable_input_LUTs(m_handle, o.input_LUT[0], o.input_LUT[1], o.input_LUT[2]);
        nq_color_enable_output_LUTs(m_handle, o.output_LUT[0], o.output_LUT[1], o.output_LUT[2]);
        auto transform = choose<T>(o.fourth_channel);
        return transform(m_handle, input, c.input_format, c.min[0], c.max[0], c.min[1], c.max[1], c.min[2], c.max[2],
                         c.shift[0], c.shift[1], c.shift[2], output.data(), c.output_format, c.pixel_count);
    }

private:
    template <typename T>
    static auto choose(bool fourth_channel)
    {
        if constexpr (sizeof(T) == 2) {
            return fourth_channel ? nq_color_transform_48_to_64 : nq_color_transform_48_to_48;
        } else {
            return fourth_channel ? nq_color_transform_48_to_32 : nq_color_transform_48_to_24;
        }
    }

    void* m_handle;
};

class Module {
public:
    Module() : m_status(nq_color_processing_module_initialize()) {}
    ~Module() { nq_color_processing_module_terminate(); }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    int status() const { return m_status; }

private:
    int m_status;
};

// The vector library of `level` is loaded (by the processors) and accepts this processor.
bool vector_library_active(int level)
{
    const std::string kind = level == 2 ? "avx2" : "sse";
    void* library = dlopen(("libcorvane_xvr_color_processing_vector_" + kind + ".so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) return false;
    auto initialize = reinterpret_cast<int (*)()>(
        dlsym(library, ("nq_color_processing_vector_" + kind + "_module_initialize").c_str()));
    const bool active = initialize != nullptr && initialize() == 0;
    dlclose(library);
    return active;
}

class Sweep {
public:
    explicit Sweep(uint32_t seed) : m_source(seed) {}

    Call next_call(int index)
    {
        static constexpr int32_t counts[] = {0, 1, 3, 4, 5, 7, 8, 9, 15, 16, 17, 23, 33, 255, 256, 257, 301, 389, 515};
        Call c{};
        c.options = decode_options(index);
        c.input_format = spelled(c.options.input_format);
        c.output_format = spelled(c.options.output_format);
        for (int channel = 0; channel < 3; ++channel) {
            clamp_bounds(c.min[channel], c.max[channel]);
            const int state = c.options.shift_state[channel];
            c.shift[channel] = state == 1 ? m_source.uniform(1, 15) : state == 2 ? m_source.uniform(-15, -1) : 0;
        }
        c.pixel_count = counts[m_source.uniform(0, static_cast<int32_t>(std::size(counts)) - 1)];
        return c;
    }

    Sample_source& source() { return m_source; }

private:
    // Planar is also spelled as values the calls accept and the engine reads as planar.
    NQ_COLOR_FORMAT spelled(int format)
    {
        if (format != 0) return static_cast<NQ_COLOR_FORMAT>(format);
        static constexpr int32_t planar[3] = {0, -1, INT32_MIN};
        return static_cast<NQ_COLOR_FORMAT>(planar[m_source.uniform(0, 2)]);
    }

    void clamp_bounds(uint16_t& min, uint16_t& max)
    {
        if (m_source.uniform(0, 3) == 0) {
            min = 0;
            max = 65535;
            return;
        }
        const int32_t a = m_source.uniform(0, 65535), b = m_source.uniform(0, 65535);
        min = static_cast<uint16_t>(a < b ? a : b);
        max = static_cast<uint16_t>(a < b ? b : a);
    }

    Sample_source m_source;
};

template <typename T>
std::vector<T> sentinel_buffer(const Call& c)
{
    const std::size_t channels = c.options.fourth_channel ? 4 : 3;
    return std::vector<T>(channels * static_cast<std::size_t>(c.pixel_count) + 64, static_cast<T>(0xA5A5u));
}

template <typename T>
void compare_one(Processor& scalar, Processor& vector, const Call& c, const std::vector<uint16_t>& input,
                 const std::string& context)
{
    std::vector<T> expected = sentinel_buffer<T>(c), actual = sentinel_buffer<T>(c);
    ASSERT_EQ(scalar.run(c, input.data(), expected), NQ_COLOR_NO_ERROR) << context;
    ASSERT_EQ(vector.run(c, input.data(), actual), NQ_COLOR_NO_ERROR) << context;
    const long at = first_difference(expected, actual);
    ASSERT_EQ(at, -1) << context << ": sample " << at << " is " << +actual[static_cast<std::size_t>(at)]
                      << ", the scalar engine wrote " << +expected[static_cast<std::size_t>(at)];
}

class Differential_sweep : public testing::TestWithParam<int> {};

TEST_P(Differential_sweep, EveryCombinationMatchesTheScalarEngine)
{
    const int level = GetParam();
    if (!processor_runs_level(level)) {
        GTEST_SKIP() << "this processor cannot run the " << level_name(level) << " library";
    }
    Module module;
    ASSERT_EQ(module.status(), NQ_COLOR_NO_ERROR) << "libcorvane_xvr_LUT.so not found";
    Processor scalar(0), vector(level);
    ASSERT_TRUE(scalar.made() && vector.made());
    ASSERT_TRUE(vector_library_active(level)) << level_name(level) << " library missing or refused";

    Sweep sweep(20261123u + static_cast<uint32_t>(level));
    const Table_set tables[2] = {random_tables(sweep.source(), false), random_tables(sweep.source(), true)};
    constexpr int combinations_per_table_set = 4096;
    constexpr int matrix_count = static_cast<int>(std::size(matrices));
    for (int index = 0; index < option_combinations; ++index) {
        if (index % combinations_per_table_set == 0) {
            const Table_set& set = tables[(index / combinations_per_table_set) % 2];
            scalar.load(set);
            vector.load(set);
        }
        // The matrices take turns, each meeting every kind of option many times.
        const Matrix_case& matrix = matrices[(index / 2) % matrix_count];
        scalar.set_matrix(matrix);
        vector.set_matrix(matrix);
        const Call c = sweep.next_call(index);
        std::vector<uint16_t> input = sweep.source().pixels(c.pixel_count, c.options.input_format);
        input.resize(input.size() + 3);  // never empty: the calls refuse a null buffer
        const std::string context = describe(c.options) + ", " + std::to_string(c.pixel_count) + " pixels, matrix " +
                                    matrix.name;
        if (c.options.eight_bit) {
            compare_one<uint8_t>(scalar, vector, c, input, context);
        } else {
            compare_one<uint16_t>(scalar, vector, c, input, context);
        }
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Level, Differential_sweep, testing::Values(1, 2),
                         [](const testing::TestParamInfo<int>& parameter) { return std::string(level_name(parameter.param)); });

}  // namespace
