// Tests of <math/rect.h>.
#include <gtest/gtest.h>
#include <math/rect.h>

#include <cmath>
#include <limits>
#include <list>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using AllTypes = ::testing::Types<int, float, double>;
using mgeo_test::RealTypes;

template <typename T>
class Rect : public ::testing::Test {};
TYPED_TEST_SUITE(Rect, AllTypes);

template <typename T>
class RealRect : public ::testing::Test {};
TYPED_TEST_SUITE(RealRect, RealTypes);

template <typename T>
math::Crect2<T> corners(T l, T t, T r, T b) {
    return math::Crect2<T>(math::Cpoint2<T>(l, t), math::Cpoint2<T>(r, b));
}

template <typename T>
void expectFields(math::Crect2<T> const& r, T l, T t, T rr, T b) {
    EXPECT_EQ(r.left(), l);
    EXPECT_EQ(r.top(), t);
    EXPECT_EQ(r.right(), rr);
    EXPECT_EQ(r.bottom(), b);
}

template <typename T>
void expectBox(math::CboundingBox2<T> const& box, T minX, T minY, T maxX, T maxY) {
    EXPECT_EQ(box.minX(), minX);
    EXPECT_EQ(box.minY(), minY);
    EXPECT_EQ(box.maxX(), maxX);
    EXPECT_EQ(box.maxY(), maxY);
}

TYPED_TEST(Rect, SizeAndCenterFromOriginAndExtent) {
    using T = TypeParam;
    math::Crect2<T> r(T(0), T(0), T(10), T(5));
    EXPECT_EQ(r.width(), T(10));
    EXPECT_EQ(r.height(), T(5));
    math::Cpoint2<T> c = r.center();
    EXPECT_EQ(c.x, T(5));
    // int: (0 + 5) / 2 truncates to 2; float and double keep 2.5.
    EXPECT_EQ(c.y, std::is_integral_v<T> ? T(2) : T(2.5));
    EXPECT_EQ(r.topRight(), math::Cpoint2<T>(T(10), T(0)));
    EXPECT_EQ(r.bottomLeft(), math::Cpoint2<T>(T(0), T(5)));
}

TEST(RectInt, CenterTruncatesTowardZero) {
    math::Crect2<int> r = corners(-3, 0, 0, 0);
    EXPECT_EQ(r.center().x, -1);
    EXPECT_EQ(corners(-5, -5, 0, 0).center(), math::Cpoint2<int>(-2, -2));
}

// Near the ends of the int range the centre is still the truncated half sum, and the other
// operations wrap instead of overflowing (no undefined behaviour).
TEST(RectInt, HugeCoordinatesAreSafe) {
    int const big = std::numeric_limits<int>::max();
    int const small = std::numeric_limits<int>::min();
    math::Crect2<int> r = corners(big - 3, small, big - 1, big);
    EXPECT_EQ(r.center(), math::Cpoint2<int>(big - 2, 0));
    EXPECT_EQ(corners(small, small + 2, small + 4, small).center(),
              math::Cpoint2<int>(small + 2, small + 1));
    EXPECT_EQ(r.width(), 2);
    math::Crect2<int> w(big, small, 1, -1);
    expectFields(w, big, small, small, big);
    EXPECT_EQ(w.width(), 1);
    EXPECT_NO_THROW(r.height());
    EXPECT_NO_THROW(r.setCenter(math::Cpoint2<int>(small, small)));
    EXPECT_NO_THROW(r.adjust(big, big, big, big));
    EXPECT_NO_THROW(r.moveBy(math::Cpoint2<int>(big, big)));
    EXPECT_NO_THROW(r.moveTo(math::Cpoint2<int>(big, big)));
    EXPECT_NO_THROW(r += math::Cpoint2<int>(big, big));
    EXPECT_NO_THROW(r -= math::Cpoint2<int>(small, small));
    EXPECT_NO_THROW(r *= big);
    EXPECT_NO_THROW(r.setWidth(big));
    EXPECT_NO_THROW(r.setHeight(big));
    EXPECT_NO_THROW(r = r + math::Cpoint2<int>(big, big) - math::Cpoint2<int>(small, 0));
    EXPECT_NO_THROW(r = r * 3);
}

TEST(RectInt, DefaultIsZeroAndValid) {
    math::Crect2<int> r;
    expectFields(r, 0, 0, 0, 0);
    EXPECT_TRUE(r.isValid());
}

TYPED_TEST(RealRect, DefaultIsUnsetAndInvalid) {
    using T = TypeParam;
    math::Crect2<T> r;
    EXPECT_TRUE(std::isnan(r.left()));
    EXPECT_TRUE(std::isnan(r.right()));
    EXPECT_FALSE(r.isValid());
    EXPECT_TRUE(math::Crect2<T>(T(0), T(0), T(1), T(1)).isValid());
    math::Crect2<T> half(T(0), T(0), T(1), T(1));
    half.bottom() = std::numeric_limits<T>::quiet_NaN();
    EXPECT_FALSE(half.isValid());
}

