// The configuration calls: table getters, enable flags and the colour matrix, seen through the
// record that the SSE double receives (the processors run at vector level 1).
#include "processor_test_support.hpp"

#include <cmath>
#include <cstring>
#include <functional>
#include <set>

namespace {

class Processor_configuration : public Initialised_module {
protected:
    void SetUp() override
    {
        Initialised_module::SetUp();
        m_processor = nq_color_create_color_processor_test(8, 8, 1);
        ASSERT_NE(m_processor, nullptr);
        nq_probe_reset();
    }
    void TearDown() override
    {
        EXPECT_EQ(nq_color_destroy_color_processor(m_processor), NQ_COLOR_NO_ERROR);
        Initialised_module::TearDown();
    }

    std::vector<float> matrix() { return matrix_seen_by_vector_library(m_processor); }

    void* m_processor = nullptr;
};

using Matrix = std::vector<float>;

}  // namespace

TEST_F(Processor_configuration, GettersHandOutTheLiveTables)
{
    int32_t* const tables[6] = {
        nq_color_get_blue_input_LUT(m_processor),  nq_color_get_green_input_LUT(m_processor),
        nq_color_get_red_input_LUT(m_processor),   nq_color_get_blue_output_LUT(m_processor),
        nq_color_get_green_output_LUT(m_processor), nq_color_get_red_output_LUT(m_processor)};
    EXPECT_EQ(std::set<int32_t*>(tables, tables + 6).size(), 6u);
    EXPECT_EQ(nq_color_get_blue_input_LUT(m_processor), tables[0]);
    EXPECT_EQ(nq_color_get_red_output_LUT(m_processor), tables[5]);
    EXPECT_TRUE(probe_log_records().empty());

    matrix_seen_by_vector_library(m_processor);
    const auto record = recorded_16_bit_record("sse");
    EXPECT_EQ(record.blue_input_LUT, tables[0]);
    EXPECT_EQ(record.green_input_LUT, tables[1]);
    EXPECT_EQ(record.red_input_LUT, tables[2]);
    EXPECT_EQ(record.blue_output_LUT, tables[3]);
    EXPECT_EQ(record.green_output_LUT, tables[4]);
    EXPECT_EQ(record.red_output_LUT, tables[5]);
}

TEST_F(Processor_configuration, NullHandleIsLoggedByEachCallAtItsOwnLine)
{
    struct Expectation {
        const char* function;
        int line;
        std::function<bool()> call;  // true when the call answered null or 2
    };
    const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const std::vector<Expectation> expectations = {
        {"nq_color_get_blue_input_LUT", 166, [] { return !nq_color_get_blue_input_LUT(nullptr); }},
        {"nq_color_get_green_input_LUT", 184, [] { return !nq_color_get_green_input_LUT(nullptr); }},
        {"nq_color_get_red_input_LUT", 202, [] { return !nq_color_get_red_input_LUT(nullptr); }},
        {"nq_color_enable_input_LUTs", 223,
         [] { return nq_color_enable_input_LUTs(nullptr, 1, 1, 1) == 2; }},
        {"nq_color_append_matrix", 246,
         [&] { return nq_color_append_matrix(nullptr, identity) == 2; }},
        {"nq_color_clear_matrix", 266, [] { return nq_color_clear_matrix(nullptr) == 2; }},
        {"nq_color_get_blue_output_LUT", 286, [] { return !nq_color_get_blue_output_LUT(nullptr); }},
        {"nq_color_get_green_output_LUT", 304,
         [] { return !nq_color_get_green_output_LUT(nullptr); }},
        {"nq_color_get_red_output_LUT", 322, [] { return !nq_color_get_red_output_LUT(nullptr); }},
        {"nq_color_enable_output_LUTs", 343,
         [] { return nq_color_enable_output_LUTs(nullptr, 1, 1, 1) == 2; }},
        {"nq_color_destroy_color_processor", 501,
         [] { return nq_color_destroy_color_processor(nullptr) == 2; }},
    };
    for (const Expectation& expectation : expectations) {
        nq_probe_reset();
        EXPECT_TRUE(expectation.call()) << expectation.function;
        const auto records = probe_log_records();
        ASSERT_EQ(records.size(), 1u) << expectation.function;
        expect_record(records[0], 0, interface_file, expectation.line, expectation.function,
                      null_handle_text);
    }
}

