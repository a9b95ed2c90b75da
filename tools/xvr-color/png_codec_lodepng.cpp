#include "png_codec.hpp"

#include "tool_error.hpp"

#include <lodepng.h>

#if XVR_COLOR_HAS_ZLIB
#include "zlib_streams.hpp"
#include <zlib.h>
#endif

#include <cstdlib>
#include <memory>
#include <new>

namespace xvr_color {

namespace {

// lodepng's code for a failed allocation; every other code means a damaged file.
constexpr unsigned lodepng_out_of_memory = 83;
constexpr unsigned lodepng_damaged_zlib_data = 23;

// Chosen by measurement on a noisy 24-megapixel 16-bit image (encoding alone, 2 threads):
//   filter      zlib strategy        time    size
//   Paeth       default, level 1     11.7 s  133.1 MB
//   Paeth       Huffman only          6.9 s  132.6 MB
//   Paeth       run-length (RLE)      6.1 s  132.6 MB   <- used
//   per row     Huffman only          8.5 s  131.2 MB   (lodepng's default: five filters tried)
//   none        Huffman only          5.5 s  138.8 MB
// In the low bits of 16-bit photographs long matches are rare, so the match search costs much
// and gains nothing; ImageMagick's file of the same image is 131.7 MB, libvips' 138.5 MB.
constexpr LodePNGFilterStrategy png_filter = LFS_FOUR;
#if XVR_COLOR_HAS_ZLIB
constexpr int png_zlib_level = 1;
constexpr int png_zlib_strategy = Z_RLE;
#endif

struct Free_deleter {
    void operator()(unsigned char* p) const { std::free(p); }
};
using Lodepng_buffer = std::unique_ptr<unsigned char, Free_deleter>;

// Owns a lodepng state for the length of one call.
class Png_state {
public:
    Png_state() { lodepng_state_init(&m_state); }
    ~Png_state() { lodepng_state_cleanup(&m_state); }
    Png_state(const Png_state&) = delete;
    Png_state& operator=(const Png_state&) = delete;
    LodePNGState* get() { return &m_state; }

private:
    LodePNGState m_state;
};

std::string describe_colour_type(LodePNGColorType type)
{
    switch (type) {
    case LCT_GREY:
        return "greyscale (1 channel)";
    case LCT_GREY_ALPHA:
        return "greyscale with alpha (2 channels)";
    case LCT_RGBA:
        return "RGB with alpha (4 channels)";
    case LCT_PALETTE:
        return "a palette image";
    default:
        return "of colour type " + std::to_string(static_cast<int>(type));
    }
}

void check_png_format(LodePNGColorType type, unsigned bit_depth, const std::string& name)
{
    if (bit_depth != 8 && bit_depth != 16) {
        throw Tool_error(name + " has an unsupported bit depth: " + std::to_string(bit_depth) +
                         " bits per sample; xvr-color reads 8- and 16-bit RGB PNG files");
    }
    if (type != LCT_RGB) {
        throw Tool_error(name + " has an unsupported channel count: it is " +
                         describe_colour_type(type) + "; xvr-color reads RGB PNG files");
    }
}

std::string lodepng_message(unsigned code)
{
    return std::string(lodepng_error_text(code)) + " (lodepng error " + std::to_string(code) + ")";
}

#if XVR_COLOR_HAS_ZLIB

struct Inflate_context {
    std::size_t expected_size = 0;
};

unsigned inflate_with_zlib(unsigned char** output, size_t* output_size, const unsigned char* input,
                           size_t input_size, const LodePNGDecompressSettings* settings)
{
    const auto* context = static_cast<const Inflate_context*>(settings->custom_context);
    // Room for an interlaced image's extra filter bytes; more means a damaged file.
    const std::size_t limit = context->expected_size + context->expected_size / 4 + 65536;
    switch (inflate_zlib_stream(input, input_size, context->expected_size, limit, output, output_size)) {
    case Inflate_result::ok:
        return 0;
    case Inflate_result::out_of_memory:
        return lodepng_out_of_memory;
    case Inflate_result::damaged:
        break;
    }
    return lodepng_damaged_zlib_data;
}

struct Deflate_context {
    unsigned threads = 1;
};

unsigned deflate_with_zlib(unsigned char** output, size_t* output_size, const unsigned char* input,
                           size_t input_size, const LodePNGCompressSettings* settings)
{
    const auto* context = static_cast<const Deflate_context*>(settings->custom_context);
    try {
        *output_size = compress_zlib_stream(input, input_size, png_zlib_level, png_zlib_strategy,
                                            context->threads, output);
        return 0;
    } catch (const std::bad_alloc&) {
        return lodepng_out_of_memory;
    }
}

#endif

std::uint16_t big_endian_sample(const unsigned char* bytes)
{
    return static_cast<std::uint16_t>((bytes[0] << 8) | bytes[1]);
}

struct Encoded_png {
    Lodepng_buffer bytes;
    std::size_t size = 0;
};

// Puts the samples in the order PNG stores them, in place: 16-bit big-endian, or 8-bit packed
// into the first bytes. Returns them as bytes for lodepng.
const unsigned char* to_file_order(Image& image)
{
    auto* bytes = reinterpret_cast<unsigned char*>(image.samples.data());
    const std::size_t count = image.samples.size();
    if (image.sample_bits == 8) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<unsigned char>(image.samples[i]); // byte i lies before sample i
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint16_t sample = image.samples[i];
            bytes[2 * i] = static_cast<unsigned char>(sample >> 8);
            bytes[2 * i + 1] = static_cast<unsigned char>(sample);
        }
    }
    return bytes;
}

