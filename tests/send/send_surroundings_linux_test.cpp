// The program on a system that gives it less than it needs.

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "send/send_process.h"
#include "support/no_threads_linux.h"

namespace quarn {
namespace {

class SendSurroundings : public SendProcess {
 protected:
  [[nodiscard]] Outcome SendIn(const std::function<void()>& inChild, const QStringList& arguments) const {
    return Run(QStringLiteral(QUARN_SEND), arguments, inChild);
  }
};

TEST_F(SendSurroundings, WithoutAThreadItIsFiveWithTheReason) {
  const auto forbid = [] {
    if (!test::ForbidThreads()) std::_Exit(99);
  };
  const Outcome sent = SendIn(forbid, {QStringLiteral("--raw"), QStringLiteral("id"), QStringLiteral("id")});
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(sent.out, "");
  EXPECT_EQ(
      sent.err,
      "quarn-send: \"id\" was not sent: the system gives no thread: Resource temporarily unavailable\n");
  EXPECT_EQ(m_instrument.Received(), "");
}

/// Then the permissions hold for root too.
void BeLikeOtherUsers() {
  if (::geteuid() != 0) return;
  for (const int each : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
    if (::prctl(PR_CAPBSET_DROP, static_cast<unsigned long>(each), 0UL, 0UL, 0UL) != 0) std::_Exit(99);
  }
}

TEST_F(SendSurroundings, SettingsThatMayNotBeReadAreFiveWithTheReason) {
  const QString file = Path("Halvo/Quarn/Quarn.ini");
  ASSERT_TRUE(QFile::setPermissions(file, {}));
  const Outcome sent = SendIn(BeLikeOtherUsers, {QStringLiteral("id")});
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(sent.err, "quarn-send: " + file.toUtf8() + ": Permission denied\n");
  EXPECT_EQ(m_instrument.Received(), "");
}

/// Without its folder of numbers a port is not "not present".
TEST_F(SendSurroundings, NumbersThatMayNotBeReadAreFiveWithTheReason) {
  const QString folder = Path("Halvo/Quarn/ports");
  ASSERT_TRUE(QFile::setPermissions(folder, {}));
  const Outcome sent = SendIn(BeLikeOtherUsers, {QStringLiteral("id")});
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_TRUE(sent.err.endsWith("ports: Permission denied\n")) << sent.err.constData();
  EXPECT_EQ(m_instrument.Received(), "");
}

bool IsStopped(qint64 process) {
  QFile file(QStringLiteral("/proc/%1/stat").arg(process));
  return file.open(QIODevice::ReadOnly) && file.readAll().contains(") T ");
}

/// A response that came while the process was stopped came in time.
TEST_F(SendSurroundings, AnAnswerThatComesWhileTheProcessIsStoppedIsShown) {
  // The time-out is 265 polls of 10 ms. All of them are missed.
  constexpr std::chrono::milliseconds kStop{3500};
  UseSettings({{"COM_BPS=", "115200"}, {"COM_BUF=", "1K"}, {"R_TIMEOUT=", "ON"}});
  QProcess process;
  Start(process, QStringLiteral(QUARN_SEND), {QStringLiteral("late")});
  ASSERT_TRUE(Eventually([&] { return m_instrument.Received() == "late\r\n"; }));
  const auto stopped = std::chrono::steady_clock::now();
  ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGSTOP), 0);
  ASSERT_TRUE(Eventually([&] { return IsStopped(process.processId()); }));
  ASSERT_TRUE(Eventually(
      [&] { return m_instrument.Answers() == 1 && std::chrono::steady_clock::now() - stopped > kStop; }));
  ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGCONT), 0);
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.exitCode(), 0);
  EXPECT_EQ(process.readAllStandardOutput(), "[late]\nSIM-1\n");
}

}  // namespace
}  // namespace quarn
