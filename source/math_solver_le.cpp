#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "math/solver_le.h"

namespace math {

namespace {

constexpr char kThisFile[] = "math_solver_le.cpp";

[[noreturn]] void throwMath(int id) {
    CthrowMath err(id, std::c_empty);
    throw err;
}

// 1 / x formed in double and rounded to T once.
template <typename T>
T reciprocal(T x) {
    return static_cast<T>(1.0 / static_cast<double>(x));
}

}  // namespace

// ------------------------------------------------------------------------------------------
// Csolver_le: the common interface
// ------------------------------------------------------------------------------------------

template <typename T>
Csolver_le<T>::Csolver_le() = default;

template <typename T>
Csolver_le<T>::Csolver_le(Cmatrix<T>& a) : matrix(a), matrixSet(true), rhsSet(false) {}

template <typename T>
Csolver_le<T>::Csolver_le(Cmatrix<T> const& a) : matrix(a), matrixSet(true), rhsSet(false) {}

template <typename T>
Csolver_le<T>::Csolver_le(Cmatrix<T>&& a) : matrix(std::move(a)), matrixSet(true), rhsSet(false) {}

template <typename T>
Csolver_le<T>::Csolver_le(Csolver_le const& other) = default;

template <typename T>
Csolver_le<T>& Csolver_le<T>::operator=(Csolver_le const& other) = default;

template <typename T>
Csolver_le<T>::~Csolver_le() = default;

template <typename T>
void Csolver_le<T>::setMatrix(Cmatrix<T>& a) {
    setMatrix(static_cast<Cmatrix<T> const&>(a));
}

// init() of the object's class (also while a derived constructor runs), annotating a passing
// error with this file and line.
template <typename T>
void Csolver_le<T>::initAnnotated() {
    try {
        init();
    } catch (CthrowBase& e) {
        e.setExInfo(kThisFile, __LINE__);
        throw;
    }
}

template <typename T>
void Csolver_le<T>::setMatrix(Cmatrix<T> const& a) {
    matrix = a;
    matrixSet = true;
    initAnnotated();
}

template <typename T>
Cmatrix<T> Csolver_le<T>::solve(std::vector<T> const& b) {
    Cmatrix<T> column(b.size(), 1);
    for (std::size_t i = 0; i < b.size(); ++i) {
        column.getBase()[i] = b[i];
    }
    rhs.swap(column);
    rhsSet = true;
    try {
        return subsolve();
    } catch (CthrowBase& e) {
        e.setExInfo(kThisFile, __LINE__);
        throw;
    }
}

template <typename T>
Cmatrix<T> Csolver_le<T>::solve(Cmatrix<T>& b) {
    return solve(static_cast<Cmatrix<T> const&>(b));
}

template <typename T>
Cmatrix<T> Csolver_le<T>::solve(Cmatrix<T> const& b) {
    rhs = b;
    rhsSet = true;
    try {
        return subsolve();
    } catch (CthrowBase& e) {
        e.setExInfo(kThisFile, __LINE__);
        throw;
    }
}

template <typename T>
Cmatrix<T> Csolver_le<T>::invert() {
    Cmatrix<T> identity(matrix.m(), matrix.n());
    identity.setIdentity();
    rhs.swap(identity);
    rhsSet = true;
    try {
        return subsolve();
    } catch (CthrowBase& e) {
        e.setExInfo(kThisFile, __LINE__);
        throw;
    }
}

namespace {

// P = A·X with A's column count as the inner length (rows of X beyond it are not read), or an
// empty matrix when A has more columns than X has rows (the product would read past X).
template <typename T>
Cmatrix<T> productOrEmpty(Cmatrix<T> const& a, Cmatrix<T> const& x) {
    if (a.n() > x.m()) {
        return Cmatrix<T>();
    }
    return a * x;
}

}  // namespace

// Iterative refinement: R = A·X - B, X <- X - solve(R), as long as the error sum
// s = sum_{k=0}^{size-2} (P_k - B_k)^2 (the last element deliberately left out) strictly
// decreases. Returns the last iterate that improved on its predecessor.
template <typename T>
Cmatrix<T> Csolver_le<T>::solveItr(Cmatrix<T> const& a, Cmatrix<T> const& b) {
    Cmatrix<T> bCopy(b);
    Cmatrix<T> x = solve(bCopy);
    Cmatrix<T> p = productOrEmpty(a, x);
    T previous = std::numeric_limits<T>::infinity();
    Cmatrix<T> result;
    // The refinement has no documented limit and ends when the error sum stops decreasing
    // strictly; a strictly decreasing sum of floating-point values can still take millions of
    // passes (fuzzing found a 9 × 9 system running for 25 s), so after kMaxRefinements passes
    // the last improving iterate is returned.
    constexpr int kMaxRefinements = 1000;
    for (int pass = 0;; ++pass) {
        if (pass == kMaxRefinements) {
            return result;
        }
        bool const sameShape = p.m() == b.m() && p.n() == b.n();
        T s = std::numeric_limits<T>::infinity();
        if (sameShape) {
            s = T(0);
            std::size_t const count = p.size();
            T const* pk = p.getBase();
            T const* bk = b.getBase();
            for (std::size_t k = 0; k + 1 < count; ++k) {
                T const d = pk[k] - bk[k];
                s += d * d;
            }
        }
        // A NaN error sum would never compare >= and the loop would not end: it counts as no
        // improvement.
        if (s >= previous || std::isnan(s)) {
            return result;
        }
        previous = s;
        result = x;
        Cmatrix<T> r = p - b;  // same shape, checked above
        Cmatrix<T> d = solve(r);
        if (d.m() != x.m() || d.n() != x.n()) {
            return result;
        }
        x -= d;
        p = productOrEmpty(a, x);
    }
}

// sum_i sum_j (B_ij - P_ij)^2 with P = A·X, each element widened to double, the sum in double.
// P is addressed with its own column count: P_ij is P's storage position i·P.n + j.
template <typename T>
T Csolver_le<T>::deviation(Cmatrix<T> const& a, Cmatrix<T> const& x, Cmatrix<T> const& b) {
    if (b.size() == 0) {
        return T(0);
    }
    Cmatrix<T> const p = productOrEmpty(a, x);
    std::size_t const pn = p.n();
    if ((b.m() - 1) * pn + (b.n() - 1) >= p.size()) {
        // The sum would address elements past the end of P.
        return std::numeric_limits<T>::infinity();
    }
    T const* const pb = p.getBase();
    double sum = 0.0;
    for (std::size_t i = 0; i < b.m(); ++i) {
        for (std::size_t j = 0; j < b.n(); ++j) {
            double const d = static_cast<double>(b(i, j)) - static_cast<double>(pb[i * pn + j]);
            sum += d * d;
        }
    }
    return static_cast<T>(sum);
}

template <typename T>
Cmatrix<T> Csolver_le<T>::subsolve() {
    throwMath(CthrowMath::ERR_MATH_FUNCNOTIMPL);
}

template <typename T>
void Csolver_le<T>::init() {
    throwMath(CthrowMath::ERR_MATH_FUNCNOTIMPL);
}

// ------------------------------------------------------------------------------------------
// Csolver_GaussJordan
// ------------------------------------------------------------------------------------------

template <typename T>
Csolver_GaussJordan<T>::Csolver_GaussJordan() = default;

template <typename T>
Csolver_GaussJordan<T>::Csolver_GaussJordan(Cmatrix<T>& a) : Csolver_le<T>(a), sourceMatrix(a) {}

template <typename T>
Csolver_GaussJordan<T>::Csolver_GaussJordan(Cmatrix<T> const& a)
    : Csolver_le<T>(a), sourceMatrix(a) {}

template <typename T>
Csolver_GaussJordan<T>::Csolver_GaussJordan(Csolver_GaussJordan const& other) = default;

template <typename T>
Csolver_GaussJordan<T>& Csolver_GaussJordan<T>::operator=(Csolver_GaussJordan const& other) =
    default;

template <typename T>
Csolver_GaussJordan<T>::~Csolver_GaussJordan() = default;

template <typename T>
void Csolver_GaussJordan<T>::init() {
    sourceMatrix = this->matrix;
}

template <typename T>
void Csolver_GaussJordan<T>::initVecs() {
    std::size_t const n = this->matrix.m();
    pivotCols.assign(n, 0);
    pivotRows.assign(n, 0);
    pivotUsed.assign(n, 0);
}

// Rows r1 and r2 of the matrix over all its columns. In rhs (m columns) the elements at
// positions r1·m + t and r2·m + t for t = 0 ... rows of rhs - 1, in ascending t: for a square rhs
// exactly the row exchange. Pairs of which one position lies past the end of rhs's storage are
// left alone.
template <typename T>
void Csolver_GaussJordan<T>::doPivot(int r1, int r2) {
    Cmatrix<T>& a = this->matrix;
    Cmatrix<T>& b = this->rhs;
    std::size_t const n = a.n();
    T* row1 = a.getRow(static_cast<std::size_t>(r1));
    T* row2 = a.getRow(static_cast<std::size_t>(r2));
    for (std::size_t k = 0; k < n; ++k) {
        std::swap(row1[k], row2[k]);
    }
    std::size_t const m = b.n();
    std::size_t const count = b.size();
    T* base = b.getBase();
    std::size_t const p1 = static_cast<std::size_t>(r1) * m;
    std::size_t const p2 = static_cast<std::size_t>(r2) * m;
    for (std::size_t t = 0; t < b.m(); ++t) {
        if (p1 + t < count && p2 + t < count) {
            std::swap(base[p1 + t], base[p2 + t]);
        }
    }
}

// Gauss-Jordan elimination with full pivoting (Numerical Recipes 2.1): for each step the
// largest |a_jk| among unused rows and columns (>=, so the last of equal magnitudes in
// row-major order) becomes the pivot, its row is moved onto the diagonal, normalised and
// eliminated from every other row of A and B. Finally the column exchanges are undone in
// reverse order, leaving A^-1 in `matrix`.
template <typename T>
Cmatrix<T> Csolver_GaussJordan<T>::subsolve() {
    Cmatrix<T>& a = this->matrix;
    Cmatrix<T>& b = this->rhs;
    a = sourceMatrix;
    if (a.m() != a.n()) {
        throwMath(CthrowMath::ERR_MATRIX_NOTSQUARE);
    }
    initVecs();
    std::size_t const n = a.m();
    if (b.m() != n) {
        throwMath(CthrowMath::ERR_MATH_INVALID_ARGUMENT);
    }
    std::size_t const m = b.n();
    T* const ab = a.getBase();
    T* const bb = b.getBase();

    for (std::size_t i = 0; i < n; ++i) {
        // Pivot search over the rows and columns not yet used.
        T big = T(0);
        std::size_t irow = 0;
        std::size_t icol = 0;
        for (std::size_t j = 0; j < n; ++j) {
            if (pivotUsed[j] == 1) {
                continue;
            }
            T const* row = ab + j * n;
            for (std::size_t k = 0; k < n; ++k) {
                if (pivotUsed[k] == 0 && std::fabs(row[k]) >= big) {
                    big = std::fabs(row[k]);
                    irow = j;
                    icol = k;
                }
            }
        }
        ++pivotUsed[icol];
        if (irow != icol) {
            doPivot(static_cast<int>(irow), static_cast<int>(icol));
        }
        pivotRows[i] = static_cast<int>(irow);
        pivotCols[i] = static_cast<int>(icol);

        std::size_t const c = icol;
        T* const rowC = ab + c * n;
        T* const rhsC = bb + c * m;
        if (rowC[c] == T(0)) {
            throwMath(CthrowMath::ERR_SOLVE_MATRIXSINGULAR);
        }
        T const pinv = reciprocal(rowC[c]);
        rowC[c] = T(1);
        for (std::size_t k = 0; k < n; ++k) {
            rowC[k] *= pinv;
        }
        for (std::size_t k = 0; k < m; ++k) {
            rhsC[k] *= pinv;
        }
        // Row l -= a_lc · row c, for every row but the pivot row.
        for (std::size_t l = 0; l < n; ++l) {
            if (l == c) {
                continue;
            }
            T* const rowL = ab + l * n;
            T* const rhsL = bb + l * m;
            T const f = rowL[c];
            rowL[c] = T(0);
            for (std::size_t k = 0; k < n; ++k) {
                rowL[k] -= rowC[k] * f;
            }
            for (std::size_t k = 0; k < m; ++k) {
                rhsL[k] -= rhsC[k] * f;
            }
        }
    }

    // Undo the column exchanges in reverse order.
    for (std::size_t l = n; l-- > 0;) {
        if (pivotRows[l] != pivotCols[l]) {
            std::size_t const c1 = static_cast<std::size_t>(pivotRows[l]);
            std::size_t const c2 = static_cast<std::size_t>(pivotCols[l]);
            for (std::size_t k = 0; k < n; ++k) {
                std::swap(ab[k * n + c1], ab[k * n + c2]);
            }
        }
    }
    return b;
}

// ------------------------------------------------------------------------------------------
// Csolver_luDecomp
// ------------------------------------------------------------------------------------------

template <typename T>
Csolver_luDecomp<T>::Csolver_luDecomp() = default;

template <typename T>
Csolver_luDecomp<T>::Csolver_luDecomp(Cmatrix<T>& a) : Csolver_le<T>(a) {
    this->initAnnotated();
}

template <typename T>
Csolver_luDecomp<T>::Csolver_luDecomp(Cmatrix<T> const& a) : Csolver_le<T>(a) {
    this->initAnnotated();
}

template <typename T>
Csolver_luDecomp<T>::Csolver_luDecomp(Csolver_luDecomp const& other) = default;

template <typename T>
Csolver_luDecomp<T>& Csolver_luDecomp<T>::operator=(Csolver_luDecomp const& other) = default;

template <typename T>
Csolver_luDecomp<T>::~Csolver_luDecomp() = default;

template <typename T>
void Csolver_luDecomp<T>::init() {
    Cmatrix<T> const& a = this->matrix;
    if (a.m() != a.n()) {
        throwMath(CthrowMath::ERR_MATRIX_NOTSQUARE);
    }
    std::size_t const n = a.m();
    parity = T(1);
    rowScale.assign(n, T(0));
    // The identity until the factorisation overwrites it, so that a solve after a failed
    // factorisation stays within the matrix.
    rowPerm.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        rowPerm[i] = static_cast<int>(i);
    }
    getScale();
    doCrout();
}

