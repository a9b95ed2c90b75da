#include "modules/shared_library_loader.hpp"

#include <dlfcn.h>

#include <string>

void* load_shared_library(const char* module_name)
{
    // The name is decorated as it stands, even when it already looks like a file name: callers
    // name modules, never files.
    std::string file_name("lib");
    file_name += module_name;
    file_name += ".so";
    return dlopen(file_name.c_str(), RTLD_LAZY);
}

void unload_shared_library(void*& library_handle)
{
    dlclose(library_handle);
    library_handle = nullptr;
}

void* get_function_handle(void* library_handle, const char* symbol_name)
{
    return dlsym(library_handle, symbol_name);
}
