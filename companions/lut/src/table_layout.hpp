// How much memory a table takes: its entries, the padding that its vector reader may touch
// past the last entry, rounded up to whole alignment blocks.
#pragma once

#include <cstddef>

namespace table_layout {

constexpr std::size_t entry_bytes = 4;
constexpr std::size_t alignment_bytes = 64;

bool is_valid_entry_count(int entries);

// The widest load of the reader the table is made for: 32 bytes for AVX2, 16 for SSE.
std::size_t reader_vector_bytes(bool avx2_reader);

// Bytes to allocate for a table of a valid entry count: a multiple of alignment_bytes.
std::size_t padded_table_bytes(int entries, bool avx2_reader);

}  // namespace table_layout
