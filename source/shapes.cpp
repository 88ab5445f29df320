// Shape records: construction from points, validity, Hesse normal form, points of a plane.
#include "math/shapes.h"

#include <math/exceptions.h>
#include <math/geometric.h>
#include <math/transform3.h>

#include <cmath>
#include <iostream>
#include <limits>

namespace math {

namespace {

template <typename T>
bool isNan(T v) {
    return v != v;
}

template <typename T>
bool pointValid(Cpoint2<T> const& p) {
    return !isNan(p.x) && !isNan(p.y);
}

template <typename T>
bool pointValid(Cpoint3<T> const& p) {
    return !isNan(p.x) && !isNan(p.y) && !isNan(p.z);
}

template <typename T>
constexpr T kNan = std::numeric_limits<T>::quiet_NaN();

}  // namespace

// ---------------------------------------------------------------------------------------------
// Cline2

template <typename T>
Cline2<T>::Cline2(Cpoint2<T> const& p1, Cpoint2<T> const& p2) {
    set(p1, p2);
}

template <typename T>
Cline2<T>::Cline2(Cpoint2<T> const& p) : m_point(p), m_direc(Cpoint2<T>(-p.y, p.x)) {}

template <typename T>
void Cline2<T>::set(Cpoint2<T> const& p, Cdirec2<T> const& d) {
    m_point = p;
    m_direc = d;
}

template <typename T>
void Cline2<T>::set(Cpoint2<T> const& p1, Cpoint2<T> const& p2) {
    m_point = p1;
    m_direc = p2 - p1;
}

template <typename T>
bool Cline2<T>::isValid() const {
    return pointValid(m_point) && m_direc.isValid();
}

template <typename T>
Cpoint2<T> Cline2<T>::pointAt(T s) const {
    return Cpoint2<T>(m_point.x + s * m_direc.x(), m_point.y + s * m_direc.y());
}

template <typename T>
Cpoint2<T> Cline2<T>::getLotPoint(Cpoint2<T>& out) const {
    T const dx = m_direc.x();
    T const dy = m_direc.y();
    T const c = m_point.y * dx - m_point.x * dy;
    out = Cpoint2<T>(-dy * c, dx * c);
    return out;
}

template <typename T>
void Cline2<T>::getHNF(Cdirec2<T>& normal, T& dist) const {
    T const dx = m_direc.x();
    T const dy = m_direc.y();
    T const d = m_point.x * dy - m_point.y * dx;
    if (std::fabs(d) <= std::numeric_limits<T>::epsilon()) {
        // Through the origin: the normal with a non-negative second component.
        dist = T(0);
        normal = dx >= T(0) ? Cpoint2<T>(-dy, dx) : Cpoint2<T>(dy, -dx);
    } else if (d < T(0)) {
        dist = -d;
        normal = Cpoint2<T>(-dy, dx);
    } else if (d > T(0)) {
        dist = d;
        normal = Cpoint2<T>(dy, -dx);
    } else {
        dist = d;
        normal.invalidate();
    }
}

template <typename T>
void Cline2<T>::getDistArc(T& dist, T& arc) const {
    Cdirec2<T> normal;
    getHNF(normal, dist);
    arc = std::atan2(normal.y(), normal.x());
}

// ---------------------------------------------------------------------------------------------
// Cline3

template <typename T>
bool Cline3<T>::isValid() const {
    return pointValid(m_point) && m_direc.isValid();
}

template <typename T>
Cpoint3<T> Cline3<T>::pointAt(T s) const {
    return Cpoint3<T>(m_point.x + s * m_direc.x(), m_point.y + s * m_direc.y(),
                      m_point.z + s * m_direc.z());
}

// ---------------------------------------------------------------------------------------------
// Ccircle2

template <typename T>
Ccircle2<T>::Ccircle2(Cpoint2<T> const& center, T r) : m_center(center), m_radius(std::fabs(r)) {}

template <typename T>
Ccircle2<T>::Ccircle2(Cpoint2<T> const& p1, Cpoint2<T> const& p2, Cpoint2<T> const& p3) {
    m_center.x = kNan<T>;
    // The perpendicular bisectors of p1p2 and p1p3, through the midpoints of the chords.
    Cline2<T> const bisector1(p1 + (p2 - p1) / T(2),
                              Cdirec2<T>((p2.y - p1.y) / T(2), -(p2.x - p1.x) / T(2)));
    Cline2<T> const bisector2(p1 + (p3 - p1) / T(2),
                              Cdirec2<T>((p3.y - p1.y) / T(2), -(p3.x - p1.x) / T(2)));
    // Parallel bisectors (collinear or coincident points) leave the centre's x NaN.
    geometric<T>::intersect(bisector1, bisector2, m_center);
    T const dx = m_center.x - p1.x;
    T const dy = m_center.y - p1.y;
    m_radius = std::sqrt(dx * dx + dy * dy);
}

template <typename T>
bool Ccircle2<T>::isValid() const {
    return pointValid(m_center) && !isNan(m_radius);
}

template <typename T>
void Ccircle2<T>::invalidate() {
    m_radius = kNan<T>;
}

// ---------------------------------------------------------------------------------------------
// Cplane3

template <typename T>
Cplane3<T>::Cplane3(Cpoint3<T> const& p, Cdirec3<T> const& n) {
    set(p, n);
}

template <typename T>
Cplane3<T>::Cplane3(Cpoint3<T> const& p1, Cpoint3<T> const& p2, Cpoint3<T> const& p3) {
    m_normal.invalidate();
    // Unit edge directions (a zero edge keeps its zeros but for a NaN first component).
    Cdirec3<T> const u(p2 - p1);
    Cdirec3<T> const v(p3 - p1);
    T const lu = std::sqrt(u.x() * u.x() + u.y() * u.y() + u.z() * u.z());
    T const lv = std::sqrt(v.x() * v.x() + v.y() * v.y() + v.z() * v.z());
    T const cosine = std::fabs(u.x() * v.x() + u.y() * v.y() + u.z() * v.z()) / (lu * lv);
    if (cosine == T(1)) {
        std::cout << "\n [FEHLER!]: Richtungsvektoren der Ebene linear abhaengig!\n\n";
    }
    // n = u × v, normalised (invalid when zero); d = -(n · p1).
    m_normal = Cpoint3<T>(u.y() * v.z() - u.z() * v.y(), u.z() * v.x() - u.x() * v.z(),
                          u.x() * v.y() - u.y() * v.x());
    m_d = -(m_normal.x() * p1.x + m_normal.y() * p1.y + m_normal.z() * p1.z);
}

template <typename T>
void Cplane3<T>::set(Cpoint3<T> const& p, Cdirec3<T> const& n) {
    m_normal = n.asPoint();
    m_d = -(p.x * m_normal.x() + p.y * m_normal.y() + p.z * m_normal.z());
}

template <typename T>
void Cplane3<T>::set(T a, T b, T c, T d) {
    m_normal = Cpoint3<T>(a, b, c);
    m_d = d;
}

template <typename T>
bool Cplane3<T>::isValid() const {
    return m_normal.isValid() && !isNan(m_d);
}

template <typename T>
void Cplane3<T>::invalidate() {
    m_d = kNan<T>;
}

// The in-plane vector u is picked by comparing the magnitudes of the normal's components, so
// that the division is by one of the larger ones; every choice satisfies n · u = 0.
template <typename T>
Cpoint3<T> Cplane3<T>::pointAt(T s, T t) const {
    T const nx = m_normal.x();
    T const ny = m_normal.y();
    T const nz = m_normal.z();
    T const ax = std::fabs(nx);
    T const ay = std::fabs(ny);
    T const az = std::fabs(nz);
    Cpoint3<T> u;
    if (ax > ay) {
        if (ay > az) {
            u = Cpoint3<T>(T(0), -nz / ny, T(1));
        } else if (nz == T(0)) {
            u = Cpoint3<T>(T(0), T(1), T(0));
        } else {
            u = Cpoint3<T>(T(0), T(1), -ny / nz);
        }
    } else if (ay > az) {
        if (az > ax) {
            u = Cpoint3<T>(T(1), T(0), -nx / nz);
        } else if (nx == T(0)) {
            u = Cpoint3<T>(T(0), T(0), T(1));
        } else {
            u = Cpoint3<T>(-nz / nx, T(0), T(1));
        }
    } else if (ny == T(0)) {
        u = Cpoint3<T>(T(1), T(0), T(0));
    } else {
        u = Cpoint3<T>(T(1), -nx / ny, T(0));
    }
    Cdirec3<T> const un(u);
    Cdirec3<T> const wn(Cpoint3<T>(ny * un.z() - nz * un.y(), nz * un.x() - nx * un.z(),
                                   nx * un.y() - ny * un.x()));
    // -d n + s u + t w
    return Cpoint3<T>(-m_d * nx + s * un.x() + t * wn.x(), -m_d * ny + s * un.y() + t * wn.y(),
                      -m_d * nz + s * un.z() + t * wn.z());
}

// ---------------------------------------------------------------------------------------------
// Ccircle3

template <typename T>
Ccircle3<T>::Ccircle3(Cplane3<T> const& plane, Cpoint3<T> const& center, T const& r)
    : m_center(center), m_plane(plane), m_radius(std::fabs(r)) {}

namespace {

// The unit quaternion of the rotation by angle about axis, with a non-negative factor on the
// vector part: (c, s a) for s = sin(angle / 2) >= 0, else (-c, -s a); w is NaN for an invalid
// axis.
template <typename T>
Cquaternion<T> axisAngleQuaternion(Cdirec3<T> const& axis, T angle) {
    T const s = std::sin(angle / T(2));
    T const c = std::cos(angle / T(2));
    Cquaternion<T> q = s < T(0) ? Cquaternion<T>(-c, -s * axis.x(), -s * axis.y(), -s * axis.z())
                                : Cquaternion<T>(c, s * axis.x(), s * axis.y(), s * axis.z());
    if (!axis.isValid()) {
        q.w = kNan<T>;
    }
    return q;
}

}  // namespace

template <typename T>
Ccircle3<T>::Ccircle3(Cplane3<T> const& plane, Cpoint3<T> const& p1, Cpoint3<T> const& p2,
                      Cpoint3<T> const& p3) {
    m_center.x = kNan<T>;
    m_plane.set(T(0), T(0), T(0), kNan<T>);  // invalid normal (nx NaN) and d NaN
    T const nx = plane.normal().x();
    T const ny = plane.normal().y();
    T const nz = plane.normal().z();
    T const d = plane.d();

    // The rotation by alpha = angle(n, z) about a = n × z turns the plane parallel to z = 0.
    T const alpha = std::acos(nx * T(0) + ny * T(0) + nz * T(1));
    Cdirec3<T> const axis(ny * T(1) - nz * T(0), nz * T(0) - nx * T(1), nx * T(0) - ny * T(0));
    Cpoint3<T> const zero(T(0), T(0), T(0));
    Cpoint3<T> q1;
    Cpoint3<T> q2;
    Cpoint3<T> q3;
    Cpoint3<T> c;
    T radius;
    try {
        CtransPrm3<T> const toXY(axisAngleQuaternion(axis, alpha), zero);
        toXY.transform(p1, q1);
        toXY.transform(p2, q2);
        toXY.transform(p3, q3);

        // The circle through (X1, Y1), (X2, Y2), (X3, Y3) in closed form: with
        // S_i = X_i² + Y_i² and D = X1 (Y2 - Y3) + X2 (Y3 - Y1) + X3 (Y1 - Y2),
        // cx = (S1 (Y2 - Y3) + S2 (Y3 - Y1) + S3 (Y1 - Y2)) / 2D,
        // cy = (S2 (X1 - X3) + S1 (X3 - X2) + S3 (X2 - X1)) / 2D,
        // k  = (S1 (Y2 X3 - Y3 X2) + S2 (Y3 X1 - Y1 X3) + S3 (Y1 X2 - X1 Y2)) / D,
        // r  = sqrt(cx² + cy² - k). No test for collinear points (D = 0).
        T const x1 = q1.x;
        T const y1 = q1.y;
        T const x2 = q2.x;
        T const y2 = q2.y;
        T const x3 = q3.x;
        T const y3 = q3.y;
        T const s1 = x1 * x1 + y1 * y1;
        T const s2 = x2 * x2 + y2 * y2;
        T const s3 = x3 * x3 + y3 * y3;
        T const det = x1 * (y2 - y3) + x2 * (y3 - y1) + x3 * (y1 - y2);
        T const cx = (s1 * (y2 - y3) + s2 * (y3 - y1) + s3 * (y1 - y2)) / (T(2) * det);
        T const cy = (s2 * (x1 - x3) + s1 * (x3 - x2) + s3 * (x2 - x1)) / (T(2) * det);
        T const k =
            (s1 * (y2 * x3 - y3 * x2) + s2 * (y3 * x1 - y1 * x3) + s3 * (y1 * x2 - x1 * y2)) / det;
        radius = std::sqrt(cx * cx + cy * cy - k);

        CtransPrm3<T> const back(axisAngleQuaternion(axis, -alpha), zero);
        back.transform(Cpoint3<T>(cx, cy, T(0)), c);
    } catch (CthrowMath const& e) {
        // A normal parallel to z leaves the rotation axis undefined and the quaternion invalid,
        // which the transformation rejects (id 31): the circle stays invalid.
        if (e.id() != CthrowMath::ERR_MATRIX_NOTORTHOGONAL) {
            throw;
        }
        invalidate();
        return;
    }

    // Project the centre onto the plane: P - n (n · P + d), written out for a unit normal.
    m_center.x = c.x * (ny * ny + nz * nz) - nx * (ny * c.y + nz * c.z + d);
    m_center.y = c.y * (nx * nx + nz * nz) - ny * (nx * c.x + nz * c.z + d);
    m_center.z = c.z * (nx * nx + ny * ny) - nz * (nx * c.x + ny * c.y + d);
    m_plane = plane;
    m_radius = radius;
}

template <typename T>
bool Ccircle3<T>::isValid() const {
    return pointValid(m_center) && m_plane.normal().isValid() && !isNan(m_plane.d()) &&
           !isNan(m_radius);
}

template <typename T>
void Ccircle3<T>::invalidate() {
    m_radius = kNan<T>;
}

// ---------------------------------------------------------------------------------------------
// Csphere3, Ccylinder3, Cellipse2, CboundingBox3

template <typename T>
bool Csphere3<T>::isValid() const {
    return pointValid(m_center) && !isNan(m_radius);
}

template <typename T>
void Csphere3<T>::invalidate() {
    m_radius = kNan<T>;
}

template <typename T>
bool Ccylinder3<T>::isValid() const {
    return pointValid(m_point) && m_axis.isValid() && !isNan(m_radius);
}

template <typename T>
void Ccylinder3<T>::invalidate() {
    m_radius = kNan<T>;
}

template <typename T>
bool Cellipse2<T>::isValid() const {
    return pointValid(m_center) && !isNan(m_a) && !isNan(m_b) && !isNan(m_angle);
}

template <typename T>
void Cellipse2<T>::invalidate() {
    m_a = kNan<T>;
}

template <typename T>
bool CboundingBox3<T>::isValid() const {
    return pointValid(m_min) && pointValid(m_max);
}

template <typename T>
void CboundingBox3<T>::invalidate() {
    m_min.x = kNan<T>;
}

#define MGEO_SHAPES_DEFINE(T) MGEO_SHAPES_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_SHAPES_DEFINE)

}  // namespace math
