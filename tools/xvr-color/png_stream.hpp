// The chunk structure of a PNG file, walked while it is read: the IHDR chunk is checked before
// anything else is read, and the file may be no larger than its image could possibly need, so
// a PNG header in front of an endless stream does not make the program read on for ever.
#pragma once

#include "input_source.hpp"

#include <cstdint>
#include <vector>

namespace xvr_color {

// `bytes` holds the first bytes read (at least the signature); reads the rest of the file up to
// and including its IEND chunk. Throws Tool_error for a truncated or oversized file and an
// image size out of range.
void read_png_stream(Input_source& source, std::vector<std::uint8_t>& bytes);

// Whether read_png_stream has checked every chunk's CRC (it does when built with zlib).
bool png_stream_checks_crc();

} // namespace xvr_color
