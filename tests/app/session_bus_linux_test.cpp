#include "app/session_bus_linux.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "support/silent_socket_linux.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

class SessionBusTest : public ::testing::Test {
 protected:
  SessionBusTest() {
    qputenv(kBusAddress, "unix:path=" + m_folder.filePath(QStringLiteral("bus")).toLocal8Bit());
  }
  ~SessionBusTest() override { m_before.isNull() ? qunsetenv(kBusAddress) : qputenv(kBusAddress, m_before); }
  /// Answers the one that has asked.
  void Answer() const {
    const int caller = ::accept(m_bus.Descriptor(), nullptr, nullptr);
    ASSERT_GE(caller, 0);
    EXPECT_EQ(::send(caller, "REJECTED EXTERNAL\r\n", 19, MSG_NOSIGNAL), 19);
    ::close(caller);
  }

 private:
  const QTemporaryDir m_folder;
  const QByteArray m_before = qgetenv(kBusAddress);
  const SilentSocket m_bus{m_folder.filePath(QStringLiteral("bus"))};
};

TEST_F(SessionBusTest, OnAnIdleComputerOneLookIsEnough) {
  int looks = 0;
  EXPECT_TRUE(IsBusSilent([&looks] {
    ++looks;
    return false;
  }));
  EXPECT_EQ(looks, 1);
}

TEST_F(SessionBusTest, ABusyComputersBusHasMoreTime) {
  std::thread late;
  EXPECT_FALSE(IsBusSilent([this, &late] {
    late = std::thread([this] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      Answer();
    });
    return true;
  }));
  ASSERT_TRUE(late.joinable());
  late.join();
}

TEST_F(SessionBusTest, TheTimeOfABusyComputersBusEnds) {
  int looks = 0;
  EXPECT_TRUE(IsBusSilent([&looks] {
    ++looks;
    return true;
  }));
  EXPECT_EQ(looks, 1);
}

TEST(ComputerLoad, IsComparedWithTheNumberOfProcessors) {
  EXPECT_FALSE(IsBusy("0.00 0.01 0.05 1/234 5678\n", 1));
  EXPECT_FALSE(IsBusy("2.00 9.00 9.00 2/234 5678\n", 2));
  EXPECT_TRUE(IsBusy("2.01 0.00 0.00 1/234 5678\n", 2)) << "the last minute";
  EXPECT_TRUE(IsBusy("0.00 0.00 0.00 3/234 5678\n", 2)) << "now";
  EXPECT_TRUE(IsBusy("", 2)) << "not known";
  EXPECT_TRUE(IsBusy("0.00 0.00 0.00\n", 2)) << "not known";
}

TEST(ComputerLoad, IsWhatTheSystemSays) {
  std::atomic<bool> isOver = false;
  std::vector<std::thread> work(std::thread::hardware_concurrency() + 1);
  for (std::thread& each : work) {
    each = std::thread([&isOver] {
      while (!isOver) continue;
    });
  }
  EXPECT_TRUE(WaitUntil(IsComputerBusy));
  isOver = true;
  for (std::thread& each : work) each.join();
}

}  // namespace
}  // namespace quarn::test
