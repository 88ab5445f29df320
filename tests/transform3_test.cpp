// Tests of <math/transform3.h>.
#include <gtest/gtest.h>
#include <math/transform3.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using math::Cmatrix;
using math::Cpoint3;
using math::Cquaternion;
using math::CthrowMath;
using math::Ctransformer;
using math::CtransPrm3;
using mgeo_test::expectThrowId;
using mgeo_test::kPi;
using mgeo_test::nearAbs;

template <typename T>
class Transform3 : public ::testing::Test {};
TYPED_TEST_SUITE(Transform3, mgeo_test::RealTypes);

// A few dozen roundings of values of order 1.
template <typename T>
double tol() {
    return static_cast<double>(mgeo_test::ulpTol<T>(64));
}

// Reaches the protected members.
template <typename T>
struct Access : CtransPrm3<T> {
    using CtransPrm3<T>::CtransPrm3;
    using CtransPrm3<T>::findScale;
    using CtransPrm3<T>::isOrthogonalRot;
    using CtransPrm3<T>::equal;
    using CtransPrm3<T>::determinante;
    using CtransPrm3<T>::getTransFunktor;
    using CtransPrm3<T>::setAccuracy;
};

template <typename T>
Cmatrix<T> matrix3(double const (&v)[9]) {
    Cmatrix<T> m(3, 3);
    for (std::size_t i = 0; i < 9; ++i) {
        m(i / 3, i % 3) = T(v[i]);
    }
    return m;
}

// Rodrigues' formula in double: R = cos(a) I + sin(a) [u]x + (1 - cos(a)) u u^T.
void rodrigues(double const u[3], double a, double r[3][3]) {
    double const c = std::cos(a);
    double const s = std::sin(a);
    double const k[3][3] = {{0, -u[2], u[1]}, {u[2], 0, -u[0]}, {-u[1], u[0], 0}};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            r[i][j] = (i == j ? c : 0.0) + s * k[i][j] + (1 - c) * u[i] * u[j];
        }
    }
}

// A random rotation (axis, angle in (0, pi)) and its quaternion.
struct RandomRotation {
    double axis[3];
    double angle;
    double r[3][3];
    explicit RandomRotation(mgeo_test::Noise& rnd) {
        mgeo_test::unitVector(rnd(1), rnd(1), rnd(1), axis);
        angle = kPi * (0.05 + 0.9 * rnd.unit());
        rodrigues(axis, angle, r);
    }
    template <typename T>
    Cquaternion<T> quaternion() const {
        double const s = std::sin(angle / 2);
        return Cquaternion<T>(T(std::cos(angle / 2)), T(s * axis[0]), T(s * axis[1]),
                              T(s * axis[2]));
    }
};

template <typename T>
::testing::AssertionResult nearPoint(Cpoint3<T> const& a, Cpoint3<T> const& b, double t) {
    for (std::size_t i = 0; i < 3; ++i) {
        auto const r = nearAbs(a[i], b[i], t);
        if (!r) {
            return ::testing::AssertionFailure() << "component " << i << ": " << r.message();
        }
    }
    return ::testing::AssertionSuccess();
}

// Every element of the n × n matrix m within t of ref(i, j) (t = 0: equal).
template <typename T, typename F>
::testing::AssertionResult nearMatrix(Cmatrix<T> const& m, std::size_t n, F ref, double t) {
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            auto const r = nearAbs(m(i, j), T(ref(i, j)), t);
            if (!r) {
                return ::testing::AssertionFailure() << i << "," << j << ": " << r.message();
            }
        }
    }
    return ::testing::AssertionSuccess();
}
double identity(std::size_t i, std::size_t j) { return i == j ? 1.0 : 0.0; }

template <typename T>
::testing::AssertionResult nearQuat(Cquaternion<T> const& q, double w, double x, double y, double z,
                                    double t) {
    auto const r = nearPoint(Cpoint3<T>(q.x, q.y, q.z), Cpoint3<T>(T(x), T(y), T(z)), t);
    return r ? nearAbs(q.w, T(w), t) : r;
}

