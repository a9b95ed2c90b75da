// The loader, exported under these plain names beside the public calls so that companion code
// of the family can open libraries as the core does. They keep no state and log nothing.
#pragma once

#include "modules/exported.hpp"

extern "C" {

// Opens "lib" + module_name + ".so"; null when it cannot.
NQ_EXPORTED void* load_shared_library(const char* module_name);

// Closes the library and nulls the caller's handle. The handle must not be null.
NQ_EXPORTED void unload_shared_library(void*& library_handle);

// The address of a symbol of the library; null when it is absent.
NQ_EXPORTED void* get_function_handle(void* library_handle, const char* symbol_name);
}
