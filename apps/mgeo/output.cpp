// Text, JSON, residual and SVG output of the fit command.
#include "output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

namespace mgeo_app {

namespace {

constexpr double kPi = 3.14159265358979323846;

std::string vecText(std::vector<double> const& v, bool single) {
    std::string s;
    for (std::size_t i = 0; i < v.size(); ++i) {
        if (i)
            s += "  ";
        s += num(v[i], single);
    }
    return s;
}

// A tidy number: 1, 2 or 5 times a power of ten, at most x.
double niceBelow(double x) {
    if (!(x > 0) || !std::isfinite(x))
        return 1;
    double const p = std::pow(10.0, std::floor(std::log10(x)));
    double const m = x / p;
    return (m >= 5 ? 5 : m >= 2 ? 2 : 1) * p;
}

std::string fmt(double v, int digits = 6) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*g", digits, v);
    return buf;
}

std::string xmlEscape(std::string const& s) {
    std::string o;
    for (char c : s) {
        switch (c) {
            case '<':
                o += "&lt;";
                break;
            case '>':
                o += "&gt;";
                break;
            case '&':
                o += "&amp;";
                break;
            case '"':
                o += "&quot;";
                break;
            default:
                o += c;
        }
    }
    return o;
}

}  // namespace

std::string num(double v, bool single) {
    if (std::isnan(v))
        return "n/a";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*g", single ? 7 : 10, v);
    return buf;
}

void printFitText(std::ostream& os, FitResult const& r, std::string const& source) {
    bool const s = r.single;
    auto line = [&os](std::string const& label, std::string const& value) {
        os << "  " << label;
        for (std::size_t i = label.size(); i < 25; ++i) os << ' ';
        os << ' ' << value << '\n';
    };
    os << r.element << " fit: " << r.methodText << ", " << (s ? "single" : "double")
       << " precision\n";
    line("points", std::to_string(r.n) + " from " + source);
    for (Param const& p : r.params) {
        std::string v = vecText(p.values, s);
        if (p.kind == Param::Kind::angle)
            v += " deg";
        line(p.label, v);
    }
    line("std deviation", num(r.stdDev, s));
    os << "      (" << r.stdDevText << ")\n";
    line("deviation min", num(r.minDev, s) + " at point " + std::to_string(r.minIndex + 1));
    line("deviation max", num(r.maxDev, s) + " at point " + std::to_string(r.maxIndex + 1));
    os << "      (" << r.residualText << ")\n";
    if (r.iterative) {
        line("iteration limit", std::to_string(r.maxIter) + ", tolerance " + fmt(r.tol, 3) +
                                    " (the library does not report the count)");
    }
    os << "  lengths in the units of the input, angles in degrees\n";
}

nlohmann::json fitJson(FitResult const& r, std::string const& source) {
    nlohmann::json j;
    j["element"] = r.element;
    j["method"] = r.method;
    j["method_text"] = r.methodText;
    j["precision"] = r.single ? "single" : "double";
    j["source"] = source;
    j["points"] = r.n;
    j["ok"] = r.ok;
    if (!r.ok) {
        j["error"] = r.failure;
        return j;
    }
    nlohmann::json params = nlohmann::json::object();
    for (Param const& p : r.params) {
        if (p.values.size() == 1) {
            params[p.key] = p.values[0];
        } else {
            params[p.key] = p.values;
        }
    }
    j["parameters"] = params;
    j["std_dev"] = r.stdDev;
    j["std_dev_definition"] = r.stdDevText;
    j["deviation"] = {{"min", r.minDev},
                      {"max", r.maxDev},
                      {"min_point", r.minIndex + 1},
                      {"max_point", r.maxIndex + 1},
                      {"definition", r.residualText}};
    if (r.iterative) {
        j["max_iter"] = r.maxIter;
        j["tolerance"] = r.tol;
        j["iterations"] = nullptr;  // not reported by the library
    }
    j["units"] = "lengths in the units of the input, angles in degrees";
    return j;
}

void writeFile(std::string const& path, bool binary, void (*fn)(std::ostream&, void const*),
               void const* ctx) {
    if (path == "-") {
        fn(std::cout, ctx);
        std::cout.flush();
        if (!std::cout)
            throw WriteError("standard output: write failed");
        return;
    }
    std::ofstream f(path, binary ? std::ios::binary | std::ios::out : std::ios::out);
    if (!f)
        throw WriteError(path + ": cannot open for writing");
    fn(f, ctx);
    f.close();
    if (!f)
        throw WriteError(path + ": write failed");
}

