#include "file_io.hpp"

#include "input_source.hpp"
#include "output_file.hpp"

namespace xvr_color {

std::vector<std::uint8_t> read_file(const std::string& path)
{
    Input_source source(path);
    std::vector<std::uint8_t> bytes;
    source.read_rest(bytes, UINT64_MAX);
    return bytes;
}

void write_file_atomically(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    Output_file(path).commit(bytes);
}

} // namespace xvr_color
