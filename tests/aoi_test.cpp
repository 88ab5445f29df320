// Tests of <math/aoi.h>.
#include <gtest/gtest.h>
#include <math/aoi.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using mgeo_test::RealTypes;

template <typename T>
using P = math::Cpoint2<T>;
template <typename T>
using Poly = math::Cpolygon2<T>;
template <typename T>
using Aoi = math::Caoi<T>;

template <typename T>
Poly<T> polyOf(std::initializer_list<std::pair<double, double>> xy) {
    Poly<T> p;
    for (auto const& q : xy) {
        p.add(T(q.first), T(q.second));
    }
    return p;
}

// v rounded to a multiple of `grid` (0: unrounded).
double snap(double v, double grid) { return grid > 0 ? std::round(v / grid) * grid : v; }

// Random polygon vertices about (cx, cy): star-shaped (simple) or in random order (mostly
// self-intersecting); coordinates rounded to multiples of `grid` (0: unrounded).
template <typename T>
std::vector<P<T>> randomPolygon(std::size_t n, double cx, double cy, double r, bool star,
                                double grid, std::uint64_t seed) {
    mgeo_test::Noise rnd(seed);
    std::vector<P<T>> out;
    for (std::size_t i = 0; i < n; ++i) {
        double x, y;
        if (star) {
            double const a = 2 * mgeo_test::kPi * (double(i) + 0.5 + rnd(0.4)) / double(n);
            double const rr = r * (0.3 + 0.7 * rnd.unit());
            x = cx + rr * std::cos(a);
            y = cy + rr * std::sin(a);
        } else {
            x = cx + rnd(r);
            y = cy + rnd(r);
        }
        out.emplace_back(T(snap(x, grid)), T(snap(y, grid)));
    }
    return out;
}

// Every pixel of the pixel rectangle (and a frame of 2 around it): the mask bit equals the
// pointwise definition, "in some polygon's extents and Cpolygon2::pointIsIn".
template <typename T>
::testing::AssertionResult maskMatchesPointwise(Aoi<T> const& aoi) {
    math::Crect2<int> const pr = aoi.getPixelRect();
    long long set = 0;
    for (int y = pr.top() - 2; y <= pr.bottom() + 2; ++y) {
        for (int x = pr.left() - 2; x <= pr.right() + 2; ++x) {
            bool expected = false;
            bool const inRect =
                x >= pr.left() && x <= pr.right() && y >= pr.top() && y <= pr.bottom();
            P<T> const p(static_cast<T>(x), static_cast<T>(y));
            for (auto const& info : aoi.getPolygons()) {
                expected = expected ||
                           (inRect && info.boundingRect.pointIsIn(p) && info.polygon.pointIsIn(p));
            }
            if (aoi.pointIsIn(x, y) != expected) {
                return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << "): mask "
                                                     << !expected << ", pointwise " << expected;
            }
            set += expected ? 1 : 0;
        }
    }
    return ::testing::AssertionSuccess() << set << " pixels set";
}

// The mask bit of each pixel of `at`, expected `in`.
template <typename T>
void expectPixels(Aoi<T> const& aoi, std::initializer_list<std::pair<int, int>> at, bool in) {
    for (auto const& [x, y] : at) {
        EXPECT_EQ(aoi.pointIsIn(x, y), in) << x << ", " << y;
    }
}

template <typename T>
class AreaOfInterest : public ::testing::Test {};
TYPED_TEST_SUITE(AreaOfInterest, RealTypes);

