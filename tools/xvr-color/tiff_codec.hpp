// Reading and writing of RGB TIFF files with 8- or 16-bit samples, through libtiff. A build
// without libtiff still compiles this interface; its calls then say that TIFF support is
// missing and how to get it.
#pragma once

#include "image.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

enum class Tiff_compression { none, deflate, lzw };

// Throws Tool_error, saying how to get TIFF support, when this build has none.
void require_tiff_support();

// "LIBTIFF, Version 4.5.0" or "built without TIFF support".
std::string tiff_support_description();

// True when the bytes begin with a TIFF (or BigTIFF) header in either byte order.
bool looks_like_tiff(const std::vector<std::uint8_t>& bytes);

// Decodes the first image of a TIFF file held in memory, or of the open regular file
// `descriptor` (read where libtiff needs, not whole); `name` is used in messages. Accepts RGB,
// 8 or 16 bits, contiguous or planar samples, strips or tiles, and every compression libtiff
// decodes; keeps the ICC profile. Throws Tool_error for anything else and std::bad_alloc when
// libtiff runs out of memory.
Image decode_tiff(const std::vector<std::uint8_t>& bytes, const std::string& name);
Image decode_tiff_file(int descriptor, const std::string& name);

// Encodes contiguous RGB with the image's depth and ICC profile; deflate and LZW use the
// horizontal predictor, which makes photographs noticeably smaller.
std::vector<std::uint8_t> encode_tiff(const Image& image, Tiff_compression compression);

// The same, written through the open file `descriptor` (libtiff seeks in it), with no copy of
// the file in memory. Throws Tool_error when writing fails.
void write_tiff_file(const Image& image, Tiff_compression compression, int descriptor);

} // namespace xvr_color
