// The command line and the correction plan worked out from it.
#include "correction_plan.hpp"
#include "test_support.hpp"

#include <fstream>

using namespace xvr_color;
using xvr_color_test::error_of;

namespace {

const Run_context sixteen_bit_file{false, 16};

std::string plan_error(const std::vector<std::string>& arguments)
{
    return error_of([&] { make_correction_plan(parse_options(arguments), sixteen_bit_file); });
}

} // namespace

TEST(Options, ValuesAreTakenInEitherSpellingAndInTheOrderGiven)
{
    const Options options = parse_options({"in.png", "--output=out.ppm", "--matrix", "1,2,3,4,5,6,7,8,9",
                                           "--matrix=identity", "--matrix", "0.5 0 0  0 0.5 0  0 0 -1e-3",
                                           "--input-curve", "srgb", "--output-table", "t.cube",
                                           "--output-table-bits=1"});
    EXPECT_EQ(options.inputs, std::vector<std::string>{"in.png"});
    EXPECT_EQ(options.output_path, "out.ppm");
    EXPECT_EQ(options.matrices, (std::vector<Matrix>{{1, 2, 3, 4, 5, 6, 7, 8, 9}, {1, 0, 0, 0, 1, 0, 0, 0, 1},
                                                     {0.5f, 0, 0, 0, 0.5f, 0, 0, 0, -1e-3f}}));
    EXPECT_EQ(options.input_table->curve.kind, Curve_kind::srgb);
    EXPECT_EQ(options.output_table->path, "t.cube");
    EXPECT_EQ(options.output_table_bits, 1);

    EXPECT_EQ(parse_options({"--output-curve", "none"}).output_table->source, Table_choice::Source::none);
    EXPECT_EQ(parse_options({"--vector", "2"}).vector.level, 2);
    EXPECT_TRUE(parse_options({"--vector", "auto"}).vector.automatic);
    EXPECT_TRUE(parse_options({"-h"}).show_help);
    EXPECT_TRUE(parse_options({"--help"}).show_help);
    EXPECT_EQ(*parse_options({"--shift", "-15"}).shift, (std::array<int, 3>{-15, -15, -15}));
    EXPECT_EQ(*parse_options({"--shift=1,-2,15"}).shift, (std::array<int, 3>{1, -2, 15}));
    const auto same = *parse_options({"--clamp", "10,4000"}).clamp;
    const auto each = *parse_options({"--clamp", "1,2,3,4,5,6"}).clamp;
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(same[c].min, 10);
        EXPECT_EQ(same[c].max, 4000);
        EXPECT_EQ(each[c].min, 2 * c + 1);
        EXPECT_EQ(each[c].max, 2 * c + 2);
    }
}

TEST(Options, TheUsualCommandLineConventionsHold)
{
    const struct {
        std::vector<std::string> arguments;
        std::vector<std::string> inputs;
        std::string output;
        bool quiet;
    } cases[] = {
        {{"-", "-o", "-"}, {"-"}, "-", false},             // standard input and output
        {{"-qoout.png", "a.tif"}, {"a.tif"}, "out.png", true}, // grouped flags, attached value
        {{"-o", "x.ppm", "--", "-q", "--help"}, {"-q", "--help"}, "x.ppm", false}, // -- ends options
        {{"a.png", "b.png", "--quiet"}, {"a.png", "b.png"}, "", true},
    };
    for (const auto& c : cases) {
        const Options options = parse_options(c.arguments);
        EXPECT_EQ(options.inputs, c.inputs);
        EXPECT_EQ(options.output_path, c.output);
        EXPECT_EQ(options.quiet, c.quiet);
    }
    const Options options = parse_options({"--threads=3", "--format", "tif", "--shift", "+4", "--in-place",
                                           "--keep-profile", "--compression", "lzw", "--version"});
    EXPECT_EQ(options.threads, 3u);
    EXPECT_EQ(options.format, Image_file_format::tiff);
    EXPECT_EQ(*options.shift, (std::array<int, 3>{4, 4, 4}));
    EXPECT_TRUE(options.in_place && options.keep_profile && options.show_version);
    EXPECT_EQ(options.tiff_compression, Tiff_compression::lzw);
}

