// Points and unit directions in the plane and in space, and the set of point lists handed to the
// area of interest.
#pragma once

#include <math/detail/instantiate.h>

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <vector>

namespace math {

namespace detail {
// The value of an unset component: a quiet NaN for floating types, 0 for integers.
template <typename T>
constexpr T unsetValue() {
    if constexpr (std::numeric_limits<T>::has_quiet_NaN) {
        return std::numeric_limits<T>::quiet_NaN();
    } else {
        return T(0);
    }
}
}  // namespace detail

// A point in the plane. Default construction gives an unset point (NaN components; zeros for
// integer types). Equality is exact.
template <typename T>
struct Cpoint2 {
    T x;
    T y;

    Cpoint2() : x(detail::unsetValue<T>()), y(detail::unsetValue<T>()) {}
    Cpoint2(T x_, T y_) : x(x_), y(y_) {}

    T& operator[](std::size_t i) { return i == 0 ? x : y; }
    T const& operator[](std::size_t i) const { return i == 0 ? x : y; }

    bool operator==(Cpoint2 const& o) const { return x == o.x && y == o.y; }
    bool operator!=(Cpoint2 const& o) const { return !(*this == o); }
    Cpoint2 operator+(Cpoint2 const& o) const { return Cpoint2(x + o.x, y + o.y); }
    Cpoint2 operator-(Cpoint2 const& o) const { return Cpoint2(x - o.x, y - o.y); }
    Cpoint2 operator-() const { return Cpoint2(-x, -y); }
    Cpoint2 operator*(T s) const { return Cpoint2(x * s, y * s); }
    Cpoint2 operator/(T s) const { return Cpoint2(x / s, y / s); }
    Cpoint2& operator+=(Cpoint2 const& o) {
        x += o.x;
        y += o.y;
        return *this;
    }
    Cpoint2& operator-=(Cpoint2 const& o) {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    Cpoint2& operator*=(T s) {
        x *= s;
        y *= s;
        return *this;
    }
};

// A point in space; the same conventions as Cpoint2.
template <typename T>
struct Cpoint3 {
    T x;
    T y;
    T z;

    Cpoint3() : x(detail::unsetValue<T>()), y(detail::unsetValue<T>()), z(detail::unsetValue<T>()) {}
    Cpoint3(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}

    T& operator[](std::size_t i) { return i == 0 ? x : (i == 1 ? y : z); }
    T const& operator[](std::size_t i) const { return i == 0 ? x : (i == 1 ? y : z); }

