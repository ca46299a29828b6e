#pragma once

#include <QString>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "device/instrument.h"
#include "serial/open_line_linux.h"

namespace quarn::test {

/// A simulated instrument on a real pseudo-terminal, served by a thread of its own for as long as this
/// object lives.
class ServedInstrument {
 public:
  explicit ServedInstrument(device::Rules rules) : m_instrument(std::move(rules)) {
    m_instrument.KeepRecord();
    m_instrument.OnAnswered([this] { NoteAnswer(); });
    m_thread = std::thread([this] { m_instrument.Run(); });
  }
  explicit ServedInstrument(std::string_view rules) : ServedInstrument(device::ParseRules(rules)) {}
  ~ServedInstrument() {
    m_instrument.Stop();
    m_thread.join();
  }
  ServedInstrument(const ServedInstrument&) = delete;
  ServedInstrument& operator=(const ServedInstrument&) = delete;

  /// The device node to open.
  [[nodiscard]] QString NodePath() const { return QString::fromStdString(m_instrument.NodePath()); }
  /// Every byte that has come over the wire.
  [[nodiscard]] std::string Received() const { return m_instrument.Received(); }
  /// How many answers have been sent to their last byte.
  [[nodiscard]] int Answers() const {
    const std::lock_guard guard(m_mutex);
    return m_answers;
  }
  /// Called in the serving thread right after the last byte of each answer.
  void OnAnswered(std::function<void()> callback) {
    const std::lock_guard guard(m_mutex);
    m_callback = std::move(callback);
  }

 private:
  void NoteAnswer() {
    const std::lock_guard guard(m_mutex);
    ++m_answers;
    if (m_callback) m_callback();
  }

  device::Instrument m_instrument;
  mutable std::mutex m_mutex;
  int m_answers = 0;
  std::function<void()> m_callback;
  std::thread m_thread;
};

/// Opens the near end of its line.
inline OpenResult OpenServedLine(const ServedInstrument& instrument) {
  return OpenTerminalDevice(instrument.NodePath());
}

/// The time-outs for a line that a test reads from.
inline LineResult SetServedTimeouts(SerialLine& line, const LineTimeouts& timeouts) {
  return line.SetTimeouts(timeouts);
}

}  // namespace quarn::test
