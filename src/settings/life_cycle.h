#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "base/message_operations.h"
#include "settings/settings_record.h"

namespace quarn {

/// How a file's keys compare with those the program knows. The version line is never looked at.
enum class KeySetResult { NoFile = -1, Equal = 0, Different = 1, Invalid = 2 };

struct KeySetComparison {
  KeySetResult result = KeySetResult::NoFile;
  QStringList unknownKeys;   ///< keys of the file that the program does not know, in file order
  QStringList missingLines;  ///< default lines whose key the file lacks, in default order
};

/// A file of more than 16384 bytes, or one whose entries cannot be listed, is invalid.
[[nodiscard]] KeySetComparison CompareWithDefaults(const QString& path);

/// A file's text with the program's key set: the unknown keys removed, then what is missing added with its
/// default value. Values that stand are kept. Nothing when that would be too long for a settings file.
[[nodiscard]] std::optional<QString> UpgradedText(const QString& text, const KeySetComparison& comparison);

/// Gives the file that text, with one replacement. False, and nothing touched, when there is no such text or
/// it cannot be written.
bool UpgradeFile(const QString& path, const KeySetComparison& comparison);

/// Creates the data folder and takes a working file away that cannot be one: of more than 16384 bytes, or one
/// that begins with "STARTUP_STATE". It is moved to where damaged files are kept. Says nothing.
void PrepareWorkingFile(const QString& dataFolder);

/// Loads the working file into the record at start-up. A file that is missing, broken or of another
/// version is mended or replaced by the defaults, each with a warning that is acknowledged before the
/// next step. A file with something in it is kept beside before the defaults replace it; one that cannot be
/// kept is not replaced, and the defaults are in the record alone. Sets the loaded marker.
void LoadInitialSettings(const QString& path, SettingsRecord& record, MessageOperations& messages);

}  // namespace quarn
