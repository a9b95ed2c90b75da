#include "vector_level_report.hpp"

#include "tool_error.hpp"

#include "vector_capability.hpp"

namespace xvr_color {

namespace {

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
    if (chosen_level == 2 && avx2.starts) {
        return 2;
    }
    if (chosen_level >= 1 && sse.starts) {
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
    const bool loaded = missed == 2 ? avx2.loaded : sse.loaded;
    if (loaded) {
        return text + "; " + chosen + ", but " + vector_library_file(missed) + " refused to start on this processor";
    }
    return text + "; " + chosen + ", but " + vector_library_file(missed) +
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
    report.sse = loaded_vector_library(1);
    report.avx2 = loaded_vector_library(2);
    return report;
}

} // namespace xvr_color
