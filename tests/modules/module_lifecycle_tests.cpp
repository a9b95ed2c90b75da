// Module initialise and terminate as a host sees them, with the companions each test's
// LD_LIBRARY_PATH provides. The exported `logger` and `LUT_wrapper` members show the count and
// the binding; the doubles' journal shows what the companions were asked.
#include <corvane_xvr_color_processing.h>

#include "modules/logger.hpp"
#include "modules/lut_wrapper.hpp"
#include "probe_queries.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

const std::string logger_names = "CORVANE_XVR_COLOR_PROCESSING|";

bool LUT_binding_is_clear()
{
    return LUT_wrapper::m_LUT_module_handle == nullptr &&
           LUT_wrapper::m_initialize_LUT_module == nullptr && LUT_wrapper::m_create_LUT == nullptr &&
           LUT_wrapper::m_transform_LUT_16 == nullptr && LUT_wrapper::m_get_LUT_data == nullptr &&
           LUT_wrapper::m_destroy_LUT == nullptr && LUT_wrapper::m_terminate_LUT_module == nullptr;
}

bool LUT_binding_is_complete()
{
    return LUT_wrapper::m_LUT_module_handle != nullptr &&
           LUT_wrapper::m_initialize_LUT_module != nullptr && LUT_wrapper::m_create_LUT != nullptr &&
           LUT_wrapper::m_transform_LUT_16 != nullptr && LUT_wrapper::m_get_LUT_data != nullptr &&
           LUT_wrapper::m_destroy_LUT != nullptr && LUT_wrapper::m_terminate_LUT_module != nullptr;
}

// A call that fails validation: it writes an error record and a timing record when logging.
void make_logged_calls()
{
    void* processor = nq_color_create_color_processor_test(8, 8, 0);
    ASSERT_NE(processor, nullptr);
    uint16_t input[3] = {1, 2, 3};
    EXPECT_EQ(nq_color_transform_48_to_48(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 255, 0,
                                          255, 0, 255, 0, 0, 0, nullptr,
                                          NQ_COLOR_FORMAT_BGR_PIXEL, 1),
              NQ_COLOR_NULL_OUTPUT_BUFFER);
    EXPECT_EQ(nq_color_clear_matrix(nullptr), NQ_COLOR_NULL_INSTANCE_HANDLE);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

class Module_lifecycle : public testing::Test {
protected:
    void SetUp() override { nq_probe_reset(); }
};

}  // namespace

TEST_F(Module_lifecycle, InitializeThenTerminateMakesAndDestroysTheLoggerObject)
{
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_NE(logger.get(), nullptr);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_TRUE(LUT_binding_is_complete());
    EXPECT_EQ(probe_events(), (Events{"logger.loaded", "logger.get_log " + logger_names,
                                      "lut.loaded", "lut.initialize"}));

    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_TRUE(LUT_binding_is_clear());
    // The table library goes first, before the count is even looked at.
    EXPECT_EQ(probe_events(), (Events{"lut.terminate", "lut.unloaded",
                                      "logger.free_log " + logger_names, "logger.unloaded"}));
}

TEST_F(Module_lifecycle, NestedInitializeCountsTheLoggerButNotTheLUTBinding)
{
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 2u);
    EXPECT_EQ(nq_probe_count_events(("logger.get_log " + logger_names).c_str()), 1);
    EXPECT_EQ(nq_probe_count_events("lut.initialize"), 2);

    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_NE(logger.get(), nullptr);
    EXPECT_TRUE(LUT_binding_is_clear());
    // Opened twice, closed once: the table library stays loaded, unbound.
    EXPECT_EQ(nq_probe_count_events("lut.unloaded"), 0);
    EXPECT_EQ(nq_probe_count_events(("logger.free_log " + logger_names).c_str()), 0);

    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(nq_probe_count_events("lut.terminate"), 1);
    EXPECT_EQ(nq_probe_count_events(("logger.free_log " + logger_names).c_str()), 1);
}

TEST_F(Module_lifecycle, TerminateWithoutInitializeChangesNothing)
{
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_TRUE(probe_events().empty());

    // The count did not go below zero: one initialise is undone by one terminate.
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.get(), nullptr);
}

