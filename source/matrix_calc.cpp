#include "math/matrix_calc.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "math/solver_le.h"

namespace math {

namespace {

// Origin recorded with the iteration error of the tridiagonal QL algorithm.
constexpr char kTriDiagOrigin[] = "source\\math_solver_le";
constexpr int kTriDiagLine = 497;

template <typename T>
bool isSquare3or4(Cmatrix<T> const& r) {
    return r.m() == r.n() && (r.m() == 3 || r.m() == 4);
}

template <typename T>
void checkRotationShape(Cmatrix<T> const& r) {
    if (!isSquare3or4(r)) {
        CthrowMath err(CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
        err << r.m() << r.n();
        throw err;
    }
}

}  // namespace

template <typename T>
T CmatrixCalc<T>::dif(Cmatrix<T> const& a, Cmatrix<T> const& b) {
    if (a.m() != b.m() || a.n() != b.n()) {
        return std::numeric_limits<T>::infinity();
    }
    // sum_{k=0}^{size-2} (A_k - B_k)^2: the last element is deliberately not included.
    T s = T(0);
    std::size_t const count = a.size();
    T const* pa = a.getBase();
    T const* pb = b.getBase();
    for (std::size_t k = 0; k + 1 < count; ++k) {
        T const d = pa[k] - pb[k];
        s += d * d;
    }
    return s;
}

// Jacobi rotation of [[a, b], [b, d]]: t = (a - (sqrt((a - d)^2/4 + b^2) + (a + d)/2)) / b,
// c = 1 / sqrt(t^2 + 1), s = -t c, V = [[c, s], [-s, c]], A' = V A V^T.
template <typename T>
void CmatrixCalc<T>::getEigenvalue2x2sym(Cmatrix<T>& a, Cmatrix<T>& v) {
    T const eps = std::numeric_limits<T>::epsilon();
    if (a.m() != 2 || a.n() != 2 || !(std::fabs(a(0, 1) - a(1, 0)) < eps)) {
        return;
    }
    if (v.m() != 2 || v.n() != 2) {
        v = Cmatrix<T>(2, 2);
    }
    if (std::fabs(a(0, 1)) < eps) {
        v.setIdentity();
        if (a(0, 1) == T(0)) {
            // Already diagonal; the rotation below would divide by zero.
            return;
        }
    }
    T const av = a(0, 0);
    T const b = a(0, 1);
    T const d = a(1, 1);
    T const t = (av - (std::sqrt((av - d) * (av - d) * T(0.25) + b * b) + (av + d) * T(0.5))) / b;
    T const c = T(1) / std::sqrt(t * t + T(1));
    T const s = -t * c;
    v(0, 0) = c;
    v(0, 1) = s;
    v(1, 0) = -s;
    v(1, 1) = c;
    a(0, 0) = c * c * av + T(2) * c * s * b + s * s * d;
    a(0, 1) = (d - av) * s * c + (c * c - s * s) * b;
    a(1, 0) = a(0, 1);
    a(1, 1) = s * s * av - T(2) * c * s * b + c * c * d;
}

template <typename T>
void CmatrixCalc<T>::getEigenvalue(Cmatrix<T>& a, Cmatrix<T>& v) {
    if (a.m() != a.n()) {
        return;
    }
    QR_TriDiag(a, v);
    DiagTri(a, v);
    Cmatrix<T> s;
    sortDiagonal(a, s);
    v = s * v;
    a = (s * a) * s.transp();
}

// Householder tridiagonalisation (Numerical Recipes 11.2, tred2) on a working copy Q of A:
// for i = n-1 down to 1 the row i left of the subdiagonal is reflected away, then the
// reflections are accumulated. Afterwards Q^T A Q = tridiag(d, e); A receives the tridiagonal
// matrix and V = Q^T (the basis vectors in its rows).
template <typename T>
void CmatrixCalc<T>::QR_TriDiag(Cmatrix<T>& a, Cmatrix<T>& v) {
    if (a.m() != a.n()) {
        return;
    }
    std::size_t const n = a.m();
    Cmatrix<T> q(a);
    T* const z = q.getBase();
    auto Z = [z, n](std::size_t r, std::size_t c) -> T& { return z[r * n + c]; };
    std::vector<T> d(n);
    std::vector<T> e(n);
    for (std::size_t i = n; i-- > 1;) {
        std::size_t const l = i - 1;
        T h = T(0);
        if (l > 0) {
            T scale = T(0);
            for (std::size_t k = 0; k <= l; ++k) {
                scale += std::fabs(Z(i, k));
            }
            if (scale == T(0)) {
                e[i] = Z(i, l);
            } else {
                for (std::size_t k = 0; k <= l; ++k) {
                    Z(i, k) /= scale;
                    h += Z(i, k) * Z(i, k);
                }
                T f = Z(i, l);
                T g = f >= T(0) ? -std::sqrt(h) : std::sqrt(h);
                e[i] = scale * g;
                h -= f * g;
                Z(i, l) = f - g;
                f = T(0);
                for (std::size_t j = 0; j <= l; ++j) {
                    Z(j, i) = Z(i, j) / h;
                    g = T(0);
                    for (std::size_t k = 0; k <= j; ++k) {
                        g += Z(j, k) * Z(i, k);
                    }
                    for (std::size_t k = j + 1; k <= l; ++k) {
                        g += Z(k, j) * Z(i, k);
                    }
                    e[j] = g / h;
                    f += e[j] * Z(i, j);
                }
                T const hh = f / (h + h);
                for (std::size_t j = 0; j <= l; ++j) {
                    f = Z(i, j);
                    g = e[j] - hh * f;
                    e[j] = g;
                    for (std::size_t k = 0; k <= j; ++k) {
                        Z(j, k) -= (f * e[k] + g * Z(i, k));
                    }
                }
            }
        } else {
            e[i] = Z(i, l);
        }
        d[i] = h;
    }
    if (n > 0) {
        d[0] = T(0);
        e[0] = T(0);
    }
    // Accumulate the transformations.
    for (std::size_t i = 0; i < n; ++i) {
        if (d[i] != T(0)) {
            for (std::size_t j = 0; j < i; ++j) {
                T g = T(0);
                for (std::size_t k = 0; k < i; ++k) {
                    g += Z(i, k) * Z(k, j);
                }
                for (std::size_t k = 0; k < i; ++k) {
                    Z(k, j) -= g * Z(k, i);
                }
            }
        }
        d[i] = Z(i, i);
        Z(i, i) = T(1);
        for (std::size_t j = 0; j < i; ++j) {
            Z(j, i) = T(0);
            Z(i, j) = T(0);
        }
    }
    // A = tridiag(d, e) with e[i] coupling i-1 and i; V = Q^T.
    T* const t = a.getBase();
    for (std::size_t k = 0; k < n * n; ++k) {
        t[k] = T(0);
    }
    for (std::size_t i = 0; i < n; ++i) {
        a(i, i) = d[i];
        if (i > 0) {
            a(i, i - 1) = e[i];
            a(i - 1, i) = e[i];
        }
    }
    v = q.transp();
}

// Implicit-shift QL iteration on the symmetric tridiagonal A (Numerical Recipes 11.3, tqli).
// An off-diagonal element is negligible when |e_m| + (|d_m| + |d_m+1|) == |d_m| + |d_m+1| in T.
// Each rotation is applied to two rows of V. After 30 sweeps without a split for one
// eigenvalue the iteration gives up (this also ends the loop on NaN input).
template <typename T>
void CmatrixCalc<T>::DiagTri(Cmatrix<T>& a, Cmatrix<T>& v) {
    if (a.m() != a.n()) {
        CthrowMatrixCalc err(CthrowMatrixCalc::ERR_SOLVE_NOTSQUAREMATRIX, std::c_empty);
        throw err;
    }
    std::size_t const n = a.m();
    if (v.m() != n || v.n() != n) {
        v = Cmatrix<T>(n, n);
        v.setIdentity();
    }
    if (n == 0) {
        return;
    }
    using N = std::vector<T>;
    N d(n);
    N e(n);
    for (std::size_t i = 0; i < n; ++i) {
        d[i] = a(i, i);
        e[i] = i + 1 < n ? a(i + 1, i) : T(0);  // e[i] couples i and i+1
    }
    T* const vb = v.getBase();
    for (std::size_t l = 0; l < n; ++l) {
        int iter = 0;
        std::size_t m = l;
        do {
            for (m = l; m + 1 < n; ++m) {
                T const dd = std::fabs(d[m]) + std::fabs(d[m + 1]);
                if (std::fabs(e[m]) + dd == dd) {
                    break;
                }
            }
            if (m != l) {
                if (iter++ == 30) {
                    CthrowMatrixCalc err(CthrowMatrixCalc::ERR_TRIDIAG_ITERATION, std::c_empty);
                    err.setExInfo(kTriDiagOrigin, kTriDiagLine);
                    throw err;
                }
                T g = (d[l + 1] - d[l]) / (T(2) * e[l]);
                T r = cNRB_math<T>::pythag(g, T(1));
                g = d[m] - d[l] + e[l] / (g + cNRB_math<T>::setSignof(r, g));
                T s = T(1);
                T c = T(1);
                T p = T(0);
                bool underflow = false;
                for (std::size_t i = m; i-- > l;) {
                    T f = s * e[i];
                    T const b = c * e[i];
                    r = cNRB_math<T>::pythag(f, g);
                    e[i + 1] = r;
                    if (r == T(0)) {
                        // Recover from underflow.
                        d[i + 1] -= p;
                        e[m] = T(0);
                        underflow = true;
                        break;
                    }
                    s = f / r;
                    c = g / r;
                    g = d[i + 1] - p;
                    r = (d[i] - g) * s + T(2) * c * b;
                    p = s * r;
                    d[i + 1] = g + p;
                    g = c * r - b;
                    // Rows i and i+1 of V.
                    T* const vi = vb + i * n;
                    T* const vi1 = vb + (i + 1) * n;
                    for (std::size_t k = 0; k < n; ++k) {
                        f = vi1[k];
                        vi1[k] = s * vi[k] + c * f;
                        vi[k] = c * vi[k] - s * f;
                    }
                }
                if (underflow) {
                    continue;
                }
                d[l] -= p;
                e[l] = g;
                e[m] = T(0);
            }
        } while (m != l);
    }
    T* const t = a.getBase();
    for (std::size_t k = 0; k < n * n; ++k) {
        t[k] = T(0);
    }
    for (std::size_t i = 0; i < n; ++i) {
        a(i, i) = d[i];
    }
}

// S (n × n) with S[r][i] = 1 when A_ii is the r-th largest in absolute value; among equal
// magnitudes the lower index comes first.
template <typename T>
void CmatrixCalc<T>::sortDiagonal(Cmatrix<T>& a, Cmatrix<T>& s) {
    if (a.m() != a.n()) {
        return;
    }
    std::size_t const n = a.m();
    s = Cmatrix<T>(n, n, T(0));
    std::vector<std::pair<T, std::size_t>> entries;
    entries.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        entries.emplace_back(a(i, i), i);
    }
    for (std::size_t r = 0; r < n; ++r) {
        auto best = entries.begin();
        for (auto it = std::next(best); it != entries.end(); ++it) {
            if (std::fabs(it->first) > std::fabs(best->first)) {
                best = it;
            }
        }
        s(r, best->second) = T(1);
        entries.erase(best);
    }
}

template <typename T>
void CmatrixCalc<T>::getRotScale(Cmatrix<T> const& m, Cmatrix<T>& r, Cmatrix<T>& s) {
    if (!isSquare3or4(m)) {
        return;
    }
    r = Cmatrix<T>(3, 3, T(0));
    s = Cmatrix<T>(3, 3, T(0));
    for (std::size_t j = 0; j < 3; ++j) {
        s(j, j) = std::sqrt(m(0, j) * m(0, j) + m(1, j) * m(1, j) + m(2, j) * m(2, j));
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            r(i, j) = m(i, j) / s(j, j);
        }
    }
}

