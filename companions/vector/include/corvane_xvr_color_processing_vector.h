/*
 * corvane_xvr_color_processing_vector.h - the binary contract between
 * libcorvane_xvr_color_processing.so and its two vector libraries,
 * libcorvane_xvr_color_processing_vector_sse.so (SSE4.1) and
 * libcorvane_xvr_color_processing_vector_avx2.so (AVX2 with FMA).
 *
 * The colour-processing library opens a vector library by its module name, binds the four entry
 * points below by name and hands every transform to it as one Transform_arguments record (its
 * byte layout is pinned in scalar_engine/transform_arguments.hpp). A transform entry point
 * processes pixels 0, 1, ... of the record and returns how many it finished, from 0 to the
 * record's pixel count; the library's scalar engine then finishes the rest from that index with
 * the same record. The pixels a vector library claims are bit-identical to what the scalar
 * engine would have written, and it never touches the record or anything outside those pixels.
 *
 * initialize returns 0 only when the processor and the operating system support every
 * instruction set extension the library uses; the colour-processing library then falls back
 * from AVX2 to SSE to its scalar engine. initialize and terminate keep no state: any number of
 * processors may have a library initialised at once, and transforms on different records may
 * run in parallel.
 *
 * C++ only: the record is a template over the output sample type.
 */
#ifndef CORVANE_XVR_COLOR_PROCESSING_VECTOR_H
#define CORVANE_XVR_COLOR_PROCESSING_VECTOR_H

#include "scalar_engine/transform_arguments.hpp"

#if defined(__GNUC__)
#define NQ_VECTOR_API __attribute__((visibility("default")))
#else
#define NQ_VECTOR_API
#endif

/* Module names (the library files are "lib" + name + ".so") and entry-point names. */
#define NQ_VECTOR_SSE_MODULE_NAME "corvane_xvr_color_processing_vector_sse"
#define NQ_VECTOR_SSE_INITIALIZE_NAME "nq_color_processing_vector_sse_module_initialize"
#define NQ_VECTOR_SSE_TRANSFORM_8_BIT_OUTPUT_NAME "nq_color_processing_transform_8_bit_output_vector_sse"
#define NQ_VECTOR_SSE_TRANSFORM_16_BIT_OUTPUT_NAME "nq_color_processing_transform_16_bit_output_vector_sse"
#define NQ_VECTOR_SSE_TERMINATE_NAME "nq_color_processing_vector_sse_module_terminate"

#define NQ_VECTOR_AVX2_MODULE_NAME "corvane_xvr_color_processing_vector_avx2"
#define NQ_VECTOR_AVX2_INITIALIZE_NAME "nq_color_processing_vector_avx2_module_initialize"
#define NQ_VECTOR_AVX2_TRANSFORM_8_BIT_OUTPUT_NAME "nq_color_processing_transform_8_bit_output_vector_avx2"
#define NQ_VECTOR_AVX2_TRANSFORM_16_BIT_OUTPUT_NAME "nq_color_processing_transform_16_bit_output_vector_avx2"
#define NQ_VECTOR_AVX2_TERMINATE_NAME "nq_color_processing_vector_avx2_module_terminate"

/* The same names grouped by vector level (1 SSE4.1, 2 AVX2), for code that picks the library at
 * run time. */
struct nq_vector_library_names {
    const char* module;
    const char* initialize;
    const char* transform_8_bit_output;
    const char* transform_16_bit_output;
    const char* terminate;
};

inline constexpr nq_vector_library_names nq_vector_sse_library_names = {
    NQ_VECTOR_SSE_MODULE_NAME, NQ_VECTOR_SSE_INITIALIZE_NAME, NQ_VECTOR_SSE_TRANSFORM_8_BIT_OUTPUT_NAME,
    NQ_VECTOR_SSE_TRANSFORM_16_BIT_OUTPUT_NAME, NQ_VECTOR_SSE_TERMINATE_NAME};
inline constexpr nq_vector_library_names nq_vector_avx2_library_names = {
    NQ_VECTOR_AVX2_MODULE_NAME, NQ_VECTOR_AVX2_INITIALIZE_NAME, NQ_VECTOR_AVX2_TRANSFORM_8_BIT_OUTPUT_NAME,
    NQ_VECTOR_AVX2_TRANSFORM_16_BIT_OUTPUT_NAME, NQ_VECTOR_AVX2_TERMINATE_NAME};

inline constexpr const nq_vector_library_names& nq_vector_library_names_of_level(int level)
{
    return level == 2 ? nq_vector_avx2_library_names : nq_vector_sse_library_names;
}

extern "C" {

/* The four function types; every entry point below is declared through them, so a definition
 * that strays from its type does not compile. */
typedef int nq_vector_module_initialize_function(void);
typedef int nq_vector_transform_8_bit_output_function(const Transform_arguments<unsigned char>* arguments);
typedef int nq_vector_transform_16_bit_output_function(const Transform_arguments<unsigned short>* arguments);
typedef void nq_vector_module_terminate_function(void);

NQ_VECTOR_API nq_vector_module_initialize_function nq_color_processing_vector_sse_module_initialize;
NQ_VECTOR_API nq_vector_transform_8_bit_output_function nq_color_processing_transform_8_bit_output_vector_sse;
NQ_VECTOR_API nq_vector_transform_16_bit_output_function nq_color_processing_transform_16_bit_output_vector_sse;
NQ_VECTOR_API nq_vector_module_terminate_function nq_color_processing_vector_sse_module_terminate;

NQ_VECTOR_API nq_vector_module_initialize_function nq_color_processing_vector_avx2_module_initialize;
NQ_VECTOR_API nq_vector_transform_8_bit_output_function nq_color_processing_transform_8_bit_output_vector_avx2;
NQ_VECTOR_API nq_vector_transform_16_bit_output_function nq_color_processing_transform_16_bit_output_vector_avx2;
NQ_VECTOR_API nq_vector_module_terminate_function nq_color_processing_vector_avx2_module_terminate;

}

#endif /* CORVANE_XVR_COLOR_PROCESSING_VECTOR_H */
