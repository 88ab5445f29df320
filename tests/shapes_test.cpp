// Tests of <math/shapes.h> (and of the plane-line crossing the three-point circle uses).
#include <gtest/gtest.h>
#include <math/geometric.h>
#include <math/shapes.h>

#include <cmath>
#include <limits>
#include <string>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using math::Ccircle2;
using math::Ccircle3;
using math::Cdirec2;
using math::Cdirec3;
using math::Cline2;
using math::Cline3;
using math::Cplane3;
using math::Cpoint2;
using math::Cpoint3;
using mgeo_test::expectInvalid;
using mgeo_test::kPi;
using mgeo_test::nearAbs;

template <typename T>
class Shapes : public ::testing::Test {};
TYPED_TEST_SUITE(Shapes, mgeo_test::RealTypes);

template <typename T>
double tol() {
    return static_cast<double>(mgeo_test::ulpTol<T>(64));
}

template <typename T>
T nan() {
    return std::numeric_limits<T>::quiet_NaN();
}

template <typename T>
::testing::AssertionResult near2(Cpoint2<T> const& p, double x, double y, double t) {
    auto const r = nearAbs(p.x, T(x), t);
    return r ? nearAbs(p.y, T(y), t) : r;
}

// A record: invalid when default-built, valid when built, invalid after invalidate(); `bad`
// (built from invalid parts) invalid.
template <typename R>
void validityCycle(R rec, R const& bad) {
    EXPECT_TRUE(expectInvalid(R()));
    EXPECT_TRUE(rec.isValid());
    rec.invalidate();
    EXPECT_TRUE(expectInvalid(rec));
    EXPECT_TRUE(expectInvalid(bad));
}

std::string const kWarning = "\n [FEHLER!]: Richtungsvektoren der Ebene linear abhaengig!\n\n";

// ---------------------------------------------------------------------------------------------
// Cline2

TYPED_TEST(Shapes, Line2Construction) {
    using T = TypeParam;
    EXPECT_TRUE(expectInvalid(Cline2<T>(Cpoint2<T>(T(1), T(1)), Cpoint2<T>(T(1), T(1)))));
    Cline2<T> const through(Cpoint2<T>(T(1), T(1)), Cpoint2<T>(T(4), T(5)));
    EXPECT_TRUE(through.isValid());
    EXPECT_EQ(through.point(), Cpoint2<T>(T(1), T(1)));
    EXPECT_TRUE(near2(through.direction().asPoint(), 0.6, 0.8, tol<T>()));
    EXPECT_TRUE(near2(through.pointAt(T(5)), 4, 5, tol<T>()));

    // Perpendicular to the vector from the origin: direction (-p.y, p.x) normalised.
    Cline2<T> const perp(Cpoint2<T>(T(3), T(4)));
    EXPECT_EQ(perp.point(), Cpoint2<T>(T(3), T(4)));
    EXPECT_TRUE(near2(perp.direction().asPoint(), -0.8, 0.6, tol<T>()));
    EXPECT_TRUE(expectInvalid(Cline2<T>(Cpoint2<T>(T(0), T(0)))));

    // The direction form stores the direction unchanged.
    Cline2<T> line(Cpoint2<T>(T(0), T(0)), Cdirec2<T>::unit(T(2), T(0)));
    EXPECT_EQ(line.direction().x(), T(2));
    line.set(Cpoint2<T>(T(0), T(0)), Cpoint2<T>(T(0), T(-3)));
    EXPECT_EQ(line.direction().y(), T(-1));
    validityCycle(line, Cline2<T>(Cpoint2<T>(nan<T>(), T(0)), Cdirec2<T>::posX));
}

