#include "png_stream.hpp"

#include "image.hpp"
#include "tool_error.hpp"

#include <cstring>

#if XVR_COLOR_HAS_ZLIB
#include <zlib.h>
#endif

namespace xvr_color {

namespace {

constexpr std::size_t signature_size = 8;
constexpr std::size_t chunk_frame = 12; // length, type, CRC
// Ancillary chunks (profiles, metadata, previews) beside the pixel data.
constexpr std::uint64_t ancillary_allowance = 64u << 20;

std::uint32_t big_endian_32(const std::uint8_t* bytes)
{
    return (std::uint32_t(bytes[0]) << 24) | (std::uint32_t(bytes[1]) << 16) |
           (std::uint32_t(bytes[2]) << 8) | bytes[3];
}

[[noreturn]] void truncated(const Input_source& source)
{
    throw Tool_error(source.name() + " is damaged or truncated: it ends inside a PNG chunk");
}

// The most a PNG of this header can need: the filtered rows twice over (stored deflate blocks
// and tiny IDAT chunks cost far less) and the ancillary allowance.
std::uint64_t largest_file_for(const std::uint8_t* header, const Input_source& source)
{
    const std::uint32_t width = big_endian_32(header);
    const std::uint32_t height = big_endian_32(header + 4);
    check_image_size(width, height, source.name());
    const std::uint64_t row_bytes = 1 + std::uint64_t(width) * 8; // RGBA of 16 bits at most
    return 2 * row_bytes * height + ancillary_allowance;
}

// Checks a chunk's CRC (over its type and data) with zlib, which does it several times faster
// than lodepng's own loop; the decoder can then skip its check.
bool crc_matches(const std::uint8_t* chunk, std::uint32_t length)
{
#if XVR_COLOR_HAS_ZLIB
    const uLong crc = crc32(crc32(0, nullptr, 0), chunk + 4, length + 4);
    return crc == big_endian_32(chunk + 8 + length);
#else
    (void)chunk;
    (void)length;
    return true;
#endif
}

} // namespace

bool png_stream_checks_crc()
{
    return XVR_COLOR_HAS_ZLIB != 0;
}

void read_png_stream(Input_source& source, std::vector<std::uint8_t>& bytes)
{
    std::uint64_t position = signature_size;
    std::uint64_t limit = ancillary_allowance;
    for (bool first = true;; first = false) {
        if (!source.fill(bytes, position + 8)) {
            truncated(source);
        }
        const std::uint32_t length = big_endian_32(bytes.data() + position);
        const bool is_header = std::memcmp(bytes.data() + position + 4, "IHDR", 4) == 0;
        const bool is_end = std::memcmp(bytes.data() + position + 4, "IEND", 4) == 0;
        if (length > 0x7fffffffu || (first && (!is_header || length != 13))) {
            throw Tool_error(source.name() + " is not a readable PNG file: its chunks are malformed");
        }
        const std::uint64_t end = position + chunk_frame + length;
        if (first) {
            if (!source.fill(bytes, end)) {
                truncated(source);
            }
            limit = largest_file_for(bytes.data() + position + 8, source);
        }
        if (end > limit) {
            throw Tool_error(source.name() + " is too large: more than " + std::to_string(limit >> 20) +
                             " MiB, beyond what a PNG of its size can hold");
        }
        if (!source.fill(bytes, end)) {
            truncated(source);
        }
        if (!crc_matches(bytes.data() + position, length)) {
            throw Tool_error(source.name() + " is damaged or truncated: the checksum of its " +
                             std::string(reinterpret_cast<const char*>(bytes.data() + position + 4), 4) +
                             " chunk does not match");
        }
        position = end;
        if (is_end) {
            bytes.resize(static_cast<std::size_t>(position));
            return;
        }
    }
}

} // namespace xvr_color
