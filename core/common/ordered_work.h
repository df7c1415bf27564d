// Independent items worked out on every core and handed on strictly in order: the results a
// later step reads one after another (and may stop reading) are ready without any core waiting
// for a whole batch, and the outcome is that of working through the items on one core.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

#include "core/common/parallel_for.h"

namespace quarvel {

// Calls work(i, thread) for the items [0, count) on the pool's threads and handOn(i) for each in
// increasing order, one call at a time, as soon as it and every item before it are done. handOn
// may run on any of the threads; false from either call stops: no further item is begun or
// handed on. At most `ahead` items past the last one handed on are begun, which bounds the work
// a stop throws away.
template <class Work, class HandOn>
void workInOrder(WorkerPool& pool, std::size_t count, std::size_t ahead, Work&& work, HandOn&& handOn) {
  std::mutex mutex;
  std::condition_variable progressed;
  std::vector<char> done(count, 0);
  std::size_t begun = 0, handed = 0;
  bool stopped = false, handing = false;
  ahead = ahead == 0 ? 1 : ahead;

  // Hands on every finished item that is next in line, unless another thread is doing so: that
  // thread sees the items finished meanwhile, since they are marked under the same lock.
  auto handOnFinished = [&] {
    std::unique_lock lock(mutex);
    if (handing) return;
    handing = true;
    while (!stopped && handed < count && done[handed] != 0) {
      const std::size_t item = handed;
      lock.unlock();
      const bool more = handOn(item);
      lock.lock();
      ++handed;
      if (!more) stopped = true;
      progressed.notify_all();
    }
    handing = false;
  };

  const WorkerPool::Body body = [&](std::size_t, int thread) {
    for (;;) {
      std::size_t item = 0;
      {
        std::unique_lock lock(mutex);
        progressed.wait(lock, [&] { return stopped || begun == count || begun < handed + ahead; });
        if (stopped || begun == count) return;
        item = begun++;
      }
      const bool more = work(item, thread);
      {
        const std::lock_guard lock(mutex);
        if (!more) {
          stopped = true;
          progressed.notify_all();
          return;
        }
        done[item] = 1;
      }
      handOnFinished();
    }
  };
  pool.run(static_cast<std::size_t>(pool.threads()), pool.threads(), body);
}

}  // namespace quarvel
