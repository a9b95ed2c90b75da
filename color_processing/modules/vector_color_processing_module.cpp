#include "modules/vector_color_processing_module.hpp"

#include "modules/shared_library_loader.hpp"

namespace {

// Stores the address at once, so that a failed binding keeps the entry points found so far.
template <typename Function>
bool bind(Function& entry_point, void* library_handle, const char* symbol)
{
    entry_point = reinterpret_cast<Function>(get_function_handle(library_handle, symbol));
    return entry_point != nullptr;
}

}  // namespace

Vector_color_processing_module::Vector_color_processing_module(
    const char* library_name, const char* initialize_name, const char* transform_8_bit_output_name,
    const char* transform_16_bit_output_name, const char* terminate_name)
{
    m_library_handle = load_shared_library(library_name);
    if (m_library_handle == nullptr ||
        !bind_entry_points(initialize_name, transform_8_bit_output_name,
                           transform_16_bit_output_name, terminate_name)) {
        m_failed = true;
        return;
    }
    if (m_initialize() != 0) m_failed = true;
}

bool Vector_color_processing_module::bind_entry_points(const char* initialize_name,
                                                       const char* transform_8_bit_output_name,
                                                       const char* transform_16_bit_output_name,
                                                       const char* terminate_name)
{
    return bind(m_initialize, m_library_handle, initialize_name) &&
           bind(m_transform_8_bit_output, m_library_handle, transform_8_bit_output_name) &&
           bind(m_transform_16_bit_output, m_library_handle, transform_16_bit_output_name) &&
           bind(m_terminate, m_library_handle, terminate_name);
}

Vector_color_processing_module::~Vector_color_processing_module()
{
    if (m_terminate != nullptr) m_terminate();
    m_initialize = nullptr;
    m_transform_8_bit_output = nullptr;
    m_transform_16_bit_output = nullptr;
    m_terminate = nullptr;
    if (m_library_handle != nullptr) unload_shared_library(m_library_handle);
}
