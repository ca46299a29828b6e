#include "terminal/wait_plan.h"

#include <algorithm>

#include "serial/line_parameters.h"
#include "settings/setting_values.h"
#include "terminal/command_line.h"

namespace quarn {
namespace {

constexpr int kUnknownSizeForTimeout = values::kBuffer2K.number;
constexpr int kUnknownSizeForLimit = values::kBuffer1K.number;

constexpr double kReferenceRate = 1200.0;
constexpr double kReferencePolls = 4000.0;
constexpr double kLargestBuffer = values::kBuffer6K.number;
constexpr int kFewestPolls = 50;
constexpr int kPollsPerRefresh = 20;
constexpr int kPlainRefreshes = 5;

int BytesOf(const QString& comBuf, int unknown) {
  const SettingValue* const found = FindValue(values::kBufferSizes, comBuf);
  return found == nullptr ? unknown : found->number;
}

}  // namespace

int BufferSizeForTimeout(const QString& comBuf) { return BytesOf(comBuf, kUnknownSizeForTimeout); }

int ResponseLimit(const QString& comBuf) { return BytesOf(comBuf, kUnknownSizeForLimit); }

int TimeoutPolls(const SettingsRecord& settings) {
  const double rate = NominalRateOf(settings.comBps);
  const double size = BufferSizeForTimeout(settings.comBuf);
  const double polls = kReferenceRate / rate * kReferencePolls * (kLargestBuffer / size);
  return std::max(static_cast<int>(polls), kFewestPolls);
}

QString WaitingText(const QString& command, int caret, int refresh) {
  const bool marked = refresh > kPlainRefreshes && (refresh - kPlainRefreshes) % 2 == 1;
  if (!marked || caret < 0) return command;
  return WithCharacterAt(command, caret, u'*');
}

WaitPlan::WaitPlan(const SettingsRecord& settings, std::optional<std::chrono::milliseconds> ownTimeout)
    : m_left(ownTimeout),
      m_limit(TimeoutPolls(settings)),
      m_limited(!ownTimeout && IsOn(settings.rTimeout)) {}

WaitPlan::Step WaitPlan::Next() {
  if (m_limited && m_polls > m_limit) return Step::TimedOut;
  if (m_left) {
    if (*m_left <= kPollTime) return Step::TimedOut;
    *m_left -= kPollTime;
  }
  ++m_iterations;
  if (m_iterations % kPollsPerRefresh != 0) {
    // Without a time-out a wait has no limit, but the counter must not overflow.
    if (m_polls <= m_limit) ++m_polls;
    return Step::Continue;
  }
  ++m_refreshes;
  return Step::Refresh;
}

int WaitPlan::PollsToNextStep() const {
  WaitPlan ahead = *this;
  int polls = 1;
  while (ahead.Next() == Step::Continue) ++polls;
  return polls;
}

}  // namespace quarn
