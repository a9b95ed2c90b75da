#include "netpbm_codec.hpp"

#include "numbers.hpp"
#include "tool_error.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace xvr_color {

namespace {

// Walks the text header of a netpbm file; the raster that follows is read by position.
class Header_reader {
public:
    Header_reader(const std::vector<std::uint8_t>& bytes, const std::string& name)
        : m_bytes(bytes), m_name(name)
    {
    }

    std::size_t position() const { return m_position; }

    // A whitespace-separated token of the PPM header; comments run from '#' to the line end.
    std::string next_ppm_token()
    {
        skip_blanks_and_comments();
        std::string token;
        while (m_position < m_bytes.size() && !is_blank(m_bytes[m_position]) &&
               m_bytes[m_position] != '#') {
            token += static_cast<char>(m_bytes[m_position++]);
        }
        if (token.empty()) {
            throw Tool_error(m_name + " is truncated: its header ends early");
        }
        return token;
    }

    // The PPM header ends with exactly one whitespace character before the raster.
    void skip_single_blank()
    {
        if (m_position >= m_bytes.size()) {
            throw Tool_error(m_name + " is truncated: no pixel data after the header");
        }
        if (!is_blank(m_bytes[m_position])) {
            throw Tool_error(m_name + " is malformed: the header is not followed by a blank");
        }
        ++m_position;
    }

    // One line of a PAM header, without its newline; throws when the file ends before it.
    std::string next_line()
    {
        if (m_position >= m_bytes.size()) {
            throw Tool_error(m_name + " is truncated: its header has no ENDHDR line");
        }
        std::string line;
        while (m_position < m_bytes.size() && m_bytes[m_position] != '\n') {
            line += static_cast<char>(m_bytes[m_position++]);
        }
        if (m_position < m_bytes.size()) {
            ++m_position;
        }
        return line;
    }

private:
    static bool is_blank(std::uint8_t c) { return std::isspace(c) != 0; }

    void skip_blanks_and_comments()
    {
        while (m_position < m_bytes.size()) {
            if (is_blank(m_bytes[m_position])) {
                ++m_position;
            } else if (m_bytes[m_position] == '#') {
                while (m_position < m_bytes.size() && m_bytes[m_position] != '\n') {
                    ++m_position;
                }
            } else {
                break;
            }
        }
    }

    const std::vector<std::uint8_t>& m_bytes;
    const std::string& m_name;
    std::size_t m_position = 0;
};

struct Raster_layout {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t maxval = 0;
};

// A header token as it may be quoted in a message: binary bytes of a damaged file would make
// the message unreadable.
std::string printable(const std::string& token)
{
    std::string text;
    for (char c : token.substr(0, 24)) {
        text += std::isprint(static_cast<unsigned char>(c)) ? c : '?';
    }
    return token.size() > 24 ? text + "..." : text;
}

// Header numbers are bounded by the image size check that follows, so a ten-digit width is
// "too large", not "not a number"; only digits beyond 64 bits end here as too large.
std::uint64_t parse_header_number(const std::string& token, const char* field,
                                  const std::string& name)
{
    std::uint64_t value = 0;
    switch (parse_unsigned(token, value)) {
    case Number_parse::ok:
        return value;
    case Number_parse::out_of_range:
        throw Tool_error(name + " is too large: its " + field + " " + printable(token) +
                         " is beyond any supported size");
    case Number_parse::not_a_number:
        break;
    }
    throw Tool_error(name + " is malformed: " + field + " '" + printable(token) +
                     "' is not a number");
}

void check_maxval(std::uint64_t maxval, const std::string& name)
{
    if (maxval == 0) {
        throw Tool_error(name + " is malformed: its maxval is 0");
    }
    if (maxval > 65535) {
        throw Tool_error(name + " has an unsupported bit depth: maxval " +
                         std::to_string(maxval) + " is above 65535 (16 bits)");
    }
}

// The netpbm kinds this tool does not read, each with what to do about it.
std::string reject_other_netpbm(char kind, const std::string& name)
{
    const std::string rgb_only = "; xvr-color reads RGB images (PPM P6 or PAM with DEPTH 3)";
    switch (kind) {
    case '1':
    case '4':
        return name + " has an unsupported channel count: it is a bitmap (1 channel)" + rgb_only;
    case '2':
    case '5':
        return name + " has an unsupported channel count: it is greyscale (1 channel)" + rgb_only;
    default:
        return name + " is a plain-text PPM (P3), which is not supported; convert it to binary P6";
    }
}

Raster_layout read_ppm_header(Header_reader& reader, const std::string& name)
{
    reader.next_ppm_token(); // "P6", checked by the caller
    Raster_layout layout;
    layout.width = parse_header_number(reader.next_ppm_token(), "width", name);
    layout.height = parse_header_number(reader.next_ppm_token(), "height", name);
    layout.maxval = parse_header_number(reader.next_ppm_token(), "maxval", name);
    reader.skip_single_blank();
    return layout;
}

std::string first_word(const std::string& line, std::string& rest)
{
    std::size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos) {
        rest.clear();
        return "";
    }
    std::size_t end = line.find_first_of(" \t\r", begin);
    std::string word = line.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
    std::size_t rest_begin = end == std::string::npos ? std::string::npos
                                                      : line.find_first_not_of(" \t\r", end);
    rest = rest_begin == std::string::npos ? "" : line.substr(rest_begin);
    while (!rest.empty() && (rest.back() == ' ' || rest.back() == '\t' || rest.back() == '\r')) {
        rest.pop_back();
    }
    return word;
}

