// Runs the built xvr-color program on files it writes itself and checks the pixels it
// produces, what it prints, and how it fails.
#include "file_io.hpp"
#include "image_files.hpp"
#include "netpbm_codec.hpp"
#include "program_run.hpp"
#include "scratch_folder.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace xvr_color;
using namespace xvr_color_test;

namespace {

using Rgb = std::array<std::uint16_t, 3>;

Image image_of_pixels(int sample_bits, const std::vector<Rgb>& pixels)
{
    Image image = make_blank_image(static_cast<std::uint32_t>(pixels.size()), 1, sample_bits);
    image.samples.clear();
    for (const Rgb& pixel : pixels) {
        image.samples.insert(image.samples.end(), pixel.begin(), pixel.end());
    }
    return image;
}

std::vector<Rgb> pixels_of(const Image& image)
{
    std::vector<Rgb> pixels;
    for (std::size_t i = 0; i + 2 < image.samples.size(); i += 3) {
        pixels.push_back(Rgb{image.samples[i], image.samples[i + 1], image.samples[i + 2]});
    }
    return pixels;
}

Rgb pixel_at(const Image& image, std::uint32_t x, std::uint32_t y)
{
    const std::size_t at = (static_cast<std::size_t>(y) * image.width + x) * 3;
    return Rgb{image.samples[at], image.samples[at + 1], image.samples[at + 2]};
}

void write_text(const std::string& path, const std::string& text)
{
    write_file_atomically(path, std::vector<std::uint8_t>(text.begin(), text.end()));
}

// One folder per test, with the program run inside it.
class XvrColor : public ::testing::Test {
protected:
    Program_run run(const std::vector<std::string>& arguments)
    {
        Program_run result = run_program(XVR_COLOR_PROGRAM, arguments, m_folder.path());
        EXPECT_NE(result.exit_status, -1) << "the program did not exit normally";
        return result;
    }

    // Runs one correction of the given pixels and returns the output pixels.
    std::vector<Rgb> correct(const std::vector<Rgb>& pixels, int input_bits,
                             std::vector<std::string> arguments, const std::string& output = "out.ppm")
    {
        write_image_file(file("in.ppm"), image_of_pixels(input_bits, pixels));
        arguments.insert(arguments.begin(), {"in.ppm", "-o", output});
        const Program_run result = run(arguments);
        EXPECT_EQ(result.exit_status, 0) << result.err;
        return pixels_of(read_image_file(file(output)));
    }

    std::string file(const std::string& name) const { return m_folder.file(name); }
    std::vector<std::string> entries() const { return m_folder.entries(); }

    Scratch_folder m_folder;
};

} // namespace

// ---- The embedded default -------------------------------------------------------------------

