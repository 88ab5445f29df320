// The exact sign of the orientation of three plane points: (bx - ax)(cy - ay) - (by - ay)(cx - ax),
// positive when c lies left of the directed line a -> b (a, b, c counter-clockwise, y up).
//
// Floating-point input is decided in three stages, each taken only when the one before cannot
// decide:
//  1. a filter: the determinant in double with the error bound of Shewchuk ("Adaptive precision
//     floating-point arithmetic and fast robust geometric predicates", 1997), trusted only
//     while no product can have underflowed or overflowed;
//  2. for coordinates of magnitude in [2^-500, 2^500] (or zero): the six exact products of the
//     expanded determinant (Dekker's two-product) summed exactly as a floating-point expansion;
//  3. for any other finite input: the same six products in a 4480-bit fixed-point integer.
// Integer input is exact in 128-bit arithmetic. Every finite input gets the exact sign.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace math::detail {

namespace exact {

__extension__ typedef unsigned __int128 U128;

// a + b = s + e exactly (Knuth's two-sum).
inline void twoSum(double a, double b, double& s, double& e) {
    s = a + b;
    double const bv = s - a;
    double const av = s - bv;
    e = (a - av) + (b - bv);
}

// a * b = p + e exactly (Dekker), for |a|, |b| <= 2^500 and products not below 2^-1000.
inline void twoProduct(double a, double b, double& p, double& e) {
    constexpr double kSplitter = 134217729.0;  // 2^27 + 1
    p = a * b;
    double c = kSplitter * a;
    double const ahi = c - (c - a);
    double const alo = a - ahi;
    c = kSplitter * b;
    double const bhi = c - (c - b);
    double const blo = b - bhi;
    e = alo * blo - (((p - ahi * bhi) - alo * bhi) - ahi * blo);
}

// Sign of the exact sum of terms[0..n): the terms are grown into a nonoverlapping expansion
// (Shewchuk's Grow-Expansion), whose sign is that of its largest nonzero component.
inline int expansionSign(double const* terms, int n) {
    double h[16];
    int len = 0;
    for (int k = 0; k < n; ++k) {
        double q = terms[k];
        int out = 0;
        for (int i = 0; i < len; ++i) {
            double s;
            double e;
            twoSum(q, h[i], s, e);
            q = s;
            if (e != 0.0) {
                h[out++] = e;
            }
        }
        if (q != 0.0) {
            h[out++] = q;
        }
        len = out;
    }
    if (len == 0) {
        return 0;
    }
    return h[len - 1] > 0.0 ? 1 : -1;
}

// A two's-complement fixed-point integer of 70 limbs: bit k weighs 2^(k - kBias). Every finite
// product of two doubles (2^-2148 ... 2^2048) and the sum of six of them fit.
class BigFixed {
public:
    static constexpr int kLimbs = 70;
    static constexpr int kBias = 2200;

    // Adds (negate ? -1 : 1) * a * b.
    void addProduct(double a, double b, bool negate) {
        if (a == 0.0 || b == 0.0) {
            return;
        }
        int ea = 0;
        int eb = 0;
        std::uint64_t const ma = mantissa(a, ea);
        std::uint64_t const mb = mantissa(b, eb);
        if ((a < 0.0) != (b < 0.0)) {
            negate = !negate;
        }
        U128 const prod = static_cast<U128>(ma) * mb;  // < 2^106
        int const shift = ea + eb + kBias;               // in [52, 4142] for finite factors
        int const limb = shift / 64;
        int const bit = shift % 64;
        // The product shifted by `bit` spans at most three limbs.
        std::uint64_t part[3];
        if (bit == 0) {
            part[0] = static_cast<std::uint64_t>(prod);
            part[1] = static_cast<std::uint64_t>(prod >> 64);
            part[2] = 0;
        } else {
            part[0] = static_cast<std::uint64_t>(prod << bit);
            U128 const hi = prod >> (64 - bit);
            part[1] = static_cast<std::uint64_t>(hi);
            part[2] = static_cast<std::uint64_t>(hi >> 64);
        }
        if (negate) {
            subtractAt(limb, part);
        } else {
            addAt(limb, part);
        }
    }

    int sign() const {
        if (static_cast<std::int64_t>(m_limb[kLimbs - 1]) < 0) {
            return -1;
        }
        for (std::uint64_t const l : m_limb) {
            if (l != 0) {
                return 1;
            }
        }
        return 0;
    }

private:
    // |x| = m * 2^e with an integer m < 2^53.
    static std::uint64_t mantissa(double x, int& e) {
        int ex = 0;
        double const f = std::frexp(std::fabs(x), &ex);  // f in [0.5, 1)
        e = ex - 53;
        return static_cast<std::uint64_t>(std::ldexp(f, 53));
    }

    void addAt(int limb, std::uint64_t const (&part)[3]) {
        unsigned carry = 0;
        for (int i = limb; i < kLimbs; ++i) {
            std::uint64_t const add = (i - limb < 3) ? part[i - limb] : 0;
            if (i - limb >= 3 && carry == 0) {
                break;
            }
            std::uint64_t const s1 = m_limb[i] + add;
            unsigned const c1 = s1 < add ? 1u : 0u;
            std::uint64_t const s2 = s1 + carry;
            unsigned const c2 = s2 < carry ? 1u : 0u;
            m_limb[i] = s2;
            carry = c1 + c2;
        }
    }

