// Circle and sphere fits of approximate<T>; included by source/approximate.cpp.
#pragma once

#include <math/approximate.h>
#include <math/geometric.h>
#include <math/matrix.h>
#include <math/matrix_calc.h>
#include <math/solver_le.h>
#include <math/transform3.h>

#include <array>
#include <cmath>
#include <utility>

#include "detail/fit_common.h"

namespace math {
namespace detail {

// Gauss-Newton on the coordinates of the foot points, for circles (P = Cpoint2) and spheres
// (P = Cpoint3). Parameters (r, c_0, ..., c_{D-1}), or (c_0, ..., c_{D-1}) with the radius
// fixed. For every point, with q = p - c, d = |q|, k = 1/d, D rows j of the design matrix:
//     [k q_j,  (l = j) 1 - (1 - k^2 q_j^2) k r,  (l != j) k^3 r q_j q_l]
// (without the first column when the radius is fixed) and the residuals q_j - k r q_j, the
// point minus its nearest point on the current element. The system is solved in the
// least-squares sense by the singular value decomposition. A point on the current centre gives
// d = 0 and non-finite entries (no guard). Returns false when the iteration limit was reached;
// solver exceptions propagate.
template <typename T, typename P, bool FixedRadius>
bool fitRoundGaussNewton(std::vector<P> const& points, T& r, P& c, unsigned long long maxItr,
                         std::array<T, PointDim<P>::value + 1> const& tol) {
    constexpr std::size_t kDim = PointDim<P>::value;
    constexpr std::size_t kOff = FixedRadius ? 0 : 1;
    std::size_t const n = points.size();
    std::vector<T> residual(kDim * n);
    return iterateFit(maxItr, [&]() {
        // One design matrix per step, moved into the solver, which decomposes it in place.
        Cmatrix<T> design(kDim * n, kDim + kOff);
        for (std::size_t i = 0; i < n; ++i) {
            T q[kDim];
            T sumSq = T(0);
            for (std::size_t j = 0; j < kDim; ++j) {
                q[j] = points[i][j] - c[j];
                sumSq += q[j] * q[j];
            }
            T const k = T(1) / std::sqrt(sumSq);
            T const k3r = k * k * k * r;
            for (std::size_t j = 0; j < kDim; ++j) {
                T* row = design.getRow(kDim * i + j);
                if constexpr (!FixedRadius) {
                    row[0] = k * q[j];
                }
                for (std::size_t l = 0; l < kDim; ++l) {
                    if (l == j) {
                        row[kOff + l] = T(1) - (T(1) - (k * k) * (q[j] * q[j])) * k * r;
                    } else if (kDim == 2) {
                        // In the plane both mixed entries are written k^3 r dx dy.
                        row[kOff + l] = k3r * q[0] * q[1];
                    } else {
                        row[kOff + l] = k3r * q[j] * q[l];
                    }
                }
                residual[kDim * i + j] = q[j] - k * r * q[j];
            }
        }
        Csolver_svd<T> solver(std::move(design));
        Cmatrix<T> const delta = solver.solve(residual);
        bool converged = true;
        if constexpr (!FixedRadius) {
            r += delta(0, 0);
            converged = withinTolerance(delta(0, 0), tol[0]);
        }
        for (std::size_t l = 0; l < kDim; ++l) {
            c[l] += delta(kOff + l, 0);
            converged = withinTolerance(delta(kOff + l, 0), tol[kOff + l]) && converged;
        }
        return converged;
    });
}

// Mean of the points and the root-mean-square distance from it.
template <typename T, typename P>
P meanAndRms(std::vector<P> const& points, T& rms) {
    constexpr std::size_t kDim = PointDim<P>::value;
    T const count = countOf<T>(points);
    P mean = points[0];
    for (std::size_t j = 0; j < kDim; ++j) {
        T s = T(0);
        for (P const& p : points) {
            s += p[j];
        }
        mean[j] = s / count;
    }
    T sumSq = T(0);
    for (P const& p : points) {
        T d2 = T(0);
        for (std::size_t j = 0; j < kDim; ++j) {
            T const q = p[j] - mean[j];
            d2 += q * q;
        }
        sumSq += d2;
    }
    rms = std::sqrt(sumSq / count);
    return mean;
}

// The plain circle and sphere fits: fewer than minPoints points give `invalid`; otherwise
// start at the mean with the RMS distance as radius (or the fixed radius), iterate, and build
// Shape(centre, radius). Any exception while building or solving gives `invalid`.
template <typename T, typename P, bool FixedRadius, typename Shape>
Shape fitRound(std::vector<P> const& points, std::size_t minPoints, T fixedRadius,
               unsigned long long maxItr, std::array<T, PointDim<P>::value + 1> const& tol,
               Shape const& invalid) {
    if (points.size() < minPoints) {
        return invalid;
    }
    try {
        T r = T(0);
        P c = meanAndRms(points, r);
        if constexpr (FixedRadius) {
            r = fixedRadius;
        }
        if (fitRoundGaussNewton<T, P, FixedRadius>(points, r, c, maxItr, tol)) {
            return Shape(c, r);
        }
    } catch (...) {
    }
    return invalid;
}

// The rotation that turns the unit normal n into the z-axis: angle theta = acos(n_z) about the
// axis n × (0, 0, 1) = (n_y, -n_x, 0), as transformation parameters with zero translation.
// Returns false (no rotation needed) when theta lies within 64 machine epsilons of 0 or of pi,
// or the axis has zero length: the points then keep their coordinates.
template <typename T>
bool rotationToZ(Cdirec3<T> const& n, CtransPrm3<T>& trans) {
    T const theta = std::acos(n.z());
    T const margin = T(64) * std::numeric_limits<T>::epsilon();
    T const pi = T(3.14159265358979323846);
    if (theta <= margin || theta >= pi - margin) {
        return false;
    }
    Cdirec3<T> const axis(n.y(), -n.x(), T(0));
    if (!axis.isValid()) {
        return false;
    }
    T const s = std::sin(theta * T(0.5));
    T const c = std::cos(theta * T(0.5));
    trans = CtransPrm3<T>(Cquaternion<T>(c, s * axis.x(), s * axis.y(), s * axis.z()),
                          Cpoint3<T>(T(0), T(0), T(0)));
    return true;
}

// The 3D circle fits: rotate the points so that the circle's normal becomes the z-axis, fit
// the circle in their x-y coordinates, carry the centre back (minus the translation, times the
// transposed rotation) and project it onto the plane through the circle's input centre with
// the circle's normal (through the mean of the points when the input centre is not finite).
// Any exception makes the circle invalid.
template <typename T, bool FixedRadius>
void fitCircle3(std::vector<Cpoint3<T>> const& points, Ccircle3<T>& circle,
                unsigned long long maxItr, std::array<T, 3> const& tol) {
    if (points.size() < 3) {
        circle = invalidCircle3<T>();
        return;
    }
    try {
        Cdirec3<T> const normal = circle.plane().normal();
        CtransPrm3<T> trans;
        std::vector<Cpoint3<T>> local;
        bool const rotated = rotationToZ(normal, trans);
        if (rotated) {
            trans.transform(points, local);
        }
        std::vector<Cpoint3<T>> const& frame = rotated ? local : points;
        std::vector<Cpoint2<T>> flat;
        flat.reserve(frame.size());
        for (Cpoint3<T> const& p : frame) {
            flat.emplace_back(p.x, p.y);
        }
        T r = T(0);
        Cpoint2<T> c = meanAndRms(flat, r);
        bool ok = false;
        if constexpr (FixedRadius) {
            r = circle.radius();
            ok = fitRoundGaussNewton<T, Cpoint2<T>, true>(flat, r, c, maxItr, tol);
        } else {
            ok = fitRoundGaussNewton<T, Cpoint2<T>, false>(flat, r, c, maxItr, tol);
        }
        if (!ok) {
            circle = invalidCircle3<T>();
            return;
        }
        Cpoint3<T> centre(c.x, c.y, T(0));
        if (rotated) {
            Cpoint3<T> const t = trans.getTranslation();
            Cmatrix<T> const back = trans.getRot_Matrix().transp();
            Cpoint3<T> const q = centre - t;
            centre = Cpoint3<T>(back(0, 0) * q.x + back(0, 1) * q.y + back(0, 2) * q.z,
                                back(1, 0) * q.x + back(1, 1) * q.y + back(1, 2) * q.z,
                                back(2, 0) * q.x + back(2, 1) * q.y + back(2, 2) * q.z);
        }
        Cpoint3<T> anchor = circle.center();
        if (!(std::isfinite(anchor.x) && std::isfinite(anchor.y) && std::isfinite(anchor.z))) {
            T unused = T(0);
            anchor = meanAndRms(points, unused);
        }
        Cplane3<T> const plane(anchor, normal);
        geometric<T>::project(plane, centre);
        circle = Ccircle3<T>(Cplane3<T>(centre, normal), centre, r);
    } catch (...) {
        circle = invalidCircle3<T>();
    }
}

}  // namespace detail

// --- Circles ---------------------------------------------------------------------------------

// Algebraic fit of a (u^2 + v^2) + b u + c v = 1 in coordinates centred on the mean: the 3 × 3
// normal equations
//     [S w^2, S w u, S w v; S w u, S u^2, S u v; S w v, S u v, S v^2] (a, b, c) = (S w, S u, S v)
// with w = u^2 + v^2 and S w^2 = S u^4 + 2 S u^2 v^2 + S v^4, S w u = S u^3 + S u v^2,
// S w v = S u^2 v + S v^3, solved by the singular value decomposition. Centre
// (mx - b 0.5 / a, my - c 0.5 / a), radius |sqrt(4 a + b^2 + c^2) / a 0.5|. At least four
// points; no guard against a = 0; solver exceptions reach the caller.
template <typename T>
void approximate<T>::fitCircleLsq(Points2 const& points, Ccircle2<T>& circle) {
    if (points.size() < 4) {
        circle = detail::invalidCircle2<T>();
        return;
    }
    T const count = detail::countOf<T>(points);
    T sx = T(0), sy = T(0);
    for (Cpoint2<T> const& p : points) {
        sx += p.x;
        sy += p.y;
    }
    T const mx = sx / count;
    T const my = sy / count;
    T suu = T(0), suv = T(0), svv = T(0), su = T(0), sv = T(0), sw = T(0);
    T su4 = T(0), su2v2 = T(0), sv4 = T(0), su3 = T(0), suv2 = T(0), su2v = T(0), sv3 = T(0);
    for (Cpoint2<T> const& p : points) {
        T const u = p.x - mx;
        T const v = p.y - my;
        T const u2 = u * u;
        T const v2 = v * v;
        su += u;
        sv += v;
        suu += u2;
        svv += v2;
        suv += u * v;
        sw += u2 + v2;
        su4 += u2 * u2;
        su2v2 += u2 * v2;
        sv4 += v2 * v2;
        su3 += u2 * u;
        suv2 += u * v2;
        su2v += u2 * v;
        sv3 += v2 * v;
    }
    T const sww = su4 + T(2) * su2v2 + sv4;
    T const swu = su3 + suv2;
    T const swv = su2v + sv3;
    Cmatrix<T> normal(3, 3);
    normal(0, 0) = sww;
    normal(0, 1) = swu;
    normal(0, 2) = swv;
    normal(1, 0) = swu;
    normal(1, 1) = suu;
    normal(1, 2) = suv;
    normal(2, 0) = swv;
    normal(2, 1) = suv;
    normal(2, 2) = svv;
    Csolver_svd<T> solver(normal);
    Cmatrix<T> const x = solver.solve(std::vector<T>{sw, su, sv});
    T const a = x(0, 0);
    T const b = x(1, 0);
    T const c = x(2, 0);
    circle = Ccircle2<T>(Cpoint2<T>(mx - b * T(0.5) / a, my - c * T(0.5) / a),
                         std::fabs(std::sqrt(T(4) * a + b * b + c * c) / a * T(0.5)));
}

template <typename T>
void approximate<T>::fitCircleLsq(Points2 const& points, Ccircle2<T>& circle,
                                  CqCircleLsqStdAbw<T>& quality) {
    fitCircleLsq(points, circle);
    quality.stdAbw = StdAbwCircle2(points, circle);
}

// Taubin's algebraic fit (G. Taubin, IEEE PAMI 13(11), 1991; N. Chernov, "Circular and Linear
// Regression", 2010, section 5.9): a z + b x + c y + d = 0 with z = x^2 + y^2 in coordinates
// centred on the mean, minimising the algebraic residuals subject to the gradient-weighted
// normalisation 4 zbar a^2 + b^2 + c^2 = 1. Eliminating d = -a zbar leaves the covariance C of
// (z, x, y); with S = diag(1 / (2 sqrt(zbar)), 1, 1) the constraint becomes a unit vector, and
// (a', b, c) is the eigenvector of S C S with the smallest eigenvalue (the last row of
// getEigenvalue). Unlike fitCircleLsq it is unbiased on short arcs. At least four points;
// coincident or collinear points, or a non-finite result, give an invalid circle; exceptions of
// the eigen routine reach the caller.
template <typename T>
void approximate<T>::fitCircleLsqBeta(Points2 const& points, Ccircle2<T>& circle) {
    circle = detail::invalidCircle2<T>();
    if (points.size() < 4) {
        return;
    }
    T const count = detail::countOf<T>(points);
    T sx = T(0), sy = T(0);
    for (Cpoint2<T> const& p : points) {
        sx += p.x;
        sy += p.y;
    }
    T const mx = sx / count;
    T const my = sy / count;
    T sz = T(0);
    for (Cpoint2<T> const& p : points) {
        T const u = p.x - mx;
        T const v = p.y - my;
        sz += u * u + v * v;
    }
    T const zbar = sz / count;
    if (!(zbar > T(0)) || !std::isfinite(zbar)) {
        return;
    }
    // Covariance of (z, x, y), z centred on zbar.
    T c[3][3] = {};
    for (Cpoint2<T> const& p : points) {
        T const u = p.x - mx;
        T const v = p.y - my;
        T const f[3] = {u * u + v * v - zbar, u, v};
        for (int i = 0; i < 3; ++i) {
            for (int j = i; j < 3; ++j) {
                c[i][j] += f[i] * f[j];
            }
        }
    }
    Cmatrix<T> cov(3, 3);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            cov(i, j) = (i <= j ? c[i][j] : c[j][i]) / count;
        }
    }
    Cmatrix<T> scale(3, 3, T(0));
    scale(0, 0) = T(1) / (T(2) * std::sqrt(zbar));
    scale(1, 1) = T(1);
    scale(2, 2) = T(1);
    Cmatrix<T> reduced = scale * cov * scale.transp();
    Cmatrix<T> vectors(3, 3);
    CmatrixCalc<T>::getEigenvalue(reduced, vectors);
    T const a = vectors(2, 0) * scale(0, 0);
    T const b = vectors(2, 1);
    T const cc = vectors(2, 2);
    T const d = -a * zbar;
    T const cx = mx - b / (T(2) * a);
    T const cy = my - cc / (T(2) * a);
    T const r = std::sqrt(b * b + cc * cc - T(4) * a * d) / (T(2) * std::fabs(a));
    if (std::isfinite(cx) && std::isfinite(cy) && std::isfinite(r)) {
        circle = Ccircle2<T>(Cpoint2<T>(cx, cy), r);
    }
}

