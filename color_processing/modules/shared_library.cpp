#include "modules/shared_library.hpp"

#include <utility>

Shared_library& Shared_library::operator=(Shared_library&& other) noexcept
{
    if (this != &other) {
        close();
        m_handle = std::exchange(other.m_handle, nullptr);
    }
    return *this;
}

Shared_library Shared_library::open_module(const char* module_name)
{
    return Shared_library(open_shared_library_module(module_name));
}

Shared_library Shared_library::open_file(const char* file_name)
{
    return Shared_library(open_shared_library_file(file_name));
}

Shared_library Shared_library::find_loaded(const char* file_name)
{
    return Shared_library(find_loaded_shared_library(file_name));
}

void Shared_library::close() noexcept
{
    if (m_handle != nullptr) close_shared_library(m_handle);
}
