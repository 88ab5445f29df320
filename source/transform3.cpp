// 3D transformation parameters, quaternion conversions and frame changes.
#include "math/transform3.h"

#include <math/exceptions.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace math {

namespace {

// Machine epsilon of T, the threshold of the trace branch of matrixToQuaternion.
template <typename T>
constexpr T kTraceEps = std::numeric_limits<T>::epsilon();

// Clamps r to [-1, 1] in two comparisons: 1 unless 1 > r, then -1 unless r > -1. A NaN element
// fails the first comparison and becomes 1.
template <typename T>
T clampUnit(T r) {
    if (!(T(1) > r)) {
        r = T(1);
    }
    if (!(r > T(-1))) {
        r = T(-1);
    }
    return r;
}

// The tolerance of the rotation test, 2^-15 for both types, set once on first use (a
// function-local static: its initialisation is thread-safe and always gives the same value).
template <typename T>
T rotationTestTolerance() {
    static T const kTolerance = std::ldexp(T(1), -15);
    return kTolerance;
}

// a ≈ b  <=>  b + eps (1 + |b|) > a  and  a + eps (1 + |a|) > b, both strict.
template <typename T>
bool rotationEqual(T a, T b) {
    T const eps = rotationTestTolerance<T>();
    return b + eps * (T(1) + std::fabs(b)) > a && a + eps * (T(1) + std::fabs(a)) > b;
}

// The rotation test on the upper-left 3 × 3 of m: det(R) ≈ 1 (rule of Sarrus), then every
// element of R R^T ≈ the identity's, (R R^T)(i, j) = sum_k R(i, k) R(j, k), k ascending. The
// first failure returns false; a NaN anywhere fails.
template <typename T>
bool isRotation(Cmatrix<T> const& m) {
    T const det = m(0, 0) * m(1, 1) * m(2, 2) + m(0, 1) * m(1, 2) * m(2, 0) +
                  m(0, 2) * m(1, 0) * m(2, 1) - m(0, 2) * m(1, 1) * m(2, 0) -
                  m(0, 0) * m(1, 2) * m(2, 1) - m(0, 1) * m(1, 0) * m(2, 2);
    if (!rotationEqual(det, T(1))) {
        return false;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            T s = T(0);
            for (std::size_t k = 0; k < 3; ++k) {
                s += m(i, k) * m(j, k);
            }
            if (!rotationEqual(s, i == j ? T(1) : T(0))) {
                return false;
            }
        }
    }
    return true;
}

// q = Trf p + t, row by row, terms left to right.
template <typename T>
Cpoint3<T> applyForward(T const* trf, Cpoint3<T> const& t, Cpoint3<T> const& p) {
    return Cpoint3<T>(trf[0] * p.x + trf[1] * p.y + trf[2] * p.z + t.x,
                      trf[3] * p.x + trf[4] * p.y + trf[5] * p.z + t.y,
                      trf[6] * p.x + trf[7] * p.y + trf[8] * p.z + t.z);
}

// p = Trf^T (q - t).
template <typename T>
Cpoint3<T> applyBackward(T const* trf, Cpoint3<T> const& t, Cpoint3<T> const& q) {
    T const dx = q.x - t.x;
    T const dy = q.y - t.y;
    T const dz = q.z - t.z;
    return Cpoint3<T>(trf[0] * dx + trf[3] * dy + trf[6] * dz,
                      trf[1] * dx + trf[4] * dy + trf[7] * dz,
                      trf[2] * dx + trf[5] * dy + trf[8] * dz);
}

