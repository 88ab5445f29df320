// Robust statistics and polynomials.
#include "math/basic_algo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>

namespace math {

namespace {

template <typename T>
bool isNaN(T x) {
    return x != x;
}

// Ascending order with every NaN after every number: a strict weak ordering that agrees with
// operator< on numbers (std::sort with a plain < is undefined for NaN input).
template <typename T>
bool lessNaNLast(T a, T b) {
    return a < b || (!isNaN(a) && isNaN(b));
}

// First partition pass of the selection median on [first, last) (n values): m = 1 + the
// number of values below the first one. True when that pass already decides the result
// (n <= 1, or m = k), which is then written to `result` without touching the input.
template <typename T, typename It>
bool firstPassDecides(It first, It last, std::size_t n, unsigned long long k, T& result) {
    if (n == 0) {
        result = T(-1);
        return true;
    }
    T const pivot = *first;
    if (n == 1) {
        result = pivot;
        return true;
    }
    std::size_t m = 1;
    for (It it = std::next(first); it != last; ++it) {
        if (*it < pivot) {
            ++m;
        }
    }
    result = pivot;
    return static_cast<unsigned long long>(m) == k;
}

// The selection passes as documented, on the values in x[0, n) (input order), with the scratch
// y of the same length. Each pass partitions the current range about its first element:
// values below it, in order, move to the front of the current buffer (writes never overtake
// reads), the others (duplicates of the pivot too) go in order to the other buffer, and the
// pivot is appended to the lower part. m = size of the lower part: m = k gives the pivot,
// m > k continues with the lower part and k, m < k with the upper part and k - m. Two
// buffers for all passes, no allocation per pass.
//
// Every two passes shrink the range (the upper part never holds the pivot; a lower part as
// large as the range puts its new first element below the old pivot), so the loop ends: at
// n = 1 with that value, at n = 0 with -1.
template <typename T>
T selectByPartition(std::vector<T>& x, std::vector<T>& y, std::size_t n, unsigned long long k) {
    std::vector<T>* cur = &x;
    std::vector<T>* other = &y;
    for (;;) {
        if (n == 0) {
            return T(-1);
        }
        if (n == 1) {
            return (*cur)[0];
        }
        T const pivot = (*cur)[0];
        std::size_t lower = 0;
        std::size_t upper = 0;
        for (std::size_t i = 1; i < n; ++i) {
            T const value = (*cur)[i];
            if (value < pivot) {
                (*cur)[lower++] = value;
            } else {
                (*other)[upper++] = value;
            }
        }
        (*cur)[lower++] = pivot;
        unsigned long long const m = lower;
        if (m == k) {
            return pivot;
        }
        if (m > k) {
            n = lower;
        } else {
            k -= m;
            n = upper;
            std::swap(cur, other);
        }
    }
}

// The selection median of the values in buf (input order; buf is overwritten). Regular case:
// no NaN and 1 <= k <= n (k = 0 always continues with the lower part and ends at the
// minimum). There the partition passes return the k-th smallest value (the minimum for k = 0),
// and equal numbers have equal bits except +0 and -0, so std::nth_element gives the same
// result in O(n) expected time instead of the scheme's quadratic worst case (already sorted
// input). Whenever the choice between +0 and -0 or the order of the values matters (NaN,
// k > n, a zero result with both signed zeros present), the passes themselves run.
template <typename T>
T selectFromBuffer(std::vector<T>& buf, unsigned long long k) {
    std::size_t const n = buf.size();
    bool hasNaN = false;
    bool hasPosZero = false;
    bool hasNegZero = false;
    for (T const x : buf) {
        if (isNaN(x)) {
            hasNaN = true;
        } else if (x == T(0)) {
            (std::signbit(x) ? hasNegZero : hasPosZero) = true;
        }
    }
    if (!hasNaN && k <= n) {
        std::size_t const index = k == 0 ? 0 : static_cast<std::size_t>(k - 1);
        auto const at = [index](std::vector<T>& w) {
            std::nth_element(w.begin(), w.begin() + static_cast<std::ptrdiff_t>(index), w.end());
            return w[index];
        };
        if (!(hasPosZero && hasNegZero)) {
            return at(buf);
        }
        std::vector<T> copy(buf);
        T const value = at(copy);
        if (value != T(0)) {
            return value;
        }
    }
    std::vector<T> scratch(n);
    return selectByPartition(buf, scratch, n, k);
}

}  // namespace

template <typename T>
T BasicAlgo<T>::cosALP(T a, T b, T c) {
    return (b * b + c * c - a * a) / (T(2) * b * c);
}

template <typename T>
T BasicAlgo<T>::median(std::vector<T>& v, unsigned long long k) {
    T result = T(0);
    if (firstPassDecides(v.begin(), v.end(), v.size(), k, result)) {
        return result;
    }
    std::vector<T> buf(std::move(v));
    v.clear();
    return selectFromBuffer(buf, k);
}

template <typename T>
T BasicAlgo<T>::median(std::list<T>& v, unsigned long long k) {
    T result = T(0);
    if (firstPassDecides(v.begin(), v.end(), v.size(), k, result)) {
        return result;
    }
    std::vector<T> buf(v.begin(), v.end());
    v.clear();
    return selectFromBuffer(buf, k);
}

template <typename T>
T BasicAlgo<T>::median(std::vector<T> const& v) {
    unsigned long long const k = (static_cast<unsigned long long>(v.size()) + 1) / 2;
    T result = T(0);
    if (firstPassDecides(v.begin(), v.end(), v.size(), k, result)) {
        return result;
    }
    std::vector<T> buf(v);
    return selectFromBuffer(buf, k);
}

template <typename T>
T BasicAlgo<T>::median(std::list<T> const& v) {
    unsigned long long const k = (static_cast<unsigned long long>(v.size()) + 1) / 2;
    T result = T(0);
    if (firstPassDecides(v.begin(), v.end(), v.size(), k, result)) {
        return result;
    }
    std::vector<T> buf(v.begin(), v.end());
    return selectFromBuffer(buf, k);
}

template <typename T>
T BasicAlgo<T>::stdmedian(std::vector<T>& v) {
    std::size_t const n = v.size();
    if (n == 0) {
        return std::numeric_limits<T>::quiet_NaN();
    }
    std::sort(v.begin(), v.end(), lessNaNLast<T>);
    if (n % 2 == 1) {
        return v[n / 2];
    }
    return (v[n / 2 - 1] + v[n / 2]) / T(2);
}

// Trimmed mean. While more than three values remain: m = median of the sorted values (middle
// one, or mean of the two middle ones); drop the value with the greatest |x - m|, scanning
// from the front against a running maximum that starts at 0 and improves only strictly (the
// first of equal candidates; the first value when all equal m). Then the mean of the three.
//
// The values are sorted once (NaNs last); dropping keeps them sorted, so sorting again would
// change nothing. Since x - m rounds monotonically in x, the greatest |x - m| over the sorted
// numbers lies at one of their ends, which makes each step O(1) or O(log n) instead of a scan:
//  - m is NaN: every |x - m| is NaN, nothing improves on 0: the first value;
//  - m finite: a = |first - m|, b = |last number - m|; a >= b: the first value (also when
//    both are 0); b > a: the first value whose x - m equals last - m (binary search, the
//    differences being non-decreasing), a NaN |x - m| never winning;
//  - m infinite (x - m may be NaN for x = m): the documented scan itself.
template <typename T>
T BasicAlgo<T>::medianmittel(std::vector<T>& v) {
    std::size_t const n = v.size();
    if (n == 0) {
        return T(0);
    }
    if (n == 1) {
        return v[0];
    }
    if (n == 2) {
        return (v[0] + v[1]) / T(2);
    }
    if (n > 3) {
        std::sort(v.begin(), v.end(), lessNaNLast<T>);
        // Remaining values: v[lo, hi); numbers in [lo, nanStart), NaNs in [nanStart, hi).
        std::size_t lo = 0;
        std::size_t hi = n;
        std::size_t nanStart = static_cast<std::size_t>(
            std::partition_point(v.begin(), v.end(), [](T x) { return !isNaN(x); }) - v.begin());

        auto const removeAt = [&](std::size_t idx) {
            if (idx == lo) {
                ++lo;
                nanStart = std::max(nanStart, lo);
            } else if (idx < nanStart) {
                // Close the gap among the numbers, then refill the freed last number slot with
                // the last NaN (the order among NaNs carries no meaning).
                std::move(v.begin() + static_cast<std::ptrdiff_t>(idx) + 1,
                          v.begin() + static_cast<std::ptrdiff_t>(nanStart),
                          v.begin() + static_cast<std::ptrdiff_t>(idx));
                if (nanStart < hi) {
                    v[nanStart - 1] = v[hi - 1];
                }
                --nanStart;
                --hi;
            } else {
                v[idx] = v[hi - 1];
                --hi;
            }
        };

        while (hi - lo > 3) {
            std::size_t const count = hi - lo;
            std::size_t const mid = lo + count / 2;
            T const m = (count % 2 == 1) ? v[mid] : (v[mid - 1] + v[mid]) / T(2);
            std::size_t idx = lo;
            if (!isNaN(m) && nanStart > lo) {
                std::size_t const last = nanStart - 1;
                if (std::isfinite(m)) {
                    T const a = std::fabs(v[lo] - m);
                    T const diffLast = v[last] - m;
                    if (std::fabs(diffLast) > a) {
                        auto const first =
                            std::partition_point(v.begin() + static_cast<std::ptrdiff_t>(lo),
                                                 v.begin() + static_cast<std::ptrdiff_t>(last),
                                                 [m, diffLast](T x) { return x - m < diffLast; });
                        idx = static_cast<std::size_t>(first - v.begin());
                        // Equal non-zero numbers have equal bits: dropping the last one of
                        // them leaves the same values in the same order, without a shift.
                        if (v[idx] == v[last] && v[last] != T(0)) {
                            idx = last;
                        }
                    }
                } else {
                    T best = T(0);
                    for (std::size_t i = lo; i < hi; ++i) {
                        T const d = std::fabs(v[i] - m);
                        if (d > best) {
                            best = d;
                            idx = i;
                        }
                    }
                }
            }
            removeAt(idx);
        }
        std::move(v.begin() + static_cast<std::ptrdiff_t>(lo),
                  v.begin() + static_cast<std::ptrdiff_t>(hi), v.begin());
        v.resize(3);
    }
    return (v[0] + v[1] + v[2]) / T(3);
}

// Scan from the front; the running maximum of |x - ref| starts at 0 and improves only
// strictly, so the first of equal candidates wins and the first element is taken when every
// element equals ref.
template <typename T>
T BasicAlgo<T>::rmGreatestDiv(std::vector<T>& v, T ref) {
    if (v.empty()) {
        return std::numeric_limits<T>::quiet_NaN();
    }
    T best = T(0);
    std::size_t idx = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        T const d = std::fabs(v[i] - ref);
        if (d > best) {
            best = d;
            idx = i;
        }
    }
    T const value = v[idx];
    v.erase(v.begin() + static_cast<std::ptrdiff_t>(idx));
    return value;
}

