#include "modules/shared_library_loader.hpp"

#include <dlfcn.h>

std::string shared_library_file_of_module(const char* module_name)
{
    return std::string("lib") + module_name + ".so";
}

void* open_shared_library_module(const char* module_name)
{
    return open_shared_library_file(shared_library_file_of_module(module_name).c_str());
}

void* open_shared_library_file(const char* file_name)
{
    return dlopen(file_name, RTLD_LAZY);
}

void* find_loaded_shared_library(const char* file_name)
{
    return dlopen(file_name, RTLD_LAZY | RTLD_NOLOAD);
}

void close_shared_library(void*& library_handle)
{
    dlclose(library_handle);
    library_handle = nullptr;
}

void* find_library_symbol(void* library_handle, const char* symbol_name)
{
    return dlsym(library_handle, symbol_name);
}

std::string shared_library_error()
{
    const char* const reason = dlerror();
    return reason != nullptr ? reason : "unknown reason";
}
