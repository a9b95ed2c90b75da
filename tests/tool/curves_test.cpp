#include "curves.hpp"
#include "lookup_tables.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

using namespace xvr_color;

namespace {

Curve srgb() { return parse_curve("srgb"); }

} // namespace

TEST(TransferCurves, SrgbMatchesPublishedValues)
{
    // Reference values of the sRGB transfer function (IEC 61966-2-1).
    EXPECT_NEAR(encode_with(srgb(), 0.5), 0.7353569830524495, 1e-12);
    EXPECT_NEAR(decode_with(srgb(), 0.5), 0.21404114048223255, 1e-12);
    EXPECT_NEAR(encode_with(srgb(), 0.18), 0.4613561295004, 1e-9);
    // The linear toe: below 0.0031308 the slope is 12.92 in both directions.
    EXPECT_DOUBLE_EQ(encode_with(srgb(), 0.001), 0.01292);
    EXPECT_DOUBLE_EQ(decode_with(srgb(), 0.01292), 0.001);
    // The two segments meet without a visible step.
    EXPECT_NEAR(encode_with(srgb(), 0.0031308), 0.04045, 1e-5);
    EXPECT_NEAR(encode_with(srgb(), 0.0031309), 0.04045, 1e-5);
}

TEST(TransferCurves, EndsAreExactAndOutOfRangeValuesAreHeldAtThem)
{
    for (const char* name : {"linear", "srgb", "gamma:2.2", "gamma:0.45"}) {
        const Curve curve = parse_curve(name);
        EXPECT_DOUBLE_EQ(encode_with(curve, 0.0), 0.0) << name;
        EXPECT_NEAR(encode_with(curve, 1.0), 1.0, 1e-15) << name;
        EXPECT_DOUBLE_EQ(decode_with(curve, -0.5), 0.0) << name;
        EXPECT_NEAR(decode_with(curve, 1.5), 1.0, 1e-15) << name;
    }
}

TEST(TransferCurves, GammaDecodesWithItsExponentAndEncodesWithTheInverse)
{
    const Curve gamma = parse_curve("gamma:2.2");
    EXPECT_NEAR(decode_with(gamma, 0.5), 0.217637640824031, 1e-12);
    EXPECT_NEAR(encode_with(gamma, 0.5), 0.7297400528407231, 1e-12);
    for (double x = 0.0; x <= 1.0; x += 0.125) {
        EXPECT_NEAR(decode_with(gamma, encode_with(gamma, x)), x, 1e-12);
        EXPECT_NEAR(decode_with(srgb(), encode_with(srgb(), x)), x, 1e-12);
    }
}

TEST(CurveNames, KnownNamesParseAndOthersAreRefused)
{
    EXPECT_EQ(parse_curve("linear").kind, Curve_kind::linear);
    EXPECT_EQ(parse_curve("srgb").kind, Curve_kind::srgb);
    EXPECT_EQ(parse_curve("gamma:2.4").gamma, 2.4);
    EXPECT_EQ(parse_curve("gamma:2.4").name(), "gamma:2.4");
    for (const char* bad : {"sRGB ", "gamma", "gamma:", "gamma:0", "gamma:11", "gamma:2.2x", "log"}) {
        EXPECT_THROW(parse_curve(bad), Usage_error) << bad;
    }
}

TEST(CurveTables, InputTablesHaveAnEntryPerSixteenBitSampleRoundedToNearest)
{
    const Lookup_table linear = make_input_table(parse_curve("linear"));
    ASSERT_EQ(linear.size(), 65536u);
    for (std::size_t i = 0; i < linear.size(); i += 4099) {
        EXPECT_EQ(linear[i], static_cast<std::int32_t>(i));
    }
    EXPECT_EQ(linear[65535], 65535);

    const Lookup_table decode = make_input_table(srgb());
    EXPECT_EQ(decode[0], 0);
    EXPECT_EQ(decode[1], 0);         // 65535 x (1/65535) / 12.92 = 0.077
    EXPECT_EQ(decode[257], 20);      // 257 / 12.92 = 19.89
    EXPECT_EQ(decode[32768], 14028); // 65535 x 0.214055... = 14027.7
    EXPECT_EQ(decode[65535], 65535);
    EXPECT_EQ(make_input_table(parse_curve("gamma:2.2"))[32768], 14263);
}

TEST(CurveTables, OutputTablesSpanTheirEntriesAndTheOutputSampleRange)
{
    const Lookup_table to_8_bits = make_output_table(srgb(), 65536, 255);
    EXPECT_EQ(to_8_bits[0], 0);
    EXPECT_EQ(to_8_bits[1], 0);
    EXPECT_EQ(to_8_bits[11796], 118); // 18% grey
    EXPECT_EQ(to_8_bits[32768], 188); // 255 x 0.73536 = 187.52
    EXPECT_EQ(to_8_bits[65535], 255);

    const Lookup_table twelve_bit_index = make_output_table(srgb(), 4096, 65535);
    ASSERT_EQ(twelve_bit_index.size(), 4096u);
    EXPECT_EQ(twelve_bit_index[1], 207);
    EXPECT_EQ(twelve_bit_index[2048], 48197);
    EXPECT_EQ(twelve_bit_index[4095], 65535);

    const Lookup_table two_entries = make_output_table(parse_curve("linear"), 2, 255);
    EXPECT_EQ(two_entries, (Lookup_table{0, 255}));
}

TEST(CurveTables, SrgbDecodeThenEncodeGivesEveryEightBitValueBack)
{
    // The tool's 16-bit linear intermediate must be fine enough for an sRGB round trip.
    const Lookup_table decode = make_input_table(srgb());
    const Lookup_table encode = make_output_table(srgb(), 65536, 255);
    for (std::int32_t value = 0; value < 256; ++value) {
        EXPECT_EQ(encode[decode[value * 257]], value) << value;
    }
}

TEST(CurveTables, ValuesRoundHalfUpAndStayInRange)
{
    EXPECT_EQ(to_table_value(0.5, 255), 128); // 127.5
    EXPECT_EQ(to_table_value(0.25, 2), 1);    // 0.5
    EXPECT_EQ(to_table_value(0.2, 2), 0);     // 0.4
    EXPECT_EQ(to_table_value(-0.2, 255), 0);
    EXPECT_EQ(to_table_value(1.3, 255), 255);
    EXPECT_EQ(to_table_value(1.0, 65535), 65535);
}
