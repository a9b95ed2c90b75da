// Transfer curves, the tables made from them, and table files (.cube and plain integers).
#include "curves.hpp"
#include "lookup_tables.hpp"
#include "table_files.hpp"
#include "test_support.hpp"

using namespace xvr_color;
using xvr_color_test::error_of;

TEST(Curves, MatchIndependentlyComputedValues)
{
    const Curve srgb = parse_curve("srgb"), gamma = parse_curve("gamma:2.2");
    // Reference values of the sRGB transfer function (IEC 61966-2-1).
    EXPECT_NEAR(encode_with(srgb, 0.5), 0.7353569830524495, 1e-12);
    EXPECT_NEAR(decode_with(srgb, 0.5), 0.21404114048223255, 1e-12);
    EXPECT_NEAR(encode_with(srgb, 0.18), 0.4613561295004, 1e-9);
    // The linear toe: below 0.0031308 the slope is 12.92 both ways, and the segments meet.
    EXPECT_DOUBLE_EQ(encode_with(srgb, 0.001), 0.01292);
    EXPECT_DOUBLE_EQ(decode_with(srgb, 0.01292), 0.001);
    EXPECT_NEAR(encode_with(srgb, 0.0031308), 0.04045, 1e-5);
    EXPECT_NEAR(encode_with(srgb, 0.0031309), 0.04045, 1e-5);
    EXPECT_NEAR(decode_with(gamma, 0.5), 0.217637640824031, 1e-12);  // 0.5^2.2
    EXPECT_NEAR(encode_with(gamma, 0.5), 0.7297400528407231, 1e-12); // 0.5^(1/2.2)
    for (const char* name : {"linear", "srgb", "gamma:2.2", "gamma:0.45"}) {
        const Curve curve = parse_curve(name);
        EXPECT_DOUBLE_EQ(encode_with(curve, 0.0), 0.0) << name;
        EXPECT_NEAR(encode_with(curve, 1.0), 1.0, 1e-15) << name;
        EXPECT_DOUBLE_EQ(decode_with(curve, -0.5), 0.0) << name; // out of range: held at the ends
        EXPECT_NEAR(decode_with(curve, 1.5), 1.0, 1e-15) << name;
    }
    EXPECT_EQ(parse_curve("gamma:2.4").gamma, 2.4);
    EXPECT_EQ(parse_curve("gamma:2.4").name(), "gamma:2.4");
    for (const char* bad : {"sRGB ", "gamma", "gamma:", "gamma:0", "gamma:11", "gamma:2.2x", "log"}) {
        EXPECT_THROW(parse_curve(bad), Usage_error) << bad;
    }
}

TEST(Curves, TablesAreRoundedHalfUpOverTheirWholeRange)
{
    const Lookup_table linear = make_input_table(parse_curve("linear"));
    ASSERT_EQ(linear.size(), 65536u);
    EXPECT_EQ(linear[4099], 4099);
    EXPECT_EQ(linear[65535], 65535);
    const Lookup_table decode = make_input_table(parse_curve("srgb"));
    EXPECT_EQ(decode[1], 0);         // 1 / 12.92 = 0.077
    EXPECT_EQ(decode[257], 20);      // 257 / 12.92 = 19.89
    EXPECT_EQ(decode[32768], 14028); // 65535 x 0.214055... = 14027.7
    EXPECT_EQ(decode[65535], 65535);
    EXPECT_EQ(make_input_table(parse_curve("gamma:2.2"))[32768], 14263);

    const Lookup_table twelve_bit_index = make_output_table(parse_curve("srgb"), 4096, 65535);
    ASSERT_EQ(twelve_bit_index.size(), 4096u);
    EXPECT_EQ(twelve_bit_index[1], 207);
    EXPECT_EQ(twelve_bit_index[2048], 48197);
    EXPECT_EQ(twelve_bit_index[4095], 65535);
    EXPECT_EQ(make_output_table(parse_curve("linear"), 2, 255), (Lookup_table{0, 255}));

    const struct {
        double value;
        std::int32_t max, expected;
    } rounding[] = {{0.5, 255, 128}, {0.25, 2, 1}, {0.2, 2, 0}, {-0.2, 255, 0}, {1.3, 255, 255}, {1.0, 65535, 65535}};
    for (const auto& r : rounding) {
        EXPECT_EQ(to_table_value(r.value, r.max), r.expected) << r.value << " of " << r.max;
    }
}

