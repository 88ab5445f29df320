// Space fits: lines, planes, circles in space, spheres, with their deviations, in float and
// double.
//
// The line fits, fitPlaneGeom (eigen routine) and fitSphereLsq (SVD) have no catch-all handler:
// their CthrowBase exceptions reach the caller and are accepted there. fitPlaneGeomFast and the
// geometric circle and sphere fits must never throw.
//
// Iteration limits are capped at 300 (plane power iteration: 300 passes): a fit that runs to
// its limit is legal, and the harness must not report a long but finite fit as a hang.
#include <math/approximate.h>
#include <math/exceptions.h>

#include "fuzz_input.h"

namespace {

template <typename T>
void run(fuzz::Input& in) {
    using A = math::approximate<T>;
    auto const pts = fuzz::points3<T>(in, 200);
    switch (in.u8() % 8) {
        case 0: {
            try {
                math::Cline3<T> l;
                A::fitLineGeom(pts, l);
                math::CqLineGeom3DStdAbw<T> q{};
                A::fitLineGeom(pts, l, q);
            } catch (CthrowBase const&) {
            }
            break;
        }
        case 1: {
            math::Cplane3<T> p;
            try {
                A::fitPlaneGeom(pts, p);
                math::CqPlaneGeomStdAbw<T> q{};
                A::fitPlaneGeom(pts, p, q);
            } catch (CthrowBase const&) {
            }
            math::CqPlaneGeomFast<T> const f{fuzz::maxItr(in, 300), in.real<T>()};
            A::fitPlaneGeomFast(pts, p, f);
            break;
        }
        case 2: {
            math::Ccircle3<T> c;
            math::CqCircleGeom3DStdAbw<T> q{fuzz::maxItr(in, 300), in.real<T>(), in.real<T>(),
                                            in.real<T>(), T(0)};
            if (in.flag()) {
                A::fitCircleGeom(pts, c, q);
            } else {
                math::CqCircleGeom3D<T> const p{q.maxItr, q.tolR, q.tolX, q.tolY};
                A::fitCircleGeom(pts, c, p);
            }
            break;
        }
        case 3: {
            // The fixed radius comes from the circle passed in.
            math::Cplane3<T> plane;
            try {
                A::fitPlaneGeom(pts, plane);
            } catch (CthrowBase const&) {
            }
            auto const centre = fuzz::point3<T>(in);
            math::Ccircle3<T> c(plane, centre, in.real<T>());
            math::CqCircleGeomRfix3DStdAbw<T> q{fuzz::maxItr(in, 300), in.real<T>(), in.real<T>(),
                                                in.real<T>(), T(0)};
            if (in.flag()) {
                A::fitCircleGeomRfix(pts, c, q);
            } else {
                math::CqCircleGeomRfix3D<T> const p{q.maxItr, q.tolX, q.tolY, q.tolUnused};
                A::fitCircleGeomRfix(pts, c, p);
            }
            break;
        }
        case 4: {
            math::Csphere3<T> s;
            try {
                A::fitSphereLsq(pts, s);
                math::CqSphereLsqStdAbw<T> q{};
                A::fitSphereLsq(pts, s, q);
            } catch (CthrowBase const&) {
            }
            (void)A::StdAbwSphere(pts, s);
            break;
        }
        case 5:
        case 6: {
            math::Csphere3<T> s;
            math::CqSphereGeomStdAbw<T> q{fuzz::maxItr(in, 300), in.real<T>(), in.real<T>(),
                                          in.real<T>(),          in.real<T>(), T(0)};
            if (in.flag()) {
                A::fitSphereGeom(pts, s, q);
            } else {
                math::CqSphereGeom<T> const p{q.maxItr, q.tolR, q.tolX, q.tolY, q.tolZ};
                A::fitSphereGeom(pts, s, p);
            }
            (void)A::StdAbwSphere(pts, s);
            break;
        }
        default: {
            auto const centre = fuzz::point3<T>(in);
            math::Csphere3<T> s(centre, in.real<T>());
            math::CqSphereGeomRfixStdAbw<T> q{fuzz::maxItr(in, 300), in.real<T>(), in.real<T>(),
                                              in.real<T>(), T(0)};
            if (in.flag()) {
                A::fitSphereGeomRfix(pts, s, q);
            } else {
                math::CqSphereGeomRfix<T> const p{q.maxItr, q.tolX, q.tolY, q.tolZ};
                A::fitSphereGeomRfix(pts, s, p);
            }
            break;
        }
    }
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
