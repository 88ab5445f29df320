// Tests of <math/convex_hull.h>.
#include <gtest/gtest.h>
#include <math/convex_hull.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/builders.h"
#include "support/exact_hull.h"

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

// The hull of cloud by the exact reference, as points of T (empty when it has no area).
template <typename T>
std::vector<V2<T>> exactHull(std::vector<V2<T>> const& cloud) {
    std::vector<std::pair<double, double>> xy;
    for (V2<T> const& p : cloud) {
        xy.emplace_back(double(p.x), double(p.y));
    }
    std::vector<std::pair<mgeo_test::I128, mgeo_test::I128>> grid;
    if (!mgeo_test::exactIntegers(xy, grid)) {
        ADD_FAILURE() << "set not representable on one integer grid";
        return {};
    }
    std::vector<V2<T>> out;
    for (std::size_t i : mgeo_test::exactHullIndices(grid, true)) {
        out.push_back(cloud[i]);
    }
    return out;
}

TYPED_TEST(ConvexHull, DefaultAndTooFewPointsGiveEmptyHull) {
    using T = TypeParam;
    EXPECT_TRUE(math::CcvxHull2D<T>().points().empty());
    EXPECT_TRUE(math::CcvxHull2D<T>(std::vector<V2<T>>{}).points().empty());
    EXPECT_TRUE(math::CcvxHull2D<T>(pts<T>({{0, 0}, {1, 0}})).points().empty());
}

// Golden hulls: input, expected vertices (counter-clockwise from the lowest, then leftmost).
TYPED_TEST(ConvexHull, GoldenHulls) {
    using T = TypeParam;
    struct Case {
        char const* what;
        std::vector<V2<T>> in, hull;
    };
    Case const cases[] = {
        {"square and centre", pts<T>({{4, 4}, {2, 2}, {0, 4}, {4, 0}, {0, 0}}),
         pts<T>({{0, 0}, {4, 0}, {4, 4}, {0, 4}})},
        {"collinear", pts<T>({{0, 0}, {1, 1}, {3, 3}, {2, 2}}), {}},
        {"one point thrice", pts<T>({{5, 5}, {5, 5}, {5, 5}}), {}},
        {"points on the ray to a corner",
         pts<T>({{2, 2}, {4, 4}, {0, 0}, {1, 1}, {4, 0}, {3, 3}, {0, 4}, {0, 0}}),
         pts<T>({{0, 0}, {4, 0}, {4, 4}, {0, 4}})},
        {"mid-edge point", pts<T>({{0, 0}, {4, 0}, {4, 2}, {4, 4}, {2, 4}, {0, 4}}),
         pts<T>({{0, 0}, {4, 0}, {4, 4}, {0, 4}})},
        {"three clockwise", pts<T>({{0, 3}, {3, 1}, {1, 0}}), pts<T>({{1, 0}, {3, 1}, {0, 3}})},
        {"pivot tie on y", pts<T>({{3, 0}, {5, 2}, {1, 0}, {2, 3}}),
         pts<T>({{1, 0}, {3, 0}, {5, 2}, {2, 3}})},
        {"pivot duplicate and two rays", pts<T>({{0, 1}, {0, 0}, {2, 0}, {0, 2}, {1, 0}, {0, 0}}),
         pts<T>({{0, 0}, {2, 0}, {0, 2}})},
    };
    for (Case const& c : cases) {
        auto const input = c.in;
        math::CcvxHull2D<T> const hull(c.in);
        EXPECT_EQ(hull.points(), c.hull) << c.what;
        EXPECT_EQ(c.in, input) << c.what;  // the argument is copied
    }
}

// Random integer-valued clouds (exact in every type) against the exact reference.
TYPED_TEST(ConvexHull, MatchesReferenceOnRandomClouds) {
    using T = TypeParam;
    mgeo_test::Noise rnd(7);
    for (int trial = 0; trial < 200; ++trial) {
        std::size_t const n = 3 + std::size_t(rnd.unit() * 300);
        int const range = trial % 2 ? 10 : 1000;  // small ranges force duplicates and rays
        std::vector<V2<T>> cloud;
        for (std::size_t i = 0; i < n; ++i) {
            cloud.emplace_back(T(std::floor(rnd(range))), T(std::floor(rnd(range))));
        }
        EXPECT_EQ(math::CcvxHull2D<T>(cloud).points(), exactHull(cloud)) << "trial " << trial;
    }
}

// Sets where rounded orientations fail (grids of 0.1 and 0.001, near-collinear lines, heavy
// duplicates, far slivers): the hull is exactly the hull of the values, in float and double.
TYPED_TEST(ConvexHull, MatchesExactHullOnHardSets) {
    using T = TypeParam;
    if constexpr (std::is_floating_point_v<T>) {
        for (int kind = 0; kind < 6; ++kind) {
            for (unsigned seed = 1; seed <= 60; ++seed) {
                std::vector<V2<T>> cloud;
                for (auto const& p : mgeo_test::hardHullSet(kind, seed)) {
                    cloud.emplace_back(T(p.first), T(p.second));
                }
                EXPECT_EQ(math::CcvxHull2D<T>(cloud).points(), exactHull(cloud))
                    << "kind " << kind << " seed " << seed;
            }
        }
        // A sliver triangle whose rounded turns gave a two-vertex "hull".
        std::vector<V2<double>> const sliver{{-54.2412665988129, 256.1939664347003},
                                             {-25.04931426329011, 121.33807765544373},
                                             {73.4752786888715, -333.80864896517187},
                                             {-69.2244488650254, 325.4106580087308}};
        std::vector<V2<T>> cloud;
        for (V2<double> const& p : sliver) {
            cloud.emplace_back(T(p.x), T(p.y));
        }
        math::CcvxHull2D<T> const hullOf(cloud);
        auto const& hull = hullOf.points();
        EXPECT_TRUE(hull.empty() || hull.size() >= 3);
        EXPECT_EQ(hull, exactHull(cloud));
        if constexpr (std::is_same_v<T, double>) {
            EXPECT_EQ(hull.size(), 3u);
        }
    }
}

// Over the whole int range the turns are exact: random full-range clouds and a cloud whose
// orientation products need 66 bits.
TEST(ConvexHullInt, ExactOverTheWholeRange) {
    int const lo = std::numeric_limits<int>::min();
    int const hi = std::numeric_limits<int>::max();
    mgeo_test::Noise rnd(11);
    for (int trial = 0; trial < 50; ++trial) {
        std::vector<V2<int>> cloud;
        for (int i = 0; i < 40; ++i) {
            cloud.emplace_back(int(std::floor(rnd(2147483647.0))), int(std::floor(rnd(2147483647.0))));
        }
        cloud.emplace_back(lo, lo);
        EXPECT_EQ(math::CcvxHull2D<int>(cloud).points(), exactHull(cloud)) << "trial " << trial;
    }
    std::vector<V2<int>> const big{{lo, lo}, {hi, lo}, {hi, hi}, {lo, hi}, {0, 0}, {hi, 0},
                                   {hi - 1, hi}, {lo, hi - 1}};
    EXPECT_EQ(math::CcvxHull2D<int>(big).points(),
              (std::vector<V2<int>>{{lo, lo}, {hi, lo}, {hi, hi}, {lo, hi}}));
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

}  // namespace
