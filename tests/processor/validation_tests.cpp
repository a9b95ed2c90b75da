// Argument validation of the transforms: order, codes, records, and that a refused call writes
// nothing. Every call that gets past the handle test ends with one timing record.
#include "processor_test_support.hpp"

#include <array>
#include <functional>
#include <ostream>

namespace {

constexpr uint16_t untouched = 0xEEEE;

struct Validation_case {
    const char* name;
    std::function<void(Transform_call<uint16_t>&)> change;
    std::array<int, 3> output_LUTs_enabled;  // blue, green, red
    int code;
    int line;          // of the error record; 0 when the call is valid
    std::string text;  // of the error record
};

std::ostream& operator<<(std::ostream& stream, const Validation_case& c)
{
    return stream << c.name;
}

std::string clamp_text(const char* channel)
{
    return std::string("ERROR:  a max value less than the min was specified for the ") + channel +
           " channel or max clamp value exceeds enabled output LUT size!";
}

std::string shift_text(const char* channel)
{
    return std::string("ERROR:  Invalid ") + channel + " shift distance specified!";
}

using Call = Transform_call<uint16_t>;

// The processor has 4096-entry output tables (output depth 12).
const Validation_case validation_cases[] = {
    {"NullInputAndOutput", [](Call& c) { c.input = nullptr; c.output = nullptr; }, {0, 0, 0}, 3,
     114, "ERROR:  The specified input buffer is NULL!"},
    {"NullOutput", [](Call& c) { c.output = nullptr; }, {0, 0, 0}, 4, 120,
     "ERROR:  The specified output buffer is NULL!"},
    {"SameBuffer", [](Call& c) { c.output = const_cast<uint16_t*>(c.input); }, {0, 0, 0}, 5, 126,
     "ERROR:  Different input and output buffer must be specified."},
    {"InputFormatBeforeShifts",
     [](Call& c) { c.input_format = format_value(3); c.blue_shift = 16; }, {0, 0, 0}, 9,
     132, "ERROR:  Invalid input buffer format specified!"},
    {"BlueShift16", [](Call& c) { c.blue_shift = 16; }, {0, 0, 0}, 11, 138, shift_text("blue")},
    {"GreenShift16", [](Call& c) { c.green_shift = 16; }, {0, 0, 0}, 11, 144, shift_text("green")},
    {"RedShiftMinus16", [](Call& c) { c.red_shift = -16; }, {0, 0, 0}, 11, 150, shift_text("red")},
    {"EveryShiftInvalidReportsBlueOnly",
     [](Call& c) { c.blue_shift = 100; c.green_shift = -100; c.red_shift = 16; }, {0, 0, 0}, 11,
     138, shift_text("blue")},
    {"ShiftsAtTheirLimits",
     [](Call& c) { c.blue_shift = 15; c.green_shift = -15; c.red_shift = 15; }, {0, 0, 0}, 0, 0,
     ""},
    {"ClampMaxBelowEnabledTableSize", [](Call& c) { c.blue_max = 4095; }, {1, 0, 0}, 0, 0, ""},
    {"ClampMaxAtEnabledTableSize", [](Call& c) { c.blue_max = 4096; }, {1, 0, 0}, 12, 156,
     clamp_text("blue")},
    {"ClampMaxUnboundedWhileTableDisabled",
     [](Call& c) { c.blue_max = 65535; c.green_max = 4095; }, {0, 1, 0}, 0, 0, ""},
    {"ClampMinEqualToMax", [](Call& c) { c.blue_min = c.blue_max = 100; }, {0, 0, 0}, 0, 0, ""},
    {"ClampMinAboveMax", [](Call& c) { c.blue_min = 101; c.blue_max = 100; }, {0, 0, 0}, 12, 156,
     clamp_text("blue")},
    {"GreenClampAgainstItsOwnTable", [](Call& c) { c.green_max = 5000; }, {0, 1, 0}, 12, 162,
     clamp_text("green")},
    {"RedClampMinAboveMax", [](Call& c) { c.red_min = 2; c.red_max = 1; }, {0, 0, 0}, 12, 168,
     clamp_text("red")},
    {"ClampBeforeOutputFormat",
     [](Call& c) { c.red_max = 4096; c.output_format = format_value(3); }, {0, 0, 1}, 12, 168,
     clamp_text("red")},
    {"OutputFormat3", [](Call& c) { c.output_format = format_value(3); }, {0, 0, 0}, 10, 174,
     "ERROR:  Invalid output buffer format specified!"},
    {"NegativeFormatsPass",
     [](Call& c) { c.input_format = format_value(-1); c.output_format = format_value(-7); },
     {0, 0, 0}, 0, 0, ""},
    {"NoPixels", [](Call& c) { c.pixel_count = 0; }, {0, 0, 0}, 0, 0, ""},
    {"NegativePixelCount", [](Call& c) { c.pixel_count = -5; }, {0, 0, 0}, 0, 0, ""},
};

class Transform_validation : public Initialised_module,
                             public testing::WithParamInterface<Validation_case> {};

}  // namespace

TEST_P(Transform_validation, AnswersWithItsCodeAndRecordsAndWritesNothingWhenRefused)
{
    const Validation_case& validation = GetParam();
    void* processor = make(8, 12, 0);
    const auto& enabled = validation.output_LUTs_enabled;
    ASSERT_EQ(nq_color_enable_output_LUTs(processor, enabled[0], enabled[1], enabled[2]),
              NQ_COLOR_NO_ERROR);
    const uint16_t input[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    uint16_t output[12];
    std::fill(std::begin(output), std::end(output), untouched);
    Call call(input, output, 3);
    validation.change(call);

    EXPECT_EQ(call.run(nq_color_transform_48_to_48, processor), validation.code);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), validation.code == NQ_COLOR_NO_ERROR ? 1u : 2u);
    if (validation.code != NQ_COLOR_NO_ERROR) {
        expect_record(records[0], 0, processor_file, validation.line, "transform", validation.text);
        // A refused call fetches no table and calls no vector library.
        EXPECT_TRUE(probe_events_starting_with("lut.").empty());
    }
    expect_timing_record(records.back(), "color processing transform 48 to 48");
    if (validation.code != NQ_COLOR_NO_ERROR || call.pixel_count <= 0) {
        for (uint16_t sample : output) EXPECT_EQ(sample, untouched);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Transform_validation, testing::ValuesIn(validation_cases),
                         [](const auto& instance) { return std::string(instance.param.name); });

using Transform_validation_per_call = Initialised_module;

TEST_F(Transform_validation_per_call, EveryCallValidatesAndTimesUnderItsOwnLabel)
{
    void* processor = make(8, 8, 0);
    const uint16_t input[3] = {};
    uint16_t output_16[4] = {};
    uint8_t output_8[4] = {};
    Transform_call<uint16_t> call_16(input, output_16, 1);
    call_16.green_shift = 16;
    Transform_call<uint8_t> call_8(input, output_8, 1);
    call_8.green_shift = -16;
    const int invalid = NQ_COLOR_INVALID_SHIFT_DISTANCE;
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_48, processor), invalid);
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_64, processor), invalid);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_32, processor), invalid);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_24, processor), invalid);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 8u);
    const char* const labels[4] = {"48 to 48", "48 to 64", "48 to 32", "48 to 24"};
    for (int call = 0; call < 4; ++call) {
        expect_record(records[2 * call], 0, processor_file, 144, "transform", shift_text("green"));
        expect_timing_record(records[2 * call + 1],
                             std::string("color processing transform ") + labels[call]);
    }
}