TEST_F(Processor_configuration, EnableCallsSetAllThreeFlagsFromAnyInteger)
{
    EXPECT_EQ(nq_color_enable_input_LUTs(m_processor, 5, 0, -1), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(nq_color_enable_output_LUTs(m_processor, 0, 65536, 0), NQ_COLOR_NO_ERROR);
    matrix();
    auto record = recorded_16_bit_record("sse");
    EXPECT_TRUE(record.blue_input_LUT_enabled);
    EXPECT_FALSE(record.green_input_LUT_enabled);
    EXPECT_TRUE(record.red_input_LUT_enabled);
    EXPECT_FALSE(record.blue_output_LUT_enabled);
    EXPECT_TRUE(record.green_output_LUT_enabled);
    EXPECT_FALSE(record.red_output_LUT_enabled);

    EXPECT_EQ(nq_color_enable_input_LUTs(m_processor, 0, 0, 0), NQ_COLOR_NO_ERROR);
    matrix();
    record = recorded_16_bit_record("sse");
    EXPECT_FALSE(record.blue_input_LUT_enabled);
    EXPECT_FALSE(record.red_input_LUT_enabled);
    EXPECT_TRUE(record.green_output_LUT_enabled);
}

TEST_F(Processor_configuration, AppendingAThenBGivesATimesB)
{
    const float a[9] = {1, 2, 0, 0, 1, 3, 4, 0, 1};
    const float b[9] = {2, 0, 1, 1, 1, 0, 0, 5, 1};
    EXPECT_EQ(nq_color_append_matrix(m_processor, a), NQ_COLOR_NO_ERROR);
    EXPECT_EQ(matrix(), Matrix(a, a + 9));
    EXPECT_EQ(nq_color_append_matrix(m_processor, b), NQ_COLOR_NO_ERROR);
    // Worked by hand: row i of A times column j of B.
    EXPECT_EQ(matrix(), (Matrix{4, 2, 1, 1, 16, 3, 8, 5, 5}));
}

TEST_F(Processor_configuration, AppendingTheOwnMatrixSquaresIt)
{
    const float a[9] = {1, 1, 0, 1, 1, 0, 0, 0, 1};
    ASSERT_EQ(nq_color_append_matrix(m_processor, a), NQ_COLOR_NO_ERROR);
    matrix();
    const float* own = recorded_16_bit_record("sse").matrix;
    ASSERT_EQ(static_cast<const void*>(own), m_processor);
    EXPECT_EQ(nq_color_append_matrix(m_processor, own), NQ_COLOR_NO_ERROR);
    // Reading the argument after the first row was written would give 3 in row 1.
    EXPECT_EQ(matrix(), (Matrix{2, 2, 0, 2, 2, 0, 0, 0, 1}));
}

TEST_F(Processor_configuration, SumsProductsInExtendedPrecisionAndRoundsOnce)
{
    // Row 0 times column 0 is 2^40 + 2^-20 - 2^40. In double the middle term is lost; with a
    // 64-bit significand it survives, and 2^-20 is a float.
    const float a[9] = {std::ldexp(1.0f, 20), std::ldexp(1.0f, -10), 1, 0, 1, 0, 0, 0, 1};
    const float b[9] = {std::ldexp(1.0f, 20), 0, 0, std::ldexp(1.0f, -10), 1, 0,
                        -std::ldexp(1.0f, 40), 0, 1};
    ASSERT_EQ(nq_color_append_matrix(m_processor, a), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(nq_color_append_matrix(m_processor, b), NQ_COLOR_NO_ERROR);
    const Matrix product = matrix();
    ASSERT_EQ(product.size(), 9u);
    EXPECT_EQ(product[0], std::ldexp(1.0f, -20));
    EXPECT_EQ(product[1], std::ldexp(1.0f, -10));
    EXPECT_EQ(product[2], 1.0f);
}

TEST_F(Processor_configuration, AppendingTheIdentityKeepsEveryBit)
{
    const float odd[9] = {0.1f, -0.3f, 1e-7f, 3.4e38f, -2.5f, 7.0f / 3.0f, 1e-38f, 0.0f, -1.0f};
    const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    ASSERT_EQ(nq_color_append_matrix(m_processor, odd), NQ_COLOR_NO_ERROR);
    ASSERT_EQ(nq_color_append_matrix(m_processor, identity), NQ_COLOR_NO_ERROR);
    const Matrix result = matrix();
    ASSERT_EQ(result.size(), 9u);
    EXPECT_EQ(std::memcmp(result.data(), odd, sizeof odd), 0);
}

TEST_F(Processor_configuration, ClearingRestoresTheExactIdentity)
{
    const float a[9] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f};
    for (int append = 0; append < 3; ++append) {
        ASSERT_EQ(nq_color_append_matrix(m_processor, a), NQ_COLOR_NO_ERROR);
    }
    EXPECT_EQ(nq_color_clear_matrix(m_processor), NQ_COLOR_NO_ERROR);
    const Matrix result = matrix();
    const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    ASSERT_EQ(result.size(), 9u);
    EXPECT_EQ(std::memcmp(result.data(), identity, sizeof identity), 0);
    EXPECT_TRUE(probe_log_records().size() >= 1u);  // only timing records
    for (const auto& record : probe_log_records()) EXPECT_EQ(record.priority, 2);
}
