// The process-wide binding to the table library "libcorvane_xvr_LUT.so". The library creates,
// hands out and destroys every look-up table of every processor; this binding only holds its
// handle and six of its entry points, typed by the library's own header. The members are
// exported so that companion code of the family can reach the same tables.
#pragma once

#include "modules/exported.hpp"

#include <corvane_xvr_LUT.h>

class LUT_wrapper {
public:
    // Opens the library (again: the loader counts the opens), binds all six entry points and
    // runs the library's own initialisation. False when the library or an entry point is
    // missing; what was bound until then stays until terminate.
    static bool initialize();

    // Runs the library's termination if bound, clears every entry point and closes the
    // library once. Harmless when nothing is bound.
    static void terminate();

    NQ_EXPORTED static void* m_LUT_module_handle;
    NQ_EXPORTED static decltype(&nq_LUT_module_initialize) m_initialize_LUT_module;
    // Bound to "nq_create_LUT_test", the creation that takes the vector flag. Reports failure
    // by throwing, never by a null result.
    NQ_EXPORTED static decltype(&nq_create_LUT_test) m_create_LUT;
    // Bound so that an incomplete library is refused, but never called.
    NQ_EXPORTED static decltype(&nq_LUT_transform_16) m_transform_LUT_16;
    NQ_EXPORTED static decltype(&nq_get_LUT_data) m_get_LUT_data;
    NQ_EXPORTED static decltype(&nq_destroy_LUT) m_destroy_LUT;
    NQ_EXPORTED static decltype(&nq_LUT_module_terminate) m_terminate_LUT_module;
};
