#include "modules/vector_color_processing_module.hpp"

Vector_color_processing_module::Vector_color_processing_module(
    const char* library_name, const char* initialize_name, const char* transform_8_bit_output_name,
    const char* transform_16_bit_output_name, const char* terminate_name)
    : m_library_handle(Shared_library::open_module(library_name))
{
    if (!m_library_handle ||
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
    return m_library_handle.bind(m_initialize, initialize_name) &&
           m_library_handle.bind(m_transform_8_bit_output, transform_8_bit_output_name) &&
           m_library_handle.bind(m_transform_16_bit_output, transform_16_bit_output_name) &&
           m_library_handle.bind(m_terminate, terminate_name);
}

Vector_color_processing_module::~Vector_color_processing_module()
{
    if (m_terminate != nullptr) m_terminate();
    m_initialize = nullptr;
    m_transform_8_bit_output = nullptr;
    m_transform_16_bit_output = nullptr;
    m_terminate = nullptr;
    m_library_handle.close();
}
