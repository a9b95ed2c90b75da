// Runs the built xvr-color program on files it writes itself and checks the pixels it
// produces, what it prints, and how it fails.
#include "file_io.hpp"
#include "image_files.hpp"
#include "test_support.hpp"

#include "png_codec.hpp"
#include "tiff_codec.hpp"

#include <array>
#include <functional>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace xvr_color;
using namespace xvr_color_test;

namespace {

using Rgb = std::array<std::uint16_t, 3>;
using Pixels = std::vector<Rgb>;

struct Program_run {
    int exit_status = -1; // -1 when the program did not exit normally (e.g. a crash)
    std::string out, err;
    int signal = 0;       // the signal that ended it, if one did
};

// What the child gets besides its arguments.
struct Child_setup {
    std::string standard_input = "/dev/null";
    int limited_resource = -1; // an RLIMIT_ value, or -1
    rlim_t limit = 0;
    std::function<void(pid_t)> while_running; // called in the parent before waiting
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
                        const std::string& folder, const Child_setup& setup = {})
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
        const rlimit limit{setup.limit, setup.limit};
        if (setup.limited_resource >= 0) {
            setrlimit(setup.limited_resource, &limit);
        }
        if (chdir(folder.c_str()) == 0 && freopen(setup.standard_input.c_str(), "rb", stdin) != nullptr) {
            execv(program.c_str(), argv.data());
        }
        _exit(127);
    }
    if (setup.while_running) {
        setup.while_running(child);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err),
            WIFSIGNALED(status) ? WTERMSIG(status) : 0};
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
    Program_run run(const std::vector<std::string>& arguments, const Child_setup& setup = {})
    {
        Program_run result = run_program(XVR_COLOR_PROGRAM, arguments, path, setup);
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
    EXPECT_EQ(result.out, "") << "the summary goes to standard error";
    for (const std::string& part : std::vector<std::string>{"input built-in test chart, 768 x 512, 16-bit RGB",
             "vector level ", "megapixels per second", "wrote " + chart_file + ", 768 x 512, 8-bit"}) {
        EXPECT_NE(result.err.find(part), std::string::npos) << result.err;
    }
    EXPECT_EQ(result.err.find('\r'), std::string::npos) << "no progress line when standard error is no terminal";
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
    // Saturated primaries are pushed beyond the range and held there by the clamp.
    EXPECT_EQ(at(48, 5 * 64 + 32), (Rgb{255, 0, 0}));
    EXPECT_EQ(at(96 + 48, 5 * 64 + 32), (Rgb{0, 255, 0}));
    EXPECT_EQ(at(2 * 96 + 48, 5 * 64 + 32), (Rgb{0, 0, 255}));
}