// The affine map of a 3 × 4 (or 4 × 4) matrix applied to p.
template <typename T>
Cpoint3<T> apply4(Cmatrix<T> const& m, Cpoint3<T> const& p) {
    Cpoint3<T> q;
    for (std::size_t i = 0; i < 3; ++i) {
        q[i] = m(i, 0) * p.x + m(i, 1) * p.y + m(i, 2) * p.z + m(i, 3);
    }
    return q;
}

// r (p - c) + t, independently in double.
template <typename T>
Cpoint3<T> rotateDouble(double const (&r)[3][3], Cpoint3<T> const& p, Cpoint3<T> const& c,
                        Cpoint3<T> const& t) {
    Cpoint3<T> q;
    for (std::size_t i = 0; i < 3; ++i) {
        double v = double(t[i]);
        for (std::size_t j = 0; j < 3; ++j) {
            v += r[i][j] * (double(p[j]) - double(c[j]));
        }
        q[i] = T(v);
    }
    return q;
}

// ---------------------------------------------------------------------------------------------
// Conversions

TYPED_TEST(Transform3, QuaternionToMatrixMatchesRodrigues) {
    using T = TypeParam;
    mgeo_test::Noise rnd(7);
    for (int n = 0; n < 50; ++n) {
        RandomRotation const rot(rnd);
        Cmatrix<T> const m = math::quaternionToMatrix(rot.quaternion<T>());
        ASSERT_EQ(m.m(), 3u);
        ASSERT_EQ(m.n(), 3u);
        EXPECT_TRUE(nearMatrix(
            m, 3, [&](auto i, auto j) { return rot.r[i][j]; }, tol<T>()));
    }
}

TYPED_TEST(Transform3, QuaternionToMatrixClampsAndTurnsNanIntoOne) {
    using T = TypeParam;
    T const nan = std::numeric_limits<T>::quiet_NaN();
    // Every element that involves w becomes 1 (NaN fails "1 > r"); the diagonal does not use w.
    Cmatrix<T> const m = math::quaternionToMatrix(Cquaternion<T>(nan, T(0), T(0), T(0)));
    EXPECT_TRUE(nearMatrix(
        m, 3, [](auto, auto) { return 1.0; }, 0.0));
    Cmatrix<T> const m2 = math::quaternionToMatrix(Cquaternion<T>(nan, T(0.6), T(0), T(0.8)));
    EXPECT_EQ(m2(0, 1), T(1));  // 2(xy - wz)
    EXPECT_EQ(m2(2, 1), T(1));  // 2(yz + wx)
    EXPECT_TRUE(nearAbs(m2(0, 0), T(1 - 2 * 0.64), tol<T>()));
    EXPECT_EQ(m2(2, 0), T(1));  // 2(xz - wy): NaN * 0 is NaN too
    EXPECT_TRUE(nearAbs(m2(2, 2), T(1 - 2 * 0.36), tol<T>()));
    // A non-unit quaternion: 1 - 2 (2² + 0) = -7 is clamped to -1, 2·(2·2) = 8 to 1.
    Cmatrix<T> const m3 = math::quaternionToMatrix(Cquaternion<T>(T(0), T(2), T(2), T(0)));
    EXPECT_EQ(m3(0, 0), T(-1));
    EXPECT_EQ(m3(0, 1), T(1));
    EXPECT_EQ(m3(2, 2), T(-1));
}

TYPED_TEST(Transform3, MatrixToQuaternionRoundTrip) {
    using T = TypeParam;
    mgeo_test::Noise rnd(11);
    for (int n = 0; n < 50; ++n) {
        RandomRotation const rot(rnd);
        Cquaternion<T> const q = rot.quaternion<T>();
        Cquaternion<T> const back = math::matrixToQuaternion(math::quaternionToMatrix(q));
        EXPECT_TRUE(nearQuat(back, q.w, q.x, q.y, q.z, 4 * tol<T>()));
    }
}

