#pragma once

#include <QString>
#include <QStringList>

#include "settings/settings_record.h"
#include "ui/message_operations.h"

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

/// Gives the file the program's key set: removes the unknown keys, then adds what is missing with its
/// default value. Values that stand are kept.
void UpgradeFile(const QString& path, const KeySetComparison& comparison);

/// Creates the data folder (its last level) and deletes a working file that cannot be one: of more than
/// 16384 bytes, or one that begins with "STARTUP_STATE". Says nothing.
void PrepareWorkingFile(const QString& dataFolder);

/// Loads the working file into the record at start-up. A file that is missing, broken or of another
/// version is mended or replaced by the defaults, each with a warning that is acknowledged before the
/// next step. Sets the loaded marker.
void LoadInitialSettings(const QString& path, SettingsRecord& record, MessageOperations& messages);

}  // namespace quarn
