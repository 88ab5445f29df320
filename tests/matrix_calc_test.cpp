// Tests of <math/matrix_calc.h>.
#include <gtest/gtest.h>
#include <math/matrix_calc.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using math::CthrowMath;
using mgeo_test::expectThrowId;
using mgeo_test::makeMatrix;
using mgeo_test::nearAbs;
using mgeo_test::RealTypes;

template <typename T>
using M = math::Cmatrix<T>;
template <typename T>
using C = math::CmatrixCalc<T>;


template <typename T>
M<T> randomSymmetric(std::size_t n, std::uint64_t seed) {
    mgeo_test::Noise rnd(seed);
    M<T> a(n, n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j <= i; ++j) a(i, j) = a(j, i) = T(rnd(1.0));
    return a;
}

template <typename T>
double maxDiff(M<T> const& a, M<T> const& b) {
    if (a.m() != b.m() || a.n() != b.n())
        return std::numeric_limits<double>::infinity();
    double d = 0;
    for (std::size_t k = 0; k < a.size(); ++k)
        d = std::fmax(d, std::fabs(double(a.getBase()[k]) - double(b.getBase()[k])));
    return d;
}

template <typename T>
double eps() {
    return double(std::numeric_limits<T>::epsilon());
}

template <typename T>
class MatrixCalc : public ::testing::Test {};
TYPED_TEST_SUITE(MatrixCalc, RealTypes);

TYPED_TEST(MatrixCalc, EigenOfDiagonalSortedByMagnitude) {
    using T = TypeParam;
    M<T> a = makeMatrix<T>(3, 3, {1, 0, 0, 0, -3, 0, 0, 0, 2});
    M<T> v;
    C<T>::getEigenvalue(a, v);
    EXPECT_EQ(a(0, 0), T(-3));
    EXPECT_EQ(a(1, 1), T(2));
    EXPECT_EQ(a(2, 2), T(1));
    // Rows of V: the unit vectors e1, e2, e0 (up to sign).
    std::size_t const axis[3] = {1, 2, 0};
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_EQ(std::fabs(v(r, c)), c == axis[r] ? T(1) : T(0)) << r << "," << c;

    // Equal magnitudes keep the order of their diagonal positions.
    M<T> tie = makeMatrix<T>(3, 3, {1, 0, 0, 0, 2, 0, 0, 0, -2});
    C<T>::getEigenvalue(tie, v);
    EXPECT_EQ(tie(0, 0), T(2));
    EXPECT_EQ(tie(1, 1), T(-2));
    EXPECT_EQ(tie(2, 2), T(1));
    EXPECT_EQ(std::fabs(v(0, 1)), T(1));
    EXPECT_EQ(std::fabs(v(1, 2)), T(1));
}

// A·v_k = λ_k v_k, V orthonormal, |λ| non-increasing, off-diagonals zero.
TYPED_TEST(MatrixCalc, EigenOfRandomSymmetricMatrices) {
    using T = TypeParam;
    for (std::size_t n : {1u, 2u, 3u, 5u, 12u}) {
        for (std::uint64_t seed = 1; seed <= 5; ++seed) {
            M<T> const a0 = randomSymmetric<T>(n, 100 * n + seed);
            M<T> a = a0;
            M<T> v;
            C<T>::getEigenvalue(a, v);
            ASSERT_EQ(v.m(), n);
            ASSERT_EQ(v.n(), n);
            // Backward-stable algorithm: residuals of order n·eps·|A| (|A| <= n here).
            double const tol = 32.0 * double(n) * eps<T>();
            M<T> eye(n, n);
            eye.setIdentity();
            EXPECT_LE(maxDiff(v * v.transp(), eye), tol);
            for (std::size_t k = 0; k < n; ++k) {
                if (k + 1 < n) {
                    EXPECT_GE(std::fabs(a(k, k)), std::fabs(a(k + 1, k + 1)));
                }
                for (std::size_t i = 0; i < n; ++i) {
                    if (i != k) {
                        EXPECT_EQ(a(i, k), T(0));
                    }
                    double av = 0;
                    for (std::size_t j = 0; j < n; ++j) av += double(a0(i, j)) * double(v(k, j));
                    EXPECT_TRUE(nearAbs(av, double(a(k, k)) * double(v(k, i)), tol));
                }
            }
        }
    }
}