TEST(Options, EveryMistakeIsExplained)
{
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--matrix", "1,0,0,0,1,0,0,0"}, "--matrix needs nine values (rows red, green, blue), got 8"},
        {{"--matrix", "1,0,0,0,1,0,0,0,1,0"}, "--matrix needs nine values (rows red, green, blue), got 10"},
        {{"--matrix", "1,0,0,0,x,0,0,0,1"}, "--matrix: 'x' is not a number between -1e6 and 1e6"},
        {{"--matrix", "1,0,0,0,inf,0,0,0,1"}, "--matrix: 'inf' is not a number between -1e6 and 1e6"},
        {{"--matrix"}, "--matrix needs a value (see --help)"},
        {{"--shift", "16"}, "--shift: 16 is out of range (-15..15; negative shifts right)"},
        {{"--shift", "0,0,-16"}, "--shift: -16 is out of range (-15..15; negative shifts right)"},
        {{"--shift", "1,2"}, "--shift takes one distance or three (red,green,blue); got 2"},
        {{"--shift", "one"}, "--shift: 'one' is not an integer"},
        {{"--clamp", "0,65536"}, "--clamp: 65536 is out of range (0..65535)"},
        {{"--clamp", "1,2,3"}, "--clamp takes MIN,MAX or six values RMIN,RMAX,GMIN,GMAX,BMIN,BMAX; got 3"},
        {{"--input-curve", "srgb", "--input-table", "t.txt"}, "give either --input-curve or --input-table, not both"},
        {{"--output-table", "t.txt", "--output-curve", "srgb"},
         "give either --output-curve or --output-table, not both"},
        {{"--output-curve", "rec709"}, "unknown curve 'rec709': use linear, srgb or gamma:G"},
        {{"--bits", "12"}, "--bits: unsupported output bit depth 12; use 8 or 16"},
        {{"--output-table-bits", "17"}, "--output-table-bits: 17 is out of range (1..16)"},
        {{"--vector", "3"}, "--vector takes auto, 0 (scalar), 1 (SSE) or 2 (AVX2); got '3'"},
        {{"--repeat", "0"}, "--repeat: 0 is out of range (1..1000000)"},
        {{"-x"}, "unknown option '-x' (see --help)"},
        {{"-qx"}, "unknown option '-x' in '-qx' (see --help)"},
        {{"--quiet=yes"}, "--quiet takes no value"},
        {{"--threads", "0"}, "--threads: 0 is out of range (1..256)"},
        {{"--threads", "99999999999999999999"}, "--threads: 99999999999999999999 is out of range (1..256)"},
        {{"--format", "jpeg"}, "--format takes png, tiff, ppm or pam; got 'jpeg'"},
        {{"--compression", "jpeg"}, "--compression takes none, deflate or lzw; got 'jpeg'"},
        {{"--name", "out.png"}, "--name needs a file name containing {name} (and no '/'), e.g. "
                                "'{name}-corrected.{ext}'; got 'out.png'"},
        {{"--gamma", "2"}, "unknown option '--gamma' (see --help)"},
        {{"--output="}, "--output needs a file name"},
    };
    for (const auto& [arguments, message] : cases) {
        EXPECT_EQ(error_of<Usage_error>([&] { parse_options(arguments); }), message);
    }
}

