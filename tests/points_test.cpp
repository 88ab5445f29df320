// Tests of <math/points.h> and the core vector containers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <core/vector.h>
#include <math/points.h>

#include "support/tolerance.h"

namespace {

using mgeo_test::RealTypes;

template <typename T>
class Directions : public ::testing::Test {};
TYPED_TEST_SUITE(Directions, RealTypes);

TYPED_TEST(Directions, NormaliseAndTurn) {
    using T = TypeParam;
    math::Cdirec2<T> d(math::Cpoint2<T>(T(3), T(4)));
    EXPECT_TRUE(d.isValid());
    EXPECT_EQ(d.x(), T(3) / T(5));
    EXPECT_EQ(d.y(), T(4) / T(5));
    math::Cdirec2<T> p = d.perp();
    EXPECT_EQ(p[0], -T(4) / T(5));
    EXPECT_EQ(p[1], T(3) / T(5));

    math::Cdirec3<T> n(T(0), T(0), T(-2));
    EXPECT_EQ(n.z(), T(-1));
    EXPECT_EQ(n.x(), T(0));
    math::Cdirec3<T> m(math::Cpoint3<T>(T(2), T(3), T(6)));
    EXPECT_EQ(m.x(), T(2) / T(7));
    EXPECT_EQ(m[2], T(6) / T(7));
}

TYPED_TEST(Directions, ZeroAndNaNInputsAreInvalid) {
    using T = TypeParam;
    math::Cdirec2<T> zero(math::Cpoint2<T>(T(0), T(0)));
    EXPECT_FALSE(zero.isValid());
    EXPECT_TRUE(std::isnan(zero.x()));
    EXPECT_EQ(zero.y(), T(0));  // the other component keeps its value

    T const nan = std::numeric_limits<T>::quiet_NaN();
    EXPECT_FALSE(math::Cdirec2<T>(math::Cpoint2<T>(T(1), nan)).isValid());
    EXPECT_FALSE(math::Cdirec3<T>(T(0), T(0), T(0)).isValid());
    EXPECT_FALSE(math::Cdirec3<T>(T(1), T(0), nan).isValid());
    EXPECT_FALSE(math::Cdirec2<T>().isValid());
    EXPECT_FALSE(math::Cdirec3<T>().isValid());

    math::Cdirec2<T> d = math::Cdirec2<T>::posX;
    d.invalidate();
    EXPECT_FALSE(d.isValid());
    EXPECT_EQ(d.y(), T(0));

    math::Cdirec2<T> a;
    a = math::Cpoint2<T>(T(0), T(0));
    EXPECT_FALSE(a.isValid());
    a = math::Cpoint2<T>(T(0), T(-7));
    EXPECT_TRUE(a == math::Cdirec2<T>::negY);
}

TEST(Directions, NoLowerBoundOnTheLengthUntilTheSquareUnderflows) {
    math::Cdirec2<double> tiny(math::Cpoint2<double>(1e-150, 0));
    EXPECT_TRUE(tiny.isValid());
    EXPECT_EQ(tiny.x(), 1.0);
    EXPECT_EQ(tiny.y(), 0.0);
    EXPECT_FALSE(math::Cdirec2<double>(math::Cpoint2<double>(1e-200, 0)).isValid());
    // float squares in single precision: 1e-20^2 underflows to 0.
    EXPECT_TRUE(math::Cdirec2<float>(math::Cpoint2<float>(1e-18f, 0)).isValid());
    EXPECT_FALSE(math::Cdirec2<float>(math::Cpoint2<float>(1e-23f, 0)).isValid());
}

TEST(Directions, ToleranceBoundsPerType) {
    EXPECT_EQ(math::directionTolerance<double>(), 2.9103830456733704e-11);
    EXPECT_EQ(math::directionTolerance<float>(), 3.0517578125e-05f);
    EXPECT_TRUE(math::tolerantEqual(1.0, 1.0 + 2e-11));
    EXPECT_FALSE(math::tolerantEqual(1.0, 1.0 + 1e-10));
    EXPECT_TRUE(math::tolerantEqual(0.0, 2e-11));
    EXPECT_FALSE(math::tolerantEqual(0.0, 1e-10));
    // Strict bound: b + eps (1 + |b|) > a fails at equality.
    double const eps = math::directionTolerance<double>();
    EXPECT_FALSE(math::tolerantEqual(eps, 0.0));
    EXPECT_TRUE(math::tolerantEqual(std::nextafter(eps, 0.0), 0.0));
    float const epsF = math::directionTolerance<float>();
    EXPECT_FALSE(math::tolerantEqual(epsF, 0.0f));
    EXPECT_TRUE(math::tolerantEqual(std::nextafter(epsF, 0.0f), 0.0f));
    EXPECT_TRUE(math::tolerantEqual(100.0f, 100.0f + 0.003f));
    EXPECT_FALSE(math::tolerantEqual(100.0f, 100.0f + 0.004f));

    double const inf = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(math::tolerantEqual(inf, inf));
    EXPECT_FALSE(math::tolerantEqual(nan, nan));
}

TYPED_TEST(Directions, EqualityConstantsAndArithmetic) {
    using T = TypeParam;
    using D2 = math::Cdirec2<T>;
    EXPECT_TRUE(-D2::posX == D2::negX);
    EXPECT_TRUE(-D2::posY == D2::negY);
    EXPECT_TRUE(D2::posX.perp() == D2::posY);
    EXPECT_FALSE(D2::posX == D2::posY);
    EXPECT_TRUE(D2::posX != D2::negX);

    D2 d = D2::posX;
    math::Cpoint2<T> p(T(2), T(5));
    EXPECT_EQ(d + p, math::Cpoint2<T>(T(3), T(5)));
    EXPECT_EQ(d - p, math::Cpoint2<T>(T(-1), T(-5)));  // direction minus point
    EXPECT_EQ(d + D2::posY, math::Cpoint2<T>(T(1), T(1)));
    EXPECT_EQ(d - D2::posY, math::Cpoint2<T>(T(1), T(-1)));

    math::Cdirec3<T> a(T(1), T(0), T(0));
    math::Cdirec3<T> b(T(1), T(1e-6), T(0));
    EXPECT_EQ(a == b, (std::is_same_v<T, float>));
    EXPECT_TRUE((-a) == math::Cdirec3<T>(T(-3), T(0), T(0)));
}

TYPED_TEST(Directions, PointsDefaultToUnsetAndCompareExactly) {
    using T = TypeParam;
    math::Cpoint2<T> p;
    EXPECT_TRUE(std::isnan(p.x) && std::isnan(p.y));
    math::Cpoint3<T> q;
    EXPECT_TRUE(std::isnan(q[2]));
    math::Cpoint2<int> pi;
    EXPECT_EQ(pi.x, 0);
    math::Cpoint3<T> a(T(1), T(2), T(3));
    EXPECT_EQ(a + a, a * T(2));
    EXPECT_EQ(a - a, math::Cpoint3<T>(T(0), T(0), T(0)));
    EXPECT_NE(a, math::Cpoint3<T>(T(1), T(2), std::nextafter(T(3), T(4))));
    EXPECT_EQ(a[0], T(1));
    EXPECT_EQ(a[1], T(2));
}

TEST(Containers, VectorsAndPointLists) {
    CbaseVecN<double> v{1.0, 2.0};
    v.push_back(3.0);
    EXPECT_EQ(v.size(), 3u);
    double sum = 0;
    for (double x : v) sum += x;
    EXPECT_EQ(sum, 6.0);
    v.clear();
    EXPECT_EQ(v.size(), 0u);

    Cvector2<int> a(1, 2);
    EXPECT_EQ(a - Cvector2<int>(1, 1), Cvector2<int>(0, 1));

    math::CpntN2<float> sets;
    sets.push_back({math::Cpoint2<float>(0, 0), math::Cpoint2<float>(1, 0)});
    sets.push_back({});
    EXPECT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].size(), 2u);
    EXPECT_TRUE(sets[1].empty());
}

}  // namespace
