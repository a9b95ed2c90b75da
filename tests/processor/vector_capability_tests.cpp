// The choice of vector level from made-up CPUID answers.
#include "vector_capability.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A processor that answers leaves 1 and 7 and remembers which leaves were read.
struct Made_up_processor {
    Cpuid_registers leaf_1{};
    Cpuid_registers leaf_7{};
    std::vector<uint32_t> reads;

    int level()
    {
        return vector_level_from_cpuid([this](uint32_t leaf) {
            reads.push_back(leaf);
            return leaf == 7u ? leaf_7 : leaf_1;
        });
    }
};

constexpr uint32_t sse_and_sse2 = cpuid_bit::leaf_1_edx_sse | cpuid_bit::leaf_1_edx_sse2;

// A typical modern signature (family 6); anything above 6 passes the leaf-count test.
Made_up_processor avx2_processor()
{
    Made_up_processor processor;
    processor.leaf_1 = {0x000906EAu, 0, cpuid_bit::leaf_1_ecx_fma | cpuid_bit::leaf_1_ecx_sse4_1,
                        sse_and_sse2};
    processor.leaf_7 = {0, cpuid_bit::leaf_7_ebx_avx2, 0, 0};
    return processor;
}

}  // namespace

TEST(Vector_capability, AVX2WithFMAGivesLevel2)
{
    Made_up_processor processor = avx2_processor();
    EXPECT_EQ(processor.level(), 2);
    EXPECT_EQ(processor.reads, (std::vector<uint32_t>{1, 7}));
}

TEST(Vector_capability, AVX2WithoutFMAFallsToTheSSETests)
{
    Made_up_processor processor = avx2_processor();
    processor.leaf_1.ecx &= ~cpuid_bit::leaf_1_ecx_fma;
    EXPECT_EQ(processor.level(), 1);
    EXPECT_EQ(processor.reads, (std::vector<uint32_t>{1, 7, 1}));
    processor.leaf_1.ecx &= ~cpuid_bit::leaf_1_ecx_sse4_1;
    EXPECT_EQ(processor.level(), 0);
}

TEST(Vector_capability, SignatureIsTakenForTheHighestLeaf)
{
    Made_up_processor processor = avx2_processor();
    processor.leaf_1.eax = 6;  // "no leaf 7": leaf 7 is not even read
    EXPECT_EQ(processor.level(), 1);
    EXPECT_EQ(processor.reads, (std::vector<uint32_t>{1, 1}));
    processor.leaf_1.eax = 7;
    EXPECT_EQ(processor.level(), 2);
    // A signature with the sign bit set counts as negative.
    processor.leaf_1.eax = 0x80000000u;
    EXPECT_EQ(processor.level(), 1);
    processor.leaf_1.eax = 0;
    EXPECT_EQ(processor.level(), 1);
}

TEST(Vector_capability, SSEClassNeedsSSEAndSSE2AndSSE41)
{
    Made_up_processor processor;
    processor.leaf_1 = {0x000306A9u, 0, cpuid_bit::leaf_1_ecx_sse4_1, sse_and_sse2};
    EXPECT_EQ(processor.level(), 1);
    processor.leaf_1.edx = cpuid_bit::leaf_1_edx_sse2;
    EXPECT_EQ(processor.level(), 0);
    processor.leaf_1.edx = cpuid_bit::leaf_1_edx_sse;
    EXPECT_EQ(processor.level(), 0);
    processor.leaf_1.edx = sse_and_sse2;
    processor.leaf_1.ecx = 0;
    EXPECT_EQ(processor.level(), 0);
}

TEST(Vector_capability, AVX2BitWithoutSSEBitsStillGivesLevel2)
{
    // Level 2 is decided before the SSE bits are looked at.
    Made_up_processor processor = avx2_processor();
    processor.leaf_1.edx = 0;
    EXPECT_EQ(processor.level(), 2);
}
