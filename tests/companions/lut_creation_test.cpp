// Creation, storage and release of tables: every valid size with both reader widths, the
// refused sizes, memory exhaustion, and the module calls around them.
#include <corvane_xvr_LUT.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <malloc.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

struct Table_deleter {
    void operator()(nq_LUT_table* table) const { nq_destroy_LUT(table); }
};
using Owned_table = std::unique_ptr<nq_LUT_table, Table_deleter>;

Owned_table create_table(int entries, bool avx2_reader)
{
    return Owned_table(nq_create_LUT_test(entries, avx2_reader));
}

bool is_aligned(const void* pointer, std::uintptr_t alignment)
{
    return reinterpret_cast<std::uintptr_t>(pointer) % alignment == 0;
}

// Bytes a reader may touch: the entries plus one vector of its width past the last one.
std::size_t bytes_a_reader_may_touch(int entries, bool avx2_reader)
{
    return static_cast<std::size_t>(entries) * 4 + (avx2_reader ? 32 : 16);
}

class Every_valid_size : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(Every_valid_size, gives_an_aligned_zeroed_table_padded_for_its_reader)
{
    const auto [exponent, avx2_reader] = GetParam();
    const int entries = 1 << exponent;
    Owned_table table = create_table(entries, avx2_reader);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(nq_get_LUT_entry_count(table.get()), entries);

    std::int32_t* data = nq_get_LUT_data(table.get());
    ASSERT_NE(data, nullptr);
    EXPECT_TRUE(is_aligned(data, 64)) << data;
    // The allocator's own record of the block, independent of the library's arithmetic.
    const std::size_t touchable = bytes_a_reader_may_touch(entries, avx2_reader);
    ASSERT_GE(malloc_usable_size(data), touchable);

    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    std::size_t non_zero = 0;
    for (std::size_t i = 0; i < touchable; ++i) non_zero += bytes[i] != 0;
    EXPECT_EQ(non_zero, 0u) << "entries and padding must start as zero";

    // Writable across the whole table, and the same storage on every later call.
    for (int i = 0; i < entries; ++i) data[i] = ~i;
    EXPECT_EQ(nq_get_LUT_data(table.get()), data);
    EXPECT_EQ(data[0], ~0);
    EXPECT_EQ(data[entries - 1], ~(entries - 1));
}

INSTANTIATE_TEST_SUITE_P(Powers_of_two_from_1_to_65536, Every_valid_size,
                         ::testing::Combine(::testing::Range(0, 17), ::testing::Bool()));

TEST(Refused_sizes, throw_invalid_argument_and_leave_no_table_behind)
{
    const int live_before = nq_LUT_live_table_count();
    for (int entries : {0, -1, -65536, 3, 6, 100, 65535, 65537, 131072, INT_MIN, INT_MAX}) {
        for (bool avx2_reader : {false, true}) {
            EXPECT_THROW(nq_create_LUT_test(entries, avx2_reader), std::invalid_argument)
                << entries << " entries";
        }
    }
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
}

TEST(Refused_sizes, name_the_count_in_the_message)
{
    try {
        nq_create_LUT_test(3, false);
        FAIL() << "3 entries accepted";
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find("3 entries"), std::string::npos) << error.what();
    }
}

// Caps the address space a little above what the process uses now and creates the largest
// tables until memory runs out. Runs in a child process, which exits with:
// 0 bad_alloc seen and the tables made before it intact, 1 no failure, 2 another exception,
// 3 earlier tables damaged.
[[noreturn]] void exhaust_memory_with_tables()
{
    long pages = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld", &pages) != 1) pages = 0;
        std::fclose(statm);
    }
    const rlim_t cap = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) +
                       (16u << 20);
    const rlimit limit{cap, cap};
    setrlimit(RLIMIT_AS, &limit);

    std::vector<LUT_handle> tables;
    tables.reserve(1024);
    int status = 1;
    try {
        for (int i = 0; i < 1024; ++i) {
            LUT_handle table = nq_create_LUT_test(65536, i % 2 == 1);
            nq_get_LUT_data(table)[65535] = i;
            tables.push_back(table);
        }
    } catch (const std::bad_alloc&) {
        status = 0;
    } catch (...) {
        status = 2;
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (nq_get_LUT_data(tables[i])[65535] != static_cast<std::int32_t>(i)) status = 3;
        nq_destroy_LUT(tables[i]);
    }
    _exit(status);
}

TEST(Memory_exhaustion, throws_bad_alloc_and_keeps_the_tables_already_made)
{
    EXPECT_EXIT(exhaust_memory_with_tables(), ::testing::ExitedWithCode(0), "");
}

TEST(Null_handles, are_answered_without_touching_anything)
{
    EXPECT_EQ(nq_get_LUT_data(nullptr), nullptr);
    EXPECT_EQ(nq_get_LUT_entry_count(nullptr), 0);
    const int live_before = nq_LUT_live_table_count();
    nq_destroy_LUT(nullptr);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
}

TEST(Live_table_count, follows_creations_and_destructions)
{
    const int live_before = nq_LUT_live_table_count();
    LUT_handle first = nq_create_LUT_test(256, false);
    LUT_handle second = nq_create_LUT_test(1, true);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before + 2);
    nq_destroy_LUT(first);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before + 1);
    nq_destroy_LUT(second);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
}

TEST(Module_calls, may_repeat_and_nest_and_leave_existing_tables_valid)
{
    // The colour-processing library initialises once per module initialisation and may
    // terminate once more than it initialised.
    nq_LUT_module_terminate();
    nq_LUT_module_initialize();
    nq_LUT_module_initialize();
    Owned_table table = create_table(4096, true);
    std::int32_t* data = nq_get_LUT_data(table.get());
    data[4095] = 12345;
    nq_LUT_module_terminate();
    nq_LUT_module_terminate();
    nq_LUT_module_terminate();
    EXPECT_EQ(nq_get_LUT_data(table.get()), data);
    EXPECT_EQ(data[4095], 12345);
    nq_LUT_module_initialize();
    Owned_table after = create_table(16, false);
    EXPECT_NE(after, nullptr);
    nq_LUT_module_terminate();
}

}  // namespace
