// Single-pass fits and distances over 1e6 points, against the memory-bandwidth floor: a loop
// that only sums the coordinates of the same points. Counter ns_per_point.
#include <benchmark/benchmark.h>

#include <math/approximate.h>
#include <math/geometric.h>

#include <vector>

#include "support/builders.h"

namespace {

using P2 = math::Cpoint2<double>;
using P3 = math::Cpoint3<double>;
using A = math::approximate<double>;
using G = math::geometric<double>;
constexpr std::size_t kN = 1000000;

std::vector<P2> const& line2() {
    static std::vector<P2> const pts = [] {
        mgeo_test::Noise rnd(1);
        std::vector<P2> v;
        for (std::size_t i = 0; i < kN; ++i) {
            double const s = rnd(100);
            v.emplace_back(3 + 0.6 * s + rnd(0.01), -2 + 0.8 * s + rnd(0.01));
        }
        return v;
    }();
    return pts;
}

std::vector<P3> const& cloud() {
    static std::vector<P3> const pts = mgeo_test::planePoints<double>({10, 20, 30}, 1, 2, 2, 50, kN, 0.01, 2);
    return pts;
}

template <typename Body>
void perPoint(benchmark::State& state, Body body) {
    for (auto _ : state) {
        body();
    }
    state.counters["ns_per_point"] = benchmark::Counter(
        double(kN), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Floor2D(benchmark::State& state) {
    auto const& pts = line2();
    perPoint(state, [&] {
        double sx = 0, sy = 0;
        for (auto const& p : pts) sx += p.x, sy += p.y;
        benchmark::DoNotOptimize(sx + sy);
    });
}
void BM_Floor3D(benchmark::State& state) {
    auto const& pts = cloud();
    perPoint(state, [&] {
        double sx = 0, sy = 0, sz = 0;
        for (auto const& p : pts) sx += p.x, sy += p.y, sz += p.z;
        benchmark::DoNotOptimize(sx + sy + sz);
    });
}
void BM_FitLineGeom2D(benchmark::State& state) {
    math::Cline2<double> l;
    perPoint(state, [&] {
        A::fitLineGeom(line2(), l);
        benchmark::DoNotOptimize(l);
    });
}
void BM_FitLineGeom2DEigen(benchmark::State& state) {
    math::Cline2<double> l;
    math::CqLineGeom2DStdAbw<double> q{};
    perPoint(state, [&] {
        A::fitLineGeom(line2(), l, q);
        benchmark::DoNotOptimize(l);
    });
}
void BM_FitLineGeom3D(benchmark::State& state) {
    math::Cline3<double> l;
    perPoint(state, [&] {
        A::fitLineGeom(cloud(), l);
        benchmark::DoNotOptimize(l);
    });
}
void BM_FitPlaneGeom(benchmark::State& state) {
    math::Cplane3<double> p;
    perPoint(state, [&] {
        A::fitPlaneGeom(cloud(), p);
        benchmark::DoNotOptimize(p);
    });
}
void BM_FitPlaneGeomFast(benchmark::State& state) {
    math::Cplane3<double> p;
    perPoint(state, [&] {
        A::fitPlaneGeomFast(cloud(), p, math::CqPlaneGeomFast<double>{100, 1e-9});
        benchmark::DoNotOptimize(p);
    });
}
void BM_DistancePlane(benchmark::State& state) {
    math::Cplane3<double> const plane(math::Cdirec3<double>(1, 2, 2), -5);
    std::vector<double> out;
    perPoint(state, [&] {
        G::distance(plane, cloud(), out);
        benchmark::DoNotOptimize(out.data());
    });
}
void BM_DistanceCylinder(benchmark::State& state) {
    math::Ccylinder3<double> const cyl(P3(0, 0, 0), math::Cdirec3<double>(0, 0, 1), 5);
    std::vector<double> out;
    perPoint(state, [&] {
        G::distance(cyl, cloud(), out);
        benchmark::DoNotOptimize(out.data());
    });
}
void BM_DistanceLine(benchmark::State& state) {
    math::Cline3<double> const line(P3(0, 0, 0), math::Cdirec3<double>(1, 1, 0));
    std::vector<double> out;
    perPoint(state, [&] {
        G::distance(line, cloud(), out);
        benchmark::DoNotOptimize(out.data());
    });
}
void BM_DistanceEllipse(benchmark::State& state) {
    math::Cellipse2<double> const e(P2(3, -2), 80, 40, 0.3);
    std::vector<double> out;
    perPoint(state, [&] {
        G::distance(e, line2(), out);
        benchmark::DoNotOptimize(out.data());
    });
}

BENCHMARK(BM_Floor2D)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Floor3D)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FitLineGeom2D)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FitLineGeom2DEigen)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FitLineGeom3D)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FitPlaneGeom)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FitPlaneGeomFast)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DistancePlane)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DistanceCylinder)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DistanceLine)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DistanceEllipse)->Unit(benchmark::kMillisecond);

}  // namespace
