// Plane fits: lines, circles and ellipses with their deviations, in float and double.
//
// The line fits, fitCircleLsq, fitCircleLsqBeta and the ellipse fits have no catch-all handler:
// exceptions of the eigen routine and the solvers (CthrowBase) reach the caller, and the
// harness accepts them there. The geometric circle fits must never throw.
//
// Iteration limits are capped at 300 (ellipse Levenberg-Marquardt: 100): a fit that runs to its
// limit is legal, and the harness must not report a long but finite fit as a hang.
#include <math/approximate.h>
#include <math/exceptions.h>

#include "fuzz_input.h"

namespace {

template <typename T>
void passThrough(std::vector<math::Cpoint2<T>> const& pts, unsigned kind) {
    using A = math::approximate<T>;
    switch (kind) {
        case 0: {
            math::Cline2<T> l;
            A::fitLineGeom(pts, l);
            math::CqLineGeom2DStdAbw<T> q{};
            A::fitLineGeom(pts, l, q);
            (void)A::StdAbwLine2(pts, l);
            break;
        }
        case 1: {
            math::Cline2<T> l;
            (void)A::fitLineLsq(pts, l);
            math::CqLineLsqNStdAbw<T> q{};
            A::fitLineLsqN(pts, l, q);
            A::fitLineLsqN(pts, l);
            break;
        }
        case 2: {
            math::Ccircle2<T> c;
            A::fitCircleLsq(pts, c);
            math::CqCircleLsqStdAbw<T> q{};
            A::fitCircleLsq(pts, c, q);
            (void)A::StdAbwCircle2(pts, c);
            A::fitCircleLsqBeta(pts, c);
            break;
        }
        default:
            break;
    }
}

template <typename T>
void run(fuzz::Input& in) {
    using A = math::approximate<T>;
    auto const pts = fuzz::points2<T>(in, 400);
    unsigned const kind = in.u8() % 8;
    if (kind <= 2) {
        try {
            passThrough(pts, kind);
        } catch (CthrowBase const&) {
        }
        return;
    }
    switch (kind) {
        case 3:
        case 4: {
            math::Ccircle2<T> c;
            math::CqCircleGeom2DStdAbw<T> q{fuzz::maxItr(in, 300), in.real<T>(), in.real<T>(),
                                            in.real<T>(), T(0)};
            if (in.flag()) {
                A::fitCircleGeom(pts, c, q);
            } else {
                math::CqCircleGeom2D<T> const p{q.maxItr, q.tolR, q.tolX, q.tolY};
                A::fitCircleGeom(pts, c, p);
            }
            (void)A::StdAbwCircle2(pts, c);
            break;
        }
        case 5:
        case 6: {
            // The ellipse fits let exceptions of their circle start and solvers through.
            math::Cellipse2<T> e;
            math::CqEllipseGeomStdAbw<T> q{
                fuzz::maxItr(in, 300), in.real<T>(), in.real<T>(), in.real<T>(),
                in.real<T>(),          in.real<T>(), T(0)};
            try {
                if (in.flag()) {
                    A::fitEllipseGeom(pts, e, q);
                } else {
                    math::CqEllipseGeom<T> const p{q.maxItr, q.tolX, q.tolY,
                                                   q.tolA,   q.tolB, q.tolAngle};
                    A::fitEllipseGeom(pts, e, p);
                }
            } catch (CthrowBase const&) {
            }
            break;
        }
        default: {
            math::Cellipse2<T> e;
            math::CqEllipseGeomLM<T> q{
                fuzz::maxItr(in, 100), in.real<T>(), in.real<T>(), in.real<T>(),
                in.real<T>(),          in.real<T>(), T(0)};
            try {
                A::fitEllipseGeomLM(pts, e, q);
            } catch (CthrowBase const&) {
            }
            auto const c = fuzz::point2<T>(in);
            T const a = in.real<T>(), b = in.real<T>();
            math::Cellipse2<T> const given(c, a, b, in.real<T>());
            (void)A::StdAbwEllipse(pts, given);
            break;
        }
    }
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