TYPED_TEST(Transform3, MatrixToQuaternionHalfTurnBranches) {
    using T = TypeParam;
    // Trace -1: the trace branch is skipped; R00 largest takes the x branch.
    auto const q = [](double d0, double d1, double d2) {
        return math::matrixToQuaternion(matrix3<T>({d0, 0, 0, 0, d1, 0, 0, 0, d2}));
    };
    EXPECT_TRUE(nearQuat(q(1, -1, -1), 0, 1, 0, 0, 0.0));
    EXPECT_TRUE(nearQuat(q(-1, 1, -1), 0, 0, 1, 0, 0.0));
    EXPECT_TRUE(nearQuat(q(-1, -1, 1), 0, 0, 0, 1, 0.0));
    // R00 = R11 = 0 > R22: not the x branch (strict), but the y branch.
    Cquaternion<T> qxy = math::matrixToQuaternion(matrix3<T>({0, 1, 0, 1, 0, 0, 0, 0, -1}));
    EXPECT_TRUE(nearQuat(qxy, 0, std::sqrt(0.5), std::sqrt(0.5), 0, tol<T>()));
    EXPECT_EQ(qxy.w, T(0));
}

TYPED_TEST(Transform3, MatrixToQuaternionTraceBranchNeedsTracePlusOneAboveEpsilon) {
    using T = TypeParam;
    T const eps = std::numeric_limits<T>::epsilon();
    // diag(1, -1, -1 + k eps) is a rotation within 2^-15 with trace + 1 = k eps exactly.
    Cmatrix<T> m = matrix3<T>({1, 0, 0, 0, -1, 0, 0, 0, -1});
    m(2, 2) = T(-1) + eps;
    // trace + 1 == eps is not above it: the x branch, x = s/4 close to 1.
    Cquaternion<T> const atEps = math::matrixToQuaternion(m);
    EXPECT_TRUE(nearAbs(atEps.x, T(1), tol<T>()));
    EXPECT_EQ(atEps.w, T(0));
    // trace + 1 == 2 eps: the trace branch, w = sqrt(2 eps)/2 and x = (R21 - R12)/s = 0.
    m(2, 2) = T(-1) + T(2) * eps;
    Cquaternion<T> const above = math::matrixToQuaternion(m);
    EXPECT_EQ(above.x, T(0));
    EXPECT_EQ(above.w, T(2) * std::sqrt(T(2) * eps) / T(4));
}

