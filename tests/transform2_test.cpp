// Tests of <math/transform2.h>.
#include <gtest/gtest.h>
#include <math/transform2.h>

#include <cmath>
#include <vector>

#include "support/builders.h"
#include "support/tolerance.h"

namespace {

using math::Cpoint2;
using math::Ctrans2_Affine;
using math::Ctrans2_Basic;
using math::Ctrans2_Helmert;
using math::CtransPrm2;
using mgeo_test::kPi;
using mgeo_test::nearAbs;

template <typename T>
class Transform2 : public ::testing::Test {};
TYPED_TEST_SUITE(Transform2, mgeo_test::RealTypes);

template <typename T>
double tol() {
    return static_cast<double>(mgeo_test::ulpTol<T>(64));
}

template <typename T>
using Points = std::vector<Cpoint2<T>>;

template <typename T>
Points<T> randomPoints(mgeo_test::Noise& rnd, std::size_t n, double extent) {
    Points<T> pts;
    for (std::size_t i = 0; i < n; ++i) {
        pts.emplace_back(T(rnd(extent)), T(rnd(extent)));
    }
    return pts;
}

// x' = tx + a x - b y, y' = ty + b x + a y, evaluated in double.
template <typename T>
Points<T> similarity(Points<T> const& src, double a, double b, double tx, double ty) {
    Points<T> dst;
    for (auto const& p : src) {
        double const x = double(p.x);
        double const y = double(p.y);
        dst.emplace_back(T(tx + a * x - b * y), T(ty + b * x + a * y));
    }
    return dst;
}

template <typename T>
::testing::AssertionResult near2(Cpoint2<T> const& p, double x, double y, double t) {
    auto const r = nearAbs(p.x, T(x), t);
    return r ? nearAbs(p.y, T(y), t) : r;
}

// Every point of a within t of the same point of b.
template <typename T>
void expectNearAll(Points<T> const& a, Points<T> const& b, double t) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_TRUE(near2(a[i], double(b[i].x), double(b[i].y), t)) << "point " << i;
    }
}

// ---------------------------------------------------------------------------------------------
// CtransPrm2

TYPED_TEST(Transform2, ParametersAndRotationMatrix) {
    using T = TypeParam;
    CtransPrm2<T> prm;
    EXPECT_EQ(prm.getRot_X(), T(0));
    EXPECT_EQ(prm.getRot_Y(), T(0));
    EXPECT_EQ(prm.getTranslation(), Cpoint2<T>(T(0), T(0)));
    EXPECT_EQ(prm.getScale(), Cpoint2<T>(T(1), T(1)));
    prm.setRotation(T(0.25), T(0.5));
    prm.setTranslation(Cpoint2<T>(T(1), T(2)));
    prm.setScale(T(3), T(4));
    EXPECT_EQ(prm.getRot_X(), T(0.25));
    EXPECT_EQ(prm.getRot_Y(), T(0.5));
    EXPECT_EQ(prm.getScale(), Cpoint2<T>(T(3), T(4)));
    math::Cmatrix<T> const r = prm.getRot_Matrix();
    EXPECT_EQ(r(0, 0), std::cos(T(0.25)));
    EXPECT_EQ(r(0, 1), -std::sin(T(0.25)));
    EXPECT_EQ(r(1, 0), std::sin(T(0.5)));
    EXPECT_EQ(r(1, 1), std::cos(T(0.5)));
    CtransPrm2<T> const one(T(0.3), Cpoint2<T>(T(1), T(1)), Cpoint2<T>(T(2), T(2)));
    EXPECT_EQ(one.getRot_X(), T(0.3));
    EXPECT_EQ(one.getRot_Y(), T(0.3));
}

