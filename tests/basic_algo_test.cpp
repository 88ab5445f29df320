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

template <typename T>
bool sameBits(T a, T b) {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// The selection passes transcribed literally on std::list, as the reference for both the
// vector and the list forms.
template <typename T>
T literalMedian(std::list<T> v, unsigned long long k) {
    for (;;) {
        if (v.empty())
            return T(-1);
        if (v.size() == 1)
            return v.front();
        T const pivot = v.front();
        std::list<T> lower, upper;
        for (auto it = std::next(v.begin()); it != v.end(); ++it) {
            (*it < pivot ? lower : upper).push_back(*it);
        }
        lower.push_back(pivot);
        unsigned long long const m = lower.size();
        if (m == k)
            return pivot;
        if (m > k) {
            v = lower;
        } else {
            v = upper;
            k -= m;
        }
    }
}

// The trimmed mean transcribed literally: sort (NaNs last), median, scan, erase.
template <typename T>
T literalMedianmittel(std::vector<T>& v) {
    if (v.empty())
        return T(0);
    if (v.size() == 1)
        return v[0];
    if (v.size() == 2)
        return (v[0] + v[1]) / T(2);
    auto const less = [](T a, T b) { return a < b || (!std::isnan(a) && std::isnan(b)); };
    while (v.size() > 3) {
        std::stable_sort(v.begin(), v.end(), less);
        std::size_t const n = v.size();
        T const m = n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / T(2);
        T best = T(0);
        std::size_t idx = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (std::fabs(v[i] - m) > best) {
                best = std::fabs(v[i] - m);
                idx = i;
            }
        }
        v.erase(v.begin() + std::ptrdiff_t(idx));
    }
    return (v[0] + v[1] + v[2]) / T(3);
}

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

TYPED_TEST(BasicAlgo, SelectionMedianMatchesNthElementAndTheLiteralPasses) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    Noise rnd(5);
    T const nan = std::numeric_limits<T>::quiet_NaN();
    for (int trial = 0; trial < 400; ++trial) {
        std::size_t const n = 1 + std::size_t(rnd.unit() * 60);
        bool const special = trial % 4 == 3;  // NaN and signed zeros: order-dependent results
        std::vector<T> v;
        for (std::size_t i = 0; i < n; ++i) {
            T x = T(std::floor(rnd(8)));  // many duplicates
            if (special && rnd.unit() < 0.2)
                x = rnd.unit() < 0.5 ? nan : T(-0.0);
            v.push_back(x);
        }
        if (trial % 8 == 0)
            std::sort(v.begin(), v.end());  // the quadratic case of the passes
        unsigned long long const k = std::size_t(rnd.unit() * double(n + 3));  // also 0, > n
        std::list<T> const l(v.begin(), v.end());
        T const expected = literalMedian(l, k);

        std::vector<T> vc = v;
        std::list<T> lc = l;
        EXPECT_TRUE(sameBits(B::median(vc, k), expected)) << "trial " << trial << " k " << k;
        EXPECT_TRUE(sameBits(B::median(lc, k), expected)) << "trial " << trial;
        if (!special && k >= 1 && k <= n) {
            std::vector<T> w = v;
            std::nth_element(w.begin(), w.begin() + std::ptrdiff_t(k - 1), w.end());
            EXPECT_EQ(expected, w[k - 1]);
        }
        unsigned long long const mid = (n + 1) / 2;
        EXPECT_TRUE(sameBits(B::median(v), literalMedian(l, mid)));
        EXPECT_TRUE(sameBits(B::median(l), literalMedian(l, mid)));
    }
}

TYPED_TEST(BasicAlgo, MedianOfSortedMillionIsQuick) {
    using T = TypeParam;
    std::vector<T> v(1000000);
    for (std::size_t i = 0; i < v.size(); ++i) v[i] = T(i % 65536);
    std::sort(v.begin(), v.end());
    std::vector<T> const& cv = v;
    EXPECT_EQ(math::BasicAlgo<T>::median(cv), v[499999]);
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

TYPED_TEST(BasicAlgo, TrimmedMeanMatchesTheLiteralLoop) {
    using T = TypeParam;
    using B = math::BasicAlgo<T>;
    Noise rnd(9);
    T const specials[] = {std::numeric_limits<T>::quiet_NaN(),
                          std::numeric_limits<T>::infinity(),
                          -std::numeric_limits<T>::infinity(),
                          T(-0.0),
                          T(0),
                          std::numeric_limits<T>::max()};
    for (int trial = 0; trial < 300; ++trial) {
        std::size_t const n = 4 + std::size_t(rnd.unit() * 40);
        std::vector<T> v;
        for (std::size_t i = 0; i < n; ++i) {
            T x = trial % 2 ? T(std::floor(rnd(5))) : T(rnd(1000));
            if (trial % 3 == 2 && rnd.unit() < 0.15)
                x = specials[std::size_t(rnd.unit() * 6)];
            v.push_back(x);
        }
        std::vector<T> ref = v;
        T const expected = literalMedianmittel(ref);
        T const got = B::medianmittel(v);
        EXPECT_TRUE(sameBits(got, expected) || (std::isnan(got) && std::isnan(expected)))
            << "trial " << trial << ": " << got << " vs " << expected;
        ASSERT_EQ(v.size(), 3u);
        for (std::size_t i = 0; i < 3; ++i) {
            // Equal values (+0 and -0 among them) may come in any order of a sort.
            EXPECT_TRUE(v[i] == ref[i] || (std::isnan(v[i]) && std::isnan(ref[i])))
                << "trial " << trial;
        }
    }
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

}  // namespace
