// Tests of <math/solver_le.h>.
#include <gtest/gtest.h>
#include <math/solver_le.h>

#include <algorithm>
#include <cmath>
#include <limits>
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


// Uniform entries in [-1, 1), plus `diag` on the diagonal (well conditioned for diag >= n).
template <typename T>
M<T> randomMatrix(std::size_t m, std::size_t n, std::uint64_t seed, double diag = 0) {
    mgeo_test::Noise rnd(seed);
    M<T> a(m, n);
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < n; ++j) a(i, j) = T(rnd(1.0) + (i == j ? diag : 0.0));
    return a;
}

// Largest |a_ij - b_ij|; +inf for different shapes.
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
bool allFinite(M<T> const& a) {
    for (std::size_t k = 0; k < a.size(); ++k)
        if (!std::isfinite(a.getBase()[k]))
            return false;
    return true;
}

// Test access to the protected state.
template <typename T>
struct GJ : math::Csolver_GaussJordan<T> {
    using math::Csolver_GaussJordan<T>::Csolver_GaussJordan;
    using math::Csolver_GaussJordan<T>::matrix;
    using math::Csolver_GaussJordan<T>::pivotRows;
    using math::Csolver_GaussJordan<T>::pivotCols;
};
template <typename T>
struct LU : math::Csolver_luDecomp<T> {
    using math::Csolver_luDecomp<T>::Csolver_luDecomp;
    using math::Csolver_luDecomp<T>::matrix;
    using math::Csolver_luDecomp<T>::parity;
    using math::Csolver_luDecomp<T>::rowPerm;
};
template <typename T>
struct SVD : math::Csolver_svd<T> {
    using math::Csolver_svd<T>::Csolver_svd;
    using math::Csolver_svd<T>::matrix;
    using math::Csolver_svd<T>::singularValues;
    using math::Csolver_svd<T>::rightVectors;
};

template <typename T>
class SolverLe : public ::testing::Test {};
TYPED_TEST_SUITE(SolverLe, RealTypes);

// ---------------------------------------------------------------- common interface

TYPED_TEST(SolverLe, PlainInterfaceThrowsNotImplemented) {
    using T = TypeParam;
    M<T> a = makeMatrix<T>(2, 2, {1, 2, 3, 4});
    math::Csolver_le<T> s(a);
    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] {
            s.solve(std::vector<T>{1, 2});
        },
        CthrowMath::ERR_MATH_FUNCNOTIMPL));
    EXPECT_TRUE(
        expectThrowId<CthrowMath>([&] { s.setMatrix(a); }, CthrowMath::ERR_MATH_FUNCNOTIMPL));
    // The handler of the entry point records where the error passed.
    try {
        s.invert();
        FAIL();
    } catch (CthrowMath const& e) {
        EXPECT_EQ(e.file(), "math_solver_le.cpp");
        EXPECT_GT(e.line(), 0);
    }
}

// ---------------------------------------------------------------- Gauss-Jordan

TYPED_TEST(SolverLe, GaussJordanInvertsAndKeepsInverse) {
    using T = TypeParam;
    M<T> a = makeMatrix<T>(3, 3, {2, 1, 0, 1, 2, 1, 0, 1, 2});  // det 4
    GJ<T> gj(a);
    M<T> inv = gj.invert();
    M<T> eye(3, 3);
    eye.setIdentity();
    EXPECT_LE(maxDiff(a * inv, eye), 8 * double(std::numeric_limits<T>::epsilon()));
    EXPECT_EQ(maxDiff(inv, gj.matrix), 0.0);  // the inverse is also left in `matrix`
    // Several right-hand sides at once (square B, so the row exchanges are exact).
    M<T> b = makeMatrix<T>(3, 3, {1, 0, 2, 0, 1, 3, 4, 5, 6});
    M<T> x = gj.solve(b);
    EXPECT_LE(maxDiff(a * x, b), 32 * double(std::numeric_limits<T>::epsilon()));
    // A single column when no row has to move (pivots stay on the diagonal).
    M<T> d = makeMatrix<T>(3, 3, {9, 1, 2, 1, 8, 1, 2, 1, 7});
    GJ<T> gd(d);
    M<T> xs = gd.solve(std::vector<T>{12, 10, 10});
    EXPECT_LE(maxDiff(xs, makeMatrix<T>(3, 1, {1, 1, 1})), 8 * double(std::numeric_limits<T>::epsilon()));
}