TYPED_TEST(Transform2, SinglePointAndListFormsDiffer) {
    using T = TypeParam;
    CtransPrm2<T> prm;
    prm.setRotation(T(kPi / 2));
    std::vector<Cpoint2<T>> out;
    prm.transform(Points<T>{Cpoint2<T>(T(1), T(2))}, out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_TRUE(near2(out[0], -2, 1, tol<T>()));
    Cpoint2<T> q;
    prm.transform(Cpoint2<T>(T(1), T(2)), q);
    EXPECT_TRUE(near2(q, -1, 1, tol<T>()));
    // The functor applies the single-point form.
    Cpoint2<T> const f = prm.getTransFunctor()(Cpoint2<T>(T(1), T(2)));
    EXPECT_EQ(f, q);
    // Both forms agree without rotation, and on the diagonal y = x.
    prm.setRotation(T(0.7));
    prm.transform(Points<T>{Cpoint2<T>(T(3), T(3))}, out);
    prm.transform(Cpoint2<T>(T(3), T(3)), q);
    EXPECT_EQ(out[0], q);
}

TYPED_TEST(Transform2, RetransformInvertsSimilarityListForm) {
    using T = TypeParam;
    mgeo_test::Noise rnd(17);
    for (int k = 0; k < 20; ++k) {
        T const rot = T(rnd(3));
        T const s = T(0.5 + 2 * rnd.unit());
        CtransPrm2<T> const prm(rot, Cpoint2<T>(T(rnd(10)), T(rnd(10))), Cpoint2<T>(s, s));
        Points<T> const pts = randomPoints<T>(rnd, 10, 5);
        Points<T> moved;
        prm.transform(pts, moved);
        Points<T> back = moved;
        prm.retransform(back, back);  // the same vector in and out
        expectNearAll(back, pts, 100 * tol<T>());
        auto const re = prm.getReTransFunctor();
        for (std::size_t i = 0; i < pts.size(); ++i) {
            EXPECT_EQ(re(moved[i]), back[i]);
        }
    }
    // Different scales: the documented formula, not an inverse.
    CtransPrm2<T> const prm(T(0), T(0), Cpoint2<T>(T(1), T(2)), Cpoint2<T>(T(2), T(4)));
    Cpoint2<T> p;
    prm.retransform(Cpoint2<T>(T(5), T(10)), p);
    EXPECT_EQ(p, Cpoint2<T>(T(2), T(2)));
}

// ---------------------------------------------------------------------------------------------
// Helmert

TYPED_TEST(Transform2, HelmertDocumentedCases) {
    using T = TypeParam;
    Points<T> const tri{{T(0), T(0)}, {T(1), T(0)}, {T(0), T(1)}};
    // A quarter turn with translation (1, 1); the identity; 180 degrees: a = -1, b = 0, so
    // atan(0 / -1) = 0 with scale 1, not pi.
    struct Case {
        Points<T> src, dst;
        double rot, tx, ty;
    } const cases[] = {{{{T(0), T(0)}, {T(1), T(0)}}, {{T(1), T(1)}, {T(1), T(2)}}, kPi / 2, 1, 1},
                       {tri, tri, 0, 0, 0},
                       {tri, {{T(0), T(0)}, {T(-1), T(0)}, {T(0), T(-1)}}, 0, 0, 0}};
    Ctrans2_Helmert<T> h;
    for (Case const& k : cases) {
        h.setAll(k.src, k.dst);
        CtransPrm2<T> const prm = h.transform();
        EXPECT_TRUE(nearAbs(prm.getRot_X(), T(k.rot), 10 * tol<T>())) << k.rot;
        EXPECT_EQ(prm.getRot_Y(), prm.getRot_X());
        EXPECT_TRUE(near2(prm.getScale(), 1, 1, 10 * tol<T>()));
        EXPECT_TRUE(near2(prm.getTranslation(), k.tx, k.ty, 10 * tol<T>()));
    }
}

TYPED_TEST(Transform2, HelmertRecoversRandomSimilarities) {
    using T = TypeParam;
    mgeo_test::Noise rnd(23);
    for (int k = 0; k < 20; ++k) {
        double const angle = rnd(1.4);  // within ±90 degrees: no shift by pi
        double const s = 0.5 + 2 * rnd.unit();
        double const tx = rnd(10);
        double const ty = rnd(10);
        Points<T> const src = randomPoints<T>(rnd, 12, 5);
        Points<T> const dst = similarity<T>(src, s * std::cos(angle), s * std::sin(angle), tx, ty);
        Ctrans2_Helmert<T> h;
        Ctrans2_Basic<T>& base = h;
        base.setSource(src);
        base.setDest(dst);
        CtransPrm2<T> const prm = base.transform();
        double const bound = 1e3 * tol<T>();  // normal equations square the conditioning
        EXPECT_TRUE(nearAbs(prm.getRot_X(), T(angle), bound));
        EXPECT_TRUE(nearAbs(prm.getScale().x, T(s), bound));
        EXPECT_TRUE(near2(prm.getTranslation(), double(T(tx)), double(T(ty)), 10 * bound));
        Points<T> mapped;
        prm.transform(src, mapped);
        expectNearAll(mapped, dst, 10 * bound);
    }
}

TYPED_TEST(Transform2, EstimatorExceptions) {
    using T = TypeParam;
    using Basic = Ctrans2_Basic<T>;
    Points<T> const three{{T(0), T(0)}, {T(1), T(0)}, {T(0), T(1)}};
    Points<T> const four{{T(0), T(0)}, {T(1), T(0)}, {T(0), T(1)}, {T(1), T(1)}};
    Points<T> const same(3, Cpoint2<T>(T(0), T(0)));

    Ctrans2_Helmert<T> h;
    EXPECT_THROW(h.transform(), typename Basic::xNotInitialized);
    h.setSource(three);
    EXPECT_THROW(h.transform(), typename Basic::xNotInitialized);
    h.setDest(four);
    EXPECT_THROW(h.transform(), typename Ctrans2_Helmert<T>::xArgumentMismatch);
    h.setAll(Points<T>(), Points<T>());
    EXPECT_THROW(h.transform(), typename Basic::xNotSolved);
    h.setAll(same, three);
    EXPECT_THROW(h.transform(), typename Basic::xNotSolved);
    h.setAll(three, three);  // the lists may be given again
    EXPECT_NO_THROW(h.transform());

    Ctrans2_Affine<T> a;
    EXPECT_THROW(a.transform(), typename Basic::xNotInitialized);
    a.setDest(three);
    EXPECT_THROW(a.transform(), typename Basic::xNotInitialized);
    a.setSource(four);
    EXPECT_THROW(a.transform(), typename Ctrans2_Affine<T>::xArgumentMismatch);
    a.setAll(same, three);
    EXPECT_THROW(a.transform(), typename Ctrans2_Affine<T>::xNotSolved);
    a.setAll(Points<T>(), Points<T>());
    EXPECT_THROW(a.transform(), typename Basic::xNotSolved);
}

// ---------------------------------------------------------------------------------------------
// Affine

TYPED_TEST(Transform2, AffineRecoversParameters) {
    using T = TypeParam;
    mgeo_test::Noise rnd(29);
    for (int k = 0; k < 20; ++k) {
        // x' = px0 + px1 x - px2 y, y' = py0 + py1 y + py2 x.
        double const px[3] = {rnd(5), 1 + rnd(0.5), rnd(0.5)};
        double const py[3] = {rnd(5), 1 + rnd(0.5), rnd(0.5)};
        Points<T> const src = randomPoints<T>(rnd, 10, 5);
        Points<T> dst;
        for (auto const& p : src) {
            double const x = double(p.x);
            double const y = double(p.y);
            dst.emplace_back(T(px[0] + px[1] * x - px[2] * y), T(py[0] + py[1] * y + py[2] * x));
        }
        Ctrans2_Affine<T> a;
        a.setAll(src, dst);
        CtransPrm2<T> const prm = a.transform();
        double const bound = 1e3 * tol<T>();
        EXPECT_TRUE(near2(prm.getTranslation(), double(T(px[0])), double(T(py[0])), 10 * bound));
        // Column-wise scales and angles.
        EXPECT_TRUE(nearAbs(prm.getScale().x, T(std::sqrt(px[1] * px[1] + py[2] * py[2])), bound));
        EXPECT_TRUE(nearAbs(prm.getScale().y, T(std::sqrt(px[2] * px[2] + py[1] * py[1])), bound));
        EXPECT_TRUE(nearAbs(prm.getRot_X(), T(std::atan(py[2] / px[1])), bound));
        EXPECT_TRUE(nearAbs(prm.getRot_Y(), T(std::atan(px[2] / py[1])), bound));
    }
}

TYPED_TEST(Transform2, AffineOfSimilarityRoundTrips) {
    using T = TypeParam;
    mgeo_test::Noise rnd(37);
    double const angle = 0.6;
    double const s = 1.5;
    Points<T> const src = randomPoints<T>(rnd, 8, 5);
    // A similarity written in the affine unknowns: px1 = py1 = s cos, px2 = py2 = s sin.
    Points<T> const dst = similarity<T>(src, s * std::cos(angle), s * std::sin(angle), 2, -1);
    Ctrans2_Affine<T> a;
    a.setAll(src, dst);
    CtransPrm2<T> const prm = a.transform();
    double const bound = 1e3 * tol<T>();
    EXPECT_TRUE(nearAbs(prm.getRot_X(), T(angle), bound));
    EXPECT_TRUE(nearAbs(prm.getRot_Y(), T(angle), bound));
    Points<T> mapped;
    prm.transform(src, mapped);
    expectNearAll(mapped, dst, 10 * bound);
    // A zero denominator gives pi/2: x' = -y, y' = x (px1 = py1 = 0, px2 = py2 = 1).
    Points<T> const tri{{T(0), T(0)}, {T(1), T(0)}, {T(0), T(1)}};
    Points<T> const triTurned{{T(0), T(0)}, {T(0), T(1)}, {T(-1), T(0)}};
    a.setAll(tri, triTurned);
    CtransPrm2<T> const quarter = a.transform();
    EXPECT_TRUE(nearAbs(quarter.getRot_X(), T(kPi / 2), bound));
    EXPECT_TRUE(nearAbs(quarter.getRot_Y(), T(kPi / 2), bound));
}

}  // namespace
