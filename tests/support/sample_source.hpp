// Seeded test data shared by the sweeps: samples that favour the range's ends, pixels in any
// layout, clamp bounds and table entries.
#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

class Sample_source {
public:
    explicit Sample_source(uint32_t seed) : random(seed) {}

    int32_t uniform(int32_t low, int32_t high) { return std::uniform_int_distribution<int32_t>(low, high)(random); }

    // 0 and 65535 a tenth of the time each, otherwise uniform.
    uint16_t sample()
    {
        const int32_t pick = uniform(0, 9);
        return static_cast<uint16_t>(pick == 0 ? 0 : pick == 1 ? 65535 : uniform(0, 65535));
    }

    // n pixels in the layout (formats other than 1 and 2 are planar), their three samples in
    // memory order from `pixel` (by default a third of them grey, where matrices with
    // cancelling columns leave only their small terms).
    template <typename Pixel>
    std::vector<uint16_t> pixels(int32_t n, int format, Pixel&& pixel)
    {
        const std::size_t count = static_cast<std::size_t>(n > 0 ? n : 0);
        std::vector<uint16_t> buffer(3 * count + 3);  // never empty: the calls refuse a null buffer
        for (std::size_t i = 0; i < count; ++i) {
            uint16_t samples[3];
            pixel(samples);
            for (std::size_t c = 0; c < 3; ++c) buffer[format == 1 || format == 2 ? 3 * i + c : c * count + i] = samples[c];
        }
        return buffer;
    }
    std::vector<uint16_t> pixels(int32_t n, int format)
    {
        return pixels(n, format, [this](uint16_t* s) {
            const bool grey = uniform(0, 2) == 0;
            s[0] = sample();
            s[1] = grey ? s[0] : sample();
            s[2] = grey ? s[0] : sample();
        });
    }

    // One channel's clamp bounds, the full range a quarter of the time.
    void clamp_bounds(uint16_t& min, uint16_t& max)
    {
        const bool full = uniform(0, 3) == 0;
        const int32_t a = uniform(0, 65535), b = uniform(0, 65535);
        min = static_cast<uint16_t>(full ? 0 : std::min(a, b));
        max = static_cast<uint16_t>(full ? 65535 : std::max(a, b));
    }

    // Random 32-bit entries in every table of a set.
    template <typename Tables>
    void fill_tables(Tables& tables)
    {
        for (auto& table : tables) {
            for (auto& entry : table) entry = static_cast<int32_t>(random());
        }
    }

    std::mt19937 random;
};
