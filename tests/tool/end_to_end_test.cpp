// Runs the built xvr-color program on files it writes itself and checks the pixels it
// produces, what it prints, and how it fails.
#include "file_io.hpp"
#include "image_files.hpp"
#include "test_support.hpp"

#include <array>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

using namespace xvr_color;
using namespace xvr_color_test;

namespace {

using Rgb = std::array<std::uint16_t, 3>;
using Pixels = std::vector<Rgb>;

struct Program_run {
    int exit_status = -1; // -1 when the program did not exit normally (e.g. a crash)
    std::string out, err;
};

std::string contents(FILE* file)
{
    std::string text(static_cast<std::size_t>(ftell(file)), '\0'); // the child's writes moved the offset
    rewind(file);
    text.resize(fread(&text[0], 1, text.size(), file));
    fclose(file);
    return text;
}

// Runs the program in `folder` without LD_LIBRARY_PATH, as when started by hand: it must find
// its libraries through its own RPATH.
Program_run run_program(const std::string& program, std::vector<std::string> arguments,
                        const std::string& folder)
{
    FILE* out = tmpfile();
    FILE* err = tmpfile();
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (std::string& argument : arguments) {
        argv.push_back(&argument[0]);
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(fileno(out), STDOUT_FILENO);
        dup2(fileno(err), STDERR_FILENO);
        unsetenv("LD_LIBRARY_PATH");
        if (chdir(folder.c_str()) == 0) {
            execv(program.c_str(), argv.data());
        }
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
}

Pixels pixels_of(const Image& image)
{
    Pixels pixels;
    for (std::size_t i = 0; i + 2 < image.samples.size(); i += 3) {
        pixels.push_back({image.samples[i], image.samples[i + 1], image.samples[i + 2]});
    }
    return pixels;
}

Image image_of_pixels(const Pixels& pixels, int sample_bits)
{
    std::vector<std::uint16_t> samples;
    for (const Rgb& pixel : pixels) {
        samples.insert(samples.end(), pixel.begin(), pixel.end());
    }
    return image_of(static_cast<std::uint32_t>(pixels.size()), 1, sample_bits, samples);
}

void write_text(const std::string& path, const std::string& text)
{
    write_file_atomically(path, std::vector<std::uint8_t>(text.begin(), text.end()));
}

// One folder per test, with the program run inside it.
class XvrColor : public ::testing::Test, protected Scratch_folder {
protected:
    Program_run run(const std::vector<std::string>& arguments)
    {
        Program_run result = run_program(XVR_COLOR_PROGRAM, arguments, path);
        EXPECT_NE(result.exit_status, -1) << "the program did not exit normally";
        return result;
    }

    // Corrects the pixels, written as in.ppm, and returns the output image.
    Image correct(const Pixels& pixels, int input_bits, std::vector<std::string> arguments,
                  const std::string& output = "out.ppm")
    {
        write_image_file(file("in.ppm"), image_of_pixels(pixels, input_bits));
        arguments.insert(arguments.begin(), {"in.ppm", "-o", output});
        const Program_run result = run(arguments);
        EXPECT_EQ(result.exit_status, 0) << result.err;
        return read_image_file(file(output));
    }
};

} // namespace

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
    for (const std::string& part : std::vector<std::string>{"input built-in test chart, 768 x 512, 16-bit RGB",
             "vector level ", "megapixels per second", "wrote " + chart_file + ", 768 x 512, 8-bit"}) {
        EXPECT_NE(result.out.find(part), std::string::npos) << result.out;
    }
    ASSERT_EQ(entries(), std::vector<std::string>{chart_file});

