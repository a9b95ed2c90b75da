// The command line and the correction plan worked out from it. What the end-to-end runs show
// (each option's effect on pixels and files) is not repeated here.
#include "correction_plan.hpp"
#include "test_support.hpp"

#include <fstream>

using namespace xvr_color;
using xvr_color_test::error_of;

namespace {

const Run_context sixteen_bit_file{false, 16};

Correction_plan plan_of(const std::vector<std::string>& arguments, Run_context context = sixteen_bit_file)
{
    return make_correction_plan(parse_options(arguments), context);
}

} // namespace

// "=" values, grouped short flags with an attached value, "--" before names that look like
// options, blank-separated matrices in the order given, signed shifts, six clamp bounds.
TEST(Options, EverySpellingOfAValueIsUnderstood)
{
    const Options options = parse_options({"-qoout.png", "--matrix=identity", "--matrix", "0.5 0 0  0 0.5 0  0 0 -1e-3",
                                           "--shift=1,-2,+15", "--clamp", "1,2,3,4,5,6", "--output-table-bits=1",
                                           "--format", "tif", "--compression", "lzw", "--vector", "2", "--", "-q", "--help"});
    EXPECT_EQ(options.inputs, (std::vector<std::string>{"-q", "--help"}));
    EXPECT_EQ(options.output_path, "out.png");
    EXPECT_TRUE(options.quiet && !options.show_help);
    EXPECT_EQ(options.matrices, (std::vector<Matrix>{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0.5f, 0, 0, 0, 0.5f, 0, 0, 0, -1e-3f}}));
    EXPECT_EQ(*options.shift, (std::array<int, 3>{1, -2, 15}));
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ((*options.clamp)[c].min, 2 * c + 1);
        EXPECT_EQ((*options.clamp)[c].max, 2 * c + 2);
    }
    EXPECT_EQ(options.output_table_bits, 1);
    EXPECT_EQ(options.format, Image_file_format::tiff);
    EXPECT_EQ(options.tiff_compression, Tiff_compression::lzw);
    EXPECT_EQ(options.vector.level, 2);
    EXPECT_FALSE(options.vector.automatic);
    EXPECT_TRUE(parse_options({"-h"}).show_help);
    EXPECT_EQ(*parse_options({"--shift", "-15"}).shift, (std::array<int, 3>{-15, -15, -15}));
}

// Each mistake is refused, and the message names the option or the value at fault.
TEST(Options, EveryMistakeIsRefusedNamingWhatIsWrong)
{
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--matrix", "1,0,0,0,1,0,0,0"}, "got 8"}, {{"--matrix", "1,0,0,0,1,0,0,0,1,0"}, "got 10"},
        {{"--matrix", "1,0,0,0,x,0,0,0,1"}, "'x'"}, {{"--matrix", "1,0,0,0,inf,0,0,0,1"}, "'inf'"},
        {{"--matrix"}, "--matrix needs a value"}, {{"--shift", "16"}, "16 is out of range"},
        {{"--shift", "0,0,-16"}, "-16 is out of range"}, {{"--shift", "1,2"}, "got 2"}, {{"--shift", "one"}, "'one'"},
        {{"--clamp", "0,65536"}, "65536 is out of range"}, {{"--clamp", "1,2,3"}, "got 3"},
        {{"--input-curve", "srgb", "--input-table", "t.txt"}, "--input-curve or --input-table, not both"},
        {{"--output-table", "t.txt", "--output-curve", "srgb"}, "--output-curve or --output-table, not both"},
        {{"--output-curve", "rec709"}, "'rec709'"}, {{"--bits", "12"}, "depth 12"},
        {{"--output-table-bits", "17"}, "17 is out of range"}, {{"--vector", "3"}, "got '3'"},
        {{"--repeat", "0"}, "--repeat: 0"}, {{"-x"}, "'-x'"}, {{"-qx"}, "'-x' in '-qx'"},
        {{"--quiet=yes"}, "--quiet takes no value"}, {{"--threads", "0"}, "--threads: 0"},
        {{"--threads", "99999999999999999999"}, "99999999999999999999 is out of range"},
        {{"--format", "jpeg"}, "--format takes"}, {{"--compression", "jpeg"}, "--compression takes"},
        {{"--name", "out.png"}, "'out.png'"}, {{"--gamma", "2"}, "'--gamma'"}, {{"--output="}, "--output needs"},
    };
    for (const auto& [arguments, part] : cases) {
        const std::string message = error_of<Usage_error>([&] { parse_options(arguments); });
        EXPECT_NE(message.find(part), std::string::npos) << message;
    }
}

