// The vector libraries called directly, beside the scalar engine on the same records: a matrix
// for each case of the exactness argument, with pixels that reach the int32 limits and the clamp
// bounds, counts around the step width, under the MXCSR states a caller may leave, and how many
// pixels each call claims; transforms on two threads at once after repeated initialisation; and
// buffers and tables against inaccessible pages.
#include "control_words.hpp"
#include "direct_calls.hpp"
#include "exactness_tier.hpp"
#include "guarded_memory.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>

namespace {

using namespace vector_test;

enum class Pixels {
    random,      // uniform, 0 and 65535 often, a third grey
    limits,      // samples next to 0, 32768 and 65535 only: sums reach the int32 limits
    cancelling,  // red = blue >= 32768, green small and odd: large terms cancel, a tiny one decides
};

struct Exactness_case {
    const char* name;
    std::array<float, 9> matrix;  // row-major, rows yield red, green, blue
    Pixels pixels;
    Exactness_tier tier;  // scalar_only: the matrix must be left to the scalar engine
};

constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float two_to_minus_60 = 8.6736174e-19f;

const Exactness_case cases[] = {
    {"ordinary", {0.299f, 0.587f, 0.114f, -0.168736f, -0.331264f, 0.5f, 0.5f, -0.418688f, -0.081312f},
     Pixels::random, Exactness_tier::fixed_point},
    {"small coefficients near 2^-11", {1.1f, 0.000488f, -0.000977f, -0.00049f, 0.9f, 0.0012f, 0.25f, 0.000611f, 1.3f},
     Pixels::random, Exactness_tier::plain},
    {"exact ties", {0.5f, 0.5f, 0.5f, 1.5f, 0, 0, 0.25f, 0.25f, 0.5f}, Pixels::limits, Exactness_tier::fixed_point},
    {"all zero", {0, 0, 0, 0, 0, 0, 0, 0, 0}, Pixels::random, Exactness_tier::fixed_point},
    {"fixed-point pieces near their 32-bit limits", {8000, -8000, 8000, -8000, 8000, -8000, 7999.5f, 0.25f, -8000},
     Pixels::limits, Exactness_tier::fixed_point},
    {"int32 limits", {32768, 0.5f, 0.5f, -32768, -0.5f, 0, 32768, 0.5f, -0.5f}, Pixels::limits, Exactness_tier::plain},
    {"identity with tiny cross terms", {1, 1e-5f, -3e-6f, 2e-6f, 1, 1e-5f, -1e-5f, 5e-6f, 1},
     Pixels::random, Exactness_tier::compensated},
    {"huge coefficients", {3e9f, 0.75f, 1, -4e9f, 1, 0.25f, 65536, -1.5e9f, 0.75f},
     Pixels::random, Exactness_tier::plain},
    // On cancelling pixels the sum lies 2^-25 times green from an integer; plain double
    // arithmetic, which rounds the large intermediate, lands on the integer instead. The first
    // matrix needs 56 bits, the fewest for which that happens, the second up to 62.
    {"exact only with error terms, 56 bits", {8192, 0.49999997f, -8192, 8192, 0.49999997f, -8192, -8192, 0.49999997f, 8192},
     Pixels::cancelling, Exactness_tier::compensated},
    {"exact only with error terms, 62 bits",
     {524288, 0.49999997f, -524288, 16384, 0.49999997f, -16384, 262144, -0.49999997f, -262144},
     Pixels::cancelling, Exactness_tier::compensated},
    {"NaN and infinities", {nan, 1, 0, inf, 0, 1, inf, -inf, 1}, Pixels::limits, Exactness_tier::plain},
    {"infinite row beside a spread row", {1, two_to_minus_60, 0, -inf, 1, 0, 0, 0, 1},
     Pixels::random, Exactness_tier::scalar_only},
    {"a spread", {1, two_to_minus_60, 0, 0, 1, 0, 0, 0, 1}, Pixels::cancelling, Exactness_tier::scalar_only},
    {"a subnormal coefficient", {1, 1e-40f, 0, 0, 1, 0, 0, 0, 1}, Pixels::random, Exactness_tier::scalar_only},
    {"cancellation beyond 64 bits", {1125899906842624.0f, 1.25f, -1125899906842624.0f, 0, 1, 0, 0, 0, 1},
     Pixels::cancelling, Exactness_tier::scalar_only},
};

std::vector<uint16_t> make_pixels(Pixels kind, int32_t n, int format, Sample_source& source)
{
    static constexpr uint16_t near_limits[] = {0, 1, 2, 32767, 32768, 65533, 65534, 65535};
    if (kind == Pixels::random) return source.pixels(n, format);
    return source.pixels(n, format, [&](uint16_t* s) {  // memory order; green is always in the middle
        if (kind == Pixels::limits) {
            for (int c = 0; c < 3; ++c) s[c] = near_limits[source.uniform(0, 7)];
        } else {
            s[0] = s[2] = static_cast<uint16_t>(source.uniform(32768, 65535));
            s[1] = static_cast<uint16_t>(2 * source.uniform(0, 63) + 1);
        }
    });
}

// What a caller may leave in MXCSR: the default; toward zero with flush-to-zero and
// denormals-are-zero; upward with exceptions unmasked (a NaN sum would trap) and flags set;
// downward.
constexpr unsigned caller_mxcsr[] = {0x1F80, 0xFFC0, 0x5F3F, 0x3FA1};

template <typename T>
void check_guarded(const Vector_library& library, const Options& o, const std::vector<uint16_t>& pixels, int32_t n,
                   const Table_set& tables, const Table_pointers& guarded_tables, bool at_end)
{
    const float matrix[9] = {0.9f, 0.05f, 0.05f, 0.1f, 0.8f, 0.1f, 0.0f, 0.3f, 0.7f};
    Options_case<T> test(o, pixels, matrix, n, tables);
    scalar_process(test.for_reference(), 0);
    const std::size_t bytes = (o.fourth_channel ? 4u : 3u) * static_cast<std::size_t>(n) * sizeof(T);
    const Guarded_memory input(pixels.data(), 3 * static_cast<std::size_t>(n) * sizeof(uint16_t), at_end);
    const Guarded_memory output(test.engine_output.data(), bytes, at_end);
    auto record = test.for_engine();
    record.input_buffer = input.copy<uint16_t>(), record.output_buffer = output.copy<T>();
    attach_tables(record, guarded_tables);
    scalar_process(record, library.transform(record));
    EXPECT_EQ(std::memcmp(output.copy<T>(), test.reference_output.data(), bytes), 0) << describe(o) << ", " << n;
}

class Vector_library_test : public testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        if (!processor_runs_level(GetParam())) GTEST_SKIP() << "this processor cannot run the " << level_name(GetParam()) << " library";
        ASSERT_TRUE(library.complete());
        ASSERT_EQ(library.initialize(), 0);
    }

    // The vector library's share under the given MXCSR, then the scalar engine's, against the
    // scalar engine alone; returns the claimed count.
    template <typename T>
    int compare(const Options& o, const std::vector<uint16_t>& input, const float* matrix, int32_t n, unsigned mxcsr,
                const std::string& context)
    {
        Options_case<T> test(o, input, matrix, n, tables);
        scalar_process(test.for_reference(), 0);
        const auto record = test.for_engine();
        const unsigned saved = read_mxcsr();
        write_mxcsr(mxcsr);
        const int claimed = library.transform(record);
        const unsigned after = read_mxcsr();
        write_mxcsr(saved);
        scalar_process(record, claimed);
        EXPECT_EQ(after, mxcsr) << context;
        const auto& expected = test.reference_output;
        const long at = first_difference(expected, test.engine_output);
        EXPECT_EQ(at, -1) << context << ": sample " << at << " is " << +test.engine_output[static_cast<std::size_t>(at)]
                          << ", the scalar engine wrote " << +expected[static_cast<std::size_t>(at)];
        return claimed;
    }

    Vector_library library{GetParam()};
    const Table_set tables = random_tables(7u);
};

