#include "modules/loaded_vector_library.hpp"

#include "modules/shared_library.hpp"

#include <corvane_xvr_color_processing_vector.h>

std::string vector_library_file(int level)
{
    return shared_library_file_of_module(nq_vector_library_names_of_level(level).module);
}

Loaded_vector_library loaded_vector_library(int level)
{
    const nq_vector_library_names& names = nq_vector_library_names_of_level(level);
    const Shared_library library = Shared_library::find_loaded(vector_library_file(level).c_str());
    nq_vector_module_initialize_function* initialize = nullptr;
    nq_vector_module_terminate_function* terminate = nullptr;
    Loaded_vector_library state;
    state.loaded = static_cast<bool>(library);
    if (!state.loaded || !library.bind(initialize, names.initialize) || !library.bind(terminate, names.terminate)) {
        return state;
    }
    state.starts = initialize() == 0;
    terminate();
    return state;
}
