#include <QBasicTimer>
#include <QTimer>
#include <QTimerEvent>
#include <QWindow>

#include "dialogs/terminal_fixture.h"
#include "support/held_line.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

/// Another window of the program, whose timer counts.
class CountingDialog final : public PolledDialog {
 public:
  CountingDialog() { StartTicks(); }
  int ticks = 0;

 protected:
  void OnTick(int /*ticks*/) override { ++ticks; }
};

/// Does something during a transaction's wait, when it handles events.
class TerminalWait : public TerminalFixture {
 protected:
  void Connect(std::string_view rules) {
    ASSERT_NO_FATAL_FAILURE(TerminalFixture::Connect(rules));
    m_line = std::make_shared<HeldLine>(connection.handle.Line());
    connection.handle = PortHandle(m_line);
  }
  /// Runs `action` when the instrument has received `bytes`. Input made then arrives during the wait, because
  /// no answer is read before `enough` holds.
  void OnceReceived(
      const std::string& bytes, std::function<void()> action,
      std::function<bool()> enough = [] { return true; }) {
    m_line->Hold();
    const auto received = [this, bytes] { return instrument->Received() == bytes; };
    m_poll = std::make_unique<Poll>(received, [this, action = std::move(action), enough = std::move(enough)] {
      action();
      m_release = std::make_unique<Poll>(enough, [this] { m_line->Release(); });
    });
  }

 private:
  /// During the wait timers are dropped, but posted events are handled. So this one posts itself again.
  class Poll : public QObject {
   public:
    Poll(std::function<bool()> ready, std::function<void()> action)
        : m_ready(std::move(ready)), m_action(std::move(action)) {
      Again();
    }
    void customEvent(QEvent*) override {
      if (!m_ready()) return Again();
      m_action();
    }

   private:
    void Again() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }
    std::function<bool()> m_ready;
    std::function<void()> m_action;
  };
  std::shared_ptr<HeldLine> m_line;
  std::unique_ptr<Poll> m_poll;
  std::unique_ptr<Poll> m_release;
};

// processEvents handles events that are posted while it runs only in the next round, so a Poll that posts
// itself does not keep it from ending.

TEST_F(TerminalWait, EscapeAborts) {
  Connect("* -> silence");
  Open();
  Type("mute");
  OnceReceived("mute\r", [this] { QTest::keyClick(window->windowHandle(), Qt::Key_Escape); });
  Press(Qt::Key_Return);
  EXPECT_EQ(window->RowText(0), QStringLiteral("[mute]\r"));
  EXPECT_EQ(window->RowText(1), QStringLiteral("Warning: Aborted by ESC Key\r"));
  EXPECT_EQ(window->RowText(2), QStringLiteral("\r"));
  EXPECT_FALSE(engine.IsBusy());
  EXPECT_EQ(commandLine.Text(), QStringLiteral("mute"));
}

TEST_F(TerminalWait, AfterALineThatDiesWhileACommandIsOutNothingIsSentOnIt) {
  Connect("\"id\" -> line \"answer\"\n* -> silence");
  Open();
  Type("id");
  Press(Qt::Key_Return);
  ASSERT_EQ(log.LineCount(), 2);
  commandLine.Reset();
  Type("mute");
  OnceReceived("id\rmute\r", [this] { instrument.reset(); });
  Press(Qt::Key_Return);
  const int lines = log.LineCount();
  EXPECT_FALSE(engine.IsBusy());
  EXPECT_TRUE(messages.shown.isEmpty());
  for (int times = 1; times <= 2; ++times) {
    Press(Qt::Key_Return);
    ASSERT_EQ(messages.shown.size(), times);
    EXPECT_TRUE(messages.shown.last().contains(QStringLiteral("COM port is not available.")))
        << messages.shown.last().toStdString();
    EXPECT_EQ(log.LineCount(), lines) << "it would be no answer to this command";
  }
}

TEST_F(TerminalWait, EscapeTakesTheEntersTypedAheadWithIt) {
  Connect("\"mute\" -> silence\n* -> line \"answer\"");
  Open();
  Type("mute");
  OnceReceived("mute\r", [this] {
    for (int i = 0; i < 3; ++i) QTest::keyClick(window->windowHandle(), Qt::Key_Return);
    QTest::keyClick(window->windowHandle(), Qt::Key_Escape);
    QTest::keyClick(window->windowHandle(), Qt::Key_Return);
  });
  Press(Qt::Key_Return);
  ASSERT_EQ(window->RowText(1), QStringLiteral("Warning: Aborted by ESC Key\r"));
  // Kept keys would come before the keys typed now.
  commandLine.Reset();
  for (const char each : {'i', 'd'}) QTest::keyClick(window->windowHandle(), each);
  QTest::keyClick(window->windowHandle(), Qt::Key_Return);
  ASSERT_TRUE(Until([this] { return log.LineCount() == 5; }));
  EXPECT_EQ(instrument->Received(), "mute\rid\r");
  EXPECT_EQ(window->SendCounter(), 2U);
}

