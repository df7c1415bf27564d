// Spreading independent pieces of a computation over the machine's cores. The pieces are taken
// in increasing order by whichever thread is free; the calling thread works too, as thread 0,
// so that it alone may talk to the user (a desktop's interrupt flag lives in its event loop).
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace quarvel {

// The cores of this machine (at least one).
inline int hardwareThreads() { return static_cast<int>(std::max(1u, std::thread::hardware_concurrency())); }

// Calls body(piece, thread) for every piece in [0, count), on at most `threads` threads, and
// returns when all are done. Each thread meets its pieces in increasing order.
template <class Body>
void parallelFor(std::size_t count, int threads, Body&& body) {
  std::atomic<std::size_t> next{0};
  auto work = [&](int thread) {
    for (std::size_t piece = next++; piece < count; piece = next++) body(piece, thread);
  };
  const auto helpers = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(std::max(threads, 1)), count)) - 1;
  std::vector<std::thread> pool;
  for (int t = 1; t <= helpers; ++t) pool.emplace_back(work, t);
  work(0);
  for (std::thread& t : pool) t.join();
}

}  // namespace quarvel