TYPED_TEST(Transform3, MatrixToQuaternionMakesWNonNegativeAndAtMostOne) {
    using T = TypeParam;
    double const e = 1e-5;
    // x branch with w = (R21 - R12)/4 = -e/2 < 0: all four components are negated.
    Cquaternion<T> q = math::matrixToQuaternion(matrix3<T>({1, 0, 0, 0, -1, e, 0, -e, -1}));
    EXPECT_GT(q.w, T(0));
    EXPECT_TRUE(nearAbs(q.w, T(e / 2), tol<T>()));
    EXPECT_EQ(q.x, T(-1));
    // A diagonal slightly above 1 (still a rotation within 2^-15) gives w > 1, clamped to 1.
    Cquaternion<T> q1 = math::matrixToQuaternion(matrix3<T>({1 + 1e-5, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(q1.w, T(1));
}

TYPED_TEST(Transform3, MatrixToQuaternionRejectsNonRotations) {
    using T = TypeParam;
    auto const invalid = [](Cmatrix<T> const& m) {
        Cquaternion<T> const q = math::matrixToQuaternion(m);
        return q.w != q.w && q.x != q.x;
    };
    double const nan = std::numeric_limits<double>::quiet_NaN();
    // Scaled, a reflection (det = -1), a shear (det = 1, not orthogonal), a NaN, wrong sizes.
    for (auto const& m :
         {matrix3<T>({2, 0, 0, 0, 2, 0, 0, 0, 2}), matrix3<T>({-1, 0, 0, 0, 1, 0, 0, 0, 1}),
          matrix3<T>({1, 0.5, 0, 0, 1, 0, 0, 0, 1}), matrix3<T>({1, 0, 0, 0, 1, nan, 0, 0, 1}),
          Cmatrix<T>(2, 2, T(0)), Cmatrix<T>(3, 4, T(0)), Cmatrix<T>()}) {
        EXPECT_TRUE(invalid(m)) << m.m() << " x " << m.n();
    }
    // The rotation test is relative 2^-15: an error of 1e-5 passes, 1e-4 does not.
    EXPECT_FALSE(invalid(matrix3<T>({1, 0, 0, 0, 1, 1e-5, 0, 0, 1})));
    EXPECT_TRUE(invalid(matrix3<T>({1, 0, 0, 0, 1, 1e-4, 0, 0, 1})));
}

TYPED_TEST(Transform3, MatrixToQuaternionReadsUpperLeftOf4x4) {
    using T = TypeParam;
    Cmatrix<T> m(4, 4, T(7));
    Cmatrix<T> const r = math::quaternionToMatrix(Cquaternion<T>(T(0.6), T(0), T(0.8), T(0)));
    m.setMatrix(0, 0, r);
    Cquaternion<T> const q = math::matrixToQuaternion(m);
    EXPECT_TRUE(nearAbs(q.w, T(0.6), tol<T>()));
    EXPECT_TRUE(nearAbs(q.y, T(0.8), tol<T>()));
}

// ---------------------------------------------------------------------------------------------
// CtransPrm3

TYPED_TEST(Transform3, DefaultIsIdentityWithMismatchedQuaternion) {
    using T = TypeParam;
    CtransPrm3<T> const prm;
    Cpoint3<T> q;
    prm.transform(Cpoint3<T>(T(1.5), T(-2), T(3)), q);
    EXPECT_EQ(q, Cpoint3<T>(T(1.5), T(-2), T(3)));
    EXPECT_TRUE(nearMatrix(prm.get4x4Matrix(), 4, identity, 0.0));
    EXPECT_TRUE(nearAbs(prm.getArc(), T(1), tol<T>()));
    EXPECT_EQ(prm.getAxis().asPoint(), Cpoint3<T>(T(0), T(0), T(1)));
    EXPECT_EQ(prm.getScale(), Cpoint3<T>(T(1), T(1), T(1)));
    EXPECT_EQ(prm.getTranslation(), Cpoint3<T>(T(0), T(0), T(0)));
}

TYPED_TEST(Transform3, QuarterTurnAboutZ) {
    using T = TypeParam;
    double const a = kPi / 2;
    CtransPrm3<T> const prm(Cquaternion<T>(T(std::cos(a / 2)), T(0), T(0), T(std::sin(a / 2))),
                            Cpoint3<T>(T(0), T(0), T(0)));
    Cpoint3<T> q;
    prm.transform(Cpoint3<T>(T(1), T(0), T(0)), q);
    EXPECT_TRUE(nearPoint(q, Cpoint3<T>(T(0), T(1), T(0)), tol<T>()));
    EXPECT_TRUE(nearAbs(prm.getArc(), T(a), 4 * tol<T>()));
    EXPECT_TRUE(nearAbs(prm.getAxis().z(), T(1), tol<T>()));
    EXPECT_TRUE(nearPoint(prm.getScale(), Cpoint3<T>(T(1), T(1), T(1)), tol<T>()));
}

TYPED_TEST(Transform3, IdentityRotationHasInvalidAxis) {
    using T = TypeParam;
    CtransPrm3<T> prm;
    prm.setRotation(Cquaternion<T>(T(1), T(0), T(0), T(0)));
    EXPECT_EQ(prm.getArc(), T(0));
    EXPECT_FALSE(prm.getAxis().isValid());
}

TYPED_TEST(Transform3, HomogeneousMatrixWithScaleAndTransposedRetransform) {
    using T = TypeParam;
    Cmatrix<T> m(4, 4, T(0));
    m(0, 0) = m(1, 1) = m(2, 2) = T(2);
    m(0, 3) = T(1);
    m(1, 3) = T(2);
    m(2, 3) = T(3);
    m(3, 3) = T(1);
    CtransPrm3<T> prm;
    prm.setNewPrm(m);
    EXPECT_EQ(prm.getScale(), Cpoint3<T>(T(2), T(2), T(2)));
    EXPECT_EQ(prm.getTranslation(), Cpoint3<T>(T(1), T(2), T(3)));
    EXPECT_TRUE(nearMatrix(prm.getRot_Matrix(), 3, identity, 0.0));
    Cpoint3<T> q;
    prm.transform(Cpoint3<T>(T(1), T(1), T(1)), q);
    EXPECT_EQ(q, Cpoint3<T>(T(3), T(4), T(5)));
    Cpoint3<T> p;
    prm.retransform(q, p);
    EXPECT_EQ(p, Cpoint3<T>(T(4), T(4), T(4)));  // the transpose, not the inverse
    // The matrix constructor takes the translation from the 4 × 4 as well.
    CtransPrm3<T> const fromMatrix(m, Cpoint3<T>(T(9), T(9), T(9)));
    EXPECT_EQ(fromMatrix.getTranslation(), Cpoint3<T>(T(1), T(2), T(3)));
    EXPECT_TRUE(nearMatrix(
        fromMatrix.get4x4Matrix(), 4, [&](auto i, auto j) { return m(i, j); }, 0.0));
}

TYPED_TEST(Transform3, ErrorIds) {
    using T = TypeParam;
    CtransPrm3<T> prm;
    auto const setM = [&](Cmatrix<T> const& m) { return [&prm, m] { prm.setNewPrm(m); }; };
    auto const setR = [&](Cmatrix<T> const& m) { return [&prm, m] { prm.setRotation(m); }; };
    int const inv = CthrowMath::ERR_TRANS_INV_MATRIX;
    Cmatrix<T> lastRow(4, 4, T(0));
    lastRow.setIdentity();
    lastRow(3, 3) = T(2);
    EXPECT_TRUE(expectThrowId<CthrowMath>(setM(lastRow), inv));
    lastRow(3, 3) = T(1);
    lastRow(3, 0) = T(1e-30);
    EXPECT_TRUE(expectThrowId<CthrowMath>(setM(lastRow), inv));
    EXPECT_TRUE(
        expectThrowId<CthrowMath>(setM(Cmatrix<T>(3, 4, T(1))), CthrowMath::ERR_MATRIX_NOTSQUARE));
    // Wrong sizes: the id and the size in the message.
    std::pair<std::function<void()>, char const*> const dims[] = {
        {setM(Cmatrix<T>(2, 2, T(1))), "(m:2,n:2)"}, {setR(Cmatrix<T>(4, 3, T(1))), "(m:4,n:3)"}};
    for (auto const& [fn, text] : dims) {
        try {
            fn();
            ADD_FAILURE() << "no exception";
        } catch (CthrowMath const& e) {
            EXPECT_EQ(e.id(), CthrowMath::ERR_MATRIX_DIMS);
            EXPECT_NE(e.message().find(text), std::string::npos) << e.message();
        }
    }
    EXPECT_TRUE(expectThrowId<CthrowMath>(setR(matrix3<T>({1, 0, 0, 0, 0, 0, 0, 0, 1})), inv));
    // A column whose squared length underflows has length exactly 0: id 28, with the
    // computed scale already stored.
    EXPECT_TRUE(expectThrowId<CthrowMath>(setR(matrix3<T>({1, 0, 0, 0, 1, 0, 0, 0, 0})), inv));
    EXPECT_EQ(prm.getScale(), Cpoint3<T>(T(1), T(1), T(0)));
    Cmatrix<T> underflow = matrix3<T>({1, 0, 0, 0, 1, 0, 0, 0, 0});
    underflow(2, 2) = std::sqrt(std::numeric_limits<T>::denorm_min()) / T(4);
    EXPECT_TRUE(expectThrowId<CthrowMath>(setR(underflow), inv));
    double const h = std::sqrt(0.5);
    int const notOrth = CthrowMath::ERR_MATRIX_NOTORTHOGONAL;
    EXPECT_TRUE(expectThrowId<CthrowMath>(setR(matrix3<T>({1, h, 0, 0, h, 0, 0, 0, 1})), notOrth));
    Cquaternion<T> const bad(std::numeric_limits<T>::quiet_NaN(), T(0), T(0), T(1));
    EXPECT_TRUE(expectThrowId<CthrowMath>([&] { prm.setRotation(bad); }, notOrth));
    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] { CtransPrm3<T> p(bad, Cpoint3<T>(T(0), T(0), T(0))); }, notOrth));
}

