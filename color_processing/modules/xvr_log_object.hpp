// The library's one channel for diagnostics: records are formatted here and handed to the
// logger library "libcorvane_xvr_logger.so", opened at run time. Without that library, or with
// an incomplete one, the object still exists but is disabled and drops every record, so the
// colour processing works the same with or without logging.
#pragma once

#include "modules/shared_library.hpp"

#include <corvane_xvr_logger.h>

#include <cstdarg>
#include <string>

// Error formats begin with "%s ", filled with this prefix, so that every error record's text
// begins with "ERROR:" and two blanks.
inline constexpr const char* error_prefix = "ERROR: ";

class Xvr_log_object {
public:
    // Opens the logger library and a log named (module_name, ""). An exception thrown by the
    // library's xvr_get_log passes on; the library is then left open.
    explicit Xvr_log_object(std::string module_name);

    // Frees the log by its names and closes the logger library; never throws.
    ~Xvr_log_object();

    Xvr_log_object(const Xvr_log_object&) = delete;
    Xvr_log_object& operator=(const Xvr_log_object&) = delete;

    // Formats the record, of any length, and hands it over. True when the logger library
    // accepted it; false when disabled, when the format fails or when the library refuses it.
    bool log(XVR_LOG_PRIORITY priority, const char* file, int line, const char* function,
             const char* format, ...) __attribute__((format(printf, 6, 7)));

    bool enabled() const { return m_enabled; }

private:
    void bind_logger_library();
    bool deliver(XVR_LOG_PRIORITY priority, const char* file, int line, const char* function,
                 const char* format, va_list arguments);
    bool free_log() noexcept;

    Shared_library m_library_handle;
    void* m_log_handle = nullptr;
    decltype(&xvr_log) m_log_function = nullptr;
    bool m_enabled = false;
    std::string m_module_name;
    std::string m_secondary_name;
};
