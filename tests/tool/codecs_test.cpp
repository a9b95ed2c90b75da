// The image codecs (PPM, PAM, PNG) and the file layer under them.
#include "file_io.hpp"
#include "image_files.hpp"
#include "netpbm_codec.hpp"
#include "png_codec.hpp"
#include "test_support.hpp"
#include "tiff_codec.hpp"

#include <cstring>
#include <sys/stat.h>

#if XVR_COLOR_HAS_PNG
#include <lodepng.h>
#endif

using namespace xvr_color;
using namespace xvr_color_test;

TEST(Codecs, EveryFormatGivesEverySampleBackAtItsDepth)
{
    // The blank images must still be written as RGB of their depth, not as a smaller grey file.
    const std::vector<Image> images = {
        image_of(2, 2, 16, {0, 1, 255, 256, 32768, 65535, 65534, 4660, 43981, 7, 8, 9}),
        image_of(3, 1, 8, {0, 1, 2, 127, 128, 129, 253, 254, 255}),
        make_blank_image(3, 2, 16), make_blank_image(3, 2, 8)};
    std::vector<std::pair<const char*, Image (*)(const Image&)>> codecs = {
        {"ppm", [](const Image& i) { return decode_netpbm(encode_ppm(i), "f"); }},
        {"pam", [](const Image& i) { return decode_netpbm(encode_pam(i), "f"); }}};
#if XVR_COLOR_HAS_PNG
    codecs.push_back({"png", [](const Image& i) { return decode_png(encode_png(i), "f"); }});
    codecs.push_back({"png on 3 threads", [](const Image& i) { return decode_png(encode_png(i, 3), "f"); }});
#endif
#if XVR_COLOR_HAS_TIFF
    codecs.push_back({"tiff", [](const Image& i) { return decode_tiff(encode_tiff(i, Tiff_compression::none), "f"); }});
    codecs.push_back({"tiff deflate", [](const Image& i) { return decode_tiff(encode_tiff(i, Tiff_compression::deflate), "f"); }});
    codecs.push_back({"tiff lzw", [](const Image& i) { return decode_tiff(encode_tiff(i, Tiff_compression::lzw), "f"); }});
#endif
    for (const auto& [name, round_trip] : codecs) {
        for (const Image& image : images) {
            const Image decoded = round_trip(image);
            EXPECT_EQ(std::tie(decoded.width, decoded.height, decoded.sample_bits, decoded.samples),
                      std::tie(image.width, image.height, image.sample_bits, image.samples)) << name;
        }
    }
}

TEST(Codecs, NetpbmFilesHaveTheStandardHeadersAndBigEndianSamples)
{
    const Image image = image_of(1, 1, 16, {0x1234, 0x00ff, 0xff00});
    EXPECT_EQ(encode_ppm(image), bytes_of("P6\n1 1\n65535\n", {0x12, 0x34, 0x00, 0xff, 0xff, 0x00}));
    EXPECT_EQ(encode_pam(image), bytes_of("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 65535\nTUPLTYPE RGB\nENDHDR\n",
                                          {0x12, 0x34, 0x00, 0xff, 0xff, 0x00}));
}

TEST(Codecs, NetpbmHeadersOfAnyLayoutAndAnyMaxvalAreRead)
{
    const struct {
        std::vector<std::uint8_t> bytes;
        int bits;
        std::vector<std::uint16_t> samples;
    } cases[] = {
        {bytes_of("P6 # a comment\n1\t# width\n1\r\n255\n", {10, 20, 30}), 8, {10, 20, 30}},
        {bytes_of("P7\n# made by hand\nWIDTH 1\nHEIGHT 2\nDEPTH 3\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n",
                  {1, 2, 3, 4, 5, 6}), 8, {1, 2, 3, 4, 5, 6}},
        // 12-bit data: 2048 x 65535 / 4095 = 32776.003 rounds to 32776.
        {bytes_of("P6\n1 1\n4095\n", {0x0f, 0xff, 0x08, 0x00, 0x00, 0x00}), 16, {65535, 32776, 0}},
        {bytes_of("P6\n1 1\n1\n", {1, 0, 1}), 16, {65535, 0, 65535}},
        // 256 is the smallest two-byte maxval; 128/256 of 65535 is 32767.5, which rounds up.
        {bytes_of("P6\n1 1\n256\n", {1, 0, 0, 128, 0, 0}), 16, {65535, 32768, 0}},
    };
    for (const auto& c : cases) {
        const Image decoded = decode_netpbm(c.bytes, "f");
        const std::string file(c.bytes.begin(), c.bytes.end());
        EXPECT_EQ(decoded.sample_bits, c.bits) << file;
        EXPECT_EQ(decoded.samples, c.samples) << file;
    }
}

