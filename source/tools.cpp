// Point-cloud cutting.
#include "math/tools.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace math {

namespace {

// Clears out and reserves a quarter of the input size (integer division) when its capacity is
// below that.
template <typename Cloud>
void prepareOutput(std::size_t inputSize, Cloud& out) {
    out.clear();
    std::size_t const quarter = inputSize / 4;
    if (out.capacity() < quarter) {
        out.reserve(quarter);
    }
}

}  // namespace

// The sphere and line forms test each distance as it is computed instead of filling a
// temporary list first: the same points are kept in the same order, without the extra pass.

template <typename T>
void tools<T>::cutPointCloud(Csphere3<T> const& s, T const& dist, Cloud const& in, Cloud& out) {
    if (&in == &out) {  // clearing out empties the input: nothing is kept
        out.clear();
        return;
    }
    prepareOutput(in.size(), out);
    // d = |q - c| - r = sqrt(dx^2 + dy^2 + dz^2) - r with (dx, dy, dz) = q - c, summed in x, y, z
    // order; kept when dist > |d|.
    Cpoint3<T> const c = s.center();
    T const r = s.radius();
    for (Cpoint3<T> const& q : in) {
        T const dx = q.x - c.x;
        T const dy = q.y - c.y;
        T const dz = q.z - c.z;
        T const d = std::sqrt(dx * dx + dy * dy + dz * dz) - r;
        if (dist > std::fabs(d)) {
            out.push_back(q);
        }
    }
}

template <typename T>
void tools<T>::cutPointCloud(Cline3<T> const& l, T const& dist, Cloud const& in, Cloud& out) {
    if (&in == &out) {
        out.clear();
        return;
    }
    prepareOutput(in.size(), out);
    // d = |(q - p) x u| for the line through p with unit direction u:
    // (vy uz - vz uy, vz ux - vx uz, vx uy - vy ux), v = q - p; kept when dist > d.
    Cpoint3<T> const p = l.point();
    T const ux = l.direction().x();
    T const uy = l.direction().y();
    T const uz = l.direction().z();
    for (Cpoint3<T> const& q : in) {
        T const vx = q.x - p.x;
        T const vy = q.y - p.y;
        T const vz = q.z - p.z;
        T const cx = vy * uz - vz * uy;
        T const cy = vz * ux - vx * uz;
        T const cz = vx * uy - vy * ux;
        T const d = std::sqrt(cx * cx + cy * cy + cz * cz);
        if (dist > std::fabs(d)) {
            out.push_back(q);
        }
    }
}

template <typename T>
void tools<T>::cutPointCloud(Cplane3<T> const& e, T const& dist, Cloud const& in, Cloud& out) {
    if (&in == &out) {
        out.clear();
        return;
    }
    // Signed distances nx x + ny y + nz z + d of all points first, in input order.
    T const nx = e.normal().x();
    T const ny = e.normal().y();
    T const nz = e.normal().z();
    T const d = e.d();
    std::size_t const n = in.size();
    std::vector<T> distances(n);
    for (std::size_t i = 0; i < n; ++i) {
        Cpoint3<T> const& q = in[i];
        distances[i] = nx * q.x + ny * q.y + nz * q.z + d;
    }
    prepareOutput(n, out);
    for (std::size_t i = 0; i < n; ++i) {
        if (dist > std::fabs(distances[i])) {
            out.push_back(in[i]);
        }
    }
}

template <typename T>
void tools<T>::cutPointCloud(CboundingBox3<T> const& b, Cloud const& in, Cloud& out) {
    if (&in == &out) {
        out.clear();
        return;
    }
    prepareOutput(in.size(), out);
    Cpoint3<T> const lo = b.min();
    Cpoint3<T> const hi = b.max();
    for (Cpoint3<T> const& q : in) {
        if (lo.x < q.x && q.x < hi.x && lo.y < q.y && q.y < hi.y && lo.z < q.z && q.z < hi.z) {
            out.push_back(q);
        }
    }
}

#define MGEO_TOOLS_DEFINE(T) MGEO_TOOLS_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_TOOLS_DEFINE)

}  // namespace math
