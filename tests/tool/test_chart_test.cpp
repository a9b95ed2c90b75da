#include "test_chart.hpp"

#include <gtest/gtest.h>

#include <array>

using namespace xvr_color;

namespace {

std::array<std::uint16_t, 3> pixel(const Image& image, std::uint32_t x, std::uint32_t y)
{
    const std::size_t at = (static_cast<std::size_t>(y) * image.width + x) * 3;
    return {image.samples[at], image.samples[at + 1], image.samples[at + 2]};
}

std::uint32_t band_row(std::uint32_t band)
{
    return band * test_chart_band_height + test_chart_band_height / 2;
}

std::uint32_t patch_x(std::uint32_t patch)
{
    return patch * (test_chart_width / 8) + test_chart_width / 16;
}

using Rgb = std::array<std::uint16_t, 3>;

} // namespace

TEST(TestChart, IsASixteenBitImageOfTheAdvertisedSize)
{
    const Image chart = make_test_chart();
    EXPECT_EQ(chart.width, 768u);
    EXPECT_EQ(chart.height, 512u);
    EXPECT_EQ(chart.sample_bits, 16);
    EXPECT_EQ(chart.samples.size(), 768u * 512u * 3u);
}

TEST(TestChart, RampsRunSmoothlyFromZeroToFullScale)
{
    const Image chart = make_test_chart();
    const std::uint32_t last = test_chart_width - 1;
    for (std::uint32_t band = 0; band < 4; ++band) {
        const std::uint32_t y = band_row(band);
        const std::size_t channel = band == 0 ? 0 : band - 1;
        EXPECT_EQ(pixel(chart, 0, y)[channel], 0);
        EXPECT_EQ(pixel(chart, last, y)[channel], 65535);
        for (std::uint32_t x = 1; x <= last; ++x) {
            const int step = pixel(chart, x, y)[channel] - pixel(chart, x - 1, y)[channel];
            ASSERT_GE(step, 85);  // 65535 / 767 = 85.4: no flat spots
            ASSERT_LE(step, 86);  // and no jumps
        }
    }
    EXPECT_EQ(pixel(chart, 400, band_row(0)), (Rgb{34177, 34177, 34177})); // 400 / 767 x 65535 = 34177.3
    EXPECT_EQ(pixel(chart, 1, band_row(0))[0], 85);
    EXPECT_EQ(pixel(chart, 400, band_row(1))[1], 0);
}

TEST(TestChart, TheHueSweepIsSaturatedEverywhere)
{
    const Image chart = make_test_chart();
    const std::uint32_t y = band_row(4);
    EXPECT_EQ(pixel(chart, 0, y), (Rgb{65535, 0, 0}));
    EXPECT_EQ(pixel(chart, 256, y), (Rgb{0, 65535, 0}));
    EXPECT_EQ(pixel(chart, 512, y), (Rgb{0, 0, 65535}));
    for (std::uint32_t x = 0; x < test_chart_width; ++x) {
        const Rgb p = pixel(chart, x, y);
        const std::uint16_t high = std::max({p[0], p[1], p[2]});
        const std::uint16_t low = std::min({p[0], p[1], p[2]});
        ASSERT_EQ(high, 65535) << x;
        ASSERT_EQ(low, 0) << x;
    }
}

TEST(TestChart, PatchesHoldPrimariesExtremesAndTheGreysNearBothEnds)
{
    const Image chart = make_test_chart();
    const std::array<Rgb, 8> primaries = {{{65535, 0, 0}, {0, 65535, 0}, {0, 0, 65535},
                                           {0, 65535, 65535}, {65535, 0, 65535}, {65535, 65535, 0},
                                           {65535, 65535, 65535}, {0, 0, 0}}};
    for (std::uint32_t patch = 0; patch < 8; ++patch) {
        EXPECT_EQ(pixel(chart, patch_x(patch), band_row(5)), primaries[patch]);
        const std::uint16_t dark = test_chart_grey_steps[patch];
        EXPECT_EQ(pixel(chart, patch_x(patch), band_row(6)), (Rgb{dark, dark, dark}));
        const std::uint16_t light = static_cast<std::uint16_t>(65535 - dark);
        EXPECT_EQ(pixel(chart, patch_x(patch), band_row(7)), (Rgb{light, light, light}));
    }
    EXPECT_EQ(pixel(chart, test_chart_width - 1, test_chart_height - 1), (Rgb{64511, 64511, 64511}));
}
