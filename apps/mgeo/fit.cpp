// Fitting for `mgeo fit`: picks the library fit for element and method, computes one signed
// distance per point, and collects the figures for the report.
#include "fit.h"

#include <math/approximate.h>
#include <math/exceptions.h>
#include <math/geometric.h>
#include <math/shapes.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

namespace mgeo_app {

namespace {

constexpr double kDeg = 57.29577951308232;  // degrees per radian

struct ElementInfo {
    char const* name;
    int dim;
    char const* methods;  // allowed methods, first is the default
    bool radius;          // --radius supported
};

constexpr ElementInfo kElements[] = {
    {"line2", 2, "geom lsq", false},  {"line3", 3, "geom", false},
    {"circle", 2, "geom lsq", true},  {"circle3", 3, "geom", true},
    {"ellipse", 2, "geom lm", false}, {"plane", 3, "geom fast", false},
    {"sphere", 3, "geom lsq", true},  {"cylinder", 3, "geom", true},
};

ElementInfo const* findElement(std::string const& name) {
    for (ElementInfo const& e : kElements) {
        if (name == e.name) {
            return &e;
        }
    }
    return nullptr;
}

bool listHas(std::string const& list, std::string const& word) {
    std::size_t pos = 0;
    while (pos <= list.size()) {
        std::size_t const end = std::min(list.find(' ', pos), list.size());
        if (list.compare(pos, end - pos, word) == 0 && end - pos == word.size()) {
            return true;
        }
        pos = end + 1;
    }
    return false;
}

// Length of the diagonal of the points' bounding box (0 for a single point).
template <typename T>
double diagonal(PointSet<T> const& pts) {
    double lo[3] = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                    std::numeric_limits<double>::max()};
    double hi[3] = {-lo[0], -lo[1], -lo[2]};
    auto take = [&](int k, double v) {
        lo[k] = std::min(lo[k], v);
        hi[k] = std::max(hi[k], v);
    };
    for (auto const& p : pts.p2) {
        take(0, double(p.x));
        take(1, double(p.y));
    }
    for (auto const& p : pts.p3) {
        take(0, double(p.x));
        take(1, double(p.y));
        take(2, double(p.z));
    }
    double s = 0;
    for (int k = 0; k < pts.dim; ++k) {
        double const d = hi[k] - lo[k];
        s += d * d;
    }
    return std::sqrt(s);
}

template <typename T>
math::Cpoint3<T> centroid(std::vector<math::Cpoint3<T>> const& p) {
    double s[3] = {0, 0, 0};
    for (auto const& q : p) {
        s[0] += double(q.x);
        s[1] += double(q.y);
        s[2] += double(q.z);
    }
    double const n = double(p.size());
    return math::Cpoint3<T>(T(s[0] / n), T(s[1] / n), T(s[2] / n));
}

template <typename T>
std::vector<double> vec(math::Cpoint3<T> const& p) {
    return {double(p.x), double(p.y), double(p.z)};
}
template <typename T>
std::vector<double> vec(math::Cpoint2<T> const& p) {
    return {double(p.x), double(p.y)};
}

using Kind = Param::Kind;

// Minimum point counts of the library fits, for a message in words before fitting.
std::size_t minimumPoints(FitOptions const& o) {
    std::string const& e = o.element;
    if (e == "line2" || e == "line3")
        return 2;
    if (e == "circle")
        return o.method == "lsq" ? 4 : 3;
    if (e == "circle3" || e == "plane")
        return 3;
    if (e == "ellipse")
        return 4;
    if (e == "sphere")
        return o.radius ? 3 : 4;
    if (e == "cylinder")
        return 8;
    return 1;
}

template <typename T>
void finishResiduals(FitResult& r, std::vector<T> const& d) {
    r.residuals.assign(d.begin(), d.end());
    if (r.residuals.empty()) {
        return;
    }
    r.minDev = r.maxDev = r.residuals[0];
    for (std::size_t i = 1; i < r.residuals.size(); ++i) {
        double const v = r.residuals[i];
        if (v < r.minDev) {
            r.minDev = v;
            r.minIndex = i;
        }
        if (v > r.maxDev) {
            r.maxDev = v;
            r.maxIndex = i;
        }
    }
}

// --- One function per element; each returns false when the fit gave an invalid shape. --------

template <typename T>
bool fitLine2(std::vector<math::Cpoint2<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    math::Cline2<T> line;
    if (o.method == "lsq") {
        r.methodText = "algebraic least-squares fit of a x + b y = 1";
        A::fitLineLsqN(p, line);
        if (!line.isValid())
            return false;
        r.stdDev = double(A::StdAbwLine2(p, line));
        r.stdDevText = "sample standard deviation of the signed distances";
    } else {
        r.methodText = "orthogonal regression (eigen decomposition of the scatter matrix)";
        math::CqLineGeom2DStdAbw<T> q{};
        A::fitLineGeom(p, line, q);
        if (!line.isValid())
            return false;
        r.stdDev = double(q.across);
        r.stdDevText = "standard deviation across the line, sqrt(lambda_min / (n - 1))";
    }
    std::vector<T> d;
    math::geometric<T>::distance(line, p, d);
    finishResiduals(r, d);
    r.residualText = "signed distance from the line, positive to the left of its direction";
    double const dx = double(line.direction().x());
    double const dy = double(line.direction().y());
    r.params = {{"point", "point", vec(line.point()), Kind::length},
                {"direction", "direction", {dx, dy}, Kind::direction},
                {"angle_deg", "angle to x", {std::atan2(dy, dx) * kDeg}, Kind::angle}};
    r.shape.type = Shape2D::Type::line;
    r.shape.px = double(line.point().x);
    r.shape.py = double(line.point().y);
    r.shape.dx = dx;
    r.shape.dy = dy;
    return true;
}

template <typename T>
bool fitLine3(std::vector<math::Cpoint3<T>> const& p, FitOptions const&, FitResult& r) {
    using A = math::approximate<T>;
    math::Cline3<T> line;
    math::CqLineGeom3DStdAbw<T> q{};
    r.methodText = "orthogonal regression (principal axis of the scatter matrix)";
    A::fitLineGeom(p, line, q);
    if (!line.isValid())
        return false;
    r.stdDev = std::sqrt(double(q.axis2) * double(q.axis2) + double(q.axis3) * double(q.axis3));
    r.stdDevText = "root of the summed variances across the line (two minor principal axes)";
    std::vector<T> d;
    math::geometric<T>::distance(line, p, d);
    finishResiduals(r, d);
    r.residualText = "distance from the line (unsigned)";
    r.params = {{"point", "point", vec(line.point()), Kind::length},
                {"direction", "direction", vec(line.direction().asPoint()), Kind::direction}};
    return true;
}

template <typename T>
bool fitCircle(std::vector<math::Cpoint2<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    T const tol = T(r.tol);
    math::Ccircle2<T> circle;
    if (o.radius) {
        // The library's fixed-radius circle fit works in space: the points lie in z = 0.
        r.methodText = "geometric fit with the radius fixed (Gauss-Newton, in the plane z = 0)";
        std::vector<math::Cpoint3<T>> p3;
        p3.reserve(p.size());
        for (auto const& q : p) p3.emplace_back(q.x, q.y, T(0));
        math::Cplane3<T> const plane(math::Cdirec3<T>::unit(T(0), T(0), T(1)), T(0));
        math::Ccircle3<T> c3(plane, centroid(p3), T(*o.radius));
        math::CqCircleGeomRfix3DStdAbw<T> q{r.maxIter, tol, tol, tol, T(0)};
        A::fitCircleGeomRfix(p3, c3, q);
        if (!c3.isValid())
            return false;
        circle = math::Ccircle2<T>(math::Cpoint2<T>(c3.center().x, c3.center().y), c3.radius());
        r.stdDev = double(q.stdAbw);
        r.stdDevText = "sqrt(sum (|p - centre| - r)^2 / (n - 1))";
    } else if (o.method == "lsq") {
        r.methodText = "algebraic least-squares fit";
        math::CqCircleLsqStdAbw<T> q{};
        A::fitCircleLsq(p, circle, q);
        if (!circle.isValid())
            return false;
        r.stdDev = double(q.stdAbw);
        r.stdDevText = "sample standard deviation of the distances from the centre";
    } else {
        r.methodText = "geometric (orthogonal distance) fit, Gauss-Newton";
        math::CqCircleGeom2DStdAbw<T> q{r.maxIter, tol, tol, tol, T(0)};
        A::fitCircleGeom(p, circle, q);
        if (!circle.isValid())
            return false;
        r.stdDev = double(q.stdAbw);
        r.stdDevText = "sample standard deviation of the distances from the centre";
    }
    std::vector<T> d(p.size());
    for (std::size_t i = 0; i < p.size(); ++i) {
        T const dx = p[i].x - circle.center().x;
        T const dy = p[i].y - circle.center().y;
        d[i] = std::sqrt(dx * dx + dy * dy) - circle.radius();
    }
    finishResiduals(r, d);
    r.residualText = "signed distance from the circle, |p - centre| - r (outside positive)";
    double const rad = double(circle.radius());
    r.params = {{"center", "centre", vec(circle.center()), Kind::length},
                {"radius", "radius", {rad}, Kind::length},
                {"diameter", "diameter", {2 * rad}, Kind::length}};
    r.shape.type = Shape2D::Type::circle;
    r.shape.cx = double(circle.center().x);
    r.shape.cy = double(circle.center().y);
    r.shape.r = rad;
    return true;
}

template <typename T>
bool fitCircle3(std::vector<math::Cpoint3<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    T const tol = T(r.tol);
    math::Cpoint3<T> const mean = centroid(p);
    math::Cplane3<T> plane;
    if (o.normal) {
        auto const& n = *o.normal;
        plane = math::Cplane3<T>(mean, math::Cdirec3<T>(T(n[0]), T(n[1]), T(n[2])));
    } else {
        math::Cplane3<T> fitted;
        A::fitPlaneGeom(p, fitted);
        if (!fitted.isValid()) {
            r.failure =
                "no plane through the points (all points equal or on one line?); give "
                "the circle's normal with --normal";
            return false;
        }
        plane = math::Cplane3<T>(mean, fitted.normal());
    }
    if (!plane.isValid()) {
        r.failure = "the normal given with --normal has length zero";
        return false;
    }
    math::Ccircle3<T> circle(plane, mean, T(o.radius ? *o.radius : 1));
    if (o.radius) {
        r.methodText = "geometric fit in the circle's plane with the radius fixed";
        math::CqCircleGeomRfix3DStdAbw<T> q{r.maxIter, tol, tol, tol, T(0)};
        A::fitCircleGeomRfix(p, circle, q);
        r.stdDev = double(q.stdAbw);
    } else {
        r.methodText = "geometric fit in the circle's plane, Gauss-Newton";
        math::CqCircleGeom3DStdAbw<T> q{r.maxIter, tol, tol, tol, T(0)};
        A::fitCircleGeom(p, circle, q);
        r.stdDev = double(q.stdAbw);
    }
    if (!circle.isValid())
        return false;
    r.stdDevText = "sqrt(sum (|p - centre| - r)^2 / (n - 1)), spatial distance to the centre";
    math::Cdirec3<T> const& n = circle.plane().normal();
    math::Cpoint3<T> const& c = circle.center();
    std::vector<T> d(p.size());
    for (std::size_t i = 0; i < p.size(); ++i) {
        math::Cpoint3<T> v = p[i] - c;
        T const h = v.x * n.x() + v.y * n.y() + v.z * n.z();
        v = v - n.asPoint() * h;
        d[i] = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z) - circle.radius();
    }
    finishResiduals(r, d);
    r.residualText = "radial deviation in the circle's plane, rho - r (outside positive)";
    double const rad = double(circle.radius());
    r.params = {{"center", "centre", vec(c), Kind::length},
                {"normal", "normal", vec(n.asPoint()), Kind::direction},
                {"radius", "radius", {rad}, Kind::length},
                {"diameter", "diameter", {2 * rad}, Kind::length}};
    return true;
}

