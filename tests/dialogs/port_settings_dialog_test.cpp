#include <QAbstractItemView>
#include <QScreen>

#include "dialogs/port_settings_fixture.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

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
  EXPECT_TRUE(StandsOnScreen(
      *window, [&](QSize screen) { return PercentPosition(screen, OuterSize(*window), 50, 20); }));
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

TEST_F(PortSettingsDialog, ValuesThatAreNotOfferedAreNotSelected) {
  program.settings.comBits = QStringLiteral("9");
  program.settings.comParity = QStringLiteral("none");
  program.settings.comStop = QStringLiteral("1.50");
  Open();
  for (const int id : {kBits, kParity, kStop}) EXPECT_EQ(Box(id).currentIndex(), -1) << id;
  EXPECT_EQ(Box(kBps).currentText(), "9600");
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Settings  (9600, 9, none, 1.50)");
}

TEST_F(PortSettingsDialog, TheCloseBoxLeavesWhatWasPickedWithTheMouse) {
  const std::string before = WorkingFile();
  Open();
  QTest::mouseClick(&Box(kParity), Qt::LeftButton);
  QAbstractItemView& list = *Box(kParity).view();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(list.window(), kLongestWaitMs));
  // For a short time the list treats a release as that of the click that opened it, not as a choice.
  const QPoint even = list.visualRect(list.model()->index(Box(kParity).findText("Even"), 0)).center();
  EXPECT_TRUE(WaitUntil([&] {
    if (list.isVisible()) QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, even);
    return window->windowTitle() == QLatin1String("Quarn - COM Port Settings  (9600, 8, Even, 1)");
  })) << window->windowTitle().toStdString();
  window->close();
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(program.settings.comParity, "None");
  EXPECT_EQ(WorkingFile(), before);
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
  program.state.requests.refresh.Add(Window::PortSettings);
  ASSERT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::PortSettings); }));
  EXPECT_EQ(Shown(), (QStringList{"57600", "8", "None", "1"}));
}

TEST_F(PortSettingsDialog, RefreshTakesTheValuesOfAnotherFile) {
  Open();
  Pick(kBps, "57600");
  program.settings.comBps = QStringLiteral("2400");
  program.settings.comParity = QStringLiteral("Even");
  program.state.requests.refresh.Add(Window::PortSettings);
  ASSERT_TRUE(WaitUntil([&] { return Box(kBps).currentText() == "2400"; }));
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
    EXPECT_TRUE(TitleFits(*window, PortSettingsTitle({"256000", "8", "None", "1.5"})));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    delete window;
  }
}

}  // namespace
}  // namespace quarn::test
