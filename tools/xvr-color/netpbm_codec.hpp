// Reading and writing of the binary netpbm formats that hold RGB: PPM ("P6", maxval 1..65535)
// and PAM ("P7" with DEPTH 3). Samples of maxval 255 and 65535 are kept as they are; any other
// maxval is rescaled to 16 bits with rounding, so that the library always sees full-range data.
#pragma once

#include "image.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace xvr_color {

// True when the bytes begin like a PPM or PAM file of any kind ("P1" to "P7").
bool looks_like_netpbm(const std::vector<std::uint8_t>& bytes);

// Decodes a P6 or P7 file; `name` is used in error messages. Throws Tool_error for a truncated
// or malformed file, a channel count other than 3 and a maxval outside 1..65535.
Image decode_netpbm(const std::vector<std::uint8_t>& bytes, const std::string& name);

// The size of the whole file (header and raster) that the header at the start of `prefix`
// describes; the header is checked as decode_netpbm would check it. Lets a reader take exactly
// that many bytes from a pipe or a huge file, and refuse a bad header before reading on.
std::uint64_t netpbm_file_size(const std::vector<std::uint8_t>& prefix, const std::string& name);

// For a file of maxval 65535 (the common 16-bit case): an image of the header's size whose
// samples are still to be filled with the raw big-endian raster bytes, then put in order by
// finish_16_bit_netpbm. Nothing for any other maxval.
std::optional<Image> start_16_bit_netpbm(const std::vector<std::uint8_t>& prefix, const std::string& name);
void finish_16_bit_netpbm(Image& image);

// The headers that encode_ppm and encode_pam write, and the raster's byte order: a 16-bit
// image whose samples are put in big-endian order in place can be written after its header as
// it lies in memory, without a second copy of the image.
std::string ppm_header(const Image& image);
std::string pam_header(const Image& image);
void samples_to_big_endian(Image& image);

// Encode with maxval 255 (8-bit samples) or 65535 (16-bit samples, big-endian).
std::vector<std::uint8_t> encode_ppm(const Image& image);
std::vector<std::uint8_t> encode_pam(const Image& image);

} // namespace xvr_color
