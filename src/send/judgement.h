#pragma once

#include <QRegularExpression>
#include <optional>

#include "send/report.h"

namespace quarn::send {

/// How a transaction is judged. A response that a failed line cut off is none. `expected` is looked for in
/// the response as ResponseText shows it.
Verdict Judge(const TransactionOutcome& outcome, const std::optional<QRegularExpression>& expected);

/// Whether the command is worth another try: the instrument did not answer as it should, but the line works
/// and nobody has interrupted.
bool MayBeRetried(Verdict verdict);

/// The exit status of a run, made of the verdicts of its commands.
class RunStatus {
 public:
  explicit RunStatus(bool stopsOnError) : m_stopsOnError(stopsOnError) {}

  void Note(Verdict verdict) { m_last = verdict; }
  /// Whether no further command may be sent. The last verdict is the status then.
  [[nodiscard]] bool IsOver() const;
  [[nodiscard]] int Status() const { return static_cast<int>(m_last); }

 private:
  bool m_stopsOnError;
  Verdict m_last = Verdict::Received;
};

/// When rounds of commands begin: at the first moment, then at fixed distances from it, so that no round's
/// own time adds up. A round that takes longer than the distance skips the moments that it missed.
class Schedule {
 public:
  using Clock = std::chrono::steady_clock;
  /// `most` rounds; 0: no limit. A distance of 0: each round begins when the one before has ended.
  Schedule(Clock::time_point first, std::chrono::milliseconds distance, std::uint32_t most)
      : m_next(first), m_distance(distance), m_most(most) {}

  /// When the next round begins, given the time now; nullopt after the last one.
  std::optional<Clock::time_point> Next(Clock::time_point now);

 private:
  Clock::time_point m_next;
  std::chrono::milliseconds m_distance;
  std::uint32_t m_most;
  std::uint32_t m_rounds = 0;
};

}  // namespace quarn::send
