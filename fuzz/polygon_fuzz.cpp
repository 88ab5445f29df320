// Cpolygon2: classification (preprocess), point tests of every class, also on stale tables
// (vertices changed after preprocess, which the interface allows), area, centre, bounding
// rectangle, convex and contour polygons, simplification and the minimum enclosing rectangle,
// in float and double.
#include <math/polygon.h>

#include "fuzz_input.h"

namespace {

template <typename T>
void run(fuzz::Input& in) {
    using P = math::Cpolygon2<T>;
    auto const verts = fuzz::points2<T>(in, 200);
    P poly(verts);
    if (in.flag()) {
        poly.preprocess();
    }
    // Stale state: change the vertices after classification.
    switch (in.u8() % 6) {
        case 0:
            poly.add(fuzz::point2<T>(in));
            break;
        case 1:
            (void)poly.remove(std::size_t(in.u16()));
            break;
        case 2:
            if (!verts.empty()) {
                (void)poly.remove(verts[in.u16() % verts.size()]);
            }
            break;
        case 3:
            poly.preprocess();
            break;
        default:
            break;
    }
    for (int k = in.u8() % 16; k > 0; --k) {
        (void)poly.pointIsIn(fuzz::point2<T>(in));
    }
    for (auto const& v : verts) {
        (void)poly.pointIsIn(v);
    }
    (void)poly.isValid();
    (void)poly.center();
    (void)poly.area();
    (void)poly.boundingRect();
    switch (in.u8() % 4) {
        case 0: {
            P const c = P::convexPoly(verts, in.flag());
            for (auto const& v : verts) {
                (void)c.pointIsIn(v);
            }
            (void)poly.convexPoly();
            break;
        }
        case 1: {
            P c = P::contourPoly(verts);
            c.preprocess();
            (void)c.pointIsIn(fuzz::point2<T>(in));
            break;
        }
        case 2: {
            P s = poly.simplifiedTo(in.u8() % 12);
            s.preprocess();
            (void)s.pointIsIn(fuzz::point2<T>(in));
            break;
        }
        default:
            (void)poly.minimumEnclosingRect();
            break;
    }
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