template <typename T>
void Csolver_luDecomp<T>::swapRow(std::size_t r1, std::size_t r2) {
    Cmatrix<T>& a = this->matrix;
    T* row1 = a.getRow(r1);
    T* row2 = a.getRow(r2);
    for (std::size_t k = 0; k < a.n(); ++k) {
        std::swap(row1[k], row2[k]);
    }
    parity = -parity;
}

// Implicit scaling: rowScale_i = 1 / max_j |a_ij| (formed in double); an all-zero row is
// singular.
template <typename T>
void Csolver_luDecomp<T>::getScale() {
    Cmatrix<T> const& a = this->matrix;
    std::size_t const n = a.m();
    for (std::size_t i = 0; i < n; ++i) {
        T const* row = a.getRow(i);
        T big = T(0);
        for (std::size_t j = 0; j < a.n(); ++j) {
            T const t = std::fabs(row[j]);
            if (t > big) {
                big = t;
            }
        }
        if (big == T(0)) {
            throwMath(CthrowMath::ERR_SOLVE_MATRIXSINGULAR);
        }
        rowScale[i] = reciprocal(big);
    }
}

// Crout's method with implicit pivoting (Numerical Recipes 2.3), column by column:
//   upper part  a_ij = a_ij - sum_{k<i} a_ik a_kj   (i < j)
//   lower part  a_ij = a_ij - sum_{k<j} a_ik a_kj   (i >= j), the pivot is the last row with the
//               largest rowScale_i |a_ij| (rowScale by row position, not moved with the rows)
// then the pivot row is exchanged into position j and the column below it divided by the
// pivot (multiplied by its reciprocal, formed in double). A pivot equal to the machine epsilon
// is set to 0. Column j is worked on in a contiguous copy; every element receives the same
// operations in the same order as in place.
template <typename T>
void Csolver_luDecomp<T>::doCrout() {
    Cmatrix<T>& mat = this->matrix;
    std::size_t const n = mat.m();
    T* const a = mat.getBase();
    T const eps = std::numeric_limits<T>::epsilon();
    std::vector<T> col(n);
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = 0; i < n; ++i) {
            col[i] = a[i * n + j];
        }
        // Rows are taken four at a time: the terms k below the group's first row are
        // independent of the group and run interleaved; each row then takes its remaining
        // terms in order and is stored before the next row reads it.
        T big = T(0);
        std::size_t imax = j;
        for (std::size_t i0 = 0; i0 < n; i0 += 4) {
            std::size_t const rows = n - i0 < 4 ? n - i0 : 4;
            std::size_t const common = i0 < j ? i0 : j;
            T s[4];
            T const* r[4];
            for (std::size_t t = 0; t < rows; ++t) {
                s[t] = col[i0 + t];
                r[t] = a + (i0 + t) * n;
            }
            if (rows == 4) {
                for (std::size_t k = 0; k < common; ++k) {
                    T const ck = col[k];
                    s[0] -= r[0][k] * ck;
                    s[1] -= r[1][k] * ck;
                    s[2] -= r[2][k] * ck;
                    s[3] -= r[3][k] * ck;
                }
            } else {
                for (std::size_t t = 0; t < rows; ++t) {
                    for (std::size_t k = 0; k < common; ++k) {
                        s[t] -= r[t][k] * col[k];
                    }
                }
            }
            for (std::size_t t = 0; t < rows; ++t) {
                std::size_t const i = i0 + t;
                std::size_t const kEnd = i < j ? i : j;
                for (std::size_t k = common; k < kEnd; ++k) {
                    s[t] -= r[t][k] * col[k];
                }
                col[i] = s[t];
                if (i >= j) {
                    T const q = rowScale[i] * std::fabs(s[t]);
                    if (q >= big) {
                        big = q;
                        imax = i;
                    }
                }
            }
        }
        for (std::size_t i = 0; i < n; ++i) {
            a[i * n + j] = col[i];
        }
        if (imax != j) {
            swapRow(imax, j);
        }
        rowPerm[j] = static_cast<int>(imax);
        T& pivot = a[j * n + j];
        if (pivot == eps) {
            pivot = T(0);
        }
        T const f = reciprocal(pivot);
        for (std::size_t i = j + 1; i < n; ++i) {
            a[i * n + j] *= f;
        }
    }
}

