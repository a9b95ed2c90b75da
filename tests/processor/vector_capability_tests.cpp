// The choice of vector level from made-up CPUID answers.
#include "vector_capability.hpp"

#include <gtest/gtest.h>

namespace {

constexpr uint32_t fma = cpuid_bit::leaf_1_ecx_fma;
constexpr uint32_t sse4_1 = cpuid_bit::leaf_1_ecx_sse4_1;
constexpr uint32_t sse = cpuid_bit::leaf_1_edx_sse;
constexpr uint32_t sse2 = cpuid_bit::leaf_1_edx_sse2;
constexpr uint32_t avx2 = cpuid_bit::leaf_7_ebx_avx2;
constexpr uint32_t modern = 0x000906EAu;  // a family-6 signature

struct Cpuid_case {
    const char* name;
    uint32_t leaf_1_eax, leaf_1_ecx, leaf_1_edx, leaf_7_ebx;
    int level;
};

// Leaf 1's EAX (the signature) is taken for the highest leaf: the AVX2 bit of leaf 7 counts only
// when it is above 6 as a signed number.
const Cpuid_case cases[] = {
    {"AVX2WithFMA", modern, fma | sse4_1, sse | sse2, avx2, 2},
    {"AVX2WithoutSSEBits", modern, fma, 0, avx2, 2},
    {"AVX2WithoutFMAFallsToSSE", modern, sse4_1, sse | sse2, avx2, 1},
    {"NoFMANoSSE41", modern, 0, sse | sse2, avx2, 0},
    {"SignatureSixIgnoresLeaf7", 6, fma | sse4_1, sse | sse2, avx2, 1},
    {"SignatureSevenUsesLeaf7", 7, fma | sse4_1, sse | sse2, avx2, 2},
    {"NegativeSignature", 0x80000000u, fma | sse4_1, sse | sse2, avx2, 1},
    {"ZeroSignature", 0, fma | sse4_1, sse | sse2, avx2, 1},
    {"SSEClass", 0x000306A9u, sse4_1, sse | sse2, 0, 1},
    {"SSE2WithoutSSE", 0x000306A9u, sse4_1, sse2, 0, 0},
    {"SSEWithoutSSE2", 0x000306A9u, sse4_1, sse, 0, 0},
};

}  // namespace

TEST(Vector_capability, LevelFollowsTheCPUIDAnswers)
{
    for (const Cpuid_case& c : cases) {
        const int level = vector_level_from_cpuid([&](uint32_t leaf) {
            return leaf == 7u ? Cpuid_registers{0, c.leaf_7_ebx, 0, 0}
                              : Cpuid_registers{c.leaf_1_eax, 0, c.leaf_1_ecx, c.leaf_1_edx};
        });
        EXPECT_EQ(level, c.level) << c.name;
    }
}