// Start: centre = mean, radius = RMS distance from it; then the Gauss-Newton iteration with
// parameters (r, cx, cy) and tolerances (tolR, tolX, tolY). At least three points.
template <typename T>
void approximate<T>::fitCircleGeom(Points2 const& points, Ccircle2<T>& circle,
                                   CqCircleGeom2D<T> const& quality) {
    circle = detail::fitRound<T, Cpoint2<T>, false>(points, 3, T(0), quality.maxItr,
                                                    {quality.tolR, quality.tolX, quality.tolY},
                                                    detail::invalidCircle2<T>());
}

template <typename T>
void approximate<T>::fitCircleGeom(Points2 const& points, Ccircle2<T>& circle,
                                   CqCircleGeom2DStdAbw<T>& quality) {
    CqCircleGeom2D<T> const control{quality.maxItr, quality.tolR, quality.tolX, quality.tolY};
    detail::fitAndDeviation(
        points, circle, control, quality.stdAbw,
        [](Points2 const& p, Ccircle2<T>& s, CqCircleGeom2D<T> const& q) {
            fitCircleGeom(p, s, q);
        },
        [](Points2 const& p, Ccircle2<T> const& s) { return StdAbwCircle2(p, s); });
}

template <typename T>
void approximate<T>::fitCircleGeom(Points3 const& points, Ccircle3<T>& circle,
                                   CqCircleGeom3D<T> const& quality) {
    detail::fitCircle3<T, false>(points, circle, quality.maxItr,
                                 {quality.tolR, quality.tolX, quality.tolY});
}

