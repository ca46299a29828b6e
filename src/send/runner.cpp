#include "send/runner.h"

#include "send/exit_status.h"
#include "send/failure_text.h"
#include "send/interruption.h"
#include "send/standard_output.h"

namespace quarn::send {
namespace {

using Clock = Schedule::Clock;

/// A shell needs no painting and no held input. Ctrl+C acts as the ESC key.
class ShellHost final : public TransactionHost {
 public:
  void BeginWait() override {}
  void EndWait() override {}
  void KeepPainting() override {}
  void ShowWaitingText(const QString&) override {}
  [[nodiscard]] int CaretPosition() const override { return -1; }
  bool EscapePressed() override { return IsInterrupted(); }
};

/// One round if nothing is said about them; without end if only their distance is.
std::uint32_t RoundsOf(const Options& options) {
  constexpr std::uint32_t kWithoutEnd = 0;
  return options.count.value_or(options.every ? kWithoutEnd : 1);
}

}  // namespace

Runner::Runner(const Options& options, const SettingsRecord& settings, const PortConnection& connection)
    : m_options(options),
      m_settings(settings),
      m_engine(connection),
      m_writer(options, settings),
      m_status(options.stopOnError) {
  m_engine.SetOwnTimeout(options.timeout);
}

int Runner::Run(const QByteArrayList& commands) {
  Schedule schedule(Clock::now(), m_options.every.value_or(std::chrono::milliseconds(0)),
                    RoundsOf(m_options));
  while (const auto begin = schedule.Next(Clock::now())) {
    if (!SleepUntil(*begin)) {
      // Without a count there is no other end.
      if (m_options.count) m_status.Note(Verdict::Aborted);
      break;
    }
    if (!RunRound(commands)) break;
  }
  return m_lostOutput ? kNotPrinted : m_status.Status();
}

bool Runner::RunRound(const QByteArrayList& commands) {
  for (const QByteArray& command : commands) {
    if (IsInterrupted()) {
      m_status.Note(Verdict::Aborted);
      return false;
    }
    const Report report = SendUntilAnswered(command);
    m_status.Note(report.verdict);
    m_lostOutput = !Print(m_writer.TextOf(report));
    if (m_lostOutput) return false;
    if (report.verdict == Verdict::LineFailed) ReportFailedLine(report);
    if (m_status.IsOver()) return false;
  }
  return true;
}

Report Runner::SendUntilAnswered(const QByteArray& command) {
  Report report = SendOnce(command);
  for (std::uint32_t again = 0; again < m_options.retries && MayBeRetried(report.verdict); ++again) {
    const int attempts = report.attempts;
    report = SendOnce(command);
    report.attempts = attempts + 1;
  }
  return report;
}

Report Runner::SendOnce(const QByteArray& command) {
  ShellHost host;
  Report report{.time = QDateTime::currentDateTimeUtc(), .command = command};
  const Clock::time_point begin = Clock::now();
  report.outcome = m_engine.RunTransaction(m_settings, host, command);
  report.duration = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
  report.verdict = Judge(report.outcome, m_options.expected);
  return report;
}

/// For a failed read the log has no line of its own and shows the earlier response again, and nothing shows
/// that a response was cut off. A script must know.
void Runner::ReportFailedLine(const Report& report) const {
  const QString quoted = Quoted(report.command);
  const QString noThread = m_engine.WhyNoThread();
  if (!noThread.isEmpty()) {
    return Complain(QStringLiteral("%1 was not sent: the system gives no thread: %2").arg(quoted, noThread));
  }
  const QString what = report.outcome.cutOff
                           ? QStringLiteral("the line failed during the response to %1")
                           : QStringLiteral("the line failed while %1 waited for its response");
  Complain(FailureText(m_settings.comPort, {LineError::Disconnected, what.arg(quoted)}));
}

}  // namespace quarn::send
