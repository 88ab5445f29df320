// Transformations and shape constructors: point throughput of the 3D and 2D transforms, the
// quaternion conversions, the three-point circles and the Helmert and affine estimates.
#include <benchmark/benchmark.h>
#include <math/shapes.h>
#include <math/transform2.h>
#include <math/transform3.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "support/builders.h"

namespace {

template <typename T>
std::vector<math::Cpoint3<T>> randomPoints3(std::size_t n) {
    mgeo_test::Noise rnd(1);
    std::vector<math::Cpoint3<T>> pts;
    pts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        pts.emplace_back(T(rnd(100)), T(rnd(100)), T(rnd(100)));
    }
    return pts;
}

template <typename T>
std::vector<math::Cpoint2<T>> randomPoints2(std::size_t n) {
    mgeo_test::Noise rnd(2);
    std::vector<math::Cpoint2<T>> pts;
    pts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        pts.emplace_back(T(rnd(100)), T(rnd(100)));
    }
    return pts;
}

template <typename T>
math::Cquaternion<T> someRotation() {
    double const a = 0.7;
    double const s = std::sin(a / 2) / std::sqrt(3.0);
    return math::Cquaternion<T>(T(std::cos(a / 2)), T(s), T(s), T(s));
}

// CtransPrm3::transform over a list (the output already sized after the first iteration).
template <typename T>
void BM_TransPrm3Transform(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = randomPoints3<T>(n);
    math::CtransPrm3<T> const prm(someRotation<T>(), math::Cpoint3<T>(T(1), T(2), T(3)));
    std::vector<math::Cpoint3<T>> out;
    for (auto _ : state) {
        prm.transform(pts, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
}
BENCHMARK_TEMPLATE(BM_TransPrm3Transform, float)->Arg(1000000);
BENCHMARK_TEMPLATE(BM_TransPrm3Transform, double)->Arg(1000000);

template <typename T>
void BM_TransPrm3Retransform(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = randomPoints3<T>(n);
    math::CtransPrm3<T> const prm(someRotation<T>(), math::Cpoint3<T>(T(1), T(2), T(3)));
    std::vector<math::Cpoint3<T>> out;
    for (auto _ : state) {
        prm.retransform(pts, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
}
BENCHMARK_TEMPLATE(BM_TransPrm3Retransform, double)->Arg(1000000);

// Ctransformer::transformTo with a quaternion, input to output list (cleared and refilled).
template <typename T>
void BM_TransformerTo(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = randomPoints3<T>(n);
    math::Cquaternion<T> const q = someRotation<T>();
    math::Cpoint3<T> const c(T(1), T(2), T(3));
    std::vector<math::Cpoint3<T>> out;
    for (auto _ : state) {
        math::Ctransformer<T>::transformTo(q, pts, out, c);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
}
BENCHMARK_TEMPLATE(BM_TransformerTo, double)->Arg(1000000);

// Quaternion -> matrix -> quaternion, including the rotation test.
template <typename T>
void BM_QuaternionRoundTrip(benchmark::State& state) {
    math::Cquaternion<T> q = someRotation<T>();
    for (auto _ : state) {
        q = math::matrixToQuaternion(math::quaternionToMatrix(q));
        benchmark::DoNotOptimize(q);
    }
}
BENCHMARK_TEMPLATE(BM_QuaternionRoundTrip, double);

// Building the parameters from a quaternion (two 3 × 3 matrices, findScale).
template <typename T>
void BM_TransPrm3FromQuaternion(benchmark::State& state) {
    math::Cquaternion<T> const q = someRotation<T>();
    math::Cpoint3<T> const t(T(1), T(2), T(3));
    for (auto _ : state) {
        math::CtransPrm3<T> prm(q, t);
        benchmark::DoNotOptimize(&prm);
    }
}
BENCHMARK_TEMPLATE(BM_TransPrm3FromQuaternion, double);

template <typename T>
void BM_Circle2ThreePoints(benchmark::State& state) {
    math::Cpoint2<T> const p1(T(0), T(0));
    math::Cpoint2<T> const p2(T(2), T(0.1));
    math::Cpoint2<T> const p3(T(0.2), T(2));
    for (auto _ : state) {
        math::Ccircle2<T> c(p1, p2, p3);
        benchmark::DoNotOptimize(&c);
    }
}
BENCHMARK_TEMPLATE(BM_Circle2ThreePoints, double);

// Two rotations (two CtransPrm3) per circle.
template <typename T>
void BM_Circle3ThreePoints(benchmark::State& state) {
    math::Cplane3<T> const plane(math::Cdirec3<T>(T(0.3), T(0.4), T(1)), T(-2));
    math::Cpoint3<T> const p1(T(1), T(0), T(2));
    math::Cpoint3<T> const p2(T(0), T(1), T(2));
    math::Cpoint3<T> const p3(T(-1), T(0), T(2));
    for (auto _ : state) {
        math::Ccircle3<T> c(plane, p1, p2, p3);
        benchmark::DoNotOptimize(&c);
    }
}
BENCHMARK_TEMPLATE(BM_Circle3ThreePoints, double);

template <typename T>
void BM_TransPrm2ListTransform(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const pts = randomPoints2<T>(n);
    math::CtransPrm2<T> const prm(T(0.3), math::Cpoint2<T>(T(1), T(2)),
                                  math::Cpoint2<T>(T(2), T(2)));
    std::vector<math::Cpoint2<T>> out;
    for (auto _ : state) {
        prm.transform(pts, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
}
BENCHMARK_TEMPLATE(BM_TransPrm2ListTransform, double)->Arg(1000000);

// The estimate from n point pairs: design, normal equations, LU solve.
template <typename T, typename Estimator>
void BM_Estimate(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    auto const src = randomPoints2<T>(n);
    math::CtransPrm2<T> const truth(T(0.3), math::Cpoint2<T>(T(1), T(2)),
                                    math::Cpoint2<T>(T(2), T(2)));
    std::vector<math::Cpoint2<T>> dst;
    truth.transform(src, dst);
    Estimator est;
    for (auto _ : state) {
        est.setAll(src, dst);
        math::CtransPrm2<T> prm = est.transform();
        benchmark::DoNotOptimize(&prm);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
}
BENCHMARK_TEMPLATE(BM_Estimate, double, math::Ctrans2_Helmert<double>)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(BM_Estimate, double, math::Ctrans2_Affine<double>)->Arg(1000)->Arg(100000);

}  // namespace
