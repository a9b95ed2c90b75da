// The transform timer: its arithmetic on made-up clock readings, and the record it writes.
#include "modules/xvr_timer.hpp"

#include "probe_queries.hpp"

#include <gtest/gtest.h>

#include <regex>

namespace {

using std::chrono::nanoseconds;
using std::chrono::system_clock;

double microseconds_for(long long elapsed_nanoseconds)
{
    const system_clock::time_point start{};
    return XVRTimer::whole_microseconds(
        start, start + std::chrono::duration_cast<system_clock::duration>(
                           nanoseconds(elapsed_nanoseconds)));
}

}  // namespace

TEST(XVRTimer_arithmetic, TruncatesToWholeMicrosecondsTowardZero)
{
    EXPECT_EQ(microseconds_for(0), 0.0);
    EXPECT_EQ(microseconds_for(999), 0.0);
    EXPECT_EQ(microseconds_for(1000), 1.0);
    EXPECT_EQ(microseconds_for(1999), 1.0);
    EXPECT_EQ(microseconds_for(1532999), 1532.0);
    // The wall clock may step back between the two readings.
    EXPECT_EQ(microseconds_for(-999), 0.0);
    EXPECT_EQ(microseconds_for(-1999), -1.0);
    // Beyond 32 bits of nanoseconds: about 1.2 hours.
    EXPECT_EQ(microseconds_for(4321000000999LL), 4321000000.0);
}

TEST(XVRTimer_record, CarriesTheCallersPlaceAndSixZeroDecimals)
{
    nq_probe_reset();
    Xvr_log_object log("MODULE");
    { XVRTimer timer("a timed step", &log, "dir/source.cpp", 101, "timed_function"); }
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].priority, XVR_LOG_PRIORITY_INFO);
    EXPECT_EQ(records[0].file, "dir/source.cpp");
    EXPECT_EQ(records[0].line, 101);
    EXPECT_EQ(records[0].function, "timed_function");
    EXPECT_TRUE(std::regex_match(records[0].text,
                                 std::regex("a timed step takes -?[0-9]+\\.000000 microseconds\\.")))
        << records[0].text;
}
