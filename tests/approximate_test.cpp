// Tests of the line, plane, circle and sphere fits of <math/approximate.h>.
#include <gtest/gtest.h>
#include <math/approximate.h>
#include <math/matrix.h>
#include <math/solver_le.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using mgeo_test::nearAbs;
using mgeo_test::RealTypes;

template <typename T>
using A = math::approximate<T>;
template <typename T>
using P2 = math::Cpoint2<T>;
template <typename T>
using P3 = math::Cpoint3<T>;

template <typename T>
class LineFit : public ::testing::Test {};
TYPED_TEST_SUITE(LineFit, RealTypes);
template <typename T>
class PlaneFit : public ::testing::Test {};
TYPED_TEST_SUITE(PlaneFit, RealTypes);
template <typename T>
class CircleFit : public ::testing::Test {};
TYPED_TEST_SUITE(CircleFit, RealTypes);
template <typename T>
class SphereFit : public ::testing::Test {};
TYPED_TEST_SUITE(SphereFit, RealTypes);

// Gauss-Newton tolerance that T can reach at the given scale of the data.
template <typename T>
T gnTol(double scale) {
    return T((std::is_same_v<T, float> ? 1e-4 : 1e-9) * scale);
}

// Noise-scaled bound: float data carry about 1e-7 relative rounding.
template <typename T>
double fitTol(double forDouble) {
    return std::is_same_v<T, float> ? std::max(forDouble, 2e-4) : forDouble;
}

// --- Lines -----------------------------------------------------------------------------------

TYPED_TEST(LineFit, AxisParallelLinesAndFewPoints) {
    using T = TypeParam;
    math::Cline2<T> line;
    A<T>::fitLineGeom(std::vector<P2<T>>{{T(0), T(2)}, {T(3), T(2)}, {T(7), T(2)}}, line);
    EXPECT_EQ(line.direction().x(), T(1));
    EXPECT_EQ(line.direction().y(), T(0));
    EXPECT_EQ(line.point().y, T(2));
    A<T>::fitLineGeom(std::vector<P2<T>>{{T(5), T(0)}, {T(5), T(1)}, {T(5), T(9)}}, line);
    EXPECT_EQ(line.direction().x(), T(0));
    EXPECT_EQ(line.direction().y(), T(1));

    A<T>::fitLineGeom(std::vector<P2<T>>{{T(1), T(1)}}, line);
    EXPECT_FALSE(line.isValid());
    EXPECT_TRUE(std::isnan(line.point().x));
    A<T>::fitLineGeom(std::vector<P2<T>>{{T(1), T(1)}, {T(4), T(5)}}, line);
    EXPECT_EQ(line.point(), P2<T>(T(1), T(1)));
    EXPECT_TRUE(nearAbs(line.direction().x(), T(0.6), 1e-6));

    math::CqLineGeom2DStdAbw<T> q{T(1), T(1)};
    A<T>::fitLineGeom(std::vector<P2<T>>{{T(1), T(1)}, {T(4), T(5)}}, line, q);
    EXPECT_TRUE(line.isValid());
    EXPECT_TRUE(std::isnan(q.across) && std::isnan(q.along));
}

// Non-finite sums leave the 2 x 2 eigen routine without work: the direction must then be NaN,
// never whatever the eigenvector matrix happened to hold.
TYPED_TEST(LineFit, EigenFitOfNonFinitePointsIsInvalid) {
    using T = TypeParam;
    T const inf = std::numeric_limits<T>::infinity();
    for (int rep = 0; rep < 5; ++rep) {
        math::Cline2<T> line;
        math::CqLineGeom2DStdAbw<T> q{T(0), T(0)};
        std::vector<P2<T>> pts{{T(0), T(0)}, {T(1), T(1)}, {inf, T(2)}, {T(3), T(4)}};
        EXPECT_NO_THROW(A<T>::fitLineGeom(pts, line, q));
        EXPECT_TRUE(std::isnan(line.direction().x()) || std::isnan(line.direction().y()));
        EXPECT_FALSE(line.isValid());
    }
}

