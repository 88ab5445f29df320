// Intersections, distances and projections between geometric elements.
#pragma once

#include <math/detail/instantiate.h>
#include <math/points.h>
#include <math/shapes.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace math {

// Tolerant comparisons, intersections of shape records, point-to-shape distances and
// orthogonal projections (static members only).
//
// Directions and plane normals are taken as they are stored and assumed to be unit vectors;
// nothing is normalised on entry (a non-unit direction scales the result accordingly).
// Two tolerances: EPS_F = 2^-23 (the single-precision epsilon, for both types) in equal(T, T)
// and every parallelism or singularity test; EPS_T = the machine epsilon of T in equalT and
// the point comparisons. Degenerate input is reported by the bool result (and NaN where
// stated), never by an exception; the LU-based three-plane intersection and the sphere-set
// intersection let solver exceptions through.
template <typename T>
class geometric {
public:
    using Points2 = std::vector<Cpoint2<T>>;
    using Points3 = std::vector<Cpoint3<T>>;

    // --- Comparisons -------------------------------------------------------------------------

    // b >= a - EPS_F and a + EPS_F >= b (inclusive), also for double.
    static bool equal(T const& a, T const& b);
    // b >= a - EPS_T and a + EPS_T >= b (inclusive).
    static bool equalT(T const& a, T const& b);
    // For every coordinate in turn b > a - EPS_T and a + EPS_T > b (strict).
    static bool equal(Cpoint2<T> const& a, Cpoint2<T> const& b);
    static bool equal(Cpoint3<T> const& a, Cpoint3<T> const& b);

    // --- Intersections -----------------------------------------------------------------------

    // The point whose distances to the sphere centres best match the radii: damped
    // Gauss-Newton from the mean of the centres, 41 damping factors 1 + 0.05 k (k = -20..20)
    // tried per step with Csolver_svd, until |dx| + |dy| + |dz| <= sqrt(2^-23). With `check`,
    // coplanar centres (a plane-fit deviation <= EPS_T) fail; without it, 3 spheres or fewer
    // fail. Failure: x = NaN, false. The point starts as the mean of the centres. The step
    // count is capped at 1000 and a NaN step ends the loop (both as a failure), so a start on
    // a centre cannot spin forever.
    static bool intersect(std::vector<Csphere3<T>> const& spheres, Cpoint3<T>& point, bool check);
    // The same in the plane for circles, with collinear centres (a line-fit deviation below
    // sqrt(2^-23)) failing under `check`, and fewer than 3 circles failing without it. Every
    // step waits for one character on standard input (getchar) and writes "x y\n" of the
    // current point to standard output: do not call it without a console. Capped and NaN-safe
    // like the sphere set.
    static bool intersect(std::vector<Ccircle2<T>> const& circles, Cpoint2<T>& point, bool check);
    // Line parameters of the two piercing points, first <= second: with h = (u.p)/2 - u.c
    // (only u.p is halved) and D = h^2 - (p.p - 2 c.p + c.c - r^2): -h - sqrt(D), sqrt(D) - h.
    // D < 0: both NaN, false; a tangent (D = 0) counts as an intersection.
    static bool intersect(Csphere3<T> const& sphere, Cline3<T> const& line, std::pair<T, T>& t);
    // Entry and exit of a line through an axis-parallel box: the six face planes (x max, x
    // min, y max, y min, z max, z min) are pierced in that order and the points inside the box
    // (inclusive) kept. True only for exactly two kept points (a line through an edge or a
    // corner fails); two identical points leave `points` unchanged.
    static bool intersect(CboundingBox3<T> const& box, Cline3<T> const& line,
                          std::pair<Cpoint3<T>, Cpoint3<T>>& points);
    // The common point of three planes: |det| <= EPS_F (Sarrus) is false with the point
    // unchanged; otherwise the LU solution of N p = -d.
    static bool intersect(Cplane3<T> const& p1, Cplane3<T> const& p2, Cplane3<T> const& p3,
                          Cpoint3<T>& point);
    // The line common to two planes: parallel (n1.n2 equal to +-1 within EPS_F) is false with
    // the line unchanged; otherwise direction n1 × n2 (normalised) through c1 n1 + c2 n2.
    static bool intersect(Cplane3<T> const& p1, Cplane3<T> const& p2, Cline3<T>& line);
    // The piercing point p + t u, t = (-d - n.p) / (n.u); n.u equal to 0: x = NaN, false.
    static bool intersect(Cplane3<T> const& plane, Cline3<T> const& line, Cpoint3<T>& point);
    // The point nearest to a set of lines (least squares, sum (I - u u^T) P = sum (p - u (u.p)),
    // solved by LU) and the mean distance of the lines from it. Fewer than 3 lines: false,
    // nothing written; a solver exception prints "not solved\n" and returns false.
    static bool intersect(std::vector<Cline3<T>> const& lines, Cpoint3<T>& point, T& residual);
    // Nearest approach of two lines. Parallel: false, outputs unchanged. Crossing (the nearest
    // points equal within EPS_T): true, the point, dist = 0. Skew: false with the midpoint of
    // the nearest points and their distance.
    static bool intersect(Cline3<T> const& a, Cline3<T> const& b, Cpoint3<T>& point, T& dist);
    static bool intersect(Cline3<T> const& a, Cline3<T> const& b, Cpoint3<T>& point);
    // The crossing of two plane lines by Cramer's rule; |det| <= EPS_F (parallel): false,
    // point unchanged.
    static bool intersect(Cline2<T> const& a, Cline2<T> const& b, Cpoint2<T>& point);

