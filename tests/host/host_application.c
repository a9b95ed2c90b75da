/*
 * A host application's view of the library, in C99: only the public header, the shared
 * library, and the companion doubles on the search path.
 *
 * Usage: host_application <scalar|sse|both|failing>, naming the vector libraries that the
 * search path provides ("failing": both present, both refusing to initialise).
 */
#include <corvane_xvr_color_processing.h>

#include "companion_probe.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

#define CHECK_EQUAL(actual, expected)                                                         \
    do {                                                                                      \
        long actual_value = (long)(actual), expected_value = (long)(expected);               \
        if (actual_value != expected_value) {                                                 \
            fprintf(stderr, "%s:%d: %s is %ld, expected %ld\n", __FILE__, __LINE__, #actual, \
                    actual_value, expected_value);                                            \
            ++failures;                                                                       \
        }                                                                                     \
    } while (0)

/* Sixteen-bit input tables, 8-bit output tables: blue inverted on input, red through an input
 * table with junk in its high half, a matrix of 1/256, and inverting output tables. */
static void check_darkroom(void* processor)
{
    const float scale[9] = {1.0f / 256, 0, 0, 0, 1.0f / 256, 0, 0, 0, 1.0f / 256};
    /* B, G, R per pixel in; R, G, B per pixel out, worked by hand: e.g. the third pixel's blue
     * is 65535 - 2560 = 62975, 62975 / 256 = 245.996 rounds to 246, and the output table gives
     * 255 - 246 = 9; its green 128 / 256 = 0.5 rounds up to 1, giving 254. */
    const uint16_t input[9] = {0, 0, 0, 65535, 65535, 65535, 2560, 128, 384};
    const uint8_t expected[9] = {255, 255, 0, 0, 0, 255, 253, 254, 9};
    uint8_t output[9];
    int32_t* blue_input = nq_color_get_blue_input_LUT(processor);
    int32_t* red_input = nq_color_get_red_input_LUT(processor);
    int32_t* outputs[3];
    int32_t entry;
    int channel;
    outputs[0] = nq_color_get_blue_output_LUT(processor);
    outputs[1] = nq_color_get_green_output_LUT(processor);
    outputs[2] = nq_color_get_red_output_LUT(processor);
    for (entry = 0; entry < 65536; ++entry) {
        blue_input[entry] = 65535 - entry;
        red_input[entry] = (int32_t)(0x7FFF0000u | (uint32_t)entry);
    }
    for (channel = 0; channel < 3; ++channel) {
        for (entry = 0; entry < 256; ++entry) outputs[channel][entry] = 255 - entry;
    }
    CHECK_EQUAL(nq_color_enable_input_LUTs(processor, 1, 0, 1), NQ_COLOR_NO_ERROR);
    CHECK_EQUAL(nq_color_enable_output_LUTs(processor, 1, 1, 1), NQ_COLOR_NO_ERROR);
    CHECK_EQUAL(nq_color_append_matrix(processor, scale), NQ_COLOR_NO_ERROR);

    memset(output, 0xEE, sizeof output);
    CHECK_EQUAL(nq_color_transform_48_to_24(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 255, 0,
                                            255, 0, 255, 0, 0, 0, output,
                                            NQ_COLOR_FORMAT_RGB_PIXEL, 3),
                NQ_COLOR_NO_ERROR);
    for (entry = 0; entry < 9; ++entry) CHECK_EQUAL(output[entry], expected[entry]);
}

/* Through whatever vector level this machine is detected to have, identity is identity. */
static void check_detected_processor(void)
{
    const uint16_t input[6] = {100, 200, 300, 65535, 0, 1};
    const uint16_t expected[8] = {100, 65535, 200, 0, 300, 1, 0, 0};
    uint16_t output[8];
    int sample;
    int records_before = nq_probe_log_record_count();
    void* processor = nq_color_create_color_processor(16, 16);
    CHECK_EQUAL(processor != NULL, 1);
    if (processor == NULL) return;
    CHECK_EQUAL(nq_probe_log_record_count(), records_before + 1);
    CHECK_EQUAL(strcmp(nq_probe_log_record_at(records_before).text,
                       "Creating a color processor instance!"), 0);
    CHECK_EQUAL(nq_color_transform_48_to_64(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535,
                                            0, 65535, 0, 65535, 0, 0, 0, output,
                                            NQ_COLOR_FORMAT_BGR_PLANAR, 2),
                NQ_COLOR_NO_ERROR);
    for (sample = 0; sample < 8; ++sample) CHECK_EQUAL(output[sample], expected[sample]);
    CHECK_EQUAL(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
}

int main(int argc, char** argv)
{
    const char* scenario = argc > 1 ? argv[1] : "scalar";
    const int failing = strcmp(scenario, "failing") == 0;
    void* processor;

    CHECK_EQUAL(nq_color_create_color_processor(8, 8) == NULL, 1);
    CHECK_EQUAL(nq_color_clear_matrix(NULL), NQ_COLOR_MODULE_NOT_INITIALIZED);
    CHECK_EQUAL(nq_probe_log_record_count(), 0);
    CHECK_EQUAL(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    nq_probe_set("sse.initialize_result", failing);
    nq_probe_set("avx2.initialize_result", failing);

    processor = nq_color_create_color_processor_test(16, 8, 2);
    CHECK_EQUAL(processor != NULL, 1);
    if (processor != NULL) {
        check_darkroom(processor);
        /* Level 2 takes the AVX2 library when it is usable, else the SSE one, else neither. */
        CHECK_EQUAL(nq_probe_count_events("avx2.transform_8 3"), strcmp(scenario, "both") == 0);
        CHECK_EQUAL(nq_probe_count_events("sse.transform_8 3"), strcmp(scenario, "sse") == 0);
        CHECK_EQUAL(nq_color_destroy_color_processor(processor), NQ_COLOR_NO_ERROR);
        if (failing) {
            /* Refused to initialise, yet terminated. */
            CHECK_EQUAL(nq_probe_count_events("sse.terminate"), 1);
            CHECK_EQUAL(nq_probe_count_events("avx2.terminate"), 1);
        }
    }
    check_detected_processor();

    CHECK_EQUAL(nq_color_processing_module_terminate(), NQ_COLOR_NO_ERROR);
    CHECK_EQUAL(nq_color_create_color_processor_test(8, 8, 0) == NULL, 1);
    if (failures != 0) {
        fprintf(stderr, "host application (%s): %d check(s) failed\n", scenario, failures);
        return 1;
    }
    printf("host application (%s): all checks passed\n", scenario);
    return 0;
}
