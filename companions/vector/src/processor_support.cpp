#include "processor_support.hpp"

#include <cpuid.h>

namespace {

using namespace cpuid_bit;

constexpr uint32_t sse41_leaf_1_edx = leaf_1_edx_mmx | leaf_1_edx_sse | leaf_1_edx_sse2;
constexpr uint32_t sse41_leaf_1_ecx = leaf_1_ecx_sse3 | leaf_1_ecx_ssse3 | leaf_1_ecx_sse4_1;
// -mavx2 -mfma also lets the compiler use SSE4.2 and POPCNT.
constexpr uint32_t avx2_leaf_1_ecx = sse41_leaf_1_ecx | leaf_1_ecx_sse4_2 | leaf_1_ecx_popcnt |
                                     leaf_1_ecx_fma | leaf_1_ecx_osxsave | leaf_1_ecx_avx;
constexpr uint64_t avx2_xcr0 = xcr0_xmm_state | xcr0_ymm_state;

bool has_all(uint64_t value, uint64_t bits)
{
    return (value & bits) == bits;
}

}  // namespace

bool processor_supports(Vector_isa isa, const Processor_answers& answers)
{
    if (!answers.has_cpuid || answers.highest_leaf < 1u) return false;
    if (!has_all(answers.leaf_1_edx, sse41_leaf_1_edx)) return false;
    if (isa == Vector_isa::sse41) return has_all(answers.leaf_1_ecx, sse41_leaf_1_ecx);
    return answers.highest_leaf >= 7u && has_all(answers.leaf_1_ecx, avx2_leaf_1_ecx) &&
           has_all(answers.leaf_7_ebx, leaf_7_ebx_avx2) && has_all(answers.xcr0, avx2_xcr0);
}

Processor_answers read_processor_answers()
{
    return read_processor_answers(
        [] { return __get_cpuid_max(0u, nullptr) != 0u; },  // on i386 this also tests EFLAGS.ID
        [](uint32_t leaf) {
            Cpuid_answer answer{};
            __cpuid_count(leaf, 0u, answer.eax, answer.ebx, answer.ecx, answer.edx);
            return answer;
        },
        [] {
            uint32_t low = 0, high = 0;
            asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0u));
            return (static_cast<uint64_t>(high) << 32) | low;
        });
}
