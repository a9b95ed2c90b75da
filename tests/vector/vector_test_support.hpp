// What the vector-library tests share: the options of one transform decoded from an index over
// all 62,208 combinations, whether this processor can run a level (asked through the compiler's
// own CPU check, not the code under test), test pixels, and the first differing sample.
#pragma once

#include <corvane_xvr_color_processing.h>

#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace vector_test {

constexpr int option_combinations = 3 * 64 * 27 * 2 * 3 * 2;
constexpr int32_t widest_step = 8;  // pixels per step of the AVX2 library (SSE: 4)

struct Options {
    int input_format, output_format;
    bool input_LUT[3], output_LUT[3];  // blue, green, red
    int shift_state[3];                // 0 none, 1 left, 2 right
    bool fourth_channel, eight_bit;
};

inline Options decode_options(int index)
{
    Options o{};
    auto take = [&index](int values) { const int value = index % values; index /= values; return value; };
    o.eight_bit = take(2) != 0;
    o.output_format = take(3);
    o.fourth_channel = take(2) != 0;
    for (int& state : o.shift_state) state = take(3);
    for (bool& flag : o.output_LUT) flag = take(2) != 0;
    for (bool& flag : o.input_LUT) flag = take(2) != 0;
    o.input_format = take(3);
    return o;
}

inline std::string describe(const Options& o)
{
    std::ostringstream text;
    text << "in " << o.input_format << " tables " << o.input_LUT[0] << o.input_LUT[1] << o.input_LUT[2] << "/"
         << o.output_LUT[0] << o.output_LUT[1] << o.output_LUT[2] << " shifts " << o.shift_state[0]
         << o.shift_state[1] << o.shift_state[2] << " fourth " << o.fourth_channel << " out " << o.output_format
         << (o.eight_bit ? " 8-bit" : " 16-bit");
    return text.str();
}

inline const char* level_name(int level) { return level == 2 ? "AVX2" : "SSE41"; }

inline bool processor_runs_level(int level)
{
    __builtin_cpu_init();
    if (level == 2) return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    return __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("ssse3");
}

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

    std::mt19937 random;
};

// Index of the first differing sample, or -1.
template <typename T>
long first_difference(const std::vector<T>& a, const std::vector<T>& b)
{
    for (std::size_t k = 0; k < a.size() && k < b.size(); ++k) {
        if (a[k] != b[k]) return static_cast<long>(k);
    }
    return a.size() == b.size() ? -1 : static_cast<long>(a.size());
}

}  // namespace vector_test
