// Reading and writing of RGB PNG files with 8- or 16-bit samples, through lodepng. A build
// without lodepng still compiles this interface; its calls then report that PNG support is
// missing and how to get it.
#pragma once

#include "image.hpp"
#include "output_file.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

// Throws Tool_error, saying how to get PNG support, when this build cannot read and write PNG.
void require_png_support();

// True when the bytes begin with the PNG signature.
bool looks_like_png(const std::vector<std::uint8_t>& bytes);

// "lodepng with zlib 1.2.13" or "built without PNG support".
std::string png_support_description();

// Decodes an RGB PNG of 8 or 16 bits per sample, with its ICC profile (iCCP); `name` is used in
// error messages. Throws Tool_error for a damaged or truncated file, a bit depth other than 8
// and 16 and a colour type other than RGB (grey, grey with alpha, RGBA and palette images are
// refused), and std::bad_alloc when the decoder runs out of memory.
// `crc_checked`: the chunks' CRCs have been checked already, the decoder need not.
Image decode_png(const std::vector<std::uint8_t>& bytes, const std::string& name, bool crc_checked = false);

// Encodes an RGB PNG with the image's sample depth (8 or 16 bits) and ICC profile, compressing
// on up to `threads` threads.
std::vector<std::uint8_t> encode_png(const Image& image, unsigned threads = 1);

// The same, written to `output` from the image's own memory (its samples are reordered in place
// for the encoder, saving a copy of the image).
void write_png(Output_file& output, Image&& image, unsigned threads);

} // namespace xvr_color
