// An RGB image in memory: interleaved R,G,B samples, each held in 16 bits whatever the depth of
// the file it came from or goes to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    // Significant bits per sample: 8 (values 0..255) or 16 (values 0..65535).
    int sample_bits = 16;
    std::vector<std::uint16_t> samples; // R,G,B of pixel 0, then pixel 1, ...
    // The embedded ICC profile, byte for byte, or empty. PNG also names it (iCCP chunk).
    std::vector<std::uint8_t> icc_profile;
    std::string icc_profile_name;

    std::size_t pixel_count() const { return static_cast<std::size_t>(width) * height; }
};

// Largest image the tool accepts: the library counts pixels in a signed 32-bit integer and
// the whole process lives in a 32-bit address space with an input and an output copy.
constexpr std::uint64_t max_pixel_count = 1ull << 27;

// Builds an image of the given size with every sample 0; throws Tool_error when the size is
// zero or above max_pixel_count.
Image make_blank_image(std::uint32_t width, std::uint32_t height, int sample_bits);

// Throws Tool_error unless 0 < width x height <= max_pixel_count; `what` names the image.
void check_image_size(std::uint64_t width, std::uint64_t height, const std::string& what);

// 8-bit samples become 16-bit ones by v x 257, which maps 0 to 0 and 255 to 65535 exactly and
// lets a right shift by 8 give the original value back. In place, because an image may take a
// good part of a 32-bit address space.
void widen_to_16_bits(Image& image);

} // namespace xvr_color
