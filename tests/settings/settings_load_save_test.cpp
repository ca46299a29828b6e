#include "settings/settings_load_save.h"

#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

namespace quarn {
namespace {

class SettingsLoadSave : public SettingsFileTest {
 protected:
  /// A record in which every field, the marker included, holds a text of its own.
  static SettingsRecord Distinct(const QString& prefix) {
    SettingsRecord record;
    for (const Setting* setting : SettingsInLoadOrder()) {
      setting->field.In(record) = prefix + setting->key.Text().toString();
    }
    record.loadedMarker = prefix + QStringLiteral("marker");
    return record;
  }

  /// A default file without the line of this key.
  QString DefaultsWithout(SettingsKey key) {
    QStringList lines = SortedDefaults();
    lines.removeIf([&](const QString& line) { return line.startsWith(key.Text()); });
    EXPECT_EQ(lines.size(), 28);
    return WithBytes(NormalisedBytes(lines));
  }

  /// A default file in which this key's value is empty.
  QString DefaultsWithEmpty(SettingsKey key) {
    QString path = WithBytes(NormalisedBytes(SortedDefaults()));
    EXPECT_TRUE(UpdateValue(path, key, QString()));
    return path;
  }
};

TEST_F(SettingsLoadSave, LoadsEveryKeyIntoItsField) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  SettingsRecord record = Distinct(QStringLiteral("old "));
  EXPECT_EQ(LoadSettings(path, record), LoadResult::Loaded);
  for (const Setting* setting : SettingsInLoadOrder()) {
    EXPECT_EQ(setting->field.In(record), setting->defaultValue.toString());
  }
  EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
  EXPECT_EQ(record.mem[9], QStringLiteral("function-10"));
}

TEST_F(SettingsLoadSave, DoesNotTouchTheLoadedMarker) {
  SettingsRecord record = Distinct(QStringLiteral("old "));
  EXPECT_EQ(LoadSettings(WithBytes(NormalisedBytes(SortedDefaults())), record), LoadResult::Loaded);
  EXPECT_EQ(record.loadedMarker, QStringLiteral("old marker"));
}

TEST_F(SettingsLoadSave, ResultsHaveTheirNumbers) {
  EXPECT_EQ(static_cast<int>(LoadResult::Loaded), 0);
  EXPECT_EQ(static_cast<int>(LoadResult::NoFile), 1);
  EXPECT_EQ(static_cast<int>(LoadResult::Incomplete), 2);
}

TEST_F(SettingsLoadSave, APathThatIsNoFileLoadsNothing) {
  const SettingsRecord before = Distinct(QStringLiteral("old "));
  SettingsRecord record = before;
  EXPECT_EQ(LoadSettings(Path(QStringLiteral("missing")), record), LoadResult::NoFile);
  EXPECT_EQ(LoadSettings(Path(QString()), record), LoadResult::NoFile);
  EXPECT_EQ(record, before);
}

TEST_F(SettingsLoadSave, AnyMissingKeyPutsTheWholeRecordBack) {
  const SettingsRecord before = Distinct(QStringLiteral("old "));
  for (const Setting* setting : SettingsInLoadOrder()) {
    SettingsRecord record = before;
    EXPECT_EQ(LoadSettings(DefaultsWithout(setting->key), record), LoadResult::Incomplete);
    EXPECT_EQ(record, before) << setting->key.Text().toUtf8().constData();
  }
}

TEST_F(SettingsLoadSave, OnlyAStoredCommandMayBeEmpty) {
  const SettingsRecord before = Distinct(QStringLiteral("old "));
  for (const Setting* setting : SettingsInLoadOrder()) {
    SettingsRecord record = before;
    const LoadResult result = LoadSettings(DefaultsWithEmpty(setting->key), record);
    if (setting->key.Text().startsWith(u"MEM")) {
      EXPECT_EQ(result, LoadResult::Loaded);
      EXPECT_EQ(setting->field.In(record), QString());
      EXPECT_EQ(record.autoClr, QStringLiteral("OFF"));
    } else {
      EXPECT_EQ(result, LoadResult::Incomplete);
      EXPECT_EQ(record, before) << setting->key.Text().toUtf8().constData();
    }
  }
}

TEST_F(SettingsLoadSave, LoadsAFileWithoutMarkColor) {
  SettingsRecord record;
  EXPECT_EQ(LoadSettings(DefaultsWithout(keys::kMarkColor), record), LoadResult::Loaded);
  EXPECT_EQ(record.startDisp, QStringLiteral("ON"));
}

TEST_F(SettingsLoadSave, IgnoresTheVersionAndUnknownKeysAndChecksNoValue) {
  QStringList lines = SortedDefaults();
  lines.prepend(QStringLiteral("OTHER=1"));
  lines.replaceInStrings(QStringLiteral("COM_PORT=NONE"), QStringLiteral("COM_PORT= any / text "));
  QByteArray bytes = NormalisedBytes(lines);
  bytes.replace("(Ver. 1.00)", "(Ver. 0.10)");
  SettingsRecord record;
  EXPECT_EQ(LoadSettings(WithBytes(bytes), record), LoadResult::Loaded);
  EXPECT_EQ(record.comPort, QStringLiteral(" any / text "));
}

TEST_F(SettingsLoadSave, CopyingARecordCopiesEveryField) {
  const SettingsRecord source = Distinct(QStringLiteral("new "));
  SettingsRecord copy = Distinct(QStringLiteral("old "));
  copy = source;
  for (const Setting* setting : SettingsInLoadOrder()) {
    EXPECT_EQ(setting->field.In(copy), QStringLiteral("new ") + setting->key.Text().toString());
  }
  EXPECT_EQ(copy.loadedMarker, QStringLiteral("new marker"));
}

TEST_F(SettingsLoadSave, SavesEveryFieldAndNothingElse) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  const SettingsRecord record = Distinct(QStringLiteral("new "));
  EXPECT_TRUE(SaveAllSettings(path, record));
  QStringList expected;
  for (const QString& line : SortedDefaults()) {
    const QString key = KeyPart(line).toString();
    if (key == keys::kMarkColor.Text()) {
      expected.append(line);
    } else {
      expected.append(key + QStringLiteral("new ") +
                      (key == keys::kFuncKey.Text() ? QStringLiteral("ENBL_NULL=") : key));
    }
  }
  EXPECT_EQ(BytesOf(path), NormalisedBytes(expected));
}

