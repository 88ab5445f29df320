// Area of interest: a union of polygons with a pixel mask built by scan lines.
#include "math/aoi.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "detail/plane_predicates.h"
#include "math/exceptions.h"

namespace math {

namespace {

using detail::orientation;

// Mask size limit: 2^31 bits (256 MiB).
constexpr long long kMaxMaskBits = 1LL << 31;

// The largest x in [lo, hi] with pred(x) true, for a predicate that holds on a prefix of
// [lo, hi] (true ... true false ... false); lo - 1 when pred(lo) is false. Gallops from the hint
// (clamped into the range) with doubling steps until the answer is bracketed, then bisects:
// O(log |answer - hint|) evaluations, and never more than about 2 log2(hi - lo + 1) + 2.
template <class Pred>
long long lastTrue(long long lo, long long hi, long long hint, Pred const& pred) {
    if (lo > hi) {
        return lo - 1;
    }
    long long const h = std::min(std::max(hint, lo), hi);
    long long good;
    long long bad;
    if (pred(h)) {
        good = h;
        long long step = 1;
        for (;;) {
            if (good == hi) {
                return hi;
            }
            long long const probe = (hi - good > step) ? good + step : hi;
            if (pred(probe)) {
                good = probe;
                step *= 2;
            } else {
                bad = probe;
                break;
            }
        }
    } else {
        bad = h;
        long long step = 1;
        for (;;) {
            if (bad == lo) {
                return lo - 1;
            }
            long long const probe = (bad - lo > step) ? bad - step : lo;
            if (pred(probe)) {
                good = probe;
                break;
            }
            bad = probe;
            step *= 2;
        }
    }
    // pred(good) is true, pred(bad) is false, good < bad.
    while (bad - good > 1) {
        long long const mid = good + (bad - good) / 2;
        if (pred(mid)) {
            good = mid;
        } else {
            bad = mid;
        }
    }
    return good;
}

// An analytic guess (floor) of a real position as an integer, clamped into [lo, hi]; NaN and
// infinities give lo.
long long hintOf(double x, long long lo, long long hi) {
    if (!(x == x) || !std::isfinite(x)) {
        return lo;
    }
    if (x <= static_cast<double>(lo)) {
        return lo;
    }
    if (x >= static_cast<double>(hi)) {
        return hi;
    }
    return static_cast<long long>(std::floor(x));
}

// The integers k in [lo, hi] with a <= T(k) <= b, as [first, last] (empty when first > last).
// T(k) is monotone in k, so the set is an interval; NaN bounds give an empty set.
template <typename T>
std::pair<long long, long long> intRange(T a, T b, long long lo, long long hi) {
    if (!(a <= b)) {
        return {lo, lo - 1};  // empty, also for NaN bounds
    }
    auto const toT = [](long long k) { return static_cast<T>(k); };
    long long const hintA = hintOf(std::ceil(static_cast<double>(a)), lo, hi) - 1;
    long long const first = lastTrue(lo, hi, hintA, [&](long long k) { return toT(k) < a; }) + 1;
    long long const hintB = hintOf(std::floor(static_cast<double>(b)), lo, hi);
    long long const last = lastTrue(lo, hi, hintB, [&](long long k) { return toT(k) <= b; });
    return {first, last};
}

// Sets bits [first, last] (inclusive) of a word array.
void setBits(std::vector<std::uint64_t>& mask, long long first, long long last) {
    if (first > last) {
        return;
    }
    auto f = static_cast<std::uint64_t>(first);
    auto const l = static_cast<std::uint64_t>(last);
    std::uint64_t const fw = f >> 6;
    std::uint64_t const lw = l >> 6;
    std::uint64_t const fMask = ~std::uint64_t(0) << (f & 63u);
    std::uint64_t const lMask = ~std::uint64_t(0) >> (63u - (l & 63u));
    if (fw == lw) {
        mask[fw] |= fMask & lMask;
        return;
    }
    mask[fw] |= fMask;
    for (std::uint64_t w = fw + 1; w < lw; ++w) {
        mask[w] = ~std::uint64_t(0);
    }
    mask[lw] |= lMask;
}

// Converts a finite T value to long long when it lies in the int range.
template <typename T>
bool toIntRange(T v, long long& out) {
    if (!std::isfinite(v)) {
        return false;
    }
    double const d = static_cast<double>(v);
    if (d < static_cast<double>(std::numeric_limits<int>::min()) ||
        d > static_cast<double>(std::numeric_limits<int>::max())) {
        return false;
    }
    out = static_cast<long long>(d);
    return true;
}

[[noreturn]] void throwPolyIndex(long long i, std::size_t count) {
    CthrowMath err(CthrowMath::ERR_PRIMEXT_AOI_POLYINDEX, std::c_empty);
    err << i << 0 << static_cast<long long>(count) - 1;
    throw err;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Polygons

template <typename T>
Caoi<T>::Caoi() = default;

template <typename T>
Caoi<T>::Caoi(Cpolygon2<T> const& polygon) {
    m_polygons.push_back({polygon, Crect2<T>()});
}

template <typename T>
void Caoi<T>::checkPolyIndex(long long i) const {
    if (i < 0 || static_cast<unsigned long long>(i) >= m_polygons.size()) {
        throwPolyIndex(i, m_polygons.size());
    }
}

template <typename T>
void Caoi<T>::set(CpntN2<T> const& contours) {
    m_polygons.clear();
    m_polygons.reserve(contours.size());
    for (auto const& contour : contours) {
        m_polygons.push_back({Cpolygon2<T>(contour), Crect2<T>()});
    }
    m_state = 1;
}

template <typename T>
void Caoi<T>::setStd(Cimage const& img) {
    m_polygons.clear();
    m_state = 1;
    if (img.type() == CimgDefs::enType::none) {
        return;
    }
    T const w1 = static_cast<T>(img.width() - 1);
    T const h1 = static_cast<T>(img.height() - 1);
    Cpolygon2<T> poly;
    poly.add(T(0), T(0));
    poly.add(w1, T(0));
    poly.add(w1, h1);
    poly.add(T(0), h1);
    m_polygons.push_back({poly, Crect2<T>()});
    m_state = 1;
}

template <typename T>
void Caoi<T>::add(Cpolygon2<T> const& polygon) {
    m_polygons.push_back({polygon, Crect2<T>()});
    m_state = 1;
}

template <typename T>
void Caoi<T>::add(Cpoint2<T> const& p, unsigned long long i) {
    if (i >= m_polygons.size()) {
        CthrowMath err(CthrowMath::ERR_PRIMEXT_AOI_POLYINDEX, std::c_empty);
        err << i << 0 << static_cast<long long>(m_polygons.size()) - 1;
        throw err;
    }
    std::vector<Cpoint2<T>> vertices = m_polygons[i].polygon.vertices();
    vertices.push_back(p);
    m_polygons[i].polygon = Cpolygon2<T>(vertices);
    m_state = 1;
}

template <typename T>
void Caoi<T>::add(T const& x, T const& y, unsigned long long i) {
    add(Cpoint2<T>(x, y), i);
}

template <typename T>
void Caoi<T>::removePoly(int i) {
    checkPolyIndex(i);
    m_polygons.erase(m_polygons.begin() + i);
    m_state = 1;
}

template <typename T>
bool Caoi<T>::removePoint(int i, Cpoint2<T> const& p) {
    checkPolyIndex(i);
    Cpolygon2<T>& poly = m_polygons[static_cast<std::size_t>(i)].polygon;
    std::vector<Cpoint2<T>> vertices = poly.vertices();
    auto const it = std::find(vertices.begin(), vertices.end(), p);
    if (it == vertices.end()) {
        return false;
    }
    vertices.erase(it);
    poly = Cpolygon2<T>(vertices);
    m_state = 1;
    return true;
}

template <typename T>
void Caoi<T>::removePoint(int i, int k) {
    checkPolyIndex(i);
    Cpolygon2<T>& poly = m_polygons[static_cast<std::size_t>(i)].polygon;
    std::vector<Cpoint2<T>> vertices = poly.vertices();
    if (k < 0 || static_cast<std::size_t>(k) >= vertices.size()) {
        CthrowMath err(CthrowMath::ERR_PRIMEXT_AOI_POINTINDEX, std::c_empty);
        err << k << 0 << static_cast<long long>(vertices.size()) - 1;
        throw err;
    }
    vertices.erase(vertices.begin() + k);
    poly = Cpolygon2<T>(vertices);
    m_state = 1;
}

template <typename T>
void Caoi<T>::clear() {
    m_polygons.clear();
    m_state = 1;
}

template <typename T>
Cpolygon2<T> const& Caoi<T>::getPolygon(int i) const {
    checkPolyIndex(i);
    return m_polygons[static_cast<std::size_t>(i)].polygon;
}

template <typename T>
Crect2<T> const& Caoi<T>::getBoundingRect() const {
    if (!isValid()) {
        CthrowMath err(CthrowMath::ERR_PRIMEXT_AOI_INVALID, std::c_empty);
        throw err;
    }
    return m_boundingRect;
}

template <typename T>
bool Caoi<T>::isValid() const {
    if (m_polygons.empty()) {
        return false;
    }
    return std::all_of(m_polygons.begin(), m_polygons.end(),
                       [](TpolyInfo const& info) { return info.polygon.size() >= 3; });
}

// ---------------------------------------------------------------------------------------------
// Mask

template <typename T>
bool Caoi<T>::calculate() {
    m_state = 1;
    for (TpolyInfo& info : m_polygons) {
        if (info.polygon.type() == Cpolygon2<T>::unclassified) {
            info.polygon.preprocess();
        }
    }
    if (!isValid()) {
        return false;
    }
    // Extents per polygon, normalised; their union.
    for (std::size_t i = 0; i < m_polygons.size(); ++i) {
        TpolyInfo& info = m_polygons[i];
        Crect2<T> r;
        if (info.polygon.type() == Cpolygon2<T>::rectangle) {
            r = info.polygon.m_rect;
        } else if (info.polygon.type() != Cpolygon2<T>::tooFewVertices) {
            r = info.polygon.boundingRect();
        }
        info.boundingRect = r.normalize();
        m_boundingRect = (i == 0) ? info.boundingRect : m_boundingRect.unite(info.boundingRect);
    }
    // Pixel rectangle: ceil of left and top, floor of right and bottom.
    long long left = 0;
    long long top = 0;
    long long right = 0;
    long long bottom = 0;
    if (!toIntRange(std::ceil(m_boundingRect.left()), left) ||
        !toIntRange(std::ceil(m_boundingRect.top()), top) ||
        !toIntRange(std::floor(m_boundingRect.right()), right) ||
        !toIntRange(std::floor(m_boundingRect.bottom()), bottom)) {
        return false;
    }
    long long const width = std::max(0LL, right - left + 1);
    long long const height = std::max(0LL, bottom - top + 1);
    if (width != 0 && height > kMaxMaskBits / width) {
        return false;
    }
    m_pixelRect = Crect2<int>(Cpoint2<int>(static_cast<int>(left), static_cast<int>(top)),
                              Cpoint2<int>(static_cast<int>(right), static_cast<int>(bottom)));
    std::size_t const bits = static_cast<std::size_t>(width * height);
    m_mask.assign((bits + 63) / 64, 0);
    if (bits != 0) {
        for (TpolyInfo const& info : m_polygons) {
            fillPolygon(info);
        }
    }
    m_state = 0;
    return true;
}

template <typename T>
void Caoi<T>::fillPolygon(TpolyInfo const& info) {
    using Poly = Cpolygon2<T>;
    Poly const& poly = info.polygon;
    int const type = static_cast<int>(poly.type());
    if (poly.size() < 3 || type == Poly::tooFewVertices || type == Poly::degenerated ||
        type == Poly::unassigned || type > Poly::selfIntersecting) {
        return;
    }
    long long const pl = m_pixelRect.left();
    long long const pt = m_pixelRect.top();
    long long const stride = static_cast<long long>(m_pixelRect.right()) - pl + 1;
    // Pixels inside the polygon's extents (inclusive, compared in T).
    Crect2<T> const& ext = info.boundingRect;
    auto const cols = intRange(ext.left(), ext.right(), pl, m_pixelRect.right());
    auto const rows = intRange(ext.top(), ext.bottom(), pt, m_pixelRect.bottom());
    long long const xa = cols.first;
    long long const xb = cols.second;
    if (xa > xb || rows.first > rows.second) {
        return;
    }
    auto const fill = [&](long long y, long long x0, long long x1) {
        long long const base = stride * (y - pt) - pl;
        setBits(m_mask, base + x0, base + x1);
    };
    auto const px = [](long long x) { return static_cast<T>(x); };

    // Polygons with non-finite data: the pointwise definition, pixel by pixel.
    bool finite = std::all_of(poly.vertices().begin(), poly.vertices().end(),
                              [](Cpoint2<T> const& p) { return detail::isFinite(p); });
    if (type == Poly::convex) {
        finite = finite && detail::isFinite(poly.m_center) &&
                 std::all_of(poly.m_table.begin(), poly.m_table.end(),
                             [](typename Poly::TangleEntry const& e) {
                                 return detail::isFinite(e.vertex) && e.key == e.key;
                             });
    }
    if (type == Poly::rectangle) {
        finite = true;  // the interval test below is exact for any bounds
    }
    if (!finite) {
        for (long long y = rows.first; y <= rows.second; ++y) {
            for (long long x = xa; x <= xb; ++x) {
                if (poly.pointIsIn(Cpoint2<T>(px(x), px(y)))) {
                    fill(y, x, x);
                }
            }
        }
        return;
    }

    if (type == Poly::rectangle) {
        // Crect2::pointIsIn on the stored rectangle: an interval in each direction.
        Crect2<T> const& r = poly.m_rect;
        auto const c = intRange(r.left(), r.right(), xa, xb);
        auto const rr = intRange(r.top(), r.bottom(), rows.first, rows.second);
        for (long long y = rr.first; y <= rr.second; ++y) {
            fill(y, c.first, c.second);
        }
        return;
    }

    if (type == Poly::convex) {
        // Angular search: along a row the key theta(centre, p) is monotone in x, hence the
        // table index; within one index the orientation test is monotone.
        auto const& table = poly.m_table;
        std::size_t const m = table.size();
        if (m == 0) {
            return;
        }
        Cpoint2<T> const c = poly.m_center;
        auto const indexOf = [&table](T key) {
            return static_cast<std::size_t>(
                std::lower_bound(table.begin(), table.end(), key,
                                 [](typename Poly::TangleEntry const& e, T k) {
                                     return detail::keyLess(e.key, k);
                                 }) -
                table.begin());
        };
        for (long long y = rows.first; y <= rows.second; ++y) {
            T const py = px(y);
            double const dyc = static_cast<double>(py) - static_cast<double>(c.y);
            auto const keyAt = [&](long long x) { return Poly::theta(c, Cpoint2<T>(px(x), py)); };
            long long x = xa;
            while (x <= xb) {
                std::size_t const j = indexOf(keyAt(x));
                // Same index as long as K[j-1] < key and not K[j] < key.
                auto const sameRun = [&](long long xx) {
                    T const k = keyAt(xx);
                    return (j == 0 || detail::keyLess(table[j - 1].key, k)) &&
                           (j == m || !detail::keyLess(table[j].key, k));
                };
                // Hint: where the ray from the centre through the next boundary vertex meets
                // the row (the key rises along the row below the centre, falls above it).
                long long hint = x;
                std::size_t const bj = dyc > 0.0 ? j : (j == 0 ? m : j - 1);
                if (bj < m) {
                    Cpoint2<T> const& v = table[bj].vertex;
                    double const vy = static_cast<double>(v.y) - static_cast<double>(c.y);
                    if (vy != 0.0) {
                        double const vx = static_cast<double>(v.x) - static_cast<double>(c.x);
                        hint = hintOf(static_cast<double>(c.x) + vx * dyc / vy, x, xb);
                    }
                }
                long long const e = lastTrue(x, xb, hint, sameRun);
                Cpoint2<T> const& a = (j != 0 && j != m) ? table[j].vertex : table[0].vertex;
                Cpoint2<T> const& b =
                    (j != 0 && j != m) ? table[j - 1].vertex : table[m - 1].vertex;
                auto const inside = [&](long long xx) {
                    return orientation(a.x, a.y, b.x, b.y, px(xx), py) >= T(0);
                };
                bool const in0 = inside(x);
                bool const in1 = inside(e);
                if (in0 || in1) {
                    long long lineHint = x;
                    double const by = static_cast<double>(b.y) - static_cast<double>(a.y);
                    if (by != 0.0) {
                        double const bx = static_cast<double>(b.x) - static_cast<double>(a.x);
                        double const ay = static_cast<double>(py) - static_cast<double>(a.y);
                        lineHint = hintOf(static_cast<double>(a.x) + bx * ay / by, x, e);
                    }
                    if (in0 && in1) {
                        fill(y, x, e);
                    } else if (in0) {
                        fill(y, x, lastTrue(x, e, lineHint, inside));
                    } else {
                        long long const t =
                            lastTrue(x, e, lineHint, [&](long long xx) { return !inside(xx); });
                        fill(y, t + 1, e);
                    }
                }
                x = e + 1;
            }
        }
        return;
    }

    // Winding number (types 0, 6, 7). Edge i is active in the rows with
    // min(yi, yi+1) <= y < max(yi, yi+1) (exact comparisons in T); an upward edge adds +1
    // where p is strictly left of it, a downward edge -1 where p is strictly right of it, and
    // both sets are prefixes of the row.
    struct Edge {
        Cpoint2<T> a;
        Cpoint2<T> b;
        long long lastRow;
        int sign;
    };
    std::vector<Cpoint2<T>> const& v = poly.vertices();
    std::size_t const n = v.size();
    std::vector<std::pair<long long, Edge>> starts;  // (first row, edge)
    starts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint2<T> const& a = v[i];
        Cpoint2<T> const& b = v[i + 1 < n ? i + 1 : 0];
        if (a.y == b.y) {
            continue;  // never active
        }
        T const ylo = std::min(a.y, b.y);
        T const yhi = std::max(a.y, b.y);
        long long const r0 =
            lastTrue(rows.first, rows.second,
                     hintOf(std::ceil(static_cast<double>(ylo)), rows.first, rows.second) - 1,
                     [&](long long yy) { return px(yy) < ylo; }) +
            1;
        long long const r1 =
            lastTrue(rows.first, rows.second,
                     hintOf(std::ceil(static_cast<double>(yhi)), rows.first, rows.second) - 1,
                     [&](long long yy) { return px(yy) < yhi; });
        if (r0 > r1) {
            continue;
        }
        starts.push_back({r0, Edge{a, b, r1, a.y < b.y ? 1 : -1}});
    }
    std::sort(starts.begin(), starts.end(),
              [](auto const& e1, auto const& e2) { return e1.first < e2.first; });
    std::vector<Edge> active;
    std::vector<std::pair<long long, int>> thresholds;
    std::size_t nextStart = 0;
    for (long long y = rows.first; y <= rows.second; ++y) {
        if (active.empty() && nextStart < starts.size() && starts[nextStart].first > y) {
            y = starts[nextStart].first;  // skip rows without edges
        }
        while (nextStart < starts.size() && starts[nextStart].first <= y) {
            active.push_back(starts[nextStart].second);
            ++nextStart;
        }
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [y](Edge const& e) { return e.lastRow < y; }),
                     active.end());
        if (active.empty()) {
            if (nextStart == starts.size()) {
                break;
            }
            continue;
        }
        T const py = px(y);
        thresholds.clear();
        int total = 0;
        for (Edge const& e : active) {
            double const dy = static_cast<double>(e.b.y) - static_cast<double>(e.a.y);
            double const dx = static_cast<double>(e.b.x) - static_cast<double>(e.a.x);
            double const xc = static_cast<double>(e.a.x) +
                              dx * (static_cast<double>(py) - static_cast<double>(e.a.y)) / dy;
            long long const hint = hintOf(xc, xa, xb);
            long long x;
            if (e.sign > 0) {
                x = lastTrue(xa, xb, hint, [&](long long xx) {
                    return orientation(e.a.x, e.a.y, e.b.x, e.b.y, px(xx), py) > T(0);
                });
            } else {
                x = lastTrue(xa, xb, hint, [&](long long xx) {
                    return orientation(e.a.x, e.a.y, e.b.x, e.b.y, px(xx), py) < T(0);
                });
            }
            if (x >= xa) {
                thresholds.emplace_back(x, e.sign);
                total += e.sign;
            }
        }
        // w(x) = sum of the signs whose threshold is >= x; constant between thresholds.
        std::sort(thresholds.begin(), thresholds.end());
        long long pos = xa;
        int w = total;
        std::size_t k = 0;
        while (pos <= xb && k < thresholds.size()) {
            long long const end = thresholds[k].first;  // w is constant on [pos, end]
            if (w != 0 && end >= pos) {
                fill(y, pos, end);
            }
            pos = std::max(pos, end + 1);
            w -= thresholds[k].second;
            ++k;
        }
        if (pos <= xb && w != 0) {
            fill(y, pos, xb);  // unreachable: w is 0 after every threshold is passed
        }
    }
}

