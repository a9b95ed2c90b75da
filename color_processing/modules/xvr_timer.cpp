#include "modules/xvr_timer.hpp"

#include <cstdint>

XVRTimer::XVRTimer(const char* name, Xvr_log_object* logger, const char* file, int line,
                   const char* function)
    : m_name(name),
      m_logger(logger),
      m_file(file),
      m_line(line),
      m_function(function),
      m_start(std::chrono::system_clock::now())
{
}

XVRTimer::~XVRTimer()
{
    const double microseconds = whole_microseconds(m_start, std::chrono::system_clock::now());
    m_logger->log(XVR_LOG_PRIORITY_INFO, m_file, m_line, m_function, "%s takes %f microseconds.",
                  m_name, microseconds);
}

double XVRTimer::whole_microseconds(std::chrono::system_clock::time_point start,
                                    std::chrono::system_clock::time_point end)
{
    const int64_t nanoseconds =
        std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count();
    return static_cast<double>(nanoseconds / 1000);
}
