// A merge sort that stays in bounds for any comparator.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace math::detail {

// Sorts v[begin, v.size()) ascending by `less`: runs of 16 by insertion sort, then merged
// pairwise bottom-up through one buffer of the same length (stable: on ties the left run
// wins). Every loop is bounded by index arithmetic alone, so the sort ends and stays in bounds
// whatever `less` answers; a comparator that is no strict weak ordering (orientation tests
// spoilt by rounding, NaN coordinates) yields some permutation of the input, never a crash.
// Cost O(n log n) comparisons, n extra elements of memory.
template <typename V, typename Less>
void robustSort(std::vector<V>& v, std::size_t begin, Less less) {
    std::size_t const end = v.size();
    if (end <= begin + 1) {
        return;
    }
    std::size_t const n = end - begin;
    constexpr std::size_t kRun = 16;

    // Insertion sort of each run [lo, hi); the inner loop stops at lo by its index test.
    for (std::size_t lo = begin; lo < end; lo += kRun) {
        std::size_t const hi = (end - lo < kRun) ? end : lo + kRun;
        for (std::size_t i = lo + 1; i < hi; ++i) {
            V tmp = std::move(v[i]);
            std::size_t j = i;
            while (j > lo && less(tmp, v[j - 1])) {
                v[j] = std::move(v[j - 1]);
                --j;
            }
            v[j] = std::move(tmp);
        }
    }
    if (n <= kRun) {
        return;
    }

    // Merge runs of width w from src into dst, doubling w and swapping the roles each pass;
    // the first pass reads a copy of the sorted runs.
    std::vector<V> buffer(v.begin() + static_cast<std::ptrdiff_t>(begin), v.end());
    V* src = buffer.data();
    V* dst = v.data() + begin;
    for (std::size_t w = kRun; w < n; w *= 2) {
        for (std::size_t lo = 0; lo < n; lo += 2 * w) {
            std::size_t const mid = (n - lo < w) ? n : lo + w;
            std::size_t const hi = (n - mid < w) ? n : mid + w;
            std::size_t i = lo;
            std::size_t j = mid;
            std::size_t k = lo;
            while (i < mid && j < hi) {
                dst[k++] = less(src[j], src[i]) ? src[j++] : src[i++];
            }
            while (i < mid) {
                dst[k++] = src[i++];
            }
            while (j < hi) {
                dst[k++] = src[j++];
            }
        }
        std::swap(src, dst);
    }
    // After the last pass the sorted data is in src.
    if (src != v.data() + begin) {
        for (std::size_t i = 0; i < n; ++i) {
            v[begin + i] = std::move(src[i]);
        }
    }
}

}  // namespace math::detail
