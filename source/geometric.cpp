// Intersections, distances and projections between geometric elements.
#include "math/geometric.h"

#include <math/approximate.h>
#include <math/matrix.h>
#include <math/solver_le.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>

#include "detail/ellipse_foot.h"

namespace math {

namespace {

// The single-precision machine epsilon: the parallelism and singularity bound of both types.
constexpr double kEpsF = 1.1920928955078125e-07;

// Convergence bound of the circle-set and sphere-set iterations: sqrt(2^-23) taken in single
// precision (about 0.00034526698), for both types.
template <typename T>
T setTolerance() {
    return static_cast<T>(std::sqrt(1.1920929e-7f));
}

// The documented set iterations have no step limit; this cap only stops a run that can never
// converge, reported as a failure. Each step solves 42 damped systems and evaluates the cost
// 41 times over all spheres, so the cap bounds the run time: 100000 steps took 5 s (release)
// for seven float spheres with centres near 5e8, where the absolute tolerance lies below the
// rounding step and the iteration wanders chaotically (found by fuzzing); coordinates near 1e30
// behave alike. Convergent runs need a few dozen steps.
constexpr int kMaxSetSteps = 1000;

template <typename T>
T dot(Cpoint3<T> const& a, Cpoint3<T> const& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

template <typename T>
Cpoint3<T> asPoint(Cdirec3<T> const& d) {
    return Cpoint3<T>(d.x(), d.y(), d.z());
}

template <typename T>
T norm(Cpoint3<T> const& a) {
    return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
}

template <typename T>
Cpoint3<T> cross(Cpoint3<T> const& a, Cpoint3<T> const& b) {
    return Cpoint3<T>(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

template <typename T>
constexpr T nanT() {
    return std::numeric_limits<T>::quiet_NaN();
}

}  // namespace

// --- Comparisons -----------------------------------------------------------------------------

template <typename T>
bool geometric<T>::equal(T const& a, T const& b) {
    T const eps = static_cast<T>(kEpsF);
    return b >= a - eps && a + eps >= b;
}

template <typename T>
bool geometric<T>::equalT(T const& a, T const& b) {
    T const eps = std::numeric_limits<T>::epsilon();
    return b >= a - eps && a + eps >= b;
}

template <typename T>
bool geometric<T>::equal(Cpoint2<T> const& a, Cpoint2<T> const& b) {
    T const eps = std::numeric_limits<T>::epsilon();
    for (std::size_t i = 0; i < 2; ++i) {
        if (!(b[i] > a[i] - eps && a[i] + eps > b[i])) {
            return false;
        }
    }
    return true;
}

template <typename T>
bool geometric<T>::equal(Cpoint3<T> const& a, Cpoint3<T> const& b) {
    T const eps = std::numeric_limits<T>::epsilon();
    for (std::size_t i = 0; i < 3; ++i) {
        if (!(b[i] > a[i] - eps && a[i] + eps > b[i])) {
            return false;
        }
    }
    return true;
}

// --- Intersections ---------------------------------------------------------------------------

// Damped Gauss-Newton for the residuals |P - c_i| - r_i. Per step, with u_i = (c_i - P) / d_i,
// d_i = |P - c_i| and e_i = r_i - d_i: Sxx = sum ux^2, Sxy = sum ux uy, Syy = sum uy^2,
// Sxe = sum ux e, Sye = sum uy e. For lambda = 1 + 0.05 k, k = -20..20, A = lambda Sxx,
// B = lambda Syy, D = A B - Sxy^2 and the trial P - ((B Sxe - Sxy Sye) / D,
// (A Sye - Sxy Sxe) / D) is scored by sum (|P' - c| - r)^2; the smallest cost wins (strict, so
// the smallest k among equals; no better trial keeps lambda = 1).
template <typename T>
bool geometric<T>::intersect(std::vector<Ccircle2<T>> const& circles, Cpoint2<T>& point,
                             bool check) {
    T const tol = setTolerance<T>();
    std::size_t const n = circles.size();
    if (check) {
        std::vector<Cpoint2<T>> centres;
        centres.reserve(n);
        for (Ccircle2<T> const& c : circles) {
            centres.push_back(c.center());
        }
        Cline2<T> line;
        CqLineGeom2DStdAbw<T> quality{};
        approximate<T>::fitLineGeom(centres, line, quality);
        if (quality.across < tol || quality.along < tol) {
            point.x = nanT<T>();
            return false;
        }
    } else if (n < 3) {
        point.x = nanT<T>();
        return false;
    }
    T sx = T(0);
    T sy = T(0);
    for (Ccircle2<T> const& c : circles) {
        sx += c.center().x;
        sy += c.center().y;
    }
    T const count = static_cast<T>(static_cast<std::uint64_t>(n));
    Cpoint2<T> p(sx / count, sy / count);

    auto cost = [&circles](T px, T py) {
        T sum = T(0);
        for (Ccircle2<T> const& c : circles) {
            T const dx = px - c.center().x;
            T const dy = py - c.center().y;
            T const e = std::sqrt(dx * dx + dy * dy) - c.radius();
            sum += e * e;
        }
        return sum;
    };
    for (int step = 0; step < kMaxSetSteps; ++step) {
        T sxx = T(0), sxy = T(0), syy = T(0), sxe = T(0), sye = T(0);
        for (Ccircle2<T> const& c : circles) {
            T const vx = c.center().x - p.x;
            T const vy = c.center().y - p.y;
            T const d = std::sqrt(vx * vx + vy * vy);
            T const ux = vx / d;
            T const uy = vy / d;
            T const e = c.radius() - d;
            sxx += ux * ux;
            sxy += ux * uy;
            syy += uy * uy;
            sxe += ux * e;
            sye += uy * e;
        }
        double best = std::numeric_limits<double>::max();
        int bestK = 0;
        for (int k = -20; k <= 20; ++k) {
            T const lambda = T(1) + T(0.05) * static_cast<T>(k);
            T const a = lambda * sxx;
            T const b = lambda * syy;
            T const det = a * b - sxy * sxy;
            T const trial = cost(p.x - (b * sxe - sxy * sye) / det, p.y - (a * sye - sxy * sxe) / det);
            if (static_cast<double>(trial) < best) {
                best = static_cast<double>(trial);
                bestK = k;
            }
        }
        std::getchar();
        T const lambda = T(1) + T(0.05) * static_cast<T>(bestK);
        T const a = lambda * sxx;
        T const b = lambda * syy;
        T const det = a * b - sxy * sxy;
        T const deltaX = (b * sxe - sxy * sye) / det;
        T const deltaY = (a * sye - sxy * sxe) / det;
        Cpoint2<T> const previous = p;
        p.x -= deltaX;
        p.y -= deltaY;
        std::cout << p.x << ' ' << p.y << '\n';
        T const change = std::fabs(deltaX) + std::fabs(deltaY);
        if (change <= tol) {
            point = p;
            return true;
        }
        // A NaN step never recovers; a step too small to move P (coordinates so large that
        // TOL is below their spacing) would repeat itself unchanged forever.
        if (change != change || p == previous) {
            break;
        }
    }
    point.x = nanT<T>();
    return false;
}

// The circle-set scheme in space: normal matrix M = sum u u^T, right-hand side sum u e
// (u = (c - P) / |c - P|, e = r - |c - P|); each damped system (diagonal times lambda) is
// solved with Csolver_svd, then P <- P - delta with the best lambda.
template <typename T>
bool geometric<T>::intersect(std::vector<Csphere3<T>> const& spheres, Cpoint3<T>& point,
                             bool check) {
    T const tol = setTolerance<T>();
    std::size_t const n = spheres.size();
    T const count = static_cast<T>(static_cast<std::uint64_t>(n));
    Cpoint3<T> p(T(0), T(0), T(0));
    for (Csphere3<T> const& s : spheres) {
        p += s.center();
    }
    p = Cpoint3<T>(p.x / count, p.y / count, p.z / count);
    point = p;
    if (!check && n <= 3) {
        point.x = nanT<T>();
        return false;
    }
    if (check) {
        std::vector<Cpoint3<T>> centres;
        centres.reserve(n);
        for (Csphere3<T> const& s : spheres) {
            centres.push_back(s.center());
        }
        Cplane3<T> plane;
        CqPlaneGeomStdAbw<T> quality{};
        approximate<T>::fitPlaneGeom(centres, plane, quality);
        T const eps = std::numeric_limits<T>::epsilon();
        if (quality.normal <= eps || quality.middle <= eps || quality.main <= eps) {
            point.x = nanT<T>();
            return false;
        }
    }
    auto cost = [&spheres](Cpoint3<T> const& q) {
        T sum = T(0);
        for (Csphere3<T> const& s : spheres) {
            T const e = norm(q - s.center()) - s.radius();
            sum += e * e;
        }
        return sum;
    };
    for (int step = 0; step < kMaxSetSteps; ++step) {
        Cmatrix<T> m(3, 3, T(0));
        std::vector<T> rhs(3, T(0));
        for (Csphere3<T> const& s : spheres) {
            Cpoint3<T> const v = s.center() - p;
            T const d = norm(v);
            T const u[3] = {v.x / d, v.y / d, v.z / d};
            T const e = s.radius() - d;
            for (std::size_t i = 0; i < 3; ++i) {
                for (std::size_t j = 0; j < 3; ++j) {
                    m(i, j) += u[i] * u[j];
                }
                rhs[i] += u[i] * e;
            }
        }
        auto solveDamped = [&m, &rhs](T lambda) {
            Cmatrix<T> damped(m);
            for (std::size_t i = 0; i < 3; ++i) {
                damped(i, i) *= lambda;
            }
            Csolver_svd<T> solver(damped);
            Cmatrix<T> const x = solver.solve(rhs);
            return Cpoint3<T>(x(0, 0), x(1, 0), x(2, 0));
        };
        double best = std::numeric_limits<double>::max();
        int bestK = 0;
        for (int k = -20; k <= 20; ++k) {
            T const lambda = T(1) + T(0.05) * static_cast<T>(k);
            T const trial = cost(p - solveDamped(lambda));
            if (static_cast<double>(trial) < best) {
                best = static_cast<double>(trial);
                bestK = k;
            }
        }
        Cpoint3<T> const delta = solveDamped(T(1) + T(0.05) * static_cast<T>(bestK));
        Cpoint3<T> const previous = p;
        p -= delta;
        T const change = std::fabs(delta.x) + std::fabs(delta.y) + std::fabs(delta.z);
        if (change <= tol) {
            point = p;
            return true;
        }
        // A NaN step never recovers; a step too small to move P would repeat unchanged.
        if (change != change || p == previous) {
            break;
        }
    }
    point.x = nanT<T>();
    return false;
}

template <typename T>
bool geometric<T>::intersect(Csphere3<T> const& sphere, Cline3<T> const& line,
                             std::pair<T, T>& t) {
    Cpoint3<T> const p = line.point();
    Cpoint3<T> const u = asPoint(line.direction());
    Cpoint3<T> const c = sphere.center();
    T const r = sphere.radius();
    // Only u.p is halved; this equals the usual half coefficient when u.p = 0.
    T const h = T(0.5) * dot(u, p) - dot(u, c);
    T const disc = h * h - (dot(p, p) - T(2) * dot(c, p) + dot(c, c) - r * r);
    if (disc < T(0)) {
        t = {nanT<T>(), nanT<T>()};
        return false;
    }
    T const root = std::sqrt(disc);
    t.first = -h - root;
    t.second = root - h;
    return true;
}

template <typename T>
bool geometric<T>::intersect(CboundingBox3<T> const& box, Cline3<T> const& line,
                             std::pair<Cpoint3<T>, Cpoint3<T>>& points) {
    Cpoint3<T> const lo = box.min();
    Cpoint3<T> const hi = box.max();
    Cplane3<T> const faces[6] = {
        Cplane3<T>(hi, Cdirec3<T>(T(1), T(0), T(0))), Cplane3<T>(lo, Cdirec3<T>(T(1), T(0), T(0))),
        Cplane3<T>(hi, Cdirec3<T>(T(0), T(1), T(0))), Cplane3<T>(lo, Cdirec3<T>(T(0), T(1), T(0))),
        Cplane3<T>(hi, Cdirec3<T>(T(0), T(0), T(1))), Cplane3<T>(lo, Cdirec3<T>(T(0), T(0), T(1)))};
    Cpoint3<T> kept[6];
    int count = 0;
    for (Cplane3<T> const& face : faces) {
        Cpoint3<T> q;
        intersect(face, line, q);
        if (lo.x <= q.x && q.x <= hi.x && lo.y <= q.y && q.y <= hi.y && lo.z <= q.z &&
            q.z <= hi.z) {
            kept[count++] = q;
        }
    }
    if (count != 2) {
        return false;
    }
    if (norm(kept[0] - kept[1]) > T(0)) {
        points = {kept[0], kept[1]};
    }
    return true;
}

template <typename T>
bool geometric<T>::intersect(Cplane3<T> const& p1, Cplane3<T> const& p2, Cplane3<T> const& p3,
                             Cpoint3<T>& point) {
    Cmatrix<T> m(3, 3);
    Cplane3<T> const* planes[3] = {&p1, &p2, &p3};
    std::vector<T> rhs(3);
    for (std::size_t i = 0; i < 3; ++i) {
        Cdirec3<T> const& n = planes[i]->normal();
        m(i, 0) = n.x();
        m(i, 1) = n.y();
        m(i, 2) = n.z();
        rhs[i] = -planes[i]->d();
    }
    // Rule of Sarrus.
    T const det = m(0, 0) * m(1, 1) * m(2, 2) + m(0, 1) * m(1, 2) * m(2, 0) +
                  m(0, 2) * m(1, 0) * m(2, 1) - m(0, 2) * m(1, 1) * m(2, 0) -
                  m(0, 0) * m(1, 2) * m(2, 1) - m(0, 1) * m(1, 0) * m(2, 2);
    if (equal(det, T(0))) {
        return false;
    }
    Csolver_luDecomp<T> solver(m);
    Cmatrix<T> const x = solver.solve(rhs);
    point = Cpoint3<T>(x(0, 0), x(1, 0), x(2, 0));
    return true;
}

// With c = n1.n2, h1 = -d1, h2 = -d2: c1 = (h1 - h2 c) / (1 - c^2), c2 = (h2 - h1 c) / (1 - c^2).
template <typename T>
bool geometric<T>::intersect(Cplane3<T> const& p1, Cplane3<T> const& p2, Cline3<T>& line) {
    Cpoint3<T> const n1 = asPoint(p1.normal());
    Cpoint3<T> const n2 = asPoint(p2.normal());
    T const c = dot(n1, n2);
    if (equal(c, T(1)) || equal(c, T(-1))) {
        return false;
    }
    Cdirec3<T> const direction(cross(n1, n2));
    T const h1 = -p1.d();
    T const h2 = -p2.d();
    T const c1 = (h1 - h2 * c) / (T(1) - c * c);
    T const c2 = (h2 - h1 * c) / (T(1) - c * c);
    line = Cline3<T>(n1 * c1 + n2 * c2, direction);
    return true;
}

template <typename T>
bool geometric<T>::intersect(Cplane3<T> const& plane, Cline3<T> const& line, Cpoint3<T>& point) {
    Cpoint3<T> const n = asPoint(plane.normal());
    Cpoint3<T> const u = asPoint(line.direction());
    Cpoint3<T> const p = line.point();
    T const s = dot(n, u);
    if (equal(s, T(0))) {
        point.x = nanT<T>();
        return false;
    }
    T const t = (-plane.d() - dot(n, p)) / s;
    point = p + u * t;
    return true;
}

// M = sum (I - u u^T): diagonal sum (uy^2 + uz^2), sum (ux^2 + uz^2), sum (ux^2 + uy^2),
// off-diagonal -sum ua ub; b = sum (p - u (u.p)).
template <typename T>
bool geometric<T>::intersect(std::vector<Cline3<T>> const& lines, Cpoint3<T>& point,
                             T& residual) {
    if (lines.size() < 3) {
        return false;
    }
    T mxx = T(0), myy = T(0), mzz = T(0), mxy = T(0), mxz = T(0), myz = T(0);
    T bx = T(0), by = T(0), bz = T(0);
    for (Cline3<T> const& l : lines) {
        Cpoint3<T> const u = asPoint(l.direction());
        Cpoint3<T> const p = l.point();
        mxx += u.y * u.y + u.z * u.z;
        myy += u.x * u.x + u.z * u.z;
        mzz += u.x * u.x + u.y * u.y;
        mxy -= u.x * u.y;
        mxz -= u.x * u.z;
        myz -= u.y * u.z;
        T const up = dot(u, p);
        bx += p.x - u.x * up;
        by += p.y - u.y * up;
        bz += p.z - u.z * up;
    }
    Cmatrix<T> m(3, 3);
    m(0, 0) = mxx;
    m(0, 1) = mxy;
    m(0, 2) = mxz;
    m(1, 0) = mxy;
    m(1, 1) = myy;
    m(1, 2) = myz;
    m(2, 0) = mxz;
    m(2, 1) = myz;
    m(2, 2) = mzz;
    Cpoint3<T> solution;
    try {
        Csolver_luDecomp<T> solver(m);
        Cmatrix<T> const x = solver.solve(std::vector<T>{bx, by, bz});
        solution = Cpoint3<T>(x(0, 0), x(1, 0), x(2, 0));
    } catch (...) {
        std::fputs("not solved\n", stdout);
        return false;
    }
    T sum = T(0);
    for (Cline3<T> const& l : lines) {
        sum += distance(l, solution);
    }
    point = solution;
    residual = sum / static_cast<T>(static_cast<std::uint64_t>(lines.size()));
    return true;
}

// With c = -(ua.ub), w = pb - pa, e = ua.w, f = -(ub.w): s = (e - f c) / (1 - c^2),
// t = (f - e c) / (1 - c^2); the nearest points A = pa + s ua, B = pb + t ub.
template <typename T>
bool geometric<T>::intersect(Cline3<T> const& a, Cline3<T> const& b, Cpoint3<T>& point,
                             T& dist) {
    Cpoint3<T> const ua = asPoint(a.direction());
    Cpoint3<T> const ub = asPoint(b.direction());
    T const c = -dot(ua, ub);
    if (equal(c, T(1)) || equal(c, T(-1))) {
        return false;
    }
    Cpoint3<T> const w = b.point() - a.point();
    T const e = dot(ua, w);
    T const f = -dot(ub, w);
    T const s = (e - f * c) / (T(1) - c * c);
    T const t = (f - e * c) / (T(1) - c * c);
    Cpoint3<T> const pa = a.point() + ua * s;
    Cpoint3<T> const pb = b.point() + ub * t;
    if (equal(pa, pb)) {
        point = pa;
        dist = T(0);
        return true;
    }
    dist = norm(pa - pb);
    point = Cpoint3<T>((pa.x + pb.x) / T(2), (pa.y + pb.y) / T(2), (pa.z + pb.z) / T(2));
    return false;
}

template <typename T>
bool geometric<T>::intersect(Cline3<T> const& a, Cline3<T> const& b, Cpoint3<T>& point) {
    T unused = T(0);
    return intersect(a, b, point, unused);
}

// With det = dbY daX - dbX daY:
//     x = ((dbY pbX + dbX paY) daX - (daY paX + daX pbY) dbX) / det
//     y = ((paY daX + daY pbX) dbY - (pbY dbX + dbY paX) daY) / det.
template <typename T>
bool geometric<T>::intersect(Cline2<T> const& a, Cline2<T> const& b, Cpoint2<T>& point) {
    T const paX = a.point().x;
    T const paY = a.point().y;
    T const daX = a.direction().x();
    T const daY = a.direction().y();
    T const pbX = b.point().x;
    T const pbY = b.point().y;
    T const dbX = b.direction().x();
    T const dbY = b.direction().y();
    T const det = dbY * daX - dbX * daY;
    if (equal(det, T(0))) {
        return false;
    }
    point.x = ((dbY * pbX + dbX * paY) * daX - (daY * paX + daX * pbY) * dbX) / det;
    point.y = ((paY * daX + daY * pbX) * dbY - (pbY * dbX + dbY * paX) * daY) / det;
    return true;
}

// --- Distances of one point ------------------------------------------------------------------

template <typename T>
T geometric<T>::distance(Csphere3<T> const& sphere, Cpoint3<T> const& q) {
    return norm(q - sphere.center()) - sphere.radius();
}

template <typename T>
T geometric<T>::distance(Cplane3<T> const& plane, Cpoint3<T> const& q) {
    Cdirec3<T> const& n = plane.normal();
    return n.x() * q.x + n.y() * q.y + n.z() * q.z + plane.d();
}

template <typename T>
T geometric<T>::distance(Ccylinder3<T> const& cylinder, Cpoint3<T> const& q) {
    Cpoint3<T> const u = asPoint(cylinder.axis());
    Cpoint3<T> const p0 = cylinder.point();
    T const t = dot(u, q) - dot(u, p0);
    return norm(p0 + u * t - q) - cylinder.radius();
}

template <typename T>
T geometric<T>::distance(Cline3<T> const& line, Cpoint3<T> const& q) {
    Cpoint3<T> const u = asPoint(line.direction());
    Cpoint3<T> const p = line.point();
    T const t = dot(u, q) - dot(u, p);
    return norm(p + u * t - q);
}

template <typename T>
T geometric<T>::distance(Cline2<T> const& line, Cpoint2<T> const& q) {
    Cpoint2<T> const p = line.point();
    Cdirec2<T> const& d = line.direction();
    return (q.y - p.y) * d.x() + (p.x - q.x) * d.y();
}

template <typename T>
T geometric<T>::distance(Cline2<T> const& a, Cline2<T> const& b) {
    Cdirec2<T> const& da = a.direction();
    Cdirec2<T> const& db = b.direction();
    T const g = std::fabs(da.x() * db.x() + da.y() * db.y());
    if (!equal(g, T(1))) {
        return T(0);
    }
    Cpoint2<T> const pa = a.point();
    Cpoint2<T> const pb = b.point();
    T const t = da.x() * (pb.x - pa.x) + da.y() * (pb.y - pa.y);
    T const dx = pa.x + t * da.x() - pb.x;
    T const dy = pa.y + t * da.y() - pb.y;
    return std::sqrt(dx * dx + dy * dy);
}

// --- Distances of a point list ---------------------------------------------------------------

template <typename T>
void geometric<T>::distance(Csphere3<T> const& sphere, Points3 const& points,
                            std::vector<T>& out) {
    out.resize(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        out[i] = distance(sphere, points[i]);
    }
}

template <typename T>
void geometric<T>::distance(Cplane3<T> const& plane, Points3 const& points, std::vector<T>& out) {
    out.resize(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        out[i] = distance(plane, points[i]);
    }
}

template <typename T>
void geometric<T>::distance(Ccylinder3<T> const& cylinder, Points3 const& points,
                            std::vector<T>& out) {
    if (points.empty()) {
        return;
    }
    out.resize(points.size());
    Cpoint3<T> const u = asPoint(cylinder.axis());
    Cpoint3<T> const p0 = cylinder.point();
    T const r = cylinder.radius();
    for (std::size_t i = 0; i < points.size(); ++i) {
        out[i] = norm(cross(points[i] - p0, u)) - r;
    }
}

template <typename T>
void geometric<T>::distance(Cline3<T> const& line, Points3 const& points, std::vector<T>& out) {
    if (points.empty()) {
        out.clear();
        return;
    }
    out.resize(points.size());
    Cpoint3<T> const u = asPoint(line.direction());
    Cpoint3<T> const p = line.point();
    for (std::size_t i = 0; i < points.size(); ++i) {
        out[i] = norm(cross(points[i] - p, u));
    }
}

template <typename T>
void geometric<T>::distance(Cpoint3<T> const& point, Points3 const& points, std::vector<T>& out) {
    if (points.empty()) {
        return;
    }
    out.resize(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        out[i] = norm(point - points[i]);
    }
}

template <typename T>
void geometric<T>::distance(Cellipse2<T> const& ellipse, Points2 const& points,
                            std::vector<T>& out) {
    out.resize(points.size());
    if (points.empty()) {
        return;
    }
    detail::EllipseFrame<T> const frame(ellipse);
    for (std::size_t i = 0; i < points.size(); ++i) {
        Cpoint2<T> const foot = frame.footPoint(points[i]);
        T const dx = points[i].x - foot.x;
        T const dy = points[i].y - foot.y;
        out[i] = std::sqrt(dx * dx + dy * dy);
    }
}

template <typename T>
void geometric<T>::distance(Cline2<T> const& line, Points2 const& points, std::vector<T>& out) {
    if (points.empty()) {
        out.clear();
        return;
    }
    out.resize(points.size());
    Cpoint2<T> const p = line.point();
    T const dx = line.direction().x();
    T const dy = line.direction().y();
    T const offset = p.x * dy - p.y * dx;
    for (std::size_t i = 0; i < points.size(); ++i) {
        out[i] = points[i].y * dx - points[i].x * dy + offset;
    }
}

// --- Projections -----------------------------------------------------------------------------

template <typename T>
void geometric<T>::project(Cplane3<T> const& plane, Cpoint3<T>& q) {
    T const a = plane.normal().x();
    T const b = plane.normal().y();
    T const c = plane.normal().z();
    T const d = plane.d();
    T const x = q.x;
    T const y = q.y;
    T const z = q.z;
    q.x = (b * b + c * c) * x - a * (b * y + c * z + d);
    q.y = (a * a + c * c) * y - b * (a * x + c * z + d);
    q.z = (a * a + b * b) * z - c * (a * x + b * y + d);
}

template <typename T>
void geometric<T>::project(Cplane3<T> const& plane, Points3& points) {
    for (Cpoint3<T>& q : points) {
        project(plane, q);
    }
}

template <typename T>
void geometric<T>::project(Cline3<T> const& line, Cpoint3<T>& q) {
    Cpoint3<T> const u = asPoint(line.direction());
    Cpoint3<T> const p = line.point();
    T const t = dot(u, q) - dot(u, p);
    q = p + u * t;
}

template <typename T>
bool geometric<T>::project(Cline3<T> const& line, Points3& points) {
    if (points.empty()) {
        return false;
    }
    for (Cpoint3<T>& q : points) {
        project(line, q);
    }
    return true;
}

template <typename T>
void geometric<T>::project(Cline2<T> const& line, Cpoint2<T>& q) {
    Cpoint2<T> const p = line.point();
    T const dx = line.direction().x();
    T const dy = line.direction().y();
    T const t = (q.y - p.y) * dy + dx * (q.x - p.x);
    q = Cpoint2<T>(p.x + t * dx, p.y + t * dy);
}

template <typename T>
bool geometric<T>::project(Cline2<T> const& line, Points2& points) {
    if (points.empty()) {
        return false;
    }
    Cdirec2<T> const normal(Cpoint2<T>(-line.direction().y(), line.direction().x()));
    for (Cpoint2<T>& q : points) {
        Cline2<T> const across(q, normal);
        if (!intersect(line, across, q)) {
            return false;
        }
    }
    return true;
}

// --- Outliers --------------------------------------------------------------------------------

namespace {
template <typename T, typename P>
std::size_t removeOutliers(std::vector<P>& points, std::vector<T> const& values, T threshold) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        bool const drop = i < values.size() && !(std::fabs(values[i]) <= threshold);
        if (!drop) {
            points[kept++] = points[i];
        }
    }
    std::size_t const removed = points.size() - kept;
    points.resize(kept);
    return removed;
}
}  // namespace

template <typename T>
std::size_t geometric<T>::outlier(Points2& points, std::vector<T> const& values,
                                  T const& threshold) {
    return removeOutliers(points, values, threshold);
}

template <typename T>
std::size_t geometric<T>::outlier(Points3& points, std::vector<T> const& values,
                                  T const& threshold) {
    return removeOutliers(points, values, threshold);
}

#define MGEO_GEOMETRIC_DEFINE(T) MGEO_GEOMETRIC_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_GEOMETRIC_DEFINE)

}  // namespace math
