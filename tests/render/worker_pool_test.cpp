#include "render/worker_pool.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace orvane::render {
namespace {

// Marks every row of [begin, end) once per visit.
void visitRows(WorkerPool& pool, int begin, int end, std::vector<std::atomic<int>>& visits) {
  pool.forEachBand(begin, end, 1 << 20, [&](int first, int last) {
    EXPECT_LE(begin, first);
    EXPECT_LT(first, last);
    EXPECT_LE(last, end);
    for (int y = first; y < last; ++y) visits[static_cast<std::size_t>(y)].fetch_add(1);
  });
}

TEST(WorkerPoolTest, EveryRowOnceForAnyThreadCount) {
  for (const int threads : {1, 2, 5}) {
    WorkerPool pool(threads);
    EXPECT_EQ(pool.threadCount(), threads);
    for (const int end : {4, 5, 1003}) {
      std::vector<std::atomic<int>> visits(1003);
      visitRows(pool, 3, end, visits);
      for (int y = 0; y < 1003; ++y) ASSERT_EQ(visits[static_cast<std::size_t>(y)], y >= 3 && y < end ? 1 : 0);
    }
    pool.forEachBand(7, 7, 100, [](int, int) { ADD_FAILURE() << "empty range ran"; });
  }
}

TEST(WorkerPoolTest, ConcurrentAndNestedCallsComplete) {
  WorkerPool pool(3);
  std::vector<std::atomic<int>> visits(4000);
  std::vector<std::thread> callers;
  for (int c = 0; c < 4; ++c) {
    callers.emplace_back([&, c] {
      for (int round = 0; round < 50; ++round) visitRows(pool, c * 1000, c * 1000 + 1000, visits);
    });
  }
  for (std::thread& t : callers) t.join();
  for (const auto& v : visits) ASSERT_EQ(v, 50);

  std::atomic<int> inner{0};
  pool.forEachBand(0, 64, 1 << 20, [&](int first, int last) {
    pool.forEachBand(first * 10, last * 10, 1 << 20, [&](int a, int b) { inner += b - a; });
  });
  EXPECT_EQ(inner, 640);
}

}  // namespace
}  // namespace orvane::render
