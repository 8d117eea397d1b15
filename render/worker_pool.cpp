#include "render/worker_pool.hpp"

#include <algorithm>

namespace orvane::render {

namespace {
// Below this many pixels a job runs on the caller: waking a worker takes tens
// of microseconds, about what a kernel needs for this much work.
constexpr std::int64_t kMinParallelPixels = 32 * 1024;
// Bands per thread: rows of a rotated picture differ in cost, so more bands
// than threads let a thread that finishes early take more.
constexpr int kBandsPerThread = 4;
constexpr int kMaxThreads = 64;
// How long a thread spins before it sleeps: waking a sleeping thread costs
// tens of microseconds, and a frame runs several kernels back to back, so
// workers and callers first watch for a while (some tens of microseconds).
constexpr int kSpinRounds = 4096;

void pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#else
  std::this_thread::yield();
#endif
}

// Spins until changed(); false when it gave up first.
template <class Changed>
bool spinUntil(Changed changed) {
  for (int round = 0; round < kSpinRounds; ++round) {
    if (changed()) return true;
    pause();
  }
  return changed();
}
}  // namespace

WorkerPool::WorkerPool(int threadCount) {
  const int count = std::clamp(threadCount, 1, kMaxThreads);
  workers_.reserve(static_cast<std::size_t>(count - 1));
  for (int i = 1; i < count; ++i) workers_.emplace_back([this] { workerLoop(); });
}

WorkerPool::~WorkerPool() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& worker : workers_) worker.join();
}

WorkerPool& WorkerPool::shared() {
  static WorkerPool pool(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
  return pool;
}

void WorkerPool::run(int begin, int end, std::int64_t pixelsPerRow, BandFunction function, void* context) {
  if (end <= begin) return;
  const int rows = end - begin;
  bool idle = false;
  if (workers_.empty() || serial_.load(std::memory_order_relaxed) || rows < 2 ||
      std::int64_t{rows} * pixelsPerRow < kMinParallelPixels ||
      !busy_.compare_exchange_strong(idle, true, std::memory_order_acquire)) {
    function(context, begin, end);
    return;
  }
  const int bands = std::min(rows, threadCount() * kBandsPerThread);
  {
    std::lock_guard lock(mutex_);
    function_ = function;
    context_ = context;
    begin_ = begin;
    end_ = end;
    bandRows_ = (rows + bands - 1) / bands;
    bandCount_ = (rows + bandRows_ - 1) / bandRows_;
    nextBand_.store(0, std::memory_order_relaxed);
    pendingWorkers_.store(static_cast<int>(workers_.size()), std::memory_order_relaxed);
    generation_.store(generation_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  wake_.notify_all();
  workBands();
  spinUntil([this] { return pendingWorkers_.load(std::memory_order_acquire) == 0; });
  for (int pending = pendingWorkers_.load(std::memory_order_acquire); pending != 0;
       pending = pendingWorkers_.load(std::memory_order_acquire)) {
    pendingWorkers_.wait(pending, std::memory_order_acquire);
  }
  busy_.store(false, std::memory_order_release);
}

void WorkerPool::workBands() {
  for (int band = nextBand_.fetch_add(1, std::memory_order_relaxed); band < bandCount_;
       band = nextBand_.fetch_add(1, std::memory_order_relaxed)) {
    const int first = begin_ + band * bandRows_;
    function_(context_, first, std::min(end_, first + bandRows_));
  }
}

void WorkerPool::workerLoop() {
  std::uint64_t seen = 0;
  for (;;) {
    if (!spinUntil([&] { return generation_.load(std::memory_order_acquire) != seen; })) {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [&] { return stopping_ || generation_.load(std::memory_order_relaxed) != seen; });
      if (stopping_) return;
    }
    seen = generation_.load(std::memory_order_acquire);
    workBands();
    if (pendingWorkers_.fetch_sub(1, std::memory_order_acq_rel) == 1) pendingWorkers_.notify_one();
  }
}

}  // namespace orvane::render
