// Plane regions: the area-of-interest mask, point tests, polygon classification and the convex
// polygon of a point set. With OpenCV (MGEO_HAVE_OPENCV) the same polygons are filled by
// cv::fillPoly and the same points hulled by cv::convexHull; those rows carry the ratio
// mgeo time / OpenCV time as the counter "mgeo_over_cv".
#include <benchmark/benchmark.h>
#include <math/aoi.h>
#include <math/convex_hull.h>
#include <math/polygon.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#ifdef MGEO_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using P = math::Cpoint2<double>;
using Poly = math::Cpolygon2<double>;
using Aoi = math::Caoi<double>;

constexpr double kPi = 3.14159265358979323846;

double uniform(std::mt19937_64& rng) { return double(rng() >> 11) * 0x1.0p-53; }

// A star of n vertices alternating between the outer and the inner radius, centred in a
// size x size area and touching its border.
std::vector<P> starPolygon(std::size_t n, double size) {
    double const c = (size - 1) / 2;
    std::vector<P> v;
    for (std::size_t i = 0; i < n; ++i) {
        double const a = 2 * kPi * double(i) / double(n);
        double const r = (i % 2 == 0) ? c : 0.45 * c;
        v.emplace_back(c + r * std::cos(a), c + r * std::sin(a));
    }
    return v;
}

// A regular polygon with m vertices.
std::vector<P> regularPolygon(std::size_t m, double cx, double cy, double r, double phase) {
    std::vector<P> v;
    for (std::size_t i = 0; i < m; ++i) {
        double const a = phase + 2 * kPi * double(i) / double(m);
        v.emplace_back(cx + r * std::cos(a), cy + r * std::sin(a));
    }
    return v;
}

// 20 overlapping convex 48-gons spread over a size x size area, two of them reaching the
// corners so that the mask covers the whole area.
std::vector<std::vector<P>> convexSet(double size) {
    std::mt19937_64 rng(3);
    std::vector<std::vector<P>> set;
    double const r0 = 0.15 * size;
    set.push_back(regularPolygon(48, r0, r0, r0, 0.0));
    set.push_back(regularPolygon(48, size - 1 - r0, size - 1 - r0, r0, 0.0));
    for (int k = 2; k < 20; ++k) {
        double const r = size * (0.1 + 0.2 * uniform(rng));
        double const cx = r + (size - 1 - 2 * r) * uniform(rng);
        double const cy = r + (size - 1 - 2 * r) * uniform(rng);
        set.push_back(regularPolygon(48, cx, cy, r, uniform(rng)));
    }
    return set;
}

std::vector<P> randomPoints(std::size_t n, double size, std::uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::vector<P> pts;
    pts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        pts.emplace_back(size * uniform(rng), size * uniform(rng));
    }
    return pts;
}

template <class F>
double secondsPerRun(F const& f, int runs) {
    auto const t0 = std::chrono::steady_clock::now();
    for (int i = 0; i < runs; ++i) {
        f();
    }
    std::chrono::duration<double> const dt = std::chrono::steady_clock::now() - t0;
    return dt.count() / runs;
}

// ---------------------------------------------------------------------------------------------
// Mask

void BM_AoiCalculateStar(benchmark::State& state) {
    double const size = double(state.range(0));
    Aoi aoi{Poly(starPolygon(1000, size))};
    aoi.calculate();  // classifies once
    for (auto _ : state) {
        benchmark::DoNotOptimize(aoi.calculate());
    }
    state.SetItemsProcessed(state.iterations() * int64_t(size * size));
}
BENCHMARK(BM_AoiCalculateStar)->Arg(512)->Arg(4096)->Unit(benchmark::kMillisecond);

// The pointwise definition, for comparison (pixels x point test of 1000 edges).
void BM_AoiPointwiseStar(benchmark::State& state) {
    int const size = int(state.range(0));
    Poly poly(starPolygon(1000, size));
    poly.preprocess();
    std::vector<std::uint8_t> mask(std::size_t(size) * std::size_t(size));
    for (auto _ : state) {
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                mask[std::size_t(y) * std::size_t(size) + std::size_t(x)] =
                    poly.pointIsIn(P(x, y)) ? 1 : 0;
            }
        }
        benchmark::DoNotOptimize(mask.data());
    }
    state.SetItemsProcessed(state.iterations() * int64_t(size) * size);
}
BENCHMARK(BM_AoiPointwiseStar)->Arg(512)->Unit(benchmark::kMillisecond);

