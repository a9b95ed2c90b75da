#include "chart_defaults.hpp"
#include "correction_plan.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

using namespace xvr_color;

namespace {

Options parse(std::vector<std::string> arguments)
{
    return parse_options(arguments);
}

const Run_context sixteen_bit_file{false, 16};
const Run_context eight_bit_file{false, 8};
const Run_context chart{true, 16};

std::string plan_error(std::vector<std::string> arguments, const Run_context& context = sixteen_bit_file)
{
    try {
        make_correction_plan(parse(arguments), context);
    } catch (const Tool_error& error) {
        return error.what();
    }
    return "no error";
}

void expect_channels(const Correction_plan& plan, int clamp_min, int clamp_max, int shift)
{
    for (const Channel_settings& channel : plan.channels) {
        EXPECT_EQ(channel.clamp_min, clamp_min);
        EXPECT_EQ(channel.clamp_max, clamp_max);
        EXPECT_EQ(channel.shift, shift);
    }
}

} // namespace

TEST(CorrectionPlan, AFileWithNoOptionsIsCopiedAtItsOwnDepth)
{
    const Correction_plan plan = make_correction_plan(parse({}), sixteen_bit_file);
    EXPECT_EQ(plan.input_table_bits, 0);
    EXPECT_EQ(plan.output_table_bits, 0);
    EXPECT_FALSE(plan.input_tables);
    EXPECT_FALSE(plan.output_tables);
    EXPECT_TRUE(plan.matrices.empty());
    EXPECT_EQ(plan.output_bits, 16);
    expect_channels(plan, 0, 65535, 0);

    // 8-bit samples arrive widened (v x 257); the right shift by 8 gives them back.
    const Correction_plan narrow = make_correction_plan(parse({}), eight_bit_file);
    EXPECT_EQ(narrow.output_bits, 8);
    expect_channels(narrow, 0, 65535, -8);
}

