#include "core/common/ordered_work.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace quarvel {
namespace {

// Items of uneven length, so that they finish out of order on several threads.
void unevenWork(std::size_t i) { std::this_thread::sleep_for(std::chrono::microseconds((i * 7919) % 400)); }

TEST(WorkInOrder, HandsOnEveryItemInOrderWhateverOrderTheyFinishIn) {
  for (const int threads : {1, 4}) {
    WorkerPool pool(threads);
    std::vector<int> results(200, -1);
    std::vector<std::size_t> handed;
    workInOrder(
        pool, results.size(), 8,
        [&](std::size_t i, int) {
          unevenWork(i);
          results[i] = static_cast<int>(i * i);
          return true;
        },
        [&](std::size_t i) {
          EXPECT_EQ(results[i], static_cast<int>(i * i));  // finished before it is handed on
          handed.push_back(i);
          return true;
        });
    ASSERT_EQ(handed.size(), results.size()) << threads << " threads";
    for (std::size_t i = 0; i < handed.size(); ++i) EXPECT_EQ(handed[i], i);
  }
}

TEST(WorkInOrder, AStopInTheHandingOnEndsTheWorkWithinTheItemsBegunAhead) {
  WorkerPool pool(4);
  constexpr std::size_t ahead = 6, stopAt = 37;
  std::atomic<std::size_t> worked{0}, highest{0};
  std::vector<std::size_t> handed;
  workInOrder(
      pool, 500, ahead,
      [&](std::size_t i, int) {
        unevenWork(i);
        ++worked;
        for (std::size_t h = highest; i > h && !highest.compare_exchange_weak(h, i);) {
        }
        return true;
      },
      [&](std::size_t i) {
        if (i == stopAt) return false;
        handed.push_back(i);
        return true;
      });
  EXPECT_EQ(handed.size(), stopAt);
  EXPECT_LT(highest.load(), stopAt + ahead);
  EXPECT_LE(worked.load(), stopAt + ahead);
}

TEST(WorkInOrder, AStopInTheWorkHandsNothingOnPastIt) {
  WorkerPool pool(3);
  std::vector<std::size_t> handed;
  workInOrder(
      pool, 100, 4, [&](std::size_t i, int) { return i != 10; },
      [&](std::size_t i) {
        handed.push_back(i);
        return true;
      });
  ASSERT_LE(handed.size(), 10U);
  for (std::size_t i = 0; i < handed.size(); ++i) EXPECT_EQ(handed[i], i);
}

}  // namespace
}  // namespace quarvel
