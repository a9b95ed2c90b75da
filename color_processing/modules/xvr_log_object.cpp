#include "modules/xvr_log_object.hpp"

#include <cstdio>
#include <utility>

namespace {

const char* const logger_library_file = "libcorvane_xvr_logger.so";

}  // namespace

Xvr_log_object::Xvr_log_object(std::string module_name) : m_module_name(std::move(module_name))
{
    bind_logger_library();
}

void Xvr_log_object::bind_logger_library()
{
    m_library_handle = Shared_library::open_file(logger_library_file);
    if (!m_library_handle) return;

    decltype(&xvr_get_log) get_log = nullptr;
    if (!m_library_handle.bind(get_log, "xvr_get_log")) return;
    try {
        m_log_handle = get_log(m_module_name.c_str(), m_secondary_name.c_str());
    } catch (...) {
        // The logger library failed in the middle of opening a log; unloading it under that
        // half-made log is worse than keeping it loaded.
        m_library_handle.leave_open();
        throw;
    }
    if (m_log_handle == nullptr) return;

    if (!m_library_handle.bind(m_log_function, "xvr_log")) return;
    m_enabled = true;
}

Xvr_log_object::~Xvr_log_object()
{
    if (!m_library_handle) return;
    // A logger library whose xvr_free_log throws may still hold on to the log; closing it
    // under that log's feet is worse than leaving it loaded.
    if (!free_log()) m_library_handle.leave_open();
}

bool Xvr_log_object::free_log() noexcept
{
    // The logger library knows its logs by their names, so the log is freed by name, even when
    // xvr_get_log never handed one out.
    decltype(&xvr_free_log) free_by_name = nullptr;
    if (!m_library_handle.bind(free_by_name, "xvr_free_log")) return true;
    try {
        free_by_name(m_module_name.c_str(), m_secondary_name.c_str());
    } catch (...) {
        return false;
    }
    return true;
}

bool Xvr_log_object::log(XVR_LOG_PRIORITY priority, const char* file, int line,
                         const char* function, const char* format, ...)
{
    if (!m_enabled) return false;
    va_list arguments;
    va_start(arguments, format);
    bool accepted = false;
    try {
        accepted = deliver(priority, file, line, function, format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return accepted;
}

bool Xvr_log_object::deliver(XVR_LOG_PRIORITY priority, const char* file, int line,
                             const char* function, const char* format, va_list arguments)
{
    // Measured first and then written into a string of exactly that size, so that no record is
    // ever cut short by a fixed buffer.
    va_list measuring;
    va_copy(measuring, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    if (length < 0) return false;

    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsprintf(text.data(), format, arguments);
    return m_log_function(m_log_handle, priority, file, line, function, text.c_str()) == 0;
}
