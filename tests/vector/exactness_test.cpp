// The vector libraries called directly, beside the scalar engine on the same records: a matrix
// for each case of the exactness argument with pixels that reach the int32 limits and the clamp
// bounds, how many pixels each call claims, the caller's SSE control state, repeated
// initialisation and transforms on two threads at once.
#include "direct_calls.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <thread>

namespace {

using namespace vector_test;

enum class Pixels {
    random,      // uniform, with 0 and 65535 often, a third grey
    limits,      // samples next to 0, 32768 and 65535 only: sums reach the int32 limits
    cancelling,  // red = blue >= 32768, green small and odd: large terms cancel, a tiny one decides
};

enum class Claim { all, none };

struct Exactness_case {
    const char* name;
    std::array<float, 9> matrix;  // row-major, rows yield red, green, blue
    Pixels pixels;
    Claim claim;
};

constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float two_to_minus_60 = 8.6736174e-19f;

const Exactness_case cases[] = {
    {"ordinary colour matrix", {0.299f, 0.587f, 0.114f, -0.168736f, -0.331264f, 0.5f, 0.5f, -0.418688f, -0.081312f},
     Pixels::random, Claim::all},
    {"small coefficients near 2^-11", {1.1f, 0.000488f, -0.000977f, -0.00049f, 0.9f, 0.0012f, 0.25f, 0.000611f, 1.3f},
     Pixels::random, Claim::all},
    {"exact ties", {0.5f, 0.5f, 0.5f, 1.5f, 0.0f, 0.0f, 0.25f, 0.25f, 0.5f}, Pixels::limits, Claim::all},
    {"all zero", {0, 0, 0, 0, 0, 0, 0, 0, 0}, Pixels::random, Claim::all},
    {"int32 limits", {32768.0f, 0.5f, 0.5f, -32768.0f, -0.5f, 0.0f, 32768.0f, 0.5f, -0.5f}, Pixels::limits, Claim::all},
    {"identity with tiny cross terms", {1.0f, 1e-5f, -3e-6f, 2e-6f, 1.0f, 1e-5f, -1e-5f, 5e-6f, 1.0f}, Pixels::random,
     Claim::all},
    {"huge coefficients", {3e9f, 0.75f, 1.0f, -4e9f, 1.0f, 0.25f, 65536.0f, -1.5e9f, 0.75f}, Pixels::random, Claim::all},
    // On cancelling pixels the sum lies 2^-25 times green from an integer; plain double
    // arithmetic, which rounds the large intermediate, lands on the integer instead. The first
    // matrix needs 56 bits, the fewest for which that happens, the second up to 62.
    {"exact only with error terms, 56 bits", {8192.0f, 0.49999997f, -8192.0f, 8192.0f, 0.49999997f, -8192.0f,
                                              -8192.0f, 0.49999997f, 8192.0f},
     Pixels::cancelling, Claim::all},
    {"exact only with error terms, 62 bits", {524288.0f, 0.49999997f, -524288.0f, 16384.0f, 0.49999997f, -16384.0f,
                                              262144.0f, -0.49999997f, -262144.0f},
     Pixels::cancelling, Claim::all},
    {"NaN and infinities", {nan, 1.0f, 0.0f, inf, 0.0f, 1.0f, inf, -inf, 1.0f}, Pixels::limits, Claim::all},
    {"one infinite row beside a spread row", {1.0f, two_to_minus_60, 0.0f, -inf, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f},
     Pixels::random, Claim::none},
    {"a spread left to the scalar engine", {1.0f, two_to_minus_60, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f},
     Pixels::cancelling, Claim::none},
    {"a subnormal coefficient", {1.0f, 1e-40f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f}, Pixels::random, Claim::none},
    {"cancellation beyond 64 bits", {1125899906842624.0f, 1.25f, -1125899906842624.0f, 0, 1, 0, 0, 0, 1}, Pixels::cancelling,
     Claim::none},
};

std::vector<uint16_t> make_pixels(Pixels kind, int32_t n, int format, Sample_source& source)
{
    if (kind == Pixels::random) return source.pixels(n, format);
    static constexpr uint16_t near_limits[] = {0, 1, 2, 32767, 32768, 65533, 65534, 65535};
    const std::size_t count = static_cast<std::size_t>(n);
    std::vector<uint16_t> buffer(3 * count);
    for (std::size_t i = 0; i < count; ++i) {
        uint16_t samples[3];  // in memory order; the middle one is green in every layout
        if (kind == Pixels::limits) {
            for (auto& sample : samples) sample = near_limits[source.uniform(0, 7)];
        } else {
            samples[0] = samples[2] = static_cast<uint16_t>(source.uniform(32768, 65535));
            samples[1] = static_cast<uint16_t>(2 * source.uniform(0, 63) + 1);
        }
        for (std::size_t channel = 0; channel < 3; ++channel) {
            buffer[format == 1 || format == 2 ? 3 * i + channel : channel * count + i] = samples[channel];
        }
    }
    return buffer;
}

class Exactness : public testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        if (!processor_runs_level(GetParam())) {
            GTEST_SKIP() << "this processor cannot run the " << level_name(GetParam()) << " library";
        }
        ASSERT_TRUE(m_library.complete()) << "library or entry point missing";
        ASSERT_EQ(m_library.initialize(), 0);
    }
    void TearDown() override
    {
        if (m_library.complete()) m_library.terminate();
    }

    // Runs one record both ways; returns the claimed count, or -1 after a failed comparison.
    template <typename T>
    int compare(const Transform_arguments<T>& record, const std::string& context)
    {
        const std::size_t samples = output_samples(record) + 32;
        std::vector<T> expected(samples, T{0x5A}), actual(samples, T{0x5A});
        Transform_arguments<T> scalar_record = record, vector_record = record;
        scalar_record.output_buffer = expected.data();
        vector_record.output_buffer = actual.data();
        scalar_process(scalar_record, 0);
        const int claimed = vector_then_scalar(m_library, vector_record);
        const long at = first_difference(expected, actual);
        EXPECT_EQ(at, -1) << context << ": sample " << at << " is " << +actual[static_cast<std::size_t>(at)]
                          << ", the scalar engine wrote " << +expected[static_cast<std::size_t>(at)];
        return at == -1 ? claimed : -1;
    }

    Vector_library m_library{GetParam()};
    Table_set m_tables{7u};
};

