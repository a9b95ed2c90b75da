#include "tiff_codec.hpp"

#include "tool_error.hpp"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <new>
#include <unistd.h>

namespace xvr_color {

namespace {

// libtiff reports through process-wide handlers; each thread keeps its own last message, so
// files read on several threads never mix their reasons.
thread_local std::string last_libtiff_error;
thread_local bool libtiff_ran_out_of_memory = false;

extern "C" void keep_libtiff_error(const char*, const char* format, va_list arguments)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    last_libtiff_error = text;
    for (const char* sign : {"Out of memory", "out of memory", "No space for", "allocate"}) {
        if (last_libtiff_error.find(sign) != std::string::npos) {
            libtiff_ran_out_of_memory = true;
        }
    }
}

extern "C" void ignore_libtiff_warning(const char*, const char*, va_list) {}

void install_libtiff_handlers()
{
    static std::once_flag once;
    std::call_once(once, [] {
        TIFFSetErrorHandler(keep_libtiff_error);
        TIFFSetWarningHandler(ignore_libtiff_warning);
    });
    last_libtiff_error.clear();
    libtiff_ran_out_of_memory = false;
}

// A TIFF file in memory, for libtiff's client interface: read from a buffer, or written into
// a growing one (libtiff seeks back to patch offsets while it writes).
struct Memory_file {
    const std::uint8_t* data = nullptr;
    std::vector<std::uint8_t>* written = nullptr;
    std::uint64_t size = 0;
    std::uint64_t position = 0;
};

Memory_file& file_of(thandle_t handle)
{
    return *static_cast<Memory_file*>(handle);
}

extern "C" tmsize_t memory_read(thandle_t handle, void* buffer, tmsize_t size)
{
    Memory_file& file = file_of(handle);
    const std::uint64_t left = file.position < file.size ? file.size - file.position : 0;
    const std::uint64_t count = std::min<std::uint64_t>(left, static_cast<std::uint64_t>(size));
    const std::uint8_t* data = file.written ? file.written->data() : file.data;
    std::memcpy(buffer, data + file.position, static_cast<std::size_t>(count));
    file.position += count;
    return static_cast<tmsize_t>(count);
}

extern "C" tmsize_t memory_write(thandle_t handle, void* buffer, tmsize_t size)
{
    Memory_file& file = file_of(handle);
    if (file.written == nullptr) {
        return 0;
    }
    const std::uint64_t end = file.position + static_cast<std::uint64_t>(size);
    try {
        if (end > file.written->size()) {
            file.written->resize(static_cast<std::size_t>(end));
        }
    } catch (const std::bad_alloc&) {
        libtiff_ran_out_of_memory = true;
        return 0;
    }
    std::memcpy(file.written->data() + file.position, buffer, static_cast<std::size_t>(size));
    file.position = end;
    file.size = std::max(file.size, end);
    return size;
}

extern "C" toff_t memory_seek(thandle_t handle, toff_t offset, int whence)
{
    Memory_file& file = file_of(handle);
    std::uint64_t base = whence == SEEK_CUR ? file.position : whence == SEEK_END ? file.size : 0;
    file.position = base + offset;
    return file.position;
}

extern "C" int memory_close(thandle_t)
{
    return 0;
}

extern "C" toff_t memory_size(thandle_t handle)
{
    return file_of(handle).size;
}

extern "C" int memory_map(thandle_t handle, void** base, toff_t* size)
{
    Memory_file& file = file_of(handle);
    if (file.written != nullptr) {
        return 0;
    }
    *base = const_cast<std::uint8_t*>(file.data);
    *size = file.size;
    return 1;
}

extern "C" void memory_unmap(thandle_t, void*, toff_t) {}

struct Tiff_closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff_handle = std::unique_ptr<TIFF, Tiff_closer>;

[[noreturn]] void fail_with_libtiff_reason(const std::string& what)
{
    if (libtiff_ran_out_of_memory) {
        throw std::bad_alloc();
    }
    throw Tool_error(what + (last_libtiff_error.empty() ? "" : ": " + last_libtiff_error));
}

std::uint16_t field_or(TIFF* tiff, ttag_t tag, std::uint16_t fallback)
{
    std::uint16_t value = fallback;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

std::string describe_photometric(std::uint16_t photometric)
{
    switch (photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
        return "it is greyscale";
    case PHOTOMETRIC_PALETTE:
        return "it is a palette image";
    case PHOTOMETRIC_SEPARATED:
        return "it is CMYK";
    case PHOTOMETRIC_YCBCR:
        return "it is YCbCr";
    default:
        return "its photometric interpretation is " + std::to_string(photometric);
    }
}

// What the decoder needs to know of the first image, checked against what it can read.
struct Tiff_layout {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 0;
    bool planar = false;
};

Tiff_layout read_layout(TIFF* tiff, const std::string& name)
{
    Tiff_layout layout;
    if (!TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width) ||
        !TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height)) {
        throw Tool_error(name + " is malformed: it has no image width or height");
    }
    const std::uint16_t photometric = field_or(tiff, TIFFTAG_PHOTOMETRIC, 0xffff);
    const std::uint16_t channels = field_or(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    layout.bits = field_or(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const std::uint16_t format = field_or(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    layout.planar = field_or(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    const std::string rgb_only = "; xvr-color reads RGB TIFF files";
    if (photometric != PHOTOMETRIC_RGB) {
        throw Tool_error(name + " has an unsupported colour model: " + describe_photometric(photometric) +
                         rgb_only);
    }
    if (channels != 3) {
        throw Tool_error(name + " has an unsupported channel count: " + std::to_string(channels) +
                         " samples per pixel" + (channels == 4 ? " (RGB with alpha)" : "") +
                         "; xvr-color reads RGB TIFF files with 3 channels");
    }
    if ((layout.bits != 8 && layout.bits != 16) || format != SAMPLEFORMAT_UINT) {
        throw Tool_error(name + " has an unsupported bit depth: " + std::to_string(layout.bits) + "-bit " +
                         (format == SAMPLEFORMAT_IEEEFP ? "floating-point" : "") +
                         " samples; xvr-color reads 8- and 16-bit unsigned integer samples");
    }
    check_image_size(layout.width, layout.height, name);
    return layout;
}

// Copies a block of decoded samples (a strip or a tile of one plane or of all three) into the
// image. `block` holds `rows` rows of `block_width` pixels; only the part inside the image is kept.
void place_block(const std::uint8_t* block, const Tiff_layout& layout, std::uint32_t x0, std::uint32_t y0,
                 std::uint32_t block_width, std::uint32_t rows, int plane, Image& image)
{
    const std::uint32_t per_pixel = layout.planar ? 1 : 3;
    const std::uint32_t columns = std::min(block_width, layout.width - x0);
    const std::uint32_t last_row = std::min(y0 + rows, layout.height);
    for (std::uint32_t y = y0; y < last_row; ++y) {
        std::uint16_t* target = image.samples.data() + (std::size_t(y) * layout.width + x0) * 3;
        const std::size_t offset = std::size_t(y - y0) * block_width * per_pixel;
        const std::uint32_t count = columns * per_pixel;
        if (layout.bits == 8) {
            const std::uint8_t* source = block + offset;
            for (std::uint32_t i = 0; i < count; ++i) {
                target[layout.planar ? 3 * i + plane : i] = source[i];
            }
        } else {
            const std::uint16_t* source = reinterpret_cast<const std::uint16_t*>(block) + offset;
            if (!layout.planar) {
                std::memcpy(target, source, count * sizeof(std::uint16_t));
            } else {
                for (std::uint32_t i = 0; i < count; ++i) {
                    target[3 * i + plane] = source[i];
                }
            }
        }
    }
}

void read_strips(TIFF* tiff, const Tiff_layout& layout, const std::string& name, Image& image)
{
    std::uint32_t rows_per_strip = layout.height;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows_per_strip);
    rows_per_strip = std::clamp<std::uint32_t>(rows_per_strip, 1, layout.height);
    std::vector<std::uint8_t> strip(static_cast<std::size_t>(TIFFStripSize(tiff)));
    for (int plane = 0; plane < (layout.planar ? 3 : 1); ++plane) {
        for (std::uint32_t row = 0; row < layout.height; row += rows_per_strip) {
            const tstrip_t index = TIFFComputeStrip(tiff, row, static_cast<tsample_t>(plane));
            if (TIFFReadEncodedStrip(tiff, index, strip.data(), static_cast<tmsize_t>(strip.size())) < 0) {
                fail_with_libtiff_reason(name + " is damaged or truncated");
            }
            place_block(strip.data(), layout, 0, row, layout.width, rows_per_strip, plane, image);
        }
    }
}

void read_tiles(TIFF* tiff, const Tiff_layout& layout, const std::string& name, Image& image)
{
    std::uint32_t tile_width = 0, tile_height = 0;
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tile_width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tile_height);
    if (tile_width == 0 || tile_height == 0) {
        throw Tool_error(name + " is malformed: its tiles have no size");
    }
    std::vector<std::uint8_t> tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
    for (int plane = 0; plane < (layout.planar ? 3 : 1); ++plane) {
        for (std::uint32_t y = 0; y < layout.height; y += tile_height) {
            for (std::uint32_t x = 0; x < layout.width; x += tile_width) {
                if (TIFFReadTile(tiff, tile.data(), x, y, 0, static_cast<tsample_t>(plane)) < 0) {
                    fail_with_libtiff_reason(name + " is damaged or truncated");
                }
                place_block(tile.data(), layout, x, y, tile_width, tile_height, plane, image);
            }
        }
    }
}

Image decode_open_tiff(TIFF* tiff, const std::string& name)
{
    if (tiff == nullptr) {
        fail_with_libtiff_reason(name + " is not a readable TIFF file");
    }
    const Tiff_layout layout = read_layout(tiff, name);
    Image image;
    image.width = layout.width;
    image.height = layout.height;
    image.sample_bits = layout.bits;
    image.samples.resize(image.pixel_count() * 3);
    if (TIFFIsTiled(tiff)) {
        read_tiles(tiff, layout, name, image);
    } else {
        read_strips(tiff, layout, name, image);
    }
    std::uint32_t profile_size = 0;
    void* profile = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &profile_size, &profile) && profile && profile_size) {
        const auto* bytes = static_cast<const std::uint8_t*>(profile);
        image.icc_profile.assign(bytes, bytes + profile_size);
    }
    return image;
}

