// The text of one record: a whole line for a stream, or the body that syslog(3) stamps with
// its own time and process id.
#pragma once

#include "log_record.hpp"

#include <chrono>
#include <string>
#include <sys/types.h>

// "2025-01-31T12:00:00.123456Z INFO origin [pid] file:line function: message\n"
std::string format_record_line(const std::string& origin, const Log_record& record,
                               std::chrono::system_clock::time_point time, pid_t process);

// "INFO origin file:line function: message"
std::string format_syslog_text(const std::string& origin, const Log_record& record);

// Appends text with every control character written as \n, \r, \t or \xHH, so that a record
// always stays on one line.
void append_escaped(std::string& line, const char* text);

// "2025-01-31T12:00:00.123456Z": UTC, microseconds.
std::string format_utc_time(std::chrono::system_clock::time_point time);
