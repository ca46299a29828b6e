#include "settings/settings_load_save.h"

#include <QByteArray>
#include <algorithm>
#include <optional>

#include "settings/key_store.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"

namespace quarn {

LoadResult LoadSettings(const QString& path, SettingsRecord& record) {
  if (ClassifyPath(path) != PathKind::File) return LoadResult::NoFile;
  SettingsRecord loaded = record;
  bool complete = true;
  const auto settings = SettingsInLoadOrder();
  QList<SettingsKey> keys;
  for (const Setting* setting : settings) keys.append(setting->key);
  const QList<std::optional<QString>> values = ReadValues(path, keys);
  for (qsizetype i = 0; const Setting* setting : settings) {
    const std::optional<QString>& value = values[i++];
    if (!value || (value->isEmpty() && setting->whenEmpty == EmptyValue::Refused)) {
      complete = false;
    } else {
      setting->field.In(loaded) = *value;
    }
  }
  if (!complete) return LoadResult::Incomplete;
  record = loaded;
  return LoadResult::Loaded;
}

QList<NewValue> AllValues(const SettingsRecord& record) {
  QList<NewValue> values;
  for (const Setting* setting : SettingsInSaveOrder()) {
    values.append({setting->key, setting->savedFrom.In(record)});
  }
  return values;
}

bool SaveAllSettings(const QString& path, const SettingsRecord& record) {
  return UpdateValues(path, AllValues(record));
}

bool ValidatePortName(const QString& name) {
  const QByteArray bytes = name.toLocal8Bit();
  if (name == kNoPort) return true;
  if (!bytes.startsWith("COM") || bytes.size() < 4 || bytes.size() > 5) return false;
  return std::none_of(bytes.begin() + 3, bytes.end(), [](char c) { return c >= 0x28 && c <= 0x2F; });
}

void TellSettingsTooLong(MessageOperations& messages) {
  messages.ShowInformationMessage(QStringLiteral(": Warning"), QString(),
                                  QStringLiteral("The settings are too long and were not saved."),
                                  QStringLiteral("Shorten the texts of the Function Key Table."));
}

bool UpdateIfFits(const QString& path, const QList<NewValue>& values) {
  if (!UpdateFits(path, values)) return false;
  UpdateValues(path, values);
  return true;
}

bool StoreValues(const QString& path, const QList<NewValue>& values, MessageOperations& messages) {
  const bool stored = UpdateIfFits(path, values);
  if (!stored) TellSettingsTooLong(messages);
  return stored;
}

bool StoreAllSettings(const QString& path, const SettingsRecord& record, MessageOperations& messages) {
  return StoreValues(path, AllValues(record), messages);
}

}  // namespace quarn
