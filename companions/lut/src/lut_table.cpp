#include "lut_table.hpp"

#include "table_layout.hpp"

#include <new>
#include <stdexcept>
#include <string>
#include <sys/mman.h>

namespace {

[[noreturn]] void refuse_entry_count(int entries)
{
    throw std::invalid_argument("nq_create_LUT_test: " + std::to_string(entries) +
                                " entries requested; a table holds a power of two from 1 to "
                                "65536 entries");
}

// Readers index every table with 16-bit samples and check nothing, so a table smaller than
// 65536 entries is backed by memory for all of them. Anonymous pages read as zero and cost no
// physical memory until written; the part past the table's own pages is mapped read-only, so
// that it stays zero: a sample beyond the table always reads 0.
std::int32_t* map_zeroed_table(int entries, std::size_t mapped_bytes)
{
    void* memory = mmap(nullptr, mapped_bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    if (mprotect(memory, table_layout::writable_table_bytes(entries), PROT_READ | PROT_WRITE) != 0) {
        munmap(memory, mapped_bytes);
        throw std::bad_alloc();
    }
    return static_cast<std::int32_t*>(memory);
}

}  // namespace

LUT_table::LUT_table(int entries, bool avx2_reader)
    : m_entries(nullptr), m_mapped_bytes(table_layout::mapped_table_bytes(avx2_reader)),
      m_entry_count(entries)
{
    if (!table_layout::is_valid_entry_count(entries)) refuse_entry_count(entries);
    m_entries = map_zeroed_table(entries, m_mapped_bytes);
}

LUT_table::~LUT_table()
{
    munmap(m_entries, m_mapped_bytes);
}
