// The table library through its public header: creation and storage, refused sizes, memory
// exhaustion, the module calls, nq_LUT_transform_16, and several threads at once.
#include <corvane_xvr_LUT.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// A table whose entry i is entry_of(i).
LUT_handle make_table(int entries, const std::function<std::int32_t(int)>& entry_of, bool avx2 = false)
{
    LUT_handle table = nq_create_LUT_test(entries, avx2);
    for (int i = 0; i < entries; ++i) nq_get_LUT_data(table)[i] = entry_of(i);
    return table;
}

class Every_valid_size : public ::testing::TestWithParam<std::tuple<int, bool>> {};

// Every 16-bit index and one reader vector past index 65535 is read, whatever the entry count:
// the address sanitizer and memcheck runs report any byte of it outside the table's memory.
TEST_P(Every_valid_size, gives_an_aligned_zeroed_table_readable_at_every_16_bit_index)
{
    const auto [exponent, avx2_reader] = GetParam();
    const int entries = 1 << exponent;
    LUT_handle table = nq_create_LUT_test(entries, avx2_reader);
    EXPECT_EQ(nq_get_LUT_entry_count(table), entries);
    std::int32_t* data = nq_get_LUT_data(table);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 64, 0u) << data;
    const std::size_t readable = 65536 * 4u + (avx2_reader ? 32 : 16);
    const auto* bytes = reinterpret_cast<const volatile unsigned char*>(data);
    std::size_t zero_bytes = 0;
    for (std::size_t k = 0; k < readable; ++k) zero_bytes += bytes[k] == 0;
    EXPECT_EQ(zero_bytes, readable);

    for (int i = 0; i < entries; ++i) data[i] = ~i;  // writable throughout
    EXPECT_EQ(data[65535], entries == 65536 ? ~65535 : 0);
    EXPECT_EQ(nq_get_LUT_data(table), data);
    nq_destroy_LUT(table);
}

TEST(Memory_past_the_entries, is_read_only_so_that_it_stays_zero)
{
    LUT_handle table = nq_create_LUT_test(16, false);
    volatile std::int32_t* data = nq_get_LUT_data(table);
    EXPECT_DEATH(data[65535] = 1, "");
    nq_destroy_LUT(table);
}

INSTANTIATE_TEST_SUITE_P(Powers_of_two_from_1_to_65536, Every_valid_size,
                         ::testing::Combine(::testing::Range(0, 17), ::testing::Bool()));

TEST(Refused_sizes, throw_invalid_argument_naming_the_count_and_leave_no_table_behind)
{
    const int live_before = nq_LUT_live_table_count();
    for (int entries : {0, -1, -65536, 3, 6, 100, 65535, 65537, 131072, INT_MIN, INT_MAX}) {
        for (bool avx2_reader : {false, true}) {
            try {
                nq_create_LUT_test(entries, avx2_reader);
                ADD_FAILURE() << entries << " entries accepted";
            } catch (const std::invalid_argument& error) {
                EXPECT_NE(std::string(error.what()).find(std::to_string(entries) + " entries"),
                          std::string::npos) << error.what();
            }
        }
    }
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
}

// In a child whose address space is capped a little above its use, makes the largest tables
// until memory runs out. Exit 0: bad_alloc, with the tables made before it intact.
TEST(Memory_exhaustion, throws_bad_alloc_and_keeps_the_tables_already_made)
{
    const auto exhaust = [] {
        long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        const rlim_t cap = static_cast<rlim_t>(pages) * sysconf(_SC_PAGESIZE) + (16u << 20);
        const rlimit limit{cap, cap};
        setrlimit(RLIMIT_AS, &limit);
        std::vector<LUT_handle> tables;
        tables.reserve(1024);
        int status = 1;  // no failure
        try {
            while (tables.size() < 1024) {
                tables.push_back(nq_create_LUT_test(65536, tables.size() % 2 == 1));
                nq_get_LUT_data(tables.back())[65535] = static_cast<std::int32_t>(tables.size());
            }
        } catch (const std::bad_alloc&) {
            status = 0;
        } catch (...) {
            status = 2;
        }
        for (std::size_t i = 0; i < tables.size(); ++i) {
            if (nq_get_LUT_data(tables[i])[65535] != static_cast<std::int32_t>(i + 1)) status = 3;
        }
        _exit(status);
    };
    EXPECT_EXIT(exhaust(), ::testing::ExitedWithCode(0), "");
}