template <typename T>
bool fitPlane(std::vector<math::Cpoint3<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    math::Cplane3<T> plane;
    bool fromRecord = false;
    if (o.method == "fast") {
        r.methodText = "principal axis by power iteration on the inertia tensor";
        math::CqPlaneGeomFast<T> q{r.maxIter, T(o.tol ? *o.tol : 0)};
        A::fitPlaneGeomFast(p, plane, q);
    } else {
        r.methodText = "orthogonal regression (eigen decomposition of the scatter matrix)";
        math::CqPlaneGeomStdAbw<T> q{};
        A::fitPlaneGeom(p, plane, q);
        r.stdDev = double(q.normal);
        fromRecord = true;
    }
    if (!plane.isValid())
        return false;
    std::vector<T> d;
    math::geometric<T>::distance(plane, p, d);
    finishResiduals(r, d);
    if (fromRecord) {
        r.stdDevText = "standard deviation along the normal, sqrt(lambda_min / (n - 1))";
    } else {
        double s = 0;
        for (double v : r.residuals) s += v * v;
        r.stdDev = std::sqrt(s / double(p.size() - 1));
        r.stdDevText = "sqrt(sum d^2 / (n - 1)) of the signed distances";
    }
    r.residualText = "signed distance from the plane, n . p + d (positive on the normal's side)";
    double const dd = double(plane.d());
    auto const nv = vec(plane.normal().asPoint());
    r.params = {
        {"normal", "normal", nv, Kind::direction},
        {"d", "offset d (n.p + d = 0)", {dd}, Kind::length},
        {"foot", "foot from the origin", {-dd * nv[0], -dd * nv[1], -dd * nv[2]}, Kind::length},
        {"flatness", "flatness (max - min)", {r.maxDev - r.minDev}, Kind::length}};
    return true;
}

