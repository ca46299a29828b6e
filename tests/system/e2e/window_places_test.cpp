#include <algorithm>

#include "system/e2e/dialogs.h"

namespace quarn::test {
namespace {

/// With room for several windows beside the Terminal Screen.
constexpr QSize kScreenSize{1920, 1080};

/// Where the windows stand once the window manager has put its frames around them. Rectangles are outer ones.
class WindowPlaces : public Dialogs {
 protected:
  WindowPlaces() : Dialogs(kScreenSize) {}

  using Rule = std::function<QPoint(const QRect& main, QSize window)>;

  ::testing::AssertionResult StandsBy(const QString& titlePattern, const Rule& rule) {
    QRect found;
    QPoint wanted;
    const bool stands = Eventually([&] {
      const std::optional<QRect> main = desktop.Outer(WaitForWindow(kMain));
      const std::optional<QRect> window = desktop.Outer(WaitForWindow(titlePattern));
      if (!main || !window) return false;
      found = *window;
      wanted = rule(*main, window->size());
      return found.topLeft() == wanted;
    });
    if (stands) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << titlePattern.toStdString() << " stands at " << found.x() << ',' << found.y() << " instead of "
           << wanted.x() << ',' << wanted.y() << ", size " << found.width() << 'x' << found.height();
  }
  ::testing::AssertionResult StandsAt(const QString& titlePattern, QPoint place) {
    return StandsBy(titlePattern, [place](const QRect&, QSize) { return place; });
  }

  void Open(const QString& menu, const QString& item, const QString& titlePattern) {
    Choose(menu, item);
    ASSERT_FALSE(WaitForWindow(titlePattern).isEmpty());
  }
  void Close(const QString& titlePattern) {
    EXPECT_TRUE(Eventually([&] {
      const QString window = desktop.Windows(titlePattern).value(0);
      if (window.isEmpty()) return true;
      // Not with Alt+F4: in some desktops another program than the window manager has that key.
      desktop.Run(QStringLiteral("wmctrl"), {QStringLiteral("-i"), QStringLiteral("-c"),
                                             QStringLiteral("0x") + QString::number(window.toUInt(), 16)});
      return Eventually([&] { return desktop.Windows(titlePattern).isEmpty(); }, kOneTryMs);
    }));
  }

  static QPoint Centred(const QRect& /*main*/, QSize window) {
    return {kScreenSize.width() / 2 - window.width() / 2,
            std::max(kScreenSize.height() / 2 - window.height() / 2 - 30, 0)};
  }
  static QPoint AtHalfAndAFifth(const QRect& /*main*/, QSize window) {
    return {(kScreenSize.width() - window.width()) * 50 / 100,
            (kScreenSize.height() - window.height()) * 20 / 100};
  }
  static QPoint Below(const QRect& main, QSize /*window*/) {
    return {main.x(), main.y() + main.height() + 10};
  }
  static QPoint Beside(const QRect& main, QSize /*window*/) {
    return {main.x() + main.width() + 10, main.y()};
  }
  static QPoint LeftOfTheEdge(const QRect& main, QSize window) {
    return {kScreenSize.width() - window.width() - main.width() - 30, main.y()};
  }

