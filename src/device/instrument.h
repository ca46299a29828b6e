#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "device/pseudo_terminal.h"
#include "device/rules.h"

namespace quarn::device {

/// A command as it came: its text, and the framing that its answer gets too.
struct Command {
  std::string text;
  std::string before;  ///< STX or nothing
  std::string after;   ///< CR, LF, CR LF or ETX
};

/// A command that has no end by then is dropped; those who send to instruments keep well below it.
inline constexpr std::size_t kLongestCommandBytes = 4096;

/// Takes complete commands off the front of `received`: those that end in CR, LF, CR LF, or stand between
/// STX and ETX. An STX starts anew, whatever came before it. Leaves at most kLongestCommandBytes.
std::vector<Command> TakeCommands(std::string& received);

/// A simulated instrument on a pseudo-terminal. Run serves it in the calling thread until Stop, from any
/// thread, or until a rule hangs up.
class Instrument {
 public:
  explicit Instrument(Rules rules);
  ~Instrument();
  Instrument(const Instrument&) = delete;
  Instrument& operator=(const Instrument&) = delete;

  [[nodiscard]] const std::string& NodePath() const { return m_line.NodePath(); }
  void Run();
  void Stop();
  /// From now on everything that arrives is kept for Received. Before Run.
  void KeepRecord() { m_keepsRecord = true; }
  /// Everything that has arrived since KeepRecord, byte for byte. Any thread.
  [[nodiscard]] std::string Received() const;
  /// Called in Run's thread right after the last byte of an answer has been written.
  void OnAnswered(std::function<void()> callback) { m_onAnswered = std::move(callback); }

 private:
  /// False when the instrument was stopped or more came in the meantime.
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
