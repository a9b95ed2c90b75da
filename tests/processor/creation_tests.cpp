// Creating and destroying processors: depth checks, the six tables, the clean-up when a
// companion library fails half-way, and every call refused before the module is initialised.
#include "processor_test_support.hpp"

namespace {

using Processor_creation = Initialised_module;

const char* const creation_function = "create_color_processor_impl";

}  // namespace

TEST_F(Processor_creation, RefusesBadDepthsTestingBothSignsBeforeEitherSize)
{
    const std::string negative = "ERROR:  A negative bit depth is invalid!";
    const std::string too_large = "ERROR:  A LUT size greater than 2^16 is invalid!";
    const struct {
        int input, output, line;
        const std::string& text;
    } cases[] = {{-1, 0, 37, negative},  {0, -1, 37, negative},   {-1, 17, 37, negative},
                 {17, -5, 37, negative}, {16, 17, 43, too_large}, {17, 0, 43, too_large}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "depths " << c.input << ", " << c.output);
        nq_probe_reset();
        EXPECT_EQ(nq_color_create_color_processor_test(c.input, c.output, 0), nullptr);
        const auto records = probe_log_records();
        ASSERT_EQ(records.size(), 1u);
        expect_record(records[0], 0, interface_file, c.line, creation_function, c.text);
        EXPECT_TRUE(probe_events_starting_with("lut.").empty());
    }
}

TEST_F(Processor_creation, MakesSixZeroedTablesWithTheAVX2FlagOnlyAtLevelTwo)
{
    const struct {
        int input, output, level;
    } cases[] = {{0, 0, -1}, {16, 16, 2}, {4, 12, 1}, {8, 8, 0}, {8, 8, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "depths " << c.input << ", " << c.output << " level "
                                        << c.level);
        nq_probe_reset();
        void* processor = nq_color_create_color_processor_test(c.input, c.output, c.level);
        ASSERT_NE(processor, nullptr);
        EXPECT_TRUE(probe_log_records().empty());  // unlike the exported creation
        Events creations;
        for (int table = 0; table < 6; ++table) {
            const int size = 1 << (table < 3 ? c.input : c.output);
            creations.push_back("lut.create #" + std::to_string(table + 1) + " " +
                                std::to_string(size) + (c.level == 2 ? " 1" : " 0"));
            // The double hands out tables full of 0x5A5A5A5A.
            const int32_t* entries = table_getters[table](processor);
            EXPECT_TRUE(std::all_of(entries, entries + size, [](int32_t e) { return e == 0; }))
                << "table " << table;
        }
        EXPECT_EQ(probe_events_starting_with("lut.create"), creations);
        destroy(processor);
    }
}

TEST_F(Processor_creation, FailedTableCreationUndoesTheTablesMadeSoFarNewestFirst)
{
    for (int other_exception : {0, 1}) {
        for (int failing = 1; failing <= 6; ++failing) {
            SCOPED_TRACE(testing::Message() << "table " << failing << ", bad_alloc "
                                            << !other_exception);
            nq_probe_reset();
            nq_probe_set("lut.create_throws_at", failing);
            nq_probe_set("lut.create_throws_other", other_exception);
            EXPECT_EQ(nq_color_create_color_processor_test(2, 3, 0), nullptr);
            Events newest_first;
            for (int made = failing - 1; made >= 1; --made) newest_first.push_back("lut.destroy #" + std::to_string(made));
            EXPECT_EQ(probe_events_starting_with("lut.destroy"), newest_first);
            EXPECT_TRUE(probe_events_starting_with("sse.").empty());
            const auto records = probe_log_records();
            ASSERT_EQ(records.size(), 1u);
            expect_record(records[0], 0, interface_file, other_exception ? 63 : 58,
                          creation_function,
                          other_exception ? "An unknown error occurred when trying to create a "
                                            "color correction instance!"
                                          : "Memory allocation failure when trying to create a "
                                            "color correction instance!");
        }
    }
}

// The transforms are refused alike; the fuzzer makes hundreds of such calls.
TEST(Processor_without_module, EveryConfigurationCallRefusesSilently)
{
    nq_probe_reset();
    const int refused = NQ_COLOR_MODULE_NOT_INITIALIZED;
    int dummy = 0;
    const float matrix[9] = {};
    // The stale handle is never looked at: the module test comes first.
    for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&dummy)}) {
        EXPECT_EQ(nq_color_create_color_processor(8, 8), nullptr);
        EXPECT_EQ(nq_color_create_color_processor_test(8, 8, 0), nullptr);
        for (Table_getter getter : table_getters) EXPECT_EQ(getter(handle), nullptr);
        EXPECT_EQ(nq_color_enable_input_LUTs(handle, 1, 1, 1), refused);
        EXPECT_EQ(nq_color_enable_output_LUTs(handle, 1, 1, 1), refused);
        EXPECT_EQ(nq_color_append_matrix(handle, matrix), refused);
        EXPECT_EQ(nq_color_clear_matrix(handle), refused);
        EXPECT_EQ(nq_color_destroy_color_processor(handle), refused);
    }
    EXPECT_TRUE(probe_events().empty());
}
