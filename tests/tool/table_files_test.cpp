#include "table_files.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

#include <sstream>

using namespace xvr_color;

namespace {

const Table_shape four_entries{4, 255, "the output table"};

std::string integer_table_error(const std::string& text, const Table_shape& shape = four_entries)
{
    try {
        parse_integer_table(text, "t.txt", shape);
    } catch (const Tool_error& error) {
        return error.what();
    }
    return "no error";
}

std::string cube_error(const std::string& text, const Table_shape& shape = four_entries)
{
    try {
        parse_cube_table(text, "t.cube", shape);
    } catch (const Tool_error& error) {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(IntegerTableFiles, OneEntryPerLineWithBlanksAndCommentsSkipped)
{
    EXPECT_EQ(parse_integer_table("# gamma-ish\n0\n  10 \r\n\n200\n255\n", "t.txt", four_entries),
              (Lookup_table{0, 10, 200, 255}));
    EXPECT_EQ(parse_integer_table("0\n1\n2\n3", "t.txt", four_entries), (Lookup_table{0, 1, 2, 3}));
}

TEST(IntegerTableFiles, TheEntryCountMustMatchTheTable)
{
    EXPECT_EQ(integer_table_error("1\n2\n3\n"), "t.txt has 3 entries; the output table needs 4 (2^2)");
    EXPECT_EQ(integer_table_error(""), "t.txt has 0 entries; the output table needs 4 (2^2)");
    EXPECT_EQ(integer_table_error("1\n2\n3\n4\n5\n"),
              "t.txt has more than the 4 (2^2) entries of the output table (t.txt line 5 is one "
              "too many)");
    const Table_shape input{65536, 65535, "the input table"};
    EXPECT_EQ(integer_table_error("1\n", input), "t.txt has 1 entries; the input table needs 65536 (2^16)");
}

TEST(IntegerTableFiles, NonNumbersAndOutOfRangeEntriesNameTheirLine)
{
    EXPECT_EQ(integer_table_error("0\n1\nabc\n3\n"), "t.txt line 3: 'abc' is not an integer");
    EXPECT_EQ(integer_table_error("0\n1.5\n2\n3\n"), "t.txt line 2: '1.5' is not an integer");
    EXPECT_EQ(integer_table_error("0\n1 2\n2\n3\n"), "t.txt line 2: '1 2' is not an integer");
    EXPECT_EQ(integer_table_error("0\n-1\n2\n3\n"),
              "t.txt line 2: -1 is outside the range of the output table (0..255)");
    EXPECT_EQ(integer_table_error("0\n1\n2\n256\n"),
              "t.txt line 4: 256 is outside the range of the output table (0..255)");
}

TEST(CubeFiles, AnIdentityCubeGivesAnIdentityTableAtAnySize)
{
    const std::string identity = "TITLE \"identity\"\n# two rows suffice\nLUT_1D_SIZE 2\n0 0 0\n1 1 1\n";
    const Rgb_tables tables = parse_cube_table(identity, "t.cube", {65536, 65535, "the input table"});
    for (const Lookup_table& table : tables) {
        ASSERT_EQ(table.size(), 65536u);
        EXPECT_EQ(table[0], 0);
        EXPECT_EQ(table[1], 1);
        EXPECT_EQ(table[32768], 32768);
        EXPECT_EQ(table[65535], 65535);
    }
}

TEST(CubeFiles, ChannelsAreSeparateAndResampledLinearly)
{
    // Red rises, green falls, blue is a three-point curve that peaks in the middle.
    const std::string cube = "LUT_1D_SIZE 3\n0.0 1.0 0.0\n0.5 0.5 1.0\n1.0 0.0 0.0\n";
    const Rgb_tables tables = parse_cube_table(cube, "t.cube", {5, 100, "the output table"});
    EXPECT_EQ(tables[0], (Lookup_table{0, 25, 50, 75, 100}));
    EXPECT_EQ(tables[1], (Lookup_table{100, 75, 50, 25, 0}));
    EXPECT_EQ(tables[2], (Lookup_table{0, 50, 100, 50, 0}));
}

TEST(CubeFiles, TheDomainStretchesTheCubeOverPartOfTheTableAndValuesAreClipped)
{
    // The cube covers inputs 0.25..0.75; below and above it its end rows hold.
    const std::string cube =
        "LUT_1D_SIZE 2\nDOMAIN_MIN 0.25 0.25 0.25\nDOMAIN_MAX 0.75 0.75 0.75\n-0.5 0 0\n1.5 1 1\n";
    const Rgb_tables tables = parse_cube_table(cube, "t.cube", {5, 100, "the output table"});
    EXPECT_EQ(tables[0], (Lookup_table{0, 0, 50, 100, 100}));
    EXPECT_EQ(tables[1], (Lookup_table{0, 0, 50, 100, 100}));
    const std::string ranged = "LUT_1D_INPUT_RANGE 0 0.5\nLUT_1D_SIZE 2\n0 0 0\n1 1 1\n";
    EXPECT_EQ(parse_cube_table(ranged, "t.cube", {5, 100, "the output table"})[2],
              (Lookup_table{0, 50, 100, 100, 100}));
}

TEST(CubeFiles, WrongCountsAndBadNumbersAreRefusedWithTheirLine)
{
    EXPECT_EQ(cube_error("LUT_1D_SIZE 3\n0 0 0\n1 1 1\n"),
              "t.cube has 2 entries, but its LUT_1D_SIZE says 3");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\n0 0 0\n0.5 0.5 0.5\n1 1 1\n"),
              "t.cube has 3 entries, but its LUT_1D_SIZE says 2");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\n0 0 0\n1 x 1\n"), "t.cube line 3: 'x' is not a number");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\n0 0\n1 1 1\n"),
              "t.cube line 2: expected three numbers (red green blue), found 2 items");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\n0 0 0\n1 nan 1\n"), "t.cube line 3: 'nan' is not a number");
}