TIFF* open_memory(const std::string& name, const char* mode, Memory_file& file)
{
    return TIFFClientOpen(name.c_str(), mode, &file, memory_read, memory_write, memory_seek,
                          memory_close, memory_size, memory_map, memory_unmap);
}

void set_compression(TIFF* tiff, Tiff_compression compression)
{
    switch (compression) {
    case Tiff_compression::none:
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        return;
    case Tiff_compression::deflate:
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, 1);
        break;
    case Tiff_compression::lzw:
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        break;
    }
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

// Writes the image as the file's only directory and closes the file.
void write_tiff(Tiff_handle tiff, const Image& image, Tiff_compression compression)
{
    if (!tiff) {
        fail_with_libtiff_reason("TIFF encoding failed");
    }
    const std::size_t row_samples = std::size_t(image.width) * 3;
    const std::size_t row_bytes = row_samples * (image.sample_bits == 8 ? 1 : 2);
    const std::uint32_t rows_per_strip =
        static_cast<std::uint32_t>(std::clamp<std::size_t>((1u << 20) / row_bytes, 1, image.height));
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, image.width);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, image.height);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, image.sample_bits);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, rows_per_strip);
    TIFFSetField(tiff.get(), TIFFTAG_SOFTWARE, "xvr-color");
    set_compression(tiff.get(), compression);
    if (!image.icc_profile.empty()) {
        TIFFSetField(tiff.get(), TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(image.icc_profile.size()),
                     image.icc_profile.data());
    }
    std::vector<std::uint8_t> narrow; // 8-bit samples, one strip at a time
    std::vector<std::uint16_t> wide;  // a copy for the predictor, which may work in place
    for (std::uint32_t row = 0; row < image.height; row += rows_per_strip) {
        const std::uint32_t rows = std::min(rows_per_strip, image.height - row);
        const std::uint16_t* samples = image.samples.data() + row * row_samples;
        const std::size_t count = rows * row_samples;
        void* data = const_cast<std::uint16_t*>(samples);
        if (image.sample_bits == 8) {
            narrow.assign(samples, samples + count);
            data = narrow.data();
        } else if (compression != Tiff_compression::none) {
            wide.assign(samples, samples + count);
            data = wide.data();
        }
        if (TIFFWriteEncodedStrip(tiff.get(), TIFFComputeStrip(tiff.get(), row, 0), data,
                                  static_cast<tmsize_t>(rows * row_bytes)) < 0) {
            fail_with_libtiff_reason("TIFF encoding failed");
        }
    }
    if (!TIFFWriteDirectory(tiff.get())) {
        fail_with_libtiff_reason("TIFF encoding failed");
    }
}

} // namespace

