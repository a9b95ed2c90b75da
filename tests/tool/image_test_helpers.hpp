// Small images and byte strings for the tool's tests.
#pragma once

#include "image.hpp"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace xvr_color_test {

inline xvr_color::Image image_of(std::uint32_t width, std::uint32_t height, int sample_bits,
                                 std::initializer_list<std::uint16_t> samples)
{
    xvr_color::Image image;
    image.width = width;
    image.height = height;
    image.sample_bits = sample_bits;
    image.samples = samples;
    return image;
}

inline std::vector<std::uint8_t> bytes_of(const std::string& text)
{
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

// A file's header text followed by raw bytes.
inline std::vector<std::uint8_t> bytes_of(const std::string& header,
                                          std::initializer_list<std::uint8_t> raster)
{
    std::string text = header;
    for (std::uint8_t byte : raster) {
        text.push_back(static_cast<char>(byte));
    }
    return bytes_of(text);
}

} // namespace xvr_color_test
