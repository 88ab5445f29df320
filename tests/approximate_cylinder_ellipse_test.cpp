// Tests of the cylinder and ellipse fits of <math/approximate.h>.
#include <gtest/gtest.h>
#include <math/approximate.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using mgeo_test::kPi;
using mgeo_test::nearAbs;
using mgeo_test::nearRel;
using mgeo_test::RealTypes;

// Opens the protected cylinder workers for the tests.
template <typename T>
struct Access : math::approximate<T> {
    using math::approximate<T>::fitCylinderGeomX;
    using math::approximate<T>::fitCylinderGeomY;
    using math::approximate<T>::fitCylinderGeomZ;
    using math::approximate<T>::fitCylinderGeomRfixX;
    using math::approximate<T>::fitCylinderGeomRfixY;
    using math::approximate<T>::fitCylinderGeomRfixZ;
};

template <typename T>
bool sameBits(math::Ccylinder3<T> const& a, math::Ccylinder3<T> const& b) {
    return a.point() == b.point() && a.axis().asPoint() == b.axis().asPoint() &&
           a.radius() == b.radius();
}

// Angle between two axis directions, either sense, and the distance of point q from the axis
// of c; in double.
double crossNorm(double const a[3], double const v[3]) {
    double const cx = a[1] * v[2] - a[2] * v[1];
    double const cy = a[2] * v[0] - a[0] * v[2];
    double const cz = a[0] * v[1] - a[1] * v[0];
    return std::sqrt(cx * cx + cy * cy + cz * cz);
}

template <typename T>
double axisAngle(math::Ccylinder3<T> const& c, double const d[3]) {
    double const a[3] = {double(c.axis().x()), double(c.axis().y()), double(c.axis().z())};
    return std::atan2(crossNorm(a, d), std::fabs(a[0] * d[0] + a[1] * d[1] + a[2] * d[2]));
}

template <typename T>
double axisDistance(math::Ccylinder3<T> const& c, double const q[3]) {
    double const v[3] = {q[0] - double(c.point().x), q[1] - double(c.point().y),
                         q[2] - double(c.point().z)};
    double const a[3] = {double(c.axis().x()), double(c.axis().y()), double(c.axis().z())};
    return crossNorm(a, v);
}

// Mean of the points, in double.
template <typename P>
std::array<double, 3> centroid(std::vector<P> const& pts) {
    std::array<double, 3> m{0, 0, 0};
    for (auto const& p : pts) {
        for (std::size_t i = 0; i < 3; ++i) {
            m[i] += double(p[i]);
        }
    }
    for (double& v : m) {
        v /= double(pts.size());
    }
    return m;
}

template <typename T>
math::CqCylinderGeom<T> cylinderControl(T tol) {
    return {200, tol, tol, tol, tol, tol, tol, tol};
}

template <typename T>
math::CqCylinderGeomRfix<T> cylinderRfixControl(T tol) {
    return {200, tol, tol, tol, tol, tol, tol};
}

// Step limits that a converged fit reaches: well above the rounding noise of T.
template <typename T>
T convergedTol() {
    return std::is_same_v<T, float> ? T(1e-4) : T(1e-11);
}

template <typename T>
class CylinderFit : public ::testing::Test {};
TYPED_TEST_SUITE(CylinderFit, RealTypes);

// --- initValCylinder, sqDevCylinder ----------------------------------------------------------

TYPED_TEST(CylinderFit, InitValPicksTheZCandidateAndTheMeanDistance) {
    using T = TypeParam;
    auto const pts = mgeo_test::cylinderPoints<T>({1, 2, 3}, 0, 0, 1, 5, 20, 400);
    math::Ccylinder3<T> c;
    math::approximate<T>::initValCylinder(pts, c);
    EXPECT_EQ(c.axis().asPoint(), math::Cpoint3<T>(0, 0, 1));
    auto const mean = centroid(pts);
    double const n = double(pts.size());
    // Sums of 400 values of size 20 in T.
    double const sumTol = 400 * 20 * double(std::numeric_limits<T>::epsilon());
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(nearAbs(double(c.point()[i]), mean[i], sumTol)) << i;
    }
    double r = 0;
    for (auto const& p : pts) {
        r += std::sqrt((double(p.x) - mean[0]) * (double(p.x) - mean[0]) +
                       (double(p.y) - mean[1]) * (double(p.y) - mean[1]));
    }
    EXPECT_TRUE(nearAbs(double(c.radius()), r / n, sumTol));
}

