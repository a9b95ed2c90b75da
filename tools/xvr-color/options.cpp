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
        switch (parse_integer(std::string_view(item), number)) {
        case Number_parse::ok:
            break;
        case Number_parse::out_of_range:
            number = item[0] == '-' ? INT64_MIN : INT64_MAX; // reported by the range check
            break;
        case Number_parse::not_a_number:
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
        throw Usage_error(option + ": " + trim(value) + " is out of range (" + std::to_string(low) +
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

Tiff_compression parse_compression(const std::string& value)
{
    if (value == "none") {
        return Tiff_compression::none;
    }
    if (value == "deflate" || value == "zip") {
        return Tiff_compression::deflate;
    }
    if (value == "lzw") {
        return Tiff_compression::lzw;
    }
    throw Usage_error("--compression takes none, deflate or lzw; got '" + value + "'");
}

Image_file_format parse_format(const std::string& value)
{
    if (const auto format = format_named(value)) {
        return *format;
    }
    throw Usage_error("--format takes png, tiff, ppm or pam; got '" + value + "'");
}

std::string parse_name_pattern(const std::string& value)
{
    if (value.find("{name}") == std::string::npos || value.find('/') != std::string::npos) {
        throw Usage_error("--name needs a file name containing {name} (and no '/'), e.g. "
                          "'{name}-corrected.{ext}'; got '" + value + "'");
    }
    return value;
}

std::string non_empty(const char* option, const std::string& value)
{
    if (value.empty()) {
        throw Usage_error(std::string(option) + " needs a file name");
    }
    return value;
}

// Parses the arguments one by one, with the usual conventions: a long option takes its value
// as the next argument or after '=', a short one as the next argument or attached ("-oout.png"),
// short flags may be grouped ("-qh"), "-" is an operand (standard input or output) and "--"
// ends the options.
class Command_line_parser {
public:
    explicit Command_line_parser(const std::vector<std::string>& arguments)
        : m_arguments(arguments)
    {
    }

    Options parse()
    {
        bool options_ended = false;
        while (m_next < m_arguments.size()) {
            const std::string argument = m_arguments[m_next++];
            if (options_ended || argument == "-" || argument.empty() || argument[0] != '-') {
                m_options.inputs.push_back(argument);
            } else if (argument == "--") {
                options_ended = true;
            } else if (argument[1] == '-') {
                parse_long_option(argument);
            } else {
                parse_short_options(argument);
            }
        }
        return m_options;
    }

private:
    using Handler = std::function<void(Command_line_parser&, const std::string&)>;
    using Flag = std::function<void(Options&)>;

    std::string next_value(const std::string& name)
    {
        if (m_next >= m_arguments.size()) {
            throw Usage_error(name + " needs a value (see --help)");
        }
        return m_arguments[m_next++];
    }

    void parse_long_option(const std::string& argument)
    {
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (const auto flag = flags().find(name); flag != flags().end()) {
            if (equals != std::string::npos) {
                throw Usage_error(name + " takes no value");
            }
            flag->second(m_options);
            return;
        }
        const auto handler = handlers().find(name);
        if (handler == handlers().end()) {
            throw Usage_error("unknown option '" + argument + "' (see --help)");
        }
        handler->second(*this, equals != std::string::npos ? argument.substr(equals + 1) : next_value(name));
    }

    void parse_short_options(const std::string& argument)
    {
        for (std::size_t i = 1; i < argument.size(); ++i) {
            const std::string name = "-" + argument.substr(i, 1);
            if (const auto flag = flags().find(name); flag != flags().end()) {
                flag->second(m_options);
                continue;
            }
            if (name == "-o") {
                const std::string rest = argument.substr(i + 1);
                handlers().at("--output")(*this, rest.empty() ? next_value(name) : rest);
                return;
            }
            throw Usage_error("unknown option '" + name + "'" +
                              (argument.size() > 2 ? " in '" + argument + "'" : "") + " (see --help)");
        }
    }

    static const std::map<std::string, Flag>& flags()
    {
        static const std::map<std::string, Flag> table = {
            {"-h", [](Options& o) { o.show_help = true; }},
            {"--help", [](Options& o) { o.show_help = true; }},
            {"--version", [](Options& o) { o.show_version = true; }},
            {"-q", [](Options& o) { o.quiet = true; }},
            {"--quiet", [](Options& o) { o.quiet = true; }},
            {"--in-place", [](Options& o) { o.in_place = true; }},
            {"--keep-profile", [](Options& o) { o.keep_profile = true; }},
        };
        return table;
    }

    static const std::map<std::string, Handler>& handlers()
    {
        static const std::map<std::string, Handler> table = {
            {"--output", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.output_path = non_empty("--output", v);
             }},
            {"--output-dir", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.output_dir = non_empty("--output-dir", v);
             }},
            {"--name", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.name_pattern = parse_name_pattern(v);
             }},
            {"--format", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.format = parse_format(v);
             }},
            {"--compression", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.tiff_compression = parse_compression(v);
             }},
            {"--output-profile", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.output_profile_path = non_empty("--output-profile", v);
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
            {"--threads", [](Command_line_parser& p, const std::string& v) {
                 p.m_options.threads = static_cast<unsigned>(parse_in_range("--threads", v, 1, 256));
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
