// The CPUID and XCR0 bits that decide which vector library a processor can run: read by the
// core's choice of a vector level and by each vector library's own check before it accepts a
// processor, so that both name the same bits.
#pragma once

#include <cstdint>

namespace cpuid_bit {
constexpr uint32_t leaf_1_edx_mmx = 1u << 23;
constexpr uint32_t leaf_1_edx_sse = 1u << 25;
constexpr uint32_t leaf_1_edx_sse2 = 1u << 26;
constexpr uint32_t leaf_1_ecx_sse3 = 1u << 0;
constexpr uint32_t leaf_1_ecx_ssse3 = 1u << 9;
constexpr uint32_t leaf_1_ecx_fma = 1u << 12;
constexpr uint32_t leaf_1_ecx_sse4_1 = 1u << 19;
constexpr uint32_t leaf_1_ecx_sse4_2 = 1u << 20;
constexpr uint32_t leaf_1_ecx_popcnt = 1u << 23;
constexpr uint32_t leaf_1_ecx_osxsave = 1u << 27;
constexpr uint32_t leaf_1_ecx_avx = 1u << 28;
constexpr uint32_t leaf_7_ebx_avx2 = 1u << 5;
constexpr uint64_t xcr0_xmm_state = 1u << 1;
constexpr uint64_t xcr0_ymm_state = 1u << 2;
}  // namespace cpuid_bit
