// Linear algebra: LU and SVD solves, SVD least squares on tall design matrices, symmetric
// eigen decomposition and the matrix product. When Eigen 3 is found the same cases run on the
// same data through Eigen (dynamic-size types), and a table of the ratios mgeo / Eigen follows
// the usual output.
//   cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DMGEO_BUILD_BENCH=ON
//   cmake --build build-bench -j2 && build-bench/bench/bench_linalg
#include <benchmark/benchmark.h>
#include <math/matrix.h>
#include <math/matrix_calc.h>
#include <math/solver_le.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef MGEO_BENCH_HAVE_EIGEN
#include <Eigen/Dense>
#include <Eigen/SVD>
#endif

namespace {

using Mat = math::Cmatrix<double>;

// Uniform entries in [-1, 1), plus `diag` on the diagonal (well conditioned for diag >= n).
Mat randomMatrix(std::size_t m, std::size_t n, std::uint64_t seed, double diag = 0) {
    std::mt19937_64 rng(seed);
    Mat a(m, n);
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < n; ++j)
            a(i, j) = 2.0 * double(rng() >> 11) * 0x1.0p-53 - 1.0 + (i == j ? diag : 0.0);
    return a;
}

Mat randomSymmetric(std::size_t n, std::uint64_t seed) {
    Mat a = randomMatrix(n, n, seed);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < i; ++j) a(j, i) = a(i, j);
    return a;
}

// Design matrix of the linearised circle fit: 2n × 3, rows (1, 0, cos t), (0, 1, sin t) with
// noise, as the iterative circle fit builds it.
Mat tallDesign(std::size_t points, std::uint64_t seed) {
    std::mt19937_64 rng(seed);
    Mat a(2 * points, 3);
    for (std::size_t i = 0; i < points; ++i) {
        double const t = 6.283185307179586 * double(i) / double(points);
        double const e = 1e-3 * (2.0 * double(rng() >> 11) * 0x1.0p-53 - 1.0);
        a(2 * i, 0) = 1.0;
        a(2 * i, 1) = e;
        a(2 * i, 2) = std::cos(t);
        a(2 * i + 1, 0) = -e;
        a(2 * i + 1, 1) = 1.0;
        a(2 * i + 1, 2) = std::sin(t);
    }
    return a;
}

std::vector<double> randomVector(std::size_t n, std::uint64_t seed) {
    Mat b = randomMatrix(n, 1, seed);
    return std::vector<double>(b.getBase(), b.getBase() + n);
}

// ---------------------------------------------------------------- mgeo

void mgeo_LuSolve(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    Mat const a = randomMatrix(n, n, 1, double(n));
    std::vector<double> const b = randomVector(n, 2);
    for (auto _ : state) {
        math::Csolver_luDecomp<double> lu(a);
        Mat x = lu.solve(b);
        benchmark::DoNotOptimize(x.getBase());
    }
}

void mgeo_SvdSolve(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    Mat const a = randomMatrix(n, n, 1, double(n));
    std::vector<double> const b = randomVector(n, 2);
    for (auto _ : state) {
        math::Csolver_svd<double> svd(a);
        Mat x = svd.solve(b);
        benchmark::DoNotOptimize(x.getBase());
    }
}

void mgeo_SvdLeastSquares(benchmark::State& state) {
    auto const points = static_cast<std::size_t>(state.range(0));
    Mat const a = tallDesign(points, 3);
    std::vector<double> const b = randomVector(2 * points, 4);
    for (auto _ : state) {
        math::Csolver_svd<double> svd(a);
        Mat x = svd.solve(b);
        benchmark::DoNotOptimize(x.getBase());
    }
}

void mgeo_Eigenvalue(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    Mat const a0 = randomSymmetric(n, 5);
    for (auto _ : state) {
        Mat a = a0;
        Mat v;
        math::CmatrixCalc<double>::getEigenvalue(a, v);
        benchmark::DoNotOptimize(v.getBase());
    }
}

void mgeo_Product(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    Mat const a = randomMatrix(n, n, 6), b = randomMatrix(n, n, 7);
    for (auto _ : state) {
        Mat p = a * b;
        benchmark::DoNotOptimize(p.getBase());
    }
}

#define MGEO_SQUARE_SIZES ->Arg(3)->Arg(4)->Arg(6)->Arg(10)->Arg(50)->Arg(200)
BENCHMARK(mgeo_LuSolve) MGEO_SQUARE_SIZES;
BENCHMARK(mgeo_SvdSolve) MGEO_SQUARE_SIZES;
BENCHMARK(mgeo_SvdLeastSquares)
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(mgeo_Eigenvalue)->Arg(3)->Arg(50);
BENCHMARK(mgeo_Product)->Arg(3)->Arg(200);