TEST(TableFiles, PlainFilesHoldOneEntryPerLineAndCubesAreResampled)
{
    const Table_shape four{4, 255, "the output table"}, five{5, 100, "the output table"};
    EXPECT_EQ(parse_integer_table("# gamma-ish\n0\n  10 \r\n\n200\n255", "t.txt", four),
              (Lookup_table{0, 10, 200, 255}));

    const std::string identity = "TITLE \"identity\"\n# two rows suffice\nLUT_1D_SIZE 2\n0 0 0\n1 1 1\n";
    for (const Lookup_table& table : parse_cube_table(identity, "t.cube", {65536, 65535, "the input table"})) {
        ASSERT_EQ(table.size(), 65536u);
        EXPECT_EQ(table[1], 1);
        EXPECT_EQ(table[32768], 32768);
        EXPECT_EQ(table[65535], 65535);
    }
    // Red rises, green falls, blue peaks in the middle: each channel is its own table.
    const Rgb_tables three = parse_cube_table("LUT_1D_SIZE 3\n0.0 1.0 0.0\n0.5 0.5 1.0\n1.0 0.0 0.0\n", "t.cube", five);
    EXPECT_EQ(three[0], (Lookup_table{0, 25, 50, 75, 100}));
    EXPECT_EQ(three[1], (Lookup_table{100, 75, 50, 25, 0}));
    EXPECT_EQ(three[2], (Lookup_table{0, 50, 100, 50, 0}));
    // A domain of 0.25..0.75: outside it the end rows hold; values beyond 0..1 are clipped.
    const Rgb_tables domain = parse_cube_table(
        "LUT_1D_SIZE 2\nDOMAIN_MIN 0.25 0.25 0.25\nDOMAIN_MAX 0.75 0.75 0.75\n-0.5 0 0\n1.5 1 1\n", "t.cube", five);
    EXPECT_EQ(domain[0], (Lookup_table{0, 0, 50, 100, 100}));
    EXPECT_EQ(domain[1], (Lookup_table{0, 0, 50, 100, 100}));
    EXPECT_EQ(parse_cube_table("LUT_1D_INPUT_RANGE 0 0.5\nLUT_1D_SIZE 2\n0 0 0\n1 1 1\n", "t.cube", five)[2],
              (Lookup_table{0, 50, 100, 100, 100}));

    for (const char* name : {"a/b.cube", "B.CUBE"}) {
        EXPECT_TRUE(is_cube_file_name(name)) << name;
    }
    for (const char* name : {"cube", "a.cube.txt"}) {
        EXPECT_FALSE(is_cube_file_name(name)) << name;
    }
}

// A mistake in a table file is refused with the line or the count at fault.
TEST(TableFiles, WrongCountsAndBadEntriesNameTheLineOrTheCount)
{
    const Table_shape four{4, 255, "the output table"};
    const std::pair<std::string, std::string> plain[] = {
        {"1\n2\n3\n", "t.txt has 3 entries; the output table needs 4"}, {"", "has 0 entries"},
        {"1\n2\n3\n4\n5\n", "t.txt line 5 is one too many"}, {"0\n1.5\n2\n3\n", "line 2: '1.5' is not an integer"},
        {"0\n1 2\n2\n3\n", "line 2: '1 2'"}, {"0\n-1\n2\n3\n", "line 2: -1 is outside the range"},
        {"0\n1\n2\n256\n", "line 4: 256 is outside the range of the output table (0..255)"},
    };
    for (const auto& [text, part] : plain) {
        const std::string message = error_of([&] { parse_integer_table(text, "t.txt", four); });
        EXPECT_NE(message.find(part), std::string::npos) << message;
    }
    const std::pair<std::string, std::string> cubes[] = {
        {"LUT_1D_SIZE 2\n0 0 0\n0.5 0.5 0.5\n1 1 1\n", "has 3 entries, but its LUT_1D_SIZE says 2"},
        {"LUT_1D_SIZE 2\n0 0 0\n1 x 1\n", "line 3: 'x'"}, {"LUT_1D_SIZE 2\n0 0 0\n1 nan 1\n", "line 3: 'nan'"},
        {"LUT_1D_SIZE 2\n0 0\n1 1 1\n", "line 2: expected three numbers"}, {"0 0 0\n1 1 1\n", "line 1: table data before"},
        {"TITLE \"x\"\n", "no LUT_1D_SIZE"}, {"LUT_3D_SIZE 17\n", "a 3D cube file"},
        {"LUT_1D_SIZE 1\n", "line 1: LUT_1D_SIZE must be"}, {"LUT_1D_SIZE 70000\n", "line 1: LUT_1D_SIZE must be"},
        {"LUT_1D_SIZE 2\nDOMAIN_MIN 0 0\n", "line 2: DOMAIN_MIN needs 3"},
        {"LUT_1D_SIZE 2\nDOMAIN_MIN 1 0 0\nDOMAIN_MAX 1 1 1\n0 0 0\n1 1 1\n", "domain minimum is not below"},
        {"LUT_1D_SIZE 2\nLUT_SHAPER 4\n", "line 2: unknown cube keyword 'LUT_SHAPER'"},
        {"LUT_1D_SIZE 2\n0 0 0\nDOMAIN_MIN 0 0 0\n1 1 1\n", "line 3: the keyword DOMAIN_MIN follows"},
    };
    for (const auto& [text, part] : cubes) {
        const std::string message = error_of([&] { parse_cube_table(text, "t.cube", four); });
        EXPECT_EQ(message.rfind("t.cube", 0), 0u) << message;
        EXPECT_NE(message.find(part), std::string::npos) << message;
    }
}
