// Owner of one object shared by nested users: the first acquire makes it, the last release
// destroys it. The count and the pointer change only under the owner's mutex; readers take the
// pointer without the lock, so an object must never be destroyed while calls may still use it.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

template <typename T>
class unique_ptr_reference_counted {
public:
    // Constant initialisation: a global owner is empty before any code of the library runs.
    constexpr unique_ptr_reference_counted() noexcept = default;

    // At library unload an object still owned is destroyed whatever the count says; nobody can
    // use it after that.
    ~unique_ptr_reference_counted() { delete m_pointer; }

    unique_ptr_reference_counted(const unique_ptr_reference_counted&) = delete;
    unique_ptr_reference_counted& operator=(const unique_ptr_reference_counted&) = delete;

    T* get() const noexcept { return m_pointer; }
    uint32_t count() const noexcept { return m_count; }

    // Raises the count. The first acquire installs make()'s object; if make throws, nothing
    // changes and the exception passes on.
    template <typename Make>
    void acquire(Make&& make)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_count == 0 && m_pointer == nullptr) {
            install(make());
            m_count = 1;
        } else {
            ++m_count;
        }
    }

    // Lowers the count, never below zero; the release that brings it to zero destroys the
    // object, after the pointer has been cleared.
    void release()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_count == 0) return;
        --m_count;
        if (m_count == 0 && m_pointer != nullptr) {
            T* const object = m_pointer;
            m_pointer = nullptr;
            delete object;
        }
    }

private:
    void install(std::unique_ptr<T> object) noexcept
    {
        T* const previous = m_pointer;
        m_pointer = object.release();
        delete previous;
    }

    T* m_pointer = nullptr;
    uint32_t m_count = 0;
    std::mutex m_mutex;
};
