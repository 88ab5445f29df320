// Point-cloud cutting.
#include "math/tools.h"

#include <cmath>
#include <cstddef>

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

// Appends in[i] to out for every i with keep(i, in[i]), in input order. The points pass
// through a small buffer: each one is written there unconditionally and the fill count
// advances by the test's result, so the loop carries no data-dependent branch (a kept
// fraction near one half would otherwise mispredict every other point); full buffers are
// appended with push_back, so out grows exactly as with one push_back per kept point.
template <typename T, typename Keep>
void appendKept(CbaseVecN<Cpoint3<T>> const& in, CbaseVecN<Cpoint3<T>>& out, Keep keep) {
    constexpr std::size_t kChunk = 256;
    Cpoint3<T> buffer[kChunk];
    std::size_t const n = in.size();
    std::size_t i = 0;
    while (i < n) {
        std::size_t const end = (n - i < kChunk) ? n : i + kChunk;
        std::size_t count = 0;
        for (; i < end; ++i) {
            Cpoint3<T> const& q = in[i];
            buffer[count] = q;
            count += keep(i, q) ? 1 : 0;
        }
        for (std::size_t k = 0; k < count; ++k) {
            out.push_back(buffer[k]);
        }
    }
}

}  // namespace

// The sphere, line and plane forms test each distance as it is computed instead of filling a
// temporary list of all distances first: the same points are kept in the same order, without
// the extra pass over memory (for 1e7 points the list alone cost as much as the whole cut).

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
    T const limit = dist;
    appendKept(in, out, [c, r, limit](std::size_t, Cpoint3<T> const& q) {
        T const dx = q.x - c.x;
        T const dy = q.y - c.y;
        T const dz = q.z - c.z;
        T const d = std::sqrt(dx * dx + dy * dy + dz * dz) - r;
        return limit > std::fabs(d);
    });
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
    T const limit = dist;
    appendKept(in, out, [p, ux, uy, uz, limit](std::size_t, Cpoint3<T> const& q) {
        T const vx = q.x - p.x;
        T const vy = q.y - p.y;
        T const vz = q.z - p.z;
        T const cx = vy * uz - vz * uy;
        T const cy = vz * ux - vx * uz;
        T const cz = vx * uy - vy * ux;
        T const d = std::sqrt(cx * cx + cy * cy + cz * cz);
        return limit > std::fabs(d);
    });
}

template <typename T>
void tools<T>::cutPointCloud(Cplane3<T> const& e, T const& dist, Cloud const& in, Cloud& out) {
    if (&in == &out) {
        out.clear();
        return;
    }
    prepareOutput(in.size(), out);
    // s = nx x + ny y + nz z + d from the stored values, summed in that order; kept when
    // dist > |s|.
    T const nx = e.normal().x();
    T const ny = e.normal().y();
    T const nz = e.normal().z();
    T const d = e.d();
    T const limit = dist;
    appendKept(in, out, [nx, ny, nz, d, limit](std::size_t, Cpoint3<T> const& q) {
        T const s = nx * q.x + ny * q.y + nz * q.z + d;
        return limit > std::fabs(s);
    });
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
    // The x, y, z order of the tests is kept; without side effects it only decides how early
    // a point fails, so the six tests are combined without short-circuit branches.
    appendKept(in, out, [lo, hi](std::size_t, Cpoint3<T> const& q) {
        return (lo.x < q.x) & (q.x < hi.x) & (lo.y < q.y) & (q.y < hi.y) & (lo.z < q.z) &
               (q.z < hi.z);
    });
}

#define MGEO_TOOLS_DEFINE(T) MGEO_TOOLS_FAMILY(T, )
MGEO_REAL_TYPES(MGEO_TOOLS_DEFINE)

}  // namespace math
