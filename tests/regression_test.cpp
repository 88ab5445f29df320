// Regression cases found by the fuzz targets in fuzz/: each test holds the decoded input of one
// finding and checks the documented result the fixed code gives for it. The fuzz inputs
// themselves are kept in the targets' seed corpora (fuzz/corpus/<target>/).
#include <gtest/gtest.h>
#include <math/geometric.h>
#include <math/rect.h>
#include <math/solver_le.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

namespace {

using namespace math;

// geometric_fuzz: seven float spheres (negative radii, centres up to 5e8) on which the damped
// Gauss-Newton iteration of the sphere set wanders without converging: the absolute tolerance
// of 3.5e-4 lies far below the float rounding step at 1e8. The step cap used to be 100000
// (5 s for this input); now the run fails after at most 1000 steps.
TEST(RegressionGeometric, SphereSetWithoutConvergenceFails) {
    std::vector<Csphere3<float>> const spheres = {
        {{-0x1.415p+7f, -0x1.415p+7f, -0x1.415p+7f}, -0x1.415p+7f},
        {{0x1.27acp+9f, 0x1.929292p+19f, 0x1.929292p+19f}, 0x1.929292p+19f},
        {{0x1.929292p+19f, 0x1.929292p+19f, 0x1.929292p+19f}, -0x1.415p+7f},
        {{-0x1.415p+7f, -0x1p-5f, -0x1p+29f}, -0x1p+29f},
        {{-0x1p+29f, -0x1p+29f, -0x1.415p+7f}, -0x1.415p+7f},
        {{-0x1.415p+7f, -0x1.415p+7f, -0x1.415p+7f}, 0x1.27acp+9f},
        {{0x1.929292p+19f, 0x1.929292p+19f, 0x1.929292p+19f}, 0x1.929292p+19f},
    };
    Cpoint3<float> p;
    EXPECT_FALSE(geometric<float>::intersect(spheres, p, true));
    EXPECT_TRUE(std::isnan(p.x));
}

// rect_tools_fuzz: Crect2<int> arithmetic overflowed int (177731010 * 77 in operator*=, and
// x + w, right - left, left + right near the ends of the range), which is undefined. The fields
// now wrap modulo 2^32, and the centre's half sum is exact for every pair. Results that fit
// are unchanged; run under UBSan these cases fail without the fix.
TEST(RegressionRect, IntFieldsWrapInsteadOfOverflowing) {
    auto const wrap = [](long long v) { return static_cast<int>(static_cast<unsigned>(v)); };

    Crect2<int> const scaled = Crect2<int>(177731010, -3, 10, 10) * 77;
    EXPECT_EQ(scaled.left(), wrap(177731010LL * 77));
    EXPECT_EQ(scaled.top(), -231);
    EXPECT_EQ(scaled.right(), wrap(177731020LL * 77));
    EXPECT_EQ(scaled.bottom(), 539);

    Crect2<int> const wide(Cpoint2<int>(INT_MIN, -5), Cpoint2<int>(INT_MAX, 7));
    EXPECT_EQ(wide.width(), -1);  // 2^32 - 1 modulo 2^32
    EXPECT_EQ(wide.height(), 12);
    EXPECT_EQ(wide.center().x, 0);  // (INT_MIN + INT_MAX) / 2 = -1 / 2 = 0 (truncated)
    EXPECT_EQ(wide.center().y, 1);

    Crect2<int> const high(Cpoint2<int>(INT_MAX - 2, INT_MAX), Cpoint2<int>(INT_MAX, INT_MAX));
    EXPECT_EQ(high.center().x, INT_MAX - 1);  // the sum 2^32 - 4 does not fit in int
    EXPECT_EQ(high.center().y, INT_MAX);

    Crect2<int> const sized(INT_MAX, 0, 1, 2);  // right = INT_MAX + 1
    EXPECT_EQ(sized.right(), INT_MIN);
    EXPECT_EQ(sized.bottom(), 2);

    Crect2<int> moved(Cpoint2<int>(0, 0), Cpoint2<int>(10, 10));
    moved.moveBy(Cpoint2<int>(INT_MAX, INT_MIN));
    EXPECT_EQ(moved.left(), INT_MAX);
    EXPECT_EQ(moved.right(), wrap(10LL + INT_MAX));
    EXPECT_EQ(moved.top(), INT_MIN);
    EXPECT_EQ(moved.bottom(), INT_MIN + 10);
    moved -= Cpoint2<int>(INT_MAX, INT_MIN);
    EXPECT_EQ(moved, Crect2<int>(Cpoint2<int>(0, 0), Cpoint2<int>(10, 10)));
}

// linalg_fuzz: iterative refinement with the SVD solver of a badly scaled 7 × 7 system (entries
// from 3e-3 to 1.5e13) whose error sum kept decreasing by tiny amounts for millions of passes
// (25 s under the fuzzer). The refinement now stops after 1000 passes with the last improving
// iterate.
TEST(RegressionLinalg, IterativeRefinementEnds) {
    std::vector<double> const av = {
        0x1.5d5cp-9,  0x1.5d5cp-6,  0x1.5d5cp-9,  0x1.5ddcp-9,  0x1.5d5cp-9,   0x1.76f3f6874433p+40,
        -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1p-8,      -0x1.b404p+43, -0x1.b5b8p+6,
        -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6,  -0x1.b5b8p+6,
        -0x1.b5b8p+6, -0x1.b5f8p+3, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6,  -0x1.b5b8p+6,
        -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6,  -0x1.b5b8p+6,
        -0x1.b5b8p+6, -0x1.b5b8p+6, 0x1.cd84p+6,  0x1.5d5cp-4,  0x1.5d5cp-9,   0x1.5d5cp-9,
        0x1.5d5cp-9,  0x1.5d5cp-9,  0x1.5d7cp-9,  0x1.5cdp-9,   0x1.5d5cp-9,   0x1.5d5cp-9,
        0x1.8188p-10, 0x1.a1dp+4,   0x1.ddbcp+6,  0x1.cd84p+4,  0x1.5d5cp-4,   0x1.5d5cp-9,
        0x1.5d5cp-9,
    };
    std::vector<double> const bv = {
        0x1.5d5cp-9,  0x1.5d5cp-9,  0x1.5d5cp-9,   0x1.5d5cp-9,  0x1.5d5cp-9,  0x1.5d5cp-9,
        0x1.5d5cp-9,  0x1.5d5cp-9,  0x1.5d5cp-9,   0x1.5d5cp-9,  -0x1.b5b8p-9, -0x1.b6a8p+6,
        -0x1.b8p-2,   -0x1.b8p-2,   -0x1.b404p+43, -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6,
        -0x1.b5b8p+6, -0x1.b5b8p+6, -0x1.b5b8p+6,
    };
    Cmatrix<double> a(7, 7);
    std::copy(av.begin(), av.end(), a.getBase());
    Cmatrix<double> b(7, 3);
    std::copy(bv.begin(), bv.end(), b.getBase());
    Csolver_svd<double> solver(a);
    Cmatrix<double> const x = solver.solveItr(a, b);
    EXPECT_EQ(x.m(), 7u);
    EXPECT_EQ(x.n(), 3u);
}

}  // namespace
