// Linear-equation solvers: Gauss-Jordan, LU decomposition, singular value decomposition.
//
// Every solver is set up once with the system matrix A and then solves A·X = B for any number
// of right-hand sides, given as the columns of B. The factorising solvers (LU, SVD) do their
// work when the matrix is set; Gauss-Jordan eliminates anew at every solve.
#pragma once

#include <math/detail/instantiate.h>
#include <math/exceptions.h>
#include <math/matrix.h>

#include <vector>

namespace math {

// The common interface. It owns the system matrix and the right-hand side and delegates the
// work to the protected virtual steps init (after a new matrix) and subsolve (for the current
// right-hand side). In this class both steps throw CthrowMath::ERR_MATH_FUNCNOTIMPL, so it is
// usable only through a derived solver, although it can be built and copied.
template <typename T>
class Csolver_le {
public:
    Csolver_le();
    // matrix = a, rhs empty; init is not called here (derived constructors do where needed).
    Csolver_le(Cmatrix<T>& a);
    Csolver_le(Cmatrix<T> const& a);
    // Takes over the elements of a (no copy); a is left 0 × 0.
    Csolver_le(Cmatrix<T>&& a);
    Csolver_le(Csolver_le const& other);
    Csolver_le& operator=(Csolver_le const& other);
    virtual ~Csolver_le();

    // matrix = a, then init().
    void setMatrix(Cmatrix<T>& a);
    void setMatrix(Cmatrix<T> const& a);

    // Solves A·x = b for one right-hand side (b.size() rows, 1 column).
    Cmatrix<T> solve(std::vector<T> const& b);
    // Solves A·X = B for every column of B.
    Cmatrix<T> solve(Cmatrix<T>& b);
    Cmatrix<T> solve(Cmatrix<T> const& b);
    // Solves with the identity (rows × columns of A) as right-hand side: A^-1, or the
    // pseudo-inverse of the SVD solver.
    Cmatrix<T> invert();

    // The solution of A·X = B with iterative refinement: X_{k+1} = X_k - solve(A·X_k - B) as
    // long as the error sum over all but the last element of A·X - B strictly decreases. A must
    // be the matrix the solver was set up with; it only forms the residuals. At most 1000 passes
    // (a NaN error sum also ends it): the last improving iterate is returned.
    Cmatrix<T> solveItr(Cmatrix<T> const& a, Cmatrix<T> const& b);
    // Sum over the elements of B of (B_ij - (A·X)_ij)^2, in double: no root, no division.
    T deviation(Cmatrix<T> const& a, Cmatrix<T> const& x, Cmatrix<T> const& b);

protected:
    // Solves A·X = B for the current rhs and returns X.
    virtual Cmatrix<T> subsolve();
    // Prepares (factorises) after a new matrix has been set.
    virtual void init();
    // init() with a passing error annotated with the solver source's name and line; the
    // constructors and setMatrix call it.
    void initAnnotated();

    Cmatrix<T> matrix;       // the system matrix, or the solver's working form of it
    Cmatrix<T> rhs;          // the right-hand side; subsolve overwrites it with the solution
    bool matrixSet = false;  // a matrix has been given
    bool rhsSet = false;     // a right-hand side has been given
};

// Gauss-Jordan elimination with full pivoting (Numerical Recipes 2.1). Each solve starts from
// a copy of the matrix as it was set, leaves A^-1 in `matrix` and returns X.
template <typename T>
class Csolver_GaussJordan : public Csolver_le<T> {
public:
    Csolver_GaussJordan();
    Csolver_GaussJordan(Cmatrix<T>& a);
    Csolver_GaussJordan(Cmatrix<T> const& a);
    Csolver_GaussJordan(Csolver_GaussJordan const& other);
    Csolver_GaussJordan& operator=(Csolver_GaussJordan const& other);
    ~Csolver_GaussJordan() override;

protected:
    Cmatrix<T> subsolve() override;
    void init() override;

