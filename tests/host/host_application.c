/*
 * A host application's view of the library, in C99: only the public header, the shared
 * library, and the companions on the search path. The test logger double shows the records a
 * host would see; the vector doubles show which vector library the transforms went through.
 *
 * Usage: host_application <scalar|sse|both|failing>, naming the vector libraries that the
 * search path provides ("failing": both present, both refusing to initialise).
 */
#include <corvane_xvr_color_processing.h>

#include "companion_probe.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

#define CHECK(condition)                                                         \
    do {                                                                         \
        if (!(condition)) {                                                      \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
            ++failures;                                                          \
        }                                                                        \
    } while (0)

#define CHECK_EQUAL(actual, expected)                                              \
    do {                                                                           \
        long actual_value = (long)(actual);                                        \
        long expected_value = (long)(expected);                                    \
        if (actual_value != expected_value) {                                      \
            fprintf(stderr, "%s:%d: %s is %ld, expected %ld\n", __FILE__, __LINE__, #actual, \
                    actual_value, expected_value);                                 \
            ++failures;                                                            \
        }                                                                          \
    } while (0)

static int ends_with(const char* text, const char* suffix)
{
    size_t text_length = strlen(text);
    size_t suffix_length = strlen(suffix);
    return text_length >= suffix_length &&
           strcmp(text + text_length - suffix_length, suffix) == 0;
}

static int count_events_containing(const char* fragment)
{
    int count = 0;
    int index;
    for (index = 0; index < nq_probe_event_count(); ++index) {
        if (strstr(nq_probe_event_at(index), fragment) != NULL) ++count;
    }
    return count;
}

static void check_nothing_works_before_initialisation(void)
{
    CHECK(nq_color_create_color_processor(8, 8) == NULL);
    CHECK_EQUAL(nq_color_clear_matrix(NULL), NQ_COLOR_MODULE_NOT_INITIALIZED);
    CHECK_EQUAL(nq_probe_log_record_count(), 0);
}

/* Sixteen-bit input tables, 8-bit output tables: blue inverted on input, red through an input
 * table with junk in its high half, a matrix of 1/256, and inverting output tables. */
