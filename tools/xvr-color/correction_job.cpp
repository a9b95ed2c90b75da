#include "correction_job.hpp"

#include "correction_plan.hpp"
#include "icc_profiles.hpp"
#include "input_source.hpp"
#include "library_correction.hpp"
#include "output_file.hpp"
#include "run_summary.hpp"
#include "test_chart.hpp"
#include "tool_error.hpp"

#include <sys/stat.h>

namespace xvr_color {

namespace {

// Images from this size on get a progress line even when they are the only one.
constexpr std::size_t large_image_pixels = 8u << 20;

std::string display_name(const std::string& path)
{
    if (path.empty()) {
        return "built-in test chart";
    }
    return path == standard_stream_name ? "standard input" : path;
}

std::string output_display_name(const std::string& path)
{
    return path == standard_stream_name ? "standard output" : path;
}

struct Read_input {
    Image image;
    Image_file_format format = Image_file_format::png; // the chart leaves as PNG by default
};

Read_input read_input(const std::string& path)
{
    Read_input input;
    if (path.empty()) {
        input.image = make_test_chart();
        return input;
    }
    Input_source source(path);
    input.image = read_image(source, &input.format);
    return input;
}

} // namespace

void check_output_is_not_input(const Correction_job& job, bool in_place)
{
    if (in_place || job.input.empty() || job.input == standard_stream_name ||
        job.output == standard_stream_name) {
        return;
    }
    struct stat input {}, output {};
    if (stat(job.input.c_str(), &input) == 0 && stat(job.output.c_str(), &output) == 0 &&
        input.st_dev == output.st_dev && input.st_ino == output.st_ino) {
        throw Usage_error(job.output + " is the input file " + job.input +
                          "; add --in-place to replace it, or choose another output");
    }
}

Job_result run_correction_job(const Correction_job& job, const Job_environment& environment)
{
    const Options& options = environment.options;
    Console& console = environment.console;
    check_output_is_not_input(job, options.in_place);
    // Made first: an output that cannot be written is reported before any work is done.
    Output_file output(job.output);

    const std::string input_name = display_name(job.input);
    const bool show_stages = environment.full_summary && console.shows_progress();
    if (show_stages) {
        console.progress("reading " + input_name);
    }
    Read_input input = read_input(job.input);
    const Image_file_format format = job.output_format.value_or(input.format);
    require_support_for(format);
    Image& image = input.image;
    const bool chart = job.input.empty();
    const Correction_plan plan = make_correction_plan(options, {chart, image.sample_bits});
    const Profile_outcome profile =
        decide_profile(image, input_name, plan.keeps_colours,
                       {options.keep_profile, environment.output_profile}, format);
    const std::string input_summary = describe_input(chart ? "" : input_name, image);

    widen_to_16_bits(image);
    Run_settings settings;
    settings.vector = options.vector;
    settings.repeat = options.repeat;
    settings.threads = environment.threads;
    if (show_stages && image.pixel_count() >= large_image_pixels) {
        settings.progress = [&console, &input_name](double done) {
            console.progress("correcting " + input_name + ": " + std::to_string(int(done * 100)) + "%");
        };
    }
    const std::size_t pixels = image.pixel_count();
    Correction_result result = run_correction(plan, std::move(image), settings);

    result.image.icc_profile = profile.bytes;
    result.image.icc_profile_name = profile.name;
    if (show_stages) {
        console.progress("writing " + output_display_name(job.output), true);
    }
    Encoding_settings encoding;
    encoding.tiff_compression = options.tiff_compression;
    encoding.threads = environment.threads;
    const std::string written = describe_output(output_display_name(job.output), result.image, format);
    const std::size_t output_pixels = result.image.pixel_count();
    write_image(output, std::move(result.image), format, encoding);
    console.end_progress();

    if (!profile.note.empty()) {
        console.note(profile.note);
    }
    if (environment.full_summary) {
        console.summary(input_summary);
        console.summary(describe_correction(plan));
        console.summary(result.vector_level.description());
        console.summary(describe_throughput(pixels, result.transforms, result.seconds,
                                            environment.threads));
        console.summary(written);
    } else {
        console.summary(written + " (from " + input_name + ")");
    }
    Job_result outcome;
    outcome.pixels = output_pixels;
    outcome.transform_seconds = result.seconds;
    outcome.vector_level = result.vector_level;
    return outcome;
}

} // namespace xvr_color
