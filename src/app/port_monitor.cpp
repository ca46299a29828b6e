#include "app/port_monitor.h"

#include <QScopedValueRollback>
#include <algorithm>

#include "dialogs/serial/port_choice.h"
#include "dialogs/serial/port_rules.h"
#include "serial/port_list.h"
#include "settings/setting_values.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"

namespace quarn {
namespace {

/// A dead line is handled at this tick. An unplugged port disappears from the list slightly later than its
/// line dies, and that has a different message.
constexpr int kLossSettled = 3;
/// A modem manager tests each new port for some seconds. For so long a port in use is tried again.
constexpr int kBusyAttempts = 50;
constexpr int kBetweenAttemptsMs = 100;

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

PortEvent DecideOnPorts(const QStringList& before, const QStringList& now, bool connected,
                        const QString& currentPortName) {
  if (before.size() > now.size() && connected) {
    return now.contains(currentPortName) ? PortEvent::None : PortEvent::Vanished;
  }
  if (before.size() < now.size() && !connected) {
    // There is a difference: the list has become longer.
    const auto [added, old] = std::mismatch(now.begin(), now.end(), before.begin(), before.end());
    if (*added == currentPortName) return PortEvent::Returned;
  }
  return PortEvent::None;
}

void PortMonitor::ListPorts() { RefreshPortList(*m_program.portSource, m_program.connection); }

bool PortMonitor::IsAtRest() const {
  return m_startDelay == 0 && m_seenRevision && m_program.portSource->Revision() == m_seenRevision &&
         !IsLineLost();
}

void PortMonitor::Tick(int ticks) {
  // A message of the last change may still be shown, or one of a port being chosen: later changes are seen
  // when it is closed.
  if (m_updating || m_program.state.portBeingChanged) return;
  if (m_startDelay > 0) {
    --m_startDelay;
    return;
  }
  m_ticks += static_cast<std::uint32_t>(ticks);
  const std::optional<QList<Port>> ports = m_program.portSource->Ports();
  m_seenRevision = m_program.portSource->Revision();
  const QScopedValueRollback updating(m_updating, true);
  if (ports && ports->size() != m_program.connection.portNames.size()) Update();
  m_lostTicks = IsLineLost() ? m_lostTicks + 1 : 0;
  if (m_lostTicks >= kLossSettled) HandleLostLine();
}

PortEvent PortMonitor::Update() {
  PortConnection& connection = m_program.connection;
  const QStringList before = connection.portNames;
  m_program.waitIndicator->Show();
  const bool listed = RefreshPortList(*m_program.portSource, connection);
  m_program.waitIndicator->Restore();
  if (!listed) return PortEvent::None;
  // The decision uses the listed ports, even if they change while a message is shown.
  const QStringList now = connection.portNames;
  PortEvent event = PortEvent::None;
  if (now.size() > kPortRowCount) {
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
  // A port that could not be opened again after another was refused counts as connected, and has no line. If
  // there was none before, none is lost.
  return connection.connected.IsSet() && m_program.state.currentPortName != kNoPort &&
         (!connection.handle.IsOpen() || connection.handle.Line()->IsLost());
}

void PortMonitor::HandleLostLine() {
  PortConnection& connection = m_program.connection;
  m_lostTicks = 0;
  const QString port = m_program.state.currentPortName;
  TellVanished(port);
  // The next tick comes after the question.
  m_window.SetTitle(QString());
  m_window.UpdateMenuState();
  const std::optional<QList<Port>> ports = m_program.portSource->Ports();
  if (!ports) return;
  PortEvent event = PortEvent::None;
  if (ports->size() != connection.portNames.size()) {
    event = Update();
  } else {
    // An equal count is not reported as a change, but a port that is offered must exist now.
    ListPorts();
    RaiseConnectionRefreshes(m_program.state.requests);
  }
  if (event == PortEvent::Returned || !connection.portNames.contains(port)) return;
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
  const bool opened = ConnectWhenFree(settings);
  connection.connected.Update(OpeningThat(opened));
  if (!opened) {
    TellPortNotAvailable(*m_program.messages, port);
    current = NoPort();
    return;
  }
  TellConnectedTo(*m_program.messages, port);
  TakeAsCurrent(m_program.Context(m_pause), port);
}

bool PortMonitor::ConnectWhenFree(const SettingsRecord& settings) {
  PortConnection& connection = m_program.connection;
  const WaitShown wait(*m_program.waitIndicator);
  for (int attempts = 1;; ++attempts) {
    if (ConnectPort(settings, connection, m_program.Environment())) return true;
    if (connection.lastFailure.kind != LineError::InUse || attempts == kBusyAttempts) return false;
    m_pause(kBetweenAttemptsMs);
  }
}

}  // namespace quarn
