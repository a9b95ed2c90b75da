// Which made-up processors may run each vector library, and which questions the detection asks:
// leaf 7 only when leaf 0 admits it, XGETBV only when the operating system enabled it.
#include "processor_support.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace cpuid_bit;

constexpr uint32_t sse41_ecx = leaf_1_ecx_sse3 | leaf_1_ecx_ssse3 | leaf_1_ecx_sse4_1;
constexpr uint32_t all_ecx =
    sse41_ecx | leaf_1_ecx_sse4_2 | leaf_1_ecx_popcnt | leaf_1_ecx_fma | leaf_1_ecx_osxsave | leaf_1_ecx_avx;
constexpr uint32_t all_edx = leaf_1_edx_mmx | leaf_1_edx_sse | leaf_1_edx_sse2;

// An AVX2 processor with one leaf-1 ECX, leaf-1 EDX, leaf-7 EBX or XCR0 bit taken away.
Processor_answers without(uint32_t ecx, uint32_t edx = 0, uint32_t ebx_7 = 0, uint64_t xcr0 = 0)
{
    return {true, 13, all_ecx & ~ecx, all_edx & ~edx, leaf_7_ebx_avx2 & ~ebx_7, (xcr0_xmm_state | xcr0_ymm_state | 1u) & ~xcr0};
}

}  // namespace

TEST(Processor_support, EachLibraryNeedsEveryExtensionItsCodeMayUse)
{
    const struct {
        const char* name;
        Processor_answers answers;
        bool sse41, avx2;
    } cases[] = {
        {"AVX2 processor", without(0), true, true},
        {"no CPUID", {false, 13, all_ecx, all_edx, leaf_7_ebx_avx2, 7}, false, false},
        {"leaf 0 only", {true, 0, all_ecx, all_edx, leaf_7_ebx_avx2, 7}, false, false},
        {"no leaf 7", {true, 6, all_ecx, all_edx, leaf_7_ebx_avx2, 7}, true, false},
        {"SSE4.1 class", {true, 11, sse41_ecx, all_edx, 0, 0}, true, false},
        {"no MMX", without(0, leaf_1_edx_mmx), false, false},
        {"no SSE", without(0, leaf_1_edx_sse), false, false},
        {"no SSE2", without(0, leaf_1_edx_sse2), false, false},
        {"no SSE3", without(leaf_1_ecx_sse3), false, false},
        {"no SSSE3", without(leaf_1_ecx_ssse3), false, false},
        {"no SSE4.1", without(leaf_1_ecx_sse4_1), false, false},
        {"no SSE4.2", without(leaf_1_ecx_sse4_2), true, false},
        {"no POPCNT", without(leaf_1_ecx_popcnt), true, false},
        {"no FMA", without(leaf_1_ecx_fma), true, false},
        {"no AVX", without(leaf_1_ecx_avx), true, false},
        {"no OSXSAVE", without(leaf_1_ecx_osxsave, 0, 0, ~uint64_t{0}), true, false},
        {"no AVX2", without(0, 0, leaf_7_ebx_avx2), true, false},
        {"YMM state not enabled", without(0, 0, 0, xcr0_ymm_state), true, false},
        {"XMM state not enabled", without(0, 0, 0, xcr0_xmm_state), true, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(processor_supports(Vector_isa::sse41, c.answers), c.sse41) << c.name;
        EXPECT_EQ(processor_supports(Vector_isa::avx2, c.answers), c.avx2) << c.name;
    }
}

TEST(Processor_support, AsksOnlyWhatTheProcessorAdmitsAndAgreesWithTheCompilersCheckHere)
{
    const struct {
        bool has_cpuid;
        uint32_t highest_leaf, leaf_1_ecx;
        std::vector<std::string> questions;
    } readings[] = {
        {false, 13, all_ecx, {"id"}},
        {true, 0, all_ecx, {"id", "leaf 0"}},
        {true, 6, sse41_ecx, {"id", "leaf 0", "leaf 1"}},
        {true, 7, sse41_ecx, {"id", "leaf 0", "leaf 1", "leaf 7"}},
        {true, 13, all_ecx, {"id", "leaf 0", "leaf 1", "leaf 7", "xgetbv"}},
    };
    for (const auto& r : readings) {
        std::vector<std::string> questions;
        read_processor_answers([&] { questions.push_back("id"); return r.has_cpuid; },
                               [&](uint32_t leaf) {
                                   questions.push_back("leaf " + std::to_string(leaf));
                                   return Cpuid_answer{r.highest_leaf, leaf_7_ebx_avx2, r.leaf_1_ecx, all_edx};
                               },
                               [&] { questions.push_back("xgetbv"); return uint64_t{7}; });
        EXPECT_EQ(questions, r.questions) << r.questions.size() << " questions expected";
    }
    __builtin_cpu_init();
    const Processor_answers here = read_processor_answers();
    EXPECT_EQ(processor_supports(Vector_isa::sse41, here), __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("ssse3"));
    EXPECT_EQ(processor_supports(Vector_isa::avx2, here), __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
}