// As rmGreatestDiv with the running minimum starting at the largest finite double, improving
// only strictly (the first element when none is below it, e.g. all differences NaN).
template <typename T>
T BasicAlgo<T>::rmSmallestDiv(std::vector<T>& v, T ref) {
    if (v.empty()) {
        return std::numeric_limits<T>::quiet_NaN();
    }
    double best = std::numeric_limits<double>::max();
    std::size_t idx = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        double const d = static_cast<double>(std::fabs(v[i] - ref));
        if (d < best) {
            best = d;
            idx = i;
        }
    }
    T const value = v[idx];
    v.erase(v.begin() + static_cast<std::ptrdiff_t>(idx));
    return value;
}

template <typename T>
T BasicAlgo<T>::average(std::vector<T> const& v) {
    // s = sum x_i, i ascending, one accumulator; then s / n.
    T s = T(0);
    for (T const x : v) {
        s += x;
    }
    return s / static_cast<T>(static_cast<std::uint64_t>(v.size()));
}

template <typename T>
void BasicAlgo<T>::evalPoly(std::vector<T> const& c, T x, T& p) {
    // p = (...((c0) x + c1) x + ...) x + cn, written as p = (p + ci) x for i < n, then + cn.
    p = T(0);
    if (c.empty()) {
        return;
    }
    std::size_t const last = c.size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
        p = (p + c[i]) * x;
    }
    p = p + c[last];
}

