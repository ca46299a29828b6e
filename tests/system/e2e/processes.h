#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

#include "support/longest_wait.h"

namespace quarn::test {

/// The time after which an input without effect is repeated: a busy computer loses some.
inline constexpr int kOneTryMs = 2500;

/// Waits until `condition` holds; false if it does not within `limitMs`.
bool Eventually(const std::function<bool()>& condition, int limitMs = kLongestWaitMs);

/// Waits until `read` returns `expected`; a failure tells what it returned last.
::testing::AssertionResult Becomes(const QString& expected, const std::function<QString()>& read);

/// A process that does not outlive this one, however this one ends.
class ChildProcess : public QProcess {
 public:
  ChildProcess();
};

/// Ends a process, by force if necessary.
void End(QProcess& process);

/// How a program ended, and its output.
struct ProgramEnd {
  bool crashed = false;
  int exitCode = 0;
  QByteArray output{};
  QByteArray errors{};
};

/// A program that should end by itself. The destructor ends it otherwise.
class ProgramRun {
 public:
  ProgramRun(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment);
  ~ProgramRun() { End(m_process); }
  ProgramRun(const ProgramRun&) = delete;
  ProgramRun& operator=(const ProgramRun&) = delete;

  /// nullopt if it is still running after `limitMs`.
  std::optional<ProgramEnd> WaitForEnd(int limitMs = kLongestWaitMs);

 private:
  ChildProcess m_process;
};

}  // namespace quarn::test
