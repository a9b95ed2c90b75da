// Priorities of the records handed to the logger library, as 32-bit integers.
#pragma once

#include <cstdint>

enum XVR_LOG_PRIORITY : int32_t {
    XVR_LOG_PRIORITY_ERROR = 0,
    XVR_LOG_PRIORITY_INFO = 2,
};

// Error formats begin with "%s ", filled with this prefix, so that every error record's text
// begins with "ERROR:" and two blanks.
inline constexpr const char* error_prefix = "ERROR: ";
