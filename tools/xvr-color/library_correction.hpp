// Runs a correction plan through libcorvane_xvr_color_processing, using its public interface
// only: module initialise, processor creation, tables filled through the getters' pointers,
// matrices appended, transforms, and everything released in reverse order on every path.
#pragma once

#include "correction_plan.hpp"
#include "image.hpp"
#include "options.hpp"
#include "vector_level_report.hpp"

#include <functional>

namespace xvr_color {

struct Correction_result {
    Image image;
    Vector_level_report vector_level;
    double seconds = 0.0; // wall time of all transform calls
    int transforms = 0;
};

struct Run_settings {
    Vector_choice vector;
    int repeat = 1;
    // The image is cut into slices that up to this many threads transform at once, all through
    // one processor: a transform only reads the processor, so the threads need no lock.
    unsigned threads = 1;
    std::function<void(double done)> progress; // fraction of the work done, from any thread
};

// `input` holds 16-bit samples and becomes the result (its memory is reused); a Library_session
// must be alive. Several threads may run corrections at once, each with its own processor.
// Throws Tool_error when the library refuses a call, naming the call and its code.
Correction_result run_correction(const Correction_plan& plan, Image&& input, const Run_settings& settings);

// Keeps the module initialised from construction to destruction; throws Tool_error when the
// table library cannot be bound. One per run, made before any thread starts: every module
// termination also releases the library's binding of its table library, so a nested session
// ending on one thread would pull the tables' functions away from another.
class Library_session {
public:
    Library_session();
    ~Library_session();
    Library_session(const Library_session&) = delete;
    Library_session& operator=(const Library_session&) = delete;
};

// The name of one of the library's return codes, e.g. "NQ_COLOR_INVALID_CLAMP_VALUE".
const char* library_code_name(int code);

} // namespace xvr_color
