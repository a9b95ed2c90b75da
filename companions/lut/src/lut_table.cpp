#include "lut_table.hpp"

#include "table_layout.hpp"

#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace {

[[noreturn]] void refuse_entry_count(int entries)
{
    throw std::invalid_argument("nq_create_LUT_test: " + std::to_string(entries) +
                                " entries requested; a table holds a power of two from 1 to "
                                "65536 entries");
}

std::int32_t* allocate_zeroed_table(int entries, bool avx2_reader)
{
    const std::size_t bytes = table_layout::padded_table_bytes(entries, avx2_reader);
    void* memory = std::aligned_alloc(table_layout::alignment_bytes, bytes);
    if (memory == nullptr) throw std::bad_alloc();
    // The padding is cleared too: a vector reader that loads past the last entry then sees
    // zeros instead of whatever the allocator left there.
    std::memset(memory, 0, bytes);
    return static_cast<std::int32_t*>(memory);
}

}  // namespace

LUT_table::LUT_table(int entries, bool avx2_reader) : m_entries(), m_entry_count(entries)
{
    if (!table_layout::is_valid_entry_count(entries)) refuse_entry_count(entries);
    m_entries.reset(allocate_zeroed_table(entries, avx2_reader));
}