// Each fault names the file and says what is wrong with it.
TEST(Codecs, NetpbmFilesThatCannotBeReadSayWhy)
{
    const std::pair<std::vector<std::uint8_t>, std::string> cases[] = {
        {bytes_of("P6\n2 1\n255\n", {1, 2, 3, 4, 5}), "truncated: it holds 5 of 6 bytes"},
        {bytes_of("P6\n2 1"), "truncated: its header ends early"},
        {bytes_of("P6\n2 1 255"), "truncated: no pixel data"}, {bytes_of("P7\nWIDTH 1\n"), "truncated: its header has no ENDHDR"},
        {bytes_of("P6\n1 1\n0\n", {0, 0, 0}), "malformed: its maxval is 0"},
        {bytes_of("P6\n1 1\n65536\n", {0, 0, 0, 0, 0, 0}), "unsupported bit depth: maxval 65536"},
        {bytes_of("P4\n8 1\n", {0}), "unsupported channel count: it is a bitmap (1 channel)"},
        {bytes_of("P5\n1 1\n255\nx"), "unsupported channel count: it is greyscale (1 channel)"},
        {bytes_of("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcd"),
         "unsupported channel count: DEPTH 4 (RGB_ALPHA)"},
        {bytes_of("P3\n1 1\n255\n1 2 3\n"), "plain-text PPM (P3), which is not supported"},
        {bytes_of("P6\n-1 1\n255\n"), "malformed: width '-1' is not a number"},
        {bytes_of("P6\n1 1\n255x", {0, 0, 0}), "malformed: maxval '255x"},
        {bytes_of("P6\n1 1\n100\n", {100, 101, 0}), "malformed: sample 1 is 101, above its maxval 100"},
        {bytes_of("P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\n", {0, 0, 0}), "malformed: its PAM header lacks"},
        {bytes_of("GIF89a"), "is not a PPM or PAM file"}, {bytes_of("P6\n0 5\n255\n"), "has no pixels (0 x 5)"},
        // 100000 x 100000 x 6 bytes would overflow a 32-bit size: refused before any allocation.
        {bytes_of("P6\n100000 100000\n65535\n", {0}), "too large (100000 x 100000); at most 134217728 pixels"},
        // Ten digits are a size, too large; not "not a number".
        {bytes_of("P6\n1234567890 1\n255\n"), "too large (1234567890 x 1)"},
        {bytes_of("P6\n1 123456789012345678901234\n255\n"), "too large: its height 123456789012345678901234"},
    };
    for (const auto& [bytes, part] : cases) {
        const std::string message = error_of([&] { decode_netpbm(bytes, "f.ppm"); });
        EXPECT_EQ(message.rfind("f.ppm ", 0), 0u) << message;
        EXPECT_NE(message.find(part), std::string::npos) << message;
    }
}

#if XVR_COLOR_HAS_PNG

namespace {

// A PNG of another colour type, made with lodepng directly.
std::vector<std::uint8_t> png_of(LodePNGColorType type, unsigned bit_depth, unsigned width,
                                 std::vector<unsigned char> raw)
{
    LodePNGState state;
    lodepng_state_init(&state);
    state.encoder.auto_convert = 0;
    state.info_raw.colortype = state.info_png.color.colortype = type;
    state.info_raw.bitdepth = state.info_png.color.bitdepth = bit_depth;
    unsigned char* encoded = nullptr;
    std::size_t size = 0;
    EXPECT_EQ(lodepng_encode(&encoded, &size, raw.data(), width, 1, &state), 0u);
    lodepng_state_cleanup(&state);
    std::vector<std::uint8_t> bytes(encoded, encoded + size);
    free(encoded);
    return bytes;
}

std::string png_error(const std::vector<std::uint8_t>& bytes)
{
    return error_of([&] { decode_png(bytes, "f.png"); });
}

} // namespace

