#include "table_files.hpp"

#include "file_io.hpp"

#include <algorithm>
#include <cctype>

namespace xvr_color {

bool is_cube_file_name(const std::string& path)
{
    const std::string suffix = ".cube";
    if (path.size() < suffix.size()) {
        return false;
    }
    std::string ending = path.substr(path.size() - suffix.size());
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == suffix;
}

Rgb_tables read_table_file(const std::string& path, const Table_shape& shape)
{
    const std::vector<std::uint8_t> bytes = read_file(path);
    const std::string text(bytes.begin(), bytes.end());
    if (is_cube_file_name(path)) {
        return parse_cube_table(text, path, shape);
    }
    return same_table_for_each_channel(parse_integer_table(text, path, shape));
}

} // namespace xvr_color
