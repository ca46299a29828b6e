#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

#include "settings/settings_record.h"

namespace quarn::kill {

/// What is done to the settings, as the windows do it.
enum class Deed { SetOption, SaveCommands, SaveAll, Save, Open, RestoreDefaults };

/// One deed. It is the same for the same seed, writer and number, and no other one writes its text.
struct Step {
  Deed deed = Deed::SetOption;
  /// The setting's place in the table, for SetOption.
  int setting = 0;
  QString text;
};
Step StepOf(std::uint32_t seed, int writer, int number);

/// A record with this text under every key but that of the port, whose name has to be one.
SettingsRecord RecordOf(const QString& text);

/// The folder's name ends with a separator.
struct Paths {
  QString folder;
  QString working;
  QString user;
};
Paths PathsIn(const QString& folder);

/// Does it with the program's own operations. False when one of them says that it has failed.
bool Perform(const Step& step, const Paths& paths);

/// What both files hold.
struct Contents {
  QByteArray working;
  QByteArray user;
  bool operator==(const Contents&) const = default;
};

/// What the files hold after the step; worked out on the bytes alone.
Contents After(const Step& step, const Contents& before, const QByteArray& defaults);

}  // namespace quarn::kill
