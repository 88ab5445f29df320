// Linear solvers (Gauss-Jordan, LU, SVD) and CmatrixCalc, in float and double.
//
// Shapes: the solvers check their shapes themselves and throw, so any m × n up to 9 × 9 and any
// right-hand side goes in (their exceptions are caught). CmatrixCalc gets what its callers pass:
// square symmetric matrices for the eigen routines (any size up to 9; the 2 × 2 routine gets
// any shape, it checks), 3 × 3 / 4 × 4 for getRotScale, any shape for dif and the rotation
// angle readers (which throw on a wrong size). solveItr gets the matrix the solver was set up
// with, as its contract requires.
#include <math/matrix.h>
#include <math/matrix_calc.h>
#include <math/solver_le.h>

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
math::Cmatrix<T> symmetric(fuzz::Input& in, std::size_t n) {
    math::Cmatrix<T> a(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = i; j < n; ++j) {
            a(i, j) = in.real<T>();
            a(j, i) = a(i, j);
        }
    }
    return a;
}

template <typename T>
void solvers(fuzz::Input& in) {
    std::size_t const m = in.u8() % 10;
    std::size_t const n = in.flag() ? m : in.u8() % 10;
    math::Cmatrix<T> const a = matrix<T>(in, m, n);
    std::size_t const bm = in.flag() ? m : in.u8() % 10;
    std::size_t const bn = in.u8() % 4;
    math::Cmatrix<T> const b = matrix<T>(in, bm, bn);
    std::vector<T> bv(bm);
    for (auto& v : bv) {
        v = in.real<T>();
    }
    unsigned const kind = in.u8() % 3;
    try {
        if (kind == 0) {
            math::Csolver_GaussJordan<T> s(a);
            (void)s.solve(b);
            (void)s.solve(bv);
            (void)s.invert();
            (void)s.solveItr(a, b);
        } else if (kind == 1) {
            math::Csolver_luDecomp<T> s(a);
            (void)s.getDet();
            (void)s.solve(b);
            (void)s.solve(bv);
            (void)s.invert();
            (void)s.solveItr(a, b);
        } else {
            math::Csolver_svd<T> s(a);
            math::Cmatrix<T> const x = s.solve(b);
            (void)s.deviation(a, x, b);
            (void)s.solve(bv);
            (void)s.invert();
            (void)s.solveItr(a, b);
            math::Csolver_svd<T> moved{math::Cmatrix<T>(a)};
            (void)moved.solve(bv);
        }
    } catch (CthrowBase const&) {
    }
}

template <typename T>
void matrixCalc(fuzz::Input& in) {
    using C = math::CmatrixCalc<T>;
    switch (in.u8() % 6) {
        case 0: {
            std::size_t const n = in.u8() % 10;
            math::Cmatrix<T> a = symmetric<T>(in, n);
            math::Cmatrix<T> v;
            try {
                C::getEigenvalue(a, v);
            } catch (CthrowBase const&) {
            }
            break;
        }
        case 1: {
            std::size_t const n = in.u8() % 10;
            math::Cmatrix<T> a = symmetric<T>(in, n);
            math::Cmatrix<T> v(n, n);
            v.setIdentity();
            try {
                C::QR_TriDiag(a, v);
                C::DiagTri(a, v);
                math::Cmatrix<T> s;
                C::sortDiagonal(a, s);
            } catch (CthrowBase const&) {
            }
            break;
        }
        case 2: {
            std::size_t const m = in.u8() % 4;
            std::size_t const n = in.u8() % 4;
            math::Cmatrix<T> a = matrix<T>(in, m, n);
            math::Cmatrix<T> v;
            C::getEigenvalue2x2sym(a, v);
            math::Cmatrix<T> b = symmetric<T>(in, 2);
            C::getEigenvalue2x2sym(b, v);
            break;
        }
        case 3: {
            std::size_t const n = in.flag() ? 4 : 3;
            math::Cmatrix<T> const m = matrix<T>(in, n, n);
            math::Cmatrix<T> r, s;
            C::getRotScale(m, r, s);
            break;
        }
        case 4: {
            T const a = in.real<T>(), b = in.real<T>(), c = in.real<T>();
            math::Cmatrix<T> r;
            T x, y, z;
            C::ArcToRotCAP(a, b, c, r);
            C::RotToArcCAP(r, x, y, z);
            C::ArcToRotXYZ(a, b, c, r);
            C::RotToArcXYZ(r, x, y, z);
            C::ArcToRotCAP_transp(a, b, c, r);
            C::RotToArcCAP_transp(r, x, y, z);
            C::ArcToRotZYX(a, b, c, r);
            C::ArcToRotZXZ(a, b, c, r);
            C::RotToArcZXZ(r, x, y, z);
            break;
        }
        default: {
            std::size_t const m = in.u8() % 6;
            std::size_t const n = in.u8() % 6;
            math::Cmatrix<T> const r = matrix<T>(in, m, n);
            math::Cmatrix<T> const r2 = matrix<T>(in, in.flag() ? m : n, n);
            (void)C::dif(r, r2);
            T x, y, z;
            try {
                switch (in.u8() % 4) {
                    case 0:
                        C::RotToArcCAP(r, x, y, z);
                        break;
                    case 1:
                        C::RotToArcCAP_transp(r, x, y, z);
                        break;
                    case 2:
                        C::RotToArcXYZ(r, x, y, z);
                        break;
                    default:
                        C::RotToArcZXZ(r, x, y, z);
                        break;
                }
            } catch (CthrowBase const&) {
            }
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz::Input in(data, size);
    unsigned const sel = in.u8();
    if (sel & 1) {
        (sel & 2) ? solvers<double>(in) : solvers<float>(in);
    } else {
        (sel & 2) ? matrixCalc<double>(in) : matrixCalc<float>(in);
    }
    return 0;
}