TYPED_TEST(CylinderFit, InitValPicksTheMatchingTiltedCandidate) {
    using T = TypeParam;
    // Cylinders along candidates 4, 9 and 15 (unnormalised components as in the table).
    double const dirs[3][3] = {{0.8, 0.3, 0.3}, {-0.3, 0.3, 0.8}, {-0.3, -0.3, 0.8}};
    for (auto const& d : dirs) {
        auto const pts = mgeo_test::cylinderPoints<T>({-4, 7, 2}, d[0], d[1], d[2], 3, 12, 300);
        math::Ccylinder3<T> c;
        math::approximate<T>::initValCylinder(pts, c);
        EXPECT_EQ(c.axis().asPoint(), math::Cdirec3<T>(T(d[0]), T(d[1]), T(d[2])).asPoint());
        EXPECT_TRUE(nearRel(c.radius(), T(3), 1e-2));  // mean distance from an axis off by rounding
    }
}

TYPED_TEST(CylinderFit, InitValKeepsTheFirstCandidateOnTiesAndInvalidWithoutPoints) {
    using T = TypeParam;
    // All points equal: every candidate gives variance 0, the first one (x) stays.
    std::vector<math::Cpoint3<T>> const same(10, math::Cpoint3<T>(1, 2, 3));
    math::Ccylinder3<T> c;
    math::approximate<T>::initValCylinder(same, c);
    EXPECT_EQ(c.axis().asPoint(), math::Cpoint3<T>(1, 0, 0));
    EXPECT_EQ(c.radius(), T(0));
    std::vector<math::Cpoint3<T>> const none;
    EXPECT_NO_THROW(math::approximate<T>::initValCylinder(none, c));
    EXPECT_TRUE(mgeo_test::expectInvalid(c));
}

TYPED_TEST(CylinderFit, SqDevIsTheMeanSquareOfTheRadialErrors) {
    using T = TypeParam;
    // Points at distances 2 + e_i from the z axis: sqDev with R = 2 is the mean of e_i^2.
    double const e[4] = {0.5, -0.25, 0.125, 0};
    std::vector<math::Cpoint3<T>> pts;
    for (int i = 0; i < 4; ++i) {
        double const phi = 0.7 * i;
        pts.emplace_back(T((2 + e[i]) * std::cos(phi)), T((2 + e[i]) * std::sin(phi)), T(i));
    }
    math::Ccylinder3<T> const c({0, 0, 5}, math::Cdirec3<T>(0, 0, 1), T(2));
    double const expected = (0.25 + 0.0625 + 0.015625) / 4;
    double const got = math::approximate<T>::sqDevCylinder(pts, c);
    EXPECT_TRUE(nearAbs(got, expected, 20 * double(std::numeric_limits<T>::epsilon())));
}

// --- fitCylinderGeom -------------------------------------------------------------------------

struct CylinderCase {
    double axis[3];
    double arc;
};

TYPED_TEST(CylinderFit, RecoversCylindersInAnyOrientationFromTheStartValues) {
    using T = TypeParam;
    CylinderCase const cases[] = {
        {{1, 0, 0}, 2 * kPi},        {{0, 1, 0}, 2 * kPi},    {{0, 0, 1}, 2 * kPi},
        {{1, 2, 3}, 2 * kPi},        {{-2, 1, 0.5}, 2 * kPi}, {{0.3, -1, 0.2}, kPi},
        {{1, 1, 1}, kPi / 2},        {{0, 0, 1}, kPi / 2},    {{-0.6, 0.1, 1}, kPi / 2},
        {{0.9, -0.7, 0.1}, kPi / 2},
    };
    double const p0[3] = {12, -5, 30};
    double const radius = 7;
    for (CylinderCase const& cc : cases) {
        SCOPED_TRACE(::testing::Message() << "axis " << cc.axis[0] << " " << cc.axis[1] << " "
                                          << cc.axis[2] << " arc " << cc.arc);
        auto const pts = mgeo_test::cylinderPoints<T>({p0[0], p0[1], p0[2]}, cc.axis[0], cc.axis[1],
                                                      cc.axis[2], radius, 30, 600, cc.arc);
        math::Ccylinder3<T> c;
        math::approximate<T>::initValCylinder(pts, c);
        math::approximate<T>::fitCylinderGeom(pts, c, cylinderControl(convergedTol<T>()));
        ASSERT_TRUE(c.isValid());
        double a[3];
        mgeo_test::unitVector(cc.axis[0], cc.axis[1], cc.axis[2], a);
        // Exact points rounded to T: the result is off by rounding, amplified on short arcs.
        double const tol = std::is_same_v<T, float> ? 2e-3 : 1e-9;
        EXPECT_LT(axisAngle(c, a), tol);
        EXPECT_LT(axisDistance(c, p0), tol * radius);
        EXPECT_TRUE(nearAbs(double(c.radius()), radius, tol * radius));
    }
}

