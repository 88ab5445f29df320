// Tests of <math/geometric.h>.
#include <gtest/gtest.h>
#include <math/geometric.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using namespace math;
using mgeo_test::nearAbs;

constexpr double kEpsF = 1.1920928955078125e-07;

template <typename T>
T nan() {
    return std::numeric_limits<T>::quiet_NaN();
}
template <typename T>
Cpoint2<T> pt(double x, double y) {
    return Cpoint2<T>(T(x), T(y));
}
template <typename T>
Cpoint3<T> pt(double x, double y, double z) {
    return Cpoint3<T>(T(x), T(y), T(z));
}
// Records with the direction or normal stored as given (not normalised).
template <typename T>
Cline3<T> line3(Cpoint3<T> const& p, double dx, double dy, double dz) {
    return Cline3<T>(p, Cdirec3<T>::unit(T(dx), T(dy), T(dz)));
}
template <typename T>
Cline2<T> line2(Cpoint2<T> const& p, double dx, double dy) {
    return Cline2<T>(p, Cdirec2<T>::unit(T(dx), T(dy)));
}
template <typename T>
Cplane3<T> plane(double a, double b, double c, double d) {
    return Cplane3<T>(Cdirec3<T>::unit(T(a), T(b), T(c)), T(d));
}

// About 100 ulps of T at unit scale: a few rounded products and a square root.
template <typename T>
double tol() {
    return 100.0 * double(std::numeric_limits<T>::epsilon());
}

template <typename T>
::testing::AssertionResult nearPoint(Cpoint3<T> const& a, Cpoint3<T> const& b, double t) {
    for (std::size_t i = 0; i < 3; ++i) {
        ::testing::AssertionResult r = nearAbs(a[i], b[i], t);
        if (!r) {
            return r << " in coordinate " << i;
        }
    }
    return ::testing::AssertionSuccess();
}

template <typename T>
class Geometric : public ::testing::Test {};
TYPED_TEST_SUITE(Geometric, mgeo_test::RealTypes);

template <typename T>
using G = geometric<T>;

// --- Comparisons -----------------------------------------------------------------------------

TYPED_TEST(Geometric, ScalarEqualUsesSingleEpsilonInclusively) {
    using T = TypeParam;
    T const e = T(kEpsF);
    T const et = std::numeric_limits<T>::epsilon();
    EXPECT_TRUE(G<T>::equal(T(0), e));
    EXPECT_TRUE(G<T>::equal(e, T(0)));
    EXPECT_FALSE(G<T>::equal(T(0), std::nextafter(e, T(1))));
    EXPECT_TRUE(G<T>::equal(T(1), T(1) + e));
    EXPECT_FALSE(G<T>::equal(T(1), std::nextafter(T(1) + e, T(2))));
    EXPECT_FALSE(G<T>::equal(T(0), nan<T>()));
    EXPECT_TRUE(G<T>::equalT(T(0), et));
    EXPECT_TRUE(G<T>::equalT(-et, T(0)));
    EXPECT_FALSE(G<T>::equalT(T(0), std::nextafter(et, T(1))));
    // The asymmetry in double: 1e-10 is equal under EPS_F, not under EPS_T.
    EXPECT_TRUE(G<T>::equal(T(0), T(1e-10)));
    EXPECT_EQ(G<T>::equalT(T(0), T(1e-10)), (std::is_same<T, float>::value));
}

TYPED_TEST(Geometric, PointEqualIsStrictPerCoordinate) {
    using T = TypeParam;
    T const et = std::numeric_limits<T>::epsilon();
    EXPECT_TRUE(G<T>::equal(pt<T>(1, -1), pt<T>(1, -1)));
    EXPECT_FALSE(G<T>::equal(pt<T>(0, 0), Cpoint2<T>(T(0), et)));
    EXPECT_FALSE(G<T>::equal(pt<T>(0, 0), Cpoint2<T>(-et, T(0))));
    EXPECT_TRUE(G<T>::equal(pt<T>(0, 0), Cpoint2<T>(et / 2, -et / 2)));
    EXPECT_FALSE(G<T>::equal(pt<T>(0, 0, 0), Cpoint3<T>(T(0), T(0), et)));
    EXPECT_FALSE(G<T>::equal(pt<T>(1, 1, 1), Cpoint3<T>(T(1), T(1) + et, T(1))));
    EXPECT_TRUE(G<T>::equal(pt<T>(0, 0, 0), Cpoint3<T>(et / 2, et / 2, et / 2)));
    EXPECT_FALSE(G<T>::equal(Cpoint3<T>(nan<T>(), T(0), T(0)), pt<T>(0, 0, 0)));
    // From magnitude 2 on, a + EPS_T rounds to a for even last bits (from 4 on always), so the
    // strict bound fails even for a point compared with itself.
    EXPECT_FALSE(G<T>::equal(pt<T>(2, 0), pt<T>(2, 0)));
    EXPECT_FALSE(G<T>::equal(pt<T>(0, 0, 3), pt<T>(0, 0, 3)));
}

// --- Sphere and line, box and line -----------------------------------------------------------

