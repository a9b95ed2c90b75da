// The module layer's internal classes, each group run with its own doubles on the search path
// (CMakeLists.txt): the loader helpers, the binding to a vector library, the logger object and
// the transform timer's arithmetic. The timer's record is checked with every transform.
#include "modules/loader_helpers.hpp"
#include "modules/vector_color_processing_module.hpp"
#include "modules/xvr_log_object.hpp"
#include "modules/xvr_timer.hpp"

#include "probe_queries.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Events = std::vector<std::string>;

std::unique_ptr<Vector_color_processing_module> bind_sse(
    int initialize_result, const char* transform_16_name,
    const char* library = "corvane_xvr_color_processing_vector_sse")
{
    nq_probe_reset();
    nq_probe_set("sse.initialize_result", initialize_result);
    return std::make_unique<Vector_color_processing_module>(
        library, "nq_color_processing_vector_sse_module_initialize",
        "nq_color_processing_transform_8_bit_output_vector_sse", transform_16_name,
        "nq_color_processing_vector_sse_module_terminate");
}

const char* const transform_16 = "nq_color_processing_transform_16_bit_output_vector_sse";

}  // namespace

// Run where the search path holds only "liblibx.so.so" and "lib.so", each of which reports its
// own file name.
TEST(Loader_helpers, DecorateTheNameAsItStands)
{
    using Marker_function = const char* (*)();
    const std::pair<const char*, std::string> cases[] = {{"libx.so", "liblibx.so.so"},
                                                         {"", "lib.so"}};
    for (const auto& [module, file] : cases) {
        SCOPED_TRACE(testing::Message() << "module \"" << module << '"');
        void* library = load_shared_library(module);
        ASSERT_NE(library, nullptr);
        auto marker =
            reinterpret_cast<Marker_function>(get_function_handle(library, "nq_marker_file"));
        ASSERT_NE(marker, nullptr);
        EXPECT_EQ(marker(), file);
        // Opened without RTLD_GLOBAL: a companion's symbols must not leak into the process.
        EXPECT_EQ(get_function_handle(RTLD_DEFAULT, "nq_marker_file"), nullptr);
        unload_shared_library(library);
        EXPECT_EQ(library, nullptr);
    }
}

TEST(Vector_module_test, InitialisesOnceAndTerminatesEvenWhenInitialisationFailed)
{
    for (int initialize_result : {0, 1}) {
        auto module = bind_sse(initialize_result, transform_16);
        EXPECT_EQ(module->m_failed, initialize_result != 0) << initialize_result;
        EXPECT_EQ(probe_events(), (Events{"sse.loaded", "sse.initialize"})) << initialize_result;
        module.reset();
        EXPECT_EQ(probe_events(),
                  (Events{"sse.loaded", "sse.initialize", "sse.terminate", "sse.unloaded"}))
            << initialize_result;
    }
}

// A module that failed part-way is never initialised nor terminated, and its library is closed.
TEST(Vector_module_test, MissingEntryPointOrLibraryMarksTheModuleFailed)
{
    auto module = bind_sse(0, "nq_absent");
    EXPECT_TRUE(module->m_failed);
    module.reset();
    EXPECT_EQ(probe_events(), (Events{"sse.loaded", "sse.unloaded"}));

    module = bind_sse(0, transform_16, "corvane_xvr_no_such_vector_library");
    EXPECT_TRUE(module->m_failed);
    module.reset();
    EXPECT_TRUE(probe_events().empty());
}

// How an incomplete logger library is handled is shown through the module lifecycle.
TEST(Xvr_log_object_test, DeliversEveryFieldAndRecordsOfSeveralKilobytesWhole)
{
    nq_probe_reset();
    Xvr_log_object log("MODULE");
    ASSERT_TRUE(log.enabled());
    EXPECT_TRUE(log.log(XVR_LOG_PRIORITY_ERROR, "some/file.cpp", 12, "some_function",
                        "%s The value %d is wrong!", "ERROR: ", 7));
    const std::string long_text(9000, 'x');
    EXPECT_TRUE(log.log(XVR_LOG_PRIORITY_INFO, "f", 1, "g", "[%s|%d]", long_text.c_str(), 42));
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].priority, 0);
    EXPECT_EQ(records[0].file, "some/file.cpp");
    EXPECT_EQ(records[0].line, 12);
    EXPECT_EQ(records[0].function, "some_function");
    // The prefix ends in a blank and the format adds one: two blanks after the colon.
    EXPECT_EQ(records[0].text, "ERROR:  The value 7 is wrong!");
    EXPECT_EQ(records[1].priority, 2);
    EXPECT_EQ(records[1].text, "[" + long_text + "|42]");
}

// Run in a process whose search path holds no logger library.
TEST(Xvr_log_object_without_library, IsDisabledAndSilent)
{
    nq_probe_reset();
    Xvr_log_object log("MODULE");
    EXPECT_FALSE(log.enabled());
    EXPECT_FALSE(log.log(XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "%s", "nowhere to go"));
    EXPECT_TRUE(probe_events().empty());
}

TEST(XVRTimer_arithmetic, TruncatesToWholeMicrosecondsTowardZero)
{
    using namespace std::chrono;
    // The wall clock may step back between the two readings; 4321000000999 ns is beyond 32 bits.
    const std::pair<long long, double> cases[] = {
        {0, 0.0},          {999, 0.0},  {1000, 1.0},   {1999, 1.0},
        {1532999, 1532.0}, {-999, 0.0}, {-1999, -1.0}, {4321000000999LL, 4321000000.0}};
    for (const auto& [elapsed, expected] : cases) {
        const system_clock::time_point start{};
        const auto end = start + duration_cast<system_clock::duration>(nanoseconds(elapsed));
        EXPECT_EQ(XVRTimer::whole_microseconds(start, end), expected) << elapsed << " ns";
    }
}
