// Line and plane fits and the deviation functions of approximate<T>; included by
// source/approximate.cpp, which instantiates them.
#pragma once

#include <math/approximate.h>
#include <math/matrix.h>
#include <math/matrix_calc.h>

#include <cmath>
#include <type_traits>

#include "detail/ellipse_foot.h"
#include "detail/fit_common.h"

namespace math {

// --- Lines -----------------------------------------------------------------------------------

// Orthogonal regression, closed form. The sums, the root and the threshold test are formed in
// double for both types; only the final direction is rounded to T (then normalised in T).
// Scatter Sxx = sum dx^2, Syy = sum dy^2, Sxy = sum dx dy about the mean, points in input
// order. The direction (u, Sxy), u = ((Sxx - Syy) + w) / 2 with
// w = sqrt(Sxx^2 - 2 Sxx Syy + Syy^2 + 4 Sxy^2), is the eigenvector of the larger eigenvalue.
template <typename T>
void approximate<T>::fitLineGeom(Points2 const& points, Cline2<T>& line) {
    std::size_t const n = points.size();
    if (n < 2) {
        line = detail::invalidLine2<T>();
        return;
    }
    if (n == 2) {
        line = Cline2<T>(points[0], Cdirec2<T>(points[1] - points[0]));
        return;
    }
    double const count = static_cast<double>(static_cast<std::uint64_t>(n));
    double sx = 0.0;
    double sy = 0.0;
    for (Cpoint2<T> const& p : points) {
        sx += static_cast<double>(p.x);
        sy += static_cast<double>(p.y);
    }
    double const mx = sx / count;
    double const my = sy / count;
    double sxx = 0.0;
    double syy = 0.0;
    double sxy = 0.0;
    for (Cpoint2<T> const& p : points) {
        double const dx = static_cast<double>(p.x) - mx;
        double const dy = static_cast<double>(p.y) - my;
        sxx += dx * dx;
        syy += dy * dy;
        sxy += dx * dy;
    }
    double ux = 1.0;
    double uy = 0.0;
    if (syy == 0.0) {
        ux = 1.0;
        uy = 0.0;
    } else if (sxx == 0.0) {
        ux = 0.0;
        uy = 1.0;
    } else {
        double const w = std::sqrt(sxx * sxx - 2.0 * sxx * syy + syy * syy + 4.0 * sxy * sxy);
        double const u = ((sxx - syy) + w) * 0.5;
        if (u * u + sxy * sxy < 1e-8) {
            ux = 0.0;
            uy = 1.0;
        } else {
            ux = u;
            uy = sxy;
        }
    }
    line = Cline2<T>(Cpoint2<T>(static_cast<T>(mx), static_cast<T>(my)),
                     Cdirec2<T>(Cpoint2<T>(static_cast<T>(ux), static_cast<T>(uy))));
}

// The same line by the eigen decomposition of the centred scatter matrix
// [[cxx, cxy], [cxy, cyy]], cab = Sab - Sa Sb / n over raw coordinates (in T).
template <typename T>
void approximate<T>::fitLineGeom(Points2 const& points, Cline2<T>& line,
                                 CqLineGeom2DStdAbw<T>& quality) {
    std::size_t const n = points.size();
    if (n <= 2) {
        fitLineGeom(points, line);
        quality.across = detail::nan<T>();
        quality.along = detail::nan<T>();
        return;
    }
    T const count = detail::countOf<T>(points);
    T sx = T(0), sy = T(0), sxx = T(0), sxy = T(0), syy = T(0);
    for (Cpoint2<T> const& p : points) {
        sx += p.x;
        sy += p.y;
        sxx += p.x * p.x;
        sxy += p.x * p.y;
        syy += p.y * p.y;
    }
    Cmatrix<T> a(2, 2);
    a(0, 0) = sxx - sx * sx / count;
    a(0, 1) = sxy - sx * sy / count;
    a(1, 0) = a(0, 1);
    a(1, 1) = syy - sy * sy / count;
    // The eigen routine leaves v untouched when the scatter is not finite: start from NaN so
    // that such input gives an invalid direction.
    Cmatrix<T> v(2, 2, detail::nan<T>());
    CmatrixCalc<T>::getEigenvalue2x2sym(a, v);
    T const lambda0 = a(0, 0);
    T const lambda1 = a(1, 1);
    T const dof = count - T(1);
    std::size_t row = 0;
    if (lambda1 > lambda0) {
        row = 1;
        quality.across = std::sqrt(lambda0 / dof);
        quality.along = std::sqrt(lambda1 / dof);
    } else {
        quality.across = std::sqrt(lambda1 / dof);
        quality.along = std::sqrt(lambda0 / dof);
    }
    line =
        Cline2<T>(Cpoint2<T>(sx / count, sy / count), Cdirec2<T>(Cpoint2<T>(v(row, 0), v(row, 1))));
}

namespace detail {

// The coordinate sums and the six raw product sums of a point list, each in its own
// accumulator, points in input order.
template <typename T>
struct RawSums3 {
    T sx = T(0), sy = T(0), sz = T(0);
    T sxx = T(0), sxy = T(0), sxz = T(0), syy = T(0), syz = T(0), szz = T(0);

