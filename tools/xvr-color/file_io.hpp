// Whole-file reading and writing. A file is written under a temporary name in the same folder
// and renamed into place only when every byte is on disk, so a failed run never leaves a
// half-written output behind and never damages a file that was there before.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

// Throws Tool_error naming the file and the system's reason when it cannot be read.
std::vector<std::uint8_t> read_file(const std::string& path);

// Throws Tool_error naming the file and the reason; the target is then untouched and the
// temporary file is removed.
void write_file_atomically(const std::string& path, const std::vector<std::uint8_t>& bytes);

} // namespace xvr_color
