#include "modules/loaded_vector_library.hpp"

#include "modules/shared_library.hpp"

#include <corvane_xvr_color_processing_vector.h>

const char* vector_library_file(int level)
{
    return level == 2 ? "lib" NQ_VECTOR_AVX2_MODULE_NAME ".so" : "lib" NQ_VECTOR_SSE_MODULE_NAME ".so";
}

Loaded_vector_library loaded_vector_library(int level)
{
    const bool avx2 = level == 2;
    const Shared_library library = Shared_library::find_loaded(vector_library_file(level));
    nq_vector_module_initialize_function* initialize = nullptr;
    nq_vector_module_terminate_function* terminate = nullptr;
    Loaded_vector_library state;
    state.loaded = static_cast<bool>(library);
    if (!state.loaded || !library.bind(initialize, avx2 ? NQ_VECTOR_AVX2_INITIALIZE_NAME : NQ_VECTOR_SSE_INITIALIZE_NAME) ||
        !library.bind(terminate, avx2 ? NQ_VECTOR_AVX2_TERMINATE_NAME : NQ_VECTOR_SSE_TERMINATE_NAME)) {
        return state;
    }
    state.starts = initialize() == 0;
    terminate();
    return state;
}
