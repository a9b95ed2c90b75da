// Whether this processor and its operating system can run one of the vector libraries. The
// decision is a pure function of the CPUID and XGETBV answers, so that a test can put made-up
// processors to it; read_processor_answers asks the real instructions only what is safe to ask.
//
// Compiled without any SIMD flag: initialize runs on every processor that loads the library,
// including those that cannot execute a single instruction of its pixel code.
#pragma once

#include "cpuid_bits.hpp"

#include <cstdint>

enum class Vector_isa { sse41, avx2 };

struct Cpuid_answer {
    uint32_t eax;
    uint32_t ebx;
    uint32_t ecx;
    uint32_t edx;
};

// What the libraries need to know. Leaves that were not read, and XCR0 when the operating
// system has not enabled XGETBV, stay 0.
struct Processor_answers {
    bool has_cpuid;
    uint32_t highest_leaf;
    uint32_t leaf_1_ecx;
    uint32_t leaf_1_edx;
    uint32_t leaf_7_ebx;
    uint64_t xcr0;
};

// True when every extension that the library's compiler flags allow is present (for AVX2 also
// enabled by the operating system, which saves the YMM registers only when XCR0 says so).
bool processor_supports(Vector_isa isa, const Processor_answers& answers);

// Reads leaf 0, leaf 1, leaf 7 only when leaf 0 admits it, and XCR0 only when leaf 1 reports
// OSXSAVE (XGETBV is an invalid instruction otherwise). The readers are parameters so that a
// test can check the order of questions.
template <typename Has_cpuid, typename Read_leaf, typename Read_xcr0>
Processor_answers read_processor_answers(Has_cpuid&& has_cpuid, Read_leaf&& read_leaf,
                                         Read_xcr0&& read_xcr0)
{
    Processor_answers answers{};
    answers.has_cpuid = has_cpuid();
    if (!answers.has_cpuid) return answers;
    answers.highest_leaf = read_leaf(0u).eax;
    if (answers.highest_leaf < 1u) return answers;
    const Cpuid_answer leaf_1 = read_leaf(1u);
    answers.leaf_1_ecx = leaf_1.ecx;
    answers.leaf_1_edx = leaf_1.edx;
    if (answers.highest_leaf >= 7u) answers.leaf_7_ebx = read_leaf(7u).ebx;
    if ((answers.leaf_1_ecx & cpuid_bit::leaf_1_ecx_osxsave) != 0) answers.xcr0 = read_xcr0();
    return answers;
}

// The answers of the processor this runs on.
Processor_answers read_processor_answers();
