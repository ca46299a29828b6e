#include "terminal/waitable_flag.h"

#include <gtest/gtest.h>

#include <thread>

namespace quarn {
namespace {

TEST(WaitableFlag, IsSetOnceUntilItIsCleared) {
  WaitableFlag flag;
  EXPECT_TRUE(flag.TrySet());
  EXPECT_FALSE(flag.TrySet());
  flag.Clear();
  EXPECT_TRUE(flag.TrySet());
}

TEST(WaitableFlag, AWatchHearsOfEachClearingWhileItExists) {
  WaitableFlag flag;
  flag.TrySet();
  int heard = 0;
  std::thread::id thread;
  {
    const WaitableFlag::Watch watch(flag, [&] {
      ++heard;
      thread = std::this_thread::get_id();
    });
    EXPECT_EQ(heard, 0);
    std::thread other([&flag] { flag.Clear(); });
    const std::thread::id clearing = other.get_id();
    other.join();
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(thread, clearing);
  }
  flag.TrySet();
  flag.Clear();
  EXPECT_EQ(heard, 1);
}

TEST(WaitableFlag, AnInnerWatchHearsInsteadOfTheOuterOne) {
  WaitableFlag flag;
  int outer = 0;
  int inner = 0;
  const WaitableFlag::Watch first(flag, [&outer] { ++outer; });
  {
    const WaitableFlag::Watch second(flag, [&inner] { ++inner; });
    flag.Clear();
  }
  flag.Clear();
  EXPECT_EQ(inner, 1);
  EXPECT_EQ(outer, 1);
}

}  // namespace
}  // namespace quarn
