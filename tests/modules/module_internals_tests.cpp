// The module layer's internal classes, each group run with its own doubles on the search path
// (CMakeLists.txt): the loader helpers, the binding to a vector library, the logger object and
// the transform timer's arithmetic. The timer's record is checked with every transform; a
// missing logger library with the module lifecycle.
#include "modules/loader_helpers.hpp"
#include "modules/vector_color_processing_module.hpp"
#include "modules/xvr_log_object.hpp"
#include "modules/xvr_timer.hpp"

#include "companion_probe.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Events = std::vector<std::string>;

const char* const sse_library = "corvane_xvr_color_processing_vector_sse";
const char* const transform_16 = "nq_color_processing_transform_16_bit_output_vector_sse";

std::unique_ptr<Vector_color_processing_module> bind_sse(int initialize_result, const char* transform_16_name,
                                                         const char* library)
{
    nq_probe_reset();
    nq_probe_set("sse.initialize_result", initialize_result);
    return std::make_unique<Vector_color_processing_module>(
        library, "nq_color_processing_vector_sse_module_initialize",
        "nq_color_processing_transform_8_bit_output_vector_sse", transform_16_name,
        "nq_color_processing_vector_sse_module_terminate");
}

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

// Loaded, initialised, and terminated even when the initialisation failed; a library without
// every entry point is closed again, neither initialised nor terminated, and never called.
TEST(Vector_module_test, TerminatesWhatItLoadedAndFailsWithoutEveryEntryPoint)
{
    const Events whole_life{"sse.loaded", "sse.initialize", "sse.terminate", "sse.unloaded"};
    const struct {
        int initialize_result;
        const char* transform_16_name;
        const char* library;
        bool failed;
        Events events;
    } cases[] = {{0, transform_16, sse_library, false, whole_life},
                 {1, transform_16, sse_library, true, whole_life},
                 {0, "nq_absent", sse_library, true, {"sse.loaded", "sse.unloaded"}},
                 {0, transform_16, "corvane_xvr_no_such_vector_library", true, {}}};
    for (const auto& c : cases) {
        auto module = bind_sse(c.initialize_result, c.transform_16_name, c.library);
        EXPECT_EQ(module->m_failed, c.failed) << c.transform_16_name << " in " << c.library;
        module.reset();
        EXPECT_EQ(probe_events(), c.events) << c.transform_16_name << " in " << c.library;
    }
}

// Records far longer than a fixed buffer arrive whole; every record of the library shows the
// fields.
TEST(Xvr_log_object_test, DeliversRecordsOfSeveralKilobytesWhole)
{
    nq_probe_reset();
    Xvr_log_object log("MODULE");
    const std::string long_text(9000, 'x');
    EXPECT_TRUE(log.log(XVR_LOG_PRIORITY_INFO, "f", 1, "g", "[%s|%d]", long_text.c_str(), 42));
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].text, "[" + long_text + "|42]");
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
