#include "system/e2e/processes.h"

#include <signal.h>
#include <sys/prctl.h>

#include <QDeadlineTimer>
#include <QThread>

namespace quarn::test {
namespace {

constexpr int kEndMs = 5000;
// A check is slow: it reads a whole window with a hundred controls.
constexpr int kPollMs = 60;

}  // namespace

bool Eventually(const std::function<bool()>& condition, int limitMs) {
  const QDeadlineTimer deadline(limitMs);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QThread::msleep(kPollMs);
  }
  return true;
}

::testing::AssertionResult Becomes(const QString& expected, const std::function<QString()>& read) {
  QString found;
  if (Eventually([&] {
        found = read();
        return found == expected;
      }))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << '"' << found.toStdString() << "\" instead of \"" << expected.toStdString() << '"';
}

ChildProcess::ChildProcess() {
  setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

void End(QProcess& process) {
  if (process.state() == QProcess::NotRunning) return;
  process.terminate();
  if (process.waitForFinished(kEndMs)) return;
  process.kill();
  process.waitForFinished(kEndMs);
}

ProgramRun::ProgramRun(const QString& program, const QStringList& arguments,
                       const QProcessEnvironment& environment) {
  m_process.setProcessEnvironment(environment);
  m_process.start(program, arguments);
  m_process.waitForStarted();
  m_process.closeWriteChannel();
}

std::optional<ProgramEnd> ProgramRun::WaitForEnd(int limitMs) {
  if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(limitMs)) return {};
  // A program that could not be started counts as crashed, with the reason.
  if (m_process.error() == QProcess::FailedToStart)
    return ProgramEnd{.crashed = true, .errors = m_process.errorString().toUtf8()};
  return ProgramEnd{.crashed = m_process.exitStatus() == QProcess::CrashExit,
                    .exitCode = m_process.exitCode(),
                    .output = m_process.readAllStandardOutput(),
                    .errors = m_process.readAllStandardError()};
}

}  // namespace quarn::test