// Independent orthogonal regression: the angle that minimises the sum of squared orthogonal
// distances is 0.5 atan2(2 Sxy, Sxx - Syy).
TYPED_TEST(LineFit, NoisyLineMatchesOrthogonalRegressionAndRecordOrder) {
    using T = TypeParam;
    mgeo_test::Noise noise(7);
    std::vector<P2<T>> pts;
    for (int i = 0; i < 200; ++i) {
        double const s = -50 + 0.5 * i;
        pts.emplace_back(T(10 + 0.8 * s + noise(0.05)), T(-4 + 0.6 * s + noise(0.05)));
    }
    double mx = 0, my = 0;
    for (auto const& p : pts) mx += p.x, my += p.y;
    mx /= 200, my /= 200;
    double sxx = 0, syy = 0, sxy = 0;
    for (auto const& p : pts) {
        sxx += (p.x - mx) * (p.x - mx);
        syy += (p.y - my) * (p.y - my);
        sxy += (p.x - mx) * (p.y - my);
    }
    double const angle = 0.5 * std::atan2(2 * sxy, sxx - syy);

    math::Cline2<T> closed, eigen;
    math::CqLineGeom2DStdAbw<T> q{};
    A<T>::fitLineGeom(pts, closed);
    A<T>::fitLineGeom(pts, eigen, q);
    for (auto const* l : {&closed, &eigen}) {
        double const dirAngle = std::atan2(double(l->direction().y()), double(l->direction().x()));
        double diff = std::fmod(dirAngle - angle + 2 * mgeo_test::kPi, mgeo_test::kPi);
        diff = std::min(diff, mgeo_test::kPi - diff);
        EXPECT_LT(diff, fitTol<T>(1e-10));
        EXPECT_TRUE(nearAbs(l->point().x, T(mx), fitTol<T>(1e-9)));
    }
    // Across the line the spread is the noise (uniform 0.05: sd about 0.029 per coordinate);
    // along the line it is that of s (sd about 29).
    EXPECT_LT(q.across, T(0.05));
    EXPECT_GT(q.along, T(20));
    // In float the raw-sum scatter loses about 5e-3 of the small eigenvalue to cancellation.
    EXPECT_TRUE(
        nearAbs(q.across, A<T>::StdAbwLine2(pts, closed), std::is_same_v<T, float> ? 5e-3 : 1e-9));
}

TYPED_TEST(LineFit, SpaceLineDirectionAndDeviations) {
    using T = TypeParam;
    mgeo_test::Noise noise(3);
    std::vector<P3<T>> pts;
    for (int i = 0; i < 100; ++i) {
        double const s = i - 50.0;
        pts.emplace_back(T(1 + 2 * s / 3 + noise(0.01)), T(2 - s / 3 + noise(0.01)),
                         T(3 + 2 * s / 3 + noise(0.01)));
    }
    math::Cline3<T> line;
    math::CqLineGeom3DStdAbw<T> q{};
    A<T>::fitLineGeom(pts, line, q);
    double const dot =
        std::fabs(double(line.direction().x()) * 2 / 3 - double(line.direction().y()) / 3 +
                  double(line.direction().z()) * 2 / 3);
    EXPECT_NEAR(dot, 1.0, 1e-7);
    EXPECT_GT(q.axis1, T(25));  // along the line first
    EXPECT_LT(q.axis2, T(0.02));
    EXPECT_LT(q.axis3, T(0.02));

    A<T>::fitLineGeom(std::vector<P3<T>>{{T(0), T(0), T(0)}}, line, q);
    EXPECT_FALSE(line.isValid());
    EXPECT_TRUE(std::isnan(q.axis1));
}

TYPED_TEST(LineFit, LsqReturnsAVarianceNotARoot) {
    using T = TypeParam;
    math::Cline2<T> line;
    std::vector<P2<T>> const collinear{{T(0), T(1)}, {T(1), T(3)}, {T(2), T(5)}};
    EXPECT_NEAR(A<T>::fitLineLsq(collinear, line), 0.0, 1e-9);
    EXPECT_NEAR(double(line.direction().y() / line.direction().x()), 2.0, 1e-5);
    EXPECT_NEAR(double(line.point().x), 0.0, 1e-9);
    EXPECT_NEAR(double(line.point().y), 1.0, 1e-5);

    // Points (0, 0), (1, 1), (2, 0): the algebraic fit is 0.5 x + 0.5 y = 1 (it minimises the
    // algebraic, not the orthogonal residuals); squared distances 2, 0, 0 -> mean 2/3.
    std::vector<P2<T>> const three{{T(0), T(0)}, {T(1), T(1)}, {T(2), T(0)}};
    double const variance = A<T>::fitLineLsq(three, line);
    EXPECT_NEAR(variance, 2.0 / 3.0, 1e-6);
    math::CqLineLsqNStdAbw<T> q{};
    A<T>::fitLineLsqN(three, line, q);
    EXPECT_NEAR(double(q.stdAbw), 2.0 / 3.0, 1e-6);

    EXPECT_TRUE(std::isnan(A<T>::fitLineLsq(std::vector<P2<T>>{{T(0), T(0)}, {T(1), T(2)}}, line)));
    EXPECT_TRUE(line.isValid());
    EXPECT_TRUE(std::isnan(A<T>::fitLineLsq(std::vector<P2<T>>{}, line)));
    EXPECT_FALSE(line.isValid());
}

