// Convex hull of a 2D point set.
#pragma once

#include <core/vector.h>
#include <math/detail/instantiate.h>

#include <cstdint>
#include <type_traits>
#include <vector>

namespace math {

// The convex hull of a plane point set, computed once by a Graham scan (Graham 1972; Cormen et
// al., Introduction to Algorithms, 33.3) and then read with points().
//
// The hull is held counter-clockwise (positive orientation, y up), starting at the pivot: the
// input point with the smallest y, among those the smallest x. No vertex is repeated and no
// three consecutive vertices are collinear. Fewer than 3 input points, or fewer than 3 distinct
// directions seen from the pivot, give an empty hull.
//
// Every turn of the scan is decided by an exact orientation predicate (a floating-point filter,
// exact expansion or fixed-point arithmetic only when the filter cannot decide; 128-bit
// integers for int), so the hull is exactly the convex hull of the input values: of every
// float and double input, and of int input over the whole int range without overflow. Points
// with a NaN or infinite coordinate are left out.
template <typename T>
class CcvxHull2D {
public:
    // Empty hull.
    CcvxHull2D() = default;
    // The hull of pts (the argument is copied; the copy is reordered by the scan).
    explicit CcvxHull2D(std::vector<Cvector2<T>> const& pts);

    // Hull vertices, counter-clockwise from the pivot.
    std::vector<Cvector2<T>> const& points() const { return m_hull; }

private:
    // Type of orientation values and squared distances: T for floating T, 64-bit for int.
    using Wide = std::conditional_t<std::is_integral_v<T>, std::int64_t, T>;

    // Graham scan of pts into m_hull; reorders and shrinks pts.
    void calc(std::vector<Cvector2<T>>& pts);
    // (ax - bx)^2 + (ay - by)^2.
    static Wide sqDist(Cvector2<T> const& a, Cvector2<T> const& b);
    // (cy - ay)(bx - ax) - (by - ay)(cx - ax): positive when c lies left of the line a -> b.
    static Wide T_func(Cvector2<T> const& a, Cvector2<T> const& b, Cvector2<T> const& c);

    std::vector<Cvector2<T>> m_hull;
};

#define MGEO_CONVEX_HULL_FAMILY(T, EXT) EXT template class CcvxHull2D<T>;
#define MGEO_CONVEX_HULL_EXTERN(T) MGEO_CONVEX_HULL_FAMILY(T, extern)
MGEO_REAL_AND_INT_TYPES(MGEO_CONVEX_HULL_EXTERN)
#undef MGEO_CONVEX_HULL_EXTERN

}  // namespace math
