#include "color_correction.hpp"

#include "log_record_lines.hpp"
#include "modules/logger.hpp"
#include "scalar_engine/scalar_process.hpp"

#include <cstring>
#include <type_traits>

namespace {

const char* const validation_function = "transform";


constexpr int32_t shortest_shift = -15;
constexpr int32_t longest_shift = 15;
constexpr int32_t highest_format = NQ_COLOR_FORMAT_RGB_PIXEL;

// Logs one validation failure, as "%s <message>" filled with the error prefix, and yields its
// code. The logger is looked up anew: a failed call still returns its code when there is
// nothing to log to.
int reject(int code, int line, const char* message)
{
    if (Xvr_log_object* const log = logger.get()) {
        log->log(XVR_LOG_PRIORITY_ERROR, __FILE__, line, validation_function, "%s %s",
                 error_prefix, message);
    }
    return code;
}

bool shift_distance_is_valid(int32_t distance)
{
    return distance >= shortest_shift && distance <= longest_shift;
}

// A negative format passes on purpose: the scalar engine reads every value other than 1 and 2
// as planar, so a negative format is a valid spelling of the planar layout.
bool format_is_valid(NQ_COLOR_FORMAT format)
{
    return static_cast<int32_t>(format) <= highest_format;
}

LUT_handle create_table(int entries, bool avx2_flag)
{
    return LUT_wrapper::m_create_LUT(entries, avx2_flag);
}

void clear_table(LUT_handle table, int entries)
{
    std::memset(LUT_wrapper::m_get_LUT_data(table), 0, sizeof(LUT_entry) * entries);
}

void destroy_table(LUT_handle table)
{
    if (table != nullptr) LUT_wrapper::m_destroy_LUT(table);
}

template <typename T>
int call_vector_entry(const Vector_color_processing_module& module,
                      const Transform_arguments<T>& record)
{
    if constexpr (std::is_same_v<T, unsigned short>) {
        return module.m_transform_16_bit_output(&record);
    } else {
        static_assert(std::is_same_v<T, unsigned char>, "16-bit or 8-bit output samples");
        return module.m_transform_8_bit_output(&record);
    }
}

}  // namespace

RGB_LUT::RGB_LUT(int entries, bool avx2_flag)
{
    try {
        m_blue_LUT = create_table(entries, avx2_flag);
        m_green_LUT = create_table(entries, avx2_flag);
        m_red_LUT = create_table(entries, avx2_flag);
        clear_tables(entries);
    } catch (...) {
        destroy_tables();
        throw;
    }
}

RGB_LUT::~RGB_LUT()
{
    destroy_tables();
}

void RGB_LUT::enable(int blue, int green, int red)
{
    m_blue_enabled = blue != 0;
    m_green_enabled = green != 0;
    m_red_enabled = red != 0;
}

void RGB_LUT::clear_tables(int entries)
{
    // The table library hands out memory as it finds it; an enabled table that the host never
    // filled must map everything to 0.
    clear_table(m_blue_LUT, entries);
    clear_table(m_green_LUT, entries);
    clear_table(m_red_LUT, entries);
}

void RGB_LUT::destroy_tables() noexcept
{
    destroy_table(m_red_LUT);
    destroy_table(m_green_LUT);
    destroy_table(m_blue_LUT);
}

Color_processor::Color_processor(int input_bit_depth, int output_bit_depth, int vector_level)
    : m_matrix{1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f},
      m_input_LUTs(1 << input_bit_depth, vector_level == 2),
      m_output_LUTs(1 << output_bit_depth, vector_level == 2),
      m_output_LUT_size(1 << output_bit_depth),
      m_vector_level(vector_level),
      m_sse_module(NQ_VECTOR_SSE_MODULE_NAME, NQ_VECTOR_SSE_INITIALIZE_NAME,
                   NQ_VECTOR_SSE_TRANSFORM_8_BIT_OUTPUT_NAME, NQ_VECTOR_SSE_TRANSFORM_16_BIT_OUTPUT_NAME,
                   NQ_VECTOR_SSE_TERMINATE_NAME),
      m_avx2_module(NQ_VECTOR_AVX2_MODULE_NAME, NQ_VECTOR_AVX2_INITIALIZE_NAME,
                    NQ_VECTOR_AVX2_TRANSFORM_8_BIT_OUTPUT_NAME, NQ_VECTOR_AVX2_TRANSFORM_16_BIT_OUTPUT_NAME,
                    NQ_VECTOR_AVX2_TERMINATE_NAME)
{
}

