// Reading back what the logger library wrote: lines of a file, each taken apart into its
// fields, and helpers to point the library at a fresh file.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct Log_line {
    std::string time;
    std::string priority;
    std::string origin;
    long process = 0;
    std::string file;
    int line = 0;
    std::string function;
    std::string message;
};

// The fields of "TIME PRIORITY ORIGIN [PID] FILE:LINE FUNCTION: MESSAGE", or nothing when the
// text does not have that form (a torn or merged line).
std::optional<Log_line> parse_log_line(const std::string& text);

// "YYYY-MM-DDTHH:MM:SS.uuuuuuZ"
bool is_utc_timestamp(const std::string& text);

std::vector<std::string> read_lines(const std::string& path);

// A path in the working directory named after the stem and the running test, removed if an
// earlier run left it behind; the file stays after the test for a look at what was written.
std::string fresh_log_path(const std::string& stem);

// Sets an environment variable for the lifetime of the object (null value: unsets it).
class Environment_setting {
public:
    Environment_setting(const char* name, const char* value);
    ~Environment_setting();
    Environment_setting(const Environment_setting&) = delete;
    Environment_setting& operator=(const Environment_setting&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_previous;
};
