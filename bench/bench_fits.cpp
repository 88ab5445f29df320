// Benchmarks: filled in by the family's work.
#include <benchmark/benchmark.h>