TEST_F(Module_lifecycle, ReinitialisingBuildsAFreshLoggerObject)
{
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_probe_count_events(("logger.get_log " + logger_names).c_str()), 2);
    make_logged_calls();
    EXPECT_FALSE(probe_log_records().empty());
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_probe_count_events("logger.log with a foreign handle"), 0);
}

TEST_F(Module_lifecycle, ThrowingFreeLogIsSwallowedAndLeavesTheLoggerLibraryOpen)
{
    nq_probe_set("logger.free_log_throws", 1);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(nq_probe_count_events(("logger.free_log " + logger_names).c_str()), 1);
    EXPECT_EQ(nq_probe_count_events("logger.unloaded"), 0);
}

TEST_F(Module_lifecycle, LogThatWasNeverHandedOutIsStillFreedByName)
{
    nq_probe_set("logger.get_log_returns_null", 1);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    make_logged_calls();
    EXPECT_TRUE(probe_log_records().empty());
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(probe_events_starting_with("logger."),
              (Events{"logger.loaded", "logger.get_log " + logger_names,
                      "logger.free_log " + logger_names, "logger.unloaded"}));
}

TEST_F(Module_lifecycle, ThrowingGetLogLeavesTheModuleUninitialised)
{
    nq_probe_set("logger.get_log_throws", 1);
    EXPECT_THROW(nq_color_processing_module_initialize(), std::runtime_error);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(nq_probe_count_events("lut.initialize"), 0);

    // The owner's mutex was released: the next initialise goes through.
    nq_probe_set("logger.get_log_throws", 0);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
}

TEST(Module_without_LUT_library, InitializeFailsYetCounts)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_MODULE_NOT_INITIALIZED);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_NE(logger.get(), nullptr);
    EXPECT_TRUE(LUT_binding_is_clear());

    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(nq_probe_count_events(("logger.free_log " + logger_names).c_str()), 1);
}

TEST(Module_without_logger_library, WorksAndLogsNothing)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_NE(logger.get(), nullptr);

    void* processor = nq_color_create_color_processor(0, 0);
    ASSERT_NE(processor, nullptr);
    const uint16_t input[3] = {10, 20, 30};
    uint16_t output[3] = {};
    EXPECT_EQ(nq_color_transform_48_to_48(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535,
                                          0, 65535, 0, 65535, 0, 0, 0, output,
                                          NQ_COLOR_FORMAT_RGB_PIXEL, 1),
              NQ_COLOR_NO_ERROR);
    EXPECT_EQ(output[0], 30);
    EXPECT_EQ(output[2], 10);
    make_logged_calls();
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_TRUE(probe_log_records().empty());
}

// Run once with a logger library lacking xvr_log and once with one lacking xvr_get_log.
TEST(Module_with_incomplete_logger_library, LogsNothingButFreesTheLogByName)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    make_logged_calls();
    EXPECT_TRUE(probe_log_records().empty());
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    const Events logger_events = probe_events_starting_with("logger.");
    ASSERT_GE(logger_events.size(), 2u);
    EXPECT_EQ(logger_events[logger_events.size() - 2], "logger.free_log " + logger_names);
    EXPECT_EQ(logger_events.back(), "logger.unloaded");
}

TEST(Module_with_LUT_library_lacking_terminate, BindingFailsAndTerminateStillCloses)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_MODULE_NOT_INITIALIZED);
    EXPECT_EQ(nq_probe_count_events("lut.initialize"), 0);
    // What was found before the missing entry point stays bound until terminate.
    EXPECT_NE(LUT_wrapper::m_destroy_LUT, nullptr);
    EXPECT_EQ(LUT_wrapper::m_terminate_LUT_module, nullptr);

    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_TRUE(LUT_binding_is_clear());
    EXPECT_EQ(probe_events_starting_with("lut."), (Events{"lut.loaded", "lut.unloaded"}));
}

TEST(Module_with_LUT_library_lacking_transform_16, BindingFailsAlthoughTheEntryIsNeverCalled)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_MODULE_NOT_INITIALIZED);
    EXPECT_EQ(nq_probe_count_events("lut.initialize"), 0);
    EXPECT_NE(LUT_wrapper::m_create_LUT, nullptr);
    EXPECT_EQ(LUT_wrapper::m_get_LUT_data, nullptr);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_TRUE(LUT_binding_is_clear());
    EXPECT_EQ(nq_probe_count_events("lut.unloaded"), 1);
}
