#include "options.hpp"

#include "numbers.hpp"
#include "tool_error.hpp"

#include <cmath>
#include <functional>
#include <map>

namespace xvr_color {

namespace {

std::vector<std::int64_t> parse_integer_list(const std::string& option, const std::string& value)
{
    std::vector<std::int64_t> numbers;
    for (const std::string& item : split_values(value)) {
        std::int64_t number = 0;
        if (!parse_integer(item, number)) {
            throw Usage_error(option + ": '" + item + "' is not an integer");
        }
        numbers.push_back(number);
    }
    return numbers;
}

std::int64_t parse_single_integer(const std::string& option, const std::string& value)
{
    std::vector<std::int64_t> numbers = parse_integer_list(option, value);
    if (numbers.size() != 1) {
        throw Usage_error(option + " takes one integer, got '" + value + "'");
    }
    return numbers[0];
}

Matrix parse_matrix(const std::string& value)
{
    if (value == "identity") {
        return Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};
    }
    std::vector<std::string> items = split_values(value);
    if (items.size() != 9) {
        throw Usage_error("--matrix needs nine values (rows red, green, blue), got " +
                          std::to_string(items.size()));
    }
    Matrix matrix{};
    for (std::size_t i = 0; i < items.size(); ++i) {
        double coefficient = 0.0;
        if (!parse_real(items[i], coefficient) || std::fabs(coefficient) > 1e6) {
            throw Usage_error("--matrix: '" + items[i] +
                              "' is not a number between -1e6 and 1e6");
        }
        matrix[i] = static_cast<float>(coefficient);
    }
    return matrix;
}

Table_choice parse_curve_choice(const std::string& value)
{
    Table_choice choice;
    if (value != "none") {
        choice.source = Table_choice::Source::curve;
        choice.curve = parse_curve(value);
    }
    return choice;
}

Table_choice file_choice(const std::string& path)
{
    Table_choice choice;
    choice.source = Table_choice::Source::file;
    choice.path = path;
    return choice;
}

// The curve and the file option of one table exclude each other.
void set_table_choice(std::optional<Table_choice>& slot, bool& from_file_option, bool is_file,
                      const Table_choice& choice, const char* curve_option,
                      const char* file_option)
{
    if (slot && from_file_option != is_file) {
        throw Usage_error(std::string("give either ") + curve_option + " or " + file_option +
                          ", not both");
    }
    slot = choice;
    from_file_option = is_file;
}

std::array<Clamp_range, 3> parse_clamp(const std::string& value)
{
    std::vector<std::int64_t> numbers = parse_integer_list("--clamp", value);
    if (numbers.size() != 2 && numbers.size() != 6) {
        throw Usage_error("--clamp takes MIN,MAX or six values RMIN,RMAX,GMIN,GMAX,BMIN,BMAX; got " +
                          std::to_string(numbers.size()));
    }
    for (std::int64_t number : numbers) {
        if (number < 0 || number > 65535) {
            throw Usage_error("--clamp: " + std::to_string(number) +
                              " is out of range (0..65535)");
        }
    }
    std::array<Clamp_range, 3> ranges;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        std::size_t first = numbers.size() == 2 ? 0 : 2 * channel;
        ranges[channel].min = static_cast<int>(numbers[first]);
        ranges[channel].max = static_cast<int>(numbers[first + 1]);
    }
    return ranges;
}

std::array<int, 3> parse_shift(const std::string& value)
{
    std::vector<std::int64_t> numbers = parse_integer_list("--shift", value);
    if (numbers.size() != 1 && numbers.size() != 3) {
        throw Usage_error("--shift takes one distance or three (red,green,blue); got " +
                          std::to_string(numbers.size()));
    }
    for (std::int64_t number : numbers) {
        if (number < -15 || number > 15) {
            throw Usage_error("--shift: " + std::to_string(number) +
                              " is out of range (-15..15; negative shifts right)");
        }
    }
    if (numbers.size() == 1) {
        return {static_cast<int>(numbers[0]), static_cast<int>(numbers[0]),
                static_cast<int>(numbers[0])};
    }
    return {static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
            static_cast<int>(numbers[2])};
}

Vector_choice parse_vector(const std::string& value)
{
    Vector_choice choice;
    if (value == "auto") {
        return choice;
    }
    if (value == "0" || value == "1" || value == "2") {
        choice.automatic = false;
        choice.level = value[0] - '0';
        return choice;
    }
    throw Usage_error("--vector takes auto, 0 (scalar), 1 (SSE) or 2 (AVX2); got '" + value + "'");
}