// Doolittle-ordered factorisation without pivoting: a_ij -= sum_{k<min(i,j)} a_ik a_kj, and
// below the diagonal a_ij /= a_jj. Kept for completeness; no operation calls it.
template <typename T>
void Csolver_luDecomp<T>::doCrout2() {
    Cmatrix<T>& a = this->matrix;
    std::size_t const n = a.m();
    for (std::size_t i = 0; i < n; ++i) {
        rowPerm[i] = static_cast<int>(i);
        for (std::size_t j = 0; j < n; ++j) {
            T s = a(i, j);
            for (std::size_t k = 0; static_cast<T>(k) < std::fmin(T(i), T(j)); ++k) {
                s -= a(i, k) * a(k, j);
            }
            a(i, j) = s;
            if (i > j) {
                if (a(j, j) == T(0)) {
                    throwMath(CthrowMath::ERR_SOLVE_MATRIXSINGULAR);
                }
                a(i, j) = a(i, j) / a(j, j);
            }
        }
    }
}

// Forward substitution with the row permutation (skipping the leading zeros of the permuted
// right-hand side), then back substitution, for every column of rhs.
template <typename T>
void Csolver_luDecomp<T>::substitute() {
    Cmatrix<T> const& mat = this->matrix;
    Cmatrix<T>& rhs = this->rhs;
    std::size_t const n = mat.m();
    std::size_t const m = rhs.n();
    T const* const a = mat.getBase();
    T* const b = rhs.getBase();
    for (std::size_t c = 0; c < m; ++c) {
        bool started = false;
        std::size_t first = 0;
        for (std::size_t i = 0; i < n; ++i) {
            std::size_t const p = static_cast<std::size_t>(rowPerm[i]);
            T s = b[p * m + c];
            b[p * m + c] = b[i * m + c];
            if (started) {
                T const* row = a + i * n;
                for (std::size_t j = first; j < i; ++j) {
                    s -= row[j] * b[j * m + c];
                }
            } else if (s != T(0)) {  // a NaN counts as non-zero
                started = true;
                first = i;
            }
            b[i * m + c] = s;
        }
        for (std::size_t i = n; i-- > 0;) {
            T const* row = a + i * n;
            T s = b[i * m + c];
            for (std::size_t j = i + 1; j < n; ++j) {
                s -= row[j] * b[j * m + c];
            }
            b[i * m + c] = s / row[i];
        }
    }
}

