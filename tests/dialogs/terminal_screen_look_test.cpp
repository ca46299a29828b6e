#include <QFontInfo>
#include <QFontMetrics>
#include <QMenu>

#include "dialogs/terminal/terminal_font.h"
#include "dialogs/terminal_fixture.h"
#include "support/window_places.h"
#include "terminal/screen_layout.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

class TerminalLook : public TerminalFixture {
 protected:
  const StaticText* Text(const char* name) { return window->findChild<StaticText*>(QLatin1String(name)); }
  QRgb BackgroundPixel() { return window->grab().toImage().pixel(5, 620); }
};

TEST_F(TerminalLook, EveryControlCarriesItsNumber) {
  Open();
  EXPECT_EQ(Text("prompt")->property(kControlIdProperty), 1002);
  EXPECT_EQ(Text("commandLine")->property(kControlIdProperty), 1017);
  EXPECT_EQ(Button("SEND").property(kControlIdProperty), 1004);
  EXPECT_EQ(Button("CLEAR").property(kControlIdProperty), 1005);
  const auto rows = window->findChildren<StaticText*>(QStringLiteral("row"));
  ASSERT_EQ(rows.size(), 32);
  for (int row = 0; row < 32; ++row) {
    EXPECT_EQ(rows[row]->property(kControlIdProperty), 1000 + row);
    EXPECT_EQ(rows[row]->geometry(), RowRect(row));
    EXPECT_TRUE(rows[row]->isVisible());
  }
}

TEST_F(TerminalLook, PromptCommandLineAndEveryRowHaveTheOneFont) {
  Open();
  const QFont wanted = TerminalFont();
  EXPECT_EQ(wanted.weight(), QFont::Normal);
  EXPECT_FALSE(wanted.italic() || wanted.underline() || wanted.strikeOut());
  EXPECT_TRUE(QFontInfo(wanted).fixedPitch());
  auto lines = window->findChildren<StaticText*>(QStringLiteral("row"));
  ASSERT_EQ(lines.size(), 32);
  lines += {window->findChild<StaticText*>(QStringLiteral("prompt")),
            window->findChild<StaticText*>(QStringLiteral("commandLine"))};
  for (const StaticText* each : lines) {
    EXPECT_EQ(each->font().family(), wanted.family()) << each->objectName().toStdString();
    EXPECT_EQ(each->font().pixelSize(), wanted.pixelSize());
    EXPECT_EQ(each->font().weight(), wanted.weight());
    EXPECT_EQ(each->font().styleHint(), wanted.styleHint());
  }
}

TEST_F(TerminalLook, TheFixedSizeLeavesRoomForTheFrame) {
  Open();
  EXPECT_TRUE(Until([this] { return OuterSize(*window) == QSize(460, 740); }));
  settings.inputMax = QStringLiteral("W");
  settings.lineNum = QStringLiteral("ON");
  settings.funcKey = QStringLiteral("OFF");
  state.displayScalePercent = 150;
  state.requests.refresh.Add(Window::TerminalScreen);
  EXPECT_TRUE(Until([this] { return OuterSize(*window) == QSize(630, 691); }));
  EXPECT_EQ(window->minimumSize(), window->maximumSize());
}

TEST_F(TerminalLook, ButtonsAreHiddenUnlessFunctionKeysAreOn) {
  settings.funcKey = QStringLiteral("OFF");
  Open();
  for (const QPushButton* each : window->findChildren<QPushButton*>()) EXPECT_FALSE(each->isVisible());
  settings.funcKey = QStringLiteral("ON");
  state.requests.refresh.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return Button("SEND").isVisible(); }));
  for (const QPushButton* each : window->findChildren<QPushButton*>()) EXPECT_TRUE(each->isVisible());
}

TEST_F(TerminalLook, TypingGoesOnWhenTheButtonWithTheFocusIsHidden) {
  Open();
  ASSERT_TRUE(Button("SEND").hasFocus());
  settings.funcKey = QStringLiteral("OFF");
  state.requests.refresh.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return !Button("SEND").isVisible(); }));
  QTest::keyClick(window->windowHandle(), 'a');
  EXPECT_EQ(commandLine.Text(), QStringLiteral("a"));
}

