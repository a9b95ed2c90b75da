// The logger object against the logger double, or against none. How an incomplete logger
// library is handled is shown through the module lifecycle (module_lifecycle_tests.cpp).
#include "modules/xvr_log_object.hpp"

#include "probe_queries.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

class Xvr_log_object_test : public testing::Test {
protected:
    void SetUp() override { nq_probe_reset(); }
};

// Run in a process whose search path holds no logger library.
using Xvr_log_object_without_library = Xvr_log_object_test;

}  // namespace

TEST_F(Xvr_log_object_test, DeliversEveryFieldOfARecord)
{
    Xvr_log_object log("MODULE");
    ASSERT_TRUE(log.enabled());
    EXPECT_TRUE(log.log(XVR_LOG_PRIORITY_ERROR, "some/file.cpp", 12, "some_function",
                        "%s The value %d is wrong!", "ERROR: ", 7));
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].priority, 0);
    EXPECT_EQ(records[0].file, "some/file.cpp");
    EXPECT_EQ(records[0].line, 12);
    EXPECT_EQ(records[0].function, "some_function");
    // The prefix ends in a blank and the format adds one: two blanks after the colon.
    EXPECT_EQ(records[0].text, "ERROR:  The value 7 is wrong!");
}

TEST_F(Xvr_log_object_test, DeliversARecordOfSeveralKilobytesWhole)
{
    Xvr_log_object log("MODULE");
    const std::string long_text(9000, 'x');
    EXPECT_TRUE(log.log(XVR_LOG_PRIORITY_INFO, "f", 1, "g", "[%s|%d]", long_text.c_str(), 42));
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].priority, 2);
    EXPECT_EQ(records[0].text, "[" + long_text + "|42]");
}

TEST_F(Xvr_log_object_test, ReportsARecordTheLibraryRefuses)
{
    Xvr_log_object log("MODULE");
    nq_probe_set("logger.log_result", 5);
    EXPECT_FALSE(log.log(XVR_LOG_PRIORITY_INFO, "f", 1, "g", "refused"));
    EXPECT_EQ(probe_log_records().size(), 1u);
}

TEST_F(Xvr_log_object_test, DropsARecordThatCannotBeFormatted)
{
    Xvr_log_object log("MODULE");
    // In the "C" locale a wide character beyond ASCII has no multibyte form: the formatter fails.
    EXPECT_FALSE(log.log(XVR_LOG_PRIORITY_INFO, "f", 1, "g", "%ls", L"\u00e9"));
    EXPECT_TRUE(probe_log_records().empty());
}

TEST_F(Xvr_log_object_test, OpensTheLogByNameAndFreesItByNameAtDestruction)
{
    {
        Xvr_log_object log("MODULE");
        EXPECT_EQ(probe_events(), (Events{"logger.loaded", "logger.get_log MODULE|"}));
    }
    EXPECT_EQ(probe_events(), (Events{"logger.loaded", "logger.get_log MODULE|",
                                      "logger.free_log MODULE|", "logger.unloaded"}));
}

TEST_F(Xvr_log_object_without_library, IsDisabledAndSilent)
{
    Xvr_log_object log("MODULE");
    EXPECT_FALSE(log.enabled());
    EXPECT_FALSE(log.log(XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "%s", "nowhere to go"));
    EXPECT_TRUE(probe_events().empty());
}