// The core may terminate the module more often than it initialised it, and destroys its tables
// after terminating: tables stay valid throughout, and only destruction lowers the live count.
TEST(Module_calls_and_live_count, may_repeat_and_nest_and_leave_existing_tables_valid)
{
    const int live_before = nq_LUT_live_table_count();
    nq_LUT_module_terminate();
    nq_LUT_module_initialize();
    nq_LUT_module_initialize();
    LUT_handle table = make_table(4096, [](int i) { return i; });
    for (int i = 0; i < 3; ++i) nq_LUT_module_terminate();
    EXPECT_EQ(nq_LUT_live_table_count(), live_before + 1);
    EXPECT_EQ(nq_get_LUT_data(table)[4095], 4095);
    nq_destroy_LUT(table);
    nq_destroy_LUT(nullptr);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
    EXPECT_EQ(nq_get_LUT_data(nullptr), nullptr);
    EXPECT_EQ(nq_get_LUT_entry_count(nullptr), 0);
}

// Each sample is looked up, or the last entry serves past the end; the low 16 bits are kept.
// Bad arguments are refused in the order handle, buffers, count, with nothing written.
TEST(Table_transform, gives_the_low_16_bits_of_the_entry_or_of_the_last_one_and_refuses_bad_arguments)
{
    std::vector<std::uint16_t> every_sample(65536), inverted(65536);
    for (int i = 0; i < 65536; ++i) every_sample[i] = static_cast<std::uint16_t>(i), inverted[i] = 65535 - i;
    const std::vector<std::uint16_t> past_the_end = {0, 4094, 4095, 4096, 40000, 65535};
    const std::int32_t high_bits[] = {0x12345678, -1, 0x00010000, -65536 + 3};
    const struct {
        int entries;
        std::function<std::int32_t(int)> entry_of;
        std::vector<std::uint16_t> input, expected;
    } cases[] = {
        {65536, [](int i) { return 65535 - i; }, every_sample, inverted},
        {4, [&](int i) { return high_bits[i]; }, {0, 1, 2, 3}, {0x5678, 0xFFFF, 0, 3}},
        {4096, [](int i) { return i * 16; }, past_the_end, {0, 65504, 65520, 65520, 65520, 65520}},
        {1, [](int) { return 42; }, past_the_end, std::vector<std::uint16_t>(6, 42)},
    };
    for (const auto& c : cases) {
        LUT_handle table = make_table(c.entries, c.entry_of);
        std::vector<std::uint16_t> output(c.input.size(), 7), in_place = c.input;
        const int count = static_cast<int>(c.input.size());
        EXPECT_EQ(nq_LUT_transform_16(table, c.input.data(), output.data(), count), NQ_LUT_NO_ERROR);
        EXPECT_EQ(nq_LUT_transform_16(table, in_place.data(), in_place.data(), count), NQ_LUT_NO_ERROR);
        EXPECT_TRUE(output == c.expected && in_place == c.expected) << c.entries << " entries";
        nq_destroy_LUT(table);
    }
    LUT_handle table = make_table(16, [](int) { return 9; });
    const std::uint16_t input[] = {1, 2};
    std::uint16_t output[] = {77, 78};
    EXPECT_EQ(nq_LUT_transform_16(nullptr, nullptr, nullptr, -1), NQ_LUT_NULL_HANDLE);
    EXPECT_EQ(nq_LUT_transform_16(table, input, nullptr, 2), NQ_LUT_NULL_BUFFER);
    EXPECT_EQ(nq_LUT_transform_16(table, nullptr, nullptr, -5), NQ_LUT_NULL_BUFFER);
    EXPECT_EQ(nq_LUT_transform_16(table, input, output, -1), NQ_LUT_NEGATIVE_COUNT);
    EXPECT_EQ(nq_LUT_transform_16(table, input, output, 0), NQ_LUT_NO_ERROR);
    EXPECT_EQ(output[0] + output[1], 77 + 78);
    nq_destroy_LUT(table);
}

TEST(Tables_on_several_threads, stay_apart_and_are_all_released)
{
    const int live_before = nq_LUT_live_table_count();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t, &wrong] {
            for (int round = 0; round < 60; ++round) {
                const int entries = 1 << (round % 17);
                LUT_handle table = make_table(entries, [&](int i) { return (t << 20) + i * 3 + round; }, (round + t) % 2);
                for (int i = 0; i < entries; ++i) wrong += nq_get_LUT_data(table)[i] != (t << 20) + i * 3 + round;
                nq_destroy_LUT(table);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
}

}  // namespace
