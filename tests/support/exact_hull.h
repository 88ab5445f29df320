// An exact reference hull for the hull tests: the floating-point coordinates of a set are scaled
// by one power of two to integers (exactly), and Andrew's monotone chain runs on them in 128-bit
// integer arithmetic. It shares no code with the library's predicates.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "support/builders.h"

namespace mgeo_test {

__extension__ typedef __int128 I128;

// Scales xy by 2^k with the smallest k that makes every value an integer; false when some
// scaled value reaches 2^62 (the set is then not usable as a reference).
inline bool exactIntegers(std::vector<std::pair<double, double>> const& xy,
                          std::vector<std::pair<I128, I128>>& out) {
    int k = -1100;
    for (auto const& p : xy) {
        for (double v : {p.first, p.second}) {
            if (v != 0.0) {
                // v = m 2^(e - 53) with an integer m; its trailing zero bits need no scaling.
                int e = 0;
                auto m = static_cast<std::uint64_t>(std::ldexp(std::fabs(std::frexp(v, &e)), 53));
                int need = 53 - e;
                while (need > -1100 && (m & 1u) == 0) {
                    m >>= 1;
                    --need;
                }
                k = std::max(k, need);
            }
        }
    }
    out.clear();
    for (auto const& p : xy) {
        double const x = std::ldexp(p.first, k);
        double const y = std::ldexp(p.second, k);
        if (!(std::fabs(x) < 0x1p62 && std::fabs(y) < 0x1p62) || x != std::floor(x) ||
            y != std::floor(y)) {
            return false;
        }
        out.emplace_back(I128(static_cast<std::int64_t>(x)), I128(static_cast<std::int64_t>(y)));
    }
    return true;
}

// Indices into p of the strict convex hull (no collinear vertices, each point once),
// counter-clockwise, starting at the vertex smallest in (y, x) when lowestFirst, else smallest in
// (x, y). Fewer than 3 hull vertices give an empty list.
inline std::vector<std::size_t> exactHullIndices(std::vector<std::pair<I128, I128>> const& p,
                                                 bool lowestFirst) {
    std::vector<std::size_t> idx(p.size());
    for (std::size_t i = 0; i < idx.size(); ++i) {
        idx[i] = i;
    }
    std::stable_sort(idx.begin(), idx.end(), [&p](std::size_t a, std::size_t b) { return p[a] < p[b]; });
    idx.erase(std::unique(idx.begin(), idx.end(),
                          [&p](std::size_t a, std::size_t b) { return p[a] == p[b]; }),
              idx.end());
    if (idx.size() < 3) {
        return {};
    }
    auto const cross = [&p](std::size_t o, std::size_t a, std::size_t b) {
        return (p[a].first - p[o].first) * (p[b].second - p[o].second) -
               (p[a].second - p[o].second) * (p[b].first - p[o].first);
    };
    std::vector<std::size_t> h(2 * idx.size());
    std::size_t k = 0;
    for (std::size_t i = 0; i < idx.size(); ++i) {
        while (k >= 2 && cross(h[k - 2], h[k - 1], idx[i]) <= 0) --k;
        h[k++] = idx[i];
    }
    for (std::size_t i = idx.size() - 1, t = k + 1; i-- > 0;) {
        while (k >= t && cross(h[k - 2], h[k - 1], idx[i]) <= 0) --k;
        h[k++] = idx[i];
    }
    h.resize(k - 1);
    if (h.size() < 3) {
        return {};
    }
    auto const first = std::min_element(h.begin(), h.end(), [&](std::size_t a, std::size_t b) {
        return lowestFirst ? std::make_pair(p[a].second, p[a].first) <
                                 std::make_pair(p[b].second, p[b].first)
                           : p[a] < p[b];
    });
    std::rotate(h.begin(), first, h.end());
    return h;
}

// Point sets on which rounded orientation tests go wrong, by kind (seeded): 0 random values on
// a 2^-40 grid, 1 a grid of spacing 0.1, 2 a grid of spacing 0.001, 3 points along a few lines
// with rounding-level offsets, 4 a few points repeated many times, 5 a thin sliver far out.
inline std::vector<std::pair<double, double>> hardHullSet(int kind, unsigned seed) {
    Noise rnd(seed);
    std::vector<std::pair<double, double>> xy;
    std::size_t const n = 4 + std::size_t(rnd.unit() * 60);
    auto const onGrid = [](double v) { return std::ldexp(std::round(std::ldexp(v, 40)), -40); };
    for (std::size_t i = 0; i < n; ++i) {
        switch (kind) {
            case 0:
                xy.emplace_back(onGrid(rnd(100)), onGrid(rnd(100)));
                break;
            case 1:
            case 2: {
                double const h = kind == 1 ? 0.1 : 0.001;
                xy.emplace_back(std::floor(rnd.unit() * 8) * h, std::floor(rnd.unit() * 8) * h);
                break;
            }
            case 3: {
                // Start, direction and parameter on binary grids (2^-30, 2^-30, 2^-20), so that
                // every rounded point lies on the 2^-50 grid: near-collinear, yet exactly
                // representable for the reference.
                double const t = std::ldexp(std::round(std::ldexp(rnd(50), 20)), -20);
                int const line = int(rnd.unit() * 3);
                double const ax[3] = {-54.2412665988129, 3.1, 17.25};
                double const ay[3] = {256.1939664347003, -7.7, 0.3};
                double const dx[3] = {0.2924, 1.0 / 3.0, 0.7};
                double const dy[3] = {-1.3504, 0.1, 0.7};
                auto const q = [](double v) { return std::ldexp(std::round(std::ldexp(v, 30)), -30); };
                xy.emplace_back(q(ax[line]) + t * q(dx[line]), q(ay[line]) + t * q(dy[line]));
                break;
            }
            case 4: {
                double const base[4][2] = {{1.5, 2.25}, {3.75, 2.25}, {2.5, 7.125}, {2.5, 3.0}};
                int const j = int(rnd.unit() * 4);
                xy.emplace_back(base[j][0], base[j][1]);
                break;
            }
            default: {
                double const t = rnd.unit();
                xy.emplace_back(1e5 + 3.0 * t + 1e-11 * rnd(1), 2e5 + 7.0 * t);
                break;
            }
        }
    }
    return xy;
}

}  // namespace mgeo_test
