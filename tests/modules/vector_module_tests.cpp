// Binding to a vector library, against the SSE double (or against none).
#include "modules/vector_color_processing_module.hpp"

#include "probe_queries.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

const char* const library = "corvane_xvr_color_processing_vector_sse";
const char* const initialize = "nq_color_processing_vector_sse_module_initialize";
const char* const transform_8 = "nq_color_processing_transform_8_bit_output_vector_sse";
const char* const transform_16 = "nq_color_processing_transform_16_bit_output_vector_sse";
const char* const terminate = "nq_color_processing_vector_sse_module_terminate";

class Vector_module_test : public testing::Test {
protected:
    void SetUp() override { nq_probe_reset(); }
};

}  // namespace

TEST_F(Vector_module_test, BindsAllFourEntryPointsAndInitialisesOnce)
{
    {
        Vector_color_processing_module module(library, initialize, transform_8, transform_16,
                                              terminate);
        EXPECT_FALSE(module.m_failed);
        ASSERT_NE(module.m_library_handle, nullptr);
        // The 8-bit name comes before the 16-bit name.
        EXPECT_EQ(reinterpret_cast<void*>(module.m_transform_8_bit_output),
                  dlsym(module.m_library_handle, transform_8));
        EXPECT_EQ(reinterpret_cast<void*>(module.m_transform_16_bit_output),
                  dlsym(module.m_library_handle, transform_16));
        EXPECT_NE(module.m_initialize, nullptr);
        EXPECT_NE(module.m_terminate, nullptr);
        EXPECT_EQ(probe_events(), (Events{"sse.loaded", "sse.initialize"}));
    }
    EXPECT_EQ(probe_events(),
              (Events{"sse.loaded", "sse.initialize", "sse.terminate", "sse.unloaded"}));
}

TEST_F(Vector_module_test, FailedInitialisationStillGetsTerminated)
{
    nq_probe_set("sse.initialize_result", 1);
    {
        Vector_color_processing_module module(library, initialize, transform_8, transform_16,
                                              terminate);
        EXPECT_TRUE(module.m_failed);
        EXPECT_NE(module.m_transform_16_bit_output, nullptr);
    }
    EXPECT_EQ(probe_events(),
              (Events{"sse.loaded", "sse.initialize", "sse.terminate", "sse.unloaded"}));
}

TEST_F(Vector_module_test, MissingEntryPointKeepsWhatWasBoundAndSkipsInitialisation)
{
    {
        Vector_color_processing_module module(library, initialize, transform_8, "nq_absent",
                                              terminate);
        EXPECT_TRUE(module.m_failed);
        EXPECT_NE(module.m_initialize, nullptr);
        EXPECT_NE(module.m_transform_8_bit_output, nullptr);
        EXPECT_EQ(module.m_transform_16_bit_output, nullptr);
        EXPECT_EQ(module.m_terminate, nullptr);
    }
    // Neither initialised nor terminated, but closed.
    EXPECT_EQ(probe_events(), (Events{"sse.loaded", "sse.unloaded"}));
}

TEST_F(Vector_module_test, MissingLibraryMarksTheModuleFailed)
{
    Vector_color_processing_module module("corvane_xvr_no_such_vector_library", initialize,
                                          transform_8, transform_16, terminate);
    EXPECT_TRUE(module.m_failed);
    EXPECT_EQ(module.m_library_handle, nullptr);
    EXPECT_EQ(module.m_initialize, nullptr);
    EXPECT_TRUE(probe_events().empty());
}
