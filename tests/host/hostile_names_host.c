/*
 * A C99 host whose own globals carry the names that the library exports for its companions:
 * a variable `logger` and functions `load_shared_library` and `get_function_handle`. They must
 * stay the host's: the library neither writes the variable nor calls the functions, and still
 * initialises, creates, transforms, destroys and terminates. Run with the build's real
 * companions on the search path.
 */
#include <corvane_xvr_color_processing.h>

#include <stdio.h>

/* As large as the library's own object of that name, so that anything the library wrote into
 * the host's variable, or just past a smaller one, shows in the pattern. */
int logger[8] = {0x10661e01, 0x10661e02, 0x10661e03, 0x10661e04,
                 0x10661e05, 0x10661e06, 0x10661e07, 0x10661e08};
int host_loader_calls = 0;

void* load_shared_library(const char* module_name)
{
    (void)module_name;
    ++host_loader_calls;
    return NULL;
}

void* get_function_handle(void* library_handle, const char* symbol_name)
{
    (void)library_handle;
    (void)symbol_name;
    ++host_loader_calls;
    return NULL;
}

static int failures = 0;

/* Counts a failure unless `condition` holds and the host's own names are untouched. */
static void check(int condition, const char* step)
{
    int k, written = 0;
    for (k = 0; k < 8; ++k) written |= logger[k] != 0x10661e01 + k;
    if (!condition || written || host_loader_calls != 0) {
        fprintf(stderr, "hostile names host: %s %s\n", step,
                !condition ? "failed" : written ? "wrote the host's logger" : "called the host's loader");
        ++failures;
    }
}

int main(void)
{
    const uint16_t input[6] = {100, 200, 300, 65535, 0, 1}; /* B, G, R per pixel */
    uint16_t output[6] = {0};
    void* processor;

    check(nq_color_processing_module_initialize() == NQ_COLOR_NO_ERROR, "initialize");
    processor = nq_color_create_color_processor(16, 16);
    check(processor != NULL, "create");
    if (processor != NULL) {
        check(nq_color_transform_48_to_48(processor, input, NQ_COLOR_FORMAT_BGR_PIXEL, 0, 65535, 0, 65535, 0, 65535,
                                          0, 0, 0, output, NQ_COLOR_FORMAT_RGB_PIXEL, 2) == NQ_COLOR_NO_ERROR,
              "transform");
        check(output[0] == 300 && output[2] == 100 && output[3] == 1 && output[5] == 65535, "identity's swap");
        check(nq_color_destroy_color_processor(processor) == NQ_COLOR_NO_ERROR, "destroy");
    }
    check(nq_color_processing_module_terminate() == NQ_COLOR_NO_ERROR, "terminate");
    if (failures != 0) return 1;
    printf("hostile names host: the library kept to its own names\n");
    return 0;
}