TYPED_TEST(Geometric, SphereLineUsesHalvedPointTerm) {
    using T = TypeParam;
    Csphere3<T> const unit(pt<T>(0, 0, 0), T(1));
    std::pair<T, T> t(T(7), T(7));
    // h = 1, D = 1 - 3 = -2: no intersection although the line passes through the sphere.
    EXPECT_FALSE(G<T>::intersect(unit, line3(pt<T>(2, 0, 0), 1, 0, 0), t));
    EXPECT_TRUE(std::isnan(t.first) && std::isnan(t.second));
    // h = 0.25, D = 0.0625 + 0.75: the documented parameters, not the geometric (-1.5, 0.5).
    ASSERT_TRUE(G<T>::intersect(unit, line3(pt<T>(0.5, 0, 0), 1, 0, 0), t));
    EXPECT_TRUE(nearAbs(t.first, T(-0.25) - std::sqrt(T(0.8125)), tol<T>()));
    EXPECT_TRUE(nearAbs(t.second, std::sqrt(T(0.8125)) - T(0.25), tol<T>()));
    // u.p = 0 gives the usual result: centre (1,2,3), r = 2, line through (1,2,0) along z.
    ASSERT_TRUE(
        G<T>::intersect(Csphere3<T>(pt<T>(1, 2, 3), T(2)), line3(pt<T>(1, 2, 0), 0, 0, 1), t));
    EXPECT_EQ(t, std::make_pair(T(1), T(5)));
    // A tangent (D = 0) intersects, both parameters 0.
    ASSERT_TRUE(G<T>::intersect(unit, line3(pt<T>(0, 1, 0), 1, 0, 0), t));
    EXPECT_EQ(t, std::make_pair(T(0), T(0)));
}

TYPED_TEST(Geometric, BoxLineKeepsExactlyTwoFacePoints) {
    using T = TypeParam;
    using Pair = std::pair<Cpoint3<T>, Cpoint3<T>>;
    Pair const unset(pt<T>(9, 9, 9), pt<T>(9, 9, 9));
    CboundingBox3<T> const cube(pt<T>(0, 0, 0), pt<T>(1, 1, 1));
    Pair out = unset;
    // Along x through the interior: x max is pierced first, then x min.
    ASSERT_TRUE(G<T>::intersect(cube, line3(pt<T>(0.5, 0.5, 0.25), 1, 0, 0), out));
    EXPECT_EQ(out, Pair(pt<T>(1, 0.5, 0.25), pt<T>(0, 0.5, 0.25)));
    // A face-diagonal direction through the interior of a 2 x 1 x 1 box: y max, then y min
    // (direction (1, 1, 0) unnormalised so that every piercing point is exact).
    CboundingBox3<T> const box(pt<T>(0, 0, 0), pt<T>(2, 1, 1));
    ASSERT_TRUE(G<T>::intersect(box, line3(pt<T>(1, 0.5, 0.5), 1, 1, 0), out));
    EXPECT_EQ(out, Pair(pt<T>(1.5, 1, 0.5), pt<T>(0.5, 0, 0.5)));
    out = unset;
    // Through opposite corners (six points), across two edges (four), missing the box.
    EXPECT_FALSE(G<T>::intersect(cube, line3(pt<T>(0, 0, 0), 1, 1, 1), out));
    EXPECT_FALSE(G<T>::intersect(cube, line3(pt<T>(0, 0, 0.5), 1, 1, 0), out));
    EXPECT_FALSE(G<T>::intersect(cube, line3(pt<T>(0, 3, 0.5), 1, 0, 0), out));
    EXPECT_EQ(out, unset);
    // Touching one edge only: two identical points, true with the pair unchanged.
    EXPECT_TRUE(G<T>::intersect(cube, line3(pt<T>(0, 0, 0.5), 1, -1, 0), out));
    EXPECT_EQ(out, unset);
}

// --- Planes ----------------------------------------------------------------------------------

TYPED_TEST(Geometric, ThreePlanesAndSingularDeterminantBound) {
    using T = TypeParam;
    Cpoint3<T> p = pt<T>(7, 7, 7);
    ASSERT_TRUE(
        G<T>::intersect(plane<T>(1, 0, 0, -1), plane<T>(0, 1, 0, -2), plane<T>(0, 0, 1, -3), p));
    EXPECT_TRUE(nearPoint(p, pt<T>(1, 2, 3), tol<T>()));
    mgeo_test::Noise rnd(5);
    Cpoint3<T> const x = pt<T>(1.5, -2, 0.75);
    for (int rep = 0; rep < 20; ++rep) {
        Cplane3<T> pl[3];
        for (Cplane3<T>& q : pl) {
            q = Cplane3<T>(x, Cdirec3<T>(T(rnd(1)), T(rnd(1)), T(rnd(1))));
        }
        ASSERT_TRUE(G<T>::intersect(pl[0], pl[1], pl[2], p));
        // Random normals may be nearly dependent: allow for the condition number.
        EXPECT_TRUE(nearPoint(p, x, 1e5 * tol<T>())) << "rep " << rep;
    }
    // det = EPS_F exactly is singular (inclusive), 2 EPS_F is not.
    double const e = kEpsF;
    p = pt<T>(7, 7, 7);
    EXPECT_FALSE(
        G<T>::intersect(plane<T>(1, 0, 0, -1), plane<T>(0, 1, 0, -2), plane<T>(0, 0, e, -e), p));
    EXPECT_EQ(p, pt<T>(7, 7, 7));
    ASSERT_TRUE(G<T>::intersect(plane<T>(1, 0, 0, -1), plane<T>(0, 1, 0, -2),
                                plane<T>(0, 0, 2 * e, -e), p));
    EXPECT_TRUE(nearAbs(p.z, T(0.5), tol<T>()));
    // Three planes through one line.
    double const h = std::sqrt(0.5);
    EXPECT_FALSE(
        G<T>::intersect(plane<T>(1, 0, 0, 0), plane<T>(0, 1, 0, 0), plane<T>(h, h, 0, 1), p));
}

