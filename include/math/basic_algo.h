// Robust statistics and polynomials.
#pragma once

#include <math/detail/instantiate.h>
#include <math/matrix.h>

#include <complex>
#include <list>
#include <utility>
#include <vector>

namespace math {

// Static helpers on value lists and polynomials: robust location estimates (selection
// median, sorted median, trimmed mean), removal of the value farthest from or nearest to a
// reference, the law of cosines, polynomial evaluation, deflation and root finding, and the
// crossing of a conic with a line.
//
// Polynomials are coefficient vectors with the highest power first: {c0, c1, ..., cn} is
// c0 x^n + c1 x^(n-1) + ... + cn. Nothing here throws for bad values: degenerate input yields
// NaN, -1 (empty selection median) or the plain IEEE results of the divisions involved.
template <typename T>
class BasicAlgo {
public:
    using Roots = std::pair<std::complex<double>, std::complex<double>>;

    // (b^2 + c^2 - a^2) / (2 b c): cosine of the angle opposite side a of the triangle with
    // sides a, b, c (law of cosines). No guard against b or c = 0.
    static T cosALP(T a, T b, T c);

    // The k-th smallest value (k from 1) by repeated partition about the first element; see
    // basic_algo.cpp. Empty input: -1. Consumes v: it is emptied whenever more than one pass
    // is needed.
    static T median(std::vector<T>& v, unsigned long long k);
    static T median(std::list<T>& v, unsigned long long k);
    // median(copy of v, (n + 1) / 2): the middle value for odd n, the lower middle one for
    // even n; v is left unchanged.
    static T median(std::vector<T> const& v);
    static T median(std::list<T> const& v);

    // Sorts v ascending in place (NaNs last); odd n: the middle element, even n: the mean of
    // the two middle ones. Empty v: quiet NaN.
    static T stdmedian(std::vector<T>& v);

    // Trimmed mean: drops the value farthest from the running median until three remain and
    // returns their mean; v is left with those three, sorted. n = 0: 0, n = 1: the value,
    // n = 2: the mean of both.
    static T medianmittel(std::vector<T>& v);

    // Removes and returns the element with the greatest (smallest) |x - ref|, the first of
    // equal candidates. Empty v: quiet NaN, v unchanged.
    static T rmGreatestDiv(std::vector<T>& v, T ref);
    static T rmSmallestDiv(std::vector<T>& v, T ref);

    // sum x / n in input order (an empty v gives 0 / 0).
    static T average(std::vector<T> const& v);

    // p = c(x) by Horner's rule (0 for an empty c).
    static void evalPoly(std::vector<T> const& c, T x, T& p);
    // p = c(x) and dp = c'(x) by Horner's rule in one pass (both 0 for an empty c).
    static void evalPoly(std::vector<T> const& c, T x, T& p, T& dp);

    // Divides c by (x - r) in place by synthetic division, dropping the remainder.
    static void divPoly(std::vector<T>& c, T const& r);

    // Both roots of c0 x^2 + c1 x + c2, complex where needed ((0, 0) unless c has 3 entries).
    static Roots solveQuad(std::vector<T> const& c);
    // The real roots of c0 x^2 + c1 x + c2; NaN where there are none ((0, 0) unless c has 3
    // entries).
    static std::pair<double, double> solveQuad2(std::vector<T> const& c);

    // One real root of c near x0: closed forms up to degree 2, else a bracket search about x0
    // followed by bracketed Newton steps. No real root found: NaN (signalling NaN when the
    // bracket search fails).
    static T evalNewtonRoot(std::vector<T> const& c, T x0);

    // The parameters where the line l meets the conic M: the roots of p^T M p = 0 for
    // p = (s, 1, l0 s + l1), handed to solveQuad with the s^0 coefficient first, so the
    // roots are the reciprocals 1/s. M must be 3 x 3 and l hold two values, else both roots
    // are NaN.
    static void IntersectEqu(Cmatrix<T>& M, std::vector<T>& l, Roots& roots);

    // Turns the conic M and the line l (l0 x + l1 y = 1) into the frame u = R x in which the
    // quadratic part of M is diagonal; R (rows: the eigenvectors of the quadratic part, by
    // decreasing |eigenvalue|) is returned row-major in rot = {R00, R01, R10, R11}. See
    // basic_algo.cpp.
    static void RotateEqu(Cmatrix<T>& M, std::vector<T>& l, std::vector<T>& rot);
};

#define MGEO_BASIC_ALGO_FAMILY(T, EXT) EXT template class BasicAlgo<T>;
#define MGEO_BASIC_ALGO_EXTERN(T) MGEO_BASIC_ALGO_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_BASIC_ALGO_EXTERN)
#undef MGEO_BASIC_ALGO_EXTERN

}  // namespace math
