// Stand-in for "libcorvane_xvr_LUT.so": owns real tables and records its calls in the probe.
// Tables are numbered #1, #2, ... in creation order (per probe reset) and start filled with
// 0x5A5A5A5A, so that a table the core forgot to clear shows; like the real library, every table
// reaches index 65535 and one AVX2 vector beyond, zeroed past its entries. Settings (probe keys):
//   lut.create_throws_at       the creation with this number throws
//   lut.create_throws_other    that creation throws std::invalid_argument, not std::bad_alloc
// Built in variants that lack "nq_LUT_module_terminate" (NQ_WITHOUT_TERMINATE) or
// "nq_LUT_transform_16" (NQ_WITHOUT_TRANSFORM_16).
#include "companion_probe.hpp"

#include <corvane_xvr_LUT.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <set>
#include <stdexcept>
#include <vector>

struct nq_LUT_table {
    int number;
    std::vector<int32_t> entries;
};

namespace {

constexpr int32_t unset_entry = 0x5A5A5A5A;

std::set<LUT_handle>& live_tables()
{
    static std::set<LUT_handle> tables;
    return tables;
}

void throw_if_chosen(int number)
{
    if (number != nq_probe_setting("lut.create_throws_at", 0)) return;
    if (nq_probe_setting("lut.create_throws_other", 0)) throw std::invalid_argument("bad table");
    throw std::bad_alloc();
}

const Probe_load_announcer announcer("lut");

}  // namespace

extern "C" {

void nq_LUT_module_initialize()
{
    nq_probe_event("lut.initialize");
}

LUT_handle nq_create_LUT_test(int entries, bool avx2_flag)
{
    const int number = nq_probe_next_number("lut.tables");
    nq_probe_event("lut.create #%d %d %d", number, entries, avx2_flag ? 1 : 0);
    throw_if_chosen(number);
    auto* table = new nq_LUT_table{number, std::vector<int32_t>(65536 + 8, 0)};
    std::fill_n(table->entries.begin(), entries, unset_entry);
    live_tables().insert(table);
    return table;
}

int32_t* nq_get_LUT_data(LUT_handle table)
{
    if (live_tables().count(table) == 0) {
        nq_probe_event("lut.get_data of an unknown table");
        return nullptr;
    }
    nq_probe_event("lut.get_data #%d", table->number);
    return table->entries.data();
}

void nq_destroy_LUT(LUT_handle table)
{
    if (live_tables().erase(table) == 0) {
        nq_probe_event("lut.destroy of an unknown table");
        return;
    }
    nq_probe_event("lut.destroy #%d", table->number);
    delete table;
}

#ifndef NQ_WITHOUT_TRANSFORM_16
int nq_LUT_transform_16(LUT_handle, const std::uint16_t*, std::uint16_t*, std::int32_t)
{
    nq_probe_event("lut.transform_16");
    return NQ_LUT_NO_ERROR;
}
#endif

#ifndef NQ_WITHOUT_TERMINATE
void nq_LUT_module_terminate()
{
    nq_probe_event("lut.terminate");
}
#endif

}  // extern "C"