static void configure_darkroom(void* processor)
{
    const float scale[9] = {1.0f / 256, 0, 0, 0, 1.0f / 256, 0, 0, 0, 1.0f / 256};
    int32_t* blue_input = nq_color_get_blue_input_LUT(processor);
    int32_t* red_input = nq_color_get_red_input_LUT(processor);
    int32_t* outputs[3];
    int32_t entry;
    int channel;
    for (entry = 0; entry < 65536; ++entry) {
        blue_input[entry] = 65535 - entry;
        red_input[entry] = (int32_t)(0x7FFF0000u | (uint32_t)entry);
    }
    outputs[0] = nq_color_get_blue_output_LUT(processor);
    outputs[1] = nq_color_get_green_output_LUT(processor);
    outputs[2] = nq_color_get_red_output_LUT(processor);
    for (channel = 0; channel < 3; ++channel) {
        for (entry = 0; entry < 256; ++entry) outputs[channel][entry] = 255 - entry;
    }
    CHECK_EQUAL(nq_color_enable_input_LUTs(processor, 1, 0, 1), NQ_COLOR_NO_ERROR);
    CHECK_EQUAL(nq_color_enable_output_LUTs(processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    CHECK_EQUAL(nq_color_append_matrix(processor, scale), NQ_COLOR_NO_ERROR);
}

static void check_darkroom_pixels(void* processor)
{
    /* B, G, R per pixel. */
    const uint16_t input[9] = {0, 0, 0, 65535, 65535, 65535, 2560, 128, 384};
    /* R, G, B per pixel, worked by hand: e.g. the third pixel's blue is 65535 - 2560 = 62975,
     * 62975 / 256 = 245.996 rounds to 246, and the output table gives 255 - 246 = 9; its green
     * 128 / 256 = 0.5 rounds up to 1, giving 254. */
    const uint8_t expected[9] = {255, 255, 0, 0, 0, 255, 253, 254, 9};
    uint8_t output[9];
    int sample;
    memset(output, 0xEE, sizeof output);
    CHECK_EQUAL(nq_color_transform_48_to_24(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 255, 0,
                                            255, 0, 255, 0, 0, 0, output,
                                            NQ_COLOR_FORMAT_RGB_PIXEL, 3),
                NQ_COLOR_NO_ERROR);
    for (sample = 0; sample < 9; ++sample) CHECK_EQUAL(output[sample], expected[sample]);
}

static void check_refused_call(void* processor)
{
    const uint16_t input[3] = {1, 2, 3};
    uint8_t output[3] = {0xEE, 0xEE, 0xEE};
    nq_probe_log_record error;
    nq_probe_log_record timing;
    int before = nq_probe_log_record_count();
    /* A clamp maximum of 256 does not index a 256-entry output table. */
    CHECK_EQUAL(nq_color_transform_48_to_24(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 255, 0,
                                            256, 0, 255, 0, 0, 0, output,
                                            NQ_COLOR_FORMAT_RGB_PIXEL, 1),
                NQ_COLOR_INVALID_CLAMP_VALUE);
    CHECK(output[0] == 0xEE && output[1] == 0xEE && output[2] == 0xEE);
    CHECK_EQUAL(nq_probe_log_record_count(), before + 2);
    error = nq_probe_log_record_at(before);
    timing = nq_probe_log_record_at(before + 1);
    CHECK_EQUAL(error.priority, 0);
    CHECK_EQUAL(error.line, 162);
    CHECK(ends_with(error.file, "color_processing/color_correction.cpp"));
    CHECK(strcmp(error.text, "ERROR:  a max value less than the min was specified for the green "
                             "channel or max clamp value exceeds enabled output LUT size!") == 0);
    CHECK_EQUAL(timing.priority, 2);
    CHECK_EQUAL(timing.line, 101);
    CHECK(strncmp(timing.text, "color processing transform 48 to 24 takes ", 42) == 0);
    CHECK(ends_with(timing.text, ".000000 microseconds."));
}

/* Through whatever vector level this machine is detected to have, identity is identity. */
static void check_detected_processor(void)
{
    const uint16_t input[6] = {100, 200, 300, 65535, 0, 1};
    uint16_t output[8];
    const uint16_t expected[8] = {100, 65535, 200, 0, 300, 1, 0, 0};
    int sample;
    void* processor;
    int records_before = nq_probe_log_record_count();
    processor = nq_color_create_color_processor(16, 16);
    CHECK(processor != NULL);
    if (processor == NULL) return;
    CHECK_EQUAL(nq_probe_log_record_count(), records_before + 1);
    CHECK(strcmp(nq_probe_log_record_at(records_before).text,
                 "Creating a color processor instance!") == 0);
    CHECK_EQUAL(nq_color_transform_48_to_64(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535,
                                            0, 65535, 0, 65535, 0, 0, 0, output,
                                            NQ_COLOR_FORMAT_BGR_PLANAR, 2),
                NQ_COLOR_NO_ERROR);
    for (sample = 0; sample < 8; ++sample) CHECK_EQUAL(output[sample], expected[sample]);
    CHECK_EQUAL(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

/* One transform of the darkroom processor (level 2) got past validation. */
static void check_vector_library_use(const char* scenario)
{
    int sse_calls = count_events_containing("sse.transform_8");
    int avx2_calls = count_events_containing("avx2.transform_8");
    if (strcmp(scenario, "both") == 0) {
        CHECK_EQUAL(avx2_calls, 1);
        CHECK_EQUAL(sse_calls, 0);
    } else if (strcmp(scenario, "sse") == 0) {
        CHECK_EQUAL(avx2_calls, 0);
        CHECK_EQUAL(sse_calls, 1);
    } else {
        CHECK_EQUAL(avx2_calls + sse_calls, 0);
    }
}

int main(int argc, char** argv)
{
    const char* scenario = argc > 1 ? argv[1] : "scalar";
    void* processor;

    check_nothing_works_before_initialisation();
    CHECK_EQUAL(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    if (strcmp(scenario, "failing") == 0) {
        nq_probe_set("sse.initialize_result", 1);
        nq_probe_set("avx2.initialize_result", 1);
    }

    processor = nq_color_create_color_processor_test(16, 8, 2);
    CHECK(processor != NULL);
    if (processor != NULL) {
        configure_darkroom(processor);
        check_darkroom_pixels(processor);
        check_refused_call(processor);
        check_vector_library_use(scenario);
        CHECK_EQUAL(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
        if (strcmp(scenario, "failing") == 0) {
            /* Refused to initialise, yet terminated. */
            CHECK_EQUAL(count_events_containing("sse.terminate"), 1);
            CHECK_EQUAL(count_events_containing("avx2.terminate"), 1);
        }
    }
    check_detected_processor();

    CHECK_EQUAL(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    CHECK(nq_color_create_color_processor_test(8, 8, 0) == NULL);
    if (failures != 0) {
        fprintf(stderr, "host application (%s): %d check(s) failed\n", scenario, failures);
        return 1;
    }
    printf("host application (%s): all checks passed\n", scenario);
    return 0;
}