    std::vector<int> pivotCols;  // per elimination step, the pivot column (= row after the swap)
    std::vector<int> pivotRows;  // per elimination step, the row the pivot was found in
    std::vector<int> pivotUsed;  // per column, how often it has served as pivot column
    Cmatrix<T> sourceMatrix;     // the matrix as it was set; every solve starts from it

private:
    // Exchanges rows r1 and r2 of `matrix`, and the elements r1·m + t, r2·m + t (t below the
    // row count of rhs, m its column count) of rhs.
    void doPivot(int r1, int r2);
    // The three index vectors: row count of `matrix` zeros each.
    void initVecs();
};

// LU decomposition by Crout's method with implicit scaling and partial pivoting (Numerical
// Recipes 2.3). The factors are computed once when the matrix is set; every solve is a forward
// and back substitution.
template <typename T>
class Csolver_luDecomp : public Csolver_le<T> {
public:
    Csolver_luDecomp();
    Csolver_luDecomp(Cmatrix<T>& a);
    Csolver_luDecomp(Cmatrix<T> const& a);
    Csolver_luDecomp(Csolver_luDecomp const& other);
    Csolver_luDecomp& operator=(Csolver_luDecomp const& other);
    ~Csolver_luDecomp() override;

    // parity × U_00 × U_11 × ... × U_(n-1)(n-1); 1 for an empty solver.
    T getDet();

protected:
    Cmatrix<T> subsolve() override;
    void init() override;

    T parity = T(1);           // sign of the row permutation
    std::vector<T> rowScale;   // per row position, 1 / largest |element| of the row as set
    std::vector<int> rowPerm;  // per column step j, the row exchanged into position j

private:
    void swapRow(std::size_t r1, std::size_t r2);
    void getScale();
    void doCrout();
    // Factorisation without pivoting; kept, not called by any operation.
    void doCrout2();
    void substitute();
};

// Singular value decomposition A = U·W·V^T (Golub-Reinsch, Numerical Recipes 2.6) and the
// truncated pseudo-inverse solve X = V·W+·U^T·B.
template <typename T>
class Csolver_svd : public Csolver_le<T> {
public:
    Csolver_svd();
    Csolver_svd(Cmatrix<T>& a);
    Csolver_svd(Cmatrix<T> const& a);
    // Decomposes a in place of a copy: for large least-squares systems built only to be solved.
    Csolver_svd(Cmatrix<T>&& a);
    Csolver_svd(Csolver_svd const& other);
    Csolver_svd& operator=(Csolver_svd const& other);
    ~Csolver_svd() override;

protected:
    Cmatrix<T> subsolve() override;
    void init() override;

    Cmatrix<T> superDiag;       // n × 1, superdiagonal of the bidiagonal form (working storage)
    Cmatrix<T> singularValues;  // n × n diagonal W
    Cmatrix<T> rightVectors;    // n × n orthogonal V

private:
    void svd_dcmp();
};

// Sign, magnitude and hypotenuse helpers of the decomposition.
template <typename T>
class cNRB_math {
public:
    // sqrt(a^2 + b^2) without overflow; ratio and its square in T, the root in double.
    static T pythag(T const& a, T const& b);
    // sqrt(b^2 + a^2) directly in T.
    static T calcEuclidDist(T const& a, T const& b);
    // -|a| if b < 0, else |a|.
    static T setSignof(T const& a, T const& b);
    // a if b > 0, else -a (b = 0 flips the sign).
    static T sign(T const& a, T const& b);
    // The larger of |a| and |b|.
    static T absmax(T const& a, T const& b);
    static T min(T const& a, T const& b);
    static T max(T const& a, T const& b);
};

#define MGEO_SOLVER_LE_FAMILY(T, EXT)          \
    EXT template class Csolver_le<T>;          \
    EXT template class Csolver_GaussJordan<T>; \
    EXT template class Csolver_luDecomp<T>;    \
    EXT template class Csolver_svd<T>;         \
    EXT template class cNRB_math<T>;
#define MGEO_SOLVER_LE_EXTERN(T) MGEO_SOLVER_LE_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_SOLVER_LE_EXTERN)
#undef MGEO_SOLVER_LE_EXTERN

}  // namespace math