TYPED_TEST(CylinderFit, NoisyPartialCylinderLandsWithinTheNoise) {
    using T = TypeParam;
    double const p0[3] = {-3, 8, 1};
    double a[3];
    mgeo_test::unitVector(0.4, 0.5, -0.8, a);
    // 1e-3 radial noise on 2000 points of a 120 degree arc of radius 10.
    auto const pts = mgeo_test::cylinderPoints<T>({p0[0], p0[1], p0[2]}, a[0], a[1], a[2], 10, 25,
                                                  2000, 2 * kPi / 3, 1e-3, 7);
    math::Ccylinder3<T> c;
    math::approximate<T>::initValCylinder(pts, c);
    math::CqCylinderGeomStdAbw<T> q{200,     T(1e-4), T(1e-4), T(1e-4), T(1e-6),
                                    T(1e-6), T(1e-6), T(1e-4), T(-1)};
    math::approximate<T>::fitCylinderGeom(pts, c, q);
    ASSERT_TRUE(c.isValid());
    // Parameter errors of a least-squares fit: noise / sqrt(n) times the conditioning of the
    // arc, a few 1e-5 here; 1e-3 leaves room.
    EXPECT_LT(axisAngle(c, a), 1e-3);
    EXPECT_LT(axisDistance(c, p0), 1e-2);
    EXPECT_TRUE(nearAbs(double(c.radius()), 10.0, 1e-2));
    EXPECT_EQ(q.stdAbw, math::approximate<T>::StdAbwCylinder(pts, c));
    EXPECT_LT(double(q.stdAbw), 1e-3);  // uniform noise of amplitude 1e-3: sigma 0.58e-3
    EXPECT_EQ(q.maxItr, 200u);
    EXPECT_EQ(q.tol7, T(1e-4));
}

TYPED_TEST(CylinderFit, FixedRadiusIsHeldAndTheAxisFound) {
    using T = TypeParam;
    double const p0[3] = {2, 2, 2};
    double a[3];
    mgeo_test::unitVector(1, -1, 2, a);
    auto const pts = mgeo_test::cylinderPoints<T>({2, 2, 2}, a[0], a[1], a[2], 4, 15, 500);
    math::Ccylinder3<T> start;
    math::approximate<T>::initValCylinder(pts, start);
    math::Ccylinder3<T> c(start.point(), start.axis(), T(4));
    T const t = convergedTol<T>();
    math::CqCylinderGeomRfixStdAbw<T> q{200, t, t, t, t, t, t, T(0)};
    math::approximate<T>::fitCylinderGeomRfix(pts, c, q);
    ASSERT_TRUE(c.isValid());
    EXPECT_EQ(c.radius(), T(4));
    double const tol = std::is_same_v<T, float> ? 1e-3 : 1e-9;
    EXPECT_LT(axisAngle(c, a), tol);
    EXPECT_LT(axisDistance(c, p0), tol * 4);
    EXPECT_EQ(q.stdAbw, math::approximate<T>::StdAbwCylinder(pts, c));

    // A fixed radius that is too large is kept as well; the deviation shows the mismatch.
    math::Ccylinder3<T> wide(start.point(), start.axis(), T(5));
    math::approximate<T>::fitCylinderGeomRfix(pts, wide, cylinderRfixControl(convergedTol<T>()));
    ASSERT_TRUE(wide.isValid());
    EXPECT_EQ(wide.radius(), T(5));
    EXPECT_GT(double(math::approximate<T>::StdAbwCylinder(pts, wide)), 0.1);
}

TYPED_TEST(CylinderFit, KeepsTheSenseOfTheInputAxis) {
    using T = TypeParam;
    auto const pts = mgeo_test::cylinderPoints<T>({0, 0, 0}, 0.2, 0.1, 1, 3, 10, 300);
    math::Ccylinder3<T> c({0, 0, 0}, math::Cdirec3<T>(0, 0, -1), T(3));
    math::approximate<T>::fitCylinderGeom(pts, c, cylinderControl(convergedTol<T>()));
    ASSERT_TRUE(c.isValid());
    EXPECT_LT(c.axis().z(), T(0));
}

TYPED_TEST(CylinderFit, WorkerFollowsTheDominantAxisWithTiesToZThenY) {
    using T = TypeParam;
    using A = Access<T>;
    auto const pts = mgeo_test::cylinderPoints<T>({1, -1, 2}, 1, 1, 0.9, 2, 8, 200);
    auto const q = cylinderControl(convergedTol<T>());
    struct Case {
        math::Cdirec3<T> axis;
        void (*worker)(std::vector<math::Cpoint3<T>> const&, std::uint64_t,
                       math::CqCylinderGeom<T> const&, math::Ccylinder3<T>&);
    };
    Case const cases[] = {{math::Cdirec3<T>(1, 1, 1), &A::fitCylinderGeomZ},
                          {math::Cdirec3<T>(1, 1, 0), &A::fitCylinderGeomY},
                          {math::Cdirec3<T>(1, 0, 0), &A::fitCylinderGeomX},
                          {math::Cdirec3<T>(1, 0.9, 0.9), &A::fitCylinderGeomX}};
    for (Case const& k : cases) {
        math::Ccylinder3<T> const start({1, -1, 2}, k.axis, T(2));
        math::Ccylinder3<T> viaPublic = start;
        math::approximate<T>::fitCylinderGeom(pts, viaPublic, q);
        math::Ccylinder3<T> viaWorker = start;
        k.worker(pts, 1, q, viaWorker);
        ASSERT_TRUE(viaPublic.isValid());
        EXPECT_TRUE(sameBits(viaPublic, viaWorker)) << k.axis;
    }
}

