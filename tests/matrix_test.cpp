// Tests of <math/matrix.h> and the core storage templates.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include <math/matrix.h>

#include "support/tolerance.h"

namespace {

using mgeo_test::RealTypes;

template <typename T>
class Matrix : public ::testing::Test {};
TYPED_TEST_SUITE(Matrix, RealTypes);

template <typename T>
math::Cmatrix<T> counting(std::size_t m, std::size_t n) {
    math::Cmatrix<T> a(m, n);
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < n; ++j) a(i, j) = T(10 * i + j);
    return a;
}

TYPED_TEST(Matrix, ShapesAndStorage) {
    using T = TypeParam;
    math::Cmatrix<T> a(2, 3, T(1.5));
    EXPECT_EQ(a.size(), 6u);
    EXPECT_EQ(a.n(), 3u);
    EXPECT_EQ(a.m(), 2u);
    EXPECT_EQ(a.byteSize(), 6 * sizeof(T));
    EXPECT_EQ(a(1, 2), T(1.5));
    math::Cmatrix<T> empty;
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_EQ(empty.getBase(), nullptr);

    math::Cmatrix<T> c = counting<T>(2, 3);
    EXPECT_EQ(c.getRow(1)[2], T(12));
    EXPECT_EQ(c.getBase()[4], T(11));  // row-major: (1, 1) at 1 * n + 1
    std::vector<T> row, col;
    c.getRow(1, row);
    c.getCol(2, col);
    EXPECT_EQ(row, (std::vector<T>{T(10), T(11), T(12)}));
    EXPECT_EQ(col, (std::vector<T>{T(2), T(12)}));

    // Copies own their elements.
    math::Cmatrix<T> d(c);
    d(0, 0) = T(-1);
    EXPECT_EQ(c(0, 0), T(0));
    d = c;
    EXPECT_EQ(d(0, 0), T(0));
    d.swap(empty);
    EXPECT_EQ(d.size(), 0u);
    EXPECT_EQ(empty.m(), 2u);
    EXPECT_EQ(empty(1, 2), T(12));
}

TYPED_TEST(Matrix, IteratorsWalkRowsAndColumns) {
    using T = TypeParam;
    math::Cmatrix<T> c = counting<T>(3, 2);
    std::vector<T> row(c.row_begin(1), c.row_end(1));
    EXPECT_EQ(row, (std::vector<T>{T(10), T(11)}));
    std::vector<T> col(c.col_begin(1), c.col_end(1));
    EXPECT_EQ(col, (std::vector<T>{T(1), T(11), T(21)}));
    EXPECT_EQ(c.col_end(1) - c.col_begin(1), 3);
    EXPECT_EQ(c.end().position(), 6u);
    EXPECT_TRUE(c.row_end(2) == c.end());
}

TYPED_TEST(Matrix, SettersClipToTheMatrix) {
    using T = TypeParam;
    math::Cmatrix<T> a(2, 3, T(0));
    a.setRow(0, {T(1), T(2), T(3), T(4), T(5)});
    EXPECT_EQ(a(0, 2), T(3));
    EXPECT_EQ(a(1, 0), T(0));  // the fourth value did not spill into row 1
    a.setRow(1, {T(7)});
    EXPECT_EQ(a(1, 0), T(7));
    EXPECT_EQ(a(1, 1), T(0));
    a.setCol(2, {T(8), T(9), T(10)});
    EXPECT_EQ(a(0, 2), T(8));
    EXPECT_EQ(a(1, 2), T(9));

    math::Cmatrix<T> small(2, 2, T(0));
    math::Cmatrix<T> b = counting<T>(3, 3);
    b(0, 0) = T(5);
    small.setMatrix(1, 1, b);
    EXPECT_EQ(small(1, 1), T(5));
    EXPECT_EQ(small(0, 0), T(0));
    EXPECT_EQ(small(0, 1), T(0));
    EXPECT_EQ(small(1, 0), T(0));
    math::Cmatrix<T> before = small;
    small.setMatrix(2, 0, b);
    small.setMatrix(0, 2, b);
    EXPECT_EQ(std::memcmp(small.getBase(), before.getBase(), small.byteSize()), 0);

    math::Cmatrix<T> big(4, 4, T(0));
    big.setMatrix(1, 2, counting<T>(2, 3));
    EXPECT_EQ(big(2, 3), T(11));
    EXPECT_EQ(big(1, 2), T(0));
    EXPECT_EQ(big(3, 3), T(0));
}

