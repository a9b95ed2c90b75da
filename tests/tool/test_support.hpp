// Small helpers shared by the tool's tests.
#pragma once

#include "image.hpp"
#include "tool_error.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace xvr_color_test {

inline xvr_color::Image image_of(std::uint32_t width, std::uint32_t height, int sample_bits,
                                 std::vector<std::uint16_t> samples)
{
    xvr_color::Image image;
    image.width = width;
    image.height = height;
    image.sample_bits = sample_bits;
    image.samples = std::move(samples);
    return image;
}

// A little image with some structure, so that compression, slicing and blocks have work to do.
inline xvr_color::Image gradient(std::uint32_t width, std::uint32_t height, int bits)
{
    xvr_color::Image image = xvr_color::make_blank_image(width, height, bits);
    const std::uint32_t top = bits == 8 ? 255 : 65535;
    for (std::size_t i = 0; i < image.samples.size(); ++i) {
        image.samples[i] = static_cast<std::uint16_t>((i * 7919 + (i / 3) * 13) % (top + 1));
    }
    return image;
}

// A file's header text followed by raw bytes.
inline std::vector<std::uint8_t> bytes_of(const std::string& header, std::vector<std::uint8_t> raster = {})
{
    raster.insert(raster.begin(), header.begin(), header.end());
    return raster;
}

// The message of the Error that `action` throws, or "no error".
template <class Error = xvr_color::Tool_error, class Action> std::string error_of(Action action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

// A fresh folder, removed with everything in it afterwards.
struct Scratch_folder {
    std::string path = [] {
        std::string pattern = ::testing::TempDir() + "xvr_color_test_XXXXXX";
        EXPECT_NE(mkdtemp(&pattern[0]), nullptr);
        return pattern;
    }();

    Scratch_folder() = default;
    Scratch_folder(const Scratch_folder&) = delete;
    ~Scratch_folder() { std::error_code ignored; std::filesystem::remove_all(path, ignored); }

    std::string file(const std::string& name) const { return path + "/" + name; }

    std::vector<std::string> entries(const std::string& folder = ".") const // sorted names
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(file(folder))) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace xvr_color_test
