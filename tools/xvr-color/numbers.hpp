// Strict parsing of the numbers that users type on the command line and write in table files:
// the whole text must be the number, so "12abc", "" and "1e999" are refused, not half-read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xvr_color {

enum class Number_parse { ok, not_a_number, out_of_range };

// Decimal integers with std::from_chars; the unsigned form refuses any sign. A number too large
// for the type is told apart from text that is no number at all, so a message can say which.
Number_parse parse_integer(std::string_view text, std::int64_t& value);
Number_parse parse_unsigned(std::string_view text, std::uint64_t& value);

// Decimal integer with an optional sign; false when the text is anything else or out of range.
bool parse_integer(const std::string& text, std::int64_t& value);

// Decimal real number; false for anything else, including infinities and NaN.
bool parse_real(const std::string& text, double& value);

// Splits "a,b c" at commas and blanks; empty items between separators are dropped.
std::vector<std::string> split_values(const std::string& text);

// The text without leading and trailing blanks (spaces, tabs, carriage returns).
std::string trim(const std::string& text);

} // namespace xvr_color
