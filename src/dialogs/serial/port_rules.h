#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "dialogs/shared_state.h"
#include "serial/port_connection.h"
#include "serial/port_source.h"
#include "settings/setting_values.h"
#include "settings/settings_record.h"

// The decisions of the port dialogs, as values: no window, no line. Pure functions, any thread.

namespace quarn {

/// What the decisions depend on.
struct PortSituation {
  QString current = NoPort();  ///< the current port name
  bool connected = false;
  QStringList ports;  ///< the names of the ports present, in ascending number order
};

PortSituation SituationOf(const SharedState& state, const PortConnection& connection);

// Port Number.

/// The content of the dialog: the selected port or NONE, and whether SET is enabled.
struct PortChoice {
  QString selection;
  bool setEnabled = false;

  bool operator==(const PortChoice&) const = default;
};

PortChoice ChoiceAtOpening(const PortSituation& situation);
PortChoice ChoiceAtListChange(const PortSituation& situation);
/// Right after the user has selected `item`; later IsSetEnabled decides.
PortChoice ChoiceOfItem(const PortSituation& situation, const QString& item);
/// SET is enabled for a change: another port than the current one, or that port if it is not connected.
bool IsSetEnabled(const PortSituation& situation, const QString& selection);
/// Whether OK has something to apply: the user has selected something else than the dialog (`atRest`), and it
/// is not the current state.
bool IsChangePending(const PortSituation& situation, const QString& selection, const QString& atRest);
/// "Quarn - COM Port Number (COM3)  ". With a status, the shorter "Quarn - (COM3)  " and the status, so that
/// it fits this small window.
QString PortNumberTitle(const PortSituation& situation, const QString& status);

// Detailed COM Port List.

/// The list is for this many ports. It is not opened for more.
inline constexpr int kPortRowCount = 30;

/// One row for each of the first 30 names, with its description from the ports that are present now. A name
/// that is not among these is its own description.
QList<Port> PortRowsOf(const QStringList& names, QList<Port> present);
/// The row of the port with this name, if it has one.
std::optional<int> RowOf(const QList<Port>& rows, const QString& name);
/// Whether SET is enabled when `name` is selected.
bool IsRowSetEnabled(const PortSituation& situation, const QString& name);
QString PortListStatus(const PortSituation& situation);
QString DetailedPortListTitle(const PortSituation& situation, const QString& status);

// COM Port Settings.

/// The four parameters of the line, as texts of a settings record.
struct LineValues {
  QString bps;
  QString bits;
  QString parity;
  QString stop;

  bool operator==(const LineValues&) const = default;
};

LineValues LineValuesOf(const SettingsRecord& settings);
LineValues DefaultLineValues();
void PutLineValues(const LineValues& values, SettingsRecord& settings);
/// "Quarn - COM Port Settings  (9600, 8, None, 1)".
QString PortSettingsTitle(const LineValues& values);

}  // namespace quarn
