// Point-cloud cutting.
#pragma once

#include <core/vector.h>
#include <math/detail/instantiate.h>
#include <math/points.h>
#include <math/shapes.h>

namespace math {

// Cuts a slab or a box out of a 3D point cloud: copies into `out`, in input order, the points
// within `dist` of a sphere, a line or a plane, or strictly inside an axis-parallel box.
// `out` is cleared first (also for an empty input); when its capacity is below a quarter of
// the input size (integer division) exactly that quarter is reserved, and it grows as needed
// beyond. `in` and `out` may be the same object: the result is then empty.
template <typename T>
class tools {
public:
    using Cloud = CbaseVecN<Cpoint3<T>>;

    // Keeps p when dist > |d|, d = |p - centre| - r.
    static void cutPointCloud(Csphere3<T> const& s, T const& dist, Cloud const& in, Cloud& out);
    // Keeps p when dist > |d|, d = |(p - point) x direction|.
    static void cutPointCloud(Cline3<T> const& l, T const& dist, Cloud const& in, Cloud& out);
    // Keeps p when dist > |nx x + ny y + nz z + d| with the plane's stored values.
    static void cutPointCloud(Cplane3<T> const& e, T const& dist, Cloud const& in, Cloud& out);
    // Keeps p when min < p < max on x, y and z (strict, tested in that order): a point on a
    // face is not kept.
    static void cutPointCloud(CboundingBox3<T> const& b, Cloud const& in, Cloud& out);
};

#define MGEO_TOOLS_FAMILY(T, EXT) EXT template class tools<T>;
#define MGEO_TOOLS_EXTERN(T) MGEO_TOOLS_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_TOOLS_EXTERN)
#undef MGEO_TOOLS_EXTERN

}  // namespace math
