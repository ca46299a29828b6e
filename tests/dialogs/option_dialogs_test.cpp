#include <QAccessible>
#include <QCheckBox>
#include <array>

#include "dialogs/option_dialog_fixture.h"
#include "dialogs/settings/options.h"

namespace quarn::test {
namespace {

using ScreenOption = OptionDialogFixture<CScreenOption>;
using MainOption = OptionDialogFixture<CMainOption>;

const QString kQuestion = QStringLiteral("yes or no/: Confirmation/Is it OK to clear the operation log ?//");

TEST_F(ScreenOption, HasItsTitleAndLabels) {
  Open();
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quarn - Terminal Screen Option"));
  EXPECT_EQ(Labels(), (QStringList{"Max Command Length  -----", "Background Color  -----------"}));
  EXPECT_EQ(Button(1).text(), QStringLiteral("OK"));
  EXPECT_FALSE(dialog->isModal());
}

struct Box {
  int id;
  const char* text;
  const char* key;
  QString SettingsRecord::*field;
  bool shown;  ///< the Terminal Screen looks different
};
constexpr std::array kBoxes{
    Box{1070, "Display Terminal Screen at Startup", "START_DISP=", &SettingsRecord::startDisp, false},
    Box{1071, "Clear Command Line After Sending", "AUTO_CLR=", &SettingsRecord::autoClr, false},
    Box{1072, "Line Number", "LINE_NUM=", &SettingsRecord::lineNum, true},
    Box{1075, "Show Function Keys", "FUNC_KEY=", &SettingsRecord::funcKey, true},
    Box{1074, "Allow Sending Empty Command Lines", "ENBL_NULL=", &SettingsRecord::enblNull, false},
};

TEST_F(ScreenOption, EveryBoxWritesItsKey) {
  Open();
  EXPECT_EQ(dialog->findChildren<QCheckBox*>().size(), static_cast<qsizetype>(kBoxes.size()));
  for (const Box& box : kBoxes) {
    const bool on = settings.*box.field == u"ON";
    const QByteArray line = QByteArray(box.key) + (settings.*box.field).toLatin1();
    EXPECT_EQ(Button(box.id).isChecked(), on) << box.text;
    state.requests.refresh.Remove(Window::TerminalScreen);
    ExpectChoice({box.id, box.text, line, box.key + QByteArray(on ? "OFF" : "ON")});
    EXPECT_EQ(settings.*box.field, on ? QStringLiteral("OFF") : QStringLiteral("ON"));
    EXPECT_EQ(state.requests.refresh.Contains(Window::TerminalScreen), box.shown) << box.text;
    Click(box.id);
    EXPECT_EQ(File(), before);
  }
  EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(ScreenOption, SpaceSwitchesEveryBox) {
  Open();
  for (const Box& box : kBoxes) {
    const bool on = settings.*box.field == u"ON";
    Button(box.id).setFocus();
    Press(Qt::Key_Space);
    EXPECT_EQ(settings.*box.field, on ? QStringLiteral("OFF") : QStringLiteral("ON")) << box.text;
    EXPECT_EQ(Button(box.id).isChecked(), !on) << box.text;
    EXPECT_EQ(File(),
              FileWith(box.key + QByteArray(on ? "ON" : "OFF"), box.key + QByteArray(on ? "OFF" : "ON")))
        << box.text;
    Press(Qt::Key_Space);
    EXPECT_EQ(File(), before) << box.text;
  }
}

TEST_F(ScreenOption, AnAssistiveToolsToggleIsAClick) {
  settings.autoClr = QStringLiteral("OFF");
  Open();
  for (const int id : {1071, 1069}) {
    QAccessibleInterface* const choice = QAccessible::queryAccessibleInterface(&Button(id));
    ASSERT_NE(choice, nullptr);
    EXPECT_EQ(choice->role(), id == 1071 ? QAccessible::CheckBox : QAccessible::RadioButton);
    EXPECT_EQ(choice->text(QAccessible::Name), Button(id).accessibleName());
    Button(id).setAccessibleName(QString());
    EXPECT_EQ(choice->text(QAccessible::Name), Button(id).text());
    EXPECT_FALSE(choice->state().checked);
    QAccessibleActionInterface* const actions = choice->actionInterface();
    ASSERT_NE(actions, nullptr);
    ASSERT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::toggleAction()));
    actions->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(WaitUntil([&] { return Button(id).isChecked(); }));
    EXPECT_TRUE(choice->state().checked);
  }
  EXPECT_EQ(settings.autoClr, QStringLiteral("ON"));
  EXPECT_EQ(settings.bkColor, QStringLiteral("BLACK"));
}

TEST_F(ScreenOption, HidingTheFunctionKeysWritesOff) {
  settings.funcKey = QStringLiteral("ON");
  Open();
  Click(1075);
  EXPECT_EQ(ReadValue(Context().workingSettingsFile, keys::kFuncKey), QStringLiteral("OFF"));
}

TEST_F(ScreenOption, AColourRepaintsTheTerminalScreen) {
  Open();
  for (const Choice& choice : std::vector<Choice>{
           {1069, "Black", "BK_COLOR=NAVY", "BK_COLOR=BLACK"},
           {1068, "System", "BK_COLOR=NAVY", "BK_COLOR=SYSTEM"},
           {1073, "Navy", "BK_COLOR=NAVY", "BK_COLOR=NAVY"},
       }) {
    state.requests.refresh.Remove(Window::TerminalScreen);
    ExpectChoice(choice);
    EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
    EXPECT_EQ("BK_COLOR=" + settings.bkColor.toLatin1(), choice.chosen);
    for (const int id : {1068, 1069, 1073}) EXPECT_EQ(Button(id).isChecked(), id == choice.id) << id;
  }
  EXPECT_FALSE(state.requests.clearLog);
}

TEST_F(ScreenOption, LengthsAreWrittenWithoutAQuestionWhileTheTerminalScreenIsClosed) {
  settings.inputMax = QStringLiteral("N");
  Open();
  const QByteArray line =
      "INPUT_MAX=" + ReadValue(Context().workingSettingsFile, keys::kInputMax).value_or(QString()).toLatin1();
  ExpectChoice({1067, "W (64)", line, "INPUT_MAX=W"});
  ExpectChoice({1066, "M (56)", line, "INPUT_MAX=M"});
  ExpectChoice({1065, "N (48)", line, "INPUT_MAX=N"});
  EXPECT_EQ(settings.inputMax, QStringLiteral("N"));
  EXPECT_TRUE(messages.shown.isEmpty());
  EXPECT_FALSE(state.requests.clearLog);
  EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
}

TEST_F(ScreenOption, NoLeavesTheLengthAsItWas) {
  settings.inputMax = QStringLiteral("N");
  state.open.Add(Window::TerminalScreen);
  Open();
  messages.whileShown = [&] {
    EXPECT_TRUE(Button(1067).isChecked());
    EXPECT_FALSE(Button(1065).isChecked());
    EXPECT_EQ(settings.inputMax, QStringLiteral("N"));
  };
  Click(1067);
  EXPECT_EQ(messages.shown, QStringList{kQuestion});
  EXPECT_EQ(settings.inputMax, QStringLiteral("N"));
  EXPECT_FALSE(Written());
  EXPECT_TRUE(Button(1065).isChecked());
  EXPECT_FALSE(Button(1067).isChecked());
  EXPECT_EQ(dialog->focusWidget(), &Button(1065)) << "the focus is on the button that is checked";
  EXPECT_FALSE(state.requests.clearLog);
  EXPECT_FALSE(state.requests.refresh.Contains(Window::TerminalScreen));
}

TEST_F(ScreenOption, NoToAKeyLeavesTheLengthAsItWas) {
  settings.inputMax = QStringLiteral("N");
  state.open.Add(Window::TerminalScreen);
  Open();
  const QList<int> checked = Checked();
  Button(1065).setFocus();
  Press(Qt::Key_Right);
  EXPECT_EQ(messages.shown, QStringList{kQuestion});
  EXPECT_EQ(Checked(), checked);
  EXPECT_TRUE(Button(1065).isChecked());
  EXPECT_EQ(settings.inputMax, QStringLiteral("N"));
  EXPECT_FALSE(Written());
}

TEST_F(ScreenOption, NoLeavesALengthThatNoButtonStandsFor) {
  settings.inputMax = QStringLiteral("?");
  state.open.Add(Window::TerminalScreen);
  Open();
  const QList<int> checked = Checked();
  Click(1066);
  EXPECT_EQ(messages.shown, QStringList{kQuestion});
  EXPECT_EQ(Checked(), checked);
  for (const int id : {1065, 1066, 1067}) EXPECT_FALSE(Button(id).isChecked()) << id;
  EXPECT_EQ(settings.inputMax, QStringLiteral("?"));
  EXPECT_FALSE(Written());
}

TEST_F(ScreenOption, ACloseRequestWaitsForTheAnswer) {
  settings.inputMax = QStringLiteral("N");
  state.open.Add(Window::TerminalScreen);
  Open();
  messages.whileShown = [&] {
    state.requests.close.Add(Window::ScreenOption);
    QTest::qWait(3 * PolledDialog::kTickMs);
    EXPECT_TRUE(dialog);
  };
  Click(1067);
  EXPECT_TRUE(Until([&] { return dialog.isNull(); }));
}

TEST_F(ScreenOption, ShowsTheSettingsAndAgainOnRequest) {
  Open();
  for (const Box& box : kBoxes) settings.*box.field = QStringLiteral("OFF");
  settings.lineNum = QStringLiteral("ON");
  settings.inputMax = QStringLiteral("M");
  settings.bkColor = QStringLiteral("SYSTEM");
  state.requests.refresh.Add(Window::ScreenOption);
  EXPECT_TRUE(Until([&] { return !state.requests.refresh.Contains(Window::ScreenOption); }));
  EXPECT_EQ(Checked(), (QList<int>{1066, 1068, 1072}));
  EXPECT_FALSE(Written());
}

TEST_F(ScreenOption, TabFollowsTheReadingOrder) {
  settings.inputMax = QStringLiteral("N");
  Open();
  EXPECT_EQ(TabOrder(), (QList<int>{1070, 1071, 1072, 1075, 1074, 1065, 1073, 1}));
}

TEST_F(ScreenOption, ClosesInEveryWay) { ExpectClosing(Window::ScreenOption, 1); }

TEST_F(ScreenOption, ClipsNothingWithAnyFont) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    ExpectNoneClipped();
    delete dialog.data();
  }
}