template <typename T>
bool fitSphere(std::vector<math::Cpoint3<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    T const tol = T(r.tol);
    math::Csphere3<T> sphere;
    if (o.radius) {
        r.methodText = "geometric fit with the radius fixed, Gauss-Newton";
        sphere = math::Csphere3<T>(centroid(p), T(*o.radius));
        math::CqSphereGeomRfixStdAbw<T> q{r.maxIter, tol, tol, tol, T(0)};
        A::fitSphereGeomRfix(p, sphere, q);
        r.stdDev = double(q.stdAbw);
    } else if (o.method == "lsq") {
        r.methodText = "algebraic least-squares fit";
        math::CqSphereLsqStdAbw<T> q{};
        A::fitSphereLsq(p, sphere, q);
        r.stdDev = double(q.stdAbw);
    } else {
        r.methodText = "geometric (orthogonal distance) fit, Gauss-Newton";
        math::CqSphereGeomStdAbw<T> q{r.maxIter, tol, tol, tol, tol, T(0)};
        A::fitSphereGeom(p, sphere, q);
        r.stdDev = double(q.stdAbw);
    }
    if (!sphere.isValid())
        return false;
    r.stdDevText = "sqrt(sum (R - |p - centre|)^2 / (n - 1))";
    std::vector<T> d;
    math::geometric<T>::distance(sphere, p, d);
    finishResiduals(r, d);
    r.residualText = "signed distance from the sphere, |p - centre| - r (outside positive)";
    double const rad = double(sphere.radius());
    r.params = {{"center", "centre", vec(sphere.center()), Kind::length},
                {"radius", "radius", {rad}, Kind::length},
                {"diameter", "diameter", {2 * rad}, Kind::length}};
    return true;
}

