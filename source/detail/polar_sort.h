// Polar sort about a pivot for the Graham scans: fast floating-point keys, exact decisions where
// the keys cannot tell.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "robust_sort.h"

namespace math::detail {

// Sorts pts[begin, end) by polar angle about pivot, every point lying on or above the pivot's
// row (angles in [0, pi]). `exactLess` is the exact order (an exact orientation test and a tie
// rule); it is called only where the keys below cannot decide.
//
// Each point gets the pseudo-angle key t = dy / (|dx| + dy) for dx >= 0, 2 - t for dx < 0, in
// double: strictly increasing with the angle, and computed with an absolute error below 2^-50
// (a few roundings of quantities within [0, 2]). The points are sorted by key; two points whose
// keys differ by more than 2^-46 are in the true order, so only runs of neighbours with keys
// closer than that are re-sorted with `exactLess`. Overflowing differences (coordinates near
// the end of the range) skip the keys and sort everything exactly.
template <typename P, typename ExactLess>
void polarSort(std::vector<P>& pts, std::size_t begin, P const& pivot, ExactLess exactLess) {
    std::size_t const end = pts.size();
    if (end <= begin + 1) {
        return;
    }
    struct Item {
        double key;
        P p;
    };
    std::vector<Item> items;
    items.reserve(end - begin);
    double const px = static_cast<double>(pivot.x);
    double const py = static_cast<double>(pivot.y);
    for (std::size_t i = begin; i < end; ++i) {
        double const dx = static_cast<double>(pts[i].x) - px;
        double const dy = static_cast<double>(pts[i].y) - py;
        double const s = std::fabs(dx) + dy;
        double const t = dy / s;
        double const key = dx >= 0.0 ? t : 2.0 - t;
        if (!std::isfinite(key) || !std::isfinite(s)) {
            robustSort(pts, begin, exactLess);
            return;
        }
        items.push_back({key, pts[i]});
    }
    std::sort(items.begin(), items.end(),
              [](Item const& a, Item const& b) { return a.key < b.key; });
    constexpr double kMargin = 0x1p-46;
    auto const itemLess = [&exactLess](Item const& a, Item const& b) { return exactLess(a.p, b.p); };
    std::size_t const n = items.size();
    for (std::size_t lo = 0; lo < n;) {
        std::size_t hi = lo + 1;
        while (hi < n && items[hi].key - items[hi - 1].key <= kMargin) {
            ++hi;
        }
        if (hi - lo > 1) {
            std::sort(items.begin() + static_cast<std::ptrdiff_t>(lo),
                      items.begin() + static_cast<std::ptrdiff_t>(hi), itemLess);
        }
        lo = hi;
    }
    for (std::size_t i = 0; i < n; ++i) {
        pts[begin + i] = items[i].p;
    }
}

}  // namespace math::detail