TYPED_TEST(CylinderFit, WorkersAreOneImplementationUnderRelabelling) {
    using T = TypeParam;
    using A = Access<T>;
    auto const pts =
        mgeo_test::cylinderPoints<T>({3, 1, -2}, 1, 0.3, -0.4, 2.5, 9, 150, 1.5 * kPi, 1e-3);
    // The X worker works on (y, z, x): on the cloud relabelled that way the Z worker must
    // give the same numbers.
    auto relabel = [](math::Cpoint3<T> const& p) { return math::Cpoint3<T>(p.y, p.z, p.x); };
    std::vector<math::Cpoint3<T>> moved;
    for (auto const& p : pts) {
        moved.push_back(relabel(p));
    }
    math::Ccylinder3<T> const start({3, 1, -2}, math::Cdirec3<T>(1, 0.2, -0.3), T(2.4));
    math::Ccylinder3<T> const startMoved(
        relabel(start.point()),
        math::Cdirec3<T>::unit(start.axis().y(), start.axis().z(), start.axis().x()),
        start.radius());
    auto const q = cylinderControl(convergedTol<T>());
    math::Ccylinder3<T> viaX = start;
    A::fitCylinderGeomX(pts, 1, q, viaX);
    math::Ccylinder3<T> viaZ = startMoved;
    A::fitCylinderGeomZ(moved, 1, q, viaZ);
    ASSERT_TRUE(viaX.isValid());
    EXPECT_EQ(relabel(viaX.point()), viaZ.point());
    EXPECT_EQ(relabel(viaX.axis().asPoint()), viaZ.axis().asPoint());
    EXPECT_EQ(viaX.radius(), viaZ.radius());

    auto const qr = cylinderRfixControl(convergedTol<T>());
    math::Ccylinder3<T> fixX = start;
    A::fitCylinderGeomRfixX(pts, 1, qr, fixX);
    math::Ccylinder3<T> fixZ = startMoved;
    A::fitCylinderGeomRfixZ(moved, 1, qr, fixZ);
    ASSERT_TRUE(fixX.isValid());
    EXPECT_EQ(relabel(fixX.point()), fixZ.point());
    EXPECT_EQ(relabel(fixX.axis().asPoint()), fixZ.axis().asPoint());
}

TYPED_TEST(CylinderFit, CoarsePassOnlyAboveTenThousandPoints) {
    using T = TypeParam;
    using A = Access<T>;
    auto const q = cylinderControl(convergedTol<T>());
    auto const qr = cylinderRfixControl(convergedTol<T>());
    for (std::size_t n : {std::size_t(10000), std::size_t(10001)}) {
        auto const pts =
            mgeo_test::cylinderPoints<T>({0, 1, 2}, 0.1, 0.2, 1, 6, 20, n, 2 * kPi, 1e-3);
        math::Ccylinder3<T> const start({0, 1, 2}, math::Cdirec3<T>(0, 0.3, 1), T(5));
        math::Ccylinder3<T> expected = start;
        math::Ccylinder3<T> expectedFix = start;
        if (n > 10000) {
            A::fitCylinderGeomZ(pts, 2, q, expected);  // 10001 / 5000 = 2
            A::fitCylinderGeomRfixZ(pts, 2, qr, expectedFix);
        }
        A::fitCylinderGeomZ(pts, 1, q, expected);
        A::fitCylinderGeomRfixZ(pts, 1, qr, expectedFix);
        math::Ccylinder3<T> got = start;
        math::approximate<T>::fitCylinderGeom(pts, got, q);
        math::Ccylinder3<T> gotFix = start;
        math::approximate<T>::fitCylinderGeomRfix(pts, gotFix, qr);
        ASSERT_TRUE(got.isValid());
        EXPECT_TRUE(sameBits(got, expected)) << n;
        EXPECT_TRUE(sameBits(gotFix, expectedFix)) << n;
    }
}