TYPED_TEST(LineFit, DeviationQuirks) {
    using T = TypeParam;
    std::vector<P2<T>> const pts{{T(0), T(0)}, {T(1), T(0.1)}, {T(2), T(-0.1)}, {T(3), T(0)}};
    math::Cline2<T> const line(P2<T>(T(0), T(0)), math::Cdirec2<T>::posX);
    math::Cline2<T> const shifted(P2<T>(T(0), T(5)), math::Cdirec2<T>::posX);
    // About the points' own mean: a parallel shift scores the same.
    EXPECT_TRUE(nearAbs(A<T>::StdAbwLine2(pts, line), A<T>::StdAbwLine2(pts, shifted), 1e-5));
    EXPECT_TRUE(nearAbs(A<T>::StdAbwLine2(pts, line), T(std::sqrt(0.02 / 3)), 1e-6));

    // The radius is not read.
    auto const circle = mgeo_test::circlePoints<T>(1, 2, 5, 16);
    EXPECT_TRUE(nearAbs(A<T>::StdAbwCircle2(circle, math::Ccircle2<T>(P2<T>(T(1), T(2)), T(7))),
                        T(0), fitTol<T>(1e-7)));
    // One point divides by n - 1 = 0.
    EXPECT_FALSE(std::isfinite(A<T>::StdAbwSphere(
        std::vector<P3<T>>{{T(1), T(0), T(0)}}, math::Csphere3<T>(P3<T>(T(0), T(0), T(0)), T(2)))));
}

// --- Planes ----------------------------------------------------------------------------------

TYPED_TEST(PlaneFit, CoplanarPointsBothFits) {
    using T = TypeParam;
    std::vector<P3<T>> const pts{
        {T(0), T(0), T(2)}, {T(1), T(0), T(2)}, {T(0), T(1), T(2)}, {T(3), T(5), T(2)}};
    math::Cplane3<T> geom, fast;
    A<T>::fitPlaneGeom(pts, geom);
    A<T>::fitPlaneGeomFast(pts, fast, math::CqPlaneGeomFast<T>{100, T(1e-6)});
    for (auto const* p : {&geom, &fast}) {
        EXPECT_TRUE(nearAbs(std::fabs(p->normal().z()), T(1), 1e-6));
        EXPECT_TRUE(nearAbs(p->d() * p->normal().z(), T(-2), fitTol<T>(1e-9)));
    }
    math::CqPlaneGeomStdAbw<T> q{T(1), T(1), T(1)};
    A<T>::fitPlaneGeom(std::vector<P3<T>>(pts.begin(), pts.begin() + 3), geom, q);
    EXPECT_TRUE(geom.isValid());
    EXPECT_TRUE(std::isnan(q.normal) && std::isnan(q.middle) && std::isnan(q.main));
    A<T>::fitPlaneGeom(std::vector<P3<T>>(pts.begin(), pts.begin() + 2), geom, q);
    EXPECT_FALSE(geom.isValid());
    A<T>::fitPlaneGeomFast(std::vector<P3<T>>{}, fast, math::CqPlaneGeomFast<T>{1, T(0)});
    EXPECT_FALSE(fast.isValid());
}

