#pragma once

#include <QString>

#include "settings/settings_record.h"

namespace quarn {

/// COM_BUF in bytes, for computing the response time-out; unknown text gives 2048.
int BufferSizeForTimeout(const QString& comBuf);
/// COM_BUF in bytes, as the limit of a response; unknown text gives 1024.
int ResponseLimit(const QString& comBuf);

/// The response time-out in polls of 10 ms: four seconds' worth of the largest buffer at 1200 bps, scaled
/// by speed and buffer size, and never below 50.
int TimeoutPolls(const SettingsRecord& settings);

/// The command line's text while waiting for a response: for the first five refreshes the command, from the
/// sixth on alternately with and without a "*" at the caret. A caret at the end puts it after the last
/// character; a negative caret gives no mark.
QString WaitingText(const QString& command, int caret, int refresh);

/// The wait for a response, counted in polls. Pure: the caller reports each poll.
class WaitPlan {
 public:
  enum class Step {
    Continue,
    Refresh,  ///< every 20th poll: show the waiting mark and look at the ESC key
    TimedOut,
  };

  explicit WaitPlan(const SettingsRecord& settings);

  /// One poll of 10 ms has passed.
  Step Next();
  /// How many refreshes there have been.
  [[nodiscard]] int Refreshes() const { return m_refreshes; }

 private:
  int m_limit;
  bool m_limited;
  int m_polls = 0;  ///< polls that count towards the time-out: all but every 20th
  int m_iterations = 0;
  int m_refreshes = 0;
};

}  // namespace quarn
