#include "modules/lut_wrapper.hpp"

#include <dlfcn.h>

void* LUT_wrapper::m_LUT_module_handle = nullptr;
LUT_wrapper::Initialize_LUT_module_function LUT_wrapper::m_initialize_LUT_module = nullptr;
LUT_wrapper::Create_LUT_function LUT_wrapper::m_create_LUT = nullptr;
LUT_wrapper::Transform_LUT_16_function LUT_wrapper::m_transform_LUT_16 = nullptr;
LUT_wrapper::Get_LUT_data_function LUT_wrapper::m_get_LUT_data = nullptr;
LUT_wrapper::Destroy_LUT_function LUT_wrapper::m_destroy_LUT = nullptr;
LUT_wrapper::Terminate_LUT_module_function LUT_wrapper::m_terminate_LUT_module = nullptr;

namespace {

const char* const LUT_library_file = "libcorvane_xvr_LUT.so";

// Stores the address at once, so that a failed binding leaves the entry points found so far.
template <typename Function>
bool bind(Function& entry_point, const char* symbol)
{
    entry_point = reinterpret_cast<Function>(dlsym(LUT_wrapper::m_LUT_module_handle, symbol));
    return entry_point != nullptr;
}

}  // namespace

bool LUT_wrapper::initialize()
{
    m_LUT_module_handle = dlopen(LUT_library_file, RTLD_LAZY);
    if (m_LUT_module_handle == nullptr) return false;

    // The creation entry point is the library's "test" creation: it is the one that takes the
    // vector flag.
    const bool complete = bind(m_initialize_LUT_module, "nq_LUT_module_initialize") &&
                          bind(m_create_LUT, "nq_create_LUT_test") &&
                          bind(m_transform_LUT_16, "nq_LUT_transform_16") &&
                          bind(m_get_LUT_data, "nq_get_LUT_data") &&
                          bind(m_destroy_LUT, "nq_destroy_LUT") &&
                          bind(m_terminate_LUT_module, "nq_LUT_module_terminate");
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
    if (m_LUT_module_handle != nullptr) {
        dlclose(m_LUT_module_handle);
        m_LUT_module_handle = nullptr;
    }
}
