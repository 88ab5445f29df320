// Rectangles and 2D bounding boxes.
#include "math/rect.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace math {

namespace {

// The smaller / larger of two values; on a NaN comparison the first argument is returned.
template <typename T>
T minOf(T a, T b) {
    return b < a ? b : a;
}
template <typename T>
T maxOf(T a, T b) {
    return a < b ? b : a;
}

template <typename T>
bool isNaN(T v) {
    return v != v;
}

// Field arithmetic. For int the sum, difference and product are taken modulo 2^32 (in
// unsigned arithmetic) instead of overflowing, which would be undefined: results that fit in
// int are unchanged. Fuzzing found 177731010 * 77 in operator*=; x + w in the constructor,
// width() and the moves overflow alike near the ends of the int range.
template <typename T>
T add(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        using U = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<U>(a) + static_cast<U>(b));
    } else {
        return a + b;
    }
}
template <typename T>
T sub(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        using U = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<U>(a) - static_cast<U>(b));
    } else {
        return a - b;
    }
}
template <typename T>
T mul(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        using U = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<U>(a) * static_cast<U>(b));
    } else {
        return a * b;
    }
}
// (a + b) / 2. For int the sum is taken in 64 bits, so the truncated half sum is exact for
// every pair (it always fits in int).
template <typename T>
T halfSum(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>((static_cast<long long>(a) + b) / 2);
    } else {
        return (a + b) / T(2);
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Crect2

template <typename T>
Crect2<T>::Crect2()
    : m_left(detail::unsetValue<T>()),
      m_top(detail::unsetValue<T>()),
      m_right(detail::unsetValue<T>()),
      m_bottom(detail::unsetValue<T>()) {}

template <typename T>
Crect2<T>::Crect2(T x, T y, T w, T h)
    : m_left(x), m_top(y), m_right(add(x, w)), m_bottom(add(y, h)) {}

template <typename T>
Crect2<T>::Crect2(Cpoint2<T> const& p, T w, T h) : Crect2(p.x, p.y, w, h) {}

template <typename T>
Crect2<T>::Crect2(Cpoint2<T> const& tl, Cpoint2<T> const& br)
    : m_left(tl.x), m_top(tl.y), m_right(br.x), m_bottom(br.y) {}

template <typename T>
Cpoint2<T> Crect2<T>::topRight() const {
    return Cpoint2<T>(m_right, m_top);
}

template <typename T>
Cpoint2<T> Crect2<T>::bottomLeft() const {
    return Cpoint2<T>(m_left, m_bottom);
}

template <typename T>
T Crect2<T>::width() const {
    return sub(m_right, m_left);
}

template <typename T>
T Crect2<T>::height() const {
    return sub(m_bottom, m_top);
}

template <typename T>
void Crect2<T>::setWidth(T w) {
    m_right = add(m_left, w);
}

template <typename T>
void Crect2<T>::setHeight(T h) {
    m_bottom = add(m_top, h);
}

template <typename T>
Cpoint2<T> Crect2<T>::center() const {
    // For int, '/' truncates toward zero: (-3 + 0) / 2 = -1.
    return Cpoint2<T>(halfSum(m_left, m_right), halfSum(m_top, m_bottom));
}

template <typename T>
void Crect2<T>::setCenter(Cpoint2<T> const& c) {
    Cpoint2<T> const m = center();
    T const dx = sub(c.x, m.x);
    T const dy = sub(c.y, m.y);
    m_left = add(m_left, dx);
    m_right = add(m_right, dx);
    m_top = add(m_top, dy);
    m_bottom = add(m_bottom, dy);
}

template <typename T>
void Crect2<T>::adjust(T dl, T dt, T dr, T db) {
    m_left = add(m_left, dl);
    m_top = add(m_top, dt);
    m_right = add(m_right, dr);
    m_bottom = add(m_bottom, db);
}

template <typename T>
void Crect2<T>::moveBy(Cpoint2<T> const& p) {
    m_left = add(m_left, p.x);
    m_right = add(m_right, p.x);
    m_top = add(m_top, p.y);
    m_bottom = add(m_bottom, p.y);
}

template <typename T>
void Crect2<T>::moveTo(Cpoint2<T> const& p) {
    T const w = width();
    T const h = height();
    m_left = p.x;
    m_top = p.y;
    m_right = add(p.x, w);
    m_bottom = add(p.y, h);
}

template <typename T>
Crect2<T>& Crect2<T>::operator+=(Cpoint2<T> const& p) {
    moveBy(p);
    return *this;
}

template <typename T>
Crect2<T>& Crect2<T>::operator-=(Cpoint2<T> const& p) {
    m_left = sub(m_left, p.x);
    m_right = sub(m_right, p.x);
    m_top = sub(m_top, p.y);
    m_bottom = sub(m_bottom, p.y);
    return *this;
}

template <typename T>
Crect2<T>& Crect2<T>::operator*=(T s) {
    m_left = mul(m_left, s);
    m_top = mul(m_top, s);
    m_right = mul(m_right, s);
    m_bottom = mul(m_bottom, s);
    return *this;
}

template <typename T>
Crect2<T> Crect2<T>::operator+(Cpoint2<T> const& p) const {
    Crect2 r(*this);
    r += p;
    return r;
}

template <typename T>
Crect2<T> Crect2<T>::operator-(Cpoint2<T> const& p) const {
    Crect2 r(*this);
    r -= p;
    return r;
}

template <typename T>
Crect2<T> Crect2<T>::operator*(T s) const {
    Crect2 r(*this);
    r *= s;
    return r;
}

template <typename T>
bool Crect2<T>::operator==(Crect2 const& r) const {
    return m_left == r.m_left && m_top == r.m_top && m_right == r.m_right && m_bottom == r.m_bottom;
}

template <typename T>
bool Crect2<T>::operator!=(Crect2 const& r) const {
    return !(*this == r);
}

template <typename T>
bool Crect2<T>::isValid() const {
    if constexpr (std::is_integral_v<T>) {
        return true;
    } else {
        return !isNaN(m_left) && !isNaN(m_top) && !isNaN(m_right) && !isNaN(m_bottom);
    }
}

template <typename T>
Crect2<T> Crect2<T>::normalize() const {
    Crect2 r(*this);
    if (r.m_left > r.m_right) {
        std::swap(r.m_left, r.m_right);
    }
    if (r.m_top > r.m_bottom) {
        std::swap(r.m_top, r.m_bottom);
    }
    return r;
}

template <typename T>
bool Crect2<T>::pointIsIn(Cpoint2<T> const& p) const {
    return m_left <= p.x && p.x <= m_right && m_top <= p.y && p.y <= m_bottom;
}

template <typename T>
bool Crect2<T>::pointIsRealIn(Cpoint2<T> const& p) const {
    return m_left < p.x && p.x < m_right && m_top < p.y && p.y < m_bottom;
}

template <typename T>
bool Crect2<T>::pointOnBorder(Cpoint2<T> const& p) const {
    if ((p.x == m_left || p.x == m_right) && m_top <= p.y && p.y <= m_bottom) {
        return true;
    }
    return (p.y == m_top || p.y == m_bottom) && m_left <= p.x && p.x <= m_right;
}

template <typename T>
bool Crect2<T>::intersects(Crect2 const& r) const {
    // Bit 3 down to bit 0: (r0 <= l1), (l0 <= r1), (r0 <= r1), (l0 <= l1).
    unsigned const maskX = (unsigned(m_right <= r.m_left) << 3) |
                           (unsigned(m_left <= r.m_right) << 2) |
                           (unsigned(m_right <= r.m_right) << 1) | unsigned(m_left <= r.m_left);
    unsigned const maskY = (unsigned(m_bottom <= r.m_top) << 3) |
                           (unsigned(m_top <= r.m_bottom) << 2) |
                           (unsigned(m_bottom <= r.m_bottom) << 1) | unsigned(m_top <= r.m_top);
    return maskX != 0u && maskX != 15u && maskY != 0u && maskY != 15u;
}

template <typename T>
Crect2<T> Crect2<T>::intersect(Crect2 const& r) const {
    Crect2 const a = normalize();
    Crect2 const b = r.normalize();
    return Crect2(Cpoint2<T>(maxOf(a.m_left, b.m_left), maxOf(a.m_top, b.m_top)),
                  Cpoint2<T>(minOf(a.m_right, b.m_right), minOf(a.m_bottom, b.m_bottom)));
}

template <typename T>
Crect2<T> Crect2<T>::unite(Crect2 const& r) const {
    Crect2 const a = normalize();
    Crect2 const b = r.normalize();
    return Crect2(Cpoint2<T>(minOf(a.m_left, b.m_left), minOf(a.m_top, b.m_top)),
                  Cpoint2<T>(maxOf(a.m_right, b.m_right), maxOf(a.m_bottom, b.m_bottom)));
}

// ---------------------------------------------------------------------------------------------
// CboundingBox2

template <typename T>
CboundingBox2<T>::CboundingBox2()
    : m_minX(detail::unsetValue<T>()),
      m_minY(detail::unsetValue<T>()),
      m_maxX(detail::unsetValue<T>()),
      m_maxY(detail::unsetValue<T>()) {}

template <typename T>
template <typename It>
void CboundingBox2<T>::setRange(It first, It last) {
    if (first == last) {
        m_minX = detail::unsetValue<T>();
        m_maxX = detail::unsetValue<T>();
        return;
    }
    // The largest finite double converted to T: DBL_MAX for double; the conversion to float
    // rounds to +infinity; for int (where it would overflow) INT_MAX.
    T big;
    if constexpr (std::is_same_v<T, double>) {
        big = DBL_MAX;
    } else if constexpr (std::is_floating_point_v<T>) {
        big = std::numeric_limits<T>::infinity();
    } else {
        big = std::numeric_limits<T>::max();
    }
    m_minX = big;
    m_minY = big;
    m_maxX = -big;
    m_maxY = -big;
    for (It it = first; it != last; ++it) {
        T const x = it->x;
        T const y = it->y;
        if (isNaN(x) || isNaN(y)) {
            m_minX = detail::unsetValue<T>();
            m_maxX = detail::unsetValue<T>();
            return;
        }
        // Two independent comparisons per coordinate, so one point sets minimum and maximum.
        if (x < m_minX) {
            m_minX = x;
        }
        if (x > m_maxX) {
            m_maxX = x;
        }
        if (y < m_minY) {
            m_minY = y;
        }
        if (y > m_maxY) {
            m_maxY = y;
        }
    }
}

template <typename T>
void CboundingBox2<T>::set(std::vector<Cpoint2<T>> const& points) {
    setRange(points.begin(), points.end());
}

template <typename T>
void CboundingBox2<T>::set(std::list<Cpoint2<T>> const& points) {
    setRange(points.begin(), points.end());
}

template <typename T>
void CboundingBox2<T>::getCenter(T& x, T& y) const {
    if constexpr (std::is_integral_v<T>) {
        x = static_cast<T>((double(m_minX) + double(m_maxX)) * 0.5);
        y = static_cast<T>((double(m_minY) + double(m_maxY)) * 0.5);
    } else {
        if (isNaN(m_minX) || isNaN(m_minY) || isNaN(m_maxX) || isNaN(m_maxY)) {
            x = std::numeric_limits<T>::quiet_NaN();
            y = std::numeric_limits<T>::quiet_NaN();
            return;
        }
        x = (m_minX + m_maxX) * T(0.5);
        y = (m_minY + m_maxY) * T(0.5);
    }
}

template <typename T>
void CboundingBox2<T>::getCenter(Cpoint2<T>& c) const {
    getCenter(c.x, c.y);
}

template <typename T>
bool CboundingBox2<T>::isInside(Cpoint2<T> const& p) const {
    T const eps = std::numeric_limits<T>::epsilon();
    return m_minX - eps <= p.x && p.x <= m_maxX + eps && m_minY - eps <= p.y && p.y <= m_maxY + eps;
}

#define MGEO_RECT_DEFINE(T) MGEO_RECT_FAMILY(T, )
MGEO_REAL_AND_INT_TYPES(MGEO_RECT_DEFINE)

}  // namespace math
