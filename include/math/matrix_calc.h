// Symmetric eigen decomposition and rotation angles.
//
// Errors: CthrowMatrixCalc (the tridiagonal iteration) and CthrowMath (matrix dimensions).
#pragma once

#include <math/detail/instantiate.h>
#include <math/exceptions.h>
#include <math/matrix.h>

namespace math {

// Static operations on Cmatrix<T>. Angles are in radians; R_ij is row i, column j.
template <typename T>
class CmatrixCalc {
public:
    // Sum of (A_k - B_k)^2 over the storage positions 0 ... size - 2 (the last element is not
    // included); +infinity when the shapes differ.
    static T dif(Cmatrix<T> const& a, Cmatrix<T> const& b);

    // Closed-form Jacobi rotation of a symmetric 2 × 2 matrix: A becomes diagonal, V the
    // rotation. Nothing happens for other shapes or an asymmetric A; A01 = 0 gives V = I.
    static void getEigenvalue2x2sym(Cmatrix<T>& a, Cmatrix<T>& v);

    // Symmetric eigen decomposition: A becomes diagonal with the eigenvalues in decreasing
    // absolute value (equal magnitudes in index order), row k of V is the unit eigenvector of
    // A_kk. Nothing happens for a non-square A.
    static void getEigenvalue(Cmatrix<T>& a, Cmatrix<T>& v);
    // Householder reduction of symmetric A to tridiagonal form T = V·A·V^T (Numerical Recipes
    // 11.2); A receives T, V the orthogonal transformation (rows).
    static void QR_TriDiag(Cmatrix<T>& a, Cmatrix<T>& v);
    // Implicit-shift QL iteration on the tridiagonal A (Numerical Recipes 11.3): A becomes
    // diagonal, the rotations are applied to the rows of V.
    static void DiagTri(Cmatrix<T>& a, Cmatrix<T>& v);
    // The permutation S that orders the diagonal of A by decreasing absolute value.
    static void sortDiagonal(Cmatrix<T>& a, Cmatrix<T>& s);

    // M (3 × 3 or 4 × 4) = R·S with S the diagonal of column lengths of the upper-left 3 × 3.
    static void getRotScale(Cmatrix<T> const& m, Cmatrix<T>& r, Cmatrix<T>& s);

    // Angles (a, b, c) to a 3 × 3 rotation matrix.
    static void ArcToRotCAP(T const& a, T const& b, T const& c, Cmatrix<T>& r);
    // Rx(a)·Ry(b)·Rz(c); the transpose of ArcToRotCAP.
    static void ArcToRotXYZ(T const& a, T const& b, T const& c, Cmatrix<T>& r);
    static void ArcToRotCAP_transp(T const& a, T const& b, T const& c, Cmatrix<T>& r);
    // Rz(c)·Ry(b)·Rx(a).
    static void ArcToRotZYX(T const& a, T const& b, T const& c, Cmatrix<T>& r);
    static void ArcToRotZXZ(T const& a, T const& b, T const& c, Cmatrix<T>& r);

    // Rotation matrix (3 × 3 or 4 × 4, the upper-left 3 × 3 is read) to angles, written in the
    // order b, c, a. Other shapes throw CthrowMath::ERR_MATRIX_DIMS.
    static void RotToArcCAP(Cmatrix<T> const& r, T& a, T& b, T& c);
    static void RotToArcCAP_transp(Cmatrix<T> const& r, T& a, T& b, T& c);
    static void RotToArcXYZ(Cmatrix<T> const& r, T& a, T& b, T& c);
    static void RotToArcZXZ(Cmatrix<T> const& r, T& a, T& b, T& c);
};

#define MGEO_MATRIX_CALC_FAMILY(T, EXT) EXT template class CmatrixCalc<T>;
#define MGEO_MATRIX_CALC_EXTERN(T) MGEO_MATRIX_CALC_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_MATRIX_CALC_EXTERN)
#undef MGEO_MATRIX_CALC_EXTERN

}  // namespace math
