// One input corrected into one output: read, plan, correct on several threads, carry the
// profile, encode and write. A run is one job, or a batch of them.
#pragma once

#include "console.hpp"
#include "image_files.hpp"
#include "options.hpp"
#include "vector_level_report.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace xvr_color {

struct Correction_job {
    std::string input;  // empty: the built-in test chart; "-": standard input
    std::string output; // "-": standard output
    // The output format when known before reading (from --format or a file name); otherwise
    // the input's format.
    std::optional<Image_file_format> output_format;
};

// What a run shares between its jobs.
struct Job_environment {
    const Options& options;
    Console& console;
    unsigned threads = 1;
    const std::vector<std::uint8_t>* output_profile = nullptr;
    bool full_summary = true; // a single job tells every step; a batch one line a file
};

struct Job_result {
    std::size_t pixels = 0;
    double transform_seconds = 0.0;
    Vector_level_report vector_level;
};

// Throws Tool_error (Usage_error for settings that cannot work) or std::bad_alloc; the output
// is then untouched.
Job_result run_correction_job(const Correction_job& job, const Job_environment& environment);

// Throws Usage_error when the output is the input file itself (under any name) and --in-place
// was not given.
void check_output_is_not_input(const Correction_job& job, bool in_place);

} // namespace xvr_color
