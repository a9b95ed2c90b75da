// Times one scope and writes "<name> takes <microseconds> microseconds." when it ends, on every
// path out of the scope, exceptions included.
#pragma once

#include "modules/xvr_log_object.hpp"

#include <chrono>

class XVRTimer {
public:
    // The strings are kept, not copied: they must outlive the timer. The logger must not be
    // null.
    XVRTimer(const char* name, Xvr_log_object* logger, const char* file, int line,
             const char* function);
    ~XVRTimer();

    XVRTimer(const XVRTimer&) = delete;
    XVRTimer& operator=(const XVRTimer&) = delete;

    // Whole microseconds between two readings, truncated toward zero before the conversion to
    // double, so that the record always shows six zero decimals.
    static double whole_microseconds(std::chrono::system_clock::time_point start,
                                     std::chrono::system_clock::time_point end);

private:
    const char* m_name;
    Xvr_log_object* m_logger;
    const char* m_file;
    int m_line;
    const char* m_function;
    std::chrono::system_clock::time_point m_start;
};
