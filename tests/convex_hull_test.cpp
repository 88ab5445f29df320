// Tests of <math/convex_hull.h>.
#include <gtest/gtest.h>
#include <math/convex_hull.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/builders.h"

namespace {

template <typename T>
using V2 = Cvector2<T>;

template <typename T>
class ConvexHull : public ::testing::Test {};
using HullTypes = ::testing::Types<int, float, double>;
TYPED_TEST_SUITE(ConvexHull, HullTypes);

template <typename T>
std::vector<V2<T>> pts(std::initializer_list<std::pair<int, int>> xy) {
    std::vector<V2<T>> out;
    for (auto const& p : xy) {
        out.emplace_back(T(p.first), T(p.second));
    }
    return out;
}

// Independent reference: Andrew's monotone chain on integer coordinates in 64-bit arithmetic,
// strict turns (collinear points dropped), rotated to start at the lowest-then-leftmost point.
std::vector<std::pair<std::int64_t, std::int64_t>> referenceHull(
    std::vector<std::pair<std::int64_t, std::int64_t>> p) {
    std::sort(p.begin(), p.end());
    p.erase(std::unique(p.begin(), p.end()), p.end());
    if (p.size() < 3) {
        return {};
    }
    auto cross = [](auto const& o, auto const& a, auto const& b) {
        return (a.first - o.first) * (b.second - o.second) -
               (a.second - o.second) * (b.first - o.first);
    };
    std::vector<std::pair<std::int64_t, std::int64_t>> h(2 * p.size());
    std::size_t k = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        while (k >= 2 && cross(h[k - 2], h[k - 1], p[i]) <= 0) --k;
        h[k++] = p[i];
    }
    for (std::size_t i = p.size() - 1, t = k + 1; i-- > 0;) {
        while (k >= t && cross(h[k - 2], h[k - 1], p[i]) <= 0) --k;
        h[k++] = p[i];
    }
    h.resize(k - 1);
    if (h.size() < 3) {
        return {};
    }
    auto lowest = std::min_element(h.begin(), h.end(), [](auto const& a, auto const& b) {
        return a.second < b.second || (a.second == b.second && a.first < b.first);
    });
    std::rotate(h.begin(), lowest, h.end());
    return h;
}

TYPED_TEST(ConvexHull, DefaultAndTooFewPointsGiveEmptyHull) {
    using T = TypeParam;
    EXPECT_TRUE(math::CcvxHull2D<T>().points().empty());
    EXPECT_TRUE(math::CcvxHull2D<T>(std::vector<V2<T>>{}).points().empty());
    EXPECT_TRUE(math::CcvxHull2D<T>(pts<T>({{0, 0}, {1, 0}})).points().empty());
}

TYPED_TEST(ConvexHull, SquareWithCentreStartsAtBottomLeftCounterClockwise) {
    using T = TypeParam;
    math::CcvxHull2D<T> const hull(pts<T>({{4, 4}, {2, 2}, {0, 4}, {4, 0}, {0, 0}}));
    EXPECT_EQ(hull.points(), pts<T>({{0, 0}, {4, 0}, {4, 4}, {0, 4}}));
}

TYPED_TEST(ConvexHull, CollinearPointsGiveEmptyHull) {
    using T = TypeParam;
    EXPECT_TRUE(math::CcvxHull2D<T>(pts<T>({{0, 0}, {1, 1}, {3, 3}, {2, 2}})).points().empty());
    EXPECT_TRUE(math::CcvxHull2D<T>(pts<T>({{5, 5}, {5, 5}, {5, 5}})).points().empty());
}

TYPED_TEST(ConvexHull, TwoRaysFromThePivotLeaveTheirFarthestPoints) {
    using T = TypeParam;
    // The pivot, a duplicate of it and two rays: pivot plus one point per ray remain.
    math::CcvxHull2D<T> const hull(pts<T>({{0, 1}, {0, 0}, {2, 0}, {0, 2}, {1, 0}, {0, 0}}));
    EXPECT_EQ(hull.points(), pts<T>({{0, 0}, {2, 0}, {0, 2}}));
}

TYPED_TEST(ConvexHull, OnlyTheFarthestPointOfARaySurvives) {
    using T = TypeParam;
    // (1, 1), (2, 2), (3, 3) lie on the ray from the pivot to the corner (4, 4).
    math::CcvxHull2D<T> const hull(
        pts<T>({{2, 2}, {4, 4}, {0, 0}, {1, 1}, {4, 0}, {3, 3}, {0, 4}, {0, 0}}));
    EXPECT_EQ(hull.points(), pts<T>({{0, 0}, {4, 0}, {4, 4}, {0, 4}}));
}

TYPED_TEST(ConvexHull, MidEdgePointIsNoVertex) {
    using T = TypeParam;
    math::CcvxHull2D<T> const hull(pts<T>({{0, 0}, {4, 0}, {4, 2}, {4, 4}, {2, 4}, {0, 4}}));
    EXPECT_EQ(hull.points(), pts<T>({{0, 0}, {4, 0}, {4, 4}, {0, 4}}));
}