TYPED_TEST(Geometric, TwoPlanesGiveLineThroughNearestPointToOrigin) {
    using T = TypeParam;
    Cline3<T> line;
    // z = 1 and x = 2: direction (0,0,1) x (1,0,0) = (0,1,0), point 1 n1 + 2 n2 = (2,0,1).
    ASSERT_TRUE(G<T>::intersect(plane<T>(0, 0, 1, -1), plane<T>(1, 0, 0, -2), line));
    EXPECT_EQ(line.point(), pt<T>(2, 0, 1));
    EXPECT_EQ(line.direction().asPoint(), pt<T>(0, 1, 0));
    mgeo_test::Noise rnd(7);
    double const t = 1e3 * tol<T>();  // 1 / (1 - c^2) amplifies rounding
    for (int rep = 0; rep < 20; ++rep) {
        Cplane3<T> const a(Cdirec3<T>(T(rnd(1)), T(rnd(1)), T(1)), T(rnd(5)));
        Cplane3<T> const b(Cdirec3<T>(T(1), T(rnd(1)), T(rnd(1))), T(rnd(5)));
        ASSERT_TRUE(G<T>::intersect(a, b, line));
        Cpoint3<T> const u = line.direction().asPoint();
        Cpoint3<T> const q = line.point();
        EXPECT_TRUE(nearAbs(G<T>::distance(a, q), T(0), t));
        EXPECT_TRUE(nearAbs(G<T>::distance(b, q), T(0), t));
        EXPECT_TRUE(nearAbs(G<T>::distance(a, q + u * T(3)), T(0), t));
        EXPECT_TRUE(nearAbs(G<T>::distance(b, q + u * T(3)), T(0), t));
        EXPECT_TRUE(nearAbs(u.x * u.x + u.y * u.y + u.z * u.z, T(1), tol<T>()));
        // The point lies in the span of the normals, orthogonal to the direction.
        EXPECT_TRUE(nearAbs(q.x * u.x + q.y * u.y + q.z * u.z, T(0), t));
    }
    // Parallel and antiparallel: false, line unchanged.
    Cline3<T> const keep = line3(pt<T>(4, 5, 6), 1, 0, 0);
    line = keep;
    EXPECT_FALSE(G<T>::intersect(plane<T>(0, 0, 1, -1), plane<T>(0, 0, 1, 3), line));
    EXPECT_FALSE(G<T>::intersect(plane<T>(0, 0, 1, -1), plane<T>(0, 0, -1, 3), line));
    EXPECT_EQ(line.point(), keep.point());
    EXPECT_EQ(line.direction().asPoint(), keep.direction().asPoint());
}

TYPED_TEST(Geometric, PlaneLinePiercingAndParallelBound) {
    using T = TypeParam;
    Cplane3<T> const z2 = plane<T>(0, 0, 1, -2);
    Cpoint3<T> p;
    // Non-unit direction (1, 0, 2): s = 2, t = 1, the point p + u.
    ASSERT_TRUE(G<T>::intersect(z2, line3(pt<T>(1, 1, 0), 1, 0, 2), p));
    EXPECT_EQ(p, pt<T>(2, 1, 2));
    Cline3<T> const slanted(pt<T>(1, 1, 5), Cdirec3<T>(T(1), T(1), T(1)));
    ASSERT_TRUE(G<T>::intersect(z2, slanted, p));
    EXPECT_TRUE(nearPoint(p, pt<T>(-2, -2, 2), tol<T>()));
    // n.u = EPS_F counts as parallel (x NaN), 2 EPS_F does not.
    p = pt<T>(0, 0, 0);
    EXPECT_FALSE(G<T>::intersect(z2, line3(pt<T>(0, 0, 0), 1, 0, kEpsF), p));
    EXPECT_TRUE(std::isnan(p.x));
    EXPECT_TRUE(G<T>::intersect(z2, line3(pt<T>(0, 0, 0), 1, 0, 2 * kEpsF), p));
    EXPECT_TRUE(nearAbs(p.z, T(2), tol<T>()));
}

// --- Lines -----------------------------------------------------------------------------------

TYPED_TEST(Geometric, NearestPointOfLineSet) {
    using T = TypeParam;
    Cpoint3<T> p = pt<T>(7, 7, 7);
    T res = T(-1);
    std::vector<Cline3<T>> lines{line3(pt<T>(5, 2, 3), 1, 0, 0), line3(pt<T>(1, -4, 3), 0, 1, 0)};
    EXPECT_FALSE(G<T>::intersect(lines, p, res));  // two lines are not enough
    EXPECT_EQ(p, pt<T>(7, 7, 7));
    EXPECT_EQ(res, T(-1));
    lines.push_back(line3(pt<T>(1, 2, 9), 0, 0, 1));
    ASSERT_TRUE(G<T>::intersect(lines, p, res));
    EXPECT_TRUE(nearPoint(p, pt<T>(1, 2, 3), tol<T>()));
    EXPECT_TRUE(nearAbs(res, T(0), tol<T>()));
    // Random lines through one point, their points shifted along the lines.
    mgeo_test::Noise rnd(11);
    Cpoint3<T> const x = pt<T>(1, -2, 3);
    lines.clear();
    for (int i = 0; i < 6; ++i) {
        Cdirec3<T> const u(T(rnd(1)), T(rnd(1)), T(rnd(1)));
        lines.push_back(Cline3<T>(x + u.asPoint() * T(rnd(4)), u));
    }
    ASSERT_TRUE(G<T>::intersect(lines, p, res));
    EXPECT_TRUE(nearPoint(p, x, 100 * tol<T>()));
    EXPECT_TRUE(nearAbs(res, T(0), 100 * tol<T>()));
    // Moved off the point: the residual is the mean distance of the lines from the result.
    lines[0] = Cline3<T>(lines[0].point() + pt<T>(0.1, 0, 0), lines[0].direction());
    ASSERT_TRUE(G<T>::intersect(lines, p, res));
    T sum = T(0);
    for (Cline3<T> const& l : lines) {
        sum += G<T>::distance(l, p);
    }
    EXPECT_TRUE(nearAbs(res, sum / T(6), tol<T>()));
    EXPECT_GT(res, T(0));
    // All lines parallel: the solver fails, which is reported on standard output.
    lines = {line3(pt<T>(0, 0, 0), 0, 0, 1), line3(pt<T>(1, 0, 0), 0, 0, 1),
             line3(pt<T>(0, 1, 0), 0, 0, 1)};
    p = pt<T>(7, 7, 7);
    bool ok = true;
    ::testing::internal::CaptureStdout();
    EXPECT_NO_THROW(ok = G<T>::intersect(lines, p, res));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "not solved\n");
    EXPECT_FALSE(ok);
    EXPECT_EQ(p, pt<T>(7, 7, 7));
}