namespace {

template <typename T>
void setRot(Cmatrix<T>& r, T r00, T r01, T r02, T r10, T r11, T r12, T r20, T r21, T r22) {
    if (r.m() != 3 || r.n() != 3) {
        r = Cmatrix<T>(3, 3);
    }
    r(0, 0) = r00;
    r(0, 1) = r01;
    r(0, 2) = r02;
    r(1, 0) = r10;
    r(1, 1) = r11;
    r(1, 2) = r12;
    r(2, 0) = r20;
    r(2, 1) = r21;
    r(2, 2) = r22;
}

}  // namespace

template <typename T>
void CmatrixCalc<T>::ArcToRotCAP(T const& a, T const& b, T const& c, Cmatrix<T>& r) {
    T const ca = std::cos(a), sa = std::sin(a);
    T const cb = std::cos(b), sb = std::sin(b);
    T const cc = std::cos(c), sc = std::sin(c);
    setRot(r, cc * cb, sb * sa * cc + sc * ca, sc * sa - sb * ca * cc,  //
           -sc * cb, cc * ca - sb * sa * sc, sb * ca * sc + cc * sa,    //
           sb, -cb * sa, cb * ca);
}

template <typename T>
void CmatrixCalc<T>::ArcToRotXYZ(T const& a, T const& b, T const& c, Cmatrix<T>& r) {
    T const ca = std::cos(a), sa = std::sin(a);
    T const cb = std::cos(b), sb = std::sin(b);
    T const cc = std::cos(c), sc = std::sin(c);
    setRot(r, cc * cb, -sc * cb, sb,                                  //
           sb * sa * cc + sc * ca, cc * ca - sb * sa * sc, -cb * sa,  //
           sc * sa - sb * ca * cc, sb * ca * sc + cc * sa, cb * ca);
}

