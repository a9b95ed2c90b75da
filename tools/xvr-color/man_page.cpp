#include "man_page.hpp"

#include <sstream>
#include <vector>

namespace xvr_color {

namespace {

constexpr std::size_t description_column = 26;

std::string roff_text(const std::string& text)
{
    std::string escaped;
    for (char c : text) {
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
    }
    if (!escaped.empty() && (escaped[0] == '.' || escaped[0] == '\'')) {
        escaped.insert(0, "\\&");
    }
    return escaped;
}

std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin);
}

bool is_heading(const std::string& line)
{
    return !line.empty() && line.size() < 40 && line[0] != ' ' && line.back() == ':';
}

bool is_option_line(const std::string& line)
{
    return line.size() > 2 && line.compare(0, 2, "  ") == 0 && line[2] != ' ';
}

} // namespace

std::string man_page_from_help(const std::string& help, const std::string& version)
{
    std::istringstream lines(help);
    std::ostringstream page;
    page << ".TH XVR\\-COLOR 1 \"\" \"xvr-color " << version << "\" \"User Commands\"\n"
         << ".SH NAME\nxvr\\-color \\- colour\\-correct RGB images with libcorvane_xvr_color_processing\n"
         << ".SH SYNOPSIS\n";
    enum class Part { synopsis, description, options, notes } part = Part::synopsis;
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("Usage: ", 0) == 0 || line.rfind("       xvr-color", 0) == 0) {
            page << ".B " << roff_text(trimmed(line.substr(line[0] == 'U' ? 7 : 0))) << "\n.br\n";
        } else if (line.empty()) {
            page << (part == Part::options ? "" : ".PP\n");
        } else if (is_heading(line)) {
            if (part != Part::options) {
                page << ".SH OPTIONS\n";
                part = Part::options;
            }
            page << ".SS " << roff_text(line.substr(0, line.size() - 1)) << "\n";
        } else if (part == Part::options && is_option_line(line)) {
            const std::string term = trimmed(line.substr(0, description_column));
            page << ".TP\n.B " << roff_text(term.substr(0, term.find_last_not_of(' ') + 1)) << "\n";
            if (line.size() > description_column && line[description_column - 1] == ' ') {
                page << roff_text(trimmed(line.substr(description_column))) << "\n";
            }
        } else {
            if (part == Part::synopsis) {
                page << ".SH DESCRIPTION\n";
                part = Part::description;
            } else if (part == Part::options && line[0] != ' ') {
                page << ".SH NOTES\n";
                part = Part::notes;
            }
            if (line.rfind("Exit status", 0) == 0) {
                page << ".SH EXIT STATUS\n";
            }
            page << roff_text(trimmed(line)) << "\n";
        }
    }
    return page.str();
}

} // namespace xvr_color