template <typename T>
Cmatrix<T> Csolver_luDecomp<T>::subsolve() {
    Cmatrix<T> const& a = this->matrix;
    if (this->rhs.m() != a.m()) {
        throwMath(CthrowMath::ERR_MATH_INVALID_ARGUMENT);
    }
    // A factorisation that failed on a non-square matrix leaves no usable factors.
    if (a.m() != a.n() || rowPerm.size() != a.m()) {
        throwMath(CthrowMath::ERR_MATRIX_NOTSQUARE);
    }
    substitute();
    return this->rhs;
}

template <typename T>
T Csolver_luDecomp<T>::getDet() {
    Cmatrix<T> const& a = this->matrix;
    std::size_t const n = a.m() < a.n() ? a.m() : a.n();
    T d = parity;
    for (std::size_t i = 0; i < n; ++i) {
        d *= a(i, i);
    }
    return d;
}

// ------------------------------------------------------------------------------------------
// cNRB_math
// ------------------------------------------------------------------------------------------

// p·sqrt(1 + (q/p)^2) with p >= q (the ratio and its square in T, the rest in double).
template <typename T>
T cNRB_math<T>::pythag(T const& a, T const& b) {
    T const p = std::fabs(a);
    T const q = std::fabs(b);
    if (p > q) {
        T const r = q / p;
        T const r2 = r * r;
        return static_cast<T>(static_cast<double>(p) * std::sqrt(1.0 + static_cast<double>(r2)));
    }
    if (q == T(0)) {
        return T(0);
    }
    T const r = p / q;
    T const r2 = r * r;
    return static_cast<T>(static_cast<double>(q) * std::sqrt(1.0 + static_cast<double>(r2)));
}