TEST(Codecs, PngSixteenBitSamplesAreStoredBigEndian)
{
    const std::vector<std::uint8_t> bytes = encode_png(image_of(1, 1, 16, {0x1234, 0x00ff, 0xff00}));
    unsigned char* raw = nullptr;
    unsigned width = 0, height = 0;
    ASSERT_EQ(lodepng_decode_memory(&raw, &width, &height, bytes.data(), bytes.size(), LCT_RGB, 16), 0u);
    EXPECT_EQ(std::vector<unsigned char>(raw, raw + 6),
              (std::vector<unsigned char>{0x12, 0x34, 0x00, 0xff, 0xff, 0x00}));
    free(raw);
}

TEST(Codecs, PngFilesThatCannotBeReadSayWhy)
{
    EXPECT_NE(png_error(png_of(LCT_GREY, 16, 1, {0, 0})).find("channel count: it is greyscale (1 channel)"), std::string::npos);
    EXPECT_NE(png_error(png_of(LCT_RGBA, 8, 1, {1, 2, 3, 4})).find("channel count: it is RGB with alpha (4 channels)"),
              std::string::npos);
    EXPECT_NE(png_error(png_of(LCT_GREY, 4, 2, {0x12})).find("bit depth: 4 bits per sample"), std::string::npos);
    const std::vector<std::uint8_t> bytes = encode_png(make_blank_image(4, 4, 16));
    const std::string header_only = png_error({bytes.begin(), bytes.begin() + 12});
    EXPECT_EQ(header_only.rfind("f.png is not a readable PNG file: ", 0), 0u) << header_only;
    std::vector<std::uint8_t> damaged = bytes;
    damaged[damaged.size() / 2] ^= 0xff; // breaks a chunk's checksum or its compressed data
    EXPECT_NE(png_error(damaged), "no error");
}

#else

TEST(Codecs, ABuildWithoutLodepngSaysHowToGetIt)
{
    EXPECT_NE(error_of(require_png_support).find("liblodepng-dev:i386"), std::string::npos);
}

#endif

TEST(Codecs, FilesAreReadByContentAndWrittenByExtension)
{
    EXPECT_EQ(output_format_for("dir.v2/A.PNG"), Image_file_format::png);
    EXPECT_EQ(output_format_for("a.pnm"), Image_file_format::ppm);
    EXPECT_EQ(output_format_for("a.pam"), Image_file_format::pam);
    EXPECT_THROW(output_format_for("a.jpg"), Usage_error);
    EXPECT_THROW(output_format_for("dir.png/file"), Usage_error);

    Scratch_folder folder;
    const Image image = image_of(2, 1, 16, {1, 2, 3, 65535, 0, 300});
    write_image_file(folder.file("x.pam"), image);
    ASSERT_EQ(rename(folder.file("x.pam").c_str(), folder.file("x.png").c_str()), 0);
    EXPECT_EQ(read_image_file(folder.file("x.png")).samples, image.samples);
    write_file_atomically(folder.file("empty.ppm"), {});
    EXPECT_THROW(read_image_file(folder.file("empty.ppm")), Tool_error);
#if XVR_COLOR_HAS_PNG && XVR_COLOR_HAS_ZLIB
    std::vector<std::uint8_t> png = encode_png(image);
    png[30] ^= 1; // in the CRC of the IHDR chunk
    write_file_atomically(folder.file("crc.png"), png);
    EXPECT_EQ(error_of([&] { read_image_file(folder.file("crc.png")); }),
              folder.file("crc.png") + " is damaged or truncated: the checksum of its IHDR chunk does not match");
#endif
    write_file_atomically(folder.file("text.ppm"), {'h', 'i'});
    EXPECT_EQ(error_of([&] { read_image_file(folder.file("text.ppm")); }),
              folder.file("text.ppm") + " is not a PNG, TIFF, PPM or PAM file");
}

