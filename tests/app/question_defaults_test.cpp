// The default answer of each question.

#include <QLineEdit>
#include <QMenu>

#include "app/connection_commands.h"
#include "app/main_dialog_fixture.h"
#include "app/menu_state.h"
#include "dialogs/terminal/terminal_screen.h"
#include "serial/port_list.h"
#include "settings/settings_table.h"
#include "settings/user_file.h"
#include "support/dialog_controls.h"

namespace quarn::test {
namespace {

class QuestionDefaults : public MainDialog {
 protected:
  void SetUp() override {
    program.settings = DefaultSettings();
    MainDialog::SetUp();
  }
  QWidget& Opened(int item, const char* name) {
    Action(item)->trigger();
    EXPECT_EQ(Shown(name).size(), 1) << name;
    return *Shown(name).first();
  }
  static void Click(const QWidget& window, const char* button) {
    auto* found = window.findChild<QAbstractButton*>(QLatin1String(button));
    ASSERT_NE(found, nullptr) << button;
    found->setEnabled(true);
    found->click();
  }
  /// A user file with other settings is open.
  void ChangeSettings() {
    program.userFile = m_folder + QStringLiteral("mine.qrn");
    WriteSettings(program.userFile, {{QStringLiteral("COM_BPS"), QStringLiteral("1200")}});
  }
  /// The only question, which must have this text, and its default answer.
  void ExpectAsked(const char* words, AnswerByDefault wanted) {
    ASSERT_EQ(messages.defaults.size(), 1) << words << " in " << messages.shown.join(u' ').toStdString();
    EXPECT_TRUE(messages.shown.last().contains(QLatin1String(words))) << messages.shown.last().toStdString();
    EXPECT_EQ(messages.defaults.front(), wanted) << words;
    messages.defaults.clear();
  }
};

TEST_F(QuestionDefaults, NobodyLosesAConnectionWithEnter) {
  program.connection.connected.Update(PortChange::Opened);
  Disconnect(program);
  ExpectAsked("disconnect the COM port?", AnswerByDefault::Refuse);
}

TEST_F(QuestionDefaults, NobodyLosesSettingsWithEnter) {
  Action(command::kRestoreDefaults)->trigger();
  ExpectAsked("restore the default settings?", AnswerByDefault::Refuse);
  ChangeSettings();
  Action(command::kCloseFile)->setEnabled(true);
  Action(command::kCloseFile)->trigger();
  ExpectAsked("Proceed without saving?", AnswerByDefault::Refuse);
  EXPECT_FALSE(dialog.close());
  ExpectAsked("Exit program without saving?", AnswerByDefault::Refuse);
  Click(Opened(command::kPortSettings, "CPortSettings"), "defaultButton");
  ExpectAsked("restore the default settings? ", AnswerByDefault::Refuse);
}

TEST_F(QuestionDefaults, NobodyLosesTheLogWithEnter) {
  program.log.AppendLogText("[id]\rSIM-1\r");
  dialog.OpenTerminalScreen();
  dynamic_cast<CTerminalScreen&>(*TerminalScreen()).ContextMenu().actions().at(2)->trigger();
  ExpectAsked("clear all operation log ?", AnswerByDefault::Refuse);
  Click(Opened(command::kScreenOption, "CScreenOption"), "length56");
  ExpectAsked("clear the operation log ?", AnswerByDefault::Refuse);
}

TEST_F(QuestionDefaults, NobodyLosesStoredCommandsWithEnter) {
  QWidget& table = Opened(command::kFunctionKeyTable, "CSetMem");
  Click(table, "EDIT");
  auto* field = table.findChild<QLineEdit*>();
  ASSERT_NE(field, nullptr);
  field->setText(QStringLiteral("changed?"));
  Click(table, "EDIT");
  Click(table, "UNDO");
  ExpectAsked("OK to discard the updated data ?", AnswerByDefault::Refuse);
  Click(table, "SAVE");
  ExpectAsked("OK to save the updated data ?", AnswerByDefault::Agree);
}

TEST_F(QuestionDefaults, ToConnectIsTheDefault) {
  Configure(QStringLiteral("COM3"));
  dialog.Monitor().ListPorts();
  ports.present = Adapters({"COM3"});
  for (int i = 0; i < 12; ++i) dialog.Monitor().Tick();
  ExpectAsked("Do you want to connect to \"COM3\" ?", AnswerByDefault::AgreeUncalled);
}

TEST_F(QuestionDefaults, NobodyLosesAnUnknownKeyWithEnter) {
  const QString path = m_folder + QStringLiteral("other.qrn");
  WriteSettings(path, {});
  ASSERT_TRUE(RemoveKey(path, keys::kBkColor));
  EXPECT_EQ(OpenUserFile(path, program.workingSettingsFile, program.settings, messages), QString());
  ExpectAsked("Is it OK to proceed?", AnswerByDefault::Agree);
  ASSERT_TRUE(AddKeyLine(path, QStringLiteral("FROM_TOMORROW=1")));
  EXPECT_EQ(OpenUserFile(path, program.workingSettingsFile, program.settings, messages), QString());
  ExpectAsked("Is it OK to proceed?", AnswerByDefault::Refuse);
}

}  // namespace
}  // namespace quarn::test
