#include "serial/dialogs/port_settings_dialog.h"

#include <QComboBox>
#include <QScreen>

#include "app/port_dialog_fixture.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

constexpr int kBps = 1066;
constexpr int kBits = 1006;
constexpr int kParity = 1007;
constexpr int kStop = 1008;
constexpr int kDefault = 1001;
constexpr int kSetLine = 1084;
constexpr int kOkLine = 1002;

const QString kDefaultQuestion =
    QStringLiteral("question/: Confirmation//Are you sure you want to restore the default settings? /");
const QString kSaveQuestion = QStringLiteral(
    "question/: Confirmation//Settings have been changed./Is it OK to save this configuration?");
const QString kReset = QStringLiteral("transient/Settings have been reset to default values.");

class PortSettingsDialog : public PortDialogTest {
 protected:
  CPortSettings& Open() { return Show<CPortSettings>(); }
  QComboBox& Box(int id) { return *Control<QComboBox>(*window, id); }
  QStringList Shown() {
    QStringList shown;
    for (const int id : {kBps, kBits, kParity, kStop}) shown.append(Box(id).currentText());
    return shown;
  }
  QStringList Choices(int id) {
    QStringList choices;
    for (int i = 0; i < Box(id).count(); ++i) choices.append(Box(id).itemText(i));
    return choices;
  }
  /// The file of the defaults with these values, after all settings were saved into it.
  std::string SavedFile(QList<std::pair<QString, QString>> values) {
    values.append({"FUNC_KEY", program.settings.enblNull});
    return FileWith(values);
  }
  /// Picks a choice with the keyboard.
  void Pick(int id, const QString& choice) {
    Box(id).setFocus();
    QTest::keyClick(&Box(id), Qt::Key_Home);
    for (int i = 0; i < Box(id).count() && Box(id).currentText() != choice; ++i) {
      QTest::keyClick(&Box(id), Qt::Key_Down);
    }
    ASSERT_EQ(Box(id).currentText(), choice);
  }
};

TEST_F(PortSettingsDialog, OffersTheChoicesAndShowsTheValuesInForce) {
  Open();
  EXPECT_EQ(Choices(kBps), (QStringList{"1200", "2400", "4800", "9600", "14400", "19200", "38400", "56000",
                                        "57600", "115200", "128000", "256000"}));
  EXPECT_EQ(Choices(kBits), (QStringList{"5", "6", "7", "8"}));
  EXPECT_EQ(Choices(kParity), (QStringList{"Odd", "Even", "None"}));
  EXPECT_EQ(Choices(kStop), (QStringList{"1", "1.5", "2"}));
  EXPECT_EQ(Shown(), (QStringList{"9600", "8", "None", "1"}));
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Settings  (9600, 8, None, 1)");
  QStringList labels;
  for (const QLabel* label : window->findChildren<QLabel*>()) labels.append(label->text());
  EXPECT_EQ(labels, (QStringList{"Bits Per Second:", "Data Bits:", "Parity:", "Stop Bits:"}));
}

TEST_F(PortSettingsDialog, StandsAtItsShareOfTheScreen) {
  Open();
  EXPECT_EQ(window->pos(),
            PercentPosition(QGuiApplication::primaryScreen()->size(), OuterSize(*window), 50, 20));
}

TEST_F(PortSettingsDialog, RateThatIsNotOfferedIsNotSelectedAndStays) {
  program.settings.comBps = QStringLiteral("110");
  Open();
  EXPECT_EQ(Box(kBps).currentIndex(), -1);
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Settings  (110, 8, None, 1)");
  Pick(kParity, "Even");
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Settings  (110, 8, Even, 1)");
  Click(kSetLine);
  EXPECT_EQ(program.settings.comBps, "110");
  EXPECT_EQ(program.settings.comParity, "Even");
}

TEST_F(PortSettingsDialog, SetStoresAndReopensTheConnectedPort) {
  Plug("COM3");
  ConnectTo("COM3");
  const auto former = program.connection.handle.Line();
  Open();
  Pick(kBps, "19200");
  Pick(kStop, "2");
  EXPECT_EQ(program.settings.comBps, "9600");
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "19200"}, {"COM_STOP", "2"}}));
  EXPECT_TRUE(program.connection.connected);
  ASSERT_TRUE(program.connection.handle.IsOpen());
  EXPECT_NE(program.connection.handle.Line(), former);
  LineState state;
  ASSERT_TRUE(program.connection.handle.Line()->GetState(state));
  EXPECT_EQ(state.baudRate, 19200U);
  EXPECT_EQ(state.stopBits, StopBits::Two);
  EXPECT_TRUE(program.state.requests.mainRefresh);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(PortSettingsDialog, SetWithoutAConnectionOnlyStores) {
  Plug("COM3");
  Configure("COM3");
  Open();
  Pick(kBits, "7");
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.connection.connected);
  EXPECT_FALSE(program.connection.handle.IsOpen());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BITS", "7"}}));
}

TEST_F(PortSettingsDialog, FailedReopenAfterSetIsReportedAndTheSettingsAreStored) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Pick(kBps, "19200");
  Unplug("COM3");
  Click(kSetLine);
  EXPECT_EQ(Happened(), QStringList{NotAvailable("COM3")});
  EXPECT_FALSE(program.connection.connected);
  EXPECT_FALSE(program.connection.handle.IsOpen());
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "19200"}}));
  EXPECT_TRUE(program.state.requests.mainRefresh);
}