TYPED_TEST(Geometric, TwoLinesCrossingSkewAndParallel) {
    using T = TypeParam;
    Cline3<T> const a = line3(pt<T>(0, 0, 0), 1, 0, 0);
    Cpoint3<T> p;
    T dist = T(-1);
    ASSERT_TRUE(G<T>::intersect(a, line3(pt<T>(1, -1, 0), 0, 1, 0), p, dist));
    EXPECT_EQ(p, pt<T>(1, 0, 0));
    EXPECT_EQ(dist, T(0));
    // Crossing at x = 3: the strict point comparison fails there (see above), so the exact
    // crossing is reported as a miss at distance 0.
    EXPECT_FALSE(G<T>::intersect(a, line3(pt<T>(3, -1, 0), 0, 1, 0), p, dist));
    EXPECT_EQ(p, pt<T>(3, 0, 0));
    EXPECT_EQ(dist, T(0));
    // Skew at distance 2: nearest points (3,0,0) and (3,0,2), the midpoint reported.
    Cline3<T> const b = line3(pt<T>(3, 5, 2), 0, 1, 0);
    EXPECT_FALSE(G<T>::intersect(a, b, p, dist));
    EXPECT_EQ(dist, T(2));
    EXPECT_EQ(p, pt<T>(3, 0, 1));
    p = pt<T>(7, 7, 7);
    EXPECT_FALSE(G<T>::intersect(a, b, p));
    EXPECT_EQ(p, pt<T>(3, 0, 1));
    // Random skew pairs: the midpoint is half the gap from either line.
    mgeo_test::Noise rnd(3);
    for (int rep = 0; rep < 20; ++rep) {
        Cline3<T> const c(pt<T>(rnd(2), rnd(2), rnd(2)), Cdirec3<T>(T(rnd(1)), T(rnd(1)), T(1)));
        Cline3<T> const d(pt<T>(rnd(2), rnd(2), rnd(2)), Cdirec3<T>(T(1), T(rnd(1)), T(rnd(1))));
        ASSERT_FALSE(G<T>::intersect(c, d, p, dist));
        EXPECT_TRUE(nearAbs(G<T>::distance(c, p), dist / 2, 1e3 * tol<T>()));
        EXPECT_TRUE(nearAbs(G<T>::distance(d, p), dist / 2, 1e3 * tol<T>()));
    }
    // Parallel and antiparallel: outputs unchanged.
    p = pt<T>(7, 7, 7);
    dist = T(9);
    EXPECT_FALSE(G<T>::intersect(a, line3(pt<T>(0, 1, 0), 1, 0, 0), p, dist));
    EXPECT_FALSE(G<T>::intersect(a, line3(pt<T>(0, 1, 0), -1, 0, 0), p));
    EXPECT_EQ(p, pt<T>(7, 7, 7));
    EXPECT_EQ(dist, T(9));
}

TYPED_TEST(Geometric, PlaneLinesCrossingParallelAndDistance) {
    using T = TypeParam;
    Cline2<T> const a = line2(pt<T>(0, 0), 1, 0);
    Cpoint2<T> p = pt<T>(7, 7);
    ASSERT_TRUE(G<T>::intersect(a, line2(pt<T>(2, -1), 0, 1), p));
    EXPECT_EQ(p, pt<T>(2, 0));
    mgeo_test::Noise rnd(9);
    for (int rep = 0; rep < 20; ++rep) {
        // Crossing at (x, y): the lines pass through it at parameters s and t.
        double const x = rnd(3), y = rnd(3), s = rnd(5), t = rnd(5);
        double const ang1 = rnd(3), ang2 = ang1 + 0.3 + rnd(0.2);
        double const c1 = std::cos(ang1), s1 = std::sin(ang1);
        double const c2 = std::cos(ang2), s2 = std::sin(ang2);
        Cline2<T> const c(pt<T>(x + s * c1, y + s * s1), Cdirec2<T>(T(c1), T(s1)));
        Cline2<T> const d(pt<T>(x + t * c2, y + t * s2), Cdirec2<T>(T(c2), T(s2)));
        ASSERT_TRUE(G<T>::intersect(c, d, p));
        EXPECT_TRUE(nearAbs(p.x, T(x), 1e3 * tol<T>()));
        EXPECT_TRUE(nearAbs(p.y, T(y), 1e3 * tol<T>()));
        EXPECT_EQ(G<T>::distance(c, d), T(0));
    }
    // Parallel: no crossing; the gap as distance (either sense of b).
    p = pt<T>(7, 7);
    EXPECT_FALSE(G<T>::intersect(a, line2(pt<T>(5, 3), 1, 0), p));
    EXPECT_EQ(p, pt<T>(7, 7));
    EXPECT_EQ(G<T>::distance(a, line2(pt<T>(5, 3), 1, 0)), T(3));
    EXPECT_EQ(G<T>::distance(a, line2(pt<T>(5, -3), -1, 0)), T(3));
    // |det| = EPS_F is parallel (inclusive), 2 EPS_F is not.
    EXPECT_FALSE(G<T>::intersect(a, line2(pt<T>(5, 3), 1, kEpsF), p));
    EXPECT_TRUE(G<T>::intersect(a, line2(pt<T>(5, 3), 1, 2 * kEpsF), p));
}

