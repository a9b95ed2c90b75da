#include "image_test_helpers.hpp"
#include "netpbm_codec.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

using namespace xvr_color;
using namespace xvr_color_test;

namespace {

std::string error_of(const std::vector<std::uint8_t>& bytes)
{
    try {
        decode_netpbm(bytes, "f.ppm");
    } catch (const Tool_error& error) {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(NetpbmRoundTrip, SixteenBitPpmAndPamKeepEverySampleIncludingTheExtremes)
{
    const Image image = image_of(2, 2, 16, {0, 1, 255, 256, 32768, 65535, 65534, 4660, 43981, 7, 8, 9});
    for (auto encode : {encode_ppm, encode_pam}) {
        const Image decoded = decode_netpbm(encode(image), "f");
        EXPECT_EQ(decoded.width, 2u);
        EXPECT_EQ(decoded.height, 2u);
        EXPECT_EQ(decoded.sample_bits, 16);
        EXPECT_EQ(decoded.samples, image.samples);
    }
}

TEST(NetpbmRoundTrip, EightBitFilesStayEightBit)
{
    const Image image = image_of(3, 1, 8, {0, 1, 2, 127, 128, 129, 253, 254, 255});
    for (auto encode : {encode_ppm, encode_pam}) {
        const Image decoded = decode_netpbm(encode(image), "f");
        EXPECT_EQ(decoded.sample_bits, 8);
        EXPECT_EQ(decoded.samples, image.samples);
    }
}

TEST(NetpbmEncoding, WritesTheStandardHeadersAndBigEndianSamples)
{
    const Image image = image_of(1, 1, 16, {0x1234, 0x00ff, 0xff00});
    EXPECT_EQ(encode_ppm(image), bytes_of("P6\n1 1\n65535\n", {0x12, 0x34, 0x00, 0xff, 0xff, 0x00}));
    EXPECT_EQ(encode_pam(image),
              bytes_of("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 65535\nTUPLTYPE RGB\nENDHDR\n",
                       {0x12, 0x34, 0x00, 0xff, 0xff, 0x00}));
}

TEST(NetpbmDecoding, AcceptsCommentsAndAnyBlankBetweenHeaderFields)
{
    const Image decoded =
        decode_netpbm(bytes_of("P6 # a comment\n1\t# width\n1\r\n255\n", {10, 20, 30}), "f");
    EXPECT_EQ(decoded.samples, (std::vector<std::uint16_t>{10, 20, 30}));
}

TEST(NetpbmDecoding, RescalesOtherMaxvalsToSixteenBitsWithRounding)
{
    // 12-bit data: 4095 is full scale; 2048 x 65535 / 4095 = 32776.003 rounds to 32776.
    const Image twelve = decode_netpbm(
        bytes_of("P6\n1 1\n4095\n", {0x0f, 0xff, 0x08, 0x00, 0x00, 0x00}), "f");
    EXPECT_EQ(twelve.sample_bits, 16);
    EXPECT_EQ(twelve.samples, (std::vector<std::uint16_t>{65535, 32776, 0}));
    // maxval 1: a one-bit image, one byte per sample.
    const Image one_bit = decode_netpbm(bytes_of("P6\n1 1\n1\n", {1, 0, 1}), "f");
    EXPECT_EQ(one_bit.samples, (std::vector<std::uint16_t>{65535, 0, 65535}));
    // maxval 256 is the smallest that takes two bytes per sample; 128/256 is exactly half of
    // 65535 plus a half, which rounds up.
    const Image two_bytes = decode_netpbm(bytes_of("P6\n1 1\n256\n", {1, 0, 0, 128, 0, 0}), "f");
    EXPECT_EQ(two_bytes.samples, (std::vector<std::uint16_t>{65535, 32768, 0}));
}

TEST(NetpbmDecoding, PamWithRepeatedTupleTypeAndCommentLines)
{
    const Image decoded = decode_netpbm(
        bytes_of("P7\n# made by hand\nWIDTH 1\nHEIGHT 2\nDEPTH 3\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n",
                 {1, 2, 3, 4, 5, 6}),
        "f");
    EXPECT_EQ(decoded.height, 2u);
    EXPECT_EQ(decoded.samples, (std::vector<std::uint16_t>{1, 2, 3, 4, 5, 6}));
}

TEST(NetpbmErrors, TruncatedFilesSayHowMuchPixelDataThereIs)
{
    EXPECT_EQ(error_of(bytes_of("P6\n2 1\n255\n", {1, 2, 3, 4, 5})),
              "f.ppm is truncated: it holds 5 of 6 bytes of pixel data");
    EXPECT_EQ(error_of(bytes_of("P6\n1 1\n65535\n", {1, 2, 3, 4, 5})),
              "f.ppm is truncated: it holds 5 of 6 bytes of pixel data");
    EXPECT_EQ(error_of(bytes_of("P6\n2 1")), "f.ppm is truncated: its header ends early");
    EXPECT_EQ(error_of(bytes_of("P6\n2 1 255")), "f.ppm is truncated: no pixel data after the header");
    EXPECT_EQ(error_of(bytes_of("P7\nWIDTH 1\n")),
              "f.ppm is truncated: its header has no ENDHDR line");
}

TEST(NetpbmErrors, BitDepthsBeyondSixteenBitsAndZeroMaxvalAreRefused)
{
    EXPECT_EQ(error_of(bytes_of("P6\n1 1\n65536\n", {0, 0, 0, 0, 0, 0})),
              "f.ppm has an unsupported bit depth: maxval 65536 is above 65535 (16 bits)");
    EXPECT_EQ(error_of(bytes_of("P6\n1 1\n0\n", {0, 0, 0})), "f.ppm is malformed: its maxval is 0");
}

TEST(NetpbmErrors, ChannelCountsOtherThanThreeAreRefused)
{
    const std::string rgb_only = "; xvr-color reads RGB images (PPM P6 or PAM with DEPTH 3)";
    EXPECT_EQ(error_of(bytes_of("P5\n1 1\n255\n", {0})),
              "f.ppm has an unsupported channel count: it is greyscale (1 channel)" + rgb_only);
    EXPECT_EQ(error_of(bytes_of("P4\n8 1\n", {0})),
              "f.ppm has an unsupported channel count: it is a bitmap (1 channel)" + rgb_only);
    EXPECT_EQ(error_of(bytes_of("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n",
                                {1, 2, 3, 4})),
              "f.ppm has an unsupported channel count: DEPTH 4 (RGB_ALPHA); xvr-color reads RGB "
              "images with 3 channels");
    EXPECT_EQ(error_of(bytes_of("P3\n1 1\n255\n1 2 3\n")),
              "f.ppm is a plain-text PPM (P3), which is not supported; convert it to binary P6");
}

TEST(NetpbmErrors, MalformedHeadersAndSamplesAreRefused)
{
    EXPECT_EQ(error_of(bytes_of("P6\n-1 1\n255\n")), "f.ppm is malformed: width '-1' is not a number");
    EXPECT_EQ(error_of(bytes_of("P6\n1 1\n255x", {0, 0, 0})),
              "f.ppm is malformed: maxval '255x\?\?\?' is not a number"); // NULs shown as '?'
    EXPECT_EQ(error_of(bytes_of("P6\n1 1\n100\n", {100, 101, 0})),
              "f.ppm is malformed: sample 1 is 101, above its maxval 100");
    EXPECT_EQ(error_of(bytes_of("P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\n", {0, 0, 0})),
              "f.ppm is malformed: its PAM header lacks WIDTH, HEIGHT, DEPTH or MAXVAL");
    EXPECT_EQ(error_of(bytes_of("GIF89a")), "f.ppm is not a PPM or PAM file");
}

TEST(NetpbmErrors, SizesWithoutPixelsOrBeyondTheLimitAreRefusedBeforeAnyAllocation)
{
    EXPECT_EQ(error_of(bytes_of("P6\n0 5\n255\n")), "f.ppm has no pixels (0 x 5)");
    // 100000 x 100000 x 3 x 2 bytes would overflow a 32-bit size.
    EXPECT_EQ(error_of(bytes_of("P6\n100000 100000\n65535\n", {0})),
              "f.ppm is too large (100000 x 100000); at most 134217728 pixels are supported");
}
