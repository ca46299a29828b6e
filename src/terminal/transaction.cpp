#include "terminal/transaction.h"

#include "terminal/framing.h"
#include "terminal/receive_worker.h"
#include "terminal/system_encoding.h"
#include "terminal/wait_plan.h"

namespace quarn {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kWorkerGrace{500};

/// A delay of this length means that the process was stopped or the computer slept: no poll was possible.
constexpr std::chrono::milliseconds kStopped = 10 * kPollTime;

/// The polls of a wait follow a fixed rhythm, so that the time of each poll does not add up. Nobody is woken
/// for polls that only count.
class PollRhythm {
 public:
  /// The time of the next poll that does more than count.
  Clock::time_point Next(const WaitPlan& plan) {
    m_polls = plan.PollsToNextStep();
    return m_last + m_polls * kPollTime;
  }
  /// That time has come; returns the step of its poll. After a stop only one poll counts: the response may be
  /// in the driver already, and its reader must have time to read it.
  WaitPlan::Step Take(WaitPlan& plan) {
    const Clock::time_point now = Clock::now();
    const Clock::time_point due = m_last + m_polls * kPollTime;
    const bool stopped = now - due > kStopped;
    m_last = stopped ? now : due;
    for (int i = 1; i < m_polls && !stopped; ++i) plan.Next();
    return plan.Next();
  }

 private:
  Clock::time_point m_last = Clock::now();
  int m_polls = 0;
};

/// Holds the user's input while it exists.
class WaitScope {
 public:
  explicit WaitScope(TransactionHost& host) : m_host(host) { m_host.BeginWait(); }
  ~WaitScope() { m_host.EndWait(); }
  WaitScope(const WaitScope&) = delete;
  WaitScope& operator=(const WaitScope&) = delete;

 private:
  TransactionHost& m_host;
};

}  // namespace

TransactionEngine::TransactionEngine(const PortConnection& connection) : m_connection(connection) {}

TransactionEngine::~TransactionEngine() = default;

TransactionOutcome TransactionEngine::RunTransaction(const SettingsRecord& settings, TransactionHost& host,
                                                     const QByteArray& command) {
  if (m_busy.IsSet()) return {.result = TransactionResult::AlreadyRunning};
  const WaitScope scope(host);
  // A read left behind must end before this command is sent: two reads would compete for one response. It
  // also clears the busy flag at its end, so the flag is set afterwards.
  EndFormerWorker();
  ForgetOtherLine();
  m_busy.TrySet();
  m_worker = std::make_shared<ReceiveWorker>(settings, command, m_connection.handle.Line(), m_busy);
  const TransactionResult ended = WaitForWorker(settings, host, command);
  EndWorker(host);
  if (ended != TransactionResult::Received) return {.result = ended};
  const std::optional<Reading> reading = m_worker->Delivered();
  // If something else cleared the flag, the response has not come yet, and the kept bytes are not it.
  if (!reading) return {.result = TransactionResult::Aborted};
  Keep(*reading);
  return Evaluate(settings.delimiter, *reading);
}

void TransactionEngine::EndFormerWorker() {
  if (!m_worker) return;
  m_worker->End();
  if (const std::optional<Reading> reading = m_worker->Delivered()) Keep(*reading);
  m_worker.reset();
}

void TransactionEngine::Keep(const Reading& reading) {
  if (!reading.failed) m_kept = reading.bytes;
}

void TransactionEngine::ForgetOtherLine() {
  const std::weak_ptr<SerialLine> line = m_connection.handle.Line();
  if (!line.owner_before(m_answering) && !m_answering.owner_before(line)) return;
  m_kept.clear();
  m_answering = line;
}

TransactionResult TransactionEngine::WaitForWorker(const SettingsRecord& settings, TransactionHost& host,
                                                   const QByteArray& command) {
  WaitPlan plan(settings, m_ownTimeout);
  const QString shown = FromSystemEncoding(command).value_or(QString());
  PollRhythm rhythm;
  while (m_busy.IsSet()) {
    if (host.PaintUntilClear(m_busy, rhythm.Next(plan))) break;
    const WaitPlan::Step step = rhythm.Take(plan);
    if (step == WaitPlan::Step::TimedOut) return TransactionResult::Timeout;
    if (step == WaitPlan::Step::Continue) continue;
    host.ShowWaitingText(WaitingText(shown, host.CaretPosition(), plan.Refreshes()));
    host.PaintUntilClear(m_busy, Clock::now());
    if (host.EscapePressed()) return TransactionResult::Aborted;
    ++m_pollCounter;
  }
  return TransactionResult::Received;
}

void TransactionEngine::EndWorker(TransactionHost& host) {
  m_busy.Clear();
  // It stays while it is waited for, whatever happens meanwhile.
  if (const auto worker = m_worker) host.PaintUntilClear(worker->Running(), Clock::now() + kWorkerGrace);
}

QString TransactionEngine::WhyNoThread() const { return m_worker ? m_worker->WhyNoThread() : QString(); }

TransactionOutcome TransactionEngine::Evaluate(const QString& delimiter, const Reading& reading) const {
  TransactionOutcome outcome;
  outcome.response = QByteArray(m_kept.constData());
  outcome.raw = reading.bytes;
  outcome.byteCount = reading.byteCount;
  outcome.lineFailed = reading.failed;
  outcome.cutOff = reading.cutOff;
  if (HoldsOnlyFraming(delimiter, outcome.response)) {
    outcome.result = TransactionResult::InvalidData;
  } else if (reading.truncated) {
    outcome.result = TransactionResult::Overflow;
  } else {
    outcome.response = NormaliseResponse(delimiter, outcome.response);
  }
  return outcome;
}

}  // namespace quarn
