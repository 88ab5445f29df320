// Polygons: classification, simplicity and point-in tests.
#pragma once

#include <math/detail/instantiate.h>
#include <math/points.h>
#include <math/rect.h>

#include <cstddef>
#include <list>
#include <vector>

namespace math {

template <typename T>
class Caoi;

// A closed plane polygon given by its vertex list; the closing edge from the last vertex back
// to the first is implicit (the first vertex is not repeated).
//
// Before it answers point queries a polygon is classified once by preprocess(): degenerate,
// rectangle, convex, simple or self-intersecting, each class with its own point test. A convex
// polygon keeps an angular table (pseudo-angle of each vertex about a reference centre, sorted)
// for a logarithmic test.
//
// State: a polygon starts unclassified. The mutators (add, set, remove, operator= from a vertex
// list) change the vertices only: type, bounding rectangle, angular table and centre stay as
// they were, and pointIsIn keeps using them until preprocess() runs again.
//
// Orientation: "p left of a->b" means (bx - ax)(py - ay) - (px - ax)(by - ay) > 0, and
// "counter-clockwise" means positive signed area 1/2 sum (x_i y_i+1 - y_i x_i+1); both in the
// y-up sense of the formulas (in an image with y pointing down the same polygon appears
// clockwise).
template <typename T>
class Cpolygon2 {
public:
    enum enType : int {
        unclassified = 0,      // not classified yet; pointIsIn: winding number
        tooFewVertices = 1,    // fewer than 3 vertices, also while classification runs; false
        degenerated = 2,       // all vertices on one line; false
        rectangle = 3,         // axis-parallel rectangle; inclusive bounding-rectangle test
        convex = 4,            // convex; angular search
        unassigned = 5,        // not assigned by the classification; false
        simple = 6,            // simple, not convex; winding number
        selfIntersecting = 7,  // not simple; winding number
    };

    // One row of the angular table: the pseudo-angle (theta) of the vertex about the
    // reference centre, and the vertex.
    struct TangleEntry {
        T key;
        Cpoint2<T> vertex;
    };

    // An empty, unclassified polygon.
    Cpolygon2();
    explicit Cpolygon2(std::vector<Cpoint2<T>> const& vertices);
    explicit Cpolygon2(std::list<Cpoint2<T>> const& vertices);
    // The four corners (left, top), (right, top), (right, bottom), (left, bottom).
    explicit Cpolygon2(Crect2<T> const& rect);
    Cpolygon2(Cpolygon2 const&) = default;
    Cpolygon2& operator=(Cpolygon2 const&) = default;
    // Replaces the vertices (see State above).
    Cpolygon2& operator=(std::vector<Cpoint2<T>> const& vertices);

    // Equal vertex lists (exact, same order and start); type and tables are not compared.
    bool operator==(Cpolygon2 const& o) const;
    bool operator!=(Cpolygon2 const& o) const;

    // Append vertices. A repeated vertex is accepted (classification drops it again, since
    // it is collinear with its neighbours).
    void add(T x, T y);
    void add(Cpoint2<T> const& p);
    void add(std::vector<Cpoint2<T>> const& points);
    // Replace the vertices: the four corners of the rectangle (as the constructor), or a list.
    void set(Crect2<T> const& rect);
    void set(std::vector<Cpoint2<T>> const& vertices);
    // Erase vertex `index`, or the first vertex equal (exactly) to p; whether one was erased.
    bool remove(std::size_t index);
    bool remove(Cpoint2<T> const& p);

    std::size_t size() const { return m_vertices.size(); }
    std::vector<Cpoint2<T>> const& vertices() const { return m_vertices; }
    enType type() const { return m_type; }

