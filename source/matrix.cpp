#include "math/matrix.h"

#include <algorithm>

namespace math {

template <typename T>
Cmatrix<T>::Cmatrix(std::size_t m, std::size_t n, T const& init) : Base(m, n) {
    std::fill(this->m_data, this->m_data + this->m_count, init);
}

template <typename T>
void Cmatrix<T>::getRow(std::size_t i, std::vector<T>& out) const {
    T const* row = getRow(i);
    out.assign(row, row + this->m_n);
}

template <typename T>
void Cmatrix<T>::getCol(std::size_t j, std::vector<T>& out) const {
    out.resize(this->m_m);
    for (std::size_t i = 0; i < this->m_m; ++i) {
        out[i] = this->m_data[i * this->m_n + j];
    }
}

template <typename T>
void Cmatrix<T>::setRow(std::size_t i, std::vector<T> const& v) {
    std::size_t const count = std::min(this->m_n, v.size());
    std::copy(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(count), getRow(i));
}

template <typename T>
void Cmatrix<T>::setCol(std::size_t j, std::vector<T> const& v) {
    std::size_t const count = std::min(this->m_m, v.size());
    for (std::size_t i = 0; i < count; ++i) {
        this->m_data[i * this->m_n + j] = v[i];
    }
}

template <typename T>
void Cmatrix<T>::setMatrix(std::size_t i0, std::size_t j0, Cmatrix const& b) {
    if (i0 >= this->m_m || j0 >= this->m_n) {
        return;
    }
    std::size_t const rows = std::min(b.m_m, this->m_m - i0);
    std::size_t const cols = std::min(b.m_n, this->m_n - j0);
    for (std::size_t i = 0; i < rows; ++i) {
        std::copy(b.getRow(i), b.getRow(i) + cols, getRow(i0 + i) + j0);
    }
}

template <typename T>
void Cmatrix<T>::setIdentity() {
    std::fill(this->m_data, this->m_data + this->m_count, T(0));
    std::size_t const k = std::min(this->m_m, this->m_n);
    for (std::size_t i = 0; i < k; ++i) {
        this->m_data[i * this->m_n + i] = T(1);
    }
}

template <typename T>
Cmatrix<T> Cmatrix<T>::transp() const {
    Cmatrix t(this->m_n, this->m_m);
    for (std::size_t i = 0; i < this->m_m; ++i) {
        T const* row = getRow(i);
        for (std::size_t j = 0; j < this->m_n; ++j) {
            t.m_data[j * this->m_m + i] = row[j];
        }
    }
    return t;
}

template <typename T>
Cmatrix<T> Cmatrix<T>::operator+(Cmatrix const& b) const {
    Cmatrix r(*this);
    return r += b;
}

template <typename T>
Cmatrix<T> Cmatrix<T>::operator-(Cmatrix const& b) const {
    Cmatrix r(*this);
    return r -= b;
}

template <typename T>
Cmatrix<T>& Cmatrix<T>::operator+=(Cmatrix const& b) {
    for (std::size_t k = 0; k < this->m_count; ++k) {
        this->m_data[k] += b.m_data[k];
    }
    return *this;
}

template <typename T>
Cmatrix<T>& Cmatrix<T>::operator-=(Cmatrix const& b) {
    for (std::size_t k = 0; k < this->m_count; ++k) {
        this->m_data[k] -= b.m_data[k];
    }
    return *this;
}

template <typename T>
Cmatrix<T>& Cmatrix<T>::operator+=(T s) {
    for (std::size_t k = 0; k < this->m_count; ++k) {
        this->m_data[k] += s;
    }
    return *this;
}

template <typename T>
Cmatrix<T>& Cmatrix<T>::operator-=(T s) {
    for (std::size_t k = 0; k < this->m_count; ++k) {
        this->m_data[k] -= s;
    }
    return *this;
}

template <typename T>
Cmatrix<T>& Cmatrix<T>::operator*=(T s) {
    for (std::size_t k = 0; k < this->m_count; ++k) {
        this->m_data[k] *= s;
    }
    return *this;
}

template <typename T>
Cmatrix<T> Cmatrix<T>::operator-() const {
    Cmatrix r(this->m_m, this->m_n);
    // IEEE negation flips the sign bit only.
    for (std::size_t k = 0; k < this->m_count; ++k) {
        r.m_data[k] = -this->m_data[k];
    }
    return r;
}

template <typename T>
Cmatrix<T> Cmatrix<T>::operator*(Cmatrix const& b) const {
    std::size_t const rows = this->m_m;
    std::size_t const inner = this->m_n;
    std::size_t const cols = b.m_n;
    Cmatrix p(rows, cols, T(0));
    // Loop order (i, k, j) for contiguous access; every P(i, j) still receives its terms
    // A(i, k) B(k, j) one at a time with k ascending, so its rounding is that of the plain
    // sum 0 + A(i,0)B(0,j) + A(i,1)B(1,j) + ...
    for (std::size_t i = 0; i < rows; ++i) {
        T* pRow = p.getRow(i);
        T const* aRow = getRow(i);
        for (std::size_t k = 0; k < inner; ++k) {
            T const aik = aRow[k];
            T const* bRow = b.getRow(k);
            for (std::size_t j = 0; j < cols; ++j) {
                pRow[j] += aik * bRow[j];
            }
        }
    }
    return p;
}

template <typename T>
Cmatrix<T>& Cmatrix<T>::operator*=(Cmatrix const& b) {
    Cmatrix p = *this * b;
    this->swap(p);
    return *this;
}

#define MGEO_MATRIX_DEFINE(T) MGEO_MATRIX_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_MATRIX_DEFINE)

}  // namespace math
