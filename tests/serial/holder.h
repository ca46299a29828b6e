#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace quarn {

/// Another process that tries to open a line, and holds it.
class Holder {
 public:
  explicit Holder(const QString& node, const QStringList& more = {}) {
    m_process.start(QStringLiteral(LINE_HOLDER), QStringList{node} + more);
  }
  ~Holder() {
    m_process.closeWriteChannel();
    m_process.waitForFinished(kLongestMs);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  /// Its line of output: the outcome as a word, and the reason.
  QString Outcome() {
    while (!m_process.canReadLine() && m_process.waitForReadyRead(kLongestMs)) {
    }
    return QString::fromUtf8(m_process.readLine()).trimmed();
  }
  void Kill() {
    m_process.kill();
    m_process.waitForFinished(kLongestMs);
  }
  /// Its name in the list and in a failed open; the kernel keeps 15 characters of it.
  [[nodiscard]] QString Use() const {
    return QStringLiteral("in use by quarn-line-hold (PID %1)").arg(m_process.processId());
  }
  [[nodiscard]] bool WasKilled() const { return m_process.exitStatus() == QProcess::CrashExit; }

 private:
  static constexpr int kLongestMs = 60'000;
  QProcess m_process;
};

}  // namespace quarn
