#include "library_correction.hpp"

#include "tool_error.hpp"

#include <corvane_xvr_color_processing.h>

#include <chrono>
#include <cstring>

namespace xvr_color {

namespace {

// Initialisation is matched by a termination even when it reports failure: the library counts
// both.
class Library_module {
public:
    Library_module() : m_result(nq_color_processing_module_initialize()) {}
    ~Library_module() { nq_color_processing_module_terminate(); }
    Library_module(const Library_module&) = delete;
    Library_module& operator=(const Library_module&) = delete;

    int result() const { return m_result; }

private:
    int m_result;
};

class Processor {
public:
    Processor(const Correction_plan& plan, const Vector_choice& vector)
    {
        m_handle = vector.automatic
                       ? nq_color_create_color_processor(plan.input_table_bits,
                                                         plan.output_table_bits)
                       : nq_color_create_color_processor_test(plan.input_table_bits,
                                                              plan.output_table_bits,
                                                              vector.level);
        if (m_handle == nullptr) {
            throw Tool_error("the colour library could not create a processor with tables of 2^" +
                             std::to_string(plan.input_table_bits) + " and 2^" +
                             std::to_string(plan.output_table_bits) + " entries");
        }
    }
    ~Processor() { nq_color_destroy_color_processor(m_handle); }
    Processor(const Processor&) = delete;
    Processor& operator=(const Processor&) = delete;