Raster_layout read_pam_header(Header_reader& reader, const std::string& name)
{
    reader.next_line(); // "P7", checked by the caller
    Raster_layout layout;
    std::uint64_t depth = 0;
    std::string tuple_type;
    bool has_width = false, has_height = false, has_depth = false, has_maxval = false;
    for (;;) {
        std::string value;
        std::string key = first_word(reader.next_line(), value);
        if (key.empty() || key[0] == '#') {
            continue;
        }
        if (key == "ENDHDR") {
            break;
        }
        if (key == "WIDTH") {
            layout.width = parse_header_number(value, "WIDTH", name);
            has_width = true;
        } else if (key == "HEIGHT") {
            layout.height = parse_header_number(value, "HEIGHT", name);
            has_height = true;
        } else if (key == "DEPTH") {
            depth = parse_header_number(value, "DEPTH", name);
            has_depth = true;
        } else if (key == "MAXVAL") {
            layout.maxval = parse_header_number(value, "MAXVAL", name);
            has_maxval = true;
        } else if (key == "TUPLTYPE") {
            tuple_type += tuple_type.empty() ? value : " " + value;
        } else {
            throw Tool_error(name + " is malformed: unknown PAM header line '" + printable(key) +
                             "'");
        }
    }
    if (!has_width || !has_height || !has_depth || !has_maxval) {
        throw Tool_error(name + " is malformed: its PAM header lacks WIDTH, HEIGHT, DEPTH or MAXVAL");
    }
    if (depth != 3) {
        throw Tool_error(name + " has an unsupported channel count: DEPTH " +
                         std::to_string(depth) +
                         (tuple_type.empty() ? "" : " (" + tuple_type + ")") +
                         "; xvr-color reads RGB images with 3 channels");
    }
    return layout;
}

std::uint16_t rescale_to_16_bits(std::uint32_t value, std::uint32_t maxval)
{
    return static_cast<std::uint16_t>((std::uint64_t(value) * 65535u + maxval / 2) / maxval);
}

// Two samples at a time in a 32-bit word: twice as fast as one by one on the i686 baseline,
// which has no vector instructions to do it with. `data` need not be aligned.
void swap_sample_bytes(void* data, std::size_t count)
{
    auto* bytes = static_cast<std::uint8_t*>(data);
    std::size_t i = 0;
    for (; i + 2 <= count; i += 2) {
        std::uint32_t pair;
        std::memcpy(&pair, bytes + 2 * i, sizeof pair);
        pair = ((pair & 0x00ff00ffu) << 8) | ((pair >> 8) & 0x00ff00ffu);
        std::memcpy(bytes + 2 * i, &pair, sizeof pair);
    }
    if (i < count) {
        std::swap(bytes[2 * i], bytes[2 * i + 1]);
    }
}

std::uint64_t raster_bytes(const Raster_layout& layout)
{
    const std::uint64_t bytes_per_sample = layout.maxval < 256 ? 1 : 2;
    return layout.width * layout.height * 3 * bytes_per_sample;
}

// The header, checked as far as it can be before any pixel data is read.
struct Parsed_header {
    Raster_layout layout;
    std::size_t raster_offset = 0;
};

Parsed_header parse_header(const std::vector<std::uint8_t>& bytes, const std::string& name)
{
    if (!looks_like_netpbm(bytes)) {
        throw Tool_error(name + " is not a PPM or PAM file");
    }
    const char kind = static_cast<char>(bytes[1]);
    if (kind != '6' && kind != '7') {
        throw Tool_error(reject_other_netpbm(kind, name));
    }
    Header_reader reader(bytes, name);
    Parsed_header header;
    header.layout = kind == '6' ? read_ppm_header(reader, name) : read_pam_header(reader, name);
    header.raster_offset = reader.position();
    check_maxval(header.layout.maxval, name);
    check_image_size(header.layout.width, header.layout.height, name);
    return header;
}

