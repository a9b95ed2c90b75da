// The process-wide binding to the table library "libcorvane_xvr_LUT.so". The library creates,
// hands out and destroys every look-up table of every processor; this binding only holds its
// handle and six of its entry points. The members are exported so that companion code of the
// family can reach the same tables.
#pragma once

#include "modules/exported.hpp"
#include "scalar_engine/transform_arguments.hpp"

// One table of the table library, known here only by its address.
struct LUT_table;
using LUT_handle = LUT_table*;

class LUT_wrapper {
public:
    using Initialize_LUT_module_function = void (*)();
    // Creates a table of `entries` 32-bit entries; the flag is set for processors that will use
    // the AVX2 vector library. Reports failure by throwing, never by a null result.
    using Create_LUT_function = LUT_handle (*)(int entries, bool avx2_flag);
    // Bound so that an incomplete library is refused, but never called.
    using Transform_LUT_16_function = void (*)();
    // The table's entries; the same writable memory for the whole life of the table.
    using Get_LUT_data_function = LUT_entry* (*)(LUT_handle table);
    using Destroy_LUT_function = void (*)(LUT_handle table);
    using Terminate_LUT_module_function = void (*)();

    // Opens the library (again: the loader counts the opens), binds all six entry points and
    // runs the library's own initialisation. False when the library or an entry point is
    // missing; what was bound until then stays until terminate.
    static bool initialize();

    // Runs the library's termination if bound, clears every entry point and closes the
    // library once. Harmless when nothing is bound.
    static void terminate();

    NQ_EXPORTED static void* m_LUT_module_handle;
    NQ_EXPORTED static Initialize_LUT_module_function m_initialize_LUT_module;
    NQ_EXPORTED static Create_LUT_function m_create_LUT;
    NQ_EXPORTED static Transform_LUT_16_function m_transform_LUT_16;
    NQ_EXPORTED static Get_LUT_data_function m_get_LUT_data;
    NQ_EXPORTED static Destroy_LUT_function m_destroy_LUT;
    NQ_EXPORTED static Terminate_LUT_module_function m_terminate_LUT_module;
};