TYPED_TEST(AreaOfInterest, WholeImage) {
    using T = TypeParam;
    Cimage const img(640, 480, CimgDefs::enType::gray8);
    Aoi<T> aoi;
    aoi.setStd(img);
    ASSERT_EQ(aoi.nPolygons(), 1u);
    EXPECT_EQ(aoi.getPolygon(0).type(), Poly<T>::unclassified);
    EXPECT_EQ(aoi.state(), 1u);
    EXPECT_FALSE(aoi.pointIsIn(0, 0));
    ASSERT_TRUE(aoi.calculate());
    EXPECT_EQ(aoi.state(), 0u);
    expectPixels(aoi, {{0, 0}, {639, 479}}, true);
    EXPECT_TRUE(aoi.pointIsIn(math::Cpoint2<int>(320, 240)));
    expectPixels(aoi, {{640, 0}, {0, 480}, {-1, 0}}, false);
    EXPECT_TRUE(aoi.isInImg(img));
    EXPECT_FALSE(aoi.isInImg(Cimage(639, 480, CimgDefs::enType::gray8)));
    EXPECT_EQ(aoi.getBoundingRect(), math::Crect2<T>(T(0), T(0), T(639), T(479)));
    EXPECT_EQ(aoi.getPixelRect(), math::Crect2<int>(0, 0, 639, 479));
    EXPECT_TRUE(maskMatchesPointwise(aoi));
}

TYPED_TEST(AreaOfInterest, ImageOfTypeNoneGivesEmptyArea) {
    using T = TypeParam;
    Aoi<T> aoi(polyOf<T>({{0, 0}, {5, 0}, {0, 5}}));
    aoi.setStd(Cimage(640, 480, CimgDefs::enType::none));
    EXPECT_EQ(aoi.nPolygons(), 0u);
    EXPECT_FALSE(aoi.isValid());
    EXPECT_FALSE(aoi.calculate());
    EXPECT_EQ(aoi.state(), 1u);
    EXPECT_FALSE(aoi.pointIsIn(0, 0));
    EXPECT_TRUE(mgeo_test::expectThrowId<math::CthrowMath>(
        [&] { aoi.getBoundingRect(); }, math::CthrowMath::ERR_PRIMEXT_AOI_INVALID));
}

TYPED_TEST(AreaOfInterest, ChangesResetTheState) {
    using T = TypeParam;
    Aoi<T> aoi(polyOf<T>({{0, 0}, {10, 0}, {0, 10}}));
    ASSERT_TRUE(aoi.calculate());
    expectPixels(aoi, {{2, 2}}, true);
    expectPixels(aoi, {{8, 8}}, false);

    aoi.add(P<T>(T(10), T(10)), 0);  // (0,0) (10,0) (0,10) (10,10): a bow-tie
    EXPECT_EQ(aoi.state(), 1u);
    EXPECT_FALSE(aoi.pointIsIn(2, 2));
    EXPECT_FALSE(aoi.isInImg(Cimage(100, 100, CimgDefs::enType::gray8)));
    EXPECT_TRUE(aoi.pointIsExactIn(T(5), T(2)));  // the exact query ignores the state
    EXPECT_EQ(aoi.getPolygon(0).type(), Poly<T>::unclassified);
    ASSERT_TRUE(aoi.calculate());
    EXPECT_EQ(aoi.getPolygon(0).type(), Poly<T>::selfIntersecting);
    EXPECT_TRUE(maskMatchesPointwise(aoi));

    EXPECT_TRUE(aoi.removePoint(0, P<T>(T(10), T(10))));
    EXPECT_FALSE(aoi.removePoint(0, P<T>(T(10), T(10))));
    EXPECT_EQ(aoi.state(), 1u);
    aoi.add(T(-5), T(5), 0);
    aoi.removePoint(0, 3);
    EXPECT_EQ(aoi.getPolygon(0).size(), 3u);
    ASSERT_TRUE(aoi.calculate());
    EXPECT_TRUE(aoi.pointIsIn(2, 2));
    EXPECT_TRUE(aoi.isInImg(Cimage(11, 11, CimgDefs::enType::gray8)));
    EXPECT_FALSE(aoi.isInImg(Cimage(10, 11, CimgDefs::enType::gray8)));

    aoi.clear();
    EXPECT_EQ(aoi.nPolygons(), 0u);
    EXPECT_FALSE(aoi.pointIsIn(2, 2));
    EXPECT_FALSE(aoi.calculate());
}

