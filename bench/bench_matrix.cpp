// Matrix product and transpose, against a plain triple loop.
#include <benchmark/benchmark.h>

#include <math/matrix.h>

#include <random>
#include <vector>

namespace {

math::Cmatrix<double> randomMatrix(std::size_t m, std::size_t n, unsigned seed) {
    std::mt19937_64 rng(seed);
    math::Cmatrix<double> a(m, n);
    for (std::size_t k = 0; k < a.size(); ++k) a.getBase()[k] = double(rng() >> 11) * 0x1.0p-53;
    return a;
}

void BM_MatrixProduct(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    math::Cmatrix<double> a = randomMatrix(n, n, 1), b = randomMatrix(n, n, 2);
    for (auto _ : state) {
        math::Cmatrix<double> p = a * b;
        benchmark::DoNotOptimize(p.getBase());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n * n * n));
}
BENCHMARK(BM_MatrixProduct)->Arg(16)->Arg(128)->Arg(512);

// The textbook (i, j, k) loop, for comparison.
void BM_NaiveProduct(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    math::Cmatrix<double> a = randomMatrix(n, n, 1), b = randomMatrix(n, n, 2);
    for (auto _ : state) {
        math::Cmatrix<double> p(n, n);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) {
                double s = 0;
                for (std::size_t k = 0; k < n; ++k) s += a(i, k) * b(k, j);
                p(i, j) = s;
            }
        benchmark::DoNotOptimize(p.getBase());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n * n * n));
}
BENCHMARK(BM_NaiveProduct)->Arg(16)->Arg(128)->Arg(512);

void BM_Transpose(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    math::Cmatrix<double> a = randomMatrix(n, n, 3);
    for (auto _ : state) {
        math::Cmatrix<double> t = a.transp();
        benchmark::DoNotOptimize(t.getBase());
    }
}
BENCHMARK(BM_Transpose)->Arg(512);

}  // namespace
