// 3D transformation parameters, quaternions and frame changes.
//
// A transformation maps p to p' = Trf * p + t, where Trf is a 3 × 3 matrix combining a rotation
// Rot with a scale per axis (Trf(i, j) = Rot(i, j) * s_j). CtransPrm3 keeps the rotation at the
// same time as a unit quaternion and as the normalised matrix Rot. Ctransformer moves points into
// and out of a frame given by a rotation and an origin.
#pragma once

#include <math/detail/instantiate.h>
#include <math/matrix.h>
#include <math/points.h>

#include <vector>

namespace math {

// A quaternion w + x i + y j + z k, scalar part first. A quaternion is invalid when w is NaN;
// the default constructor gives such an unset quaternion (every component NaN).
template <typename T>
struct Cquaternion {
    T w;
    T x;
    T y;
    T z;

    Cquaternion()
        : w(detail::unsetValue<T>()),
          x(detail::unsetValue<T>()),
          y(detail::unsetValue<T>()),
          z(detail::unsetValue<T>()) {}
    Cquaternion(T w_, T x_, T y_, T z_) : w(w_), x(x_), y(y_), z(z_) {}

    // False when w is NaN.
    bool isValid() const { return w == w; }
};

// The 3 × 3 row-major rotation matrix of the quaternion q = (w, x, y, z), q not normalised
// beforehand:
//     R = [ 1 - 2(y² + z²)   2(xy - wz)       2(wy + xz)     ]
//         [ 2(wz + xy)       1 - 2(x² + z²)   2(yz - wx)     ]
//         [ 2(xz - wy)       2(yz + wx)       1 - 2(x² + y²) ]
// Every element r is then clamped to [-1, 1] by two comparisons: r becomes 1 unless 1 > r, then
// -1 unless r > -1. A NaN element therefore comes out as 1.
template <typename T>
Cmatrix<T> quaternionToMatrix(Cquaternion<T> const& q);

// The unit quaternion of a rotation matrix (3 × 3, or the upper-left 3 × 3 of a 4 × 4), with
// w >= 0 and w <= 1. Shepperd's method: the trace branch when trace + 1 > eps(T), else the branch
// of the largest diagonal element. Any other size, or a matrix that is not a rotation (det ≈ 1 and
// R R^T ≈ I, tolerance 2^-15 relative), gives w = x = NaN.
template <typename T>
Cquaternion<T> matrixToQuaternion(Cmatrix<T> const& m);

// One 3D transformation p' = Trf * p + t (see the top of this header).
//
// Invariant after every setter except setScale: Trf(i, j) = Rot(i, j) * s_j, the rows of Rot
// are orthonormal within accuracy (1e-6), and the quaternion is the one of Rot. The default
// state is the exception: Rot and Trf are the identity, but the quaternion is that of a rotation
// by 1 radian about z, (cos 0.5, 0, 0, sin 0.5); every rotation setter makes the two agree.
//
// Errors (CthrowMath): 28 ERR_TRANS_INV_MATRIX (zero column, 4 × 4 with a last row other than
// (0, 0, 0, 1)), 29 ERR_MATRIX_DIMS (sizes, rows and columns streamed as %0 and %1),
// 30 ERR_MATRIX_NOTSQUARE, 31 ERR_MATRIX_NOTORTHOGONAL (also for an invalid quaternion). A setter
// that throws may have overwritten Trf already.
template <typename T>
class CtransPrm3 {
public:
    // A self-contained function object that applies transform() to one point. It copies Trf and
    // t, so it stays usable after the parameters change or go away.
    class TransFunctor {
    public:
        TransFunctor(Cmatrix<T> const& trf, Cpoint3<T> const& t);
        Cpoint3<T> operator()(Cpoint3<T> const& p) const;

    private:
        T m_trf[9];
        Cpoint3<T> m_t;
    };

    // Identity matrices, t = 0, scale 1, quaternion (cos 0.5, 0, 0, sin 0.5).
    CtransPrm3();
    // Rotation q (Trf = the matrix of q, then findScale), translation t.
    CtransPrm3(Cquaternion<T> const& q, Cpoint3<T> const& t);
    // The default state, translation t, then setNewPrm(m) (a 4 × 4 m replaces t).
    CtransPrm3(Cmatrix<T> const& m, Cpoint3<T> const& t);
    CtransPrm3(CtransPrm3 const& other);
    CtransPrm3& operator=(CtransPrm3 const& other);
    ~CtransPrm3() = default;

    // Stores q, Trf = the matrix of q, findScale (id 31 for an invalid q).
    void setRotation(Cquaternion<T> const& q);
    // m must be 3 × 3 (else id 29): Trf = m, findScale, quaternion from Rot.
    void setRotation(Cmatrix<T> const& m);
    // A square m (else id 30): 3 × 3 as setRotation(m); 4 × 4 with last row exactly
    // (0, 0, 0, 1) (else id 28): t = column 3, Trf = the upper-left 3 × 3, findScale, quaternion
    // from Rot; any other size: id 29.
    void setNewPrm(Cmatrix<T> const& m);

    void setTranslation(Cpoint3<T> const& t) { m_translation = t; }
    void setTranslation(T const& x, T const& y, T const& z) { m_translation = Cpoint3<T>(x, y, z); }
    Cpoint3<T> const& getTranslation() const { return m_translation; }
    // Writes the three scale values only; Trf and Rot stay as they are, so the stored scale no
    // longer matches Trf until the next rotation setter.
    void setScale(Cpoint3<T> const& s) { m_scale = s; }
    Cpoint3<T> const& getScale() const { return m_scale; }