TEST_F(XvrColor, WithoutAnInputItCorrectsTheTestChartAndSaysWhatItDid)
{
#if XVR_COLOR_HAS_PNG
    const std::string chart_file = "xvr-color-chart.png";
    const Program_run result = run({});
#else
    const Program_run without_png = run({});
    EXPECT_EQ(without_png.exit_status, 1);
    EXPECT_NE(without_png.err.find("liblodepng-dev:i386"), std::string::npos) << without_png.err;
    const std::string chart_file = "xvr-color-chart.ppm";
    const Program_run result = run({"--output", chart_file});
#endif
    ASSERT_EQ(result.exit_status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("input built-in test chart, 768 x 512, 16-bit RGB"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("vector level "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("megapixels per second"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("wrote " + chart_file + ", 768 x 512, 8-bit"), std::string::npos)
        << result.out;
    ASSERT_EQ(entries(), std::vector<std::string>{chart_file});

    const Image chart = read_image_file(file(chart_file));
    ASSERT_EQ(chart.width, 768u);
    ASSERT_EQ(chart.height, 512u);
    EXPECT_EQ(chart.sample_bits, 8);
    // Greys keep their level through the saturation matrix and leave through the sRGB curve.
    EXPECT_EQ(pixel_at(chart, 0, 32), (Rgb{0, 0, 0}));
    EXPECT_EQ(pixel_at(chart, 767, 32), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixel_at(chart, 400, 32), (Rgb{191, 191, 191})); // sRGB of 34177 / 65535
    const std::uint16_t near_black[8] = {0, 0, 0, 0, 1, 3, 13, 34};
    for (std::uint32_t patch = 0; patch < 8; ++patch) {
        const std::uint16_t level = near_black[patch];
        EXPECT_EQ(pixel_at(chart, patch * 96 + 48, 6 * 64 + 32), (Rgb{level, level, level})) << patch;
    }
    EXPECT_EQ(pixel_at(chart, 7 * 96 + 48, 7 * 64 + 32), (Rgb{253, 253, 253}));
    // Saturated primaries are pushed beyond the range and held there by the clamp.
    EXPECT_EQ(pixel_at(chart, 48, 5 * 64 + 32), (Rgb{255, 0, 0}));
    EXPECT_EQ(pixel_at(chart, 96 + 48, 5 * 64 + 32), (Rgb{0, 255, 0}));
    EXPECT_EQ(pixel_at(chart, 2 * 96 + 48, 5 * 64 + 32), (Rgb{0, 0, 255}));
}

TEST_F(XvrColor, AVectorLevelForcedToZeroGivesTheSameOutputAsAuto)
{
    ASSERT_EQ(run({"-o", "auto.pam"}).exit_status, 0);
    const Program_run scalar = run({"-o", "scalar.pam", "--vector", "0"});
    ASSERT_EQ(scalar.exit_status, 0) << scalar.err;
    EXPECT_NE(scalar.out.find("vector level 0 (scalar), forced level 0"), std::string::npos)
        << scalar.out;
    EXPECT_EQ(read_file(file("auto.pam")), read_file(file("scalar.pam")));

    const std::vector<std::string> sixteen_bit = {"--bits", "16", "--input-curve", "srgb",
                                                  "--output-curve", "gamma:2.2"};
    std::vector<std::string> automatic = {"-o", "auto16.ppm"}, forced = {"-o", "scalar16.ppm", "--vector=0"};
    automatic.insert(automatic.end(), sixteen_bit.begin(), sixteen_bit.end());
    forced.insert(forced.end(), sixteen_bit.begin(), sixteen_bit.end());
    ASSERT_EQ(run(automatic).exit_status, 0);
    ASSERT_EQ(run(forced).exit_status, 0);
    EXPECT_EQ(read_file(file("auto16.ppm")), read_file(file("scalar16.ppm")));
}

TEST_F(XvrColor, RepeatRunsTheTransformThatManyTimesAndHelpNeedsNoLibrary)
{
    const Program_run repeated = run({"--repeat", "3", "-o", "c.ppm"});
    ASSERT_EQ(repeated.exit_status, 0) << repeated.err;
    EXPECT_NE(repeated.out.find("3 transforms of 393216 pixels in "), std::string::npos)
        << repeated.out;
    const Program_run help = run({"--help"});
    EXPECT_EQ(help.exit_status, 0);
    EXPECT_EQ(help.out.rfind("Usage: xvr-color", 0), 0u);
    EXPECT_EQ(entries(), std::vector<std::string>{"c.ppm"});
}

// ---- Golden round trips ---------------------------------------------------------------------

TEST_F(XvrColor, IdentityReproducesSixteenBitImagesInEveryFormat)
{
    const std::vector<Rgb> pixels = {{0, 1, 2}, {65535, 65534, 32768}, {4660, 43981, 255}, {256, 0, 65535}};
    std::vector<std::string> outputs = {"out.ppm", "out.pam"};
#if XVR_COLOR_HAS_PNG
    outputs.push_back("out.png");
#endif
    for (const std::string& output : outputs) {
        EXPECT_EQ(correct(pixels, 16, {}, output), pixels) << output;
        EXPECT_EQ(read_image_file(file(output)).sample_bits, 16) << output;
    }
    // The file itself comes back byte for byte.
    EXPECT_EQ(read_file(file("out.ppm")), read_file(file("in.ppm")));
    EXPECT_EQ(correct(pixels, 16, {"--matrix", "identity", "--input-curve", "linear",
                                   "--output-curve", "linear"}),
              pixels);
}

TEST_F(XvrColor, IdentityReproducesEightBitImages)
{
    std::vector<Rgb> pixels;
    for (std::uint16_t v = 0; v < 256; v += 15) {
        pixels.push_back(Rgb{v, static_cast<std::uint16_t>(255 - v), static_cast<std::uint16_t>(v / 2)});
    }
    EXPECT_EQ(correct(pixels, 8, {}), pixels);
    EXPECT_EQ(read_image_file(file("out.ppm")).sample_bits, 8);
    // Widened to 16 bits on request: v x 257.
    const std::vector<Rgb> wide = correct({{0, 128, 255}}, 8, {"--bits", "16"});
    EXPECT_EQ(wide, (std::vector<Rgb>{{0, 32896, 65535}}));
}

// ---- Known corrections on known pixels ------------------------------------------------------

TEST_F(XvrColor, AKnownMatrixGivesKnownValuesWithRoundingAndClamping)
{
    // Red takes blue, green is halved (x.5 rounds up), blue is 1.5 red minus blue.
    const std::vector<Rgb> result = correct(
        {{1000, 2000, 3000}, {2001, 2001, 65535}, {0, 65535, 0}, {65535, 65535, 65535}, {65535, 0, 0}},
        16, {"--matrix", "0,0,1, 0,0.5,0, 1.5,0,-1"});
    EXPECT_EQ(result, (std::vector<Rgb>{{3000, 1000, 0},        // -1500 held at 0
                                        {65535, 1001, 0},       // 1000.5 rounds up
                                        {0, 32768, 0},          // 32767.5 rounds up
                                        {65535, 32768, 32768},
                                        {0, 0, 65535}}));       // 98302.5 held at 65535
}

TEST_F(XvrColor, TheMatrixGivenLastActsOnThePixelsFirst)
{
    const std::string swap_red_and_blue = "0,0,1,0,1,0,1,0,0";
    const std::string halve_red = "0.5,0,0,0,1,0,0,0,1";
    EXPECT_EQ(correct({{1000, 2000, 3000}}, 16, {"--matrix", swap_red_and_blue, "--matrix", halve_red}),
              (std::vector<Rgb>{{3000, 2000, 500}}));
    EXPECT_EQ(correct({{1000, 2000, 3000}}, 16, {"--matrix", halve_red, "--matrix", swap_red_and_blue}),
              (std::vector<Rgb>{{1500, 2000, 1000}}));
}

TEST_F(XvrColor, EightBitOutputThroughTheSrgbCurve)
{
    // 32768 is linear 0.5 (sRGB 0.7354, 187.5 of 255); 11796 is 18% grey.
    EXPECT_EQ(correct({{0, 65535, 32768}, {11796, 1024, 256}}, 16, {"--output-curve", "srgb", "--bits", "8"}),
              (std::vector<Rgb>{{0, 255, 188}, {118, 34, 13}}));
}

TEST_F(XvrColor, SrgbDecodedAndEncodedAgainGivesEveryEightBitValueBack)
{
    std::vector<Rgb> pixels;
    for (std::uint16_t v = 0; v < 256; ++v) {
        pixels.push_back(Rgb{v, static_cast<std::uint16_t>(255 - v), v});
    }
    EXPECT_EQ(correct(pixels, 8, {"--input-curve", "srgb", "--output-curve", "srgb"}), pixels);
}

TEST_F(XvrColor, ClampAndShiftActPerChannel)
{
    const std::vector<Rgb> result = correct({{500, 1500, 2500}, {30000, 30000, 5000}}, 16,
                                            {"--clamp", "1000,2000,0,65535,0,4095", "--shift", "-4,0,4"});
    EXPECT_EQ(result, (std::vector<Rgb>{{62, 1500, 40000}, {125, 30000, 65520}}));
}

TEST_F(XvrColor, TablesFromFilesAndSmallTablesAreUsed)
{
    std::string inverted;
    for (int i = 0; i < 256; ++i) {
        inverted += std::to_string(255 - i) + "\n";
    }
    write_text(file("inverted.txt"), inverted);
    EXPECT_EQ(correct({{0, 65535, 32768}}, 16,
                      {"--output-table", "inverted.txt", "--output-table-bits", "8", "--bits", "8"}),
              (std::vector<Rgb>{{255, 0, 127}}));

    write_text(file("invert.cube"), "TITLE \"invert\"\nLUT_1D_SIZE 2\n1 1 1\n0 0 0\n");
    EXPECT_EQ(correct({{0, 100, 65535}}, 16, {"--input-table", "invert.cube"}),
              (std::vector<Rgb>{{65535, 65435, 0}}));

    // A 4096-entry linear table: 32768 lands on entry 2048, which holds 2048 x 65535 / 4095.
    EXPECT_EQ(correct({{0, 65535, 32768}}, 16, {"--output-curve", "linear", "--output-table-bits", "12"}),
              (std::vector<Rgb>{{0, 65535, 32776}}));
}

// ---- Mistakes a user makes: one line on standard error, a non-zero status, no output -------

namespace {

struct Expected_failure {
    int status;
    std::string message_part;
};

} // namespace

class XvrColorMistakes : public XvrColor {
protected:
    // Runs, then checks the status, that stderr is one line holding the part, and that the
    // folder holds only what it held before.
    void expect_failure(const std::vector<std::string>& arguments, const Expected_failure& expected)
    {
        const std::vector<std::string> before = entries();
        const Program_run result = run(arguments);
        EXPECT_EQ(result.exit_status, expected.status) << result.err;
        EXPECT_EQ(line_count(result.err), 1) << result.err;
        EXPECT_EQ(result.err.rfind("xvr-color: ", 0), 0u) << result.err;
        EXPECT_NE(result.err.find(expected.message_part), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(entries(), before) << "a failed run left a file behind";
    }

    void write_good_input() { write_image_file(file("in.ppm"), image_of_pixels(16, {{1, 2, 3}, {4, 5, 6}})); }
};

TEST_F(XvrColorMistakes, MissingOrTruncatedInputFiles)
{
    expect_failure({"missing.ppm", "-o", "out.ppm"},
                   {1, "cannot open missing.ppm: No such file or directory"});
    write_image_file(file("whole.ppm"), image_of_pixels(16, {{1, 2, 3}, {4, 5, 6}}));
    std::vector<std::uint8_t> bytes = read_file(file("whole.ppm"));
    bytes.resize(bytes.size() - 3);
    write_file_atomically(file("cut.ppm"), bytes);
    expect_failure({"cut.ppm", "-o", "out.ppm"}, {1, "cut.ppm is truncated: it holds 9 of 12 bytes"});
#if XVR_COLOR_HAS_PNG
    write_image_file(file("whole.png"), image_of_pixels(16, {{1, 2, 3}, {4, 5, 6}}));
    bytes = read_file(file("whole.png"));
    bytes.resize(bytes.size() / 2);
    write_file_atomically(file("cut.png"), bytes);
    expect_failure({"cut.png", "-o", "out.png"}, {1, "cut.png is damaged or truncated"});
#endif
}

TEST_F(XvrColorMistakes, UnsupportedBitDepthsAndChannelCounts)
{
    write_text(file("deep.ppm"), "P6\n1 1\n70000\n" + std::string(6, '\0'));
    expect_failure({"deep.ppm", "-o", "out.ppm"},
                   {1, "deep.ppm has an unsupported bit depth: maxval 70000 is above 65535"});
    write_good_input();
    expect_failure({"in.ppm", "-o", "out.ppm", "--bits", "12"},
                   {2, "--bits: unsupported output bit depth 12; use 8 or 16"});
    write_text(file("alpha.pam"),
               "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcd");
    expect_failure({"alpha.pam", "-o", "out.pam"},
                   {1, "alpha.pam has an unsupported channel count: DEPTH 4 (RGB_ALPHA)"});
    write_text(file("grey.pgm"), "P5\n1 1\n255\nx");
    expect_failure({"grey.pgm", "-o", "out.ppm"},
                   {1, "grey.pgm has an unsupported channel count: it is greyscale (1 channel)"});
}

TEST_F(XvrColorMistakes, TableFilesWithTheWrongCountOrNonNumbers)
{
    write_good_input();
    write_text(file("short.txt"), "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    expect_failure({"in.ppm", "-o", "out.ppm", "--input-table", "short.txt"},
                   {1, "short.txt has 10 entries; the input table needs 65536 (2^16)"});
    write_text(file("words.txt"), "0\n1\nthree\n3\n");
    expect_failure({"in.ppm", "-o", "out.ppm", "--output-table", "words.txt", "--output-table-bits", "2"},
                   {1, "words.txt line 3: 'three' is not an integer"});
    write_text(file("short.cube"), "LUT_1D_SIZE 3\n0 0 0\n1 1 1\n");
    expect_failure({"in.ppm", "-o", "out.ppm", "--output-table", "short.cube"},
                   {1, "short.cube has 2 entries, but its LUT_1D_SIZE says 3"});
    expect_failure({"in.ppm", "-o", "out.ppm", "--output-table", "absent.cube"},
                   {1, "cannot open absent.cube: No such file or directory"});
}

TEST_F(XvrColorMistakes, BadMatricesShiftsAndClamps)
{
    write_good_input();
    expect_failure({"in.ppm", "-o", "out.ppm", "--matrix", "1,0,0,0,1,0,0,0"},
                   {2, "--matrix needs nine values (rows red, green, blue), got 8"});
    expect_failure({"in.ppm", "-o", "out.ppm", "--shift", "16"},
                   {2, "--shift: 16 is out of range (-15..15; negative shifts right)"});
    expect_failure({"in.ppm", "-o", "out.ppm", "--shift", "1"},
                   {2, "the red results reach 131070, beyond 16-bit samples"});
    expect_failure({"in.ppm", "-o", "out.ppm", "--clamp", "10,5"},
                   {2, "--clamp: the red minimum 10 is above its maximum 5"});
}

TEST_F(XvrColorMistakes, OutputNamesThatCannotWork)
{
    write_good_input();
    expect_failure({"in.ppm", "-o", "out.jpg"}, {2, "cannot tell the output format of 'out.jpg'"});
    expect_failure({"in.ppm"}, {2, "an input file needs an output file: add --output FILE"});
    expect_failure({"in.ppm", "-o", "no/such/folder/out.ppm"}, {1, "cannot write no/such/folder/out.ppm"});
    expect_failure({"--frobnicate"}, {2, "unknown option '--frobnicate'"});
}

TEST_F(XvrColorMistakes, AFailedRunLeavesAnExistingOutputUntouched)
{
    write_good_input();
    write_text(file("out.ppm"), "the previous result");
    write_text(file("words.txt"), "zero\n");
    expect_failure({"in.ppm", "-o", "out.ppm", "--output-table", "words.txt", "--output-table-bits", "1"},
                   {1, "words.txt line 1: 'zero' is not an integer"});
    const std::vector<std::uint8_t> kept = read_file(file("out.ppm"));
    EXPECT_EQ(std::string(kept.begin(), kept.end()), "the previous result");
}

TEST_F(XvrColorMistakes, CompanionLibrariesThatCannotBeFoundAreNamed)
{
    // A copy of the program whose ../lib holds the colour library but not its companions.
    ASSERT_EQ(mkdir(file("bin").c_str(), 0755), 0);
    ASSERT_EQ(mkdir(file("lib").c_str(), 0755), 0);
    write_file_atomically(file("bin/xvr-color"), read_file(XVR_COLOR_PROGRAM));
    ASSERT_EQ(chmod(file("bin/xvr-color").c_str(), 0755), 0);
    write_file_atomically(file("lib/" XVR_COLOR_CORE_SONAME), read_file(XVR_COLOR_CORE_LIBRARY));
    const std::vector<std::string> before = entries();

    const Program_run result = run_program(file("bin/xvr-color"), {"-o", "out.ppm"}, m_folder.path());
    EXPECT_EQ(result.exit_status, 1) << result.err;
    EXPECT_EQ(line_count(result.err), 1) << result.err;
    EXPECT_NE(result.err.find("cannot open libcorvane_xvr_LUT.so"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("LD_LIBRARY_PATH"), std::string::npos) << result.err;
    EXPECT_EQ(entries(), before);
}
