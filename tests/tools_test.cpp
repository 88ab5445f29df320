// Tests of <math/tools.h>.
#include <gtest/gtest.h>
#include <math/tools.h>

#include <cmath>
#include <functional>
#include <limits>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

template <typename T>
class CutPointCloud : public ::testing::Test {};
TYPED_TEST_SUITE(CutPointCloud, mgeo_test::RealTypes);

template <typename T>
using P3 = math::Cpoint3<T>;
template <typename T>
using Cloud = CbaseVecN<P3<T>>;

template <typename T>
Cloud<T> randomCloud(std::size_t n, std::uint64_t seed) {
    mgeo_test::Noise rnd(seed);
    Cloud<T> c;
    for (std::size_t i = 0; i < n; ++i) c.push_back(P3<T>(T(rnd(3)), T(rnd(3)), T(rnd(3))));
    return c;
}

// out must be the input points with keep = +1 in input order; points with keep = 0 lie within
// rounding of the threshold and may go either way.
template <typename T>
void expectFiltered(Cloud<T> const& in, Cloud<T> const& out,
                    std::function<int(P3<T> const&)> const& keep) {
    std::size_t j = 0;
    for (P3<T> const& p : in) {
        int const k = keep(p);
        bool const taken = j < out.size() && out[j] == p;
        if (k > 0) {
            ASSERT_TRUE(taken) << "missing " << p;
        } else if (k < 0) {
            ASSERT_FALSE(taken) << "unexpected " << p;
        }
        j += taken ? 1 : 0;
    }
    EXPECT_EQ(j, out.size());
}

// +1 well inside (value < dist - margin), -1 well outside, 0 borderline; value in double.
inline int classify(double value, double dist, double margin) {
    if (value < dist - margin)
        return 1;
    if (value > dist + margin)
        return -1;
    return 0;
}

TYPED_TEST(CutPointCloud, PlaneSlabExample) {
    using T = TypeParam;
    math::Cplane3<T> const plane(math::Cdirec3<T>(T(0), T(0), T(1)), T(-1));
    Cloud<T> const in{P3<T>(T(5), T(5), T(0.6)), P3<T>(T(0), T(0), T(1.4)),
                      P3<T>(T(0), T(0), T(1.5))};
    Cloud<T> out;
    math::tools<T>::cutPointCloud(plane, T(0.5), in, out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0], in[0]);
    EXPECT_EQ(out[1], in[1]);
    math::tools<T>::cutPointCloud(plane, T(-0.5), in, out);
    EXPECT_EQ(out.size(), 0u);
}

TYPED_TEST(CutPointCloud, BoundariesAreExcluded) {
    using T = TypeParam;
    using Cut = math::tools<T>;
    Cloud<T> out;
    math::Csphere3<T> const sphere(P3<T>(T(0), T(0), T(0)), T(1));
    Cut::cutPointCloud(sphere, T(1), Cloud<T>{P3<T>(T(2), T(0), T(0)), P3<T>(T(0), T(1.5), T(0))},
                       out);
    ASSERT_EQ(out.size(), 1u);  // distance exactly 1 is not kept
    EXPECT_EQ(out[0], P3<T>(T(0), T(1.5), T(0)));

    math::Cline3<T> const axis(P3<T>(T(0), T(0), T(0)), math::Cdirec3<T>(T(0), T(0), T(1)));
    Cut::cutPointCloud(axis, T(2), Cloud<T>{P3<T>(T(2), T(0), T(7)), P3<T>(T(1), T(1), T(-3))},
                       out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], P3<T>(T(1), T(1), T(-3)));

    math::CboundingBox3<T> const box(P3<T>(T(0), T(0), T(0)), P3<T>(T(1), T(1), T(1)));
    Cloud<T> const onFaces{P3<T>(T(0), T(0.5), T(0.5)), P3<T>(T(0.5), T(1), T(0.5)),
                           P3<T>(T(0.5), T(0.5), T(0)), P3<T>(T(0.5), T(0.5), T(0.5))};
    Cut::cutPointCloud(box, onFaces, out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], P3<T>(T(0.5), T(0.5), T(0.5)));
}