TYPED_TEST(CylinderFit, BadInputGivesAnInvalidCylinder) {
    using T = TypeParam;
    using A = Access<T>;
    auto const q = cylinderControl(convergedTol<T>());
    auto const pts = mgeo_test::cylinderPoints<T>({0, 0, 0}, 0, 0, 1, 1, 4, 8);
    math::Ccylinder3<T> const start({0, 0, 0}, math::Cdirec3<T>(0, 0, 1), T(1));

    // The fit of `points` from `from` with control `qq`, checked to return.
    auto const fit = [&](std::vector<math::Cpoint3<T>> const& points, math::Ccylinder3<T> from,
                         math::CqCylinderGeom<T> const& qq) {
        EXPECT_NO_THROW(math::approximate<T>::fitCylinderGeom(points, from, qq));
        return from;
    };
    std::vector<math::Cpoint3<T>> const seven(pts.begin(), pts.begin() + 7);
    EXPECT_TRUE(mgeo_test::expectInvalid(fit(seven, start, q)));
    math::Ccylinder3<T> c = start;
    math::approximate<T>::fitCylinderGeomRfix(seven, c, cylinderRfixControl(convergedTol<T>()));
    EXPECT_TRUE(mgeo_test::expectInvalid(c));
    EXPECT_TRUE(fit(pts, start, q).isValid());  // eight points are enough
    // maxItr = 1 always fails: the count reaches the limit.
    EXPECT_TRUE(mgeo_test::expectInvalid(fit(pts, start, {1, 1, 1, 1, 1, 1, 1, 1})));

    // Identical points with the start of initValCylinder (every distance 0), NaN
    // coordinates, a NaN start.
    std::vector<math::Cpoint3<T>> const same(20, math::Cpoint3<T>(1, 1, 1));
    math::approximate<T>::initValCylinder(same, c);
    EXPECT_TRUE(mgeo_test::expectInvalid(fit(same, c, q)));
    std::vector<math::Cpoint3<T>> withNan = pts;
    withNan[3].y = std::numeric_limits<T>::quiet_NaN();
    EXPECT_TRUE(mgeo_test::expectInvalid(fit(withNan, start, q)));
    EXPECT_TRUE(mgeo_test::expectInvalid(fit(pts, math::Ccylinder3<T>(), q)));

    // Strides: 0 counts as 1; a huge stride leaves one point, too few.
    math::Ccylinder3<T> zero = start;
    math::Ccylinder3<T> one = start;
    A::fitCylinderGeomZ(pts, 0, q, zero);
    A::fitCylinderGeomZ(pts, 1, q, one);
    EXPECT_TRUE(sameBits(zero, one));
    c = start;
    EXPECT_NO_THROW(A::fitCylinderGeomY(pts, std::numeric_limits<std::uint64_t>::max(), q, c));
    EXPECT_TRUE(mgeo_test::expectInvalid(c));
}

// --- NIST reference data ---------------------------------------------------------------------

struct NistSet {
    std::vector<math::Cpoint3<double>> points;
    double point[3];
    double axis[3];
    double radius;
};

bool readNist(int k, NistSet& set) {
    std::string const file = __FILE__;
    std::string const dir = file.substr(0, file.find_last_of("/\\") + 1) + "data/nist/Cylinder/";
    std::ifstream ds(dir + "cyl" + std::to_string(k) + ".ds");
    std::ifstream fit(dir + "cyl" + std::to_string(k) + ".fit");
    std::size_t n = 0;
    if (!(ds >> n) || n > 100000) {
        return false;
    }
    set.points.resize(n);
    for (auto& p : set.points) {
        ds >> p.x >> p.y >> p.z;
    }
    double diameter = 0;
    fit >> set.point[0] >> set.point[1] >> set.point[2] >> set.axis[0] >> set.axis[1] >>
        set.axis[2] >> diameter;
    set.radius = diameter / 2;
    return bool(ds) && bool(fit);
}

// The certified fits are exact in every printed digit; the data carry five decimals. A fit
// converged to 1e-12 per step agrees with them to a few 1e-13 on these sets, so 1e-7 (rad, and
// times max(1, radius) in length) is the bound that certified metrology software is held to,
// with ample room for rounding.
TEST(CylinderNist, AllThirtyReferenceSets) {
    math::CqCylinderGeom<double> const q{500, 1e-12, 1e-12, 1e-12, 1e-12, 1e-12, 1e-12, 1e-12};
    for (int k = 1; k <= 30; ++k) {
        SCOPED_TRACE(::testing::Message() << "cyl" << k);
        NistSet set;
        ASSERT_TRUE(readNist(k, set));
        math::Ccylinder3<double> c;
        math::approximate<double>::initValCylinder(set.points, c);
        if (k == 10) {
            // Three short arcs of four points each: the best trial direction lies 85 degrees
            // off the axis, and from there Gauss-Newton settles in another local minimum
            // (mean squared deviation 52 against 1e-4). Start instead from the reference axis
            // turned by 20 degrees, with the trial point and radius.
            double const t = 20 * kPi / 180;
            double e[3], f[3];
            mgeo_test::completeBasis(set.axis, e, f);
            c = math::Ccylinder3<double>(
                c.point(),
                math::Cdirec3<double>(std::cos(t) * set.axis[0] + std::sin(t) * e[0],
                                      std::cos(t) * set.axis[1] + std::sin(t) * e[1],
                                      std::cos(t) * set.axis[2] + std::sin(t) * e[2]),
                c.radius());
        }
        if (set.points.size() < 8) {
            // cyl7 has six points, fewer than the public fit accepts; the worker of the
            // dominant start axis takes them.
            math::Ccylinder3<double> rejected = c;
            math::approximate<double>::fitCylinderGeom(set.points, rejected, q);
            EXPECT_TRUE(mgeo_test::expectInvalid(rejected));
            double const ax = std::fabs(c.axis().x());
            double const ay = std::fabs(c.axis().y());
            double const az = std::fabs(c.axis().z());
            if (az >= ay && az >= ax) {
                Access<double>::fitCylinderGeomZ(set.points, 1, q, c);
            } else if (ay >= ax) {
                Access<double>::fitCylinderGeomY(set.points, 1, q, c);
            } else {
                Access<double>::fitCylinderGeomX(set.points, 1, q, c);
            }
        } else {
            math::approximate<double>::fitCylinderGeom(set.points, c, q);
        }
        ASSERT_TRUE(c.isValid());
        // The centroid's foot on the reference axis, measured against the fitted axis.
        auto const m = centroid(set.points);
        double s = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            s += (m[i] - set.point[i]) * set.axis[i];
        }
        double const foot[3] = {set.point[0] + s * set.axis[0], set.point[1] + s * set.axis[1],
                                set.point[2] + s * set.axis[2]};
        double const scale = std::fmax(1.0, set.radius);
        EXPECT_LT(axisAngle(c, set.axis), 1e-7);
        EXPECT_LT(axisDistance(c, foot), 1e-7 * scale);
        EXPECT_TRUE(nearAbs(c.radius(), set.radius, 1e-7 * scale));
    }
}