// ---------------------------------------------------------------- Eigen, same data

#ifdef MGEO_BENCH_HAVE_EIGEN
using EMat = Eigen::MatrixXd;
using EVec = Eigen::VectorXd;

EMat toEigen(Mat const& a) {
    EMat e(static_cast<Eigen::Index>(a.m()), static_cast<Eigen::Index>(a.n()));
    for (std::size_t i = 0; i < a.m(); ++i)
        for (std::size_t j = 0; j < a.n(); ++j)
            e(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)) = a(i, j);
    return e;
}

EVec toEigen(std::vector<double> const& b) {
    EVec e(static_cast<Eigen::Index>(b.size()));
    for (std::size_t i = 0; i < b.size(); ++i) e(static_cast<Eigen::Index>(i)) = b[i];
    return e;
}

void eigen_LuSolve(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    EMat const a = toEigen(randomMatrix(n, n, 1, double(n)));
    EVec const b = toEigen(randomVector(n, 2));
    for (auto _ : state) {
        Eigen::PartialPivLU<EMat> lu(a);
        EVec x = lu.solve(b);
        benchmark::DoNotOptimize(x.data());
    }
}

void eigen_SvdSolve(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    EMat const a = toEigen(randomMatrix(n, n, 1, double(n)));
    EVec const b = toEigen(randomVector(n, 2));
    for (auto _ : state) {
        EVec x;
        if (n <= 16) {
            Eigen::JacobiSVD<EMat> svd(a, Eigen::ComputeThinU | Eigen::ComputeThinV);
            x = svd.solve(b);
        } else {
            Eigen::BDCSVD<EMat> svd(a, Eigen::ComputeThinU | Eigen::ComputeThinV);
            x = svd.solve(b);
        }
        benchmark::DoNotOptimize(x.data());
    }
}

void eigen_SvdLeastSquares(benchmark::State& state) {
    auto const points = static_cast<std::size_t>(state.range(0));
    EMat const a = toEigen(tallDesign(points, 3));
    EVec const b = toEigen(randomVector(2 * points, 4));
    for (auto _ : state) {
        Eigen::JacobiSVD<EMat> svd(a, Eigen::ComputeThinU | Eigen::ComputeThinV);
        EVec x = svd.solve(b);
        benchmark::DoNotOptimize(x.data());
    }
}

void eigen_Eigenvalue(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    EMat const a = toEigen(randomSymmetric(n, 5));
    for (auto _ : state) {
        Eigen::SelfAdjointEigenSolver<EMat> es(a);
        benchmark::DoNotOptimize(es.eigenvectors().data());
    }
}

void eigen_Product(benchmark::State& state) {
    auto const n = static_cast<std::size_t>(state.range(0));
    EMat const a = toEigen(randomMatrix(n, n, 6)), b = toEigen(randomMatrix(n, n, 7));
    for (auto _ : state) {
        EMat p(a.rows(), b.cols());
        p.noalias() = a * b;
        benchmark::DoNotOptimize(p.data());
    }
}

BENCHMARK(eigen_LuSolve) MGEO_SQUARE_SIZES;
BENCHMARK(eigen_SvdSolve) MGEO_SQUARE_SIZES;
BENCHMARK(eigen_SvdLeastSquares)
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(eigen_Eigenvalue)->Arg(3)->Arg(50);
BENCHMARK(eigen_Product)->Arg(3)->Arg(200);
#endif

// Console output as usual, then the ratio mgeo / Eigen of the CPU times per case (cases named
// mgeo_X/arg and eigen_X/arg).
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.iterations == 0)
                continue;
            std::string const name = run.benchmark_name();
            double const ns =
                run.GetAdjustedCPUTime() * (run.time_unit == benchmark::kMillisecond   ? 1e6
                                            : run.time_unit == benchmark::kMicrosecond ? 1e3
                                                                                       : 1.0);
            if (name.rfind("mgeo_", 0) == 0)
                m_mgeo[name.substr(5)] = ns;
            if (name.rfind("eigen_", 0) == 0)
                m_eigen[name.substr(6)] = ns;
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-28s %14s %14s %8s\n", "case", "mgeo ns", "Eigen ns", "ratio");
        for (auto const& [name, ns] : m_mgeo) {
            auto const it = m_eigen.find(name);
            if (it == m_eigen.end()) {
                std::printf("%-28s %14.0f %14s %8s\n", name.c_str(), ns, "-", "-");
            } else {
                std::printf("%-28s %14.0f %14.0f %8.2f\n", name.c_str(), ns, it->second,
                            ns / it->second);
            }
        }
    }

private:
    std::map<std::string, double> m_mgeo;
    std::map<std::string, double> m_eigen;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
