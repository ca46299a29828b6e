#pragma once

#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "settings/user_file.h"
#include "support/message_texts.h"
#include "support/recorded_messages.h"

namespace quarn::test {

inline const QString kFileInvalid =
    QStringLiteral("error/: Error//Config file is invalid./Click \"OK\" to quit loading.");
inline const QString kMayUpdate =
    QStringLiteral("yes or no/: Confirmation//The config file needs to be updated. /Is it OK to proceed?");
inline const QString kUpdated = QStringLiteral("information/: Information//Configuration file is updated./");
inline const QString kNotOpened =
    QStringLiteral("error/: Error//Destination folder error!/Could not open the QRN file.");

/// A working file, and a record with the same settings.
class UserFile : public SettingsFileTest {
 protected:
  UserFile() { WithEntry("COM_PORT=NONE", "COM_PORT=COM7", QStringLiteral("Quarn.ini")); }
  void SetUp() override { ASSERT_EQ(LoadSettings(working, record), LoadResult::Loaded); }

  /// A default file with one text replaced.
  QString WithEntry(const QByteArray& before, const QByteArray& after,
                    const QString& name = QStringLiteral("user.qrn")) const {
    QByteArray bytes = NormalisedBytes(SortedDefaults());
    EXPECT_TRUE(bytes.contains(before));
    return WithBytes(bytes.replace(before, after), name);
  }
  QString Open(const QString& path) { return OpenUserFile(path, working, record, messages); }
  /// Opens a file that must be refused, and checks that nothing changed.
  void ExpectRefused(const QString& path, const QStringList& shown) {
    const SettingsRecord before = record;
    const auto workingBefore = ReadWholeBytes(working);
    const auto userBefore = ReadWholeBytes(path);
    const QStringList filesBefore = FilesInFolder();
    messages.shown.clear();
    EXPECT_EQ(Open(path), QString());
    EXPECT_EQ(messages.shown, shown);
    EXPECT_EQ(record, before);
    EXPECT_EQ(ReadWholeBytes(working), workingBefore);
    EXPECT_EQ(ReadWholeBytes(path), userBefore);
    EXPECT_EQ(FilesInFolder(), filesBefore);
  }

  QString working = Path();
  SettingsRecord record;
  RecordedMessages messages;
};

}  // namespace quarn::test
