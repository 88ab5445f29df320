// Data builders shared by the unit tests: points on circles, ellipses, planes, spheres and
// cylinders, built in double and rounded to T once, with reproducible noise.
#pragma once

#include <math/matrix.h>
#include <math/points.h>

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <vector>

namespace mgeo_test {

constexpr double kPi = 3.14159265358979323846;

// An m × n matrix filled row by row from the values (rounded to T once).
template <typename T>
math::Cmatrix<T> makeMatrix(std::size_t m, std::size_t n, std::initializer_list<double> values) {
    math::Cmatrix<T> a(m, n);
    std::size_t k = 0;
    for (double v : values) {
        a.getBase()[k++] = T(v);
    }
    return a;
}

// Uniform noise in [-amp, amp): the same numbers on every standard library (the engine's
// output is fixed by the standard, the distributions' is not).
class Noise {
    std::mt19937_64 m_engine;

public:
    explicit Noise(std::uint64_t seed = 42) : m_engine(seed) {}
    double operator()(double amp) {
        return amp * (2.0 * double(m_engine() >> 11) * 0x1.0p-53 - 1.0);
    }
    // Uniform in [0, 1).
    double unit() { return double(m_engine() >> 11) * 0x1.0p-53; }
};

// count points on the circle (cx, cy, r) over the arc [start, start + arc), radial noise.
template <typename T>
std::vector<math::Cpoint2<T>> circlePoints(double cx, double cy, double r, std::size_t count,
                                           double arc = 2 * kPi, double noise = 0,
                                           std::uint64_t seed = 42, double start = 0) {
    Noise rnd(seed);
    std::vector<math::Cpoint2<T>> pts;
    pts.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        double const t = start + arc * double(i) / double(count);
        double const rr = r + rnd(noise);
        pts.emplace_back(T(cx + rr * std::cos(t)), T(cy + rr * std::sin(t)));
    }
    return pts;
}

// count points on the ellipse (centre, semi-axes a, b, angle theta), noise along the normal
// direction approximated by scaling.
template <typename T>
std::vector<math::Cpoint2<T>> ellipsePoints(double cx, double cy, double a, double b, double theta,
                                            std::size_t count, double arc = 2 * kPi,
                                            double noise = 0, std::uint64_t seed = 42) {
    Noise rnd(seed);
    std::vector<math::Cpoint2<T>> pts;
    pts.reserve(count);
    double const c = std::cos(theta);
    double const s = std::sin(theta);
    for (std::size_t i = 0; i < count; ++i) {
        double const t = arc * double(i) / double(count);
        double const u = (a + rnd(noise)) * std::cos(t);
        double const v = (b + rnd(noise)) * std::sin(t);
        pts.emplace_back(T(cx + u * c - v * s), T(cy + u * s + v * c));
    }
    return pts;
}

// Orthonormal u, w completing the unit normal n.
inline void completeBasis(double const n[3], double u[3], double w[3]) {
    double a[3] = {1, 0, 0};
    if (std::fabs(n[0]) > 0.9) {
        a[0] = 0;
        a[1] = 1;
    }
    u[0] = n[1] * a[2] - n[2] * a[1];
    u[1] = n[2] * a[0] - n[0] * a[2];
    u[2] = n[0] * a[1] - n[1] * a[0];
    double const l = std::sqrt(u[0] * u[0] + u[1] * u[1] + u[2] * u[2]);
    u[0] /= l;
    u[1] /= l;
    u[2] /= l;
    w[0] = n[1] * u[2] - n[2] * u[1];
    w[1] = n[2] * u[0] - n[0] * u[2];
    w[2] = n[0] * u[1] - n[1] * u[0];
}

// Normalises (x, y, z) into n.
inline void unitVector(double x, double y, double z, double n[3]) {
    double const l = std::sqrt(x * x + y * y + z * z);
    n[0] = x / l;
    n[1] = y / l;
    n[2] = z / l;
}

// count points of the plane through p0 with normal (nx, ny, nz), spread over a square of half
// size `extent`, noise along the normal.
template <typename T>
std::vector<math::Cpoint3<T>> planePoints(math::Cpoint3<double> p0, double nx, double ny, double nz,
                                          double extent, std::size_t count, double noise = 0,
                                          std::uint64_t seed = 42) {
    Noise rnd(seed);
    double n[3], u[3], w[3];
    unitVector(nx, ny, nz, n);
    completeBasis(n, u, w);
    std::vector<math::Cpoint3<T>> pts;
    pts.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        double const s = rnd(extent);
        double const t = rnd(extent);
        double const e = rnd(noise);
        pts.emplace_back(T(p0.x + s * u[0] + t * w[0] + e * n[0]),
                         T(p0.y + s * u[1] + t * w[1] + e * n[1]),
                         T(p0.z + s * u[2] + t * w[2] + e * n[2]));
    }
    return pts;
}

// count points of the sphere (centre, r), spread uniformly over the whole sphere (or the cap
// of polar angle up to maxPolar about +z), radial noise.
template <typename T>
std::vector<math::Cpoint3<T>> spherePoints(math::Cpoint3<double> c, double r, std::size_t count,
                                           double noise = 0, std::uint64_t seed = 42,
                                           double maxPolar = kPi) {
    Noise rnd(seed);
    std::vector<math::Cpoint3<T>> pts;
    pts.reserve(count);
    double const zMin = std::cos(maxPolar);
    for (std::size_t i = 0; i < count; ++i) {
        double const z = zMin + (1.0 - zMin) * rnd.unit();
        double const phi = 2 * kPi * rnd.unit();
        double const rho = std::sqrt(std::fmax(0.0, 1.0 - z * z));
        double const rr = r + rnd(noise);
        pts.emplace_back(T(c.x + rr * rho * std::cos(phi)), T(c.y + rr * rho * std::sin(phi)),
                         T(c.z + rr * z));
    }
    return pts;
}

// count points of the cylinder with axis through p0 along (ax, ay, az), radius r, axial
// positions in [-length/2, length/2), angles in [0, arc), radial noise.
template <typename T>
std::vector<math::Cpoint3<T>> cylinderPoints(math::Cpoint3<double> p0, double ax, double ay,
                                             double az, double r, double length, std::size_t count,
                                             double arc = 2 * kPi, double noise = 0,
                                             std::uint64_t seed = 42) {
    Noise rnd(seed);
    double a[3], u[3], w[3];
    unitVector(ax, ay, az, a);
    completeBasis(a, u, w);
    std::vector<math::Cpoint3<T>> pts;
    pts.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        double const h = rnd(length / 2);
        double const phi = arc * rnd.unit();
        double const rr = r + rnd(noise);
        double const cu = rr * std::cos(phi);
        double const cw = rr * std::sin(phi);
        pts.emplace_back(T(p0.x + h * a[0] + cu * u[0] + cw * w[0]),
                         T(p0.y + h * a[1] + cu * u[1] + cw * w[1]),
                         T(p0.z + h * a[2] + cu * u[2] + cw * w[2]));
    }
    return pts;
}

}  // namespace mgeo_test