Image read_raster(const std::vector<std::uint8_t>& bytes, std::size_t offset,
                  const Raster_layout& layout, const std::string& name)
{
    const std::uint64_t bytes_per_sample = layout.maxval < 256 ? 1 : 2;
    const std::uint64_t sample_count = layout.width * layout.height * 3;
    const std::uint64_t needed = raster_bytes(layout);
    const std::uint64_t available = bytes.size() - offset;
    if (available < needed) {
        throw Tool_error(name + " is truncated: it holds " + std::to_string(available) + " of " +
                         std::to_string(needed) + " bytes of pixel data");
    }
    const std::uint32_t maxval = static_cast<std::uint32_t>(layout.maxval);
    Image image;
    image.width = static_cast<std::uint32_t>(layout.width);
    image.height = static_cast<std::uint32_t>(layout.height);
    image.sample_bits = maxval == 255 ? 8 : 16;
    image.samples.resize(static_cast<std::size_t>(sample_count));
    const std::uint8_t* raster = bytes.data() + offset;
    std::uint16_t* samples = image.samples.data();
    const std::size_t count = image.samples.size();
    if (bytes_per_sample == 1) {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = raster[i];
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = static_cast<std::uint16_t>((raster[2 * i] << 8) | raster[2 * i + 1]);
        }
    }
    if (maxval == 255 || maxval == 65535) {
        return image; // every value fits its maxval
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (samples[i] > maxval) {
            throw Tool_error(name + " is malformed: sample " + std::to_string(i) + " is " +
                             std::to_string(samples[i]) + ", above its maxval " +
                             std::to_string(maxval));
        }
        samples[i] = rescale_to_16_bits(samples[i], maxval);
    }
    return image;
}

std::vector<std::uint8_t> encode_raster(const Image& image, const std::string& header)
{
    const std::size_t count = image.samples.size();
    const std::uint16_t* samples = image.samples.data();
    std::vector<std::uint8_t> bytes;
    bytes.reserve(header.size() + count * (image.sample_bits == 8 ? 1 : 2));
    bytes.assign(header.begin(), header.end());
    if (image.sample_bits == 8) {
        bytes.insert(bytes.end(), samples, samples + count); // narrowed one by one
        return bytes;
    }
    // Copied whole (no zero-filling pass first), then put in the file's big-endian order.
    const auto* raw = reinterpret_cast<const std::uint8_t*>(samples);
    bytes.insert(bytes.end(), raw, raw + count * 2);
    swap_sample_bytes(bytes.data() + header.size(), count);
    return bytes;
}

std::string maxval_of(const Image& image)
{
    return image.sample_bits == 8 ? "255" : "65535";
}

} // namespace

bool looks_like_netpbm(const std::vector<std::uint8_t>& bytes)
{
    return bytes.size() >= 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '7';
}

std::uint64_t netpbm_file_size(const std::vector<std::uint8_t>& prefix, const std::string& name)
{
    const Parsed_header header = parse_header(prefix, name);
    return header.raster_offset + raster_bytes(header.layout);
}

std::optional<Image> start_16_bit_netpbm(const std::vector<std::uint8_t>& prefix, const std::string& name)
{
    const Parsed_header header = parse_header(prefix, name);
    if (header.layout.maxval != 65535) {
        return std::nullopt;
    }
    Image image;
    image.width = static_cast<std::uint32_t>(header.layout.width);
    image.height = static_cast<std::uint32_t>(header.layout.height);
    image.sample_bits = 16;
    image.samples.resize(image.pixel_count() * 3);
    return image;
}

void finish_16_bit_netpbm(Image& image)
{
    swap_sample_bytes(image.samples.data(), image.samples.size()); // big-endian in the file
}

Image decode_netpbm(const std::vector<std::uint8_t>& bytes, const std::string& name)
{
    const Parsed_header header = parse_header(bytes, name);
    return read_raster(bytes, header.raster_offset, header.layout, name);
}

std::string ppm_header(const Image& image)
{
    return "P6\n" + std::to_string(image.width) + " " + std::to_string(image.height) + "\n" + maxval_of(image) + "\n";
}

std::string pam_header(const Image& image)
{
    return "P7\nWIDTH " + std::to_string(image.width) + "\nHEIGHT " + std::to_string(image.height) +
           "\nDEPTH 3\nMAXVAL " + maxval_of(image) + "\nTUPLTYPE RGB\nENDHDR\n";
}

void samples_to_big_endian(Image& image)
{
    swap_sample_bytes(image.samples.data(), image.samples.size());
}

std::vector<std::uint8_t> encode_ppm(const Image& image)
{
    return encode_raster(image, ppm_header(image));
}

std::vector<std::uint8_t> encode_pam(const Image& image)
{
    return encode_raster(image, pam_header(image));
}

} // namespace xvr_color
