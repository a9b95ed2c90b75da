// The exported entry points. Creation lets its exceptions leave through the C-linkage
// boundary on purpose: the colour-processing library, built with the same compiler and
// standard library, catches them and tells a memory failure from any other.
#include <corvane_xvr_LUT.h>

#include "lut_table.hpp"
#include "table_lookup.hpp"

#include <atomic>

struct nq_LUT_table : LUT_table {
    using LUT_table::LUT_table;
};

namespace {

std::atomic<std::int32_t> live_table_count{0};

}  // namespace

extern "C" {

NQ_LUT_API void nq_LUT_module_initialize(void)
{
    // Nothing to set up: every table owns its memory and the module keeps no shared state.
}

NQ_LUT_API void nq_LUT_module_terminate(void)
{
    // Nothing to release: tables made before a terminate belong to their creators and stay
    // valid until nq_destroy_LUT, which the colour-processing library may call after it.
}

NQ_LUT_API LUT_handle nq_create_LUT_test(int entries, bool avx2_flag)
{
    LUT_handle table = new nq_LUT_table(entries, avx2_flag);
    live_table_count.fetch_add(1, std::memory_order_relaxed);
    return table;
}

NQ_LUT_API std::int32_t* nq_get_LUT_data(LUT_handle table)
{
    return table != nullptr ? table->data() : nullptr;
}

NQ_LUT_API std::int32_t nq_get_LUT_entry_count(LUT_handle table)
{
    return table != nullptr ? table->entry_count() : 0;
}

NQ_LUT_API int nq_LUT_transform_16(LUT_handle table, const std::uint16_t* input,
                                   std::uint16_t* output, std::int32_t count)
{
    if (table == nullptr) return NQ_LUT_NULL_HANDLE;
    if (input == nullptr || output == nullptr) return NQ_LUT_NULL_BUFFER;
    if (count < 0) return NQ_LUT_NEGATIVE_COUNT;
    apply_table_16(table->data(), table->entry_count(), input, output, count);
    return NQ_LUT_NO_ERROR;
}

NQ_LUT_API void nq_destroy_LUT(LUT_handle table)
{
    if (table == nullptr) return;
    delete table;
    live_table_count.fetch_sub(1, std::memory_order_relaxed);
}

NQ_LUT_API std::int32_t nq_LUT_live_table_count(void)
{
    return live_table_count.load(std::memory_order_relaxed);
}

}