TYPED_TEST(AreaOfInterest, IndexErrorsCarryTheirArguments) {
    using T = TypeParam;
    Aoi<T> aoi;
    aoi.add(polyOf<T>({{0, 0}, {4, 0}, {0, 4}}));
    aoi.add(polyOf<T>({{1, 1}, {5, 1}, {1, 5}}));
    auto const message = [](auto const& fn) -> std::string {
        try {
            fn();
        } catch (math::CthrowMath const& e) {
            return std::to_string(e.id()) + ": " + e.message();
        }
        return "no exception";
    };
    // Id 34 with the polygon index, valid 0 to `max`.
    auto const polyIndex = [](int i, int max = 1) {
        return "34: Polygonindex " + std::to_string(i) +
               " des Aoi ungueltig. (min: 0, max: " + std::to_string(max) + ")";
    };
    P<T> const o(T(0), T(0));
    EXPECT_EQ(message([&] { aoi.removePoly(-1); }), polyIndex(-1));
    EXPECT_EQ(message([&] { aoi.removePoly(2); }), polyIndex(2));
    EXPECT_EQ(message([&] { aoi.add(o, 7); }), polyIndex(7));
    EXPECT_EQ(message([&] { aoi.add(T(0), T(0), 2); }), polyIndex(2));
    EXPECT_EQ(message([&] { aoi.removePoint(3, o); }), polyIndex(3));
    EXPECT_EQ(message([&] { aoi.getPolygon(-2); }), polyIndex(-2));
    EXPECT_EQ(message([&] { aoi.removePoint(1, 3); }),
              "35: Punktindex 3 des Polygons ungueltig. (min: 0, max: 2)");
    EXPECT_EQ(message([&] { aoi.removePoint(1, -1); }),
              "35: Punktindex -1 des Polygons ungueltig. (min: 0, max: 2)");
    EXPECT_EQ(aoi.nPolygons(), 2u);
    aoi.removePoly(1);
    EXPECT_EQ(aoi.nPolygons(), 1u);
    EXPECT_EQ(message([&] {
                  aoi.removePoly(0);
                  aoi.removePoly(0);
              }),
              polyIndex(0, -1));
}

TYPED_TEST(AreaOfInterest, UnionOfTwoPolygons) {
    using T = TypeParam;
    math::CpntN2<T> contours;
    contours.push_back(polyOf<T>({{0, 0}, {10, 0}, {10, 10}, {0, 10}}).vertices());
    contours.push_back(polyOf<T>({{5, 5}, {20, 5}, {20, 8}}).vertices());
    Aoi<T> aoi;
    aoi.set(contours);
    EXPECT_TRUE(aoi.isValid());
    ASSERT_TRUE(aoi.calculate());
    EXPECT_EQ(aoi.getBoundingRect(), math::Crect2<T>(T(0), T(0), T(20), T(10)));
    expectPixels(aoi, {{1, 9}, {18, 7}, {8, 6}}, true);  // first only, second only, both
    expectPixels(aoi, {{15, 9}}, false);                 // neither
    EXPECT_TRUE(aoi.pointIsExactIn(T(0.5), T(9.5)));
    EXPECT_TRUE(aoi.pointIsExactIn(P<T>(T(19.5), T(7.5))));
    EXPECT_FALSE(aoi.pointIsExactIn(T(19.5), T(4.5)));
    EXPECT_TRUE(maskMatchesPointwise(aoi));
    Aoi<T> const copy(aoi);
    EXPECT_TRUE(copy.pointIsIn(18, 7));
}

