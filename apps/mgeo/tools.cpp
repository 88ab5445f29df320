// hull, mask and transform2.
#include "tools.h"

#include <core/vector.h>
#include <math/aoi.h>
#include <math/convex_hull.h>
#include <math/exceptions.h>
#include <math/transform2.h>

#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "output.h"
#include "point_reader.h"

namespace mgeo_app {

namespace {

constexpr double kDeg = 57.29577951308232;

std::string sourceName(std::string const& path) { return path == "-" ? "standard input" : path; }

template <typename T>
std::vector<math::Cpoint2<T>> read2D(std::string const& path) {
    PointSet<T> set = readPoints<T>(path, true);
    if (set.dim != 2) {
        throw ReadError(sourceName(path) + ": expected 2 numbers per line (x y), found 3");
    }
    return std::move(set.p2);
}

// --- hull ------------------------------------------------------------------------------------

template <typename T>
int hull(std::string const& file, CommonOptions const& opt) {
    std::vector<math::Cpoint2<T>> const pts = read2D<T>(file);
    std::vector<Cvector2<T>> v;
    v.reserve(pts.size());
    for (auto const& p : pts) v.emplace_back(p.x, p.y);
    math::CcvxHull2D<T> const hull(v);
    auto const& h = hull.points();
    if (h.empty()) {
        std::string const msg = "no convex hull: fewer than 3 points or all points on one line";
        if (opt.json) {
            std::cout << nlohmann::json{{"ok", false}, {"error", msg}}.dump(2) << '\n';
        }
        std::cerr << "mgeo hull: " << msg << '\n';
        return 2;
    }
    // Area (shoelace, counter-clockwise positive) and perimeter, in double.
    double area = 0;
    double perimeter = 0;
    for (std::size_t i = 0; i < h.size(); ++i) {
        auto const& a = h[i];
        auto const& b = h[(i + 1) % h.size()];
        area += double(a.x) * double(b.y) - double(b.x) * double(a.y);
        double const dx = double(b.x) - double(a.x);
        double const dy = double(b.y) - double(a.y);
        perimeter += std::sqrt(dx * dx + dy * dy);
    }
    area *= 0.5;
    bool const s = opt.single;
    if (opt.json) {
        nlohmann::json j;
        j["ok"] = true;
        j["source"] = sourceName(file);
        j["points"] = pts.size();
        j["vertices"] = nlohmann::json::array();
        for (auto const& p : h) j["vertices"].push_back({double(p.x), double(p.y)});
        j["area"] = area;
        j["perimeter"] = perimeter;
        std::cout << j.dump(2) << '\n';
        return 0;
    }
    std::cout << "# convex hull of " << pts.size() << " points from " << sourceName(file) << ": "
              << h.size() << " vertices, counter-clockwise (y up)\n"
              << "# area " << num(area, s) << ", perimeter " << num(perimeter, s) << '\n';
    for (auto const& p : h) std::cout << num(double(p.x), s) << ' ' << num(double(p.y), s) << '\n';
    return 0;
}

// --- mask ------------------------------------------------------------------------------------

template <typename T>
int mask(std::string const& file, long long width, long long height, std::string const& out,
         CommonOptions const& opt) {
    constexpr long long kMaxSide = 1 << 16;
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
        std::cerr << "mgeo mask: --width and --height must lie in 1 .. " << kMaxSide << '\n';
        return 1;
    }
    auto const polys = readPolygons<T>(file);
    math::CpntN2<T> contours;
    for (auto const& p : polys) contours.push_back(p);
    math::Caoi<T> aoi;
    aoi.set(contours);
    if (!aoi.calculate()) {
        std::string const msg =
            "the polygons give no usable area (a polygon with fewer than 3 vertices, or "
            "coordinates too large for a pixel mask)";
        if (opt.json)
            std::cout << nlohmann::json{{"ok", false}, {"error", msg}}.dump(2) << '\n';
        std::cerr << "mgeo mask: " << sourceName(file) << ": " << msg << '\n';
        return 2;
    }
    std::string img = "P5\n# mgeo mask of " + sourceName(file) + "\n" + std::to_string(width) +
                      ' ' + std::to_string(height) + "\n255\n";
    std::size_t const header = img.size();
    img.resize(header + std::size_t(width) * std::size_t(height), '\0');
    unsigned long long inside = 0;
    for (long long y = 0; y < height; ++y) {
        for (long long x = 0; x < width; ++x) {
            if (aoi.pointIsIn(int(x), int(y))) {
                img[header + std::size_t(y * width + x)] = char(255);
                ++inside;
            }
        }
    }
    writeFile(
        out, true,
        [](std::ostream& os, void const* c) {
            auto const& s = *static_cast<std::string const*>(c);
            os.write(s.data(), std::streamsize(s.size()));
        },
        &img);
    if (opt.json) {
        std::cout << nlohmann::json{{"ok", true},
                                    {"source", sourceName(file)},
                                    {"polygons", polys.size()},
                                    {"width", width},
                                    {"height", height},
                                    {"inside", inside},
                                    {"out", out}}
                         .dump(2)
                  << '\n';
    } else if (out != "-") {
        std::cout << "mask " << width << " x " << height << " of " << polys.size()
                  << " polygon(s) from " << sourceName(file) << " written to " << out << ": "
                  << inside << " pixels inside\n";
    }
    return 0;
}

// --- transform2 ------------------------------------------------------------------------------

// The fitted map, in double: x' = tx + m00 x + m01 y, y' = ty + m10 x + m11 y.
struct Map2 {
    double tx, ty, m00, m01, m10, m11;
};

template <typename T>
int transform2(std::string const& srcFile, std::string const& dstFile, bool affine,
               CommonOptions const& opt) {
    std::vector<math::Cpoint2<T>> const src = read2D<T>(srcFile);
    std::vector<math::Cpoint2<T>> const dst = read2D<T>(dstFile);
    if (src.size() != dst.size()) {
        std::cerr << "mgeo transform2: " << sourceName(srcFile) << " has " << src.size()
                  << " points but " << sourceName(dstFile) << " has " << dst.size() << '\n';
        return 1;
    }
    std::size_t const need = affine ? 3 : 2;
    auto failed = [&](std::string const& msg) {
        if (opt.json)
            std::cout << nlohmann::json{{"ok", false}, {"error", msg}}.dump(2) << '\n';
        std::cerr << "mgeo transform2: " << msg << '\n';
        return 2;
    };
    if (src.size() < need) {
        return failed(std::string(affine ? "an affine" : "a Helmert") +
                      " transformation needs at least " + std::to_string(need) +
                      " point pairs, got " + std::to_string(src.size()));
    }
    math::CtransPrm2<T> prm;
    try {
        if (affine) {
            math::Ctrans2_Affine<T> t;
            t.setAll(src, dst);
            prm = t.transform();
        } else {
            math::Ctrans2_Helmert<T> t;
            t.setAll(src, dst);
            prm = t.transform();
        }
    } catch (typename math::Ctrans2_Basic<T>::xNotSolved const&) {
        return failed(
            "the normal equations could not be solved (points coincident or, for the "
            "affine map, collinear)");
    } catch (CthrowBase const& e) {
        return failed(std::string("the estimate stopped with an error: ") + e.what());
    }
    // The estimators return angles from a plain arctangent (modulo 180 degrees) with positive
    // scales. The fitted map's columns are (sx cos rotX, sx sin rotX) and (-sy sin rotY,
    // sy cos rotY) up to a sign each; the signs that fit the points best are taken (for the
    // Helmert map both columns share one sign) and folded into the angles.
    double const rx = double(prm.getRot_X());
    double const ry = double(prm.getRot_Y());
    double const sx = double(prm.getScale().x);
    double const sy = double(prm.getScale().y);
    double const tx = double(prm.getTranslation().x);
    double const ty = double(prm.getTranslation().y);
    auto makeMap = [&](int kx, int ky) {
        return Map2{tx,
                    ty,
                    kx * sx * std::cos(rx),
                    -ky * sy * std::sin(ry),
                    kx * sx * std::sin(rx),
                    ky * sy * std::cos(ry)};
    };
    auto sumSq = [&](Map2 const& m) {
        double s = 0;
        for (std::size_t i = 0; i < src.size(); ++i) {
            double const x = double(src[i].x);
            double const y = double(src[i].y);
            double const ex = m.tx + m.m00 * x + m.m01 * y - double(dst[i].x);
            double const ey = m.ty + m.m10 * x + m.m11 * y - double(dst[i].y);
            s += ex * ex + ey * ey;
        }
        return s;
    };
    int bestX = 1;
    int bestY = 1;
    double best = sumSq(makeMap(1, 1));
    for (int kx : {1, -1}) {
        for (int ky : {1, -1}) {
            if ((!affine && kx != ky) || (kx == 1 && ky == 1))
                continue;
            double const s = sumSq(makeMap(kx, ky));
            if (s < best) {
                best = s;
                bestX = kx;
                bestY = ky;
            }
        }
    }
    Map2 const m = makeMap(bestX, bestY);
    auto fold = [](double a, int k) {
        if (k > 0)
            return a;
        double const b = a + 3.14159265358979323846;
        return b > 3.14159265358979323846 ? b - 2 * 3.14159265358979323846 : b;
    };
    double const rotX = fold(rx, bestX) * kDeg;
    double const rotY = fold(ry, bestY) * kDeg;
    std::vector<double> res(2 * src.size());
    double maxRes = 0;
    for (std::size_t i = 0; i < src.size(); ++i) {
        double const x = double(src[i].x);
        double const y = double(src[i].y);
        res[2 * i] = m.tx + m.m00 * x + m.m01 * y - double(dst[i].x);
        res[2 * i + 1] = m.ty + m.m10 * x + m.m11 * y - double(dst[i].y);
        maxRes =
            std::max(maxRes, std::sqrt(res[2 * i] * res[2 * i] + res[2 * i + 1] * res[2 * i + 1]));
    }
    double const dof = double(2 * src.size()) - (affine ? 6.0 : 4.0);
    double const rms = std::sqrt(best / double(src.size()));
    double const sigma = dof > 0 ? std::sqrt(best / dof) : std::nan("");
    bool const s = opt.single;
    if (opt.json) {
        nlohmann::json j;
        j["ok"] = true;
        j["model"] = affine ? "affine" : "helmert";
        j["points"] = src.size();
        j["translation"] = {tx, ty};
        j["rotation_deg"] = affine ? nlohmann::json{rotX, rotY} : nlohmann::json(rotX);
        j["scale"] = affine ? nlohmann::json{sx, sy} : nlohmann::json(sx);
        j["matrix"] = {{m.m00, m.m01}, {m.m10, m.m11}};
        nlohmann::json r = nlohmann::json::array();
        for (std::size_t i = 0; i < src.size(); ++i) r.push_back({res[2 * i], res[2 * i + 1]});
        j["residuals"] = r;
        j["rms"] = rms;
        j["sigma"] = sigma;
        j["max_residual"] = maxRes;
        std::cout << j.dump(2) << '\n';
        return 0;
    }
    std::cout << (affine ? "affine" : "Helmert (similarity)") << " transformation from "
              << src.size() << " point pairs, " << sourceName(srcFile) << " -> "
              << sourceName(dstFile) << '\n';
    std::cout << "  translation          " << num(tx, s) << "  " << num(ty, s) << '\n';
    if (affine) {
        std::cout << "  rotation x, y        " << num(rotX, s) << "  " << num(rotY, s) << " deg\n"
                  << "  scale x, y           " << num(sx, s) << "  " << num(sy, s) << '\n';
    } else {
        std::cout << "  rotation             " << num(rotX, s) << " deg\n"
                  << "  scale                " << num(sx, s) << '\n';
    }
    std::cout << "  x' = " << num(m.tx, s) << " + " << num(m.m00, s) << " x + " << num(m.m01, s)
              << " y\n  y' = " << num(m.ty, s) << " + " << num(m.m10, s) << " x + " << num(m.m11, s)
              << " y\n";
    std::cout << "  residuals (mapped source - destination):\n";
    for (std::size_t i = 0; i < src.size(); ++i) {
        std::cout << "    " << i + 1 << "  " << num(res[2 * i], s) << "  " << num(res[2 * i + 1], s)
                  << '\n';
    }
    std::cout << "  rms " << num(rms, s) << ", sigma (per coordinate, " << dof
              << " degrees of freedom) " << num(sigma, s) << ", max " << num(maxRes, s) << '\n';
    return 0;
}

}  // namespace

int runHull(std::string const& file, CommonOptions const& opt) {
    return opt.single ? hull<float>(file, opt) : hull<double>(file, opt);
}

int runMask(std::string const& file, long long width, long long height, std::string const& out,
            CommonOptions const& opt) {
    return opt.single ? mask<float>(file, width, height, out, opt)
                      : mask<double>(file, width, height, out, opt);
}

int runTransform2(std::string const& src, std::string const& dst, bool affine,
                  CommonOptions const& opt) {
    return opt.single ? transform2<float>(src, dst, affine, opt)
                      : transform2<double>(src, dst, affine, opt);
}

}  // namespace mgeo_app
