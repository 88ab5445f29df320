// Area of interest: a union of polygons with a pixel mask.
#pragma once

#include <base/image.h>
#include <math/detail/instantiate.h>
#include <math/points.h>
#include <math/polygon.h>
#include <math/rect.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace math {

// An area of interest in an image: the union of any number of polygons. After calculate() it
// answers an exact test for a real point (pointIsExactIn) and a fast test for an integer pixel
// (pointIsIn) that reads a bit mask over the pixels of the area's bounding rectangle.
//
// State: 0 = calculated and ready for pixel queries, 1 = changed since the last calculate().
// Every change of the polygons sets 1; only a successful calculate() sets 0. While the state
// is 1 the pixel query and isInImg answer false; the exact query always works on the current
// polygons.
//
// Errors (CthrowMath):
//  - ERR_PRIMEXT_AOI_POLYINDEX (arguments: index, 0, number of polygons - 1) from every
//    operation taking a polygon index outside 0 .. number of polygons - 1;
//  - ERR_PRIMEXT_AOI_POINTINDEX (arguments: index, 0, number of vertices - 1) from
//    removePoint(i, k) with a vertex index out of range;
//  - ERR_PRIMEXT_AOI_INVALID from getBoundingRect() when the area is not valid (isValid()):
//    an area without a usable polygon has no bounding rectangle. calculate() reports unusable
//    input by returning false instead.
//
// No auxiliary per-pixel list is kept beside the mask: nothing in the library or its
// interface would read it.
template <typename T>
class Caoi {
public:
    // One polygon of the area and its normalised extents (filled by calculate()).
    struct TpolyInfo {
        Cpolygon2<T> polygon;
        Crect2<T> boundingRect;
    };

    // Empty; state 1.
    Caoi();
    // One polygon; state 1.
    explicit Caoi(Cpolygon2<T> const& polygon);
    Caoi(Caoi const&) = default;
    Caoi& operator=(Caoi const&) = default;
    ~Caoi() = default;

    // Replaces the polygons by one unclassified polygon per point list; state 1.
    void set(CpntN2<T> const& contours);
    // The whole image: removes all polygons (state 1); for an image of type 0 (none) the area
    // stays empty; otherwise one unclassified polygon (0, 0), (w - 1, 0), (w - 1, h - 1),
    // (0, h - 1) with w, h the image's width and height. The caller runs calculate().
    void setStd(Cimage const& img);
    // Appends a polygon (as it is, classification included); state 1.
    void add(Cpolygon2<T> const& polygon);
    // Appends a vertex to polygon i; state 1. The changed polygon becomes unclassified, so the
    // next calculate() classifies it again.
    void add(Cpoint2<T> const& p, unsigned long long i);
    void add(T const& x, T const& y, unsigned long long i);
    // Erases polygon i; state 1.
    void removePoly(int i);
    // Removes the first vertex of polygon i equal to p; whether one was removed. A removal
    // makes the polygon unclassified and sets state 1.
    bool removePoint(int i, Cpoint2<T> const& p);
    // Removes vertex k of polygon i; the polygon becomes unclassified; state 1.
    void removePoint(int i, int k);
    // Removes all polygons; state 1.
    void clear();

    std::size_t nPolygons() const { return m_polygons.size(); }
    Cpolygon2<T> const& getPolygon(int i) const;
    std::vector<TpolyInfo> const& getPolygons() const { return m_polygons; }
    // The union of the polygons' extents computed by the last calculate() (unset before).
    Crect2<T> const& getBoundingRect() const;
    // The mask's pixel rectangle: the bounding rectangle with left and top rounded up and
    // right and bottom rounded down (computed by calculate()).
    Crect2<int> const& getPixelRect() const { return m_pixelRect; }
    // 0 = ready, 1 = changed since the last calculate().
    unsigned state() const { return m_state; }

    // At least one polygon, and every polygon has 3 or more vertices.
    bool isValid() const;

    // Classifies the polygons and builds the mask:
    //  1. preprocess() every polygon of type 0;
    //  2. no polygons, or a polygon with fewer than 3 vertices: false;
    //  3. extents per polygon (from the vertices; the stored rectangle for type 3; unset for
    //     type 1), normalised; the bounding rectangle is the first one united (Crect2::unite)
    //     with each further one;
    //  4. pixel rectangle: ceil of left and top, floor of right and bottom. A bounding
    //     rectangle that is not finite, lies outside the int range or would need more than
    //     2^31 mask bits gives false;
    //  5. the bit of pixel (x, y) is set when for some polygon (x, y) lies in its extents
    //     (inclusive) and Cpolygon2::pointIsIn(x, y) is true;
    //  6. state 0; true.
    // On false the state is 1.
    //
    // The mask is produced by scan lines with exactly the bits of the pointwise definition:
    // along a row every ingredient of pointIsIn is a monotone function of x (correctly rounded
    // arithmetic is monotone), so each row splits into a few runs whose ends are found with
    // the very predicate of pointIsIn (galloping search from the analytic crossing), and the
    // pixels in between are filled without testing:
    //  - winding number (types 0, 6, 7): each edge active in the row (yi <= y < yi+1 or
    //    yi+1 <= y < yi, compared exactly) contributes +-1 on a prefix of the row ending at
    //    its exact threshold; the spans of non-zero sum are filled;
    //  - convex (type 4): the table index found for theta(centre, p) is monotone along the
    //    row, and within one index the orientation test is monotone; each run is decided from
    //    its two ends, a threshold inside it by bisection;
    //  - rectangle (type 3): the inclusive test is an interval per row.
    // Polygons with a non-finite coordinate (vertices, table or centre) are evaluated pixel by
    // pixel. Cost: O(rows x (active edges or table runs) + filled words) per polygon.
    bool calculate();

    // Mask lookup: false when state != 0 or (x, y) lies outside the pixel rectangle (bounds
    // inclusive); otherwise the bit (right - left + 1)(y - top) + (x - left).
    bool pointIsIn(int x, int y) const;
    bool pointIsIn(Cpoint2<int> const& p) const;

    // Exact union test on the current polygons, in order: polygons with fewer than 3 vertices
    // or of type 1, 2, 5 or above 7 are skipped; the others answer with Cpolygon2::pointIsIn.
    // Does not look at the state.
    bool pointIsExactIn(T x, T y) const;
    bool pointIsExactIn(Cpoint2<T> const& p) const;

    // False when state != 0 or the area is not valid; false when the bounding rectangle's
    // left or top is negative, its right >= the image width or its bottom >= the image height;
    // otherwise true.
    bool isInImg(Cimage const& img) const;

private:
    void checkPolyIndex(long long i) const;
    void fillPolygon(TpolyInfo const& info);

    std::vector<TpolyInfo> m_polygons;
    unsigned m_state = 1;
    Crect2<T> m_boundingRect;
    Crect2<int> m_pixelRect;
    std::vector<std::uint64_t> m_mask;  // bit b in word b / 64, bit b % 64
};

#define MGEO_AOI_FAMILY(T, EXT) EXT template class Caoi<T>;
#define MGEO_AOI_EXTERN(T) MGEO_AOI_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_AOI_EXTERN)
#undef MGEO_AOI_EXTERN

}  // namespace math