TEST_F(TerminalWait, TheLogIsNotClearedMeanwhile) {
  Connect("\"id\" -> line \"SIM-1\"\n\"slow\" -> 200 line \"late\"");
  Open();
  Type("id");
  Press(Qt::Key_Return);
  ASSERT_EQ(log.LineCount(), 2);
  commandLine.Reset();
  Type("slow");
  messages.answers = {true};
  OnceReceived("id\rslow\r", [this] { MenuItem("Clear All Log Entries ")->trigger(); });
  Press(Qt::Key_Return);
  EXPECT_EQ(messages.shown, QStringList());
  EXPECT_EQ(log.LineCount(), 4);
}

TEST_F(TerminalWait, EscapeTakesWhatAnotherWindowHadAskedToSendWithIt) {
  Connect("* -> silence");
  Open();
  Type("mute");
  OnceReceived("mute\r", [this] {
    state.requests.sendAction = true;
    QTest::keyClick(window->windowHandle(), Qt::Key_Escape);
  });
  // SEND and Enter in the table of stored commands, within one tick.
  state.requests.sendAction = true;
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 3; }));
  EXPECT_FALSE(state.requests.send);
  EXPECT_FALSE(state.requests.sendAction);
  Tick();
  EXPECT_EQ(instrument->Received(), "mute\r");
  EXPECT_EQ(window->SendCounter(), 0U);
}

TEST_F(TerminalWait, AnEscapeThatIsDownAbortsTheCommandThatBegins) {
  Connect("* -> silence");
  Open();
  Type("mute");
  QTest::keyPress(window->windowHandle(), Qt::Key_Escape);
  for (int times = 1; times <= 2; ++times) {
    Press(Qt::Key_Return);
    EXPECT_EQ(window->RowText(3 * times - 2), QStringLiteral("Warning: Aborted by ESC Key\r"));
    EXPECT_EQ(log.LineCount(), 3 * times);
  }
  QTest::keyRelease(window->windowHandle(), Qt::Key_Escape);
  settings.rTimeout = QStringLiteral("ON");
  Press(Qt::Key_Return);
  EXPECT_EQ(window->RowText(7), QStringLiteral("Error: Response Timeout Error\r"));
}

TEST_F(TerminalWait, KeysPressedMeanwhileAreHandedOnInTheirOrder) {
  Connect("\"slow\" -> line \"done\"");
  settings.autoClr = QStringLiteral("ON");
  Open();
  Type("slow");
  OnceReceived("slow\r", [this] {
    for (const char each : {'a', 'b', 'c'}) QTest::keyClick(window->windowHandle(), each);
    QTest::keyClick(window->windowHandle(), Qt::Key_Left);
    QTest::keyClick(window->windowHandle(), 'x');
    // During the wait no key has reached the command line.
    EXPECT_EQ(commandLine.Text(), QStringLiteral("slow"));
    EXPECT_TRUE(engine.IsBusy());
  });
  Press(Qt::Key_Return);
  EXPECT_EQ(window->RowText(1), QStringLiteral("done\r"));
  EXPECT_TRUE(Until([this] { return commandLine.Text() == u"abxc"; })) << commandLine.Text().toStdString();
}

TEST_F(TerminalWait, AnEnterPressedMeanwhileStartsItsTransactionAfterwards) {
  Connect("\"slow\" -> line \"done\"\n* -> line \"other\"");
  Open();
  Type("slow");
  OnceReceived("slow\r", [this] {
    QTest::keyClick(window->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(instrument->Received(), "slow\r");
  });
  Press(Qt::Key_Return);
  EXPECT_EQ(window->SendCounter(), 1U);
  EXPECT_EQ(log.LineCount(), 2);
  ASSERT_TRUE(Until([this] { return log.LineCount() == 4; }));
  EXPECT_EQ(window->RowText(3), QStringLiteral("done\r"));
  EXPECT_EQ(window->SendCounter(), 2U);
}

TEST_F(TerminalWait, AnEnterThatReachesTheWindowMeanwhileDoesNothing) {
  Connect("\"slow\" -> line \"done\"");
  Open();
  Type("slow");
  OnceReceived("slow\r", [this] {
    // Directly to the widget, without the hold.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(window->SendCounter(), 1U);
  });
  Press(Qt::Key_Return);
  EXPECT_EQ(log.LineCount(), 2);
  EXPECT_EQ(window->RowText(1), QStringLiteral("done\r"));
  EXPECT_EQ(window->SendCounter(), 1U);
}

TEST_F(TerminalWait, AHeldEnterDoesNotPileUpCommands) {
  Connect("\"slow\" -> line \"done\"");
  Open();
  Type("slow");
  OnceReceived("slow\r", [this] {
    for (int i = 0; i < 20; ++i) {
      QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
      QApplication::sendEvent(window->windowHandle(), &repeat);
    }
  });
  Press(Qt::Key_Return);
  Tick();
  EXPECT_EQ(log.LineCount(), 2);
  EXPECT_EQ(window->SendCounter(), 1U);
}

TEST_F(TerminalWait, ClicksMeanwhileLandOnTheirButtons) {
  Connect("\"slow\" -> line \"done\"");
  settings.mem[1] = QStringLiteral("two");
  settings.mem[8] = QStringLiteral("nine");
  Open();
  Type("slow");
  OnceReceived("slow\r", [this] {
    const auto click = [this](const char* caption, Qt::KeyboardModifiers modifiers) {
      QTest::mouseClick(window->windowHandle(), Qt::LeftButton, modifiers,
                        Button(caption).geometry().center());
    };
    click("F 2", {});
    click("F 9", Qt::ControlModifier);
    QTest::mouseMove(window->windowHandle(), QPoint(5, 5));
  });
  Press(Qt::Key_Return);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("slow"));
  EXPECT_TRUE(Until([this] { return commandLine.Text() == u"twonine"; })) << commandLine.Text().toStdString();
}