TYPED_TEST(SolverLe, GaussJordanPivotTiesTakeLastAndErrors) {
    using T = TypeParam;
    // Equal largest magnitudes at (0, 1) and (1, 0): the later in row-major order wins.
    GJ<T> gj(makeMatrix<T>(2, 2, {1, 3, -3, 1}));
    M<T> inv = gj.invert();
    EXPECT_EQ(gj.pivotRows[0], 1);
    EXPECT_EQ(gj.pivotCols[0], 0);
    EXPECT_LE(maxDiff(makeMatrix<T>(2, 2, {1, 3, -3, 1}) * inv, makeMatrix<T>(2, 2, {1, 0, 0, 1})),
              4 * double(std::numeric_limits<T>::epsilon()));

    math::Csolver_GaussJordan<T> zeroRow(makeMatrix<T>(3, 3, {1, 2, 3, 0, 0, 0, 4, 5, 7}));
    EXPECT_TRUE(
        expectThrowId<CthrowMath>([&] { zeroRow.invert(); }, CthrowMath::ERR_SOLVE_MATRIXSINGULAR));
    math::Csolver_GaussJordan<T> rect(M<T>(3, 2, T(1)));  // construction succeeds
    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] {
            rect.solve(std::vector<T>{1, 2, 3});
        },
        CthrowMath::ERR_MATRIX_NOTSQUARE));
    math::Csolver_GaussJordan<T> ok(makeMatrix<T>(2, 2, {2, 0, 0, 2}));
    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] {
            ok.solve(std::vector<T>{1, 2, 3});
        },
        CthrowMath::ERR_MATH_INVALID_ARGUMENT));
    // A 0 × 0 system performs no step and returns the empty right-hand side.
    math::Csolver_GaussJordan<T> empty(M<T>(0, 0));
    EXPECT_EQ(empty.solve(std::vector<T>{}).size(), 0u);
}

TYPED_TEST(SolverLe, GaussJordanSingleColumnRowExchangeStaysInStorage) {
    using T = TypeParam;
    // The row exchange on a single column swaps b_r1+t with b_r2+t for t < 3 while both are
    // inside storage: for rows (1, 2) only b1 and b2 are exchanged.
    GJ<T> gj(makeMatrix<T>(3, 3, {1, 0, 0, 0, 0, 2, 0, 4, 0}));
    M<T> x = gj.solve(std::vector<T>{1, 2, 8});
    EXPECT_TRUE(allFinite(x));
    EXPECT_EQ(x.m(), 3u);
    EXPECT_EQ(x(0, 0), T(1));
}