TYPED_TEST(Transform3, ScaledRotationMatrixSplitsIntoRotationAndScale) {
    using T = TypeParam;
    mgeo_test::Noise rnd(3);
    RandomRotation const rot(rnd);
    double const s[3] = {0.5, 2.0, 3.0};
    Cmatrix<T> trf(3, 3);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            trf(i, j) = T(rot.r[i][j] * s[j]);
        }
    }
    CtransPrm3<T> prm(trf, Cpoint3<T>(T(1), T(2), T(3)));
    EXPECT_TRUE(nearPoint(prm.getScale(), Cpoint3<T>(T(s[0]), T(s[1]), T(s[2])), 4 * tol<T>()));
    EXPECT_TRUE(nearMatrix(
        prm.getRot_Matrix(), 3, [&](auto i, auto j) { return rot.r[i][j]; }, tol<T>()));
    // acos near w = cos(angle / 2) amplifies the rounding of w.
    EXPECT_TRUE(nearAbs(prm.getArc(), T(rot.angle), 1e3 * tol<T>()));
    EXPECT_TRUE(nearAbs(prm.getAxis().x(), T(rot.axis[0]), 1e2 * tol<T>()));
    // setScale writes the scale only.
    prm.setScale(Cpoint3<T>(T(1), T(1), T(1)));
    EXPECT_EQ(prm.getScale(), Cpoint3<T>(T(1), T(1), T(1)));
    Cmatrix<T> const trfAfter = prm.getTrf_Matrix();
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(trfAfter.getBase()[i], trf.getBase()[i]);
    }
}