TEST_F(MainOption, WritesThePosition) {
  settings.mainPos = QStringLiteral("TL");
  ASSERT_TRUE(UpdateValue(Context().workingSettingsFile, keys::kMainPos, settings.mainPos));
  before = File();
  Open();
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quarn - Main Dialog Optiom"));
  EXPECT_EQ(Labels(), QStringList{"Startup Display Position  ---"});
  ExpectChoice({1074, "TOP - RIGHT", "MAIN_POS=TL", "MAIN_POS=TR"});
  EXPECT_EQ(settings.mainPos, QStringLiteral("TR"));
  EXPECT_EQ(Checked(), QList<int>{1074});
  ExpectChoice({1073, "TOP - LEFT", "MAIN_POS=TL", "MAIN_POS=TL"});
  EXPECT_EQ(Checked(), QList<int>{1073});
  EXPECT_FALSE(state.requests.refresh.Contains(Window::MainDialog));
}

TEST_F(MainOption, TabReachesTheChosenButton) {
  settings.mainPos = QStringLiteral("TR");
  Open();
  EXPECT_EQ(TabOrder(), (QList<int>{1074, 1}));
  settings.mainPos = QStringLiteral("TL");
  state.requests.refresh.Add(Window::MainOption);
  EXPECT_TRUE(Until([&] { return !state.requests.refresh.Contains(Window::MainOption); }));
  Button(1).setFocus();
  EXPECT_EQ(TabOrder(), (QList<int>{1073, 1}));
}