TYPED_TEST(PlaneFit, NoisyTiltedPlaneAndDeviationOrder) {
    using T = TypeParam;
    auto const pts = mgeo_test::planePoints<T>({100, -20, 50}, 1, 2, 2, 30, 500, 0.01, 5);
    math::Cplane3<T> geom, fast;
    math::CqPlaneGeomStdAbw<T> q{};
    A<T>::fitPlaneGeom(pts, geom, q);
    A<T>::fitPlaneGeomFast(pts, fast, math::CqPlaneGeomFast<T>{1000, T(0)});
    for (auto const* p : {&geom, &fast}) {
        double const c =
            std::fabs((p->normal().x() + 2.0 * p->normal().y() + 2.0 * p->normal().z()) / 3);
        EXPECT_NEAR(c, 1.0, 1e-6);
        EXPECT_NEAR(double(p->normal().x() * T(100) + p->normal().y() * T(-20) +
                           p->normal().z() * T(50) + p->d()),
                    0.0, fitTol<T>(2e-3));
    }
    if (std::is_same_v<T, double>) {
        EXPECT_LT(q.normal, T(0.01));  // in float cancellation may make it NaN (no abs taken)
    }
    EXPECT_GT(q.middle, T(10));
    EXPECT_GE(q.main, q.middle);
}

// maxItr = 0 runs two passes: the result then differs from a single-pass run only through the
// second pass, and equals a run with maxItr = 0 and any tolerance below the first norm.
TYPED_TEST(PlaneFit, FastFitPassRule) {
    using T = TypeParam;
    auto const pts = mgeo_test::planePoints<T>({0, 0, 0}, 0.3, 0.1, 1, 10, 50, 1.0, 9);
    math::Cplane3<T> zero, one, hugeTol;
    A<T>::fitPlaneGeomFast(pts, zero, math::CqPlaneGeomFast<T>{0, T(0)});
    A<T>::fitPlaneGeomFast(pts, one, math::CqPlaneGeomFast<T>{1, T(0)});
    A<T>::fitPlaneGeomFast(pts, hugeTol,
                           math::CqPlaneGeomFast<T>{100, std::numeric_limits<T>::max()});
    // A tolerance above the first norm stops after one pass; maxItr 0 needs two.
    EXPECT_NE(zero.normal().x(), hugeTol.normal().x());
    EXPECT_NE(zero.normal().x(), one.normal().x());
    // NaN points end the iteration without hanging.
    std::vector<P3<T>> bad(5, P3<T>(std::numeric_limits<T>::quiet_NaN(), T(0), T(0)));
    math::Cplane3<T> nanPlane;
    A<T>::fitPlaneGeomFast(bad, nanPlane, math::CqPlaneGeomFast<T>{~0ULL, T(0)});
    EXPECT_FALSE(nanPlane.isValid());
}

std::vector<P3<double>> readNist(std::string const& path) {
    std::ifstream in(path);
    std::size_t n = 0;
    in >> n;
    std::vector<P3<double>> pts;
    for (std::size_t i = 0; i < n; ++i) {
        double x, y, z;
        in >> x >> y >> z;
        pts.emplace_back(x, y, z);
    }
    return pts;
}

std::vector<double> readFit(std::string const& path) {
    std::ifstream in(path);
    std::vector<double> v;
    double x;
    while (in >> x) v.push_back(x);
    return v;
}

TEST(NistReference, PlaneFitsMatchCertifiedResults) {
    int checked = 0;
    for (int k = 1; k <= 30; ++k) {
        std::string const base =
            std::string(MGEO_TEST_DATA_DIR) + "/nist/Plane/pla" + std::to_string(k);
        auto const pts = readNist(base + ".ds");
        auto const ref = readFit(base + ".fit");
        ASSERT_EQ(ref.size(), 6u) << base;
        math::Cplane3<double> plane;
        math::approximate<double>::fitPlaneGeom(pts, plane);
        double const c =
            plane.normal().x() * ref[3] + plane.normal().y() * ref[4] + plane.normal().z() * ref[5];
        double const angle = std::acos(std::min(1.0, std::fabs(c)));
        double extent = 0;
        for (auto const& p : pts)
            extent = std::max({extent, std::fabs(p.x - pts[0].x), std::fabs(p.y - pts[0].y),
                               std::fabs(p.z - pts[0].z)});
        double const offset = plane.normal().x() * ref[0] + plane.normal().y() * ref[1] +
                              plane.normal().z() * ref[2] + plane.d();
        EXPECT_LT(angle, 1e-7) << base;
        EXPECT_LT(std::fabs(offset), 1e-7 * std::max(1.0, extent)) << base;
        ++checked;
    }
    EXPECT_EQ(checked, 30);
}

