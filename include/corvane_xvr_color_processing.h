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
 * null on failure; each call below says which. Errors are also written as log records through
 * the logger library "libcorvane_xvr_logger.so" when it is present. The header compiles as C99
 * and as C++.
 *
 * Hazards a host must know:
 *   - Lifetime. initialize/terminate pairs must bracket all use of the library: initialise
 *     before the first call, terminate after the last processor is destroyed. The count keeps
 *     the module alive through nested pairs, but every terminate releases the binding of the
 *     table library that all processors use. A balanced pair nested inside another user's
 *     use (a plug-in that initialises and terminates around its own work while the host's
 *     processors live) leaves those processors without tables: their next transform, table
 *     getter or destroy calls an unbound entry point and crashes.
 *   - Threads. The library starts no thread and the transform path takes no lock.
 *     initialize and terminate are not thread-safe: call them with no other call of the
 *     library running. Transforms may run at the same time on distinct processors, and on one
 *     processor as long as no configuration call (table getters and the writes through their
 *     pointers, enable, append, clear, destroy) runs on that processor meanwhile. Creation,
 *     destruction and configuration calls must be serialised by the host.
 *   - The matrix is single precision. append_matrix takes nine floats and stores the product
 *     as nine floats: a coefficient computed in double is rounded to float on the way in
 *     (0.1 becomes 0.100000001490116...), and each append rounds its products to float once.
 *   - Input tables of fewer than 65536 entries (input_bit_depth below 16) still receive 16-bit
 *     samples. A sample at or above the table's entry count reads a zero entry, so that channel
 *     enters the matrix as 0; keep samples below 2^input_bit_depth, or use depth 16.
 *   - The x87 unit. Transforms and append_matrix compute under the library's own x87 control
 *     word (64-bit significands, round to nearest, exceptions masked), whatever the calling
 *     thread set; its control word and exception flags are as they were when the call returns.
 */
#ifndef CORVANE_XVR_COLOR_PROCESSING_H
#define CORVANE_XVR_COLOR_PROCESSING_H

#include <stdint.h>

/* The library defines NQ_COLOR_API itself, to bind its own references to these calls to its own
 * definitions; a host leaves it undefined. */
#ifndef NQ_COLOR_API
#if defined(__GNUC__)
#define NQ_COLOR_API __attribute__((visibility("default")))
#else
#define NQ_COLOR_API
#endif
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

/* Calls that take a processor handle first check that the module is initialised
 * (NQ_COLOR_MODULE_NOT_INITIALIZED, or null, and nothing logged), then that the handle is not
 * null (NQ_COLOR_NULL_INSTANCE_HANDLE, or null, and an error record). A handle that was already
 * destroyed is not detected. No call throws, except where a companion library throws inside a
 * transform or module initialisation runs out of memory. */

/* Module lifecycle; nested calls are counted, and every initialize must be matched by a
 * terminate. initialize returns NQ_COLOR_NO_ERROR, or NQ_COLOR_MODULE_NOT_INITIALIZED when the
 * table library "libcorvane_xvr_LUT.so" could not be bound (no processor may then be created).
 * A missing logger library is not an error: nothing is logged. terminate always returns
 * NQ_COLOR_NO_ERROR; processors must be destroyed before the last terminate, and every terminate
 * releases the table binding that live processors use (see the hazards above). Neither call is
 * thread-safe. */
NQ_COLOR_API int nq_color_processing_module_initialize(void);
NQ_COLOR_API int nq_color_processing_module_terminate(void);

/* Creates a processor with tables of 2^input_bit_depth and 2^output_bit_depth 32-bit entries,
 * all zero, the identity matrix and no table enabled; depths run from 0 to 16. The vector level
 * comes from the processor's CPUID bits. Returns an opaque handle, or null when the module is
 * not initialised, a depth is out of range (logged) or memory runs out (logged). */
NQ_COLOR_API void* nq_color_create_color_processor(int input_bit_depth, int output_bit_depth);
/* The same with the vector level chosen by the caller (0 scalar only, 1 SSE, 2 AVX2), taken
 * unchecked, and without the creation notice. */
NQ_COLOR_API void* nq_color_create_color_processor_test(int input_bit_depth, int output_bit_depth,
                                                        int vector_level);
/* Destroys the processor and its tables. Returns NQ_COLOR_NO_ERROR, NQ_COLOR_MODULE_NOT_INITIALIZED
 * (the processor is then left as it is) or NQ_COLOR_NULL_INSTANCE_HANDLE. */
NQ_COLOR_API int nq_color_destroy_color_processor(void* color_processor_handle);

/* The live storage of one table, valid until the processor is destroyed: the same pointer on
 * every call. Fill it, then enable the table. An input entry contributes its low 16 bits; an
 * output entry is used whole, as a signed 32-bit value. Write only the 2^depth entries: a
 * sample at or above an input table's entry count reads a zero entry (see the hazards above).
 * Null when the module is not initialised or the handle is null. */
