// Tests of <math/basic_algo.h>.
#include <gtest/gtest.h>
#include <math/basic_algo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <list>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using mgeo_test::nearAbs;
using mgeo_test::nearRel;
using mgeo_test::Noise;

template <typename T>
class BasicAlgo : public ::testing::Test {};
TYPED_TEST_SUITE(BasicAlgo, mgeo_test::RealTypes);

TYPED_TEST(BasicAlgo, CosineOfTheAngleOppositeA) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    EXPECT_EQ(B::cosALP(T(5), T(3), T(4)), T(0));
    EXPECT_EQ(B::cosALP(T(3), T(4), T(5)), T(0.8));
    EXPECT_EQ(B::cosALP(T(2), T(0), T(1)), -std::numeric_limits<T>::infinity());
}

TYPED_TEST(BasicAlgo, MedianGoldenValues) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    std::vector<T> const v{T(5), T(1), T(4), T(2)};
    std::list<T> const l(v.begin(), v.end());
    EXPECT_EQ(B::median(v), T(2));
    EXPECT_EQ(B::median(l), T(2));
    std::vector<T> s = v;
    EXPECT_EQ(B::stdmedian(s), T(3));
    EXPECT_EQ(s, (std::vector<T>{T(1), T(2), T(4), T(5)}));

    std::vector<T> threes{T(3), T(3), T(3)};
    EXPECT_EQ(B::median(threes, 1), T(3));
    EXPECT_EQ(threes.size(), 3u);  // decided in the first pass: left untouched

    std::vector<T> consumed = v;
    EXPECT_EQ(B::median(consumed, 3), T(4));
    EXPECT_TRUE(consumed.empty());
    std::list<T> consumedList = l;
    EXPECT_EQ(B::median(consumedList, 3), T(4));
    EXPECT_TRUE(consumedList.empty());

    std::vector<T> empty;
    std::list<T> emptyList;
    EXPECT_EQ(B::median(empty, 1), T(-1));
    EXPECT_EQ(B::median(emptyList, 1), T(-1));
    EXPECT_EQ(B::median(std::vector<T>{}), T(-1));
    EXPECT_EQ(B::median(std::vector<T>{T(7)}), T(7));
    std::vector<T> none;
    EXPECT_TRUE(std::isnan(B::stdmedian(none)));
}

TYPED_TEST(BasicAlgo, SelectionMedianMatchesNthElement) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    Noise rnd(5);
    for (int trial = 0; trial < 200; ++trial) {
        std::size_t const n = 1 + std::size_t(rnd.unit() * 60);
        std::vector<T> v;
        for (std::size_t i = 0; i < n; ++i) v.push_back(T(std::floor(rnd(8))));  // duplicates
        if (trial % 8 == 0)
            std::sort(v.begin(), v.end());  // the quadratic case of the passes
        std::size_t const k = 1 + std::size_t(rnd.unit() * double(n));
        std::vector<T> w = v;
        std::nth_element(w.begin(), w.begin() + std::ptrdiff_t(k - 1), w.end());
        std::vector<T> vc = v;
        std::list<T> lc(v.begin(), v.end());
        EXPECT_EQ(B::median(vc, k), w[k - 1]) << "trial " << trial << " k " << k;
        EXPECT_EQ(B::median(lc, k), w[k - 1]) << "trial " << trial;
    }
}

// Ranks outside 1..n, NaN and signed zeros: the results of the pivot passes as they are.
TYPED_TEST(BasicAlgo, SelectionMedianOddInput) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    T const nan = std::numeric_limits<T>::quiet_NaN();
    std::vector<T> const v{T(3), nan, T(-0.0), T(1), T(0), nan, T(-2)};
    auto at = [&v](unsigned long long k) {
        std::vector<T> c = v;
        std::list<T> l(v.begin(), v.end());
        T const r = B::median(c, k);
        T const rl = B::median(l, k);
        EXPECT_TRUE((std::isnan(r) && std::isnan(rl)) ||
                    (r == rl && std::signbit(r) == std::signbit(rl)));
        return r;
    };
    EXPECT_EQ(at(0), T(-2));
    EXPECT_TRUE(std::signbit(at(2)) && at(2) == T(0));  // -0 before +0: input order
    EXPECT_FALSE(std::signbit(at(3)));
    EXPECT_EQ(at(5), T(3));
    EXPECT_TRUE(std::isnan(at(6)));
    EXPECT_TRUE(std::isnan(at(8)));
    EXPECT_EQ(B::median(v), T(1));
    std::vector<T> few{T(5), T(1), T(4), T(2)};
    EXPECT_EQ(B::median(few, 0), T(1));
    few = {T(5), T(1), T(4), T(2)};
    EXPECT_EQ(B::median(few, 9), T(-1));  // past the end: the empty-list value
}