TEST(NistReference, SphereFitsMatchCertifiedResults) {
    int checked = 0;
    for (int k = 1; k <= 30; ++k) {
        std::string const base =
            std::string(MGEO_TEST_DATA_DIR) + "/nist/Sphere/sph" + std::to_string(k);
        auto const pts = readNist(base + ".ds");
        auto const ref = readFit(base + ".fit");
        ASSERT_EQ(ref.size(), 4u) << base;
        if (pts.size() < 4)
            continue;
        math::Csphere3<double> sphere;
        math::approximate<double>::fitSphereGeom(
            pts, sphere, math::CqSphereGeom<double>{1000, 1e-12, 1e-12, 1e-12, 1e-12});
        ASSERT_TRUE(sphere.isValid()) << base;
        double const r = ref[3] / 2;
        double const tol = 1e-7 * std::max(1.0, r);
        EXPECT_NEAR(sphere.center().x, ref[0], tol) << base;
        EXPECT_NEAR(sphere.center().y, ref[1], tol) << base;
        EXPECT_NEAR(sphere.center().z, ref[2], tol) << base;
        EXPECT_NEAR(sphere.radius(), r, tol) << base;
        ++checked;
    }
    EXPECT_GT(checked, 20);
}

// --- Circles ---------------------------------------------------------------------------------

TYPED_TEST(CircleFit, AlgebraicFitNeedsFourPoints) {
    using T = TypeParam;
    math::Ccircle2<T> circle;
    auto const four = mgeo_test::circlePoints<T>(10, -3, 1, 4);
    A<T>::fitCircleLsq(four, circle);
    EXPECT_TRUE(nearAbs(circle.center().x, T(10), fitTol<T>(1e-9)));
    EXPECT_TRUE(nearAbs(circle.center().y, T(-3), fitTol<T>(1e-9)));
    EXPECT_TRUE(nearAbs(circle.radius(), T(1), fitTol<T>(1e-9)));
    A<T>::fitCircleLsq(std::vector<P2<T>>(four.begin(), four.begin() + 3), circle);
    EXPECT_FALSE(circle.isValid());

    math::CqCircleLsqStdAbw<T> q{T(-1)};
    auto const noisy = mgeo_test::circlePoints<T>(3, 4, 20, 200, 2 * mgeo_test::kPi, 0.1, 11);
    A<T>::fitCircleLsq(noisy, circle, q);
    EXPECT_TRUE(nearAbs(circle.radius(), T(20), 0.02));
    EXPECT_TRUE(nearAbs(q.stdAbw, A<T>::StdAbwCircle2(noisy, circle), 1e-6));
}

// On a short noisy arc the algebraic fit of fitCircleLsq is biased towards small circles;
// Taubin's fit stays close to the geometric one.
TYPED_TEST(CircleFit, BetaFitIsExactAndRobustOnShortArcs) {
    using T = TypeParam;
    math::Ccircle2<T> beta, lsq, geom;
    A<T>::fitCircleLsqBeta(mgeo_test::circlePoints<T>(7, -2, 5, 8), beta);
    ASSERT_TRUE(beta.isValid());
    EXPECT_TRUE(nearAbs(beta.radius(), T(5), fitTol<T>(1e-9)));
    EXPECT_TRUE(nearAbs(beta.center().x, T(7), fitTol<T>(1e-9)));

    auto const arc = mgeo_test::circlePoints<T>(0, 0, 100, 100, 0.5, 0.5, 21);
    A<T>::fitCircleLsqBeta(arc, beta);
    A<T>::fitCircleLsq(arc, lsq);
    A<T>::fitCircleGeom(arc, geom,
                        math::CqCircleGeom2D<T>{100, gnTol<T>(100), gnTol<T>(100), gnTol<T>(100)});
    ASSERT_TRUE(beta.isValid() && geom.isValid());
    EXPECT_LT(std::fabs(beta.radius() - geom.radius()), std::fabs(lsq.radius() - geom.radius()));

    A<T>::fitCircleLsqBeta(std::vector<P2<T>>(5, P2<T>(T(1), T(1))), beta);
    EXPECT_FALSE(beta.isValid());
    A<T>::fitCircleLsqBeta(mgeo_test::circlePoints<T>(0, 0, 1, 3), beta);
    EXPECT_FALSE(beta.isValid());
}