// The frame-change rotation must be 3 × 3: CthrowMath id 29 with rows and columns otherwise.
template <typename T>
void checkRotation3x3(Cmatrix<T> const& r) {
    if (r.m() != 3 || r.n() != 3) {
        CthrowMath err(CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
        err << r.m() << r.n();
        throw err;
    }
}

// p' = R (p - c).
template <typename T>
Cpoint3<T> toFrame(Cmatrix<T> const& r, Cpoint3<T> const& p, Cpoint3<T> const& c) {
    T const dx = p.x - c.x;
    T const dy = p.y - c.y;
    T const dz = p.z - c.z;
    return Cpoint3<T>(r(0, 0) * dx + r(0, 1) * dy + r(0, 2) * dz,
                      r(1, 0) * dx + r(1, 1) * dy + r(1, 2) * dz,
                      r(2, 0) * dx + r(2, 1) * dy + r(2, 2) * dz);
}

// p = R^T p' + c.
template <typename T>
Cpoint3<T> fromFrame(Cmatrix<T> const& r, Cpoint3<T> const& p, Cpoint3<T> const& c) {
    return Cpoint3<T>(r(0, 0) * p.x + r(1, 0) * p.y + r(2, 0) * p.z + c.x,
                      r(0, 1) * p.x + r(1, 1) * p.y + r(2, 1) * p.z + c.y,
                      r(0, 2) * p.x + r(1, 2) * p.y + r(2, 2) * p.z + c.z);
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Conversions

template <typename T>
Cmatrix<T> quaternionToMatrix(Cquaternion<T> const& q) {
    T const w = q.w;
    T const x = q.x;
    T const y = q.y;
    T const z = q.z;
    Cmatrix<T> r(3, 3);
    r(0, 0) = T(1) - T(2) * (y * y + z * z);
    r(0, 1) = T(2) * (x * y - w * z);
    r(0, 2) = T(2) * (w * y + x * z);
    r(1, 0) = T(2) * (w * z + x * y);
    r(1, 1) = T(1) - T(2) * (x * x + z * z);
    r(1, 2) = T(2) * (y * z - w * x);
    r(2, 0) = T(2) * (x * z - w * y);
    r(2, 1) = T(2) * (y * z + w * x);
    r(2, 2) = T(1) - T(2) * (x * x + y * y);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            r(i, j) = clampUnit(r(i, j));
        }
    }
    return r;
}

// Shepperd's method (quaternion from the trace or from the largest diagonal element).
template <typename T>
Cquaternion<T> matrixToQuaternion(Cmatrix<T> const& m) {
    T const nan = std::numeric_limits<T>::quiet_NaN();
    Cquaternion<T> q(T(0), nan, T(0), T(0));
    bool const shapeOk = (m.m() == 3 && m.n() == 3) || (m.m() == 4 && m.n() == 4);
    if (!shapeOk || !isRotation(m)) {
        q.w = nan;
        return q;
    }
    T const tr = m(0, 0) + m(1, 1) + m(2, 2);
    if (tr + T(1) > kTraceEps<T>) {
        T const s = T(2) * std::sqrt(tr + T(1));
        q.w = s / T(4);
        q.x = (m(2, 1) - m(1, 2)) / s;
        q.y = (m(0, 2) - m(2, 0)) / s;
        q.z = (m(1, 0) - m(0, 1)) / s;
    } else if (m(0, 0) > m(1, 1) && m(0, 0) > m(2, 2)) {
        T const s = T(2) * std::sqrt(T(1) + m(0, 0) - m(1, 1) - m(2, 2));
        q.x = s / T(4);
        q.y = (m(1, 0) + m(0, 1)) / s;
        q.z = (m(2, 0) + m(0, 2)) / s;
        q.w = (m(2, 1) - m(1, 2)) / s;
    } else if (m(1, 1) > m(2, 2)) {
        T const s = T(2) * std::sqrt(T(1) + m(1, 1) - m(0, 0) - m(2, 2));
        q.x = (m(1, 0) + m(0, 1)) / s;
        q.y = s / T(4);
        q.z = (m(2, 1) + m(1, 2)) / s;
        q.w = (m(0, 2) - m(2, 0)) / s;
    } else {
        T const s = T(2) * std::sqrt(T(1) + m(2, 2) - m(0, 0) - m(1, 1));
        q.x = (m(2, 0) + m(0, 2)) / s;
        q.y = (m(2, 1) + m(1, 2)) / s;
        q.z = s / T(4);
        q.w = (m(1, 0) - m(0, 1)) / s;
    }
    if (q.w < T(0)) {
        q.w = -q.w;
        q.x = -q.x;
        q.y = -q.y;
        q.z = -q.z;
    }
    if (!(T(1) > q.w)) {
        q.w = T(1);
    }
    return q;
}

// ---------------------------------------------------------------------------------------------
// CtransPrm3

template <typename T>
CtransPrm3<T>::TransFunctor::TransFunctor(Cmatrix<T> const& trf, Cpoint3<T> const& t) : m_t(t) {
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            m_trf[i * 3 + j] = trf(i, j);
        }
    }
}

template <typename T>
Cpoint3<T> CtransPrm3<T>::TransFunctor::operator()(Cpoint3<T> const& p) const {
    return applyForward(m_trf, m_t, p);
}

template <typename T>
CtransPrm3<T>::CtransPrm3()
    : m_quaternion(std::cos(T(0.5)), T(0), T(0), std::sin(T(0.5))),
      m_accuracy(T(1e-6)),
      m_rot(3, 3),
      m_trf(3, 3),
      m_translation(T(0), T(0), T(0)),
      m_scale(T(1), T(1), T(1)) {
    m_rot.setIdentity();
    m_trf.setIdentity();
}

