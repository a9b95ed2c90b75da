#include "table_layout.hpp"

#include <corvane_xvr_LUT.h>

#include <unistd.h>

namespace table_layout {

namespace {

std::size_t whole_pages(std::size_t bytes)
{
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

}  // namespace

bool is_valid_entry_count(int entries)
{
    if (entries < NQ_LUT_MIN_ENTRIES || entries > NQ_LUT_MAX_ENTRIES) return false;
    return (entries & (entries - 1)) == 0;
}

std::size_t reader_vector_bytes(bool avx2_reader)
{
    return avx2_reader ? NQ_LUT_AVX2_PADDING_BYTES : NQ_LUT_PADDING_BYTES;
}

std::size_t mapped_table_bytes(bool avx2_reader)
{
    return whole_pages(indexable_entries * entry_bytes + reader_vector_bytes(avx2_reader));
}

std::size_t writable_table_bytes(int entries)
{
    return whole_pages(static_cast<std::size_t>(entries) * entry_bytes);
}

}  // namespace table_layout