    bool operator==(Cpoint3 const& o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(Cpoint3 const& o) const { return !(*this == o); }
    Cpoint3 operator+(Cpoint3 const& o) const { return Cpoint3(x + o.x, y + o.y, z + o.z); }
    Cpoint3 operator-(Cpoint3 const& o) const { return Cpoint3(x - o.x, y - o.y, z - o.z); }
    Cpoint3 operator-() const { return Cpoint3(-x, -y, -z); }
    Cpoint3 operator*(T s) const { return Cpoint3(x * s, y * s, z * s); }
    Cpoint3 operator/(T s) const { return Cpoint3(x / s, y / s, z / s); }
    Cpoint3& operator+=(Cpoint3 const& o) {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    Cpoint3& operator-=(Cpoint3 const& o) {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        return *this;
    }
    Cpoint3& operator*=(T s) {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
};

template <typename T>
std::ostream& operator<<(std::ostream& os, Cpoint2<T> const& p) {
    return os << '(' << p.x << ", " << p.y << ')';
}
template <typename T>
std::ostream& operator<<(std::ostream& os, Cpoint3<T> const& p) {
    return os << '(' << p.x << ", " << p.y << ", " << p.z << ')';
}

// The equality tolerance of directions: 2^-35 for double, 2^-15 for float (set on first use).
template <typename T>
T directionTolerance();

// Tolerant equality of two scalars: b + eps (1 + |b|) > a and a + eps (1 + |a|) > b, both
// strict, eps = directionTolerance<T>(). NaNs never compare equal, nor do equal infinities.
template <typename T>
bool tolerantEqual(T a, T b);

// Dimension of a point type.
template <typename P>
struct PointDim;
template <typename T>
struct PointDim<Cpoint2<T>> {
    static constexpr std::size_t value = 2;
    using type = T;
};
template <typename T>
struct PointDim<Cpoint3<T>> {
    static constexpr std::size_t value = 3;
    using type = T;
};

// A unit direction held as a point P (Cpoint2 or Cpoint3). Either the components form a unit
// vector or the direction is invalid: the first component is NaN. Normalising divides by the
// Euclidean length (in T) with no lower bound; a length of exactly 0 (also one that underflows)
// invalidates.
template <typename P>
class CdirecBase {
public:
    using value_type = typename PointDim<P>::type;
    static constexpr std::size_t kDim = PointDim<P>::value;

    // An invalid direction.
    CdirecBase() : m_v() {}

    // True when no component is NaN.
    bool isValid() const;
    // Writes a quiet NaN into the first component; the others keep their values.
    void invalidate() { m_v[0] = std::numeric_limits<value_type>::quiet_NaN(); }

    // Component-wise tolerant equality (tolerantEqual) of every component.
    bool operator==(CdirecBase const& o) const;
    bool operator!=(CdirecBase const& o) const { return !(*this == o); }

    value_type operator[](std::size_t i) const { return m_v[i]; }
    value_type x() const { return m_v[0]; }
    value_type y() const { return m_v[1]; }

    // The point p + direction.
    P operator+(P const& p) const { return m_v + p; }
    // The point direction - p (direction minus point, in this order).
    P operator-(P const& p) const { return m_v - p; }
    // Component-wise sum and difference, not normalised.
    P operator+(CdirecBase const& o) const { return m_v + o.m_v; }
    P operator-(CdirecBase const& o) const { return m_v - o.m_v; }

    // The components as a point.
    P const& asPoint() const { return m_v; }

protected:
    explicit CdirecBase(P const& v) : m_v(v) {}
    // Normalises m_v in place (see the class comment).
    void normalize();

    P m_v;
};

// A unit direction in the plane.
template <typename T>
class Cdirec2 : public CdirecBase<Cpoint2<T>> {
    using Base = CdirecBase<Cpoint2<T>>;

public:
    static Cdirec2 const posX;  // ( 1,  0)
    static Cdirec2 const posY;  // ( 0,  1)
    static Cdirec2 const negX;  // (-1,  0)
    static Cdirec2 const negY;  // ( 0, -1)

    // An invalid direction.
    Cdirec2() = default;
    // The point's components, normalised.
    Cdirec2(Cpoint2<T> const& p);  // NOLINT: a point converts to its direction
    // (x, y), normalised.
    Cdirec2(T x, T y);
    Cdirec2(Base const& d) : Base(d) {}  // NOLINT

    // Stores (x, y) unchanged; the caller guarantees unit length.
    static Cdirec2 unit(T x, T y) { return Cdirec2(x, y, true); }

    Cdirec2& operator=(Cpoint2<T> const& p);
    Cdirec2& operator=(Base const& d) {
        Base::operator=(d);
        return *this;
    }
    Cdirec2& operator=(Cdirec2 const& d) = default;
    Cdirec2(Cdirec2 const& d) = default;

    using Base::operator-;
    // The direction with both components negated (still of unit length).
    Cdirec2 operator-() const { return Cdirec2(-this->m_v.x, -this->m_v.y, true); }
    // The direction turned by +90 degrees: (-y, x).
    Cdirec2 perp() const { return Cdirec2(-this->m_v.y, this->m_v.x, true); }

private:
    Cdirec2(T x, T y, bool) : Base(Cpoint2<T>(x, y)) {}
};

// A unit direction in space.
template <typename T>
class Cdirec3 : public CdirecBase<Cpoint3<T>> {
    using Base = CdirecBase<Cpoint3<T>>;

public:
    // An invalid direction.
    Cdirec3() = default;
    // (x, y, z), normalised.
    Cdirec3(T x, T y, T z);
    // The point's components, normalised.
    Cdirec3(Cpoint3<T> const& p);  // NOLINT: a point converts to its direction
    Cdirec3(Base const& d) : Base(d) {}  // NOLINT

    // Stores (x, y, z) unchanged; the caller guarantees unit length.
    static Cdirec3 unit(T x, T y, T z) {
        Cdirec3 d;
        d.m_v = Cpoint3<T>(x, y, z);
        return d;
    }

    Cdirec3& operator=(Cpoint3<T> const& p);

    T z() const { return this->m_v.z; }
    using Base::operator-;
    // The direction with every component negated.
    Cdirec3 operator-() const { return unit(-this->m_v.x, -this->m_v.y, -this->m_v.z); }
};

template <typename P>
std::ostream& operator<<(std::ostream& os, CdirecBase<P> const& d) {
    return os << d.asPoint();
}

// A list of point lists (contours), in order.
template <typename T>
class CpntN2 {
public:
    using value_type = std::vector<Cpoint2<T>>;
    using iterator = typename std::vector<value_type>::iterator;
    using const_iterator = typename std::vector<value_type>::const_iterator;

    CpntN2() = default;
    CpntN2(std::initializer_list<value_type> lists) : m_lists(lists) {}

    std::size_t size() const { return m_lists.size(); }
    bool empty() const { return m_lists.empty(); }
    value_type& operator[](std::size_t i) { return m_lists[i]; }
    value_type const& operator[](std::size_t i) const { return m_lists[i]; }
    void push_back(value_type const& list) { m_lists.push_back(list); }
    void push_back(value_type&& list) { m_lists.push_back(std::move(list)); }
    void clear() { m_lists.clear(); }
    void reserve(std::size_t n) { m_lists.reserve(n); }
    iterator begin() { return m_lists.begin(); }
    iterator end() { return m_lists.end(); }
    const_iterator begin() const { return m_lists.begin(); }
    const_iterator end() const { return m_lists.end(); }

private:
    std::vector<value_type> m_lists;
};

#define MGEO_POINTS_FAMILY(T, EXT)                   \
    EXT template T directionTolerance<T>();          \
    EXT template bool tolerantEqual<T>(T, T);        \
    EXT template class CdirecBase<Cpoint2<T>>;       \
    EXT template class CdirecBase<Cpoint3<T>>;       \
    EXT template class Cdirec2<T>;                   \
    EXT template class Cdirec3<T>;
#define MGEO_POINTS_EXTERN(T) MGEO_POINTS_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_POINTS_EXTERN)
#undef MGEO_POINTS_EXTERN

}  // namespace math
