#pragma once
// Counts heap allocations of a benchmark program: global operator new and
// delete over malloc and free. Include it in exactly one source file of a
// program (each benchmark program is one file).

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace orvane::bench_support {
inline std::atomic<std::size_t> allocationCount{0};
}

void* operator new(std::size_t size) {
  orvane::bench_support::allocationCount.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