TYPED_TEST(Shapes, Line2HesseNormalForm) {
    using T = TypeParam;
    Cdirec2<T> n;
    T dist = T(-1);
    T const eps = std::numeric_limits<T>::epsilon();
    // Through the origin (|d| <= eps(T), inclusive): the normal (-dy, dx) with a non-negative
    // second component; d = x dy - y dx > 0: (dy, -dx).
    struct Case {
        T x, y;
        Cdirec2<T> d;
        T dist, nx, ny;
    } const cases[] = {{T(0), T(2), Cdirec2<T>::posX, T(2), T(0), T(1)},
                       {T(0), T(0), Cdirec2<T>::negX, T(0), T(0), T(1)},
                       {T(0), T(0), Cdirec2<T>::posX, T(0), T(0), T(1)},
                       {T(0), T(-2), Cdirec2<T>::posX, T(2), T(0), T(-1)},
                       {eps, T(0), Cdirec2<T>::posY, T(0), T(-1), T(0)},
                       {T(2) * eps, T(0), Cdirec2<T>::posY, T(2) * eps, T(1), T(0)}};
    for (Case const& k : cases) {
        Cline2<T>(Cpoint2<T>(k.x, k.y), k.d).getHNF(n, dist);
        EXPECT_EQ(dist, k.dist) << k.x << " " << k.y;
        EXPECT_EQ(n.asPoint(), Cpoint2<T>(k.nx, k.ny)) << k.x << " " << k.y;
    }
    // NaN: dist NaN, normal invalid.
    Cline2<T>(Cpoint2<T>(nan<T>(), T(0)), Cdirec2<T>::posX).getHNF(n, dist);
    EXPECT_TRUE(std::isnan(dist));
    EXPECT_FALSE(n.isValid());

    // Random lines: dist >= 0, every point of the line satisfies n · p = dist, and the angle of
    // getDistArc is the normal's.
    mgeo_test::Noise rnd(21);
    for (int k = 0; k < 200; ++k) {
        Cline2<T> const line(Cpoint2<T>(T(rnd(10)), T(rnd(10))),
                             Cpoint2<T>(T(rnd(10)), T(rnd(10))));
        line.getHNF(n, dist);
        EXPECT_GE(dist, T(0));
        for (T s : {T(-3), T(0), T(7)}) {
            Cpoint2<T> const p = line.pointAt(s);
            EXPECT_TRUE(nearAbs(n.x() * p.x + n.y() * p.y, dist, 100 * tol<T>()));
        }
        T d2 = T(0);
        T arc = T(0);
        line.getDistArc(d2, arc);
        EXPECT_EQ(d2, dist);
        EXPECT_TRUE(near2(n.asPoint(), double(std::cos(arc)), double(std::sin(arc)), tol<T>()));
        // The foot of the perpendicular from the origin is dist * n.
        Cpoint2<T> foot;
        Cpoint2<T> const ret = line.getLotPoint(foot);
        EXPECT_EQ(ret, foot);
        EXPECT_TRUE(near2(foot, double(dist * n.x()), double(dist * n.y()), 100 * tol<T>()));
    }
    T arc = T(0);
    Cline2<T>().getDistArc(dist, arc);
    EXPECT_TRUE(std::isnan(arc));
}

TYPED_TEST(Shapes, Line2LotPoint) {
    using T = TypeParam;
    Cpoint2<T> foot;
    Cline2<T>(Cpoint2<T>(T(5), T(2)), Cdirec2<T>::posY).getLotPoint(foot);
    EXPECT_EQ(foot, Cpoint2<T>(T(5), T(0)));
}

// ---------------------------------------------------------------------------------------------
// The crossing of two plane lines

TYPED_TEST(Shapes, PlaneLineCrossing) {
    using T = TypeParam;
    using G = math::geometric<T>;
    // Parallel within 2^-23 inclusive, also for double; the point stays unchanged.
    Cpoint2<T> p(T(7), T(7));
    Cline2<T> const a(Cpoint2<T>(T(0), T(0)), Cdirec2<T>::posX);
    T const eps = T(1.1920928955078125e-07);
    EXPECT_FALSE(
        G::intersect(a, Cline2<T>(Cpoint2<T>(T(0), T(1)), Cdirec2<T>::unit(T(1), eps)), p));
    EXPECT_EQ(p, Cpoint2<T>(T(7), T(7)));
    EXPECT_FALSE(
        G::intersect(a, Cline2<T>(Cpoint2<T>(T(0), T(1)), Cdirec2<T>::unit(T(1), -eps)), p));
    EXPECT_TRUE(
        G::intersect(a, Cline2<T>(Cpoint2<T>(T(0), T(1)), Cdirec2<T>::unit(T(1), T(2) * eps)), p));
    EXPECT_EQ(p.y, T(0));
}