TEST_P(Vector_library_test, EveryCaseMatchesTheScalarEngineAndClaimsAsItsTierAllows)
{
    const int32_t step = GetParam() == 2 ? 8 : 4;
    const int32_t counts[] = {INT32_MIN, -1, 0, 1, step - 1, step, step + 1, 64 * step + 3};
    Sample_source source(99u);
    for (const Exactness_case& c : cases) {
        Fixed_point_matrix form;
        EXPECT_EQ(exactness_tier(c.matrix.data(), form), c.tier) << c.name;
        for (int variant = 0; variant < 32; ++variant) {  // the matrix alone first, then random options
            const Options o = variant == 0 ? Options{1, 1, {}, {}, {}, false, false}
                                           : decode_options(source.uniform(0, option_combinations - 1));
            const int32_t n = counts[variant % 8];
            const std::vector<uint16_t> input = make_pixels(c.pixels, n, o.input_format, source);
            const unsigned mxcsr = caller_mxcsr[variant / 8];
            const std::string context = std::string(c.name) + ", " + describe(o) + ", " + std::to_string(n) + " pixels";
            const int claimed = o.eight_bit ? compare<uint8_t>(o, input, c.matrix.data(), n, mxcsr, context)
                                            : compare<uint16_t>(o, input, c.matrix.data(), n, mxcsr, context);
            const bool claims = c.tier != Exactness_tier::scalar_only && n >= step;
            EXPECT_EQ(claimed, claims ? n - n % step : 0) << context;
            if (HasFailure()) return;
        }
    }
}