TEST(CorrectionPlan, TheChartDefaultsFillOnlyWhatIsNotGiven)
{
    const Correction_plan plan = make_correction_plan(parse({}), chart);
    ASSERT_EQ(plan.matrices.size(), 1u);
    EXPECT_EQ(plan.matrices[0], default_chart_matrix());
    EXPECT_EQ(plan.output_table_name, "srgb");
    EXPECT_EQ(plan.output_table_bits, 16);
    EXPECT_EQ(plan.output_bits, 8);
    ASSERT_TRUE(plan.output_tables);
    EXPECT_EQ((*plan.output_tables)[1][32768], 188); // sRGB of 0.5 in 8 bits
    expect_channels(plan, 0, 65535, 0);

    const Correction_plan own = make_correction_plan(
        parse({"--matrix", "identity", "--output-curve", "none", "--bits", "16"}), chart);
    ASSERT_EQ(own.matrices.size(), 1u);
    EXPECT_EQ(own.matrices[0], (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_FALSE(own.output_tables);
    EXPECT_EQ(own.output_bits, 16);
}

TEST(CorrectionPlan, TheDefaultChartMatrixKeepsGreysAndRaisesSaturation)
{
    const Matrix m = default_chart_matrix();
    for (int row = 0; row < 3; ++row) {
        EXPECT_NEAR(m[3 * row] + m[3 * row + 1] + m[3 * row + 2], 1.0, 1e-6);
        EXPECT_GT(m[4 * row], 1.0f); // each channel is pushed away from the grey
    }
}

TEST(CorrectionPlan, InputCurvesMakeFullSixteenBitTables)
{
    const Correction_plan plan = make_correction_plan(parse({"--input-curve", "gamma:2.2"}), sixteen_bit_file);
    EXPECT_EQ(plan.input_table_bits, 16);
    ASSERT_TRUE(plan.input_tables);
    for (const Lookup_table& table : *plan.input_tables) {
        EXPECT_EQ(table.size(), 65536u);
        EXPECT_EQ(table[32768], 14263);
    }
}

TEST(CorrectionPlan, SmallOutputTablesGetAScaleThatActsAfterTheGivenMatrices)
{
    const Correction_plan plan = make_correction_plan(
        parse({"--output-curve", "linear", "--output-table-bits", "12", "--matrix", "identity"}),
        sixteen_bit_file);
    EXPECT_EQ(plan.output_table_bits, 12);
    EXPECT_EQ((*plan.output_tables)[0].size(), 4096u);
    EXPECT_EQ((*plan.output_tables)[0][4095], 65535);
    ASSERT_EQ(plan.matrices.size(), 2u);
    EXPECT_TRUE(plan.scale_appended);
    // Appended first, so applied last: it maps 65535 onto the last entry, 4095.
    EXPECT_FLOAT_EQ(plan.matrices[0][0] * 65535.0f, 4095.0f);
    EXPECT_EQ(plan.matrices[0][1], 0.0f);
    expect_channels(plan, 0, 4095, 0);
}

TEST(CorrectionPlan, ClampsAreCheckedAgainstEachOtherAndAgainstTheOutputTable)
{
    EXPECT_EQ(plan_error({"--clamp", "0,100,200,100,0,100"}),
              "--clamp: the green minimum 200 is above its maximum 100");
    EXPECT_EQ(plan_error({"--clamp", "0,4096", "--output-curve", "srgb", "--output-table-bits", "12"}),
              "--clamp: the red maximum 4096 is beyond the last entry (4095) of the output table");
    const Correction_plan plan = make_correction_plan(
        parse({"--clamp", "7,7", "--output-curve", "srgb", "--output-table-bits", "12"}), sixteen_bit_file);
    expect_channels(plan, 7, 7, 0);
    // Without an output table the clamp is not bounded by a table size.
    EXPECT_EQ(plan_error({"--clamp", "0,65535"}), "no error");
}

TEST(CorrectionPlan, ResultsThatWouldLoseHighBitsInTheNarrowingAreRefused)
{
    EXPECT_EQ(plan_error({"--bits", "8", "--shift", "0"}),
              "the red results reach 65535, beyond 8-bit samples (0..255); use a right --shift, "
              "a smaller --clamp or an output curve");
    EXPECT_EQ(plan_error({"--shift", "0,0,1"}),
              "the blue results reach 131070, beyond 16-bit samples (0..65535); use a right "
              "--shift, a smaller --clamp or an output curve");
    EXPECT_EQ(plan_error({"--bits", "8", "--shift", "-7"}),
              "the red results reach 511, beyond 8-bit samples (0..255); use a right --shift, a "
              "smaller --clamp or an output curve");
    // What fits is accepted: a clamp to 12 bits then a left shift by 4 fills 16 bits exactly.
    EXPECT_EQ(plan_error({"--clamp", "0,4095", "--shift", "4"}), "no error");
    EXPECT_EQ(plan_error({"--bits", "8", "--clamp", "0,255", "--shift", "0"}), "no error");
    // An 8-bit output curve followed by a left shift would overflow.
    EXPECT_EQ(plan_error({"--bits", "8", "--output-curve", "srgb", "--shift", "1"}),
              "the red results reach 510, beyond 8-bit samples (0..255); use a right --shift, a "
              "smaller --clamp or an output curve");
}

TEST(CorrectionPlan, LargestFinalValueLooksOnlyAtTheReachableTableEntries)
{
    const Lookup_table table{900, 5, 6, 7, 800};
    Channel_settings channel;
    channel.clamp_min = 1;
    channel.clamp_max = 3;
    EXPECT_EQ(largest_final_value(channel, &table), 7);
    channel.shift = -1;
    EXPECT_EQ(largest_final_value(channel, &table), 3);
    channel.shift = 15;
    EXPECT_EQ(largest_final_value(channel, &table), 7 << 15);
    channel.shift = 0;
    EXPECT_EQ(largest_final_value(channel, nullptr), 3);
}

TEST(CorrectionPlan, WideRawOutputEntriesAreAcceptedWhenAShiftBringsThemIntoRange)
{
    const std::string path = ::testing::TempDir() + "wide_entries.txt";
    {
        std::ofstream file(path);
        file << "0\n65536\n131071\n262143\n"; // 18-bit entries
    }
    const Correction_plan plan = make_correction_plan(
        parse({"--output-table", path, "--output-table-bits", "2", "--shift", "-2"}), sixteen_bit_file);
    EXPECT_EQ((*plan.output_tables)[2], (Lookup_table{0, 65536, 131071, 262143}));
    EXPECT_EQ(plan_error({"--output-table", path, "--output-table-bits", "2"}),
              "the red results reach 262143, beyond 16-bit samples (0..65535); use a right "
              "--shift, a smaller --clamp or an output curve");
    std::remove(path.c_str());
}