// The right-hand side's row exchange covers as many elements as rhs has rows, from the start of
// each row: for a 2 × 3 B only the first two columns move with the rows.
TYPED_TEST(SolverLe, GaussJordanRowExchangeOfWideRightHandSideStopsAtRowCount) {
    using T = TypeParam;
    // Pivot (1, 0) first: rows 0 and 1 are exchanged; A·X = B has X = [[4, 5, 6], [1, 2, 3]].
    math::Csolver_GaussJordan<T> gj(makeMatrix<T>(2, 2, {0, 1, 1, 0}));
    M<T> x = gj.solve(makeMatrix<T>(2, 3, {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(maxDiff(x, makeMatrix<T>(2, 3, {4, 5, 3, 1, 2, 6})), 0.0);
}

// For a single column the exchange of rows 1 and 0 swaps b1/b0, then b2/b1 (b3 lies past the
// end and is left alone): the column is rotated, not just exchanged.
TYPED_TEST(SolverLe, GaussJordanRowExchangeOfSingleColumnRotates) {
    using T = TypeParam;
    math::Csolver_GaussJordan<T> gj(makeMatrix<T>(3, 3, {0, 1, 0, 2, 0, 0, 0, 0, 1}));
    M<T> x = gj.solve(std::vector<T>{1, 2, 8});
    EXPECT_EQ(maxDiff(x, makeMatrix<T>(3, 1, {1, 8, 1})), 0.0);  // the true solution is (1, 1, 8)
}

// ---------------------------------------------------------------- LU

TYPED_TEST(SolverLe, LuSolvesSeveralColumnsRepeatably) {
    using T = TypeParam;
    for (std::size_t n : {1u, 3u, 6u, 12u}) {
        M<T> a = randomMatrix<T>(n, n, 7 + n, double(n));
        M<T> b = randomMatrix<T>(n, 3, 99 + n);
        math::Csolver_luDecomp<T> lu(a);
        M<T> x = lu.solve(b);
        // Residual bound: a few ulps times n for this well-conditioned (diagonally dominant) A.
        EXPECT_LE(maxDiff(a * x, b), 16.0 * double(n) * double(std::numeric_limits<T>::epsilon()));
        EXPECT_EQ(maxDiff(lu.solve(b), x), 0.0);  // the factors are untouched by a solve
        // Each column equals the single-column solve.
        std::vector<T> col;
        b.getCol(1, col);
        M<T> x1 = lu.solve(col);
        for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(x1(i, 0), x(i, 1));
    }
}

TYPED_TEST(SolverLe, LuParityDeterminantAndErrors) {
    using T = TypeParam;
    LU<T> lu(makeMatrix<T>(2, 2, {1, 2, 3, 4}));  // rows must be exchanged
    EXPECT_EQ(lu.parity, T(-1));
    EXPECT_EQ(lu.rowPerm[0], 1);
    EXPECT_TRUE(nearAbs(lu.getDet(), T(-2), 4 * double(std::numeric_limits<T>::epsilon())));
    // [[4, 3], [2, 1]]: both scaled magnitudes are 1, the tie goes to the last row.
    LU<T> scaled(makeMatrix<T>(2, 2, {4, 3, 2, 1}));
    EXPECT_EQ(scaled.parity, T(-1));
    EXPECT_TRUE(nearAbs(scaled.getDet(), T(-2), 4 * double(std::numeric_limits<T>::epsilon())));
    LU<T> noSwap(makeMatrix<T>(2, 2, {4, 1, 2, 3}));
    EXPECT_EQ(noSwap.parity, T(1));
    EXPECT_TRUE(nearAbs(noSwap.getDet(), T(10), 8 * double(std::numeric_limits<T>::epsilon())));
    EXPECT_EQ(math::Csolver_luDecomp<T>().getDet(), T(1));  // the empty product

    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] {
            math::Csolver_luDecomp<T> s(makeMatrix<T>(2, 2, {1, 2, 0, 0}));
        },
        CthrowMath::ERR_SOLVE_MATRIXSINGULAR));
    EXPECT_TRUE(expectThrowId<CthrowMath>([&] { math::Csolver_luDecomp<T> s(M<T>(2, 3, T(1))); },
                                          CthrowMath::ERR_MATRIX_NOTSQUARE));
    EXPECT_TRUE(expectThrowId<CthrowMath>([&] { lu.solve(std::vector<T>{1}); },
                                          CthrowMath::ERR_MATH_INVALID_ARGUMENT));
    // After a failed setMatrix the solver refuses to substitute instead of reading garbage.
    math::Csolver_luDecomp<T> failed;
    EXPECT_ANY_THROW(failed.setMatrix(M<T>(2, 3, T(1))));
    EXPECT_ANY_THROW(failed.solve(std::vector<T>{1, 2}));
    // Two equal rows: no exception, non-finite solution.
    math::Csolver_luDecomp<T> sing(makeMatrix<T>(3, 3, {1, 2, 3, 1, 2, 3, 0, 1, 1}));
    EXPECT_FALSE(allFinite(sing.solve(std::vector<T>{1, 2, 3})));
}