TEST_P(Exactness, EveryCaseMatchesTheScalarEngineAndClaimsAsItsTierAllows)
{
    const int32_t width = vector_width(GetParam());
    Sample_source source(99u);
    for (const Exactness_case& c : cases) {
        // Plain options for the matrix alone, then random ones around it.
        for (int variant = 0; variant < 24; ++variant) {
            const Options o = variant == 0 ? Options{1, 1, {}, {}, {}, false, false}
                                           : decode_options(source.uniform(0, option_combinations - 1));
            const int32_t n = 64 * width + source.uniform(0, width - 1);
            const std::vector<uint16_t> input = make_pixels(c.pixels, n, o.input_format, source);
            const std::string context = std::string(c.name) + ", " + describe(o);
            const int claimed =
                o.eight_bit ? compare(record_for<uint8_t>(o, input.data(), c.matrix.data(), pointers(m_tables), n), context)
                            : compare(record_for<uint16_t>(o, input.data(), c.matrix.data(), pointers(m_tables), n), context);
            if (claimed < 0) return;
            EXPECT_EQ(claimed, c.claim == Claim::all ? n - n % width : 0) << context;
        }
    }
}

TEST_P(Exactness, CountsBelowOneVectorOrNegativeClaimNothing)
{
    const int32_t width = vector_width(GetParam());
    const std::array<float, 9> identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const uint16_t input[3 * 16] = {};
    uint16_t output[4 * 16] = {};
    for (const int32_t n : {INT32_MIN, -width, -1, 0, 1, width - 1, width, width + 1}) {
        Transform_arguments<uint16_t> record = record_for<uint16_t>(Options{1, 1, {}, {}, {}, false, false}, input,
                                                                    identity.data(), pointers(m_tables), n);
        record.output_buffer = output;
        EXPECT_EQ(m_library.transform(record), n < width ? 0 : width) << n << " pixels";
    }
}

