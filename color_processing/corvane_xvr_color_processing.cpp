// The exported calls of libcorvane_xvr_color_processing.so. Every call but the module
// lifecycle first asks the global logger for its logger object: without one the module is not
// initialised and the call refuses, logging nothing. Then the handle is tested, then the call
// acts. Failures are codes, never exceptions, except where a companion library throws inside a
// transform or module initialisation runs out of memory.
//
// The public calls are exported like the loader helpers and the library's objects: protected,
// so that a host's function of the same name can never stand in for one of them inside the
// library (modules/exported.hpp).
#include "modules/exported.hpp"
#define NQ_COLOR_API NQ_EXPORTED
#include <corvane_xvr_color_processing.h>

#include "color_correction.hpp"
#include "color_matrix.hpp"
#include "log_record_lines.hpp"
#include "modules/logger.hpp"
#include "modules/lut_wrapper.hpp"
#include "modules/xvr_timer.hpp"
#include "vector_capability.hpp"

#include <memory>
#include <new>

namespace {

const char* const module_name = "CORVANE_XVR_COLOR_PROCESSING";

constexpr int largest_bit_depth = 16;


void log_null_handle(Xvr_log_object& log, int line, const char* function)
{
    log.log(XVR_LOG_PRIORITY_ERROR, __FILE__, line, function,
            "%s The specified color processor handle is NULL!", error_prefix);
}

// The creation-failure records are written from a catch block, where a second exception must
// not escape to the host.
void log_creation_failure(int line, const char* message) noexcept
{
    try {
        if (Xvr_log_object* const log = logger.get()) {
            log->log(XVR_LOG_PRIORITY_ERROR, __FILE__, line, "create_color_processor_impl", "%s",
                     message);
        }
    } catch (...) {
    }
}

Color_processor* create_color_processor_impl(int input_bit_depth, int output_bit_depth,
                                             int vector_level)
{
    Xvr_log_object* const log = logger.get();
    if (log == nullptr) return nullptr;
    // Both depths are tested for sign before either is tested for size.
    if (input_bit_depth < 0 || output_bit_depth < 0) {
        log->log(XVR_LOG_PRIORITY_ERROR, __FILE__, record_line::negative_bit_depth,
                 "create_color_processor_impl", "%s A negative bit depth is invalid!",
                 error_prefix);
        return nullptr;
    }
    if (input_bit_depth > largest_bit_depth || output_bit_depth > largest_bit_depth) {
        log->log(XVR_LOG_PRIORITY_ERROR, __FILE__, record_line::bit_depth_too_large,
                 "create_color_processor_impl", "%s A LUT size greater than 2^16 is invalid!",
                 error_prefix);
        return nullptr;
    }
    try {
        return new Color_processor(input_bit_depth, output_bit_depth, vector_level);
    } catch (const std::bad_alloc&) {
        log_creation_failure(
            record_line::creation_out_of_memory,
            "Memory allocation failure when trying to create a color correction instance!");
    } catch (...) {
        log_creation_failure(
            record_line::creation_failed,
            "An unknown error occurred when trying to create a color correction instance!");
    }
    return nullptr;
}

// Common frame of the calls that return a code: module test, handle test, then the action.
template <typename Action>
int configure(void* handle, int null_handle_line, const char* function, Action&& action)
{
    Xvr_log_object* const log = logger.get();
    if (log == nullptr) return NQ_COLOR_MODULE_NOT_INITIALIZED;
    if (handle == nullptr) {
        log_null_handle(*log, null_handle_line, function);
        return NQ_COLOR_NULL_INSTANCE_HANDLE;
    }
    action(*static_cast<Color_processor*>(handle));
    return NQ_COLOR_NO_ERROR;
}

// The live table of one channel: the host fills it in place.
int32_t* table_data(void* handle, int null_handle_line, const char* function,
                    RGB_LUT Color_processor::*trio, LUT_handle RGB_LUT::*channel)
{
    Xvr_log_object* const log = logger.get();
    if (log == nullptr) return nullptr;
    if (handle == nullptr) {
        log_null_handle(*log, null_handle_line, function);
        return nullptr;
    }
    Color_processor& processor = *static_cast<Color_processor*>(handle);
    return LUT_wrapper::m_get_LUT_data((processor.*trio).*channel);
}

// The body shared by the four transforms. The timer starts once the handle is known to be
// good, so that every such call, failed or not, leaves exactly one timing record, after its
// error record if any.
template <typename T, bool FOURTH_CHANNEL>
int nq_color_processor_transform_impl(
    const char* timer_name, void* color_processor_handle, const uint16_t* input_buffer,
    NQ_COLOR_FORMAT input_buffer_format, uint16_t blue_clamp_min, uint16_t blue_clamp_max,
    uint16_t green_clamp_min, uint16_t green_clamp_max, uint16_t red_clamp_min,
    uint16_t red_clamp_max, int32_t blue_shift_distance, int32_t green_shift_distance,
    int32_t red_shift_distance, T* output_buffer, NQ_COLOR_FORMAT output_buffer_format,
    int32_t pixel_count)
{
    Xvr_log_object* const log = logger.get();
    if (log == nullptr) return NQ_COLOR_MODULE_NOT_INITIALIZED;
    if (color_processor_handle == nullptr) {
        log_null_handle(*log, record_line::transform_null_handle,
                        "nq_color_processor_transform_impl");
        return NQ_COLOR_NULL_INSTANCE_HANDLE;
    }
    const XVRTimer timer(timer_name, log, __FILE__, record_line::transform_timing,
                         "nq_color_processor_transform_impl");
    return static_cast<Color_processor*>(color_processor_handle)
        ->transform<T>(input_buffer, input_buffer_format, blue_clamp_min, blue_clamp_max,
                       green_clamp_min, green_clamp_max, red_clamp_min, red_clamp_max,
                       blue_shift_distance, green_shift_distance, red_shift_distance,
                       output_buffer, output_buffer_format, pixel_count, FOURTH_CHANNEL);
}

}  // namespace