TEST_F(MainOption, KeysChooseAsTheMouseDoes) {
  settings.mainPos = QStringLiteral("TL");
  Open();
  EXPECT_EQ(TabOrder(), (QList<int>{1073, 1}));
  Button(1073).setFocus();
  Press(Qt::Key_Right);
  EXPECT_EQ(settings.mainPos, QStringLiteral("TR"));
  EXPECT_EQ(ReadValue(Context().workingSettingsFile, keys::kMainPos), QStringLiteral("TR"));
  EXPECT_EQ(Checked(), QList<int>{1074});
}

TEST_F(MainOption, ShowsTheSettingsAgainOnRequest) {
  settings.mainPos = QStringLiteral("TL");
  Open();
  EXPECT_EQ(Checked(), QList<int>{1073});
  settings.mainPos = QStringLiteral("TR");
  state.requests.refresh.Add(Window::MainOption);
  EXPECT_TRUE(Until([&] { return !state.requests.refresh.Contains(Window::MainOption); }));
  EXPECT_EQ(Checked(), QList<int>{1074});
}

TEST_F(MainOption, ClosesInEveryWay) { ExpectClosing(Window::MainOption, 1); }

TEST_F(MainOption, ClipsNothingWithAnyFont) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    ExpectNoneClipped();
    delete dialog.data();
  }
}

}  // namespace
}  // namespace quarn::test
