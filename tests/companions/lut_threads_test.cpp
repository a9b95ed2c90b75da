// Several threads each creating, filling, applying and destroying their own tables at once.
#include <corvane_xvr_LUT.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

// Runs `rounds` table lifetimes with contents unique to this thread; counts wrong results.
int run_table_rounds(int thread_index, int rounds)
{
    int wrong = 0;
    std::vector<std::uint16_t> input(4096);
    std::vector<std::uint16_t> output(4096);
    for (int round = 0; round < rounds; ++round) {
        const int entries = 1 << (round % 17);
        LUT_handle table = nq_create_LUT_test(entries, (round + thread_index) % 2 == 0);
        std::int32_t* data = nq_get_LUT_data(table);
        for (int i = 0; i < entries; ++i) data[i] = (thread_index << 20) + i * 3 + round;
        for (std::size_t i = 0; i < input.size(); ++i)
            input[i] = static_cast<std::uint16_t>(i * 2654435761u >> 16);
        if (nq_LUT_transform_16(table, input.data(), output.data(), 4096) != NQ_LUT_NO_ERROR)
            ++wrong;
        for (std::size_t i = 0; i < input.size(); ++i) {
            const int index = input[i] < entries ? input[i] : entries - 1;
            const auto expected = static_cast<std::uint16_t>((thread_index << 20) + index * 3 + round);
            wrong += output[i] != expected;
        }
        nq_destroy_LUT(table);
    }
    return wrong;
}

TEST(Tables_on_several_threads, stay_apart_and_are_all_released)
{
    const int live_before = nq_LUT_live_table_count();
    constexpr int thread_count = 8;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < thread_count; ++t) {
        threads.emplace_back([t, &wrong] { wrong += run_table_rounds(t, 60); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(nq_LUT_live_table_count(), live_before);
}

}  // namespace
