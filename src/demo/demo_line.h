#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include "device/command.h"
#include "device/rules.h"
#include "serial/read_deadline.h"
#include "serial/serial_line.h"

namespace quarn {

/// A line without hardware: at its far end the simulated instrument answers, within this process. It needs
/// no thread of its own: what a command brings, and when, is known when the command has been written.
///
/// Its bytes need no time, whatever the rate. Endless bytes are as many as two reads take.
class DemoLine final : public SerialLine {
 public:
  explicit DemoLine(device::Rules rules);

  LineResult GetState(LineState& state) override;
  LineResult SetState(const LineState& state) override;
  LineResult SetTimeouts(const LineTimeouts& timeouts) override;
  LineResult SetModemLines(const ModemLines& lines) override;
  LineResult Purge() override;
  LineResult ClearError() override;
  IoResult Read(char* buffer, std::size_t size) override;
  IoResult Write(const char* data, std::size_t size) override;
  void CancelIo() override;
  void AllowIo() override;
  LineResult Close() override;
  bool IsLost() override;

 private:
  /// Bytes, or the end of the line, that come at a time.
  struct Arrival {
    LineClock::time_point time;
    std::string bytes{};
    bool endless = false;  ///< a new command ends them
    bool hangUp = false;
  };

  /// Why nothing can be done on this line now. Call with m_mutex held, like all that follow.
  [[nodiscard]] std::optional<LineFailure> Obstacle() const;
  [[nodiscard]] LineResult Usable() const;
  void Answer(const device::Command& command);
  /// Returns how long the next step waits.
  std::chrono::milliseconds Perform(const device::Step& step, const device::Command& command,
                                    LineClock::time_point when);
  IoResult ReadUntilEnd(std::unique_lock<std::mutex>& guard, char* buffer, std::size_t size);
  /// Moves what has come by now into the buffer.
  std::size_t Take(char* buffer, std::size_t size);

  const device::Rules m_rules;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  LineState m_state;
  LineTimeouts m_timeouts;
  std::string m_command;         ///< what has been written and is no whole command yet
  std::deque<Arrival> m_coming;  ///< in the order of time
  LineClock::time_point m_answeredBy = LineClock::now();
  bool m_cancelled = false;
  bool m_reading = false;
  bool m_closed = false;
  bool m_lost = false;
};

}  // namespace quarn
