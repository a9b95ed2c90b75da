#include "test_chart.hpp"

#include <gtest/gtest.h>

#include <algorithm>

using namespace xvr_color;

TEST(TestChart, RampsSweepAndPatchesHoldWhatTheReadmeSays)
{
    using Rgb = std::array<std::uint16_t, 3>;
    const Image chart = make_test_chart();
    ASSERT_EQ(chart.width, 768u);
    ASSERT_EQ(chart.height, 512u);
    EXPECT_EQ(chart.sample_bits, 16);
    ASSERT_EQ(chart.samples.size(), 768u * 512u * 3u);
    const auto at = [&](std::uint32_t x, std::uint32_t band) { // the middle row of a band of 64
        const std::size_t i = ((band * 64 + 32) * 768 + x) * 3;
        return Rgb{chart.samples[i], chart.samples[i + 1], chart.samples[i + 2]};
    };
    // Bands 0..3: grey, red, green and blue ramps from exactly 0 to exactly 65535.
    for (std::uint32_t band = 0; band < 4; ++band) {
        const std::size_t channel = band == 0 ? 0 : band - 1;
        EXPECT_EQ(at(0, band)[channel], 0) << band;
        EXPECT_EQ(at(767, band)[channel], 65535) << band;
        for (std::uint32_t x = 1; x < 768; ++x) {
            const int step = at(x, band)[channel] - at(x - 1, band)[channel];
            ASSERT_TRUE(step == 85 || step == 86) << band << " " << x; // 65535 / 767 = 85.4
        }
    }
    EXPECT_EQ(at(400, 0), (Rgb{34177, 34177, 34177})); // 400 / 767 x 65535 = 34177.3
    EXPECT_EQ(at(400, 1)[1], 0);
    // Band 4: every hue fully saturated.
    EXPECT_EQ(at(256, 4), (Rgb{0, 65535, 0}));
    EXPECT_EQ(at(512, 4), (Rgb{0, 0, 65535}));
    for (std::uint32_t x = 0; x < 768; ++x) {
        const Rgb hue = at(x, 4);
        ASSERT_EQ(std::max({hue[0], hue[1], hue[2]}), 65535) << x;
        ASSERT_EQ(std::min({hue[0], hue[1], hue[2]}), 0) << x;
    }
    // Bands 5..7: primaries and extremes, then greys near black and near white.
    const Rgb patches[8] = {{65535, 0, 0}, {0, 65535, 0}, {0, 0, 65535}, {0, 65535, 65535},
                            {65535, 0, 65535}, {65535, 65535, 0}, {65535, 65535, 65535}, {0, 0, 0}};
    const std::uint16_t steps[8] = {0, 1, 2, 4, 16, 64, 256, 1024};
    for (std::uint32_t patch = 0; patch < 8; ++patch) {
        const std::uint16_t dark = steps[patch], light = static_cast<std::uint16_t>(65535 - steps[patch]);
        EXPECT_EQ(at(patch * 96 + 48, 5), patches[patch]) << patch;
        EXPECT_EQ(at(patch * 96 + 48, 6), (Rgb{dark, dark, dark})) << patch;
        EXPECT_EQ(at(patch * 96 + 48, 7), (Rgb{light, light, light})) << patch;
    }
}