int nq_color_processing_module_initialize(void)
{
    logger.acquire([] { return std::make_unique<Xvr_log_object>(module_name); });
    // Bound on every call, not only on the first: the table binding is not counted.
    return LUT_wrapper::initialize() ? NQ_COLOR_NO_ERROR : NQ_COLOR_MODULE_NOT_INITIALIZED;
}

int nq_color_processing_module_terminate(void)
{
    // Released on every call, whatever the count: after nested initialisations the module stays
    // initialised while the table binding is gone, and hosts must not use processors then.
    LUT_wrapper::terminate();
    logger.release();
    return NQ_COLOR_NO_ERROR;
}

void* nq_color_create_color_processor(int input_bit_depth, int output_bit_depth)
{
    if (Xvr_log_object* const log = logger.get()) {
        log->log(XVR_LOG_PRIORITY_INFO, __FILE__, record_line::creation_notice,
                 "nq_color_create_color_processor", "Creating a color processor instance!");
    }
    return create_color_processor_impl(input_bit_depth, output_bit_depth, detect_vector_level());
}

void* nq_color_create_color_processor_test(int input_bit_depth, int output_bit_depth,
                                           int vector_level)
{
    return create_color_processor_impl(input_bit_depth, output_bit_depth, vector_level);
}

int nq_color_destroy_color_processor(void* color_processor_handle)
{
    return configure(color_processor_handle, record_line::destroy_color_processor,
                     "nq_color_destroy_color_processor",
                     [](Color_processor& processor) { delete &processor; });
}

int32_t* nq_color_get_blue_input_LUT(void* color_processor_handle)
{
    return table_data(color_processor_handle, record_line::get_blue_input_LUT,
                      "nq_color_get_blue_input_LUT", &Color_processor::m_input_LUTs,
                      &RGB_LUT::m_blue_LUT);
}

int32_t* nq_color_get_green_input_LUT(void* color_processor_handle)
{
    return table_data(color_processor_handle, record_line::get_green_input_LUT,
                      "nq_color_get_green_input_LUT", &Color_processor::m_input_LUTs,
                      &RGB_LUT::m_green_LUT);
}

int32_t* nq_color_get_red_input_LUT(void* color_processor_handle)
{
    return table_data(color_processor_handle, record_line::get_red_input_LUT,
                      "nq_color_get_red_input_LUT", &Color_processor::m_input_LUTs,
                      &RGB_LUT::m_red_LUT);
}