    Cmatrix<T> getRot_Matrix() const { return m_rot; }
    Cmatrix<T> getTrf_Matrix() const { return m_trf; }
    // The rotation angle 2 acos(w).
    T getArc() const;
    // The rotation axis: (x, y, z) normalised; invalid for the identity rotation.
    Cdirec3<T> getAxis() const;

    // m becomes 4 × 4 (reallocated if it is not): identity, Trf in the upper-left 3 × 3, t in
    // rows 0 to 2 of column 3.
    void get4x4Matrix(Cmatrix<T>& m) const;
    Cmatrix<T> get4x4Matrix() const;
    // m becomes 4 × 4: identity, Trf^T in the upper-left 3 × 3, and
    // m(i, 3) = -(m(i, 0) tx + m(i, 1) ty + m(i, 2) tz): the matrix of retransform.
    void get4x4reMatrix(Cmatrix<T>& m) const;
    Cmatrix<T> get4x4reMatrix() const;

    // q = Trf * p + t. p and q may be the same object.
    void transform(Cpoint3<T> const& p, Cpoint3<T>& q) const;
    // out is resized to in's size and filled point by point; in and out may be the same vector.
    void transform(std::vector<Cpoint3<T>> const& in, std::vector<Cpoint3<T>>& out) const;
    // p = Trf^T * (q - t). The transpose is used on purpose, also with scales other than 1 (it
    // is then not the inverse of transform); get4x4reMatrix matches it.
    void retransform(Cpoint3<T> const& q, Cpoint3<T>& p) const;
    void retransform(std::vector<Cpoint3<T>> const& in, std::vector<Cpoint3<T>>& out) const;

protected:
    void copy(CtransPrm3 const& other);
    void setAccuracy(T const& accuracy) { m_accuracy = accuracy; }

    // s_j = length of column j of Trf (id 28 if one is exactly 0); Rot(i, j) = Trf(i, j) / s_j;
    // id 31 unless isOrthogonalRot().
    void findScale();
    // Rows of Rot of squared length 1 and pairwise dot products (0·1, 0·2, 1·2) of 0, compared
    // with equal(); the first failure returns false.
    bool isOrthogonalRot() const;
    // b + accuracy > a and a > b - accuracy, both strict.
    bool equal(T const& a, T const& b) const;
    // The determinant of Rot by the rule of Sarrus.
    T determinante() const;
    // A function object applying transform() to one point.
    TransFunctor getTransFunktor() const;

private:
    Cquaternion<T> m_quaternion;
    T m_accuracy;
    Cmatrix<T> m_rot;
    Cmatrix<T> m_trf;
    Cpoint3<T> m_translation;
    Cpoint3<T> m_scale;
};

// Frame changes with a rotation R (3 × 3 matrix, or the matrix of a quaternion) and the frame's
// origin c:
//     transformTo:   p' = R (p - c)
//     transformFrom: p  = R^T p' + c
// A rotation matrix of another size than 3 × 3 raises CthrowMath id 29 (rows, columns). The list
// forms with an output list clear it, reserve the input's capacity and append in order; input and
// output may be the same list.
template <typename T>
class Ctransformer {
public:
    using Points = std::vector<Cpoint3<T>>;

    static void transformTo(Cmatrix<T> const& r, Cpoint3<T>& p, Cpoint3<T> const& c);
    static void transformTo(Cmatrix<T> const& r, Cpoint3<T> const& in, Cpoint3<T>& out,
                            Cpoint3<T> const& c);
    static void transformTo(Cmatrix<T> const& r, Points& p, Cpoint3<T> const& c);
    static void transformTo(Cmatrix<T> const& r, Points const& in, Points& out,
                            Cpoint3<T> const& c);
    static void transformTo(Cquaternion<T> const& q, Cpoint3<T>& p, Cpoint3<T> const& c);
    static void transformTo(Cquaternion<T> const& q, Cpoint3<T> const& in, Cpoint3<T>& out,
                            Cpoint3<T> const& c);
    static void transformTo(Cquaternion<T> const& q, Points& p, Cpoint3<T> const& c);
    static void transformTo(Cquaternion<T> const& q, Points const& in, Points& out,
                            Cpoint3<T> const& c);

    static void transformFrom(Cmatrix<T> const& r, Cpoint3<T>& p, Cpoint3<T> const& c);
    static void transformFrom(Cmatrix<T> const& r, Cpoint3<T> const& in, Cpoint3<T>& out,
                              Cpoint3<T> const& c);
    static void transformFrom(Cmatrix<T> const& r, Points& p, Cpoint3<T> const& c);
    static void transformFrom(Cmatrix<T> const& r, Points const& in, Points& out,
                              Cpoint3<T> const& c);
    static void transformFrom(Cquaternion<T> const& q, Cpoint3<T>& p, Cpoint3<T> const& c);
    static void transformFrom(Cquaternion<T> const& q, Cpoint3<T> const& in, Cpoint3<T>& out,
                              Cpoint3<T> const& c);
    static void transformFrom(Cquaternion<T> const& q, Points& p, Cpoint3<T> const& c);
    static void transformFrom(Cquaternion<T> const& q, Points const& in, Points& out,
                              Cpoint3<T> const& c);
};

#define MGEO_TRANSFORM3_FAMILY(T, EXT)                                    \
    EXT template struct Cquaternion<T>;                                   \
    EXT template Cmatrix<T> quaternionToMatrix<T>(Cquaternion<T> const&); \
    EXT template Cquaternion<T> matrixToQuaternion<T>(Cmatrix<T> const&); \
    EXT template class CtransPrm3<T>;                                     \
    EXT template class Ctransformer<T>;
#define MGEO_TRANSFORM3_EXTERN(T) MGEO_TRANSFORM3_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_TRANSFORM3_EXTERN)
#undef MGEO_TRANSFORM3_EXTERN

}  // namespace math