TYPED_TEST(AreaOfInterest, InvalidPolygonsAreRejected) {
    using T = TypeParam;
    Aoi<T> aoi(polyOf<T>({{0, 0}, {5, 0}, {0, 5}}));
    aoi.add(polyOf<T>({{0, 0}, {5, 0}}));
    EXPECT_FALSE(aoi.isValid());
    EXPECT_FALSE(aoi.calculate());
    EXPECT_FALSE(aoi.pointIsIn(1, 1));
    // Degenerate polygons count as valid but cover nothing.
    Aoi<T> line(polyOf<T>({{0, 0}, {5, 5}, {10, 10}}));
    ASSERT_TRUE(line.calculate());
    EXPECT_FALSE(line.pointIsIn(5, 5));
    // Extents that do not fit the mask make calculate fail.
    Aoi<T> huge(polyOf<T>({{0, 0}, {1e12, 0}, {0, 1e12}}));
    EXPECT_FALSE(huge.calculate());
    T const nan = std::numeric_limits<T>::quiet_NaN();
    Aoi<T> bad(polyOf<T>({{0, 0}, {1, 0}, {0, 1}}));
    bad.add(Poly<T>(
        std::vector<P<T>>{P<T>(T(0), T(0)), P<T>(T(4), T(0)), P<T>(T(0), T(4)), P<T>(nan, T(4))}));
    ASSERT_TRUE(bad.calculate());  // the NaN x extent drops out of the union
    EXPECT_EQ(bad.getBoundingRect(), math::Crect2<T>(T(0), T(0), T(1), T(4)));
    EXPECT_TRUE(maskMatchesPointwise(bad));
    // A NaN in the first vertex leaves the y extent at its start values: no usable mask.
    Aoi<T> worse(polyOf<T>({{0, 0}, {1, 0}, {0, 1}}));
    worse.add(Poly<T>(std::vector<P<T>>{P<T>(nan, T(0)), P<T>(T(4), T(0)), P<T>(T(0), T(4))}));
    EXPECT_FALSE(worse.calculate());
    EXPECT_FALSE(worse.pointIsIn(0, 0));
    EXPECT_NO_THROW(bad.pointIsExactIn(nan, nan));
    // Polygons wholly between pixel centres give an empty mask.
    Aoi<T> thin(polyOf<T>({{0.2, 0.2}, {0.8, 0.2}, {0.5, 0.8}}));
    ASSERT_TRUE(thin.calculate());
    expectPixels(thin, {{0, 0}, {1, 1}}, false);
}

// The scan-line mask reproduces the pointwise definition bit for bit: random simple,
// convex and self-intersecting polygons, on integer grids (pixels exactly on edges and
// vertices), on fine grids and unrounded, alone and in unions.
TYPED_TEST(AreaOfInterest, MaskEqualsPointwiseTest) {
    using T = TypeParam;
    double const grids[] = {1.0, 0.5, 0.125, 0.0};
    for (std::uint64_t seed = 1; seed <= 48; ++seed) {
        double const grid = grids[seed % 4];
        std::size_t const n = 3 + std::size_t(seed * 7 % 23);
        Aoi<T> aoi;
        switch (seed % 3) {
            case 0:
                aoi.add(Poly<T>(randomPolygon<T>(n, 30, 20, 25, true, grid, seed)));
                break;
            case 1:
                aoi.add(Poly<T>::convexPoly(randomPolygon<T>(n + 4, 30, 20, 25, false, grid, seed),
                                            seed % 2 == 0));
                break;
            default:
                aoi.add(Poly<T>(randomPolygon<T>(n, 30, 20, 25, false, grid, seed)));
                break;
        }
        if (seed % 5 == 0) {  // a union with two more
            aoi.add(Poly<T>(randomPolygon<T>(9, 10, 10, 12, true, grid, seed + 100)));
            aoi.add(Poly<T>::convexPoly(randomPolygon<T>(12, 40, 35, 9, false, grid, seed + 200),
                                        true));
        }
        if (!aoi.isValid()) {
            continue;
        }
        ASSERT_TRUE(aoi.calculate()) << "seed " << seed;
        EXPECT_TRUE(maskMatchesPointwise(aoi)) << "seed " << seed << ", grid " << grid;
    }
}

