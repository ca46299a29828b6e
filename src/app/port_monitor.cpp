#include "app/port_monitor.h"

#include <algorithm>

#include "app/connection_commands.h"
#include "serial/port_list.h"
#include "settings/setting_values.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"

namespace quarn {
namespace {

/// A dead line is handled at this tick. An unplugged port disappears from the list slightly later than its
/// line dies, and that has a different message.
constexpr int kLossSettled = 3;

bool IsListed(const PortList& list, const QString& port) {
  const auto end = list.names.begin() + std::clamp(list.count, 0, kPortCapacity);
  return std::find(list.names.begin(), end, port) != end;
}

/// The tick is paused while this exists.
class RestingTimer {
 public:
  explicit RestingTimer(MainWindow& window) : m_window(window) { m_window.StopTimer(); }
  ~RestingTimer() { m_window.StartTimer(); }
  RestingTimer(const RestingTimer&) = delete;
  RestingTimer& operator=(const RestingTimer&) = delete;

 private:
  MainWindow& m_window;
};

}  // namespace

PortEvent DecideOnPorts(const PortList& before, const PortList& now, bool connected,
                        const QString& currentPortName) {
  if (before.count > now.count && connected) {
    return IsListed(now, currentPortName) ? PortEvent::None : PortEvent::Vanished;
  }
  if (before.count < now.count && !connected) {
    const auto [added, old] = std::mismatch(now.names.begin(), now.names.end(), before.names.begin());
    if (added != now.names.end() && *added == currentPortName) return PortEvent::Returned;
  }
  return PortEvent::None;
}

void PortMonitor::ListPorts() {
  RefreshPortList(*m_program.portSource, m_program.connection);
  m_program.state.tooManyPorts = m_program.connection.portCount >= kTooManyPorts;
  m_before = m_program.connection.portNames;
}

bool PortMonitor::IsAtRest() const {
  return m_startDelay == 0 && m_seenRevision && m_program.portSource->Revision() == m_seenRevision &&
         !IsLineLost();
}

void PortMonitor::Tick(int ticks) {
  // A message of the last change may still be shown, or one of a port being chosen: later changes are seen
  // when it is closed.
  if (m_updating || m_program.state.portBeingChosen) return;
  if (m_startDelay > 0) {
    --m_startDelay;
    return;
  }
  m_ticks += static_cast<std::uint32_t>(ticks);
  std::int32_t count = 0;
  const bool counted = CountPorts(*m_program.portSource, count);
  m_seenRevision = m_program.portSource->Revision();
  m_updating = true;
  if (counted && count != m_program.connection.portCount) Update();
  m_lostTicks = IsLineLost() ? m_lostTicks + 1 : 0;
  if (m_lostTicks >= kLossSettled) HandleLostLine();
  m_updating = false;
}

PortEvent PortMonitor::Update() {
  PortConnection& connection = m_program.connection;
  m_before = connection.portNames;
  const PortList before{connection.portCount, m_before};
  m_program.waitIndicator->Show();
  const bool listed = RefreshPortList(*m_program.portSource, connection);
  m_program.waitIndicator->Restore();
  if (!listed) return PortEvent::None;
  // The decision uses the listed ports, even if they change while a message is shown.
  const PortList now{connection.portCount, connection.portNames};
  m_program.state.tooManyPorts = now.count >= kTooManyPorts;
  PortEvent event = PortEvent::None;
  if (m_program.state.tooManyPorts) {
    TellTooMany();
  } else {
    m_program.messages->ShowTransientMessage(QStringLiteral("COM port list has been updated."), {});
    const QString port = m_program.state.currentPortName;
    event = DecideOnPorts(before, now, connection.connected.IsSet(), port);
    switch (event) {
      case PortEvent::Vanished:
        TellVanished(port);
        break;
      case PortEvent::Returned:
        OfferToConnect(port);
        break;
      case PortEvent::None:
        break;
    }
  }
  RaiseConnectionRefreshes(m_program.state.requests);
  return event;
}

bool PortMonitor::IsLineLost() const {
  const PortConnection& connection = m_program.connection;
  // A port that could not be opened again after another was refused counts as connected, and has no line.
  return connection.connected.IsSet() && (!connection.handle.IsOpen() || connection.handle.Line()->IsLost());
}

void PortMonitor::HandleLostLine() {
  PortConnection& connection = m_program.connection;
  m_lostTicks = 0;
  const QString port = m_program.state.currentPortName;
  TellVanished(port);
  // The next tick comes after the question.
  m_window.SetTitle(QString());
  m_window.UpdateMenuState();
  std::int32_t count = 0;
  if (!CountPorts(*m_program.portSource, count)) return;
  PortEvent event = PortEvent::None;
  if (count != connection.portCount) {
    event = Update();
  } else {
    // An equal count is not reported as a change, but a port that is offered must exist now.
    ListPorts();
    RaiseConnectionRefreshes(m_program.state.requests);
  }
  const PortList now{connection.portCount, connection.portNames};
  if (event == PortEvent::Returned || !IsListed(now, port)) return;
  OfferToConnect(port);
  RaiseConnectionRefreshes(m_program.state.requests);
}

void PortMonitor::TellTooMany() {
  if (!m_program.state.open.Contains(Window::DetailedPortList)) return;
  m_program.messages->ShowInformationMessage(
      QStringLiteral(": Information"), QString(),
      QStringLiteral("Too many COM ports to display in the detailed list."),
      QStringLiteral("The \"Detailed COM Port List\" will be closed."));
  m_program.state.requests.close.Add(Window::DetailedPortList);
}

void PortMonitor::TellVanished(const QString& port) {
  const RestingTimer rest(m_window);
  TellPortNotAvailable(*m_program.messages, port);
  m_program.connection.connected.Update(PortChange::Lost);
  m_program.state.requests.refresh.Add(Window::MainDialog);
}

void PortMonitor::OfferToConnect(const QString& port) {
  const RestingTimer rest(m_window);
  PortConnection& connection = m_program.connection;
  QString& current = m_program.state.currentPortName;
  if (!m_program.messages->AskYesNo(QStringLiteral(": Confirmation"), QString(),
                                    QStringLiteral("Do you want to connect to \"%1\" ?").arg(port), QString(),
                                    AnswerByDefault::AgreeUncalled)) {
    connection.connected.Update(PortChange::Undefined);
    current = NoPort();
    return;
  }
  RaisePortDialogRefreshes(m_program.state.requests);
  ClosePort(connection);
  SettingsRecord settings = m_program.settings;
  settings.comPort = port;
  const bool opened = ConnectPort(settings, connection, m_program.Environment());
  connection.connected.Update(OpeningThat(opened));
  if (!opened) {
    TellPortNotAvailable(*m_program.messages, port);
    current = NoPort();
    return;
  }
  m_program.messages->ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                             QStringLiteral("Successfully connected to  \"%1\"").arg(port),
                                             QString());
  current = port;
  StoreValues(m_program.workingSettingsFile, {{keys::kComPort, port}}, *m_program.messages);
}

}  // namespace quarn
