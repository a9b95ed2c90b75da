#include "table_layout.hpp"

#include <corvane_xvr_LUT.h>

namespace table_layout {

bool is_valid_entry_count(int entries)
{
    if (entries < NQ_LUT_MIN_ENTRIES || entries > NQ_LUT_MAX_ENTRIES) return false;
    return (entries & (entries - 1)) == 0;
}

std::size_t reader_vector_bytes(bool avx2_reader)
{
    return avx2_reader ? NQ_LUT_AVX2_PADDING_BYTES : NQ_LUT_PADDING_BYTES;
}

std::size_t padded_table_bytes(int entries, bool avx2_reader)
{
    const std::size_t needed =
        static_cast<std::size_t>(entries) * entry_bytes + reader_vector_bytes(avx2_reader);
    return (needed + alignment_bytes - 1) / alignment_bytes * alignment_bytes;
}

}  // namespace table_layout