void BM_AoiCalculateConvex20(benchmark::State& state) {
    double const size = double(state.range(0));
    Aoi aoi;
    for (auto const& v : convexSet(size)) {
        aoi.add(Poly(v));
    }
    aoi.calculate();
    for (auto _ : state) {
        benchmark::DoNotOptimize(aoi.calculate());
    }
    state.SetItemsProcessed(state.iterations() * int64_t(size * size));
}
BENCHMARK(BM_AoiCalculateConvex20)->Arg(4096)->Unit(benchmark::kMillisecond);

#ifdef MGEO_HAVE_OPENCV
std::vector<cv::Point> toCv(std::vector<P> const& v) {
    std::vector<cv::Point> out;
    for (P const& p : v) {
        out.emplace_back(int(std::lround(p.x)), int(std::lround(p.y)));
    }
    return out;
}

void BM_CvFillPolyStar(benchmark::State& state) {
    int const size = int(state.range(0));
    std::vector<P> const star = starPolygon(1000, size);
    std::vector<std::vector<cv::Point>> const contours{toCv(star)};
    cv::Mat img(size, size, CV_8UC1);
    auto const fill = [&] {
        img.setTo(0);
        cv::fillPoly(img, contours, cv::Scalar(255));
    };
    for (auto _ : state) {
        fill();
        benchmark::DoNotOptimize(img.data);
    }
    Aoi aoi{Poly(star)};
    aoi.calculate();
    double const ours = secondsPerRun([&] { aoi.calculate(); }, 5);
    double const theirs = secondsPerRun(fill, 5);
    state.counters["mgeo_over_cv"] = ours / theirs;
}
BENCHMARK(BM_CvFillPolyStar)->Arg(4096)->Unit(benchmark::kMillisecond);

void BM_CvFillPolyConvex20(benchmark::State& state) {
    int const size = int(state.range(0));
    auto const set = convexSet(size);
    std::vector<std::vector<cv::Point>> contours;
    for (auto const& v : set) {
        contours.push_back(toCv(v));
    }
    cv::Mat img(size, size, CV_8UC1);
    auto const fill = [&] {
        img.setTo(0);
        for (auto const& c : contours) {  // one call per polygon: the union
            cv::fillPoly(img, std::vector<std::vector<cv::Point>>{c}, cv::Scalar(255));
        }
    };
    for (auto _ : state) {
        fill();
        benchmark::DoNotOptimize(img.data);
    }
    Aoi aoi;
    for (auto const& v : set) {
        aoi.add(Poly(v));
    }
    aoi.calculate();
    double const ours = secondsPerRun([&] { aoi.calculate(); }, 5);
    double const theirs = secondsPerRun(fill, 5);
    state.counters["mgeo_over_cv"] = ours / theirs;
}
BENCHMARK(BM_CvFillPolyConvex20)->Arg(4096)->Unit(benchmark::kMillisecond);
#endif

// ---------------------------------------------------------------------------------------------
// Point tests

void BM_PolygonPointIsInConvex(benchmark::State& state) {
    Poly poly(regularPolygon(std::size_t(state.range(0)), 500, 500, 400, 0.1));
    poly.preprocess();
    std::vector<P> const q = randomPoints(100000, 1000, 5);
    for (auto _ : state) {
        std::size_t in = 0;
        for (P const& p : q) {
            in += poly.pointIsIn(p) ? 1 : 0;
        }
        benchmark::DoNotOptimize(in);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(q.size()));
}
BENCHMARK(BM_PolygonPointIsInConvex)->Arg(16)->Arg(1000);

void BM_PolygonPointIsInWinding(benchmark::State& state) {
    Poly poly(starPolygon(std::size_t(state.range(0)), 1000));
    poly.preprocess();
    std::vector<P> const q = randomPoints(10000, 1000, 6);
    for (auto _ : state) {
        std::size_t in = 0;
        for (P const& p : q) {
            in += poly.pointIsIn(p) ? 1 : 0;
        }
        benchmark::DoNotOptimize(in);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(q.size()));
}
BENCHMARK(BM_PolygonPointIsInWinding)->Arg(16)->Arg(1000);

void BM_AoiPointIsIn(benchmark::State& state) {
    Aoi aoi;
    for (auto const& v : convexSet(4096)) {
        aoi.add(Poly(v));
    }
    aoi.calculate();
    std::mt19937_64 rng(7);
    std::vector<math::Cpoint2<int>> q;
    for (int i = 0; i < 100000; ++i) {
        q.emplace_back(int(rng() % 4096), int(rng() % 4096));
    }
    for (auto _ : state) {
        std::size_t in = 0;
        for (auto const& p : q) {
            in += aoi.pointIsIn(p) ? 1 : 0;
        }
        benchmark::DoNotOptimize(in);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(q.size()));
}
BENCHMARK(BM_AoiPointIsIn);