// MXCSR as the caller may leave it: directed rounding, flush-to-zero, denormals-are-zero,
// exceptions unmasked (an unmasked invalid operation would trap on a NaN sum), sticky flags.
unsigned read_mxcsr()
{
    unsigned value = 0;
    asm volatile("stmxcsr %0" : "=m"(value));
    return value;
}

void write_mxcsr(unsigned value)
{
    asm volatile("ldmxcsr %0" : : "m"(value));
}

TEST_P(Exactness, TheCallersSSEControlStateNeitherMattersNorChanges)
{
    const unsigned round_toward_zero = 0x6000, round_up = 0x4000, round_down = 0x2000, flush_to_zero = 0x8000;
    const unsigned denormals_are_zero = 0x40, all_masked = 0x1F80, invalid_unmasked = 0x1F00, sticky_flags = 0x3F;
    const unsigned states[] = {round_toward_zero | flush_to_zero | denormals_are_zero | all_masked,
                               round_up | invalid_unmasked | sticky_flags, round_down | all_masked | 0x21};
    const int32_t n = 40 * vector_width(GetParam()) + 3;
    Sample_source source(5u);
    const unsigned saved = read_mxcsr();
    for (const Exactness_case& c : cases) {
        const std::vector<uint16_t> input = make_pixels(c.pixels, n, 1, source);
        for (const unsigned state : states) {
            const Options o{1, 2, {}, {}, {}, true, false};
            Transform_arguments<uint16_t> record =
                record_for<uint16_t>(o, input.data(), c.matrix.data(), pointers(m_tables), n);
            std::vector<uint16_t> expected(output_samples(record)), actual(output_samples(record));
            record.output_buffer = expected.data();
            scalar_process(record, 0);
            record.output_buffer = actual.data();
            write_mxcsr(state);
            const int claimed = m_library.transform(record);
            const unsigned after = read_mxcsr();
            write_mxcsr(saved);
            scalar_process(record, claimed);
            EXPECT_EQ(after, state) << c.name;
            EXPECT_EQ(first_difference(expected, actual), -1) << c.name << ", MXCSR " << std::hex << state;
        }
    }
}

TEST_P(Exactness, StatelessAcrossInitialisationsAndThreads)
{
    // Two more initialisations while one is active, as several processors do.
    ASSERT_EQ(m_library.initialize(), 0);
    ASSERT_EQ(m_library.initialize(), 0);
    m_library.terminate();
    m_library.terminate();

    struct Job {
        std::vector<uint16_t> input;
        Transform_arguments<uint16_t> record;
        std::vector<uint16_t> expected;
    };
    Sample_source source(17u);
    std::vector<Job> jobs;
    for (const Exactness_case& c : cases) {
        Job job;
        const int32_t n = 512 * vector_width(GetParam()) + 1;
        job.input = make_pixels(c.pixels, n, 0, source);
        job.record = record_for<uint16_t>(decode_options(source.uniform(0, option_combinations / 2 - 1) * 2),
                                          job.input.data(), c.matrix.data(), pointers(m_tables), n);
        job.expected.resize(output_samples(job.record));
        job.record.output_buffer = job.expected.data();
        scalar_process(job.record, 0);
        jobs.push_back(std::move(job));
    }
    // Each thread runs every job repeatedly into its own buffers, the two in opposite orders.
    auto run = [&](bool reverse, int& mismatches) {
        for (int round = 0; round < 8; ++round) {
            for (std::size_t k = 0; k < jobs.size(); ++k) {
                const Job& job = jobs[reverse ? jobs.size() - 1 - k : k];
                std::vector<uint16_t> output(job.expected.size());
                Transform_arguments<uint16_t> record = job.record;
                record.output_buffer = output.data();
                vector_then_scalar(m_library, record);
                mismatches += output != job.expected;
            }
        }
    };
    int first_mismatches = 0, second_mismatches = 0;
    std::thread first(run, false, std::ref(first_mismatches));
    std::thread second(run, true, std::ref(second_mismatches));
    first.join();
    second.join();
    EXPECT_EQ(first_mismatches + second_mismatches, 0);
}

INSTANTIATE_TEST_SUITE_P(Level, Exactness, testing::Values(1, 2),
                         [](const testing::TestParamInfo<int>& parameter) { return std::string(level_name(parameter.param)); });

}  // namespace