template <typename T>
void CmatrixCalc<T>::ArcToRotCAP_transp(T const& a, T const& b, T const& c, Cmatrix<T>& r) {
    ArcToRotXYZ(a, b, c, r);
}

template <typename T>
void CmatrixCalc<T>::ArcToRotZYX(T const& a, T const& b, T const& c, Cmatrix<T>& r) {
    T const ca = std::cos(a), sa = std::sin(a);
    T const cb = std::cos(b), sb = std::sin(b);
    T const cc = std::cos(c), sc = std::sin(c);
    setRot(r, cc * cb, sb * sa * cc - sc * ca, sb * ca * cc + sc * sa,  //
           sc * cb, sb * sa * sc + cc * ca, sb * ca * sc - cc * sa,     //
           -sb, cb * sa, cb * ca);
}

template <typename T>
void CmatrixCalc<T>::ArcToRotZXZ(T const& a, T const& b, T const& c, Cmatrix<T>& r) {
    T const ca = std::cos(a), sa = std::sin(a);
    T const cb = std::cos(b), sb = std::sin(b);
    T const cc = std::cos(c), sc = std::sin(c);
    setRot(r, cc * ca - cb * sa * sc, -sc * ca - cb * sa * cc, sb * sa,  //
           cb * ca * sc + cc * sa, cb * ca * cc - sc * sa, -sb * ca,     //
           sc * sb, cc * sb, cb);
}