TEST_F(SettingsLoadSave, FuncKeyCarriesTheTextOfEnblNull) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  SettingsRecord record;
  ASSERT_EQ(LoadSettings(path, record), LoadResult::Loaded);
  record.enblNull = QStringLiteral("ON");
  record.funcKey = QStringLiteral("OFF");
  EXPECT_TRUE(SaveAllSettings(path, record));
  EXPECT_EQ(ReadValue(path, keys::kFuncKey), QStringLiteral("ON"));
  EXPECT_EQ(ReadValue(path, keys::kEnblNull), QStringLiteral("ON"));
}

TEST_F(SettingsLoadSave, OneFailedUpdateMakesTheResultFalseAndTheRestIsWritten) {
  for (const Setting* missing : SettingsInSaveOrder()) {
    const QString path = DefaultsWithout(missing->key);
    const SettingsRecord record = Distinct(QStringLiteral("new "));
    EXPECT_FALSE(SaveAllSettings(path, record));
    for (const Setting* setting : SettingsInSaveOrder()) {
      if (setting == missing) continue;
      EXPECT_EQ(ReadValue(path, setting->key), setting->savedFrom.In(record));
    }
  }
}

TEST_F(SettingsLoadSave, SavingMakesNoFile) {
  EXPECT_TRUE(SaveAllSettings(Path(), Distinct(QStringLiteral("new "))));
  EXPECT_EQ(FilesInFolder(), QStringList());
}

TEST_F(SettingsLoadSave, ARecordComesBackAsItWasSaved) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  SettingsRecord saved = Distinct(QStringLiteral("\u00E9\U0001F600 "));
  saved.funcKey = saved.enblNull;
  EXPECT_TRUE(SaveAllSettings(path, saved));
  SettingsRecord loaded;
  loaded.loadedMarker = saved.loadedMarker;
  EXPECT_EQ(LoadSettings(path, loaded), LoadResult::Loaded);
  EXPECT_EQ(loaded, saved);
}

struct PortNameCase {
  const char16_t* name;
  bool valid;
};

class ValidatePortNameTest : public testing::TestWithParam<PortNameCase> {};

TEST_P(ValidatePortNameTest, FollowsTheRule) {
  EXPECT_EQ(ValidatePortName(QString::fromUtf16(GetParam().name)), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ValidatePortNameTest,
    testing::Values(PortNameCase{u"NONE", true}, PortNameCase{u"COM9", true}, PortNameCase{u"COM12", true},
                    PortNameCase{u"COM0", true}, PortNameCase{u"COMA", true}, PortNameCase{u"COM1B", true},
                    PortNameCase{u"COM ", true}, PortNameCase{u"COM'", true}, PortNameCase{u"COM(", false},
                    PortNameCase{u"COM)", false}, PortNameCase{u"COM*", false}, PortNameCase{u"COM+", false},
                    PortNameCase{u"COM,", false}, PortNameCase{u"COM-", false}, PortNameCase{u"COM.", false},
                    PortNameCase{u"COM/", false}, PortNameCase{u"COM1'", true}, PortNameCase{u"COM1(", false},
                    PortNameCase{u"COM1/", false}, PortNameCase{u"COM(1", false},
                    PortNameCase{u"COM/1", false}, PortNameCase{u"COM10", true},
                    PortNameCase{u"COM123", false}, PortNameCase{u"COM100", false},
                    PortNameCase{u"COM", false}, PortNameCase{u"", false}, PortNameCase{u"com3", false},
                    PortNameCase{u"None", false}, PortNameCase{u"NONE ", false},
                    PortNameCase{u" COM3", false}, PortNameCase{u"XCOM3", false},
                    PortNameCase{u"TTY3", false}, PortNameCase{u"COM\u20AC\u20AC\u20AC", false},
                    PortNameCase{u"COM1234567890123456", false},
                    PortNameCase{u"COM12345678901234567", false}));

}  // namespace
}  // namespace quarn