TEST_F(TerminalLook, BackgroundColours) {
  settings.bkColor = QStringLiteral("NAVY");
  Open();
  EXPECT_EQ(BackgroundPixel(), qRgb(1, 36, 86));
  for (const char* name : {"prompt", "commandLine", "row"}) {
    EXPECT_EQ(Text(name)->palette().color(QPalette::WindowText), QColor(255, 255, 255)) << name;
  }
  settings.bkColor = QStringLiteral("BLACK");
  state.requests.refresh.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return BackgroundPixel() == qRgb(0, 0, 0); }));
  settings.bkColor = QStringLiteral("GRAY");
  state.requests.refresh.Add(Window::TerminalScreen);
  const QPalette system = QApplication::palette();
  ASSERT_TRUE(Until([&] { return BackgroundPixel() == system.color(QPalette::Button).rgb(); }));
  EXPECT_EQ(Text("prompt")->palette().color(QPalette::WindowText), system.color(QPalette::WindowText));
}

TEST_F(TerminalLook, RowsAreDrawnWithoutTheirCr) {
  log.AppendLogText("X\r");
  Open();
  const QImage withCr = window->grab(QRect(22, 35, 100, 18)).toImage();
  log.ResetLog();
  log.AppendLogText("X");
  state.requests.refresh.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return window->RowText(0) == u"X"; }));
  EXPECT_EQ(window->grab(QRect(22, 35, 100, 18)).toImage(), withCr);
}

TEST_F(TerminalLook, TextIsDrawnWhereItsRowStands) {
  log.AppendLogText("MMMM\r");
  Open();
  const QImage first = window->grab(QRect(22, 35, 60, 18)).toImage();
  bool ink = false;
  for (int y = 0; y < first.height(); ++y) {
    for (int x = 0; x < first.width(); ++x) ink = ink || qGray(first.pixel(x, y)) > 128;
  }
  EXPECT_TRUE(ink);
}

TEST_F(TerminalLook, TheFontFitsTheRows) {
  Open();
  const QFont font = Text("row")->font();
  const QFontMetrics metrics(font);
  EXPECT_LE(metrics.height(), 18);
  EXPECT_TRUE(QFontInfo(font).fixedPitch());
  for (const char* width : {"N", "M", "W"}) {
    for (const char* numbers : {"OFF", "ON"}) {
      settings.inputMax = QLatin1String(width);
      settings.lineNum = QLatin1String(numbers);
      const int client = TerminalWindowSize(settings, 100).width() - 16;
      // The echo of a command is in brackets.
      const int characters =
          ScreenWidthOf(settings.inputMax).lineWidth + 2 + (settings.lineNum == u"ON" ? 7 : 0);
      EXPECT_LE(RowRect(0).left() + metrics.horizontalAdvance(QString(characters, u'W')), client)
          << width << numbers;
    }
  }
}

TEST_F(TerminalLook, ThePromptDoesNotRunIntoTheCommandLine) {
  settings.lineNum = QStringLiteral("ON");
  Open();
  const QFontMetrics metrics(Text("prompt")->font());
  EXPECT_EQ(Text("prompt")->Text(), QStringLiteral("LINE   >"));
  EXPECT_LE(22 + metrics.horizontalAdvance(QStringLiteral("LINE   >")), 87);
}

TEST_F(TerminalLook, ButtonCaptionsFitEvenWithAHugeFont) {
  const QFont before = QApplication::font();
  QFont huge = before;
  huge.setPointSizeF(before.pointSizeF() * 1.5);
  QApplication::setFont(huge);
  Open();
  for (const QPushButton* each : window->findChildren<QPushButton*>()) {
    const QFontMetrics metrics(each->font());
    EXPECT_LE(metrics.horizontalAdvance(each->text()), each->width() - 8) << each->text().toStdString();
    EXPECT_LE(metrics.height(), each->height() - 4);
  }
  QApplication::setFont(before);
}

TEST_F(TerminalLook, ToolTipsShowTheStoredCommands) {
  settings.mem[0] = QStringLiteral("meas?");
  settings.mem[9] = QStringLiteral("<b>bold</b>");
  Open();
  EXPECT_EQ(Button("F 1").toolTip(), QStringLiteral("meas?"));
  EXPECT_EQ(Button("F 2").toolTip(), QStringLiteral("function-2"));
  // Markup is shown unchanged.
  EXPECT_EQ(Button("F 10").toolTip(),
            QStringLiteral("<span style=\"white-space:pre\">&lt;b&gt;bold&lt;/b&gt;</span>"));
  settings.mem[0] = QStringLiteral("new");
  state.requests.refresh.Add(Window::TerminalScreen);
  EXPECT_TRUE(Until([this] { return Button("F 1").toolTip() == u"new"; }));
}

