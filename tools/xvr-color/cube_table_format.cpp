// 1D cube files: a header of keywords, then one red, green, blue triple per line.
#include "table_files.hpp"

#include "numbers.hpp"
#include "tool_error.hpp"

#include <array>
#include <cmath>
#include <sstream>

namespace xvr_color {

namespace {

using Triple = std::array<double, 3>;

struct Cube_contents {
    std::size_t declared_size = 0;
    Triple domain_min{0.0, 0.0, 0.0};
    Triple domain_max{1.0, 1.0, 1.0};
    std::vector<Triple> rows;
};

class Cube_parser {
public:
    explicit Cube_parser(const std::string& name) : m_name(name) {}

    Cube_contents parse(const std::string& text)
    {
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            ++m_line_number;
            line = trim(line);
            if (line.empty() || line[0] == '#') {
                continue;
            }
            if (std::isalpha(static_cast<unsigned char>(line[0]))) {
                parse_keyword_line(line);
            } else {
                parse_data_line(line);
            }
        }
        check_complete();
        return m_contents;
    }

private:
    std::string where() const { return m_name + " line " + std::to_string(m_line_number); }

    std::vector<double> numbers_after_keyword(const std::string& line, std::size_t count)
    {
        std::vector<std::string> items = split_values(line);
        const std::string keyword = items.front();
        items.erase(items.begin());
        if (items.size() != count) {
            throw Tool_error(where() + ": " + keyword + " needs " + std::to_string(count) +
                             " numbers");
        }
        std::vector<double> values;
        for (const std::string& item : items) {
            double value = 0.0;
            if (!parse_real(item, value)) {
                throw Tool_error(where() + ": '" + item + "' is not a number");
            }
            values.push_back(value);
        }
        return values;
    }

    void parse_keyword_line(const std::string& line)
    {
        const std::string keyword = split_values(line).front();
        if (keyword == "TITLE") {
            return;
        }
        if (keyword == "LUT_3D_SIZE") {
            throw Tool_error(m_name + " is a 3D cube file; xvr-color takes 1D cube files "
                                      "(LUT_1D_SIZE) for its tables");
        }
        if (!m_contents.rows.empty()) {
            throw Tool_error(where() + ": the keyword " + keyword + " follows table data");
        }
        if (keyword == "LUT_1D_SIZE") {
            parse_size(line);
        } else if (keyword == "DOMAIN_MIN") {
            m_contents.domain_min = to_triple(numbers_after_keyword(line, 3));
        } else if (keyword == "DOMAIN_MAX") {
            m_contents.domain_max = to_triple(numbers_after_keyword(line, 3));
        } else if (keyword == "LUT_1D_INPUT_RANGE") {
            std::vector<double> range = numbers_after_keyword(line, 2);
            m_contents.domain_min = Triple{range[0], range[0], range[0]};
            m_contents.domain_max = Triple{range[1], range[1], range[1]};
        } else {
            throw Tool_error(where() + ": unknown cube keyword '" + keyword + "'");
        }
    }

    void parse_size(const std::string& line)
    {
        std::vector<std::string> items = split_values(line);
        std::int64_t size = 0;
        if (items.size() != 2 || !parse_integer(items[1], size) || size < 2 || size > 65536) {
            throw Tool_error(where() + ": LUT_1D_SIZE must be one integer from 2 to 65536");
        }
        m_contents.declared_size = static_cast<std::size_t>(size);
    }

    void parse_data_line(const std::string& line)
    {
        if (m_contents.declared_size == 0) {
            throw Tool_error(where() + ": table data before LUT_1D_SIZE");
        }
        std::vector<std::string> items = split_values(line);
        if (items.size() != 3) {
            throw Tool_error(where() + ": expected three numbers (red green blue), found " +
                             std::to_string(items.size()) + " items");
        }
        Triple row{};
        for (std::size_t channel = 0; channel < 3; ++channel) {
            if (!parse_real(items[channel], row[channel])) {
                throw Tool_error(where() + ": '" + items[channel] + "' is not a number");
            }
        }
        m_contents.rows.push_back(row);
    }

    static Triple to_triple(const std::vector<double>& values)
    {
        return Triple{values[0], values[1], values[2]};
    }

    void check_complete() const
    {
        if (m_contents.declared_size == 0) {
            throw Tool_error(m_name + " has no LUT_1D_SIZE line; it is not a 1D cube file");
        }
        if (m_contents.rows.size() != m_contents.declared_size) {
            throw Tool_error(m_name + " has " + std::to_string(m_contents.rows.size()) +
                             " entries, but its LUT_1D_SIZE says " +
                             std::to_string(m_contents.declared_size));
        }
        for (std::size_t channel = 0; channel < 3; ++channel) {
            if (!(m_contents.domain_min[channel] < m_contents.domain_max[channel])) {
                throw Tool_error(m_name + ": its domain minimum is not below its maximum");
            }
        }
    }

    const std::string& m_name;
    std::size_t m_line_number = 0;
    Cube_contents m_contents;
};

// The cube's value at a position of the table's input range (0..1), interpolated linearly
// between the two nearest rows; positions outside the cube's domain take its end rows.
double sample_cube(const Cube_contents& cube, std::size_t channel, double position)
{
    const double low = cube.domain_min[channel];
    const double high = cube.domain_max[channel];
    const double last_row = static_cast<double>(cube.rows.size() - 1);
    double row = (position - low) / (high - low) * last_row;
    row = row < 0.0 ? 0.0 : (row > last_row ? last_row : row);
    const std::size_t below = static_cast<std::size_t>(std::floor(row));
    const std::size_t above = below + 1 < cube.rows.size() ? below + 1 : below;
    const double fraction = row - static_cast<double>(below);
    return cube.rows[below][channel] * (1.0 - fraction) + cube.rows[above][channel] * fraction;
}

} // namespace

Rgb_tables parse_cube_table(const std::string& text, const std::string& name,
                            const Table_shape& shape)
{
    const Cube_contents cube = Cube_parser(name).parse(text);
    Rgb_tables tables;
    const double last = static_cast<double>(shape.entries - 1);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        tables[channel].resize(shape.entries);
        for (std::size_t i = 0; i < shape.entries; ++i) {
            const double value = sample_cube(cube, channel, i / last);
            tables[channel][i] = to_table_value(value, shape.max_value);
        }
    }
    return tables;
}

} // namespace xvr_color
