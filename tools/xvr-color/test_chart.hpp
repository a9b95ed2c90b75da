// The built-in test chart: a 48-bit image that exercises every stage of a correction. Eight
// bands of 64 rows, top to bottom:
//   0 grey ramp, 1 red ramp, 2 green ramp, 3 blue ramp (each from 0 to 65535 exactly),
//   4 a sweep through the fully saturated hues,
//   5 eight patches: red, green, blue, cyan, magenta, yellow, white (65535), black (0),
//   6 eight near-black greys: 0, 1, 2, 4, 16, 64, 256, 1024,
//   7 eight near-white greys: 65535 minus each of those.
#pragma once

#include "image.hpp"

#include <array>
#include <cstdint>

namespace xvr_color {

constexpr std::uint32_t test_chart_width = 768;
constexpr std::uint32_t test_chart_height = 512;
constexpr std::uint32_t test_chart_band_height = 64;

// Offsets from black (and from white) of the greys of bands 6 and 7.
constexpr std::array<std::uint16_t, 8> test_chart_grey_steps = {0, 1, 2, 4, 16, 64, 256, 1024};

Image make_test_chart();

} // namespace xvr_color
