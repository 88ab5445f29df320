// Cylinder fits: start values, free and fixed-radius orthogonal-distance fits and the
// cylinder deviations, in float and double.
//
// maxItr is capped at 200, and at 20 for the large clouds (above 10000 points, where the fit
// first runs a coarse pass): a fit that runs to its limit is legal, and the harness must not
// report a long but finite fit as a hang.
#include <math/approximate.h>

#include "fuzz_input.h"

namespace {

// Points for the coarse-pass path: a regular cylinder of 10001 ... 10200 points with a few
// fuzzed coordinates.
template <typename T>
std::vector<math::Cpoint3<T>> largeCloud(fuzz::Input& in) {
    std::size_t const n = 10001 + in.u8() % 200;
    T const r = in.moderate<T>();
    T const h = in.moderate<T>();
    std::vector<math::Cpoint3<T>> pts;
    pts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        T const t = T(i % 29) / T(29) * T(6.283185307179586);
        pts.emplace_back(r * std::cos(t), r * std::sin(t), h * T(i / 29));
    }
    for (int k = in.u8() % 4; k > 0; --k) {
        pts[in.u16() % n][in.u8() % 3] = in.real<T>();
    }
    return pts;
}

template <typename T>
void run(fuzz::Input& in) {
    using A = math::approximate<T>;
    bool const large = in.u8() == 0xC5;
    auto const pts = large ? largeCloud<T>(in) : fuzz::points3<T>(in, 300);
    unsigned long long const cap = large ? 20 : 200;
    math::Ccylinder3<T> cyl;
    if (in.flag()) {
        A::initValCylinder(pts, cyl);
    } else {
        T const ax = in.real<T>(), ay = in.real<T>(), az = in.real<T>();
        auto const p = fuzz::point3<T>(in);
        cyl = math::Ccylinder3<T>(p, math::Cdirec3<T>(ax, ay, az), in.real<T>());
    }
    (void)A::sqDevCylinder(pts, cyl);
    (void)A::StdAbwCylinder(pts, cyl);
    if (in.flag()) {
        math::CqCylinderGeomStdAbw<T> q{fuzz::maxItr(in, cap), in.real<T>(), in.real<T>(),
                                        in.real<T>(),          in.real<T>(), in.real<T>(),
                                        in.real<T>(),          in.real<T>(), T(0)};
        if (in.flag()) {
            A::fitCylinderGeom(pts, cyl, q);
        } else {
            math::CqCylinderGeom<T> const p{q.maxItr, q.tol1, q.tol2, q.tol3,
                                            q.tol4,   q.tol5, q.tol6, q.tol7};
            A::fitCylinderGeom(pts, cyl, p);
        }
    } else {
        math::CqCylinderGeomRfixStdAbw<T> q{fuzz::maxItr(in, cap), in.real<T>(), in.real<T>(),
                                            in.real<T>(),          in.real<T>(), in.real<T>(),
                                            in.real<T>(),          T(0)};
        if (in.flag()) {
            A::fitCylinderGeomRfix(pts, cyl, q);
        } else {
            math::CqCylinderGeomRfix<T> const p{q.maxItr, q.tol1, q.tol2, q.tol3,
                                                q.tol4,   q.tol5, q.tol6};
            A::fitCylinderGeomRfix(pts, cyl, p);
        }
    }
    (void)A::StdAbwCylinder(pts, cyl);
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
