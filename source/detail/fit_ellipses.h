// Ellipse fits of approximate<T> by orthogonal distances: Gauss-Newton and
// Levenberg-Marquardt. Included by source/approximate.cpp, which instantiates them.
#pragma once

#include <math/approximate.h>
#include <math/matrix.h>
#include <math/matrix_calc.h>
#include <math/solver_le.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "detail/ellipse_foot.h"
#include "detail/fit_common.h"

namespace math {
namespace detail {

// Margin of the near-equality tests of the ellipse fits: the single-precision machine epsilon,
// also for double.
inline constexpr double kEllipseMargin = 1.1920928955078125e-7;

// Semi-axes as absolute values; if b > a they are swapped and pi/2 is added to the angle, so
// that a >= b.
template <typename T>
Cellipse2<T> normalisedEllipse(Cpoint2<T> const& centre, T a, T b, T angle) {
    a = std::fabs(a);
    b = std::fabs(b);
    if (b > a) {
        T const t = a;
        a = b;
        b = t;
        angle += T(1.5707963267948966);
    }
    return Cellipse2<T>(centre, a, b, angle);
}

// The rows of one point in the linearised orthogonal-distance problem of an ellipse
// (parameters cx, cy, a, b, phi) in the coordinates of the foot points (least-squares
// orthogonal distance fitting after Ahn, Rauh and Warnecke, Pattern Recognition 34 (2001)):
// rowX and rowY receive dX'/dparameters and dY'/dparameters of the foot point X', `foot` the
// foot point itself (EllipseFrame::footPoint, four Newton steps).
//
// In the ellipse's frame (u, v) = R (X - c), R = [[cos, sin], [-sin, cos]] of phi, the foot
// (x, y) solves F(x, y; u, v, a, b) = 0 with
//     f1 = (b^2 x^2 + a^2 y^2 - a^2 b^2) / 2,   f2 = (u - x) a^2 y - (v - y) b^2 x,
// the equations of the foot-point iteration. Implicit differentiation gives
// d(x, y)/dp = -Fxy^-1 G_p, Fxy = [[b^2 x, a^2 y], [-a^2 y - (v - y) b^2, (u - x) a^2 + b^2 x]],
// G_p the derivative of (f1, f2) at fixed (x, y):
//     cx:  (0, -a^2 y cos - b^2 x sin)    (f2 changes by a^2 y du - b^2 x dv, and
//     cy:  (0, -a^2 y sin + b^2 x cos)     du, dv = (-cos, sin) for cx, (-sin, -cos) for cy,
//     phi: (0, a^2 y v + b^2 x u)          (v, -u) for phi; f1 does not depend on u, v)
//     a:   (a (y^2 - b^2), 2 a (u - x) y)
//     b:   (b (x^2 - a^2), -2 b (v - y) x)
// The global foot is X' = c + R^T (x, y), so dX'/dp = dc/dp + R^T d(x, y)/dp, plus for phi
// the turn of the frame (-sin x - cos y, cos x - sin y).
template <typename T>
void footRows(EllipseFrame<T> const& frame, Cellipse2<T> const& e, T c, T s, Cpoint2<T> const& p,
              T rowX[5], T rowY[5], Cpoint2<T>& foot) {
    T const cx = e.center().x;
    T const cy = e.center().y;
    T const a = e.a();
    T const b = e.b();
    T const a2 = a * a;
    T const b2 = b * b;
    foot = frame.footPoint(p);
    T const dx = p.x - cx;
    T const dy = p.y - cy;
    T const u = dx * c + dy * s;
    T const v = dy * c - dx * s;
    T const fx = foot.x - cx;
    T const fy = foot.y - cy;
    T const x = fx * c + fy * s;
    T const y = fy * c - fx * s;
    T const j11 = b2 * x;
    T const j12 = a2 * y;
    T const j21 = -a2 * y - (v - y) * b2;
    T const j22 = (u - x) * a2 + b2 * x;
    T const det = j11 * j22 - j12 * j21;
    T const g1[5] = {T(0), T(0), a * (y * y - b2), b * (x * x - a2), T(0)};
    T const g2[5] = {a2 * y * -c - b2 * x * s, a2 * y * -s - b2 * x * -c, T(2) * a * (u - x) * y,
                     T(-2) * b * (v - y) * x, a2 * y * v + b2 * x * u};
    for (std::size_t k = 0; k < 5; ++k) {
        T const ddx = -(g1[k] * j22 - j12 * g2[k]) / det;
        T const ddy = -(j11 * g2[k] - j21 * g1[k]) / det;
        rowX[k] = c * ddx - s * ddy;
        rowY[k] = s * ddx + c * ddy;
    }
    rowX[0] += T(1);
    rowY[1] += T(1);
    rowX[4] += -s * x - c * y;
    rowY[4] += c * x - s * y;
}

// The 2n × 5 design matrix (rows 2i and 2i + 1: footRows of point i) and the residuals
// X_i - X'_i of the ellipse. Returns whether the ellipse is round, a and b agreeing within
// the single-precision margin (|a - b| <= eps_f |a|): then the angle is not determined, its
// column vanishes, and no step could leave the circle (on symmetric data the stretches along
// a and b balance exactly). For a round ellipse the fifth column is therefore the stretch
// along the diagonal instead: the a-column of the same circle with its frame turned by pi/4.
// correctedEllipse turns the three stretches back into semi-axes and angle.
template <typename T>
bool ellipseSystem(std::vector<Cpoint2<T>> const& points, Cellipse2<T> const& ellipse,
                   Cmatrix<T>& design, Cmatrix<T>& residual) {
    std::size_t const n = points.size();
    design = Cmatrix<T>(2 * n, 5);
    residual = Cmatrix<T>(2 * n, 1);
    bool const round = !(std::fabs(ellipse.a() - ellipse.b()) >
                         static_cast<T>(kEllipseMargin) * std::fabs(ellipse.a()));
    EllipseFrame<T> const frame(ellipse);
    T const c = std::cos(ellipse.angle());
    T const s = std::sin(ellipse.angle());
    Cellipse2<T> const turned(ellipse.center(), ellipse.a(), ellipse.b(),
                              ellipse.angle() + T(0.78539816339744831));
    EllipseFrame<T> const turnedFrame(turned);
    T const ct = std::cos(turned.angle());
    T const st = std::sin(turned.angle());
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint2<T> const& p = points[i];
        T* rowX = design.getRow(2 * i);
        T* rowY = design.getRow(2 * i + 1);
        Cpoint2<T> foot;
        footRows(frame, ellipse, c, s, p, rowX, rowY, foot);
        if (round) {
            T diagX[5];
            T diagY[5];
            Cpoint2<T> unused;
            footRows(turnedFrame, turned, ct, st, p, diagX, diagY, unused);
            rowX[4] = diagX[2];
            rowY[4] = diagY[2];
        }
        residual(2 * i, 0) = p.x - foot.x;
        residual(2 * i + 1, 0) = p.y - foot.y;
    }
    return round;
}

// The n × 5 design matrix and residuals of the orthogonal distances themselves, for the
// Levenberg-Marquardt fit. With X' the foot of point X (EllipseFrame::footPoint) at local
// coordinates (x, y) = (a cos t, b sin t) and n the unit outward normal there, the residual is
// the signed distance d = n . (X - X'); its derivative in parameter p is -n . dX/dp at fixed
// curve parameter t (the foot's slide along the curve is tangential and drops out), so the row
// holds n . dX/dp:
//     cx: n_x,  cy: n_y,  a: n_u x / a,  b: n_v y / b,  phi: n_v x - n_u y,
// (n_u, n_v) being n in the ellipse's frame. Unlike the foot-point coordinates, these rows do
// not penalise the sliding of the feet, so a step can turn and stretch the ellipse freely.
// A round ellipse (a and b within the single-precision margin) has no angle; its fifth column
// is the stretch along the diagonal, the a-row in the frame turned by pi/4, as in
// ellipseSystem. Without a design matrix only the distances are computed. Returns whether the
// ellipse is round.
template <typename T>
bool ellipseDistanceSystem(std::vector<Cpoint2<T>> const& points, Cellipse2<T> const& ellipse,
                           Cmatrix<T>* design, Cmatrix<T>& residual) {
    std::size_t const n = points.size();
    if (design != nullptr) {
        *design = Cmatrix<T>(n, 5);
    }
    residual = Cmatrix<T>(n, 1);
    bool const round = !(std::fabs(ellipse.a() - ellipse.b()) >
                         static_cast<T>(kEllipseMargin) * std::fabs(ellipse.a()));
    EllipseFrame<T> const frame(ellipse);
    T const c = std::cos(ellipse.angle());
    T const s = std::sin(ellipse.angle());
    T const cx = ellipse.center().x;
    T const cy = ellipse.center().y;
    T const a = ellipse.a();
    T const b = ellipse.b();
    T const half = T(0.70710678118654752);  // cos and sin of pi/4
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint2<T> const& p = points[i];
        Cpoint2<T> const foot = frame.footPoint(p);
        T const fx = foot.x - cx;
        T const fy = foot.y - cy;
        T const x = fx * c + fy * s;
        T const y = fy * c - fx * s;
        // Outward normal in the frame: the gradient (x / a^2, y / b^2), scaled by a^2 b^2.
        T nu = b * b * x;
        T nv = a * a * y;
        T const len = std::sqrt(nu * nu + nv * nv);
        nu /= len;
        nv /= len;
        T const nx = c * nu - s * nv;
        T const ny = s * nu + c * nv;
        if (design != nullptr) {
            T* row = design->getRow(i);
            row[0] = nx;
            row[1] = ny;
            row[2] = nu * x / a;
            row[3] = nv * y / b;
            if (round) {
                // Foot and normal in the frame turned by pi/4.
                T const xt = half * (x + y);
                T const nut = half * (nu + nv);
                row[4] = nut * xt / a;
            } else {
                row[4] = nv * x - nu * y;
            }
        }
        residual(i, 0) = nx * (p.x - foot.x) + ny * (p.y - foot.y);
    }
    return round;
}

