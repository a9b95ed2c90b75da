// xvr-color: colour-corrects RGB images with libcorvane_xvr_color_processing, as a host
// application would, through the library's public interface only.
#include "batch_jobs.hpp"
#include "chart_defaults.hpp"
#include "companion_check.hpp"
#include "console.hpp"
#include "correction_job.hpp"
#include "icc_profiles.hpp"
#include "library_correction.hpp"
#include "options.hpp"
#include "parallel_tasks.hpp"
#include "signal_cleanup.hpp"
#include "tool_error.hpp"
#include "vector_level_report.hpp"
#include "version_text.hpp"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>
#include <new>

namespace {

using namespace xvr_color;

constexpr int exit_failed = 1;
constexpr int exit_usage = 2;

// The one job of a run without --output-dir.
Correction_job single_job(const Options& options)
{
    if (options.inputs.size() > 1) {
        throw Usage_error("several inputs need --output-dir DIR (got " +
                          std::to_string(options.inputs.size()) + " inputs)");
    }
    Correction_job job;
    job.input = options.inputs.empty() ? "" : options.inputs[0];
    job.output = options.output_path;
    if (job.output.empty()) {
        if (!job.input.empty()) {
            throw Usage_error("an input file needs an output file: add --output FILE "
                              "(- for standard output) or --output-dir DIR");
        }
        job.output = default_chart_file_name;
    }
    if (options.format) {
        job.output_format = options.format;
    } else if (job.output != standard_stream_name) {
        job.output_format = output_format_for(job.output);
    }
    if (job.output_format) {
        require_support_for(*job.output_format);
    }
    if (job.output == standard_stream_name && isatty(STDOUT_FILENO) == 1) {
        throw Usage_error("standard output is a terminal, which cannot show an image; "
                          "redirect it to a file or a pipe, or give --output FILE");
    }
    return job;
}

// The folder of a batch is made when missing (its parent must exist).
void create_output_folder(const std::string& folder)
{
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) {
        throw Tool_error("cannot create the output folder " + folder + ": " + std::strerror(errno));
    }
}

void check_profile_fits(const Options& options, const std::vector<Correction_job>& jobs)
{
    if (options.output_profile_path.empty()) {
        return;
    }
    for (const Correction_job& job : jobs) {
        if (job.output_format && !format_holds_profile(*job.output_format)) {
            throw Usage_error(std::string("--output-profile: ") + format_name(*job.output_format) +
                              " files cannot hold an ICC profile; write PNG or TIFF");
        }
    }
}

int run(const std::vector<std::string>& arguments)
{
    const Options options = parse_options(arguments);
    if (options.show_help) {
        std::cout << usage_text();
        return 0;
    }
    if (options.show_version) {
        std::cout << version_text();
        return 0;
    }
    if (options.batch() && !options.output_path.empty()) {
        throw Usage_error("give either --output or --output-dir, not both");
    }
    const std::vector<Correction_job> jobs =
        options.batch() ? make_batch_jobs(options) : std::vector<Correction_job>{single_job(options)};
    check_profile_fits(options, jobs);
    require_supported_level(options.vector);
    std::vector<std::uint8_t> output_profile;
    if (!options.output_profile_path.empty()) {
        output_profile = read_icc_profile(options.output_profile_path);
    }

    if (options.batch()) {
        create_output_folder(options.output_dir);
    }
    require_lut_library();
    Console console(options.quiet, true);
    const std::string logger_note = note_on_logger_library();
    if (!logger_note.empty()) {
        console.error(logger_note);
    }
    install_signal_cleanup();
    const Library_session session;
    Job_environment environment{options, console};
    environment.threads = options.threads != 0 ? options.threads : available_processors();
    environment.output_profile = options.output_profile_path.empty() ? nullptr : &output_profile;
    if (!options.batch()) {
        run_correction_job(jobs[0], environment);
        return 0;
    }
    return run_batch(jobs, environment) ? 0 : exit_failed;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const xvr_color::Usage_error& error) {
        std::cerr << "xvr-color: " << error.what() << '\n';
        return exit_usage;
    } catch (const std::bad_alloc&) {
        std::cerr << "xvr-color: not enough memory for this image\n";
        return exit_failed;
    } catch (const std::exception& error) {
        std::cerr << "xvr-color: " << error.what() << '\n';
        return exit_failed;
    }
}
