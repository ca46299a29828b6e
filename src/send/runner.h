#pragma once

#include <QByteArrayList>

#include "send/judgement.h"
#include "send/report.h"
#include "serial/port_connection.h"

namespace quarn::send {

/// Sends all commands, in rounds, on an open line, and prints each result as soon as it is there. Returns the
/// exit status. A failed line is reported on standard error.
class Runner {
 public:
  /// All must outlive the runner.
  Runner(const Options& options, const SettingsRecord& settings, const PortConnection& connection);

  int Run(const QByteArrayList& commands);
  /// Whether nothing has happened after which a run ends.
  [[nodiscard]] bool MayGoOn() const { return !m_lostOutput && !m_status.IsOver(); }

 private:
  /// Returns false when nothing more may be sent.
  bool RunRound(const QByteArrayList& commands);
  Report SendUntilAnswered(const QByteArray& command);
  Report SendOnce(const QByteArray& command);
  void ReportFailedLine(const Report& report) const;

  const Options& m_options;
  const SettingsRecord& m_settings;
  TransactionEngine m_engine;
  ReportWriter m_writer;
  RunStatus m_status;
  bool m_lostOutput = false;
};

}  // namespace quarn::send