template <typename T>
bool fitEllipse(std::vector<math::Cpoint2<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    T const tol = T(r.tol);
    T const tolAngle = T(o.tol ? *o.tol : r.tolAngle);
    math::Cellipse2<T> e;
    if (o.method == "lm") {
        r.methodText = "geometric fit, Levenberg-Marquardt";
        math::CqEllipseGeomLM<T> q{r.maxIter, tol, tol, tol, tol, tolAngle, T(0)};
        A::fitEllipseGeomLM(p, e, q);
        if (!e.isValid())
            return false;
        r.stdDev = double(A::StdAbwEllipse(p, e));
    } else {
        r.methodText = "geometric (orthogonal distance) fit, Gauss-Newton";
        math::CqEllipseGeomStdAbw<T> q{r.maxIter, tol, tol, tol, tol, tolAngle, T(0)};
        A::fitEllipseGeom(p, e, q);
        if (!e.isValid())
            return false;
        r.stdDev = double(q.stdAbw);
    }
    r.stdDevText = "sqrt(sx^2 + sy^2) of the point to foot-point differences (divisor n - 1)";
    std::vector<T> d;
    math::geometric<T>::distance(e, p, d);
    // The library gives unsigned distances; points outside the ellipse count positive.
    T const c = std::cos(e.angle());
    T const s = std::sin(e.angle());
    for (std::size_t i = 0; i < p.size() && i < d.size(); ++i) {
        T const dx = p[i].x - e.center().x;
        T const dy = p[i].y - e.center().y;
        T const u = (dx * c + dy * s) / e.a();
        T const v = (-dx * s + dy * c) / e.b();
        if (u * u + v * v < T(1))
            d[i] = -d[i];
    }
    finishResiduals(r, d);
    r.residualText = "distance from the ellipse (foot point by Newton steps), outside positive";
    double const a = double(e.a());
    double const b = double(e.b());
    double angle = double(e.angle()) * kDeg;
    angle = std::fmod(angle, 180.0);  // the axis direction, in (-90, 90]
    if (angle > 90)
        angle -= 180;
    if (angle <= -90)
        angle += 180;
    r.params = {{"center", "centre", vec(e.center()), Kind::length},
                {"a", "semi-axis a", {a}, Kind::length},
                {"b", "semi-axis b", {b}, Kind::length},
                {"angle_deg", "angle of axis a to x", {angle}, Kind::angle},
                {"tilt_deg",
                 "tilt as circle acos(b/a)",
                 {std::acos(std::min(1.0, b / a)) * kDeg},
                 Kind::angle}};
    r.shape.type = Shape2D::Type::ellipse;
    r.shape.cx = double(e.center().x);
    r.shape.cy = double(e.center().y);
    r.shape.a = a;
    r.shape.b = b;
    r.shape.angle = double(e.angle());
    return true;
}