template <typename T>
bool Caoi<T>::pointIsIn(int x, int y) const {
    if (m_state != 0) {
        return false;
    }
    if (x < m_pixelRect.left() || x > m_pixelRect.right() || y < m_pixelRect.top() ||
        y > m_pixelRect.bottom()) {
        return false;
    }
    long long const stride = static_cast<long long>(m_pixelRect.right()) - m_pixelRect.left() + 1;
    auto const bit =
        static_cast<std::uint64_t>(stride * (static_cast<long long>(y) - m_pixelRect.top()) +
                                   (static_cast<long long>(x) - m_pixelRect.left()));
    return ((m_mask[bit >> 6] >> (bit & 63u)) & 1u) != 0;
}

template <typename T>
bool Caoi<T>::pointIsIn(Cpoint2<int> const& p) const {
    return pointIsIn(p.x, p.y);
}

template <typename T>
bool Caoi<T>::pointIsExactIn(Cpoint2<T> const& p) const {
    for (TpolyInfo const& info : m_polygons) {
        // Cpolygon2::pointIsIn already answers false for fewer than 3 vertices and for the
        // types 1, 2, 5 and above 7.
        if (info.polygon.pointIsIn(p)) {
            return true;
        }
    }
    return false;
}

template <typename T>
bool Caoi<T>::pointIsExactIn(T x, T y) const {
    return pointIsExactIn(Cpoint2<T>(x, y));
}

template <typename T>
bool Caoi<T>::isInImg(Cimage const& img) const {
    if (m_state != 0 || !isValid()) {
        return false;
    }
    Crect2<T> const& r = m_boundingRect;
    if (r.left() < T(0) || r.top() < T(0)) {
        return false;
    }
    if (r.right() >= static_cast<T>(img.width()) || r.bottom() >= static_cast<T>(img.height())) {
        return false;
    }
    return true;
}

#define MGEO_AOI_DEFINE(T) MGEO_AOI_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_AOI_DEFINE)

}  // namespace math