TYPED_TEST(Rect, NormalizeReturnsSwappedCopy) {
    using T = TypeParam;
    math::Crect2<T> const r = corners(T(10), T(8), T(2), T(4));
    expectFields(r.normalize(), T(2), T(4), T(10), T(8));
    expectFields(r, T(10), T(8), T(2), T(4));
    expectFields(corners(T(1), T(8), T(2), T(4)).normalize(), T(1), T(4), T(2), T(8));
}

TYPED_TEST(Rect, MutatorsMoveAndScale) {
    using T = TypeParam;
    using P = math::Cpoint2<T>;
    math::Crect2<T> r(T(1), T(2), T(4), T(6));  // (1, 2) - (5, 8)
    r.setWidth(T(2));
    r.setHeight(T(4));
    expectFields(r, T(1), T(2), T(3), T(6));
    r.setCenter(P(T(10), T(10)));  // centre (2, 4) -> (10, 10)
    expectFields(r, T(9), T(8), T(11), T(12));
    r.adjust(T(-1), T(-2), T(3), T(4));
    expectFields(r, T(8), T(6), T(14), T(16));
    r.moveTo(P(T(0), T(1)));
    expectFields(r, T(0), T(1), T(6), T(11));
    r.moveBy(P(T(2), T(3)));
    expectFields(r, T(2), T(4), T(8), T(14));
    r += P(T(1), T(1));
    r -= P(T(2), T(3));
    expectFields(r, T(1), T(2), T(7), T(12));
    r *= T(2);
    expectFields(r, T(2), T(4), T(14), T(24));
    expectFields(r + P(T(1), T(1)), T(3), T(5), T(15), T(25));
    expectFields(r - P(T(1), T(1)), T(1), T(3), T(13), T(23));
    expectFields(r * T(3), T(6), T(12), T(42), T(72));
    expectFields(r, T(2), T(4), T(14), T(24));
    EXPECT_TRUE(r == corners(T(2), T(4), T(14), T(24)));
    EXPECT_TRUE(r != corners(T(2), T(4), T(14), T(25)));
}

TYPED_TEST(Rect, PointTestsInclusiveStrictAndBorder) {
    using T = TypeParam;
    using P = math::Cpoint2<T>;
    math::Crect2<T> const r = corners(T(0), T(0), T(4), T(2));
    // Per point: pointIsIn, pointIsRealIn, pointOnBorder.
    auto const expect = [&r](T x, T y, bool in, bool realIn, bool border) {
        P const p(x, y);
        EXPECT_EQ(r.pointIsIn(p), in) << p;
        EXPECT_EQ(r.pointIsRealIn(p), realIn) << p;
        EXPECT_EQ(r.pointOnBorder(p), border) << p;
    };
    expect(T(0), T(0), true, false, true);
    expect(T(4), T(2), true, false, true);
    expect(T(2), T(1), true, true, false);
    expect(T(5), T(1), false, false, false);
    expect(T(0), T(1), true, false, true);
    expect(T(3), T(2), true, false, true);
    expect(T(4), T(0), true, false, true);
    expect(T(5), T(0), false, false, false);
    expect(T(4), T(3), false, false, false);  // on the line of the right edge, beyond it
}

TYPED_TEST(Rect, SharedEdgeDoesNotIntersect) {
    using T = TypeParam;
    math::Crect2<T> const a = corners(T(0), T(0), T(10), T(10));
    math::Crect2<T> const b = corners(T(10), T(0), T(20), T(10));
    EXPECT_FALSE(a.intersects(b));  // r0 = l1
    math::Crect2<T> const o = a.intersect(b);
    expectFields(o, T(10), T(0), T(10), T(10));
    EXPECT_EQ(o.width(), T(0));
    // The masks are not symmetric: seen from b the shared edge is l0 = r1, which gives the x
    // mask 0100 and therefore counts as an intersection.
    EXPECT_TRUE(b.intersects(a));
}

TYPED_TEST(Rect, DisjointGiveInvertedIntersection) {
    using T = TypeParam;
    math::Crect2<T> const a = corners(T(0), T(0), T(2), T(2));
    math::Crect2<T> const b = corners(T(5), T(6), T(9), T(9));
    EXPECT_FALSE(a.intersects(b));
    EXPECT_FALSE(b.intersects(a));
    math::Crect2<T> const o = a.intersect(b);
    expectFields(o, T(5), T(6), T(2), T(2));
    EXPECT_GT(o.left(), o.right());
    expectFields(a.unite(b), T(0), T(0), T(9), T(9));
}

TYPED_TEST(Rect, IntersectAndUniteNormaliseFirst) {
    using T = TypeParam;
    math::Crect2<T> const a = corners(T(8), T(6), T(0), T(0));  // inverted (0, 0) - (8, 6)
    math::Crect2<T> const b = corners(T(4), T(2), T(12), T(3));
    expectFields(a.intersect(b), T(4), T(2), T(8), T(3));
    expectFields(a.unite(b), T(0), T(0), T(12), T(6));
}