// ---------------------------------------------------------------------------------------------
// Ccircle2

TYPED_TEST(Shapes, Circle2) {
    using T = TypeParam;
    EXPECT_TRUE(expectInvalid(Ccircle2<T>()));
    Ccircle2<T> c(Cpoint2<T>(T(1), T(2)), T(-3));
    EXPECT_EQ(c.radius(), T(3));
    EXPECT_TRUE(c.isValid());
    c.invalidate();
    EXPECT_TRUE(std::isnan(c.radius()));

    Ccircle2<T> const three(Cpoint2<T>(T(0), T(0)), Cpoint2<T>(T(2), T(0)), Cpoint2<T>(T(0), T(2)));
    EXPECT_TRUE(near2(three.center(), 1, 1, tol<T>()));
    EXPECT_TRUE(nearAbs(three.radius(), T(std::sqrt(2.0)), tol<T>()));

    Ccircle2<T> collinear;
    EXPECT_NO_THROW(collinear = Ccircle2<T>(Cpoint2<T>(T(0), T(0)), Cpoint2<T>(T(1), T(1)),
                                            Cpoint2<T>(T(2), T(2))));
    EXPECT_TRUE(expectInvalid(collinear));
    EXPECT_TRUE(std::isnan(collinear.center().x));
    EXPECT_TRUE(expectInvalid(
        Ccircle2<T>(Cpoint2<T>(T(1), T(1)), Cpoint2<T>(T(1), T(1)), Cpoint2<T>(T(3), T(1)))));
    EXPECT_TRUE(expectInvalid(
        Ccircle2<T>(Cpoint2<T>(nan<T>(), T(1)), Cpoint2<T>(T(1), T(1)), Cpoint2<T>(T(3), T(1)))));

    // Random circles: three points on the circle give back centre and radius.
    mgeo_test::Noise rnd(41);
    for (int k = 0; k < 100; ++k) {
        double const cx = rnd(10);
        double const cy = rnd(10);
        double const r = 1 + 5 * rnd.unit();
        auto const at = [&](double a) {
            return Cpoint2<T>(T(cx + r * std::cos(a)), T(cy + r * std::sin(a)));
        };
        Ccircle2<T> const circle(at(0), at(2.0 + rnd(0.5)), at(4.0 + rnd(0.5)));
        double const bound = 200 * tol<T>() * (1 + std::fabs(cx) + std::fabs(cy) + r);
        EXPECT_TRUE(near2(circle.center(), double(T(cx)), double(T(cy)), bound));
        EXPECT_TRUE(nearAbs(circle.radius(), T(r), bound));
    }
}

// ---------------------------------------------------------------------------------------------
// Cplane3

TYPED_TEST(Shapes, PlaneConstructionAndSetters) {
    using T = TypeParam;
    EXPECT_TRUE(expectInvalid(Cplane3<T>()));
    Cplane3<T> plane;
    plane.set(T(0), T(0), T(2), T(4));
    EXPECT_EQ(plane.normal().z(), T(1));
    EXPECT_EQ(plane.d(), T(4));  // not divided by |(a, b, c)|
    EXPECT_TRUE(plane.isValid());
    plane.invalidate();
    EXPECT_TRUE(std::isnan(plane.d()));
    EXPECT_TRUE(expectInvalid(plane));

    // Field constructor: unchanged; point-normal: normalised again, d = -(p · n).
    Cplane3<T> const raw(Cdirec3<T>::unit(T(0), T(0), T(2)), T(-3));
    EXPECT_EQ(raw.normal().z(), T(2));
    Cplane3<T> const pn(Cpoint3<T>(T(1), T(2), T(3)), Cdirec3<T>::unit(T(0), T(0), T(2)));
    EXPECT_EQ(pn.normal().z(), T(1));
    EXPECT_EQ(pn.d(), T(-3));
    Cplane3<T> setPn;
    setPn.set(Cpoint3<T>(T(1), T(1), T(1)), Cdirec3<T>(T(1), T(1), T(1)));
    EXPECT_TRUE(nearAbs(setPn.d(), T(-std::sqrt(3.0)), tol<T>()));
    EXPECT_TRUE(expectInvalid(Cplane3<T>(Cdirec3<T>(T(0), T(0), T(0)), T(1))));
}