// --- Sphere and circle sets ------------------------------------------------------------------

// Spheres (circles) through x with the given centres.
template <typename T>
std::vector<Csphere3<T>> spheresThrough(Cpoint3<double> x, std::vector<Cpoint3<double>> cs) {
    std::vector<Csphere3<T>> out;
    for (Cpoint3<double> const& c : cs) {
        Cpoint3<double> const v = x - c;
        out.emplace_back(pt<T>(c.x, c.y, c.z), T(std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z)));
    }
    return out;
}

// Exact data converge quadratically: once the step is below sqrt(2^-23) the error left is far
// smaller; float keeps some hundred ulps at coordinates of 5.
template <typename T>
double setTol() {
    return std::is_same<T, float>::value ? 1e-4 : 1e-9;
}

TYPED_TEST(Geometric, SphereSetOnExactAndCoplanarData) {
    using T = TypeParam;
    auto spheres =
        spheresThrough<T>({1, 2, 3}, {{0, 0, 0}, {4, 0, 0}, {0, 5, 0}, {0, 0, 6}, {3, 3, 3}});
    Cpoint3<T> p;
    for (bool check : {false, true}) {
        ASSERT_TRUE(G<T>::intersect(spheres, p, check)) << "check " << check;
        EXPECT_TRUE(nearPoint(p, pt<T>(1, 2, 3), setTol<T>()));
    }
    spheres.resize(3);  // three spheres without the check fail
    EXPECT_FALSE(G<T>::intersect(spheres, p, false));
    EXPECT_TRUE(std::isnan(p.x));

    spheres =
        spheresThrough<T>({1, 2, 3}, {{0, 0, 0}, {4, 0, 0}, {0, 5, 0}, {3, 3, 0}, {-2, 1, 0}});
    EXPECT_FALSE(G<T>::intersect(spheres, p, true));
    EXPECT_TRUE(std::isnan(p.x));
    // Unchecked, the iteration has no z information and stays in the centres' plane, ending at
    // a point there no worse than the foot of the true point.
    bool ok = false;
    ASSERT_NO_THROW(ok = G<T>::intersect(spheres, p, false));
    ASSERT_TRUE(ok);
    auto cost = [&spheres](Cpoint3<T> const& q) {
        double sum = 0;
        for (Csphere3<T> const& s : spheres) {
            sum += double(G<T>::distance(s, q)) * double(G<T>::distance(s, q));
        }
        return sum;
    };
    EXPECT_TRUE(nearAbs(p.z, T(0), 1e-6));
    EXPECT_LE(cost(p), cost(pt<T>(1, 2, 0)) * (1 + 1e-4));
}

// Standard input from a file of newlines, so that the circle-set iteration reads without a
// console. False if the file cannot be set up.
bool feedNewlines() {
    // One file per test process: ctest runs the float and double cases at the same time.
    std::string const path = ::testing::TempDir() + "geometric_test_stdin_" +
                             std::to_string(static_cast<long>(::getpid())) + ".txt";
    std::FILE* f = std::fopen(path.c_str(), "w");
    if (f == nullptr) {
        return false;
    }
    for (int i = 0; i < 4096; ++i) {
        std::fputc('\n', f);
    }
    std::fclose(f);
    return std::freopen(path.c_str(), "r", stdin) != nullptr;
}

TYPED_TEST(Geometric, CircleSetReadsOneCharacterAndTracesEveryStep) {
    using T = TypeParam;
    ASSERT_TRUE(feedNewlines());
    std::vector<Ccircle2<T>> circles;
    for (Csphere3<T> const& s :
         spheresThrough<T>({1, 2, 0}, {{0, 0, 0}, {5, 0, 0}, {0, 5, 0}, {4, 4, 0}})) {
        circles.emplace_back(Cpoint2<T>(s.center().x, s.center().y), s.radius());
    }
    for (bool check : {false, true}) {
        long const before = std::ftell(stdin);
        Cpoint2<T> p;
        ::testing::internal::CaptureStdout();
        bool const ok = G<T>::intersect(circles, p, check);
        std::cout.flush();
        std::istringstream trace(::testing::internal::GetCapturedStdout());
        ASSERT_TRUE(ok) << "check " << check;
        EXPECT_TRUE(nearAbs(p.x, T(1), setTol<T>()));
        EXPECT_TRUE(nearAbs(p.y, T(2), setTol<T>()));
        // One "x y" line and one character read per step; the last line is the result.
        std::string line;
        long lines = 0;
        double x = 0, y = 0;
        while (std::getline(trace, line)) {
            std::istringstream(line) >> x >> y;
            ++lines;
        }
        EXPECT_GE(lines, 2);
        EXPECT_EQ(std::ftell(stdin) - before, lines);
        EXPECT_NEAR(x, 1, 1e-5);  // six significant digits of the default format
        EXPECT_NEAR(y, 2, 1e-5);
    }
}

TYPED_TEST(Geometric, CircleSetEarlyReturnsNeitherReadNorWrite) {
    using T = TypeParam;
    ASSERT_TRUE(feedNewlines());
    long const before = std::ftell(stdin);
    Cpoint2<T> p = pt<T>(0, 0);
    std::vector<Ccircle2<T>> circles{Ccircle2<T>(pt<T>(0, 0), T(1)),
                                     Ccircle2<T>(pt<T>(1, 1), T(1))};
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(G<T>::intersect(circles, p, false));
    EXPECT_TRUE(std::isnan(p.x));
    // Centres off a line by 1e-5 only: collinear under the sqrt(2^-23) bound.
    circles.clear();
    for (int i = 0; i < 4; ++i) {
        circles.emplace_back(pt<T>(10 * i, i % 2 == 0 ? 0 : 1e-5), T(3));
    }
    p = pt<T>(0, 0);
    EXPECT_FALSE(G<T>::intersect(circles, p, true));
    EXPECT_TRUE(std::isnan(p.x));
    std::cout.flush();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(std::ftell(stdin), before);
}