TYPED_TEST(SolverLe, LuPivotEqualToEpsilonBecomesZero) {
    using T = TypeParam;
    T const eps = std::numeric_limits<T>::epsilon();
    LU<T> lu(makeMatrix<T>(2, 2, {1, 0, 0, double(eps)}));
    EXPECT_EQ(lu.matrix(1, 1), T(0));
    EXPECT_EQ(lu.getDet(), T(0));
    LU<T> first(makeMatrix<T>(2, 2, {double(eps), 0, 0, 1}));
    EXPECT_EQ(first.matrix(0, 0), T(0));
    EXPECT_TRUE(std::isnan(first.matrix(1, 0)));  // 0 · (1 / 0)
    // Twice epsilon is an ordinary pivot.
    LU<T> two(makeMatrix<T>(2, 2, {1, 0, 0, 2 * double(eps)}));
    EXPECT_EQ(two.matrix(1, 1), T(2) * eps);
}

// The forward substitution starts its sums at the first non-zero element of the permuted
// right-hand side: an infinite multiplier in front of a leading zero does no harm.
TYPED_TEST(SolverLe, LuForwardPassSkipsLeadingZeros) {
    using T = TypeParam;
    LU<T> lu(makeMatrix<T>(2, 2, {1, 0, 0, 1}));
    lu.matrix(1, 0) = std::numeric_limits<T>::infinity();
    M<T> x = lu.solve(std::vector<T>{0, 1});
    EXPECT_EQ(maxDiff(x, makeMatrix<T>(2, 1, {0, 1})), 0.0);
    // With b0 = 1 the sums start at once and the infinite multiplier reaches b1.
    M<T> y = lu.solve(std::vector<T>{1, 1});
    EXPECT_TRUE(std::isinf(y(1, 0)));
}

// The row scales keep belonging to their row positions: for this matrix the third pivot is
// row 1 (scale of the original row 1 applied to the moved row), where scales moved with the
// rows would pick row 2.
TYPED_TEST(SolverLe, LuScalesStayWithRowPositions) {
    using T = TypeParam;
    M<T> const a = makeMatrix<T>(3, 3, {700, 400, 800, -9, -3, -6, 0.03, -0.04, -0.01});
    LU<T> lu(a);
    EXPECT_EQ(lu.rowPerm, (std::vector<int>{1, 1, 2}));
    M<T> x = lu.solve(std::vector<T>{1, 2, 3});
    EXPECT_LE(maxDiff(a * x, makeMatrix<T>(3, 1, {1, 2, 3})),
              1e4 * double(std::numeric_limits<T>::epsilon()));
}

// ---------------------------------------------------------------- SVD

TYPED_TEST(SolverLe, SvdSolvesSquareAndInverts) {
    using T = TypeParam;
    for (std::size_t n : {1u, 2u, 3u, 5u, 10u}) {
        M<T> a = randomMatrix<T>(n, n, 3 * n, double(n));
        M<T> b = randomMatrix<T>(n, 2, 5 * n);
        math::Csolver_svd<T> svd(a);
        M<T> x = svd.solve(b);
        EXPECT_LE(maxDiff(a * x, b), 32.0 * double(n) * double(std::numeric_limits<T>::epsilon()));
        M<T> eye(n, n);
        eye.setIdentity();
        EXPECT_LE(maxDiff(a * svd.invert(), eye),
                  32.0 * double(n) * double(std::numeric_limits<T>::epsilon()));
    }
}

TYPED_TEST(SolverLe, SvdDecompositionIsOrthogonalAndReconstructs) {
    using T = TypeParam;
    M<T> a = randomMatrix<T>(40, 4, 11);
    SVD<T> svd(a);
    M<T> u = svd.matrix, v = svd.rightVectors, w = svd.singularValues;
    M<T> eye(4, 4);
    eye.setIdentity();
    double const tol = 64 * double(std::numeric_limits<T>::epsilon());
    EXPECT_LE(maxDiff(u.transp() * u, eye), tol);
    EXPECT_LE(maxDiff(v.transp() * v, eye), tol);
    EXPECT_LE(maxDiff(u * w * v.transp(), a), tol);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_GE(w(i, i), T(0));
        for (std::size_t j = 0; j < 4; ++j) {
            if (i != j) {
                EXPECT_EQ(w(i, j), T(0));
            }
        }
    }
}

