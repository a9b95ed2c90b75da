#include "image_files.hpp"

#include "file_io.hpp"
#include "netpbm_codec.hpp"
#include "png_codec.hpp"
#include "tool_error.hpp"

#include <algorithm>
#include <cctype>

namespace xvr_color {

namespace {

std::string lower_case_extension(const std::string& path)
{
    std::size_t slash = path.find_last_of('/');
    std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
        return "";
    }
    std::string extension = path.substr(dot);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

} // namespace

Image_file_format output_format_for(const std::string& path)
{
    const std::string extension = lower_case_extension(path);
    if (extension == ".png") {
        return Image_file_format::png;
    }
    if (extension == ".ppm" || extension == ".pnm") {
        return Image_file_format::ppm;
    }
    if (extension == ".pam") {
        return Image_file_format::pam;
    }
    throw Usage_error("cannot tell the output format of '" + path +
                      "': name it .png, .ppm or .pam");
}

const char* format_name(Image_file_format format)
{
    switch (format) {
    case Image_file_format::png:
        return "PNG";
    case Image_file_format::ppm:
        return "PPM";
    case Image_file_format::pam:
        return "PAM";
    }
    return "?";
}

Image read_image_file(const std::string& path)
{
    const std::vector<std::uint8_t> bytes = read_file(path);
    if (bytes.empty()) {
        throw Tool_error(path + " is empty");
    }
    if (looks_like_png(bytes)) {
        return decode_png(bytes, path);
    }
    if (looks_like_netpbm(bytes)) {
        return decode_netpbm(bytes, path);
    }
    throw Tool_error(path + " is not a PNG, PPM or PAM file");
}

void write_image_file(const std::string& path, const Image& image)
{
    switch (output_format_for(path)) {
    case Image_file_format::png:
        write_file_atomically(path, encode_png(image));
        break;
    case Image_file_format::ppm:
        write_file_atomically(path, encode_ppm(image));
        break;
    case Image_file_format::pam:
        write_file_atomically(path, encode_pam(image));
        break;
    }
}

} // namespace xvr_color