TYPED_TEST(Geometric, DegenerateSetsAndNaNInputsEndSafely) {
    using T = TypeParam;
    ASSERT_TRUE(feedNewlines());
    T const n = nan<T>();
    Cpoint2<T> p2 = pt<T>(0, 0);
    Cpoint3<T> p3 = pt<T>(0, 0, 0);
    std::vector<Ccircle2<T>> circles;
    std::vector<Csphere3<T>> spheres;
    ::testing::internal::CaptureStdout();
    for (int pass = 0; pass < 2; ++pass) {
        for (bool check : {false, true}) {
            // Solver exceptions may pass through the sphere set; nothing may crash or hang.
            try {
                EXPECT_FALSE(G<T>::intersect(circles, p2, check) && !std::isnan(p2.x));
                EXPECT_FALSE(G<T>::intersect(spheres, p3, check) && !std::isnan(p3.x));
            } catch (CthrowBase const&) {
            }
        }
        for (int i = 0; i < 5; ++i) {  // second pass: NaN radii
            circles.emplace_back(pt<T>(i, i * i), n);
            spheres.emplace_back(pt<T>(i, i * i, 1 - i), n);
        }
    }
    std::cout.flush();
    ::testing::internal::GetCapturedStdout();
    std::pair<Cpoint3<T>, Cpoint3<T>> box;
    Cline3<T> const bad(pt<T>(n, 0, 0), Cdirec3<T>::unit(n, 0, 0));
    EXPECT_FALSE(G<T>::intersect(CboundingBox3<T>(pt<T>(0, 0, 0), pt<T>(1, 1, 1)), bad, box));
    // n.u is NaN, which the parallel test does not catch: the point comes back NaN.
    G<T>::intersect(plane<T>(0, 0, 1, 0), bad, p3);
    EXPECT_TRUE(std::isnan(p3.x));
}

// --- Distances -------------------------------------------------------------------------------

TYPED_TEST(Geometric, OnePointDistances) {
    using T = TypeParam;
    Csphere3<T> const s(pt<T>(1, 2, 3), T(2));
    EXPECT_EQ(G<T>::distance(s, pt<T>(1, 2, 6)), T(1));
    EXPECT_EQ(G<T>::distance(s, pt<T>(1, 2, 3)), T(-2));
    // A non-unit normal scales the signed value: 2 x - 2 at x = 3.
    EXPECT_EQ(G<T>::distance(plane<T>(2, 0, 0, -2), pt<T>(3, 8, 9)), T(4));
    EXPECT_EQ(G<T>::distance(plane<T>(0, 0, 1, -2), pt<T>(3, 8, -1)), T(-3));
    Ccylinder3<T> const cyl(pt<T>(1, 1, 0), Cdirec3<T>::unit(0, 0, 1), T(1));
    EXPECT_EQ(G<T>::distance(cyl, pt<T>(4, 5, 7)), T(4));
    EXPECT_EQ(G<T>::distance(cyl, pt<T>(1, 1.5, -7)), T(-0.5));
    EXPECT_EQ(G<T>::distance(line3(pt<T>(0, 0, 2), 0, 0, 1), pt<T>(3, -4, 9)), T(5));
    Cline2<T> const l = line2(pt<T>(1, 1), 1, 0);
    EXPECT_EQ(G<T>::distance(l, pt<T>(5, 4)), T(3));     // left of the direction
    EXPECT_EQ(G<T>::distance(l, pt<T>(-5, -1)), T(-2));  // right
    // Axis (0, 0, 2) unnormalised: the one-point form gives |(0,0,20) - (3,0,5)| - 1, while
    // the list forms take |(q - P0) x u| = 6 (minus the radius for the cylinder).
    Ccylinder3<T> const scaled(pt<T>(0, 0, 0), Cdirec3<T>::unit(0, 0, 2), T(1));
    std::vector<Cpoint3<T>> const q{pt<T>(3, 0, 5)};
    std::vector<T> out;
    EXPECT_TRUE(nearAbs(G<T>::distance(scaled, q[0]), std::sqrt(T(234)) - T(1), tol<T>()));
    G<T>::distance(scaled, q, out);
    EXPECT_EQ(out, std::vector<T>{T(5)});
    G<T>::distance(Cline3<T>(scaled.point(), scaled.axis()), q, out);
    EXPECT_EQ(out, std::vector<T>{T(6)});
}

TYPED_TEST(Geometric, ListDistancesMatchOnePointForms) {
    using T = TypeParam;
    mgeo_test::Noise rnd(13);
    std::vector<Cpoint3<T>> p3;
    std::vector<Cpoint2<T>> p2;
    for (int i = 0; i < 25; ++i) {
        p3.push_back(pt<T>(rnd(5), rnd(5), rnd(5)));
        p2.push_back(pt<T>(rnd(5), rnd(5)));
    }
    // `out` starts longer than needed and comes back resized with every entry written; `ref`
    // is the record whose one-point form gives the same value.
    auto same = [](auto const& shape, auto const& ref, auto const& pts) {
        std::vector<T> out(40, T(99));
        G<T>::distance(shape, pts, out);
        ASSERT_EQ(out.size(), pts.size());
        for (std::size_t i = 0; i < pts.size(); ++i) {
            EXPECT_TRUE(nearAbs(out[i], G<T>::distance(ref, pts[i]), tol<T>())) << "point " << i;
        }
    };
    Csphere3<T> const s(pt<T>(1, -1, 0.5), T(2));
    Cplane3<T> const pl(pt<T>(1, 2, 3), Cdirec3<T>(T(1), T(-2), T(2)));
    Ccylinder3<T> const cyl(pt<T>(1, 0, -1), Cdirec3<T>(T(2), T(1), T(-2)), T(1.5));
    Cline3<T> const l3(cyl.point(), cyl.axis());
    Cline2<T> const l2(pt<T>(1, -2), Cdirec2<T>(T(3), T(4)));
    same(s, s, p3);
    same(pl, pl, p3);
    same(cyl, cyl, p3);
    same(l3, l3, p3);
    same(s.center(), Csphere3<T>(s.center(), T(0)), p3);
    same(l2, l2, p2);
}

