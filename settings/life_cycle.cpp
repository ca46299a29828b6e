#include "settings/life_cycle.h"

#include <QFile>
#include <QFileInfo>

#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"

namespace quarn {
namespace {

constexpr qint64 kLargestFile = 16384;  // bytes

void Warn(MessageOperations& messages, const QString& first, const QString& second) {
  messages.ShowInformationMessage(QStringLiteral(": Warning"), QString(), first, second);
}

void StartOver(const QString& path, MessageOperations& messages, const QString& why) {
  Warn(messages, why, QStringLiteral("Starting with default settings."));
  WriteDefaultFile(path);
}

void Mend(const QString& path, MessageOperations& messages) {
  const KeySetComparison comparison = CompareWithDefaults(path);
  switch (comparison.result) {
    case KeySetResult::NoFile:
      StartOver(path, messages, QStringLiteral("Initial settings file not found."));
      break;
    case KeySetResult::Invalid:
      StartOver(path, messages, QStringLiteral("Initial file is invalid."));
      break;
    case KeySetResult::Different:
      Warn(messages, QStringLiteral("Initial file version is different or corrupt."),
           QStringLiteral("Updating configuration settings."));
      UpgradeFile(path, comparison);
      break;
    case KeySetResult::Equal:
      break;
  }
}

}  // namespace

KeySetComparison CompareWithDefaults(const QString& path) {
  if (ClassifyPath(path) != PathKind::File) return {};
  if (QFileInfo(path).size() > kLargestFile) return {KeySetResult::Invalid, {}, {}};
  QStringList entries;
  const int count = ListEntries(path, entries);
  if (count == kListNoFile) return {};  // it has gone meanwhile
  if (count == kListFormatError) return {KeySetResult::Invalid, {}, {}};
  KeySetComparison comparison{KeySetResult::Equal, {}, {}};
  QStringList fileKeys;
  for (const QString& entry : entries) {
    fileKeys.append(KeyPart(entry).toString());
    if (FindSetting(SettingsKey(fileKeys.last())) == nullptr) comparison.unknownKeys.append(fileKeys.last());
  }
  for (const QString& line : DefaultLines()) {
    if (!fileKeys.contains(KeyPart(line).toString())) comparison.missingLines.append(line);
  }
  const bool equal = comparison.unknownKeys.isEmpty() && comparison.missingLines.isEmpty();
  comparison.result = equal ? KeySetResult::Equal : KeySetResult::Different;
  return comparison;
}

void UpgradeFile(const QString& path, const KeySetComparison& comparison) {
  for (const QString& key : comparison.unknownKeys) RemoveKey(path, SettingsKey(key));
  // An unknown entry without "=" may have taken keys with it that begin like it: they come back too, with
  // their defaults. What is there already stays.
  const QStringList lines = comparison.unknownKeys.isEmpty() ? comparison.missingLines : DefaultLines();
  for (const QString& line : lines) AddKeyLine(path, line);
}

void PrepareWorkingFile(const QString& dataFolder) {
  MakeDataFolder(dataFolder);
  const QString path = WorkingSettingsFile(dataFolder);
  if (ClassifyPath(path) != PathKind::File) return;
  const bool abandoned = QFileInfo(path).size() > kLargestFile ||
                         ReadWholeText(path).value_or(QString()).startsWith(QStringLiteral("STARTUP_STATE"));
  if (abandoned) QFile::remove(path);
}

void LoadInitialSettings(const QString& path, SettingsRecord& record, MessageOperations& messages) {
  Mend(path, messages);
  const auto isLoaded = [&] {
    return LoadSettings(path, record) == LoadResult::Loaded && ValidatePortName(record.comPort);
  };
  if (!isLoaded()) {
    StartOver(path, messages, QStringLiteral("Defined port name is invalid."));
    // Where not even the defaults could be written, the program still runs with them.
    if (!isLoaded()) record = DefaultSettings();
  }
  record.loadedMarker = QStringLiteral("TRUE");
}

}  // namespace quarn