// Least squares against the normal equations A^T A x = A^T b solved in long double.
TYPED_TEST(SolverLe, SvdOverdeterminedMatchesNormalEquations) {
    using T = TypeParam;
    std::size_t const m = 50, n = 3;
    M<T> a = randomMatrix<T>(m, n, 21);
    M<T> b = randomMatrix<T>(m, 1, 22);
    math::Csolver_svd<T> svd(a);
    M<T> x = svd.solve(b);
    ASSERT_EQ(x.m(), n);
    long double g[3][4] = {};
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t k = 0; k < m; ++k) g[i][j] += (long double)a(k, i) * a(k, j);
        for (std::size_t k = 0; k < m; ++k) g[i][3] += (long double)a(k, i) * b(k, 0);
    }
    for (std::size_t c = 0; c < n; ++c)  // Gauss elimination, SPD so no pivoting
        for (std::size_t r = c + 1; r < n; ++r) {
            long double f = g[r][c] / g[c][c];
            for (std::size_t k = c; k < 4; ++k) g[r][k] -= f * g[c][k];
        }
    long double ref[3];
    for (std::size_t r = n; r-- > 0;) {
        long double s = g[r][3];
        for (std::size_t k = r + 1; k < n; ++k) s -= g[r][k] * ref[k];
        ref[r] = s / g[r][r];
    }
    // Random 50 × 3 is well conditioned (cond ~ 2): a few hundred ulps cover it.
    for (std::size_t i = 0; i < n; ++i)
        EXPECT_TRUE(nearAbs(double(x(i, 0)), double(ref[i]),
                            256 * double(std::numeric_limits<T>::epsilon())));
}

TYPED_TEST(SolverLe, SvdRankDeficientGivesMinimumNorm) {
    using T = TypeParam;
    // Two equal rows: null space of A is spanned by z with A z = 0.
    M<T> a = makeMatrix<T>(3, 3, {1, 2, 3, 1, 2, 3, 2, 0, 1});
    math::Csolver_svd<T> svd(a);
    M<T> x;
    EXPECT_NO_THROW(x = svd.solve(std::vector<T>{6, 6, 3}));
    // z = cross((1,2,3), (2,0,1)) = (2, 5, -4): x must be orthogonal to it.
    double const dot = 2 * double(x(0, 0)) + 5 * double(x(1, 0)) - 4 * double(x(2, 0));
    EXPECT_TRUE(nearAbs(dot, 0.0, 64 * double(std::numeric_limits<T>::epsilon())));
    EXPECT_LE(maxDiff(a * x, makeMatrix<T>(3, 1, {6, 6, 3})),
              64 * double(std::numeric_limits<T>::epsilon()));
    // The zero matrix is no error: every solution is 0.
    math::Csolver_svd<T> zero(M<T>(3, 2, T(0)));
    M<T> x0 = zero.solve(std::vector<T>{1, 2, 3});
    EXPECT_EQ(maxDiff(x0, M<T>(2, 1, T(0))), 0.0);
    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] {
            zero.solve(std::vector<T>{1, 2});
        },
        CthrowMath::ERR_MATH_INVALID_ARGUMENT));
}

TYPED_TEST(SolverLe, SvdThresholdIsStrict) {
    using T = TypeParam;
    T const eps = std::numeric_limits<T>::epsilon();
    // diag(1, eps): the singular value eps equals wmax·eps exactly and is kept.
    SVD<T> kept(makeMatrix<T>(2, 2, {1, 0, 0, double(eps)}));
    M<T> x = kept.solve(std::vector<T>{1, 1});
    EXPECT_EQ(x(0, 0), T(1));
    EXPECT_EQ(x(1, 0), T(1) / eps);
    // diag(1, eps/2): dropped, and the truncation persists in the singular values.
    SVD<T> dropped(makeMatrix<T>(2, 2, {1, 0, 0, double(eps) / 2}));
    M<T> y = dropped.solve(std::vector<T>{1, 1});
    EXPECT_EQ(y(1, 0), T(0));
    EXPECT_EQ(dropped.singularValues(1, 1), T(0));
}

