#include <random>

#include "settings/damaged_file.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "settings/user_file.h"
#include "settings/working_file.h"
#include "support/message_texts.h"
#include "support/recorded_messages.h"

namespace quarn::test {
namespace {

/// All operations that write a settings file, in any order and with any text. The next start must read the
/// file as it was written, without a message.
class WrittenFiles : public SettingsFileTest {
 protected:
  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

  /// Short and long texts, of one to four bytes per character, also with the marks and keys of a file.
  QString AnyText() {
    static const QStringList pieces = {
        QStringLiteral("x"),          QStringLiteral("\u00B5"),      QStringLiteral("\u20AC"),
        QStringLiteral("\U0001F600"), QStringLiteral("\r"),          QStringLiteral("\t"),
        QStringLiteral("="),          QStringLiteral(".END"),        QStringLiteral(".BEGIN"),
        QStringLiteral("COM_PORT="),  QStringLiteral("MARK_COLOR="), QStringLiteral("\uFEFF"),
        QStringLiteral(" ")};
    const qsizetype length = std::array{0, 1, 20, 300, 1018, 1019}.at(static_cast<std::size_t>(Below(6)));
    const QString& most = pieces.at(Below(4));
    QString text;
    while (text.size() < length)
      text += Below(10) == 0 ? pieces.at(Below(static_cast<int>(pieces.size()))) : most;
    if (Below(20) == 0) text += QLatin1Char('\n');
    return text;
  }
  /// A value that a user could give this setting.
  QString ValueFor(const Setting& setting) {
    if (setting.key == keys::kComPort)
      return Below(2) == 0 ? QStringLiteral("COM12") : QStringLiteral("NONE");
    if (setting.whenEmpty == EmptyValue::Allowed) return AnyText();
    return QString(1 + Below(6), u'V');
  }

  void StoreOne() {
    const Setting& setting = *SettingsInLoadOrder().at(static_cast<std::size_t>(Below(kLoadedSettingCount)));
    const QString value = ValueFor(setting);
    const QByteArray before = BytesOf(m_working);
    if (Stored(StoreValues(m_working, {{setting.key, value}}, m_messages), before)) {
      EXPECT_EQ(ReadValue(m_working, setting.key), value);
    }
  }
  void StoreAll() {
    SettingsRecord record;
    for (const Setting* setting : SettingsInLoadOrder()) setting->field.In(record) = ValueFor(*setting);
    record.funcKey = record.enblNull;
    const QByteArray before = BytesOf(m_working);
    if (!Stored(StoreAllSettings(m_working, record, m_messages), before)) return;
    SettingsRecord loaded;
    EXPECT_EQ(LoadSettings(m_working, loaded), LoadResult::Loaded);
    EXPECT_EQ(loaded, record);
  }
  /// If refused: there was a message, and the file is unchanged.
  bool Stored(bool stored, const QByteArray& before) {
    EXPECT_EQ(m_messages.shown, stored ? QStringList() : QStringList{kTooLong});
    if (!stored) {
      EXPECT_EQ(BytesOf(m_working), before);
      ++m_refused;
    }
    m_messages.shown.clear();
    return stored;
  }
  void SaveAs() { EXPECT_TRUE(CopySettingsFile(m_working, m_user)); }
  void Open() {
    SettingsRecord record;
    EXPECT_EQ(OpenUserFile(m_user, m_working, record, m_messages), m_user);
    m_messages.shown.clear();
  }
  /// A file of another version and any valid size.
  void Upgrade() {
    QByteArray bytes = BytesOf(m_working);
    bytes.replace("MARK_COLOR=WHITE\r\n", Below(2) == 0 ? "" : "OLD_KEY=1\r\nOLDER\r\n");
    if (Below(2) == 0) bytes = bytes.mid(3).replace("\r\n", "\n");
    if (bytes.size() > 16384) return;
    WithBytes(bytes, QStringLiteral("user.qrn"));
    UpgradeFile(m_user, CompareWithDefaults(m_user));
    if (CompareWithDefaults(m_user).result != KeySetResult::Equal) {
      EXPECT_EQ(BytesOf(m_user).size() > 16300 || BytesOf(m_user).contains("MARK_COLOR="), true)
          << "nothing else keeps a file from being brought up to date";
      SaveAs();
    }
  }
  void ExpectTheNextStartReads(const QString& path) {
    const QByteArray before = BytesOf(path);
    EXPECT_LE(before.size(), 16384);
    SettingsRecord record;
    LoadInitialSettings(path, record, m_messages);
    EXPECT_EQ(m_messages.shown, QStringList());
    EXPECT_EQ(BytesOf(path), before);
  }

  std::mt19937 m_random{20260};
  const QString m_working = Path();
  const QString m_user = Path(QStringLiteral("user.qrn"));
  RecordedMessages m_messages;
  int m_refused = 0;
};

TEST_F(WrittenFiles, AreReadAgainWhateverWasWritten) {
  constexpr int kOperations = 600;
  ASSERT_TRUE(WriteDefaultFile(m_working));
  SaveAs();
  for (int i = 0; i < kOperations && !HasFailure(); ++i) {
    SCOPED_TRACE(i);
    const int which = Below(40);
    if (which < 30) StoreOne();
    if (which >= 30 && which < 34) StoreAll();
    if (which >= 34 && which < 36) SaveAs();
    if (which >= 36 && which < 38) Open();
    if (which == 38) Upgrade();
    if (which == 39) {
      EXPECT_TRUE(WriteDefaultFile(m_working));
    }
    ExpectTheNextStartReads(m_working);
    ExpectTheNextStartReads(m_user);
  }
  EXPECT_GT(m_refused, 40) << "the limits were never met";
  EXPECT_LT(m_refused, kOperations / 2);
  EXPECT_FALSE(QFile::exists(DamagedFileOf(m_working)));
}

}  // namespace
}  // namespace quarn::test