TYPED_TEST(Transform3, RandomRigidRoundTrips) {
    using T = TypeParam;
    mgeo_test::Noise rnd(5);
    for (int n = 0; n < 20; ++n) {
        RandomRotation const rot(rnd);
        Cpoint3<T> const t(T(rnd(10)), T(rnd(10)), T(rnd(10)));
        CtransPrm3<T> const prm(rot.quaternion<T>(), t);
        std::vector<Cpoint3<T>> pts;
        for (int k = 0; k < 10; ++k) {
            pts.emplace_back(T(rnd(5)), T(rnd(5)), T(rnd(5)));
        }
        std::vector<Cpoint3<T>> moved;
        prm.transform(pts, moved);
        ASSERT_EQ(moved.size(), pts.size());
        Cmatrix<T> const m4 = prm.get4x4Matrix();
        Cmatrix<T> const re4 = prm.get4x4reMatrix();
        for (std::size_t k = 0; k < pts.size(); ++k) {
            Cpoint3<T> const& p = pts[k];
            // Independent: R p + t in double with Rodrigues' matrix.
            Cpoint3<T> const zero(T(0), T(0), T(0));
            EXPECT_TRUE(nearPoint(moved[k], rotateDouble(rot.r, p, zero, t), 20 * tol<T>()));
            // The 4 × 4 matrix gives the same point; its inverse is the matrix of retransform.
            EXPECT_TRUE(nearPoint(apply4(m4, p), moved[k], 20 * tol<T>()));
            Cpoint3<T> back;
            prm.retransform(moved[k], back);
            EXPECT_TRUE(nearPoint(back, p, 20 * tol<T>()));
            EXPECT_TRUE(nearPoint(apply4(re4, moved[k]), back, 20 * tol<T>()));
        }
        std::vector<Cpoint3<T>> back;
        prm.retransform(moved, back);
        for (std::size_t k = 0; k < pts.size(); ++k) {
            EXPECT_TRUE(nearPoint(back[k], pts[k], 20 * tol<T>()));
        }
        // The same list as input and output.
        std::vector<Cpoint3<T>> inPlace = pts;
        prm.transform(inPlace, inPlace);
        EXPECT_EQ(inPlace, moved);
    }
}

TYPED_TEST(Transform3, MatrixSetterAgreesWithQuaternionSetter) {
    using T = TypeParam;
    mgeo_test::Noise rnd(9);
    RandomRotation const rot(rnd);
    CtransPrm3<T> a;
    a.setRotation(rot.quaternion<T>());
    CtransPrm3<T> b;
    b.setRotation(a.getTrf_Matrix());
    EXPECT_TRUE(nearAbs(b.getArc(), a.getArc(), 1e3 * tol<T>()));
    EXPECT_TRUE(nearPoint(b.getAxis().asPoint(), a.getAxis().asPoint(), 1e2 * tol<T>()));
}