TEST_F(TerminalWait, ACloseRequestMeanwhileClosesAfterwards) {
  Connect("\"slow\" -> line \"done\"");
  Open();
  Type("slow");
  OnceReceived("slow\r", [this] {
    window->windowHandle()->close();
    EXPECT_TRUE(window->isVisible());
  });
  Press(Qt::Key_Return);
  EXPECT_EQ(log.LineCount(), 2);
  EXPECT_EQ(log.Line(1), QByteArray("done\r"));
  EXPECT_TRUE(Until([this] { return window.isNull(); }));
}

TEST_F(TerminalWait, NoTimerOfAnotherWindowRunsAndWindowsStillPaint) {
  Connect("\"slow\" -> line \"done\"");
  Open();
  CountingDialog other;
  other.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&other, kLongestWaitMs));
  ASSERT_TRUE(Until([&] { return other.ticks > 0; }));
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window, kLongestWaitMs));
  Type("slow");
  int before = 0;
  // Each check of the ESC key is 20 polls after the one before: longer than a tick.
  constexpr unsigned kFewChecks = 3;
  OnceReceived(
      "slow\r",
      [&] {
        before = other.ticks;
        state.requests.clearLog = true;
      },
      [this] { return engine.PollCounter() >= kFewChecks; });
  Press(Qt::Key_Return);
  EXPECT_EQ(other.ticks, before);
  EXPECT_TRUE(state.requests.clearLog);
  EXPECT_EQ(log.LineCount(), 2);
  // Afterwards the timers run again.
  EXPECT_TRUE(Until([&] { return other.ticks > before; }));
  EXPECT_TRUE(Until([&] { return log.LineCount() == 0; }));
}

TEST_F(TerminalWait, TheWaitingMarkBlinksAtTheCaret) {
  Connect("* -> silence");
  Open();
  Type("wait");
  Press(Qt::Key_Left);
  QStringList seen;
  /// Records the texts of the command line, as they are painted.
  class Watcher : public QObject {
   public:
    Watcher(StaticText* text, QStringList* seen, std::function<void()> enough)
        : m_text(text), m_seen(seen), m_enough(std::move(enough)) {
      text->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
      if (event->type() == QEvent::Paint && (m_seen->isEmpty() || m_seen->last() != m_text->Text())) {
        m_seen->append(m_text->Text());
        if (m_seen->count(QStringLiteral("wai*")) == 2) m_enough();
      }
      return false;
    }

   private:
    StaticText* m_text;
    QStringList* m_seen;
    std::function<void()> m_enough;
  };
  Watcher watcher(window->findChild<StaticText*>(QStringLiteral("commandLine")), &seen,
                  [this] { QTest::keyClick(window->windowHandle(), Qt::Key_Escape); });
  Press(Qt::Key_Return);
  EXPECT_TRUE(seen.join(u'/').contains(QStringLiteral("wait/wai*/wait/wai*")))
      << seen.join(u'/').toStdString();
  EXPECT_EQ(commandLine.Text(), QStringLiteral("wait"));
  EXPECT_EQ(DisplayedCommand(), commandLine.DisplayText());
}

TEST_F(TerminalWait, ATimeOutIsLoggedAndALateAnswerIsNotTheNextOne) {
  // Later than the end of the wait and of the read left behind.
  Connect("\"late\" -> 5000 line \"late answer\"\n\"next\" -> line \"next answer\"");
  settings.rTimeout = QStringLiteral("ON");
  Open();
  Type("late");
  Press(Qt::Key_Return);
  EXPECT_EQ(window->RowText(1), QStringLiteral("Error: Response Timeout Error\r"));
  EXPECT_EQ(instrument->Answers(), 0);
  settings.rTimeout = QStringLiteral("OFF");
  Press(Qt::Key_Z, Qt::ControlModifier);
  Type("next");
  ASSERT_TRUE(Until([this] { return instrument->Answers() == 1; }));
  Press(Qt::Key_Return);
  // The late response came before the second command was sent, so it does not count as its response.
  EXPECT_EQ(window->RowText(4), QStringLiteral("next answer\r"));
  EXPECT_EQ(log.LineCount(), 5);
}

}  // namespace
}  // namespace quarn::test
