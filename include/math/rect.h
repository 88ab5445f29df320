// Rectangles and 2D bounding boxes.
//
// Coordinates grow rightwards and downwards (image convention): the top of a normalised
// rectangle is its smaller y.
#pragma once

#include <math/detail/instantiate.h>
#include <math/points.h>

#include <list>
#include <vector>

namespace math {

// An axis-parallel rectangle given by its top-left (left, top) and bottom-right (right, bottom)
// corners. The corners are stored as passed: nothing keeps left <= right or top <= bottom until
// normalize() is called. Width and height are plain differences, also for int (no +1).
//
// Default construction: all four fields 0 for int; the unset value (quiet NaN) for float and
// double, so such a rectangle is invalid.
template <typename T>
class Crect2 {
public:
    Crect2();
    // left = x, top = y, right = x + w, bottom = y + h.
    Crect2(T x, T y, T w, T h);
    Crect2(Cpoint2<T> const& p, T w, T h);
    // left, top = tl; right, bottom = br.
    Crect2(Cpoint2<T> const& tl, Cpoint2<T> const& br);

    T left() const { return m_left; }
    T top() const { return m_top; }
    T right() const { return m_right; }
    T bottom() const { return m_bottom; }
    T& left() { return m_left; }
    T& top() { return m_top; }
    T& right() { return m_right; }
    T& bottom() { return m_bottom; }

    // (right, top) and (left, bottom).
    Cpoint2<T> topRight() const;
    Cpoint2<T> bottomLeft() const;

    // right - left and bottom - top.
    T width() const;
    T height() const;
    // right = left + w; bottom = top + h.
    void setWidth(T w);
    void setHeight(T h);

    // ((left + right) / 2, (top + bottom) / 2); for int the division truncates toward zero.
    Cpoint2<T> center() const;
    // Moves all four fields by c - center().
    void setCenter(Cpoint2<T> const& c);
    // Adds dl, dt, dr, db to left, top, right, bottom.
    void adjust(T dl, T dt, T dr, T db);
    // Adds p to both corners.
    void moveBy(Cpoint2<T> const& p);
    // Puts the top-left corner at p, keeping width and height.
    void moveTo(Cpoint2<T> const& p);

    Crect2& operator+=(Cpoint2<T> const& p);
    Crect2& operator-=(Cpoint2<T> const& p);
    // Multiplies all four fields by s.
    Crect2& operator*=(T s);
    Crect2 operator+(Cpoint2<T> const& p) const;
    Crect2 operator-(Cpoint2<T> const& p) const;
    Crect2 operator*(T s) const;

    // Exact comparison of all four fields.
    bool operator==(Crect2 const& r) const;
    bool operator!=(Crect2 const& r) const;

    // int: always true; float and double: no field is NaN.
    bool isValid() const;

    // A copy with left/right swapped if left > right and top/bottom swapped if top > bottom;
    // this rectangle is unchanged.
    Crect2 normalize() const;

    // left <= px <= right and top <= py <= bottom (bounds inclusive, fields as stored).
    bool pointIsIn(Cpoint2<T> const& p) const;
    // left < px < right and top < py < bottom (strict).
    bool pointIsRealIn(Cpoint2<T> const& p) const;
    // px equals left or right exactly and top <= py <= bottom, or py equals top or bottom
    // exactly and left <= px <= right. No tolerance, also for float and double.
    bool pointOnBorder(Cpoint2<T> const& p) const;

    // Overlap test on the fields as stored. With this rectangle (l0, t0, r0, b0) and r
    // (l1, t1, r1, b1), the x mask holds, from the most significant bit down,
    // (r0 <= l1), (l0 <= r1), (r0 <= r1), (l0 <= l1); the y mask likewise with top and bottom.
    // The rectangles intersect when neither mask is 0 or 15: rectangles that only share an
    // edge do not intersect.
    bool intersects(Crect2 const& r) const;
    // Of both rectangles normalised: (max of the lefts, max of the tops, min of the rights,
    // min of the bottoms). No emptiness test: disjoint rectangles give an inverted result
    // (left > right or top > bottom), which callers detect.
    Crect2 intersect(Crect2 const& r) const;
    // Of both rectangles normalised: (min of the lefts, min of the tops, max of the rights,
    // max of the bottoms).
    Crect2 unite(Crect2 const& r) const;

private:
    T m_left;
    T m_top;
    T m_right;
    T m_bottom;
};

// The axis-parallel bounding box of a point set: minimum x, minimum y, maximum x, maximum y.
// Default construction leaves all four fields unset (NaN for float and double, 0 for int).
template <typename T>
class CboundingBox2 {
public:
    CboundingBox2();

    // The extents of the points, in order:
    //  - no points: min x and max x become the unset value (NaN; 0 for int), the y fields are
    //    left as they are;
    //  - otherwise start from min = the largest finite double converted to T and max = its
    //    negative (+-infinity for float, which is what the conversion gives; INT_MAX and
    //    -INT_MAX for int, where the conversion would overflow), then lower the minimum and
    //    raise the maximum with every coordinate by two independent comparisons;
    //  - a point with a NaN coordinate sets min x and max x to NaN and ends the scan.
    void set(std::vector<Cpoint2<T>> const& points);
    void set(std::list<Cpoint2<T>> const& points);

    // ((min x + max x) 0.5, (min y + max y) 0.5); both outputs NaN when any field is NaN.
    // For int the half sum is taken in double and truncated toward zero.
    void getCenter(Cpoint2<T>& c) const;
    void getCenter(T& x, T& y) const;

    // min x - eps <= px <= max x + eps and min y - eps <= py <= max y + eps, eps the machine
    // epsilon of T (0 for int), bounds inclusive.
    bool isInside(Cpoint2<T> const& p) const;

    T minX() const { return m_minX; }
    T minY() const { return m_minY; }
    T maxX() const { return m_maxX; }
    T maxY() const { return m_maxY; }

private:
    template <typename It>
    void setRange(It first, It last);

    T m_minX;
    T m_minY;
    T m_maxX;
    T m_maxY;
};

#define MGEO_RECT_FAMILY(T, EXT)  \
    EXT template class Crect2<T>; \
    EXT template class CboundingBox2<T>;
#define MGEO_RECT_EXTERN(T) MGEO_RECT_FAMILY(T, extern)
MGEO_REAL_AND_INT_TYPES(MGEO_RECT_EXTERN)
#undef MGEO_RECT_EXTERN

}  // namespace math
