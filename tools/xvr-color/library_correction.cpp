#include "library_correction.hpp"

#include "parallel_tasks.hpp"
#include "tool_error.hpp"

#include <corvane_xvr_color_processing.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>

namespace xvr_color {

namespace {

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

// One transform call over `pixels` pixels; the library's per-channel arguments run blue, green,
// red.
template <typename Sample>
int transform(void* processor, const Correction_plan& plan, const std::uint16_t* input, Sample* output,
              std::int32_t pixels)
{
    const Channel_settings& red = plan.channels[0];
    const Channel_settings& green = plan.channels[1];
    const Channel_settings& blue = plan.channels[2];
    auto bound = [](int value) { return static_cast<uint16_t>(value); };
    if constexpr (sizeof(Sample) == 1) {
        return nq_color_transform_48_to_24(
            processor, input, NQ_COLOR_FORMAT_RGB_PIXEL, bound(blue.clamp_min),
            bound(blue.clamp_max), bound(green.clamp_min), bound(green.clamp_max),
            bound(red.clamp_min), bound(red.clamp_max), blue.shift, green.shift, red.shift,
            output, NQ_COLOR_FORMAT_RGB_PIXEL, pixels);
    } else {
        return nq_color_transform_48_to_48(
            processor, input, NQ_COLOR_FORMAT_RGB_PIXEL, bound(blue.clamp_min),
            bound(blue.clamp_max), bound(green.clamp_min), bound(green.clamp_max),
            bound(red.clamp_min), bound(red.clamp_max), blue.shift, green.shift, red.shift,
            output, NQ_COLOR_FORMAT_RGB_PIXEL, pixels);
    }
}

// Slices small enough that a thread's scratch buffer stays in its cache and a progress line
// moves, large enough that a call's fixed cost does not show.
constexpr std::size_t slice_pixels = 1u << 16;

// Each slice is transformed into a small scratch buffer of its thread and copied back over its
// own input samples (8-bit results widened): the library needs distinct input and output
// buffers, but a second image-sized buffer would cost as much fresh memory as the image
// itself. Passes of --repeat run one after the other; only the last one copies back.
template <typename Sample>
void transform_in_place(void* processor, const Correction_plan& plan, Image& image, const Run_settings& settings)
{
    const std::size_t pixels = image.pixel_count();
    const std::size_t count = (pixels + slice_pixels - 1) / slice_pixels;
    const char* call = sizeof(Sample) == 1 ? "nq_color_transform_48_to_24" : "nq_color_transform_48_to_48";
    const std::size_t total = count * static_cast<std::size_t>(settings.repeat);
    std::atomic<std::size_t> finished{0};
    for (int pass = 1; pass <= settings.repeat; ++pass) {
        const bool last = pass == settings.repeat;
        run_in_parallel(count, settings.threads, [&](std::size_t index) {
            thread_local std::vector<Sample> scratch;
            scratch.resize(3 * slice_pixels);
            const std::size_t first = index * slice_pixels;
            const std::size_t length = std::min(slice_pixels, pixels - first);
            std::uint16_t* samples = image.samples.data() + 3 * first;
            check_code(transform(processor, plan, samples, scratch.data(), static_cast<std::int32_t>(length)), call);
            if (last) {
                std::copy(scratch.begin(), scratch.begin() + static_cast<std::ptrdiff_t>(3 * length), samples);
            }
            if (settings.progress) {
                settings.progress(static_cast<double>(++finished) / static_cast<double>(total));
            }
        });
    }
}

void transform_image(void* processor, const Correction_plan& plan, Image& image, const Run_settings& settings,
                     Correction_result& result)
{
    const auto start = std::chrono::steady_clock::now();
    if (plan.output_bits == 8) {
        transform_in_place<std::uint8_t>(processor, plan, image, settings);
    } else {
        transform_in_place<std::uint16_t>(processor, plan, image, settings);
    }
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.transforms = settings.repeat;
    image.sample_bits = plan.output_bits;
    result.image = std::move(image);
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

Library_session::Library_session()
{
    const int result = nq_color_processing_module_initialize();
    if (result != NQ_COLOR_NO_ERROR) {
        nq_color_processing_module_terminate(); // the library counts failed initialisations too
        throw Tool_error(std::string("the colour library could not be initialised: it could "
                                     "not bind libcorvane_xvr_LUT.so (code ") +
                         std::to_string(result) + ")");
    }
}

Library_session::~Library_session()
{
    nq_color_processing_module_terminate();
}

Correction_result run_correction(const Correction_plan& plan, Image&& input, const Run_settings& settings)
{
    Processor processor(plan, settings.vector);
    configure(processor.handle(), plan);
    Correction_result result;
    result.vector_level = report_vector_level(settings.vector);
    transform_image(processor.handle(), plan, input, settings, result);
    return result;
}

} // namespace xvr_color