// --- Ellipses --------------------------------------------------------------------------------

template <typename T>
class EllipseFit : public ::testing::Test {};
TYPED_TEST_SUITE(EllipseFit, RealTypes);

template <typename T>
math::CqEllipseGeom<T> ellipseControl() {
    T const tol = std::is_same_v<T, float> ? T(1e-5) : T(1e-10);
    return {100, tol, tol, tol, tol, tol};
}

template <typename T>
math::CqEllipseGeomLM<T> ellipseLMControl() {
    T const tol = std::is_same_v<T, float> ? T(1e-5) : T(1e-10);
    return {100, tol, tol, tol, tol, tol, T(-1)};
}

struct EllipseCase {
    double a;
    double b;
    double angle;
};

// The ellipse matches (cx, cy, a, b, angle) with a >= b, the angle taken modulo pi.
template <typename T>
::testing::AssertionResult sameEllipse(math::Cellipse2<T> const& e, double cx, double cy, double a,
                                       double b, double angle, double tol) {
    if (!e.isValid()) {
        return ::testing::AssertionFailure() << "invalid ellipse";
    }
    if (e.b() > e.a()) {
        return ::testing::AssertionFailure() << "b " << e.b() << " > a " << e.a();
    }
    double const turn = std::remainder(double(e.angle()) - angle, kPi);
    double const scale = std::fmax(1.0, a);
    if (std::fabs(double(e.center().x) - cx) > tol * scale ||
        std::fabs(double(e.center().y) - cy) > tol * scale ||
        std::fabs(double(e.a()) - a) > tol * scale || std::fabs(double(e.b()) - b) > tol * scale ||
        (a - b > 1e-3 && std::fabs(turn) > tol * scale)) {
        return ::testing::AssertionFailure()
               << "got centre " << e.center() << " a " << e.a() << " b " << e.b() << " angle "
               << e.angle() << ", expected (" << cx << ", " << cy << ") " << a << " " << b << " "
               << angle;
    }
    return ::testing::AssertionSuccess();
}

TYPED_TEST(EllipseFit, BothFitsRecoverEllipsesOfSeveralShapes) {
    using T = TypeParam;
    // The last two are given with b > a: the fit reports them with the axes swapped and the
    // angle turned by pi/2; a circle keeps a = b.
    EllipseCase const cases[] = {{5, 3, 0.3},  {5, 3, kPi / 4}, {5, 4.9, 1.0},
                                 {10, 1, 2.0}, {5, 2, 0},       {6, 5.5, -2.5},
                                 {3, 5, 0.3},  {1, 2, -1.2},    {4, 4, 0}};
    // Exact points rounded to T; the foot points (four Newton steps) are exact to about
    // 1e-8 relative on the flattest case.
    double const tol = std::is_same_v<T, float> ? 1e-4 : 1e-7;
    for (EllipseCase const& k : cases) {
        SCOPED_TRACE(::testing::Message() << k.a << " " << k.b << " " << k.angle);
        auto const pts = mgeo_test::ellipsePoints<T>(3, -2, k.a, k.b, k.angle, 120);
        double const a = std::fmax(k.a, k.b);
        double const b = std::fmin(k.a, k.b);
        double const angle = k.a >= k.b ? k.angle : k.angle + kPi / 2;
        math::Cellipse2<T> gn;
        math::approximate<T>::fitEllipseGeom(pts, gn, ellipseControl<T>());
        EXPECT_TRUE(sameEllipse(gn, 3, -2, a, b, angle, tol));
        math::Cellipse2<T> lm;
        auto q = ellipseLMControl<T>();
        math::approximate<T>::fitEllipseGeomLM(pts, lm, q);
        EXPECT_TRUE(sameEllipse(lm, 3, -2, a, b, angle, tol));
    }
}