template <typename T>
T cNRB_math<T>::calcEuclidDist(T const& a, T const& b) {
    return std::sqrt(b * b + a * a);
}

template <typename T>
T cNRB_math<T>::setSignof(T const& a, T const& b) {
    return b < T(0) ? -std::fabs(a) : std::fabs(a);
}

template <typename T>
T cNRB_math<T>::sign(T const& a, T const& b) {
    return b > T(0) ? a : -a;
}

template <typename T>
T cNRB_math<T>::absmax(T const& a, T const& b) {
    T const fa = std::fabs(a);
    T const fb = std::fabs(b);
    return fa > fb ? fa : fb;
}

template <typename T>
T cNRB_math<T>::min(T const& a, T const& b) {
    return a < b ? a : b;
}

template <typename T>
T cNRB_math<T>::max(T const& a, T const& b) {
    return a > b ? a : b;
}

// ------------------------------------------------------------------------------------------
// Csolver_svd
// ------------------------------------------------------------------------------------------

template <typename T>
Csolver_svd<T>::Csolver_svd() = default;

template <typename T>
Csolver_svd<T>::Csolver_svd(Cmatrix<T>& a) : Csolver_le<T>(a) {
    this->initAnnotated();
}

template <typename T>
Csolver_svd<T>::Csolver_svd(Cmatrix<T> const& a) : Csolver_le<T>(a) {
    this->initAnnotated();
}

template <typename T>
Csolver_svd<T>::Csolver_svd(Cmatrix<T>&& a) : Csolver_le<T>(std::move(a)) {
    this->initAnnotated();
}

template <typename T>
Csolver_svd<T>::Csolver_svd(Csolver_svd const& other) = default;

