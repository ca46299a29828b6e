#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "device/command.h"
#include "device/pseudo_terminal.h"
#include "device/rules.h"

namespace quarn::device {

/// A simulated instrument on a pseudo-terminal. Run serves it in the calling thread until Stop is called,
/// from any thread, or until a rule hangs up.
class Instrument {
 public:
  explicit Instrument(Rules rules);
  ~Instrument();
  Instrument(const Instrument&) = delete;
  Instrument& operator=(const Instrument&) = delete;

  [[nodiscard]] const std::string& NodePath() const { return m_line.NodePath(); }
  void Run();
  void Stop();
  /// Keeps all received bytes from now on for Received. Call before Run.
  void KeepRecord() { m_keepsRecord = true; }
  /// All bytes received since KeepRecord. Any thread.
  [[nodiscard]] std::string Received() const;
  /// Called in Run's thread right after the last byte of an answer is written.
  void OnAnswered(std::function<void()> callback) { m_onAnswered = std::move(callback); }

 private:
  /// False if the instrument was stopped or more bytes arrived meanwhile.
  bool WaitMs(int ms);
  void ReadWhatCame();
  void Answer(const Command& command);
  bool Perform(const Step& step, const Command& command);
  bool Send(std::string_view bytes);
  void SendFlood();

  Rules m_rules;
  PseudoTerminal m_line;
  int m_stop = -1;  ///< event descriptor, readable once Stop was called
  bool m_running = true;
  bool m_keepsRecord = false;
  std::string m_pending;
  mutable std::mutex m_mutex;
  std::string m_received;
  std::function<void()> m_onAnswered;
};

}  // namespace quarn::device