// The start of both fits: the algebraic circle, both semi-axes equal to its radius, angle 0.
template <typename T>
Cellipse2<T> ellipseStart(std::vector<Cpoint2<T>> const& points) {
    Ccircle2<T> circle;
    approximate<T>::fitCircleLsq(points, circle);
    return Cellipse2<T>(circle.center(), circle.radius(), circle.radius(), T(0));
}

// The ellipse after the corrections delta of ellipseSystem's columns, normalised; `step`
// receives the corrections of (cx, cy, a, b, phi) for the convergence test. For a round
// ellipse the last three entries of delta are stretches s_a, s_b, s_d along phi, phi + pi/2
// and phi + pi/4; to first order they change the radius in direction phi + w by
//     m + A cos(2 w - 2 beta),  m = (s_a + s_b + s_d) / 2,
//     A = sqrt((s_a - s_b)^2 + s_d^2) / 2,  2 beta = atan2(s_d, s_a - s_b),
// which is the ellipse with semi-axes a + m + A, b + m - A turned by beta (not turned when
// A is within the single-precision margin of a + m: a circle has no direction).
template <typename T>
Cellipse2<T> correctedEllipse(Cellipse2<T> const& e, Cmatrix<T> const& delta, bool round,
                              T step[5]) {
    step[0] = delta(0, 0);
    step[1] = delta(1, 0);
    if (round) {
        T const m = (delta(2, 0) + delta(3, 0) + delta(4, 0)) * T(0.5);
        T const split = delta(2, 0) - delta(3, 0);
        T const amplitude = T(0.5) * std::sqrt(split * split + delta(4, 0) * delta(4, 0));
        step[2] = m + amplitude;
        step[3] = m - amplitude;
        // A result that is still round has no direction: the angle stays.
        bool const stillRound =
            !(amplitude > static_cast<T>(kEllipseMargin) * std::fabs(e.a() + m));
        step[4] = stillRound ? T(0) : T(0.5) * std::atan2(delta(4, 0), split);
    } else {
        step[2] = delta(2, 0);
        step[3] = delta(3, 0);
        step[4] = delta(4, 0);
    }
    return normalisedEllipse(Cpoint2<T>(e.center().x + step[0], e.center().y + step[1]),
                             e.a() + step[2], e.b() + step[3], e.angle() + step[4]);
}

}  // namespace detail