// Golden decomposition of [[3, 0], [4, 5], [0, 0]]: singular values sqrt(5), 3 sqrt(5) in the
// order the QR sweeps leave them (not sorted), and the signs of U and V.
TYPED_TEST(SolverLe, SvdGoldenDecomposition) {
    using T = TypeParam;
    SVD<T> svd(makeMatrix<T>(3, 2, {3, 0, 4, 5, 0, 0}));
    double const tol = 8 * double(std::numeric_limits<T>::epsilon());
    double const h = std::sqrt(0.5), a = 3 / std::sqrt(10.0), b = 1 / std::sqrt(10.0);
    EXPECT_TRUE(nearAbs(double(svd.singularValues(0, 0)), std::sqrt(5.0), tol));
    EXPECT_TRUE(nearAbs(double(svd.singularValues(1, 1)), 3 * std::sqrt(5.0), tol));
    double const v[4] = {h, h, -h, h};
    double const u[6] = {a, b, -b, a, 0, 0};
    for (std::size_t k = 0; k < 4; ++k)
        EXPECT_TRUE(nearAbs(double(svd.rightVectors.getBase()[k]), v[k], tol)) << k;
    for (std::size_t k = 0; k < 6; ++k)
        EXPECT_TRUE(nearAbs(double(svd.matrix.getBase()[k]), u[k], tol)) << k;
}

TYPED_TEST(SolverLe, NumericHelpers) {
    using T = TypeParam;
    using N = math::cNRB_math<T>;
    EXPECT_EQ(N::pythag(T(0), T(0)), T(0));
    EXPECT_EQ(N::pythag(T(3), T(4)), T(5));
    EXPECT_EQ(N::pythag(T(-4), T(3)), T(5));
    T const big = T(1e30);
    EXPECT_TRUE(std::isfinite(N::pythag(big, big)));
    EXPECT_TRUE(mgeo_test::nearRel(N::pythag(big, big), T(1.4142135623730951e30), 1e-6));
    EXPECT_EQ(N::calcEuclidDist(T(3), T(4)), T(5));
    EXPECT_EQ(N::setSignof(T(3), T(0)), T(3));
    EXPECT_EQ(N::setSignof(T(-3), T(-0.0)), T(3));
    EXPECT_EQ(N::setSignof(T(3), T(-1)), T(-3));
    EXPECT_EQ(N::sign(T(3), T(0)), T(-3));
    EXPECT_EQ(N::sign(T(-3), T(1)), T(-3));
    EXPECT_EQ(N::sign(T(-3), T(-1)), T(3));
    EXPECT_EQ(N::absmax(T(-5), T(2)), T(5));
    EXPECT_EQ(N::min(T(-5), T(2)), T(-5));
    EXPECT_EQ(N::max(T(-5), T(2)), T(2));
}

// ---------------------------------------------------------------- refinement, residual

TYPED_TEST(SolverLe, SolveItrTerminationRules) {
    using T = TypeParam;
    // 1 × 1: the error sum leaves out the only element, so it is always 0 and the direct
    // solution comes back.
    M<T> a1 = makeMatrix<T>(1, 1, {3});
    math::Csolver_luDecomp<T> lu1(a1);
    M<T> b1 = makeMatrix<T>(1, 1, {1});
    M<T> x1 = lu1.solveItr(a1, b1);
    EXPECT_EQ(x1(0, 0), lu1.solve(b1)(0, 0));
    // A right-hand side whose shape does not match A·X: an empty result.
    M<T> a = randomMatrix<T>(4, 4, 5, 4.0);
    math::Csolver_svd<T> svd(a);
    M<T> b = randomMatrix<T>(4, 2, 6);
    // Refinement never makes the error sum worse than the direct solution's.
    M<T> x = svd.solveItr(a, b);
    M<T> direct = svd.solve(b);
    EXPECT_LE(svd.deviation(a, x, b), svd.deviation(a, direct, b));
    math::Csolver_GaussJordan<T> gj(a);
    M<T> wrong = makeMatrix<T>(4, 1, {1, 2, 3, 4});
    M<T> x2 = gj.solveItr(a, wrong);
    EXPECT_FALSE(x2.size() == 0);  // same shape: a solution
    // A·X (3 × 1 from a 3 × 4 A) of another shape than B: an empty result.
    EXPECT_EQ(gj.solveItr(randomMatrix<T>(3, 4, 8), wrong).size(), 0u);
}

