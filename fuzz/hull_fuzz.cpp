// CcvxHull2D over float, double and int. For int the full 32-bit range goes in (the products
// then wrap, which must stay free of undefined behaviour); inside the documented exact range
// (coordinates in [-2^30, 2^30)) the result is checked: its vertices are input points, every
// turn is strictly counter-clockwise and every input point lies on the inner side of every
// hull edge.
#include <math/convex_hull.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "fuzz_input.h"

namespace {

template <typename T>
void runReal(fuzz::Input& in) {
    auto const p = fuzz::points2<T>(in, 500);
    std::vector<Cvector2<T>> pts;
    pts.reserve(p.size());
    for (auto const& q : p) {
        pts.emplace_back(q.x, q.y);
    }
    math::CcvxHull2D<T> const hull(pts);
    if (hull.points().size() > pts.size()) {
        std::abort();
    }
}

std::int64_t cross(Cvector2<int> const& a, Cvector2<int> const& b, Cvector2<int> const& c) {
    return (std::int64_t(b.x) - a.x) * (std::int64_t(c.y) - a.y) -
           (std::int64_t(b.y) - a.y) * (std::int64_t(c.x) - a.x);
}

void runInt(fuzz::Input& in) {
    std::size_t const n = in.count(400);
    unsigned const mode = in.u8() % 4;
    std::vector<Cvector2<int>> pts;
    pts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        int x, y;
        if (mode == 0) {  // full range
            x = in.raw<int>();
            y = in.raw<int>();
        } else if (mode == 1) {  // the documented exact range
            x = int(in.u32() % (1u << 31)) - (1 << 30);
            y = int(in.u32() % (1u << 31)) - (1 << 30);
        } else {  // small, many collinear and repeated points
            x = static_cast<std::int8_t>(in.u8()) % 8;
            y = static_cast<std::int8_t>(in.u8()) % 8;
        }
        pts.emplace_back(x, y);
    }
    math::CcvxHull2D<int> const hull(pts);
    auto const& h = hull.points();
    if (mode == 0) {
        return;
    }
    std::size_t const m = h.size();
    if (m > 0 && m < 3) {
        std::abort();
    }
    for (std::size_t i = 0; i < m; ++i) {
        if (std::find(pts.begin(), pts.end(), h[i]) == pts.end()) {
            std::abort();
        }
        if (cross(h[i], h[(i + 1) % m], h[(i + 2) % m]) <= 0) {
            std::abort();
        }
        for (auto const& q : pts) {
            if (cross(h[i], h[(i + 1) % m], q) < 0) {
                std::abort();
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz::Input in(data, size);
    switch (in.u8() % 3) {
        case 0:
            runReal<float>(in);
            break;
        case 1:
            runReal<double>(in);
            break;
        default:
            runInt(in);
            break;
    }
    return 0;
}
