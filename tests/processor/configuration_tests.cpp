// The configuration calls: table getters, enable flags and the colour matrix, seen through the
// record that the SSE double receives (the processors run at vector level 1).
#include "processor_test_support.hpp"

#include <climits>
#include <functional>

namespace {

class Processor_configuration : public Initialised_module {
protected:
    void SetUp() override
    {
        Initialised_module::SetUp();
        m_processor = make(8, 8, 1);
    }
    void* m_processor = nullptr;
};

using Matrix = std::vector<float>;

}  // namespace

TEST_F(Processor_configuration, NullHandleIsLoggedByEachCallAtItsOwnLine)
{
    const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const uint16_t input[3] = {};
    uint16_t output[4] = {};
    const Transform_call call = call_of(nullptr, input, output, 1);
    struct Case {
        const char* function;
        int line;
        std::function<int()> call;  // a getter's null answer counts as 2
    };
    std::vector<Case> cases = {
        {"nq_color_enable_input_LUTs", 223, [] { return nq_color_enable_input_LUTs(nullptr, 1, 1, 1); }},
        {"nq_color_append_matrix", 246, [&] { return nq_color_append_matrix(nullptr, identity); }},
        {"nq_color_clear_matrix", 266, [] { return nq_color_clear_matrix(nullptr); }},
        {"nq_color_enable_output_LUTs", 343, [] { return nq_color_enable_output_LUTs(nullptr, 1, 1, 1); }},
        {"nq_color_destroy_color_processor", 501, [] { return nq_color_destroy_color_processor(nullptr); }},
    };
    // The transforms write no timing record for a null handle.
    for (const Transform_kind& kind : transform_kinds) {
        cases.push_back({"nq_color_processor_transform_impl", 97, [&] { return kind.run(call); }});
    }
    const char* const getters[6] = {"nq_color_get_blue_input_LUT",  "nq_color_get_green_input_LUT",
                                    "nq_color_get_red_input_LUT",   "nq_color_get_blue_output_LUT",
                                    "nq_color_get_green_output_LUT", "nq_color_get_red_output_LUT"};
    const int getter_lines[6] = {166, 184, 202, 286, 304, 322};
    for (int getter = 0; getter < 6; ++getter) {
        cases.push_back({getters[getter], getter_lines[getter],
                         [=] { return table_getters[getter](nullptr) == nullptr ? 2 : 0; }});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.function << " at line " << c.line);
        nq_probe_reset();
        EXPECT_EQ(c.call(), NQ_COLOR_NULL_INSTANCE_HANDLE);
        const auto records = probe_log_records();
        ASSERT_EQ(records.size(), 1u);
        expect_record(records[0], 0, interface_file, c.line, c.function,
                      "ERROR:  The specified color processor handle is NULL!");
    }
}

// Any non-zero int enables, also one whose low byte is zero: the flag is the int's truth, not a
// narrowing of it.
TEST_F(Processor_configuration, EnableCallsSetAllThreeFlagsFromAnyInteger)
{
    EXPECT_EQ(nq_color_enable_input_LUTs(m_processor, 256, 0, INT_MIN), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_enable_output_LUTs(m_processor, 0, 65536, 0), NQ_COLOR_NO_ERROR);
    const auto record = sse_record_of(m_processor);
    EXPECT_EQ((std::vector<bool>{record.blue_input_LUT_enabled, record.green_input_LUT_enabled,
                                 record.red_input_LUT_enabled, record.blue_output_LUT_enabled,
                                 record.green_output_LUT_enabled, record.red_output_LUT_enabled}),
              (std::vector<bool>{true, false, true, false, true, false}));
}

// Appending B to A gives A x B (the extended-precision product is checked under every caller's
// control word); clearing restores the identity.
TEST_F(Processor_configuration, AppendingMultipliesOnTheRightAndClearingRestoresTheIdentity)
{
    const float a[9] = {1, 2, 0, 0, 1, 3, 4, 0, 1};
    const float b[9] = {2, 0, 1, 1, 1, 0, 0, 5, 1};
    EXPECT_EQ(nq_color_append_matrix(m_processor, a), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(matrix_of(m_processor), Matrix(a, a + 9));
    EXPECT_EQ(nq_color_append_matrix(m_processor, b), NQ_COLOR_NO_ERROR);
    // Worked by hand: row i of A times column j of B.
    EXPECT_EQ(matrix_of(m_processor), (Matrix{4, 2, 1, 1, 16, 3, 8, 5, 5}));
    EXPECT_EQ(nq_color_clear_matrix(m_processor), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(matrix_of(m_processor), (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    for (const auto& record : probe_log_records()) EXPECT_EQ(record.priority, 2);  // timing only
}

TEST_F(Processor_configuration, AppendingTheOwnMatrixSquaresIt)
{
    const float a[9] = {1, 1, 0, 1, 1, 0, 0, 0, 1};
    ASSERT_EQ(nq_color_append_matrix(m_processor, a), NQ_COLOR_NO_ERROR);
    const float* own = sse_record_of(m_processor).matrix;
    ASSERT_EQ(static_cast<const void*>(own), m_processor);
    EXPECT_EQ(nq_color_append_matrix(m_processor, own), NQ_COLOR_NO_ERROR);
    // Reading the argument after the first row was written would give 3 in row 1.
    EXPECT_EQ(matrix_of(m_processor), (Matrix{2, 2, 0, 2, 2, 0, 0, 0, 1}));
}