// The residual product A·X takes A's column count as its inner length; rows of X beyond it are
// not read. With a 4 × 3 A, A·X is 4 × 1 like B, so the refinement runs and returns a solution.
TYPED_TEST(SolverLe, SolveItrResidualUsesColumnsOfA) {
    using T = TypeParam;
    M<T> a = randomMatrix<T>(4, 4, 5, 4.0);
    math::Csolver_GaussJordan<T> gj(a);
    M<T> b = makeMatrix<T>(4, 1, {1, 2, 3, 4});
    M<T> narrow(4, 3);
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 3; ++j) narrow(i, j) = a(i, j);
    M<T> x = gj.solveItr(narrow, b);
    EXPECT_EQ(x.m(), 4u);
    EXPECT_EQ(x.n(), 1u);
}

// deviation reads P = A·X with P's own column count: B may be wider than P as long as the
// positions i·P.n + j stay inside P.
TYPED_TEST(SolverLe, DeviationAddressesProductWithItsColumnCount) {
    using T = TypeParam;
    M<T> a = makeMatrix<T>(4, 4, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    M<T> x = makeMatrix<T>(4, 1, {1, 2, 3, 4});  // P = (1, 2, 3, 4) as a column
    M<T> b = makeMatrix<T>(1, 3, {0, 0, 0});     // reads P_0, P_1, P_2
    EXPECT_EQ(math::Csolver_le<T>().deviation(a, x, b), T(14));
    M<T> b2 = makeMatrix<T>(2, 2, {0, 0, 0, 0});  // positions 0, 1 (row 0) and 1, 2 (row 1)
    EXPECT_EQ(math::Csolver_le<T>().deviation(a, x, b2), T(1 + 4 + 4 + 9));
    // A narrower than X.m: P = A·X over A's columns only.
    M<T> narrow = makeMatrix<T>(1, 2, {1, 1});
    EXPECT_EQ(math::Csolver_le<T>().deviation(narrow, x, makeMatrix<T>(1, 1, {0})), T(9));
}

TYPED_TEST(SolverLe, DeviationIsSumOfSquares) {
    using T = TypeParam;
    M<T> a = makeMatrix<T>(2, 2, {1, 0, 0, 1});
    M<T> x = makeMatrix<T>(2, 1, {1, 2});
    EXPECT_EQ(math::Csolver_le<T>().deviation(a, x, x), T(0));
    M<T> b = makeMatrix<T>(2, 1, {4, 6});
    EXPECT_EQ(math::Csolver_le<T>().deviation(a, x, b), T(25));  // 3^2 + 4^2, no root
    EXPECT_EQ(math::Csolver_le<T>().deviation(a, x, M<T>()), T(0));
}

}  // namespace

namespace {
// Decomposing a moved-in matrix gives bit for bit the solution of the copying constructor.
TEST(SolverSvdMove, RvalueMatrixSolvesIdentically) {
    math::Cmatrix<double> a(5, 3);
    for (std::size_t i = 0; i < 5; ++i)
        for (std::size_t j = 0; j < 3; ++j) a(i, j) = std::sin(double(3 * i + j + 1));
    std::vector<double> const b{1, -2, 0.5, 3, 0.25};
    math::Csolver_svd<double> copying(a);
    math::Cmatrix<double> const x1 = copying.solve(b);
    math::Csolver_svd<double> moving(std::move(a));
    math::Cmatrix<double> const x2 = moving.solve(b);
    ASSERT_EQ(x1.m(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(x1(i, 0), x2(i, 0));
}
}  // namespace