template <typename T>
Csolver_svd<T>& Csolver_svd<T>::operator=(Csolver_svd const& other) = default;

template <typename T>
Csolver_svd<T>::~Csolver_svd() = default;

template <typename T>
void Csolver_svd<T>::init() {
    std::size_t const n = this->matrix.n();
    singularValues = Cmatrix<T>(n, n, T(0));
    rightVectors = Cmatrix<T>(n, n);
    superDiag = Cmatrix<T>(n, 1);
    svd_dcmp();
}

namespace {

// One plane rotation (c, s) of the columns (j, j + 1) of a row-major matrix.
template <typename T>
struct Rotation {
    std::size_t j;
    T c;
    T s;
};

// Applies the rotations in sequence to every row: x' = x·c + z·s, z' = z·c - x·s with x in
// column `first` (or rot.j) and z in column rot.j + 1 (or rot.j). Every element receives the
// same operations in the same order as when each rotation sweeps all rows before the next.
template <typename T>
void rotateColumns(T* a, std::size_t rows, std::size_t stride, std::size_t first,
                   std::vector<Rotation<T>> const& rots, bool fixedFirst) {
    if (rots.empty()) {
        return;
    }
    for (std::size_t r = 0; r < rows; ++r) {
        T* row = a + r * stride;
        for (Rotation<T> const& rot : rots) {
            std::size_t const cx = fixedFirst ? first : rot.j;
            std::size_t const cz = fixedFirst ? rot.j : rot.j + 1;
            T const x = row[cx];
            T const z = row[cz];
            row[cx] = x * rot.c + z * rot.s;
            row[cz] = z * rot.c - x * rot.s;
        }
    }
}

}  // namespace