template <typename T>
void BasicAlgo<T>::evalPoly(std::vector<T> const& c, T x, T& p, T& dp) {
    // Horner for the value and for the derivative sum e ci x^(e-1), e = power of ci:
    // p = (p + ci) x; dp = (e ci + dp) x while e > 1, dp = dp + ci for e = 1.
    p = T(0);
    dp = T(0);
    if (c.empty()) {
        return;
    }
    std::size_t const last = c.size() - 1;
    std::size_t e = last;
    for (std::size_t i = 0; i < last; ++i) {
        p = (p + c[i]) * x;
        if (e > 1) {
            dp = (static_cast<T>(static_cast<std::uint64_t>(e)) * c[i] + dp) * x;
        } else {
            dp = dp + c[i];
        }
        --e;
    }
    p = p + c[last];
}

template <typename T>
void BasicAlgo<T>::divPoly(std::vector<T>& c, T const& r) {
    // Synthetic division by (x - r): ci <- c(i-1) r + ci with the updated c(i-1), i ascending;
    // the last entry is the remainder and is dropped.
    if (c.empty()) {
        return;
    }
    for (std::size_t i = 1; i < c.size(); ++i) {
        c[i] = c[i - 1] * r + c[i];
    }
    c.pop_back();
}

template <typename T>
typename BasicAlgo<T>::Roots BasicAlgo<T>::solveQuad(std::vector<T> const& c) {
    using C = std::complex<double>;
    if (c.size() != 3) {
        return Roots(C(0, 0), C(0, 0));
    }
    T const a = c[0];
    T const b = c[1];
    T const cc = c[2];
    if (a == T(0)) {
        // Linear (b = 0 divides by zero and gives inf or NaN).
        double const x = static_cast<double>(-cc / b);
        return Roots(C(x, 0), C(x, 0));
    }
    // x^2 + p x + q = 0: x = -p/2 +- sqrt(D), D = p^2/4 - q.
    T const p = b / a;
    T const q = cc / a;
    T const d = p * p / T(4) - q;
    double const re = static_cast<double>(-p / T(2));
    if (d < T(0)) {
        double const im = static_cast<double>(std::sqrt(std::fabs(d)));
        return Roots(C(re, im), C(re, -im));
    }
    T const s = std::sqrt(d);
    return Roots(C(static_cast<double>(-p / T(2) + s), 0),
                 C(static_cast<double>(-p / T(2) - s), 0));
}

