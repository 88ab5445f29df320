// Peak heap tracking for the benchmarks: the program's operator new/delete count live bytes.
#pragma once

#include <cstddef>

namespace mgeo_bench {
// Resets the peak to the current live size and returns the live size.
std::size_t resetPeak();
// Peak live bytes since the last reset.
std::size_t peakBytes();
}  // namespace mgeo_bench
