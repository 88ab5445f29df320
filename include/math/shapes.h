// Shape records: lines, circles, ellipses, planes, spheres, cylinders, 3D boxes.
//
// Plain copyable values. A shape is invalid when one of its components is NaN; invalidate()
// writes a quiet NaN into one chosen component and isValid() tests every component. There are no
// flag fields. Degenerate input (equal or collinear points, zero normals) gives an invalid shape;
// nothing here throws.
#pragma once

#include <math/detail/instantiate.h>
#include <math/points.h>

namespace math {

// A line in the plane: a point on it, then its unit direction.
template <typename T>
class Cline2 {
public:
    // An invalid line (NaN point and direction).
    Cline2() = default;
    // Point p and direction d, stored unchanged.
    Cline2(Cpoint2<T> const& p, Cdirec2<T> const& d) : m_point(p), m_direc(d) {}
    // Point p1, direction p2 - p1 normalised; equal points give an invalid direction.
    Cline2(Cpoint2<T> const& p1, Cpoint2<T> const& p2);
    // The line through p perpendicular to the vector from the origin to p: point p, direction
    // (-p.y, p.x) normalised; invalid for p at the origin.
    explicit Cline2(Cpoint2<T> const& p);

    void set(Cpoint2<T> const& p, Cdirec2<T> const& d);
    void set(Cpoint2<T> const& p1, Cpoint2<T> const& p2);

    Cpoint2<T> const& point() const { return m_point; }
    Cdirec2<T> const& direction() const { return m_direc; }

    // True when neither the point nor the direction has a NaN component.
    bool isValid() const;
    // Writes NaN into the direction's first component.
    void invalidate() { m_direc.invalidate(); }

    // point + s * direction.
    Cpoint2<T> pointAt(T s) const;
    // The foot of the perpendicular from the origin: with c = y dx - x dy, (-dy c, dx c). Written
    // into out and returned.
    Cpoint2<T> getLotPoint(Cpoint2<T>& out) const;
    // The Hesse normal form n · p = dist with dist >= 0 and n pointing from the origin towards
    // the line. With d = x dy - y dx: |d| <= eps(T) gives dist 0 and the normal (-dy, dx) or,
    // when dx < 0, (dy, -dx) (second component not negative); d < 0 gives dist -d, normal
    // (-dy, dx); d > 0 gives dist d, normal (dy, -dx); a NaN d leaves dist NaN and the normal
    // invalid. The normal is normalised.
    void getHNF(Cdirec2<T>& normal, T& dist) const;
    // The Hesse form as (distance, angle): dist as in getHNF, arc = atan2(ny, nx) of the Hesse
    // normal, in (-pi, pi]; so the line is x cos(arc) + y sin(arc) = dist. NaN for an invalid
    // line.
    void getDistArc(T& dist, T& arc) const;

private:
    Cpoint2<T> m_point;
    Cdirec2<T> m_direc;
};

// A line in space: a point on it, then its unit direction. The foot of the perpendicular from q
// is p + ((q - p) · d) d.
template <typename T>
class Cline3 {
public:
    Cline3() = default;
    // Point p and direction d, stored unchanged.
    Cline3(Cpoint3<T> const& p, Cdirec3<T> const& d) : m_point(p), m_direc(d) {}

    Cpoint3<T> const& point() const { return m_point; }
    Cdirec3<T> const& direction() const { return m_direc; }

    bool isValid() const;
    // Writes NaN into the direction's first component.
    void invalidate() { m_direc.invalidate(); }

    // point + s * direction.
    Cpoint3<T> pointAt(T s) const;

private:
    Cpoint3<T> m_point;
    Cdirec3<T> m_direc;
};

// A circle in the plane: centre, then radius (never negative when built from a radius).
template <typename T>
class Ccircle2 {
public:
    Ccircle2() = default;
    // Radius |r|.
    Ccircle2(Cpoint2<T> const& center, T r);
    // The circle through three points: the centre is the crossing of the perpendicular
    // bisectors of p1p2 and p1p3 (parallel within 2^-23, the single-precision epsilon, for both
    // types: collinear or coincident points give an invalid circle); radius |p1 - centre|.
    Ccircle2(Cpoint2<T> const& p1, Cpoint2<T> const& p2, Cpoint2<T> const& p3);

    Cpoint2<T> const& center() const { return m_center; }
    T radius() const { return m_radius; }

    bool isValid() const;
    // Writes NaN into the radius.
    void invalidate();

private:
    Cpoint2<T> m_center;
    T m_radius = detail::unsetValue<T>();
};

// A plane n · p + d = 0 with unit normal n; the signed distance of p is n · p + d.
template <typename T>
class Cplane3 {
public:
    Cplane3() = default;
    // Normal and offset stored unchanged.
    Cplane3(Cdirec3<T> const& n, T d) : m_normal(n), m_d(d) {}
    // The plane through p with normal n (normalised again); d = -(p · n).
    Cplane3(Cpoint3<T> const& p, Cdirec3<T> const& n);
    // The plane through three points: normal (p2 - p1)/|p2 - p1| × (p3 - p1)/|p3 - p1|,
    // normalised, d = -(n · p1). When the two edge directions are exactly parallel the warning
    // line "\n [FEHLER!]: Richtungsvektoren der Ebene linear abhaengig!\n\n" is written to
    // standard output; the plane is then invalid (NaN normal and d), as for coincident points.
    Cplane3(Cpoint3<T> const& p1, Cpoint3<T> const& p2, Cpoint3<T> const& p3);

    void set(Cpoint3<T> const& p, Cdirec3<T> const& n);
    // Normal (a, b, c) normalised; d stored unchanged (not divided by |(a, b, c)|, so a non-unit
    // (a, b, c) changes the plane).
    void set(T a, T b, T c, T d);

