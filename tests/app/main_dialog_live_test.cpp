// What a change in one window does to the main dialog and to the others.

#include <QComboBox>
#include <QRadioButton>
#include <QScreen>

#include "app/main_dialog_fixture.h"
#include "serial/port_list.h"
#include "settings/settings_table.h"
#include "support/dialog_controls.h"
#include "support/scripted_line.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/input_hold.h"

namespace quarn::test {
namespace {

class MainDialogLive : public MainDialog {
 protected:
  void SetUp() override {
    program.settings = DefaultSettings();
    MainDialog::SetUp();
    dialog.StartTimer();
  }
  /// Opens a dialog from the menu.
  QWidget& Opened(int item, const char* name) {
    Action(item)->trigger();
    EXPECT_EQ(Shown(name).size(), 1) << name;
    return *Shown(name).first();
  }
  QWidget& OpenNumber() { return Opened(32791, "CPortNum"); }
  QWidget& OpenList() { return Opened(32792, "CPortDetails"); }
  static void Hit(QWidget& window, int controlId) {
    auto* button = quarn::test::Control<QAbstractButton>(window, controlId);
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
  }
  void List() { ASSERT_TRUE(RefreshPortList(ports, program.connection)); }
  /// The main dialog has checked its requests three times.
  void LetItTick() {
    for (int i = 0; i < 3; ++i) {
      program.state.requests.refresh.Add(Window::MainDialog);
      ASSERT_TRUE(WaitUntil([this] { return !program.state.requests.refresh.Contains(Window::MainDialog); }));
    }
  }
};

TEST_F(MainDialogLive, ThePositionForTheNextStartMovesNothingNow) {
  dialog.PlaceByPercent(3, 3);
  ASSERT_TRUE(
      StandsOnScreen(dialog, [&](QSize screen) { return PercentPosition(screen, OuterSize(dialog), 3, 3); }));
  const QPoint place = dialog.pos();
  program.settings.mainPos = QStringLiteral("TL");
  Hit(Opened(32790, "CMainOption"), 1074);
  LetItTick();
  EXPECT_EQ(program.settings.mainPos, QStringLiteral("TR"));
  EXPECT_EQ(dialog.pos(), place);
}

/// Counts the ticks of a window that never sleeps.
class Clock final : public PolledDialog {
 public:
  Clock() { StartTicks(); }
  int ticks = 0;

 protected:
  void OnTick(int /*ticks*/) override { ++ticks; }
};

TEST_F(MainDialogLive, SleepsUntilThePortsChange) {
  const PseudoTerminal port;
  ports.revision = 1;
  ASSERT_TRUE(WaitUntil([this] { return dialog.Monitor().IsAtRest(); }));
  const std::uint32_t before = dialog.Monitor().TickCount();
  const Clock clock;
  ASSERT_TRUE(WaitUntil([&] { return clock.ticks >= 5; }));
  EXPECT_EQ(dialog.Monitor().TickCount(), before);
  PlugIn(QStringLiteral("COM3"), port);
  ports.revision = 2;
  EXPECT_TRUE(WaitUntil([&] { return program.connection.portNames.size() == 1; }));
  EXPECT_EQ(Happened(), QStringList{"transient/COM port list has been updated."});
  EXPECT_GE(dialog.Monitor().TickCount(), before + 5) << "those that were slept over count";
}

/// Counts how often somebody asks whether it is lost.
class WatchedLine final : public ScriptedLine {
 public:
  using ScriptedLine::ScriptedLine;
  int looks = 0;
  bool IsLost() override {
    ++looks;
    return ScriptedLine::IsLost();
  }
};

TEST_F(MainDialogLive, LeavesTheLineToATransaction) {
  Configure(QStringLiteral("COM3"));
  Journal calls;
  const auto line = std::make_shared<WatchedLine>(calls);
  program.connection.handle = PortHandle(line);
  program.connection.connected.Update(PortChange::Opened);
  ports.revision = 1;
  ASSERT_TRUE(WaitUntil([this] { return dialog.Monitor().IsAtRest(); }));
  const int atRest = line->looks;
  ASSERT_TRUE(WaitUntil([&] { return line->looks > atRest; })) << "each sleep looks";
  InputHold transaction;
  transaction.Begin();
  const int before = line->looks;
  transaction.HoldFor(3 * PolledDialog::kTickMs);
  EXPECT_EQ(line->looks, before);
  line->lost = true;
  transaction.End();
  EXPECT_TRUE(WaitUntil([this] { return !journal.isEmpty(); }));
  EXPECT_TRUE(Happened().first().contains(QStringLiteral("\"COM3\" is not available.")));
  program.connection.handle = PortHandle();
}

TEST_F(MainDialogLive, TheListFollowsAChoiceByNumber) {
  const PseudoTerminal first;
  const PseudoTerminal second;
  PlugIn(QStringLiteral("COM3"), first);
  PlugIn(QStringLiteral("COM4"), second);
  List();
  QWidget& list = OpenList();
  QWidget& number = OpenNumber();
  const auto* row = quarn::test::Control<QRadioButton>(list, 1032);
  const auto* set = quarn::test::Control<QPushButton>(list, 1062);
  EXPECT_FALSE(row->isChecked());
  auto* choices = quarn::test::Control<QComboBox>(number, 1005);
  QTest::keyClick(choices, Qt::Key_End);
  ASSERT_EQ(choices->currentText(), QStringLiteral("COM4"));
  Hit(number, 1006);
  EXPECT_EQ(Happened(), QStringList{"information/: Information//Successfully connected to  \"COM4\"/"});
  EXPECT_TRUE(WaitUntil([&] { return row->isChecked(); }));
  EXPECT_EQ(list.windowTitle(), QStringLiteral("Quarn - Detailed COM Port List  (COM4)  "));
  EXPECT_FALSE(set->isEnabled()) << "it is connected already";
  EXPECT_TRUE(WaitUntil([&] { return dialog.windowTitle() == QStringLiteral("Quarn   (COM4)"); }));
  // The reverse.
  Hit(list, 1031);
  EXPECT_TRUE(set->isEnabled());
  Hit(list, 1062);
  EXPECT_EQ(Happened(), QStringList{"information/: Information//Successfully connected to  \"COM3\"/"});
  EXPECT_TRUE(WaitUntil([&] { return choices->currentText() == QStringLiteral("COM3"); }));
  EXPECT_EQ(number.windowTitle(), QStringLiteral("Quarn - COM Port Number (COM3)  "));
}

TEST_F(MainDialogLive, RestoredDefaultsReachThePortDialogs) {
  program.settings.comBps = QStringLiteral("19200");
  OpenNumber();
  OpenList();
  const QWidget& settings = Opened(32783, "CPortSettings");
  const auto* rate = quarn::test::Control<QComboBox>(settings, 1066);
  ASSERT_EQ(rate->currentText(), QStringLiteral("19200"));
  messages.answers = {true};
  Action(32799)->trigger();
  EXPECT_TRUE(WaitUntil([&] { return Shown("CPortNum").isEmpty() && Shown("CPortDetails").isEmpty(); }));
  EXPECT_FALSE(program.state.open.Contains(Window::PortNumber) ||
               program.state.open.Contains(Window::DetailedPortList));
  EXPECT_TRUE(WaitUntil([&] { return rate->currentText() == QStringLiteral("9600"); }));
  EXPECT_TRUE(settings.isVisible());
  EXPECT_EQ(settings.windowTitle(), QStringLiteral("Quarn - COM Port Settings  (9600, 8, None, 1)"));
}

}  // namespace
}  // namespace quarn::test
