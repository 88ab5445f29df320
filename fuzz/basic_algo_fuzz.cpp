// BasicAlgo: selection and sorted medians, trimmed mean, removal by deviation, averages,
// polynomials (Horner, deflation, quadratic roots, Newton root search) and the conic-line
// routines, in float and double. Matrix and coefficient shapes are free: the routines check
// them.
#include <math/basic_algo.h>

#include <list>

#include "fuzz_input.h"

namespace {

template <typename T>
std::vector<T> values(fuzz::Input& in, std::size_t maxCount) {
    std::vector<T> v(in.count(maxCount));
    for (auto& x : v) {
        x = in.real<T>();
    }
    return v;
}

template <typename T>
void run(fuzz::Input& in) {
    using B = math::BasicAlgo<T>;
    switch (in.u8() % 7) {
        case 0: {
            std::vector<T> v = values<T>(in, 300);
            unsigned long long const k = in.flag() ? in.u64() : in.u16() % (v.size() + 2);
            std::list<T> l(v.begin(), v.end());
            std::vector<T> const c(v);
            (void)B::median(v, k);
            (void)B::median(l, k);
            (void)B::median(c);
            (void)B::median(std::list<T>(c.begin(), c.end()));
            break;
        }
        case 1: {
            std::vector<T> v = values<T>(in, 300);
            std::vector<T> w(v);
            (void)B::average(v);
            (void)B::stdmedian(v);
            (void)B::medianmittel(w);
            break;
        }
        case 2: {
            std::vector<T> v = values<T>(in, 100);
            T const ref = in.real<T>();
            while (!v.empty()) {
                (void)(in.flag() ? B::rmGreatestDiv(v, ref) : B::rmSmallestDiv(v, ref));
            }
            (void)B::rmGreatestDiv(v, ref);
            T const a = in.real<T>(), b = in.real<T>();
            (void)B::cosALP(a, b, in.real<T>());
            break;
        }
        case 3: {
            std::vector<T> c = values<T>(in, 12);
            T const x = in.real<T>();
            T p, dp;
            B::evalPoly(c, x, p);
            B::evalPoly(c, x, p, dp);
            (void)B::solveQuad(c);
            (void)B::solveQuad2(c);
            B::divPoly(c, in.real<T>());
            break;
        }
        case 4: {
            std::vector<T> c = values<T>(in, 9);
            (void)B::evalNewtonRoot(c, in.real<T>());
            break;
        }
        default: {
            std::size_t const m = in.flag() ? 3 : in.u8() % 5;
            std::size_t const n = in.flag() ? 3 : in.u8() % 5;
            math::Cmatrix<T> a(m, n);
            for (std::size_t i = 0; i < m; ++i) {
                for (std::size_t j = 0; j < n; ++j) {
                    a(i, j) = in.real<T>();
                }
            }
            if (m == 3 && n == 3 && in.flag()) {
                for (std::size_t i = 0; i < 3; ++i) {
                    for (std::size_t j = 0; j < i; ++j) {
                        a(i, j) = a(j, i);
                    }
                }
            }
            std::vector<T> l = values<T>(in, 3);
            math::Cmatrix<T> a2(a);
            std::vector<T> l2(l);
            typename B::Roots roots;
            B::IntersectEqu(a, l, roots);
            std::vector<T> rot;
            B::RotateEqu(a2, l2, rot);
            break;
        }
    }
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
