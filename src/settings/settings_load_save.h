#pragma once

#include <QList>
#include <QString>

#include "settings/settings_record.h"
#include "settings/settings_text.h"

namespace quarn {

enum class LoadResult {
  Loaded = 0,
  /// The path is not a file: nothing is there, or a folder.
  NoFile = 1,
  /// At least one key is missing, or empty where it may not be.
  Incomplete = 2,
};

/// Fills the record from the file, one lookup per key. All or nothing: with any result but Loaded the
/// record is what it was. The loaded marker is not touched; values are not checked. A value of more than
/// 1023 characters is fatal.
[[nodiscard]] LoadResult LoadSettings(const QString& path, SettingsRecord& record);

/// The 28 keys that a record is saved under, with its texts. That of ENBL_NULL goes under FUNC_KEY as well.
[[nodiscard]] QList<NewValue> AllValues(const SettingsRecord& record);

/// Writes AllValues into the file with one replacement, as UpdateValues does.
bool SaveAllSettings(const QString& path, const SettingsRecord& record);

/// Whether a COM_PORT text can be a port: "NONE", or "COM" and one or two more characters, none of them
/// from "(" to "/". The name is measured in the system's 8-bit encoding, and digits are not asked for.
[[nodiscard]] bool ValidatePortName(const QString& name);

}  // namespace quarn