namespace detail {
// sqrt(sum (|p - centre| - r)^2 / (n - 1)), the spatial distance to the centre.
template <typename T>
T circle3Deviation(std::vector<Cpoint3<T>> const& points, Ccircle3<T> const& circle) {
    Cpoint3<T> const c = circle.center();
    T const r = circle.radius();
    T sum = T(0);
    for (Cpoint3<T> const& p : points) {
        T const dx = p.x - c.x;
        T const dy = p.y - c.y;
        T const dz = p.z - c.z;
        T const e = std::sqrt(dx * dx + dy * dy + dz * dz) - r;
        sum += e * e;
    }
    return std::sqrt(sum / (countOf<T>(points) - T(1)));
}
}  // namespace detail

template <typename T>
void approximate<T>::fitCircleGeom(Points3 const& points, Ccircle3<T>& circle,
                                   CqCircleGeom3DStdAbw<T>& quality) {
    CqCircleGeom3D<T> const control{quality.maxItr, quality.tolR, quality.tolX, quality.tolY};
    detail::fitAndDeviation(
        points, circle, control, quality.stdAbw,
        [](Points3 const& p, Ccircle3<T>& s, CqCircleGeom3D<T> const& q) {
            fitCircleGeom(p, s, q);
        },
        detail::circle3Deviation<T>);
}

