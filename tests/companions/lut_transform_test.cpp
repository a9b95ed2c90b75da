// nq_LUT_transform_16: a table applied to 16-bit samples.
#include <corvane_xvr_LUT.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace {

class Table_transform : public ::testing::Test {
protected:
    void TearDown() override
    {
        for (LUT_handle table : m_tables) nq_destroy_LUT(table);
    }

    // A table whose entry i is entry_of(i).
    template <typename Entry_function>
    LUT_handle make_table(int entries, Entry_function entry_of)
    {
        LUT_handle table = nq_create_LUT_test(entries, false);
        m_tables.push_back(table);
        std::int32_t* data = nq_get_LUT_data(table);
        for (int i = 0; i < entries; ++i) data[i] = entry_of(i);
        return table;
    }

    std::vector<LUT_handle> m_tables;
};

std::vector<std::uint16_t> every_16_bit_sample()
{
    std::vector<std::uint16_t> samples(65536);
    for (int i = 0; i < 65536; ++i) samples[i] = static_cast<std::uint16_t>(i);
    return samples;
}

TEST_F(Table_transform, maps_every_sample_through_a_full_table)
{
    LUT_handle inverse = make_table(65536, [](int i) { return 65535 - i; });
    const std::vector<std::uint16_t> input = every_16_bit_sample();
    std::vector<std::uint16_t> output(input.size(), 7);
    ASSERT_EQ(nq_LUT_transform_16(inverse, input.data(), output.data(), 65536), NQ_LUT_NO_ERROR);
    for (int i = 0; i < 65536; ++i) ASSERT_EQ(output[i], 65535 - i) << "sample " << i;
}

TEST_F(Table_transform, keeps_the_low_16_bits_of_each_entry)
{
    LUT_handle table = make_table(4, [](int i) {
        const std::int32_t entries[] = {0x12345678, -1, 0x00010000, -65536 + 3};
        return entries[i];
    });
    const std::uint16_t input[] = {0, 1, 2, 3};
    std::uint16_t output[4] = {};
    ASSERT_EQ(nq_LUT_transform_16(table, input, output, 4), NQ_LUT_NO_ERROR);
    EXPECT_EQ(output[0], 0x5678);
    EXPECT_EQ(output[1], 0xFFFF);
    EXPECT_EQ(output[2], 0x0000);
    EXPECT_EQ(output[3], 3);
}

TEST_F(Table_transform, reads_the_last_entry_for_samples_past_the_table)
{
    LUT_handle twelve_bit = make_table(4096, [](int i) { return i * 16; });
    const std::uint16_t input[] = {0, 4094, 4095, 4096, 40000, 65535};
    std::uint16_t output[6] = {};
    ASSERT_EQ(nq_LUT_transform_16(twelve_bit, input, output, 6), NQ_LUT_NO_ERROR);
    const std::uint16_t expected[] = {0, 65504, 65520, 65520, 65520, 65520};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(output[i], expected[i]) << "sample " << input[i];

    LUT_handle single = make_table(1, [](int) { return 42; });
    ASSERT_EQ(nq_LUT_transform_16(single, input, output, 6), NQ_LUT_NO_ERROR);
    for (std::uint16_t value : output) EXPECT_EQ(value, 42);
}

TEST_F(Table_transform, works_in_place)
{
    LUT_handle doubling = make_table(65536, [](int i) { return 2 * i; });
    std::vector<std::uint16_t> samples = every_16_bit_sample();
    ASSERT_EQ(nq_LUT_transform_16(doubling, samples.data(), samples.data(), 65536),
              NQ_LUT_NO_ERROR);
    for (int i = 0; i < 65536; ++i) ASSERT_EQ(samples[i], static_cast<std::uint16_t>(2 * i));
}

TEST_F(Table_transform, with_a_count_of_zero_writes_nothing)
{
    LUT_handle table = make_table(16, [](int) { return 9; });
    const std::uint16_t input[] = {1};
    std::uint16_t output[] = {77};
    EXPECT_EQ(nq_LUT_transform_16(table, input, output, 0), NQ_LUT_NO_ERROR);
    EXPECT_EQ(output[0], 77);
}

TEST_F(Table_transform, refuses_bad_arguments_in_order_and_writes_nothing)
{
    LUT_handle table = make_table(16, [](int) { return 9; });
    const std::uint16_t input[] = {1, 2};
    std::uint16_t output[] = {77, 78};
    EXPECT_EQ(nq_LUT_transform_16(nullptr, nullptr, nullptr, -1), NQ_LUT_NULL_HANDLE);
    EXPECT_EQ(nq_LUT_transform_16(nullptr, input, output, 2), NQ_LUT_NULL_HANDLE);
    EXPECT_EQ(nq_LUT_transform_16(table, nullptr, output, 2), NQ_LUT_NULL_BUFFER);
    EXPECT_EQ(nq_LUT_transform_16(table, input, nullptr, 2), NQ_LUT_NULL_BUFFER);
    EXPECT_EQ(nq_LUT_transform_16(table, nullptr, nullptr, -5), NQ_LUT_NULL_BUFFER);
    EXPECT_EQ(nq_LUT_transform_16(table, input, output, -1), NQ_LUT_NEGATIVE_COUNT);
    EXPECT_EQ(output[0], 77);
    EXPECT_EQ(output[1], 78);
}

}  // namespace
