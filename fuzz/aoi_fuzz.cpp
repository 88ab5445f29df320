// Caoi: polygons of every class (also with stale classification tables) united into an area,
// calculate() and the mask and exact point tests, the index-checked editing operations, in
// float and double.
//
// Mask cap: calculate() allocates one bit per pixel of the bounding rectangle (up to 2^31
// bits by its contract) and its cost grows with the rows and, for polygons with non-finite
// coordinates (evaluated pixel by pixel), with the pixels. The harness calls it only when the
// finite vertex coordinates span at most 2^20 pixels, so that an input is not reported as
// out-of-memory or slow merely for being large.
#include <math/aoi.h>
#include <math/exceptions.h>

#include <algorithm>
#include <climits>
#include <cmath>

#include "fuzz_input.h"

namespace {

template <typename T>
std::vector<math::Cpoint2<T>> smallPolygon(fuzz::Input& in) {
    // Coordinates on a quarter-pixel grid within +-64, sometimes a special value.
    std::size_t const n = in.count(24);
    std::vector<math::Cpoint2<T>> v;
    v.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        T const x = T(static_cast<std::int8_t>(in.u8())) / T(2);
        T const y = T(static_cast<std::int8_t>(in.u8())) / T(2);
        v.emplace_back(x, y);
    }
    for (int k = n == 0 ? 0 : in.u8() % 3; k > 0; --k) {
        v[in.u8() % n][in.u8() % 2] = in.real<T>();
    }
    return v;
}

template <typename T>
bool maskWithinCap(math::Caoi<T> const& aoi) {
    // Extents of the finite coordinates: non-finite ones cannot widen the mask (an infinite
    // bound makes calculate() refuse the area).
    T lo[2] = {0, 0}, hi[2] = {0, 0};
    bool seen[2] = {false, false};
    for (auto const& info : aoi.getPolygons()) {
        for (auto const& p : info.polygon.vertices()) {
            for (int k = 0; k < 2; ++k) {
                if (std::isfinite(p[k])) {
                    lo[k] = !seen[k] || p[k] < lo[k] ? p[k] : lo[k];
                    hi[k] = !seen[k] || p[k] > hi[k] ? p[k] : hi[k];
                    seen[k] = true;
                }
            }
        }
    }
    double const w = double(hi[0]) - double(lo[0]) + 2;
    double const h = double(hi[1]) - double(lo[1]) + 2;
    return w * h <= double(1 << 20);
}

template <typename T>
void run(fuzz::Input& in) {
    math::Caoi<T> aoi;
    for (int k = in.u8() % 4; k > 0; --k) {
        std::vector<math::Cpoint2<T>> v =
            in.u8() % 4 == 0 ? fuzz::points2<T>(in, 40) : smallPolygon<T>(in);
        math::Cpolygon2<T> poly(v);
        if (in.flag()) {
            poly.preprocess();
            if (in.u8() % 4 == 0) {
                poly.add(fuzz::point2<T>(in));  // stale tables
            }
        }
        aoi.add(poly);
    }
    try {
        switch (in.u8() % 6) {
            case 0: {
                auto const p = fuzz::point2<T>(in);
                aoi.add(p, in.u8() % 5);
            } break;
            case 1: {
                int const i = int(in.u8() % 5) - 1;
                aoi.removePoint(i, int(in.u8() % 30) - 1);
            } break;
            case 2: {
                int const i = int(in.u8() % 5);
                (void)aoi.removePoint(i, fuzz::point2<T>(in));
            } break;
            case 3:
                aoi.removePoly(int(in.u8() % 5) - 1);
                break;
            default:
                break;
        }
    } catch (CthrowBase const&) {
    }
    if (maskWithinCap(aoi)) {
        (void)aoi.calculate();
    }
    // Pixels around the mask's top-left corner (which may lie at the end of the int range).
    auto const& r = aoi.getPixelRect();
    auto const near = [](int base, std::uint8_t off) {
        long long const v = static_cast<long long>(base) + static_cast<std::int8_t>(off);
        return static_cast<int>(std::clamp<long long>(v, INT_MIN, INT_MAX));
    };
    for (int k = in.u8() % 32; k > 0; --k) {
        int const x = near(r.left(), in.u8());
        int const y = near(r.top(), in.u8());
        (void)aoi.pointIsIn(x, y);
        (void)aoi.pointIsExactIn(T(x), T(y));
    }
    int const rx = in.raw<int>();
    (void)aoi.pointIsIn(rx, in.raw<int>());
    (void)aoi.pointIsExactIn(fuzz::point2<T>(in));
    int const w = in.u8();
    Cimage const img(w, in.u8(), CimgDefs::enType::gray8);
    (void)aoi.isInImg(img);
    try {
        (void)aoi.getBoundingRect();
    } catch (CthrowBase const&) {
    }
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
