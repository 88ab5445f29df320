// Orientation predicates shared by the polygon point tests and the scan-line mask of the area of
// interest. Both must evaluate exactly the same expressions (the mask reproduces pointIsIn bit
// for bit), so they live here once.
#pragma once

#include <math/points.h>

#include <cmath>

namespace math::detail {

// Orientation of p against the directed segment a->b, positive when p lies to its left
// (y-up sense): (bx - ax)(py - ay) - (px - ax)(by - ay), one rounding per operation.
//
// For fixed a, b and py the result is monotone in px (every operation is a correctly rounded,
// monotone function of its varying operand), which the scan-line mask relies on.
template <typename T>
inline T orientation(T ax, T ay, T bx, T by, T px, T py) {
    T const t1 = (bx - ax) * (py - ay);
    T const t2 = (px - ax) * (by - ay);
    return t1 - t2;
}

template <typename T>
inline T orientation(Cpoint2<T> const& a, Cpoint2<T> const& b, Cpoint2<T> const& p) {
    return orientation(a.x, a.y, b.x, b.y, p.x, p.y);
}

template <typename T>
inline bool isFinite(Cpoint2<T> const& p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// Strict weak order on keys that may be NaN: ascending, NaN after every number.
template <typename T>
inline bool keyLess(T a, T b) {
    if (a != a) {
        return false;
    }
    if (b != b) {
        return true;
    }
    return a < b;
}

}  // namespace math::detail