// For normalised rectangles of positive size that neither touch nor share an edge line, the
// masks decide exactly "the interiors overlap".
TYPED_TEST(Rect, IntersectsMatchesInteriorOverlap) {
    using T = TypeParam;
    mgeo_test::Noise rnd(7);
    auto coord = [&rnd]() { return T(std::floor(rnd(20.0))) * T(2); };  // even numbers
    int checked = 0;
    for (int k = 0; k < 2000; ++k) {
        T l0 = coord(), r0 = coord(), t0 = coord(), b0 = coord();
        T l1 = coord() + T(1), r1 = coord() + T(1), t1 = coord() + T(1), b1 = coord() + T(1);
        math::Crect2<T> const a = corners(l0, t0, r0, b0).normalize();
        math::Crect2<T> const b = corners(l1, t1, r1, b1).normalize();
        if (a.width() == T(0) || a.height() == T(0) || b.width() == T(0) || b.height() == T(0)) {
            continue;
        }
        bool const overlap = a.left() < b.right() && b.left() < a.right() && a.top() < b.bottom() &&
                             b.top() < a.bottom();
        EXPECT_EQ(a.intersects(b), overlap);
        EXPECT_EQ(b.intersects(a), overlap);
        math::Crect2<T> const o = a.intersect(b);
        EXPECT_EQ(overlap, o.left() < o.right() && o.top() < o.bottom());
        ++checked;
    }
    EXPECT_GT(checked, 1000);
}

template <typename T>
class BoundingBox : public ::testing::Test {};
TYPED_TEST_SUITE(BoundingBox, AllTypes);

TYPED_TEST(BoundingBox, ExtentsOfVectorAndList) {
    using T = TypeParam;
    using P = math::Cpoint2<T>;
    std::vector<P> const pts{P(T(3), T(-1)), P(T(-2), T(4)), P(T(5), T(2))};
    math::CboundingBox2<T> box;
    box.set(pts);
    expectBox(box, T(-2), T(-1), T(5), T(4));
    math::CboundingBox2<T> fromList;
    fromList.set(std::list<P>(pts.begin(), pts.end()));
    expectBox(fromList, T(-2), T(-1), T(5), T(4));
    T x = T(0);
    T y = T(0);
    box.getCenter(x, y);
    // int: (-2 + 5) * 0.5 = 1.5 truncated to 1.
    EXPECT_EQ(x, std::is_integral_v<T> ? T(1) : T(1.5));
    EXPECT_EQ(y, std::is_integral_v<T> ? T(1) : T(1.5));

    // A single point sets minimum and maximum.
    box.set(std::vector<P>{P(T(7), T(8))});
    expectBox(box, T(7), T(8), T(7), T(8));
    EXPECT_TRUE(box.isInside(P(T(7), T(8))));
    EXPECT_FALSE(box.isInside(P(T(8), T(8))));

    // Also at the lowest value of T.
    T const lowest = std::numeric_limits<T>::lowest();
    box.set(std::vector<P>{P(lowest, lowest)});
    expectBox(box, lowest, lowest, lowest, lowest);
}

TYPED_TEST(BoundingBox, NaNPointAndEmptyInput) {
    using T = TypeParam;
    if constexpr (std::is_floating_point_v<T>) {
        using P = math::Cpoint2<T>;
        T const nan = std::numeric_limits<T>::quiet_NaN();
        math::CboundingBox2<T> box;
        box.set(std::vector<P>{P(T(1), T(1)), P(T(2), nan), P(T(3), T(3))});
        EXPECT_TRUE(std::isnan(box.minX()));
        EXPECT_TRUE(std::isnan(box.maxX()));
        P c(T(0), T(0));
        box.getCenter(c);
        EXPECT_TRUE(std::isnan(c.x));
        EXPECT_TRUE(std::isnan(c.y));

        math::CboundingBox2<T> empty;
        empty.set(std::vector<P>{});
        EXPECT_TRUE(std::isnan(empty.minX()));
        EXPECT_TRUE(std::isnan(empty.maxX()));
    }
}

TYPED_TEST(BoundingBox, InsideWithMachineEpsilon) {
    using T = TypeParam;
    if constexpr (std::is_same_v<T, double>) {
        using P = math::Cpoint2<T>;
        math::CboundingBox2<T> box;
        box.set(std::vector<P>{P(0.0, 0.0), P(1.0, 1.0)});
        EXPECT_TRUE(box.isInside(P(-1e-17, 0.5)));
        EXPECT_TRUE(box.isInside(P(0.5, 1.0 + 2e-16)));
        EXPECT_FALSE(box.isInside(P(-1e-15, 0.5)));
    }
}

}  // namespace
