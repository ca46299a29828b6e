#include "dialogs/serial/port_rules.h"

#include <algorithm>

#include "serial/port_names.h"
#include "settings/settings_table.h"

namespace quarn {

PortSituation SituationOf(const SharedState& state, const PortConnection& connection) {
  return {state.currentPortName, connection.connected.IsSet(), connection.portNames};
}

PortChoice ChoiceAtOpening(const PortSituation& situation) {
  if (situation.connected && situation.ports.contains(situation.current)) return {situation.current, true};
  return {NoPort(), false};
}

PortChoice ChoiceAtListChange(const PortSituation& situation) {
  if (situation.ports.contains(situation.current)) return {situation.current, true};
  return {NoPort(), false};
}

PortChoice ChoiceOfItem(const PortSituation& situation, const QString& item) {
  if (!situation.connected && situation.ports.contains(item)) return {item, true};
  return {NoPort(), false};
}

bool IsSetEnabled(const PortSituation& situation, const QString& selection) {
  return selection != situation.current || !situation.connected;
}

bool IsChangePending(const PortSituation& situation, const QString& selection, const QString& atRest) {
  return selection != atRest && IsSetEnabled(situation, selection);
}

QString PortNumberTitle(const PortSituation& situation, const QString& status) {
  const QString port = PortTitlePart(situation.current, situation.connected);
  return (status.isEmpty() ? QStringLiteral("Quarn - COM Port Number (") : QStringLiteral("Quarn - (")) +
         port + QStringLiteral(")  ") + status;
}

QList<Port> PortRowsOf(const QStringList& names, QList<Port> present) {
  QList<Port> rows;
  for (const QString& name : names.mid(0, kPortRowCount)) {
    const std::optional<int> found = RowOf(present, name);
    // Taken out, so that two devices with the same name have a row each.
    rows.append(found ? present.takeAt(*found) : Port{name, name});
  }
  return rows;
}

std::optional<int> RowOf(const QList<Port>& rows, const QString& name) {
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const Port& port) { return port.name == name; });
  if (found == rows.end()) return std::nullopt;
  return static_cast<int>(found - rows.begin());
}

bool IsRowSetEnabled(const PortSituation& situation, const QString& name) {
  if (!situation.ports.mid(0, kPortRowCount).contains(name)) {
    return false;
  }
  return !situation.connected || name != situation.current;
}

QString PortListStatus(const PortSituation& situation) {
  return situation.ports.isEmpty() ? QStringLiteral("No available COM ports detected.")
                                   : QStringLiteral("Select a port from the list below.");
}

QString DetailedPortListTitle(const PortSituation& situation, const QString& status) {
  return QStringLiteral("Quarn - Detailed COM Port List  (") +
         PortTitlePart(situation.current, situation.connected) + QStringLiteral(")  ") + status;
}

LineValues LineValuesOf(const SettingsRecord& settings) {
  return {settings.comBps, settings.comBits, settings.comParity, settings.comStop};
}

LineValues DefaultLineValues() { return LineValuesOf(DefaultSettings()); }

void PutLineValues(const LineValues& values, SettingsRecord& settings) {
  settings.comBps = values.bps;
  settings.comBits = values.bits;
  settings.comParity = values.parity;
  settings.comStop = values.stop;
}

QString PortSettingsTitle(const LineValues& values) {
  return QStringLiteral("Quarn - COM Port Settings  (") +
         QStringList{values.bps, values.bits, values.parity, values.stop}.join(QStringLiteral(", ")) +
         QLatin1Char(')');
}

}  // namespace quarn
