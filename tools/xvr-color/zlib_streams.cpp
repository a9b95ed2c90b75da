#include "zlib_streams.hpp"

#include "parallel_tasks.hpp"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <stdexcept>

namespace xvr_color {

namespace {

constexpr std::size_t piece_size = 1u << 20;
constexpr std::size_t window_size = 32768;

// zlib leaves parts of its hash tables unset and reads them where the result cannot matter;
// zeroed memory keeps memory checkers quiet about it, for a few hundred KiB a piece.
voidpf zeroed_allocation(voidpf, uInt items, uInt size)
{
    return std::calloc(items, size);
}

void release_allocation(voidpf, voidpf address)
{
    std::free(address);
}

struct Compressed_piece {
    std::vector<std::uint8_t> bytes;
    uLong adler = 1;
};

Compressed_piece compress_piece(const std::uint8_t* data, std::size_t begin, std::size_t end, bool last,
                                int level, int strategy)
{
    z_stream stream{};
    stream.zalloc = zeroed_allocation;
    stream.zfree = release_allocation;
    if (deflateInit2(&stream, level, Z_DEFLATED, -15, 8, strategy) != Z_OK) {
        throw std::bad_alloc();
    }
    const std::size_t dictionary = std::min(begin, window_size);
    if (dictionary > 0) {
        deflateSetDictionary(&stream, data + begin - dictionary, static_cast<uInt>(dictionary));
    }
    Compressed_piece piece;
    const std::size_t length = end - begin;
    piece.bytes.resize(deflateBound(&stream, static_cast<uLong>(length)) + 16);
    stream.next_in = const_cast<Bytef*>(data + begin);
    stream.avail_in = static_cast<uInt>(length);
    stream.next_out = piece.bytes.data();
    stream.avail_out = static_cast<uInt>(piece.bytes.size());
    const int result = deflate(&stream, last ? Z_FINISH : Z_SYNC_FLUSH);
    piece.bytes.resize(stream.total_out);
    deflateEnd(&stream);
    if ((last && result != Z_STREAM_END) || (!last && result != Z_OK) || stream.avail_in != 0) {
        throw std::runtime_error("zlib could not compress the PNG data");
    }
    piece.adler = adler32(1, data + begin, static_cast<uInt>(length));
    return piece;
}

} // namespace

std::size_t compress_zlib_stream(const std::uint8_t* data, std::size_t size, int level, int strategy,
                                 unsigned threads, std::uint8_t** output)
{
    const std::size_t count = std::max<std::size_t>(1, (size + piece_size - 1) / piece_size);
    std::vector<Compressed_piece> pieces(count);
    run_in_parallel(count, threads, [&](std::size_t i) {
        const std::size_t begin = i * piece_size;
        pieces[i] = compress_piece(data, begin, std::min(size, begin + piece_size), i + 1 == count, level,
                                   strategy);
    });
    std::size_t total = 6;
    for (const Compressed_piece& piece : pieces) {
        total += piece.bytes.size();
    }
    auto* stream = static_cast<std::uint8_t*>(std::malloc(total));
    if (stream == nullptr) {
        throw std::bad_alloc();
    }
    std::size_t at = 0;
    stream[at++] = 0x78; // deflate, 32 KiB window
    stream[at++] = 0x01; // with the check bits that make the header a multiple of 31
    uLong adler = 1;
    for (std::size_t i = 0; i < count; ++i) {
        std::copy(pieces[i].bytes.begin(), pieces[i].bytes.end(), stream + at);
        at += pieces[i].bytes.size();
        const std::size_t length = std::min(size, (i + 1) * piece_size) - i * piece_size;
        adler = adler32_combine(adler, pieces[i].adler, static_cast<z_off_t>(length));
        pieces[i].bytes = {};
    }
    for (int shift = 24; shift >= 0; shift -= 8) {
        stream[at++] = static_cast<std::uint8_t>(adler >> shift);
    }
    *output = stream;
    return at;
}

Inflate_result inflate_zlib_stream(const std::uint8_t* data, std::size_t size, std::size_t expected_size,
                                   std::size_t size_limit, std::uint8_t** output, std::size_t* output_size)
{
    std::size_t capacity = std::max<std::size_t>(expected_size, 1024);
    auto* buffer = static_cast<std::uint8_t*>(std::malloc(capacity));
    if (buffer == nullptr) {
        return Inflate_result::out_of_memory;
    }
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) {
        std::free(buffer);
        return Inflate_result::out_of_memory;
    }
    stream.next_in = const_cast<Bytef*>(data);
    stream.avail_in = static_cast<uInt>(size);
    Inflate_result result = Inflate_result::damaged;
    for (;;) {
        stream.next_out = buffer + stream.total_out;
        stream.avail_out = static_cast<uInt>(capacity - stream.total_out);
        const int status = inflate(&stream, Z_NO_FLUSH);
        if (status == Z_STREAM_END) {
            result = Inflate_result::ok;
            break;
        }
        if (status == Z_MEM_ERROR) {
            result = Inflate_result::out_of_memory;
            break;
        }
        if (status != Z_OK && status != Z_BUF_ERROR) {
            break;
        }
        if (stream.avail_out != 0 || capacity >= size_limit) {
            break; // the input ended early, or the data is larger than the image allows
        }
        capacity = std::min(size_limit, capacity * 2);
        auto* larger = static_cast<std::uint8_t*>(std::realloc(buffer, capacity));
        if (larger == nullptr) {
            result = Inflate_result::out_of_memory;
            break;
        }
        buffer = larger;
    }
    *output_size = stream.total_out;
    inflateEnd(&stream);
    if (result != Inflate_result::ok) {
        std::free(buffer);
        return result;
    }
    *output = buffer;
    return result;
}

} // namespace xvr_color