template <typename T>
CtransPrm3<T>::CtransPrm3(Cquaternion<T> const& q, Cpoint3<T> const& t)
    : m_quaternion(q),
      m_accuracy(T(1e-6)),
      m_rot(3, 3, T(0)),
      m_trf(quaternionToMatrix(q)),
      m_translation(t),
      m_scale(T(1), T(1), T(1)) {
    findScale();
}

template <typename T>
CtransPrm3<T>::CtransPrm3(Cmatrix<T> const& m, Cpoint3<T> const& t) : CtransPrm3() {
    m_translation = t;
    setNewPrm(m);
}

template <typename T>
CtransPrm3<T>::CtransPrm3(CtransPrm3 const& other)
    : m_quaternion(other.m_quaternion),
      m_accuracy(other.m_accuracy),
      m_rot(other.m_rot),
      m_trf(other.m_trf),
      m_translation(other.m_translation),
      m_scale(other.m_scale) {}

template <typename T>
CtransPrm3<T>& CtransPrm3<T>::operator=(CtransPrm3 const& other) {
    if (this != &other) {
        copy(other);
    }
    return *this;
}

template <typename T>
void CtransPrm3<T>::copy(CtransPrm3 const& other) {
    m_quaternion = other.m_quaternion;
    m_accuracy = other.m_accuracy;
    m_rot = other.m_rot;
    m_trf = other.m_trf;
    m_translation = other.m_translation;
    m_scale = other.m_scale;
}

template <typename T>
void CtransPrm3<T>::setRotation(Cquaternion<T> const& q) {
    m_quaternion = q;
    m_trf = quaternionToMatrix(q);
    findScale();
}

template <typename T>
void CtransPrm3<T>::setRotation(Cmatrix<T> const& m) {
    if (m.m() != 3 || m.n() != 3) {
        CthrowMath err(CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
        err << m.m() << m.n();
        throw err;
    }
    m_trf = m;
    findScale();
    m_quaternion = matrixToQuaternion(m_rot);
}

template <typename T>
void CtransPrm3<T>::setNewPrm(Cmatrix<T> const& m) {
    if (m.m() != m.n()) {
        CthrowMath err(CthrowMath::ERR_MATRIX_NOTSQUARE, std::c_empty);
        throw err;
    }
    if (m.m() == 3) {
        setRotation(m);
        return;
    }
    if (m.m() != 4) {
        CthrowMath err(CthrowMath::ERR_MATRIX_DIMS, std::c_empty);
        err << m.m() << m.n();
        throw err;
    }
    // A homogeneous matrix: the last row must be exactly (0, 0, 0, 1).
    if (!(m(3, 0) == T(0) && m(3, 1) == T(0) && m(3, 2) == T(0) && m(3, 3) == T(1))) {
        CthrowMath err(CthrowMath::ERR_TRANS_INV_MATRIX, std::c_empty);
        throw err;
    }
    m_translation = Cpoint3<T>(m(0, 3), m(1, 3), m(2, 3));
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            m_trf(i, j) = m(i, j);
        }
    }
    findScale();
    m_quaternion = matrixToQuaternion(m_rot);
}

template <typename T>
T CtransPrm3<T>::getArc() const {
    return T(2) * std::acos(m_quaternion.w);
}

template <typename T>
Cdirec3<T> CtransPrm3<T>::getAxis() const {
    return Cdirec3<T>(m_quaternion.x, m_quaternion.y, m_quaternion.z);
}

template <typename T>
void CtransPrm3<T>::get4x4Matrix(Cmatrix<T>& m) const {
    if (m.m() != 4 || m.n() != 4) {
        m = Cmatrix<T>(4, 4);
    }
    m.setIdentity();
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            m(i, j) = m_trf(i, j);
        }
    }
    m(0, 3) = m_translation.x;
    m(1, 3) = m_translation.y;
    m(2, 3) = m_translation.z;
}

template <typename T>
Cmatrix<T> CtransPrm3<T>::get4x4Matrix() const {
    Cmatrix<T> m(4, 4);
    get4x4Matrix(m);
    return m;
}

