/* A complete host of libcorvane_xvr_color_processing: it colour-corrects four pixels held in a
 * planar buffer (all blue samples, then all green, then all red) and checks the result.
 *
 * Build against an installed library, then run it; no LD_LIBRARY_PATH is needed, because the
 * installed library finds its companion libraries beside itself:
 *   cc -m32 correct_planar.c $(pkg-config --cflags --libs corvane_xvr_color_processing) -o correct_planar
 * or with CMake: see CMakeLists.txt in this folder. Exit status 0 when every pixel is right. */
#include <corvane_xvr_color_processing.h>

#include <stdio.h>

#define PIXELS 4

/* Every call returns NQ_COLOR_NO_ERROR (0) or a code that says what was wrong. */
static int check(int code, const char* call)
{
    if (code != NQ_COLOR_NO_ERROR) {
        fprintf(stderr, "correct_planar: %s failed with code %d\n", call, code);
    }
    return code == NQ_COLOR_NO_ERROR;
}

int main(void)
{
    /* Planar 16-bit input: blue plane, green plane, red plane. */
    const uint16_t input[3 * PIXELS] = {
        0, 1000, 40000, 65535, /* blue */
        0, 2000, 30000, 65535, /* green */
        0, 3000, 20000, 65535, /* red */
    };
    /* Rows give red, green, blue; the columns weight red, green, blue: this swaps red and blue. */
    const float swap_red_and_blue[9] = {0, 0, 1, 0, 1, 0, 1, 0, 0};
    uint8_t output[3 * PIXELS] = {0};
    int ok, channel, entry, i;
    void* processor = NULL;

    /* 1. Initialise the module; it opens its table library (and logger) beside itself. */
    ok = check(nq_color_processing_module_initialize(), "nq_color_processing_module_initialize");

    /* 2. A processor with no input tables and output tables of 2^16 entries. */
    if (ok) {
        processor = nq_color_create_color_processor(0, 16);
        ok = processor != NULL;
        if (!ok) fprintf(stderr, "correct_planar: no processor\n");
    }

    /* 3. Fill the output tables in place: each 16-bit result becomes the nearest 8-bit value. */
    for (channel = 0; ok && channel < 3; ++channel) {
        int32_t* table = channel == 0   ? nq_color_get_blue_output_LUT(processor)
                         : channel == 1 ? nq_color_get_green_output_LUT(processor)
                                        : nq_color_get_red_output_LUT(processor);
        ok = table != NULL;
        for (entry = 0; ok && entry < 65536; ++entry) table[entry] = (2 * entry + 257) / 514;
    }
    ok = ok && check(nq_color_enable_output_LUTs(processor, 1, 1, 1), "nq_color_enable_output_LUTs");

    /* 4. The colour matrix. */
    ok = ok && check(nq_color_append_matrix(processor, swap_red_and_blue), "nq_color_append_matrix");

    /* 5. Transform: planar in, planar out, 8-bit samples, full clamp range, no shift. */
    ok = ok && check(nq_color_transform_48_to_24(processor, input, NQ_COLOR_FORMAT_BGR_PLANAR,
                                                 0, 65535, 0, 65535, 0, 65535, 0, 0, 0,
                                                 output, NQ_COLOR_FORMAT_BGR_PLANAR, PIXELS),
                     "nq_color_transform_48_to_24");

    /* 6. Red and blue have changed places; every sample is the nearest 8-bit value. */
    for (i = 0; ok && i < PIXELS; ++i) {
        const int blue = (2 * input[2 * PIXELS + i] + 257) / 514;
        const int green = (2 * input[PIXELS + i] + 257) / 514;
        const int red = (2 * input[i] + 257) / 514;
        ok = output[i] == blue && output[PIXELS + i] == green && output[2 * PIXELS + i] == red;
        if (!ok) fprintf(stderr, "correct_planar: pixel %d is wrong\n", i);
    }

    /* 7. Release in reverse order; terminate matches initialize even after a failure. */
    if (processor != NULL) nq_color_destroy_color_processor(processor);
    nq_color_processing_module_terminate();
    printf("correct_planar: %s\n", ok ? "ok" : "failed");
    return ok ? 0 : 1;
}