// The forced level reaches the processors and the repeats are counted. That every level gives
// the scalar engine's pixels under every option combination, the vector sweep shows; one
// comparison here covers the tool's slicing of the image.
TEST_F(XvrColor, AForcedVectorLevelIsUsedAndGivesTheSameOutputAsAuto)
{
    ASSERT_EQ(run({"-o", "auto.pam"}).exit_status, 0);
    const Program_run scalar = run({"-o", "scalar.pam", "--vector", "0", "--repeat", "3"});
    ASSERT_EQ(scalar.exit_status, 0) << scalar.err;
    EXPECT_NE(scalar.err.find("vector level 0 (scalar) ran, forced level 0"), std::string::npos) << scalar.err;
    EXPECT_NE(scalar.err.find("3 transforms of 393216 pixels in "), std::string::npos) << scalar.err;
    EXPECT_EQ(read_file(file("auto.pam")), read_file(file("scalar.pam")));
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
        // 8 bits round to nearest (v / 257: 128 -> 0.498, 386 -> 1.502); a shift cuts instead.
        {"8-bit rounding", 16, {{128, 129, 385}, {386, 65535, 32896}}, {"--bits", "8"}, {{0, 1, 1}, {2, 255, 128}}, 8},
        {"8-bit shift", 16, {{128, 129, 385}, {386, 65535, 32896}}, {"--bits", "8", "--shift", "-8"},
         {{0, 0, 1}, {1, 255, 128}}, 8},
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

// Each kind of mistake (the codec and option tests check each message): one line on standard
// error, status 1 for what is found in files and 2 for the command line, and no output written
// or changed.
TEST_F(XvrColor, MistakesGetOneLineAStatusAndNoOutput)
{
    const Image good = image_of_pixels({{1, 2, 3}, {4, 5, 6}}, 16);
    const auto write_cut = [&](const std::string& whole, const std::string& cut, std::size_t drop) {
        write_image_file(file(whole), good);
        const std::vector<std::uint8_t> bytes = read_file(file(whole));
        write_file_atomically(file(cut), {bytes.begin(), bytes.end() - drop});
    };
    write_cut("in.ppm", "cut.ppm", 3);
    write_text(file("short.txt"), "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    write_text(file("out.ppm"), "the previous result");
    struct Mistake { std::vector<std::string> arguments; int status; std::string message_part; };
    const auto on_input = [](std::vector<std::string> options) {
        options.insert(options.begin(), {"in.ppm", "-o", "out.ppm"});
        return options;
    };
    std::vector<Mistake> mistakes = {
        {{"missing.ppm", "-o", "out.ppm"}, 1, "cannot open missing.ppm: No such file or directory"},
        {{"cut.ppm", "-o", "out.ppm"}, 1, "cut.ppm is truncated"},
        {on_input({"--bits", "12"}), 2, "--bits: unsupported output bit depth 12"},
        {on_input({"--input-table", "short.txt"}), 1, "short.txt has 10 entries"},
        {on_input({"--output-table", "absent.cube"}), 1, "cannot open absent.cube"},
        {on_input({"--shift", "1"}), 2, "the red results reach 131070"},
        {on_input({"--clamp", "10,5"}), 2, "--clamp: the red minimum 10 is above its maximum 5"},
        {{"in.ppm", "-o", "out.jpg"}, 2, "cannot tell the output format of 'out.jpg'"},
        {{"in.ppm"}, 2, "an input file needs an output file"},
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

namespace {

std::vector<std::uint8_t> fake_icc_profile(std::uint8_t mark)
{
    std::vector<std::uint8_t> profile(200, mark);
    std::copy_n("RGB ", 4, profile.begin() + 16);
    std::copy_n("acsp", 4, profile.begin() + 36);
    return profile;
}

bool has_temporary_file(const std::vector<std::string>& names)
{
    return std::any_of(names.begin(), names.end(),
                       [](const std::string& name) { return name.find(".xvr-color-") != std::string::npos; });
}

} // namespace

TEST_F(XvrColor, EveryFormatRoundTripsExactlyAndCarriesItsProfile)
{
    const std::vector<std::uint8_t> profile = fake_icc_profile(7);
    write_file_atomically(file("other.icc"), fake_icc_profile(9));
    struct Case { const char* name; int bits; Image_file_format format; const char* file; };
    std::vector<Case> cases = {{"PPM 16", 16, Image_file_format::ppm, "in.ppm"}};
#if XVR_COLOR_HAS_PNG
    cases.push_back({"PNG 8", 8, Image_file_format::png, "in.png"});
    cases.push_back({"PNG 16", 16, Image_file_format::png, "in16.png"});
#endif
#if XVR_COLOR_HAS_TIFF
    cases.push_back({"TIFF 8", 8, Image_file_format::tiff, "in.tif"});
    cases.push_back({"TIFF 16", 16, Image_file_format::tiff, "in16.tiff"});
#endif
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Image input = gradient(67, 5, c.bits);
        input.icc_profile = format_holds_profile(c.format) ? profile : std::vector<std::uint8_t>{};
        input.icc_profile_name = "Display P3";
        write_file_atomically(file(c.file), encode_image(input, c.format, {}));
        const std::string out = std::string("out.") + format_extension(c.format);
        // Identity: every sample and the profile, with its name where the format holds one, come back.
        const Program_run identity = run({c.file, "-o", out, "--compression", "lzw"});
        ASSERT_EQ(identity.exit_status, 0) << identity.err;
        const Image read = read_image_file(file(out));
        EXPECT_EQ(std::tie(read.samples, read.sample_bits, read.icc_profile),
                  std::tie(input.samples, input.sample_bits, input.icc_profile));
        EXPECT_EQ(read.icc_profile_name, c.format == Image_file_format::png ? input.icc_profile_name : "");
        EXPECT_EQ(identity.err.find("note:"), std::string::npos) << identity.err;
        if (!format_holds_profile(c.format)) {
            continue;
        }
        const std::vector<std::string> changing = {c.file, "-o", out, "--matrix", "0.5,0,0,0,1,0,0,0,1"};
        const Program_run dropped = run(changing);
        EXPECT_TRUE(read_image_file(file(out)).icc_profile.empty());
        EXPECT_NE(dropped.err.find(std::string("note: the ICC profile of ") + c.file), std::string::npos) << dropped.err;
        EXPECT_NE(dropped.err.find("was dropped: the correction changes the colours"), std::string::npos) << dropped.err;
        std::vector<std::string> keep = changing;
        keep.push_back("--keep-profile");
        ASSERT_EQ(run(keep).exit_status, 0);
        EXPECT_EQ(read_image_file(file(out)).icc_profile, profile);
        std::vector<std::string> other = changing;
        other.insert(other.end(), {"--output-profile", "other.icc"});
        ASSERT_EQ(run(other).exit_status, 0);
        EXPECT_EQ(read_image_file(file(out)).icc_profile, fake_icc_profile(9));
        const Program_run to_ppm = run({c.file, "-o", "flat.ppm"});
        EXPECT_NE(to_ppm.err.find("was dropped: PPM files cannot hold one"), std::string::npos) << to_ppm.err;
    }
}

TEST_F(XvrColor, StandardInputToStandardOutputEqualsFileToFile)
{
    write_image_file(file("in.ppm"), gradient(50, 40, 16));
    const std::vector<std::string> correction = {"--matrix", "1.2,-0.1,-0.1,-0.1,1.2,-0.1,-0.1,-0.1,1.2",
                                                 "--output-curve", "srgb", "--bits", "8"};
    for (const char* format : {"ppm", "png", "tiff"}) {
        SCOPED_TRACE(format);
        std::vector<std::string> to_file = {"in.ppm", "-o", std::string("out.") + format};
        to_file.insert(to_file.end(), correction.begin(), correction.end());
        const Program_run by_file = run(to_file);
        if (by_file.exit_status != 0) {
            EXPECT_NE(by_file.err.find("built without"), std::string::npos) << by_file.err;
            continue;
        }
        std::vector<std::string> piped = {"-", "-o", "-", "--format", format};
        piped.insert(piped.end(), correction.begin(), correction.end());
        Child_setup setup;
        setup.standard_input = file("in.ppm");
        const Program_run by_pipe = run(piped, setup);
        ASSERT_EQ(by_pipe.exit_status, 0) << by_pipe.err;
        const std::vector<std::uint8_t> expected = read_file(file(std::string("out.") + format));
        EXPECT_EQ(std::vector<std::uint8_t>(by_pipe.out.begin(), by_pipe.out.end()), expected);
        EXPECT_NE(by_pipe.err.find("wrote standard output"), std::string::npos) << by_pipe.err;
    }
    const Program_run quiet = run({"in.ppm", "-q", "-o", "out.ppm"});
    EXPECT_EQ(quiet.exit_status, 0);
    EXPECT_EQ(quiet.err, "");
}

TEST_F(XvrColor, OneTwoOrThreeThreadsGiveIdenticalBytes)
{
    // 700 x 300 pixels make several slices of the transform and several pieces of PNG data.
    write_image_file(file("in.ppm"), gradient(700, 300, 16));
    std::vector<std::uint8_t> first;
    for (const char* threads : {"1", "2", "3"}) {
        for (const char* output : {"out.ppm", "out.png"}) {
            const Program_run result = run({"in.ppm", "-o", output, "--threads", threads, "--input-curve", "srgb",
                                            "--matrix", "0.9,0.1,0,0.05,0.9,0.05,0,0.1,0.9", "--output-curve", "srgb"});
            if (result.exit_status != 0 && std::string(output) == "out.png") {
                continue; // a build without PNG support
            }
            ASSERT_EQ(result.exit_status, 0) << result.err;
            EXPECT_NE(result.err.find(std::string(" on ") + threads + " thread"), std::string::npos) << result.err;
        }
        const std::vector<std::uint8_t> bytes = read_file(file("out.ppm"));
        if (first.empty()) {
            first = bytes;
            write_file_atomically(file("first.png"), read_file(file("out.png")));
        }
        EXPECT_EQ(bytes, first) << threads;
        EXPECT_EQ(read_file(file("out.png")), read_file(file("first.png"))) << threads;
    }
}

TEST_F(XvrColor, ABatchWritesEveryGoodFileAndFailsAtTheEnd)
{
    write_image_file(file("a.ppm"), gradient(8, 8, 16));
    write_text(file("b.ppm"), "P6\n4 4\n255\nshort");
    write_image_file(file("c.pam"), gradient(5, 3, 8));
    const Program_run result = run({"a.ppm", "b.ppm", "c.pam", "--output-dir", "out", "--name", "{name}-fixed.{ext}",
                                    "--matrix", "0,0,1,0,1,0,1,0,0"});
    EXPECT_EQ(result.exit_status, 1);
    // Two files written, one failed, the vector level and the total.
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 5) << result.err;
    EXPECT_NE(result.err.find("xvr-color: b.ppm is truncated"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("corrected 2 of 3 files"), std::string::npos) << result.err;
    EXPECT_EQ(entries("out"), (std::vector<std::string>{"a-fixed.ppm", "c-fixed.pam"}));
    const Pixels a = pixels_of(read_image_file(file("a.ppm")));
    const Pixels fixed = pixels_of(read_image_file(file("out/a-fixed.ppm")));
    ASSERT_EQ(fixed.size(), a.size());
    EXPECT_EQ(fixed[9], (Rgb{a[9][2], a[9][1], a[9][0]}));

    const Program_run clash = run({"a.ppm", "out/../a.ppm", "--output-dir", "out"});
    EXPECT_EQ(clash.exit_status, 2);
    EXPECT_NE(clash.err.find("would both be written to out/a.ppm"), std::string::npos) << clash.err;
}

// The hostile cases: nothing damaged, nothing left behind, the right reason.
TEST_F(XvrColor, HostileInputAndInterruptionsLeaveNothingBehind)
{
    write_image_file(file("in.ppm"), gradient(40, 30, 16));
    const std::vector<std::uint8_t> original = read_file(file("in.ppm"));
    for (const std::vector<std::string>& same : std::vector<std::vector<std::string>>{
             {"in.ppm", "-o", "in.ppm"}, {"in.ppm", "-o", "./in.ppm", "--bits", "8"}}) {
        const Program_run refused = run(same);
        EXPECT_EQ(refused.exit_status, 2);
        EXPECT_NE(refused.err.find("is the input file in.ppm; add --in-place"), std::string::npos) << refused.err;
        EXPECT_EQ(read_file(file("in.ppm")), original);
    }
    ASSERT_EQ(run({"in.ppm", "-o", "in.ppm", "--in-place", "--matrix", "0.5,0,0,0,1,0,0,0,1"}).exit_status, 0);
    EXPECT_NE(read_file(file("in.ppm")), original);

    // A file-size limit makes the write fail; the temporary file goes.
    Child_setup small_files;
    small_files.limited_resource = RLIMIT_FSIZE;
    small_files.limit = 1000;
    const Program_run too_big = run({"in.ppm", "-o", "big.ppm"}, small_files);
    EXPECT_EQ(too_big.exit_status, 1);
    EXPECT_NE(too_big.err.find("cannot write big.ppm: File too large"), std::string::npos) << too_big.err;

    // SIGTERM while the output is being made (its temporary file exists from the start).
    Child_setup terminated;
    terminated.while_running = [&](pid_t child) {
        for (int wait = 0; wait < 500 && !has_temporary_file(entries()); ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        kill(child, SIGTERM);
    };
    const Program_run killed = run_program(XVR_COLOR_PROGRAM, {"-o", "chart.ppm", "--repeat", "100000"}, path, terminated);
    EXPECT_EQ(killed.signal, SIGTERM);
    EXPECT_FALSE(has_temporary_file(entries()));
    EXPECT_FALSE(std::filesystem::exists(file("chart.ppm")));

    // Endless or huge inputs are judged by their header, not read whole.
    Child_setup random_input;
    random_input.standard_input = "/dev/urandom";
    const Program_run noise = run({"-", "-o", "x.ppm"}, random_input);
    EXPECT_EQ(noise.exit_status, 1);
    EXPECT_NE(noise.err.find("standard input"), std::string::npos) << noise.err;
    {
        // A 1 x 1 PNG whose next chunk claims 2 GB, in a sparse file of 3 GB.
        const std::uint8_t header[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R',
                                       0, 0, 0, 1, 0, 0, 0, 1, 16, 2, 0, 0, 0, 0xc0, 0xe7, 0x8f, 0x9d, // CRC
                                       0x7f, 0xff, 0xff, 0xff, 'I', 'D', 'A', 'T'};
        write_file_atomically(file("huge.png"), std::vector<std::uint8_t>(std::begin(header), std::end(header)));
        std::filesystem::resize_file(file("huge.png"), 3ull << 30);
    }
    const Program_run huge = run({"huge.png", "-o", "x.ppm"});
    EXPECT_EQ(huge.exit_status, 1);
    EXPECT_NE(huge.err.find("huge.png is too large"), std::string::npos) << huge.err;
    std::filesystem::remove(file("huge.png"));
    EXPECT_FALSE(has_temporary_file(entries()));
    EXPECT_FALSE(std::filesystem::exists(file("x.ppm")));
}

#if XVR_COLOR_HAS_PNG
TEST_F(XvrColor, ADecoderOutOfMemoryIsReportedAsMemory)
{
    // 12 megapixels of zeros: a small file whose decoding needs more than the limit below
    // leaves beside the program itself (about 70 MiB of libraries).
    write_file_atomically(file("vast.png"), encode_png(make_blank_image(4000, 3000, 16), 2));
    Child_setup little_memory;
    little_memory.limited_resource = RLIMIT_AS;
    little_memory.limit = 160u << 20;
    const Program_run result = run({"vast.png", "-o", "x.ppm", "--threads", "1"}, little_memory);
    EXPECT_EQ(result.exit_status, 1);
    EXPECT_NE(result.err.find("not enough memory"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("damaged"), std::string::npos) << result.err;
}
#endif

TEST_F(XvrColor, VersionAndManualPageTellTheSameAsHelp)
{
    const Program_run version = run({"--version"});
    EXPECT_EQ(version.exit_status, 0);
    EXPECT_EQ(version.out.rfind("xvr-color 1.", 0), 0u) << version.out;
    EXPECT_NE(version.out.find(XVR_COLOR_HAS_TIFF ? "TIFF: LIBTIFF" : "TIFF: built without TIFF support"),
              std::string::npos) << version.out;
    const std::vector<std::uint8_t> page = read_file(XVR_COLOR_MAN_PAGE);
    const std::string text(page.begin(), page.end());
    for (const char* option : {"\\-\\-output\\-dir", "\\-\\-keep\\-profile", "\\-\\-threads", "\\-\\-in\\-place"}) {
        EXPECT_NE(text.find(option), std::string::npos) << option;
    }
}

TEST_F(XvrColor, ABatchOnATerminalShowsAProgressLine)
{
    if (access("/usr/bin/script", X_OK) != 0) {
        GTEST_SKIP() << "needs script(1) for a terminal";
    }
    write_image_file(file("a.ppm"), gradient(8, 8, 16));
    write_image_file(file("b.ppm"), gradient(8, 8, 16));
    const std::string command = std::string(XVR_COLOR_PROGRAM) + " a.ppm b.ppm --output-dir out";
    const Program_run on_terminal = run_program("/usr/bin/script", {"-qec", command, "/dev/null"}, path);
    EXPECT_EQ(on_terminal.exit_status, 0) << on_terminal.out;
    // Updates come at most ten a second, so which of [1/2] and [2/2] shows depends on timing.
    EXPECT_NE(on_terminal.out.find("\r\033[Kxvr-color: ["), std::string::npos) << on_terminal.out;
    EXPECT_NE(on_terminal.out.find("/2] "), std::string::npos) << on_terminal.out;
    const Program_run quiet = run_program("/usr/bin/script", {"-qec", command + " -q", "/dev/null"}, path);
    EXPECT_EQ(quiet.out, "");
    const Program_run image_to_terminal =
        run_program("/usr/bin/script", {"-qec", std::string(XVR_COLOR_PROGRAM) + " a.ppm -o -", "/dev/null"}, path);
    EXPECT_EQ(image_to_terminal.exit_status, 2);
    EXPECT_NE(image_to_terminal.out.find("standard output is a terminal"), std::string::npos) << image_to_terminal.out;
}
