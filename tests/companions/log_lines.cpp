#include "log_lines.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

// Cuts the text before the next blank off `rest`.
std::optional<std::string> take_word(std::string& rest)
{
    const std::size_t blank = rest.find(' ');
    if (blank == std::string::npos || blank == 0) return std::nullopt;
    std::string word = rest.substr(0, blank);
    rest.erase(0, blank + 1);
    return word;
}

bool is_decimal(const std::string& text)
{
    if (text.empty()) return false;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

}  // namespace

bool is_utc_timestamp(const std::string& text)
{
    const std::string pattern = "dddd-dd-ddTdd:dd:dd.ddddddZ";
    if (text.size() != pattern.size()) return false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
        if (pattern[i] == 'd' ? !digit : text[i] != pattern[i]) return false;
    }
    return true;
}

std::optional<Log_line> parse_log_line(const std::string& text)
{
    Log_line parsed;
    std::string rest = text;
    const auto time = take_word(rest);
    const auto priority = take_word(rest);
    const auto origin = take_word(rest);
    const auto process = take_word(rest);
    const auto source = take_word(rest);
    const auto function = take_word(rest);
    if (!time || !priority || !origin || !process || !source || !function) return std::nullopt;
    if (!is_utc_timestamp(*time)) return std::nullopt;
    if (process->size() < 3 || process->front() != '[' || process->back() != ']') return std::nullopt;
    const std::string pid = process->substr(1, process->size() - 2);
    const std::size_t colon = source->rfind(':');
    if (colon == std::string::npos) return std::nullopt;
    const std::string line_number = source->substr(colon + 1);
    const bool negative_line = !line_number.empty() && line_number[0] == '-';
    if (!is_decimal(pid) || !is_decimal(negative_line ? line_number.substr(1) : line_number))
        return std::nullopt;
    if (function->back() != ':') return std::nullopt;

    parsed.time = *time;
    parsed.priority = *priority;
    parsed.origin = *origin;
    parsed.process = std::stol(pid);
    parsed.file = source->substr(0, colon);
    parsed.line = std::stoi(line_number);
    parsed.function = function->substr(0, function->size() - 1);
    parsed.message = rest;
    return parsed;
}

std::vector<std::string> read_lines(const std::string& path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::string fresh_log_path(const std::string& stem)
{
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string path = stem;
    if (test != nullptr) path += std::string(".") + test->test_suite_name() + "." + test->name();
    path += ".log";
    ::unlink(path.c_str());
    return path;
}

Environment_setting::Environment_setting(const char* name, const char* value) : m_name(name)
{
    if (const char* previous = std::getenv(name)) m_previous = previous;
    if (value != nullptr) {
        ::setenv(name, value, 1);
    } else {
        ::unsetenv(name);
    }
}

Environment_setting::~Environment_setting()
{
    if (m_previous) {
        ::setenv(m_name.c_str(), m_previous->c_str(), 1);
    } else {
        ::unsetenv(m_name.c_str());
    }
}
