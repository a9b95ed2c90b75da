// Priority numbers, their names in a line, and the level names of CORVANE_XVR_LOG_LEVEL.
#pragma once

#include <optional>

const char* priority_name(int priority);

// "error", "warning", "info", "debug" (any case) or a decimal number from 0 up; nothing for
// any other text.
std::optional<int> parse_priority_level(const char* text);

// The syslog(3) level that a record of this priority is sent with.
int syslog_level(int priority);