template <typename T>
void CtransPrm3<T>::get4x4reMatrix(Cmatrix<T>& m) const {
    if (m.m() != 4 || m.n() != 4) {
        m = Cmatrix<T>(4, 4);
    }
    m.setIdentity();
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            m(i, j) = m_trf(j, i);
        }
    }
    // Column 3 = -Trf^T t, so that the matrix maps q to Trf^T (q - t).
    for (std::size_t i = 0; i < 3; ++i) {
        m(i, 3) =
            -(m(i, 0) * m_translation.x + m(i, 1) * m_translation.y + m(i, 2) * m_translation.z);
    }
}

template <typename T>
Cmatrix<T> CtransPrm3<T>::get4x4reMatrix() const {
    Cmatrix<T> m(4, 4);
    get4x4reMatrix(m);
    return m;
}

template <typename T>
void CtransPrm3<T>::transform(Cpoint3<T> const& p, Cpoint3<T>& q) const {
    q = applyForward(m_trf.getBase(), m_translation, p);
}

template <typename T>
void CtransPrm3<T>::transform(std::vector<Cpoint3<T>> const& in,
                              std::vector<Cpoint3<T>>& out) const {
    out.resize(in.size());
    T const* trf = m_trf.getBase();
    for (std::size_t i = 0; i < in.size(); ++i) {
        out[i] = applyForward(trf, m_translation, in[i]);
    }
}

template <typename T>
void CtransPrm3<T>::retransform(Cpoint3<T> const& q, Cpoint3<T>& p) const {
    p = applyBackward(m_trf.getBase(), m_translation, q);
}

template <typename T>
void CtransPrm3<T>::retransform(std::vector<Cpoint3<T>> const& in,
                                std::vector<Cpoint3<T>>& out) const {
    out.resize(in.size());
    T const* trf = m_trf.getBase();
    for (std::size_t i = 0; i < in.size(); ++i) {
        out[i] = applyBackward(trf, m_translation, in[i]);
    }
}

// Column lengths s_j = sqrt(Trf(0, j)² + Trf(1, j)² + Trf(2, j)²) are the scale; Rot is Trf
// with each column divided by its length.
template <typename T>
void CtransPrm3<T>::findScale() {
    T s[3];
    for (std::size_t j = 0; j < 3; ++j) {
        s[j] = std::sqrt(m_trf(0, j) * m_trf(0, j) + m_trf(1, j) * m_trf(1, j) +
                         m_trf(2, j) * m_trf(2, j));
    }
    m_scale = Cpoint3<T>(s[0], s[1], s[2]);
    if (s[0] == T(0) || s[1] == T(0) || s[2] == T(0)) {
        CthrowMath err(CthrowMath::ERR_TRANS_INV_MATRIX, std::c_empty);
        throw err;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            m_rot(i, j) = m_trf(i, j) / s[j];
        }
    }
    if (!isOrthogonalRot()) {
        CthrowMath err(CthrowMath::ERR_MATRIX_NOTORTHOGONAL, std::c_empty);
        throw err;
    }
}

template <typename T>
bool CtransPrm3<T>::isOrthogonalRot() const {
    // Squared row lengths, then the dot products of rows 0·1, 0·2, 1·2.
    for (std::size_t i = 0; i < 3; ++i) {
        T const len2 =
            m_rot(i, 0) * m_rot(i, 0) + m_rot(i, 1) * m_rot(i, 1) + m_rot(i, 2) * m_rot(i, 2);
        if (!equal(len2, T(1))) {
            return false;
        }
    }
    static constexpr std::size_t kPairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
    for (auto const& pair : kPairs) {
        std::size_t const a = pair[0];
        std::size_t const b = pair[1];
        T const dot =
            m_rot(a, 0) * m_rot(b, 0) + m_rot(a, 1) * m_rot(b, 1) + m_rot(a, 2) * m_rot(b, 2);
        if (!equal(dot, T(0))) {
            return false;
        }
    }
    return true;
}

template <typename T>
bool CtransPrm3<T>::equal(T const& a, T const& b) const {
    return b + m_accuracy > a && a > b - m_accuracy;
}

template <typename T>
T CtransPrm3<T>::determinante() const {
    Cmatrix<T> const& r = m_rot;
    return r(0, 0) * r(1, 1) * r(2, 2) + r(0, 1) * r(1, 2) * r(2, 0) + r(0, 2) * r(1, 0) * r(2, 1) -
           r(0, 2) * r(1, 1) * r(2, 0) - r(0, 0) * r(1, 2) * r(2, 1) - r(0, 1) * r(1, 0) * r(2, 2);
}

template <typename T>
typename CtransPrm3<T>::TransFunctor CtransPrm3<T>::getTransFunktor() const {
    return TransFunctor(m_trf, m_translation);
}

