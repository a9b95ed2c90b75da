/* Colour-corrects two pixels with the installed library and its installed companions through an
 * inverting 8-bit output table on every channel. Exit status 0 when the pixels are right. */
#include <corvane_xvr_color_processing.h>

#include <stdio.h>

int main(void)
{
    int32_t* (*const getters[3])(void*) = {nq_color_get_blue_output_LUT, nq_color_get_green_output_LUT,
                                           nq_color_get_red_output_LUT};
    const uint16_t input[6] = {0, 100, 255, 7, 65535, 30}; /* B, G, R per pixel */
    const uint8_t expected[6] = {255, 155, 0, 248, 0, 225};
    uint8_t output[6] = {0};
    void* processor = NULL;
    int i, v, ok = nq_color_processing_module_initialize() == NQ_COLOR_NO_ERROR;

    if (ok) processor = nq_color_create_color_processor(16, 8);
    ok = processor != NULL;
    for (i = 0; ok && i < 3; ++i)
        for (v = 0; v < 256; ++v) getters[i](processor)[v] = 255 - v;
    ok = ok && nq_color_enable_output_LUTs(processor, 1, 1, 1) == NQ_COLOR_NO_ERROR &&
         nq_color_transform_48_to_24(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 255, 0, 255, 0, 255,
                                     0, 0, 0, output, NQ_COLOR_FORMAT_BGR_PIXEL, 2) == NQ_COLOR_NO_ERROR;
    for (i = 0; ok && i < 6; ++i) ok = output[i] == expected[i];
    if (processor != NULL) nq_color_destroy_color_processor(processor);
    nq_color_processing_module_terminate();
    printf("host_core: %s\n", ok ? "ok" : "failed");
    return ok ? 0 : 1;
}
