// The float-to-integer step: truncation toward zero, the fixed out-of-range result, and the
// worked values of the rounding rule seen through whole kernels.
#include "transform_case.hpp"

#include "scalar_engine/scalar_process.hpp"
#include "scalar_engine/truncating_conversion.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr int32_t int32_min = std::numeric_limits<int32_t>::min();

uint16_t x87_control_word()
{
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}

TEST(TruncatingConversion, TruncatesTowardZeroAndGivesTheFixedResultOutOfRange)
{
    const std::vector<double> values = {1.7, 2.0, 65535.0, -0.2, -1.0, -1.9, 2147483647.99,
                                        -2147483648.99, 2147483648.0, -2147483649.0, 3e9 + 0.5,
                                        std::nan(""), INFINITY, -INFINITY, 0.0, -0.0};
    const std::vector<int32_t> expected = {1, 2, 65535, 0, -1, -1, 2147483647,
                                           int32_min, int32_min, int32_min, int32_min,
                                           int32_min, int32_min, int32_min, 0, 0};
    std::vector<int32_t> results(values.size());
    convert_to_int32_truncating(values.data(), results.data(), static_cast<int>(values.size()));
    EXPECT_EQ(results, expected);
}

TEST(TruncatingConversion, RestoresTheCallersControlWord)
{
    const uint16_t before = x87_control_word();
    std::vector<double> values(384, 2.5);
    std::vector<int32_t> results(values.size());
    convert_to_int32_truncating(values.data(), results.data(), static_cast<int>(values.size()));
    EXPECT_EQ(x87_control_word(), before);
    EXPECT_EQ(results.front(), 2);
    EXPECT_EQ(results.back(), 2);
    // Round-to-nearest is back: 0.5 + 2^-60 rounds to 0.5 when stored as a double.
    volatile long double sum = 0.5L + std::ldexp(1.0L, -60);
    volatile double stored = static_cast<double>(sum);
    EXPECT_EQ(stored, 0.5);
}

// One 16-bit pixel whose red sum is `coefficient` x 1, through clamp bounds min..max.
int32_t red_result(float coefficient, uint16_t min = 0, uint16_t max = 65535)
{
    Table_set tables(1);
    Transform_case<unsigned short> test(1, tables);
    test.input = {0, 0, 1};  // planar blue, green, red
    test.matrix = {coefficient, 0, 0, 0, 1, 0, 0, 0, 1};
    test.arguments.red_clamp_min = min;
    test.arguments.red_clamp_max = max;
    scalar_process(test.for_engine(), 0);
    return test.engine_output[2];
}

TEST(RoundingRule, WorkedValuesRoundHalfUpAndTruncateNegativesTowardZero)
{
    EXPECT_EQ(red_result(1.2f), 1);
    EXPECT_EQ(red_result(1.5f), 2);
    EXPECT_EQ(red_result(2.5f), 3);
    EXPECT_EQ(red_result(65534.5f), 65535);
    EXPECT_EQ(red_result(-0.7f), 0);
    // -1.5 becomes -1, below every clamp minimum: it ends at the minimum.
    EXPECT_EQ(red_result(-1.5f, 7, 100), 7);
    EXPECT_EQ(red_result(-0.7f, 7, 100), 7);
}

TEST(RoundingRule, OutOfRangeAndNotANumberSumsEndAtTheMinimumNotTheMaximum)
{
    EXPECT_EQ(red_result(3e9f, 11, 60000), 11);
    EXPECT_EQ(red_result(-3e9f, 11, 60000), 11);
    EXPECT_EQ(red_result(std::numeric_limits<float>::quiet_NaN(), 12, 60000), 12);
    EXPECT_EQ(red_result(std::numeric_limits<float>::infinity(), 13, 60000), 13);
    EXPECT_EQ(red_result(-std::numeric_limits<float>::infinity(), 14, 60000), 14);
    // 2^31 - 1 is still in range and is clamped from above.
    EXPECT_EQ(red_result(2147483520.0f, 11, 60000), 60000);
}

int32_t red_result_of_row(float m0, float m1, float m2)
{
    Table_set tables(1);
    Transform_case<unsigned short> test(1, tables);
    test.input = {1, 1, 1};
    test.matrix = {m0, m1, m2, 0, 1, 0, 0, 0, 1};
    scalar_process(test.for_engine(), 0);
    return test.engine_output[2];
}

TEST(RoundingRule, SumsKeepTheExtendedSignificand)
{
    // (2^60 + 0.75) - 2^60 is 0.75 with a 64-bit significand and 0 in double arithmetic:
    // 1.25 truncates to 1, where double sums would give 0.
    EXPECT_EQ(red_result_of_row(std::ldexp(1.0f, 60), 0.75f, -std::ldexp(1.0f, 60)), 1);
}

TEST(RoundingRule, TheSumIsRoundedToDoubleBeforeTheTruncation)
{
    // 1.5 - 2^-60 + 0.5 = 2 - 2^-60, exact in extended precision. Rounded to the nearest double
    // it is 2.0 and truncates to 2; truncating the extended value directly would give 1.
    EXPECT_EQ(red_result_of_row(1.5f, -std::ldexp(1.0f, -60), 0.0f), 2);
}

}  // namespace