    void subtractAt(int limb, std::uint64_t const (&part)[3]) {
        unsigned borrow = 0;
        for (int i = limb; i < kLimbs; ++i) {
            std::uint64_t const sub = (i - limb < 3) ? part[i - limb] : 0;
            if (i - limb >= 3 && borrow == 0) {
                break;
            }
            std::uint64_t const d1 = m_limb[i] - sub;
            unsigned const b1 = m_limb[i] < sub ? 1u : 0u;
            std::uint64_t const d2 = d1 - borrow;
            unsigned const b2 = d1 < borrow ? 1u : 0u;
            m_limb[i] = d2;
            borrow = b1 + b2;
        }
    }

    std::uint64_t m_limb[kLimbs] = {};
};

inline bool inExpansionRange(double x) {
    double const m = std::fabs(x);
    return m == 0.0 || (m >= 0x1p-500 && m <= 0x1p500);
}

// The exact sign for finite doubles, past the filter.
inline int orientExact(double ax, double ay, double bx, double by, double cx, double cy) {
    // (bx - ax)(cy - ay) - (by - ay)(cx - ax)
    //   = bx cy - bx ay - ax cy - by cx + by ax + ay cx   (the ax ay terms cancel)
    double const f1[6] = {bx, -bx, -ax, -by, by, ay};
    double const f2[6] = {cy, ay, cy, cx, ax, cx};
    if (inExpansionRange(ax) && inExpansionRange(ay) && inExpansionRange(bx) &&
        inExpansionRange(by) && inExpansionRange(cx) && inExpansionRange(cy)) {
        // Most undecided cases (points on grids) have exact coordinate differences: then two
        // exact products of them suffice.
        double d[4];
        double err[4];
        twoSum(bx, -ax, d[0], err[0]);
        twoSum(cy, -ay, d[1], err[1]);
        twoSum(by, -ay, d[2], err[2]);
        twoSum(cx, -ax, d[3], err[3]);
        if (err[0] == 0.0 && err[1] == 0.0 && err[2] == 0.0 && err[3] == 0.0 &&
            inExpansionRange(d[0]) && inExpansionRange(d[1]) && inExpansionRange(d[2]) &&
            inExpansionRange(d[3])) {
            double terms[4];
            twoProduct(d[0], d[1], terms[1], terms[0]);
            twoProduct(-d[2], d[3], terms[3], terms[2]);
            return expansionSign(terms, 4);
        }
        double terms[12];
        for (int k = 0; k < 6; ++k) {
            twoProduct(f1[k], f2[k], terms[2 * k + 1], terms[2 * k]);
        }
        return expansionSign(terms, 12);
    }
    BigFixed sum;
    for (int k = 0; k < 6; ++k) {
        sum.addProduct(f1[k], f2[k], false);
    }
    return sum.sign();
}

}  // namespace exact

// Orientation sign of (a, b, c) for double coordinates: +1 left turn, -1 right turn, 0
// collinear, all exact for finite input. Non-finite input returns the sign of the plain
// floating-point expression, and 2 when that is NaN (no order at all).
inline int orientSign(double ax, double ay, double bx, double by, double cx, double cy) {
    double const l = (bx - ax) * (cy - ay);
    double const r = (by - ay) * (cx - ax);
    double const det = l - r;
    double const sum = std::fabs(l) + std::fabs(r);
    // Shewchuk's bound (3 + 16 eps) eps |l| + |r|, valid while nothing under- or overflowed.
    constexpr double kEps = 0x1p-53;
    constexpr double kBound = (3.0 + 16.0 * kEps) * kEps;
    if (sum >= 0x1p-960 && sum <= 0x1p1000) {
        if (det > kBound * sum) {
            return 1;
        }
        if (-det > kBound * sum) {
            return -1;
        }
    }
    if (!(std::isfinite(ax) && std::isfinite(ay) && std::isfinite(bx) && std::isfinite(by) &&
          std::isfinite(cx) && std::isfinite(cy))) {
        return det > 0.0 ? 1 : (det < 0.0 ? -1 : (det == 0.0 ? 0 : 2));
    }
    return exact::orientExact(ax, ay, bx, by, cx, cy);
}

// Float coordinates are doubles exactly.
inline int orientSign(float ax, float ay, float bx, float by, float cx, float cy) {
    return orientSign(double(ax), double(ay), double(bx), double(by), double(cx), double(cy));
}

// Integer coordinates: 128-bit products of 33-bit differences, exact for every int.
inline int orientSign(int ax, int ay, int bx, int by, int cx, int cy) {
    __extension__ typedef __int128 Wide;
    Wide const l = Wide(std::int64_t(bx) - ax) * Wide(std::int64_t(cy) - ay);
    Wide const r = Wide(std::int64_t(by) - ay) * Wide(std::int64_t(cx) - ax);
    return l > r ? 1 : (l < r ? -1 : 0);
}

}  // namespace math::detail
