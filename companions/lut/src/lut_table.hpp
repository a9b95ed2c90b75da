// One look-up table: zeroed, page-aligned storage of 32-bit entries that lives as long as the
// object and never moves. Behind the entries the memory stays mapped, zeroed and readable up to
// index 65535 and one reader vector beyond (table_layout.hpp).
#pragma once

#include <cstddef>
#include <cstdint>

class LUT_table {
public:
    // Throws std::invalid_argument for an entry count that is not a power of two from 1 to
    // 65536, std::bad_alloc when the memory cannot be had.
    LUT_table(int entries, bool avx2_reader);
    ~LUT_table();

    LUT_table(const LUT_table&) = delete;
    LUT_table& operator=(const LUT_table&) = delete;

    std::int32_t* data() const noexcept { return m_entries; }
    std::int32_t entry_count() const noexcept { return m_entry_count; }

private:
    std::int32_t* m_entries;
    std::size_t m_mapped_bytes;
    std::int32_t m_entry_count;
};
