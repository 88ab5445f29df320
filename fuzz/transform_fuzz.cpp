// Transformations: CtransPrm3 from quaternions and matrices of any size (the setters throw
// CthrowMath on bad ones), quaternion/matrix conversions, Ctransformer, CtransPrm2 and the
// Helmert and affine estimators, in float and double.
#include <math/exceptions.h>
#include <math/transform2.h>
#include <math/transform3.h>

#include "fuzz_input.h"

namespace {

template <typename T>
math::Cmatrix<T> matrix(fuzz::Input& in, std::size_t m, std::size_t n) {
    math::Cmatrix<T> a(m, n);
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            a(i, j) = in.real<T>();
        }
    }
    return a;
}

template <typename T>
math::Cquaternion<T> quaternion(fuzz::Input& in) {
    T const w = in.real<T>(), x = in.real<T>(), y = in.real<T>();
    return math::Cquaternion<T>(w, x, y, in.real<T>());
}

template <typename T>
void space(fuzz::Input& in) {
    auto const pts = fuzz::points3<T>(in, 50);
    std::vector<math::Cpoint3<T>> out;
    math::Cpoint3<T> q;
    math::CtransPrm3<T> prm;
    try {
        switch (in.u8() % 4) {
            case 0: {
                auto const q0 = quaternion<T>(in);
                prm = math::CtransPrm3<T>(q0, fuzz::point3<T>(in));
            } break;
            case 1: {
                // A rotation matrix from a quaternion, then a scale per column.
                math::Cmatrix<T> m = math::quaternionToMatrix(quaternion<T>(in));
                for (std::size_t j = 0; j < 3; ++j) {
                    T const s = in.real<T>();
                    for (std::size_t i = 0; i < 3; ++i) {
                        m(i, j) *= s;
                    }
                }
                prm.setRotation(m);
                break;
            }
            case 2: {
                std::size_t const m = in.u8() % 6;
                std::size_t const n = in.flag() ? m : in.u8() % 6;
                auto const a = matrix<T>(in, m, n);
                prm = math::CtransPrm3<T>(a, fuzz::point3<T>(in));
                break;
            }
            default: {
                math::Cmatrix<T> m = matrix<T>(in, 4, 4);
                if (in.flag()) {
                    m(3, 0) = m(3, 1) = m(3, 2) = T(0);
                    m(3, 3) = T(1);
                }
                prm.setNewPrm(m);
                break;
            }
        }
    } catch (CthrowBase const&) {
    }
    prm.setTranslation(fuzz::point3<T>(in));
    if (in.u8() % 8 == 0) {
        prm.setScale(fuzz::point3<T>(in));
    }
    (void)prm.getArc();
    (void)prm.getAxis();
    (void)prm.get4x4Matrix();
    (void)prm.get4x4reMatrix();
    prm.transform(pts, out);
    prm.retransform(out, out);
    if (!pts.empty()) {
        prm.transform(pts[0], q);
        prm.retransform(q, q);
    }
    std::size_t const m = in.u8() % 6;
    std::size_t const n = in.flag() ? m : in.u8() % 6;
    math::Cmatrix<T> const r = matrix<T>(in, m, n);
    (void)math::matrixToQuaternion(r);
    auto const c = fuzz::point3<T>(in);
    try {
        std::vector<math::Cpoint3<T>> w(pts);
        math::Ctransformer<T>::transformTo(r, w, c);
        math::Ctransformer<T>::transformFrom(r, w, out, c);
    } catch (CthrowBase const&) {
    }
    std::vector<math::Cpoint3<T>> w(pts);
    auto const qu = quaternion<T>(in);
    math::Ctransformer<T>::transformTo(qu, w, c);
    math::Ctransformer<T>::transformFrom(qu, w, out, c);
}

template <typename T>
void plane(fuzz::Input& in) {
    auto const src = fuzz::points2<T>(in, 60);
    std::vector<math::Cpoint2<T>> dst;
    if (in.flag()) {
        // Mostly a transformed copy, so the estimate has something to find.
        T const rot = in.real<T>();
        math::Cpoint2<T> const t = fuzz::point2<T>(in);
        math::Cpoint2<T> const s = fuzz::point2<T>(in);
        math::CtransPrm2<T> const prm(rot, t, s);
        prm.transform(src, dst);
        for (int k = dst.empty() ? 0 : in.u8() % 3; k > 0; --k) {
            dst[in.u8() % dst.size()][in.u8() % 2] = in.real<T>();
        }
    } else {
        dst = fuzz::points2<T>(in, 60);
    }
    math::CtransPrm2<T> prm;
    try {
        if (in.flag()) {
            math::Ctrans2_Helmert<T> h;
            h.setAll(src, dst);
            prm = h.transform();
        } else {
            math::Ctrans2_Affine<T> a;
            a.setAll(src, dst);
            prm = a.transform();
        }
    } catch (typename math::Ctrans2_Basic<T>::xNotInitialized const&) {
    } catch (typename math::Ctrans2_Basic<T>::xArgumentMismatch const&) {
    } catch (typename math::Ctrans2_Basic<T>::xNotSolved const&) {
    }
    std::vector<math::Cpoint2<T>> out;
    prm.transform(src, out);
    prm.retransform(out, out);
    math::Cpoint2<T> q;
    if (!src.empty()) {
        prm.transform(src[0], q);
        prm.retransform(q, q);
        (void)prm.getTransFunctor()(src[0]);
        (void)prm.getReTransFunctor()(src[0]);
    }
    (void)prm.getRot_Matrix();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz::Input in(data, size);
    switch (in.u8() % 4) {
        case 0:
            space<float>(in);
            break;
        case 1:
            space<double>(in);
            break;
        case 2:
            plane<float>(in);
            break;
        default:
            plane<double>(in);
            break;
    }
    return 0;
}