// The radius stays at the input circle's radius; parameters (cx, cy) in the circle's plane,
// tolerances tolX, tolY (the third tolerance is not read).
template <typename T>
void approximate<T>::fitCircleGeomRfix(Points3 const& points, Ccircle3<T>& circle,
                                       CqCircleGeomRfix3D<T> const& quality) {
    detail::fitCircle3<T, true>(points, circle, quality.maxItr,
                                {quality.tolX, quality.tolY, quality.tolUnused});
}

template <typename T>
void approximate<T>::fitCircleGeomRfix(Points3 const& points, Ccircle3<T>& circle,
                                       CqCircleGeomRfix3DStdAbw<T>& quality) {
    CqCircleGeomRfix3D<T> const control{quality.maxItr, quality.tolX, quality.tolY,
                                        quality.tolUnused};
    detail::fitAndDeviation(
        points, circle, control, quality.stdAbw,
        [](Points3 const& p, Ccircle3<T>& s, CqCircleGeomRfix3D<T> const& q) {
            fitCircleGeomRfix(p, s, q);
        },
        detail::circle3Deviation<T>);
}

// --- Spheres ---------------------------------------------------------------------------------

namespace detail {
// Solves the algebraic sphere s0 (x^2 + y^2 + z^2) + s1 x + s2 y + s3 z = 1 in coordinates
// relative to `origin`, by the 4 × 4 normal equations
//     sum f f^T s = sum f,   f = (w, x, y, z), w = x^2 + y^2 + z^2,
// with the singular value decomposition. Returns (s0, s1, s2, s3).
template <typename T>
std::array<T, 4> algebraicSphere(std::vector<Cpoint3<T>> const& points, Cpoint3<T> const& origin) {
    T m[4][4] = {};
    T rhs[4] = {};
    for (Cpoint3<T> const& p : points) {
        T const x = p.x - origin.x;
        T const y = p.y - origin.y;
        T const z = p.z - origin.z;
        T const f[4] = {x * x + y * y + z * z, x, y, z};
        for (int i = 0; i < 4; ++i) {
            for (int j = i; j < 4; ++j) {
                m[i][j] += f[i] * f[j];
            }
            rhs[i] += f[i];
        }
    }
    Cmatrix<T> normal(4, 4);
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            normal(i, j) = i <= j ? m[i][j] : m[j][i];
        }
    }
    Csolver_svd<T> solver(normal);
    Cmatrix<T> const s = solver.solve(std::vector<T>{rhs[0], rhs[1], rhs[2], rhs[3]});
    return {s(0, 0), s(1, 0), s(2, 0), s(3, 0)};
}
}  // namespace detail