TYPED_TEST(BasicAlgo, TrimmedMean) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    std::vector<T> v{T(1), T(2), T(3), T(100)};
    EXPECT_EQ(B::medianmittel(v), T(2));
    EXPECT_EQ(v, (std::vector<T>{T(1), T(2), T(3)}));
    std::vector<T> empty;
    EXPECT_EQ(B::medianmittel(empty), T(0));
    std::vector<T> one{T(4)};
    EXPECT_EQ(B::medianmittel(one), T(4));
    std::vector<T> two{T(1), T(4)};
    EXPECT_EQ(B::medianmittel(two), T(2.5));
    std::vector<T> three{T(3), T(1), T(2)};  // three values: no sort
    EXPECT_EQ(B::medianmittel(three), T(2));
    EXPECT_EQ(three, (std::vector<T>{T(3), T(1), T(2)}));
}

// Farthest-from-median removal until three are left, whose plain mean is returned; NaNs sort
// last and are never the farthest.
TYPED_TEST(BasicAlgo, TrimmedMeanGoldenValues) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    std::vector<T> v{T(10), T(-1), T(7), T(3), T(8), T(-20), T(5), T(6)};
    EXPECT_EQ(B::medianmittel(v), T(7));
    EXPECT_EQ(v, (std::vector<T>{T(6), T(7), T(8)}));
    T const nan = std::numeric_limits<T>::quiet_NaN();
    std::vector<T> w{T(1), std::numeric_limits<T>::infinity(), T(2), nan, T(-3), T(4), T(2.5)};
    EXPECT_TRUE(std::isnan(B::medianmittel(w)));
    ASSERT_EQ(w.size(), 3u);
    EXPECT_EQ(w[0], T(2.5));
    EXPECT_EQ(w[1], T(4));
    EXPECT_TRUE(std::isnan(w[2]));
}

TYPED_TEST(BasicAlgo, RemovalByDeviationTakesTheFirstCandidate) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    std::vector<T> v{T(1), T(5), T(-5), T(3)};
    EXPECT_EQ(B::rmGreatestDiv(v, T(0)), T(5));
    EXPECT_EQ(v, (std::vector<T>{T(1), T(-5), T(3)}));
    std::vector<T> same{T(2), T(2), T(2)};
    EXPECT_EQ(B::rmGreatestDiv(same, T(2)), T(2));
    EXPECT_EQ(same.size(), 2u);
    std::vector<T> w{T(4), T(1), T(3), T(1)};
    EXPECT_EQ(B::rmSmallestDiv(w, T(2)), T(1));
    EXPECT_EQ(w, (std::vector<T>{T(4), T(3), T(1)}));
    std::vector<T> empty;
    EXPECT_TRUE(std::isnan(B::rmGreatestDiv(empty, T(0))));
    EXPECT_TRUE(std::isnan(B::rmSmallestDiv(empty, T(0))));
    EXPECT_TRUE(empty.empty());
}

TYPED_TEST(BasicAlgo, AverageInInputOrder) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    EXPECT_EQ(B::average({T(1), T(2), T(3), T(4)}), T(2.5));
    EXPECT_TRUE(std::isnan(B::average({})));
    // (big + 1) - big in order: the 1 is absorbed before the subtraction.
    T const big = T(1) / std::numeric_limits<T>::epsilon();
    EXPECT_EQ(B::average({big, T(0.5), -big}), T(0));
}

