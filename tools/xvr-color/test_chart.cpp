#include "test_chart.hpp"

#include <cmath>

namespace xvr_color {

namespace {

using Rgb = std::array<std::uint16_t, 3>;

constexpr std::uint16_t full = 65535;
constexpr std::uint32_t patch_count = 8;

std::uint16_t ramp_value(std::uint32_t x)
{
    return static_cast<std::uint16_t>((std::uint64_t(x) * full + (test_chart_width - 1) / 2) /
                                      (test_chart_width - 1));
}

// Hue from 0 to 6 around the circle red, yellow, green, cyan, blue, magenta.
Rgb saturated_hue(double hue)
{
    auto component = [hue](double centre) {
        double distance = std::fabs(std::fmod(hue - centre + 9.0, 6.0) - 3.0);
        double level = distance >= 2.0 ? 0.0 : (distance <= 1.0 ? 1.0 : 2.0 - distance);
        return static_cast<std::uint16_t>(std::floor(level * full + 0.5));
    };
    return Rgb{component(0.0), component(2.0), component(4.0)};
}

Rgb primary_patch(std::uint32_t patch)
{
    static const std::array<Rgb, patch_count> patches = {{
        {full, 0, 0}, {0, full, 0}, {0, 0, full}, {0, full, full},
        {full, 0, full}, {full, full, 0}, {full, full, full}, {0, 0, 0},
    }};
    return patches[patch];
}

Rgb grey(std::uint16_t level)
{
    return Rgb{level, level, level};
}

Rgb chart_pixel(std::uint32_t x, std::uint32_t y)
{
    const std::uint32_t band = y / test_chart_band_height;
    const std::uint32_t patch = x * patch_count / test_chart_width;
    const std::uint16_t ramp = ramp_value(x);
    switch (band) {
    case 0:
        return grey(ramp);
    case 1:
        return Rgb{ramp, 0, 0};
    case 2:
        return Rgb{0, ramp, 0};
    case 3:
        return Rgb{0, 0, ramp};
    case 4:
        return saturated_hue(6.0 * x / test_chart_width);
    case 5:
        return primary_patch(patch);
    case 6:
        return grey(test_chart_grey_steps[patch]);
    default:
        return grey(static_cast<std::uint16_t>(full - test_chart_grey_steps[patch]));
    }
}

} // namespace

Image make_test_chart()
{
    Image chart = make_blank_image(test_chart_width, test_chart_height, 16);
    std::size_t sample = 0;
    for (std::uint32_t y = 0; y < test_chart_height; ++y) {
        for (std::uint32_t x = 0; x < test_chart_width; ++x) {
            for (std::uint16_t value : chart_pixel(x, y)) {
                chart.samples[sample++] = value;
            }
        }
    }
    return chart;
}

} // namespace xvr_color
