// Strict parsing of the numbers that users type on the command line and write in table files:
// the whole text must be the number, so "12abc", "" and "1e999" are refused, not half-read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

// Decimal integer with an optional sign; false when the text is anything else or out of range.
bool parse_integer(const std::string& text, std::int64_t& value);

// Decimal real number; false for anything else, including infinities and NaN.
bool parse_real(const std::string& text, double& value);

// Splits "a,b c" at commas and blanks; empty items between separators are dropped.
std::vector<std::string> split_values(const std::string& text);

// The text without leading and trailing blanks (spaces, tabs, carriage returns).
std::string trim(const std::string& text);

} // namespace xvr_color
