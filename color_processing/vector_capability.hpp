// Which vector library a processor uses, from what the CPUID instruction reports. The decision
// is a pure function of the register values so that it can be exercised with made-up
// processors; detect_vector_level() feeds it the real instruction.
#pragma once

#include "cpuid_bits.hpp"

#include <cstdint>

struct Cpuid_registers {
    uint32_t eax;
    uint32_t ebx;
    uint32_t ecx;
    uint32_t edx;
};

// Vector level 0 (scalar only), 1 (SSE library) or 2 (AVX2 library). read_leaf(leaf) returns
// the registers of that leaf, sub-leaf 0.
//
// Leaf 1's EAX is compared with the leaf numbers as if it were the highest supported leaf. It
// is the processor signature, which is far above 6 on every real processor, so the test never
// refuses a real one, and the level depends only on the feature bits; a signature of 6 or less
// is rated by its SSE bits alone.
template <typename Read_leaf>
int vector_level_from_cpuid(Read_leaf&& read_leaf)
{
    const Cpuid_registers leaf_1 = read_leaf(1u);
    const int32_t signature = static_cast<int32_t>(leaf_1.eax);
    if (signature > 0) {
        const bool fma = (leaf_1.ecx & cpuid_bit::leaf_1_ecx_fma) != 0;
        if (signature > 6) {
            const Cpuid_registers leaf_7 = read_leaf(7u);
            if ((leaf_7.ebx & cpuid_bit::leaf_7_ebx_avx2) != 0 && fma) return 2;
        }
    }

    const Cpuid_registers features = read_leaf(1u);
    if ((features.edx & cpuid_bit::leaf_1_edx_sse) == 0) return 0;
    if ((features.edx & cpuid_bit::leaf_1_edx_sse2) == 0) return 0;
    return (features.ecx & cpuid_bit::leaf_1_ecx_sse4_1) != 0 ? 1 : 0;
}

// The level of the processor this runs on. No operating-system support test is made.
int detect_vector_level();