// Golub-Reinsch singular value decomposition in place (Numerical Recipes 2.6): Householder
// reduction to upper bidiagonal form, accumulation of the right (V) and left (U, in `matrix`)
// transformations, then implicit-shift QR sweeps on the bidiagonal form, at most 30 passes per
// singular value. Splitting tests compare against eps·anorm, eps the machine epsilon of T.
// The singular values are left unsorted and non-negative.
template <typename T>
void Csolver_svd<T>::svd_dcmp() {
    using N = cNRB_math<T>;
    Cmatrix<T>& mat = this->matrix;
    std::size_t const m = mat.m();
    std::size_t const n = mat.n();
    if (n == 0) {
        return;
    }
    T* const a = mat.getBase();
    T* const v = rightVectors.getBase();
    T* const rv1 = superDiag.getBase();
    T* const wd = singularValues.getBase();
    auto A = [a, n](std::size_t r, std::size_t c) -> T& { return a[r * n + c]; };
    auto V = [v, n](std::size_t r, std::size_t c) -> T& { return v[r * n + c]; };
    auto W = [wd, n](std::size_t i) -> T& { return wd[i * (n + 1)]; };
    std::vector<T> acc(n);  // fused dot products, one accumulator per column

    // 1. Householder reduction to bidiagonal form.
    T g = T(0);
    T scale = T(0);
    T anorm = T(0);
    std::size_t l = 0;
    for (std::size_t i = 0; i < n; ++i) {
        l = i + 1;
        rv1[i] = scale * g;
        g = T(0);
        T s = T(0);
        scale = T(0);
        // Column i, rows i ... m-1: scale = sum |a_ki|.
        for (std::size_t k = i; k < m; ++k) {
            scale += std::fabs(A(k, i));
        }
        if (scale != T(0)) {
            for (std::size_t k = i; k < m; ++k) {
                A(k, i) /= scale;
                s += A(k, i) * A(k, i);
            }
            T const f = A(i, i);
            g = -N::sign(std::sqrt(s), f);
            T const h = f * g - s;
            A(i, i) = f - g;
            // f_j = (sum_{k>=i} a_ki a_kj) / h, then a_kj += f_j a_ki, for j > i. The dot
            // products do not read what the updates write, so all of them are formed in one
            // pass over the rows (each still summed in ascending k), then all updates.
            for (std::size_t j = l; j < n; ++j) {
                acc[j] = T(0);
            }
            for (std::size_t k = i; k < m; ++k) {
                T const* row = a + k * n;
                T const aki = row[i];
                for (std::size_t j = l; j < n; ++j) {
                    acc[j] += aki * row[j];
                }
            }
            for (std::size_t j = l; j < n; ++j) {
                acc[j] = acc[j] / h;
            }
            for (std::size_t k = i; k < m; ++k) {
                T* row = a + k * n;
                T const aki = row[i];
                for (std::size_t j = l; j < n; ++j) {
                    row[j] += acc[j] * aki;
                }
                row[i] *= scale;
            }
        }
        W(i) = scale * g;
        g = T(0);
        s = T(0);
        scale = T(0);
        // Row i, columns i+1 ... n-1.
        if (i < m && i != n - 1) {
            T* const rowI = a + i * n;
            for (std::size_t k = l; k < n; ++k) {
                scale += std::fabs(rowI[k]);
            }
            if (scale != T(0)) {
                for (std::size_t k = l; k < n; ++k) {
                    rowI[k] /= scale;
                    s += rowI[k] * rowI[k];
                }
                T const f = rowI[l];
                g = -N::sign(std::sqrt(s), f);
                T const h = f * g - s;
                rowI[l] = f - g;
                for (std::size_t k = l; k < n; ++k) {
                    rv1[k] = rowI[k] / h;
                }
                for (std::size_t j = l; j < m; ++j) {
                    T* const rowJ = a + j * n;
                    T sj = T(0);
                    for (std::size_t k = l; k < n; ++k) {
                        sj += rowJ[k] * rowI[k];
                    }
                    for (std::size_t k = l; k < n; ++k) {
                        rowJ[k] += sj * rv1[k];
                    }
                }
                for (std::size_t k = l; k < n; ++k) {
                    rowI[k] *= scale;
                }
            }
        }
        anorm = N::max(anorm, std::fabs(W(i)) + std::fabs(rv1[i]));
    }

    // 2. Accumulation of the right-hand transformations, last column first.
    for (std::size_t i = n; i-- > 0;) {
        if (i < n - 1) {
            if (g != T(0)) {
                // Double division avoids a possible underflow.
                for (std::size_t j = l; j < n; ++j) {
                    V(j, i) = (A(i, j) / A(i, l)) / g;
                }
                // s_j = sum_{k>=l} a_ik v_kj, then v_kj += s_j v_ki, for j >= l; the sums do
                // not read what the updates write, so they are formed row by row of V (each
                // still in ascending k) and the updates follow in one pass.
                for (std::size_t j = l; j < n; ++j) {
                    acc[j] = T(0);
                }
                for (std::size_t k = l; k < n; ++k) {
                    T const aik = A(i, k);
                    T const* const vRow = v + k * n;
                    for (std::size_t j = l; j < n; ++j) {
                        acc[j] += aik * vRow[j];
                    }
                }
                for (std::size_t k = l; k < n; ++k) {
                    T* const vRow = v + k * n;
                    T const vki = vRow[i];
                    for (std::size_t j = l; j < n; ++j) {
                        vRow[j] += acc[j] * vki;
                    }
                }
            }
            for (std::size_t j = l; j < n; ++j) {
                V(i, j) = T(0);
                V(j, i) = T(0);
            }
        }
        V(i, i) = T(1);
        g = rv1[i];
        l = i;
    }

    // 3. Accumulation of the left-hand transformations into U, last column first.
    for (std::size_t i = (m < n ? m : n); i-- > 0;) {
        l = i + 1;
        g = W(i);
        for (std::size_t j = l; j < n; ++j) {
            A(i, j) = T(0);
        }
        if (g != T(0)) {
            g = T(1) / g;
            // f_j = (sum_{k>i} a_ki a_kj / a_ii) g, then a_kj += f_j a_ki for k >= i; the dot
            // products are fused into one pass as in step 1.
            for (std::size_t j = l; j < n; ++j) {
                acc[j] = T(0);
            }
            for (std::size_t k = l; k < m; ++k) {
                T const* row = a + k * n;
                T const aki = row[i];
                for (std::size_t j = l; j < n; ++j) {
                    acc[j] += aki * row[j];
                }
            }
            T const aii = A(i, i);
            for (std::size_t j = l; j < n; ++j) {
                acc[j] = (acc[j] / aii) * g;
            }
            for (std::size_t k = i; k < m; ++k) {
                T* row = a + k * n;
                T const aki = row[i];
                for (std::size_t j = l; j < n; ++j) {
                    row[j] += acc[j] * aki;
                }
                row[i] *= g;
            }
        } else {
            for (std::size_t j = i; j < m; ++j) {
                A(j, i) = T(0);
            }
        }
        A(i, i) += T(1);
    }

    // 4. Diagonalisation of the bidiagonal form.
    T const tol = std::numeric_limits<T>::epsilon() * anorm;
    std::vector<Rotation<T>> rotU;
    std::vector<Rotation<T>> rotV;
    rotU.reserve(n);
    rotV.reserve(n);
    for (std::size_t k = n; k-- > 0;) {
        for (int its = 0; its < 30; ++its) {
            // Splitting test: e_l negligible (no cancellation needed) or w_(l-1) negligible.
            bool cancel = true;
            std::size_t nm = 0;
            for (l = k;; --l) {
                if (l == 0 || std::fabs(rv1[l]) <= tol) {
                    cancel = false;
                    break;
                }
                nm = l - 1;
                if (std::fabs(W(nm)) <= tol) {
                    break;
                }
            }
            if (cancel) {
                // Cancel e_l by rotations of the columns (l-1, i), i = l ... k, of U.
                T c = T(0);
                T s = T(1);
                rotU.clear();
                for (std::size_t i = l; i <= k; ++i) {
                    T const f = s * rv1[i];
                    rv1[i] = c * rv1[i];
                    if (std::fabs(f) <= tol) {
                        break;
                    }
                    g = W(i);
                    T h = N::pythag(f, g);
                    W(i) = h;
                    h = T(1) / h;
                    c = g * h;
                    s = -f * h;
                    rotU.push_back({i, c, s});
                }
                rotateColumns(a, m, n, nm, rotU, true);
            }
            T z = W(k);
            if (l == k) {
                // Converged: make the singular value non-negative.
                if (z < T(0)) {
                    W(k) = -z;
                    for (std::size_t j = 0; j < n; ++j) {
                        V(j, k) = -V(j, k);
                    }
                }
                break;
            }
            if (its == 29) {
                throwMath(CthrowMath::ERR_SOLVE_NOTSOLVABLE);
            }
            // Shift from the bottom 2 × 2 minor.
            T x = W(l);
            nm = k - 1;
            T y = W(nm);
            g = rv1[nm];
            T h = rv1[k];
            T f = ((y - z) * (y + z) + (g - h) * (g + h)) / (T(2) * h * y);
            g = N::pythag(f, T(1));
            f = ((x - z) * (x + z) + h * ((y / (f + N::setSignof(g, f))) - h)) / x;
            // Next QR transformation: chase the bulge with Givens rotations.
            T c = T(1);
            T s = T(1);
            rotU.clear();
            rotV.clear();
            for (std::size_t j = l; j <= nm; ++j) {
                std::size_t const i = j + 1;
                g = rv1[i];
                y = W(i);
                h = s * g;
                g = c * g;
                z = N::pythag(f, h);
                rv1[j] = z;
                c = f / z;
                s = h / z;
                f = x * c + g * s;
                g = g * c - x * s;
                h = y * s;
                y *= c;
                rotV.push_back({j, c, s});
                z = N::pythag(f, h);
                W(j) = z;
                if (z != T(0)) {
                    z = T(1) / z;
                    c = f * z;
                    s = h * z;
                }
                f = c * g + s * y;
                x = c * y - s * g;
                rotU.push_back({j, c, s});
            }
            rotateColumns(v, n, n, 0, rotV, false);
            rotateColumns(a, m, n, 0, rotU, false);
            rv1[l] = T(0);
            rv1[k] = f;
            W(k) = x;
        }
    }
}

