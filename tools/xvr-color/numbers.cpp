#include "numbers.hpp"

#include <charconv>
#include <cmath>

namespace xvr_color {

namespace {

// from_chars takes no leading '+', which people do type ("--shift +4").
std::string_view without_plus(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') {
        text.remove_prefix(1);
    }
    return text;
}

template <typename Number> Number_parse parse_whole(std::string_view text, Number& value)
{
    text = without_plus(text);
    Number parsed{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (text.empty() || end != text.data() + text.size() ||
        error == std::errc::invalid_argument) {
        return Number_parse::not_a_number;
    }
    if (error == std::errc::result_out_of_range) {
        return Number_parse::out_of_range;
    }
    value = parsed;
    return Number_parse::ok;
}

} // namespace

Number_parse parse_integer(std::string_view text, std::int64_t& value)
{
    return parse_whole(text, value);
}

Number_parse parse_unsigned(std::string_view text, std::uint64_t& value)
{
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
        return Number_parse::not_a_number;
    }
    return parse_whole(text, value);
}

bool parse_integer(const std::string& text, std::int64_t& value)
{
    return parse_integer(std::string_view(text), value) == Number_parse::ok;
}

bool parse_real(const std::string& text, double& value)
{
    // General format only: from_chars would also read "inf", "nan" and hexadecimal digits.
    if (text.find_first_not_of("0123456789+-.eE") != std::string::npos) {
        return false;
    }
    double parsed = 0.0;
    if (parse_whole(std::string_view(text), parsed) != Number_parse::ok || !std::isfinite(parsed)) {
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