// b = asin(R20), c = atan2(-R10, R00), a = atan2(k1 R12 + k2 R02, k1 R11 + k2 R01) with
// k1 = cos c, k2 = sin c; written in the order b, c, a.
template <typename T>
void CmatrixCalc<T>::RotToArcCAP(Cmatrix<T> const& r, T& a, T& b, T& c) {
    checkRotationShape(r);
    T const bb = std::asin(r(2, 0));
    T const cc = std::atan2(-r(1, 0), r(0, 0));
    T const k1 = std::cos(cc);
    T const k2 = std::sin(cc);
    T const aa = std::atan2(k1 * r(1, 2) + k2 * r(0, 2), k1 * r(1, 1) + k2 * r(0, 1));
    b = bb;
    c = cc;
    a = aa;
}

// b = asin(R02), c = atan2(-R01, R00), a = atan2(k1 R21 + k2 R20, k1 R11 + k2 R10).
template <typename T>
void CmatrixCalc<T>::RotToArcCAP_transp(Cmatrix<T> const& r, T& a, T& b, T& c) {
    checkRotationShape(r);
    T const bb = std::asin(r(0, 2));
    T const cc = std::atan2(-r(0, 1), r(0, 0));
    T const k1 = std::cos(cc);
    T const k2 = std::sin(cc);
    T const aa = std::atan2(k1 * r(2, 1) + k2 * r(2, 0), k1 * r(1, 1) + k2 * r(1, 0));
    b = bb;
    c = cc;
    a = aa;
}

// As RotToArcCAP_transp, but the first argument for a is k2 R21 + k1 R20: the factors are
// exchanged, so for c != 0 this does not invert ArcToRotXYZ. Kept as it is.
template <typename T>
void CmatrixCalc<T>::RotToArcXYZ(Cmatrix<T> const& r, T& a, T& b, T& c) {
    checkRotationShape(r);
    T const bb = std::asin(r(0, 2));
    T const cc = std::atan2(-r(0, 1), r(0, 0));
    T const k1 = std::cos(cc);
    T const k2 = std::sin(cc);
    T const aa = std::atan2(k2 * r(2, 1) + k1 * r(2, 0), k1 * r(1, 1) + k2 * r(1, 0));
    b = bb;
    c = cc;
    a = aa;
}

// b = acos(R22), c = atan2(R20, R21), a = atan2(k1 R11 - k2 R11, k1 R00 - k2 R01): the first
// argument uses R11 in both products, so this does not invert ArcToRotZXZ. Kept as it is.
template <typename T>
void CmatrixCalc<T>::RotToArcZXZ(Cmatrix<T> const& r, T& a, T& b, T& c) {
    checkRotationShape(r);
    T const bb = std::acos(r(2, 2));
    T const cc = std::atan2(r(2, 0), r(2, 1));
    T const k1 = std::cos(cc);
    T const k2 = std::sin(cc);
    T const aa = std::atan2(k1 * r(1, 1) - k2 * r(1, 1), k1 * r(0, 0) - k2 * r(0, 1));
    b = bb;
    c = cc;
    a = aa;
}

#define MGEO_MATRIX_CALC_DEFINE(T) MGEO_MATRIX_CALC_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_MATRIX_CALC_DEFINE)

}  // namespace math