    const Image chart = read_image_file(file(chart_file));
    ASSERT_EQ(chart.width, 768u);
    ASSERT_EQ(chart.height, 512u);
    EXPECT_EQ(chart.sample_bits, 8);
    const Pixels pixels = pixels_of(chart);
    const auto at = [&](std::uint32_t x, std::uint32_t y) { return pixels[y * 768 + x]; };
    // Greys keep their level through the saturation matrix and leave through the sRGB curve.
    EXPECT_EQ(at(0, 32), (Rgb{0, 0, 0}));
    EXPECT_EQ(at(767, 32), (Rgb{255, 255, 255}));
    EXPECT_EQ(at(400, 32), (Rgb{191, 191, 191})); // sRGB of 34177 / 65535
    const std::uint16_t near_black[8] = {0, 0, 0, 0, 1, 3, 13, 34};
    for (std::uint32_t patch = 0; patch < 8; ++patch) {
        const std::uint16_t level = near_black[patch];
        EXPECT_EQ(at(patch * 96 + 48, 6 * 64 + 32), (Rgb{level, level, level})) << patch;
    }
    EXPECT_EQ(at(7 * 96 + 48, 7 * 64 + 32), (Rgb{253, 253, 253}));
    // Saturated primaries are pushed beyond the range and held there by the clamp.
    EXPECT_EQ(at(48, 5 * 64 + 32), (Rgb{255, 0, 0}));
    EXPECT_EQ(at(96 + 48, 5 * 64 + 32), (Rgb{0, 255, 0}));
    EXPECT_EQ(at(2 * 96 + 48, 5 * 64 + 32), (Rgb{0, 0, 255}));
}

TEST_F(XvrColor, AVectorLevelForcedToZeroGivesTheSameOutputAsAuto)
{
    const std::vector<std::vector<std::string>> settings = {
        {}, {"--bits", "16", "--input-curve", "srgb", "--output-curve", "gamma:2.2"}};
    for (const std::vector<std::string>& setting : settings) {
        const auto run_with = [&](std::vector<std::string> arguments) {
            arguments.insert(arguments.end(), setting.begin(), setting.end());
            return run(arguments);
        };
        ASSERT_EQ(run_with({"-o", "auto.pam"}).exit_status, 0);
        const Program_run scalar = run_with({"-o", "scalar.pam", "--vector", "0", "--repeat", "3"});
        ASSERT_EQ(scalar.exit_status, 0) << scalar.err;
        EXPECT_NE(scalar.out.find("vector level 0 (scalar), forced level 0"), std::string::npos) << scalar.out;
        EXPECT_NE(scalar.out.find("3 transforms of 393216 pixels in "), std::string::npos) << scalar.out;
        EXPECT_EQ(read_file(file("auto.pam")), read_file(file("scalar.pam"))) << setting.size();
    }
}