// Gauss-Newton on the foot-point coordinates (detail::ellipseSystem): each step solves the
// normal equations (J^T J) delta = J^T r, formed by Cmatrix transposition and products, with
// the singular value decomposition; parameters (cx, cy, a, b, phi), then the axis
// normalisation. Converged when |delta_cx| and |delta_cy| are both within tolX (tolY is not
// read), |delta_a| within tolA, |delta_b| within tolB and |delta_phi| within tolAngle. Fewer
// than four points, or the iteration limit reached (strict rule of iterateFit): invalid.
// Exceptions of the circle start and the solver reach the caller.
template <typename T>
void approximate<T>::fitEllipseGeom(Points2 const& points, Cellipse2<T>& ellipse,
                                    CqEllipseGeom<T> const& quality) {
    if (points.size() < 4) {
        ellipse = detail::invalidEllipse<T>();
        return;
    }
    Cellipse2<T> current = detail::ellipseStart(points);
    Cmatrix<T> design;
    Cmatrix<T> residual;
    bool const ok = detail::iterateFit(quality.maxItr, [&]() {
        bool const round = detail::ellipseSystem(points, current, design, residual);
        Cmatrix<T> const designT = design.transp();
        Cmatrix<T> const normal = designT * design;
        Cmatrix<T> const rhs = designT * residual;
        Csolver_svd<T> solver(normal);
        Cmatrix<T> const delta = solver.solve(rhs);
        T step[5];
        current = detail::correctedEllipse(current, delta, round, step);
        return detail::withinTolerance(step[0], quality.tolX) &&
               detail::withinTolerance(step[1], quality.tolX) &&
               detail::withinTolerance(step[2], quality.tolA) &&
               detail::withinTolerance(step[3], quality.tolB) &&
               detail::withinTolerance(step[4], quality.tolAngle);
    });
    ellipse = ok ? current : detail::invalidEllipse<T>();
}