TYPED_TEST(Shapes, PlaneThroughThreePoints) {
    using T = TypeParam;
    // The plane through three points (given as nine coordinates) and what it printed.
    auto const through = [](std::initializer_list<double> c, std::string const& printed) {
        auto const* v = c.begin();
        ::testing::internal::CaptureStdout();
        Cplane3<T> plane;
        EXPECT_NO_THROW(plane = Cplane3<T>(Cpoint3<T>(T(v[0]), T(v[1]), T(v[2])),
                                           Cpoint3<T>(T(v[3]), T(v[4]), T(v[5])),
                                           Cpoint3<T>(T(v[6]), T(v[7]), T(v[8]))));
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), printed);
        return plane;
    };
    Cplane3<T> const plane = through({1, 0, 5, 3, 0, 5, 1, 4, 5}, "");
    EXPECT_TRUE(plane.isValid());
    EXPECT_EQ(plane.normal().z(), T(1));  // (p2 - p1) × (p3 - p1): right-handed
    EXPECT_EQ(plane.d(), T(-5));
    Cplane3<T> const line = through({0, 0, 0, 1, 0, 0, 2, 0, 0}, kWarning);
    EXPECT_TRUE(std::isnan(line.normal().x()));
    EXPECT_TRUE(std::isnan(line.d()));
    // Opposite directions are exactly parallel too.
    EXPECT_TRUE(expectInvalid(through({0, 0, 0, 0, 2, 0, 0, -1, 0}, kWarning)));
    // Coincident points: a NaN edge direction, no warning, invalid plane.
    EXPECT_TRUE(expectInvalid(through({1, 1, 1, 1, 1, 1, 2, 0, 0}, "")));

    // Random planes: three points of the plane give back its normal (up to sign) and offset.
    mgeo_test::Noise rnd(51);
    for (int k = 0; k < 50; ++k) {
        auto const pts =
            mgeo_test::planePoints<T>(Cpoint3<double>(rnd(5), rnd(5), rnd(5)), rnd(1), rnd(1),
                                      rnd(1), 5.0, 3, 0.0, std::uint64_t(100 + k));
        Cplane3<T> const p(pts[0], pts[1], pts[2]);
        for (auto const& q : pts) {
            EXPECT_TRUE(
                nearAbs(p.normal().x() * q.x + p.normal().y() * q.y + p.normal().z() * q.z + p.d(),
                        T(0), 1e4 * tol<T>()));
        }
    }
}

