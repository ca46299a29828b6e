// The Terminal Screen's options beside an open Terminal Screen.

#include "dialogs/option_dialog_fixture.h"
#include "dialogs/settings/options.h"
#include "dialogs/terminal/terminal_screen.h"
#include "support/waits.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

class ScreenOptionEffects : public OptionDialogFixture<CScreenOption> {
 protected:
  ~ScreenOptionEffects() override { delete screen.data(); }
  void OpenBoth() {
    state.open.Add(Window::TerminalScreen);
    screen = new CTerminalScreen(
        nullptr, {settings, connection, state, m_engine, log, m_commandLine, messages, m_savedRect});
    screen->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(screen, kLongestWaitMs));
    Open();
  }
  bool BackgroundBecomes(QRgb colour) {
    return Until([&] { return screen->grab().toImage().pixel(5, 620) == colour; });
  }

  OperationLog log;
  QPointer<CTerminalScreen> screen;

 private:
  TransactionEngine m_engine{connection};
  CommandLine m_commandLine;
  QRect m_savedRect;
};

TEST_F(ScreenOptionEffects, AColourIsSeenAtOnce) {
  settings.bkColor = QStringLiteral("NAVY");
  OpenBoth();
  EXPECT_TRUE(BackgroundBecomes(qRgb(1, 36, 86)));
  Click(1069);
  EXPECT_TRUE(BackgroundBecomes(qRgb(0, 0, 0)));
  Click(1073);
  EXPECT_TRUE(BackgroundBecomes(qRgb(1, 36, 86)));
  Click(1068);
  EXPECT_TRUE(BackgroundBecomes(QApplication::palette().color(QPalette::Button).rgb()));
}

TEST_F(ScreenOptionEffects, ALengthThatIsAllowedEmptiesTheLogAndWidensTheWindow) {
  settings.inputMax = QStringLiteral("N");
  log.AppendLogText("one line");
  messages.answers = {false, true};
  OpenBoth();
  ASSERT_TRUE(Until([this] { return OuterSize(*screen).width() == 460; }));
  Click(1067);
  EXPECT_FALSE(state.requests.clearLog || state.requests.refresh.Contains(Window::TerminalScreen));
  EXPECT_EQ(log.LineCount(), 1);
  EXPECT_TRUE(Until([this] { return OuterSize(*screen).width() == 460; }));
  Click(1067);
  EXPECT_TRUE(Until([this] { return OuterSize(*screen).width() == 580; }));
  EXPECT_EQ(log.LineCount(), 0);
}

TEST_F(ScreenOptionEffects, HiddenFunctionKeysAreGoneAtOnce) {
  settings.funcKey = QStringLiteral("ON");
  OpenBoth();
  const auto* send = screen->findChild<QPushButton*>(QStringLiteral("SEND"));
  ASSERT_NE(send, nullptr);
  ASSERT_TRUE(send->isVisible());
  Click(1075);
  EXPECT_TRUE(Until([&] { return !send->isVisible(); }));
  Click(1075);
  EXPECT_TRUE(Until([&] { return send->isVisible(); }));
}

}  // namespace
}  // namespace quarn::test
