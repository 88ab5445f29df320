// An owning array of T: element pointer and element count, copied bytewise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace core {

template <typename T>
class Carray {
public:
    Carray() = default;
    // count uninitialised elements.
    explicit Carray(std::size_t count) : m_data(allocate(count)), m_count(count) {}
    Carray(Carray const& other) : m_data(allocate(other.m_count)), m_count(other.m_count) {
        copyFrom(other);
    }
    Carray(Carray&& other) noexcept : m_data(other.m_data), m_count(other.m_count) {
        other.m_data = nullptr;
        other.m_count = 0;
    }
    Carray& operator=(Carray const& other) {
        assign(other);
        return *this;
    }
    Carray& operator=(Carray&& other) noexcept {
        if (this != &other) {
            release();
            m_data = other.m_data;
            m_count = other.m_count;
            other.m_data = nullptr;
            other.m_count = 0;
        }
        return *this;
    }
    virtual ~Carray() { release(); }

    // Releases the current elements, then allocates other's count and copies them bytewise.
    // If the allocation fails the array is left empty (null pointer, count 0) and the
    // allocator's exception propagates.
    virtual void assign(Carray const& other) {
        if (&other == this) {
            return;
        }
        release();
        m_data = allocate(other.m_count);
        m_count = other.m_count;
        copyFrom(other);
    }

protected:
    // count * sizeof(T) bytes; a product that overflows 64 bits requests the largest size, so
    // that the allocation fails with the allocator's out-of-memory exception.
    static T* allocate(std::size_t count) {
        if (count == 0) {
            return nullptr;
        }
        std::size_t bytes = std::numeric_limits<std::size_t>::max();
        if (count <= std::numeric_limits<std::size_t>::max() / sizeof(T)) {
            bytes = count * sizeof(T);
        }
        return static_cast<T*>(::operator new[](bytes));
    }
    void release() noexcept {
        ::operator delete[](m_data);
        m_data = nullptr;
        m_count = 0;
    }
    void copyFrom(Carray const& other) noexcept {
        if (m_count != 0) {
            std::memcpy(static_cast<void*>(m_data), other.m_data, m_count * sizeof(T));
        }
    }
    // Exchanges storage with other; no element is copied.
    void swapStorage(Carray& other) noexcept {
        T* data = m_data;
        std::size_t count = m_count;
        m_data = other.m_data;
        m_count = other.m_count;
        other.m_data = data;
        other.m_count = count;
    }

    T* m_data = nullptr;
    std::size_t m_count = 0;
};

}  // namespace core
