// A row-major m × n shape on a Carray, with element access and row and column iterators.
// Indices and dimensions are checked only by debug assertions (CmatrixCheckAssert).
#pragma once

#include <core/array.h>

#include <cassert>
#include <cstddef>
#include <iterator>
#include <limits>
#include <new>

namespace core {

// Checking policy: debug assertions only, nothing at run time in release builds.
struct CmatrixCheckAssert {
    static void checkIndex(std::size_t i, std::size_t j, std::size_t m, std::size_t n) {
        assert(i < m && j < n);
        (void)i, (void)j, (void)m, (void)n;
    }
    static void checkRow(std::size_t i, std::size_t m) {
        assert(i <= m);
        (void)i, (void)m;
    }
    static void checkCol(std::size_t j, std::size_t n) {
        assert(j <= n);
        (void)j, (void)n;
    }
};

// Iterator over elements a fixed stride apart (1 along a row, n down a column).
template <typename T, bool Row>
class CmatrixStrideIterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    CmatrixStrideIterator() = default;
    CmatrixStrideIterator(T* base, std::size_t pos, std::size_t stride)
        : m_base(base), m_pos(pos), m_stride(stride) {}

    reference operator*() const { return m_base[m_pos]; }
    pointer operator->() const { return m_base + m_pos; }
    reference operator[](difference_type k) const {
        return m_base[m_pos + static_cast<std::size_t>(k) * m_stride];
    }
    CmatrixStrideIterator& operator++() {
        m_pos += m_stride;
        return *this;
    }
    CmatrixStrideIterator operator++(int) {
        CmatrixStrideIterator old = *this;
        m_pos += m_stride;
        return old;
    }
    CmatrixStrideIterator& operator--() {
        m_pos -= m_stride;
        return *this;
    }
    CmatrixStrideIterator operator--(int) {
        CmatrixStrideIterator old = *this;
        m_pos -= m_stride;
        return old;
    }
    CmatrixStrideIterator& operator+=(difference_type k) {
        m_pos += static_cast<std::size_t>(k) * m_stride;
        return *this;
    }
    CmatrixStrideIterator& operator-=(difference_type k) {
        m_pos -= static_cast<std::size_t>(k) * m_stride;
        return *this;
    }
    CmatrixStrideIterator operator+(difference_type k) const {
        CmatrixStrideIterator r = *this;
        return r += k;
    }
    CmatrixStrideIterator operator-(difference_type k) const {
        CmatrixStrideIterator r = *this;
        return r -= k;
    }
    difference_type operator-(CmatrixStrideIterator const& o) const {
        return m_stride == 0 ? 0
                             : (static_cast<difference_type>(m_pos) -
                                static_cast<difference_type>(o.m_pos)) /
                                   static_cast<difference_type>(m_stride);
    }
    bool operator==(CmatrixStrideIterator const& o) const { return m_pos == o.m_pos; }
    bool operator!=(CmatrixStrideIterator const& o) const { return m_pos != o.m_pos; }
    bool operator<(CmatrixStrideIterator const& o) const { return m_pos < o.m_pos; }
    bool operator>(CmatrixStrideIterator const& o) const { return m_pos > o.m_pos; }
    bool operator<=(CmatrixStrideIterator const& o) const { return m_pos <= o.m_pos; }
    bool operator>=(CmatrixStrideIterator const& o) const { return m_pos >= o.m_pos; }

    // Position in the matrix's storage.
    std::size_t position() const { return m_pos; }

private:
    T* m_base = nullptr;
    std::size_t m_pos = 0;
    std::size_t m_stride = 1;
};

template <typename T>
using CmatrixRowIterator = CmatrixStrideIterator<T, true>;
template <typename T>
using CmatrixColIterator = CmatrixStrideIterator<T, false>;

template <typename T, typename Check, typename Storage>
class CmatrixBase : public Storage {
public:
    // 0 × 0.
    CmatrixBase() = default;
    // m rows, n columns, uninitialised; m · n overflowing 64 bits makes the allocation fail.
    CmatrixBase(std::size_t m, std::size_t n) : Storage(checkedCount(m, n)), m_n(n), m_m(m) {}
    CmatrixBase(CmatrixBase const&) = default;
    // If the allocation fails the matrix is left 0 × 0 (the array is already empty).
    CmatrixBase& operator=(CmatrixBase const& other) {
        if (this != &other) {
            try {
                Storage::operator=(other);
            } catch (...) {
                m_n = 0;
                m_m = 0;
                throw;
            }
            m_n = other.m_n;
            m_m = other.m_m;
        }
        return *this;
    }
    // A moved-from matrix is 0 × 0.
    CmatrixBase(CmatrixBase&& other) noexcept
        : Storage(static_cast<Storage&&>(other)), m_n(other.m_n), m_m(other.m_m) {
        other.m_n = 0;
        other.m_m = 0;
    }
    CmatrixBase& operator=(CmatrixBase&& other) noexcept {
        if (this != &other) {
            Storage::operator=(static_cast<Storage&&>(other));
            m_n = other.m_n;
            m_m = other.m_m;
            other.m_n = 0;
            other.m_m = 0;
        }
        return *this;
    }
    ~CmatrixBase() override = default;

    std::size_t size() const { return this->m_count; }
    std::size_t n() const { return m_n; }
    std::size_t m() const { return m_m; }

    T& operator()(std::size_t i, std::size_t j) {
        Check::checkIndex(i, j, m_m, m_n);
        return this->m_data[i * m_n + j];
    }
    T const& operator()(std::size_t i, std::size_t j) const {
        Check::checkIndex(i, j, m_m, m_n);
        return this->m_data[i * m_n + j];
    }

    // Row i, contiguous: positions i·n to (i+1)·n.
    CmatrixRowIterator<T> row_begin(std::size_t i) {
        Check::checkRow(i, m_m);
        return CmatrixRowIterator<T>(this->m_data, i * m_n, 1);
    }
    CmatrixRowIterator<T> row_end(std::size_t i) {
        Check::checkRow(i, m_m);
        return CmatrixRowIterator<T>(this->m_data, (i + 1) * m_n, 1);
    }
    CmatrixRowIterator<T> begin() { return CmatrixRowIterator<T>(this->m_data, 0, 1); }
    // Row iterator at position m · n.
    CmatrixRowIterator<T> end() { return CmatrixRowIterator<T>(this->m_data, m_m * m_n, 1); }
    // Column j, stride n: positions j to m·n + j.
    CmatrixColIterator<T> col_begin(std::size_t j) {
        Check::checkCol(j, m_n);
        return CmatrixColIterator<T>(this->m_data, j, m_n);
    }
    CmatrixColIterator<T> col_end(std::size_t j) {
        Check::checkCol(j, m_n);
        return CmatrixColIterator<T>(this->m_data, m_m * m_n + j, m_n);
    }

    // Exchanges element pointer, count, n and m with other; no element is copied.
    void swap(CmatrixBase& other) noexcept {
        this->swapStorage(other);
        std::size_t const n = m_n;
        std::size_t const m = m_m;
        m_n = other.m_n;
        m_m = other.m_m;
        other.m_n = n;
        other.m_m = m;
    }

protected:
    static std::size_t checkedCount(std::size_t m, std::size_t n) {
        if (n != 0 && m > std::numeric_limits<std::size_t>::max() / n) {
            throw std::bad_alloc();
        }
        return m * n;
    }
    void setShape(std::size_t m, std::size_t n) {
        m_m = m;
        m_n = n;
    }

    std::size_t m_n = 0;  // columns (the row length)
    std::size_t m_m = 0;  // rows
};

}  // namespace core