int32_t* nq_color_get_blue_output_LUT(void* color_processor_handle)
{
    return table_data(color_processor_handle, record_line::get_blue_output_LUT,
                      "nq_color_get_blue_output_LUT", &Color_processor::m_output_LUTs,
                      &RGB_LUT::m_blue_LUT);
}

int32_t* nq_color_get_green_output_LUT(void* color_processor_handle)
{
    return table_data(color_processor_handle, record_line::get_green_output_LUT,
                      "nq_color_get_green_output_LUT", &Color_processor::m_output_LUTs,
                      &RGB_LUT::m_green_LUT);
}

int32_t* nq_color_get_red_output_LUT(void* color_processor_handle)
{
    return table_data(color_processor_handle, record_line::get_red_output_LUT,
                      "nq_color_get_red_output_LUT", &Color_processor::m_output_LUTs,
                      &RGB_LUT::m_red_LUT);
}

int nq_color_enable_input_LUTs(void* color_processor_handle, int blue, int green, int red)
{
    return configure(color_processor_handle, record_line::enable_input_LUTs,
                     "nq_color_enable_input_LUTs", [=](Color_processor& processor) {
                         processor.m_input_LUTs.enable(blue, green, red);
                     });
}

int nq_color_enable_output_LUTs(void* color_processor_handle, int blue, int green, int red)
{
    return configure(color_processor_handle, record_line::enable_output_LUTs,
                     "nq_color_enable_output_LUTs", [=](Color_processor& processor) {
                         processor.m_output_LUTs.enable(blue, green, red);
                     });
}

int nq_color_append_matrix(void* color_processor_handle, const float* matrix)
{
    return configure(color_processor_handle, record_line::append_matrix, "nq_color_append_matrix",
                     [=](Color_processor& processor) {
                         append_matrix(processor.m_matrix, matrix);
                     });
}

int nq_color_clear_matrix(void* color_processor_handle)
{
    return configure(color_processor_handle, record_line::clear_matrix, "nq_color_clear_matrix",
                     [](Color_processor& processor) { set_identity(processor.m_matrix); });
}

// The four transforms differ only in the output sample type, the fourth channel and the label
// of their timing record. Their parameter list is the public header's; a definition that
// differed from it would not compile, C functions having no overloads.
#define NQ_COLOR_TRANSFORM_PARAMETERS(output_sample_type)                                        \
    void *color_processor_handle, const uint16_t *input_buffer,                                  \
        NQ_COLOR_FORMAT input_buffer_format, uint16_t blue_clamp_min, uint16_t blue_clamp_max,  \
        uint16_t green_clamp_min, uint16_t green_clamp_max, uint16_t red_clamp_min,             \
        uint16_t red_clamp_max, int32_t blue_shift_distance, int32_t green_shift_distance,      \
        int32_t red_shift_distance, output_sample_type *output_buffer,                          \
        NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count
#define NQ_COLOR_TRANSFORM_ARGUMENTS                                                             \
    color_processor_handle, input_buffer, input_buffer_format, blue_clamp_min, blue_clamp_max,   \
        green_clamp_min, green_clamp_max, red_clamp_min, red_clamp_max, blue_shift_distance,    \
        green_shift_distance, red_shift_distance, output_buffer, output_buffer_format, pixel_count

int nq_color_transform_48_to_48(NQ_COLOR_TRANSFORM_PARAMETERS(uint16_t))
{
    return nq_color_processor_transform_impl<unsigned short, false>(
        "color processing transform 48 to 48", NQ_COLOR_TRANSFORM_ARGUMENTS);
}

int nq_color_transform_48_to_64(NQ_COLOR_TRANSFORM_PARAMETERS(uint16_t))
{
    return nq_color_processor_transform_impl<unsigned short, true>(
        "color processing transform 48 to 64", NQ_COLOR_TRANSFORM_ARGUMENTS);
}

int nq_color_transform_48_to_32(NQ_COLOR_TRANSFORM_PARAMETERS(uint8_t))
{
    return nq_color_processor_transform_impl<unsigned char, true>(
        "color processing transform 48 to 32", NQ_COLOR_TRANSFORM_ARGUMENTS);
}

int nq_color_transform_48_to_24(NQ_COLOR_TRANSFORM_PARAMETERS(uint8_t))
{
    return nq_color_processor_transform_impl<unsigned char, false>(
        "color processing transform 48 to 24", NQ_COLOR_TRANSFORM_ARGUMENTS);
}
