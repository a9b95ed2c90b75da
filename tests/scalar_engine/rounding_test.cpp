// The float-to-integer step: truncation toward zero, the fixed out-of-range result, and worked
// values of the rounding rule through whole kernels, which the sweep's reference must agree with.
#include "control_words.hpp"
#include "transform_case.hpp"

#include "scalar_engine/scalar_process.hpp"
#include "scalar_engine/truncating_conversion.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr int32_t int32_min = std::numeric_limits<int32_t>::min();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(TruncatingConversion, TruncatesTowardZeroGivesTheFixedResultOutOfRangeAndRestoresRounding)
{
    const uint16_t before = x87_control_word();
    std::vector<double> values = {1.7, 2.0, 65535.0, -0.2, -1.0, -1.9, 2147483647.99, -2147483648.99, 2147483648.0,
                                  -2147483649.0, 3e9 + 0.5, std::nan(""), INFINITY, -INFINITY, 0.0, -0.0};
    const std::vector<int32_t> expected = {1, 2, 65535, 0, -1, -1, 2147483647, int32_min, int32_min,
                                           int32_min, int32_min, int32_min, int32_min, int32_min, 0, 0};
    values.resize(384, 2.5); // three blocks
    std::vector<int32_t> results(values.size());
    convert_to_int32_truncating(values.data(), results.data(), static_cast<int>(values.size()));
    EXPECT_EQ(std::vector<int32_t>(results.begin(), results.begin() + 16), expected);
    EXPECT_EQ(results.back(), 2);
    EXPECT_EQ(x87_control_word(), before);
    // Round-to-nearest is back: 0.5 + 2^-60 rounds to 0.5 when stored as a double.
    volatile long double sum = 0.5L + std::ldexp(1.0L, -60);
    volatile double stored = static_cast<double>(sum);
    EXPECT_EQ(stored, 0.5);
}

// One grey 16-bit pixel of value 1 whose red row is `row`, through red clamp bounds min..max.
TEST(RoundingRule, WorkedValues)
{
    const struct {
        float row[3];
        uint16_t min, max;
        int32_t red;
    } cases[] = {
        {{1.2f, 0, 0}, 0, 65535, 1}, {{1.5f, 0, 0}, 0, 65535, 2}, {{2.5f, 0, 0}, 0, 65535, 3}, // half up
        {{65534.5f, 0, 0}, 0, 65535, 65535}, {{-0.7f, 0, 0}, 0, 65535, 0},
        {{-1.5f, 0, 0}, 7, 100, 7}, {{-0.7f, 0, 0}, 7, 100, 7}, // -1 and 0 are below the minimum
        // Out-of-range and not-a-number sums end at the minimum, not the maximum.
        {{3e9f, 0, 0}, 11, 60000, 11}, {{-3e9f, 0, 0}, 11, 60000, 11}, {{nan, 0, 0}, 12, 60000, 12},
        {{infinity, 0, 0}, 13, 60000, 13}, {{-infinity, 0, 0}, 14, 60000, 14},
        {{2147483520.0f, 0, 0}, 11, 60000, 60000}, // 2^31 - 128 is in range and clamped from above
        // (2^60 + 0.75) - 2^60 is 0.75 with a 64-bit significand, 0 in double arithmetic.
        {{std::ldexp(1.0f, 60), 0.75f, -std::ldexp(1.0f, 60)}, 0, 65535, 1},
        // 1.5 - 2^-60 + 0.5 rounds to the double 2.0; truncated directly, the extended sum gives 1.
        {{1.5f, -std::ldexp(1.0f, -60), 0.0f}, 0, 65535, 2},
    };
    Table_set tables(1);
    for (const auto& c : cases) {
        Transform_case<unsigned short> test(1, tables);
        test.input = {1, 1, 1};
        test.matrix = {c.row[0], c.row[1], c.row[2], 0, 1, 0, 0, 0, 1};
        test.arguments.red_clamp_min = c.min;
        test.arguments.red_clamp_max = c.max;
        scalar_process(test.for_engine(), 0);
        EXPECT_EQ(test.engine_output[2], c.red) << c.row[0] << ", " << c.row[1] << ", " << c.row[2];
    }
}

}  // namespace
