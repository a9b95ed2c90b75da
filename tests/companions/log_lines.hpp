// Reading back what the logger library wrote, and pointing it somewhere through the environment.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <regex>
#include <string>
#include <unistd.h>
#include <vector>

struct Log_line {
    std::string time, priority, origin, file, function, message;
    long process;
    int line;
};

// The fields of "TIME PRIORITY ORIGIN [PID] FILE:LINE FUNCTION: MESSAGE", or nothing when the
// text does not have exactly that form (a torn or merged line).
inline std::optional<Log_line> parse_log_line(const std::string& text)
{
    static const std::regex header(
        R"((\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z) (\S+) (\S+) \[(\d+)\] (\S+):(-?\d+) (\S+): )");
    // The header alone: std::regex recurses per character and a long message would overflow it.
    const std::string head = text.substr(0, 2048);
    std::smatch m;
    if (!std::regex_search(head, m, header, std::regex_constants::match_continuous)) return std::nullopt;
    return Log_line{m[1], m[2], m[3], m[5], m[7], text.substr(m.length(0)), std::stol(m[4]), std::stoi(m[6])};
}

inline std::vector<std::string> read_lines(const std::string& path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

// A file in the working directory named after the stem and the running test, emptied first.
inline std::string fresh_log_path(const std::string& stem)
{
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string path = stem + "." + test->test_suite_name() + "." + test->name() + ".log";
    ::unlink(path.c_str());
    return path;
}

// Sets an environment variable for the lifetime of the object (null value: unsets it).
class Environment_setting {
public:
    Environment_setting(const char* name, const char* value) : m_name(name)
    {
        if (const char* previous = std::getenv(name)) m_previous = previous;
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~Environment_setting()
    {
        m_previous ? ::setenv(m_name.c_str(), m_previous->c_str(), 1) : ::unsetenv(m_name.c_str());
    }
    Environment_setting(const Environment_setting&) = delete;
    Environment_setting& operator=(const Environment_setting&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_previous;
};
