#include "tests/chart/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> count{0};
}

long vmr::test::allocationCount() { return count.load(std::memory_order_relaxed); }

void* operator new(std::size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
// std::stable_sort asks for its scratch memory this way
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    count.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
