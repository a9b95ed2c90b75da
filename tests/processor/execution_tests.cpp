// Transform execution: which vector library is called, with what record, how the scalar path
// finishes from the index the vector library answered, and the pixels of the cases that only
// the processor decides. The vector doubles write no pixel.
#include "processor_test_support.hpp"

#include <ostream>
#include <stdexcept>

namespace {

constexpr uint16_t untouched = 0xEEEE;

struct Vector_choice {
    const char* name;
    int level;
    int sse_initialize_result;
    int avx2_initialize_result;
    const char* expected;  // "sse", "avx2" or "" for neither
};

std::ostream& operator<<(std::ostream& stream, const Vector_choice& c) { return stream << c.name; }

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

TEST_P(Vector_module_choice, EachSampleWidthCallsItsOwnEntryOfTheChosenLibrary)
{
    const Vector_choice& choice = GetParam();
    nq_probe_set("sse.initialize_result", choice.sse_initialize_result);
    nq_probe_set("avx2.initialize_result", choice.avx2_initialize_result);
    void* processor = make(8, 8, choice.level);
    const uint16_t input[6] = {1, 2, 3, 4, 5, 6};
    uint16_t output_16[6] = {};
    uint8_t output_8[6] = {};
    EXPECT_EQ(to_48.run(call_of(processor, input, output_16, 2)), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(to_24.run(call_of(processor, input, output_8, 2)), NQ_COLOR_NO_ERROR);
    // Whatever the vector library did, the scalar path produced every pixel.
    EXPECT_EQ(output_16[5], 6);
    EXPECT_EQ(output_8[5], 6);
    const std::string kind = choice.expected;
    Events calls;
    for (const std::string& event : probe_events()) {
        if (event.find(".transform_") != std::string::npos) calls.push_back(event);
    }
    const Events expected{kind + ".transform_16 2", kind + ".transform_8 2"};
    EXPECT_EQ(calls, kind.empty() ? Events{} : expected);
    destroy(processor);
    // Initialised or not, both libraries are terminated.
    EXPECT_EQ(nq_probe_count_events("sse.terminate"), 1);
    EXPECT_EQ(nq_probe_count_events("avx2.terminate"), 1);
}

INSTANTIATE_TEST_SUITE_P(Levels, Vector_module_choice, testing::ValuesIn(vector_choices),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(Transform_execution, ScalarPathStartsWhereTheVectorLibraryStopped)
{
    void* processor = make(8, 8, 1);
    nq_probe_set("sse.transform_result", 2);
    const uint16_t input[15] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    uint16_t output[15];
    std::fill(std::begin(output), std::end(output), untouched);
    ASSERT_EQ(to_48.run(call_of(processor, input, output, 5)), NQ_COLOR_NO_ERROR);
    for (int sample = 0; sample < 15; ++sample) {
        EXPECT_EQ(output[sample], sample < 6 ? untouched : input[sample]) << "sample " << sample;
    }
}

TEST_F(Transform_execution, RecordCarriesTheCallAndTheProcessor)
{
    void* processor = make(8, 8, 1);
    const uint16_t input[6] = {};
    uint16_t output_16[8] = {};
    Transform_call call = call_of(processor, input, output_16, 2);
    call.input_format = -1;
    call.clamp_min[0] = 1, call.clamp_max[0] = 200, call.clamp_min[1] = 3, call.clamp_max[1] = 60000;
    call.clamp_min[2] = 5, call.clamp_max[2] = 255;
    call.shift[0] = -15, call.shift[1] = 7, call.shift[2] = 0;
    call.output_format = NQ_COLOR_FORMAT_RGB_PIXEL;
    ASSERT_EQ(to_64.run(call), NQ_COLOR_NO_ERROR);
    const auto r = recorded_record("sse");
    EXPECT_EQ(r.input_buffer, input);
    EXPECT_EQ(r.input_buffer_format, -1);
    EXPECT_EQ(static_cast<const void*>(r.matrix), processor);
    const int32_t* const tables[6] = {r.blue_input_LUT,  r.green_input_LUT,  r.red_input_LUT,
                                      r.blue_output_LUT, r.green_output_LUT, r.red_output_LUT};
    for (int table = 0; table < 6; ++table) {
        EXPECT_EQ(tables[table], table_getters[table](processor)) << "table " << table;
    }
    EXPECT_EQ((std::vector<int>{r.blue_clamp_min, r.blue_clamp_max, r.green_clamp_min, r.green_clamp_max,
                                r.red_clamp_min, r.red_clamp_max, r.blue_shift_distance, r.green_shift_distance,
                                r.red_shift_distance}),
              (std::vector<int>{1, 200, 3, 60000, 5, 255, -15, 7, 0}));
    EXPECT_EQ(r.output_buffer, output_16);
    EXPECT_EQ(r.output_buffer_format, NQ_COLOR_FORMAT_RGB_PIXEL);
    EXPECT_EQ(r.pixel_count, 2);

    // Only the 64- and 32-bit calls ask for the fourth channel.
    EXPECT_TRUE(r.fourth_channel_enabled);
    ASSERT_EQ(to_48.run(call), NQ_COLOR_NO_ERROR);
    EXPECT_FALSE(recorded_record("sse").fourth_channel_enabled);
    ASSERT_EQ(to_32.run(call), NQ_COLOR_NO_ERROR);
    EXPECT_TRUE(recorded_record<unsigned char>("sse").fourth_channel_enabled);
    ASSERT_EQ(to_24.run(call), NQ_COLOR_NO_ERROR);
    EXPECT_FALSE(recorded_record<unsigned char>("sse").fourth_channel_enabled);
}

TEST_F(Transform_execution, VectorLibraryExceptionLeavesTheCallAfterItsTimingRecord)
{
    void* processor = make(8, 8, 1);
    nq_probe_set("sse.transform_throws", 1);
    const uint16_t input[3] = {1, 2, 3};
    uint16_t output[3] = {untouched, untouched, untouched};
    EXPECT_THROW(to_48.run(call_of(processor, input, output, 1)), std::runtime_error);
    EXPECT_EQ(output[0], untouched);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    expect_timing_record(records[0], "color processing transform 48 to 48");
}
