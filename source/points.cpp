// Normalisation and tolerant comparison of directions.
#include "math/points.h"

#include <cmath>

namespace math {

template <typename T>
T directionTolerance() {
    // 2^-35 for double, 2^-15 for float.
    static T const kTolerance = std::ldexp(T(1), std::is_same_v<T, float> ? -15 : -35);
    return kTolerance;
}

template <typename T>
bool tolerantEqual(T a, T b) {
    T const eps = directionTolerance<T>();
    // For float the absolute value is taken in double and narrowed back.
    T const absA = static_cast<T>(std::fabs(static_cast<double>(a)));
    T const absB = static_cast<T>(std::fabs(static_cast<double>(b)));
    return b + eps * (T(1) + absB) > a && a + eps * (T(1) + absA) > b;
}

template <typename P>
bool CdirecBase<P>::isValid() const {
    for (std::size_t i = 0; i < kDim; ++i) {
        if (m_v[i] != m_v[i]) {
            return false;
        }
    }
    return true;
}

template <typename P>
bool CdirecBase<P>::operator==(CdirecBase const& o) const {
    for (std::size_t i = 0; i < kDim; ++i) {
        if (!tolerantEqual(m_v[i], o.m_v[i])) {
            return false;
        }
    }
    return true;
}

// L = sqrt(sum of squared components), in T. L == 0 exactly invalidates (first component NaN,
// the others keep their values); otherwise every component is divided by L. A NaN component
// gives a NaN length and so stays invalid.
template <typename P>
void CdirecBase<P>::normalize() {
    using T = value_type;
    T sum = T(0);
    for (std::size_t i = 0; i < kDim; ++i) {
        sum += m_v[i] * m_v[i];
    }
    T const length = std::sqrt(sum);
    if (length == T(0)) {
        invalidate();
        return;
    }
    for (std::size_t i = 0; i < kDim; ++i) {
        m_v[i] /= length;
    }
}

template <typename T>
Cdirec2<T> const Cdirec2<T>::posX(T(1), T(0), true);
template <typename T>
Cdirec2<T> const Cdirec2<T>::posY(T(0), T(1), true);
template <typename T>
Cdirec2<T> const Cdirec2<T>::negX(T(-1), T(0), true);
template <typename T>
Cdirec2<T> const Cdirec2<T>::negY(T(0), T(-1), true);

template <typename T>
Cdirec2<T>::Cdirec2(Cpoint2<T> const& p) : Base(p) {
    this->normalize();
}

template <typename T>
Cdirec2<T>::Cdirec2(T x, T y) : Base(Cpoint2<T>(x, y)) {
    this->normalize();
}

template <typename T>
Cdirec2<T>& Cdirec2<T>::operator=(Cpoint2<T> const& p) {
    this->m_v = p;
    this->normalize();
    return *this;
}

template <typename T>
Cdirec3<T>::Cdirec3(T x, T y, T z) : Base(Cpoint3<T>(x, y, z)) {
    this->normalize();
}

template <typename T>
Cdirec3<T>::Cdirec3(Cpoint3<T> const& p) : Base(p) {
    this->normalize();
}

template <typename T>
Cdirec3<T>& Cdirec3<T>::operator=(Cpoint3<T> const& p) {
    this->m_v = p;
    this->normalize();
    return *this;
}

#define MGEO_POINTS_DEFINE(T) MGEO_POINTS_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_POINTS_DEFINE)

}  // namespace math