TYPED_TEST(BasicAlgo, HornerValueAndDerivative) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    T p = T(-1), dp = T(-1);
    B::evalPoly({T(2), T(-3), T(0), T(5)}, T(2), p, dp);
    EXPECT_EQ(p, T(9));
    EXPECT_EQ(dp, T(12));
    B::evalPoly({T(7)}, T(3), p, dp);
    EXPECT_EQ(p, T(7));
    EXPECT_EQ(dp, T(0));
    B::evalPoly({}, T(3), p, dp);
    EXPECT_EQ(p, T(0));
    EXPECT_EQ(dp, T(0));

    // Random polynomials: value agrees with the one-result form, derivative with a central
    // difference (error O(h^2) plus rounding / h).
    Noise rnd(2);
    for (int trial = 0; trial < 100; ++trial) {
        std::vector<T> c(2 + std::size_t(rnd.unit() * 6));
        for (T& ci : c) ci = T(rnd(2));
        T const x = T(rnd(1.5));
        T value, deriv, v1;
        B::evalPoly(c, x, value, deriv);
        B::evalPoly(c, x, v1);
        EXPECT_EQ(value, v1);
        double const h = 1e-4;
        double fp = 0, fm = 0;
        for (T const ci : c) {
            fp = fp * (double(x) + h) + double(ci);
            fm = fm * (double(x) - h) + double(ci);
        }
        double const tol = std::is_same_v<T, float> ? 2e-2 : 1e-6;
        EXPECT_TRUE(nearRel(double(deriv), (fp - fm) / (2 * h), tol)) << "trial " << trial;
    }
}

TYPED_TEST(BasicAlgo, DeflationRoundTrip) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    std::vector<T> c{T(1), T(-3), T(2)};
    B::divPoly(c, T(1));
    EXPECT_EQ(c, (std::vector<T>{T(1), T(-2)}));
    std::vector<T> empty;
    B::divPoly(empty, T(1));
    EXPECT_TRUE(empty.empty());

    // q (x - r) with small integers is exact in both types: deflation gives q back.
    Noise rnd(4);
    for (int trial = 0; trial < 50; ++trial) {
        std::vector<T> q(1 + std::size_t(rnd.unit() * 5));
        for (T& qi : q) qi = T(std::floor(rnd(9)));
        T const r = T(std::floor(rnd(4)));
        std::vector<T> prod(q.size() + 1, T(0));
        for (std::size_t i = 0; i < q.size(); ++i) {
            prod[i] += q[i];
            prod[i + 1] -= q[i] * r;
        }
        B::divPoly(prod, r);
        EXPECT_EQ(prod, q);
    }
}

TYPED_TEST(BasicAlgo, QuadraticRootsEveryRow) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    using C = std::complex<double>;
    double const inf = std::numeric_limits<double>::infinity();

    auto r = B::solveQuad({T(1), T(2)});
    EXPECT_EQ(r.first, C(0, 0));
    EXPECT_EQ(r.second, C(0, 0));
    EXPECT_EQ(B::solveQuad2({T(1), T(2), T(3), T(4)}), std::make_pair(0.0, 0.0));

    r = B::solveQuad({T(0), T(0), T(1)});  // -1/0
    EXPECT_EQ(r.first.real(), -inf);
    EXPECT_EQ(r.second.real(), -inf);
    auto r2 = B::solveQuad2({T(0), T(0), T(1)});
    EXPECT_TRUE(std::isnan(r2.first) && std::isnan(r2.second));

    r = B::solveQuad({T(0), T(2), T(-3)});
    EXPECT_EQ(r.first, C(1.5, 0));
    EXPECT_EQ(r.second, C(1.5, 0));
    EXPECT_EQ(B::solveQuad2({T(0), T(2), T(-3)}), std::make_pair(1.5, 1.5));

    r = B::solveQuad({T(1), T(0), T(1)});
    EXPECT_EQ(r.first, C(0, 1));
    EXPECT_EQ(r.second, C(0, -1));
    r2 = B::solveQuad2({T(1), T(0), T(1)});
    EXPECT_TRUE(std::isnan(r2.first) && std::isnan(r2.second));

    r = B::solveQuad({T(2), T(-6), T(4)});
    EXPECT_EQ(r.first, C(2, 0));
    EXPECT_EQ(r.second, C(1, 0));
    EXPECT_EQ(B::solveQuad2({T(2), T(-6), T(4)}), std::make_pair(2.0, 1.0));
    EXPECT_EQ(B::solveQuad2({T(1), T(-2), T(1)}), std::make_pair(1.0, 1.0));  // D = 0
}