TYPED_TEST(Shapes, PlanePointAt) {
    using T = TypeParam;
    Cplane3<T> const z3(Cdirec3<T>(T(0), T(0), T(1)), T(-3));
    EXPECT_EQ(z3.pointAt(T(0), T(0)), Cpoint3<T>(T(0), T(0), T(3)));
    // Normal along z: u = (1, 0, 0), w = n × u = (0, 1, 0).
    EXPECT_EQ(z3.pointAt(T(2), T(5)), Cpoint3<T>(T(2), T(5), T(3)));
    // Normal along x: u = (0, 1, 0); along y: u = (0, 0, 1).
    Cplane3<T> const x1(Cdirec3<T>(T(1), T(0), T(0)), T(-1));
    EXPECT_EQ(x1.pointAt(T(2), T(0)), Cpoint3<T>(T(1), T(2), T(0)));
    Cplane3<T> const y1(Cdirec3<T>(T(0), T(1), T(0)), T(-1));
    EXPECT_EQ(y1.pointAt(T(2), T(0)), Cpoint3<T>(T(0), T(1), T(2)));

    // Every branch of the choice of u: the point lies in the plane and (s, t) are Cartesian
    // coordinates in it.
    double const normals[][3] = {{3, 2, 1},  {3, 1, 1},  {3, 1, 2}, {1, 3, 2},
                                 {0, 3, 0},  {2, 3, 1},  {1, 1, 3}, {0, 0, -3},
                                 {-1, 2, 3}, {2, -3, 2}, {1, 0, 1}, {0, 1, 1}};
    for (auto const& nv : normals) {
        Cplane3<T> const plane{Cdirec3<T>{T(nv[0]), T(nv[1]), T(nv[2])}, T(-2)};
        Cdirec3<T> const& n = plane.normal();
        Cpoint3<T> const o = plane.pointAt(T(0), T(0));
        for (auto const& st : {std::pair<double, double>(1, 0), {0, 1}, {3, -4}}) {
            Cpoint3<T> const p = plane.pointAt(T(st.first), T(st.second));
            EXPECT_TRUE(
                nearAbs(n.x() * p.x + n.y() * p.y + n.z() * p.z + plane.d(), T(0), 20 * tol<T>()));
            Cpoint3<T> const dp = p - o;
            double const len = std::sqrt(double(dp.x * dp.x + dp.y * dp.y + dp.z * dp.z));
            EXPECT_TRUE(nearAbs(len, std::hypot(st.first, st.second), 20 * tol<T>()));
        }
        Cpoint3<T> const u = plane.pointAt(T(1), T(0)) - o;
        Cpoint3<T> const w = plane.pointAt(T(0), T(1)) - o;
        EXPECT_TRUE(nearAbs(u.x * w.x + u.y * w.y + u.z * w.z, T(0), 20 * tol<T>()));
    }
}

// ---------------------------------------------------------------------------------------------
// Ccircle3

TYPED_TEST(Shapes, Circle3FromFields) {
    using T = TypeParam;
    Cplane3<T> const plane(Cdirec3<T>(T(0), T(0), T(1)), T(-1));
    Ccircle3<T> const c(plane, Cpoint3<T>(T(1), T(2), T(7)), T(-2));
    EXPECT_EQ(c.radius(), T(2));
    EXPECT_EQ(c.center(), Cpoint3<T>(T(1), T(2), T(7)));  // not projected
    validityCycle(c, Ccircle3<T>(Cplane3<T>(), Cpoint3<T>(T(1), T(2), T(7)), T(1)));
}

TYPED_TEST(Shapes, Circle3ThroughThreePoints) {
    using T = TypeParam;
    mgeo_test::Noise rnd(61);
    for (int k = 0; k < 50; ++k) {
        double n[3], u[3], w[3];
        mgeo_test::unitVector(rnd(1), rnd(1), rnd(1), n);
        mgeo_test::completeBasis(n, u, w);
        double const c[3] = {rnd(5), rnd(5), rnd(5)};
        double const r = 0.5 + 3 * rnd.unit();
        double const d = -(n[0] * c[0] + n[1] * c[1] + n[2] * c[2]);
        auto const at = [&](double a) {
            double const cu = r * std::cos(a);
            double const cw = r * std::sin(a);
            return Cpoint3<T>(T(c[0] + cu * u[0] + cw * w[0]), T(c[1] + cu * u[1] + cw * w[1]),
                              T(c[2] + cu * u[2] + cw * w[2]));
        };
        Cplane3<T> const plane{Cdirec3<T>{T(n[0]), T(n[1]), T(n[2])}, T(d)};
        Ccircle3<T> const circle(plane, at(0.3), at(2.5 + rnd(0.3)), at(4.4 + rnd(0.3)));
        ASSERT_TRUE(circle.isValid());
        double const bound = 1e3 * tol<T>() * (1 + r + std::fabs(d));
        EXPECT_TRUE(nearAbs(circle.radius(), T(r), bound));
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_TRUE(nearAbs(circle.center()[i], T(c[i]), bound)) << i;
        }
        EXPECT_EQ(circle.plane().d(), plane.d());
    }
}