    explicit RawSums3(std::vector<Cpoint3<T>> const& points) {
        for (Cpoint3<T> const& p : points) {
            sx += p.x;
            sy += p.y;
            sz += p.z;
            sxx += p.x * p.x;
            sxy += p.x * p.y;
            sxz += p.x * p.z;
            syy += p.y * p.y;
            syz += p.y * p.z;
            szz += p.z * p.z;
        }
    }
};

// The 3D orthogonal-regression line: mean and the eigen decomposition of the centred scatter
// matrix (eigenvalues left on the diagonal of `scatter`, eigenvectors in the rows of `vectors`).
template <typename T>
Cpoint3<T> decomposeScatter3(std::vector<Cpoint3<T>> const& points, Cmatrix<T>& scatter,
                             Cmatrix<T>& vectors) {
    T const count = countOf<T>(points);
    detail::RawSums3<T> const sums(points);
    T const sx = sums.sx, sy = sums.sy, sz = sums.sz;
    T const sxx = sums.sxx, sxy = sums.sxy, sxz = sums.sxz;
    T const syy = sums.syy, syz = sums.syz, szz = sums.szz;
    scatter = Cmatrix<T>(3, 3);
    scatter(0, 0) = sxx - sx * sx / count;
    scatter(0, 1) = sxy - sx * sy / count;
    scatter(0, 2) = sxz - sx * sz / count;
    scatter(1, 0) = scatter(0, 1);
    scatter(1, 1) = syy - sy * sy / count;
    scatter(1, 2) = syz - sy * sz / count;
    scatter(2, 0) = scatter(0, 2);
    scatter(2, 1) = scatter(1, 2);
    scatter(2, 2) = szz - sz * sz / count;
    vectors = Cmatrix<T>(3, 3);
    CmatrixCalc<T>::getEigenvalue(scatter, vectors);
    return Cpoint3<T>(sx / count, sy / count, sz / count);
}

}  // namespace detail

template <typename T>
void approximate<T>::fitLineGeom(Points3 const& points, Cline3<T>& line) {
    CqLineGeom3DStdAbw<T> unused{};
    fitLineGeom(points, line, unused);
}

// Through the mean along the eigenvector of the largest |eigenvalue| (the first row).
template <typename T>
void approximate<T>::fitLineGeom(Points3 const& points, Cline3<T>& line,
                                 CqLineGeom3DStdAbw<T>& quality) {
    std::size_t const n = points.size();
    quality = {detail::nan<T>(), detail::nan<T>(), detail::nan<T>()};
    if (n < 2) {
        line = detail::invalidLine3<T>();
        return;
    }
    if (n == 2) {
        line = Cline3<T>(points[0], Cdirec3<T>(points[1] - points[0]));
        return;
    }
    Cmatrix<T> scatter;
    Cmatrix<T> vectors;
    Cpoint3<T> const mean = detail::decomposeScatter3(points, scatter, vectors);
    T const dof = detail::countOf<T>(points) - T(1);
    quality.axis1 = std::sqrt(std::fabs(scatter(0, 0)) / dof);
    quality.axis2 = std::sqrt(std::fabs(scatter(1, 1)) / dof);
    quality.axis3 = std::sqrt(std::fabs(scatter(2, 2)) / dof);
    T const* first = vectors.getBase();
    line = Cline3<T>(mean, Cdirec3<T>(first[0], first[1], first[2]));
}

// a x + b y = 1 by the normal equations: a = A / D, b = B / D with D = Syy Sxx - Sxy^2,
// A = Syy Sx - Sxy Sy, B = Sxx Sy - Sxy Sx (raw sums in T). The mean squared orthogonal
// distance is (n D - A Sx - B Sy) D / ((B^2 + A^2) n).
template <typename T>
double approximate<T>::fitLineLsq(Points2 const& points, Cline2<T>& line) {
    std::size_t const n = points.size();
    if (n < 2) {
        line = detail::invalidLine2<T>();
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (n == 2) {
        line = Cline2<T>(points[0], Cdirec2<T>(points[1] - points[0]));
        return std::numeric_limits<double>::quiet_NaN();
    }
    T const count = detail::countOf<T>(points);
    T sx = T(0), sy = T(0), sxx = T(0), syy = T(0), sxy = T(0);
    for (Cpoint2<T> const& p : points) {
        sx += p.x;
        sy += p.y;
        sxx += p.x * p.x;
        syy += p.y * p.y;
        sxy += p.x * p.y;
    }
    T const d = syy * sxx - sxy * sxy;
    T const a = syy * sx - sxy * sy;
    T const b = sxx * sy - sxy * sx;
    if (b != T(0)) {
        T const x1 = points[0].x;
        line = Cline2<T>(Cpoint2<T>(x1, (d - a * x1) / b), Cdirec2<T>(Cpoint2<T>(T(1), -a / b)));
    } else {
        line = Cline2<T>(Cpoint2<T>(d / a, points[0].y), Cdirec2<T>(Cpoint2<T>(T(0), T(1))));
    }
    T const variance = (count * d - a * sx - b * sy) * d / ((b * b + a * a) * count);
    return static_cast<double>(variance);
}

template <typename T>
void approximate<T>::fitLineLsqN(Points2 const& points, Cline2<T>& line,
                                 CqLineLsqNStdAbw<T>& quality) {
    quality.stdAbw = static_cast<T>(fitLineLsq(points, line));
}

template <typename T>
void approximate<T>::fitLineLsqN(Points2 const& points, Cline2<T>& line) {
    CqLineLsqNStdAbw<T> unused{};
    fitLineLsqN(points, line, unused);
}

// --- Deviations ------------------------------------------------------------------------------

// Signed distances d = n . (p - P) with n = (-dy, dx) normalised;
// sqrt((sum d^2 - (sum d)^2 / n) / (n - 1)).
template <typename T>
T approximate<T>::StdAbwLine2(Points2 const& points, Cline2<T> const& line) {
    Cdirec2<T> const dir = line.direction();
    Cdirec2<T> const normal(Cpoint2<T>(-dir.y(), dir.x()));
    Cpoint2<T> const origin = line.point();
    T sum = T(0);
    T sumSq = T(0);
    for (Cpoint2<T> const& p : points) {
        T const d = normal.x() * (p.x - origin.x) + normal.y() * (p.y - origin.y);
        sum += d;
        sumSq += d * d;
    }
    T const count = detail::countOf<T>(points);
    return std::sqrt((sumSq - sum * sum / count) / (count - T(1)));
}

// r = |p - c|; sqrt((sum r^2 - (sum r)^2 / n) / (n - 1)).
template <typename T>
T approximate<T>::StdAbwCircle2(Points2 const& points, Ccircle2<T> const& circle) {
    Cpoint2<T> const c = circle.center();
    T sum = T(0);
    T sumSq = T(0);
    for (Cpoint2<T> const& p : points) {
        T const dx = p.x - c.x;
        T const dy = p.y - c.y;
        T const r = std::sqrt(dx * dx + dy * dy);
        sum += r;
        sumSq += r * r;
    }
    T const count = detail::countOf<T>(points);
    return std::sqrt((sumSq - sum * sum / count) / (count - T(1)));
}

// Foot points by four Newton steps each; sx^2 = sum dx^2 / (n - 1), sy^2 likewise;
// sqrt(sx^2 + sy^2).
template <typename T>
T approximate<T>::StdAbwEllipse(Points2 const& points, Cellipse2<T> const& ellipse) {
    detail::EllipseFrame<T> const frame(ellipse);
    T sumDx = T(0);
    T sumDy = T(0);
    for (Cpoint2<T> const& p : points) {
        Cpoint2<T> const foot = frame.footPoint(p);
        T const dx = p.x - foot.x;
        T const dy = p.y - foot.y;
        sumDx += dx * dx;
        sumDy += dy * dy;
    }
    T const dof = detail::countOf<T>(points) - T(1);
    T const sx = std::sqrt(sumDx / dof);
    T const sy = std::sqrt(sumDy / dof);
    return std::sqrt(sx * sx + sy * sy);
}

// sqrt(sum (R - |p - c|)^2 / (n - 1)).
template <typename T>
T approximate<T>::StdAbwSphere(Points3 const& points, Csphere3<T> const& sphere) {
    Cpoint3<T> const c = sphere.center();
    T const r = sphere.radius();
    T sum = T(0);
    for (Cpoint3<T> const& p : points) {
        T const dx = p.x - c.x;
        T const dy = p.y - c.y;
        T const dz = p.z - c.z;
        T const e = r - std::sqrt(dx * dx + dy * dy + dz * dz);
        sum += e * e;
    }
    return std::sqrt(sum / (detail::countOf<T>(points) - T(1)));
}

// Axis distance |a × (p - P0)| with the axis direction taken as unit length;
// sqrt(sum (R - distance)^2 / (n - 1)).
template <typename T>
T approximate<T>::StdAbwCylinder(Points3 const& points, Ccylinder3<T> const& cylinder) {
    Cpoint3<T> const p0 = cylinder.point();
    Cdirec3<T> const a = cylinder.axis();
    T const r = cylinder.radius();
    T sum = T(0);
    for (Cpoint3<T> const& p : points) {
        T const qx = p.x - p0.x;
        T const qy = p.y - p0.y;
        T const qz = p.z - p0.z;
        T const cx = a.y() * qz - a.z() * qy;
        T const cy = a.z() * qx - a.x() * qz;
        T const cz = a.x() * qy - a.y() * qx;
        T const e = r - std::sqrt(cx * cx + cy * cy + cz * cz);
        sum += e * e;
    }
    return std::sqrt(sum / (detail::countOf<T>(points) - T(1)));
}

// --- Planes ----------------------------------------------------------------------------------

// Power iteration on the inertia tensor M of the centred points, whose largest eigenvalue
// belongs to the normal: diagonal (cyy + czz, cxx + czz, cxx + cyy), off-diagonal -cxy, -cxz,
// -cyz, with cab = Sab - Sa Sb (1/n). Each pass multiplies v (start (1, 1, 1)) ten times by M,
// then divides by s = |v|; stop when |s - s_previous| < tolNorm (s_previous = 0 in the first
// pass) or when the pass counter (0 in the first pass) exceeds maxItr. The norm after ten
// multiplications is about lambda^10: that is the scale the tolerance applies to.
template <typename T>
void approximate<T>::fitPlaneGeomFast(Points3 const& points, Cplane3<T>& plane,
                                      CqPlaneGeomFast<T> const& quality) {
    std::size_t const n = points.size();
    if (n < 3) {
        plane = detail::invalidPlane<T>();
        return;
    }
    if (n == 3) {
        plane = Cplane3<T>(points[0], points[1], points[2]);
        return;
    }
    T const count = detail::countOf<T>(points);
    detail::RawSums3<T> const sums(points);
    T const sx = sums.sx, sy = sums.sy, sz = sums.sz;
    T const sxx = sums.sxx, sxy = sums.sxy, sxz = sums.sxz;
    T const syy = sums.syy, syz = sums.syz, szz = sums.szz;
    T const invN = T(1) / count;
    T const cxx = sxx - sx * sx * invN;
    T const cxy = sxy - sx * sy * invN;
    T const cxz = sxz - sx * sz * invN;
    T const cyy = syy - sy * sy * invN;
    T const cyz = syz - sy * sz * invN;
    T const czz = szz - sz * sz * invN;
    // The passes run in W: double for float too, since the norm after ten multiplications,
    // about lambda^10, overflows single precision already for a scatter of a few thousand.
    using W = std::conditional_t<std::is_same_v<T, float>, double, T>;
    W const m[3][3] = {{W(cyy) + W(czz), -W(cxy), -W(cxz)},
                       {-W(cxy), W(cxx) + W(czz), -W(cyz)},
                       {-W(cxz), -W(cyz), W(cxx) + W(cyy)}};

    // A pass limit for absurd maxItr values: the vector no longer changes long before.
    constexpr unsigned long long kPassCap = 1000000ULL;
    W v[3] = {W(1), W(1), W(1)};
    W previous = W(0);
    for (unsigned long long counter = 0;; ++counter) {
        for (int k = 0; k < 10; ++k) {
            W const w0 = m[0][0] * v[0] + m[0][1] * v[1] + m[0][2] * v[2];
            W const w1 = m[1][0] * v[0] + m[1][1] * v[1] + m[1][2] * v[2];
            W const w2 = m[2][0] * v[0] + m[2][1] * v[1] + m[2][2] * v[2];
            v[0] = w0;
            v[1] = w1;
            v[2] = w2;
        }
        W const s = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        v[0] /= s;
        v[1] /= s;
        v[2] /= s;
        if (std::fabs(s - previous) < W(quality.tolNorm) || counter > quality.maxItr) {
            break;
        }
        // A NaN norm cannot recover (and would otherwise run to maxItr): end here.
        if (s != s || counter >= kPassCap) {
            break;
        }
        previous = s;
    }
    Cdirec3<T> const normal(static_cast<T>(v[0]), static_cast<T>(v[1]), static_cast<T>(v[2]));
    T const mx = sx / count;
    T const my = sy / count;
    T const mz = sz / count;
    plane = Cplane3<T>(normal, -(mx * normal.x() + my * normal.y() + mz * normal.z()));
}

template <typename T>
void approximate<T>::fitPlaneGeom(Points3 const& points, Cplane3<T>& plane) {
    CqPlaneGeomStdAbw<T> unused{};
    fitPlaneGeom(points, plane, unused);
}

// Normal = the eigenvector of the smallest |eigenvalue| (the last row) of the centred scatter
// matrix; d = -(mean . normal).
template <typename T>
void approximate<T>::fitPlaneGeom(Points3 const& points, Cplane3<T>& plane,
                                  CqPlaneGeomStdAbw<T>& quality) {
    std::size_t const n = points.size();
    quality = {detail::nan<T>(), detail::nan<T>(), detail::nan<T>()};
    if (n < 3) {
        plane = detail::invalidPlane<T>();
        return;
    }
    if (n == 3) {
        plane = Cplane3<T>(points[0], points[1], points[2]);
        return;
    }
    Cmatrix<T> scatter;
    Cmatrix<T> vectors;
    Cpoint3<T> const mean = detail::decomposeScatter3(points, scatter, vectors);
    T const dof = detail::countOf<T>(points) - T(1);
    quality.normal = std::sqrt(scatter(2, 2) / dof);
    quality.middle = std::sqrt(scatter(1, 1) / dof);
    quality.main = std::sqrt(scatter(0, 0) / dof);
    Cdirec3<T> const normal(vectors(2, 0), vectors(2, 1), vectors(2, 2));
    plane = Cplane3<T>(normal, -(mean.x * normal.x() + mean.y * normal.y() + mean.z * normal.z()));
}

}  // namespace math
