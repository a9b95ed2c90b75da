// Module initialise and terminate as a host sees them, with the companions each test's
// LD_LIBRARY_PATH provides. The exported `logger` shows the count; the doubles' journal shows
// what the companions were asked.
#include <corvane_xvr_color_processing.h>

#include "modules/logger.hpp"
#include "companion_probe.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

const std::string get_log = "logger.get_log CORVANE_XVR_COLOR_PROCESSING|";
const std::string free_log = "logger.free_log CORVANE_XVR_COLOR_PROCESSING|";

int count(const std::string& event) { return nq_probe_count_events(event); }

// Calls that each write a record when there is a log: a notice, a timing and a null handle.
void make_logged_calls()
{
    void* processor = nq_color_create_color_processor(0, 0);
    ASSERT_NE(processor, nullptr);
    const uint16_t input[3] = {1, 2, 3};
    uint16_t output[3] = {};
    EXPECT_EQ(nq_color_transform_48_to_48(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535,
                                          0, 65535, 0, 65535, 0, 0, 0, output,
                                          NQ_COLOR_FORMAT_RGB_PIXEL, 1),
              NQ_COLOR_NO_ERROR);
    EXPECT_EQ(output[0], 3);
    EXPECT_EQ(nq_color_clear_matrix(nullptr), NQ_COLOR_NULL_INSTANCE_HANDLE);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

// Initialises, makes calls that would log, terminates; returns the logger double's events.
Events logger_events_of_a_silent_life(bool log_handed_out = true)
{
    nq_probe_reset();
    nq_probe_set("logger.get_log_returns_null", !log_handed_out);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_NE(logger.get(), nullptr);
    make_logged_calls();
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_TRUE(probe_log_records().empty());
    return probe_events_starting_with("logger.");
}

}  // namespace

TEST(Module_lifecycle, CountsNestedInitialisationsButNotTheLUTBinding)
{
    nq_probe_reset();
    // Terminate without initialise changes nothing, and the count does not go below zero.
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_TRUE(probe_events().empty());

    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_EQ(probe_events(), (Events{"logger.loaded", get_log, "lut.loaded", "lut.initialize"}));
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 2u);
    EXPECT_EQ(count(get_log), 1);
    EXPECT_EQ(count("lut.initialize"), 2);

    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_NE(logger.get(), nullptr);
    // Opened twice, closed once: the table library stays loaded, unbound (the next terminate
    // does not reach it).
    EXPECT_EQ(probe_events(), Events{"lut.terminate"});

    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(probe_events(), (Events{free_log, "logger.unloaded"}));

    // A second life gets a fresh logger object and log.
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(count(get_log), 1);
    make_logged_calls();
    EXPECT_EQ(probe_log_records().size(), 3u);
    EXPECT_EQ(count("logger.log with a foreign handle"), 0);
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    // The table library goes first, before the count is even looked at.
    EXPECT_EQ(probe_events(), (Events{"lut.terminate", free_log, "logger.unloaded"}));
}

TEST(Module_lifecycle, LogThatWasNeverHandedOutIsStillFreedByName)
{
    EXPECT_EQ(logger_events_of_a_silent_life(false),
              (Events{"logger.loaded", get_log, free_log, "logger.unloaded"}));
}

TEST(Module_lifecycle, ThrowingLoggerCallsLeaveTheModuleUsable)
{
    nq_probe_reset();
    nq_probe_set("logger.get_log_throws", 1);
    EXPECT_THROW(nq_color_processing_module_initialize(), std::runtime_error);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(count("lut.initialize"), 0);

    // The owner's mutex was released: the next initialise goes through.
    nq_probe_set("logger.get_log_throws", 0);
    nq_probe_set("logger.free_log_throws", 1);
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 1u);
    // A throwing xvr_free_log is swallowed and the logger library left open.
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.get(), nullptr);
    EXPECT_EQ(count(free_log), 1);
    EXPECT_EQ(count("logger.unloaded"), 0);
}

TEST(Module_without_LUT_library, InitializeFailsYetCounts)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_MODULE_NOT_INITIALIZED);
    EXPECT_EQ(logger.count(), 1u);
    EXPECT_NE(logger.get(), nullptr);
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(logger.count(), 0u);
    EXPECT_EQ(count(free_log), 1);
}

TEST(Module_without_logger_library, WorksAndLogsNothing)
{
    EXPECT_TRUE(logger_events_of_a_silent_life().empty());
}

// Run with a logger library lacking xvr_log and with one lacking xvr_get_log.
TEST(Module_with_incomplete_logger_library, LogsNothingButFreesTheLogByName)
{
    const Events events = logger_events_of_a_silent_life();
    ASSERT_GE(events.size(), 3u);
    EXPECT_EQ(events.front(), "logger.loaded");
    EXPECT_EQ(events[events.size() - 2], free_log);
    EXPECT_EQ(events.back(), "logger.unloaded");
}

// Run with a table library lacking "nq_LUT_module_terminate" and with one lacking
// "nq_LUT_transform_16", which the core binds although it never calls it. The library stays
// open until terminate.
TEST(Module_with_incomplete_LUT_library, BindingFailsAndTerminateStillCloses)
{
    nq_probe_reset();
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_MODULE_NOT_INITIALIZED);
    EXPECT_EQ(probe_events_starting_with("lut."), Events{"lut.loaded"});
    EXPECT_EQ(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(probe_events_starting_with("lut."), (Events{"lut.loaded", "lut.unloaded"}));
}