void BM_AoiPointIsExactIn(benchmark::State& state) {
    Aoi aoi;
    for (auto const& v : convexSet(4096)) {
        aoi.add(Poly(v));
    }
    aoi.calculate();
    std::vector<P> const q = randomPoints(100000, 4096, 8);
    for (auto _ : state) {
        std::size_t in = 0;
        for (P const& p : q) {
            in += aoi.pointIsExactIn(p) ? 1 : 0;
        }
        benchmark::DoNotOptimize(in);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(q.size()));
}
BENCHMARK(BM_AoiPointIsExactIn);

// ---------------------------------------------------------------------------------------------
// Classification and convex polygons

struct PolyAccess : Poly {
    using Poly::isSimple;
    using Poly::Poly;
};

// A traced contour: n vertices round a blob whose radius varies smoothly, with pixel noise.
std::vector<P> contourPolygon(std::size_t n, double size) {
    std::mt19937_64 rng(11);
    double const c = size / 2;
    std::vector<P> v;
    for (std::size_t i = 0; i < n; ++i) {
        double const a = 2 * kPi * double(i) / double(n);
        double const r = c * (0.7 + 0.2 * std::sin(5 * a) + 0.05 * std::cos(17 * a)) +
                         0.5 * (uniform(rng) - 0.5);
        v.emplace_back(c + r * std::cos(a), c + r * std::sin(a));
    }
    return v;
}

void BM_PolygonIsSimple(benchmark::State& state) {
    PolyAccess poly(contourPolygon(std::size_t(state.range(0)), 100000));
    for (auto _ : state) {
        benchmark::DoNotOptimize(poly.isSimple());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PolygonIsSimple)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The unfavourable case of the x-extent pruning: long spikes sharing one x-range.
void BM_PolygonIsSimpleSpikyStar(benchmark::State& state) {
    PolyAccess poly(starPolygon(std::size_t(state.range(0)), 100000));
    for (auto _ : state) {
        benchmark::DoNotOptimize(poly.isSimple());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PolygonIsSimpleSpikyStar)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_PolygonPreprocess(benchmark::State& state) {
    std::vector<P> const v = contourPolygon(std::size_t(state.range(0)), 100000);
    for (auto _ : state) {
        Poly poly(v);
        poly.preprocess();
        benchmark::DoNotOptimize(poly.type());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PolygonPreprocess)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ConvexPoly(benchmark::State& state) {
    std::vector<P> const pts = randomPoints(std::size_t(state.range(0)), 1e4, 9);
    for (auto _ : state) {
        Poly hull = Poly::convexPoly(pts, true);
        benchmark::DoNotOptimize(hull.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
#ifdef MGEO_HAVE_OPENCV
    std::vector<cv::Point2f> cvPts;  // convexHull takes int or float points
    for (P const& p : pts) {
        cvPts.emplace_back(float(p.x), float(p.y));
    }
    std::vector<cv::Point2f> cvHull;
    double const ours = secondsPerRun([&] { Poly::convexPoly(pts, true); }, 3);
    double const theirs = secondsPerRun([&] { cv::convexHull(cvPts, cvHull); }, 3);
    state.counters["mgeo_over_cv"] = ours / theirs;
#endif
}
BENCHMARK(BM_ConvexPoly)->Arg(1000000)->Unit(benchmark::kMillisecond);

// CcvxHull2D (Graham scan) on the same 1e6 random points, with cv::convexHull side by side.
void BM_ConvexHull2D(benchmark::State& state) {
    std::vector<P> const pts = randomPoints(std::size_t(state.range(0)), 1e4, 9);
    std::vector<Cvector2<double>> vec;
    vec.reserve(pts.size());
    for (P const& p : pts) {
        vec.emplace_back(p.x, p.y);
    }
    for (auto _ : state) {
        math::CcvxHull2D<double> const hull(vec);
        benchmark::DoNotOptimize(hull.points().size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
#ifdef MGEO_HAVE_OPENCV
    std::vector<cv::Point2f> cvPts;
    for (P const& p : pts) {
        cvPts.emplace_back(float(p.x), float(p.y));
    }
    std::vector<cv::Point2f> cvHull;
    double const ours = secondsPerRun([&] { math::CcvxHull2D<double> const hull(vec); }, 3);
    double const theirs = secondsPerRun([&] { cv::convexHull(cvPts, cvHull); }, 3);
    state.counters["mgeo_over_cv"] = ours / theirs;
#endif
}
BENCHMARK(BM_ConvexHull2D)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_MinimumEnclosingRect(benchmark::State& state) {
    Poly poly(randomPoints(std::size_t(state.range(0)), 1e4, 10));
    for (auto _ : state) {
        benchmark::DoNotOptimize(poly.minimumEnclosingRect());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_MinimumEnclosingRect)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
