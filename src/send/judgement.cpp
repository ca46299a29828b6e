#include "send/judgement.h"

#include <algorithm>

namespace quarn::send {
namespace {

/// A command that cannot be sent, or does not fit into a log, is refused before it comes here.
Verdict VerdictOf(TransactionResult result) {
  switch (result) {
    case TransactionResult::Received:
      return Verdict::Received;
    case TransactionResult::Timeout:
      return Verdict::Timeout;
    case TransactionResult::InvalidData:
      return Verdict::Empty;
    case TransactionResult::Overflow:
      return Verdict::Truncated;
    case TransactionResult::Aborted:
    case TransactionResult::AlreadyRunning:
    case TransactionResult::NotSendable:
    case TransactionResult::LogFull:
      return Verdict::Aborted;
  }
  return Verdict::Aborted;
}

}  // namespace

Verdict Judge(const TransactionOutcome& outcome, const std::optional<QRegularExpression>& expected) {
  if (outcome.lineFailed || outcome.cutOff) return Verdict::LineFailed;
  const Verdict verdict = VerdictOf(outcome.result);
  if (verdict != Verdict::Received || !expected) return verdict;
  const QString text = QString::fromLatin1(ResponseText({.outcome = outcome}));
  return expected->match(text).hasMatch() ? Verdict::Received : Verdict::Unexpected;
}

bool MayBeRetried(Verdict verdict) {
  switch (verdict) {
    case Verdict::Timeout:
    case Verdict::Empty:
    case Verdict::Truncated:
    case Verdict::Unexpected:
      return true;
    case Verdict::Received:
    case Verdict::Aborted:
    case Verdict::LineFailed:
      return false;
  }
  return false;
}

bool RunStatus::IsOver() const {
  if (m_last == Verdict::Aborted || m_last == Verdict::LineFailed) return true;
  return m_stopsOnError && m_last != Verdict::Received;
}

std::optional<Schedule::Clock::time_point> Schedule::Next(Clock::time_point now) {
  if (m_most != 0 && m_rounds == m_most) return std::nullopt;
  if (m_rounds > 0 && m_distance.count() == 0) {
    m_next = now;
  } else if (m_rounds > 0) {
    // The first of the fixed moments that is still to come.
    const Clock::duration late = now - m_next;
    m_next += std::max<Clock::rep>((late + m_distance - Clock::duration(1)) / m_distance, 1) * m_distance;
  }
  ++m_rounds;
  return m_next;
}

}  // namespace quarn::send