TYPED_TEST(MatrixCalc, EigenShapesAndIterationError) {
    using T = TypeParam;
    M<T> rect(2, 3, T(1));
    M<T> v;
    C<T>::getEigenvalue(rect, v);  // silently nothing
    EXPECT_EQ(rect(0, 0), T(1));
    EXPECT_EQ(v.size(), 0u);
    EXPECT_TRUE(expectThrowId<CthrowMatrixCalc>([&] { C<T>::DiagTri(rect, v); },
                                                CthrowMatrixCalc::ERR_SOLVE_NOTSQUAREMATRIX));
    // NaN never passes the split test: the sweeps run out and the error carries its origin.
    M<T> bad = makeMatrix<T>(2, 2, {1, 1, 1, 1});
    bad(0, 0) = std::numeric_limits<T>::quiet_NaN();
    try {
        C<T>::getEigenvalue(bad, v);
        FAIL() << "no exception";
    } catch (CthrowMatrixCalc const& e) {
        EXPECT_EQ(e.id(), CthrowMatrixCalc::ERR_TRIDIAG_ITERATION);
        EXPECT_EQ(e.file(), "source\\math_solver_le");
        EXPECT_EQ(e.line(), 497);
        EXPECT_EQ(e.message(), "Zu viele Iterationen beim Algrothmus 'TriDiag'.");
    }
    M<T> empty;
    EXPECT_NO_THROW(C<T>::getEigenvalue(empty, v));
}

TYPED_TEST(MatrixCalc, SortDiagonalPermutation) {
    using T = TypeParam;
    M<T> a = makeMatrix<T>(4, 4, {1, 9, 9, 9, 9, -4, 9, 9, 9, 9, 4, 9, 9, 9, 9, 0});
    M<T> s;
    C<T>::sortDiagonal(a, s);
    // Order: -4 (index 1), 4 (index 2), 1 (index 0), 0 (index 3).
    M<T> expected = makeMatrix<T>(4, 4, {0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1});
    EXPECT_EQ(maxDiff(s, expected), 0.0);
}

TYPED_TEST(MatrixCalc, Eigen2x2Closed) {
    using T = TypeParam;
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        M<T> const a0 = randomSymmetric<T>(2, seed);
        M<T> a = a0;
        M<T> v;
        C<T>::getEigenvalue2x2sym(a, v);
        // A' = V A V^T, diagonal.
        M<T> const rot = v * a0 * v.transp();
        EXPECT_LE(maxDiff(rot, a), 8 * eps<T>());
        EXPECT_TRUE(nearAbs(a(0, 1), T(0), 8 * eps<T>()));
        EXPECT_EQ(a(0, 1), a(1, 0));
    }
    // Off-diagonal 0: V = I, A unchanged.
    M<T> d = makeMatrix<T>(2, 2, {3, 0, 0, 5});
    M<T> v;
    C<T>::getEigenvalue2x2sym(d, v);
    EXPECT_EQ(maxDiff(v, makeMatrix<T>(2, 2, {1, 0, 0, 1})), 0.0);
    EXPECT_EQ(maxDiff(d, makeMatrix<T>(2, 2, {3, 0, 0, 5})), 0.0);
    // Asymmetric or wrong shape: nothing happens.
    M<T> asym = makeMatrix<T>(2, 2, {1, 2, 3, 4});
    M<T> v2;
    C<T>::getEigenvalue2x2sym(asym, v2);
    EXPECT_EQ(asym(0, 1), T(2));
    EXPECT_EQ(v2.size(), 0u);
}

TYPED_TEST(MatrixCalc, Dif) {
    using T = TypeParam;
    EXPECT_EQ(C<T>::dif(makeMatrix<T>(1, 1, {1}), makeMatrix<T>(1, 1, {7})), T(0));
    EXPECT_EQ(C<T>::dif(makeMatrix<T>(2, 2, {1, 2, 3, 4}), makeMatrix<T>(2, 2, {0, 0, 0, 0})), T(14));
    EXPECT_EQ(C<T>::dif(M<T>(2, 2, T(0)), M<T>(4, 1, T(0))), std::numeric_limits<T>::infinity());
}

TYPED_TEST(MatrixCalc, RotScale) {
    using T = TypeParam;
    M<T> rot;
    C<T>::ArcToRotXYZ(T(0.3), T(-0.2), T(1.1), rot);
    M<T> m4(4, 4, T(0));
    T const scale[3] = {T(2), T(0.5), T(3)};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) m4(i, j) = rot(i, j) * scale[j];
    M<T> r, s;
    C<T>::getRotScale(m4, r, s);
    EXPECT_LE(maxDiff(r, rot), 8 * eps<T>());
    for (std::size_t j = 0; j < 3; ++j)
        EXPECT_TRUE(mgeo_test::nearRel(s(j, j), scale[j], 8 * eps<T>()));
    M<T> untouched(1, 1, T(7));
    C<T>::getRotScale(M<T>(3, 4, T(1)), untouched, untouched);
    EXPECT_EQ(untouched(0, 0), T(7));
}

