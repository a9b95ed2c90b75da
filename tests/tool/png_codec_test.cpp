#include "image_test_helpers.hpp"
#include "png_codec.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

#if XVR_COLOR_HAS_PNG
#include <lodepng.h>
#endif

using namespace xvr_color;
using namespace xvr_color_test;

#if XVR_COLOR_HAS_PNG

namespace {

std::string error_of(const std::vector<std::uint8_t>& bytes)
{
    try {
        decode_png(bytes, "f.png");
    } catch (const Tool_error& error) {
        return error.what();
    }
    return "no error";
}

// A PNG of another colour type, made with lodepng directly.
std::vector<std::uint8_t> png_of(LodePNGColorType type, unsigned bit_depth, unsigned width,
                                 unsigned height, std::vector<unsigned char> raw)
{
    LodePNGState state;
    lodepng_state_init(&state);
    state.encoder.auto_convert = 0;
    state.info_raw.colortype = state.info_png.color.colortype = type;
    state.info_raw.bitdepth = state.info_png.color.bitdepth = bit_depth;
    unsigned char* encoded = nullptr;
    std::size_t size = 0;
    EXPECT_EQ(lodepng_encode(&encoded, &size, raw.data(), width, height, &state), 0u);
    lodepng_state_cleanup(&state);
    std::vector<std::uint8_t> bytes(encoded, encoded + size);
    free(encoded);
    return bytes;
}

} // namespace

TEST(PngRoundTrip, SixteenAndEightBitSamplesComeBackUnchanged)
{
    const Image wide = image_of(2, 2, 16, {0, 1, 255, 256, 32768, 65535, 65534, 4660, 43981, 7, 8, 9});
    const Image narrow = image_of(3, 1, 8, {0, 1, 2, 127, 128, 129, 253, 254, 255});
    for (const Image& image : {wide, narrow}) {
        const std::vector<std::uint8_t> bytes = encode_png(image);
        EXPECT_TRUE(looks_like_png(bytes));
        const Image decoded = decode_png(bytes, "f");
        EXPECT_EQ(decoded.width, image.width);
        EXPECT_EQ(decoded.height, image.height);
        EXPECT_EQ(decoded.sample_bits, image.sample_bits);
        EXPECT_EQ(decoded.samples, image.samples);
    }
}

TEST(PngRoundTrip, APlainImageIsStillWrittenAsRgbOfTheRequestedDepth)
{
    for (int bits : {8, 16}) {
        const std::vector<std::uint8_t> bytes = encode_png(make_blank_image(3, 2, bits));
        LodePNGState state;
        lodepng_state_init(&state);
        unsigned width = 0, height = 0;
        ASSERT_EQ(lodepng_inspect(&width, &height, &state, bytes.data(), bytes.size()), 0u);
        EXPECT_EQ(state.info_png.color.colortype, LCT_RGB);
        EXPECT_EQ(state.info_png.color.bitdepth, static_cast<unsigned>(bits));
        lodepng_state_cleanup(&state);
    }
}

TEST(PngRoundTrip, SixteenBitSamplesAreStoredBigEndianAsPngRequires)
{
    const Image image = image_of(1, 1, 16, {0x1234, 0x00ff, 0xff00});
    unsigned char* raw = nullptr;
    unsigned width = 0, height = 0;
    const std::vector<std::uint8_t> bytes = encode_png(image);
    ASSERT_EQ(lodepng_decode_memory(&raw, &width, &height, bytes.data(), bytes.size(), LCT_RGB, 16), 0u);
    EXPECT_EQ(std::vector<unsigned char>(raw, raw + 6),
              (std::vector<unsigned char>{0x12, 0x34, 0x00, 0xff, 0xff, 0x00}));
    free(raw);
}

TEST(PngErrors, OnlyRgbImagesOfEightOrSixteenBitsAreRead)
{
    EXPECT_EQ(error_of(png_of(LCT_GREY, 16, 1, 1, {0, 0})),
              "f.png has an unsupported channel count: it is greyscale (1 channel); xvr-color "
              "reads RGB PNG files");
    EXPECT_EQ(error_of(png_of(LCT_RGBA, 8, 1, 1, {1, 2, 3, 4})),
              "f.png has an unsupported channel count: it is RGB with alpha (4 channels); "
              "xvr-color reads RGB PNG files");
    EXPECT_EQ(error_of(png_of(LCT_GREY, 4, 2, 1, {0x12})),
              "f.png has an unsupported bit depth: 4 bits per sample; xvr-color reads 8- and "
              "16-bit RGB PNG files");
}

TEST(PngErrors, TruncatedAndDamagedFilesAreReportedNotDecoded)
{
    std::vector<std::uint8_t> bytes = encode_png(make_blank_image(4, 4, 16));
    std::vector<std::uint8_t> truncated(bytes.begin(), bytes.begin() + bytes.size() - 20);
    EXPECT_NE(error_of(truncated).find("f.png is damaged or truncated: "), std::string::npos)
        << error_of(truncated);
    std::vector<std::uint8_t> header_only(bytes.begin(), bytes.begin() + 12);
    EXPECT_NE(error_of(header_only).find("f.png is not a readable PNG file: "), std::string::npos)
        << error_of(header_only);
    std::vector<std::uint8_t> damaged = bytes;
    damaged[damaged.size() / 2] ^= 0xff; // breaks a chunk's checksum or its compressed data
    EXPECT_NE(error_of(damaged), "no error");
}

#else

TEST(PngSupport, ABuildWithoutLodepngSaysSoAndHowToGetIt)
{
    try {
        require_png_support();
        FAIL() << "expected an error";
    } catch (const Tool_error& error) {
        EXPECT_NE(std::string(error.what()).find("liblodepng-dev:i386"), std::string::npos);
    }
}

#endif
