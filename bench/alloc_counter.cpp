#include "alloc_counter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<std::size_t> gLive{0};
std::atomic<std::size_t> gPeak{0};

void* allocate(std::size_t n) {
    // The size is stored in front of the block so that delete can subtract it.
    void* p = std::malloc(n + 16);
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(p) = n;
    std::size_t const live = gLive.fetch_add(n) + n;
    std::size_t peak = gPeak.load();
    while (live > peak && !gPeak.compare_exchange_weak(peak, live)) {
    }
    return static_cast<char*>(p) + 16;
}

void release(void* p) noexcept {
    if (p == nullptr) {
        return;
    }
    char* block = static_cast<char*>(p) - 16;
    gLive.fetch_sub(*reinterpret_cast<std::size_t*>(block));
    std::free(block);
}
}  // namespace

void* operator new(std::size_t n) { return allocate(n); }
void* operator new[](std::size_t n) { return allocate(n); }
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t) noexcept { release(p); }

namespace mgeo_bench {
std::size_t resetPeak() {
    gPeak.store(gLive.load());
    return gLive.load();
}
std::size_t peakBytes() { return gPeak.load(); }
}  // namespace mgeo_bench