// Truncated pseudo-inverse solve: singular values below wmax·eps are set to 0 (in W itself,
// so the truncation persists), W+ holds 1 / w_ii for the others, and
// X = ((V·W+)·U^T)·B, each product summed in ascending inner index from 0. U^T and the n × m
// product (V·W+)·U^T are not formed: column k of the latter is computed when row k of B is
// added in, which gives every element of X the same terms in the same order.
template <typename T>
Cmatrix<T> Csolver_svd<T>::subsolve() {
    Cmatrix<T> const& u = this->matrix;
    Cmatrix<T>& b = this->rhs;
    std::size_t const m = u.m();
    std::size_t const n = u.n();
    if (b.m() != m || singularValues.m() != n || rightVectors.m() != n) {
        throwMath(CthrowMath::ERR_MATH_INVALID_ARGUMENT);
    }
    T wmax = T(0);
    for (std::size_t j = 0; j < n; ++j) {
        if (singularValues(j, j) > wmax) {
            wmax = singularValues(j, j);
        }
    }
    T const threshold = wmax * std::numeric_limits<T>::epsilon();
    Cmatrix<T> wInv(n, n, T(0));
    for (std::size_t j = 0; j < n; ++j) {
        T& w = singularValues(j, j);
        if (w < threshold) {
            w = T(0);
        }
        if (w != T(0)) {
            wInv(j, j) = T(1) / w;
        }
    }
    Cmatrix<T> const vw = rightVectors * wInv;

    std::size_t const mc = b.n();
    Cmatrix<T> x(n, mc, T(0));
    std::vector<T> pk(n);  // column k of (V·W+)·U^T
    T const* const vwb = vw.getBase();
    T* const xb = x.getBase();
    for (std::size_t k = 0; k < m; ++k) {
        T const* const uRow = u.getRow(k);
        for (std::size_t i = 0; i < n; ++i) {
            T const* const vwRow = vwb + i * n;
            T s = T(0);
            for (std::size_t j = 0; j < n; ++j) {
                s += vwRow[j] * uRow[j];
            }
            pk[i] = s;
        }
        T const* const bRow = b.getRow(k);
        for (std::size_t i = 0; i < n; ++i) {
            T* const xRow = xb + i * mc;
            T const p = pk[i];
            for (std::size_t c = 0; c < mc; ++c) {
                xRow[c] += p * bRow[c];
            }
        }
    }
    b = x;
    return x;
}

#define MGEO_SOLVER_LE_DEFINE(T) MGEO_SOLVER_LE_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_SOLVER_LE_DEFINE)

}  // namespace math
