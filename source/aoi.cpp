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

// floor(x) clamped into [lo, hi], with -inf giving lo, +inf giving hi and NaN giving lo.
long long clampedFloor(double x, long long lo, long long hi) {
    if (!(x > static_cast<double>(lo))) {
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

// The mask of a convex polygon's angular point test, bit for bit.
//
// The point test computes the key k = theta(centre, p), the index idx = lower bound of k in the
// sorted table (first entry whose key is not less than k), and answers o_idx(p) >= 0, where
// o_j = orientation(E_j, p) with the table edge E_j = (vertex j, vertex j - 1) for 0 < j < m and
// E_0 = E_m = (vertex 0, vertex m - 1). Facts about the computed values used here:
//  (1) o_j(px, py) is monotone in px and in py separately (every operation is a correctly
//      rounded, monotone function of its one varying operand), so over a block of pixels it is
//      >= 0 everywhere when it is >= 0 at the four corners, and < 0 everywhere when < 0 there;
//  (2) along a row k, hence idx, is monotone in px;
//  (3) the computed key is within kKeyError = 2048 u (u the unit roundoff of T) of the exact
//      pseudo-angle of p - centre: the differences, the sum and the quotient cost at most 5u on
//      dy / s (relative 4u + O(u^2), |dy / s| <= 1), the adjustment 2 - t or t + 4 another 4u,
//      so 9u on t <= 4; 90 t adds 810u + 360u and 360 - 90 t another 360u: at most 1530u in
//      all (subnormal differences are exact). Over a block that lies strictly on one side of
//      the centre's row the exact pseudo-angle is monotone in the angle, so its extremes are at
//      corners; the keys of all pixels of the block then lie within 2 kKeyError of the range of
//      the computed corner keys, and their indices within the lower bounds of its ends.
// The pixel box is split recursively (k-d, the longer side first). A block is inside when every
// edge its indices can select is >= 0 at its corners (every edge when its indices are unknown),
// outside when every such edge is < 0 there, one run per row when all its indices select one
// edge (the boundary then found on the monotone o_j); a single row is decided by the exact run
// search of decide(). Coordinates are limited to 2^60 so that no product overflows; beyond, the
// exact run search does every row.
template <typename T>
class CconvexScan {
public:
    using Entry = typename Cpolygon2<T>::TangleEntry;

    // table: the angular table (sorted, finite keys, at least one entry); centre finite.
    CconvexScan(std::vector<Entry> const& table, Cpoint2<T> const& centre)
        : m_table(table), m_c(centre), m_m(table.size()) {}

    // Calls fill(y, x0, x1) for the runs of inside pixels in the columns [xa, xb] of the rows
    // [ya, yb].
    template <class Fill>
    void fillBox(long long xa, long long xb, long long ya, long long yb, Fill const& fill) {
        T const limit = T(1152921504606846976.0);  // 2^60
        auto const small = [limit](T v) { return std::fabs(v) <= limit; };
        bool ok = small(m_c.x) && small(m_c.y);
        for (Entry const& e : m_table) {
            ok = ok && small(e.vertex.x) && small(e.vertex.y);
        }
        if (!ok) {
            for (long long y = ya; y <= yb; ++y) {
                exactSpan(static_cast<T>(y), xa, xb,
                          [&](long long x0, long long x1) { fill(y, x0, x1); });
            }
            return;
        }
        // Bands of at most kBandRows rows; within a band the inside pieces of each row are
        // joined before they are written (blocks reach a row from left to right).
        for (long long y0 = ya; y0 <= yb; y0 += kBandRows) {
            long long const y1 = std::min(yb, y0 + (kBandRows - 1));
            m_pending.assign(static_cast<std::size_t>(y1 - y0 + 1), {0, -1});
            auto const add = [&](long long y, long long x0, long long x1) {
                std::pair<long long, long long>& p = m_pending[static_cast<std::size_t>(y - y0)];
                if (p.first <= p.second && x0 <= p.second + 1 && x1 + 1 >= p.first) {
                    p.first = std::min(p.first, x0);
                    p.second = std::max(p.second, x1);
                    return;
                }
                if (p.first <= p.second) {
                    fill(y, p.first, p.second);
                }
                p = {x0, x1};
            };
            m_blocks.clear();
            m_blocks.push_back({xa, xb, y0, y1, {T(0), T(0), T(0), T(0)}, false, 0, 0});
            while (!m_blocks.empty()) {
                Tblock const b = m_blocks.back();
                m_blocks.pop_back();
                block(b, add);
            }
            for (long long y = y0; y <= y1; ++y) {
                std::pair<long long, long long> const& p =
                    m_pending[static_cast<std::size_t>(y - y0)];
                if (p.first <= p.second) {
                    fill(y, p.first, p.second);
                }
            }
        }
    }

private:
    // A block of pixels [x0, x1] x [y0, y1]; when `keyed`, the keys at its corners (x0, y0),
    // (x1, y0), (x0, y1), (x1, y1).
    struct Tblock {
        long long x0, x1, y0, y1;
        T k[4];
        bool keyed;
        std::size_t lo, hi;  // the parent's index range, a starting point for the search
    };
    // A stretch [s, e] of the current row with the table index known at both ends.
    struct Tstretch {
        long long s;
        std::size_t is;
        long long e;
        std::size_t ie;
    };

    static constexpr long long kBandRows = 2048;
    static constexpr T kKeyError = T(2048) * std::numeric_limits<T>::epsilon() / T(2);

    template <class Fill>
    void block(Tblock const& b, Fill const& fill) {
        T const px0 = static_cast<T>(b.x0);
        T const px1 = static_cast<T>(b.x1);
        T const py0 = static_cast<T>(b.y0);
        T const py1 = static_cast<T>(b.y1);
        // Indices the block's pixels can have: [lo, hi], all of 0..m when unknown.
        std::size_t lo = 0;
        std::size_t hi = m_m;
        T const d0 = py0 - m_c.y;
        T const d1 = py1 - m_c.y;
        bool const oneSide = (d0 > T(0) && d1 > T(0)) || (d0 < T(0) && d1 < T(0));
        T k00 = b.k[0];
        T k10 = b.k[1];
        T k01 = b.k[2];
        T k11 = b.k[3];
        if (oneSide) {
            if (!b.keyed) {
                k00 = key(px0, py0);
                k10 = key(px1, py0);
                k01 = key(px0, py1);
                k11 = key(px1, py1);
            }
            double const kMin =
                static_cast<double>(std::min(std::min(k00, k10), std::min(k01, k11)));
            double const kMax =
                static_cast<double>(std::max(std::max(k00, k10), std::max(k01, k11)));
            double const margin = 3.0 * static_cast<double>(kKeyError);
            lo = countBelow(kMin - margin, b.lo);
            hi = countBelow(kMax + margin, b.hi);
        }
        // Corner signs of every edge the block's indices can select.
        bool allIn = true;
        bool allOut = true;
        std::size_t const e0 = edgeOf(lo);
        bool oneEdge = true;
        for (std::size_t j = lo; j <= hi && (allIn || allOut || oneEdge); ++j) {
            oneEdge = oneEdge && edgeOf(j) == e0;
            T const o00 = orient(j, px0, py0);
            T const o10 = orient(j, px1, py0);
            T const o01 = orient(j, px0, py1);
            T const o11 = orient(j, px1, py1);
            allIn = allIn && o00 >= T(0) && o10 >= T(0) && o01 >= T(0) && o11 >= T(0);
            allOut = allOut && o00 < T(0) && o10 < T(0) && o01 < T(0) && o11 < T(0);
        }
        if (allIn) {
            for (long long y = b.y0; y <= b.y1; ++y) {
                fill(y, b.x0, b.x1);
            }
            return;
        }
        if (allOut) {
            return;
        }
        if (oneEdge) {
            for (long long y = b.y0; y <= b.y1; ++y) {
                m_py = static_cast<T>(y);
                run(b.x0, b.x1, e0, [&](long long x0, long long x1) { fill(y, x0, x1); });
            }
            return;
        }
        if (b.y0 == b.y1) {
            m_py = py0;
            decide(b.x0, b.x1, [&](long long x0, long long x1) { fill(b.y0, x0, x1); });
            return;
        }
        // Halves; the keys at their new corners when the block lies on one side of the
        // centre's row (the halves do too).
        if (b.x1 - b.x0 > b.y1 - b.y0) {
            long long const xm = b.x0 + (b.x1 - b.x0) / 2;
            T const pm = static_cast<T>(xm);
            T const pn = static_cast<T>(xm + 1);
            T kl[4] = {k00, T(0), k01, T(0)};
            T kr[4] = {T(0), k10, T(0), k11};
            if (oneSide) {
                kl[1] = key(pm, py0);
                kl[3] = key(pm, py1);
                kr[0] = key(pn, py0);
                kr[2] = key(pn, py1);
            }
            m_blocks.push_back(
                {xm + 1, b.x1, b.y0, b.y1, {kr[0], kr[1], kr[2], kr[3]}, oneSide, lo, hi});
            m_blocks.push_back(
                {b.x0, xm, b.y0, b.y1, {kl[0], kl[1], kl[2], kl[3]}, oneSide, lo, hi});
        } else {
            long long const ym = b.y0 + (b.y1 - b.y0) / 2;
            T const pm = static_cast<T>(ym);
            T const pn = static_cast<T>(ym + 1);
            T kt[4] = {k00, k10, T(0), T(0)};
            T kb[4] = {T(0), T(0), k01, k11};
            if (oneSide) {
                kt[2] = key(px0, pm);
                kt[3] = key(px1, pm);
                kb[0] = key(px0, pn);
                kb[1] = key(px1, pn);
            }
            m_blocks.push_back(
                {b.x0, b.x1, ym + 1, b.y1, {kb[0], kb[1], kb[2], kb[3]}, oneSide, lo, hi});
            m_blocks.push_back(
                {b.x0, b.x1, b.y0, ym, {kt[0], kt[1], kt[2], kt[3]}, oneSide, lo, hi});
        }
    }

    T key(T px, T py) const { return detail::thetaKey(m_c.x, m_c.y, px, py); }

    // The number of table keys below v (keys finite, sorted ascending), stepped from `from`.
    std::size_t countBelow(double v, std::size_t from) const {
        std::size_t i = std::min(from, m_m);
        while (i > 0 && !(static_cast<double>(m_table[i - 1].key) < v)) {
            --i;
        }
        while (i < m_m && static_cast<double>(m_table[i].key) < v) {
            ++i;
        }
        return i;
    }
    Cpoint2<T> const& vertexA(std::size_t idx) const {
        return (idx != 0 && idx != m_m) ? m_table[idx].vertex : m_table[0].vertex;
    }
    Cpoint2<T> const& vertexB(std::size_t idx) const {
        return (idx != 0 && idx != m_m) ? m_table[idx - 1].vertex : m_table[m_m - 1].vertex;
    }
    // The point test's orientation for index idx at (px, py).
    T orient(std::size_t idx, T px, T py) const {
        Cpoint2<T> const& a = vertexA(idx);
        Cpoint2<T> const& b = vertexB(idx);
        return orientation(a.x, a.y, b.x, b.y, px, py);
    }
    // The lower bound of key k, stepped from j (the table is sorted by keyLess).
    std::size_t stepIndex(T k, std::size_t j) const {
        while (j < m_m && detail::keyLess(m_table[j].key, k)) {
            ++j;
        }
        while (j > 0 && !detail::keyLess(m_table[j - 1].key, k)) {
            --j;
        }
        return j;
    }
    std::size_t indexAt(long long x, std::size_t& hint) const {
        hint = stepIndex(detail::thetaKey(m_c.x, m_c.y, static_cast<T>(x), m_py), hint);
        return hint;
    }

    // Every pixel in [x0, x1] is outside, given idx at both ends (see the class comment).
    bool certainlyOutside(long long x0, std::size_t i0, long long x1, std::size_t i1) const {
        std::size_t const lo = std::min(i0, i1);
        std::size_t const hi = std::max(i0, i1);
        if (hi - lo > kMaxCertifiedRange) {
            return false;
        }
        T const p0 = static_cast<T>(x0);
        T const p1 = static_cast<T>(x1);
        for (std::size_t j = lo; j <= hi; ++j) {
            if (!(orient(j, p0, m_py) < T(0)) || !(orient(j, p1, m_py) < T(0))) {
                return false;
            }
        }
        return true;
    }

    // The edge an index selects: idx and idx m both select E_0.
    std::size_t edgeOf(std::size_t idx) const { return idx == m_m ? 0 : idx; }

    // Decides the pixels [s, e] of the current row (s <= e). A stretch with one index at both
    // ends is one run: the orientation test of that edge, monotone, places its boundary. A
    // stretch whose edges are all negative at both ends is outside. Any other stretch is split
    // where the ray through the vertex between its middle indices meets the row (the split
    // pixel's index computed exactly), or at its middle when that estimate is unusable.
    template <class Fill>
    void decide(long long s, long long e, Fill const& fill) {
        std::size_t const is = indexAt(s, m_hintS);
        std::size_t hintE = is;
        std::size_t const ie = (e == s) ? is : indexAt(e, hintE);
        m_stack.clear();
        m_stack.push_back({s, is, e, ie});
        while (!m_stack.empty()) {
            Tstretch const st = m_stack.back();
            m_stack.pop_back();
            if (st.is == st.ie) {
                run(st.s, st.e, st.is, fill);
                continue;
            }
            if (st.e - st.s <= 1) {
                run(st.s, st.s, st.is, fill);
                run(st.e, st.e, st.ie, fill);
                continue;
            }
            if (certainlyOutside(st.s, st.is, st.e, st.ie)) {
                continue;
            }
            long long const mid = splitPoint(st);
            std::size_t hint = st.is;
            std::size_t const im = indexAt(mid, hint);
            m_stack.push_back({mid, im, st.e, st.ie});
            m_stack.push_back({st.s, st.is, mid, im});
        }
    }

    // Inside pixels of [s, e] when every pixel there has index j: {x : o_j(x) >= 0} is an
    // interval containing one end or neither.
    template <class Fill>
    void run(long long s, long long e, std::size_t j, Fill const& fill) const {
        Cpoint2<T> const& a = vertexA(j);
        Cpoint2<T> const& b = vertexB(j);
        T const py = m_py;
        auto const inside = [&](long long xx) {
            return orientation(a.x, a.y, b.x, b.y, static_cast<T>(xx), py) >= T(0);
        };
        bool const in0 = inside(s);
        bool const in1 = (e == s) ? in0 : inside(e);
        if (!in0 && !in1) {
            return;
        }
        if (in0 && in1) {
            fill(s, e);
            return;
        }
        long long lineHint = s;
        double const by = static_cast<double>(b.y) - static_cast<double>(a.y);
        if (by != 0.0) {
            double const bx = static_cast<double>(b.x) - static_cast<double>(a.x);
            double const ay = static_cast<double>(py) - static_cast<double>(a.y);
            lineHint = hintOf(static_cast<double>(a.x) + bx * ay / by, s, e);
        }
        if (in0) {
            fill(s, lastTrue(s, e, lineHint, inside));
        } else {
            long long const t = lastTrue(s, e, lineHint, [&](long long xx) { return !inside(xx); });
            fill(t + 1, e);
        }
    }

    // A pixel strictly inside (s, e): where the ray from the centre through the vertex
    // table[k] meets the row, k the middle of the indices (keys up to K_k give indices up to
    // k); moved into (s, e) by one pixel when it lands on or beyond an end; the middle pixel
    // when the ray does not meet the row.
    long long splitPoint(Tstretch const& st) const {
        std::size_t const lo = std::min(st.is, st.ie);
        std::size_t const hi = std::max(st.is, st.ie);
        std::size_t const k = lo + (hi - lo) / 2;  // lo <= k < hi <= m, so k < m
        Cpoint2<T> const& v = m_table[k].vertex;
        double const dyc = static_cast<double>(m_py) - static_cast<double>(m_c.y);
        double const vy = static_cast<double>(v.y) - static_cast<double>(m_c.y);
        double const vx = static_cast<double>(v.x) - static_cast<double>(m_c.x);
        double const q = dyc / vy;
        double const x = static_cast<double>(m_c.x) + vx * q;
        if (vy != 0.0 && q > 0.0 && std::isfinite(x)) {
            return clampedFloor(x, st.s + 1, st.e - 1);
        }
        return st.s + (st.e - st.s) / 2;
    }

    // The exact run search over the columns [xs, xe] of the row py: along the row the key is
    // monotone, hence the table index; within one index the orientation test is monotone.
    template <class Fill>
    void exactSpan(T py, long long xs, long long xe, Fill const& fill) const {
        if (xs > xe) {
            return;
        }
        std::vector<Entry> const& table = m_table;
        std::size_t const m = m_m;
        Cpoint2<T> const c = m_c;
        double const dyc = static_cast<double>(py) - static_cast<double>(c.y);
        // The last few keys evaluated, so that the key just past a run (found false by the run
        // search) is not computed again for the next run.
        long long cacheX[4] = {xs - 1, xs - 1, xs - 1, xs - 1};
        T cacheKey[4] = {T(0), T(0), T(0), T(0)};
        unsigned cacheNext = 0;
        auto const keyAt = [&](long long x) {
            for (unsigned i = 0; i < 4; ++i) {
                if (cacheX[i] == x) {
                    return cacheKey[i];
                }
            }
            T const k = detail::thetaKey(c.x, c.y, static_cast<T>(x), py);
            cacheX[cacheNext] = x;
            cacheKey[cacheNext] = k;
            cacheNext = (cacheNext + 1) & 3u;
            return k;
        };
        long long x = xs;
        std::size_t j = static_cast<std::size_t>(
            std::lower_bound(table.begin(), table.end(), keyAt(x),
                             [](Entry const& e, T k) { return detail::keyLess(e.key, k); }) -
            table.begin());
        while (x <= xe) {
            // The lower bound of the key at x, stepped from the previous run's index.
            j = stepIndex(keyAt(x), j);
            // Same index as long as K[j-1] < key and not K[j] < key.
            auto const sameRun = [&](long long xx) {
                T const k = keyAt(xx);
                return (j == 0 || detail::keyLess(table[j - 1].key, k)) &&
                       (j == m || !detail::keyLess(table[j].key, k));
            };
            // Hint: where the ray from the centre through the next boundary vertex meets the
            // row (the key rises along the row below the centre, falls above it).
            long long hint = x;
            std::size_t const bj = dyc > 0.0 ? j : (j == 0 ? m : j - 1);
            if (bj < m) {
                Cpoint2<T> const& v = table[bj].vertex;
                double const vy = static_cast<double>(v.y) - static_cast<double>(c.y);
                if (vy != 0.0) {
                    double const vx = static_cast<double>(v.x) - static_cast<double>(c.x);
                    hint = hintOf(static_cast<double>(c.x) + vx * dyc / vy, x, xe);
                }
            }
            long long const e = lastTrue(x, xe, hint, sameRun);
            Cpoint2<T> const& a = vertexA(j);
            Cpoint2<T> const& b = vertexB(j);
            auto const inside = [&](long long xx) {
                return orientation(a.x, a.y, b.x, b.y, static_cast<T>(xx), py) >= T(0);
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
                    fill(x, e);
                } else if (in0) {
                    fill(x, lastTrue(x, e, lineHint, inside));
                } else {
                    long long const t =
                        lastTrue(x, e, lineHint, [&](long long xx) { return !inside(xx); });
                    fill(t + 1, e);
                }
            }
            x = e + 1;
        }
    }

    // Table indices spanned by an outside certificate.
    static constexpr std::size_t kMaxCertifiedRange = 64;

    std::vector<Entry> const& m_table;
    Cpoint2<T> m_c;
    std::size_t m_m;
    // The row of the run and stretch searches; an index hint carried between them.
    T m_py = T(0);
    std::size_t m_hintS = 0;
    // Blocks and stretches still to decide.
    std::vector<Tblock> m_blocks;
    std::vector<std::pair<long long, long long>> m_pending;  // per row of a band: [first, last]
    std::vector<Tstretch> m_stack;
};

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
        if (poly.m_table.empty()) {
            return;
        }
        CconvexScan<T> scan(poly.m_table, poly.m_center);
        scan.fillBox(xa, xb, rows.first, rows.second, fill);
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
