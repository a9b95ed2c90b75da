#include "vector_level_report.hpp"

#include "tool_error.hpp"

#include "modules/shared_library.hpp"
#include "vector_capability.hpp"

namespace xvr_color {

namespace {

constexpr const char* sse_library_file = "libcorvane_xvr_color_processing_vector_sse.so";
constexpr const char* avx2_library_file = "libcorvane_xvr_color_processing_vector_avx2.so";

bool is_loaded(const char* file_name)
{
    return static_cast<bool>(Shared_library::find_loaded(file_name));
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
    if (chosen_level == 2 && avx2_library_loaded) {
        return 2;
    }
    if (chosen_level >= 1 && sse_library_loaded) {
        return 1;
    }
    return 0;
}

std::string Vector_level_report::description() const
{
    const int in_use = level_in_use();
    std::string text = "vector level " + std::to_string(in_use) + " (" + level_name(in_use) + ")";
    const std::string chosen = std::string(automatic ? "detected" : "forced") + " level " +
                               std::to_string(chosen_level);
    if (in_use == chosen_level) {
        return text + ", " + chosen;
    }
    return text + "; " + chosen + ", but its vector library is not installed";
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
    return report;
}

} // namespace xvr_color
