// Runs a correction plan through libcorvane_xvr_color_processing, using its public interface
// only: module initialise, processor creation, tables filled through the getters' pointers,
// matrices appended, transforms, and everything released in reverse order on every path.
#pragma once

#include "correction_plan.hpp"
#include "image.hpp"
#include "options.hpp"
#include "vector_level_report.hpp"

namespace xvr_color {

struct Correction_result {
    Image image;
    Vector_level_report vector_level;
    double seconds = 0.0; // wall time of all transform calls
    int transforms = 0;
};

// `input` holds 16-bit samples. Throws Tool_error when the library refuses a call, naming the
// call and its code.
Correction_result run_correction(const Correction_plan& plan, const Image& input,
                                 const Vector_choice& vector, int repeat);

// The name of one of the library's return codes, e.g. "NQ_COLOR_INVALID_CLAMP_VALUE".
const char* library_code_name(int code);

} // namespace xvr_color
