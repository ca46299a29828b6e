#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "base/message_operations.h"
#include "settings/settings_record.h"

namespace quarn {

/// Compares a file's keys with those of the program. The version line is ignored.
enum class KeySetResult { NoFile = -1, Equal = 0, Different = 1, Invalid = 2 };

struct KeySetComparison {
  KeySetResult result = KeySetResult::NoFile;
  QStringList unknownKeys;   ///< keys of the file that the program does not know, in file order
  QStringList missingLines;  ///< default lines whose key the file lacks, in default order
};

/// A file of more than 16384 bytes, or one whose entries cannot be listed, is invalid.
[[nodiscard]] KeySetComparison CompareWithDefaults(const QString& path);

/// A file's text with the program's keys: unknown keys are removed, missing ones are added with their default
/// values. Existing values are kept. Returns nullopt if the text would be too long for a settings file.
[[nodiscard]] std::optional<QString> UpgradedText(const QString& text, const KeySetComparison& comparison);

/// Replaces the file with that text, once. Returns false, without changing anything, if there is no such text
/// or it cannot be written.
bool UpgradeFile(const QString& path, const KeySetComparison& comparison);

/// Creates the data folder and removes an invalid working file: one of more than 16384 bytes, or one that
/// begins with "STARTUP_STATE". It is moved to the place of damaged files. Shows no message.
void PrepareWorkingFile(const QString& dataFolder);

/// Loads the working file into the record at start-up. A file that is missing, broken or of another version
/// is updated or replaced by the defaults, each with a warning that the user confirms before the next step. A
/// file with content is kept as a copy before the defaults replace it. If it cannot be kept, it is not
/// replaced, and only the record has the defaults. Sets the loaded marker.
void LoadInitialSettings(const QString& path, SettingsRecord& record, MessageOperations& messages);

}  // namespace quarn
