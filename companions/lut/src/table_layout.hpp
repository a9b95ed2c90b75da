// How a table's memory is laid out: its entries from the start of a mapping that covers every
// 16-bit index and, after the last of them, one vector of the widest reader.
#pragma once

#include <cstddef>

namespace table_layout {

constexpr std::size_t entry_bytes = 4;
// Samples are 16-bit whatever the table's size: a table of 2^k entries is still indexed by
// any value up to 65535 by readers that check nothing.
constexpr std::size_t indexable_entries = 65536;

bool is_valid_entry_count(int entries);

// The widest load of the reader the table is made for: 32 bytes for AVX2, 16 for SSE.
std::size_t reader_vector_bytes(bool avx2_reader);

// Bytes mapped for every table made for this reader, whatever its entry count: all indexable
// entries and one reader vector past the last of them, in whole pages.
std::size_t mapped_table_bytes(bool avx2_reader);

// The leading part of the mapping that holds a table's own entries, in whole pages: the only
// part that is writable.
std::size_t writable_table_bytes(int entries);

}  // namespace table_layout
