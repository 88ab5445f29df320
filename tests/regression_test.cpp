// Regression cases found by the fuzz targets in fuzz/: each test holds the decoded input of one
// finding and checks the documented result the fixed code gives for it. The fuzz inputs
// themselves are kept in the targets' seed corpora (fuzz/corpus/<target>/).
#include <gtest/gtest.h>
#include <math/geometric.h>

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

}  // namespace
