// Circle and sphere fits at 1e3, 1e5 and 1e6 noisy points (fixed seed), with a plain reference
// Gauss-Newton on 3 × 3 / 4 × 4 normal equations for the 2D circle and the sphere.
// Counters: iterations of the fit, ns per point per iteration, peak heap bytes per point.
#include <benchmark/benchmark.h>

#include <math/approximate.h>

#include <chrono>
#include <cmath>
#include <vector>

#include "alloc_counter.h"
#include "support/builders.h"

namespace {

using P2 = math::Cpoint2<double>;
using P3 = math::Cpoint3<double>;
using A = math::approximate<double>;

std::vector<P2> circleData(std::size_t n) {
    return mgeo_test::circlePoints<double>(120, -40, 35, n, 2 * mgeo_test::kPi, 0.05, 1);
}
std::vector<P3> sphereData(std::size_t n) {
    return mgeo_test::spherePoints<double>({50, 60, -20}, 25, n, 0.05, 2);
}

// The iterations a fit needs: the smallest maxItr with a valid result, minus one (a fit
// converging after c steps is valid exactly when maxItr > c).
template <typename Fit>
int iterationsOf(Fit fit) {
    for (int m = 1; m < 200; ++m) {
        if (fit(static_cast<unsigned long long>(m))) {
            return m - 1;
        }
    }
    return -1;
}

template <typename Run>
void report(benchmark::State& state, std::size_t n, int iterations, Run run) {
    std::size_t const base = mgeo_bench::resetPeak();
    run();
    double const peak = double(mgeo_bench::peakBytes() - base);
    double seconds = 0;
    for (auto _ : state) {
        auto const t0 = std::chrono::steady_clock::now();
        run();
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    }
    double const perFit = seconds / double(state.iterations());
    state.counters["iterations"] = iterations;
    state.counters["ns_per_point_iter"] =
        iterations > 0 ? perFit * 1e9 / (double(n) * iterations) : perFit * 1e9 / double(n);
    state.counters["peak_bytes_per_point"] = peak / double(n);
}

void BM_CircleGeom2D(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = circleData(n);
    math::Ccircle2<double> c;
    int const it = iterationsOf([&](unsigned long long m) {
        A::fitCircleGeom(pts, c, math::CqCircleGeom2D<double>{m, 1e-9, 1e-9, 1e-9});
        return c.isValid();
    });
    report(state, n, it, [&] {
        A::fitCircleGeom(pts, c, math::CqCircleGeom2D<double>{100, 1e-9, 1e-9, 1e-9});
        benchmark::DoNotOptimize(c);
    });
}

void BM_CircleLsq(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = circleData(n);
    math::Ccircle2<double> c;
    report(state, n, 0, [&] {
        A::fitCircleLsq(pts, c);
        benchmark::DoNotOptimize(c);
    });
}

void BM_CircleLsqBeta(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = circleData(n);
    math::Ccircle2<double> c;
    report(state, n, 0, [&] {
        A::fitCircleLsqBeta(pts, c);
        benchmark::DoNotOptimize(c);
    });
}

void BM_CircleGeom3D(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const flat = circleData(n);
    std::vector<P3> pts;
    for (auto const& p : flat) pts.emplace_back(p.x, 0.6 * p.y, 0.8 * p.y);  // plane tilted about x
    math::Cplane3<double> const plane(math::Cdirec3<double>(0, -0.8, 0.6), 0);
    math::Ccircle3<double> c(plane, P3(120, -24, -32), 1);
    report(state, n, 0, [&] {
        math::Ccircle3<double> fitted(plane, P3(120, -24, -32), 1);
        A::fitCircleGeom(pts, fitted, math::CqCircleGeom3D<double>{100, 1e-9, 1e-9, 1e-9});
        benchmark::DoNotOptimize(fitted);
    });
}

void BM_SphereGeom(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = sphereData(n);
    math::Csphere3<double> s;
    int const it = iterationsOf([&](unsigned long long m) {
        A::fitSphereGeom(pts, s, math::CqSphereGeom<double>{m, 1e-9, 1e-9, 1e-9, 1e-9});
        return s.isValid();
    });
    report(state, n, it, [&] {
        A::fitSphereGeom(pts, s, math::CqSphereGeom<double>{100, 1e-9, 1e-9, 1e-9, 1e-9});
        benchmark::DoNotOptimize(s);
    });
}

void BM_SphereGeomRfix(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = sphereData(n);
    math::Csphere3<double> s(P3(0, 0, 0), 25);
    report(state, n, 0, [&] {
        math::Csphere3<double> fitted(P3(0, 0, 0), 25);
        A::fitSphereGeomRfix(pts, fitted, math::CqSphereGeomRfix<double>{100, 1e-9, 1e-9, 1e-9});
        benchmark::DoNotOptimize(fitted);
    });
}

void BM_SphereLsq(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = sphereData(n);
    math::Csphere3<double> s;
    report(state, n, 0, [&] {
        A::fitSphereLsq(pts, s);
        benchmark::DoNotOptimize(s);
    });
}

// Plain Gauss-Newton on the normal equations J^T J delta = J^T e (the same rows and residuals),
// solved by Gaussian elimination: the speed reference.
template <std::size_t D, typename P>
int referenceGaussNewton(std::vector<P> const& pts, double& r, double* c) {
    constexpr std::size_t K = D + 1;
    for (int it = 1; it <= 100; ++it) {
        double n[K][K + 1] = {};
        for (P const& p : pts) {
            double q[D], s = 0;
            for (std::size_t j = 0; j < D; ++j) {
                q[j] = p[j] - c[j];
                s += q[j] * q[j];
            }
            double const k = 1 / std::sqrt(s);
            for (std::size_t j = 0; j < D; ++j) {
                double row[K];
                row[0] = k * q[j];
                for (std::size_t l = 0; l < D; ++l)
                    row[1 + l] = l == j ? 1 - (1 - k * k * q[j] * q[j]) * k * r : k * k * k * r * q[j] * q[l];
                double const e = q[j] - k * r * q[j];
                for (std::size_t a = 0; a < K; ++a) {
                    for (std::size_t b = 0; b < K; ++b) n[a][b] += row[a] * row[b];
                    n[a][K] += row[a] * e;
                }
            }
        }
        for (std::size_t a = 0; a < K; ++a)
            for (std::size_t b = a + 1; b < K; ++b) {
                double const f = n[b][a] / n[a][a];
                for (std::size_t k2 = a; k2 <= K; ++k2) n[b][k2] -= f * n[a][k2];
            }
        double delta[K];
        for (std::size_t a = K; a-- > 0;) {
            double s = n[a][K];
            for (std::size_t b = a + 1; b < K; ++b) s -= n[a][b] * delta[b];
            delta[a] = s / n[a][a];
        }
        r += delta[0];
        bool done = std::fabs(delta[0]) <= 1e-9;
        for (std::size_t l = 0; l < D; ++l) {
            c[l] += delta[1 + l];
            done = done && std::fabs(delta[1 + l]) <= 1e-9;
        }
        if (done) return it;
    }
    return 100;
}

void BM_ReferenceCircleNormalEquations(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = circleData(n);
    int iterations = 0;
    report(state, n, 0, [&] {
        double c[2] = {0, 0}, r = 0;
        for (auto const& p : pts) c[0] += p.x, c[1] += p.y;
        c[0] /= double(n), c[1] /= double(n);
        for (auto const& p : pts) r += (p.x - c[0]) * (p.x - c[0]) + (p.y - c[1]) * (p.y - c[1]);
        r = std::sqrt(r / double(n));
        iterations = referenceGaussNewton<2>(pts, r, c);
        benchmark::DoNotOptimize(r);
    });
    state.counters["iterations"] = iterations;
}

void BM_ReferenceSphereNormalEquations(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = sphereData(n);
    int iterations = 0;
    report(state, n, 0, [&] {
        double c[3] = {0, 0, 0}, r = 0;
        for (auto const& p : pts) c[0] += p.x, c[1] += p.y, c[2] += p.z;
        for (double& v : c) v /= double(n);
        for (auto const& p : pts)
            r += (p.x - c[0]) * (p.x - c[0]) + (p.y - c[1]) * (p.y - c[1]) + (p.z - c[2]) * (p.z - c[2]);
        r = std::sqrt(r / double(n));
        iterations = referenceGaussNewton<3>(pts, r, c);
        benchmark::DoNotOptimize(r);
    });
    state.counters["iterations"] = iterations;
}

#define MGEO_SIZES ->Arg(1000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_CircleLsq) MGEO_SIZES;
BENCHMARK(BM_CircleLsqBeta) MGEO_SIZES;
BENCHMARK(BM_CircleGeom2D) MGEO_SIZES;
BENCHMARK(BM_ReferenceCircleNormalEquations) MGEO_SIZES;
BENCHMARK(BM_CircleGeom3D) MGEO_SIZES;
BENCHMARK(BM_SphereLsq) MGEO_SIZES;
BENCHMARK(BM_SphereGeom) MGEO_SIZES;
BENCHMARK(BM_ReferenceSphereNormalEquations) MGEO_SIZES;
BENCHMARK(BM_SphereGeomRfix) MGEO_SIZES;

}  // namespace