    // At least 3 vertices, every coordinate finite.
    bool isValid() const;
    // Area centroid sum_i c_i (a_i + b_i) / 3 / sum_i c_i over the fan of triangles
    // (v0, v_i, v_i+1), c_i their doubled signed areas, computed relative to v0. When the
    // signed area is 0 (degenerate polygon) or there are fewer than 3 vertices: the vertex
    // mean. No vertices: the unset point.
    Cpoint2<T> center() const;
    // |signed area|: half the absolute sum of the fan cross products about v0 (the shoelace
    // sum moved to v0). For a self-intersecting polygon this is the net signed area. Fewer
    // than 3 vertices: 0.
    T area() const;
    // The extents of the vertices as a rectangle (left = min x, top = min y, right = max x,
    // bottom = max y), as CboundingBox2::set computes them: no vertices or a NaN coordinate
    // give NaN left and right.
    Crect2<T> boundingRect() const;
    static Crect2<T> boundingRect(std::vector<Cpoint2<T>> const& vertices);

    // Classifies the polygon and builds its tables:
    //  1. type = 1; at most 2 vertices: stop;
    //  2. isDegenerated(): type 2, stop;
    //  3. optimize(true) (start at the lowest-x vertex, collinear vertices dropped,
    //     counter-clockwise); should rounding leave fewer than 3 vertices: type 2, stop;
    //  4. not isSimple(): type 7, stop;
    //  5. testRect(): type 3, stop. The rectangle test runs while the type is 1, so it sees a
    //     NaN bounding rectangle and fails: rectangles are classified as convex;
    //  6. not isConvex(): type 6, stop;
    //  7. type 4: reference centre = mean of the first three vertices, angular table of
    //     (theta(centre, v), v) for every vertex, sorted by key ascending (NaN keys last).
    void preprocess();

    // Point test by type: fewer than 3 vertices, or type 1, 2, 5 or above 7: false. Type 3:
    // inclusive test on the stored bounding rectangle. Type 4: binary search of theta(centre,
    // p) in the angular table for the first key not less than it; p is inside when its
    // orientation against the segment from that entry's vertex to the previous entry's vertex
    // is >= 0 (wrap-around: from the first entry's vertex to the last's); the border is
    // inside. Types 0, 6, 7: winding number over the edges in order, closing edge last
    // (upward edge with yi <= py < yi+1 and p strictly left: +1; downward edge with
    // yi+1 <= py < yi and p strictly right: -1); inside when non-zero.
    bool pointIsIn(Cpoint2<T> const& p) const;

    // Convex polygon of a point set by a Graham scan:
    //  1. points with a non-finite coordinate are ignored; fewer than 4 remaining points give
    //     an empty polygon of type 0 (three points are deliberately not enough);
    //  2. pivot = the point with the smallest y (strict, the first wins; x not consulted); all
    //     points are translated so that it is the origin;
    //  3. the others are sorted by polar angle about it (pseudo-angle key in double; on equal
    //     keys nearer first, except on the last ray, which is walked farther first so that
    //     collinear points of the closing hull edge come in boundary order); exact duplicates
    //     and copies of the pivot are dropped;
    //  4. Graham scan starting with the first three: each further point is pushed, and while
    //     the last three make a strictly clockwise turn (cross product < 0) the middle one is
    //     removed; collinear hull points (cross product exactly 0) stay;
    //  5. translated back; with opt, optimize(false);
    //  6. fewer than 3 vertices: type 1; otherwise type 4 with its centre and angular table,
    //     ready for pointIsIn without preprocess().
    static Cpolygon2 convexPoly(std::vector<Cpoint2<T>> const& points, bool opt);
    // convexPoly(vertices(), true).
    Cpolygon2 convexPoly() const;

    // A contour polygon through every point of a set: the points (non-finite ones ignored,
    // exact duplicates once) ordered by polar angle about their mean (pseudo-angle key in
    // double, counter-clockwise from +x; on equal angles nearer first). The result is
    // star-shaped about the mean and therefore simple (points on one ray from the mean give a
    // spike along that ray). Returned unclassified.
    static Cpolygon2 contourPoly(std::vector<Cpoint2<T>> const& points);