// Algebraic sphere s0 (x^2 + y^2 + z^2) + s1 x + s2 y + s3 z = 1, centre -0.5 (s1, s2, s3) / s0,
// radius -0.5 sqrt(s1^2 + 4 s0 + s2^2 + s3^2) / s0. That radius is positive only when s0 < 0,
// that is when the origin of the coordinates lies outside the sphere; so the system is solved
// twice: first relative to the mean of the points (for a centre estimate c and the RMS
// distance r of the points from it), then relative to o = c + (2 r, 0, 0), a point outside the
// sphere, and the centre is shifted back by o. At least four points. Like the iterative sphere
// fits it catches every exception of the solves (degenerate or non-finite points) and leaves
// the sphere invalid.
template <typename T>
void approximate<T>::fitSphereLsq(Points3 const& points, Csphere3<T>& sphere) {
    if (points.size() < 4) {
        sphere = detail::invalidSphere<T>();
        return;
    }
    try {
        T spread = T(0);
        Cpoint3<T> const mean = detail::meanAndRms(points, spread);
        std::array<T, 4> s = detail::algebraicSphere(points, mean);
        Cpoint3<T> const estimate(mean.x - T(0.5) * s[1] / s[0], mean.y - T(0.5) * s[2] / s[0],
                                  mean.z - T(0.5) * s[3] / s[0]);
        T sumSq = T(0);
        for (Cpoint3<T> const& p : points) {
            Cpoint3<T> const q = p - estimate;
            sumSq += q.x * q.x + q.y * q.y + q.z * q.z;
        }
        T const r = std::sqrt(sumSq / detail::countOf<T>(points));
        Cpoint3<T> const origin(estimate.x + T(2) * r, estimate.y, estimate.z);
        s = detail::algebraicSphere(points, origin);
        sphere = Csphere3<T>(
            Cpoint3<T>(origin.x + -T(0.5) * s[1] / s[0], origin.y + -T(0.5) * s[2] / s[0],
                       origin.z + -T(0.5) * s[3] / s[0]),
            -T(0.5) * std::sqrt(s[1] * s[1] + T(4) * s[0] + s[2] * s[2] + s[3] * s[3]) / s[0]);
    } catch (...) {
        sphere = detail::invalidSphere<T>();
    }
}