    Cdirec3<T> const& normal() const { return m_normal; }
    T d() const { return m_d; }

    bool isValid() const;
    // Writes NaN into d.
    void invalidate();

    // The point -d n + s u + t w of the plane, where u is an in-plane unit vector chosen from
    // the normal's largest components and w = n × u normalised: (s, t) are coordinates in the
    // plane about the foot of the perpendicular from the origin.
    Cpoint3<T> pointAt(T s, T t) const;

private:
    Cdirec3<T> m_normal;
    T m_d = detail::unsetValue<T>();
};

// A circle in space: centre, the plane of the circle, radius.
template <typename T>
class Ccircle3 {
public:
    Ccircle3() = default;
    // Plane and centre copied unchanged (the centre is not projected into the plane); radius
    // |r|.
    Ccircle3(Cplane3<T> const& plane, Cpoint3<T> const& center, T const& r);
    // The circle in the plane through three points. The points are rotated by the angle between
    // the plane's normal n and the z axis about n × z, the circle through their (x, y) is solved
    // in closed form, and its centre is rotated back and projected onto the plane. Collinear
    // points divide by zero (non-finite centre and radius). For a normal parallel to z the
    // rotation axis is undefined: the constructor then returns an invalid circle (NaN centre x,
    // normal and radius) instead of passing on the transformation's exception.
    Ccircle3(Cplane3<T> const& plane, Cpoint3<T> const& p1, Cpoint3<T> const& p2,
             Cpoint3<T> const& p3);

    Cpoint3<T> const& center() const { return m_center; }
    Cplane3<T> const& plane() const { return m_plane; }
    T radius() const { return m_radius; }

    // True when none of centre, normal, d and radius is NaN.
    bool isValid() const;
    // Writes NaN into the radius.
    void invalidate();

private:
    Cpoint3<T> m_center;
    Cplane3<T> m_plane;
    T m_radius = detail::unsetValue<T>();
};

// A sphere: centre, then radius. The signed distance of q is |q - centre| - r.
template <typename T>
class Csphere3 {
public:
    Csphere3() = default;
    Csphere3(Cpoint3<T> const& center, T r) : m_center(center), m_radius(r) {}

    Cpoint3<T> const& center() const { return m_center; }
    T radius() const { return m_radius; }

    bool isValid() const;
    // Writes NaN into the radius.
    void invalidate();

private:
    Cpoint3<T> m_center;
    T m_radius = detail::unsetValue<T>();
};

// A cylinder: a point on the axis, the unit axis direction, the radius. The signed distance of q
// is its distance from the axis minus r.
template <typename T>
class Ccylinder3 {
public:
    Ccylinder3() = default;
    Ccylinder3(Cpoint3<T> const& axisPoint, Cdirec3<T> const& axis, T r)
        : m_point(axisPoint), m_axis(axis), m_radius(r) {}

    Cpoint3<T> const& point() const { return m_point; }
    Cdirec3<T> const& axis() const { return m_axis; }
    T radius() const { return m_radius; }

    bool isValid() const;
    // Writes NaN into the radius.
    void invalidate();

private:
    Cpoint3<T> m_point;
    Cdirec3<T> m_axis;
    T m_radius = detail::unsetValue<T>();
};

// An ellipse: centre, semi-axis a along its first axis, semi-axis b along its second, and the
// angle (radians, counter-clockwise from x) of the first axis. Local coordinates of a point:
// u = dx cos(angle) + dy sin(angle), v = -dx sin(angle) + dy cos(angle); the ellipse is
// u²/a² + v²/b² = 1.
template <typename T>
class Cellipse2 {
public:
    Cellipse2() = default;
    Cellipse2(Cpoint2<T> const& center, T a, T b, T angle)
        : m_center(center), m_a(a), m_b(b), m_angle(angle) {}

    Cpoint2<T> const& center() const { return m_center; }
    T a() const { return m_a; }
    T b() const { return m_b; }
    T angle() const { return m_angle; }

    bool isValid() const;
    // Writes NaN into a.
    void invalidate();

private:
    Cpoint2<T> m_center;
    T m_a = detail::unsetValue<T>();
    T m_b = detail::unsetValue<T>();
    T m_angle = detail::unsetValue<T>();
};

// An axis-aligned box in space: minimum corner, then maximum corner.
template <typename T>
class CboundingBox3 {
public:
    CboundingBox3() = default;
    CboundingBox3(Cpoint3<T> const& min, Cpoint3<T> const& max) : m_min(min), m_max(max) {}

    Cpoint3<T> const& min() const { return m_min; }
    Cpoint3<T> const& max() const { return m_max; }

    bool isValid() const;
    // Writes NaN into the minimum corner's x.
    void invalidate();

private:
    Cpoint3<T> m_min;
    Cpoint3<T> m_max;
};

#define MGEO_SHAPES_FAMILY(T, EXT)    \
    EXT template class Cline2<T>;     \
    EXT template class Cline3<T>;     \
    EXT template class Ccircle2<T>;   \
    EXT template class Cplane3<T>;    \
    EXT template class Ccircle3<T>;   \
    EXT template class Csphere3<T>;   \
    EXT template class Ccylinder3<T>; \
    EXT template class Cellipse2<T>;  \
    EXT template class CboundingBox3<T>;
#define MGEO_SHAPES_EXTERN(T) MGEO_SHAPES_FAMILY(T, extern)
MGEO_REAL_TYPES(MGEO_SHAPES_EXTERN)
#undef MGEO_SHAPES_EXTERN

}  // namespace math
