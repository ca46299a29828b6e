
#include "system/e2e/desktop.h"

namespace quarn::test {
namespace {

class Window : public EndToEnd {
 protected:
  static QRect ButtonRect(int index) { return {69 * (index % 6) + 20, 628 + 32 * (index / 6), 60, 22}; }
  static QPoint ButtonAt(int index) { return ButtonRect(index).center(); }
  /// Whether the Terminal Screen has its size, with the frame.
  [[nodiscard]] bool IsWhole() const {
    const std::optional<QRect> outer = desktop.Outer(terminal);
    return outer && outer->size() == QSize(460, 740);
  }
};

TEST_F(Window, TheOuterSizeIsTheFixedOne) {
  StartConnected("* -> line \"OK\"");
  EXPECT_TRUE(Eventually([this] { return IsWhole(); }))
      << Geometry(terminal).width() << 'x' << Geometry(terminal).height();
}

TEST_F(Window, ButtonsWorkWithTheMouse) {
  StartConnected("* -> line \"OK\"", {{QStringLiteral("MEM1"), QStringLiteral("two")}});
  ClickAt(terminal, ButtonAt(1));
  ClickAt(terminal, ButtonAt(5));
  EXPECT_TRUE(WireBecomes("two\r"));
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  ClickAt(terminal, ButtonAt(11));
  Press({QStringLiteral("Left"), QStringLiteral("Left"), QStringLiteral("Left")});
  Type(QStringLiteral("x"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("two\rx\r"));
}

// At 150 per cent the window is 1140 pixels high, and the screen 1024.
TEST_F(Window, MovedAboveTheScreensEdgeItShowsItsLastRow) {
  constexpr double kScale = 1.5;
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(kScale));
  program.setProcessEnvironment(environment);
  StartConnected("* -> line \"OK\"", {{QStringLiteral("MEM9"), QStringLiteral("ten")}});
  const QPoint lastStored = (ButtonRect(10).toRectF().center() * kScale).toPoint();
  ASSERT_TRUE(Eventually([&] {
    const std::optional<QRect> outer = desktop.Outer(terminal);
    return outer && outer->top() == 0;
  }));
  ASSERT_GT(lastStored.y(), 1024 - Geometry(terminal).top());
  desktop.Run(QStringLiteral("xdotool"),
              {QStringLiteral("windowmove"), terminal, QStringLiteral("300"), QStringLiteral("-200")});
  ASSERT_TRUE(Eventually([&] { return Geometry(terminal).top() < -100; }));
  ClickAt(terminal, lastStored);
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("ten\r"));
  EXPECT_LT(Geometry(terminal).top(), -100);
}

TEST_F(Window, TheWheelScrolls) {
  StartConnected("* -> line \"OK\"");
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  ClickAt(terminal, QPoint(100, 300), 5);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 2-2  ]")));
  ClickAt(terminal, QPoint(100, 300), 4);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
}

TEST_F(Window, ClosedAndOpenedAgainItStandsWhereItStoodWithTheSameLog) {
  StartConnected("* -> line \"OK\"");
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("windowmove"), QStringLiteral("--sync"), terminal,
                                          QStringLiteral("620"), QStringLiteral("150")});
  QRect before;
  ASSERT_TRUE(Eventually([&] {
    before = Geometry(terminal);
    return before.x() > 600 && IsWhole();
  }));
  Focus(terminal);
  Press({QStringLiteral("alt+F4")});
  ASSERT_TRUE(WaitForNoWindow(kTerminal));
  const QString main = WaitForWindow(kMain);
  Focus(main);
  // The menu's item comes to life with the main window's next tick; press again if that was too early. Its
  // letter chooses no other item, as Enter would.
  EXPECT_TRUE(Eventually([&] {
    Press({QStringLiteral("Escape"), QStringLiteral("alt+t"), QStringLiteral("t")});
    return Eventually([&] { return !desktop.Windows(kTerminal).isEmpty(); }, kOneTryMs);
  }));
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(Eventually([&] { return Geometry(terminal) == before; }))
      << Geometry(terminal).x() << ',' << Geometry(terminal).y() << " instead of " << before.x() << ','
      << before.y() << ", size " << Geometry(terminal).width() << 'x' << Geometry(terminal).height()
      << " instead of " << before.width() << 'x' << before.height();
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  Focus(terminal);
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("id\rid\r"));
}

TEST_F(Window, ClearingTheLogAsksAndClears) {
  StartConnected("* -> line \"OK\"");
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  const auto choose = [this] {
    ChooseFromContextMenu(3);
    Focus(WaitForWindow(QStringLiteral("^Quarn : Confirmation$")));
  };
  choose();
  Press({QStringLiteral("Escape")});
  ASSERT_TRUE(WaitForNoWindow(QStringLiteral("^Quarn : Confirmation$")));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  // Enter loses nothing.
  choose();
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(WaitForNoWindow(QStringLiteral("^Quarn : Confirmation$")));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  choose();
  Press({QStringLiteral("o")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
}

}  // namespace
}  // namespace quarn::test