void writeResiduals(std::string const& path, std::vector<double> const& residuals, bool single) {
    struct Ctx {
        std::vector<double> const* r;
        bool single;
    } const ctx{&residuals, single};
    writeFile(
        path, false,
        [](std::ostream& os, void const* c) {
            auto const& x = *static_cast<Ctx const*>(c);
            // Shortest text that reads back to the same value, in large blocks.
            std::string buf;
            buf.reserve(1 << 20);
            char tmp[64];
            for (double v : *x.r) {
                auto const res = x.single ? std::to_chars(tmp, tmp + 64, float(v))
                                          : std::to_chars(tmp, tmp + 64, v);
                buf.append(tmp, res.ptr);
                buf += '\n';
                if (buf.size() > (1u << 20) - 64) {
                    os.write(buf.data(), std::streamsize(buf.size()));
                    buf.clear();
                }
            }
            os.write(buf.data(), std::streamsize(buf.size()));
        },
        &ctx);
}

// --- SVG -------------------------------------------------------------------------------------

namespace {

// The foot point of (px, py) on an ellipse, by Newton steps on the angle parameter, for drawing.
void ellipseFoot(Shape2D const& e, double px, double py, double& fx, double& fy) {
    double const c = std::cos(e.angle);
    double const s = std::sin(e.angle);
    double const dx = px - e.cx;
    double const dy = py - e.cy;
    double const u = dx * c + dy * s;
    double const v = -dx * s + dy * c;
    double t = std::atan2(e.a * v, e.b * u);
    for (int i = 0; i < 12; ++i) {
        double const ct = std::cos(t);
        double const st = std::sin(t);
        double const f = (e.a * e.a - e.b * e.b) * ct * st - u * e.a * st + v * e.b * ct;
        double const df =
            (e.a * e.a - e.b * e.b) * (ct * ct - st * st) - u * e.a * ct - v * e.b * st;
        if (df == 0 || !std::isfinite(df))
            break;
        double const step = f / df;
        t -= step;
        if (std::fabs(step) < 1e-12)
            break;
    }
    double const fu = e.a * std::cos(t);
    double const fv = e.b * std::sin(t);
    fx = e.cx + fu * c - fv * s;
    fy = e.cy + fu * s + fv * c;
}

void footPoint(Shape2D const& sh, double px, double py, double& fx, double& fy) {
    switch (sh.type) {
        case Shape2D::Type::line: {
            double const t = (px - sh.px) * sh.dx + (py - sh.py) * sh.dy;
            fx = sh.px + t * sh.dx;
            fy = sh.py + t * sh.dy;
            break;
        }
        case Shape2D::Type::circle: {
            double const dx = px - sh.cx;
            double const dy = py - sh.cy;
            double const d = std::sqrt(dx * dx + dy * dy);
            if (d == 0) {
                fx = px;
                fy = py;
            } else {
                fx = sh.cx + dx / d * sh.r;
                fy = sh.cy + dy / d * sh.r;
            }
            break;
        }
        case Shape2D::Type::ellipse:
            ellipseFoot(sh, px, py, fx, fy);
            break;
        default:
            fx = px;
            fy = py;
    }
}

}  // namespace

