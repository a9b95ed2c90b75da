// The four entry points of one vector library, compiled once per library without SIMD flags:
// NQ_VECTOR_KIND (sse or avx2) names the entry points, NQ_VECTOR_ISA (sse41 or avx2) the
// instruction set whose transforms they run. initialize may run on any processor, so it and
// everything it calls stay baseline code.
//
// The libraries keep no state at all: initialize only asks the processor, terminate has nothing
// to release, so any number of initialize calls before a terminate, and transforms of different
// processors on different threads, are safe.
#include <corvane_xvr_color_processing_vector.h>

#include "processor_support.hpp"
#include "vector_transforms.hpp"

#if !defined(NQ_VECTOR_KIND) || !defined(NQ_VECTOR_ISA)
#error "Define NQ_VECTOR_KIND (sse or avx2) and NQ_VECTOR_ISA (sse41 or avx2)."
#endif

#define NQ_ENTRY(prefix, suffix) NQ_ENTRY_EXPANDED(prefix, NQ_VECTOR_KIND, suffix)
#define NQ_ENTRY_EXPANDED(prefix, kind, suffix) NQ_ENTRY_PASTED(prefix, kind, suffix)
#define NQ_ENTRY_PASTED(prefix, kind, suffix) prefix##kind##suffix

namespace {

constexpr int ready = 0;
constexpr int unsupported_processor = 1;

}  // namespace

extern "C" {

int NQ_ENTRY(nq_color_processing_vector_, _module_initialize)(void)
{
    return processor_supports(Vector_isa::NQ_VECTOR_ISA, read_processor_answers()) ? ready : unsupported_processor;
}

int NQ_ENTRY(nq_color_processing_transform_8_bit_output_vector_, )(const Transform_arguments<unsigned char>* arguments)
{
    return NQ_VECTOR_ISA::transform(*arguments);
}

int NQ_ENTRY(nq_color_processing_transform_16_bit_output_vector_, )(const Transform_arguments<unsigned short>* arguments)
{
    return NQ_VECTOR_ISA::transform(*arguments);
}

void NQ_ENTRY(nq_color_processing_vector_, _module_terminate)(void) {}

}  // extern "C"
