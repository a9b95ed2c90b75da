// Image files by name: the reader recognises PNG, PPM and PAM by their first bytes, the writer
// chooses the format from the file name's extension.
#pragma once

#include "image.hpp"

#include <string>

namespace xvr_color {

enum class Image_file_format { png, ppm, pam };

// ".png", ".ppm" (also ".pnm") or ".pam", in any letter case; throws Usage_error otherwise.
Image_file_format output_format_for(const std::string& path);

const char* format_name(Image_file_format format);

// Throws Tool_error when the file is missing, unreadable or not a supported image.
Image read_image_file(const std::string& path);

// Encodes the image in the format the name asks for and writes it atomically.
void write_image_file(const std::string& path, const Image& image);

} // namespace xvr_color
