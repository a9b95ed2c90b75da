#include "companion_check.hpp"

#include "tool_error.hpp"

#include "modules/shared_library.hpp"

namespace xvr_color {

std::string reason_library_cannot_open(const char* file_name)
{
    if (Shared_library::open_file(file_name)) {
        return "";
    }
    return shared_library_error();
}

void require_lut_library()
{
    const std::string reason = reason_library_cannot_open(lut_library_file);
    if (!reason.empty()) {
        throw Tool_error(std::string("cannot open ") + lut_library_file +
                         ", the table library that the colour library needs (" + reason +
                         "); build it (target corvane_xvr_LUT puts it in the lib folder beside "
                         "this program's bin folder), install the project, or add the folder "
                         "that holds it to LD_LIBRARY_PATH");
    }
}

std::string note_on_logger_library()
{
    const std::string reason = reason_library_cannot_open(logger_library_file);
    if (reason.empty()) {
        return "";
    }
    return std::string("note: ") + logger_library_file +
           " was not found, so the colour library's own log records are not shown";
}

} // namespace xvr_color
