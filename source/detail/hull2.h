// Strict convex hull of a plane point set by Andrew's monotone chain (A. M. Andrew, "Another
// efficient algorithm for convex hulls in two dimensions", 1979), in double. Used by the
// minimum enclosing rectangle of a polygon.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace math::detail {

struct Pt2d {
    double x;
    double y;
};

// (b - a) x (c - a): positive when c lies left of a->b (y-up sense).
inline double cross3(Pt2d const& a, Pt2d const& b, Pt2d const& c) {
    return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
}

// The hull of `pts` counter-clockwise (y-up), starting at the lexicographically smallest point
// (x, then y), without repeated or collinear vertices. Non-finite points must have been removed
// by the caller. Reorders pts (sorted, duplicates erased). Collinear input gives its two
// extreme points, a single distinct point one point, no points an empty hull. O(n log n).
inline std::vector<Pt2d> monotoneChainHull(std::vector<Pt2d>& pts) {
    std::sort(pts.begin(), pts.end(),
              [](Pt2d const& a, Pt2d const& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    pts.erase(std::unique(pts.begin(), pts.end(),
                          [](Pt2d const& a, Pt2d const& b) { return a.x == b.x && a.y == b.y; }),
              pts.end());
    std::size_t const n = pts.size();
    if (n < 3) {
        return pts;
    }
    std::vector<Pt2d> h(2 * n);
    std::size_t k = 0;
    // Lower chain left to right, then upper chain right to left; a vertex stays only on a
    // strict left turn.
    for (std::size_t i = 0; i < n; ++i) {
        while (k >= 2 && cross3(h[k - 2], h[k - 1], pts[i]) <= 0.0) {
            --k;
        }
        h[k++] = pts[i];
    }
    std::size_t const lower = k + 1;
    for (std::size_t i = n - 1; i-- > 0;) {
        while (k >= lower && cross3(h[k - 2], h[k - 1], pts[i]) <= 0.0) {
            --k;
        }
        h[k++] = pts[i];
    }
    h.resize(k - 1);  // the last point repeats the first
    return h;
}

}  // namespace math::detail
