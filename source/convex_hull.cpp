// Convex hull of a 2D point set.
#include "math/convex_hull.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "detail/exact_orient.h"
#include "detail/polar_sort.h"

namespace math {

namespace {

// Product of two exact 64-bit differences for the integer hull, in unsigned arithmetic: it
// wraps modulo 2^64 instead of overflowing, and is exact while |a|, |b| < 2^31.
inline std::uint64_t wrapMul(std::int64_t a, std::int64_t b) {
    return static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
}

}  // namespace

template <typename T>
CcvxHull2D<T>::CcvxHull2D(std::vector<Cvector2<T>> const& pts) {
    std::vector<Cvector2<T>> work(pts);
    calc(work);
}

template <typename T>
typename CcvxHull2D<T>::Wide CcvxHull2D<T>::sqDist(Cvector2<T> const& a, Cvector2<T> const& b) {
    if constexpr (std::is_integral_v<T>) {
        std::int64_t const dx = std::int64_t(a.x) - std::int64_t(b.x);
        std::int64_t const dy = std::int64_t(a.y) - std::int64_t(b.y);
        return static_cast<std::int64_t>(wrapMul(dx, dx) + wrapMul(dy, dy));
    } else {
        T const dx = a.x - b.x;
        T const dy = a.y - b.y;
        return dx * dx + dy * dy;
    }
}

template <typename T>
typename CcvxHull2D<T>::Wide CcvxHull2D<T>::T_func(Cvector2<T> const& a, Cvector2<T> const& b,
                                                   Cvector2<T> const& c) {
    if constexpr (std::is_integral_v<T>) {
        std::int64_t const cyay = std::int64_t(c.y) - std::int64_t(a.y);
        std::int64_t const bxax = std::int64_t(b.x) - std::int64_t(a.x);
        std::int64_t const byay = std::int64_t(b.y) - std::int64_t(a.y);
        std::int64_t const cxax = std::int64_t(c.x) - std::int64_t(a.x);
        return static_cast<std::int64_t>(wrapMul(cyay, bxax) - wrapMul(byay, cxax));
    } else {
        return (c.y - a.y) * (b.x - a.x) - (b.y - a.y) * (c.x - a.x);
    }
}

namespace {

template <typename T>
inline int orient(Cvector2<T> const& a, Cvector2<T> const& b, Cvector2<T> const& c) {
    return detail::orientSign(a.x, a.y, b.x, b.y, c.x, c.y);
}

template <typename T>
inline bool isFinite(Cvector2<T> const& p) {
    if constexpr (std::is_integral_v<T>) {
        return true;
    } else {
        return std::isfinite(p.x) && std::isfinite(p.y);
    }
}

}  // namespace

// Graham scan:
//  1. pivot = the point with the smallest y, then the smallest x (strict tests: the first of
//     identical points wins), swapped to the front;
//  2. the rest sorted by polar angle about the pivot (a left turn pivot -> a -> b puts a
//     first), nearer points first on one ray;
//  3. each run of points on one ray collapsed to its farthest point;
//  4. the sorted points pushed onto the hull, popping the last vertex while the turn
//     (second-to-last, last, next) is not strictly left, so collinear vertices go.
// Every turn is decided by the exact orientation sign (detail::orientSign) and every distance
// comparison on a ray by the coordinates themselves, so the hull is exactly the hull of the
// input values, whatever rounding the expressions of T_func and sqDist would suffer. Points
// with a NaN or infinite coordinate are left out; copies of the pivot add nothing.
template <typename T>
void CcvxHull2D<T>::calc(std::vector<Cvector2<T>>& pts) {
    m_hull.clear();
    pts.erase(std::remove_if(pts.begin(), pts.end(),
                             [](Cvector2<T> const& p) { return !isFinite(p); }),
              pts.end());
    if (pts.size() < 3) {
        return;
    }

    std::size_t pivotIndex = 0;
    for (std::size_t i = 1; i < pts.size(); ++i) {
        Cvector2<T> const& p = pts[i];
        Cvector2<T> const& best = pts[pivotIndex];
        if (p.y < best.y || (p.y == best.y && p.x < best.x)) {
            pivotIndex = i;
        }
    }
    std::swap(pts[0], pts[pivotIndex]);
    Cvector2<T> const pivot = pts[0];
    pts.erase(std::remove_if(pts.begin() + 1, pts.end(),
                             [&pivot](Cvector2<T> const& p) {
                                 return p.x == pivot.x && p.y == pivot.y;
                             }),
              pts.end());

    // Every other point lies above the pivot or right of it on its row, so the angles lie in
    // [0, pi) and the exact turn is a strict weak order of directions. On one ray the nearer
    // point has the x nearer to the pivot's (on a vertical ray: the smaller y).
    detail::polarSort(pts, 1, pivot, [&pivot](Cvector2<T> const& a, Cvector2<T> const& b) {
        int const turn = orient(pivot, a, b);
        if (turn != 0) {
            return turn == 1;
        }
        if (a.x != b.x) {
            return (a.x < b.x) == (a.x > pivot.x);
        }
        return a.y < b.y;
    });

    // Ray collapse. Walking from the end, a point is dropped when it lies on one ray with its
    // successor, so each run keeps its last, farthest point. Every decision depends only on
    // the sorted neighbours pts[j], pts[j + 1], so one forward compaction (writing at w <= j,
    // reading j + 1 before it is overwritten) makes the same choice.
    std::size_t const n = pts.size();
    std::size_t w = 1;
    for (std::size_t j = 1; j < n; ++j) {
        if (j + 1 == n || orient(pivot, pts[j], pts[j + 1]) != 0) {
            pts[w++] = pts[j];
        }
    }
    pts.erase(pts.begin() + static_cast<std::ptrdiff_t>(w), pts.end());
    if (pts.size() < 3) {
        return;
    }

    // Stack phase. Every later point lies strictly left of pivot -> pts[1], so the pivot and
    // pts[1] are never popped; the size test only keeps the loop in bounds.
    m_hull.push_back(pts[0]);
    m_hull.push_back(pts[1]);
    for (std::size_t i = 2; i < pts.size(); ++i) {
        while (m_hull.size() >= 2 && orient(m_hull[m_hull.size() - 2], m_hull.back(), pts[i]) != 1) {
            m_hull.pop_back();
        }
        m_hull.push_back(pts[i]);
    }
}

#define MGEO_CONVEX_HULL_DEFINE(T) MGEO_CONVEX_HULL_FAMILY(T, )
MGEO_REAL_AND_INT_TYPES(MGEO_CONVEX_HULL_DEFINE)

}  // namespace math
