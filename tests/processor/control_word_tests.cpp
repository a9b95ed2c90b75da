// Whatever x87 control word the calling thread runs with (every precision control setting,
// every rounding mode, every exception unmasked), transforms and matrix products give the bytes
// they give under the default word, and the caller's word is as it was when they return.
#include "control_words.hpp"
#include "processor_test_support.hpp"

#include <cmath>
#include <random>

namespace {

// Runs `call` under `word` and answers the word found when it returned.
template <typename Call>
uint16_t word_after(uint16_t word, Call call)
{
    const uint16_t test_word = x87_control_word();
    load_x87_control_word(word);
    call();
    const uint16_t after = x87_control_word();
    load_x87_control_word(test_word);
    return after;
}

constexpr uint16_t default_word = 0x037F;

// Every precision control (24, 53, 64 bits) with every rounding mode, exceptions masked; then
// the default precision and rounding with every exception unmasked.
std::vector<uint16_t> caller_words()
{
    std::vector<uint16_t> words;
    for (uint16_t precision : {0x0000, 0x0200, 0x0300}) {
        for (uint16_t rounding : {0x0000, 0x0400, 0x0800, 0x0C00}) words.push_back(0x007F | precision | rounding);
    }
    words.push_back(0x0340);
    return words;
}

const float colour_rows[9] = {1.164f, 0.0f, 1.596f, 1.164f, -0.392f, -0.813f, 1.164f, 2.017f, 0.0f};
// Sums just below or above an integer by less than a double's last bit: only rounding to
// nearest keeps them on the right side.
const float tie_rows[9] = {0.5f, -std::ldexp(1.0f, -60), 0.0f, 1.5f, 0.0f, std::ldexp(1.0f, -58),
                           0.25f, -std::ldexp(1.0f, -61), 0.25f};
const float* const matrices[] = {colour_rows, tie_rows};

using Caller_control_word = Initialised_module;

}  // namespace

TEST_F(Caller_control_word, NeitherChangesTheResultNorIsLeftChanged)
{
    void* processor = make(16, 16, 0);
    constexpr int32_t pixels = 20000;  // 60,000 samples
    std::vector<uint16_t> input(3 * pixels);
    std::mt19937 random(12);
    for (uint16_t& sample : input) sample = static_cast<uint16_t>(random());
    const auto output_under = [&](uint16_t word, const float* matrix) {
        EXPECT_EQ(nq_color_clear_matrix(processor), NQ_COLOR_NO_ERROR);
        EXPECT_EQ(nq_color_append_matrix(processor, matrix), NQ_COLOR_NO_ERROR);
        std::vector<uint16_t> output(3 * pixels);
        int code = -1;
        EXPECT_EQ(word_after(word, [&] { code = to_48.run(call_of(processor, input.data(), output.data(), pixels)); }),
                  word);
        EXPECT_EQ(code, NQ_COLOR_NO_ERROR);
        return output;
    };
    for (const float* matrix : matrices) {
        const auto expected = output_under(default_word, matrix);
        for (uint16_t word : caller_words()) {
            const auto output = output_under(word, matrix);
            int differing = 0;
            for (std::size_t k = 0; k < output.size(); ++k) differing += output[k] != expected[k];
            EXPECT_EQ(differing, 0) << "samples of 60,000 differ under the caller's word 0x"
                                    << std::hex << word << " with the "
                                    << (matrix == tie_rows ? "tie" : "colour") << " rows";
        }
    }
}

TEST_F(Caller_control_word, AppendingKeepsExtendedPrecisionAndRoundsToNearest)
{
    void* processor = make(8, 8, 1);  // the SSE double shows the matrix
    // Row 0 times column 0 is 2^40 + 2^-20 - 2^40, which needs a 64-bit significand; a third
    // rounds to float differently in each direction.
    const float a[9] = {std::ldexp(1.0f, 20), std::ldexp(1.0f, -10), 1, 0, 1.0f / 3, 0, 0, 0, 1};
    const float b[9] = {std::ldexp(1.0f, 20), 0, 0, std::ldexp(1.0f, -10), 3, 0,
                        -std::ldexp(1.0f, 40), 0, 1.0f / 7};
    const auto matrix_under = [&](uint16_t word) {
        EXPECT_EQ(nq_color_clear_matrix(processor), NQ_COLOR_NO_ERROR);
        EXPECT_EQ(word_after(word, [&] {
                      nq_color_append_matrix(processor, a);
                      nq_color_append_matrix(processor, b);
                  }), word);
        return matrix_of(processor);
    };
    const auto expected = matrix_under(default_word);
    ASSERT_EQ(expected.at(0), std::ldexp(1.0f, -20));
    for (uint16_t word : caller_words()) {
        EXPECT_TRUE(matrix_under(word) == expected) << std::hex << "caller's word 0x" << word;
    }
}
