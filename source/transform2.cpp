// 2D transformation parameters and the Helmert and affine estimates.
#include "math/transform2.h"

#include <math/solver_le.h>

#include <cmath>

namespace math {

namespace {

// pi/2, the angle returned when the arctangent's denominator is 0.
template <typename T>
constexpr T kHalfPi = T(1.5707963267948966);

// atan(num / den), or pi/2 when den is 0.
template <typename T>
T angleOf(T num, T den) {
    return den != T(0) ? std::atan(num / den) : kHalfPi<T>;
}

// A^T A and A^T l, then the LU solution of the normal equations.
template <typename T>
Cmatrix<T> solveNormalEquations(Cmatrix<T> const& a, Cmatrix<T> const& l) {
    Cmatrix<T> const at = a.transp();
    Cmatrix<T> const n = at * a;
    Cmatrix<T> const rhs = at * l;
    Csolver_luDecomp<T> solver(n);
    return solver.solve(rhs);
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// CtransPrm2

template <typename T>
CtransPrm2<T>::CtransPrm2()
    : m_rotX(T(0)), m_rotY(T(0)), m_translation(T(0), T(0)), m_scale(T(1), T(1)) {}

template <typename T>
CtransPrm2<T>::CtransPrm2(T rot, Cpoint2<T> const& t, Cpoint2<T> const& s)
    : m_rotX(rot), m_rotY(rot), m_translation(t), m_scale(s) {}

template <typename T>
CtransPrm2<T>::CtransPrm2(T rotX, T rotY, Cpoint2<T> const& t, Cpoint2<T> const& s)
    : m_rotX(rotX), m_rotY(rotY), m_translation(t), m_scale(s) {}

template <typename T>
void CtransPrm2<T>::setRotation(T rot) {
    m_rotX = rot;
    m_rotY = rot;
}

template <typename T>
void CtransPrm2<T>::setRotation(T rotX, T rotY) {
    m_rotX = rotX;
    m_rotY = rotY;
}

template <typename T>
Cmatrix<T> CtransPrm2<T>::getRot_Matrix() const {
    Cmatrix<T> r(2, 2);
    r(0, 0) = std::cos(m_rotX);
    r(0, 1) = -std::sin(m_rotX);
    r(1, 0) = std::sin(m_rotY);
    r(1, 1) = std::cos(m_rotY);
    return r;
}

template <typename T>
typename CtransPrm2<T>::TransFunctor CtransPrm2<T>::getTransFunctor() const {
    return TransFunctor(*this);
}

template <typename T>
typename CtransPrm2<T>::ReTransFunctor CtransPrm2<T>::getReTransFunctor() const {
    return ReTransFunctor(*this);
}

template <typename T>
void CtransPrm2<T>::transform(Cpoint2<T> const& p, Cpoint2<T>& q) const {
    T const sx = m_scale.x;
    T const sy = m_scale.y;
    // x' uses x in both terms (see the class comment).
    T const x = sx * std::cos(m_rotX) * p.x - sx * std::sin(m_rotX) * p.x + m_translation.x;
    T const y = sy * std::sin(m_rotY) * p.x + sy * std::cos(m_rotY) * p.y + m_translation.y;
    q = Cpoint2<T>(x, y);
}

template <typename T>
void CtransPrm2<T>::transform(std::vector<Cpoint2<T>> const& in,
                              std::vector<Cpoint2<T>>& out) const {
    out.resize(in.size());
    T const sx = m_scale.x;
    T const sy = m_scale.y;
    T const cx = std::cos(m_rotX);
    T const sinX = std::sin(m_rotX);
    T const sinY = std::sin(m_rotY);
    T const cy = std::cos(m_rotY);
    for (std::size_t i = 0; i < in.size(); ++i) {
        Cpoint2<T> const p = in[i];
        // x' = sx cos(rotX) x - sx sin(rotX) y + tx; y' = sy sin(rotY) x + sy cos(rotY) y + ty
        out[i] = Cpoint2<T>(sx * cx * p.x - sx * sinX * p.y + m_translation.x,
                            sy * sinY * p.x + sy * cy * p.y + m_translation.y);
    }
}

template <typename T>
void CtransPrm2<T>::retransform(Cpoint2<T> const& q, Cpoint2<T>& p) const {
    T const u = q.x - m_translation.x;
    T const v = q.y - m_translation.y;
    T const sx = m_scale.x;
    T const sy = m_scale.y;
    p = Cpoint2<T>(std::cos(m_rotX) / sx * u + std::sin(m_rotX) / sy * v,
                   -std::sin(m_rotY) / sx * u + std::cos(m_rotY) / sy * v);
}

template <typename T>
void CtransPrm2<T>::retransform(std::vector<Cpoint2<T>> const& in,
                                std::vector<Cpoint2<T>>& out) const {
    out.resize(in.size());
    for (std::size_t i = 0; i < in.size(); ++i) {
        Cpoint2<T> const q = in[i];
        retransform(q, out[i]);
    }
}

template <typename T>
Cpoint2<T> CtransPrm2<T>::TransFunctor::operator()(Cpoint2<T> const& p) const {
    Cpoint2<T> q;
    m_prm.transform(p, q);
    return q;
}

template <typename T>
Cpoint2<T> CtransPrm2<T>::ReTransFunctor::operator()(Cpoint2<T> const& p) const {
    Cpoint2<T> q;
    m_prm.retransform(p, q);
    return q;
}

// ---------------------------------------------------------------------------------------------
// Ctrans2_Basic

template <typename T>
Ctrans2_Basic<T>::~Ctrans2_Basic() = default;

template <typename T>
void Ctrans2_Basic<T>::setSource(std::vector<Cpoint2<T>> const& src) {
    m_nSource = src.size();
    m_sourceSet = true;
}

template <typename T>
void Ctrans2_Basic<T>::setDest(std::vector<Cpoint2<T>> const& dst) {
    m_nDest = dst.size();
    m_destSet = true;
}

template <typename T>
void Ctrans2_Basic<T>::setAll(std::vector<Cpoint2<T>> const& src,
                              std::vector<Cpoint2<T>> const& dst) {
    setSource(src);
    setDest(dst);
}

template <typename T>
void Ctrans2_Basic<T>::checkInput() const {
    if (!m_sourceSet || !m_destSet) {
        throw xNotInitialized();
    }
    if (m_nSource != m_nDest) {
        throw xArgumentMismatch();
    }
}

// ---------------------------------------------------------------------------------------------
// Ctrans2_Helmert

template <typename T>
Ctrans2_Helmert<T>::~Ctrans2_Helmert() = default;

template <typename T>
void Ctrans2_Helmert<T>::setSource(std::vector<Cpoint2<T>> const& src) {
    Ctrans2_Basic<T>::setSource(src);
    Cmatrix<T> a(2 * src.size(), 4);
    for (std::size_t i = 0; i < src.size(); ++i) {
        T const x = src[i].x;
        T const y = src[i].y;
        T* r0 = a.getRow(2 * i);
        T* r1 = a.getRow(2 * i + 1);
        r0[0] = T(1);
        r0[1] = T(0);
        r0[2] = x;
        r0[3] = -y;
        r1[0] = T(0);
        r1[1] = T(1);
        r1[2] = y;
        r1[3] = x;
    }
    m_design = a;
}

template <typename T>
void Ctrans2_Helmert<T>::setDest(std::vector<Cpoint2<T>> const& dst) {
    Ctrans2_Basic<T>::setDest(dst);
    Cmatrix<T> l(2 * dst.size(), 1);
    for (std::size_t i = 0; i < dst.size(); ++i) {
        l(2 * i, 0) = dst[i].x;
        l(2 * i + 1, 0) = dst[i].y;
    }
    m_observation = l;
}

template <typename T>
CtransPrm2<T> Ctrans2_Helmert<T>::transform() {
    this->checkInput();
    CtransPrm2<T> result;
    try {
        m_solution = solveNormalEquations(m_design, m_observation);
    } catch (...) {
        throw typename Ctrans2_Basic<T>::xNotSolved();
    }
    T const a = m_solution(2, 0);
    T const b = m_solution(3, 0);
    T const scale = std::sqrt(a * a + b * b);
    result.setTranslation(m_solution(0, 0), m_solution(1, 0));
    result.setScale(scale, scale);
    result.setRotation(angleOf(b, a));
    return result;
}

// ---------------------------------------------------------------------------------------------
// Ctrans2_Affine

template <typename T>
Ctrans2_Affine<T>::~Ctrans2_Affine() = default;

template <typename T>
void Ctrans2_Affine<T>::setSource(std::vector<Cpoint2<T>> const& src) {
    Ctrans2_Basic<T>::setSource(src);
    Cmatrix<T> ax(src.size(), 3);
    Cmatrix<T> ay(src.size(), 3);
    for (std::size_t i = 0; i < src.size(); ++i) {
        T const x = src[i].x;
        T const y = src[i].y;
        ax(i, 0) = T(1);
        ax(i, 1) = x;
        ax(i, 2) = -y;
        ay(i, 0) = T(1);
        ay(i, 1) = y;
        ay(i, 2) = x;
    }
    m_designX = ax;
    m_designY = ay;
}

template <typename T>
void Ctrans2_Affine<T>::setDest(std::vector<Cpoint2<T>> const& dst) {
    Ctrans2_Basic<T>::setDest(dst);
    Cmatrix<T> ox(dst.size(), 1);
    Cmatrix<T> oy(dst.size(), 1);
    for (std::size_t i = 0; i < dst.size(); ++i) {
        ox(i, 0) = dst[i].x;
        oy(i, 0) = dst[i].y;
    }
    m_obsX = ox;
    m_obsY = oy;
}

template <typename T>
CtransPrm2<T> Ctrans2_Affine<T>::transform() {
    this->checkInput();
    CtransPrm2<T> result;
    try {
        m_px = solveNormalEquations(m_designX, m_obsX);
        m_py = solveNormalEquations(m_designY, m_obsY);
    } catch (...) {
        throw typename Ctrans2_Basic<T>::xNotSolved();
    }
    T const px1 = m_px(1, 0);
    T const px2 = m_px(2, 0);
    T const py1 = m_py(1, 0);
    T const py2 = m_py(2, 0);
    result.setTranslation(m_px(0, 0), m_py(0, 0));
    result.setScale(std::sqrt(px1 * px1 + py2 * py2), std::sqrt(px2 * px2 + py1 * py1));
    result.setRotation(angleOf(py2, px1), angleOf(px2, py1));
    return result;
}

#define MGEO_TRANSFORM2_DEFINE(T) MGEO_TRANSFORM2_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_TRANSFORM2_DEFINE)

}  // namespace math