    void* handle() const { return m_handle; }

private:
    void* m_handle = nullptr;
};

void check_code(int code, const char* call)
{
    if (code != NQ_COLOR_NO_ERROR) {
        throw Tool_error(std::string("the colour library refused ") + call + ": " +
                         library_code_name(code) + " (" + std::to_string(code) + ")");
    }
}

using Table_getter = int32_t* (*)(void*);

void copy_tables(void* processor, const Rgb_tables& tables, const Table_getter (&getters)[3],
                 const char* what)
{
    for (std::size_t channel = 0; channel < 3; ++channel) {
        int32_t* storage = getters[channel](processor);
        if (storage == nullptr) {
            throw Tool_error(std::string("the colour library gave no storage for its ") + what);
        }
        std::memcpy(storage, tables[channel].data(), tables[channel].size() * sizeof(int32_t));
    }
}

void configure(void* processor, const Correction_plan& plan)
{
    static const Table_getter input_getters[3] = {nq_color_get_red_input_LUT,
                                                  nq_color_get_green_input_LUT,
                                                  nq_color_get_blue_input_LUT};
    static const Table_getter output_getters[3] = {nq_color_get_red_output_LUT,
                                                   nq_color_get_green_output_LUT,
                                                   nq_color_get_blue_output_LUT};
    if (plan.input_tables) {
        copy_tables(processor, *plan.input_tables, input_getters, "input tables");
        check_code(nq_color_enable_input_LUTs(processor, 1, 1, 1), "nq_color_enable_input_LUTs");
    }
    if (plan.output_tables) {
        copy_tables(processor, *plan.output_tables, output_getters, "output tables");
        check_code(nq_color_enable_output_LUTs(processor, 1, 1, 1), "nq_color_enable_output_LUTs");
    }
    for (const Matrix& matrix : plan.matrices) {
        check_code(nq_color_append_matrix(processor, matrix.data()), "nq_color_append_matrix");
    }
}

// One transform call; the library's per-channel arguments run blue, green, red.
template <typename Sample>
int transform(void* processor, const Correction_plan& plan, const Image& input, Sample* output)
{
    const Channel_settings& red = plan.channels[0];
    const Channel_settings& green = plan.channels[1];
    const Channel_settings& blue = plan.channels[2];
    const int32_t pixels = static_cast<int32_t>(input.pixel_count());
    auto bound = [](int value) { return static_cast<uint16_t>(value); };
    if constexpr (sizeof(Sample) == 1) {
        return nq_color_transform_48_to_24(
            processor, input.samples.data(), NQ_COLOR_FORMAT_RGB_PIXEL, bound(blue.clamp_min),
            bound(blue.clamp_max), bound(green.clamp_min), bound(green.clamp_max),
            bound(red.clamp_min), bound(red.clamp_max), blue.shift, green.shift, red.shift,
            output, NQ_COLOR_FORMAT_RGB_PIXEL, pixels);
    } else {
        return nq_color_transform_48_to_48(
            processor, input.samples.data(), NQ_COLOR_FORMAT_RGB_PIXEL, bound(blue.clamp_min),
            bound(blue.clamp_max), bound(green.clamp_min), bound(green.clamp_max),
            bound(red.clamp_min), bound(red.clamp_max), blue.shift, green.shift, red.shift,
            output, NQ_COLOR_FORMAT_RGB_PIXEL, pixels);
    }
}

template <typename Sample>
void transform_repeatedly(void* processor, const Correction_plan& plan, const Image& input,
                          int repeat, Correction_result& result)
{
    std::vector<Sample> output(input.samples.size());
    const char* call = sizeof(Sample) == 1 ? "nq_color_transform_48_to_24"
                                           : "nq_color_transform_48_to_48";
    const auto start = std::chrono::steady_clock::now();
    for (int run = 0; run < repeat; ++run) {
        check_code(transform(processor, plan, input, output.data()), call);
    }
    const auto end = std::chrono::steady_clock::now();
    result.seconds = std::chrono::duration<double>(end - start).count();
    result.transforms = repeat;
    result.image.width = input.width;
    result.image.height = input.height;
    result.image.sample_bits = plan.output_bits;
    result.image.samples.assign(output.begin(), output.end());
}

} // namespace

const char* library_code_name(int code)
{
    switch (code) {
    case NQ_COLOR_NO_ERROR:
        return "NQ_COLOR_NO_ERROR";
    case NQ_COLOR_MODULE_NOT_INITIALIZED:
        return "NQ_COLOR_MODULE_NOT_INITIALIZED";
    case NQ_COLOR_NULL_INSTANCE_HANDLE:
        return "NQ_COLOR_NULL_INSTANCE_HANDLE";
    case NQ_COLOR_NULL_INPUT_BUFFER:
        return "NQ_COLOR_NULL_INPUT_BUFFER";
    case NQ_COLOR_NULL_OUTPUT_BUFFER:
        return "NQ_COLOR_NULL_OUTPUT_BUFFER";
    case NQ_COLOR_IDENTICAL_INPUT_AND_OUTPUT_BUFFERS:
        return "NQ_COLOR_IDENTICAL_INPUT_AND_OUTPUT_BUFFERS";
    case NQ_COLOR_INVALID_INPUT_FORMAT:
        return "NQ_COLOR_INVALID_INPUT_FORMAT";
    case NQ_COLOR_INVALID_OUTPUT_FORMAT:
        return "NQ_COLOR_INVALID_OUTPUT_FORMAT";
    case NQ_COLOR_INVALID_SHIFT_DISTANCE:
        return "NQ_COLOR_INVALID_SHIFT_DISTANCE";
    case NQ_COLOR_INVALID_CLAMP_VALUE:
        return "NQ_COLOR_INVALID_CLAMP_VALUE";
    default:
        return "an unknown code";
    }
}

Correction_result run_correction(const Correction_plan& plan, const Image& input,
                                 const Vector_choice& vector, int repeat)
{
    Library_module module;
    if (module.result() != NQ_COLOR_NO_ERROR) {
        throw Tool_error(std::string("the colour library could not be initialised: it could "
                                     "not bind libcorvane_xvr_LUT.so (code ") +
                         std::to_string(module.result()) + ")");
    }
    Processor processor(plan, vector);
    configure(processor.handle(), plan);
    Correction_result result;
    result.vector_level = report_vector_level(vector);
    if (plan.output_bits == 8) {
        transform_repeatedly<uint8_t>(processor.handle(), plan, input, repeat, result);
    } else {
        transform_repeatedly<uint16_t>(processor.handle(), plan, input, repeat, result);
    }
    return result;
}

} // namespace xvr_color
