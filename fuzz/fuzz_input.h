// Turns the fuzzer's bytes into arguments: integers, counts, real values with a bias towards the
// values that break numerical code (NaN, infinities, zeros, the extremes of the type,
// subnormals), and point lists either scattered freely or lying near a shape, with injected
// duplicates and non-finite coordinates. Reading past the end yields zeros, so every input
// decodes to some argument list.
#pragma once

#include <math/points.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace fuzz {

class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : m_data(data), m_size(size) {}

    bool empty() const { return m_pos >= m_size; }
    std::size_t remaining() const { return m_pos < m_size ? m_size - m_pos : 0; }

    std::uint8_t u8() { return m_pos < m_size ? m_data[m_pos++] : 0; }
    std::uint16_t u16() { return static_cast<std::uint16_t>(u8() | (u8() << 8)); }
    std::uint32_t u32() { return std::uint32_t(u16()) | (std::uint32_t(u16()) << 16); }
    std::uint64_t u64() { return std::uint64_t(u32()) | (std::uint64_t(u32()) << 32); }
    bool flag() { return (u8() & 1) != 0; }

    // A value in [0, bound] (bound < 2^16).
    std::size_t count(std::size_t bound) { return bound == 0 ? 0 : u16() % (bound + 1); }

    // Raw bytes into a trivially copyable value.
    template <typename V>
    V raw() {
        unsigned char b[sizeof(V)];
        for (auto& c : b) {
            c = u8();
        }
        V v;
        std::memcpy(&v, b, sizeof(V));
        return v;
    }

    // A real value: one selector byte, then by its low bits
    //   0: a special value (NaN, +-inf, +-0, +-max, +-min normal, +-denorm_min, +-1, eps);
    //   1: the raw bit pattern of T;
    //   otherwise: a small integer times a power of two (2^-40 ... 2^40, mostly near 1), the
    //   values a measurement would hold.
    template <typename T>
    T real() {
        std::uint8_t const sel = u8();
        switch (sel & 7) {
            case 0:
                return special<T>(sel >> 3);
            case 1:
                return raw<T>();
            default: {
                auto const mant = static_cast<std::int16_t>(u16());
                int const e = (sel >> 3) - 16;  // -16 ... 15
                int const shift = (sel & 4) ? e * 5 / 2 : e / 4;
                return std::ldexp(T(mant), shift - 8);
            }
        }
    }

    // A real value near the moderate range (no specials), for shape parameters whose oddities
    // are injected separately.
    template <typename T>
    T moderate() {
        auto const mant = static_cast<std::int16_t>(u16());
        return std::ldexp(T(mant), int(u8() % 12) - 14);
    }

    template <typename T>
    static T special(unsigned k) {
        using L = std::numeric_limits<T>;
        T const table[] = {L::quiet_NaN(),
                           L::infinity(),
                           -L::infinity(),
                           T(0),
                           -T(0),
                           L::max(),
                           -L::max(),
                           L::min(),
                           -L::min(),
                           L::denorm_min(),
                           -L::denorm_min(),
                           T(1),
                           T(-1),
                           L::epsilon(),
                           T(1e30),
                           T(1e-30),
                           T(0.5),
                           T(2),
                           T(1e6),
                           T(-1e6),
                           T(3),
                           T(1e-6),
                           T(100),
                           T(7)};
        return table[k % (sizeof(table) / sizeof(table[0]))];
    }

private:
    std::uint8_t const* m_data;
    std::size_t m_size;
    std::size_t m_pos = 0;
};

// Arguments are read in order: each value is a separate statement, since the evaluation order
// of function arguments differs between compilers (gcc and clang) and the unit tests that
// replay an input may be built by either.
template <typename T>
math::Cpoint2<T> point2(Input& in) {
    T const x = in.real<T>();
    return math::Cpoint2<T>(x, in.real<T>());
}

template <typename T>
math::Cpoint3<T> point3(Input& in) {
    T const x = in.real<T>();
    T const y = in.real<T>();
    return math::Cpoint3<T>(x, y, in.real<T>());
}

// How a generated point list is laid out.
enum class Layout { free, line, circle, ellipse, sphere, cylinder, plane, grid };

template <typename T>
Layout pickLayout(Input& in) {
    return static_cast<Layout>(in.u8() % 8);
}