TYPED_TEST(Matrix, IdentityOnNonSquareAndTranspose) {
    using T = TypeParam;
    math::Cmatrix<T> a(2, 3, T(9));
    a.setIdentity();
    for (std::size_t i = 0; i < 2; ++i)
        for (std::size_t j = 0; j < 3; ++j) EXPECT_EQ(a(i, j), T(i == j ? 1 : 0));
    math::Cmatrix<T> c = counting<T>(2, 3);
    math::Cmatrix<T> t = c.transp();
    EXPECT_EQ(t.m(), 3u);
    EXPECT_EQ(t.n(), 2u);
    EXPECT_EQ(t(2, 1), T(12));
    EXPECT_EQ(t(0, 1), T(10));
}

TYPED_TEST(Matrix, ElementWiseArithmeticAndNegativeZeros) {
    using T = TypeParam;
    math::Cmatrix<T> a = counting<T>(2, 2);
    math::Cmatrix<T> b(2, 2, T(1));
    math::Cmatrix<T> s = a + b;
    EXPECT_EQ(s(1, 1), T(12));
    math::Cmatrix<T> d = a - b;
    EXPECT_EQ(d(0, 0), T(-1));
    a += b;
    a -= b;
    a += T(2);
    a -= T(1);
    a *= T(3);
    EXPECT_EQ(a(1, 0), T(33));

    math::Cmatrix<T> z(2, 2, T(0));
    math::Cmatrix<T> nz = -z;
    for (std::size_t k = 0; k < nz.size(); ++k) {
        EXPECT_EQ(nz.getBase()[k], T(0));
        EXPECT_TRUE(std::signbit(nz.getBase()[k]));
    }
    math::Cmatrix<T> negNeg = -nz;
    EXPECT_FALSE(std::signbit(negNeg(0, 0)));
}

TYPED_TEST(Matrix, ProductShapesAndValues) {
    using T = TypeParam;
    math::Cmatrix<T> a = counting<T>(2, 3);
    math::Cmatrix<T> b = counting<T>(3, 4);
    math::Cmatrix<T> p = a * b;
    EXPECT_EQ(p.m(), 2u);
    EXPECT_EQ(p.n(), 4u);
    // P(1, 2) = 10*2 + 11*12 + 12*22
    EXPECT_EQ(p(1, 2), T(10 * 2 + 11 * 12 + 12 * 22));
    a *= b;
    EXPECT_EQ(a.m(), 2u);
    EXPECT_EQ(a.n(), 4u);
    EXPECT_EQ(std::memcmp(a.getBase(), p.getBase(), p.byteSize()), 0);

    // 0 × k times k × 0, and inner length 0.
    math::Cmatrix<T> e1(2, 0), e2(0, 3);
    math::Cmatrix<T> z = e1 * e2;
    EXPECT_EQ(z.m(), 2u);
    EXPECT_EQ(z.n(), 3u);
    EXPECT_EQ(z(1, 2), T(0));
}

// The product is one rounded product and one rounded sum per term, k ascending; a fused
// multiply-add would give -e^2 instead of 0.
TYPED_TEST(Matrix, ProductIsNotContracted) {
    using T = TypeParam;
    T const e = std::is_same_v<T, float> ? std::ldexp(T(1), -13) : std::ldexp(T(1), -30);
    math::Cmatrix<T> a(1, 2), b(2, 1);
    a(0, 0) = T(1);
    a(0, 1) = T(1) + e;
    b(0, 0) = T(-1);
    b(1, 0) = T(1) - e;
    EXPECT_EQ((a * b)(0, 0), T(0));

    // Order of summation: big + tiny - big loses tiny.
    math::Cmatrix<T> c(1, 3), d(3, 1, T(1));
    c(0, 0) = T(1) / std::numeric_limits<T>::epsilon();
    c(0, 1) = T(0.5);
    c(0, 2) = -c(0, 0);
    EXPECT_EQ((c * d)(0, 0), T(0));
}

TEST(MatrixStorage, AssignCopiesAndOverflowingSizesFailToAllocate) {
    core::Carray<double> empty;
    math::Cmatrix<double> a = counting<double>(2, 2);
    core::Carray<double>& storage = a;
    storage.assign(empty);
    EXPECT_EQ(a.size(), 0u);
    EXPECT_THROW(math::Cmatrix<double>(std::size_t(1) << 62, 8), std::bad_alloc);
}

}  // namespace

namespace {
TEST(MatrixStorage, MovedFromMatrixIsEmpty) {
    math::Cmatrix<double> a(2, 3, 1.0);
    math::Cmatrix<double> b(std::move(a));
    EXPECT_EQ(b.m(), 2u);
    EXPECT_EQ(b(1, 2), 1.0);
    EXPECT_EQ(a.m(), 0u);  // NOLINT: checking the moved-from state on purpose
    EXPECT_EQ(a.n(), 0u);
    EXPECT_EQ(a.size(), 0u);
    a = std::move(b);
    EXPECT_EQ(a.n(), 3u);
    EXPECT_EQ(b.size(), 0u);
}
}  // namespace
