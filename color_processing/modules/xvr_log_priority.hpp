// Priorities of the records handed to the logger library, as 32-bit integers.
#pragma once

#include <cstdint>

enum XVR_LOG_PRIORITY : int32_t {
    XVR_LOG_PRIORITY_ERROR = 0,
    XVR_LOG_PRIORITY_INFO = 2,
};
