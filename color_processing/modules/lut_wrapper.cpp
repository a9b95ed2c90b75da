#include "modules/lut_wrapper.hpp"

#include "modules/shared_library_loader.hpp"

void* LUT_wrapper::m_LUT_module_handle = nullptr;
decltype(LUT_wrapper::m_initialize_LUT_module) LUT_wrapper::m_initialize_LUT_module = nullptr;
decltype(LUT_wrapper::m_create_LUT) LUT_wrapper::m_create_LUT = nullptr;
decltype(LUT_wrapper::m_transform_LUT_16) LUT_wrapper::m_transform_LUT_16 = nullptr;
decltype(LUT_wrapper::m_get_LUT_data) LUT_wrapper::m_get_LUT_data = nullptr;
decltype(LUT_wrapper::m_destroy_LUT) LUT_wrapper::m_destroy_LUT = nullptr;
decltype(LUT_wrapper::m_terminate_LUT_module) LUT_wrapper::m_terminate_LUT_module = nullptr;

namespace {

const char* const LUT_library_file = "libcorvane_xvr_LUT.so";

}  // namespace

// The handle is the binding's own, in an exported member, and outlives every call: a failed
// binding keeps the library open until terminate, so it is held here rather than by an owner
// that would close it on the way out.
bool LUT_wrapper::initialize()
{
    m_LUT_module_handle = open_shared_library_file(LUT_library_file);
    if (m_LUT_module_handle == nullptr) return false;

    void* const library = m_LUT_module_handle;
    const bool complete =
        bind_entry_point(library, m_initialize_LUT_module, "nq_LUT_module_initialize") &&
        bind_entry_point(library, m_create_LUT, "nq_create_LUT_test") &&
        bind_entry_point(library, m_transform_LUT_16, "nq_LUT_transform_16") &&
        bind_entry_point(library, m_get_LUT_data, "nq_get_LUT_data") &&
        bind_entry_point(library, m_destroy_LUT, "nq_destroy_LUT") &&
        bind_entry_point(library, m_terminate_LUT_module, "nq_LUT_module_terminate");
    if (!complete) return false;

    m_initialize_LUT_module();
    return true;
}

void LUT_wrapper::terminate()
{
    if (m_terminate_LUT_module != nullptr) m_terminate_LUT_module();
    m_terminate_LUT_module = nullptr;
    m_initialize_LUT_module = nullptr;
    m_create_LUT = nullptr;
    m_get_LUT_data = nullptr;
    m_transform_LUT_16 = nullptr;
    m_destroy_LUT = nullptr;
    if (m_LUT_module_handle != nullptr) close_shared_library(m_LUT_module_handle);
}