TYPED_TEST(EllipseFit, NoisyEllipseLandsWithinTheNoise) {
    using T = TypeParam;
    auto const pts = mgeo_test::ellipsePoints<T>(-1, 4, 8, 3, 0.9, 500, 2 * kPi, 0.01, 3);
    // Uniform noise of 0.01 on 500 points: parameter errors of a few 1e-3 at most.
    math::CqEllipseGeomStdAbw<T> q{100, T(1e-5), T(1e-5), T(1e-5), T(1e-5), T(1e-5), T(-1)};
    math::Cellipse2<T> gn;
    math::approximate<T>::fitEllipseGeom(pts, gn, q);
    EXPECT_TRUE(sameEllipse(gn, -1, 4, 8, 3, 0.9, 3e-3));
    EXPECT_EQ(q.stdAbw, math::approximate<T>::StdAbwEllipse(pts, gn));
    EXPECT_LT(double(q.stdAbw), 0.01);
    EXPECT_EQ(q.maxItr, 100u);
    EXPECT_EQ(q.tolAngle, T(1e-5));
    math::Cellipse2<T> lm;
    auto ql = ellipseLMControl<T>();
    ql.tolX = ql.tolY = ql.tolA = ql.tolB = ql.tolAngle = T(1e-5);
    math::approximate<T>::fitEllipseGeomLM(pts, lm, ql);
    EXPECT_TRUE(sameEllipse(lm, -1, 4, 8, 3, 0.9, 3e-3));
    // Both minimise the same deviation: their results agree far below the noise.
    EXPECT_TRUE(nearAbs(double(lm.a()), double(gn.a()), 1e-4));
    EXPECT_TRUE(nearAbs(double(lm.b()), double(gn.b()), 1e-4));
}

TYPED_TEST(EllipseFit, LevenbergMarquardtRecoversAHalfEllipse) {
    using T = TypeParam;
    auto const pts = mgeo_test::ellipsePoints<T>(3, -2, 5, 3, -0.7, 200, kPi);
    math::Cellipse2<T> lm;
    auto q = ellipseLMControl<T>();
    math::approximate<T>::fitEllipseGeomLM(pts, lm, q);
    // A half arc is less well conditioned than the full ellipse: 1e-5 in double.
    EXPECT_TRUE(sameEllipse(lm, 3, -2, 5, 3, -0.7, std::is_same_v<T, float> ? 1e-3 : 1e-5));
}

// The Levenberg-Marquardt fit converges in few steps (the strict limit: valid with maxItr
// = k + 1 means converged within k steps): 20 noise-free points of a half ellipse, then seeded
// random ellipses, full (b / a >= 0.1) and half (b / a >= 0.3, noise 0.5 % of b) within 30
// steps, 90-degree arcs within 100, anywhere in the plane and at any angle and arc start.
TYPED_TEST(EllipseFit, LevenbergMarquardtConvergesInFewSteps) {
    using T = TypeParam;
    double const rel = std::is_same_v<T, float> ? 2e-5 : 1e-7;
    auto const control = [rel](double a, unsigned long long maxItr) {
        T const tol = T(rel * a);
        return math::CqEllipseGeomLM<T>{maxItr, tol, tol, tol, tol, T(rel), T(0)};
    };
    std::vector<math::Cpoint2<T>> half;
    for (int k = 0; k < 20; ++k) {
        half.emplace_back(T(10 * std::cos(k * kPi / 19)), T(3 * std::sin(k * kPi / 19)));
    }
    math::Cellipse2<T> e;
    auto q = control(10, 31);
    math::approximate<T>::fitEllipseGeomLM(half, e, q);
    EXPECT_TRUE(sameEllipse(e, 0, 0, 10, 3, 0, 1e-4));

    mgeo_test::Noise rnd(17);
    for (int kind = 0; kind < 3; ++kind) {
        double const arc = kind == 0 ? 2 * kPi : (kind == 1 ? kPi : kPi / 2);
        for (int trial = 0; trial < 70; ++trial) {
            double const cx = rnd(100);
            double const cy = rnd(100);
            double const a = 1 + 49 * rnd.unit();
            double const b = a * (kind == 0 ? 0.1 + 0.9 * rnd.unit() : 0.3 + 0.7 * rnd.unit());
            double const phi = kPi * rnd.unit();
            double const t0 = 2 * kPi * rnd.unit();
            double const noise = kind == 0 ? 0.0 : 0.005 * b;
            std::vector<math::Cpoint2<T>> pts;
            for (int k = 0; k < 30; ++k) {
                double const t = t0 + arc * k / (kind == 0 ? 30 : 29);
                // Noise along the normal of the ellipse.
                double const nx = b * std::cos(t);
                double const ny = a * std::sin(t);
                double const d = rnd(noise) / std::hypot(nx, ny);
                double const x = a * std::cos(t) + d * nx;
                double const y = b * std::sin(t) + d * ny;
                pts.emplace_back(T(cx + x * std::cos(phi) - y * std::sin(phi)),
                                 T(cy + x * std::sin(phi) + y * std::cos(phi)));
            }
            auto qr = control(a, kind == 2 ? 101 : 31);
            math::approximate<T>::fitEllipseGeomLM(pts, e, qr);
            ASSERT_TRUE(e.isValid()) << "kind " << kind << " trial " << trial;
            if (kind < 2) {
                // Full and half ellipses are well determined: the fit lies within the noise.
                EXPECT_TRUE(sameEllipse(e, cx, cy, a, b, phi, kind == 0 ? 1e-4 : 0.02))
                    << "kind " << kind << " trial " << trial;
            }
        }
    }
}

