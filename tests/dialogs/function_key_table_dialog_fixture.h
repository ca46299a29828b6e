#pragma once

#include <QLineEdit>
#include <QTemporaryDir>

#include "dialogs/terminal/function_key_table_dialog.h"
#include "dialogs/terminal_fixture.h"
#include "settings/key_store.h"
#include "support/dialog_controls.h"

namespace quarn::test {

inline constexpr std::array<int, 10> kFieldIds{1082, 1065, 1066, 1067, 1068, 1069, 1078, 1079, 1080, 1081};
inline constexpr int kUndo = 1071;
inline constexpr int kSave = 1072;
inline constexpr int kEdit = 1070;
inline constexpr int kOk = 1073;
inline constexpr int kSend = 1011;

/// A Function Key Table with a working settings file and a Terminal Screen.
class FunctionKeyTableDialogFixture : public TerminalFixture {
 protected:
  FunctionKeyTableDialogFixture() { EXPECT_TRUE(WriteDefaultFile(m_file)); }
  ~FunctionKeyTableDialogFixture() override { delete dialog.data(); }

  void OpenTable() {
    dialog = new CSetMem(nullptr, {settings, m_file, state, messages, tableRect});
    ShowActive(*dialog);
  }
  QPushButton& Key(int number) { return *Control<QPushButton>(*dialog, 1000 + number); }
  QPushButton& Command(int id) { return *Control<QPushButton>(*dialog, id); }
  QLineEdit& Field(int index) {
    return *Control<QLineEdit>(*dialog, kFieldIds.at(static_cast<std::size_t>(index)));
  }
  static void ClickOn(QWidget& widget, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(&widget, Qt::LeftButton, modifiers);
  }
  void ClickCommand(int id) { ClickOn(Command(id)); }
  void Retype(int index, const char* text) {
    ClickOn(Field(index));
    Field(index).selectAll();
    QTest::keyClicks(&Field(index), QLatin1String(text));
  }
  void Edit(int index, const char* text) {
    ClickCommand(kEdit);
    Retype(index, text);
    ClickCommand(kEdit);
  }
  /// The enabled ones of: the fields, the F-buttons, UNDO, SAVE, OK, SEND.
  std::string EnabledControls() {
    std::string enabled;
    const auto all = [](auto get, int first) {
      const bool each = get(first).isEnabled();
      for (int i = first; i < first + 10; ++i) EXPECT_EQ(get(i).isEnabled(), each) << i;
      return each;
    };
    if (all([this](int i) -> QWidget& { return Field(i); }, 0)) enabled += "fields ";
    if (all([this](int i) -> QWidget& { return Key(i); }, 1)) enabled += "keys ";
    for (const int id : {kUndo, kSave, kOk, kSend}) {
      if (Command(id).isEnabled()) enabled += Command(id).text().toStdString() + ' ';
    }
    return enabled;
  }
  QStringList ShownTexts() {
    QStringList texts;
    for (int i = 0; i < 10; ++i) texts.append(Field(i).text());
    return texts;
  }
  static QStringList Listed(const std::array<QString, 10>& texts) { return {texts.begin(), texts.end()}; }
  QByteArray FileBytes() const { return ReadWholeBytes(m_file).value_or(QByteArray()); }
  QStringList Shown() { return std::exchange(messages.shown, {}); }

  QTemporaryDir m_folder;
  const QString m_file = m_folder.filePath(QStringLiteral("Quarn.ini"));
  QRect tableRect;
  QPointer<CSetMem> dialog;
};

}  // namespace quarn::test
