#include "dialogs/serial/port_rules.h"

#include <algorithm>

#include "serial/port_names.h"
#include "settings/settings_table.h"

namespace quarn {

PortSituation SituationOf(const SharedState& state, const PortConnection& connection) {
  PortSituation situation{state.currentPortName, connection.connected.IsSet(), {}};
  for (int i = 0; i < std::clamp(connection.portCount, 0, kPortCapacity); ++i) {
    situation.ports.append(connection.portNames[static_cast<std::size_t>(i)]);
  }
  return situation;
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

QList<PortRow> PortRowsOf(const QStringList& ports, const FriendlyNameTable& friendlyNames) {
  QList<QString> unused(friendlyNames.begin(), friendlyNames.end());
  QList<PortRow> rows;
  for (const QString& port : ports.first(std::min<qsizetype>(ports.size(), kPortRowCount))) {
    const auto found = std::find_if(unused.begin(), unused.end(),
                                    [&](const QString& each) { return ShortPortName(each) == port; });
    rows.append({port, found == unused.end() ? port : *found});
    // Two devices with the same name have a row each.
    if (found != unused.end()) unused.erase(found);
  }
  return rows;
}

std::optional<int> RowOf(const QList<PortRow>& rows, const QString& port) {
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const PortRow& row) { return row.port == port; });
  if (found == rows.end()) return std::nullopt;
  return static_cast<int>(found - rows.begin());
}

bool IsRowSetEnabled(const PortSituation& situation, const QString& name) {
  if (!situation.ports.first(std::min<qsizetype>(situation.ports.size(), kPortRowCount)).contains(name)) {
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
