// Argument validation of the transforms: order, codes, records, and that a refused call writes
// nothing. Every call that gets past the handle test ends with one timing record.
#include "processor_test_support.hpp"

#include <algorithm>
#include <array>
#include <ostream>
#include <functional>

namespace {

constexpr int pixels = 3;
constexpr uint16_t untouched = 0xEEEE;

struct Validation_case {
    const char* name;
    std::function<void(Transform_call<uint16_t>&)> change;
    std::array<int, 3> output_LUTs_enabled;  // blue, green, red
    int code;
    int line;          // of the error record; 0 when the call is valid
    const char* text;  // of the error record
};

std::string clamp_text(const char* channel)
{
    return std::string("ERROR:  a max value less than the min was specified for the ") + channel +
           " channel or max clamp value exceeds enabled output LUT size!";
}

const std::string blue_clamp = clamp_text("blue");
const std::string green_clamp = clamp_text("green");
const std::string red_clamp = clamp_text("red");

std::ostream& operator<<(std::ostream& stream, const Validation_case& c)
{
    return stream << c.name;
}

// The processor has 4096-entry output tables (output depth 12).
const Validation_case validation_cases[] = {
    {"NullInputAndOutput", [](auto& c) { c.input = nullptr; c.output = nullptr; }, {0, 0, 0}, 3,
     114, "ERROR:  The specified input buffer is NULL!"},
    {"NullOutput", [](auto& c) { c.output = nullptr; }, {0, 0, 0}, 4, 120,
     "ERROR:  The specified output buffer is NULL!"},
    {"SameBuffer", [](auto& c) { c.output = const_cast<uint16_t*>(c.input); }, {0, 0, 0}, 5, 126,
     "ERROR:  Different input and output buffer must be specified."},
    {"InputFormatBeforeShifts", [](auto& c) { c.input_format = format_value(3); c.blue_shift = 16; },
     {0, 0, 0}, 9, 132, "ERROR:  Invalid input buffer format specified!"},
    {"BlueShift16", [](auto& c) { c.blue_shift = 16; }, {0, 0, 0}, 11, 138,
     "ERROR:  Invalid blue shift distance specified!"},
    {"BlueShiftMinus16", [](auto& c) { c.blue_shift = -16; }, {0, 0, 0}, 11, 138,
     "ERROR:  Invalid blue shift distance specified!"},
    {"GreenShift16", [](auto& c) { c.green_shift = 16; }, {0, 0, 0}, 11, 144,
     "ERROR:  Invalid green shift distance specified!"},
    {"RedShiftMinus16", [](auto& c) { c.red_shift = -16; }, {0, 0, 0}, 11, 150,
     "ERROR:  Invalid red shift distance specified!"},
    {"EveryShiftInvalidReportsBlueOnly",
     [](auto& c) { c.blue_shift = 100; c.green_shift = -100; c.red_shift = 16; }, {0, 0, 0}, 11,
     138, "ERROR:  Invalid blue shift distance specified!"},
    {"ShiftsAtTheirLimits", [](auto& c) { c.blue_shift = 15; c.green_shift = -15; c.red_shift = 15; },
     {0, 0, 0}, 0, 0, ""},
    {"ClampMaxBelowEnabledTableSize", [](auto& c) { c.blue_max = 4095; }, {1, 0, 0}, 0, 0, ""},
    {"ClampMaxAtEnabledTableSize", [](auto& c) { c.blue_max = 4096; }, {1, 0, 0}, 12, 156,
     blue_clamp.c_str()},
    {"ClampMaxUnboundedWhileTableDisabled",
     [](auto& c) { c.blue_max = 65535; c.green_max = 4095; }, {0, 1, 0}, 0, 0, ""},
    {"ClampMinEqualToMax", [](auto& c) { c.blue_min = 100; c.blue_max = 100; }, {0, 0, 0}, 0, 0,
     ""},
    {"ClampMinAboveMax", [](auto& c) { c.blue_min = 101; c.blue_max = 100; }, {0, 0, 0}, 12, 156,
     blue_clamp.c_str()},
    {"ClampMinNeverComparedWithTableSize",
     [](auto& c) { c.blue_max = c.red_max = 4095; c.green_min = c.green_max = 4095; }, {1, 1, 1},
     0, 0, ""},
    {"GreenClampAgainstItsOwnTable", [](auto& c) { c.green_max = 5000; }, {0, 1, 0}, 12, 162,
     green_clamp.c_str()},
    {"RedClampMinAboveMax", [](auto& c) { c.red_min = 2; c.red_max = 1; }, {0, 0, 0}, 12, 168,
     red_clamp.c_str()},
    {"ClampBeforeOutputFormat", [](auto& c) { c.red_max = 4096; c.output_format = format_value(3); },
     {0, 0, 1}, 12, 168, red_clamp.c_str()},
    {"OutputFormat3", [](auto& c) { c.output_format = format_value(3); }, {0, 0, 0}, 10, 174,
     "ERROR:  Invalid output buffer format specified!"},
    {"NegativeFormatsPass",
     [](auto& c) { c.input_format = format_value(-1); c.output_format = format_value(-7); },
     {0, 0, 0}, 0, 0, ""},
    {"NoPixels", [](auto& c) { c.pixel_count = 0; }, {0, 0, 0}, 0, 0, ""},
    {"NegativePixelCount", [](auto& c) { c.pixel_count = -5; }, {0, 0, 0}, 0, 0, ""},
};

class Transform_validation : public Initialised_module,
                             public testing::WithParamInterface<Validation_case> {
protected:
    void SetUp() override
    {
        Initialised_module::SetUp();
        m_processor = nq_color_create_color_processor_test(8, 12, 0);
        ASSERT_NE(m_processor, nullptr);
    }
    void TearDown() override
    {
        nq_color_destroy_color_processor(m_processor);
        Initialised_module::TearDown();
    }

    void* m_processor = nullptr;
};

}  // namespace

