// Pixels through the exported calls, against values worked out by hand: layouts, tables,
// matrix order, shifts and the narrowing of 8-bit output. The arithmetic itself (rounding,
// clamping) belongs to the scalar engine and is tested there.
#include "processor_test_support.hpp"

#include <algorithm>
#include <vector>

namespace {

class Pixels : public Initialised_module {
protected:
    void SetUp() override
    {
        Initialised_module::SetUp();
        m_processor = nq_color_create_color_processor_test(16, 16, 0);
        ASSERT_NE(m_processor, nullptr);
    }
    void TearDown() override
    {
        EXPECT_EQ(nq_color_destroy_color_processor(m_processor), NQ_COLOR_NO_ERROR);
        Initialised_module::TearDown();
    }

    // One pixel given as blue, green, red, through 48_to_48 into BGR order.
    std::vector<uint16_t> one_pixel_16(uint16_t blue, uint16_t green, uint16_t red,
                                       Transform_call<uint16_t> call = {})
    {
        const uint16_t input[3] = {blue, green, red};
        uint16_t output[3] = {};
        call.input = input;
        call.output = output;
        call.pixel_count = 1;
        EXPECT_EQ(call.run(nq_color_transform_48_to_48, m_processor), NQ_COLOR_NO_ERROR);
        return {output[0], output[1], output[2]};
    }

    std::vector<uint8_t> one_pixel_8(uint16_t blue, uint16_t green, uint16_t red,
                                     Transform_call<uint8_t> call = {})
    {
        const uint16_t input[3] = {blue, green, red};
        uint8_t output[3] = {};
        call.input = input;
        call.output = output;
        call.pixel_count = 1;
        EXPECT_EQ(call.run(nq_color_transform_48_to_24, m_processor), NQ_COLOR_NO_ERROR);
        return {output[0], output[1], output[2]};
    }

    void* m_processor = nullptr;
};

using Samples_16 = std::vector<uint16_t>;
using Samples_8 = std::vector<uint8_t>;

}  // namespace

TEST_F(Pixels, IdentityReordersBetweenLayouts)
{
    const uint16_t input[6] = {1, 2, 3, 65535, 0, 40000};  // B,G,R per pixel
    uint16_t output[6] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.output_format = NQ_COLOR_FORMAT_RGB_PIXEL;
    call.pixel_count = 2;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, m_processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(Samples_16(output, output + 6), (Samples_16{3, 2, 1, 40000, 0, 65535}));

    uint16_t planar[6] = {};
    call.output = planar;
    call.output_format = NQ_COLOR_FORMAT_BGR_PLANAR;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, m_processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(Samples_16(planar, planar + 6), (Samples_16{1, 65535, 2, 0, 3, 40000}));
}

TEST_F(Pixels, FourthChannelIsZeroInEveryLayout)
{
    const uint16_t input[6] = {1, 2, 3, 4, 5, 6};
    for (int format : {0, 1, 2}) {
        uint16_t output_16[8];
        std::fill(std::begin(output_16), std::end(output_16), 0xEEEE);
        Transform_call<uint16_t> call_16;
        call_16.input = input;
        call_16.output = output_16;
        call_16.output_format = format_value(format);
        call_16.pixel_count = 2;
        ASSERT_EQ(call_16.run(nq_color_transform_48_to_64, m_processor), NQ_COLOR_NO_ERROR);
        uint8_t output_8[8];
        std::fill(std::begin(output_8), std::end(output_8), 0xEE);
        Transform_call<uint8_t> call_8;
        call_8.input = input;
        call_8.output = output_8;
        call_8.output_format = format_value(format);
        call_8.pixel_count = 2;
        ASSERT_EQ(call_8.run(nq_color_transform_48_to_32, m_processor), NQ_COLOR_NO_ERROR);
        if (format == NQ_COLOR_FORMAT_BGR_PLANAR) {
            EXPECT_EQ(Samples_16(output_16, output_16 + 8), (Samples_16{1, 4, 2, 5, 3, 6, 0, 0}));
            EXPECT_EQ(Samples_8(output_8, output_8 + 8), (Samples_8{1, 4, 2, 5, 3, 6, 0, 0}));
        } else if (format == NQ_COLOR_FORMAT_BGR_PIXEL) {
            EXPECT_EQ(Samples_16(output_16, output_16 + 8), (Samples_16{1, 2, 3, 0, 4, 5, 6, 0}));
            EXPECT_EQ(Samples_8(output_8, output_8 + 8), (Samples_8{1, 2, 3, 0, 4, 5, 6, 0}));
        } else {
            EXPECT_EQ(Samples_16(output_16, output_16 + 8), (Samples_16{3, 2, 1, 0, 6, 5, 4, 0}));
            EXPECT_EQ(Samples_8(output_8, output_8 + 8), (Samples_8{3, 2, 1, 0, 6, 5, 4, 0}));
        }
    }
}

