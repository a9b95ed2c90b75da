#include "modules/xvr_log_object.hpp"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

namespace {

using Get_log_function = void* (*)(const char* module_name, const char* secondary_name);
using Free_log_function = void (*)(const char* module_name, const char* secondary_name);

const char* const logger_library_file = "libcorvane_xvr_logger.so";

}  // namespace

Xvr_log_object::Xvr_log_object(std::string module_name) : m_module_name(std::move(module_name))
{
    bind_logger_library();
}

void Xvr_log_object::bind_logger_library()
{
    m_library_handle = dlopen(logger_library_file, RTLD_LAZY);
    if (m_library_handle == nullptr) return;

    auto get_log = reinterpret_cast<Get_log_function>(dlsym(m_library_handle, "xvr_get_log"));
    if (get_log == nullptr) return;
    m_log_handle = get_log(m_module_name.c_str(), m_secondary_name.c_str());
    if (m_log_handle == nullptr) return;

    m_log_function = reinterpret_cast<Log_function>(dlsym(m_library_handle, "xvr_log"));
    if (m_log_function == nullptr) return;
    m_enabled = true;
}

Xvr_log_object::~Xvr_log_object()
{
    if (m_library_handle == nullptr) return;
    // A logger library whose xvr_free_log throws may still hold on to the log; closing it
    // under that log's feet is worse than leaving it loaded.
    if (!free_log()) return;
    dlclose(m_library_handle);
}

bool Xvr_log_object::free_log() noexcept
{
    // The logger library knows its logs by their names, so the log is freed by name, even when
    // xvr_get_log never handed one out.
    auto free_log = reinterpret_cast<Free_log_function>(dlsym(m_library_handle, "xvr_free_log"));
    if (free_log == nullptr) return true;
    try {
        free_log(m_module_name.c_str(), m_secondary_name.c_str());
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
    return m_log_function(m_log_handle, static_cast<int32_t>(priority), file, line, function,
                          text.c_str()) == 0;
}
