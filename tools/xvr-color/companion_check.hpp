// The library opens its companion libraries by bare file name when the module is initialised.
// Probing them first, with the same search rules, lets the tool say which file is missing and
// how to provide it, instead of only learning that initialisation failed.
#pragma once

#include <string>

namespace xvr_color {

constexpr const char* lut_library_file = "libcorvane_xvr_LUT.so";
constexpr const char* logger_library_file = "libcorvane_xvr_logger.so";

// Empty when the file can be opened; otherwise the loader's reason.
std::string reason_library_cannot_open(const char* file_name);

// Throws Tool_error naming the LUT library and the ways to provide it when it cannot be opened.
void require_lut_library();

// A one-line note when the logger library is missing (the library then logs nothing, which is
// not an error), or an empty string.
std::string note_on_logger_library();

} // namespace xvr_color
