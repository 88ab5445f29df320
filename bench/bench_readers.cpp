// Point readers of the mgeo tool: text and binary PLY parsing from memory. Target: ten million
// points in a few seconds at most (about 270 MB of text).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "point_reader.h"
#include "support/builders.h"

namespace {

std::string makeText(std::int64_t n) {
    mgeo_test::Noise rnd(1);
    std::string s;
    s.reserve(std::size_t(n) * 30);
    char buf[96];
    for (std::int64_t i = 0; i < n; ++i) {
        int const len =
            std::snprintf(buf, sizeof buf, "%.5f %.5f %.5f\n", rnd(100.0), rnd(100.0), rnd(40.0));
        s.append(buf, std::size_t(len));
    }
    return s;
}

std::string makePly(std::int64_t n) {
    mgeo_test::Noise rnd(2);
    std::string s = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(n) +
                    "\nproperty float x\nproperty float y\nproperty float z\nproperty uchar i\n"
                    "end_header\n";
    for (std::int64_t i = 0; i < n; ++i) {
        float const v[3] = {float(rnd(100.0)), float(rnd(100.0)), float(rnd(40.0))};
        char rec[13];
        std::memcpy(rec, v, 12);
        rec[12] = 0;
        s.append(rec, 13);
    }
    return s;
}

void BM_ReadText(benchmark::State& state) {
    std::string const text = makeText(state.range(0));
    for (auto _ : state) {
        auto const set = mgeo_app::parsePoints<double>(text, "bench");
        benchmark::DoNotOptimize(set.p3.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * std::int64_t(text.size()));
}
BENCHMARK(BM_ReadText)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kMillisecond);

void BM_ReadBinaryPly(benchmark::State& state) {
    std::string const ply = makePly(state.range(0));
    for (auto _ : state) {
        auto const set = mgeo_app::parsePoints<double>(ply, "bench");
        benchmark::DoNotOptimize(set.p3.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadBinaryPly)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kMillisecond);

}  // namespace
