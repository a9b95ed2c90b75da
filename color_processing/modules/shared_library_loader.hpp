// Opening libraries and finding their entry points: the one place where this project calls the
// platform's dynamic loader. Libraries are opened with lazy binding and no other flag, so that
// their symbols stay their own and a bare file name is searched by the platform's ordinary
// rules (the library sets no search path of its own). The core exports three of these under
// plain C names (loader_helpers.hpp); the command-line tool and tests use them as they are.
#pragma once

#include <string>

// "lib" + module_name + ".so": callers name modules, never files, so the name is decorated as
// it stands, even when it already looks like a file name.
std::string shared_library_file_of_module(const char* module_name);

// Opens the module's file (above); null when it cannot.
void* open_shared_library_module(const char* module_name);

// Opens the file by exactly this name, undecorated; null when it cannot.
void* open_shared_library_file(const char* file_name);

// The file's handle when the process has it loaded already, null otherwise; never loads it.
// A handle found counts as one more open and must be closed.
void* find_loaded_shared_library(const char* file_name);

// Closes the library and nulls the caller's handle. The handle must not be null.
void close_shared_library(void*& library_handle);

// The address of a symbol of the library; null when it is absent.
void* find_library_symbol(void* library_handle, const char* symbol_name);

// Why the loader's last open failed, in its own words.
std::string shared_library_error();

// Looks the entry point up and stores its address at once, so that a binding that fails
// part-way keeps the entry points it found. False when the symbol is absent.
template <typename Function>
bool bind_entry_point(void* library_handle, Function& entry_point, const char* symbol_name)
{
    entry_point = reinterpret_cast<Function>(find_library_symbol(library_handle, symbol_name));
    return entry_point != nullptr;
}