template <typename T>
std::pair<double, double> BasicAlgo<T>::solveQuad2(std::vector<T> const& c) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    if (c.size() != 3) {
        return {0.0, 0.0};
    }
    T const a = c[0];
    T const b = c[1];
    T const cc = c[2];
    if (a == T(0)) {
        if (b == T(0)) {
            return {nan, nan};
        }
        double const x = static_cast<double>(-cc / b);
        return {x, x};
    }
    T const p = b / a;
    T const q = cc / a;
    T const d = p * p / T(4) - q;
    if (d < T(0)) {
        return {nan, nan};
    }
    T const s = std::sqrt(d);
    return {static_cast<double>(-p / T(2) + s), static_cast<double>(-p / T(2) - s)};
}

// Root near x0 for degree 3 and more:
//  1. Bracket search: h = 1.6, then h <- h^2; the first of [x0, x0 + h] (tested first) and
//     [x0 - h, x0] over which c(x) * c(x0) < 0 is the bracket. Once h exceeds
//     sqrt(largest double) without a sign change (at most 10 squarings for double, fewer for
//     float, where h overflows to inf) the result is a signalling NaN. An x0 that is itself
//     an exact root shows no sign change either and fails the same way.
//  2. Bracketed Newton (Numerical Recipes 9.4, rtsafe): from x0, x <- x - c(x)/c'(x); a step
//     landing outside the open bracket (or NaN, c'(x) = 0) is replaced by the bracket's
//     midpoint; the new point replaces the bracket end whose value has the same sign
//     (signs compared, not multiplied, so no underflow to 0). Stops and returns the new x
//     when c(x) = 0, when the step is at most 4 ulps (|dx| <= 4 eps |x|), when the midpoint
//     can no longer be told from the bracket ends, or after kMaxNewton = 2000 steps (enough
//     for pure bisection from a bracket of 2^512 down to the double resolution).
template <typename T>
T BasicAlgo<T>::evalNewtonRoot(std::vector<T> const& c, T x0) {
    T const nan = std::numeric_limits<T>::quiet_NaN();
    if (c.size() < 2) {
        return nan;
    }
    if (c.size() == 2) {
        if (c[0] == T(0)) {
            return nan;
        }
        return -c[1] / c[0];
    }
    if (c.size() == 3) {
        return static_cast<T>(solveQuad2(c).first);
    }

    T f0;
    evalPoly(c, x0, f0);
    double const hMax = std::sqrt(std::numeric_limits<double>::max());
    T h = T(1.6);
    T lo;
    T hi;
    T fLo;
    for (;;) {
        T fPlus;
        T fMinus;
        evalPoly(c, x0 + h, fPlus);
        evalPoly(c, x0 - h, fMinus);
        if (fPlus * f0 < T(0)) {
            lo = x0;
            hi = x0 + h;
            fLo = f0;
            break;
        }
        if (fMinus * f0 < T(0)) {
            lo = x0 - h;
            hi = x0;
            fLo = fMinus;
            break;
        }
        h = h * h;
        // NaN h (never, h starts at 1.6) would also end here.
        if (!(static_cast<double>(h) <= hMax)) {
            return std::numeric_limits<T>::signaling_NaN();
        }
    }

    constexpr int kMaxNewton = 2000;
    T const eps = std::numeric_limits<T>::epsilon();
    T x = x0;
    for (int step = 0; step < kMaxNewton; ++step) {
        T f;
        T df;
        evalPoly(c, x, f, df);
        if (f == T(0)) {
            return x;
        }
        T xn = x - f / df;
        if (!(xn > lo && xn < hi)) {
            xn = (lo + hi) / T(2);
            if (!(xn > lo && xn < hi)) {
                return x;  // the bracket is down to adjacent numbers
            }
        }
        T fn;
        evalPoly(c, xn, fn);
        if (fn == T(0)) {
            return xn;
        }
        if (std::signbit(fn) == std::signbit(fLo)) {
            lo = xn;
            fLo = fn;
        } else {
            hi = xn;
        }
        if (std::fabs(xn - x) <= T(4) * eps * std::fabs(xn)) {
            return xn;
        }
        x = xn;
    }
    return x;
}

