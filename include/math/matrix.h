// The dense row-major matrix of the library. Dimensions and indices are not checked at run
// time: callers pass matching shapes (the solvers check what they need before computing).
#pragma once

#include <core/array.h>
#include <core/matrix_base.h>
#include <math/detail/instantiate.h>

#include <cstddef>
#include <vector>

namespace math {

template <typename T>
class Cmatrix : public core::CmatrixBase<T, core::CmatrixCheckAssert, core::Carray<T>> {
    using Base = core::CmatrixBase<T, core::CmatrixCheckAssert, core::Carray<T>>;

public:
    // 0 × 0.
    Cmatrix() = default;
    // m × n, elements uninitialised.
    Cmatrix(std::size_t m, std::size_t n) : Base(m, n) {}
    // m × n, every element init.
    Cmatrix(std::size_t m, std::size_t n, T const& init);

    // m · n · sizeof(T).
    std::size_t byteSize() const { return this->m_count * sizeof(T); }
    T* getBase() { return this->m_data; }
    T const* getBase() const { return this->m_data; }
    T* getRow(std::size_t i) { return this->m_data + i * this->m_n; }
    T const* getRow(std::size_t i) const { return this->m_data + i * this->m_n; }

    // Resizes out to n (m) and copies row i (column j) into it.
    void getRow(std::size_t i, std::vector<T>& out) const;
    void getCol(std::size_t j, std::vector<T>& out) const;
    // Copies the first min(n, v.size()) values into row i from column 0; the rest keeps its
    // values. setCol likewise with min(m, v.size()) values from row 0.
    void setRow(std::size_t i, std::vector<T> const& v);
    void setCol(std::size_t j, std::vector<T> const& v);
    // Writes b with b(0, 0) at (i0, j0), clipped to this matrix; nothing when i0 ≥ m or j0 ≥ n.
    void setMatrix(std::size_t i0, std::size_t j0, Cmatrix const& b);
    // Zeros, then 1 at (k, k) for k < min(m, n).
    void setIdentity();
    // The n × m transpose.
    Cmatrix transp() const;

    // Element-wise over this matrix's elements in storage order; b is read at the same
    // positions (b must have at least as many elements).
    Cmatrix operator+(Cmatrix const& b) const;
    Cmatrix operator-(Cmatrix const& b) const;
    Cmatrix& operator+=(Cmatrix const& b);
    Cmatrix& operator-=(Cmatrix const& b);
    Cmatrix& operator+=(T s);
    Cmatrix& operator-=(T s);
    Cmatrix& operator*=(T s);
    // Every element with its sign bit inverted (0 becomes -0, a NaN keeps its payload).
    Cmatrix operator-() const;

    // The product P = A × B, A.m × B.n: P(i, j) = sum_k A(i, k) B(k, j), k ascending from 0 to
    // A.n - 1, each term rounded then added (B.m is not consulted).
    Cmatrix operator*(Cmatrix const& b) const;
    // Replaces this matrix by this × b; afterwards n = b.n and m stays.
    Cmatrix& operator*=(Cmatrix const& b);
};

#define MGEO_MATRIX_FAMILY(T, EXT) EXT template class Cmatrix<T>;
#define MGEO_MATRIX_EXTERN(T) MGEO_MATRIX_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_MATRIX_EXTERN)
#undef MGEO_MATRIX_EXTERN

}  // namespace math
