// The plain table format: one integer entry per line.
#include "table_files.hpp"

#include "numbers.hpp"
#include "tool_error.hpp"

#include <sstream>

namespace xvr_color {

namespace {

std::string entry_count_text(std::size_t entries)
{
    std::string text = std::to_string(entries);
    for (int bits = 0; bits <= 16; ++bits) {
        if (entries == (std::size_t(1) << bits)) {
            return text + " (2^" + std::to_string(bits) + ")";
        }
    }
    return text;
}

std::int32_t parse_entry(const std::string& line, const std::string& where,
                         const Table_shape& shape)
{
    std::int64_t value = 0;
    if (!parse_integer(line, value)) {
        throw Tool_error(where + ": '" + line + "' is not an integer");
    }
    if (value < 0 || value > shape.max_value) {
        throw Tool_error(where + ": " + line + " is outside the range of " + shape.role +
                         " (0.." + std::to_string(shape.max_value) + ")");
    }
    return static_cast<std::int32_t>(value);
}

} // namespace

Lookup_table parse_integer_table(const std::string& text, const std::string& name,
                                 const Table_shape& shape)
{
    Lookup_table table;
    table.reserve(shape.entries);
    std::istringstream lines(text);
    std::string line;
    std::size_t line_number = 0;
    while (std::getline(lines, line)) {
        ++line_number;
        line = trim(line);
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::string where = name + " line " + std::to_string(line_number);
        if (table.size() == shape.entries) {
            throw Tool_error(name + " has more than the " + entry_count_text(shape.entries) +
                             " entries of " + shape.role + " (" + where + " is one too many)");
        }
        table.push_back(parse_entry(line, where, shape));
    }
    if (table.size() != shape.entries) {
        throw Tool_error(name + " has " + std::to_string(table.size()) + " entries; " +
                         shape.role + " needs " + entry_count_text(shape.entries));
    }
    return table;
}

} // namespace xvr_color