int parse_in_range(const std::string& option, const std::string& value, int low, int high)
{
    std::int64_t number = parse_single_integer(option, value);
    if (number < low || number > high) {
        throw Usage_error(option + ": " + value + " is out of range (" + std::to_string(low) +
                          ".." + std::to_string(high) + ")");
    }
    return static_cast<int>(number);
}

int parse_output_bits(const std::string& value)
{
    std::int64_t bits = parse_single_integer("--bits", value);
    if (bits != 8 && bits != 16) {
        throw Usage_error("--bits: unsupported output bit depth " + value + "; use 8 or 16");
    }
    return static_cast<int>(bits);
}

// Parses the arguments one by one; options take their value as the next argument or after '='.
class Command_line_parser {
public:
    explicit Command_line_parser(const std::vector<std::string>& arguments)
        : m_arguments(arguments)
    {
    }

    Options parse()
    {
        while (m_next < m_arguments.size()) {
            const std::string argument = m_arguments[m_next++];
            if (argument == "-h" || argument == "--help") {
                m_options.show_help = true;
            } else if (argument.size() > 1 && argument[0] == '-') {
                parse_option(argument);
            } else {
                set_input(argument);
            }
        }
        return m_options;
    }

private:
    void set_input(const std::string& path)
    {
        if (!m_options.input_path.empty()) {
            throw Usage_error("only one input file can be given (got '" +
                              m_options.input_path + "' and '" + path + "')");
        }
        m_options.input_path = path;
    }

    std::string take_value(const std::string& name, const std::optional<std::string>& inline_value)
    {
        if (inline_value) {
            return *inline_value;
        }
        if (m_next >= m_arguments.size()) {
            throw Usage_error(name + " needs a value (see --help)");
        }
        return m_arguments[m_next++];
    }

    void parse_option(const std::string& argument)
    {
        std::string name = argument;
        std::optional<std::string> inline_value;
        std::size_t equals = argument.find('=');
        if (argument.compare(0, 2, "--") == 0 && equals != std::string::npos) {
            name = argument.substr(0, equals);
            inline_value = argument.substr(equals + 1);
        }
        const std::string value_name = name == "-o" ? "--output" : name;
        auto handler = handlers().find(value_name);
        if (handler == handlers().end()) {
            throw Usage_error("unknown option '" + argument + "' (see --help)");
        }
        handler->second(*this, take_value(name, inline_value));
    }

    using Handler = std::function<void(Command_line_parser&, const std::string&)>;

    static const std::map<std::string, Handler>& handlers()
    {
        static const std::map<std::string, Handler> table = {
            {"--output", [](Command_line_parser& p, const std::string& v) {
                 if (v.empty()) {
                     throw Usage_error("--output needs a file name");
                 }
                 p.m_options.output_path = v;
             }},
            {"--matrix", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.matrices.push_back(parse_matrix(v));
             }},
            {"--input-curve", [](Command_line_parser& p, const std::string& v) {
                 set_table_choice(p.m_options.input_table, p.m_input_table_from_file, false,
                                  parse_curve_choice(v), "--input-curve", "--input-table");
             }},
            {"--input-table", [](Command_line_parser& p, const std::string& v) {
                 set_table_choice(p.m_options.input_table, p.m_input_table_from_file, true,
                                  file_choice(v), "--input-curve", "--input-table");
             }},
            {"--output-curve", [](Command_line_parser& p, const std::string& v) {
                 set_table_choice(p.m_options.output_table, p.m_output_table_from_file, false,
                                  parse_curve_choice(v), "--output-curve", "--output-table");
             }},
            {"--output-table", [](Command_line_parser& p, const std::string& v) {
                 set_table_choice(p.m_options.output_table, p.m_output_table_from_file, true,
                                  file_choice(v), "--output-curve", "--output-table");
             }},
            {"--output-table-bits", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.output_table_bits = parse_in_range("--output-table-bits", v, 1, 16);
             }},
            {"--clamp", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.clamp = parse_clamp(v);
             }},
            {"--shift", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.shift = parse_shift(v);
             }},
            {"--bits", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.output_bits = parse_output_bits(v);
             }},
            {"--vector", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.vector = parse_vector(v);
             }},
            {"--repeat", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.repeat = parse_in_range("--repeat", v, 1, 1000000);
             }},
        };
        return table;
    }

    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 0;
    Options m_options;
    bool m_input_table_from_file = false;
    bool m_output_table_from_file = false;
};

} // namespace

Options parse_options(const std::vector<std::string>& arguments)
{
    return Command_line_parser(arguments).parse();
}

} // namespace xvr_color