// Encodes an RGB PNG of the image's depth and profile; the samples are left in file order.
Encoded_png encode_in_file_order(Image& image, unsigned threads)
{
    const unsigned char* raw = to_file_order(image);
    // lodepng would otherwise pick the smallest colour type that holds the pixels (a grey or
    // 1-bit file for a plain image), and the user asked for RGB at a given depth.
    Png_state state;
    const unsigned bit_depth = static_cast<unsigned>(image.sample_bits);
    LodePNGState* settings = state.get();
    settings->encoder.auto_convert = 0;
    settings->info_raw.colortype = LCT_RGB;
    settings->info_raw.bitdepth = bit_depth;
    settings->info_png.color.colortype = LCT_RGB;
    settings->info_png.color.bitdepth = bit_depth;
    settings->encoder.filter_strategy = png_filter;
#if XVR_COLOR_HAS_ZLIB
    Deflate_context deflate_context;
    deflate_context.threads = threads;
    settings->encoder.zlibsettings.custom_zlib = deflate_with_zlib;
    settings->encoder.zlibsettings.custom_context = &deflate_context;
#else
    (void)threads;
#endif
    if (!image.icc_profile.empty()) {
        const std::string name = image.icc_profile_name.empty() ? "ICC profile" : image.icc_profile_name;
        const unsigned error = lodepng_set_icc(&settings->info_png, name.c_str(), image.icc_profile.data(),
                                               static_cast<unsigned>(image.icc_profile.size()));
        if (error != 0) {
            throw Tool_error("PNG encoding failed: " + lodepng_message(error));
        }
    }
    unsigned char* bytes = nullptr;
    Encoded_png encoded;
    const unsigned error = lodepng_encode(&bytes, &encoded.size, raw, image.width, image.height, settings);
    encoded.bytes.reset(bytes);
    if (error == lodepng_out_of_memory) {
        throw std::bad_alloc();
    }
    if (error != 0) {
        throw Tool_error("PNG encoding failed: " + lodepng_message(error));
    }
    return encoded;
}

} // namespace

void require_png_support() {}

std::string png_support_description()
{
#if XVR_COLOR_HAS_ZLIB
    return std::string("lodepng with zlib ") + zlibVersion();
#else
    return "lodepng";
#endif
}

Image decode_png(const std::vector<std::uint8_t>& bytes, const std::string& name, bool crc_checked)
{
    unsigned width = 0, height = 0;
    Png_state state;
    unsigned error = lodepng_inspect(&width, &height, state.get(), bytes.data(), bytes.size());
    if (error != 0) {
        throw Tool_error(name + " is not a readable PNG file: " + lodepng_message(error));
    }
    const LodePNGColorMode colour = state.get()->info_png.color;
    check_png_format(colour.colortype, colour.bitdepth, name);
    check_image_size(width, height, name);

    const unsigned bit_depth = colour.bitdepth;
    state.get()->decoder.ignore_crc = crc_checked ? 1 : 0;
    state.get()->info_raw.colortype = LCT_RGB;
    state.get()->info_raw.bitdepth = bit_depth;
#if XVR_COLOR_HAS_ZLIB
    Inflate_context inflate_context;
    inflate_context.expected_size = std::size_t(height) * (1 + std::size_t(width) * 3 * bit_depth / 8);
    state.get()->decoder.zlibsettings.custom_zlib = inflate_with_zlib;
    state.get()->decoder.zlibsettings.custom_context = &inflate_context;
#endif
    unsigned char* raw = nullptr;
    error = lodepng_decode(&raw, &width, &height, state.get(), bytes.data(), bytes.size());
    Lodepng_buffer pixels(raw);
    if (error == lodepng_out_of_memory) {
        throw std::bad_alloc();
    }
    if (error != 0) {
        throw Tool_error(name + " is damaged or truncated: " + lodepng_message(error));
    }

    Image image;
    image.width = width;
    image.height = height;
    image.sample_bits = static_cast<int>(bit_depth);
    image.samples.resize(image.pixel_count() * 3);
    std::uint16_t* samples = image.samples.data();
    const std::size_t count = image.samples.size();
    if (bit_depth == 8) {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = raw[i];
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = big_endian_sample(raw + 2 * i);
        }
    }
    const LodePNGInfo& info = state.get()->info_png;
    if (info.iccp_defined && info.iccp_profile_size > 0) {
        image.icc_profile.assign(info.iccp_profile, info.iccp_profile + info.iccp_profile_size);
        image.icc_profile_name = info.iccp_name != nullptr ? info.iccp_name : "";
    }
    return image;
}

std::vector<std::uint8_t> encode_png(const Image& image, unsigned threads)
{
    Image file_order = image;
    const Encoded_png encoded = encode_in_file_order(file_order, threads);
    return std::vector<std::uint8_t>(encoded.bytes.get(), encoded.bytes.get() + encoded.size);
}

void write_png(Output_file& output, Image&& image, unsigned threads)
{
    const Encoded_png encoded = encode_in_file_order(image, threads);
    output.commit({{encoded.bytes.get(), encoded.size}});
}

} // namespace xvr_color