TYPED_TEST(ConvexHull, ThreePointsClockwiseComeBackCounterClockwise) {
    using T = TypeParam;
    math::CcvxHull2D<T> const hull(pts<T>({{0, 3}, {3, 1}, {1, 0}}));
    EXPECT_EQ(hull.points(), pts<T>({{1, 0}, {3, 1}, {0, 3}}));
}

TYPED_TEST(ConvexHull, PivotTieOnYTakesSmallestX) {
    using T = TypeParam;
    math::CcvxHull2D<T> const hull(pts<T>({{3, 0}, {5, 2}, {1, 0}, {2, 3}}));
    EXPECT_EQ(hull.points(), pts<T>({{1, 0}, {3, 0}, {5, 2}, {2, 3}}));
}

TYPED_TEST(ConvexHull, ArgumentIsNotModifiedAndCopiesAreIndependent) {
    using T = TypeParam;
    auto const input = pts<T>({{4, 4}, {2, 2}, {0, 4}, {4, 0}, {0, 0}});
    auto copyOfInput = input;
    math::CcvxHull2D<T> hull(input);
    EXPECT_EQ(input, copyOfInput);
    math::CcvxHull2D<T> copy(hull);
    hull = math::CcvxHull2D<T>();
    EXPECT_TRUE(hull.points().empty());
    EXPECT_EQ(copy.points().size(), 4u);
}

// Random integer-valued clouds (exact in every type) against the monotone chain.
TYPED_TEST(ConvexHull, MatchesReferenceOnRandomClouds) {
    using T = TypeParam;
    mgeo_test::Noise rnd(7);
    for (int trial = 0; trial < 200; ++trial) {
        std::size_t const n = 3 + std::size_t(rnd.unit() * 300);
        int const range = trial % 2 ? 10 : 1000;  // small ranges force duplicates and rays
        std::vector<V2<T>> cloud;
        std::vector<std::pair<std::int64_t, std::int64_t>> ref;
        for (std::size_t i = 0; i < n; ++i) {
            int const x = int(std::floor(rnd(range)));
            int const y = int(std::floor(rnd(range)));
            cloud.emplace_back(T(x), T(y));
            ref.emplace_back(x, y);
        }
        auto const expected = referenceHull(ref);
        math::CcvxHull2D<T> const hull(cloud);
        auto const& got = hull.points();
        ASSERT_EQ(got.size(), expected.size()) << "trial " << trial;
        for (std::size_t i = 0; i < got.size(); ++i) {
            EXPECT_EQ(std::int64_t(got[i].x), expected[i].first) << "trial " << trial;
            EXPECT_EQ(std::int64_t(got[i].y), expected[i].second) << "trial " << trial;
        }
    }
}

TEST(ConvexHullInt, ExactNearTheDocumentedCoordinateLimit) {
    // Differences close to 2^31: 32-bit orientation products would overflow.
    int const m = (1 << 30) - 1;
    std::vector<V2<int>> const cloud{{-m, -m}, {m, -m}, {0, 0},    {m, m},
                                     {-m, m},  {0, m},  {m - 1, m}};
    math::CcvxHull2D<int> const hull(cloud);
    std::vector<V2<int>> const expected{{-m, -m}, {m, -m}, {m, m}, {-m, m}};
    EXPECT_EQ(hull.points(), expected);
}

TEST(ConvexHullInt, ExtremeCoordinatesStaySafe) {
    int const lo = std::numeric_limits<int>::min();
    int const hi = std::numeric_limits<int>::max();
    std::vector<V2<int>> const cloud{{lo, lo}, {hi, lo}, {hi, hi}, {lo, hi}, {0, 0}, {hi, 0}};
    EXPECT_NO_THROW(math::CcvxHull2D<int>{cloud});
}

TYPED_TEST(ConvexHull, NonFiniteCoordinatesStaySafe) {
    using T = TypeParam;
    if constexpr (std::is_floating_point_v<T>) {
        T const nan = std::numeric_limits<T>::quiet_NaN();
        T const inf = std::numeric_limits<T>::infinity();
        mgeo_test::Noise rnd(3);
        std::vector<V2<T>> cloud;
        for (int i = 0; i < 500; ++i) {
            T const x = i % 7 == 0 ? nan : (i % 11 == 0 ? inf : T(rnd(100)));
            T const y = i % 5 == 0 ? nan : (i % 13 == 0 ? -inf : T(rnd(100)));
            cloud.emplace_back(x, y);
        }
        EXPECT_NO_THROW(math::CcvxHull2D<T>{cloud});
        cloud.insert(cloud.begin(), V2<T>(nan, nan));
        EXPECT_NO_THROW(math::CcvxHull2D<T>{cloud});
    }
}

// Near-collinear float clouds (rounding makes the angular order inconsistent) stay safe and
// still enclose every point up to rounding.
TYPED_TEST(ConvexHull, NearlyCollinearCloudStaysSafe) {
    using T = TypeParam;
    if constexpr (std::is_floating_point_v<T>) {
        mgeo_test::Noise rnd(11);
        std::vector<V2<T>> cloud;
        for (int i = 0; i < 2000; ++i) {
            double const t = rnd(1000);
            cloud.emplace_back(T(t), T(0.3 * t + rnd(1e-6)));
        }
        EXPECT_NO_THROW(math::CcvxHull2D<T>{cloud});
    }
}

}  // namespace
