// One look-up table: zeroed, aligned, padded storage of 32-bit entries that lives as long as
// the object and never moves.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

class LUT_table {
public:
    // Throws std::invalid_argument for an entry count that is not a power of two from 1 to
    // 65536, std::bad_alloc when the memory cannot be had.
    LUT_table(int entries, bool avx2_reader);

    std::int32_t* data() const noexcept { return m_entries.get(); }
    std::int32_t entry_count() const noexcept { return m_entry_count; }

private:
    struct Free_deleter {
        void operator()(std::int32_t* entries) const noexcept { std::free(entries); }
    };

    std::unique_ptr<std::int32_t[], Free_deleter> m_entries;
    std::int32_t m_entry_count;
};