void require_tiff_support() {}

std::string tiff_support_description()
{
    const std::string version = TIFFGetVersion();
    return version.substr(0, version.find('\n'));
}

Image decode_tiff(const std::vector<std::uint8_t>& bytes, const std::string& name)
{
    install_libtiff_handlers();
    Memory_file file;
    file.data = bytes.data();
    file.size = bytes.size();
    Tiff_handle tiff(open_memory(name, "rm", file));
    return decode_open_tiff(tiff.get(), name);
}

Image decode_tiff_file(int descriptor, const std::string& name)
{
    install_libtiff_handlers();
    const int own = dup(descriptor); // TIFFClose closes the descriptor it was given
    if (own < 0 || lseek(own, 0, SEEK_SET) != 0) {
        throw Tool_error("cannot read " + name + ": " + std::strerror(errno));
    }
    Tiff_handle tiff(TIFFFdOpen(own, name.c_str(), "r"));
    if (!tiff) {
        close(own);
    }
    return decode_open_tiff(tiff.get(), name);
}

std::vector<std::uint8_t> encode_tiff(const Image& image, Tiff_compression compression)
{
    install_libtiff_handlers();
    std::vector<std::uint8_t> bytes;
    bytes.reserve(compression == Tiff_compression::none
                      ? image.samples.size() * (image.sample_bits == 8 ? 1 : 2) + 4096
                      : image.samples.size());
    Memory_file file;
    file.written = &bytes;
    write_tiff(Tiff_handle(open_memory("output", "w", file)), image, compression);
    bytes.resize(static_cast<std::size_t>(file.size));
    return bytes;
}

void write_tiff_file(const Image& image, Tiff_compression compression, int descriptor)
{
    install_libtiff_handlers();
    const int own = dup(descriptor); // TIFFClose closes the descriptor it was given
    if (own < 0) {
        throw Tool_error(std::string("cannot write TIFF: ") + std::strerror(errno));
    }
    Tiff_handle tiff(TIFFFdOpen(own, "output", "w"));
    if (!tiff) {
        close(own);
    }
    write_tiff(std::move(tiff), image, compression);
}

} // namespace xvr_color