TYPED_TEST(Shapes, Circle3WithNormalAlongZIsInvalid) {
    using T = TypeParam;
    Cpoint3<T> const p1(T(1), T(0), T(2));
    Cpoint3<T> const p2(T(0), T(1), T(2));
    Cpoint3<T> const p3(T(-1), T(0), T(2));
    for (T nz : {T(1), T(-1)}) {
        Cplane3<T> const plane(Cdirec3<T>(T(0), T(0), nz), T(-2) * nz);
        Ccircle3<T> circle;
        EXPECT_NO_THROW(circle = Ccircle3<T>(plane, p1, p2, p3));
        EXPECT_TRUE(expectInvalid(circle));
        EXPECT_TRUE(std::isnan(circle.center().x));
        EXPECT_TRUE(std::isnan(circle.radius()));
    }
    // An invalid plane (NaN normal) takes the same path.
    Ccircle3<T> fromInvalid;
    EXPECT_NO_THROW(fromInvalid = Ccircle3<T>(Cplane3<T>(), p1, p2, p3));
    EXPECT_TRUE(expectInvalid(fromInvalid));
    // A slight tilt is enough for a rotation axis.
    Cplane3<T> const tilted(Cdirec3<T>(T(0.01), T(0), T(1)), T(-2));
    EXPECT_TRUE(Ccircle3<T>(tilted, p1, p2, p3).isValid());
}

TYPED_TEST(Shapes, Circle3CollinearPointsAreNotFinite) {
    using T = TypeParam;
    Cplane3<T> const plane(Cdirec3<T>(T(0), T(1), T(0)), T(0));
    Ccircle3<T> circle;
    EXPECT_NO_THROW(circle =
                        Ccircle3<T>(plane, Cpoint3<T>(T(0), T(0), T(0)),
                                    Cpoint3<T>(T(1), T(0), T(0)), Cpoint3<T>(T(2), T(0), T(0))));
    EXPECT_FALSE(std::isfinite(circle.radius()) && std::isfinite(circle.center().x));
}

// ---------------------------------------------------------------------------------------------
// The plain records

TYPED_TEST(Shapes, PlainRecordsValidity) {
    using T = TypeParam;
    Cpoint3<T> const p(T(1), T(2), T(3));
    Cpoint3<T> const bad(T(1), nan<T>(), T(3));
    Cdirec3<T> const d(T(0), T(0), T(1));

    Cline3<T> const line(p, Cdirec3<T>::unit(T(0), T(0), T(2)));
    EXPECT_EQ(line.direction().z(), T(2));  // stored unchanged
    EXPECT_EQ(line.pointAt(T(1)), Cpoint3<T>(T(1), T(2), T(5)));
    validityCycle(line, Cline3<T>(bad, d));
    math::Csphere3<T> const sphere(p, T(-2));
    EXPECT_EQ(sphere.radius(), T(-2));  // stored unchanged
    validityCycle(sphere, math::Csphere3<T>(bad, T(1)));
    validityCycle(math::Ccylinder3<T>(p, d, T(3)), math::Ccylinder3<T>(p, Cdirec3<T>(), T(1)));
    Cpoint2<T> const c(T(1), T(2));
    validityCycle(math::Cellipse2<T>(c, T(3), T(2), T(0.5)),
                  math::Cellipse2<T>(c, T(3), T(2), nan<T>()));
    math::CboundingBox3<T> const box(p, Cpoint3<T>(T(4), T(5), T(6)));
    EXPECT_EQ(box.min(), p);
    EXPECT_EQ(box.max(), Cpoint3<T>(T(4), T(5), T(6)));
    validityCycle(box, math::CboundingBox3<T>(p, bad));
}

}  // namespace