template <typename T>
int Color_processor::transform(const uint16_t* input_buffer, NQ_COLOR_FORMAT input_buffer_format,
                               uint16_t blue_clamp_min, uint16_t blue_clamp_max,
                               uint16_t green_clamp_min, uint16_t green_clamp_max,
                               uint16_t red_clamp_min, uint16_t red_clamp_max,
                               int32_t blue_shift_distance, int32_t green_shift_distance,
                               int32_t red_shift_distance, T* output_buffer,
                               NQ_COLOR_FORMAT output_buffer_format, int32_t pixel_count,
                               bool fourth_channel_enabled)
{
    Transform_arguments<T> record{};
    record.input_buffer = input_buffer;
    record.input_buffer_format = input_buffer_format;
    record.matrix = m_matrix;
    record.blue_clamp_min = blue_clamp_min;
    record.blue_clamp_max = blue_clamp_max;
    record.green_clamp_min = green_clamp_min;
    record.green_clamp_max = green_clamp_max;
    record.red_clamp_min = red_clamp_min;
    record.red_clamp_max = red_clamp_max;
    record.blue_shift_distance = blue_shift_distance;
    record.green_shift_distance = green_shift_distance;
    record.red_shift_distance = red_shift_distance;
    record.output_buffer = output_buffer;
    record.output_buffer_format = output_buffer_format;
    record.fourth_channel_enabled = fourth_channel_enabled;
    record.pixel_count = pixel_count;

    const int code = validate(record);
    if (code != NQ_COLOR_NO_ERROR) return code;

    attach_tables(record);
    // The vector library may leave any remainder, of any length; its answer is passed on as
    // it stands.
    scalar_process<T>(record, vector_start_index(record));
    return NQ_COLOR_NO_ERROR;
}

template <typename T>
int Color_processor::validate(const Transform_arguments<T>& record) const
{
    using namespace validation_line;
    if (record.input_buffer == nullptr) {
        return reject(NQ_COLOR_NULL_INPUT_BUFFER, null_input_buffer,
                      "The specified input buffer is NULL!");
    }
    if (record.output_buffer == nullptr) {
        return reject(NQ_COLOR_NULL_OUTPUT_BUFFER, null_output_buffer,
                      "The specified output buffer is NULL!");
    }
    if (static_cast<const void*>(record.input_buffer) ==
        static_cast<const void*>(record.output_buffer)) {
        return reject(NQ_COLOR_IDENTICAL_INPUT_AND_OUTPUT_BUFFERS, identical_buffers,
                      "Different input and output buffer must be specified.");
    }
    if (!format_is_valid(record.input_buffer_format)) {
        return reject(NQ_COLOR_INVALID_INPUT_FORMAT, invalid_input_format,
                      "Invalid input buffer format specified!");
    }
    if (!shift_distance_is_valid(record.blue_shift_distance)) {
        return reject(NQ_COLOR_INVALID_SHIFT_DISTANCE, invalid_blue_shift,
                      "Invalid blue shift distance specified!");
    }
    if (!shift_distance_is_valid(record.green_shift_distance)) {
        return reject(NQ_COLOR_INVALID_SHIFT_DISTANCE, invalid_green_shift,
                      "Invalid green shift distance specified!");
    }
    if (!shift_distance_is_valid(record.red_shift_distance)) {
        return reject(NQ_COLOR_INVALID_SHIFT_DISTANCE, invalid_red_shift,
                      "Invalid red shift distance specified!");
    }
    if (!clamp_is_valid(record.blue_clamp_min, record.blue_clamp_max,
                        m_output_LUTs.m_blue_enabled)) {
        return reject(NQ_COLOR_INVALID_CLAMP_VALUE, invalid_blue_clamp,
                      "a max value less than the min was specified for the blue channel or "
                      "max clamp value exceeds enabled output LUT size!");
    }
    if (!clamp_is_valid(record.green_clamp_min, record.green_clamp_max,
                        m_output_LUTs.m_green_enabled)) {
        return reject(NQ_COLOR_INVALID_CLAMP_VALUE, invalid_green_clamp,
                      "a max value less than the min was specified for the green channel or "
                      "max clamp value exceeds enabled output LUT size!");
    }
    if (!clamp_is_valid(record.red_clamp_min, record.red_clamp_max,
                        m_output_LUTs.m_red_enabled)) {
        return reject(NQ_COLOR_INVALID_CLAMP_VALUE, invalid_red_clamp,
                      "a max value less than the min was specified for the red channel or "
                      "max clamp value exceeds enabled output LUT size!");
    }
    if (!format_is_valid(record.output_buffer_format)) {
        return reject(NQ_COLOR_INVALID_OUTPUT_FORMAT, invalid_output_format,
                      "Invalid output buffer format specified!");
    }
    return NQ_COLOR_NO_ERROR;
}