NQ_COLOR_API int32_t* nq_color_get_blue_input_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_green_input_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_red_input_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_blue_output_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_green_output_LUT(void* color_processor_handle);
NQ_COLOR_API int32_t* nq_color_get_red_output_LUT(void* color_processor_handle);
/* Any non-zero argument enables that channel's table, zero disables it; all three flags are set
 * on every call. Return NQ_COLOR_NO_ERROR, NQ_COLOR_MODULE_NOT_INITIALIZED or
 * NQ_COLOR_NULL_INSTANCE_HANDLE. */
NQ_COLOR_API int nq_color_enable_input_LUTs(void* color_processor_handle, int blue, int green,
                                            int red);
NQ_COLOR_API int nq_color_enable_output_LUTs(void* color_processor_handle, int blue, int green,
                                             int red);

/* Colour matrix: nine floats, row-major; row 0 yields red, row 1 green, row 2 blue, and the
 * columns weight the red, green and blue inputs. append replaces M by M x A (A may be the
 * processor's own matrix), so the matrix appended last acts on the pixel first; clear restores
 * the identity. Both return NQ_COLOR_NO_ERROR, NQ_COLOR_MODULE_NOT_INITIALIZED or
 * NQ_COLOR_NULL_INSTANCE_HANDLE; the nine floats are not checked. */
NQ_COLOR_API int nq_color_append_matrix(void* color_processor_handle, const float* matrix);
NQ_COLOR_API int nq_color_clear_matrix(void* color_processor_handle);

/* Transforms, named by bits per input and output pixel:
 *   48_to_48: 16-bit samples, 3 channels    48_to_64: 16-bit samples, 4 channels (4th is 0)
 *   48_to_24:  8-bit samples, 3 channels    48_to_32:  8-bit samples, 4 channels (4th is 0)
 * Clamp bounds are inclusive; a shift distance d shifts left by d (d > 0) or arithmetically
 * right by -d (d < 0). The 8-bit calls keep the low 8 bits of each result: use a right shift,
 * an output table or the clamp to bring results into range. pixel_count is not checked; a count
 * of 0 or below writes nothing.
 *
 * Returns NQ_COLOR_NO_ERROR, NQ_COLOR_MODULE_NOT_INITIALIZED, NQ_COLOR_NULL_INSTANCE_HANDLE, or
 * the first of these that applies, in this order, with an error record and nothing written:
 *   NQ_COLOR_NULL_INPUT_BUFFER, NQ_COLOR_NULL_OUTPUT_BUFFER,
 *   NQ_COLOR_IDENTICAL_INPUT_AND_OUTPUT_BUFFERS (the same address),
 *   NQ_COLOR_INVALID_INPUT_FORMAT (above 2; negative formats are accepted and mean BGR_PLANAR),
 *   NQ_COLOR_INVALID_SHIFT_DISTANCE (blue, green, red: outside -15..15),
 *   NQ_COLOR_INVALID_CLAMP_VALUE (blue, green, red: max below min, or, while that channel's
 *     output table is enabled, max not below the output table's size),
 *   NQ_COLOR_INVALID_OUTPUT_FORMAT (above 2).
 * Every call past the handle check also writes one timing record. */
NQ_COLOR_API int nq_color_transform_48_to_48(
    void* color_processor_handle, const uint16_t* input_buffer, NQ_COLOR_FORMAT input_buffer_format,
    uint16_t blue_clamp_min, uint16_t blue_clamp_max, uint16_t green_clamp_min,
    uint16_t green_clamp_max, uint16_t red_clamp_min, uint16_t red_clamp_max,
    int32_t blue_shift_distance, int32_t green_shift_distance, int32_t red_shift_distance,
    uint16_t* output_buffer, NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count);
NQ_COLOR_API int nq_color_transform_48_to_64(
    void* color_processor_handle, const uint16_t* input_buffer, NQ_COLOR_FORMAT input_buffer_format,
    uint16_t blue_clamp_min, uint16_t blue_clamp_max, uint16_t green_clamp_min,
    uint16_t green_clamp_max, uint16_t red_clamp_min, uint16_t red_clamp_max,
    int32_t blue_shift_distance, int32_t green_shift_distance, int32_t red_shift_distance,
    uint16_t* output_buffer, NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count);
NQ_COLOR_API int nq_color_transform_48_to_32(
    void* color_processor_handle, const uint16_t* input_buffer, NQ_COLOR_FORMAT input_buffer_format,
    uint16_t blue_clamp_min, uint16_t blue_clamp_max, uint16_t green_clamp_min,
    uint16_t green_clamp_max, uint16_t red_clamp_min, uint16_t red_clamp_max,
    int32_t blue_shift_distance, int32_t green_shift_distance, int32_t red_shift_distance,
    uint8_t* output_buffer, NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count);
NQ_COLOR_API int nq_color_transform_48_to_24(
    void* color_processor_handle, const uint16_t* input_buffer, NQ_COLOR_FORMAT input_buffer_format,
    uint16_t blue_clamp_min, uint16_t blue_clamp_max, uint16_t green_clamp_min,
    uint16_t green_clamp_max, uint16_t red_clamp_min, uint16_t red_clamp_max,
    int32_t blue_shift_distance, int32_t green_shift_distance, int32_t red_shift_distance,
    uint8_t* output_buffer, NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count);

#ifdef __cplusplus
}
#endif

#endif /* CORVANE_XVR_COLOR_PROCESSING_H */
