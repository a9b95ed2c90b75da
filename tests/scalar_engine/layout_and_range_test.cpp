// Worked cases of the pipeline, independent of the reference: the range of pixels a call
// touches (beyond what the sweep reaches: counts of several blocks, starts past the end, counts
// of 0 and below), the layouts, and what the output table, the shift and the narrowing do to the
// final value. The sweep covers the rest against the reference.
#include "transform_case.hpp"

#include "scalar_engine/scalar_process.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

template <typename T>
std::vector<T> all_sentinel(const Transform_case<T>& test)
{
    return std::vector<T>(test.engine_output.size(), Transform_case<T>::sentinel);
}

void fill_ramp(std::vector<uint16_t>& samples, uint16_t first = 100)
{
    std::iota(samples.begin(), samples.end(), first);
}

TEST(PixelRange, StartAtOrBeyondTheCountAndNonPositiveCountsWriteNothing)
{
    Table_set tables(1);
    for (int start : {4, 5, 1000}) {
        Transform_case<unsigned char> test(4, tables);
        fill_ramp(test.input);
        scalar_process(test.for_engine(), start);
        EXPECT_EQ(test.engine_output, all_sentinel(test)) << "start " << start;
    }
    for (int32_t count : {0, -1, -2147483647 - 1}) {
        Transform_case<unsigned short> test(count, tables);
        scalar_process(test.for_engine(), 0);
        EXPECT_EQ(test.engine_output, all_sentinel(test)) << "count " << count;
    }
}

TEST(PixelRange, MoreThanOneBlockOfPixelsIsProcessedWhole)
{
    // Counts around the kernels' internal block size.
    Table_set tables(1);
    for (int32_t n : {127, 128, 129, 300}) {
        Transform_case<unsigned short> test(n, tables);
        fill_ramp(test.input, 7);
        test.arguments.input_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;
        test.arguments.output_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;
        scalar_process(test.for_engine(), 1);
        for (std::size_t k = 3; k < test.input.size(); ++k) {
            ASSERT_EQ(test.engine_output[k], test.input[k]) << "count " << n << ", sample " << k;
        }
    }
}

TEST(Layouts, IdentityReordersTheInputIntoEachOutputLayout)
{
    Table_set tables(1);
    Transform_case<unsigned short> test(2, tables);
    test.input = {10, 11, 12, 20, 21, 22};  // BGR pixels: b0 g0 r0 b1 g1 r1
    test.arguments.input_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;

    const std::vector<std::pair<NQ_COLOR_FORMAT, std::vector<unsigned short>>> expected = {
        {NQ_COLOR_FORMAT_BGR_PLANAR, {10, 20, 11, 21, 12, 22, 0, 0}},
        {NQ_COLOR_FORMAT_BGR_PIXEL, {10, 11, 12, 0, 20, 21, 22, 0}},
        {NQ_COLOR_FORMAT_RGB_PIXEL, {12, 11, 10, 0, 22, 21, 20, 0}},
    };
    test.arguments.fourth_channel_enabled = true;
    for (const auto& [format, samples] : expected) {
        test.arguments.output_buffer_format = format;
        scalar_process(test.for_engine(), 0);
        EXPECT_EQ(std::vector<unsigned short>(test.engine_output.begin(), test.engine_output.begin() + 8),
                  samples) << "output format " << format;
    }
}

TEST(Layouts, RgbInputIsReadRedFirst)
{
    Table_set tables(1);
    Transform_case<unsigned char> test(1, tables);
    test.input = {30, 20, 10};  // R G B
    test.arguments.input_buffer_format = NQ_COLOR_FORMAT_RGB_PIXEL;
    test.arguments.output_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    scalar_process(test.for_engine(), 0);
    EXPECT_EQ(std::vector<unsigned char>(test.engine_output.begin(), test.engine_output.begin() + 4),
              (std::vector<unsigned char>{10, 20, 30, Transform_case<unsigned char>::sentinel}));
}

// A single pixel whose three channels are `value` before the output table and the shift.
template <typename T>
T finished_sample(uint16_t value, int32_t shift, LUT_entry table_entry = 0, bool with_table = false)
{
    Table_set tables(65536);
    tables.tables[3][value] = table_entry;
    Transform_case<T> test(1, tables);
    test.input = {value, value, value};
    test.arguments.blue_output_LUT_enabled = with_table;
    test.arguments.blue_shift_distance = shift;
    scalar_process(test.for_engine(), 0);
    return test.engine_output[0];
}

TEST(ShiftAndNarrowing, NarrowingKeepsTheLowBitsWithoutSaturation)
{
    EXPECT_EQ(finished_sample<unsigned char>(0x1234, 0), 0x34);
    EXPECT_EQ(finished_sample<unsigned char>(0x1234, -8), 0x12);
    EXPECT_EQ(finished_sample<unsigned short>(0x1234, 0), 0x1234);
}

TEST(ShiftAndNarrowing, TheWholeTableEntryIsShiftedBeforeTheNarrowing)
{
    EXPECT_EQ(finished_sample<unsigned short>(3, -4, 0x00012345, true), 0x1234);
    // Output entries are signed: a right shift copies the sign bit in.
    EXPECT_EQ(finished_sample<unsigned short>(3, -4, -256, true), 0xFFF0);
    EXPECT_EQ(finished_sample<unsigned char>(3, -15, -65536, true), 0xFE);
}

TEST(ShiftAndNarrowing, LeftShiftedBitsBeyondTheSampleAreLost)
{
    EXPECT_EQ(finished_sample<unsigned short>(0x1234, 4), 0x2340);
    EXPECT_EQ(finished_sample<unsigned char>(0x1234, 4), 0x40);
    EXPECT_EQ(finished_sample<unsigned short>(0xFFFF, 15), 0x8000);
}

}  // namespace