TEST_F(TerminalLook, TheContextMenu) {
  Open();
  QStringList texts;
  for (const QAction* each : window->ContextMenu().actions()) {
    texts.append(each->isSeparator() ? QStringLiteral("-") : each->text());
  }
  EXPECT_EQ(texts.join(u'\n'), QStringLiteral("Copy Log - Page\nCopy Log - All \nClear All Log Entries \n-\n"
                                              "Function Key Table\n-\nOption"));
  EXPECT_FALSE(MenuItem("Function Key Table")->isEnabled()) << "nothing was given that opens it";
  EXPECT_FALSE(MenuItem("Option")->isEnabled());
  EXPECT_TRUE(MenuItem("Clear All Log Entries ")->isEnabled());
  EXPECT_EQ(window->ContextMenu().title(), QStringLiteral("Menu "));
  QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(100, 100), window->mapToGlobal(QPoint(100, 100)));
  QApplication::sendEvent(window, &event);
  EXPECT_TRUE(window->ContextMenu().isVisible());
  EXPECT_EQ(window->ContextMenu().pos(), window->mapToGlobal(QPoint(100, 100)));
  window->ContextMenu().close();
  // The menu key gives no position. The menu covers neither the command line nor the buttons.
  QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(300, 600),
                          window->mapToGlobal(QPoint(300, 600)));
  QApplication::sendEvent(window, &byKey);
  EXPECT_TRUE(window->ContextMenu().isVisible());
  EXPECT_EQ(window->ContextMenu().pos(),
            window->findChild<QWidget*>(QStringLiteral("row"))->mapToGlobal(QPoint()));
  window->ContextMenu().close();
}

TEST_F(TerminalLook, CopyingTheLog) {
  log.AppendLogText("1\r2\r3\r4\r5\r");
  Open();
  MenuItem("Copy Log - Page")->trigger();
  EXPECT_EQ(Clipboard(), QStringLiteral("1\r2\r3\r4\r5\r"));
  for (int line = 6; line <= 40; ++line) log.AppendLogText(QByteArray::number(line) + '\r');
  MenuItem("Copy Log - Page")->trigger();
  EXPECT_TRUE(Clipboard().startsWith(QStringLiteral("9\r10\r")));
  EXPECT_EQ(Clipboard().count(u'\r'), 32);
  settings.lineNum = QStringLiteral("ON");
  MenuItem("Copy Log - All ")->trigger();
  EXPECT_TRUE(Clipboard().startsWith(QStringLiteral("   1|  1\r   2|  2\r")));
  EXPECT_EQ(Clipboard().count(u'\r'), 40);
}

TEST_F(TerminalLook, ClearingTheLogAsksFirst) {
  Open();
  MenuItem("Clear All Log Entries ")->trigger();
  EXPECT_TRUE(messages.shown.isEmpty());
  log.AppendLogText("1\r2\r");
  messages.answers = {false, true};
  MenuItem("Clear All Log Entries ")->trigger();
  ASSERT_EQ(messages.shown.size(), 1);
  EXPECT_EQ(messages.shown[0],
            QStringLiteral("question/: Confirmation/Is it OK to to clear all operation log ?//"));
  EXPECT_EQ(log.LineCount(), 2);
  MenuItem("Clear All Log Entries ")->trigger();
  EXPECT_EQ(log.LineCount(), 0);
  EXPECT_EQ(window->RowText(0), QString());
  EXPECT_TRUE(window->windowTitle().endsWith(QStringLiteral("N- INS")));
}

TEST_F(TerminalLook, OpensCentredWithTheFocusOnSend) {
  Open();
  EXPECT_TRUE(
      StandsOnScreen(*window, [&](QSize screen) { return CentredPosition(screen, QSize(460, 740)); }));
  EXPECT_TRUE(Button("SEND").hasFocus());
}

}  // namespace
}  // namespace quarn::test