template <typename T>
double writeFitSvg(std::string const& path, PointSet<T> const& pts, FitResult const& r,
                   std::string const& source) {
    Shape2D const& sh = r.shape;
    auto const& p = pts.p2;
    std::size_t const n = p.size();
    // Drawing at most about 20000 points keeps the file small; every step-th point is drawn.
    std::size_t const step = n > 20000 ? (n + 19999) / 20000 : 1;

    // Data extent: the points and, for closed curves, the whole curve.
    double x0 = 1e300, x1 = -1e300, y0 = 1e300, y1 = -1e300;
    auto grow = [&](double x, double y) {
        if (!std::isfinite(x) || !std::isfinite(y))
            return;
        x0 = std::min(x0, x);
        x1 = std::max(x1, x);
        y0 = std::min(y0, y);
        y1 = std::max(y1, y);
    };
    for (std::size_t i = 0; i < n; i += step) grow(double(p[i].x), double(p[i].y));
    std::vector<std::pair<double, double>> curve;
    if (sh.type == Shape2D::Type::circle || sh.type == Shape2D::Type::ellipse) {
        double const a = sh.type == Shape2D::Type::circle ? sh.r : sh.a;
        double const b = sh.type == Shape2D::Type::circle ? sh.r : sh.b;
        double const c = std::cos(sh.angle);
        double const s = std::sin(sh.angle);
        for (int k = 0; k <= 720; ++k) {
            double const t = 2 * kPi * k / 720;
            double const u = a * std::cos(t);
            double const v = b * std::sin(t);
            curve.emplace_back(sh.cx + u * c - v * s, sh.cy + u * s + v * c);
            grow(curve.back().first, curve.back().second);
        }
    } else if (sh.type == Shape2D::Type::line) {
        double tmin = 1e300, tmax = -1e300;
        for (std::size_t i = 0; i < n; i += step) {
            double const t = (double(p[i].x) - sh.px) * sh.dx + (double(p[i].y) - sh.py) * sh.dy;
            tmin = std::min(tmin, t);
            tmax = std::max(tmax, t);
        }
        double const ext = 0.05 * (tmax - tmin);
        curve.emplace_back(sh.px + (tmin - ext) * sh.dx, sh.py + (tmin - ext) * sh.dy);
        curve.emplace_back(sh.px + (tmax + ext) * sh.dx, sh.py + (tmax + ext) * sh.dy);
        grow(curve[0].first, curve[0].second);
        grow(curve[1].first, curve[1].second);
    }
    double w = x1 - x0;
    double h = y1 - y0;
    double const span = std::max({w, h, 1e-12});
    if (w < span * 1e-3)
        w = span * 1e-3;
    if (h < span * 1e-3)
        h = span * 1e-3;
    x0 -= 0.06 * w;
    x1 += 0.06 * w;
    y0 -= 0.06 * h;
    y1 += 0.06 * h;
    w = x1 - x0;
    h = y1 - y0;

    constexpr double kPlot = 760;     // plot area edge length in px
    constexpr double kMargin = 20;    // around the plot area
    constexpr double kLegendW = 430;  // legend column
    double const scale = std::min(kPlot / w, kPlot / h);
    double const plotW = w * scale;
    double const plotH = h * scale;
    auto sx = [&](double x) { return kMargin + (x - x0) * scale; };
    auto sy = [&](double y) { return kMargin + plotH - (y - y0) * scale; };  // y up

    // Magnification: three robust standard deviations (1.4826 times the median absolute
    // residual, so that a few outliers do not shrink the whiskers) become about 8 % of the
    // plot's data extent.
    double spread = 0;
    if (!r.residuals.empty()) {
        std::vector<double> absRes(r.residuals.size());
        for (std::size_t i = 0; i < absRes.size(); ++i) absRes[i] = std::fabs(r.residuals[i]);
        auto mid = absRes.begin() + std::ptrdiff_t(absRes.size() / 2);
        std::nth_element(absRes.begin(), mid, absRes.end());
        spread = 3 * 1.4826 * *mid;
    }
    if (!(spread > 0) || !std::isfinite(spread)) spread = 3 * r.stdDev;
    if (!(spread > 0) || !std::isfinite(spread)) {
        spread = std::max(std::fabs(r.minDev), std::fabs(r.maxDev));
    }
    double factor = spread > 0 ? niceBelow(0.08 * span / spread) : 1;
    if (factor < 1)
        factor = 1;

    double const totalW = kMargin * 2 + plotW + kLegendW;
    double const totalH = std::max(kMargin * 2 + plotH + 40, 560.0);
    std::ostringstream o;
    o.precision(6);
    o << std::fixed;
    o << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << totalW << "\" height=\"" << totalH
      << "\" viewBox=\"0 0 " << totalW << ' ' << totalH << "\">\n"
      << "<title>mgeo fit " << r.element << " of " << xmlEscape(source) << "</title>\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
      << "<defs><clipPath id=\"plot\"><rect x=\"" << kMargin << "\" y=\"" << kMargin
      << "\" width=\"" << plotW << "\" height=\"" << plotH << "\"/></clipPath></defs>\n"
      << "<rect x=\"" << kMargin << "\" y=\"" << kMargin << "\" width=\"" << plotW << "\" height=\""
      << plotH << "\" fill=\"none\" stroke=\"#bbb\"/>\n"
      << "<g clip-path=\"url(#plot)\">\n";
    o.precision(2);
    // Fitted element.
    o << "<polyline fill=\"none\" stroke=\"#1a7f37\" stroke-width=\"1.5\" points=\"";
    for (auto const& c : curve) o << sx(c.first) << ',' << sy(c.second) << ' ';
    o << "\"/>\n";
    // Whiskers from the foot point along the residual, magnified; red outside, blue inside.
    o << "<g stroke-width=\"1\">\n";
    for (std::size_t i = 0; i < n && i < r.residuals.size(); i += step) {
        double const px = double(p[i].x);
        double const py = double(p[i].y);
        double fx = px, fy = py;
        footPoint(sh, px, py, fx, fy);
        double const ex = fx + factor * (px - fx);
        double const ey = fy + factor * (py - fy);
        if (!std::isfinite(ex) || !std::isfinite(ey))
            continue;
        o << "<line x1=\"" << sx(fx) << "\" y1=\"" << sy(fy) << "\" x2=\"" << sx(ex) << "\" y2=\""
          << sy(ey) << "\" stroke=\"" << (r.residuals[i] >= 0 ? "#d1242f" : "#0969da") << "\"/>\n";
    }
    o << "</g>\n<g fill=\"#333\">\n";
    for (std::size_t i = 0; i < n; i += step) {
        o << "<circle cx=\"" << sx(double(p[i].x)) << "\" cy=\"" << sy(double(p[i].y))
          << "\" r=\"1.6\"/>\n";
    }
    o << "</g>\n</g>\n";
    // Scale bar: a tidy length near a fifth of the plot width.
    double const bar = niceBelow(w / 5);
    double const by = kMargin + plotH + 22;
    o << "<g stroke=\"black\" stroke-width=\"2\"><line x1=\"" << kMargin << "\" y1=\"" << by
      << "\" x2=\"" << kMargin + bar * scale << "\" y2=\"" << by << "\"/>"
      << "<line x1=\"" << kMargin << "\" y1=\"" << by - 5 << "\" x2=\"" << kMargin << "\" y2=\""
      << by + 5 << "\"/><line x1=\"" << kMargin + bar * scale << "\" y1=\"" << by - 5 << "\" x2=\""
      << kMargin + bar * scale << "\" y2=\"" << by + 5 << "\"/></g>\n"
      << "<text x=\"" << kMargin + bar * scale + 8 << "\" y=\"" << by + 5
      << "\" font-family=\"sans-serif\" font-size=\"13\">" << fmt(bar)
      << " (units of the input; y axis up)</text>\n";

    // Legend.
    std::vector<std::string> lines;
    lines.push_back(r.element + " fit of " + source);
    lines.push_back(r.methodText);
    lines.push_back(std::to_string(r.n) + " points" +
                    (step > 1 ? ", every " + std::to_string(step) + "th drawn" : ""));
    lines.push_back("");
    for (Param const& q : r.params) {
        std::string v;
        for (std::size_t k = 0; k < q.values.size(); ++k) {
            if (k)
                v += ", ";
            v += num(q.values[k], r.single);
        }
        if (q.kind == Param::Kind::angle)
            v += " deg";
        lines.push_back(q.label + ": " + v);
    }
    lines.push_back("std deviation: " + num(r.stdDev, r.single));
    lines.push_back("deviation min: " + num(r.minDev, r.single));
    lines.push_back("deviation max: " + num(r.maxDev, r.single));
    lines.push_back("");
    lines.push_back("residual whiskers magnified x" + fmt(factor));
    lines.push_back("red: outside / left, blue: inside / right");
    lines.push_back("green: fitted element");
    double const lx = kMargin * 2 + plotW;
    double ly = kMargin + 14;
    o << "<g font-family=\"sans-serif\" font-size=\"13\">\n";
    for (std::string const& l : lines) {
        if (!l.empty()) {
            o << "<text x=\"" << lx << "\" y=\"" << ly << "\">" << xmlEscape(l) << "</text>\n";
        }
        ly += 19;
    }
    // A sample whisker: a residual of one standard deviation at the stated magnification.
    if (r.stdDev > 0 && std::isfinite(r.stdDev)) {
        double const len = std::min(r.stdDev * factor * scale, kLegendW - 160);
        o << "<line x1=\"" << lx << "\" y1=\"" << ly << "\" x2=\"" << lx + len << "\" y2=\"" << ly
          << "\" stroke=\"#d1242f\" stroke-width=\"2\"/>\n"
          << "<text x=\"" << lx + len + 8 << "\" y=\"" << ly + 4 << "\">= 1 std deviation ("
          << fmt(r.stdDev, 3) << ") drawn x" << fmt(factor) << "</text>\n";
    }
    o << "</g>\n</svg>\n";
    std::string const text = o.str();
    writeFile(
        path, false,
        [](std::ostream& os, void const* c) { os << *static_cast<std::string const*>(c); }, &text);
    return factor;
}

template double writeFitSvg<float>(std::string const&, PointSet<float> const&, FitResult const&,
                                   std::string const&);
template double writeFitSvg<double>(std::string const&, PointSet<double> const&, FitResult const&,
                                    std::string const&);

}  // namespace mgeo_app
