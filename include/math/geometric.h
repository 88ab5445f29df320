// Intersections, distances and projections between geometric elements.
#pragma once

#include <math/detail/instantiate.h>
#include <math/points.h>
#include <math/shapes.h>

namespace math {

// Intersections, distances and projections of the shape records (static members only).
// Directions and normals are taken as they are stored (assumed to be unit vectors).
template <typename T>
class geometric {
public:
    // The crossing of two plane lines a (point pa, direction da) and b (pb, db), by Cramer's
    // rule on pa + s da = pb + t db. With det = dbY daX - dbX daY, the lines count as parallel
    // when |det| <= 2^-23 (the single-precision epsilon, for both types): false, point
    // unchanged. Otherwise true with
    //     x = ((dbY pbX + dbX paY) daX - (daY paX + daX pbY) dbX) / det
    //     y = ((paY daX + daY pbX) dbY - (pbY dbX + dbY paX) daY) / det.
    static bool intersect(Cline2<T> const& a, Cline2<T> const& b, Cpoint2<T>& point);
};

#define MGEO_GEOMETRIC_FAMILY(T, EXT) EXT template class geometric<T>;
#define MGEO_GEOMETRIC_EXTERN(T) MGEO_GEOMETRIC_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_GEOMETRIC_EXTERN)
#undef MGEO_GEOMETRIC_EXTERN

}  // namespace math
