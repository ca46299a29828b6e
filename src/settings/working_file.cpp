#include "settings/working_file.h"

#include "base/bounds.h"
#include "settings/damaged_file.h"
#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_text.h"

namespace quarn {
namespace {

void Warn(MessageOperations& messages, const QString& first, const QString& second) {
  messages.ShowInformationMessage(QStringLiteral(": Warning"), QString(), first, second);
}

void StartOver(const QString& path, MessageOperations& messages, const QString& why) {
  Warn(messages, why, QStringLiteral("Starting with default settings."));
  if (KeepDamagedFile(path)) WriteDefaultFile(path);
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
  if (IsTooLargeForSettings(path)) return {KeySetResult::Invalid, {}, {}};
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

std::optional<QString> UpgradedText(const QString& text, const KeySetComparison& comparison) {
  QString upgraded = text;
  const auto take = [&upgraded](const std::optional<QString>& changed) {
    upgraded = changed.value_or(upgraded);
    return changed.has_value();
  };
  for (const QString& key : comparison.unknownKeys) take(TextWithoutKey(upgraded, SettingsKey(key)));
  // An unknown entry without "=" may have removed keys that begin like it: they are added again with their
  // defaults. Existing entries stay.
  const QStringList lines = comparison.unknownKeys.isEmpty() ? comparison.missingLines : DefaultLines();
  // A line outside the entries prevents adding the key that it names, until the first added line drops it.
  bool someAdded = !lines.isEmpty();
  while (someAdded) {
    someAdded = false;
    for (const QString& line : lines) someAdded |= take(TextWithKeyLine(upgraded, line));
  }
  // A file with too many lines, even short ones, is invalid too.
  return FitsFile(upgraded) && EntriesOf(upgraded) ? std::optional(upgraded) : std::nullopt;
}

bool UpgradeFile(const QString& path, const KeySetComparison& comparison) {
  const BoundsFile file(path);
  const std::optional<QString> text = ReadWholeText(path);
  const std::optional<QString> upgraded = text ? UpgradedText(*text, comparison) : std::nullopt;
  return upgraded && (*upgraded == *text || WriteWholeText(path, *upgraded));
}

void PrepareWorkingFile(const QString& dataFolder) {
  MakeDataFolder(dataFolder);
  const QString path = WorkingSettingsFile(dataFolder);
  if (IsTooLargeForSettings(path) ||
      ReadWholeText(path).value_or(QString()).startsWith(QStringLiteral("STARTUP_STATE"))) {
    MoveToDamagedFile(path);
  }
}

void LoadInitialSettings(const QString& path, SettingsRecord& record, MessageOperations& messages) {
  Mend(path, messages);
  const auto isLoaded = [&] {
    return LoadSettings(path, record) == LoadResult::Loaded && ValidatePortName(record.comPort);
  };
  if (!isLoaded()) {
    StartOver(path, messages, QStringLiteral("Defined port name is invalid."));
    // If not even the defaults could be written, the program still runs with them.
    if (!isLoaded()) record = DefaultSettings();
  }
  record.loadedMarker = QStringLiteral("TRUE");
}

}  // namespace quarn
