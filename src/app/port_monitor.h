#pragma once

#include <QStringList>
#include <cstdint>
#include <optional>
#include <utility>

#include "app/main_window.h"
#include "app/program.h"
#include "dialogs/dialog_context.h"

namespace quarn {

enum class PortEvent {
  None,
  Vanished,  ///< the connected port is no longer there
  Returned,  ///< the configured port is there again, and not connected
};

/// The meaning of a change of the ports present, given by their names. An added port is looked for only at
/// the first position where the two lists differ.
PortEvent DecideOnPorts(const QStringList& before, const QStringList& now, bool connected,
                        const QString& currentPortName);

/// Watches the ports present, and reacts when the connected one disappears or the configured one returns.
/// Only their number is compared: replacing one port by another is not noticed. The connected line is checked
/// too: if it is dead it is lost, even if its port is back by then. User-interface thread only.
class PortMonitor {
 public:
  /// `pause` is for the waits between attempts to connect.
  PortMonitor(Program& program, MainWindow& window, Pause pause)
      : m_program(program), m_window(window), m_pause(std::move(pause)) {}

  /// Lists the ports present.
  void ListPorts();
  /// One tick of 100 ms, or the last of several, of which the others had nothing to do. The first ten are
  /// ignored.
  void Tick(int ticks = 1);
  /// Whether the next ticks have nothing to do until this thread's event loop wakes.
  [[nodiscard]] bool IsAtRest() const;
  [[nodiscard]] std::uint32_t TickCount() const { return m_ticks; }

 private:
  PortEvent Update();
  void TellTooMany();
  void TellVanished(const QString& port);
  void OfferToConnect(const QString& port);
  bool ConnectWhenFree(const SettingsRecord& settings);
  [[nodiscard]] bool IsLineLost() const;
  void HandleLostLine();

  Program& m_program;
  MainWindow& m_window;
  const Pause m_pause;
  std::uint32_t m_startDelay = 10;
  std::uint32_t m_ticks = 0;
  std::optional<std::uint64_t> m_seenRevision;  ///< of the ports, at the last tick
  int m_lostTicks = 0;                          ///< for how many ticks the connected line has been dead
  bool m_updating = false;
};

}  // namespace quarn