TEST_F(Pixels, NegativeFormatsAreReadAndWrittenAsPlanar)
{
    const uint16_t input[6] = {10, 11, 20, 21, 30, 31};  // planar: blue 10,11; green 20,21; ...
    uint16_t output[6] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.input_format = format_value(-1);
    call.output = output;
    call.output_format = format_value(-1);
    call.pixel_count = 2;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, m_processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(Samples_16(output, output + 6), (Samples_16{10, 11, 20, 21, 30, 31}));
    call.output_format = NQ_COLOR_FORMAT_RGB_PIXEL;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, m_processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(Samples_16(output, output + 6), (Samples_16{30, 20, 10, 31, 21, 11}));
}

TEST_F(Pixels, MatrixRowsYieldRedGreenBlueFromRedGreenBlueColumns)
{
    // Red out = blue in, green out = 2 x red in, blue out = green in + red in.
    const float matrix[9] = {0, 0, 1, 2, 0, 0, 1, 1, 0};
    ASSERT_EQ(nq_color_append_matrix(m_processor, matrix), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(one_pixel_16(30, 20, 10), (Samples_16{30, 20, 30}));
}

TEST_F(Pixels, LastAppendedMatrixActsFirst)
{
    const float double_red[9] = {2, 0, 0, 0, 1, 0, 0, 0, 1};
    const float swap_red_and_blue[9] = {0, 0, 1, 0, 1, 0, 1, 0, 0};
    ASSERT_EQ(nq_color_append_matrix(m_processor, double_red), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(nq_color_append_matrix(m_processor, swap_red_and_blue), NQ_COLOR_NO_ERROR);
    // Swap first: red 10, blue 30 become red 30, blue 10; then red doubles.
    EXPECT_EQ(one_pixel_16(30, 20, 10), (Samples_16{10, 20, 60}));
}

TEST_F(Pixels, InputTablesContributeTheirLowSixteenBits)
{
    nq_color_get_blue_input_LUT(m_processor)[7] = 0x12340005;
    nq_color_get_green_input_LUT(m_processor)[7] = 9;
    ASSERT_EQ(nq_color_enable_input_LUTs(m_processor, 1, 0, 0), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(one_pixel_16(7, 7, 7), (Samples_16{5, 7, 7}));
}

TEST_F(Pixels, OutputTableEntryIsShiftedWholeBeforeNarrowing)
{
    nq_color_get_red_output_LUT(m_processor)[3] = 0x00012345;
    nq_color_get_blue_output_LUT(m_processor)[3] = -2;
    ASSERT_EQ(nq_color_enable_output_LUTs(m_processor, 1, 0, 1), NQ_COLOR_NO_ERROR);
    Transform_call<uint16_t> call;
    call.red_shift = -4;
    call.blue_shift = -1;  // arithmetic: -2 becomes -1, stored as 0xFFFF
    call.blue_max = call.red_max = 65535;
    EXPECT_EQ(one_pixel_16(3, 3, 3, call), (Samples_16{0xFFFF, 3, 0x1234}));
}

TEST_F(Pixels, EightBitOutputKeepsTheLowByteUnlessShifted)
{
    Transform_call<uint8_t> call;
    call.red_shift = -8;
    EXPECT_EQ(one_pixel_8(0x1234, 0x00FF, 0x1234, call), (Samples_8{0x34, 0xFF, 0x12}));
}

TEST_F(Pixels, NonPositivePixelCountWritesNothing)
{
    const uint16_t input[3] = {1, 2, 3};
    uint16_t output[3] = {0xEEEE, 0xEEEE, 0xEEEE};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    for (int32_t count : {0, -1, -2147483647 - 1}) {
        call.pixel_count = count;
        EXPECT_EQ(call.run(nq_color_transform_48_to_48, m_processor), NQ_COLOR_NO_ERROR);
    }
    EXPECT_EQ(Samples_16(output, output + 3), (Samples_16{0xEEEE, 0xEEEE, 0xEEEE}));
}