TYPED_TEST(EllipseFit, LastStdAbwIsWrittenByTheLastTrial) {
    using T = TypeParam;
    auto const pts = mgeo_test::ellipsePoints<T>(0, 0, 4, 2, 0.4, 80, 2 * kPi, 0.02, 11);
    math::Cellipse2<T> e;
    auto q = ellipseLMControl<T>();
    q.tolX = q.tolY = q.tolA = q.tolB = q.tolAngle = T(1e-4);
    math::approximate<T>::fitEllipseGeomLM(pts, e, q);
    ASSERT_TRUE(e.isValid());
    // The last trial was either accepted (it is the result) or rejected (not better than it).
    T const result = math::approximate<T>::StdAbwEllipse(pts, e);
    EXPECT_TRUE(std::isfinite(q.lastStdAbw));
    EXPECT_GE(q.lastStdAbw, result);
    EXPECT_LT(double(q.lastStdAbw), double(result) * 1.01);
    EXPECT_EQ(q.tolA, T(1e-4));
}

TYPED_TEST(EllipseFit, ToleranceFieldsAndIterationLimit) {
    using T = TypeParam;
    auto const pts = mgeo_test::ellipsePoints<T>(1, 1, 5, 3, 0.3, 60);
    // Both fits with tolY = -1 (no correction can meet it) or with maxItr = 1 (always fails).
    auto const fits = [&pts](bool negTolY) {
        auto q = ellipseControl<T>();
        auto ql = ellipseLMControl<T>();
        if (negTolY) {
            q.tolY = ql.tolY = T(-1);
        } else {
            q.maxItr = ql.maxItr = 1;
        }
        std::pair<math::Cellipse2<T>, math::Cellipse2<T>> e;
        math::approximate<T>::fitEllipseGeom(pts, e.first, q);
        math::approximate<T>::fitEllipseGeomLM(pts, e.second, ql);
        return e;
    };
    // fitEllipseGeom compares both centre corrections with tolX: tolY does not matter; the
    // Levenberg-Marquardt fit reads all five.
    auto const tolY = fits(true);
    EXPECT_TRUE(tolY.first.isValid());
    EXPECT_TRUE(mgeo_test::expectInvalid(tolY.second));
    auto const once = fits(false);
    EXPECT_TRUE(mgeo_test::expectInvalid(once.first));
    EXPECT_TRUE(mgeo_test::expectInvalid(once.second));
}

TYPED_TEST(EllipseFit, ThreePointsAreTooFewFourAreAccepted) {
    using T = TypeParam;
    auto const four = mgeo_test::circlePoints<T>(2, 3, 1.5, 4);
    std::vector<math::Cpoint2<T>> const three(four.begin(), four.begin() + 3);
    math::Cellipse2<T> e;
    EXPECT_NO_THROW(math::approximate<T>::fitEllipseGeom(three, e, ellipseControl<T>()));
    EXPECT_TRUE(mgeo_test::expectInvalid(e));
    auto q = ellipseLMControl<T>();
    EXPECT_NO_THROW(math::approximate<T>::fitEllipseGeomLM(three, e, q));
    EXPECT_TRUE(mgeo_test::expectInvalid(e));
    EXPECT_TRUE(std::isnan(q.lastStdAbw));
    // Four points of a circle: the start is exact and the fit accepts it.
    math::approximate<T>::fitEllipseGeom(four, e, ellipseControl<T>());
    EXPECT_TRUE(sameEllipse(e, 2, 3, 1.5, 1.5, 0, 1e-5));
    math::approximate<T>::fitEllipseGeomLM(four, e, q);
    EXPECT_TRUE(sameEllipse(e, 2, 3, 1.5, 1.5, 0, 1e-5));
}

}  // namespace
