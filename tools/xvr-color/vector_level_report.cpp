#include "vector_level_report.hpp"

#include "tool_error.hpp"

#include "modules/shared_library.hpp"
#include "vector_capability.hpp"

#include <corvane_xvr_color_processing_vector.h>

namespace xvr_color {

namespace {

constexpr const char* sse_library_file = "lib" NQ_VECTOR_SSE_MODULE_NAME ".so";
constexpr const char* avx2_library_file = "lib" NQ_VECTOR_AVX2_MODULE_NAME ".so";

bool is_loaded(const char* file_name)
{
    return static_cast<bool>(Shared_library::find_loaded(file_name));
}

// A loaded vector library whose initialize refuses (its instruction set is missing) does not
// run. Asking it again is allowed: it must accept an initialize per processor, each matched by
// a terminate.
bool starts(const char* file_name, const char* initialize_name, const char* terminate_name)
{
    const Shared_library library = Shared_library::find_loaded(file_name);
    nq_vector_module_initialize_function* initialize = nullptr;
    nq_vector_module_terminate_function* terminate = nullptr;
    if (!library || !library.bind(initialize, initialize_name) || !library.bind(terminate, terminate_name)) {
        return false;
    }
    const bool started = initialize() == 0;
    terminate();
    return started;
}

const char* library_of(int level)
{
    return level == 2 ? avx2_library_file : sse_library_file;
}

const char* level_name(int level)
{
    switch (level) {
    case 2:
        return "AVX2";
    case 1:
        return "SSE";
    default:
        return "scalar";
    }
}

} // namespace

int Vector_level_report::level_in_use() const
{
    if (chosen_level == 2 && avx2_library_started) {
        return 2;
    }
    if (chosen_level >= 1 && sse_library_started) {
        return 1;
    }
    return 0;
}

std::string Vector_level_report::description() const
{
    const int in_use = level_in_use();
    std::string text = "vector level " + std::to_string(in_use) + " (" + level_name(in_use) + ") ran";
    const std::string chosen = std::string(automatic ? "detected" : "forced") + " level " +
                               std::to_string(chosen_level);
    if (in_use == chosen_level) {
        return text + ", " + chosen;
    }
    // The level above the one that ran, which was wanted and did not.
    const int missed = chosen_level >= 2 && in_use < 2 ? 2 : 1;
    const bool loaded = missed == 2 ? avx2_library_loaded : sse_library_loaded;
    if (loaded) {
        return text + "; " + chosen + ", but " + library_of(missed) + " refused to start on this processor";
    }
    return text + "; " + chosen + ", but " + library_of(missed) +
           " is not installed: install it beside libcorvane_xvr_color_processing.so.1 for level " +
           std::to_string(missed);
}

void require_supported_level(const Vector_choice& choice)
{
    const int detected = detect_vector_level();
    if (!choice.automatic && choice.level > detected) {
        throw Usage_error("--vector " + std::to_string(choice.level) + ": this processor supports level " +
                          std::to_string(detected) + " (" + level_name(detected) + ") at most");
    }
}

Vector_level_report report_vector_level(const Vector_choice& choice)
{
    Vector_level_report report;
    report.automatic = choice.automatic;
    report.chosen_level = choice.automatic ? detect_vector_level() : choice.level;
    report.sse_library_loaded = is_loaded(sse_library_file);
    report.avx2_library_loaded = is_loaded(avx2_library_file);
    report.sse_library_started =
        starts(sse_library_file, NQ_VECTOR_SSE_INITIALIZE_NAME, NQ_VECTOR_SSE_TERMINATE_NAME);
    report.avx2_library_started =
        starts(avx2_library_file, NQ_VECTOR_AVX2_INITIALIZE_NAME, NQ_VECTOR_AVX2_TERMINATE_NAME);
    return report;
}

} // namespace xvr_color