    // The polygon reduced to at most n vertices, keeping its shape (Douglas-Peucker applied to
    // a closed ring, most significant vertex first): start with vertex 0 and the vertex
    // farthest from it; then repeatedly insert the vertex farthest (Euclidean distance to the
    // segment, in double) from the chord of its current span, until n vertices are kept or
    // every remaining vertex lies on its chord. Kept vertices stay in their original order,
    // starting at vertex 0. A polygon with at most n vertices is returned as it is; n = 0
    // gives an empty polygon. Returned unclassified.
    Cpolygon2 simplifiedTo(std::size_t n) const;

    // The four corners of the minimum-area enclosing rectangle of the vertices,
    // counter-clockwise: rotating calipers over the strict convex hull (Andrew's monotone
    // chain, computed in double), one rectangle flush with each hull edge, the first of equal
    // areas wins. A collinear set gives the zero-width rectangle (a, b, b, a) of its extreme
    // points, a single distinct point four copies of it; no finite vertex: an empty list.
    std::vector<Cpoint2<T>> minimumEnclosingRect() const;

protected:
    // Fewer than 3 vertices: true. Otherwise false as soon as a triple of consecutive vertices
    // (the two wrap-around triples included) has a cross product other than exactly 0.
    bool isDegenerated() const;
    // Fewer than 3 vertices: false. The exact sign (-1, 0, +1) of the cross product of
    // (v0, v1, v2), and every further triple up to (v_n-3, v_n-2, v_n-1) has the same sign. The
    // two wrap-around triples are not tested; 0 counts as a sign of its own.
    bool isConvex() const;
    // An empty polygon is simple. Otherwise every edge must touch exactly two other edges
    // (its neighbours, through the shared vertices). Two segments touch when, for each, the
    // end points of the other are not both strictly on one side (Sedgewick's ccw: a collinear
    // end point counts as touching when it lies within the segment, decided with dot products
    // and lengths). Edges whose x-extents do not overlap cannot touch and are never compared:
    // the edges are sorted by their smallest x and swept, so ordinary polygons classify in
    // O(n log n). A NaN coordinate makes a polygon of 4 or more vertices non-simple (its edges
    // touch every other edge).
    bool isSimple() const;
    // Exactly 4 vertices whose corners match the bounding rectangle: the rectangle is the
    // NaN one for type 1, the stored one for type 3, the vertex extents otherwise, and is
    // stored. Coordinates a, b are equal when (|a| + 1) 2^-35 + a > b and (|b| + 1) 2^-35 + b
    // > a, evaluated in double. Each vertex sets the first matching bit of (left, top) 1, (right,
    // top) 2, (right, bottom) 4, (left, bottom) 8; true when all four are set.
    bool testRect();
    // Clean-up: rotates the list to start at the vertex with the smallest x (then smallest y;
    // strict, the first wins), drops every other vertex whose cross product with its two
    // neighbours in the original ring is exactly 0, and with orient (and at least 3 vertices
    // left) reverses the whole list (std::reverse) when the signed area is negative.
    void optimize(bool orient);
    // Pseudo-angle of the direction a->b: dx, dy; s = |dx| + |dy|; t = 0 if s = 0, else dy/s;
    // dx < 0: t = 2 - t; else dy < 0: t = t + 4; result 360 - 90 t. Monotone in the direction
    // angle, from 360 (+x axis and the zero vector) falling counter-clockwise towards 0.
    static T theta(Cpoint2<T> const& a, Cpoint2<T> const& b);
    // -1, 0 or +1 (0 also for NaN).
    static int _sign(T v);

private:
    friend class Caoi<T>;

    bool pointIsInConvex(Cpoint2<T> const& p) const;
    bool pointIsInWinding(Cpoint2<T> const& p) const;
    void buildConvexTable();

    std::vector<Cpoint2<T>> m_vertices;
    enType m_type = unclassified;
    Crect2<T> m_rect;
    std::vector<TangleEntry> m_table;
    Cpoint2<T> m_center;
};

#define MGEO_POLYGON_FAMILY(T, EXT) EXT template class Cpolygon2<T>;
#define MGEO_POLYGON_EXTERN(T) MGEO_POLYGON_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_POLYGON_EXTERN)
#undef MGEO_POLYGON_EXTERN

}  // namespace math
