#pragma once
// A small pool of worker threads that runs one image kernel at a time over
// bands of rows. The calling thread works too, so a pool of N threads starts
// N - 1 workers; a pool of 1 runs everything on the caller.
//
// Any thread may call forEachBand. While one call is running, another call
// (from a second thread, or from inside a kernel) does not wait: it runs its
// bands on its own thread. No lock is held while a kernel runs, and a call
// allocates nothing. The pool is owned by whoever made it; shared() lives
// until the program exits.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace orvane::render {

class WorkerPool {
 public:
  // threadCount is clamped to 1 ... 64.
  explicit WorkerPool(int threadCount);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  int threadCount() const { return static_cast<int>(workers_.size()) + 1; }

  // While serial, every job runs on its caller alone: the benchmarks measure
  // one thread against all with the same pool. Any thread may set it.
  void setSerial(bool serial) { serial_.store(serial, std::memory_order_relaxed); }

  // The pool of the process: one thread per hardware thread.
  static WorkerPool& shared();

  // Calls band(first, last) for disjoint bands of rows [first, last) that
  // together cover [begin, end) exactly once, spread over the threads.
  // pixelsPerRow is the work of one row; small jobs stay on the caller, where
  // waking the workers would cost more than they save.
  template <class Band>
  void forEachBand(int begin, int end, std::int64_t pixelsPerRow, Band&& band) {
    using B = std::remove_reference_t<Band>;
    run(begin, end, pixelsPerRow, [](void* context, int first, int last) { (*static_cast<B*>(context))(first, last); },
        const_cast<void*>(static_cast<const void*>(&band)));
  }

 private:
  using BandFunction = void (*)(void* context, int first, int last);

  void run(int begin, int end, std::int64_t pixelsPerRow, BandFunction function, void* context);
  void workBands();
  void workerLoop();

  std::vector<std::thread> workers_;

  // Guard the wake-up of the workers only; never held while bands run.
  std::mutex mutex_;
  std::condition_variable wake_;
  // Written under mutex_; read under it or, by a worker still spinning after
  // its last job, without it.
  std::atomic<std::uint64_t> generation_{0};
  bool stopping_ = false;  // guarded by mutex_

  // The current job: written by the caller that set busy_, before it bumps
  // generation_ under mutex_; read by workers after they see the new generation.
  BandFunction function_ = nullptr;
  void* context_ = nullptr;
  int begin_ = 0;
  int bandRows_ = 1;
  int bandCount_ = 0;
  int end_ = 0;

  std::atomic<bool> busy_{false};
  std::atomic<bool> serial_{false};
  std::atomic<int> nextBand_{0};
  std::atomic<int> pendingWorkers_{0};
};

}  // namespace orvane::render
