// xvr-color: colour-corrects RGB images with libcorvane_xvr_color_processing, as a host
// application would, through the library's public interface only.
#include "chart_defaults.hpp"
#include "companion_check.hpp"
#include "correction_plan.hpp"
#include "image_files.hpp"
#include "library_correction.hpp"
#include "options.hpp"
#include "png_codec.hpp"
#include "run_summary.hpp"
#include "test_chart.hpp"
#include "tool_error.hpp"
#include "vector_level_report.hpp"

#include <iostream>
#include <new>

namespace {

using namespace xvr_color;

void say(const std::string& line)
{
    std::cout << "xvr-color: " << line << '\n';
}

std::string output_path_of(const Options& options)
{
    if (!options.output_path.empty()) {
        return options.output_path;
    }
    if (!options.input_path.empty()) {
        throw Usage_error("an input file needs an output file: add --output FILE");
    }
    return default_chart_file_name;
}

// Settles the output format before any work, so a wrong name fails fast.
void check_output_can_be_written(const std::string& output_path)
{
    if (output_format_for(output_path) == Image_file_format::png) {
        require_png_support();
    }
}

int run(const std::vector<std::string>& arguments)
{
    const Options options = parse_options(arguments);
    if (options.show_help) {
        std::cout << usage_text();
        return 0;
    }
    const std::string output_path = output_path_of(options);
    check_output_can_be_written(output_path);
    require_supported_level(options.vector);

    const bool chart = options.input_path.empty();
    Image image = chart ? make_test_chart() : read_image_file(options.input_path);
    const Correction_plan plan = make_correction_plan(options, {chart, image.sample_bits});
    const std::string input_summary = describe_input(options.input_path, image);

    require_lut_library();
    const std::string logger_note = note_on_logger_library();
    if (!logger_note.empty()) {
        std::cerr << "xvr-color: " << logger_note << '\n';
    }
    widen_to_16_bits(image);
    const Correction_result result = run_correction(plan, image, options.vector, options.repeat);
    write_image_file(output_path, result.image);

    say(input_summary);
    say(describe_correction(plan));
    say(result.vector_level.description());
    say(describe_throughput(image.pixel_count(), result.transforms, result.seconds));
    say(describe_output(output_path, result.image));
    return 0;
}

void report_error(const std::string& message)
{
    std::cerr << "xvr-color: " << message << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const xvr_color::Usage_error& error) {
        report_error(error.what());
        return 2;
    } catch (const std::bad_alloc&) {
        report_error("not enough memory for this image");
        return 1;
    } catch (const std::exception& error) {
        report_error(error.what());
        return 1;
    }
}
