#include "batch_jobs.hpp"

#include "input_source.hpp"
#include "parallel_tasks.hpp"
#include "tool_error.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <new>

namespace xvr_color {

namespace {

std::string replace_all(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string file_name_of(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string extension_of(const std::string& file_name)
{
    const std::size_t dot = file_name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? "" : file_name.substr(dot + 1);
}

Image_file_format batch_format(const Options& options, const std::string& input)
{
    if (options.format) {
        return *options.format;
    }
    std::string extension = extension_of(file_name_of(input));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (const auto format = format_named(extension)) {
        return *format;
    }
    throw Usage_error("cannot tell which format to write for '" + input + "': give --format");
}

enum class Outcome { done, failed, retry_alone };

} // namespace

std::string batch_output_path(const std::string& input, const std::string& output_dir,
                              const std::string& pattern, Image_file_format format)
{
    const std::string file_name = file_name_of(input);
    const std::string extension = extension_of(file_name);
    const std::string stem = extension.empty() ? file_name : file_name.substr(0, file_name.size() - extension.size() - 1);
    const std::string name = replace_all(replace_all(pattern, "{name}", stem), "{ext}", format_extension(format));
    return output_dir + (output_dir.back() == '/' ? "" : "/") + name;
}

std::vector<Correction_job> make_batch_jobs(const Options& options)
{
    if (options.inputs.empty()) {
        throw Usage_error("--output-dir needs input files");
    }
    std::vector<Correction_job> jobs;
    std::map<std::string, std::string> input_of_output;
    for (const std::string& input : options.inputs) {
        if (input == standard_stream_name) {
            throw Usage_error("standard input (-) cannot be one of several inputs");
        }
        Correction_job job;
        job.input = input;
        job.output_format = batch_format(options, input);
        job.output = batch_output_path(input, options.output_dir, options.name_pattern, *job.output_format);
        const auto [entry, added] = input_of_output.emplace(job.output, input);
        if (!added) {
            throw Usage_error(entry->second + " and " + input + " would both be written to " + job.output +
                              "; use --name with a pattern that tells them apart");
        }
        require_support_for(*job.output_format);
        jobs.push_back(job);
    }
    return jobs;
}

bool run_batch(const std::vector<Correction_job>& jobs, const Job_environment& environment)
{
    Console& console = environment.console;
    const unsigned side_by_side = std::max(1u, std::min<unsigned>(environment.threads,
                                                                   static_cast<unsigned>(jobs.size())));
    Job_environment per_job = environment;
    per_job.full_summary = false;
    per_job.threads = std::max(1u, environment.threads / side_by_side);
    std::vector<Outcome> outcomes(jobs.size(), Outcome::failed);
    std::atomic<std::size_t> finished{0};
    std::mutex totals_mutex;
    std::size_t pixels = 0;
    Vector_level_report vector_level;
    const auto start = std::chrono::steady_clock::now();
    const auto run_one = [&](std::size_t index, const Job_environment& job_environment, bool alone) {
        outcomes[index] = Outcome::failed;
        try {
            const Job_result result = run_correction_job(jobs[index], job_environment);
            std::lock_guard<std::mutex> lock(totals_mutex);
            pixels += result.pixels;
            vector_level = result.vector_level;
            outcomes[index] = Outcome::done;
        } catch (const std::bad_alloc&) {
            if (!alone) {
                outcomes[index] = Outcome::retry_alone;
                return;
            }
            console.error("not enough memory for " + jobs[index].input);
        } catch (const std::exception& error) {
            const std::string message = error.what();
            const bool names_file = message.find(jobs[index].input) != std::string::npos ||
                                    message.find(jobs[index].output) != std::string::npos;
            console.error(names_file ? message : jobs[index].input + ": " + message);
        }
        console.progress("[" + std::to_string(++finished) + "/" + std::to_string(jobs.size()) + "] " +
                         jobs[index].input);
    };
    run_in_parallel(jobs.size(), side_by_side, [&](std::size_t index) { run_one(index, per_job, side_by_side == 1); });
    Job_environment alone = environment;
    alone.full_summary = false;
    for (std::size_t index = 0; index < jobs.size(); ++index) {
        if (outcomes[index] == Outcome::retry_alone) {
            run_one(index, alone, true);
        }
    }
    console.end_progress();
    const auto failed = static_cast<std::size_t>(std::count(outcomes.begin(), outcomes.end(), Outcome::failed));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    char rate[64];
    std::snprintf(rate, sizeof rate, "%.1f s: %.1f megapixels per second", seconds,
                  seconds > 0 ? static_cast<double>(pixels) / 1e6 / seconds : 0.0);
    if (jobs.size() > failed) {
        console.summary(vector_level.description());
    }
    console.summary("corrected " + std::to_string(jobs.size() - failed) + " of " + std::to_string(jobs.size()) +
                    " files in " + rate + " (whole run, " + std::to_string(side_by_side) + " side by side)");
    return failed == 0;
}

} // namespace xvr_color
