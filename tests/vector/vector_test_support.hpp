// What the vector-library tests share: whether this processor can run a level (asked through
// the compiler's own CPU check, not the code under test), and the first differing sample.
#pragma once

#include "sample_source.hpp"
#include "transform_options.hpp"

#include <corvane_xvr_color_processing.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vector_test {

constexpr int32_t widest_step = 8;  // pixels per step of the AVX2 library (SSE: 4)

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
