#include "settings/store_values.h"

#include "settings/key_store.h"
#include "settings/settings_load_save.h"

namespace quarn {

void TellSettingsTooLong(MessageOperations& messages) {
  messages.ShowInformationMessage(QStringLiteral(": Warning"), QString(),
                                  QStringLiteral("The settings are too long and were not saved."),
                                  QStringLiteral("Shorten the texts of the Function Key Table."));
}

bool StoreValues(const QString& path, const QList<NewValue>& values, MessageOperations& messages) {
  if (UpdateFits(path, values)) {
    UpdateValues(path, values);
    return true;
  }
  TellSettingsTooLong(messages);
  return false;
}

bool StoreAllSettings(const QString& path, const SettingsRecord& record, MessageOperations& messages) {
  return StoreValues(path, AllValues(record), messages);
}

}  // namespace quarn