TEST(CorrectionPlan, TheChartDefaultsGiveWayToTheOptionsGiven)
{
    const Correction_plan own = make_correction_plan(
        parse_options({"--matrix", "identity", "--output-curve", "none", "--bits", "16"}), {true, 16});
    ASSERT_EQ(own.matrices.size(), 1u);
    EXPECT_EQ(own.matrices[0], (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_FALSE(own.output_tables);
    EXPECT_EQ(own.output_bits, 16);
    // A small output table bounds the default clamp by its last entry.
    const Correction_plan small = make_correction_plan(
        parse_options({"--output-curve", "linear", "--output-table-bits", "12"}), sixteen_bit_file);
    for (const Channel_settings& channel : small.channels) {
        EXPECT_EQ(channel.clamp_min, 0);
        EXPECT_EQ(channel.clamp_max, 4095);
    }
}

TEST(CorrectionPlan, SettingsWhoseResultsWouldNotFitAreRefused)
{
    const std::string advice = "; use a right --shift, a smaller --clamp or an output curve";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--clamp", "0,100,200,100,0,100"}, "--clamp: the green minimum 200 is above its maximum 100"},
        {{"--clamp", "0,4096", "--output-curve", "srgb", "--output-table-bits", "12"},
         "--clamp: the red maximum 4096 is beyond the last entry (4095) of the output table"},
        {{"--clamp", "7,7", "--output-curve", "srgb", "--output-table-bits", "12"}, "no error"},
        {{"--clamp", "0,65535"}, "no error"}, // without an output table no table bounds the clamp
        {{"--bits", "8", "--shift", "0"}, "the red results reach 65535, beyond 8-bit samples (0..255)" + advice},
        {{"--shift", "0,0,1"}, "the blue results reach 131070, beyond 16-bit samples (0..65535)" + advice},
        {{"--bits", "8", "--shift", "-7"}, "the red results reach 511, beyond 8-bit samples (0..255)" + advice},
        {{"--clamp", "0,4095", "--shift", "4"}, "no error"}, // 12 bits shifted by 4 fill 16 exactly
        {{"--bits", "8", "--clamp", "0,255", "--shift", "0"}, "no error"},
        {{"--bits", "8", "--output-curve", "srgb", "--shift", "1"},
         "the red results reach 510, beyond 8-bit samples (0..255)" + advice},
    };
    for (const auto& [arguments, message] : cases) {
        EXPECT_EQ(plan_error(arguments), message);
    }

    // Raw output entries wider than a sample are accepted when a right shift brings them into range.
    const xvr_color_test::Scratch_folder folder;
    const std::string path = folder.file("wide_entries.txt");
    std::ofstream(path) << "0\n65536\n131071\n262143\n";
    const Correction_plan plan = make_correction_plan(
        parse_options({"--output-table", path, "--output-table-bits", "2", "--shift", "-2"}), sixteen_bit_file);
    EXPECT_EQ((*plan.output_tables)[2], (Lookup_table{0, 65536, 131071, 262143}));
    EXPECT_EQ(plan_error({"--output-table", path, "--output-table-bits", "2"}),
              "the red results reach 262143, beyond 16-bit samples (0..65535)" + advice);
}

TEST(CorrectionPlan, EightBitOutputRoundsAndOnlyDepthChangesKeepColours)
{
    const Correction_plan rounded = make_correction_plan(parse_options({"--bits", "8"}), sixteen_bit_file);
    ASSERT_TRUE(rounded.output_tables);
    const Lookup_table& table = (*rounded.output_tables)[0];
    for (std::int32_t v = 0; v < 65536; v += 1) { // nearest of v / 257, computed independently
        ASSERT_EQ(table[v], (2 * v + 257) / 514) << v;
    }
    EXPECT_EQ(rounded.channels[0].shift, 0);
    EXPECT_FALSE(make_correction_plan(parse_options({"--bits", "8", "--shift", "-8"}), sixteen_bit_file).output_tables);
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{}, true}, {{"--bits", "8"}, true}, {{"--bits", "8", "--shift", "-8"}, true},
        {{"--matrix", "identity", "--matrix", "identity"}, true}, {{"--matrix", "2,0,0,0,1,0,0,0,1"}, false},
        {{"--output-curve", "srgb"}, false}, {{"--input-curve", "linear"}, false}, {{"--clamp", "0,65535"}, false},
        {{"--bits", "8", "--shift", "-9"}, false},
    };
    for (const auto& [arguments, keeps] : cases) {
        EXPECT_EQ(make_correction_plan(parse_options(arguments), sixteen_bit_file).keeps_colours, keeps)
            << arguments.size();
    }
}

TEST(CorrectionPlan, LargestFinalValueLooksOnlyAtTheReachableTableEntries)
{
    const Lookup_table table{900, 5, 6, 7, 800};
    const auto largest = [](int shift, const Lookup_table* output_table) {
        Channel_settings channel{1, 3, shift}; // clamp 1..3
        return largest_final_value(channel, output_table);
    };
    EXPECT_EQ(largest(0, &table), 7);
    EXPECT_EQ(largest(-1, &table), 3);
    EXPECT_EQ(largest(15, &table), 7 << 15);
    EXPECT_EQ(largest(0, nullptr), 3);
}