TEST_F(XvrColor, KnownSettingsOnKnownPixelsGiveKnownValues)
{
    write_text(file("inverted.txt"), "255\n170\n85\n0\n");
    write_text(file("invert.cube"), "TITLE \"invert\"\nLUT_1D_SIZE 2\n1 1 1\n0 0 0\n");
    const Pixels wide = {{0, 1, 2}, {65535, 65534, 32768}, {4660, 43981, 255}, {256, 0, 65535}};
    struct Case {
        const char* name; int input_bits; Pixels input; std::vector<std::string> arguments; Pixels expected;
        int output_bits; std::string output = "out.ppm";
    };
    const Case cases[] = {
        {"16-bit identity, PAM", 16, wide, {}, wide, 16, "out.pam"},
#if XVR_COLOR_HAS_PNG
        {"16-bit identity, PNG", 16, wide, {}, wide, 16, "out.png"},
#endif
        {"16-bit identity, explicit", 16, wide,
         {"--matrix", "identity", "--input-curve", "linear", "--output-curve", "linear"}, wide, 16},
        {"8-bit identity", 8, {{0, 255, 127}, {1, 254, 128}, {15, 240, 7}}, {},
         {{0, 255, 127}, {1, 254, 128}, {15, 240, 7}}, 8},
        {"8-bit widened (v x 257)", 8, {{0, 128, 255}}, {"--bits", "16"}, {{0, 32896, 65535}}, 16},
        // Red takes blue, green is halved (x.5 rounds up), blue is 1.5 red minus blue.
        {"known matrix", 16,
         {{1000, 2000, 3000}, {2001, 2001, 65535}, {0, 65535, 0}, {65535, 65535, 65535}, {65535, 0, 0}},
         {"--matrix", "0,0,1, 0,0.5,0, 1.5,0,-1"},
         {{3000, 1000, 0},       // -1500 held at 0
          {65535, 1001, 0},      // 1000.5 rounds up
          {0, 32768, 0},         // 32767.5 rounds up
          {65535, 32768, 32768},
          {0, 0, 65535}},        // 98302.5 held at 65535
         16},
        // The matrix given last acts first: halve red, then swap red and blue (the other order gives 1500, 1000).
        {"matrix order", 16, {{1000, 2000, 3000}},
         {"--matrix", "0,0,1,0,1,0,1,0,0", "--matrix", "0.5,0,0,0,1,0,0,0,1"}, {{3000, 2000, 500}}, 16},
        // 32768 is linear 0.5 (sRGB 0.7354, 187.5 of 255); 11796 is 18% grey.
        {"8-bit sRGB output", 16, {{0, 65535, 32768}, {11796, 1024, 256}},
         {"--output-curve", "srgb", "--bits", "8"}, {{0, 255, 188}, {118, 34, 13}}, 8},
        {"clamp and shift per channel", 16, {{500, 1500, 2500}, {30000, 30000, 5000}},
         {"--clamp", "1000,2000,0,65535,0,4095", "--shift", "-4,0,4"},
         {{62, 1500, 40000}, {125, 30000, 65520}}, 16},
        // 32768 is scaled to 1.50002 of 3 and rounds to entry 2.
        {"integer output table file", 16, {{0, 65535, 32768}},
         {"--output-table", "inverted.txt", "--output-table-bits", "2", "--bits", "8"}, {{255, 0, 85}}, 8},
        {"cube input table file", 16, {{0, 100, 65535}}, {"--input-table", "invert.cube"}, {{65535, 65435, 0}}, 16},
        // 32768 lands on entry 2048 of 4096, which holds 2048 x 65535 / 4095.
        {"12-bit linear output table", 16, {{0, 65535, 32768}},
         {"--output-curve", "linear", "--output-table-bits", "12"}, {{0, 65535, 32776}}, 16},
        {"16-bit identity, PPM", 16, wide, {}, wide, 16}, // last: its file is compared below
    };
    for (const Case& c : cases) {
        const Image result = correct(c.input, c.input_bits, c.arguments, c.output);
        EXPECT_EQ(pixels_of(result), c.expected) << c.name;
        EXPECT_EQ(result.sample_bits, c.output_bits) << c.name;
    }
    EXPECT_EQ(read_file(file("out.ppm")), read_file(file("in.ppm"))) << "identity gives the file back byte for byte";
    Pixels every_byte;
    for (std::uint16_t v = 0; v < 256; ++v) {
        every_byte.push_back(Rgb{v, static_cast<std::uint16_t>(255 - v), v});
    }
    EXPECT_EQ(pixels_of(correct(every_byte, 8, {"--input-curve", "srgb", "--output-curve", "srgb"})), every_byte)
        << "sRGB decoded and encoded again";
}

