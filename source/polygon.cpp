// Polygons: classification, simplicity and point-in tests, convex and contour polygons,
// simplification and the minimum enclosing rectangle.
#include "math/polygon.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <queue>
#include <tuple>

#include "detail/exact_orient.h"
#include "detail/hull2.h"
#include "detail/plane_predicates.h"
#include "detail/polar_sort.h"

namespace math {

namespace {

using detail::orientation;

// Sedgewick's ccw (Algorithms in C, 24.1) for the segment test of isSimple: +1 when p2 lies left
// of p0->p1, -1 when right; for collinear points -1 when p2 lies behind p0, +1 when beyond p1,
// 0 when within the segment (dot products and squared lengths decide). NaN gives 0 unless a
// finite dot-product term is negative.
template <typename T>
int ccw(Cpoint2<T> const& p0, Cpoint2<T> const& p1, Cpoint2<T> const& p2) {
    T const dx1 = p1.x - p0.x;
    T const dy1 = p1.y - p0.y;
    T const dx2 = p2.x - p0.x;
    T const dy2 = p2.y - p0.y;
    if (dx1 * dy2 > dy1 * dx2) {
        return 1;
    }
    if (dx1 * dy2 < dy1 * dx2) {
        return -1;
    }
    if (dx1 * dx2 < T(0) || dy1 * dy2 < T(0)) {
        return -1;
    }
    if (dx1 * dx1 + dy1 * dy1 < dx2 * dx2 + dy2 * dy2) {
        return 1;
    }
    return 0;
}

// Segments a and b touch when, for each, the end points of the other are not both strictly on
// one side (collinear end points within the segment count as touching).
template <typename T>
bool segmentsTouch(Cpoint2<T> const& a1, Cpoint2<T> const& a2, Cpoint2<T> const& b1,
                   Cpoint2<T> const& b2) {
    return ccw(a1, a2, b1) * ccw(a1, a2, b2) <= 0 && ccw(b1, b2, a1) * ccw(b1, b2, a2) <= 0;
}

// Pseudo-angle of (dx, dy) in [0, 4), counter-clockwise from +x in the y-up sense, without
// trigonometry: t = dy / (|dx| + |dy|), then 2 - t for dx < 0, t + 4 for dx >= 0 > dy.
// Monotone in the direction angle; 0 for the zero vector.
double pseudoAngle(double dx, double dy) {
    double const s = std::fabs(dx) + std::fabs(dy);
    if (s == 0.0) {
        return 0.0;
    }
    double const t = dy / s;
    if (dx < 0.0) {
        return 2.0 - t;
    }
    if (dy < 0.0) {
        return t + 4.0;
    }
    return t;
}

// A point prepared for an angular sort: key, squared distance, the point.
template <typename T>
struct AngularItem {
    double key;
    double dist;
    Cpoint2<T> p;
};

// Ascending key, then nearer first, then x, then y: a strict total order on finite items, so
// the sort is well defined even where rounding makes nearly equal directions tie.
template <typename T>
bool angularLess(AngularItem<T> const& a, AngularItem<T> const& b) {
    return std::tie(a.key, a.dist, a.p.x, a.p.y) < std::tie(b.key, b.dist, b.p.x, b.p.y);
}

template <typename T>
bool samePoint(AngularItem<T> const& a, AngularItem<T> const& b) {
    return a.p.x == b.p.x && a.p.y == b.p.y;
}

// The exact orientation sign of (a, b, p): +1 when p lies left of a->b, 0 on its line.
template <typename T>
int exactTurn(Cpoint2<T> const& a, Cpoint2<T> const& b, Cpoint2<T> const& p) {
    return detail::orientSign(a.x, a.y, b.x, b.y, p.x, p.y);
}

// The ring v started at its vertex of smallest x (then smallest y, the first such vertex), each
// other vertex kept when it is not exactly collinear with its two neighbours in the ring.
template <typename T>
std::vector<Cpoint2<T>> dropCollinearExact(std::vector<Cpoint2<T>> const& v) {
    std::size_t const n = v.size();
    std::vector<Cpoint2<T>> out;
    if (n == 0) {
        return out;
    }
    std::size_t s = 0;
    for (std::size_t i = 1; i < n; ++i) {
        if (v[i].x < v[s].x || (v[i].x == v[s].x && v[i].y < v[s].y)) {
            s = i;
        }
    }
    out.reserve(n);
    out.push_back(v[s]);
    for (std::size_t j = 1; j < n; ++j) {
        if (exactTurn(v[(s + j - 1) % n], v[(s + j) % n], v[(s + j + 1) % n]) != 0) {
            out.push_back(v[(s + j) % n]);
        }
    }
    return out;
}

// Euclidean distance from p to the segment a-b, in double.
double segmentDistance(detail::Pt2d const& p, detail::Pt2d const& a, detail::Pt2d const& b) {
    double const ux = b.x - a.x;
    double const uy = b.y - a.y;
    double const wx = p.x - a.x;
    double const wy = p.y - a.y;
    double const len2 = ux * ux + uy * uy;
    double t = 0.0;
    if (len2 > 0.0) {
        t = (wx * ux + wy * uy) / len2;
        t = t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t);
    }
    double const dx = wx - t * ux;
    double const dy = wy - t * uy;
    double const d = std::sqrt(dx * dx + dy * dy);
    return d == d ? d : 0.0;  // NaN counts as "on the chord"
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Construction and mutators

template <typename T>
Cpolygon2<T>::Cpolygon2() = default;

template <typename T>
Cpolygon2<T>::Cpolygon2(std::vector<Cpoint2<T>> const& vertices) : m_vertices(vertices) {}

template <typename T>
Cpolygon2<T>::Cpolygon2(std::list<Cpoint2<T>> const& vertices)
    : m_vertices(vertices.begin(), vertices.end()) {}

template <typename T>
Cpolygon2<T>::Cpolygon2(Crect2<T> const& rect) {
    set(rect);
}

template <typename T>
Cpolygon2<T>& Cpolygon2<T>::operator=(std::vector<Cpoint2<T>> const& vertices) {
    m_vertices = vertices;
    return *this;
}

template <typename T>
bool Cpolygon2<T>::operator==(Cpolygon2 const& o) const {
    return m_vertices == o.m_vertices;
}

template <typename T>
bool Cpolygon2<T>::operator!=(Cpolygon2 const& o) const {
    return !(*this == o);
}

template <typename T>
void Cpolygon2<T>::add(T x, T y) {
    m_vertices.emplace_back(x, y);
}

template <typename T>
void Cpolygon2<T>::add(Cpoint2<T> const& p) {
    m_vertices.push_back(p);
}

template <typename T>
void Cpolygon2<T>::add(std::vector<Cpoint2<T>> const& points) {
    m_vertices.insert(m_vertices.end(), points.begin(), points.end());
}

template <typename T>
void Cpolygon2<T>::set(Crect2<T> const& rect) {
    m_vertices = {Cpoint2<T>(rect.left(), rect.top()), Cpoint2<T>(rect.right(), rect.top()),
                  Cpoint2<T>(rect.right(), rect.bottom()), Cpoint2<T>(rect.left(), rect.bottom())};
}

template <typename T>
void Cpolygon2<T>::set(std::vector<Cpoint2<T>> const& vertices) {
    m_vertices = vertices;
}

template <typename T>
bool Cpolygon2<T>::remove(std::size_t index) {
    if (index >= m_vertices.size()) {
        return false;
    }
    m_vertices.erase(m_vertices.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

template <typename T>
bool Cpolygon2<T>::remove(Cpoint2<T> const& p) {
    auto const it = std::find(m_vertices.begin(), m_vertices.end(), p);
    if (it == m_vertices.end()) {
        return false;
    }
    m_vertices.erase(it);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Measures

template <typename T>
bool Cpolygon2<T>::isValid() const {
    if (m_vertices.size() < 3) {
        return false;
    }
    return std::all_of(m_vertices.begin(), m_vertices.end(),
                       [](Cpoint2<T> const& p) { return detail::isFinite(p); });
}

template <typename T>
T Cpolygon2<T>::area() const {
    std::size_t const n = m_vertices.size();
    if (n < 3) {
        return T(0);
    }
    // 2A = sum_i (v_i - v0) x (v_i+1 - v0), i = 1 .. n-2 ascending.
    Cpoint2<T> const& o = m_vertices[0];
    T sum = T(0);
    for (std::size_t i = 1; i + 1 < n; ++i) {
        Cpoint2<T> const& a = m_vertices[i];
        Cpoint2<T> const& b = m_vertices[i + 1];
        sum += (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
    }
    return std::fabs(sum) * T(0.5);
}

template <typename T>
Cpoint2<T> Cpolygon2<T>::center() const {
    std::size_t const n = m_vertices.size();
    if (n == 0) {
        return Cpoint2<T>();
    }
    if (n >= 3) {
        // Fan about v0: weights c_i = (v_i - v0) x (v_i+1 - v0), triangle centroids
        // (v_i + v_i+1 - 2 v0) / 3 relative to v0; accumulated in index order.
        Cpoint2<T> const& o = m_vertices[0];
        T sumC = T(0);
        T sumX = T(0);
        T sumY = T(0);
        for (std::size_t i = 1; i + 1 < n; ++i) {
            T const ax = m_vertices[i].x - o.x;
            T const ay = m_vertices[i].y - o.y;
            T const bx = m_vertices[i + 1].x - o.x;
            T const by = m_vertices[i + 1].y - o.y;
            T const c = ax * by - ay * bx;
            sumC += c;
            sumX += c * (ax + bx);
            sumY += c * (ay + by);
        }
        if (sumC != T(0) && std::isfinite(sumC)) {
            T const d = T(3) * sumC;
            return Cpoint2<T>(o.x + sumX / d, o.y + sumY / d);
        }
    }
    // Degenerate: the vertex mean.
    T sx = T(0);
    T sy = T(0);
    for (Cpoint2<T> const& p : m_vertices) {
        sx += p.x;
        sy += p.y;
    }
    T const count = static_cast<T>(static_cast<std::uint64_t>(n));
    return Cpoint2<T>(sx / count, sy / count);
}

template <typename T>
Crect2<T> Cpolygon2<T>::boundingRect(std::vector<Cpoint2<T>> const& vertices) {
    CboundingBox2<T> box;
    box.set(vertices);
    return Crect2<T>(Cpoint2<T>(box.minX(), box.minY()), Cpoint2<T>(box.maxX(), box.maxY()));
}

template <typename T>
Crect2<T> Cpolygon2<T>::boundingRect() const {
    return boundingRect(m_vertices);
}

// ---------------------------------------------------------------------------------------------
// Classification

template <typename T>
int Cpolygon2<T>::_sign(T v) {
    if (v > T(0)) {
        return 1;
    }
    if (v < T(0)) {
        return -1;
    }
    return 0;
}

template <typename T>
T Cpolygon2<T>::theta(Cpoint2<T> const& a, Cpoint2<T> const& b) {
    return detail::thetaKey(a.x, a.y, b.x, b.y);
}

template <typename T>
bool Cpolygon2<T>::isDegenerated() const {
    std::size_t const n = m_vertices.size();
    if (n < 3) {
        return true;
    }
    // Every cyclic triple (v_i, v_i+1, v_i+2), the two wrap-around ones included.
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint2<T> const& a = m_vertices[i];
        Cpoint2<T> const& b = m_vertices[(i + 1) % n];
        Cpoint2<T> const& c = m_vertices[(i + 2) % n];
        if (orientation(a, b, c) != T(0)) {
            return false;
        }
    }
    return true;
}

template <typename T>
bool Cpolygon2<T>::isConvex() const {
    std::size_t const n = m_vertices.size();
    if (n < 3) {
        return false;
    }
    int const s = _sign(orientation(m_vertices[0], m_vertices[1], m_vertices[2]));
    // Triples (v_k-1, v_k, v_k+1) for k = 2 .. n-2; the wrap-around triples are not tested.
    for (std::size_t k = 2; k + 1 < n; ++k) {
        if (_sign(orientation(m_vertices[k - 1], m_vertices[k], m_vertices[k + 1])) != s) {
            return false;
        }
    }
    return true;
}

template <typename T>
bool Cpolygon2<T>::isSimple() const {
    std::size_t const n = m_vertices.size();
    if (n == 0) {
        return true;
    }
    if (n < 3) {
        // One edge touches no other edge; of two edges each touches only one.
        return false;
    }
    // Neighbouring edges always touch (their shared vertex gives ccw = 0), so every edge
    // touches exactly two others unless some pair of non-neighbouring edges touches. With
    // three edges there is no such pair.
    if (n == 3) {
        return true;
    }
    auto const adjacent = [n](std::size_t i, std::size_t j) {
        return (i + 1) % n == j || (j + 1) % n == i;
    };
    auto const touch = [this, n](std::size_t i, std::size_t j) {
        return segmentsTouch(m_vertices[i], m_vertices[(i + 1) % n], m_vertices[j],
                             m_vertices[(j + 1) % n]);
    };

    struct Edge {
        T minX;
        T maxX;
        T minY;
        T maxY;
        std::size_t index;
    };
    // Below this magnitude no product or sum inside ccw overflows (8 limit^2 < max), so
    // segments whose extents are disjoint are really apart.
    T const limit = std::sqrt(std::numeric_limits<T>::max()) / T(4);
    auto const tame = [limit](Cpoint2<T> const& p) {
        return std::fabs(p.x) < limit && std::fabs(p.y) < limit;  // false for NaN
    };
    std::vector<Edge> edges;
    std::vector<std::size_t> wildEdges;
    edges.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint2<T> const& a = m_vertices[i];
        Cpoint2<T> const& b = m_vertices[(i + 1) % n];
        if (!tame(a) || !tame(b)) {
            wildEdges.push_back(i);
        } else {
            edges.push_back({std::min(a.x, b.x), std::max(a.x, b.x), std::min(a.y, b.y),
                             std::max(a.y, b.y), i});
        }
    }
    // Edges with NaN cannot be ordered by x, and with infinite or huge coordinates the
    // orientation products overflow (NaN counts as touching): test them against every other
    // edge.
    for (std::size_t i : wildEdges) {
        for (std::size_t j = 0; j < n; ++j) {
            if (j != i && !adjacent(i, j) && touch(i, j)) {
                return false;
            }
        }
    }
    // Sweep over the other edges by smallest x: only edges whose x-extents overlap
    // (inclusive) are enumerated, and only those whose y-extents overlap too are tested.
    // Cost: O(n log n) plus the number of x-overlapping pairs, which stays small unless many
    // long edges share one x-range (a spiky star degrades towards n^2).
    std::sort(edges.begin(), edges.end(), [](Edge const& a, Edge const& b) {
        return a.minX < b.minX || (a.minX == b.minX && a.index < b.index);
    });
    for (std::size_t a = 0; a < edges.size(); ++a) {
        Edge const& ea = edges[a];
        for (std::size_t b = a + 1; b < edges.size() && edges[b].minX <= ea.maxX; ++b) {
            Edge const& eb = edges[b];
            if (eb.maxY < ea.minY || ea.maxY < eb.minY) {
                continue;
            }
            std::size_t const i = ea.index;
            std::size_t const j = eb.index;
            if (!adjacent(i, j) && touch(i, j)) {
                return false;
            }
        }
    }
    return true;
}

template <typename T>
bool Cpolygon2<T>::testRect() {
    if (m_vertices.size() != 4) {
        return false;
    }
    // Type 1: the unset rectangle (left = right = NaN); type 3: the stored one; otherwise the
    // extents of the vertices.
    Crect2<T> r;
    if (m_type == rectangle) {
        r = m_rect;
    } else if (m_type != tooFewVertices) {
        r = boundingRect(m_vertices);
    }
    m_rect = r;

    // Equal within 2^-35, relative with an absolute floor of 2^-35; evaluated in double (in
    // float the tolerance would vanish against any coordinate above about 2^-12).
    double const tol = 2.9103830456733704e-11;
    auto const eq = [tol](T ta, T tb) {
        double const a = static_cast<double>(ta);
        double const b = static_cast<double>(tb);
        return (std::fabs(a) + 1.0) * tol + a > b && (std::fabs(b) + 1.0) * tol + b > a;
    };
    unsigned bits = 0;
    for (Cpoint2<T> const& v : m_vertices) {
        if (eq(v.x, r.left()) && eq(v.y, r.top())) {
            bits |= 1u;
        } else if (eq(v.x, r.right()) && eq(v.y, r.top())) {
            bits |= 2u;
        } else if (eq(v.x, r.right()) && eq(v.y, r.bottom())) {
            bits |= 4u;
        } else if (eq(v.x, r.left()) && eq(v.y, r.bottom())) {
            bits |= 8u;
        }
    }
    return bits == 15u;
}

template <typename T>
void Cpolygon2<T>::optimize(bool orient) {
    std::size_t const n = m_vertices.size();
    if (n == 0) {
        return;
    }
    // Start vertex: smallest x, then smallest y; strict, so the first such vertex wins.
    std::size_t s = 0;
    for (std::size_t i = 1; i < n; ++i) {
        Cpoint2<T> const& v = m_vertices[i];
        Cpoint2<T> const& b = m_vertices[s];
        if (v.x < b.x || (v.x == b.x && v.y < b.y)) {
            s = i;
        }
    }
    // Working ring w_0 .. w_n = v_s .. v_n-1, v_0 .. v_s-1, v_s. An interior entry stays when
    // its cross product with its neighbours in the ring is non-zero.
    auto const w = [this, s, n](std::size_t j) -> Cpoint2<T> const& {
        return m_vertices[(s + j) % n];
    };
    std::vector<Cpoint2<T>> out;
    out.reserve(n);
    out.push_back(w(0));
    for (std::size_t j = 1; j < n; ++j) {
        if (orientation(w(j - 1), w(j), w(j + 1)) != T(0)) {
            out.push_back(w(j));
        }
    }
    m_vertices.swap(out);

    if (orient && m_vertices.size() >= 3) {
        // Signed area 1/2 sum_i (x_i y_i+1 - y_i x_i+1), i ascending, closing term last.
        std::size_t const m = m_vertices.size();
        T sum = T(0);
        for (std::size_t i = 0; i < m; ++i) {
            Cpoint2<T> const& a = m_vertices[i];
            Cpoint2<T> const& b = m_vertices[(i + 1) % m];
            sum += a.x * b.y - a.y * b.x;
        }
        if (T(0.5) * sum < T(0)) {
            std::reverse(m_vertices.begin(), m_vertices.end());
        }
    }
}

template <typename T>
void Cpolygon2<T>::buildConvexTable() {
    Cpoint2<T> const& a = m_vertices[0];
    Cpoint2<T> const& b = m_vertices[1];
    Cpoint2<T> const& c = m_vertices[2];
    m_center = Cpoint2<T>((a.x + b.x + c.x) / T(3), (a.y + b.y + c.y) / T(3));
    m_table.clear();
    m_table.reserve(m_vertices.size());
    for (Cpoint2<T> const& v : m_vertices) {
        m_table.push_back({theta(m_center, v), v});
    }
    std::sort(m_table.begin(), m_table.end(), [](TangleEntry const& x, TangleEntry const& y) {
        return detail::keyLess(x.key, y.key);
    });
}

template <typename T>
void Cpolygon2<T>::preprocess() {
    m_type = tooFewVertices;
    m_table.clear();
    m_center = Cpoint2<T>();
    if (m_vertices.size() <= 2) {
        return;
    }
    if (isDegenerated()) {
        m_type = degenerated;
        return;
    }
    optimize(true);
    // Should rounding leave fewer than 3 vertices (non-transitive collinearity), the edges
    // left touch fewer than two others: not simple, type 7.
    if (!isSimple()) {
        m_type = selfIntersecting;
        return;
    }
    // The type is still 1 here, so testRect sees the NaN rectangle and fails: a rectangle is
    // classified as convex. Kept as it is.
    if (testRect()) {
        m_type = rectangle;
        return;
    }
    if (!isConvex()) {
        m_type = simple;
        return;
    }
    m_type = convex;
    buildConvexTable();
}

// ---------------------------------------------------------------------------------------------
// Point test

template <typename T>
bool Cpolygon2<T>::pointIsInConvex(Cpoint2<T> const& p) const {
    std::size_t const m = m_table.size();
    if (m == 0) {
        return false;
    }
    T const k = detail::thetaKey(m_center.x, m_center.y, p.x, p.y);
    // First entry whose key is not less than k.
    auto const it =
        std::lower_bound(m_table.begin(), m_table.end(), k,
                         [](TangleEntry const& e, T key) { return detail::keyLess(e.key, key); });
    std::size_t const idx = static_cast<std::size_t>(it - m_table.begin());
    if (idx != 0 && idx != m) {
        return orientation(m_table[idx].vertex, m_table[idx - 1].vertex, p) >= T(0);
    }
    return orientation(m_table[0].vertex, m_table[m - 1].vertex, p) >= T(0);
}

template <typename T>
bool Cpolygon2<T>::pointIsInWinding(Cpoint2<T> const& p) const {
    std::size_t const n = m_vertices.size();
    std::ptrdiff_t w = 0;
    // Edges (v_i, v_i+1) in order, the closing edge (v_n-1, v_0) last.
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint2<T> const& a = m_vertices[i];
        Cpoint2<T> const& b = m_vertices[i + 1 < n ? i + 1 : 0];
        if (p.y >= a.y) {
            if (b.y > p.y && orientation(a, b, p) > T(0)) {
                ++w;
            }
        } else if (p.y >= b.y && orientation(a, b, p) < T(0)) {
            --w;
        }
    }
    return w != 0;
}

template <typename T>
bool Cpolygon2<T>::pointIsIn(Cpoint2<T> const& p) const {
    if (m_vertices.size() < 3) {
        return false;
    }
    switch (static_cast<int>(m_type)) {
        case rectangle:
            return m_rect.pointIsIn(p);
        case convex:
            return pointIsInConvex(p);
        case unclassified:
        case simple:
        case selfIntersecting:
            return pointIsInWinding(p);
        default:  // 1, 2, 5 and anything above 7
            return false;
    }
}

// ---------------------------------------------------------------------------------------------
// Derived polygons

// Every turn below is the exact orientation sign of the input values, so the polygon is the
// convex hull of the points exactly (with the collinear boundary points unless opt is true);
// the pivot's translation to the origin is implicit, and the vertices are the input points
// themselves.
template <typename T>
Cpolygon2<T> Cpolygon2<T>::convexPoly(std::vector<Cpoint2<T>> const& points, bool opt) {
    std::vector<Cpoint2<T>> pts;
    pts.reserve(points.size());
    for (Cpoint2<T> const& p : points) {
        if (detail::isFinite(p)) {
            pts.push_back(p);
        }
    }
    if (pts.size() < 4) {
        return Cpolygon2();
    }
    // Pivot: smallest y, strict comparison, the first such point wins.
    std::size_t pivotIndex = 0;
    for (std::size_t i = 1; i < pts.size(); ++i) {
        if (pts[i].y < pts[pivotIndex].y) {
            pivotIndex = i;
        }
    }
    Cpoint2<T> const pivot = pts[pivotIndex];
    pts.erase(std::remove_if(pts.begin(), pts.end(),
                             [&pivot](Cpoint2<T> const& p) {
                                 return p.x == pivot.x && p.y == pivot.y;  // pivot and copies
                             }),
              pts.end());

    // Polar order about the pivot. Every point lies on or above the pivot's row, so its angle
    // is in [0, pi]: the half [0, pi) first, then the ray at pi (left on the pivot's row).
    // Within one half the exact turn orders the directions; on one ray the nearer point comes
    // first (its x nearer to the pivot's; on a vertical ray the smaller y).
    auto const atPi = [&pivot](Cpoint2<T> const& p) { return p.y == pivot.y && p.x < pivot.x; };
    auto const sameRay = [&](Cpoint2<T> const& a, Cpoint2<T> const& b) {
        return atPi(a) == atPi(b) && exactTurn(pivot, a, b) == 0;
    };
    detail::polarSort(pts, 0, pivot, [&](Cpoint2<T> const& a, Cpoint2<T> const& b) {
        bool const pa = atPi(a);
        bool const pb = atPi(b);
        if (pa != pb) {
            return pb;
        }
        int const turn = exactTurn(pivot, a, b);
        if (turn != 0) {
            return turn > 0;
        }
        if (a.x != b.x) {
            return (a.x < b.x) == (a.x > pivot.x);
        }
        return a.y < b.y;
    });
    pts.erase(std::unique(pts.begin(), pts.end(),
                          [](Cpoint2<T> const& a, Cpoint2<T> const& b) {
                              return a.x == b.x && a.y == b.y;
                          }),
              pts.end());
    // The last ray is walked outside-in, so that collinear points of the closing edge come in
    // boundary order (unless every point lies on one ray).
    if (!pts.empty()) {
        std::size_t first = pts.size() - 1;
        while (first > 0 && sameRay(pts[first - 1], pts.back())) {
            --first;
        }
        if (first > 0) {
            std::reverse(pts.begin() + static_cast<std::ptrdiff_t>(first), pts.end());
        }
    }

    // Graham scan: push each point; while the last three make a strictly clockwise turn drop
    // the middle one. Collinear points (turn exactly 0) stay.
    std::vector<Cpoint2<T>> hull;
    hull.reserve(pts.size() + 1);
    hull.push_back(pivot);
    for (std::size_t i = 0; i < pts.size(); ++i) {
        hull.push_back(pts[i]);
        if (i < 2) {
            continue;  // the first three (pivot and two points) start the scan unchecked
        }
        while (hull.size() >= 3 &&
               exactTurn(hull[hull.size() - 3], hull[hull.size() - 2], hull.back()) < 0) {
            hull.erase(hull.end() - 2);
        }
    }

    Cpolygon2 poly;
    if (opt) {
        // The clean-up of optimize(false) (rotation to the lowest-x vertex, then the collinear
        // vertices dropped), with collinearity decided exactly: a rounded cross product could
        // drop a true corner or keep a point inside an edge.
        poly.m_vertices = dropCollinearExact(hull);
    } else {
        poly.m_vertices.swap(hull);
    }
    if (poly.m_vertices.size() < 3) {
        poly.m_type = tooFewVertices;
        return poly;
    }
    poly.m_type = convex;
    poly.buildConvexTable();
    return poly;
}

template <typename T>
Cpolygon2<T> Cpolygon2<T>::convexPoly() const {
    return convexPoly(m_vertices, true);
}

template <typename T>
Cpolygon2<T> Cpolygon2<T>::contourPoly(std::vector<Cpoint2<T>> const& points) {
    std::vector<Cpoint2<T>> pts;
    pts.reserve(points.size());
    double mx = 0.0;
    double my = 0.0;
    for (Cpoint2<T> const& p : points) {
        if (detail::isFinite(p)) {
            pts.push_back(p);
            mx += static_cast<double>(p.x);
            my += static_cast<double>(p.y);
        }
    }
    if (pts.empty()) {
        return Cpolygon2();
    }
    double const count = static_cast<double>(static_cast<std::uint64_t>(pts.size()));
    mx /= count;
    my /= count;
    std::vector<AngularItem<T>> items;
    items.reserve(pts.size());
    for (Cpoint2<T> const& p : pts) {
        double const dx = static_cast<double>(p.x) - mx;
        double const dy = static_cast<double>(p.y) - my;
        items.push_back({pseudoAngle(dx, dy), dx * dx + dy * dy, p});
    }
    std::sort(items.begin(), items.end(), angularLess<T>);
    items.erase(std::unique(items.begin(), items.end(), samePoint<T>), items.end());
    std::vector<Cpoint2<T>> ring;
    ring.reserve(items.size());
    for (AngularItem<T> const& it : items) {
        ring.push_back(it.p);
    }
    return Cpolygon2(ring);
}

template <typename T>
Cpolygon2<T> Cpolygon2<T>::simplifiedTo(std::size_t n) const {
    std::size_t const count = m_vertices.size();
    if (count <= n) {
        return Cpolygon2(m_vertices);
    }
    if (n == 0) {
        return Cpolygon2();
    }
    std::vector<detail::Pt2d> v(count);
    for (std::size_t i = 0; i < count; ++i) {
        v[i] = {static_cast<double>(m_vertices[i].x), static_cast<double>(m_vertices[i].y)};
    }
    std::vector<char> kept(count, 0);
    kept[0] = 1;
    std::size_t nKept = 1;

    // Second anchor: the vertex farthest from vertex 0.
    std::size_t far = 0;
    double farDist = 0.0;
    for (std::size_t i = 1; i < count; ++i) {
        double const d = segmentDistance(v[i], v[0], v[0]);
        if (d > farDist) {
            farDist = d;
            far = i;
        }
    }
    if (n >= 2 && far != 0) {
        kept[far] = 1;
        ++nKept;

        // A span runs from kept vertex s forward to kept vertex e (indices unrolled, e may
        // equal count for vertex 0); its candidate is the interior vertex farthest from the
        // chord, the first of equal distances.
        struct Span {
            double dist;
            std::size_t s;
            std::size_t e;
            std::size_t k;
        };
        auto const worse = [](Span const& a, Span const& b) {
            return a.dist < b.dist || (a.dist == b.dist && a.k > b.k);
        };
        std::priority_queue<Span, std::vector<Span>, decltype(worse)> spans(worse);
        auto const pushSpan = [&](std::size_t s, std::size_t e) {
            Span best{0.0, s, e, s};
            for (std::size_t j = s + 1; j < e; ++j) {
                double const d = segmentDistance(v[j % count], v[s % count], v[e % count]);
                if (d > best.dist) {
                    best.dist = d;
                    best.k = j;
                }
            }
            if (best.dist > 0.0) {
                spans.push(best);
            }
        };
        pushSpan(0, far);
        pushSpan(far, count);
        while (nKept < n && !spans.empty()) {
            Span const top = spans.top();
            spans.pop();
            kept[top.k % count] = 1;
            ++nKept;
            pushSpan(top.s, top.k);
            pushSpan(top.k, top.e);
        }
    }
    std::vector<Cpoint2<T>> out;
    out.reserve(nKept);
    for (std::size_t i = 0; i < count; ++i) {
        if (kept[i] != 0) {
            out.push_back(m_vertices[i]);
        }
    }
    return Cpolygon2(out);
}

template <typename T>
std::vector<Cpoint2<T>> Cpolygon2<T>::minimumEnclosingRect() const {
    using detail::Pt2d;
    std::vector<Pt2d> pts;
    pts.reserve(m_vertices.size());
    for (Cpoint2<T> const& p : m_vertices) {
        if (detail::isFinite(p)) {
            pts.push_back({static_cast<double>(p.x), static_cast<double>(p.y)});
        }
    }
    // Andrew's monotone chain rather than the Graham scan of CcvxHull2D or convexPoly: its
    // lexicographic sort is exact, so the extreme points always stay on the hull, whereas an
    // angular sort about a pivot is rounding noise for nearly collinear points and can drop a
    // far extreme point; the rectangle would then miss it.
    std::vector<Pt2d> const h = detail::monotoneChainHull(pts);
    auto const toT = [](Pt2d const& p) {
        return Cpoint2<T>(static_cast<T>(p.x), static_cast<T>(p.y));
    };
    if (h.empty()) {
        return {};
    }
    if (h.size() == 1) {
        return {toT(h[0]), toT(h[0]), toT(h[0]), toT(h[0])};
    }
    if (h.size() == 2) {
        return {toT(h[0]), toT(h[1]), toT(h[1]), toT(h[0])};
    }

    // Rotating calipers: for hull edge i with unit direction u and inward normal v = perp(u),
    // the rectangle spans [min u, max u] x [0, max v] about h[i]. The extreme vertices move
    // forward monotonically as i advances; each pointer loop is bounded by the hull size.
    std::size_t const m = h.size();
    auto const projU = [&h](std::size_t i, double ux, double uy, std::size_t k) {
        return (h[k].x - h[i].x) * ux + (h[k].y - h[i].y) * uy;
    };
    auto const projV = [&h](std::size_t i, double ux, double uy, std::size_t k) {
        return -(h[k].x - h[i].x) * uy + (h[k].y - h[i].y) * ux;
    };
    std::size_t right = 0;
    std::size_t top = 0;
    std::size_t left = 0;
    double bestArea = std::numeric_limits<double>::infinity();
    std::vector<Pt2d> best;
    for (std::size_t i = 0; i < m; ++i) {
        std::size_t const j = (i + 1) % m;
        double const ex = h[j].x - h[i].x;
        double const ey = h[j].y - h[i].y;
        double const len = std::sqrt(ex * ex + ey * ey);
        if (!(len > 0.0) || !std::isfinite(len)) {
            continue;
        }
        double const ux = ex / len;
        double const uy = ey / len;
        if (i == 0) {
            for (std::size_t k = 1; k < m; ++k) {
                if (projU(i, ux, uy, k) > projU(i, ux, uy, right)) {
                    right = k;
                }
                if (projV(i, ux, uy, k) > projV(i, ux, uy, top)) {
                    top = k;
                }
                if (projU(i, ux, uy, k) < projU(i, ux, uy, left)) {
                    left = k;
                }
            }
        } else {
            for (std::size_t s = 0;
                 s < m && projU(i, ux, uy, (right + 1) % m) >= projU(i, ux, uy, right); ++s) {
                right = (right + 1) % m;
            }
            for (std::size_t s = 0;
                 s < m && projV(i, ux, uy, (top + 1) % m) >= projV(i, ux, uy, top); ++s) {
                top = (top + 1) % m;
            }
            for (std::size_t s = 0;
                 s < m && projU(i, ux, uy, (left + 1) % m) <= projU(i, ux, uy, left); ++s) {
                left = (left + 1) % m;
            }
        }
        double const minU = projU(i, ux, uy, left);
        double const maxU = projU(i, ux, uy, right);
        double const maxV = projV(i, ux, uy, top);
        double const area = (maxU - minU) * maxV;
        if (area < bestArea) {
            bestArea = area;
            Pt2d const o = h[i];
            best = {{o.x + ux * minU, o.y + uy * minU},
                    {o.x + ux * maxU, o.y + uy * maxU},
                    {o.x + ux * maxU - uy * maxV, o.y + uy * maxU + ux * maxV},
                    {o.x + ux * minU - uy * maxV, o.y + uy * minU + ux * maxV}};
        }
    }
    std::vector<Cpoint2<T>> out;
    out.reserve(best.size());
    for (Pt2d const& p : best) {
        out.push_back(toT(p));
    }
    return out;
}

#define MGEO_POLYGON_DEFINE(T) MGEO_POLYGON_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_POLYGON_DEFINE)

}  // namespace math
