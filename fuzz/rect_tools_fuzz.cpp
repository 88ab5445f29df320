// Rectangles and bounding boxes (Crect2, CboundingBox2 over float, double and int, the int
// forms over the full 32-bit range) and the point-cloud cuts of tools<T> (float and double).
#include <math/rect.h>
#include <math/tools.h>

#include <list>

#include "fuzz_input.h"

namespace {

template <typename T>
T value(fuzz::Input& in) {
    if constexpr (std::is_integral_v<T>) {
        // Mostly small, sometimes any 32-bit value (the ends of the range included).
        return in.u8() % 4 == 0 ? in.raw<T>() : T(static_cast<std::int8_t>(in.u8()));
    } else {
        return in.real<T>();
    }
}

template <typename T>
math::Cpoint2<T> point(fuzz::Input& in) {
    T const x = value<T>(in);
    return math::Cpoint2<T>(x, value<T>(in));
}

template <typename T>
math::Crect2<T> rect(fuzz::Input& in) {
    T const a = value<T>(in), b = value<T>(in), c = value<T>(in), d = value<T>(in);
    if (in.flag()) {
        return math::Crect2<T>(a, b, c, d);  // x, y, w, h
    }
    return math::Crect2<T>(math::Cpoint2<T>(a, b), math::Cpoint2<T>(c, d));
}

template <typename T>
void rects(fuzz::Input& in) {
    math::Crect2<T> r = rect<T>(in);
    math::Crect2<T> const o = rect<T>(in);
    for (int k = in.u8() % 8; k > 0; --k) {
        auto const p = point<T>(in);
        switch (in.u8() % 12) {
            case 0:
                (void)r.width();
                (void)r.height();
                (void)r.center();
                break;
            case 1:
                r.setWidth(value<T>(in));
                r.setHeight(value<T>(in));
                break;
            case 2:
                r.setCenter(p);
                break;
            case 3: {
                T const a = value<T>(in), b = value<T>(in), c = value<T>(in);
                r.adjust(a, b, c, value<T>(in));
                break;
            }
            case 4:
                r.moveBy(p);
                break;
            case 5:
                r.moveTo(p);
                break;
            case 6:
                r = r + p;
                r -= p;
                break;
            case 7:
                r = r * value<T>(in);
                break;
            case 8:
                (void)r.pointIsIn(p);
                (void)r.pointIsRealIn(p);
                (void)r.pointOnBorder(p);
                break;
            case 9:
                (void)r.intersects(o);
                r = r.intersect(o);
                break;
            case 10:
                r = r.unite(o);
                break;
            default:
                r = r.normalize();
                (void)r.isValid();
                (void)(r == o);
                break;
        }
    }
    (void)r.topRight();
    (void)r.bottomLeft();

    std::vector<math::Cpoint2<T>> pts(in.count(64));
    for (auto& p : pts) {
        p = point<T>(in);
    }
    math::CboundingBox2<T> box;
    if (in.flag()) {
        box.set(pts);
    } else {
        box.set(std::list<math::Cpoint2<T>>(pts.begin(), pts.end()));
    }
    math::Cpoint2<T> c;
    box.getCenter(c);
    (void)box.isInside(point<T>(in));
}

template <typename T>
void cuts(fuzz::Input& in) {
    auto const pts = fuzz::points3<T>(in, 300);
    typename math::tools<T>::Cloud cloud;
    for (auto const& p : pts) {
        cloud.push_back(p);
    }
    typename math::tools<T>::Cloud out;
    if (in.flag()) {
        out.reserve(in.u8());
    }
    T const dist = in.real<T>();
    auto const c = fuzz::point3<T>(in);
    math::tools<T>::cutPointCloud(math::Csphere3<T>(c, in.real<T>()), dist, cloud, out);
    T const ax = in.real<T>(), ay = in.real<T>(), az = in.real<T>();
    math::tools<T>::cutPointCloud(math::Cline3<T>(c, math::Cdirec3<T>::unit(ax, ay, az)), dist,
                                  cloud, out);
    math::tools<T>::cutPointCloud(math::Cplane3<T>(math::Cdirec3<T>(ax, ay, az), in.real<T>()),
                                  dist, cloud, out);
    math::tools<T>::cutPointCloud(math::CboundingBox3<T>(c, fuzz::point3<T>(in)), cloud, out);
    math::tools<T>::cutPointCloud(math::CboundingBox3<T>(c, c), cloud, cloud);  // in == out
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz::Input in(data, size);
    switch (in.u8() % 5) {
        case 0:
            rects<float>(in);
            break;
        case 1:
            rects<double>(in);
            break;
        case 2:
            rects<int>(in);
            break;
        case 3:
            cuts<float>(in);
            break;
        default:
            cuts<double>(in);
            break;
    }
    return 0;
}
