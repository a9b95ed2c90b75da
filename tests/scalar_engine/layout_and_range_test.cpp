// Worked cases of the pipeline, independent of the reference: counts of several blocks (beyond
// the sweep's few pixels), and what the output table, the shift and the narrowing do to the
// final value. The sweep covers the rest against the reference.
#include "transform_case.hpp"

#include "scalar_engine/scalar_process.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

TEST(PixelRange, MoreThanOneBlockOfPixelsIsProcessedWhole)
{
    // Counts around the kernels' internal block size.
    Table_set tables(1);
    for (int32_t n : {127, 128, 129, 300}) {
        Transform_case<unsigned short> test(n, tables);
        std::iota(test.input.begin(), test.input.end(), uint16_t{7});
        test.arguments.input_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;
        test.arguments.output_buffer_format = NQ_COLOR_FORMAT_BGR_PIXEL;
        scalar_process(test.for_engine(), 1);
        for (std::size_t k = 3; k < test.input.size(); ++k) {
            ASSERT_EQ(test.engine_output[k], test.input[k]) << "count " << n << ", sample " << k;
        }
    }
}

// A single pixel whose three channels are `value` before the blue output table and shift.
template <typename T>
T finished_sample(uint16_t value, int32_t shift, bool with_table, LUT_entry table_entry)
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

TEST(ShiftAndNarrowing, TheWholeValueIsShiftedThenCutToTheSampleWithoutSaturation)
{
    const struct {
        uint16_t value;
        int32_t shift;
        bool with_table;
        LUT_entry entry;
        bool eight_bit;
        uint16_t expected;
    } cases[] = {
        {0x1234, 0, false, 0, true, 0x34}, {0x1234, -8, false, 0, true, 0x12}, {0x1234, 0, false, 0, false, 0x1234},
        {3, -4, true, 0x00012345, false, 0x1234}, // the whole table entry, before the narrowing
        {3, -4, true, -256, false, 0xFFF0}, {3, -15, true, -65536, true, 0xFE}, // signed: the sign comes in
        {0x1234, 4, false, 0, false, 0x2340}, {0x1234, 4, false, 0, true, 0x40}, {0xFFFF, 15, false, 0, false, 0x8000},
    };
    for (const auto& c : cases) {
        const uint16_t sample = c.eight_bit ? finished_sample<unsigned char>(c.value, c.shift, c.with_table, c.entry)
                                            : finished_sample<unsigned short>(c.value, c.shift, c.with_table, c.entry);
        EXPECT_EQ(sample, c.expected) << std::hex << c.value << " shifted by " << std::dec << c.shift;
    }
}

}  // namespace