TYPED_TEST(Geometric, EmptyPointListsFollowPerFormRules) {
    using T = TypeParam;
    std::vector<Cpoint3<T>> const none3;
    std::vector<Cpoint2<T>> const none2;
    Cpoint3<T> const o = pt<T>(0, 0, 0);
    std::vector<T> const filled{T(1), T(2), T(3)};
    auto after = [&filled](auto const& shape, auto const& none) {
        std::vector<T> out = filled;
        G<T>::distance(shape, none, out);
        return out;
    };
    EXPECT_TRUE(after(Csphere3<T>(o, T(1)), none3).empty());  // resized to 0
    EXPECT_TRUE(after(plane<T>(0, 0, 1, 0), none3).empty());  // resized to 0
    EXPECT_EQ(after(Ccylinder3<T>(o, Cdirec3<T>::unit(0, 0, 1), T(1)), none3), filled);
    EXPECT_EQ(after(o, none3), filled);                    // untouched
    EXPECT_TRUE(after(line3(o, 0, 0, 1), none3).empty());  // cleared
    EXPECT_TRUE(after(Cellipse2<T>(pt<T>(0, 0), T(2), T(1), T(0)), none2).empty());
    EXPECT_TRUE(after(line2(pt<T>(0, 0), 1, 0), none2).empty());  // cleared
}

// Distance of q from the nearest point of the ellipse: dense sampling of the parameter, then a
// golden-section search around the best sample.
double bruteEllipseDistance(double cx, double cy, double a, double b, double phi, double qx,
                            double qy) {
    auto dist = [&](double t) {
        double const u = a * std::cos(t), v = b * std::sin(t);
        double const x = cx + u * std::cos(phi) - v * std::sin(phi) - qx;
        double const y = cy + u * std::sin(phi) + v * std::cos(phi) - qy;
        return std::sqrt(x * x + y * y);
    };
    double const h = 2 * mgeo_test::kPi / 4000;
    double best = 0;
    for (int i = 1; i < 4000; ++i) {
        best = dist(i * h) < dist(best) ? i * h : best;
    }
    double lo = best - h, hi = best + h;
    double const g = (std::sqrt(5.0) - 1) / 2;
    for (int i = 0; i < 100; ++i) {
        double const m1 = hi - g * (hi - lo), m2 = lo + g * (hi - lo);
        (dist(m1) < dist(m2) ? hi : lo) = dist(m1) < dist(m2) ? m2 : m1;
    }
    return dist((lo + hi) / 2);
}

TYPED_TEST(Geometric, EllipseDistanceMatchesBruteForce) {
    using T = TypeParam;
    double const cx = 1, cy = -2, a = 3, b = 2, phi = 0.4;
    Cellipse2<T> const e{pt<T>(cx, cy), T(a), T(b), T(phi)};
    std::vector<Cpoint2<T>> pts;
    for (double scale : {0.7, 0.95, 1.0, 1.3, 2.5}) {
        auto ring = mgeo_test::ellipsePoints<T>(cx, cy, scale * a, scale * b, phi, 37);
        pts.insert(pts.end(), ring.begin(), ring.end());
    }
    std::vector<T> out;
    G<T>::distance(e, pts, out);
    ASSERT_EQ(out.size(), pts.size());
    // Four Newton steps without a convergence test leave a few 1e-12 on the inner ring.
    double const t = std::is_same<T, float>::value ? 2e-5 : 1e-10;
    for (std::size_t i = 0; i < pts.size(); ++i) {
        double const ref = bruteEllipseDistance(cx, cy, a, b, phi, pts[i].x, pts[i].y);
        EXPECT_TRUE(nearAbs(double(out[i]), ref, t)) << "point " << i;
    }
}

// Four Newton steps from the radial start, no convergence test: golden values per type.
TYPED_TEST(Geometric, EllipseDistanceGoldenValues) {
    using T = TypeParam;
    Cellipse2<T> const e{pt<T>(1, -2), T(3), T(2), T(0.4)};
    std::vector<T> out;
    G<T>::distance(e, std::vector<Cpoint2<T>>{pt<T>(0.5, 0.25), pt<T>(5, 1), pt<T>(1.5, -2)}, out);
    std::vector<T> const golden =
        std::is_same<T, float>::value
            ? std::vector<T>{T(0.28522390127182007), T(2.0713887214660645), T(2.5904998779296875)}
            : std::vector<T>{T(0.28522394513299532), T(2.071388588676236), T(2.5904996571733432)};
    EXPECT_EQ(out, golden);
}

// --- Projections -----------------------------------------------------------------------------

TYPED_TEST(Geometric, PlaneProjection) {
    using T = TypeParam;
    // Non-unit normal (2, 0, 0), d = -2: the written-out form scales, (3,4,5) -> (4,16,20).
    Cpoint3<T> q = pt<T>(3, 4, 5);
    G<T>::project(plane<T>(2, 0, 0, -2), q);
    EXPECT_EQ(q, pt<T>(4, 16, 20));
    mgeo_test::Noise rnd(17);
    Cplane3<T> const pl(pt<T>(1, -1, 2), Cdirec3<T>(T(2), T(-1), T(2)));
    std::vector<Cpoint3<T>> pts;
    for (int i = 0; i < 20; ++i) {
        pts.push_back(pt<T>(rnd(4), rnd(4), rnd(4)));
    }
    std::vector<Cpoint3<T>> list = pts;
    G<T>::project(pl, list);
    for (std::size_t i = 0; i < pts.size(); ++i) {
        Cpoint3<T> one = pts[i];
        G<T>::project(pl, one);
        EXPECT_EQ(list[i], one);
        EXPECT_TRUE(nearAbs(G<T>::distance(pl, one), T(0), tol<T>()));
        // Moved along the normal by the signed distance.
        Cpoint3<T> const step = pl.normal().asPoint() * G<T>::distance(pl, pts[i]);
        EXPECT_TRUE(nearPoint(pts[i] - one, step, tol<T>()));
    }
}

