#include "numbers.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace xvr_color {

bool parse_integer(const std::string& text, std::int64_t& value)
{
    if (text.empty() || text.size() > 20) {
        return false;
    }
    std::size_t position = (text[0] == '-' || text[0] == '+') ? 1 : 0;
    if (position == text.size()) {
        return false;
    }
    for (std::size_t i = position; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
    }
    errno = 0;
    long long parsed = std::strtoll(text.c_str(), nullptr, 10);
    if (errno == ERANGE) {
        return false;
    }
    value = parsed;
    return true;
}

bool parse_real(const std::string& text, double& value)
{
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) {
        return false; // also keeps out strtod's "inf", "nan" and hexadecimal forms
    }
    char* end = nullptr;
    errno = 0;
    double parsed = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || errno == ERANGE || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

std::vector<std::string> split_values(const std::string& text)
{
    std::vector<std::string> items;
    std::string current;
    for (char c : text) {
        if (c == ',' || c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            if (!current.empty()) {
                items.push_back(current);
                current.clear();
            }
        } else {
            current += c;
        }
    }
    if (!current.empty()) {
        items.push_back(current);
    }
    return items;
}

std::string trim(const std::string& text)
{
    const char* blanks = " \t\r\n";
    std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos) {
        return "";
    }
    std::size_t end = text.find_last_not_of(blanks);
    return text.substr(begin, end - begin + 1);
}

} // namespace xvr_color