    // --- Distances of one point --------------------------------------------------------------

    // |q - centre| - r (negative inside).
    static T distance(Csphere3<T> const& sphere, Cpoint3<T> const& q);
    // a qx + b qy + c qz + d (signed).
    static T distance(Cplane3<T> const& plane, Cpoint3<T> const& q);
    // |foot - q| - r with foot = P0 + (u.q - u.P0) u (negative inside).
    static T distance(Ccylinder3<T> const& cylinder, Cpoint3<T> const& q);
    // |p + (u.q - u.p) u - q| (unsigned).
    static T distance(Cline3<T> const& line, Cpoint3<T> const& q);
    // (qy - y) dx + (x - qx) dy (positive to the left of the direction).
    static T distance(Cline2<T> const& line, Cpoint2<T> const& q);
    // 0 for crossing lines; for parallel ones (|da.db| equal to 1 within EPS_F) the distance of
    // b's point from a.
    static T distance(Cline2<T> const& a, Cline2<T> const& b);

    // --- Distances of a point list -----------------------------------------------------------
    // One value per point, in order; a non-empty list resizes `out` and overwrites every
    // entry. The empty list is handled per form as stated.

    // |q - centre| - r; empty: out resized to 0.
    static void distance(Csphere3<T> const& sphere, Points3 const& points, std::vector<T>& out);
    // a qx + b qy + c qz + d; empty: out resized to 0.
    static void distance(Cplane3<T> const& plane, Points3 const& points, std::vector<T>& out);
    // |(q - P0) × u| - r; empty: out untouched.
    static void distance(Ccylinder3<T> const& cylinder, Points3 const& points,
                         std::vector<T>& out);
    // |(q - p) × u|; empty: out cleared.
    static void distance(Cline3<T> const& line, Points3 const& points, std::vector<T>& out);
    // |p - q|; empty: out untouched.
    static void distance(Cpoint3<T> const& point, Points3 const& points, std::vector<T>& out);
    // Unsigned distance to the foot point found by four Newton steps from the radial
    // projection; empty: out resized to 0.
    static void distance(Cellipse2<T> const& ellipse, Points2 const& points, std::vector<T>& out);
    // qy dx - qx dy + (x dy - y dx); empty: out cleared.
    static void distance(Cline2<T> const& line, Points2 const& points, std::vector<T>& out);

    // --- Projections -------------------------------------------------------------------------

    // q - (n.q + d) n written out per coordinate: x' = (b^2 + c^2) x - a (b y + c z + d), ...
    static void project(Cplane3<T> const& plane, Cpoint3<T>& q);
    static void project(Cplane3<T> const& plane, Points3& points);
    // p + (u.q - u.p) u.
    static void project(Cline3<T> const& line, Cpoint3<T>& q);
    // Every point as above; false (nothing changed) for an empty list.
    static bool project(Cline3<T> const& line, Points3& points);
    // p + ((qy - y) dy + dx (qx - x)) u.
    static void project(Cline2<T> const& line, Cpoint2<T>& q);
    // Every point replaced by the crossing of the line with the line through it along the
    // normal (-dy, dx); false for an empty list, or at once (later points unchanged) when a
    // crossing fails.
    static bool project(Cline2<T> const& line, Points2& points);

    // --- Outliers ----------------------------------------------------------------------------

    // Removes the points whose value (values[i] belongs to points[i]) has a magnitude above the
    // threshold or is NaN, keeping the order of the others; points without a value are kept.
    // Returns the number removed.
    static std::size_t outlier(Points2& points, std::vector<T> const& values, T const& threshold);
    static std::size_t outlier(Points3& points, std::vector<T> const& values, T const& threshold);
};

#define MGEO_GEOMETRIC_FAMILY(T, EXT) EXT template class geometric<T>;
#define MGEO_GEOMETRIC_EXTERN(T) MGEO_GEOMETRIC_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_GEOMETRIC_EXTERN)
#undef MGEO_GEOMETRIC_EXTERN

}  // namespace math
