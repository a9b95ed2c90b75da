#include "file_io.hpp"
#include "scratch_folder.hpp"
#include "image.hpp"
#include "image_files.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace xvr_color;
using xvr_color_test::Scratch_folder;

namespace {

const std::vector<std::uint8_t> some_bytes{1, 2, 3, 4, 5};

} // namespace

TEST(AtomicWrite, WritesTheBytesWithOrdinaryPermissionsAndLeavesNoTemporaryFile)
{
    Scratch_folder folder;
    write_file_atomically(folder.file("out.bin"), some_bytes);
    EXPECT_EQ(read_file(folder.file("out.bin")), some_bytes);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"out.bin"});
    struct stat status {};
    ASSERT_EQ(stat(folder.file("out.bin").c_str(), &status), 0);
    mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask);
}

TEST(AtomicWrite, ReplacesAnExistingFileWhole)
{
    Scratch_folder folder;
    write_file_atomically(folder.file("out.bin"), std::vector<std::uint8_t>(1000, 7));
    write_file_atomically(folder.file("out.bin"), some_bytes);
    EXPECT_EQ(read_file(folder.file("out.bin")), some_bytes);
}

TEST(AtomicWrite, AFailedWriteLeavesTheTargetAsItWasAndNoTemporaryFile)
{
    Scratch_folder folder;
    // The target is a folder: the bytes can be written, but the rename cannot replace it.
    ASSERT_EQ(mkdir(folder.file("busy").c_str(), 0755), 0);
    EXPECT_THROW(write_file_atomically(folder.file("busy"), some_bytes), Tool_error);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"busy"});
    rmdir(folder.file("busy").c_str());
    try {
        write_file_atomically(folder.file("missing/out.bin"), some_bytes);
        FAIL() << "expected an error";
    } catch (const Tool_error& error) {
        EXPECT_EQ(std::string(error.what()),
                  "cannot write " + folder.file("missing/out.bin") + ": No such file or directory");
    }
    EXPECT_TRUE(folder.entries().empty());
}

TEST(ImageFiles, TheOutputFormatFollowsTheExtension)
{
    EXPECT_EQ(output_format_for("a.png"), Image_file_format::png);
    EXPECT_EQ(output_format_for("dir.v2/A.PNG"), Image_file_format::png);
    EXPECT_EQ(output_format_for("a.ppm"), Image_file_format::ppm);
    EXPECT_EQ(output_format_for("a.pnm"), Image_file_format::ppm);
    EXPECT_EQ(output_format_for("a.pam"), Image_file_format::pam);
    EXPECT_THROW(output_format_for("a.jpg"), Usage_error);
    EXPECT_THROW(output_format_for("dir.png/file"), Usage_error);
}

TEST(ImageFiles, ReadingRecognisesTheFormatByContentNotByName)
{
    Scratch_folder folder;
    Image image = make_blank_image(2, 1, 16);
    image.samples = {1, 2, 3, 65535, 0, 300};
    write_image_file(folder.file("x.pam"), image);
    ASSERT_EQ(rename(folder.file("x.pam").c_str(), folder.file("x.png").c_str()), 0);
    EXPECT_EQ(read_image_file(folder.file("x.png")).samples, image.samples);

    write_file_atomically(folder.file("empty.ppm"), {});
    EXPECT_THROW(read_image_file(folder.file("empty.ppm")), Tool_error);
    write_file_atomically(folder.file("text.ppm"), {'h', 'i'});
    try {
        read_image_file(folder.file("text.ppm"));
        FAIL() << "expected an error";
    } catch (const Tool_error& error) {
        EXPECT_EQ(std::string(error.what()), folder.file("text.ppm") + " is not a PNG, PPM or PAM file");
    }
}

TEST(ImageDepth, WideningMapsEightBitSamplesOntoTheFullSixteenBitRange)
{
    Image image = make_blank_image(1, 1, 8);
    image.samples = {0, 128, 255};
    Image wide = image;
    widen_to_16_bits(wide);
    EXPECT_EQ(wide.sample_bits, 16);
    EXPECT_EQ(wide.samples, (std::vector<std::uint16_t>{0, 32896, 65535}));
    for (std::uint16_t sample : wide.samples) {
        EXPECT_EQ(sample >> 8, sample & 0xff); // a right shift by 8 gives the byte back
    }
}
