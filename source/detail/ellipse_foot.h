// The nearest point of an ellipse to a point, shared by the ellipse distance and the ellipse
// deviation.
#pragma once

#include <math/points.h>
#include <math/shapes.h>

#include <cmath>

namespace math::detail {

// An ellipse with centre (cx, cy), semi-axes A (own x axis) and B (own y axis), turned by phi.
template <typename T>
class EllipseFrame {
public:
    explicit EllipseFrame(Cellipse2<T> const& e)
        : m_cx(e.center().x),
          m_cy(e.center().y),
          m_a(e.a()),
          m_b(e.b()),
          m_cos(std::cos(e.angle())),
          m_sin(std::sin(e.angle())) {}

    // Local coordinates u = dx cos phi + dy sin phi, v = dy cos phi - dx sin phi; start on the
    // ellipse by radial scaling, k = sqrt(v^2 A^2 + u^2 B^2), (x, y) = (u, v) A B / k; then
    // exactly four Newton steps (no convergence test) on
    //   F1 = (B^2 x^2 + A^2 y^2 - A^2 B^2) / 2 = 0              (on the ellipse)
    //   F2 = (u - x) A^2 y - (v - y) B^2 x = 0                 (along the normal)
    // solving the 2 × 2 Jacobian system by Cramer's rule and subtracting the correction; the
    // foot is turned back into the global frame. A point at the centre gives NaN (no guard).
    Cpoint2<T> footPoint(Cpoint2<T> const& q) const {
        T const dx = q.x - m_cx;
        T const dy = q.y - m_cy;
        T const u = dx * m_cos + dy * m_sin;
        T const v = dy * m_cos - dx * m_sin;
        T const a2 = m_a * m_a;
        T const b2 = m_b * m_b;
        T const k = std::sqrt(v * v * a2 + u * u * b2);
        T x = u * m_a * m_b / k;
        T y = v * m_a * m_b / k;
        for (int step = 0; step < 4; ++step) {
            T const f1 = T(0.5) * (b2 * (x * x) + a2 * (y * y) - a2 * b2);
            T const f2 = (u - x) * a2 * y - (v - y) * b2 * x;
            T const j11 = b2 * x;
            T const j12 = a2 * y;
            T const j21 = -a2 * y - (v - y) * b2;
            T const j22 = (u - x) * a2 + b2 * x;
            T const det = j11 * j22 - j12 * j21;
            T const deltaX = (f1 * j22 - j12 * f2) / det;
            T const deltaY = (j11 * f2 - j21 * f1) / det;
            x -= deltaX;
            y -= deltaY;
        }
        return Cpoint2<T>(x * m_cos - y * m_sin + m_cx, x * m_sin + y * m_cos + m_cy);
    }

private:
    T m_cx;
    T m_cy;
    T m_a;
    T m_b;
    T m_cos;
    T m_sin;
};

}  // namespace math::detail
