#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace quarn::test {

/// How long an input may take to show an effect before it is given again: a loaded machine loses some.
inline constexpr int kOneTryMs = 2500;

/// Waits until `condition` holds; false when it does not within `limitMs`.
bool Eventually(const std::function<bool()>& condition, int limitMs = 20000);

/// A process that does not outlive this one, however this one ends.
class ChildProcess : public QProcess {
 public:
  ChildProcess();
};

/// Ends a process, by force when it does not go.
void End(QProcess& process);

/// How a program has ended, and all it has printed.
struct ProgramEnd {
  bool crashed = false;
  int exitCode = 0;
  QByteArray output{};
  QByteArray errors{};
};

/// A program that is expected to end by itself; it is ended with the object if it has not.
class ProgramRun {
 public:
  ProgramRun(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment);
  ~ProgramRun() { End(m_process); }
  ProgramRun(const ProgramRun&) = delete;
  ProgramRun& operator=(const ProgramRun&) = delete;

  /// Nothing when it is still running after `limitMs`.
  std::optional<ProgramEnd> WaitForEnd(int limitMs = 20000);

 private:
  ChildProcess m_process;
};

}  // namespace quarn::test