// A 2D point list of up to maxCount points: free values, or points near a line, circle or
// ellipse with fuzzed parameters and noise; then a few corruptions (duplicates, specials).
template <typename T>
std::vector<math::Cpoint2<T>> points2(Input& in, std::size_t maxCount) {
    std::size_t const n = in.count(maxCount);
    Layout const layout = pickLayout<T>(in);
    std::vector<math::Cpoint2<T>> pts;
    pts.reserve(n);
    T const cx = in.real<T>(), cy = in.real<T>();
    T const a = in.real<T>(), b = in.real<T>(), phi = in.moderate<T>();
    T const noise = in.moderate<T>() * T(0.001);
    T const c = std::cos(phi), s = std::sin(phi);
    for (std::size_t i = 0; i < n; ++i) {
        T const e1 = noise * T(static_cast<std::int8_t>(in.u8()));
        T const e2 = noise * T(static_cast<std::int8_t>(in.u8()));
        T const t = T(i) / T(n) * T(6.283185307179586);
        switch (layout) {
            case Layout::line:
            case Layout::plane:
                pts.emplace_back(cx + c * T(i) * a + e1, cy + s * T(i) * a + e2);
                break;
            case Layout::circle:
            case Layout::sphere:
                pts.emplace_back(cx + a * std::cos(t) + e1, cy + a * std::sin(t) + e2);
                break;
            case Layout::ellipse:
            case Layout::cylinder: {
                T const u = a * std::cos(t), v = b * std::sin(t);
                pts.emplace_back(cx + c * u - s * v + e1, cy + s * u + c * v + e2);
                break;
            }
            case Layout::grid:
                pts.emplace_back(cx + a * T(i % 4), cy + b * T(i / 4 % 4));
                break;
            default:
                pts.push_back(point2<T>(in));
                break;
        }
    }
    // Corruptions: copy a point, or set one coordinate to a fuzzed value.
    std::size_t const k = n == 0 ? 0 : in.u8() % 4;
    for (std::size_t j = 0; j < k; ++j) {
        std::size_t const i = in.u16() % n;
        if (in.flag()) {
            pts[i] = pts[in.u16() % n];
        } else {
            pts[i][in.u8() % 2] = in.real<T>();
        }
    }
    return pts;
}

// A 3D point list of up to maxCount points, laid out like points2 (line, plane, circle in a
// plane, sphere, cylinder, grid, free).
template <typename T>
std::vector<math::Cpoint3<T>> points3(Input& in, std::size_t maxCount) {
    std::size_t const n = in.count(maxCount);
    Layout const layout = pickLayout<T>(in);
    std::vector<math::Cpoint3<T>> pts;
    pts.reserve(n);
    T const cx = in.real<T>(), cy = in.real<T>(), cz = in.real<T>();
    T const r = in.real<T>(), h = in.real<T>();
    T const phi = in.moderate<T>(), psi = in.moderate<T>();
    T const noise = in.moderate<T>() * T(0.001);
    // An orthonormal frame (u, v, w) from two angles.
    T const w[3] = {std::sin(psi) * std::cos(phi), std::sin(psi) * std::sin(phi), std::cos(psi)};
    T const u[3] = {std::cos(psi) * std::cos(phi), std::cos(psi) * std::sin(phi), -std::sin(psi)};
    T const v[3] = {w[1] * u[2] - w[2] * u[1], w[2] * u[0] - w[0] * u[2],
                    w[0] * u[1] - w[1] * u[0]};
    for (std::size_t i = 0; i < n; ++i) {
        T const e = noise * T(static_cast<std::int8_t>(in.u8()));
        T const t = T(i) / T(n) * T(6.283185307179586);
        T a = 0, b = 0, c = 0;  // coordinates in the frame
        switch (layout) {
            case Layout::line:
                c = T(i) * h;
                a = e;
                break;
            case Layout::plane:
                a = r * T(i % 7);
                b = h * T(i / 7);
                c = e;
                break;
            case Layout::circle:
            case Layout::ellipse:
                a = (r + e) * std::cos(t);
                b = (r + e) * std::sin(t);
                break;
            case Layout::sphere: {
                T const p = T(i % 13) / T(13) * T(3.141592653589793);
                a = (r + e) * std::sin(p) * std::cos(t);
                b = (r + e) * std::sin(p) * std::sin(t);
                c = (r + e) * std::cos(p);
                break;
            }
            case Layout::cylinder: {
                T const t2 = T(i % 17) / T(17) * T(6.283185307179586);
                a = (r + e) * std::cos(t2);
                b = (r + e) * std::sin(t2);
                c = h * T(i / 17);
                break;
            }
            case Layout::grid:
                a = r * T(i % 3);
                b = r * T(i / 3 % 3);
                c = h * T(i / 9 % 3);
                break;
            default:
                break;
        }
        if (layout == Layout::free) {
            pts.push_back(point3<T>(in));
        } else {
            pts.emplace_back(cx + a * u[0] + b * v[0] + c * w[0],
                             cy + a * u[1] + b * v[1] + c * w[1],
                             cz + a * u[2] + b * v[2] + c * w[2]);
        }
    }
    std::size_t const k = n == 0 ? 0 : in.u8() % 4;
    for (std::size_t j = 0; j < k; ++j) {
        std::size_t const i = in.u16() % n;
        if (in.flag()) {
            pts[i] = pts[in.u16() % n];
        } else {
            pts[i][in.u8() % 3] = in.real<T>();
        }
    }
    return pts;
}

// An iteration limit, capped (see the README: a fit may legitimately run to its limit, and a
// limit of 2^64 would make a slow but finite fit look like a hang).
inline unsigned long long maxItr(Input& in, unsigned long long cap) { return in.u16() % (cap + 1); }

}  // namespace fuzz

// The entry point of a target whose template run<T>(fuzz::Input&) serves float and double: a
// flag read first picks the type.
#define MGEO_FUZZ_REAL_ENTRY(run)                                                      \
    extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) { \
        fuzz::Input in(data, size);                                                    \
        if (in.flag()) {                                                               \
            run<double>(in);                                                           \
        } else {                                                                       \
            run<float>(in);                                                            \
        }                                                                              \
        return 0;                                                                      \
    }
