// geometric<T>: comparisons, intersections, distances, projections and outlier removal, in
// float and double. Not the circle-set intersection, which reads standard input at every step.
// Only the LU three-plane intersection and the sphere-set intersection may throw (solver
// exceptions); everything else must return normally.
#include <math/exceptions.h>
#include <math/geometric.h>

#include "fuzz_input.h"

namespace {

template <typename T>
math::Cdirec3<T> direc3(fuzz::Input& in) {
    // Mostly a unit direction built by the class; sometimes raw components stored as they are.
    bool const stored = in.u8() % 4 == 0;
    T const x = in.real<T>(), y = in.real<T>(), z = in.real<T>();
    return stored ? math::Cdirec3<T>::unit(x, y, z) : math::Cdirec3<T>(x, y, z);
}

template <typename T>
math::Cdirec2<T> direc2(fuzz::Input& in) {
    bool const stored = in.u8() % 4 == 0;
    T const x = in.real<T>(), y = in.real<T>();
    return stored ? math::Cdirec2<T>::unit(x, y) : math::Cdirec2<T>(x, y);
}

template <typename T>
math::Cline3<T> line3(fuzz::Input& in) {
    auto const p = fuzz::point3<T>(in);
    return math::Cline3<T>(p, direc3<T>(in));
}

template <typename T>
math::Cline2<T> line2(fuzz::Input& in) {
    auto const p = fuzz::point2<T>(in);
    return math::Cline2<T>(p, direc2<T>(in));
}

template <typename T>
math::Cplane3<T> plane3(fuzz::Input& in) {
    auto const n = direc3<T>(in);
    return math::Cplane3<T>(n, in.real<T>());
}

template <typename T>
math::Csphere3<T> sphere3(fuzz::Input& in) {
    auto const c = fuzz::point3<T>(in);
    return math::Csphere3<T>(c, in.real<T>());
}

template <typename T>
void run(fuzz::Input& in) {
    using G = math::geometric<T>;
    switch (in.u8() % 10) {
        case 0: {
            T const a = in.real<T>(), b = in.real<T>();
            (void)G::equal(a, b);
            (void)G::equalT(a, b);
            auto const a2 = fuzz::point2<T>(in);
            (void)G::equal(a2, fuzz::point2<T>(in));
            auto const a3 = fuzz::point3<T>(in);
            (void)G::equal(a3, fuzz::point3<T>(in));
            break;
        }
        case 1: {
            std::vector<math::Csphere3<T>> spheres(in.u8() % 12);
            for (auto& s : spheres) {
                s = sphere3<T>(in);
            }
            math::Cpoint3<T> p;
            try {
                (void)G::intersect(spheres, p, in.flag());
            } catch (CthrowBase const&) {
            }
            break;
        }
        case 2: {
            auto const s = sphere3<T>(in);
            auto const l = line3<T>(in);
            std::pair<T, T> t;
            (void)G::intersect(s, l, t);
            auto const lo = fuzz::point3<T>(in);
            math::CboundingBox3<T> const box(lo, fuzz::point3<T>(in));
            std::pair<math::Cpoint3<T>, math::Cpoint3<T>> pp;
            (void)G::intersect(box, l, pp);
            break;
        }
        case 3: {
            auto const a = plane3<T>(in);
            auto const b = plane3<T>(in);
            auto const c = plane3<T>(in);
            math::Cpoint3<T> p;
            try {
                (void)G::intersect(a, b, c, p);
            } catch (CthrowBase const&) {
            }
            math::Cline3<T> l;
            (void)G::intersect(a, b, l);
            (void)G::intersect(a, line3<T>(in), p);
            break;
        }
        case 4: {
            std::vector<math::Cline3<T>> lines(in.u8() % 12);
            for (auto& l : lines) {
                l = line3<T>(in);
            }
            math::Cpoint3<T> p;
            T r;
            (void)G::intersect(lines, p, r);
            if (lines.size() >= 2) {
                T d;
                (void)G::intersect(lines[0], lines[1], p, d);
                (void)G::intersect(lines[0], lines[1], p);
            }
            break;
        }
        case 5: {
            auto const a = line2<T>(in);
            auto const b = line2<T>(in);
            math::Cpoint2<T> p;
            (void)G::intersect(a, b, p);
            (void)G::distance(a, b);
            (void)G::distance(a, fuzz::point2<T>(in));
            break;
        }
        case 6: {
            auto const q = fuzz::point3<T>(in);
            (void)G::distance(sphere3<T>(in), q);
            (void)G::distance(plane3<T>(in), q);
            auto const p = fuzz::point3<T>(in);
            auto const a = direc3<T>(in);
            math::Ccylinder3<T> const cyl(p, a, in.real<T>());
            (void)G::distance(cyl, q);
            (void)G::distance(line3<T>(in), q);
            break;
        }
        case 7: {
            auto const pts = fuzz::points3<T>(in, 200);
            std::vector<T> out(in.u8() % 4);
            G::distance(sphere3<T>(in), pts, out);
            G::distance(plane3<T>(in), pts, out);
            auto const p = fuzz::point3<T>(in);
            auto const a = direc3<T>(in);
            G::distance(math::Ccylinder3<T>(p, a, in.real<T>()), pts, out);
            G::distance(line3<T>(in), pts, out);
            G::distance(fuzz::point3<T>(in), pts, out);
            std::vector<math::Cpoint3<T>> cut(pts);
            (void)G::outlier(cut, out, in.real<T>());
            break;
        }
        case 8: {
            auto const pts = fuzz::points2<T>(in, 200);
            std::vector<T> out;
            auto const c = fuzz::point2<T>(in);
            T const a = in.real<T>(), b = in.real<T>();
            G::distance(math::Cellipse2<T>(c, a, b, in.real<T>()), pts, out);
            G::distance(line2<T>(in), pts, out);
            if (in.flag()) {
                out.resize(in.u8() % (pts.size() + 2));
            }
            std::vector<math::Cpoint2<T>> cut(pts);
            (void)G::outlier(cut, out, in.real<T>());
            break;
        }
        default: {
            auto pts3 = fuzz::points3<T>(in, 100);
            auto const pl = plane3<T>(in);
            auto const l3 = line3<T>(in);
            auto q3 = fuzz::point3<T>(in);
            G::project(pl, q3);
            G::project(pl, pts3);
            G::project(l3, q3);
            (void)G::project(l3, pts3);
            auto pts2 = fuzz::points2<T>(in, 100);
            auto const l2 = line2<T>(in);
            auto q2 = fuzz::point2<T>(in);
            G::project(l2, q2);
            (void)G::project(l2, pts2);
            break;
        }
    }
}

}  // namespace

MGEO_FUZZ_REAL_ENTRY(run)
