// Transform execution: which vector library is called, with what record, and how the scalar
// path finishes from the index the vector library answered. The vector doubles write no pixel,
// so the pixels they claim stay as the test left them.
#include "processor_test_support.hpp"

#include <algorithm>
#include <ostream>
#include <stdexcept>

namespace {

using Events = std::vector<std::string>;

constexpr uint16_t untouched = 0xEEEE;

// Creates a processor at `level` and forgets the creation's events.
void* processor_at(int level)
{
    void* processor = nq_color_create_color_processor_test(8, 8, level);
    EXPECT_NE(processor, nullptr);
    const int sse_result = nq_probe_setting("sse.transform_result", 0);
    const int avx2_result = nq_probe_setting("avx2.transform_result", 0);
    nq_probe_reset();
    nq_probe_set("sse.transform_result", sse_result);
    nq_probe_set("avx2.transform_result", avx2_result);
    return processor;
}

// Runs a 16-bit and an 8-bit transform of two pixels and returns the vector transform events.
Events vector_calls_of_both_sample_widths(void* processor)
{
    const uint16_t input[6] = {1, 2, 3, 4, 5, 6};
    uint16_t output_16[6] = {};
    uint8_t output_8[6] = {};
    Transform_call<uint16_t> call_16;
    call_16.input = input;
    call_16.output = output_16;
    call_16.pixel_count = 2;
    Transform_call<uint8_t> call_8;
    call_8.input = input;
    call_8.output = output_8;
    call_8.pixel_count = 2;
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_24, processor), NQ_COLOR_NO_ERROR);
    // Whatever the vector library did, the scalar path produced every pixel.
    EXPECT_EQ(output_16[5], 6);
    EXPECT_EQ(output_8[5], 6);
    Events calls;
    for (const std::string& event : probe_events()) {
        if (event.find(".transform_") != std::string::npos) calls.push_back(event);
    }
    return calls;
}

Events calls_of(const std::string& kind)
{
    return {kind + ".transform_16 2", kind + ".transform_8 2"};
}

struct Vector_choice {
    const char* name;
    int level;
    int sse_initialize_result;
    int avx2_initialize_result;
    const char* expected;  // "sse", "avx2" or "" for neither
};

std::ostream& operator<<(std::ostream& stream, const Vector_choice& choice)
{
    return stream << choice.name;
}

const Vector_choice vector_choices[] = {
    {"Level2UsesAVX2", 2, 0, 0, "avx2"},
    {"Level2FallsBackToSSE", 2, 0, 1, "sse"},
    {"Level2WithBothFailedUsesNeither", 2, 1, 1, ""},
    {"Level1UsesSSE", 1, 0, 0, "sse"},
    {"Level1NeverTriesAVX2", 1, 1, 0, ""},
    {"Level0UsesNeither", 0, 0, 0, ""},
    {"Level3BehavesAsLevel1", 3, 0, 0, "sse"},
    {"NegativeLevelBehavesAsLevel0", -1, 0, 0, ""},
};

class Vector_module_choice : public Initialised_module,
                             public testing::WithParamInterface<Vector_choice> {};

using Transform_execution = Initialised_module;

}  // namespace

TEST_P(Vector_module_choice, CallsOneEntryOfTheChosenLibraryPerTransform)
{
    const Vector_choice& choice = GetParam();
    nq_probe_set("sse.initialize_result", choice.sse_initialize_result);
    nq_probe_set("avx2.initialize_result", choice.avx2_initialize_result);
    void* processor = processor_at(choice.level);
    const std::string expected = choice.expected;
    EXPECT_EQ(vector_calls_of_both_sample_widths(processor),
              expected.empty() ? Events{} : calls_of(expected));
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    // Initialised or not, both libraries are terminated.
    EXPECT_EQ(nq_probe_count_events("sse.terminate"), 1);
    EXPECT_EQ(nq_probe_count_events("avx2.terminate"), 1);
}