TYPED_TEST(MatrixCalc, AnglesToMatrices) {
    using T = TypeParam;
    T const a = T(0.4), b = T(-0.7), c = T(1.3);
    auto rx = makeMatrix<T>(3, 3, {1, 0, 0, 0, std::cos(a), -std::sin(a), 0, std::sin(a), std::cos(a)});
    auto ry = makeMatrix<T>(3, 3, {std::cos(b), 0, std::sin(b), 0, 1, 0, -std::sin(b), 0, std::cos(b)});
    auto rz = makeMatrix<T>(3, 3, {std::cos(c), -std::sin(c), 0, std::sin(c), std::cos(c), 0, 0, 0, 1});
    M<T> xyz, cap, capT, zyx, zxz;
    C<T>::ArcToRotXYZ(a, b, c, xyz);
    C<T>::ArcToRotCAP(a, b, c, cap);
    C<T>::ArcToRotCAP_transp(a, b, c, capT);
    C<T>::ArcToRotZYX(a, b, c, zyx);
    C<T>::ArcToRotZXZ(a, b, c, zxz);
    double const tol = 8 * eps<T>();
    EXPECT_LE(maxDiff(xyz, rx * ry * rz), tol);
    EXPECT_LE(maxDiff(zyx, rz * ry * rx), tol);
    EXPECT_EQ(maxDiff(cap, xyz.transp()), 0.0);
    EXPECT_EQ(maxDiff(capT, xyz), 0.0);
    // ZXZ: Rz(c)·Rx(b)·Rz(a) has determinant 1 and is orthogonal.
    M<T> eye(3, 3);
    eye.setIdentity();
    EXPECT_LE(maxDiff(zxz * zxz.transp(), eye), tol);
}

TYPED_TEST(MatrixCalc, AngleRoundTripsAndKeptNonInverses) {
    using T = TypeParam;
    T const a = T(0.4), b = T(-0.7), c = T(1.3);
    double const tol = 16 * eps<T>();
    M<T> r;
    T ra, rb, rc;
    C<T>::ArcToRotXYZ(a, b, c, r);
    C<T>::RotToArcCAP_transp(r, ra, rb, rc);
    EXPECT_TRUE(nearAbs(ra, a, tol));
    EXPECT_TRUE(nearAbs(rb, b, tol));
    EXPECT_TRUE(nearAbs(rc, c, tol));
    // RotToArcXYZ: same b and c, another a for c != 0.
    T xa, xb, xc;
    C<T>::RotToArcXYZ(r, xa, xb, xc);
    EXPECT_EQ(xb, rb);
    EXPECT_EQ(xc, rc);
    EXPECT_GT(std::fabs(double(xa) - double(a)), 1e-3);
    // Its first argument is sin c · R21 + cos c · R20.
    double const s1 = std::sin(double(xc)), c1 = std::cos(double(xc));
    EXPECT_TRUE(nearAbs(double(xa),
                        std::atan2(s1 * double(r(2, 1)) + c1 * double(r(2, 0)),
                                   c1 * double(r(1, 1)) + s1 * double(r(1, 0))),
                        tol));

    C<T>::ArcToRotCAP(a, b, c, r);
    C<T>::RotToArcCAP(r, ra, rb, rc);
    EXPECT_TRUE(nearAbs(ra, a, tol));
    EXPECT_TRUE(nearAbs(rb, b, tol));
    EXPECT_TRUE(nearAbs(rc, c, tol));

    // ZXZ: b and c come back; a uses R11 twice and does not.
    T const za = T(0.5), zb = T(0.9), zc = T(0.3);
    C<T>::ArcToRotZXZ(za, zb, zc, r);
    C<T>::RotToArcZXZ(r, ra, rb, rc);
    EXPECT_TRUE(nearAbs(rb, zb, tol));
    EXPECT_TRUE(nearAbs(rc, zc, tol));
    double const k1 = std::cos(double(rc)), k2 = std::sin(double(rc));
    double const expectA = std::atan2(k1 * double(r(1, 1)) - k2 * double(r(1, 1)),
                                      k1 * double(r(0, 0)) - k2 * double(r(0, 1)));
    EXPECT_TRUE(nearAbs(double(ra), expectA, tol));
    EXPECT_GT(std::fabs(double(ra) - double(za)), 1e-3);
}

TYPED_TEST(MatrixCalc, RotToArcShapes) {
    using T = TypeParam;
    M<T> r3;
    C<T>::ArcToRotXYZ(T(0.1), T(0.2), T(0.3), r3);
    M<T> r4(4, 4, T(0));
    r4.setMatrix(0, 0, r3);
    r4(3, 3) = T(1);
    r4(0, 3) = T(100);  // translation part is not read
    T a3, b3, c3, a4, b4, c4;
    C<T>::RotToArcXYZ(r3, a3, b3, c3);
    C<T>::RotToArcXYZ(r4, a4, b4, c4);
    EXPECT_EQ(a3, a4);
    EXPECT_EQ(b3, b4);
    EXPECT_EQ(c3, c4);
    M<T> r34(3, 4, T(0));
    try {
        C<T>::RotToArcXYZ(r34, a3, b3, c3);
        FAIL() << "no exception";
    } catch (CthrowMath const& e) {
        EXPECT_EQ(e.id(), CthrowMath::ERR_MATRIX_DIMS);
        EXPECT_NE(e.message().find("(m:3,n:4)"), std::string::npos) << e.message();
    }
    EXPECT_TRUE(expectThrowId<CthrowMath>([&] { C<T>::RotToArcZXZ(M<T>(2, 2, T(0)), a3, b3, c3); },
                                          CthrowMath::ERR_MATRIX_DIMS));
}

}  // namespace
