// Image files: the reader recognises PNG, TIFF, PPM and PAM by their first bytes and reads no
// further than the header it has checked allows; the writer encodes in the format asked for.
#pragma once

#include "image.hpp"
#include "input_source.hpp"
#include "output_file.hpp"
#include "tiff_codec.hpp"

#include <optional>
#include <string>

namespace xvr_color {

enum class Image_file_format { png, tiff, ppm, pam };

// How files are encoded besides their format.
struct Encoding_settings {
    Tiff_compression tiff_compression = Tiff_compression::none;
    unsigned threads = 1; // for PNG compression
};

// ".png", ".tif"/".tiff", ".ppm" (also ".pnm") or ".pam", in any letter case; throws
// Usage_error otherwise.
Image_file_format output_format_for(const std::string& path);

// "png", "tiff" (or "tif"), "ppm", "pam" as typed after --format; nothing for another word.
std::optional<Image_file_format> format_named(const std::string& name);

const char* format_name(Image_file_format format); // "PNG"
const char* format_extension(Image_file_format format); // "png"

// Whether files of the format can carry an ICC profile.
bool format_holds_profile(Image_file_format format);

// Throws Usage_error, saying how to get it, when this build cannot write the format.
void require_support_for(Image_file_format format);

// Reads one image; throws Tool_error when the input is missing, unreadable, not a supported
// image, or larger than its header allows; std::bad_alloc when memory runs out.
Image read_image(Input_source& source, Image_file_format* format_read = nullptr);

// Reads the image file at `path` ("-" for standard input).
Image read_image_file(const std::string& path);

std::vector<std::uint8_t> encode_image(const Image& image, Image_file_format format,
                                       const Encoding_settings& settings);

// Encodes and writes the image, reusing its memory where the format allows (16-bit PPM and PAM
// are written from the samples put in file order in place, PNG is encoded from them; TIFF goes
// straight into the file).
void write_image(Output_file& output, Image&& image, Image_file_format format, const Encoding_settings& settings);

// Encodes the image in the format the name asks for and writes it atomically.
void write_image_file(const std::string& path, const Image& image);

} // namespace xvr_color
