// Small vector containers: the two-component vector of the convex hull and the growable
// sequence of point clouds and control-point rows.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

// A two-component vector (x, y).
template <typename T>
struct Cvector2 {
    T x{};
    T y{};

    Cvector2() = default;
    Cvector2(T x_, T y_) : x(x_), y(y_) {}

    bool operator==(Cvector2 const& o) const { return x == o.x && y == o.y; }
    bool operator!=(Cvector2 const& o) const { return !(*this == o); }
    Cvector2 operator+(Cvector2 const& o) const { return Cvector2(x + o.x, y + o.y); }
    Cvector2 operator-(Cvector2 const& o) const { return Cvector2(x - o.x, y - o.y); }
};

// An indexable, growable sequence of T.
template <typename T>
class CbaseVecN {
public:
    using value_type = T;
    using iterator = typename std::vector<T>::iterator;
    using const_iterator = typename std::vector<T>::const_iterator;

    CbaseVecN() = default;
    explicit CbaseVecN(std::size_t n) : m_v(n) {}
    CbaseVecN(std::size_t n, T const& value) : m_v(n, value) {}
    CbaseVecN(std::initializer_list<T> values) : m_v(values) {}

    std::size_t size() const { return m_v.size(); }
    bool empty() const { return m_v.empty(); }
    T& operator[](std::size_t i) { return m_v[i]; }
    T const& operator[](std::size_t i) const { return m_v[i]; }
    void push_back(T const& value) { m_v.push_back(value); }
    void push_back(T&& value) { m_v.push_back(std::move(value)); }
    void clear() { m_v.clear(); }
    void reserve(std::size_t n) { m_v.reserve(n); }
    void resize(std::size_t n) { m_v.resize(n); }
    std::size_t capacity() const { return m_v.capacity(); }
    T* data() { return m_v.data(); }
    T const* data() const { return m_v.data(); }
    iterator begin() { return m_v.begin(); }
    iterator end() { return m_v.end(); }
    const_iterator begin() const { return m_v.begin(); }
    const_iterator end() const { return m_v.end(); }

private:
    std::vector<T> m_v;
};