TEST(CorrectionPlan, TheChartDefaultsGiveWayToTheOptionsGiven)
{
    const Correction_plan own = plan_of({"--matrix", "identity", "--output-curve", "none", "--bits", "16"}, {true, 16});
    EXPECT_EQ(own.matrices, (std::vector<Matrix>{{1, 0, 0, 0, 1, 0, 0, 0, 1}}));
    EXPECT_FALSE(own.output_tables);
    EXPECT_EQ(own.output_bits, 16);
}

// Refused: a clamp beyond its own bounds or the output table, and results that would not fit
// the sample; the message names the channel and the value reached. Only the table entries the
// clamp lets through count.
TEST(CorrectionPlan, SettingsWhoseResultsWouldNotFitAreRefused)
{
    const xvr_color_test::Scratch_folder folder;
    const std::string wide = folder.file("wide_entries.txt");
    std::ofstream(wide) << "262143\n0\n65536\n131071\n";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--clamp", "0,100,200,100,0,100"}, "green minimum 200 is above its maximum 100"},
        {{"--clamp", "0,4096", "--output-curve", "srgb", "--output-table-bits", "12"}, "red maximum 4096 is beyond"},
        {{"--clamp", "7,7", "--output-curve", "srgb", "--output-table-bits", "12"}, ""},
        {{"--clamp", "0,65535"}, ""}, // without an output table no table bounds the clamp
        {{"--bits", "8", "--shift", "0"}, "red results reach 65535, beyond 8-bit"},
        {{"--shift", "0,0,1"}, "blue results reach 131070, beyond 16-bit"},
        {{"--bits", "8", "--shift", "-7"}, "red results reach 511"},
        {{"--clamp", "0,4095", "--shift", "4"}, ""}, // 12 bits shifted by 4 fill 16 exactly
        {{"--bits", "8", "--clamp", "0,255", "--shift", "0"}, ""},
        {{"--bits", "8", "--output-curve", "srgb", "--shift", "1"}, "red results reach 510"},
        {{"--output-table", wide, "--output-table-bits", "2"}, "red results reach 262143"},
        {{"--output-table", wide, "--output-table-bits", "2", "--shift", "-2"}, ""},
        {{"--output-table", wide, "--output-table-bits", "2", "--clamp", "1,1"}, ""},
    };
    for (const auto& [arguments, part] : cases) {
        const std::string message = error_of([&] { plan_of(arguments); });
        EXPECT_TRUE(part.empty() ? message == "no error" : message.find(part) != std::string::npos) << message;
    }
    // Entries wider than a sample are kept whole for the shift to bring into range.
    const Correction_plan plan = plan_of({"--output-table", wide, "--output-table-bits", "2", "--shift", "-2"});
    EXPECT_EQ((*plan.output_tables)[2], (Lookup_table{262143, 0, 65536, 131071}));
}

TEST(CorrectionPlan, EightBitOutputRoundsAndOnlyDepthChangesKeepColours)
{
    const Correction_plan rounded = plan_of({"--bits", "8"});
    ASSERT_TRUE(rounded.output_tables);
    const Lookup_table& table = (*rounded.output_tables)[0];
    for (std::int32_t v = 0; v < 65536; v += 1) { // nearest of v / 257, computed independently
        ASSERT_EQ(table[v], (2 * v + 257) / 514) << v;
    }
    EXPECT_EQ(rounded.channels[0].shift, 0);
    EXPECT_FALSE(plan_of({"--bits", "8", "--shift", "-8"}).output_tables);
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{}, true}, {{"--bits", "8"}, true}, {{"--bits", "8", "--shift", "-8"}, true},
        {{"--matrix", "identity", "--matrix", "identity"}, true}, {{"--matrix", "2,0,0,0,1,0,0,0,1"}, false},
        {{"--output-curve", "srgb"}, false}, {{"--input-curve", "linear"}, false}, {{"--clamp", "0,65535"}, false},
        {{"--bits", "8", "--shift", "-9"}, false},
    };
    for (const auto& [arguments, keeps] : cases) {
        EXPECT_EQ(plan_of(arguments).keeps_colours, keeps) << arguments.size();
    }
}
