#include "app/start_requests.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>
#include <optional>
#include <thread>

#include "support/waits.h"

namespace quarn {
namespace {

using test::WaitUntil;

class StartRequestsTest : public testing::Test {
 protected:
  // A session of its own: where the system has a folder for it, requests go through there.
  StartRequestsTest() { qputenv("XDG_RUNTIME_DIR", m_session.path().toLocal8Bit()); }
  ~StartRequestsTest() override {
    m_former.isNull() ? qunsetenv("XDG_RUNTIME_DIR") : qputenv("XDG_RUNTIME_DIR", m_former);
  }
  void Listen() {
    m_requests.emplace([this](const QString& file) { m_asked.append(file); });
  }
  /// As another process does: the thread that receives is free meanwhile.
  bool Ask(const QString& file) {
    const qsizetype before = m_asked.size();
    std::optional<bool> answered;
    std::thread other([&] { answered = AskRunningProgram(file); });
    WaitUntil([&] { return m_asked.size() > before; });
    other.join();
    return answered.value_or(false);
  }

  const QByteArray m_former = qgetenv("XDG_RUNTIME_DIR");
  QTemporaryDir m_session;
  std::optional<StartRequests> m_requests;
  QStringList m_asked;
};

TEST_F(StartRequestsTest, ReachTheProgramThatRuns) {
  Listen();
  EXPECT_TRUE(Ask(QStringLiteral("/home/me/Pr\u00fcf stand/\u6e2c\u5b9a 1.qrn")));
  EXPECT_TRUE(Ask(QString()));
  EXPECT_EQ(m_asked, (QStringList{QStringLiteral("/home/me/Pr\u00fcf stand/\u6e2c\u5b9a 1.qrn"), QString()}));
}

TEST_F(StartRequestsTest, WithoutOneNobodyIsReached) {
  EXPECT_FALSE(AskRunningProgram(QStringLiteral("/a.qrn")));
  Listen();
  m_requests.reset();
  EXPECT_FALSE(AskRunningProgram(QStringLiteral("/a.qrn")));
}

TEST_F(StartRequestsTest, TheNextProgramTakesOver) {
  Listen();
  m_requests.reset();
  Listen();
  EXPECT_TRUE(Ask(QStringLiteral("/a.qrn")));
  EXPECT_EQ(m_asked, QStringList{QStringLiteral("/a.qrn")});
}

}  // namespace
}  // namespace quarn
