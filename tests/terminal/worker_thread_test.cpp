#include "terminal/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace quarn {
namespace {

TEST(WorkerThread, RunsAllJobsOnOneThread) {
  std::vector<std::thread::id> threads;
  WorkerThread worker;
  for (int i = 0; i < 3; ++i) worker.Run([&] { threads.push_back(std::this_thread::get_id()); });
  worker.WaitForEnd();
  ASSERT_EQ(threads.size(), 3);
  EXPECT_NE(threads[0], std::this_thread::get_id());
  EXPECT_EQ(threads[1], threads[0]);
  EXPECT_EQ(threads[2], threads[0]);
}

TEST(WorkerThread, WaitsForTheJobThatRuns) {
  std::atomic<bool> go = false;
  std::atomic<bool> ended = false;
  WorkerThread worker;
  worker.Run([&] {
    while (!go) std::this_thread::yield();
    ended = true;
  });
  EXPECT_FALSE(ended);
  go = true;
  worker.WaitForEnd();
  EXPECT_TRUE(ended);
}

TEST(WorkerThread, EndsItsJobBeforeItself) {
  std::atomic<bool> ended = false;
  {
    WorkerThread worker;
    worker.Run([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      ended = true;
    });
  }
  EXPECT_TRUE(ended);
}

TEST(WorkerThread, NeedsNoJob) {
  WorkerThread worker;
  worker.WaitForEnd();
}

}  // namespace
}  // namespace quarn
