#pragma once

#include <QString>
#include <chrono>
#include <optional>

#include "settings/settings_record.h"

namespace quarn {

/// COM_BUF in bytes, for computing the response time-out; unknown text gives 2048.
int BufferSizeForTimeout(const QString& comBuf);
/// COM_BUF in bytes, as the limit of a response; unknown text gives 1024.
int ResponseLimit(const QString& comBuf);

/// The response time-out in polls of 10 ms: 4000 for the largest buffer at 1200 bps, scaled by speed and
/// buffer size, and never below 50. Polls that refresh the window, every twentieth, do not count.
int TimeoutPolls(const SettingsRecord& settings);

/// The command line's text while waiting for a response: for the first five refreshes the command, from the
/// sixth on alternately with and without a "*" at the caret. A caret at the end puts it after the last
/// character; a negative caret gives no mark.
QString WaitingText(const QString& command, int caret, int refresh);

inline constexpr std::chrono::milliseconds kPollTime{10};

/// The wait for a response, counted in polls of that time. Pure: the caller reports each poll.
class WaitPlan {
 public:
  enum class Step {
    Continue,
    Refresh,  ///< every 20th poll: show the waiting mark and look at the ESC key
    TimedOut,
  };

  /// With a time-out of its own it ends after that time, rounded up to a whole poll, whatever the settings
  /// say.
  explicit WaitPlan(const SettingsRecord& settings,
                    std::optional<std::chrono::milliseconds> ownTimeout = std::nullopt);

  /// One poll has passed.
  Step Next();
  /// How many polls it takes to the next step that is not Continue; at most 20, a refresh.
  [[nodiscard]] int PollsToNextStep() const;
  /// How many refreshes there have been.
  [[nodiscard]] int Refreshes() const { return m_refreshes; }

 private:
  std::optional<std::chrono::milliseconds> m_left;  ///< of the time-out of its own
  int m_limit;
  bool m_limited;
  int m_polls = 0;  ///< polls that count towards the time-out: all but every 20th
  int m_iterations = 0;
  int m_refreshes = 0;
};

}  // namespace quarn
