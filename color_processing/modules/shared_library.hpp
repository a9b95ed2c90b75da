// Owner of one open library: the library is closed when its owner goes, on every path, unless
// the owner is told to leave it open for good.
#pragma once

#include "modules/shared_library_loader.hpp"

class Shared_library {
public:
    Shared_library() = default;
    ~Shared_library() { close(); }

    Shared_library(Shared_library&& other) noexcept : m_handle(other.m_handle)
    {
        other.m_handle = nullptr;
    }
    Shared_library& operator=(Shared_library&& other) noexcept;
    Shared_library(const Shared_library&) = delete;
    Shared_library& operator=(const Shared_library&) = delete;

    // "lib" + module_name + ".so", decorated as the loader does.
    static Shared_library open_module(const char* module_name);
    // The file by exactly this name.
    static Shared_library open_file(const char* file_name);
    // The file if the process has it loaded already; never loads it.
    static Shared_library find_loaded(const char* file_name);

    explicit operator bool() const noexcept { return m_handle != nullptr; }

    // See bind_entry_point. Must not be called on an owner that holds no library.
    template <typename Function>
    bool bind(Function& entry_point, const char* symbol_name) const
    {
        return bind_entry_point(m_handle, entry_point, symbol_name);
    }

    void close() noexcept;

    // Gives up ownership: the library stays open for the rest of the process.
    void leave_open() noexcept { m_handle = nullptr; }

private:
    explicit Shared_library(void* handle) noexcept : m_handle(handle) {}

    void* m_handle = nullptr;
};