// Matrices drawn at random across the tiers' limits: coefficients of either sign with 1 to 24
// significant bits, a sixth of them 0, magnitudes up to 2^13 in every other matrix (about one
// in five then has a fixed-point form) and from 2^-25 to 2^15 in the others, so that rows fall
// on both sides of every bound of the fixed-point form and of the plain tier. Each tier must be
// reached often enough to be tested.
TEST_P(Vector_library_test, RandomMatricesMatchTheScalarEngine)
{
    Sample_source source(5u);
    int matrices_of_tier[4] = {};
    for (int m = 0; m < 400; ++m) {
        std::array<float, 9> matrix{};
        for (float& c : matrix) {
            const int bits = source.uniform(1, 24);
            const float mantissa = static_cast<float>(source.uniform(1 << (bits - 1), (1 << bits) - 1));
            const float sign = source.uniform(0, 1) == 0 ? -1.0f : 1.0f;
            const int magnitude = m % 2 == 0 ? source.uniform(-10, 13) : source.uniform(-24, 15);
            c = source.uniform(0, 5) == 0 ? 0.0f : sign * std::ldexp(mantissa, magnitude - bits);
        }
        Fixed_point_matrix form;
        ++matrices_of_tier[static_cast<int>(exactness_tier(matrix.data(), form))];
        const Options o = decode_options(source.uniform(0, option_combinations - 1));
        const int32_t n = 67;
        const std::vector<uint16_t> input = make_pixels(m / 2 % 2 == 0 ? Pixels::random : Pixels::limits, n, o.input_format, source);
        const std::string context = "random matrix " + std::to_string(m) + ", " + describe(o);
        if (o.eight_bit) {
            compare<uint8_t>(o, input, matrix.data(), n, caller_mxcsr[0], context);
        } else {
            compare<uint16_t>(o, input, matrix.data(), n, caller_mxcsr[0], context);
        }
        if (HasFailure()) return;
    }
    for (const int count : matrices_of_tier) {
        EXPECT_GE(count, 20) << "matrices per tier (fixed point, plain, compensated, scalar only)";
    }
}

TEST_P(Vector_library_test, StatelessAcrossInitialisationsAndThreads)
{
    // Two more initialisations while one is active, as several processors make, and a terminate.
    ASSERT_EQ(library.initialize(), 0);
    ASSERT_EQ(library.initialize(), 0);
    library.terminate();
    // Each thread transforms every case into its own buffers, the two in opposite orders.
    const int32_t n = 4099;
    Sample_source source(17u);
    std::vector<std::vector<uint16_t>> inputs, expected;
    for (const Exactness_case& c : cases) {
        inputs.push_back(make_pixels(c.pixels, n, 0, source));
        Options_case<uint16_t> test(Options{}, inputs.back(), c.matrix.data(), n, tables);
        scalar_process(test.for_reference(), 0);
        expected.push_back(test.reference_output);
    }
    auto work = [&](bool reverse, int& mismatches) {
        for (int round = 0; round < 8; ++round) {
            for (std::size_t k = 0; k < std::size(cases); ++k) {
                const std::size_t at = reverse ? std::size(cases) - 1 - k : k;
                Options_case<uint16_t> test(Options{}, inputs[at], cases[at].matrix.data(), n, tables);
                const auto record = test.for_engine();
                scalar_process(record, library.transform(record));
                mismatches += test.engine_output != expected[at];
            }
        }
    };
    int mismatches[2] = {0, 0};
    std::thread first(work, false, std::ref(mismatches[0])), second(work, true, std::ref(mismatches[1]));
    first.join();
    second.join();
    EXPECT_EQ(mismatches[0] + mismatches[1], 0);
}

// Input buffers, output buffers and all six tables placed right before an inaccessible page, and
// then right after one, in every input and output layout, both sample widths, with and without
// the fourth channel, for counts that are multiples of both steps (the library then claims every
// pixel, so a byte it writes past them faults) and counts that are not: an access outside them
// faults. The last entry of the tables is used, and the output must equal the scalar engine's.
TEST_P(Vector_library_test, NoAccessOutsideBuffersAndTablesInAnyLayout)
{
    Sample_source source(11u);
    for (const bool at_end : {true, false}) {
        std::vector<std::unique_ptr<Guarded_memory>> guarded;
        Table_pointers guarded_tables{};
        for (std::size_t t = 0; t < 6; ++t) {
            guarded.push_back(std::make_unique<Guarded_memory>(tables.tables[t].data(), 65536 * sizeof(LUT_entry), at_end));
            guarded_tables[t] = guarded.back()->copy<LUT_entry>();
        }
        for (int layouts = 0; layouts < 36; ++layouts) {
            for (const int32_t n : {1, 3, 5, 7, 8, 9, 19, 37, 255, 256}) {
                Options o = decode_options(source.uniform(0, option_combinations - 1));
                o.input_format = layouts % 3;
                o.output_format = layouts / 3 % 3;
                o.fourth_channel = layouts / 9 % 2 != 0;
                o.eight_bit = layouts / 18 != 0;
                std::vector<uint16_t> pixels = source.pixels(n, o.input_format);
                pixels.resize(3 * static_cast<std::size_t>(n));
                pixels.back() = 65535;  // the last entry of an input table
                if (o.eight_bit) {
                    check_guarded<uint8_t>(library, o, pixels, n, tables, guarded_tables, at_end);
                } else {
                    check_guarded<uint16_t>(library, o, pixels, n, tables, guarded_tables, at_end);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Level, Vector_library_test, testing::Values(1, 2),
                         [](const testing::TestParamInfo<int>& p) { return std::string(level_name(p.param)); });

}  // namespace
