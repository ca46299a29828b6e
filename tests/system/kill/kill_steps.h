#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

#include "settings/settings_record.h"

namespace quarn::kill {

/// The changes to the settings, as windows make them.
enum class Deed { SetOption, SaveCommands, SaveAll, Save, Open, RestoreDefaults };

/// One change. The same seed, writer and number give the same one, and its text is unique.
struct Step {
  Deed deed = Deed::SetOption;
  /// The setting's place in the table, for SetOption.
  int setting = 0;
  QString text;
};
Step StepOf(std::uint32_t seed, int writer, int number);

/// A record with this text under every key, except the port, which needs a valid name.
SettingsRecord RecordOf(const QString& text);

/// The folder's name ends with a separator.
struct Paths {
  QString folder;
  QString working;
  QString user;
};
Paths PathsIn(const QString& folder);

/// Makes the change with the program's operations. False if one of them fails.
bool Perform(const Step& step, const Paths& paths);

/// The content of both files.
struct Contents {
  QByteArray working;
  QByteArray user;
  bool operator==(const Contents&) const = default;
};

/// The content after the step, computed from the bytes alone.
Contents After(const Step& step, const Contents& before, const QByteArray& defaults);

}  // namespace quarn::kill