// ---------------------------------------------------------------------------------------------
// Ctransformer

template <typename T>
void Ctransformer<T>::transformTo(Cmatrix<T> const& r, Cpoint3<T>& p, Cpoint3<T> const& c) {
    checkRotation3x3(r);
    p = toFrame(r, p, c);
}

template <typename T>
void Ctransformer<T>::transformTo(Cmatrix<T> const& r, Cpoint3<T> const& in, Cpoint3<T>& out,
                                  Cpoint3<T> const& c) {
    checkRotation3x3(r);
    out = toFrame(r, in, c);
}

template <typename T>
void Ctransformer<T>::transformTo(Cmatrix<T> const& r, Points& p, Cpoint3<T> const& c) {
    checkRotation3x3(r);
    for (Cpoint3<T>& q : p) {
        q = toFrame(r, q, c);
    }
}

template <typename T>
void Ctransformer<T>::transformTo(Cmatrix<T> const& r, Points const& in, Points& out,
                                  Cpoint3<T> const& c) {
    checkRotation3x3(r);
    if (&in == &out) {
        transformTo(r, out, c);
        return;
    }
    out.clear();
    out.reserve(in.capacity());
    for (Cpoint3<T> const& q : in) {
        out.push_back(toFrame(r, q, c));
    }
}

template <typename T>
void Ctransformer<T>::transformTo(Cquaternion<T> const& q, Cpoint3<T>& p, Cpoint3<T> const& c) {
    transformTo(quaternionToMatrix(q), p, c);
}

template <typename T>
void Ctransformer<T>::transformTo(Cquaternion<T> const& q, Cpoint3<T> const& in, Cpoint3<T>& out,
                                  Cpoint3<T> const& c) {
    transformTo(quaternionToMatrix(q), in, out, c);
}

template <typename T>
void Ctransformer<T>::transformTo(Cquaternion<T> const& q, Points& p, Cpoint3<T> const& c) {
    transformTo(quaternionToMatrix(q), p, c);
}

template <typename T>
void Ctransformer<T>::transformTo(Cquaternion<T> const& q, Points const& in, Points& out,
                                  Cpoint3<T> const& c) {
    transformTo(quaternionToMatrix(q), in, out, c);
}

template <typename T>
void Ctransformer<T>::transformFrom(Cmatrix<T> const& r, Cpoint3<T>& p, Cpoint3<T> const& c) {
    checkRotation3x3(r);
    p = fromFrame(r, p, c);
}

template <typename T>
void Ctransformer<T>::transformFrom(Cmatrix<T> const& r, Cpoint3<T> const& in, Cpoint3<T>& out,
                                    Cpoint3<T> const& c) {
    checkRotation3x3(r);
    out = fromFrame(r, in, c);
}

template <typename T>
void Ctransformer<T>::transformFrom(Cmatrix<T> const& r, Points& p, Cpoint3<T> const& c) {
    checkRotation3x3(r);
    for (Cpoint3<T>& q : p) {
        q = fromFrame(r, q, c);
    }
}

template <typename T>
void Ctransformer<T>::transformFrom(Cmatrix<T> const& r, Points const& in, Points& out,
                                    Cpoint3<T> const& c) {
    checkRotation3x3(r);
    if (&in == &out) {
        transformFrom(r, out, c);
        return;
    }
    out.clear();
    out.reserve(in.capacity());
    for (Cpoint3<T> const& q : in) {
        out.push_back(fromFrame(r, q, c));
    }
}

template <typename T>
void Ctransformer<T>::transformFrom(Cquaternion<T> const& q, Cpoint3<T>& p, Cpoint3<T> const& c) {
    transformFrom(quaternionToMatrix(q), p, c);
}

template <typename T>
void Ctransformer<T>::transformFrom(Cquaternion<T> const& q, Cpoint3<T> const& in, Cpoint3<T>& out,
                                    Cpoint3<T> const& c) {
    transformFrom(quaternionToMatrix(q), in, out, c);
}

template <typename T>
void Ctransformer<T>::transformFrom(Cquaternion<T> const& q, Points& p, Cpoint3<T> const& c) {
    transformFrom(quaternionToMatrix(q), p, c);
}

template <typename T>
void Ctransformer<T>::transformFrom(Cquaternion<T> const& q, Points const& in, Points& out,
                                    Cpoint3<T> const& c) {
    transformFrom(quaternionToMatrix(q), in, out, c);
}

#define MGEO_TRANSFORM3_DEFINE(T) MGEO_TRANSFORM3_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_TRANSFORM3_DEFINE)

}  // namespace math
