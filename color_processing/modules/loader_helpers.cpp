#include "modules/loader_helpers.hpp"

#include "modules/shared_library_loader.hpp"

void* load_shared_library(const char* module_name)
{
    return open_shared_library_module(module_name);
}

void unload_shared_library(void*& library_handle)
{
    close_shared_library(library_handle);
}

void* get_function_handle(void* library_handle, const char* symbol_name)
{
    return find_library_symbol(library_handle, symbol_name);
}
