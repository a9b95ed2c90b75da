#include "png_codec.hpp"

#include "tool_error.hpp"

#include <lodepng.h>

#include <cstdlib>
#include <memory>

namespace xvr_color {

namespace {

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

} // namespace

void require_png_support() {}

Image decode_png(const std::vector<std::uint8_t>& bytes, const std::string& name)
{
    unsigned width = 0, height = 0;
    Png_state state;
    unsigned error = lodepng_inspect(&width, &height, state.get(), bytes.data(), bytes.size());
    if (error != 0) {
        throw Tool_error(name + " is not a readable PNG file: " + lodepng_message(error));
    }
    const LodePNGColorMode& colour = state.get()->info_png.color;
    check_png_format(colour.colortype, colour.bitdepth, name);
    check_image_size(width, height, name);

    unsigned char* raw = nullptr;
    error = lodepng_decode_memory(&raw, &width, &height, bytes.data(), bytes.size(), LCT_RGB,
                                  colour.bitdepth);
    Lodepng_buffer pixels(raw);
    if (error != 0) {
        throw Tool_error(name + " is damaged or truncated: " + lodepng_message(error));
    }

    Image image;
    image.width = width;
    image.height = height;
    image.sample_bits = static_cast<int>(colour.bitdepth);
    image.samples.resize(image.pixel_count() * 3);
    for (std::size_t i = 0; i < image.samples.size(); ++i) {
        image.samples[i] = image.sample_bits == 8
                               ? raw[i]
                               : static_cast<std::uint16_t>((raw[2 * i] << 8) | raw[2 * i + 1]);
    }
    return image;
}

std::vector<std::uint8_t> encode_png(const Image& image)
{
    // lodepng takes 16-bit samples big-endian, as PNG stores them.
    std::vector<unsigned char> raw;
    raw.reserve(image.samples.size() * (image.sample_bits == 8 ? 1 : 2));
    for (std::uint16_t sample : image.samples) {
        if (image.sample_bits == 16) {
            raw.push_back(static_cast<unsigned char>(sample >> 8));
        }
        raw.push_back(static_cast<unsigned char>(sample & 0xff));
    }
    // lodepng would otherwise pick the smallest colour type that holds the pixels (a grey or
    // 1-bit file for a plain image), and the user asked for RGB at a given depth.
    Png_state state;
    const unsigned bit_depth = static_cast<unsigned>(image.sample_bits);
    state.get()->encoder.auto_convert = 0;
    state.get()->info_raw.colortype = LCT_RGB;
    state.get()->info_raw.bitdepth = bit_depth;
    state.get()->info_png.color.colortype = LCT_RGB;
    state.get()->info_png.color.bitdepth = bit_depth;
    unsigned char* encoded = nullptr;
    std::size_t encoded_size = 0;
    unsigned error = lodepng_encode(&encoded, &encoded_size, raw.data(), image.width,
                                    image.height, state.get());
    Lodepng_buffer owner(encoded);
    if (error != 0) {
        throw Tool_error("PNG encoding failed: " + lodepng_message(error));
    }
    return std::vector<std::uint8_t>(encoded, encoded + encoded_size);
}

} // namespace xvr_color