template <typename T>
void approximate<T>::fitSphereLsq(Points3 const& points, Csphere3<T>& sphere,
                                  CqSphereLsqStdAbw<T>& quality) {
    fitSphereLsq(points, sphere);
    quality.stdAbw = StdAbwSphere(points, sphere);
}

// Start: centre = mean, radius = RMS distance; Gauss-Newton with parameters (r, cx, cy, cz).
// At least four points.
template <typename T>
void approximate<T>::fitSphereGeom(Points3 const& points, Csphere3<T>& sphere,
                                   CqSphereGeom<T> const& quality) {
    sphere = detail::fitRound<T, Cpoint3<T>, false>(
        points, 4, T(0), quality.maxItr, {quality.tolR, quality.tolX, quality.tolY, quality.tolZ},
        detail::invalidSphere<T>());
}

template <typename T>
void approximate<T>::fitSphereGeom(Points3 const& points, Csphere3<T>& sphere,
                                   CqSphereGeomStdAbw<T>& quality) {
    CqSphereGeom<T> const control{quality.maxItr, quality.tolR, quality.tolX, quality.tolY,
                                  quality.tolZ};
    detail::fitAndDeviation(
        points, sphere, control, quality.stdAbw,
        [](Points3 const& p, Csphere3<T>& s, CqSphereGeom<T> const& q) { fitSphereGeom(p, s, q); },
        [](Points3 const& p, Csphere3<T> const& s) { return StdAbwSphere(p, s); });
}

// The radius stays at the input sphere's radius; parameters (cx, cy, cz). At least three
// points.
template <typename T>
void approximate<T>::fitSphereGeomRfix(Points3 const& points, Csphere3<T>& sphere,
                                       CqSphereGeomRfix<T> const& quality) {
    sphere = detail::fitRound<T, Cpoint3<T>, true>(points, 3, sphere.radius(), quality.maxItr,
                                                   {quality.tolX, quality.tolY, quality.tolZ, T(0)},
                                                   detail::invalidSphere<T>());
}

template <typename T>
void approximate<T>::fitSphereGeomRfix(Points3 const& points, Csphere3<T>& sphere,
                                       CqSphereGeomRfixStdAbw<T>& quality) {
    CqSphereGeomRfix<T> const control{quality.maxItr, quality.tolX, quality.tolY, quality.tolZ};
    detail::fitAndDeviation(
        points, sphere, control, quality.stdAbw,
        [](Points3 const& p, Csphere3<T>& s, CqSphereGeomRfix<T> const& q) {
            fitSphereGeomRfix(p, s, q);
        },
        [](Points3 const& p, Csphere3<T> const& s) { return StdAbwSphere(p, s); });
}

}  // namespace math