TYPED_TEST(CircleFit, GeometricFitExactNoisyAndPartialArcs) {
    using T = TypeParam;
    math::Ccircle2<T> circle;
    math::CqCircleGeom2D<T> const control{100, gnTol<T>(3), gnTol<T>(3), gnTol<T>(3)};
    // Three points determine the circle.
    A<T>::fitCircleGeom(mgeo_test::circlePoints<T>(-2, 5, 3, 3), circle, control);
    ASSERT_TRUE(circle.isValid());
    EXPECT_TRUE(nearAbs(circle.radius(), T(3), fitTol<T>(1e-9)));
    EXPECT_TRUE(nearAbs(circle.center().x, T(-2), fitTol<T>(1e-9)));

    // Noisy half circle far from the origin.
    auto const arc = mgeo_test::circlePoints<T>(500, 300, 40, 300, mgeo_test::kPi, 0.05, 4);
    math::CqCircleGeom2DStdAbw<T> q{100, gnTol<T>(500), gnTol<T>(500), gnTol<T>(500), T(0)};
    A<T>::fitCircleGeom(arc, circle, q);
    ASSERT_TRUE(circle.isValid());
    EXPECT_TRUE(nearAbs(circle.radius(), T(40), 0.02));
    EXPECT_TRUE(nearAbs(circle.center().y, T(300), 0.02));
    EXPECT_EQ(q.maxItr, 100u);  // control fields untouched
    EXPECT_EQ(q.tolR, gnTol<T>(500));
    EXPECT_TRUE(nearAbs(q.stdAbw, A<T>::StdAbwCircle2(arc, circle), 1e-9));
    EXPECT_LT(q.stdAbw, T(0.05));
}

TYPED_TEST(CircleFit, StrictIterationLimitAndDegenerateInput) {
    using T = TypeParam;
    auto const pts = mgeo_test::circlePoints<T>(1, 1, 2, 20);
    math::Ccircle2<T> circle;
    A<T>::fitCircleGeom(pts, circle, math::CqCircleGeom2D<T>{1, T(1), T(1), T(1)});
    EXPECT_FALSE(circle.isValid());  // the one permitted step reaches the limit
    A<T>::fitCircleGeom(pts, circle, math::CqCircleGeom2D<T>{2, T(1e3), T(1e3), T(1e3)});
    EXPECT_TRUE(circle.isValid());  // converged in the first step, below the limit
    A<T>::fitCircleGeom(std::vector<P2<T>>(pts.begin(), pts.begin() + 2), circle,
                        math::CqCircleGeom2D<T>{100, T(1e-6), T(1e-6), T(1e-6)});
    EXPECT_FALSE(circle.isValid());

    T const nan = std::numeric_limits<T>::quiet_NaN();
    std::vector<P2<T>> bad = pts;
    bad[3] = P2<T>(nan, T(0));
    EXPECT_NO_THROW(
        A<T>::fitCircleGeom(bad, circle, math::CqCircleGeom2D<T>{50, T(1e-6), T(1e-6), T(1e-6)}));
    EXPECT_FALSE(circle.isValid());
    std::vector<P2<T>> same(10, P2<T>(T(1), T(2)));
    EXPECT_NO_THROW(
        A<T>::fitCircleGeom(same, circle, math::CqCircleGeom2D<T>{50, T(1e-6), T(1e-6), T(1e-6)}));
    EXPECT_FALSE(circle.isValid());
}

// maxItr = 0 runs exactly one Gauss-Newton step from the centroid start: golden values per type.
TYPED_TEST(CircleFit, OneStepGoldenValues) {
    using T = TypeParam;
    std::vector<P2<T>> const pts{
        {T(10), T(-1)}, {T(3.5), T(6)}, {T(-4), T(-0.5)}, {T(3), T(-8)}, {T(8.5), T(4.5)}};
    math::Ccircle2<T> circle;
    A<T>::fitCircleGeom(pts, circle, math::CqCircleGeom2D<T>{0, T(0), T(0), T(0)});
    ASSERT_TRUE(circle.isValid());
    bool const f = std::is_same_v<T, float>;
    EXPECT_EQ(circle.center().x, f ? T(3.1874678134918213) : T(3.187468142191193));
    EXPECT_EQ(circle.center().y, f ? T(-0.79605066776275635) : T(-0.79605002868381058));
    EXPECT_EQ(circle.radius(), f ? T(7.043004035949707) : T(7.0430038778429953));
}