TEST_P(Transform_validation, AnswersWithItsCodeAndRecordsAndWritesNothingWhenRefused)
{
    const Validation_case& validation = GetParam();
    const auto& enabled = validation.output_LUTs_enabled;
    ASSERT_EQ(nq_color_enable_output_LUTs(m_processor, enabled[0], enabled[1], enabled[2]),
              NQ_COLOR_NO_ERROR);
    uint16_t input[3 * pixels] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    uint16_t output[4 * pixels];
    std::fill(std::begin(output), std::end(output), untouched);
    Transform_call<uint16_t> call;
    call.input = input;
    call.output = output;
    call.pixel_count = pixels;
    validation.change(call);
    nq_probe_reset();

    EXPECT_EQ(call.run(nq_color_transform_48_to_48, m_processor), validation.code);

    const auto records = probe_log_records();
    if (validation.code == NQ_COLOR_NO_ERROR) {
        ASSERT_EQ(records.size(), 1u);
    } else {
        ASSERT_EQ(records.size(), 2u);
        expect_record(records[0], 0, processor_file, validation.line, "transform", validation.text);
        // A refused call fetches no table and calls no vector library.
        EXPECT_TRUE(probe_events_starting_with("lut.").empty());
    }
    expect_timing_record(records.back(), "color processing transform 48 to 48");
    const bool writes = validation.code == NQ_COLOR_NO_ERROR && call.pixel_count > 0;
    if (!writes) {
        for (uint16_t sample : output) EXPECT_EQ(sample, untouched);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Transform_validation, testing::ValuesIn(validation_cases),
                         [](const auto& info) { return std::string(info.param.name); });

namespace {

using Transform_validation_per_call = Initialised_module;

}  // namespace

TEST_F(Transform_validation_per_call, NullHandleIsLoggedWithoutATimingRecord)
{
    uint16_t input[3] = {};
    uint16_t output_16[4] = {};
    uint8_t output_8[4] = {};
    Transform_call<uint16_t> call_16;
    call_16.input = input;
    call_16.output = output_16;
    Transform_call<uint8_t> call_8;
    call_8.input = input;
    call_8.output = output_8;
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_48, nullptr), NQ_COLOR_NULL_INSTANCE_HANDLE);
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_64, nullptr), NQ_COLOR_NULL_INSTANCE_HANDLE);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_32, nullptr), NQ_COLOR_NULL_INSTANCE_HANDLE);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_24, nullptr), NQ_COLOR_NULL_INSTANCE_HANDLE);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 4u);
    for (const auto& record : records) {
        expect_record(record, 0, interface_file, 97, "nq_color_processor_transform_impl",
                      null_handle_text);
    }
}

TEST_F(Transform_validation_per_call, EveryCallValidatesAndTimesUnderItsOwnLabel)
{
    void* processor = nq_color_create_color_processor_test(8, 8, 0);
    ASSERT_NE(processor, nullptr);
    uint16_t input[3] = {};
    uint16_t output_16[4] = {untouched, untouched, untouched, untouched};
    uint8_t output_8[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    Transform_call<uint16_t> call_16;
    call_16.input = input;
    call_16.output = output_16;
    call_16.pixel_count = 1;
    call_16.green_shift = 16;
    Transform_call<uint8_t> call_8;
    call_8.input = input;
    call_8.output = output_8;
    call_8.pixel_count = 1;
    call_8.green_shift = -16;
    nq_probe_reset();
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_48, processor), NQ_COLOR_INVALID_SHIFT_DISTANCE);
    EXPECT_EQ(call_16.run(nq_color_transform_48_to_64, processor), NQ_COLOR_INVALID_SHIFT_DISTANCE);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_32, processor), NQ_COLOR_INVALID_SHIFT_DISTANCE);
    EXPECT_EQ(call_8.run(nq_color_transform_48_to_24, processor), NQ_COLOR_INVALID_SHIFT_DISTANCE);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 8u);
    const char* const labels[4] = {"48 to 48", "48 to 64", "48 to 32", "48 to 24"};
    for (int call = 0; call < 4; ++call) {
        expect_record(records[2 * call], 0, processor_file, 144, "transform",
                      "ERROR:  Invalid green shift distance specified!");
        expect_timing_record(records[2 * call + 1],
                             std::string("color processing transform ") + labels[call]);
    }
    for (uint16_t sample : output_16) EXPECT_EQ(sample, untouched);
    for (uint8_t sample : output_8) EXPECT_EQ(sample, 0xEE);
    EXPECT_EQ(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}
