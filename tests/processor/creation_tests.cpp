// Creating and destroying processors: depth checks, their records, the six tables, and the
// clean-up when a companion library fails half-way.
#include "processor_test_support.hpp"

#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

using Processor_creation = Initialised_module;

const char* const creation_function = "create_color_processor_impl";

void expect_refused(int input_depth, int output_depth, int line, const std::string& text)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_create_color_processor_test(input_depth, output_depth, 0), nullptr);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u) << input_depth << ", " << output_depth;
    expect_record(records[0], 0, interface_file, line, creation_function, text);
    EXPECT_TRUE(probe_events_starting_with("lut.").empty());
}

bool all_entries_zero(const int32_t* table, int entries)
{
    for (int index = 0; index < entries; ++index) {
        if (table[index] != 0) return false;
    }
    return true;
}

// Table destructions newest first, from table #newest down to #1.
Events destructions_from(int newest)
{
    Events events;
    for (int number = newest; number >= 1; --number) {
        events.push_back("lut.destroy #" + std::to_string(number));
    }
    return events;
}

}  // namespace

TEST_F(Processor_creation, RefusesNegativeDepthsBeforeLargeOnes)
{
    const std::string negative = "ERROR:  A negative bit depth is invalid!";
    expect_refused(-1, 0, 37, negative);
    expect_refused(0, -1, 37, negative);
    expect_refused(-1, 17, 37, negative);
    expect_refused(17, -5, 37, negative);
}

TEST_F(Processor_creation, RefusesDepthsAboveSixteen)
{
    const std::string too_large = "ERROR:  A LUT size greater than 2^16 is invalid!";
    expect_refused(16, 17, 43, too_large);
    expect_refused(17, 0, 43, too_large);
}

TEST_F(Processor_creation, ExportedCreationAnnouncesItselfBeforeChecking)
{
    EXPECT_EQ(nq_color_create_color_processor(-1, 0), nullptr);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 2u);
    expect_record(records[0], 2, interface_file, 133, "nq_color_create_color_processor",
                  "Creating a color processor instance!");
    EXPECT_EQ(records[1].line, 37);

    nq_probe_reset();
    void* processor = nq_color_create_color_processor(8, 8);
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(probe_log_records().size(), 1u);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Processor_creation, TestCreationIsSilent)
{
    void* processor = nq_color_create_color_processor_test(8, 8, 1);
    ASSERT_NE(processor, nullptr);
    EXPECT_TRUE(probe_log_records().empty());
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Processor_creation, MakesAndClearsInputTablesThenOutputTables)
{
    nq_probe_reset();
    void* processor = nq_color_create_color_processor_test(4, 12, 2);
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(probe_events_starting_with("lut."),
              (Events{"lut.create #1 16 1", "lut.create #2 16 1", "lut.create #3 16 1",
                      "lut.get_data #1", "lut.get_data #2", "lut.get_data #3",
                      "lut.create #4 4096 1", "lut.create #5 4096 1", "lut.create #6 4096 1",
                      "lut.get_data #4", "lut.get_data #5", "lut.get_data #6"}));
    // The double hands out tables full of 0x5A5A5A5A.
    EXPECT_TRUE(all_entries_zero(nq_color_get_blue_input_LUT(processor), 16));
    EXPECT_TRUE(all_entries_zero(nq_color_get_green_input_LUT(processor), 16));
    EXPECT_TRUE(all_entries_zero(nq_color_get_red_input_LUT(processor), 16));
    EXPECT_TRUE(all_entries_zero(nq_color_get_blue_output_LUT(processor), 4096));
    EXPECT_TRUE(all_entries_zero(nq_color_get_green_output_LUT(processor), 4096));
    EXPECT_TRUE(all_entries_zero(nq_color_get_red_output_LUT(processor), 4096));

    nq_probe_reset();
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    // Vector libraries go first, the AVX2 one before the SSE one, then the tables in reverse.
    Events expected{"avx2.terminate", "avx2.unloaded", "sse.terminate", "sse.unloaded"};
    for (const std::string& destruction : destructions_from(6)) expected.push_back(destruction);
    EXPECT_EQ(probe_events(), expected);
}

