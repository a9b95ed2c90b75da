#include "image.hpp"

#include "tool_error.hpp"

namespace xvr_color {

void check_image_size(std::uint64_t width, std::uint64_t height, const std::string& what)
{
    if (width == 0 || height == 0) {
        throw Tool_error(what + " has no pixels (" + std::to_string(width) + " x " +
                         std::to_string(height) + ")");
    }
    if (width * height > max_pixel_count) {
        throw Tool_error(what + " is too large (" + std::to_string(width) + " x " +
                         std::to_string(height) + "); at most " +
                         std::to_string(max_pixel_count) + " pixels are supported");
    }
}

Image make_blank_image(std::uint32_t width, std::uint32_t height, int sample_bits)
{
    check_image_size(width, height, "the image");
    Image image;
    image.width = width;
    image.height = height;
    image.sample_bits = sample_bits;
    image.samples.assign(image.pixel_count() * 3, 0);
    return image;
}

void widen_to_16_bits(Image& image)
{
    if (image.sample_bits == 16) {
        return;
    }
    image.sample_bits = 16;
    for (std::uint16_t& sample : image.samples) {
        sample = static_cast<std::uint16_t>(sample * 257u);
    }
}

} // namespace xvr_color
