// Several inputs into --output-dir: one job a file, named by a pattern, run on all cores. A bad
// file costs one line and does not stop the others; the run then ends with a failure status.
#pragma once

#include "correction_job.hpp"

#include <vector>

namespace xvr_color {

// The output name of `input`: the pattern with {name} replaced by the input's file name without
// its extension and {ext} by the output format's extension.
std::string batch_output_path(const std::string& input, const std::string& output_dir,
                              const std::string& pattern, Image_file_format format);

// Throws Usage_error for standard input among several inputs, an input whose output format
// cannot be told, and two inputs that would be written to the same file.
std::vector<Correction_job> make_batch_jobs(const Options& options);

// Runs every job; true when all succeeded. Files are corrected side by side, one per thread;
// a file that runs out of memory beside the others is tried again alone at the end.
bool run_batch(const std::vector<Correction_job>& jobs, const Job_environment& environment);

} // namespace xvr_color