INSTANTIATE_TEST_SUITE_P(Levels, Vector_module_choice, testing::ValuesIn(vector_choices),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(Transform_execution, ScalarPathStartsWhereTheVectorLibraryStopped)
{
    nq_probe_set("sse.transform_result", 2);
    void* processor = processor_at(1);
    const uint16_t input[15] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    uint16_t output[15];
    std::fill(std::begin(output), std::end(output), untouched);
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = 5;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    for (int sample = 0; sample < 6; ++sample) EXPECT_EQ(output[sample], untouched) << sample;
    for (int sample = 6; sample < 15; ++sample) EXPECT_EQ(output[sample], input[sample]) << sample;
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Transform_execution, PlanarRemainderKeepsTheWholeCallAsPlaneStride)
{
    nq_probe_set("sse.transform_result", 3);
    void* processor = processor_at(1);
    // Five pixels: blue plane 10.., green plane 20.., red plane 30..
    const uint16_t input[15] = {10, 11, 12, 13, 14, 20, 21, 22, 23, 24, 30, 31, 32, 33, 34};
    uint16_t output[20];
    std::fill(std::begin(output), std::end(output), untouched);
    Transform_call<uint16_t> call;
    call.input = input;
    call.input_format = NQ_COLOR_FORMAT_BGR_PLANAR;
    call.output = output;
    call.output_format = NQ_COLOR_FORMAT_BGR_PLANAR;
    call.pixel_count = 5;
    ASSERT_EQ(call.run(nq_color_transform_48_to_64, processor), NQ_COLOR_NO_ERROR);
    const uint16_t expected[20] = {untouched, untouched, untouched, 13, 14,
                                   untouched, untouched, untouched, 23, 24,
                                   untouched, untouched, untouched, 33, 34,
                                   untouched, untouched, untouched, 0,  0};
    for (int sample = 0; sample < 20; ++sample) EXPECT_EQ(output[sample], expected[sample]) << sample;
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Transform_execution, VectorLibraryThatDoesEverythingLeavesTheScalarPathNothing)
{
    nq_probe_set("avx2.transform_result", 4);
    void* processor = processor_at(2);
    const uint16_t input[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    uint8_t output[16];
    std::fill(std::begin(output), std::end(output), 0xEE);
    Transform_call<uint8_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = 4;
    ASSERT_EQ(call.run(nq_color_transform_48_to_32, processor), NQ_COLOR_NO_ERROR);
    for (uint8_t sample : output) EXPECT_EQ(sample, 0xEE);
    EXPECT_EQ(probe_events_starting_with("avx2."), Events{"avx2.transform_8 4"});
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Transform_execution, EmptyCallStillAsksTheVectorLibraryOnce)
{
    void* processor = processor_at(1);
    const uint16_t input[3] = {};
    uint16_t output[3] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = 0;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    call.pixel_count = -3;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(probe_events_starting_with("sse."),
              (Events{"sse.transform_16 0", "sse.transform_16 -3"}));
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Transform_execution, RecordCarriesTheCallAndTheProcessor)
{
    void* processor = processor_at(1);
    ASSERT_EQ(nq_color_enable_input_LUTs(processor, 0, 3, 0), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(nq_color_enable_output_LUTs(processor, 1, 0, 1), NQ_COLOR_NO_ERROR);
    const uint16_t input[6] = {};
    uint16_t output_16[8] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.input_format = format_value(-1);
    call.blue_min = 1;
    call.blue_max = 200;
    call.green_min = 3;
    call.green_max = 60000;
    call.red_min = 5;
    call.red_max = 255;
    call.blue_shift = -15;
    call.green_shift = 7;
    call.red_shift = 0;
    call.output = output_16;
    call.output_format = NQ_COLOR_FORMAT_RGB_PIXEL;
    call.pixel_count = 2;
    ASSERT_EQ(call.run(nq_color_transform_48_to_64, processor), NQ_COLOR_NO_ERROR);

    const auto record = recorded_16_bit_record("sse");
    EXPECT_EQ(record.input_buffer, input);
    EXPECT_EQ(record.input_buffer_format, -1);
    EXPECT_EQ(record.blue_input_LUT, nq_color_get_blue_input_LUT(processor));
    EXPECT_EQ(record.green_input_LUT, nq_color_get_green_input_LUT(processor));
    EXPECT_EQ(record.red_input_LUT, nq_color_get_red_input_LUT(processor));
    EXPECT_EQ(record.blue_output_LUT, nq_color_get_blue_output_LUT(processor));
    EXPECT_EQ(record.green_output_LUT, nq_color_get_green_output_LUT(processor));
    EXPECT_EQ(record.red_output_LUT, nq_color_get_red_output_LUT(processor));
    EXPECT_FALSE(record.blue_input_LUT_enabled);
    EXPECT_TRUE(record.green_input_LUT_enabled);
    EXPECT_FALSE(record.red_input_LUT_enabled);
    EXPECT_TRUE(record.blue_output_LUT_enabled);
    EXPECT_FALSE(record.green_output_LUT_enabled);
    EXPECT_TRUE(record.red_output_LUT_enabled);
    EXPECT_EQ(static_cast<const void*>(record.matrix), processor);
    EXPECT_EQ(record.blue_clamp_min, 1);
    EXPECT_EQ(record.blue_clamp_max, 200);
    EXPECT_EQ(record.green_clamp_min, 3);
    EXPECT_EQ(record.green_clamp_max, 60000);
    EXPECT_EQ(record.red_clamp_min, 5);
    EXPECT_EQ(record.red_clamp_max, 255);
    EXPECT_EQ(record.blue_shift_distance, -15);
    EXPECT_EQ(record.green_shift_distance, 7);
    EXPECT_EQ(record.red_shift_distance, 0);
    EXPECT_EQ(record.output_buffer, output_16);
    EXPECT_EQ(record.output_buffer_format, NQ_COLOR_FORMAT_RGB_PIXEL);
    EXPECT_TRUE(record.fourth_channel_enabled);
    EXPECT_EQ(record.pixel_count, 2);

    ASSERT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    EXPECT_FALSE(recorded_16_bit_record("sse").fourth_channel_enabled);

    uint8_t output_8[8] = {};
    Transform_call<uint8_t> call_8;
    call_8.input = input;
    call_8.output = output_8;
    call_8.pixel_count = 2;
    call_8.blue_max = call_8.red_max = 255;
    ASSERT_EQ(call_8.run(nq_color_transform_48_to_32, processor), NQ_COLOR_NO_ERROR);
    EXPECT_TRUE(recorded_8_bit_record("sse").fourth_channel_enabled);
    EXPECT_EQ(recorded_8_bit_record("sse").output_buffer, output_8);
    ASSERT_EQ(call_8.run(nq_color_transform_48_to_24, processor), NQ_COLOR_NO_ERROR);
    EXPECT_FALSE(recorded_8_bit_record("sse").fourth_channel_enabled);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Transform_execution, FetchesEveryTableOnEveryCallInChannelOrder)
{
    void* processor = processor_at(0);
    const uint16_t input[3] = {};
    uint16_t output[3] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = 1;
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    const Events once{"lut.get_data #1", "lut.get_data #2", "lut.get_data #3",
                      "lut.get_data #4", "lut.get_data #5", "lut.get_data #6"};
    Events twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(probe_events_starting_with("lut."), twice);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Transform_execution, VectorLibraryExceptionLeavesTheCallAfterItsTimingRecord)
{
    void* processor = processor_at(1);
    nq_probe_set("sse.transform_throws", 1);
    const uint16_t input[3] = {1, 2, 3};
    uint16_t output[3] = {untouched, untouched, untouched};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = 1;
    EXPECT_THROW(call.run(nq_color_transform_48_to_48, processor), std::runtime_error);
    EXPECT_EQ(output[0], untouched);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    expect_timing_record(records[0], "color processing transform 48 to 48");
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

// Search path with only the SSE library: a level-2 processor falls back to it.
TEST(Vector_fallback_only_SSE, Level2UsesTheSSELibrary)
{
    nq_probe_reset();
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    void* processor = processor_at(2);
    EXPECT_EQ(vector_calls_of_both_sample_widths(processor), calls_of("sse"));
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    nq_color_processing_module_terminate();
}

// Search path with an AVX2 library that lacks its 16-bit entry point: the binding fails for
// both sample widths, and its terminate entry point, never bound, is not called.
TEST(Vector_fallback_incomplete_AVX2, Level2UsesTheSSELibraryForBothWidths)
{
    nq_probe_reset();
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    void* processor = nq_color_create_color_processor_test(8, 8, 2);
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(nq_probe_count_events("avx2.initialize"), 0);
    nq_probe_reset();
    EXPECT_EQ(vector_calls_of_both_sample_widths(processor), calls_of("sse"));
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(probe_events_starting_with("avx2."), Events{"avx2.unloaded"});
    nq_color_processing_module_terminate();
}

// Search path without vector libraries: every level works on the scalar path alone.
TEST(Vector_fallback_scalar_only, EveryLevelProducesThePixels)
{
    nq_probe_reset();
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    for (int level : {0, 1, 2, 3}) {
        void* processor = processor_at(level);
        ASSERT_NE(processor, nullptr) << level;
        EXPECT_EQ(vector_calls_of_both_sample_widths(processor), Events{});
        EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    }
    void* detected = nq_color_create_color_processor(16, 16);
    ASSERT_NE(detected, nullptr);
    EXPECT_EQ(nq_color_destroy_color_processor(detected), NQ_COLOR_NO_ERROR);
    nq_color_processing_module_terminate();
}
