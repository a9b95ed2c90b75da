#include "options.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

using namespace xvr_color;

namespace {

Options parse(std::vector<std::string> arguments)
{
    return parse_options(arguments);
}

std::string usage_error_of(std::vector<std::string> arguments)
{
    try {
        parse_options(arguments);
    } catch (const Usage_error& error) {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(Options, NothingGivenMeansTheChartWithEveryDefault)
{
    const Options options = parse({});
    EXPECT_TRUE(options.input_path.empty());
    EXPECT_TRUE(options.output_path.empty());
    EXPECT_TRUE(options.matrices.empty());
    EXPECT_FALSE(options.input_table);
    EXPECT_FALSE(options.output_table);
    EXPECT_FALSE(options.clamp);
    EXPECT_FALSE(options.shift);
    EXPECT_FALSE(options.output_bits);
    EXPECT_EQ(options.output_table_bits, 16);
    EXPECT_TRUE(options.vector.automatic);
    EXPECT_EQ(options.repeat, 1);
    EXPECT_FALSE(options.show_help);
}

TEST(Options, MatricesAreKeptInTheOrderGivenInEitherSpelling)
{
    const Options options = parse({"--matrix", "1,2,3,4,5,6,7,8,9", "--matrix=identity",
                                   "--matrix", "0.5 0 0  0 0.5 0  0 0 -1e-3"});
    ASSERT_EQ(options.matrices.size(), 3u);
    EXPECT_EQ(options.matrices[0], (Matrix{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(options.matrices[1], (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(options.matrices[2], (Matrix{0.5f, 0, 0, 0, 0.5f, 0, 0, 0, -1e-3f}));
}

TEST(Options, AMatrixNeedsExactlyNineFiniteNumbers)
{
    EXPECT_EQ(usage_error_of({"--matrix", "1,0,0,0,1,0,0,0"}),
              "--matrix needs nine values (rows red, green, blue), got 8");
    EXPECT_EQ(usage_error_of({"--matrix", "1,0,0,0,1,0,0,0,1,0"}),
              "--matrix needs nine values (rows red, green, blue), got 10");
    EXPECT_EQ(usage_error_of({"--matrix", "1,0,0,0,x,0,0,0,1"}),
              "--matrix: 'x' is not a number between -1e6 and 1e6");
    EXPECT_EQ(usage_error_of({"--matrix", "1,0,0,0,inf,0,0,0,1"}),
              "--matrix: 'inf' is not a number between -1e6 and 1e6");
    EXPECT_EQ(usage_error_of({"--matrix"}), "--matrix needs a value (see --help)");
}

TEST(Options, ShiftsTakeOneOrThreeDistancesWithinTheLibrarysRange)
{
    EXPECT_EQ(*parse({"--shift", "-8"}).shift, (std::array<int, 3>{-8, -8, -8}));
    EXPECT_EQ(*parse({"--shift=1,-2,15"}).shift, (std::array<int, 3>{1, -2, 15}));
    EXPECT_EQ(*parse({"--shift", "-15"}).shift, (std::array<int, 3>{-15, -15, -15}));
    EXPECT_EQ(usage_error_of({"--shift", "16"}),
              "--shift: 16 is out of range (-15..15; negative shifts right)");
    EXPECT_EQ(usage_error_of({"--shift", "0,0,-16"}),
              "--shift: -16 is out of range (-15..15; negative shifts right)");
    EXPECT_EQ(usage_error_of({"--shift", "1,2"}),
              "--shift takes one distance or three (red,green,blue); got 2");
    EXPECT_EQ(usage_error_of({"--shift", "one"}), "--shift: 'one' is not an integer");
}

TEST(Options, ClampsTakeOnePairOrOnePairPerChannel)
{
    const auto same = *parse({"--clamp", "10,4000"}).clamp;
    for (const Clamp_range& range : same) {
        EXPECT_EQ(range.min, 10);
        EXPECT_EQ(range.max, 4000);
    }
    const auto each = *parse({"--clamp", "1,2,3,4,5,6"}).clamp;
    EXPECT_EQ(each[0].min, 1);
    EXPECT_EQ(each[1].max, 4);
    EXPECT_EQ(each[2].min, 5);
    EXPECT_EQ(each[2].max, 6);
    EXPECT_EQ(usage_error_of({"--clamp", "0,65536"}), "--clamp: 65536 is out of range (0..65535)");
    EXPECT_EQ(usage_error_of({"--clamp", "1,2,3"}),
              "--clamp takes MIN,MAX or six values RMIN,RMAX,GMIN,GMAX,BMIN,BMAX; got 3");
}

TEST(Options, TablesComeFromACurveOrAFileButNotBoth)
{
    const Options options = parse({"--input-curve", "srgb", "--output-table", "t.cube"});
    EXPECT_EQ(options.input_table->source, Table_choice::Source::curve);
    EXPECT_EQ(options.input_table->curve.kind, Curve_kind::srgb);
    EXPECT_EQ(options.output_table->source, Table_choice::Source::file);
    EXPECT_EQ(options.output_table->path, "t.cube");
    EXPECT_EQ(parse({"--output-curve", "none"}).output_table->source, Table_choice::Source::none);
    EXPECT_EQ(usage_error_of({"--input-curve", "srgb", "--input-table", "t.txt"}),
              "give either --input-curve or --input-table, not both");
    EXPECT_EQ(usage_error_of({"--output-table", "t.txt", "--output-curve", "srgb"}),
              "give either --output-curve or --output-table, not both");
    EXPECT_EQ(usage_error_of({"--output-curve", "rec709"}),
              "unknown curve 'rec709': use linear, srgb or gamma:G");
}

TEST(Options, DepthsLevelsAndRepeatsAreChecked)
{
    EXPECT_EQ(*parse({"--bits", "8"}).output_bits, 8);
    EXPECT_EQ(usage_error_of({"--bits", "12"}), "--bits: unsupported output bit depth 12; use 8 or 16");
    EXPECT_EQ(parse({"--output-table-bits", "1"}).output_table_bits, 1);
    EXPECT_EQ(usage_error_of({"--output-table-bits", "17"}),
              "--output-table-bits: 17 is out of range (1..16)");
    const Options forced = parse({"--vector", "0"});
    EXPECT_FALSE(forced.vector.automatic);
    EXPECT_EQ(forced.vector.level, 0);
    EXPECT_EQ(parse({"--vector", "2"}).vector.level, 2);
    EXPECT_TRUE(parse({"--vector", "auto"}).vector.automatic);
    EXPECT_EQ(usage_error_of({"--vector", "3"}),
              "--vector takes auto, 0 (scalar), 1 (SSE) or 2 (AVX2); got '3'");
    EXPECT_EQ(parse({"--repeat", "25"}).repeat, 25);
    EXPECT_EQ(usage_error_of({"--repeat", "0"}), "--repeat: 0 is out of range (1..1000000)");
}

TEST(Options, FilesHelpAndMistakes)
{
    const Options options = parse({"in.png", "-o", "out.ppm"});
    EXPECT_EQ(options.input_path, "in.png");
    EXPECT_EQ(options.output_path, "out.ppm");
    EXPECT_EQ(parse({"--output=x.png"}).output_path, "x.png");
    EXPECT_TRUE(parse({"-h"}).show_help);
    EXPECT_TRUE(parse({"--help"}).show_help);
    EXPECT_EQ(usage_error_of({"a.png", "b.png"}),
              "only one input file can be given (got 'a.png' and 'b.png')");
    EXPECT_EQ(usage_error_of({"--gamma", "2"}), "unknown option '--gamma' (see --help)");
    EXPECT_EQ(usage_error_of({"--output="}), "--output needs a file name");
}

TEST(Options, TheHelpTextNamesEveryOption)
{
    const std::string help = usage_text();
    for (const char* option : {"--output", "--bits", "--matrix", "--input-curve", "--input-table",
                               "--output-curve", "--output-table", "--output-table-bits",
                               "--clamp", "--shift", "--vector", "--repeat", "--help"}) {
        EXPECT_NE(help.find(option), std::string::npos) << option;
    }
}