TYPED_TEST(BasicAlgo, NewtonRootClosedFormsAndDegenerateInput) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    EXPECT_TRUE(std::isnan(B::evalNewtonRoot({}, T(0))));
    EXPECT_TRUE(std::isnan(B::evalNewtonRoot({T(3)}, T(0))));
    EXPECT_TRUE(std::isnan(B::evalNewtonRoot({T(0), T(3)}, T(0))));
    EXPECT_EQ(B::evalNewtonRoot({T(2), T(-4)}, T(0)), T(2));
    EXPECT_EQ(B::evalNewtonRoot({T(1), T(-3), T(2)}, T(0)), T(2));  // first root of solveQuad2
    EXPECT_TRUE(std::isnan(B::evalNewtonRoot({T(1), T(0), T(1)}, T(0))));
    T const nan = std::numeric_limits<T>::quiet_NaN();
    EXPECT_TRUE(std::isnan(B::evalNewtonRoot({T(1), nan, T(0), T(1)}, T(0))));
    EXPECT_TRUE(std::isnan(B::evalNewtonRoot({T(1), T(0), T(0), T(1)}, nan)));
}

TYPED_TEST(BasicAlgo, NewtonRootWithoutRealRootIsSignallingNaN) {
    using T = TypeParam;
    T const r = math::BasicAlgo<T>::evalNewtonRoot({T(1), T(0), T(0), T(0), T(1)}, T(0.5));
    ASSERT_TRUE(std::isnan(r));
    // The quiet bit (the top mantissa bit) is clear.
    if constexpr (std::is_same_v<T, double>) {
        std::uint64_t bits;
        std::memcpy(&bits, &r, sizeof bits);
        EXPECT_EQ(bits & (std::uint64_t(1) << 51), 0u);
    } else {
        std::uint32_t bits;
        std::memcpy(&bits, &r, sizeof bits);
        EXPECT_EQ(bits & (std::uint32_t(1) << 22), 0u);
    }
}

// Odd-degree polynomials built from known real roots (an even degree may show the start
// value's sign at every tested x0 +- h): the result is one of them.
TYPED_TEST(BasicAlgo, NewtonRootFindsAKnownRoot) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    Noise rnd(12);
    for (int trial = 0; trial < 200; ++trial) {
        std::size_t const degree = trial % 2 ? 3 : 5;
        std::vector<double> roots;
        std::vector<double> c{1.0};
        for (std::size_t i = 0; i < degree; ++i) {
            double const r = std::round(rnd(5) * 4) / 4;  // quarters: exact coefficients
            roots.push_back(r);
            c.push_back(0.0);
            for (std::size_t j = c.size() - 1; j > 0; --j) c[j] -= r * c[j - 1];
        }
        std::vector<T> ct(c.begin(), c.end());
        T const x0 = T(rnd(6));
        T const x = B::evalNewtonRoot(ct, x0);
        ASSERT_FALSE(std::isnan(x)) << "trial " << trial;
        double nearest = std::numeric_limits<double>::infinity();
        for (double r : roots) nearest = std::min(nearest, std::fabs(double(x) - r));
        // Multiple roots are found only to about eps^(1/multiplicity).
        double const tol = std::is_same_v<T, float> ? 2e-2 : 1e-5;
        EXPECT_LE(nearest, tol) << "trial " << trial << " x0 " << x0 << " x " << x;
    }
}

TYPED_TEST(BasicAlgo, ConicLineParametersAreReciprocal) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    typename B::Roots roots;
    // Unit circle x^2 + y^2 = w^2 and the line w = 2 y: s^2 + 1 - 4 = 0, s = +-sqrt(3).
    math::Cmatrix<T> circle(3, 3, T(0));
    circle(0, 0) = T(1);
    circle(1, 1) = T(1);
    circle(2, 2) = T(-1);
    std::vector<T> line{T(0), T(2)};
    B::IntersectEqu(circle, line, roots);
    double const tol = 10 * double(std::numeric_limits<T>::epsilon());
    EXPECT_TRUE(nearAbs(roots.first.real(), 1 / std::sqrt(3.0), tol));
    EXPECT_TRUE(nearAbs(roots.second.real(), -1 / std::sqrt(3.0), tol));

    // Random symmetric conics: s = 1/root satisfies p^T M p = 0 for p = (s, 1, l0 s + l1).
    Noise rnd(21);
    int checked = 0;
    for (int trial = 0; trial < 100; ++trial) {
        math::Cmatrix<T> m(3, 3);
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = i; j < 3; ++j) m(i, j) = m(j, i) = T(rnd(1));
        std::vector<T> l{T(rnd(1)), T(rnd(1))};
        B::IntersectEqu(m, l, roots);
        for (auto const& root : {roots.first, roots.second}) {
            if (root.imag() != 0 || std::fabs(root.real()) < 0.1)
                continue;
            double const s = 1 / root.real();
            double const p[3] = {s, 1, double(l[0]) * s + double(l[1])};
            double form = 0, scale = 0;
            for (std::size_t i = 0; i < 3; ++i)
                for (std::size_t j = 0; j < 3; ++j) {
                    form += p[i] * double(m(i, j)) * p[j];
                    scale += std::fabs(p[i] * double(m(i, j)) * p[j]);
                }
            EXPECT_LE(std::fabs(form), 1e3 * double(std::numeric_limits<T>::epsilon()) * scale);
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);

    math::Cmatrix<T> small(2, 2, T(1));
    B::IntersectEqu(small, line, roots);
    EXPECT_TRUE(std::isnan(roots.first.real()));
    std::vector<T> shortLine{T(1)};
    B::IntersectEqu(circle, shortLine, roots);
    EXPECT_TRUE(std::isnan(roots.second.real()));
}

