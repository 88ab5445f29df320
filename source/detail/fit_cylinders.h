// Cylinder fits of approximate<T>: start values by trial directions, the mean squared radial
// deviation, and the geometric (orthogonal distance) fits with free and with fixed radius.
// Included by source/approximate.cpp, which instantiates them.
#pragma once

#include <math/approximate.h>
#include <math/geometric.h>
#include <math/matrix.h>
#include <math/solver_le.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "detail/fit_common.h"

namespace math {
namespace detail {

// A cyclic relabelling of the coordinate axes: the local coordinates (u, v, w) of a point p
// are (p[u], p[v], p[w]), w being the axis the cylinder axis is referred to. Cyclic
// relabellings keep the handedness, so cross products need no sign fixes.
struct AxisOrder {
    std::size_t u;
    std::size_t v;
    std::size_t w;
};
inline constexpr AxisOrder kAxisX{1, 2, 0};  // local (u, v, w) = (y, z, x)
inline constexpr AxisOrder kAxisY{2, 0, 1};  // (z, x, y)
inline constexpr AxisOrder kAxisZ{0, 1, 2};  // identity

template <typename T>
Cpoint3<T> toLocal(Cpoint3<T> const& p, AxisOrder a) {
    return Cpoint3<T>(p[a.u], p[a.v], p[a.w]);
}

template <typename T>
Cpoint3<T> toGlobal(Cpoint3<T> const& q, AxisOrder a) {
    T g[3];
    g[a.u] = q.x;
    g[a.v] = q.y;
    g[a.w] = q.z;
    return Cpoint3<T>(g[0], g[1], g[2]);
}

// The coordinate axis (0 = x, 1 = y, 2 = z) with the largest |component| of the direction;
// ties go to z before y before x. A direction with a NaN component gives x.
template <typename T>
std::size_t dominantAxis(Cdirec3<T> const& axis) {
    T const ax = std::fabs(axis.x());
    T const ay = std::fabs(axis.y());
    T const az = std::fabs(axis.z());
    if (az >= ay && az >= ax) {
        return 2;
    }
    if (ay >= ax && ay >= az) {
        return 1;
    }
    return 0;
}

// Fewest points (after thinning by the stride) a worker fits: the number of unknowns of the
// free fit, so that the design matrix never has fewer rows than columns.
inline constexpr std::size_t kCylinderWorkerMinPoints = 5;

// The frame of the axis direction n (local coordinates, n_w >= 0): the minimal rotation that
// turns the w axis into n (Rodrigues), applied to the u and v axes,
//     e1 = (1 - n_u^2 / (1 + n_w), -n_u n_v / (1 + n_w), -n_u),
//     e2 = (-n_u n_v / (1 + n_w), 1 - n_v^2 / (1 + n_w), -n_v),
// so that (e1, e2, n) is right-handed and orthonormal, and equals (u, v, w) for n = w.
template <typename T>
void axisFrame(Cpoint3<T> const& n, Cpoint3<T>& e1, Cpoint3<T>& e2) {
    T const k = T(1) / (T(1) + n.z);
    e1 = Cpoint3<T>(T(1) - n.x * n.x * k, -n.x * n.y * k, -n.x);
    e2 = Cpoint3<T>(-n.x * n.y * k, T(1) - n.y * n.y * k, -n.y);
}

template <typename T>
T dot(Cpoint3<T> const& a, Cpoint3<T> const& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// The orthogonal-distance cylinder fit shared by the six workers: Gauss-Newton steps (Shakarji,
// "Least-squares fitting algorithms of the NIST algorithm testing system", J. Res. NIST 103,
// 1998, section 3.6), every linear least-squares problem solved by the singular value
// decomposition.
//
// The work is done in the local coordinates of `order`, whose w axis is the coordinate axis
// the cylinder axis is referred to. Each step linearises about the current axis in the frame
// (e1, e2, n) that the minimal rotation of the w axis onto the current unit direction n gives
// (axisFrame; n is kept with n_w >= 0, which the choice of w by the dominant component
// guarantees at the start). The axis point P is the foot of the centroid c of the points on
// the axis, so that it lies in the plane through the centroid perpendicular to the axis; this
// and the unit length of n remove the two gauge freedoms of an axis, and five unknowns remain:
// the shift of P along e1 and e2, the tilt (a, b) of the direction n + a e1 + b e2, and the
// radius (four with the radius fixed). With q = p - P, xi = q.e1, eta = q.e2, t = q.n and
// d = sqrt(xi^2 + eta^2), one row per point, f = d - r being the residual:
//     [xi / d,  eta / d,  t xi / d,  t eta / d,  1] delta = d - r
// (the last column only with a free radius). The update: P += delta0 e1 + delta1 e2,
// n = normalised(n + delta2 e1 + delta3 e2) (renormalised every step), P moved to the foot of
// c on the new axis, r += delta4.
//
// The parameter vector is the axis point (x, y, z), the unit axis direction (x, y, z) and the
// radius, in global coordinates; its corrections are the changes of these seven values in one
// step, checked against tol[0 .. 6] (tol[0 .. 5] with the radius fixed, where tol[6] is not
// read).
//
// Start: the input cylinder's axis, its point moved to the foot of c, its radius. The result
// keeps the sense of the input axis. Stride k takes the points 0, k, 2k, ... (k = 0 counts as
// 1). Fewer than kCylinderWorkerMinPoints of them, a start that is not finite, the strict
// iteration limit of iterateFit, or any exception while building or solving (solver failure,
// allocation) make the cylinder invalid. A point on the current axis gives d = 0 and
// non-finite entries; the solver then fails or the result is NaN, invalid either way.
template <typename T, bool FixedRadius>
void fitCylinderAxis(std::vector<Cpoint3<T>> const& points, std::uint64_t stride,
                     unsigned long long maxItr, std::array<T, 7> const& tol,
                     Ccylinder3<T>& cylinder, AxisOrder order) {
    try {
        std::uint64_t const step = stride == 0 ? 1 : stride;
        std::uint64_t const total = static_cast<std::uint64_t>(points.size());
        std::uint64_t const used = total == 0 ? 0 : (total - 1) / step + 1;
        if (used < kCylinderWorkerMinPoints) {
            cylinder = invalidCylinder<T>();
            return;
        }
        std::size_t const m = static_cast<std::size_t>(used);
        // Point k of the thinned set in local coordinates; k * step <= total - 1 never
        // overflows.
        auto pointAt = [&](std::size_t k) {
            return toLocal(points[static_cast<std::size_t>(static_cast<std::uint64_t>(k) * step)],
                           order);
        };

        // c = (1/m) sum p, each coordinate summed over the thinned points in order.
        T su = T(0);
        T sv = T(0);
        T sw = T(0);
        for (std::size_t k = 0; k < m; ++k) {
            Cpoint3<T> const p = pointAt(k);
            su += p.x;
            sv += p.y;
            sw += p.z;
        }
        T const count = static_cast<T>(used);
        Cpoint3<T> const centroid(su / count, sv / count, sw / count);

        // The axis point nearest to the centroid: P + ((c - P).n) n.
        auto footOfCentroid = [&centroid](Cpoint3<T> const& p, Cpoint3<T> const& n) {
            return p + n * dot(centroid - p, n);
        };

        Cpoint3<T> direction = toLocal(cylinder.axis().asPoint(), order);
        T const sense = direction.z < T(0) ? T(-1) : T(1);
        direction = direction * sense;
        Cpoint3<T> point = footOfCentroid(toLocal(cylinder.point(), order), direction);
        T r = cylinder.radius();
        if (!(std::isfinite(direction.x) && std::isfinite(direction.y) &&
              std::isfinite(direction.z) && std::isfinite(point.x) && std::isfinite(point.y) &&
              std::isfinite(point.z) && std::isfinite(r))) {
            cylinder = invalidCylinder<T>();
            return;
        }

        constexpr std::size_t kCols = FixedRadius ? 4 : 5;
        std::vector<T> residual(m);
        bool const ok = iterateFit(maxItr, [&]() {
            Cpoint3<T> e1;
            Cpoint3<T> e2;
            axisFrame(direction, e1, e2);
            Cmatrix<T> design(m, kCols);
            for (std::size_t k = 0; k < m; ++k) {
                Cpoint3<T> const q = pointAt(k) - point;
                T const xi = dot(q, e1);
                T const eta = dot(q, e2);
                T const t = dot(q, direction);
                T const d = std::sqrt(xi * xi + eta * eta);
                T const gu = xi / d;
                T const gv = eta / d;
                T* row = design.getRow(k);
                row[0] = gu;
                row[1] = gv;
                row[2] = t * gu;
                row[3] = t * gv;
                if constexpr (!FixedRadius) {
                    row[4] = T(1);
                }
                residual[k] = d - r;
            }
            // Decomposed in place: the design matrix is not needed afterwards.
            Csolver_svd<T> solver(std::move(design));
            Cmatrix<T> const delta = solver.solve(residual);
            Cpoint3<T> const tilted = direction + e1 * delta(2, 0) + e2 * delta(3, 0);
            Cpoint3<T> renewed = tilted / std::sqrt(dot(tilted, tilted));
            if (renewed.z < T(0)) {
                renewed = -renewed;
            }
            Cpoint3<T> const moved =
                footOfCentroid(point + e1 * delta(0, 0) + e2 * delta(1, 0), renewed);
            Cpoint3<T> const pointStep = toGlobal(moved - point, order);
            Cpoint3<T> const directionStep = toGlobal(renewed - direction, order) * sense;
            point = moved;
            direction = renewed;
            bool converged = true;
            if constexpr (!FixedRadius) {
                r += delta(4, 0);
                converged = withinTolerance(delta(4, 0), tol[6]);
            }
            for (std::size_t j = 0; j < 3; ++j) {
                converged = withinTolerance(pointStep[j], tol[j]) && converged;
                converged = withinTolerance(directionStep[j], tol[3 + j]) && converged;
            }
            return converged;
        });
        if (!ok) {
            cylinder = invalidCylinder<T>();
            return;
        }
        // The direction is of unit length by construction; it is relabelled, not normalised
        // again, so that the X, Y and Z workers agree exactly on relabelled data.
        Cpoint3<T> const axis = toGlobal(direction * sense, order);
        cylinder =
            Ccylinder3<T>(toGlobal(point, order), Cdirec3<T>::unit(axis.x, axis.y, axis.z), r);
    } catch (...) {
        cylinder = invalidCylinder<T>();
    }
}

// The structure of both public cylinder fits: fewer than 8 points make the cylinder invalid;
// the worker (X, Y or Z) is chosen once from the input axis (dominantAxis); above 10000 points
// a coarse pass with the stride n / 5000 runs first, then a pass with stride 1 starting from
// the cylinder as it stands.
template <typename T, typename Control, typename Worker>
void fitCylinderPasses(std::vector<Cpoint3<T>> const& points, Ccylinder3<T>& cylinder,
                       Control const& quality, std::array<Worker, 3> const& workers) {
    std::uint64_t const n = static_cast<std::uint64_t>(points.size());
    if (n < 8) {
        cylinder = invalidCylinder<T>();
        return;
    }
    Worker const worker = workers[dominantAxis(cylinder.axis())];
    if (n > 10000) {
        worker(points, n / 5000, quality, cylinder);
    }
    worker(points, 1, quality, cylinder);
}

}  // namespace detail

// --- Start values and scores -----------------------------------------------------------------

// Axis point = mean of the points. For each of 15 trial directions in fixed order (the three
// coordinate axes, then the twelve normalised combinations of 0.8 and +-0.3 below) the
// distances d of all points from the line through the mean are formed, with their mean r and
// their variance v = sum (d - r)^2 / n. The first direction with the smallest v wins (strictly
// smaller than the best so far, which starts at the largest finite double); the cylinder gets
// that direction and its mean distance. When no v compares smaller (NaN coordinates, no
// points) the cylinder is invalid.
template <typename T>
void approximate<T>::initValCylinder(Points3 const& points, Ccylinder3<T>& cylinder) {
    static T const kCandidates[15][3] = {
        {T(1), T(0), T(0)},         {T(0), T(1), T(0)},         {T(0), T(0), T(1)},
        {T(0.8), T(0.3), T(0.3)},   {T(0.3), T(0.8), T(0.3)},   {T(0.3), T(0.3), T(0.8)},
        {T(-0.8), T(0.3), T(0.3)},  {T(-0.3), T(0.8), T(0.3)},  {T(-0.3), T(0.3), T(0.8)},
        {T(0.8), T(-0.3), T(0.3)},  {T(0.3), T(-0.8), T(0.3)},  {T(0.3), T(-0.3), T(0.8)},
        {T(-0.8), T(-0.3), T(0.3)}, {T(-0.3), T(-0.8), T(0.3)}, {T(-0.3), T(-0.3), T(0.8)},
    };
    T const count = detail::countOf<T>(points);
    T sx = T(0);
    T sy = T(0);
    T sz = T(0);
    for (Cpoint3<T> const& p : points) {
        sx += p.x;
        sy += p.y;
        sz += p.z;
    }
    Cpoint3<T> const mean(sx / count, sy / count, sz / count);

    double best = 1.7976931348623157e308;
    bool found = false;
    Cdirec3<T> bestAxis;
    T bestRadius = T(0);
    std::vector<T> distances;
    for (auto const& c : kCandidates) {
        Cdirec3<T> const axis(c[0], c[1], c[2]);
        geometric<T>::distance(Cline3<T>(mean, axis), points, distances);
        T sum = T(0);
        for (T const d : distances) {
            sum += d;
        }
        T const radius = sum / count;
        T spread = T(0);
        for (T const d : distances) {
            T const e = d - radius;
            spread += e * e;
        }
        T const variance = spread / count;
        if (static_cast<double>(variance) < best) {
            best = static_cast<double>(variance);
            found = true;
            bestAxis = axis;
            bestRadius = radius;
        }
    }
    if (!found) {
        cylinder = detail::invalidCylinder<T>();
        return;
    }
    cylinder = Ccylinder3<T>(mean, bestAxis, bestRadius);
}

// sum (d - R)^2 / n over the distances d of the points from the axis line, each difference
// formed in T and squared and summed in double; a mean square (no root), divisor n.
template <typename T>
double approximate<T>::sqDevCylinder(Points3 const& points, Ccylinder3<T> const& cylinder) {
    std::vector<T> distances;
    geometric<T>::distance(Cline3<T>(cylinder.point(), cylinder.axis()), points, distances);
    T const r = cylinder.radius();
    double sum = 0.0;
    for (T const d : distances) {
        double const e = static_cast<double>(d - r);
        sum += e * e;
    }
    return sum / static_cast<double>(static_cast<std::uint64_t>(points.size()));
}

// --- Geometric fits ---------------------------------------------------------------------------

template <typename T>
void approximate<T>::fitCylinderGeom(Points3 const& points, Ccylinder3<T>& cylinder,
                                     CqCylinderGeom<T> const& quality) {
    using Worker =
        void (*)(Points3 const&, std::uint64_t, CqCylinderGeom<T> const&, Ccylinder3<T>&);
    detail::fitCylinderPasses<T>(
        points, cylinder, quality,
        std::array<Worker, 3>{&fitCylinderGeomX, &fitCylinderGeomY, &fitCylinderGeomZ});
}

template <typename T>
void approximate<T>::fitCylinderGeom(Points3 const& points, Ccylinder3<T>& cylinder,
                                     CqCylinderGeomStdAbw<T>& quality) {
    CqCylinderGeom<T> const control{quality.maxItr, quality.tol1, quality.tol2, quality.tol3,
                                    quality.tol4,   quality.tol5, quality.tol6, quality.tol7};
    detail::fitAndDeviation(
        points, cylinder, control, quality.stdAbw,
        [](Points3 const& p, Ccylinder3<T>& c, CqCylinderGeom<T> const& q) {
            fitCylinderGeom(p, c, q);
        },
        [](Points3 const& p, Ccylinder3<T> const& c) { return StdAbwCylinder(p, c); });
}

template <typename T>
void approximate<T>::fitCylinderGeomRfix(Points3 const& points, Ccylinder3<T>& cylinder,
                                         CqCylinderGeomRfix<T> const& quality) {
    using Worker =
        void (*)(Points3 const&, std::uint64_t, CqCylinderGeomRfix<T> const&, Ccylinder3<T>&);
    detail::fitCylinderPasses<T>(
        points, cylinder, quality,
        std::array<Worker, 3>{&fitCylinderGeomRfixX, &fitCylinderGeomRfixY, &fitCylinderGeomRfixZ});
}

template <typename T>
void approximate<T>::fitCylinderGeomRfix(Points3 const& points, Ccylinder3<T>& cylinder,
                                         CqCylinderGeomRfixStdAbw<T>& quality) {
    CqCylinderGeomRfix<T> const control{quality.maxItr, quality.tol1, quality.tol2, quality.tol3,
                                        quality.tol4,   quality.tol5, quality.tol6};
    detail::fitAndDeviation(
        points, cylinder, control, quality.stdAbw,
        [](Points3 const& p, Ccylinder3<T>& c, CqCylinderGeomRfix<T> const& q) {
            fitCylinderGeomRfix(p, c, q);
        },
        [](Points3 const& p, Ccylinder3<T> const& c) { return StdAbwCylinder(p, c); });
}

// --- Workers: one implementation, the axis referred to x, y or z -------------------------------

namespace detail {
template <typename T>
std::array<T, 7> cylinderTolerances(CqCylinderGeom<T> const& q) {
    return {q.tol1, q.tol2, q.tol3, q.tol4, q.tol5, q.tol6, q.tol7};
}
template <typename T>
std::array<T, 7> cylinderTolerances(CqCylinderGeomRfix<T> const& q) {
    return {q.tol1, q.tol2, q.tol3, q.tol4, q.tol5, q.tol6, T(0)};
}
}  // namespace detail

template <typename T>
void approximate<T>::fitCylinderGeomX(Points3 const& points, std::uint64_t stride,
                                      CqCylinderGeom<T> const& quality, Ccylinder3<T>& cylinder) {
    detail::fitCylinderAxis<T, false>(points, stride, quality.maxItr,
                                      detail::cylinderTolerances(quality), cylinder,
                                      detail::kAxisX);
}

template <typename T>
void approximate<T>::fitCylinderGeomY(Points3 const& points, std::uint64_t stride,
                                      CqCylinderGeom<T> const& quality, Ccylinder3<T>& cylinder) {
    detail::fitCylinderAxis<T, false>(points, stride, quality.maxItr,
                                      detail::cylinderTolerances(quality), cylinder,
                                      detail::kAxisY);
}

template <typename T>
void approximate<T>::fitCylinderGeomZ(Points3 const& points, std::uint64_t stride,
                                      CqCylinderGeom<T> const& quality, Ccylinder3<T>& cylinder) {
    detail::fitCylinderAxis<T, false>(points, stride, quality.maxItr,
                                      detail::cylinderTolerances(quality), cylinder,
                                      detail::kAxisZ);
}

template <typename T>
void approximate<T>::fitCylinderGeomRfixX(Points3 const& points, std::uint64_t stride,
                                          CqCylinderGeomRfix<T> const& quality,
                                          Ccylinder3<T>& cylinder) {
    detail::fitCylinderAxis<T, true>(points, stride, quality.maxItr,
                                     detail::cylinderTolerances(quality), cylinder, detail::kAxisX);
}

template <typename T>
void approximate<T>::fitCylinderGeomRfixY(Points3 const& points, std::uint64_t stride,
                                          CqCylinderGeomRfix<T> const& quality,
                                          Ccylinder3<T>& cylinder) {
    detail::fitCylinderAxis<T, true>(points, stride, quality.maxItr,
                                     detail::cylinderTolerances(quality), cylinder, detail::kAxisY);
}

template <typename T>
void approximate<T>::fitCylinderGeomRfixZ(Points3 const& points, std::uint64_t stride,
                                          CqCylinderGeomRfix<T> const& quality,
                                          Ccylinder3<T>& cylinder) {
    detail::fitCylinderAxis<T, true>(points, stride, quality.maxItr,
                                     detail::cylinderTolerances(quality), cylinder, detail::kAxisZ);
}

}  // namespace math