TEST(CubeFiles, HeadersThatAreNotAUsable1DCubeAreRefused)
{
    EXPECT_EQ(cube_error("0 0 0\n1 1 1\n"), "t.cube line 1: table data before LUT_1D_SIZE");
    EXPECT_EQ(cube_error("TITLE \"x\"\n"), "t.cube has no LUT_1D_SIZE line; it is not a 1D cube file");
    EXPECT_EQ(cube_error("LUT_3D_SIZE 17\n"),
              "t.cube is a 3D cube file; xvr-color takes 1D cube files (LUT_1D_SIZE) for its tables");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 1\n"), "t.cube line 1: LUT_1D_SIZE must be one integer from 2 to 65536");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 70000\n"),
              "t.cube line 1: LUT_1D_SIZE must be one integer from 2 to 65536");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\nDOMAIN_MIN 0 0\n"), "t.cube line 2: DOMAIN_MIN needs 3 numbers");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\nDOMAIN_MIN 1 0 0\nDOMAIN_MAX 1 1 1\n0 0 0\n1 1 1\n"),
              "t.cube: its domain minimum is not below its maximum");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\nLUT_SHAPER 4\n"), "t.cube line 2: unknown cube keyword 'LUT_SHAPER'");
    EXPECT_EQ(cube_error("LUT_1D_SIZE 2\n0 0 0\nDOMAIN_MIN 0 0 0\n1 1 1\n"),
              "t.cube line 3: the keyword DOMAIN_MIN follows table data");
}

TEST(TableFiles, TheFormatFollowsTheFileName)
{
    EXPECT_TRUE(is_cube_file_name("a/b.cube"));
    EXPECT_TRUE(is_cube_file_name("B.CUBE"));
    EXPECT_FALSE(is_cube_file_name("cube"));
    EXPECT_FALSE(is_cube_file_name("a.cube.txt"));
    try {
        read_table_file("/nonexistent/t.txt", four_entries);
        FAIL() << "expected an error";
    } catch (const Tool_error& error) {
        EXPECT_EQ(std::string(error.what()), "cannot open /nonexistent/t.txt: No such file or directory");
    }
}