TYPED_TEST(CutPointCloud, OutputIsClearedAndReservedAQuarter) {
    using T = TypeParam;
    using Cut = math::tools<T>;
    math::Csphere3<T> const sphere(P3<T>(T(100), T(0), T(0)), T(1));
    Cloud<T> out{P3<T>(T(1), T(2), T(3))};
    Cut::cutPointCloud(sphere, T(1), Cloud<T>{}, out);
    EXPECT_EQ(out.size(), 0u);

    Cloud<T> const far = randomCloud<T>(103, 1);  // none near the sphere
    Cloud<T> fresh;
    Cut::cutPointCloud(sphere, T(1), far, fresh);
    EXPECT_EQ(fresh.size(), 0u);
    EXPECT_EQ(fresh.capacity(), 25u);
    Cloud<T> roomy;
    roomy.reserve(200);
    Cut::cutPointCloud(sphere, T(1), far, roomy);
    EXPECT_GE(roomy.capacity(), 200u);

    Cloud<T> self = far;  // in and out the same object
    Cut::cutPointCloud(math::Csphere3<T>(P3<T>(T(0), T(0), T(0)), T(1)), T(10), self, self);
    EXPECT_EQ(self.size(), 0u);
}

TYPED_TEST(CutPointCloud, NaNPointsAreNotKept) {
    using T = TypeParam;
    T const nan = std::numeric_limits<T>::quiet_NaN();
    Cloud<T> const in{P3<T>(nan, T(0), T(0)), P3<T>(T(0), T(0), T(0))};
    Cloud<T> out;
    math::tools<T>::cutPointCloud(math::Csphere3<T>(P3<T>(T(0), T(0), T(0)), T(0)), T(1), in, out);
    EXPECT_EQ(out.size(), 1u);
    math::tools<T>::cutPointCloud(
        math::CboundingBox3<T>(P3<T>(T(-1), T(-1), T(-1)), P3<T>(T(1), T(1), T(1))), in, out);
    EXPECT_EQ(out.size(), 1u);
}

// Random clouds against a brute-force filter in double; points within rounding of the
// threshold may go either way.
TYPED_TEST(CutPointCloud, MatchesBruteForceFilter) {
    using T = TypeParam;
    using Cut = math::tools<T>;
    double const margin = 1e3 * double(std::numeric_limits<T>::epsilon());
    Cloud<T> const in = randomCloud<T>(3000, 17);
    Cloud<T> out;

    math::Csphere3<T> const sphere(P3<T>(T(0.5), T(-0.25), T(1)), T(1.5));
    Cut::cutPointCloud(sphere, T(0.3), in, out);
    expectFiltered<T>(in, out, [&](P3<T> const& p) {
        double const d = std::sqrt(std::pow(double(p.x) - 0.5, 2) +
                                   std::pow(double(p.y) + 0.25, 2) + std::pow(double(p.z) - 1, 2));
        return classify(std::fabs(d - 1.5), 0.3, margin);
    });
    EXPECT_GT(out.size(), 100u);

    math::Cdirec3<T> const dir(T(1), T(2), T(-2));  // normalised to (1, 2, -2) / 3
    math::Cline3<T> const line(P3<T>(T(0.1), T(0.2), T(0.3)), dir);
    Cut::cutPointCloud(line, T(0.8), in, out);
    expectFiltered<T>(in, out, [&](P3<T> const& p) {
        double const v[3] = {double(p.x) - 0.1, double(p.y) - 0.2, double(p.z) - 0.3};
        double const u[3] = {1.0 / 3, 2.0 / 3, -2.0 / 3};
        double const t = v[0] * u[0] + v[1] * u[1] + v[2] * u[2];
        double const d2 = v[0] * v[0] + v[1] * v[1] + v[2] * v[2] - t * t;
        return classify(std::sqrt(std::fmax(d2, 0.0)), 0.8, margin);
    });
    EXPECT_GT(out.size(), 100u);

    math::Cplane3<T> const plane(math::Cdirec3<T>(T(2), T(-1), T(2)), T(0.5));
    Cut::cutPointCloud(plane, T(0.4), in, out);
    expectFiltered<T>(in, out, [&](P3<T> const& p) {
        double const s = (2 * double(p.x) - double(p.y) + 2 * double(p.z)) / 3 + 0.5;
        return classify(std::fabs(s), 0.4, margin);
    });
    EXPECT_GT(out.size(), 100u);

    math::CboundingBox3<T> const box(P3<T>(T(-1), T(-2), T(0)), P3<T>(T(2), T(1), T(2.5)));
    Cut::cutPointCloud(box, in, out);
    expectFiltered<T>(in, out, [](P3<T> const& p) {
        bool const inside = -1 < p.x && p.x < 2 && -2 < p.y && p.y < 1 && 0 < p.z && p.z < 2.5;
        return inside ? 1 : -1;  // exact comparisons: no borderline
    });
    EXPECT_GT(out.size(), 100u);
}

}  // namespace