template <typename T>
void BasicAlgo<T>::IntersectEqu(Cmatrix<T>& M, std::vector<T>& l, Roots& roots) {
    if (M.m() != 3 || M.n() != 3 || l.size() < 2) {
        double const nan = std::numeric_limits<double>::quiet_NaN();
        roots = Roots(std::complex<double>(nan, nan), std::complex<double>(nan, nan));
        return;
    }
    T const l0 = l[0];
    T const l1 = l[1];
    // p^T M p for p = (s, 1, l0 s + l1) = q2 s^2 + q1 s + q0:
    //   q0 = M11 + 2 M12 l1 + M22 l1^2
    //   q1 = 2 (M01 + M02 l1 + M12 l0 + M22 l0 l1)
    //   q2 = M00 + 2 M02 l0 + M22 l0^2
    T const q0 = M(1, 1) + T(2) * M(1, 2) * l1 + M(2, 2) * (l1 * l1);
    T const q1 = T(2) * (M(0, 1) + M(0, 2) * l1 + M(1, 2) * l0 + M(2, 2) * l0 * l1);
    T const q2 = M(0, 0) + T(2) * M(0, 2) * l0 + M(2, 2) * (l0 * l0);
    // {q0, q1, q2} in this order: solveQuad reads q0 as the leading coefficient, so the roots
    // are the reciprocals 1/s.
    roots = solveQuad(std::vector<T>{q0, q1, q2});
}

#define MGEO_BASIC_ALGO_DEFINE(T) MGEO_BASIC_ALGO_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_BASIC_ALGO_DEFINE)

}  // namespace math
