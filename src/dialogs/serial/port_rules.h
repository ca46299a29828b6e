#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "dialogs/shared_state.h"
#include "serial/port_connection.h"
#include "serial/port_list.h"
#include "settings/setting_values.h"
#include "settings/settings_record.h"

// What the port dialogs decide, as values: no window, no line. Pure functions, any thread.

namespace quarn {

/// What the decisions depend on.
struct PortSituation {
  QString current = NoPort();  ///< the current port name
  bool connected = false;
  QStringList ports;  ///< the ports present, in their order
};

PortSituation SituationOf(const SharedState& state, const PortConnection& connection);

// Port Number.

/// What the dialog shows: the selected port or NONE, and whether SET can be pressed.
struct PortChoice {
  QString selection;
  bool setEnabled = false;

  bool operator==(const PortChoice&) const = default;
};

PortChoice ChoiceAtOpening(const PortSituation& situation);
PortChoice ChoiceAtListChange(const PortSituation& situation);
/// Right after the person has picked `item`; the next look at the controls judges by IsSetEnabled.
PortChoice ChoiceOfItem(const PortSituation& situation, const QString& item);
/// SET offers what is not so already: another choice than the current port, or that port unconnected.
bool IsSetEnabled(const PortSituation& situation, const QString& selection);
/// Whether OK has something to apply: the person has picked something else than the dialog had put there
/// (`atRest`), and it is not so already.
bool IsChangePending(const PortSituation& situation, const QString& selection, const QString& atRest);
/// "Quarn - COM Port Number (COM3)  ". With a status the title is the shorter "Quarn - (COM3)  " and the
/// status, so that this small window can show it.
QString PortNumberTitle(const PortSituation& situation, const QString& status);

// Detailed COM Port List.

inline constexpr int kPortRowCount = 30;

struct PortRow {
  QString port;
  QString description;  ///< the friendly name; the port's name where the system gives none
};

/// One row for each of the first 30 names of the list, with the friendly name that carries that very
/// short name.
QList<PortRow> PortRowsOf(const QStringList& ports, const FriendlyNameTable& friendlyNames);
/// The row of this port, if it has one.
std::optional<int> RowOf(const QList<PortRow>& rows, const QString& port);
/// Whether SET can be pressed when `name` is marked.
bool IsRowSetEnabled(const PortSituation& situation, const QString& name);
QString PortListStatus(const PortSituation& situation);
QString PortDetailsTitle(const PortSituation& situation, const QString& status);

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
