// Binding to one vector library (SSE or AVX2 class). A library that is missing, lacks an entry
// point or refuses to initialise leaves the binding marked failed rather than reporting an
// error: transforms then fall back to the other library or to the scalar path.
#pragma once

#include "modules/shared_library.hpp"

#include <corvane_xvr_color_processing_vector.h>

class Vector_color_processing_module {
public:
    // The entry points' types are the contract's. Each transform entry point processes pixels
    // 0, 1, ... of the record and returns the index of the first pixel it left undone.
    using Initialize_function = nq_vector_module_initialize_function*;
    using Transform_8_bit_output_function = nq_vector_transform_8_bit_output_function*;
    using Transform_16_bit_output_function = nq_vector_transform_16_bit_output_function*;
    using Terminate_function = nq_vector_module_terminate_function*;

    // Loads "lib<library_name>.so", binds the four entry points in argument order and runs the
    // library's initialisation; logs nothing.
    Vector_color_processing_module(const char* library_name, const char* initialize_name,
                                   const char* transform_8_bit_output_name,
                                   const char* transform_16_bit_output_name,
                                   const char* terminate_name);

    // Terminates the library whenever its terminate entry point was bound, also after a failed
    // initialisation, then closes it. A library that failed part-way is closed too.
    ~Vector_color_processing_module();

    Vector_color_processing_module(const Vector_color_processing_module&) = delete;
    Vector_color_processing_module& operator=(const Vector_color_processing_module&) = delete;

    Shared_library m_library_handle;
    bool m_failed = false;  // never reset once set
    Initialize_function m_initialize = nullptr;
    Transform_8_bit_output_function m_transform_8_bit_output = nullptr;
    Transform_16_bit_output_function m_transform_16_bit_output = nullptr;
    Terminate_function m_terminate = nullptr;

private:
    bool bind_entry_points(const char* initialize_name, const char* transform_8_bit_output_name,
                           const char* transform_16_bit_output_name, const char* terminate_name);
};
