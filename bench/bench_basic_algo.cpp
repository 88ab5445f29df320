// Robust statistics, point-cloud cutting and the convex hull:
//  - median (selection) and stdmedian (sort) on 1e6 values, random and already sorted;
//  - the partition passes themselves on sorted input with a NaN (where no shortcut applies),
//    to show their quadratic growth;
//  - cutPointCloud on 1e7 points against a plain copy loop of the same points;
//  - CcvxHull2D on 1e6 random points.
#include <benchmark/benchmark.h>
#include <math/basic_algo.h>
#include <math/convex_hull.h>
#include <math/tools.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/builders.h"

namespace {

std::vector<double> values(std::size_t n, bool sorted) {
    mgeo_test::Noise rnd(1);
    std::vector<double> v(n);
    for (double& x : v) x = rnd(1000);
    if (sorted)
        std::sort(v.begin(), v.end());
    return v;
}

void BM_Median(benchmark::State& state) {
    std::vector<double> const v = values(1000000, state.range(0) != 0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(math::BasicAlgo<double>::median(v));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(v.size()));
    state.SetLabel(state.range(0) ? "sorted" : "random");
}
BENCHMARK(BM_Median)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_StdMedian(benchmark::State& state) {
    std::vector<double> const v = values(1000000, state.range(0) != 0);
    std::vector<double> work;
    for (auto _ : state) {
        state.PauseTiming();
        work = v;
        state.ResumeTiming();
        benchmark::DoNotOptimize(math::BasicAlgo<double>::stdmedian(work));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(v.size()));
    state.SetLabel(state.range(0) ? "sorted" : "random");
}
BENCHMARK(BM_StdMedian)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Sorted values with a NaN at the end: the passes peel one value each (quadratic).
void BM_MedianPartitionPassesSorted(benchmark::State& state) {
    std::vector<double> v = values(static_cast<std::size_t>(state.range(0)), true);
    v.back() = std::numeric_limits<double>::quiet_NaN();
    for (auto _ : state) {
        benchmark::DoNotOptimize(math::BasicAlgo<double>::median(v));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_MedianPartitionPassesSorted)->Arg(10000)->Arg(30000)->Unit(benchmark::kMillisecond);

using Cloud = CbaseVecN<math::Cpoint3<double>>;

// 1e7 points uniform in [-1, 1)^3; each cut below keeps roughly half of them.
Cloud const& cloud() {
    static Cloud const c = [] {
        mgeo_test::Noise rnd(2);
        Cloud out;
        out.reserve(10000000);
        for (std::size_t i = 0; i < 10000000; ++i) {
            out.push_back(math::Cpoint3<double>(rnd(1), rnd(1), rnd(1)));
        }
        return out;
    }();
    return c;
}

template <typename Cut>
void runCut(benchmark::State& state, Cut cut) {
    Cloud const& in = cloud();
    Cloud out;
    for (auto _ : state) {
        cut(in, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(in.size()));
    state.counters["kept"] = static_cast<double>(out.size());
}

// The baseline: copy every point with the same container operations.
void BM_CopyLoop(benchmark::State& state) {
    runCut(state, [](Cloud const& in, Cloud& out) {
        out.clear();
        for (auto const& p : in) out.push_back(p);
    });
}
BENCHMARK(BM_CopyLoop)->Unit(benchmark::kMillisecond);

void BM_CutSphere(benchmark::State& state) {
    math::Csphere3<double> const s(math::Cpoint3<double>(0, 0, 0), 0.8);
    runCut(state, [&](Cloud const& in, Cloud& out) {
        math::tools<double>::cutPointCloud(s, 0.2, in, out);
    });
}
BENCHMARK(BM_CutSphere)->Unit(benchmark::kMillisecond);

void BM_CutLine(benchmark::State& state) {
    math::Cline3<double> const l(math::Cpoint3<double>(0, 0, 0), math::Cdirec3<double>(0, 0, 1));
    runCut(state, [&](Cloud const& in, Cloud& out) {
        math::tools<double>::cutPointCloud(l, 0.8, in, out);
    });
}
BENCHMARK(BM_CutLine)->Unit(benchmark::kMillisecond);

void BM_CutPlane(benchmark::State& state) {
    math::Cplane3<double> const e(math::Cdirec3<double>(0, 0, 1), 0);
    runCut(state, [&](Cloud const& in, Cloud& out) {
        math::tools<double>::cutPointCloud(e, 0.5, in, out);
    });
}
BENCHMARK(BM_CutPlane)->Unit(benchmark::kMillisecond);

void BM_CutBox(benchmark::State& state) {
    math::CboundingBox3<double> const b(math::Cpoint3<double>(-0.9, -0.9, -0.5),
                                        math::Cpoint3<double>(0.9, 0.9, 0.5));
    runCut(state,
           [&](Cloud const& in, Cloud& out) { math::tools<double>::cutPointCloud(b, in, out); });
}
BENCHMARK(BM_CutBox)->Unit(benchmark::kMillisecond);

// Hull of 1e6 points uniform in a disc (about n^(1/3) hull vertices).
template <typename T>
void BM_ConvexHull(benchmark::State& state) {
    mgeo_test::Noise rnd(3);
    std::vector<Cvector2<T>> pts;
    while (pts.size() < 1000000) {
        double const x = rnd(1), y = rnd(1);
        if (x * x + y * y < 1)
            pts.emplace_back(T(x * 1e6), T(y * 1e6));
    }
    std::size_t vertices = 0;
    for (auto _ : state) {
        math::CcvxHull2D<T> const hull(pts);
        vertices = hull.points().size();
        benchmark::DoNotOptimize(hull.points().data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(pts.size()));
    state.counters["vertices"] = static_cast<double>(vertices);
}
BENCHMARK_TEMPLATE(BM_ConvexHull, double)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_ConvexHull, int)->Unit(benchmark::kMillisecond);

}  // namespace