template <typename T>
void approximate<T>::fitEllipseGeom(Points2 const& points, Cellipse2<T>& ellipse,
                                    CqEllipseGeomStdAbw<T>& quality) {
    CqEllipseGeom<T> const control{quality.maxItr, quality.tolX, quality.tolY,
                                   quality.tolA,   quality.tolB, quality.tolAngle};
    detail::fitAndDeviation(
        points, ellipse, control, quality.stdAbw,
        [](Points2 const& p, Cellipse2<T>& e, CqEllipseGeom<T> const& q) {
            fitEllipseGeom(p, e, q);
        },
        [](Points2 const& p, Cellipse2<T> const& e) { return StdAbwEllipse(p, e); });
}

// Levenberg-Marquardt on the orthogonal distances (detail::ellipseDistanceSystem). Each outer
// step forms N = J^T J and g = J^T d and the largest |eigenvalue| mu of N
// (CmatrixCalc::getEigenvalue). The damped system (N + lambda D) delta = g is solved with the
// singular value decomposition; D is Moré's scaling (MINPACK): per parameter the largest
// diagonal entry of N met so far in this fit, each raised to at least eps_f mu
// (single-precision margin) so that a vanishing column is damped too. The damping starts at
// lambda = 0.01 and is carried from one outer step to the next (floored at 1e-12), so that
// near the optimum the steps become Gauss-Newton steps; after an outer step without an
// accepted trial it starts again at 0.01.
//
// Every non-round trial step gets the geodesic acceleration of Transtrum and Sethna ("Improvements
// to the Levenberg-Marquardt algorithm for nonlinear least-squares minimization", 2012): the
// second directional derivative d'' of the distances along delta, by a finite difference
// over 0.1 delta, gives the correction a = (N + lambda D)^-1 J^T d'', and delta + a / 2 is
// tried when |a| <= 0.375 |delta| in the D-norm. It follows the curved valleys of partial
// arcs, where plain steps crawl.
//
// The trial ellipse (corrections added, |a|, |b|, axis normalisation) is accepted when its
// StdAbwEllipse is strictly smaller than the current one (lambda *= 0.1, the inner loop ends),
// otherwise lambda *= 10 and the inner loop goes on while lambda < 10000. quality.lastStdAbw
// receives the deviation of every trial, so it ends with that of the last one. The outer
// iteration stops when all five corrections of the last trial (cx, cy, a, b, phi against tolX,
// tolY, tolA, tolB, tolAngle) are within tolerance; the iteration limit follows the strict
// rule of iterateFit. Fewer than four points: invalid ellipse and lastStdAbw NaN. Exceptions
// reach the caller.
template <typename T>
void approximate<T>::fitEllipseGeomLM(Points2 const& points, Cellipse2<T>& ellipse,
                                      CqEllipseGeomLM<T>& quality) {
    if (points.size() < 4) {
        ellipse = detail::invalidEllipse<T>();
        quality.lastStdAbw = detail::nan<T>();
        return;
    }
    std::size_t const n = points.size();
    Cellipse2<T> current = detail::ellipseStart(points);
    T currentDev = StdAbwEllipse(points, current);
    Cmatrix<T> design;
    Cmatrix<T> residual;
    Cmatrix<T> probeDistances;
    T scale[5] = {T(0), T(0), T(0), T(0), T(0)};
    T lambda = T(0.01);
    bool const ok = detail::iterateFit(quality.maxItr, [&]() {
        bool const round = detail::ellipseDistanceSystem(points, current, &design, residual);
        Cmatrix<T> const designT = design.transp();
        Cmatrix<T> const normal = designT * design;
        Cmatrix<T> const rhs = designT * residual;
        Cmatrix<T> spectrum = normal;
        Cmatrix<T> vectors;
        CmatrixCalc<T>::getEigenvalue(spectrum, vectors);
        T const floor = static_cast<T>(detail::kEllipseMargin) * std::fabs(spectrum(0, 0));
        for (std::size_t k = 0; k < 5; ++k) {
            T const diag = normal(k, k) > floor ? normal(k, k) : floor;
            scale[k] = diag;
        }
        T step[5];
        bool accepted = false;
        do {
            Cmatrix<T> damped = normal;
            for (std::size_t k = 0; k < 5; ++k) {
                damped(k, k) += lambda * scale[k];
            }
            Csolver_svd<T> solver(damped);
            Cmatrix<T> delta = solver.solve(rhs);
            if (!round) {
                T const h = T(0.1);
                Cmatrix<T> probeStep = delta;
                for (std::size_t k = 0; k < 5; ++k) {
                    probeStep(k, 0) = h * delta(k, 0);
                }
                T unused[5];
                Cellipse2<T> const probe =
                    detail::correctedEllipse(current, probeStep, false, unused);
                detail::ellipseDistanceSystem<T>(points, probe, nullptr, probeDistances);
                // d(x + h delta) = d - h J delta + h^2 d'' / 2 + ..., with J delta the
                // design matrix times delta.
                Cmatrix<T> const predicted = design * delta;
                Cmatrix<T> curvature(n, 1);
                for (std::size_t i = 0; i < n; ++i) {
                    curvature(i, 0) =
                        T(2) / h * ((probeDistances(i, 0) - residual(i, 0)) / h + predicted(i, 0));
                }
                Cmatrix<T> const accel = solver.solve(designT * curvature);
                T accelNorm = T(0);
                T stepNorm = T(0);
                for (std::size_t k = 0; k < 5; ++k) {
                    accelNorm += accel(k, 0) * accel(k, 0) * scale[k];
                    stepNorm += delta(k, 0) * delta(k, 0) * scale[k];
                }
                if (T(4) * accelNorm <= T(0.5625) * stepNorm) {  // 2 |a| <= 0.75 |delta|
                    for (std::size_t k = 0; k < 5; ++k) {
                        delta(k, 0) += T(0.5) * accel(k, 0);
                    }
                }
            }
            Cellipse2<T> const trial = detail::correctedEllipse(current, delta, round, step);
            T const trialDev = StdAbwEllipse(points, trial);
            quality.lastStdAbw = trialDev;
            if (trialDev < currentDev) {
                current = trial;
                currentDev = trialDev;
                lambda *= T(0.1);
                accepted = true;
            } else {
                lambda *= T(10);
            }
        } while (!accepted && lambda < T(10000));
        if (!accepted) {
            lambda = T(0.01);
        } else if (lambda < T(1e-12)) {
            lambda = T(1e-12);
        }
        return detail::withinTolerance(step[0], quality.tolX) &&
               detail::withinTolerance(step[1], quality.tolY) &&
               detail::withinTolerance(step[2], quality.tolA) &&
               detail::withinTolerance(step[3], quality.tolB) &&
               detail::withinTolerance(step[4], quality.tolAngle);
    });
    ellipse = ok ? current : detail::invalidEllipse<T>();
}

}  // namespace math