TEST_F(PortSettingsDialog, DefaultAnsweredWithNoChangesNothing) {
  program.settings.comBps = QStringLiteral("1200");
  const std::string before = WorkingFile();
  messages.answers = {false};
  Open();
  Pick(kParity, "Odd");
  Click(kDefault);
  EXPECT_EQ(Happened(), QStringList{kDefaultQuestion});
  EXPECT_EQ(Shown(), (QStringList{"1200", "8", "Odd", "1"}));
  EXPECT_EQ(program.settings.comBps, "1200");
  EXPECT_EQ(WorkingFile(), before);
}

TEST_F(PortSettingsDialog, DefaultRestoresStoresAndReconnects) {
  Plug("COM3");
  program.settings.comBps = QStringLiteral("1200");
  program.settings.comBits = QStringLiteral("7");
  ConnectTo("COM3");
  messages.answers = {true};
  Open();
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_EQ(Shown(), (QStringList{"9600", "8", "None", "1"}));
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_PORT", "COM3"}}));
  LineState state;
  ASSERT_TRUE(program.connection.handle.Line()->GetState(state));
  EXPECT_EQ(state.baudRate, 9600U);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(PortSettingsDialog, FailedReopenAfterDefaultIsNotReported) {
  Plug("COM3");
  ConnectTo("COM3");
  Unplug("COM3");
  messages.answers = {true};
  Open();
  Click(kDefault);
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
  EXPECT_FALSE(program.connection.connected);
}

TEST_F(PortSettingsDialog, OkWithoutAChangeClosesWithoutAQuestion) {
  const std::string before = WorkingFile();
  Open();
  Box(kParity).setFocus();
  Press(Qt::Key_Return);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(WorkingFile(), before);
}

TEST_F(PortSettingsDialog, OkAsksBeforeItSaves) {
  Plug("COM3");
  ConnectTo("COM3");
  for (const bool yes : {false, true}) {
    messages.answers = {yes};
    Open();
    Pick(kBps, "57600");
    Click(kOkLine);
    EXPECT_TRUE(IsGone());
    EXPECT_EQ(Happened(), QStringList{kSaveQuestion});
    EXPECT_EQ(program.settings.comBps, yes ? "57600" : "9600");
    EXPECT_EQ(WorkingFile(), yes ? SavedFile({{"COM_PORT", "COM3"}, {"COM_BPS", "57600"}})
                                 : FileWith({{"COM_PORT", "COM3"}}));
    EXPECT_TRUE(program.connection.handle.IsOpen());
  }
}

TEST_F(PortSettingsDialog, OkAfterSetHasNothingToAsk) {
  Open();
  Pick(kBps, "57600");
  Click(kSetLine);
  Click(kOkLine);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortSettingsDialog, EscapeLeavesEverythingAsItWas) {
  const std::string before = WorkingFile();
  Open();
  Pick(kBps, "57600");
  Press(Qt::Key_Escape);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(program.settings.comBps, "9600");
  EXPECT_EQ(WorkingFile(), before);
}

TEST_F(PortSettingsDialog, WhatOtherDialogsSetMeanwhileStays) {
  messages.answers = {true};
  Open();
  Pick(kBps, "57600");
  program.settings.delimiter = QStringLiteral("LF");
  program.settings.mem[3] = QStringLiteral("*IDN?");
  Click(kOkLine);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(program.settings.delimiter, "LF");
  EXPECT_EQ(WorkingFile(), SavedFile({{"COM_BPS", "57600"}, {"DELIMITER", "LF"}, {"MEM3", "*IDN?"}}));
}

TEST_F(PortSettingsDialog, RefreshKeepsWhatIsBeingEdited) {
  Open();
  Pick(kBps, "57600");
  program.state.requests.portSettingsRefresh = true;
  ASSERT_TRUE(QTest::qWaitFor([&] { return !program.state.requests.portSettingsRefresh; }));
  EXPECT_EQ(Shown(), (QStringList{"57600", "8", "None", "1"}));
}

TEST_F(PortSettingsDialog, RefreshTakesTheValuesOfAnotherFile) {
  Open();
  Pick(kBps, "57600");
  program.settings.comBps = QStringLiteral("2400");
  program.settings.comParity = QStringLiteral("Even");
  program.state.requests.portSettingsRefresh = true;
  ASSERT_TRUE(QTest::qWaitFor([&] { return Box(kBps).currentText() == "2400"; }));
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Settings  (2400, 8, Even, 1)");
  Click(kOkLine);
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortSettingsDialog, NothingSlipsIntoAnOperationThatIsUnderWay) {
  messages.answers = {true, true};
  Open();
  Pick(kBps, "57600");
  whileShown = [this] {
    ASSERT_TRUE(window);
    for (const int id : {kDefault, kSetLine, kOkLine}) Button(id).click();
    window->close();
    WaitForATick();
    ASSERT_TRUE(window) << "destroyed under its own message";
  };
  Click(kDefault);
  EXPECT_TRUE(IsGone()) << "the close was put off, not forgotten";
  EXPECT_EQ(Happened(), (QStringList{kDefaultQuestion, kReset}));
}

TEST_F(PortSettingsDialog, TabFollowsTheReadingOrder) {
  Open();
  Box(kBps).setFocus();
  for (const int id : {kBits, kParity, kStop, kDefault, kSetLine, kOkLine}) {
    Press(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget()->property(kControlIdProperty), id);
  }
}

TEST_F(PortSettingsDialog, NothingIsClippedWithLargerFonts) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    ExpectNothingClipped(*window);
    for (const int id : {kDefault, kSetLine, kOkLine}) {
      EXPECT_GE(Button(id).width(), Button(id).minimumSizeHint().width());
      EXPECT_GE(Button(id).height(), Button(id).minimumSizeHint().height());
    }
    for (const int id : {kBps, kBits, kParity, kStop}) EXPECT_GE(Box(id).width(), Box(id).sizeHint().width());
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    delete window;
  }
}

}  // namespace
}  // namespace quarn::test
