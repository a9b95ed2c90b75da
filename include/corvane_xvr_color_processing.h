/*
 * corvane_xvr_color_processing.h - public interface of libcorvane_xvr_color_processing.so
 *
 * A host colour-corrects buffers of 48-bit pixels (three 16-bit samples: blue, green, red).
 * Per pixel the library applies, in this order: an optional input table per channel, a 3x3
 * colour matrix (x87 extended precision), rounding, a clamp, an optional output table per
 * channel, an optional bit shift per channel and the narrowing to the output sample width.
 *
 * Usage outline:
 *   nq_color_processing_module_initialize();
 *   void* p = nq_color_create_color_processor(16, 16);
 *   int32_t* lut = nq_color_get_blue_output_LUT(p);   fill 65536 entries, then
 *   nq_color_enable_output_LUTs(p, 1, 1, 1);
 *   nq_color_append_matrix(p, matrix);                 nine floats, row-major, rows R,G,B
 *   nq_color_transform_48_to_48(p, in, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535, 0, 65535, 0, 65535,
 *                               0, 0, 0, out, NQ_COLOR_FORMAT_BGR_PIXEL, pixel_count);
 *   nq_color_destroy_color_processor(p);
 *   nq_color_processing_module_terminate();
 *
 * Every call returns one of the NQ_COLOR_* codes below (0 on success), or a pointer that is
 * null on failure. The header compiles as C99 and as C++.
 */
#ifndef CORVANE_XVR_COLOR_PROCESSING_H
#define CORVANE_XVR_COLOR_PROCESSING_H

#include <stdint.h>

#if defined(__GNUC__)
#define NQ_COLOR_API __attribute__((visibility("default")))
#else
#define NQ_COLOR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Return codes of the calls that return an int. 6, 7 and 8 are unassigned. */
enum {
    NQ_COLOR_NO_ERROR = 0,
    NQ_COLOR_MODULE_NOT_INITIALIZED = 1,
    NQ_COLOR_NULL_INSTANCE_HANDLE = 2,
    NQ_COLOR_NULL_INPUT_BUFFER = 3,
    NQ_COLOR_NULL_OUTPUT_BUFFER = 4,
    NQ_COLOR_IDENTICAL_INPUT_AND_OUTPUT_BUFFERS = 5,
    NQ_COLOR_INVALID_INPUT_FORMAT = 9,
    NQ_COLOR_INVALID_OUTPUT_FORMAT = 10,
    NQ_COLOR_INVALID_SHIFT_DISTANCE = 11,
    NQ_COLOR_INVALID_CLAMP_VALUE = 12
};

/* Buffer layouts, for input and output alike (n = pixel_count, i = pixel index):
 *   BGR_PLANAR: blue at i, green at n+i, red at 2n+i (fourth plane at 3n+i)
 *   BGR_PIXEL:  blue, green, red interleaved (then the fourth sample)
 *   RGB_PIXEL:  red, green, blue interleaved (then the fourth sample)
 * The value is a 32-bit signed integer; negative values are accepted and mean BGR_PLANAR. */
#ifdef __cplusplus
enum NQ_COLOR_FORMAT : int32_t {
#else
typedef enum NQ_COLOR_FORMAT {
#endif
    NQ_COLOR_FORMAT_BGR_PLANAR = 0,
    NQ_COLOR_FORMAT_BGR_PIXEL = 1,
    NQ_COLOR_FORMAT_RGB_PIXEL = 2
#ifdef __cplusplus
};
#else
} NQ_COLOR_FORMAT;
#endif

/* Module lifecycle; nested calls are counted. initialize returns 1 when the table library
 * "libcorvane_xvr_LUT.so" could not be bound; it must still be matched by a terminate. */
NQ_COLOR_API int nq_color_processing_module_initialize(void);
NQ_COLOR_API int nq_color_processing_module_terminate(void);

/* Processors. Bit depths 0..16 give tables of 2^depth 32-bit entries. The result is an opaque
 * handle, or null on failure (module not initialised, bad depth, allocation failure). */
NQ_COLOR_API void* nq_color_create_color_processor(int input_bit_depth, int output_bit_depth);
/* As above, with the vector level chosen by the caller (0 scalar only, 1 SSE, 2 AVX2). */
NQ_COLOR_API void* nq_color_create_color_processor_test(int input_bit_depth, int output_bit_depth,
                                                        int vector_level);
NQ_COLOR_API int nq_color_destroy_color_processor(void* color_processor_handle);

/* Tables: live storage of 2^input_bit_depth (input) or 2^output_bit_depth (output) entries,
 * zeroed at creation, valid until the processor is destroyed. An input entry contributes its
 * low 16 bits; an output entry is used whole, as a signed 32-bit value. */
NQ_COLOR_API int32_t* nq_color_get_blue_input_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_green_input_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_red_input_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_blue_output_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_green_output_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_red_output_LUT(void* color_processor_handle);
/* Any non-zero argument enables that channel's table; all three flags are set on every call. */
NQ_COLOR_API int nq_color_enable_input_LUTs(void* color_processor_handle, int blue, int green,
                                            int red);
NQ_COLOR_API int nq_color_enable_output_LUTs(void* color_processor_handle, int blue, int green,
                                             int red);

/* Colour matrix: nine floats, row-major; row 0 yields red, row 1 green, row 2 blue, and the
 * columns weight the red, green and blue inputs. append replaces M by M x A, so the matrix
 * appended last acts on the pixel first. clear restores the identity. */
NQ_COLOR_API int nq_color_append_matrix(void* color_processor_handle, const float* matrix);
NQ_COLOR_API int nq_color_clear_matrix(void* color_processor_handle);

/* Transforms, named by bits per input and output pixel. Clamp bounds are inclusive; a shift
 * distance d in -15..15 shifts left by d (d > 0) or arithmetically right by -d (d < 0).
 *   48_to_48: 16-bit samples, 3 channels    48_to_64: 16-bit samples, 4 channels (4th is 0)
 *   48_to_24:  8-bit samples, 3 channels    48_to_32:  8-bit samples, 4 channels (4th is 0)
 * The 8-bit calls keep the low 8 bits of each result: use a right shift, an output table or
 * the clamp to bring results into range. */
#define NQ_COLOR_TRANSFORM_PARAMETERS(output_sample_type)                                    \
    void *color_processor_handle, const uint16_t *input_buffer,                              \
        NQ_COLOR_FORMAT input_buffer_format, uint16_t blue_clamp_min, uint16_t blue_clamp_max, \
        uint16_t green_clamp_min, uint16_t green_clamp_max, uint16_t red_clamp_min,          \
        uint16_t red_clamp_max, int32_t blue_shift_distance, int32_t green_shift_distance,   \
        int32_t red_shift_distance, output_sample_type *output_buffer,                       \
        NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count

NQ_COLOR_API int nq_color_transform_48_to_48(NQ_COLOR_TRANSFORM_PARAMETERS(uint16_t));
NQ_COLOR_API int nq_color_transform_48_to_64(NQ_COLOR_TRANSFORM_PARAMETERS(uint16_t));
NQ_COLOR_API int nq_color_transform_48_to_32(NQ_COLOR_TRANSFORM_PARAMETERS(uint8_t));
NQ_COLOR_API int nq_color_transform_48_to_24(NQ_COLOR_TRANSFORM_PARAMETERS(uint8_t));

#ifdef __cplusplus
}
#endif

#endif /* CORVANE_XVR_COLOR_PROCESSING_H */