// Points of the circle centre c, radius r in the plane through c with unit normal n.
template <typename T>
std::vector<P3<T>> circle3Points(P3<double> c, double nx, double ny, double nz, double r,
                                 std::size_t count, double noise = 0,
                                 double arc = 2 * mgeo_test::kPi) {
    double n[3], u[3], w[3];
    mgeo_test::unitVector(nx, ny, nz, n);
    mgeo_test::completeBasis(n, u, w);
    mgeo_test::Noise rnd(17);
    std::vector<P3<T>> pts;
    for (std::size_t i = 0; i < count; ++i) {
        double const t = arc * double(i) / double(count);
        double const rr = r + rnd(noise);
        pts.emplace_back(T(c.x + rr * (std::cos(t) * u[0] + std::sin(t) * w[0])),
                         T(c.y + rr * (std::cos(t) * u[1] + std::sin(t) * w[1])),
                         T(c.z + rr * (std::cos(t) * u[2] + std::sin(t) * w[2])));
    }
    return pts;
}

TYPED_TEST(CircleFit, SpaceCircleWithAxisAndTiltedNormals) {
    using T = TypeParam;
    math::CqCircleGeom3DStdAbw<T> q{100, gnTol<T>(20), gnTol<T>(20), gnTol<T>(20), T(0)};
    struct Case {
        double nx, ny, nz;
    } const cases[] = {{0, 0, 1}, {0, 0, -1}, {1, 2, 2}, {-0.3, 0.1, -0.9}, {1, 0, 0}};
    for (auto const& c : cases) {
        SCOPED_TRACE(c.nx);
        auto const pts = circle3Points<T>({5, -7, 12}, c.nx, c.ny, c.nz, 4, 40);
        math::Cdirec3<T> const normal(T(c.nx), T(c.ny), T(c.nz));
        math::Ccircle3<T> circle(math::Cplane3<T>(P3<T>(T(5), T(-7), T(12)), normal),
                                 P3<T>(T(5), T(-7), T(12)), T(1));
        A<T>::fitCircleGeom(pts, circle, q);
        ASSERT_TRUE(circle.isValid());
        EXPECT_TRUE(nearAbs(circle.radius(), T(4), fitTol<T>(1e-8)));
        EXPECT_TRUE(nearAbs(circle.center().x, T(5), fitTol<T>(1e-8)));
        EXPECT_TRUE(nearAbs(circle.center().y, T(-7), fitTol<T>(1e-8)));
        EXPECT_TRUE(nearAbs(circle.center().z, T(12), fitTol<T>(1e-8)));
        EXPECT_TRUE(nearAbs(q.stdAbw, T(0), fitTol<T>(1e-8)));

        math::Ccircle3<T> fixed(math::Cplane3<T>(P3<T>(T(5), T(-7), T(12)), normal),
                                P3<T>(T(5), T(-7), T(12)), T(4));
        A<T>::fitCircleGeomRfix(pts, fixed,
                                math::CqCircleGeomRfix3D<T>{100, gnTol<T>(20), gnTol<T>(20), T(0)});
        ASSERT_TRUE(fixed.isValid());
        EXPECT_EQ(fixed.radius(), T(4));
        EXPECT_TRUE(nearAbs(fixed.center().z, T(12), fitTol<T>(1e-8)));
    }
    math::Ccircle3<T> few;
    A<T>::fitCircleGeom(std::vector<P3<T>>(2, P3<T>(T(0), T(0), T(0))), few,
                        math::CqCircleGeom3D<T>{10, T(1), T(1), T(1)});
    EXPECT_FALSE(few.isValid());
    EXPECT_TRUE(std::isnan(few.center().x) && std::isnan(few.plane().normal().x()));
}

// --- Spheres ---------------------------------------------------------------------------------