bool Color_processor::clamp_is_valid(uint16_t min, uint16_t max, bool output_LUT_enabled) const
{
    // The clamped value indexes the output table, so its maximum must be an entry of it; the
    // minimum never exceeds the maximum once that holds.
    if (output_LUT_enabled && static_cast<int32_t>(max) >= m_output_LUT_size) return false;
    return max >= min;
}

template <typename T>
void Color_processor::attach_tables(Transform_arguments<T>& record) const
{
    // Asked anew on every call: the table library owns the memory and may be rebound.
    record.blue_input_LUT = LUT_wrapper::m_get_LUT_data(m_input_LUTs.m_blue_LUT);
    record.blue_input_LUT_enabled = m_input_LUTs.m_blue_enabled;
    record.green_input_LUT = LUT_wrapper::m_get_LUT_data(m_input_LUTs.m_green_LUT);
    record.green_input_LUT_enabled = m_input_LUTs.m_green_enabled;
    record.red_input_LUT = LUT_wrapper::m_get_LUT_data(m_input_LUTs.m_red_LUT);
    record.red_input_LUT_enabled = m_input_LUTs.m_red_enabled;
    record.blue_output_LUT = LUT_wrapper::m_get_LUT_data(m_output_LUTs.m_blue_LUT);
    record.blue_output_LUT_enabled = m_output_LUTs.m_blue_enabled;
    record.green_output_LUT = LUT_wrapper::m_get_LUT_data(m_output_LUTs.m_green_LUT);
    record.green_output_LUT_enabled = m_output_LUTs.m_green_enabled;
    record.red_output_LUT = LUT_wrapper::m_get_LUT_data(m_output_LUTs.m_red_LUT);
    record.red_output_LUT_enabled = m_output_LUTs.m_red_enabled;
}

template <typename T>
int Color_processor::vector_start_index(const Transform_arguments<T>& record) const
{
    // Level 2 falls back to the SSE library when the AVX2 one is unusable; level 1, and any
    // level above 2, never tries the AVX2 library; a level below 1 uses neither.
    if (m_vector_level == 2 && !m_avx2_module.m_failed) {
        return call_vector_entry(m_avx2_module, record);
    }
    if (m_vector_level >= 1 && !m_sse_module.m_failed) {
        return call_vector_entry(m_sse_module, record);
    }
    return 0;
}

template int Color_processor::transform<unsigned short>(
    const uint16_t*, NQ_COLOR_FORMAT, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
    int32_t, int32_t, int32_t, unsigned short*, NQ_COLOR_FORMAT, int32_t, bool);
template int Color_processor::transform<unsigned char>(
    const uint16_t*, NQ_COLOR_FORMAT, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
    int32_t, int32_t, int32_t, unsigned char*, NQ_COLOR_FORMAT, int32_t, bool);
