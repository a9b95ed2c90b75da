#include "image_files.hpp"

#include "file_io.hpp"
#include "netpbm_codec.hpp"
#include "png_codec.hpp"
#include "png_stream.hpp"
#include "tool_error.hpp"

#include <algorithm>
#include <cctype>

namespace xvr_color {

namespace {

// A netpbm header longer than this is not a header: its comments would be pages long.
constexpr std::uint64_t netpbm_header_limit = 65536;

// A TIFF from a pipe has to be held whole before libtiff can look at it; a file larger than the
// largest raw image and generous room for its tags is no image this program could take.
constexpr std::uint64_t tiff_stream_limit = max_pixel_count * 6 + (64u << 20);

std::string lower_case_extension(const std::string& path)
{
    std::size_t slash = path.find_last_of('/');
    std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
        return "";
    }
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

Image read_netpbm(Input_source& source, std::vector<std::uint8_t>& bytes)
{
    source.fill(bytes, netpbm_header_limit);
    const std::uint64_t size = netpbm_file_size(bytes, source.name());
    if (bytes.size() > size) {
        bytes.resize(static_cast<std::size_t>(size));
    }
    // 16-bit rasters are read straight into the samples, saving a copy of the whole image.
    if (auto image = start_16_bit_netpbm(bytes, source.name())) {
        const std::size_t raster_offset = static_cast<std::size_t>(size - image->samples.size() * 2);
        auto* raster = reinterpret_cast<std::uint8_t*>(image->samples.data());
        const std::size_t held = bytes.size() - raster_offset;
        std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(raster_offset), bytes.end(), raster);
        const std::size_t wanted = image->samples.size() * 2;
        const std::size_t got = held + source.read_into(raster + held, wanted - held);
        if (got < wanted) {
            throw Tool_error(source.name() + " is truncated: it holds " + std::to_string(got) + " of " +
                             std::to_string(wanted) + " bytes of pixel data");
        }
        finish_16_bit_netpbm(*image);
        return std::move(*image);
    }
    source.fill(bytes, size);
    return decode_netpbm(bytes, source.name());
}

Image read_tiff(Input_source& source, std::vector<std::uint8_t>& bytes)
{
    if (source.is_regular_file()) {
        return decode_tiff_file(source.descriptor(), source.name());
    }
    source.read_rest(bytes, tiff_stream_limit);
    return decode_tiff(bytes, source.name());
}

} // namespace

std::optional<Image_file_format> format_named(const std::string& name)
{
    if (name == "png") {
        return Image_file_format::png;
    }
    if (name == "tiff" || name == "tif") {
        return Image_file_format::tiff;
    }
    if (name == "ppm" || name == "pnm") {
        return Image_file_format::ppm;
    }
    if (name == "pam") {
        return Image_file_format::pam;
    }
    return std::nullopt;
}

Image_file_format output_format_for(const std::string& path)
{
    if (const auto format = format_named(lower_case_extension(path))) {
        return *format;
    }
    throw Usage_error("cannot tell the output format of '" + path +
                      "': name it .png, .tif, .ppm or .pam, or give --format");
}

const char* format_name(Image_file_format format)
{
    switch (format) {
    case Image_file_format::png:
        return "PNG";
    case Image_file_format::tiff:
        return "TIFF";
    case Image_file_format::ppm:
        return "PPM";
    case Image_file_format::pam:
        return "PAM";
    }
    return "?";
}

const char* format_extension(Image_file_format format)
{
    switch (format) {
    case Image_file_format::png:
        return "png";
    case Image_file_format::tiff:
        return "tif";
    case Image_file_format::ppm:
        return "ppm";
    case Image_file_format::pam:
        return "pam";
    }
    return "?";
}

bool format_holds_profile(Image_file_format format)
{
    return format == Image_file_format::png || format == Image_file_format::tiff;
}

void require_support_for(Image_file_format format)
{
    try {
        if (format == Image_file_format::png) {
            require_png_support();
        } else if (format == Image_file_format::tiff) {
            require_tiff_support();
        }
    } catch (const Tool_error& error) {
        throw Usage_error(error.what());
    }
}

Image read_image(Input_source& source, Image_file_format* format_read)
{
    std::vector<std::uint8_t> bytes;
    source.fill(bytes, 8);
    if (bytes.empty()) {
        throw Tool_error(source.name() + " is empty");
    }
    Image_file_format format = Image_file_format::ppm;
    Image image;
    if (looks_like_png(bytes)) {
        format = Image_file_format::png;
        read_png_stream(source, bytes);
        image = decode_png(bytes, source.name(), png_stream_checks_crc());
    } else if (looks_like_tiff(bytes)) {
        format = Image_file_format::tiff;
        image = read_tiff(source, bytes);
    } else if (looks_like_netpbm(bytes)) {
        format = bytes[1] == '7' ? Image_file_format::pam : Image_file_format::ppm;
        image = read_netpbm(source, bytes);
    } else {
        throw Tool_error(source.name() + " is not a PNG, TIFF, PPM or PAM file");
    }
    if (format_read != nullptr) {
        *format_read = format;
    }
    return image;
}

Image read_image_file(const std::string& path)
{
    Input_source source(path);
    return read_image(source);
}

std::vector<std::uint8_t> encode_image(const Image& image, Image_file_format format,
                                       const Encoding_settings& settings)
{
    switch (format) {
    case Image_file_format::png:
        return encode_png(image, settings.threads);
    case Image_file_format::tiff:
        return encode_tiff(image, settings.tiff_compression);
    case Image_file_format::ppm:
        return encode_ppm(image);
    case Image_file_format::pam:
        break;
    }
    return encode_pam(image);
}

void write_image(Output_file& output, Image&& image, Image_file_format format, const Encoding_settings& settings)
{
    const bool netpbm = format == Image_file_format::ppm || format == Image_file_format::pam;
    if (netpbm && image.sample_bits == 16) {
        const std::string header = format == Image_file_format::ppm ? ppm_header(image) : pam_header(image);
        samples_to_big_endian(image);
        output.commit({{header.data(), header.size()}, {image.samples.data(), image.samples.size() * 2}});
        return;
    }
    if (format == Image_file_format::png) {
        write_png(output, std::move(image), settings.threads);
        return;
    }
    if (format == Image_file_format::tiff && output.descriptor() >= 0) {
        write_tiff_file(image, settings.tiff_compression, output.descriptor());
        output.commit_written();
        return;
    }
    output.commit(encode_image(image, format, settings));
}

void write_image_file(const std::string& path, const Image& image)
{
    write_file_atomically(path, encode_image(image, output_format_for(path), Encoding_settings{}));
}

} // namespace xvr_color
