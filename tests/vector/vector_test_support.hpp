// What the vector-library tests share: the options of one transform decoded from an index over
// all 62,208 combinations, whether this processor can run a level (asked through the compiler's
// own CPU check, not the code under test), and the first differing sample.
#pragma once

#include "sample_source.hpp"

#include <corvane_xvr_color_processing.h>

#include <cstdint>
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