TEST_F(Processor_creation, PassesTheAVX2FlagOnlyAtLevelTwo)
{
    for (int level : {-1, 0, 1, 3, 5}) {
        nq_probe_reset();
        void* processor = nq_color_create_color_processor_test(0, 0, level);
        ASSERT_NE(processor, nullptr);
        const Events creations = probe_events_starting_with("lut.create");
        ASSERT_EQ(creations.size(), 6u);
        for (const std::string& creation : creations) {
            EXPECT_TRUE(ends_with(creation, " 1 0")) << "level " << level << ": " << creation;
        }
        EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    }
}

TEST_F(Processor_creation, AcceptsTheLargestTables)
{
    void* processor = nq_color_create_color_processor_test(16, 16, 0);
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(nq_probe_count_events("lut.create #1 65536 0"), 1);
    EXPECT_TRUE(all_entries_zero(nq_color_get_red_input_LUT(processor), 65536));
    EXPECT_TRUE(all_entries_zero(nq_color_get_red_output_LUT(processor), 65536));
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Processor_creation, FreshProcessorHasIdentityNoTablesInUseAndZeroedTables)
{
    void* processor = nq_color_create_color_processor_test(0, 0, 1);
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(matrix_seen_by_vector_library(processor),
              (std::vector<float>{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    const auto record = recorded_16_bit_record("sse");
    EXPECT_EQ(static_cast<const void*>(record.matrix), processor);
    EXPECT_FALSE(record.blue_input_LUT_enabled);
    EXPECT_FALSE(record.green_input_LUT_enabled);
    EXPECT_FALSE(record.red_input_LUT_enabled);
    EXPECT_FALSE(record.blue_output_LUT_enabled);
    EXPECT_FALSE(record.green_output_LUT_enabled);
    EXPECT_FALSE(record.red_output_LUT_enabled);
    // One-entry tables.
    EXPECT_EQ(record.blue_input_LUT[0], 0);
    EXPECT_EQ(record.red_output_LUT[0], 0);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

TEST_F(Processor_creation, OutputTableOfOneEntryBoundsTheClampAtZero)
{
    void* processor = nq_color_create_color_processor_test(0, 0, 0);
    ASSERT_NE(processor, nullptr);
    ASSERT_EQ(nq_color_enable_output_LUTs(processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    nq_color_get_blue_output_LUT(processor)[0] = 7;
    const uint16_t input[3] = {0, 0, 0};
    uint16_t output[3] = {};
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = 1;
    call.blue_max = call.green_max = call.red_max = 0;
    EXPECT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(output[0], 7);
    call.green_max = 1;
    EXPECT_EQ(call.run(nq_color_transform_48_to_48, processor), NQ_COLOR_INVALID_CLAMP_VALUE);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

// A table creation that throws, at each of the six creations in turn.
class Processor_creation_failure : public Initialised_module,
                                   public testing::WithParamInterface<int> {};

TEST_P(Processor_creation_failure, UndoesTheTablesMadeSoFarNewestFirst)
{
    const int failing = GetParam();
    nq_probe_set("lut.create_throws_at", failing);
    EXPECT_EQ(nq_color_create_color_processor_test(2, 3, 0), nullptr);
    EXPECT_EQ(probe_events_starting_with("lut.destroy"), destructions_from(failing - 1));
    EXPECT_TRUE(probe_events_starting_with("sse.").empty());
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    expect_record(records[0], 0, interface_file, 58, creation_function,
                  "Memory allocation failure when trying to create a color correction instance!");
}

TEST_P(Processor_creation_failure, ReportsOtherExceptionsAsUnknownErrors)
{
    nq_probe_set("lut.create_throws_at", GetParam());
    nq_probe_set("lut.create_throws_other", 1);
    EXPECT_EQ(nq_color_create_color_processor_test(2, 3, 0), nullptr);
    EXPECT_EQ(probe_events_starting_with("lut.destroy"), destructions_from(GetParam() - 1));
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    expect_record(records[0], 0, interface_file, 63, creation_function,
                  "An unknown error occurred when trying to create a color correction instance!");
}

INSTANTIATE_TEST_SUITE_P(EachTable, Processor_creation_failure, testing::Range(1, 7));

TEST_F(Processor_creation, FailingAVX2BindingReleasesTheSSEBindingThenTheTables)
{
    nq_probe_set("avx2.initialize_throws", 1);
    EXPECT_EQ(nq_color_create_color_processor_test(1, 1, 2), nullptr);
    const Events all = probe_events();
    Events after_avx2_initialize;
    bool seen = false;
    for (const std::string& event : all) {
        if (seen && event.compare(0, 14, "lut.get_data #") != 0) after_avx2_initialize.push_back(event);
        if (event == "avx2.initialize") seen = true;
    }
    // The AVX2 library never finished its construction, so it is not terminated; the SSE
    // binding is.
    Events expected{"sse.terminate", "sse.unloaded"};
    for (const std::string& destruction : destructions_from(6)) expected.push_back(destruction);
    EXPECT_EQ(after_avx2_initialize, expected);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].line, 63);
}

// Processors are refused, and every call returns 1 or null, while the module is not initialised.
TEST(Processor_without_module, EveryCallRefusesSilently)
{
    nq_probe_reset();
    int dummy = 0;
    void* const stale = &dummy;  // never looked at: the module test comes first
    uint16_t input[3] = {};
    uint16_t output_16[4] = {};
    uint8_t output_8[4] = {};
    const float matrix[9] = {};
    for (void* handle : {static_cast<void*>(nullptr), stale}) {
        EXPECT_EQ(nq_color_create_color_processor(8, 8), nullptr);
        EXPECT_EQ(nq_color_create_color_processor_test(8, 8, 0), nullptr);
        EXPECT_EQ(nq_color_get_blue_input_LUT(handle), nullptr);
        EXPECT_EQ(nq_color_get_green_input_LUT(handle), nullptr);
        EXPECT_EQ(nq_color_get_red_input_LUT(handle), nullptr);
        EXPECT_EQ(nq_color_get_blue_output_LUT(handle), nullptr);
        EXPECT_EQ(nq_color_get_green_output_LUT(handle), nullptr);
        EXPECT_EQ(nq_color_get_red_output_LUT(handle), nullptr);
        EXPECT_EQ(nq_color_enable_input_LUTs(handle, 1, 1, 1), NQ_COLOR_MODULE_NOT_INITIALIZED);
        EXPECT_EQ(nq_color_enable_output_LUTs(handle, 1, 1, 1), NQ_COLOR_MODULE_NOT_INITIALIZED);
        EXPECT_EQ(nq_color_append_matrix(handle, matrix), NQ_COLOR_MODULE_NOT_INITIALIZED);
        EXPECT_EQ(nq_color_clear_matrix(handle), NQ_COLOR_MODULE_NOT_INITIALIZED);
        EXPECT_EQ(nq_color_destroy_color_processor(handle), NQ_COLOR_MODULE_NOT_INITIALIZED);
        Transform_call<uint16_t> call_16;
        call_16.input = input;
        call_16.output = output_16;
        call_16.pixel_count = 1;
        EXPECT_EQ(call_16.run(nq_color_transform_48_to_48, handle), NQ_COLOR_MODULE_NOT_INITIALIZED);
        EXPECT_EQ(call_16.run(nq_color_transform_48_to_64, handle), NQ_COLOR_MODULE_NOT_INITIALIZED);
        Transform_call<uint8_t> call_8;
        call_8.input = input;
        call_8.output = output_8;
        call_8.pixel_count = 1;
        EXPECT_EQ(call_8.run(nq_color_transform_48_to_24, handle), NQ_COLOR_MODULE_NOT_INITIALIZED);
        EXPECT_EQ(call_8.run(nq_color_transform_48_to_32, handle), NQ_COLOR_MODULE_NOT_INITIALIZED);
    }
    EXPECT_TRUE(probe_events().empty());
    EXPECT_EQ(output_16[0], 0);
}

TEST(Processor_without_module, ProcessorThatOutlivesTheModuleCannotBeDestroyed)
{
    nq_probe_reset();
    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    void* processor = nq_color_create_color_processor_test(0, 0, 0);
    ASSERT_NE(processor, nullptr);
    ASSERT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    nq_probe_reset();
    EXPECT_EQ(nq_color_create_color_processor_test(0, 0, 0), nullptr);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_MODULE_NOT_INITIALIZED);
    EXPECT_TRUE(probe_events().empty());
}