// Convex polygons are filled block by block, with certificates on block corners and a search
// near the boundary; every bit still equals the angular point test. Random convex polygons of 3
// to 80 vertices, round, thin and tiny, on integer and half-integer grids (pixels on edges and
// vertices, centres on pixel rows) and unrounded, near the origin and far from it.
TYPED_TEST(AreaOfInterest, ConvexMaskEqualsPointwiseTest) {
    using T = TypeParam;
    double const grids[] = {1.0, 0.5, 0.0};
    for (std::uint64_t seed = 1; seed <= 90; ++seed) {
        mgeo_test::Noise rnd(seed * 7919);
        double const grid = grids[seed % 3];
        double const size = (seed % 4 == 0) ? 8.0 + 10.0 * rnd.unit() : 40.0 + 120.0 * rnd.unit();
        double const aspect = (seed % 5 == 0) ? 0.05 + 0.1 * rnd.unit() : 0.5 + 0.5 * rnd.unit();
        double const offset = (seed % 7 == 0) ? 5e4 : 0.0;
        std::size_t const n = 3 + std::size_t(rnd.unit() * 78);
        double const turn = 2 * mgeo_test::kPi * rnd.unit();
        std::vector<P<T>> pts;
        for (std::size_t i = 0; i < n; ++i) {
            double const a = 2 * mgeo_test::kPi * rnd.unit();
            double const u = size * std::cos(a);
            double const v = size * aspect * std::sin(a);
            double const x = offset + size + 2 + u * std::cos(turn) - v * std::sin(turn);
            double const y = offset + size + 3 + u * std::sin(turn) + v * std::cos(turn);
            pts.emplace_back(T(snap(x, grid)), T(snap(y, grid)));
        }
        Aoi<T> aoi(Poly<T>::convexPoly(pts, seed % 2 == 0));
        if (!aoi.isValid()) {
            continue;
        }
        ASSERT_TRUE(aoi.calculate()) << "seed " << seed;
        if (aoi.getPolygon(0).type() != Poly<T>::convex) {
            continue;
        }
        EXPECT_TRUE(maskMatchesPointwise(aoi)) << "seed " << seed << ", grid " << grid;
    }
    // Taller than one band of rows, and a union of two overlapping ones.
    Aoi<T> tall(Poly<T>::convexPoly(
        mgeo_test::ellipsePoints<T>(20.5, 2200.25, 12.0, 2150.0, 0.004, 40), true));
    tall.add(
        Poly<T>::convexPoly(mgeo_test::ellipsePoints<T>(30, 2100, 9.0, 2080.0, -0.003, 33), true));
    ASSERT_TRUE(tall.calculate());
    EXPECT_EQ(tall.getPolygon(0).type(), Poly<T>::convex);
    EXPECT_TRUE(maskMatchesPointwise(tall));
}

// Far from the origin (float spacing 1/16 at 1e6) and with classifications that no longer fit
// the vertices, the mask still follows the point test exactly.
TYPED_TEST(AreaOfInterest, MaskFollowsPointTestInOddCases) {
    using T = TypeParam;
    Aoi<T> far;
    std::vector<P<T>> v = randomPolygon<T>(17, 1e6 + 30, 5e5 + 20, 25, false, 0.0, 77);
    far.add(Poly<T>(v));
    far.add(
        Poly<T>::convexPoly(randomPolygon<T>(20, 1e6 + 20, 5e5 + 30, 20, false, 0.0, 78), true));
    ASSERT_TRUE(far.calculate());
    EXPECT_TRUE(maskMatchesPointwise(far));

    // Convex table built, then a vertex added without reclassification: the stale table
    // decides, clipped by the current extents.
    Poly<T> stale = Poly<T>::convexPoly(randomPolygon<T>(15, 20, 20, 15, false, 0.5, 79), true);
    stale.add(T(45), T(45));
    Aoi<T> staleAoi(stale);
    ASSERT_TRUE(staleAoi.calculate());
    EXPECT_EQ(staleAoi.getPolygon(0).type(), Poly<T>::convex);
    EXPECT_TRUE(maskMatchesPointwise(staleAoi));

    // The arrowhead that passes as convex (its reflex vertex closes the list).
    Aoi<T> arrow(polyOf<T>({{0, 0}, {30, -15}, {30, 15}, {9, 0}}));
    ASSERT_TRUE(arrow.calculate());
    EXPECT_EQ(arrow.getPolygon(0).type(), Poly<T>::convex);
    EXPECT_TRUE(maskMatchesPointwise(arrow));

    // Convex polygon from collinear-heavy points without optimisation.
    Aoi<T> collinear(Poly<T>::convexPoly(
        polyOf<T>({{0, 0}, {5, 0}, {10, 0}, {10, 7}, {5, 7}, {0, 7}, {0, 3}}).vertices(), false));
    ASSERT_TRUE(collinear.calculate());
    EXPECT_TRUE(maskMatchesPointwise(collinear));
    expectPixels(collinear, {{10, 7}, {0, 0}}, true);
}

}  // namespace
