#include "terminal/function_key_table.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/working_file.h"

namespace quarn::test {
namespace {

using Enabled = FunctionKeyTable::Enabled;

constexpr Enabled kOpened{};
constexpr Enabled kEditing{
    .fields = true, .functionKeys = false, .undo = true, .save = false, .ok = false, .send = false};
constexpr Enabled kChanged{.undo = true, .save = true};

class FunctionTable : public testing::Test {
 protected:
  FunctionTable() { EXPECT_TRUE(WriteDefaultFile(m_file)); }
  void Edit(int index, const QString& text) {
    table.StartEditing();
    table.SetEditText(index, text);
    table.FinishEditing();
  }

  QTemporaryDir m_folder;
  const QString m_file = m_folder.filePath(QStringLiteral("Quarn.ini"));
  SettingsRecord settings = DefaultSettings();
  FunctionKeyTable table{settings};
};

TEST_F(FunctionTable, BeginsWithTheSettings) {
  EXPECT_EQ(table.EditText(), settings.mem);
  EXPECT_FALSE(table.IsEditing());
  EXPECT_EQ(table.WhatIsEnabled(), kOpened);
  EXPECT_FALSE(table.CanUndo());
  EXPECT_FALSE(table.CanSave());
}

TEST_F(FunctionTable, EditModeEnablesTheFieldsAndUndo) {
  table.StartEditing();
  EXPECT_TRUE(table.IsEditing());
  EXPECT_EQ(table.WhatIsEnabled(), kEditing);
}

TEST_F(FunctionTable, LeavingEditModeWithoutAChangeEnablesNothing) {
  table.StartEditing();
  table.FinishEditing();
  EXPECT_EQ(table.WhatIsEnabled(), kOpened);
  EXPECT_FALSE(table.CanUndo());
}

TEST_F(FunctionTable, EditsReachTheSettingsWhenEditModeIsLeft) {
  table.StartEditing();
  table.SetEditText(3, QStringLiteral("*IDN?"));
  EXPECT_EQ(settings.mem[3], QStringLiteral("function-4"));
  table.FinishEditing();
  EXPECT_EQ(settings.mem[3], QStringLiteral("*IDN?"));
  EXPECT_EQ(table.WhatIsEnabled(), kChanged);
  EXPECT_TRUE(table.CanSave());
  EXPECT_EQ(ReadValue(m_file, keys::kMem[3]), QStringLiteral("function-4"));
}

TEST_F(FunctionTable, EditingAgainDisablesSaveUntilItIsLeft) {
  Edit(3, QStringLiteral("a"));
  table.StartEditing();
  EXPECT_EQ(table.WhatIsEnabled(), kEditing);
  table.FinishEditing();
  EXPECT_EQ(table.WhatIsEnabled(), kChanged);
}

TEST_F(FunctionTable, EditingBackToTheSavedTextLeavesNothingToDo) {
  Edit(3, QStringLiteral("a"));
  Edit(3, QStringLiteral("function-4"));
  EXPECT_EQ(table.WhatIsEnabled(), kOpened);
  EXPECT_FALSE(table.CanUndo());
  EXPECT_FALSE(table.CanSave());
}

TEST_F(FunctionTable, UndoRestoresFieldsAndSettings) {
  const auto before = settings.mem;
  Edit(0, QStringLiteral("a"));
  Edit(9, QString());
  table.Undo();
  EXPECT_EQ(table.EditText(), before);
  EXPECT_EQ(settings.mem, before);
  EXPECT_EQ(table.WhatIsEnabled(), kOpened) << "nothing is left to undo or to save";
  EXPECT_FALSE(table.CanUndo());
  EXPECT_FALSE(table.CanSave());
}

TEST_F(FunctionTable, UndoSeesWhatWasTypedInEditMode) {
  table.StartEditing();
  EXPECT_FALSE(table.CanUndo());
  table.SetEditText(5, QStringLiteral("typed"));
  EXPECT_TRUE(table.CanUndo());
  EXPECT_FALSE(table.CanSave()) << "the settings are still the old ones";
  table.Undo();
  EXPECT_EQ(table.EditText()[5], QStringLiteral("function-6"));
  EXPECT_TRUE(table.IsEditing());
  EXPECT_FALSE(table.WhatIsEnabled().undo);
}

TEST_F(FunctionTable, UndoInEditModeSeesEarlierEdits) {
  Edit(5, QStringLiteral("earlier"));
  table.StartEditing();
  EXPECT_TRUE(table.CanUndo());
}

TEST_F(FunctionTable, SaveWritesTheTenKeys) {
  for (int i = 0; i < kStoredCommandCount; ++i) Edit(i, QStringLiteral("cmd %1=").arg(i));
  table.Save(m_file);
  for (int i = 0; i < kStoredCommandCount; ++i) {
    EXPECT_EQ(ReadValue(m_file, keys::kMem[static_cast<std::size_t>(i)]), QStringLiteral("cmd %1=").arg(i));
  }
  EXPECT_FALSE(table.CanSave());
  EXPECT_FALSE(table.CanUndo());
  EXPECT_EQ(table.WhatIsEnabled(), kOpened) << "nothing is left to undo or to save";
}

TEST_F(FunctionTable, WhatWasSavedIsWhatUndoGoesBackTo) {
  Edit(2, QStringLiteral("saved"));
  table.Save(m_file);
  Edit(2, QStringLiteral("later"));
  table.Undo();
  EXPECT_EQ(settings.mem[2], QStringLiteral("saved"));
}

TEST_F(FunctionTable, ReloadTakesTheNewSettings) {
  Edit(2, QStringLiteral("mine"));
  settings = DefaultSettings();
  settings.mem[7] = QStringLiteral("new");
  table.Reload();
  EXPECT_EQ(table.EditText(), settings.mem);
  EXPECT_EQ(table.WhatIsEnabled(), kOpened);
  EXPECT_FALSE(table.CanUndo());
}

TEST_F(FunctionTable, ReloadInEditModeTakesAllFields) {
  table.StartEditing();
  table.SetEditText(2, QStringLiteral("typed"));
  settings.mem.fill(QStringLiteral("new"));
  table.Reload();
  EXPECT_EQ(table.WhatIsEnabled(), kEditing);
  EXPECT_EQ(table.EditText(), settings.mem);
  EXPECT_FALSE(table.CanUndo()) << "the new settings are what was loaded last";
}

TEST_F(FunctionTable, ReloadInEditModeReplacesEarlierEdits) {
  Edit(2, QStringLiteral("earlier"));
  table.StartEditing();
  settings = DefaultSettings();
  table.Reload();
  EXPECT_EQ(table.EditText()[2], QStringLiteral("function-3"));
}

TEST_F(FunctionTable, FieldsTakeWhatALineOfTheFileHolds) {
  EXPECT_EQ(kMaxStoredCommand, 1018);
  EXPECT_EQ(table.Limit(0), kMaxStoredCommand);
  settings.mem[1] = QString(kMaxStoredCommand + 2, u'x');
  table.Reload();
  EXPECT_EQ(table.Limit(1), kMaxStoredCommand + 2) << "what is there is not cut";
  EXPECT_EQ(table.Limit(2), kMaxStoredCommand);
}

TEST_F(FunctionTable, TheLongestCommandIsSavedAndReadWhole) {
  const QString longest(kMaxStoredCommand, u'x');
  Edit(9, longest);
  table.Save(m_file);
  EXPECT_EQ(ReadValue(m_file, keys::kMem[9]), longest);
}

TEST_F(FunctionTable, TenOfTheLongestCommandsAreReadAtTheNextStart) {
  for (int i = 0; i < kStoredCommandCount; ++i)
    Edit(i, QString(kMaxStoredCommand, QLatin1Char(static_cast<char>('a' + i))));
  EXPECT_TRUE(table.Save(m_file));
  EXPECT_EQ(CompareWithDefaults(m_file).result, KeySetResult::Equal);
  SettingsRecord loaded;
  EXPECT_EQ(LoadSettings(m_file, loaded), LoadResult::Loaded);
  EXPECT_EQ(loaded.mem, settings.mem);
}

TEST_F(FunctionTable, WhatWouldNotFitIntoTheFileIsNotSaved) {
  const std::optional<QByteArray> before = ReadWholeBytes(m_file);
  // Three bytes a character: six of them are one too many for a file.
  for (int i = 0; i < 6; ++i) Edit(i, QString(kMaxStoredCommand, u'\u20AC'));
  EXPECT_FALSE(table.Save(m_file));
  EXPECT_EQ(ReadWholeBytes(m_file), before);
  EXPECT_TRUE(table.CanSave());
  EXPECT_EQ(table.WhatIsEnabled(), kChanged);
  Edit(5, QStringLiteral("short"));
  EXPECT_TRUE(table.Save(m_file));
  EXPECT_FALSE(table.CanSave());
  EXPECT_EQ(CompareWithDefaults(m_file).result, KeySetResult::Equal);
}

TEST_F(FunctionTable, UntouchedTextsStayAsTheFileHadThem) {
  settings.mem[1] = QStringLiteral("a\rb") + QString(90, u'x');
  table.Reload();
  Edit(2, QStringLiteral("other"));
  EXPECT_EQ(settings.mem[1], QStringLiteral("a\rb") + QString(90, u'x'));
}

TEST(StoredCommand, HoldsNoLineBreak) {
  EXPECT_EQ(AsStoredCommand(QStringLiteral("a\r\nb\nc\rd")), QStringLiteral("abcd"));
  EXPECT_EQ(AsStoredCommand(QStringLiteral(u"a\u2028b\u2029c\u0085d")), QStringLiteral("abcd"));
  EXPECT_EQ(AsStoredCommand(QStringLiteral("a\x1b\x7f") + QChar(0)), QStringLiteral("a"));
}

TEST(StoredCommand, KeepsEverythingElse) {
  const QString text = QStringLiteral(u" A=B\t\u00e4\u65e5\U0001F600 ");
  EXPECT_EQ(AsStoredCommand(text), text);
  EXPECT_EQ(AsStoredCommand(QString()), QString());
}

TEST(StoredCommand, HoldsNoHalfOfACharacter) {
  const QString whole = QStringLiteral(u"\U0001F600");
  EXPECT_EQ(AsStoredCommand(QLatin1Char('a') + whole.left(1)), QStringLiteral("a"));
  EXPECT_EQ(AsStoredCommand(whole.right(1) + QLatin1Char('a') + whole), QLatin1Char('a') + whole);
}

}  // namespace
}  // namespace quarn::test