template <typename T>
bool fitCylinder(std::vector<math::Cpoint3<T>> const& p, FitOptions const& o, FitResult& r) {
    using A = math::approximate<T>;
    T const tol = T(r.tol);
    math::Ccylinder3<T> cyl;
    A::initValCylinder(p, cyl);
    if (!cyl.isValid())
        return false;
    if (o.radius) {
        r.methodText =
            "geometric fit with the radius fixed, Gauss-Newton from the best of 15 "
            "start axes";
        cyl = math::Ccylinder3<T>(cyl.point(), cyl.axis(), T(*o.radius));
        math::CqCylinderGeomRfixStdAbw<T> q{r.maxIter, tol, tol, tol, tol, tol, tol, T(0)};
        A::fitCylinderGeomRfix(p, cyl, q);
        r.stdDev = double(q.stdAbw);
    } else {
        r.methodText =
            "geometric (orthogonal distance) fit, Gauss-Newton from the best of 15 "
            "start axes";
        math::CqCylinderGeomStdAbw<T> q{r.maxIter, tol, tol, tol, tol, tol, tol, tol, T(0)};
        A::fitCylinderGeom(p, cyl, q);
        r.stdDev = double(q.stdAbw);
    }
    if (!cyl.isValid())
        return false;
    r.stdDevText = "sqrt(sum (R - |a x (p - P0)|)^2 / (n - 1))";
    std::vector<T> d;
    math::geometric<T>::distance(cyl, p, d);
    finishResiduals(r, d);
    r.residualText = "signed distance from the cylinder surface (outside positive)";
    // The axis point nearest to the centroid of the points, the axis with its largest
    // component positive.
    auto axis = vec(cyl.axis().asPoint());
    std::size_t big = 0;
    for (std::size_t k = 1; k < 3; ++k) {
        if (std::fabs(axis[k]) > std::fabs(axis[big]))
            big = k;
    }
    if (axis[big] < 0) {
        for (double& v : axis) v = -v;
    }
    auto const m = vec(centroid(p));
    auto const p0 = vec(cyl.point());
    double t = 0;
    for (int k = 0; k < 3; ++k) t += (m[k] - p0[k]) * axis[k];
    std::vector<double> foot(3);
    for (int k = 0; k < 3; ++k) foot[k] = p0[k] + t * axis[k];
    double const rad = double(cyl.radius());
    r.params = {{"axis_point", "axis point near centroid", foot, Kind::length},
                {"axis", "axis direction", axis, Kind::direction},
                {"radius", "radius", {rad}, Kind::length},
                {"diameter", "diameter", {2 * rad}, Kind::length}};
    return true;
}

}  // namespace