TYPED_TEST(BasicAlgo, RotateEquDiagonalisesTheConicAndKeepsItsValues) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    double const tol = 100 * double(std::numeric_limits<T>::epsilon());

    // The ellipse x'^2/4 + y'^2 = 1 turned by 30 degrees: eigenvalues 1 and 1/4.
    double const c = std::cos(mgeo_test::kPi / 6), s = std::sin(mgeo_test::kPi / 6);
    math::Cmatrix<T> m(3, 3, T(0));
    m(0, 0) = T(c * c / 4 + s * s);
    m(1, 1) = T(s * s / 4 + c * c);
    m(0, 1) = m(1, 0) = T(c * s / 4 - c * s);
    m(0, 2) = m(2, 0) = T(0.5);
    m(1, 2) = m(2, 1) = T(-0.25);
    m(2, 2) = T(-1);
    math::Cmatrix<T> const original = m;
    std::vector<T> l{T(0.3), T(0.7)};
    std::vector<T> const originalLine = l;
    std::vector<T> rot;
    B::RotateEqu(m, l, rot);
    ASSERT_EQ(rot.size(), 4u);
    EXPECT_EQ(m(0, 1), T(0));
    EXPECT_EQ(m(1, 0), T(0));
    EXPECT_TRUE(nearAbs(m(0, 0), T(1), tol));
    EXPECT_TRUE(nearAbs(m(1, 1), T(0.25), tol));
    EXPECT_EQ(m(2, 2), T(-1));
    // R is orthonormal.
    EXPECT_TRUE(nearAbs(rot[0] * rot[0] + rot[1] * rot[1], T(1), tol));
    EXPECT_TRUE(nearAbs(rot[0] * rot[2] + rot[1] * rot[3], T(0), tol));

    // Conic and line values agree at corresponding points u = R x.
    Noise rnd(8);
    for (int i = 0; i < 50; ++i) {
        double const x[3] = {rnd(3), rnd(3), 1 + rnd(0.5)};
        double const u[3] = {double(rot[0]) * x[0] + double(rot[1]) * x[1],
                             double(rot[2]) * x[0] + double(rot[3]) * x[1], x[2]};
        double before = 0, after = 0;
        for (std::size_t a = 0; a < 3; ++a)
            for (std::size_t b = 0; b < 3; ++b) {
                before += x[a] * double(original(a, b)) * x[b];
                after += u[a] * double(m(a, b)) * u[b];
            }
        EXPECT_TRUE(nearRel(after, before, tol));
        EXPECT_TRUE(nearRel(double(l[0]) * u[0] + double(l[1]) * u[1],
                            double(originalLine[0]) * x[0] + double(originalLine[1]) * x[1], tol));
    }
}

TYPED_TEST(BasicAlgo, RotateEquDegenerateInput) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    std::vector<T> rot{T(1)};
    math::Cmatrix<T> small(2, 2, T(1));
    std::vector<T> l{T(1), T(2)};
    EXPECT_NO_THROW(B::RotateEqu(small, l, rot));
    EXPECT_TRUE(rot.empty());
    EXPECT_EQ(l, (std::vector<T>{T(1), T(2)}));

    math::Cmatrix<T> m(3, 3, T(1));
    std::vector<T> shortLine{T(1)};
    B::RotateEqu(m, shortLine, rot);
    EXPECT_TRUE(rot.empty());

    m(0, 1) = std::numeric_limits<T>::quiet_NaN();
    EXPECT_NO_THROW(B::RotateEqu(m, l, rot));
    ASSERT_EQ(rot.size(), 4u);
    EXPECT_TRUE(std::isnan(rot[0]));
    EXPECT_EQ(m(0, 0), T(1));
}

}  // namespace