TYPED_TEST(Geometric, LineProjections) {
    using T = TypeParam;
    Cpoint3<T> q = pt<T>(1, 1, 1);
    G<T>::project(line3(pt<T>(0, 0, 0), 0, 0, 2), q);  // t = 2 with the unnormalised direction
    EXPECT_EQ(q, pt<T>(0, 0, 4));
    Cpoint2<T> r = pt<T>(3, 5);
    G<T>::project(line2(pt<T>(1, 1), 2, 0), r);  // t = 4
    EXPECT_EQ(r, pt<T>(9, 1));

    Cline3<T> const l3(pt<T>(1, 2, -1), Cdirec3<T>(T(1), T(-2), T(2)));
    Cline2<T> const l2(pt<T>(1, 2), Cdirec2<T>(T(-3), T(4)));
    std::vector<Cpoint3<T>> p3{pt<T>(2, 0, 1), pt<T>(-3, 1, 4)};
    std::vector<Cpoint2<T>> p2{pt<T>(2, 0), pt<T>(-3, 1)};
    auto const in3 = p3;
    auto const in2 = p2;
    ASSERT_TRUE(G<T>::project(l3, p3));
    ASSERT_TRUE(G<T>::project(l2, p2));
    Cpoint3<T> const u = l3.direction().asPoint();
    for (std::size_t i = 0; i < 2; ++i) {
        Cpoint3<T> one = in3[i];
        G<T>::project(l3, one);
        EXPECT_EQ(p3[i], one);
        EXPECT_TRUE(nearAbs(G<T>::distance(l3, one), T(0), tol<T>()));
        Cpoint3<T> const moved = in3[i] - one;
        EXPECT_TRUE(nearAbs(moved.x * u.x + moved.y * u.y + moved.z * u.z, T(0), tol<T>()));
        // The list form of the plane line crosses with the normal line: the same foot.
        Cpoint2<T> foot = in2[i];
        G<T>::project(l2, foot);
        EXPECT_TRUE(nearAbs(p2[i].x, foot.x, tol<T>()));
        EXPECT_TRUE(nearAbs(p2[i].y, foot.y, tol<T>()));
        EXPECT_TRUE(nearAbs(G<T>::distance(l2, foot), T(0), tol<T>()));
    }
    std::vector<Cpoint3<T>> none3;
    std::vector<Cpoint2<T>> none2;
    EXPECT_FALSE(G<T>::project(l3, none3));
    EXPECT_FALSE(G<T>::project(l2, none2));
    // A direction too short for the crossing test (det = 1e-8 <= EPS_F): false, nothing moved.
    std::vector<Cpoint2<T>> kept = in2;
    EXPECT_FALSE(G<T>::project(line2(pt<T>(0, 0), 1e-8, 0), kept));
    EXPECT_EQ(kept, in2);
}

// --- Outliers --------------------------------------------------------------------------------

TYPED_TEST(Geometric, OutlierRemovesLargeAndNaNValuesKeepingOrder) {
    using T = TypeParam;
    std::vector<Cpoint2<T>> p2;
    std::vector<Cpoint3<T>> p3;
    for (int i = 0; i < 7; ++i) {
        p2.push_back(pt<T>(i, 0));
        p3.push_back(pt<T>(i, 0, 1));
    }
    // |-2| > 1 and NaN go; 1 (at the threshold) stays; the last two points have no value.
    std::vector<T> const values{T(0.5), T(-2), nan<T>(), T(1), T(-0.1)};
    EXPECT_EQ(G<T>::outlier(p2, values, T(1)), 2u);
    EXPECT_EQ(G<T>::outlier(p3, values, T(1)), 2u);
    std::vector<T> const kept{T(0), T(3), T(4), T(5), T(6)};
    ASSERT_EQ(p2.size(), kept.size());
    ASSERT_EQ(p3.size(), kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(p2[i].x, kept[i]);
        EXPECT_EQ(p3[i].x, kept[i]);
    }
    EXPECT_EQ(G<T>::outlier(p3, std::vector<T>{}, T(0)), 0u);
    EXPECT_EQ(p3.size(), kept.size());
    std::vector<Cpoint2<T>> none;
    EXPECT_EQ(G<T>::outlier(none, values, T(1)), 0u);
}

}  // namespace

namespace {
// Centres near 1e30: no step can fall below the convergence bound; the iteration ends as a
// failure after its step cap instead of spinning.
TEST(GeometricSets, SphereSetWithHugeCoordinatesFailsInsteadOfSpinning) {
    mgeo_test::Noise rnd(5);
    std::vector<math::Csphere3<double>> spheres;
    for (int i = 0; i < 12; ++i) {
        spheres.emplace_back(math::Cpoint3<double>(1e30 * (1.5 + rnd(0.5)), 1e30 * (0.5 + rnd(0.5)),
                                                   1e30 * (0.5 + rnd(0.5))),
                             1e29 * (5 + rnd(4)));
    }
    math::Cpoint3<double> p;
    EXPECT_FALSE(math::geometric<double>::intersect(spheres, p, false));
    EXPECT_TRUE(std::isnan(p.x));
}
}  // namespace