TEST(Codecs, WritesReplaceWholeFilesOrLeaveThemAsTheyWere)
{
    Scratch_folder folder;
    const std::vector<std::uint8_t> some_bytes{1, 2, 3, 4, 5};
    write_file_atomically(folder.file("out.bin"), std::vector<std::uint8_t>(1000, 7));
    write_file_atomically(folder.file("out.bin"), some_bytes);
    EXPECT_EQ(read_file(folder.file("out.bin")), some_bytes);
    struct stat status {};
    ASSERT_EQ(stat(folder.file("out.bin").c_str(), &status), 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask); // ordinary permissions, not the temporary's
    // The target is a folder: the bytes can be written, but the rename cannot replace it.
    ASSERT_EQ(mkdir(folder.file("busy").c_str(), 0755), 0);
    EXPECT_THROW(write_file_atomically(folder.file("busy"), some_bytes), Tool_error);
    EXPECT_EQ(error_of([&] { write_file_atomically(folder.file("missing/out.bin"), some_bytes); }),
              "cannot write " + folder.file("missing/out.bin") + ": No such file or directory");
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"busy", "out.bin"})) << "no temporary file is left";
}

#if XVR_COLOR_HAS_TIFF
#include <tiffio.h>

namespace {

// A TIFF written with libtiff directly: planar or contiguous, in tiles of 16 x 16 or strips of
// 3 rows, so that every block shape the reader handles has edge blocks the image does not fill.
std::vector<std::uint8_t> tiff_of(const Image& image, bool planar, bool tiled, const std::string& path)
{
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, image.sample_bits);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    const std::uint32_t block = tiled ? 16 : 3;
    TIFFSetField(tiff, tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, block);
    if (tiled) {
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, block);
    }
    const std::uint32_t block_width = tiled ? block : image.width;
    const int bytes = image.sample_bits / 8;
    for (int plane = 0; plane < (planar ? 3 : 1); ++plane) {
        for (std::uint32_t y0 = 0; y0 < image.height; y0 += block) {
            for (std::uint32_t x0 = 0; x0 < image.width; x0 += block_width) {
                std::vector<std::uint8_t> data(std::size_t(block) * block_width * (planar ? 1 : 3) * bytes);
                std::size_t at = 0;
                for (std::uint32_t y = y0; y < y0 + block; ++y) {
                    for (std::uint32_t x = x0; x < x0 + block_width; ++x) {
                        for (int c = planar ? plane : 0; c < (planar ? plane + 1 : 3); ++c, at += bytes) {
                            const std::uint16_t v = y < image.height && x < image.width
                                                        ? image.samples[(std::size_t(y) * image.width + x) * 3 + c] : 0;
                            std::memcpy(&data[at], &v, bytes); // host order, little-endian
                        }
                    }
                }
                const tsample_t sample = static_cast<tsample_t>(plane);
                if (tiled) {
                    TIFFWriteTile(tiff, data.data(), x0, y0, 0, sample);
                } else {
                    TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y0, sample), data.data(),
                                          static_cast<tmsize_t>(std::size_t(std::min(block, image.height - y0)) *
                                                                image.width * (planar ? 1 : 3) * bytes));
                }
            }
        }
    }
    TIFFClose(tiff);
    return read_file(path);
}

} // namespace

TEST(Codecs, TiffPlanesTilesAndStripsAreAllRead)
{
    Scratch_folder folder;
    for (const int bits : {8, 16}) {
        const Image image = gradient(37, 19, bits);
        for (const bool planar : {false, true}) {
            for (const bool tiled : {false, true}) {
                const std::vector<std::uint8_t> bytes = tiff_of(image, planar, tiled, folder.file("t.tif"));
                const Image read = decode_tiff(bytes, "t.tif");
                EXPECT_EQ(read.samples, image.samples) << bits << planar << tiled;
                EXPECT_EQ(read.sample_bits, bits);
            }
        }
    }
}

TEST(Codecs, TiffFilesThatCannotBeReadSayWhy)
{
    const Image image = image_of(2, 1, 16, {1, 2, 3, 4, 5, 6});
    const std::vector<std::uint8_t> bytes = encode_tiff(image, Tiff_compression::none);
    EXPECT_TRUE(looks_like_tiff(bytes));
    const std::string cut = error_of([&] { decode_tiff({bytes.begin(), bytes.begin() + 20}, "f.tif"); });
    EXPECT_EQ(cut.rfind("f.tif is ", 0), 0u) << cut;
    EXPECT_EQ(error_of([&] { decode_tiff(bytes_of("II*\0\x08\0\0\0"), "f.tif"); }).rfind("f.tif is not a readable TIFF file", 0), 0u);
}
#else
TEST(Codecs, ABuildWithoutLibtiffSaysHowToGetIt)
{
    EXPECT_NE(error_of(require_tiff_support).find("scripts/setup-debian.sh"), std::string::npos);
}
#endif