  const QString kTools = QStringLiteral("Tools");
  const QString kOption = QStringLiteral("Option");
  const QString kTable = QStringLiteral("^Quarn - Function Key Table$");
  const QString kTableItem = QStringLiteral("Function Key Table");
  const QString kList = QStringLiteral("^Quarn - Detailed COM Port List");
  const QString kScreenOption = QStringLiteral("^Quarn - Terminal Screen Option$");
  const QString kMainOption = QStringLiteral("^Quarn - Main Dialog Optiom$");
  const QString kFormat = QStringLiteral("^Quarn - Command Format$");
  const QString kFormatItem = QStringLiteral("Command Format  (F)");
};

TEST_F(WindowPlaces, EveryWindowStandsInItsPlace) {
  StartWithoutTerminal("* -> line \"OK\"");
  EXPECT_TRUE(StandsBy(kMain, [](const QRect& main, QSize) {
    return QPoint((kScreenSize.width() - main.width()) * 3 / 100,
                  (kScreenSize.height() - main.height()) * 3 / 100);
  }));
  struct Opened {
    QString menu, item, title;
    Rule rule;
  };
  const QList<Opened> windows{
      {kPortMenu, QStringLiteral("COM Port Number"), QStringLiteral("^Quarn - COM Port Number"), Below},
      {kPortMenu, QStringLiteral("Detailed COM Port List"), kList, Below},
      {kPortMenu, QStringLiteral("COM Port Settings"), QStringLiteral("^Quarn - COM Port Settings"),
       AtHalfAndAFifth},
      {kPortMenu, QStringLiteral("Disconnect COM Port"), kConfirmation, Centred},
      {kTools, kTableItem, kTable, Below},
      {kTools, QStringLiteral("Terminal Screen"), kTerminal, Centred},
      {kOption, kFormatItem, kFormat, Beside},
      {kOption, QStringLiteral("Terminal Screen Option  (T)"), kScreenOption, Below},
      {kOption, QStringLiteral("Main Dialog Option (M)"), kMainOption, Below},
      {QStringLiteral("Help"), QStringLiteral("About"), QStringLiteral("^About  Quarn"), Centred},
  };
  for (const Opened& each : windows) {
    ASSERT_NO_FATAL_FAILURE(Open(each.menu, each.item, each.title));
    EXPECT_TRUE(StandsBy(each.title, each.rule));
    Close(each.title);
  }
}

TEST_F(WindowPlaces, WindowsWithoutAPlaceOfTheirOwnCoverNothing) {
  StartConnected("* -> line \"OK\"");
  QStringList titles{kMain, kTerminal};
  for (const auto& [menu, item, title] :
       {std::tuple{kTools, kTableItem, kTable},
        std::tuple{kPortMenu, QStringLiteral("Detailed COM Port List"), kList},
        std::tuple{kOption, QStringLiteral("Terminal Screen Option  (T)"), kScreenOption},
        std::tuple{kOption, QStringLiteral("Main Dialog Option (M)"), kMainOption}}) {
    ASSERT_NO_FATAL_FAILURE(Open(menu, item, title));
    for (const QString& other : titles) {
      EXPECT_TRUE(Eventually([&, title = title] {
        const std::optional<QRect> opened = desktop.Outer(WaitForWindow(title));
        const std::optional<QRect> shown = desktop.Outer(WaitForWindow(other));
        return opened && shown && !opened->intersects(*shown);
      })) << title.toStdString()
          << " on " << other.toStdString();
    }
    titles.append(title);
  }
}

TEST_F(WindowPlaces, TheFunctionKeyTableStaysWhereItIs) {
  StartWithoutTerminal("* -> line \"OK\"");
  Open(kTools, kTableItem, kTable);
  ASSERT_TRUE(StandsBy(kTable, Below));
  MoveAside(kTable, {612, 333});
  std::optional<QRect> moved;
  ASSERT_TRUE(Eventually([&] {
    moved = desktop.Outer(WaitForWindow(kTable));
    return moved && moved->x() > 600;
  }));
  for (int times = 0; times < 10; ++times) {
    Close(kTable);
    ASSERT_NO_FATAL_FAILURE(Open(kTools, kTableItem, kTable));
    ASSERT_TRUE(StandsAt(kTable, moved->topLeft())) << times;
  }
}

TEST_F(WindowPlaces, AtTheScreensEdgeTheCommandFormatStandsOnTheOtherSide) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort},
                 {QStringLiteral("START_DISP"), QStringLiteral("OFF")},
                 {QStringLiteral("MAIN_POS"), QStringLiteral("TR")}});
  PlugIn("* -> line \"OK\"");
  StartProgram();
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  Open(kOption, kFormatItem, kFormat);
  EXPECT_TRUE(StandsBy(kFormat, LeftOfTheEdge));
}

TEST_F(WindowPlaces, WhatAPersonHasMovedStays) {
  StartWithoutTerminal("* -> line \"OK\"");
  const QString title = QStringLiteral("^Quarn - COM Port Settings");
  Open(kPortMenu, QStringLiteral("COM Port Settings"), title);
  // As early as can be, while the program may still be looking for the frame.
  desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("windowmove"), WaitForWindow(title),
                                          QStringLiteral("640"), QStringLiteral("555")});
  std::optional<QRect> moved;
  ASSERT_TRUE(Eventually([&] {
    moved = desktop.Outer(WaitForWindow(title));
    return moved && moved->y() > 500;
  }));
  // The next dialog has found its own place: time enough for this one to go astray.
  Open(kOption, kFormatItem, kFormat);
  EXPECT_TRUE(StandsBy(kFormat, Beside));
  EXPECT_TRUE(StandsAt(title, moved->topLeft()));
}

}  // namespace
}  // namespace quarn::test
