// zlib streams for PNG data through the zlib library: compression split over threads, and
// inflation into a buffer of the size the image header announces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace xvr_color {

// One zlib stream of `data`, compressed in pieces on up to `threads` threads. Each piece starts
// with the 32 KiB before it as its dictionary and ends on a byte boundary (a sync flush), so the
// pieces join into a single ordinary stream, barely larger than a serial one. `level` and
// `strategy` are zlib's. The stream is malloc'ed into `output` (for lodepng to free); returns
// its size. Throws std::bad_alloc when memory runs out.
std::size_t compress_zlib_stream(const std::uint8_t* data, std::size_t size, int level, int strategy,
                                 unsigned threads, std::uint8_t** output);

enum class Inflate_result { ok, damaged, out_of_memory };

// Inflates a zlib stream into `output` (malloc'ed, for lodepng to free), starting with room for
// `expected_size` bytes and never growing past `size_limit`.
Inflate_result inflate_zlib_stream(const std::uint8_t* data, std::size_t size, std::size_t expected_size,
                                   std::size_t size_limit, std::uint8_t** output, std::size_t* output_size);

} // namespace xvr_color
