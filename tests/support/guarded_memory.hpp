// Memory between two inaccessible pages, so that a read or write one byte before or past a
// buffer placed against either of them faults at once instead of passing unnoticed.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

class Guarded_memory {
public:
    explicit Guarded_memory(std::size_t bytes)
        : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          m_usable((bytes / m_page + 1) * m_page)
    {
        void* memory = mmap(nullptr, m_usable + 2 * m_page, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) return;
        m_memory = static_cast<uint8_t*>(memory);
        mprotect(m_memory, m_page, PROT_NONE);
        mprotect(m_memory + m_page + m_usable, m_page, PROT_NONE);
    }
    // A copy of `bytes` bytes of `data` that ends at the upper page (AT_END) or starts at the lower.
    Guarded_memory(const void* data, std::size_t bytes, bool at_end) : Guarded_memory(bytes)
    {
        m_copy = usable() ? placed(bytes, at_end) : nullptr;
        if (m_copy != nullptr) std::memcpy(m_copy, data, bytes);
    }
    ~Guarded_memory()
    {
        if (m_memory != nullptr) munmap(m_memory, m_usable + 2 * m_page);
    }
    Guarded_memory(const Guarded_memory&) = delete;
    Guarded_memory& operator=(const Guarded_memory&) = delete;

    bool usable() const { return m_memory != nullptr; }
    // Where `bytes` bytes end at the upper inaccessible page, or start at the lower one.
    uint8_t* placed(std::size_t bytes, bool at_end = true) const
    {
        return at_end ? m_memory + m_page + m_usable - bytes : m_memory + m_page;
    }
    // The copy made by the constructor.
    template <typename T>
    T* copy() const { return reinterpret_cast<T*>(m_copy); }

private:
    std::size_t m_page;
    std::size_t m_usable;
    uint8_t* m_memory = nullptr;
    uint8_t* m_copy = nullptr;
};