int elementDim(std::string const& element) {
    ElementInfo const* e = findElement(element);
    return e ? e->dim : 0;
}

std::string checkFitOptions(FitOptions const& opt) {
    ElementInfo const* e = findElement(opt.element);
    if (!e) {
        return "unknown element '" + opt.element +
               "' (line2, line3, circle, circle3, ellipse, plane, sphere, cylinder)";
    }
    if (!listHas(e->methods, opt.method)) {
        return "method '" + opt.method + "' is not available for " + opt.element + " (" +
               e->methods + ")";
    }
    if (opt.radius) {
        if (!e->radius) {
            return "--radius is not available for " + opt.element;
        }
        if (opt.method != "geom") {
            return "--radius needs --method geom";
        }
        if (!std::isfinite(*opt.radius) || *opt.radius <= 0) {
            return "--radius must be a positive number";
        }
    }
    if (opt.normal) {
        if (opt.element != "circle3") {
            return "--normal is only used by circle3";
        }
        if (opt.normal->size() != 3) {
            return "--normal needs three numbers nx,ny,nz";
        }
        for (double v : *opt.normal) {
            if (!std::isfinite(v))
                return "--normal needs three finite numbers";
        }
    }
    if (opt.tol && (!std::isfinite(*opt.tol) || *opt.tol < 0)) {
        return "--tol must be a finite number >= 0";
    }
    return {};
}

template <typename T>
FitResult runFit(PointSet<T> const& pts, FitOptions const& opt) {
    FitResult r;
    r.element = opt.element;
    r.method = opt.method;
    r.single = std::is_same_v<T, float>;
    r.n = pts.size();
    r.maxIter = opt.maxIter;
    // Default tolerances: a fixed fraction of the points' extent, coarser in single precision,
    // where the corrections do not fall below the rounding of the coordinates.
    double const rel = r.single ? 1e-5 : 1e-9;
    double const diag = diagonal(pts);
    r.tol = opt.tol ? *opt.tol : rel * std::max(diag, 1e-30);
    r.tolAngle = rel;
    if (opt.element == "cylinder" && !opt.tol) {
        // One tolerance for positions and direction components alike.
        r.tol = rel * std::max(diag, 1.0);
    }
    std::string const& e = opt.element;
    r.iterative = (e == "circle" && opt.method == "geom") || e == "circle3" || e == "ellipse" ||
                  (e == "sphere" && opt.method == "geom") || e == "cylinder" ||
                  (e == "plane" && opt.method == "fast");
    std::size_t const minPts = minimumPoints(opt);
    if (r.n < minPts) {
        r.failure = "a " + e + " fit needs at least " + std::to_string(minPts) + " points, got " +
                    std::to_string(r.n);
        return r;
    }
    bool ok = false;
    try {
        if (e == "line2")
            ok = fitLine2(pts.p2, opt, r);
        else if (e == "line3")
            ok = fitLine3(pts.p3, opt, r);
        else if (e == "circle")
            ok = fitCircle(pts.p2, opt, r);
        else if (e == "circle3")
            ok = fitCircle3(pts.p3, opt, r);
        else if (e == "ellipse")
            ok = fitEllipse(pts.p2, opt, r);
        else if (e == "plane")
            ok = fitPlane(pts.p3, opt, r);
        else if (e == "sphere")
            ok = fitSphere(pts.p3, opt, r);
        else if (e == "cylinder")
            ok = fitCylinder(pts.p3, opt, r);
    } catch (CthrowBase const& ex) {
        r.failure = std::string("the fit stopped with an error: ") + ex.what();
        return r;
    } catch (std::exception const& ex) {
        r.failure = std::string("the fit stopped with an error: ") + ex.what();
        return r;
    }
    if (!ok) {
        if (r.failure.empty()) {
            r.failure = r.iterative
                            ? "the fit did not converge within " + std::to_string(r.maxIter) +
                                  " iterations (or the points do not determine a " + e +
                                  "); try --max-iter or a larger --tol"
                            : "the points do not determine a " + e +
                                  " (all equal, collinear or otherwise degenerate)";
        }
        return r;
    }
    r.ok = true;
    return r;
}

template FitResult runFit<float>(PointSet<float> const&, FitOptions const&);
template FitResult runFit<double>(PointSet<double> const&, FitOptions const&);

}  // namespace mgeo_app