TYPED_TEST(Transform3, ProtectedHelpers) {
    using T = TypeParam;
    Access<T> prm(Cquaternion<T>(T(0.6), T(0), T(0.8), T(0)), Cpoint3<T>(T(1), T(2), T(3)));
    EXPECT_TRUE(nearAbs(prm.determinante(), T(1), tol<T>()));
    EXPECT_TRUE(prm.isOrthogonalRot());
    // Strict on both sides, tolerance 1e-6.
    EXPECT_TRUE(prm.equal(T(1), T(1)));
    EXPECT_TRUE(prm.equal(T(1.0000005), T(1)));
    EXPECT_FALSE(prm.equal(T(1.000002), T(1)));
    EXPECT_FALSE(prm.equal(T(0.999998), T(1)));
    // Exactly one accuracy away is outside on either side.
    T const acc = T(1e-6);
    EXPECT_FALSE(prm.equal(acc, T(0)));
    EXPECT_FALSE(prm.equal(-acc, T(0)));
    EXPECT_TRUE(prm.equal(acc / T(2), T(0)));
    prm.setAccuracy(T(0.01));
    EXPECT_TRUE(prm.equal(T(1.005), T(1)));
    auto const f = prm.getTransFunktor();
    Cpoint3<T> const p(T(0.5), T(-1), T(2));
    Cpoint3<T> q;
    prm.transform(p, q);
    EXPECT_EQ(f(p), q);
}

// ---------------------------------------------------------------------------------------------
// Ctransformer

TYPED_TEST(Transform3, TransformerToAndFromFrame) {
    using T = TypeParam;
    using F = Ctransformer<T>;
    mgeo_test::Noise rnd(13);
    RandomRotation const rot(rnd);
    Cquaternion<T> const q = rot.quaternion<T>();
    Cmatrix<T> const r = math::quaternionToMatrix(q);
    Cpoint3<T> const c(T(1), T(-2), T(0.5));
    Cpoint3<T> const p(T(3), T(4), T(-1));

    // R (p - c), independently in double.
    Cpoint3<T> const expected = rotateDouble(rot.r, p, c, Cpoint3<T>(T(0), T(0), T(0)));
    Cpoint3<T> out;
    F::transformTo(r, p, out, c);
    EXPECT_TRUE(nearPoint(out, expected, 20 * tol<T>()));
    Cpoint3<T> viaQ;
    F::transformTo(q, p, viaQ, c);
    EXPECT_EQ(viaQ, out);
    Cpoint3<T> inPlace = p;
    F::transformTo(r, inPlace, c);
    EXPECT_EQ(inPlace, out);
    F::transformFrom(q, inPlace, c);
    EXPECT_TRUE(nearPoint(inPlace, p, 20 * tol<T>()));
    Cpoint3<T> back;
    F::transformFrom(r, out, back, c);
    EXPECT_TRUE(nearPoint(back, p, 20 * tol<T>()));

    // List forms: the output is cleared, given the input's capacity and filled in order.
    std::vector<Cpoint3<T>> list;
    list.reserve(16);
    list.push_back(p);
    list.push_back(c);
    std::vector<Cpoint3<T>> outList(5, Cpoint3<T>(T(9), T(9), T(9)));
    F::transformTo(q, list, outList, c);
    ASSERT_EQ(outList.size(), 2u);
    EXPECT_GE(outList.capacity(), 16u);
    EXPECT_EQ(outList[0], out);
    EXPECT_TRUE(nearPoint(outList[1], Cpoint3<T>(T(0), T(0), T(0)), 0.0));
    std::vector<Cpoint3<T>> listInPlace = list;
    F::transformTo(r, listInPlace, c);
    EXPECT_EQ(listInPlace, outList);
    F::transformFrom(r, listInPlace, listInPlace, c);  // the same list in and out
    ASSERT_EQ(listInPlace.size(), 2u);
    EXPECT_TRUE(nearPoint(listInPlace[0], p, 20 * tol<T>()));
    std::vector<Cpoint3<T>> fromList;
    F::transformFrom(q, outList, fromList, c);
    EXPECT_EQ(fromList, listInPlace);
    F::transformFrom(q, outList, c);
    EXPECT_EQ(outList, listInPlace);

    EXPECT_TRUE(expectThrowId<CthrowMath>(
        [&] { F::transformTo(Cmatrix<T>(2, 2, T(1)), inPlace, c); }, CthrowMath::ERR_MATRIX_DIMS));
}

}  // namespace
