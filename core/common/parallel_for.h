// Spreading independent pieces of a computation over the machine's cores. The pieces are taken
// in increasing order by whichever thread is free; the calling thread works too, as thread 0,
// so that it alone may talk to the user (a desktop's interrupt flag lives in its event loop).
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quarvel {

// The cores of this machine (at least one).
inline int hardwareThreads() { return static_cast<int>(std::max(1u, std::thread::hardware_concurrency())); }

// Helper threads kept for the length of a computation that hands out many small jobs (an
// indexing run hands out hundreds, some of a few hundred microseconds, where starting threads
// for each would cost a good part of the gain).
class WorkerPool {
 public:
  using Body = std::function<void(std::size_t piece, int thread)>;

  // `threads` in all, the calling thread included.
  explicit WorkerPool(int threads) {
    for (int t = 1; t < std::max(threads, 1); ++t) helpers_.emplace_back([this, t] { serve(t); });
  }
  ~WorkerPool() {
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    wake_.notify_all();
    for (std::thread& t : helpers_) t.join();
  }
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  int threads() const { return static_cast<int>(helpers_.size()) + 1; }

  // Calls body(piece, thread) for every piece in [0, count) on at most `maxThreads` threads and
  // returns when all are done. Each thread meets its pieces in increasing order.
  void run(std::size_t count, int maxThreads, const Body& body) {
    const int helping = static_cast<int>(std::min<std::size_t>(
        std::min<std::size_t>(helpers_.size(), static_cast<std::size_t>(std::max(maxThreads, 1) - 1)),
        count > 0 ? count - 1 : 0));
    if (helping == 0) {
      for (std::size_t piece = 0; piece < count; ++piece) body(piece, 0);
      return;
    }
    {
      const std::lock_guard lock(mutex_);
      body_ = &body;
      count_ = count;
      next_ = 0;
      helping_ = helping;
      busy_ = helping;
      ++job_;
    }
    wake_.notify_all();
    work(0);
    std::unique_lock lock(mutex_);
    done_.wait(lock, [this] { return busy_ == 0; });
    body_ = nullptr;
  }

 private:
  void work(int thread) {
    for (std::size_t piece = next_++; piece < count_; piece = next_++) (*body_)(piece, thread);
  }

  void serve(int thread) {
    std::uint64_t seen = 0;
    for (;;) {
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [&] { return stopping_ || job_ != seen; });
        if (stopping_) return;
        seen = job_;
        if (thread > helping_) continue;  // not wanted for this job
      }
      work(thread);
      {
        const std::lock_guard lock(mutex_);
        --busy_;
      }
      done_.notify_one();
    }
  }

  std::vector<std::thread> helpers_;
  std::mutex mutex_;
  std::condition_variable wake_, done_;
  const Body* body_ = nullptr;
  std::size_t count_ = 0;
  std::atomic<std::size_t> next_{0};
  int helping_ = 0, busy_ = 0;  // helpers asked for the current job, and those not done with it
  std::uint64_t job_ = 0;
  bool stopping_ = false;
};

}  // namespace quarvel