// Each mistake: one line on standard error, a non-zero status, and no output written or changed.
TEST_F(XvrColor, MistakesGetOneLineAStatusAndNoOutput)
{
    const Image good = image_of_pixels({{1, 2, 3}, {4, 5, 6}}, 16);
    const auto write_cut = [&](const std::string& whole, const std::string& cut, std::size_t drop) {
        write_image_file(file(whole), good);
        const std::vector<std::uint8_t> bytes = read_file(file(whole));
        write_file_atomically(file(cut), {bytes.begin(), bytes.end() - drop});
    };
    write_cut("in.ppm", "cut.ppm", 3);
    write_text(file("deep.ppm"), "P6\n1 1\n65536\n" + std::string(6, '\0'));
    write_text(file("alpha.pam"), "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcd");
    write_text(file("grey.pgm"), "P5\n1 1\n255\nx");
    write_text(file("short.txt"), "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    write_text(file("words.txt"), "0\n1\nthree\n3\n");
    write_text(file("short.cube"), "LUT_1D_SIZE 3\n0 0 0\n1 1 1\n");
    write_text(file("out.ppm"), "the previous result");
    struct Mistake { std::vector<std::string> arguments; int status; std::string message_part; };
    const auto on_input = [](std::vector<std::string> options) {
        options.insert(options.begin(), {"in.ppm", "-o", "out.ppm"});
        return options;
    };
    std::vector<Mistake> mistakes = {
        {{"missing.ppm", "-o", "out.ppm"}, 1, "cannot open missing.ppm: No such file or directory"},
        {{"cut.ppm", "-o", "out.ppm"}, 1, "cut.ppm is truncated: it holds 9 of 12 bytes"},
        {{"deep.ppm", "-o", "out.ppm"}, 1, "deep.ppm has an unsupported bit depth: maxval 65536 is above 65535"},
        {on_input({"--bits", "12"}), 2, "--bits: unsupported output bit depth 12; use 8 or 16"},
        {{"alpha.pam", "-o", "out.pam"}, 1, "alpha.pam has an unsupported channel count: DEPTH 4 (RGB_ALPHA); "
                                            "xvr-color reads RGB images with 3 channels"},
        {{"grey.pgm", "-o", "out.ppm"}, 1, "grey.pgm has an unsupported channel count: it is greyscale (1 channel); "
                                           "xvr-color reads RGB images (PPM P6 or PAM with DEPTH 3)"},
        {on_input({"--input-table", "short.txt"}), 1, "short.txt has 10 entries; the input table needs 65536 (2^16)"},
        {on_input({"--output-table", "words.txt", "--output-table-bits", "2"}), 1,
         "words.txt line 3: 'three' is not an integer"},
        {on_input({"--output-table", "short.cube"}), 1, "short.cube has 2 entries, but its LUT_1D_SIZE says 3"},
        {on_input({"--output-table", "absent.cube"}), 1, "cannot open absent.cube: No such file or directory"},
        {on_input({"--matrix", "1,0,0,0,1,0,0,0"}), 2, "--matrix needs nine values (rows red, green, blue), got 8"},
        {on_input({"--shift", "16"}), 2, "--shift: 16 is out of range (-15..15; negative shifts right)"},
        {on_input({"--shift", "1"}), 2, "the red results reach 131070, beyond 16-bit samples"},
        {on_input({"--clamp", "10,5"}), 2, "--clamp: the red minimum 10 is above its maximum 5"},
        {{"in.ppm", "-o", "out.jpg"}, 2, "cannot tell the output format of 'out.jpg'"},
        {{"in.ppm"}, 2, "an input file needs an output file: add --output FILE"},
        {{"in.ppm", "-o", "no/such/folder/out.ppm"}, 1, "cannot write no/such/folder/out.ppm"},
        {{"--frobnicate"}, 2, "unknown option '--frobnicate'"},
    };
#if XVR_COLOR_HAS_PNG
    write_cut("whole.png", "cut.png", 20);
    mistakes.push_back({{"cut.png", "-o", "out.png"}, 1, "cut.png is damaged or truncated"});
#endif
    const std::vector<std::string> before = entries();
    for (const Mistake& mistake : mistakes) {
        SCOPED_TRACE(mistake.message_part);
        const Program_run result = run(mistake.arguments);
        EXPECT_EQ(result.exit_status, mistake.status) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.err.rfind("xvr-color: ", 0), 0u) << result.err;
        EXPECT_NE(result.err.find(mistake.message_part), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(entries(), before) << "a failed run left a file behind";
        const std::vector<std::uint8_t> kept = read_file(file("out.ppm"));
        EXPECT_EQ(std::string(kept.begin(), kept.end()), "the previous result");
    }
}

TEST_F(XvrColor, CompanionLibrariesThatCannotBeFoundAreNamedAndHelpNeedsNone)
{
    // A copy of the program whose ../lib holds the colour library but not its companions.
    namespace fs = std::filesystem;
    fs::create_directories(file("lib"));
    fs::create_directories(file("bin"));
    fs::copy_file(XVR_COLOR_PROGRAM, file("bin/xvr-color"));
    fs::copy_file(XVR_COLOR_CORE_LIBRARY, file("lib/" XVR_COLOR_CORE_SONAME));
    const std::vector<std::string> before = entries();

    const Program_run result = run_program(file("bin/xvr-color"), {"-o", "out.ppm"}, path);
    EXPECT_EQ(result.exit_status, 1) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find("cannot open libcorvane_xvr_LUT.so"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("LD_LIBRARY_PATH"), std::string::npos) << result.err;
    const Program_run help = run_program(file("bin/xvr-color"), {"--help"}, path);
    EXPECT_EQ(help.exit_status, 0) << help.err;
    EXPECT_EQ(help.out.rfind("Usage: xvr-color", 0), 0u);
    EXPECT_EQ(entries(), before);
}
