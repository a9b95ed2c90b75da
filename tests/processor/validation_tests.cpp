// The records of the transforms' argument validation. Which code each combination of arguments
// gets, in which order the checks run, and that a refused call writes nothing, the fuzzer
// (tests/robustness) shows against its own model.
#include "processor_test_support.hpp"

#include <array>
#include <functional>
#include <ostream>

namespace {

struct Validation_case {
    const char* name;
    std::function<void(Transform_call&)> change;
    std::array<int, 3> output_LUTs_enabled;  // blue, green, red
    int code;
    int line;          // of the error record
    std::string text;  // of the error record
};

std::ostream& operator<<(std::ostream& stream, const Validation_case& c) { return stream << c.name; }

std::string clamp_text(const char* channel)
{
    return std::string("ERROR:  a max value less than the min was specified for the ") + channel +
           " channel or max clamp value exceeds enabled output LUT size!";
}

std::string shift_text(const char* channel)
{
    return std::string("ERROR:  Invalid ") + channel + " shift distance specified!";
}

// The processor has 4096-entry output tables (output depth 12).
const Validation_case validation_cases[] = {
    {"NullInputAndOutput", [](Transform_call& c) { c.input = nullptr; c.output = nullptr; }, {0, 0, 0}, 3, 114,
     "ERROR:  The specified input buffer is NULL!"},
    {"NullOutput", [](Transform_call& c) { c.output = nullptr; }, {0, 0, 0}, 4, 120,
     "ERROR:  The specified output buffer is NULL!"},
    {"SameBuffer", [](Transform_call& c) { c.output = const_cast<uint16_t*>(c.input); }, {0, 0, 0}, 5, 126,
     "ERROR:  Different input and output buffer must be specified."},
    {"InputFormat3", [](Transform_call& c) { c.input_format = 3; }, {0, 0, 0}, 9, 132,
     "ERROR:  Invalid input buffer format specified!"},
    {"BlueShift16", [](Transform_call& c) { c.shift[0] = 16; }, {0, 0, 0}, 11, 138, shift_text("blue")},
    {"GreenShift16", [](Transform_call& c) { c.shift[1] = 16; }, {0, 0, 0}, 11, 144, shift_text("green")},
    {"RedShiftMinus16", [](Transform_call& c) { c.shift[2] = -16; }, {0, 0, 0}, 11, 150, shift_text("red")},
    {"BlueClampAtEnabledTableSize", [](Transform_call& c) { c.clamp_max[0] = 4096; }, {1, 0, 0}, 12, 156,
     clamp_text("blue")},
    {"GreenClampAgainstItsOwnTable", [](Transform_call& c) { c.clamp_max[1] = 5000; }, {0, 1, 0}, 12, 162,
     clamp_text("green")},
    {"RedClampMinAboveMax", [](Transform_call& c) { c.clamp_min[2] = 2; c.clamp_max[2] = 1; }, {0, 0, 0}, 12, 168,
     clamp_text("red")},
    {"OutputFormat3", [](Transform_call& c) { c.output_format = 3; }, {0, 0, 0}, 10, 174,
     "ERROR:  Invalid output buffer format specified!"},
};

class Transform_validation : public Initialised_module,
                             public testing::WithParamInterface<Validation_case> {};

}  // namespace

TEST_P(Transform_validation, AnswersWithItsCodeAndRecords)
{
    const Validation_case& validation = GetParam();
    void* processor = make(8, 12, 0);
    const auto& enabled = validation.output_LUTs_enabled;
    ASSERT_EQ(nq_color_enable_output_LUTs(processor, enabled[0], enabled[1], enabled[2]), NQ_COLOR_NO_ERROR);
    const uint16_t input[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    uint16_t output[12] = {};
    Transform_call call = call_of(processor, input, output, 3);
    validation.change(call);

    EXPECT_EQ(to_48.run(call), validation.code);
    const auto records = probe_log_records();
    ASSERT_EQ(records.size(), 2u);
    expect_record(records[0], 0, processor_file, validation.line, "transform", validation.text);
    expect_timing_record(records[1], "color processing transform 48 to 48");
    // A refused call fetches no table and calls no vector library.
    EXPECT_TRUE(probe_events_starting_with("lut.").empty());
}

INSTANTIATE_TEST_SUITE_P(Cases, Transform_validation, testing::ValuesIn(validation_cases),
                         [](const auto& instance) { return std::string(instance.param.name); });

using Transform_validation_per_call = Initialised_module;

TEST_F(Transform_validation_per_call, EveryCallValidatesAndTimesUnderItsOwnLabel)
{
    void* processor = make(8, 8, 0);
    const uint16_t input[3] = {};
    uint16_t output[4] = {};
    Transform_call call = call_of(processor, input, output, 1);
    call.shift[1] = 16;
    const char* const labels[4] = {"48 to 48", "48 to 64", "48 to 32", "48 to 24"};
    for (int kind = 0; kind < 4; ++kind) {
        nq_probe_reset();
        EXPECT_EQ(transform_kinds[kind].run(call), NQ_COLOR_INVALID_SHIFT_DISTANCE);
        const auto records = probe_log_records();
        ASSERT_EQ(records.size(), 2u);
        expect_record(records[0], 0, processor_file, 144, "transform", shift_text("green"));
        expect_timing_record(records[1], std::string("color processing transform ") + labels[kind]);
    }
}