TYPED_TEST(SphereFit, AlgebraicAndGeometricOnExactAndNoisyPoints) {
    using T = TypeParam;
    math::Csphere3<T> lsq, geom;
    for (P3<double> const centre : {P3<double>(0, 0, 0), P3<double>(200, -100, 50)}) {
        auto const pts = mgeo_test::spherePoints<T>(centre, 25, 60);
        A<T>::fitSphereLsq(pts, lsq);
        A<T>::fitSphereGeom(
            pts, geom,
            math::CqSphereGeom<T>{100, gnTol<T>(300), gnTol<T>(300), gnTol<T>(300), gnTol<T>(300)});
        for (auto const* s : {&lsq, &geom}) {
            ASSERT_TRUE(s->isValid());
            EXPECT_TRUE(nearAbs(s->radius(), T(25), fitTol<T>(1e-8)));  // positive radius
            EXPECT_TRUE(nearAbs(s->center().x, T(centre.x), fitTol<T>(1e-7)));
            EXPECT_TRUE(nearAbs(s->center().z, T(centre.z), fitTol<T>(1e-7)));
        }
    }
    auto const noisy = mgeo_test::spherePoints<T>({1, 2, 3}, 10, 500, 0.02, 8);
    math::CqSphereGeomStdAbw<T> q{100,          gnTol<T>(10), gnTol<T>(10),
                                  gnTol<T>(10), gnTol<T>(10), T(0)};
    A<T>::fitSphereGeom(noisy, geom, q);
    EXPECT_TRUE(nearAbs(geom.radius(), T(10), 0.005));
    EXPECT_TRUE(nearAbs(q.stdAbw, A<T>::StdAbwSphere(noisy, geom), 1e-9));
    math::CqSphereLsqStdAbw<T> ql{};
    A<T>::fitSphereLsq(noisy, lsq, ql);
    EXPECT_TRUE(nearAbs(lsq.radius(), T(10), 0.005));
    EXPECT_GT(ql.stdAbw, T(0));
}

TYPED_TEST(SphereFit, CapFixedRadiusAndDegenerateInput) {
    using T = TypeParam;
    // A 60 degree cap: the mean lies well inside the sphere, far from the centre.
    auto const cap = mgeo_test::spherePoints<T>({10, 20, 30}, 50, 200, 0.0, 2, mgeo_test::kPi / 3);
    math::Csphere3<T> sphere;
    A<T>::fitSphereGeom(
        cap, sphere,
        math::CqSphereGeom<T>{200, gnTol<T>(100), gnTol<T>(100), gnTol<T>(100), gnTol<T>(100)});
    ASSERT_TRUE(sphere.isValid());
    EXPECT_TRUE(nearAbs(sphere.radius(), T(50), fitTol<T>(1e-6) * 50));

    math::Csphere3<T> fixed(P3<T>(T(0), T(0), T(0)), T(50));
    math::CqSphereGeomRfixStdAbw<T> q{200, gnTol<T>(100), gnTol<T>(100), gnTol<T>(100), T(0)};
    A<T>::fitSphereGeomRfix(cap, fixed, q);
    ASSERT_TRUE(fixed.isValid());
    EXPECT_EQ(fixed.radius(), T(50));
    EXPECT_TRUE(nearAbs(fixed.center().z, T(30), fitTol<T>(1e-6) * 50));

    A<T>::fitSphereGeom(std::vector<P3<T>>(cap.begin(), cap.begin() + 3), sphere,
                        math::CqSphereGeom<T>{100, T(1e-6), T(1e-6), T(1e-6), T(1e-6)});
    EXPECT_FALSE(sphere.isValid());
    A<T>::fitSphereGeom(cap, sphere, math::CqSphereGeom<T>{1, T(1e9), T(1e9), T(1e9), T(1e9)});
    EXPECT_FALSE(sphere.isValid());
    std::vector<P3<T>> same(10, P3<T>(T(1), T(1), T(1)));
    EXPECT_NO_THROW(A<T>::fitSphereGeom(
        same, sphere, math::CqSphereGeom<T>{100, T(1e-6), T(1e-6), T(1e-6), T(1e-6)}));
    EXPECT_FALSE(sphere.isValid());
    A<T>::fitSphereLsq(std::vector<P3<T>>(3, P3<T>(T(1), T(1), T(1))), sphere);
    EXPECT_FALSE(sphere.isValid());

    // The algebraic sphere catches solver failures like the iterative sphere fits.
    T const nan = std::numeric_limits<T>::quiet_NaN();
    T const inf = std::numeric_limits<T>::infinity();
    for (T bad : {nan, inf}) {
        std::vector<P3<T>> pts = cap;
        pts[5].y = bad;
        math::CqSphereLsqStdAbw<T> ql{T(0)};
        EXPECT_NO_THROW(A<T>::fitSphereLsq(pts, sphere));
        EXPECT_FALSE(sphere.isValid());
        EXPECT_NO_THROW(A<T>::fitSphereLsq(pts, sphere, ql));
        EXPECT_FALSE(sphere.isValid());
        EXPECT_NO_THROW(A<T>::fitSphereLsq(same, sphere));
        EXPECT_FALSE(sphere.isValid());
    }
}

}  // namespace
