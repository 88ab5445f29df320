// Cylinder fits at 1e3 ... 1e6 points (above 1e4 with the coarse pass on every (n / 5000)-th
// point) and ellipse fits at 1e2, 1e4 and 1e6 points, noisy data with fixed seeds, double.
// Counters: iterations of the fit (for the cylinder: of the pass over all points), ns per
// point, peak heap bytes per point (the points themselves excluded). When OpenCV is found,
// cv::fitEllipse and cv::fitEllipseAMS run on the same points, and every ellipse row reports
// the StdAbwEllipse of its result, so the table shows what the geometric fit buys.
#include <benchmark/benchmark.h>
#include <math/approximate.h>

#include <chrono>
#include <cmath>
#include <vector>

#include "alloc_counter.h"
#include "support/builders.h"

#ifdef MGEO_BENCH_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using P2 = math::Cpoint2<double>;
using P3 = math::Cpoint3<double>;
using A = math::approximate<double>;

// A 240 degree arc of a tilted cylinder, radius 20, length 60, noise 0.01.
std::vector<P3> cylinderData(std::size_t n) {
    return mgeo_test::cylinderPoints<double>({10, -20, 5}, 0.3, 0.4, 1, 20, 60, n,
                                             4 * mgeo_test::kPi / 3, 0.01, 5);
}

// The ellipse (cx, cy) = (40, -15), a = 30, b = 12, turned by 0.6, noise 0.05: all of it, or
// (half) the arc t in [0, pi).
std::vector<P2> ellipseData(std::size_t n, bool half = false) {
    return mgeo_test::ellipsePoints<double>(40, -15, 30, 12, 0.6, n,
                                            (half ? 1 : 2) * mgeo_test::kPi, 0.05, 6);
}

// Times `run`, which returns the iteration count of the fit it made.
template <typename Run>
void report(benchmark::State& state, std::size_t n, Run run) {
    std::size_t const base = mgeo_bench::resetPeak();
    int const iterations = run();
    double const peak = double(mgeo_bench::peakBytes() - base);
    double seconds = 0;
    for (auto _ : state) {
        auto const t0 = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(run());
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    }
    state.counters["iterations"] = iterations;
    state.counters["ns_per_point"] = seconds * 1e9 / (double(state.iterations()) * double(n));
    state.counters["peak_bytes_per_point"] = peak / double(n);
}

// The steps of a fit: the smallest maxItr with a valid result, minus one (a fit converging in
// c steps is valid exactly when maxItr > c). Runs outside the timed loop.
template <typename Fit>
int stepsOf(Fit fit) {
    for (unsigned long long m = 1; m < 200; ++m) {
        if (fit(m)) {
            return int(m - 1);
        }
    }
    return -1;
}

// --- Cylinders -------------------------------------------------------------------------------

constexpr double kCylTol = 1e-9;

void BM_InitValCylinder(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = cylinderData(n);
    report(state, n, [&] {
        math::Ccylinder3<double> c;
        A::initValCylinder(pts, c);
        benchmark::DoNotOptimize(c);
        return 0;
    });
}

void BM_CylinderGeom(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = cylinderData(n);
    math::Ccylinder3<double> start;
    A::initValCylinder(pts, start);
    int const steps = stepsOf([&](unsigned long long m) {
        math::Ccylinder3<double> c = start;
        A::fitCylinderGeom(pts, c,
                           {m, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol});
        return c.isValid();
    });
    report(state, n, [&] {
        math::Ccylinder3<double> c = start;
        A::fitCylinderGeom(pts, c,
                           {100, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol});
        if (!c.isValid()) {
            state.SkipWithError("cylinder fit failed");
        }
        return steps;
    });
}

void BM_CylinderGeomRfix(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = cylinderData(n);
    math::Ccylinder3<double> trial;
    A::initValCylinder(pts, trial);
    math::Ccylinder3<double> const start(trial.point(), trial.axis(), 20.0);
    int const steps = stepsOf([&](unsigned long long m) {
        math::Ccylinder3<double> c = start;
        A::fitCylinderGeomRfix(pts, c, {m, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol});
        return c.isValid();
    });
    report(state, n, [&] {
        math::Ccylinder3<double> c = start;
        A::fitCylinderGeomRfix(pts, c, {100, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol, kCylTol});
        if (!c.isValid()) {
            state.SkipWithError("cylinder fit failed");
        }
        return steps;
    });
}

// --- Ellipses --------------------------------------------------------------------------------

constexpr double kEllTol = 1e-9;

void BM_EllipseGeom(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = ellipseData(n, state.range(1) != 0);
    math::Cellipse2<double> e;
    int const steps = stepsOf([&](unsigned long long m) {
        A::fitEllipseGeom(pts, e, {m, kEllTol, kEllTol, kEllTol, kEllTol, kEllTol});
        return e.isValid();
    });
    report(state, n, [&] {
        A::fitEllipseGeom(pts, e, {200, kEllTol, kEllTol, kEllTol, kEllTol, kEllTol});
        benchmark::DoNotOptimize(e);
        return steps;
    });
    state.counters["stdAbw"] = A::StdAbwEllipse(pts, e);
}

void BM_EllipseGeomLM(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = ellipseData(n, state.range(1) != 0);
    math::Cellipse2<double> e;
    int const steps = stepsOf([&](unsigned long long m) {
        math::CqEllipseGeomLM<double> q{m, kEllTol, kEllTol, kEllTol, kEllTol, kEllTol, 0};
        A::fitEllipseGeomLM(pts, e, q);
        return e.isValid();
    });
    report(state, n, [&] {
        math::CqEllipseGeomLM<double> q{200, kEllTol, kEllTol, kEllTol, kEllTol, kEllTol, 0};
        A::fitEllipseGeomLM(pts, e, q);
        benchmark::DoNotOptimize(e);
        return steps;
    });
    state.counters["stdAbw"] = A::StdAbwEllipse(pts, e);
}

#ifdef MGEO_BENCH_HAVE_OPENCV
// cv::RotatedRect (centre, full axis lengths, angle in degrees) as an ellipse.
math::Cellipse2<double> fromRotatedRect(cv::RotatedRect const& r) {
    return math::Cellipse2<double>(P2(r.center.x, r.center.y), 0.5 * r.size.width,
                                   0.5 * r.size.height, r.angle * mgeo_test::kPi / 180.0);
}

template <typename CvFit>
void cvEllipse(benchmark::State& state, CvFit fit) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = ellipseData(n);
    std::vector<cv::Point2f> cvPts;
    cvPts.reserve(n);
    for (P2 const& p : pts) {
        cvPts.emplace_back(float(p.x), float(p.y));
    }
    cv::RotatedRect r;
    report(state, n, [&] {
        r = fit(cvPts);
        benchmark::DoNotOptimize(r);
        return 0;
    });
    state.counters["stdAbw"] = A::StdAbwEllipse(pts, fromRotatedRect(r));
}

void BM_CvFitEllipse(benchmark::State& state) {
    cvEllipse(state, [](std::vector<cv::Point2f> const& p) { return cv::fitEllipse(p); });
}
void BM_CvFitEllipseAMS(benchmark::State& state) {
    cvEllipse(state, [](std::vector<cv::Point2f> const& p) { return cv::fitEllipseAMS(p); });
}
BENCHMARK(BM_CvFitEllipse)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CvFitEllipseAMS)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(BM_InitValCylinder)->Arg(1000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CylinderGeom)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CylinderGeomRfix)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EllipseGeom)
    ->ArgsProduct({{100, 10000, 1000000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EllipseGeomLM)
    ->ArgsProduct({{100, 10000, 1000000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
