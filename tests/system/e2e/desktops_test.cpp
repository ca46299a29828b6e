#include <QElapsedTimer>
#include <QRegularExpression>
#include <algorithm>

#include "support/silent_socket_linux.h"
#include "system/e2e/dialogs.h"

namespace quarn::test {
namespace {

/// Notes what becomes of the windows that stand on the screen itself: those with which the window manager
/// frames the program's.
class WindowEvents {
 public:
  explicit WindowEvents(const Desktop& desktop) {
    m_process.setProcessEnvironment(desktop.Environment());
    m_process.start(QStringLiteral("xev"),
                    {QStringLiteral("-root"), QStringLiteral("-event"), QStringLiteral("substructure")});
  }
  /// Whether it hears of events; makes one.
  bool AreTold(const Desktop& desktop) {
    return Eventually([&] {
      desktop.Run(QStringLiteral("xclip"), {QStringLiteral("-o")});  // has a window
      return !Told().isEmpty();
    });
  }
  /// The different sizes that the window has had since it could be seen, in their order.
  QStringList SizesOf(const QByteArray& window) {
    QStringList sizes;
    QString size;
    bool isSeen = false;
    for (const QString& event : Told().split(QStringLiteral("\n\n"))) {
      if (!event.contains(QStringLiteral("window %1,").arg(QLatin1String(window)))) continue;
      static const QRegularExpression pattern(QStringLiteral("width (\\d+), height (\\d+)"));
      const QRegularExpressionMatch match = pattern.match(event);
      if (match.hasMatch()) size = match.captured(1) + QLatin1Char('x') + match.captured(2);
      if (event.startsWith(QLatin1String("MapNotify"))) isSeen = true;
      if (isSeen && !sizes.endsWith(size)) sizes.append(size);
    }
    return sizes;
  }

 private:
  const QString& Told() {
    while (m_process.waitForReadyRead(0)) m_told += QString::fromLatin1(m_process.readAllStandardOutput());
    return m_told;
  }

  ChildProcess m_process;
  QString m_told;
};

/// What window managers do differently: which window is in front, which one has the keyboard, what a person
/// may do with it.
class OnTheDesktop : public Dialogs {
 protected:
  /// A window of another program.
  void StartAnotherProgram() {
    m_other.setProcessEnvironment(desktop.Environment());
    m_other.start(QStringLiteral(QUARN_DRAG_SOURCE), {SettingsFile()});
    Focus(WaitForWindow(QStringLiteral("^Drag Source$")));
  }

  /// The window of the window manager in which this one stands, or itself.
  [[nodiscard]] QByteArray Outermost(const QString& window) const {
    static const QRegularExpression parent(QStringLiteral("Parent window id: (0x[0-9a-f]+)"));
    static const QRegularExpression root(QStringLiteral("Root window id: (0x[0-9a-f]+)"));
    QString outer = QStringLiteral("0x") + QString::number(window.toUInt(), 16);
    for (;;) {
      const QString tree = QString::fromLatin1(desktop.Run(
          QStringLiteral("xwininfo"), {QStringLiteral("-id"), outer, QStringLiteral("-children")}));
      const QString next = parent.match(tree).captured(1);
      if (next.isEmpty() || next == root.match(tree).captured(1)) return outer.toLatin1();
      outer = next;
    }
  }

  /// Whether the first window is in front of the second, as the server draws them: not every window manager
  /// keeps its list of them right.
  [[nodiscard]] bool IsInFront(const QString& first, const QString& second) const {
    const QString tree = QString::fromLatin1(
        desktop.Run(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-children")}));
    // From the top to the bottom.
    const auto place = [&tree](const QByteArray& window) {
      return tree.indexOf(QStringLiteral("  %1 ").arg(QLatin1String(window)));
    };
    const qsizetype placeOfFirst = place(Outermost(first));
    return placeOfFirst >= 0 && placeOfFirst < place(Outermost(second));
  }
  /// Clicks on a part of the window that nothing covers, then looks whether the box is still in front.
  void ExpectInFrontAfterClickOn(const QString& box, const QString& titlePattern) {
    const QString window = WaitForWindow(titlePattern);
    ClickAt(window, QPoint(5, Geometry(window).height() - 5));
    // The window manager handles one request after the other: the answer to this one comes after the click.
    EXPECT_TRUE(Eventually([&] { return IsInFront(box, window); })) << titlePattern.toStdString();
    EXPECT_TRUE(Holds([&] { return IsInFront(box, window); })) << titlePattern.toStdString();
  }
  /// Whether it is so for as long as a window manager takes to raise a window.
  static bool Holds(const std::function<bool()>& condition) {
    return !Eventually([&] { return !condition(); }, kOneTryMs);
  }

  /// A window that opens with another size gets the right one a tenth of a second later.
  void ExpectOneSize(const QString& window, WindowEvents& events) {
    const QRect opened = Geometry(window);
    EXPECT_TRUE(Holds([&] { return Geometry(window).size() == opened.size(); }));
    QStringList sizes = events.SizesOf(Outermost(window));
    // Some window managers make a frame of one pixel, or of the window's own size, and adapt it.
    sizes.removeAll(QStringLiteral("1x1"));
    const QString bare = QStringLiteral("%1x%2").arg(opened.width()).arg(opened.height());
    if (sizes.size() > 1 && sizes.constFirst() == bare) sizes.removeFirst();
    EXPECT_EQ(sizes.size(), 1) << sizes.join(QLatin1Char(' ')).toStdString();
  }

  ::testing::AssertionResult IsActiveAgain(const QString& window) {
    QByteArray active;
    if (Eventually([&] {
          active = desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).trimmed();
          return active == window.toLatin1();
        })) {
      return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "active is " << active.toStdString() << " (" << Title(QString::fromLatin1(active)).toStdString()
           << "), not " << window.toStdString();
  }

  /// Starts, and returns after how long both windows are there.
  qint64 StartUntilBothWindows() {
    QElapsedTimer clock;
    clock.start();
    StartProgram();
    EXPECT_FALSE(WaitForWindow(kMain).isEmpty());
    EXPECT_FALSE(WaitForWindow(kTerminal).isEmpty());
    return clock.elapsed();
  }

  /// Makes two monitors side by side of the screen: the left one is the primary one, the right one has room
  /// for the widest dialog.
  void SplitScreen() const {
    const auto add = [&](const char* name, int x, int width, const char* output) {
      desktop.Run(QStringLiteral("xrandr"),
                  {QStringLiteral("--setmonitor"), QLatin1String(name),
                   QStringLiteral("%1/200x1024/280+%2+0").arg(width).arg(x), QLatin1String(output)});
    };
    add("*left", 0, kRightFrom, "screen");
    add("right", kRightFrom, kWidth - kRightFrom, "none");
    const QByteArray monitors =
        desktop.Run(QStringLiteral("xrandr"), {QStringLiteral("--listactivemonitors")});
    ASSERT_TRUE(monitors.startsWith("Monitors: 2")) << monitors.toStdString();
  }
  static constexpr int kWidth = 1280;
  static constexpr int kRightFrom = 500;

  const QString kTools = QStringLiteral("Tools");
  const QString kTable = QStringLiteral("^Quarn - Function Key Table$");
  const QString kSettings = QStringLiteral("^Quarn - COM Port Settings");

 private:
  ChildProcess m_other;
};

TEST_F(OnTheDesktop, ABoxIsInFrontOfEveryWindowWhicheverWasActive) {
  StartConnected("* -> line \"OK\"");
  OpenDialog(kPortMenu, QStringLiteral("COM Port Settings"), kSettings);
  OpenDialog(kTools, QStringLiteral("Function Key Table"), kTable);
  MoveAside(kTable, {20, 500});
  StartAnotherProgram();
  UnplugPort();
  const QString box = WaitForWindow(kError);
  for (const QString& each : {kTerminal, kTable, kSettings, kMain}) ExpectInFrontAfterClickOn(box, each);
  Acknowledge(kError, kNotAvailable);
}

TEST_F(OnTheDesktop, AFileDialogIsInFrontOfEveryWindow) {
  StartConnected("* -> line \"OK\"");
  const QString title = QStringLiteral("^Save As Quarn Configuration File$");
  Choose(kFile, QStringLiteral("Save As"));
  const QString dialog = WaitForWindow(title);
  // Over the Terminal Screen, and beside the corners that are clicked on.
  MoveAside(title, Geometry(terminal).topLeft() + QPoint(50, 200));
  for (const QString& each : {kTerminal, kMain, kTerminal}) ExpectInFrontAfterClickOn(dialog, each);
  EXPECT_TRUE(IsActiveAgain(dialog));
  AnswerBox(title, QStringLiteral("Escape"));
  EXPECT_TRUE(WaitForNoWindow(title));
}

TEST_F(OnTheDesktop, AfterABoxTheTerminalScreenHasTheKeyboardAgain) {
  StartConnected("* -> line \"OK\"", {{QStringLiteral("AUTO_CLR"), QStringLiteral("ON")}});
  std::string sent;
  for (const QString& answer : {kCancel, kOk}) {
    for (int times = 0; times < 5; ++times) {
      // Where the keyboard has not come back, this goes astray.
      Type(QStringLiteral("id"));
      Press({QStringLiteral("Return")});
      ASSERT_TRUE(WireBecomes(sent += "id\r")) << answer.toStdString() << ' ' << times;
      ChooseFromContextMenu(3);
      ASSERT_FALSE(WaitForWindow(kConfirmation).isEmpty());
      AnswerBox(kConfirmation, answer);
      ASSERT_TRUE(WaitForNoWindow(kConfirmation));
      ASSERT_TRUE(IsActiveAgain(terminal)) << answer.toStdString() << ' ' << times;
    }
  }
}

TEST_F(OnTheDesktop, AfterABoxTheMainWindowHasTheKeyboardAgain) {
  StartConnected("* -> line \"OK\"");
  const QString main = WaitForWindow(kMain);
  for (int times = 0; times < 5; ++times) {
    Focus(main);
    Choose(kPortMenu, QStringLiteral("Disconnect COM Port"));
    ASSERT_FALSE(WaitForWindow(kConfirmation).isEmpty());
    AnswerBox(kConfirmation, kNo);
    ASSERT_TRUE(WaitForNoWindow(kConfirmation));
    ASSERT_TRUE(IsActiveAgain(main)) << times;
  }
}

TEST_F(OnTheDesktop, AnOpenDialogThatIsChosenAgainComesToTheFront) {
  StartConnected("* -> line \"OK\"");
  const QString item = QStringLiteral("COM Port Settings");
  OpenDialog(kPortMenu, item, kSettings);
  MoveAside(kSettings, {600, 300});
  OpenDialog(kTools, QStringLiteral("Function Key Table"), kTable);
  MoveAside(kTable, {620, 320});
  const QString settings = WaitForWindow(kSettings);
  const QString table = WaitForWindow(kTable);
  ASSERT_TRUE(Eventually([&] { return IsInFront(table, settings); }));
  Choose(kPortMenu, item);
  EXPECT_TRUE(Eventually([&] { return IsInFront(settings, table) && IsInFront(settings, terminal); }));
  EXPECT_TRUE(IsActiveAgain(settings));
  EXPECT_EQ(desktop.Windows(kSettings).size(), 1);
}

TEST_F(OnTheDesktop, TheTerminalScreenKeepsTheSizeWithWhichItOpens) {
  StartWithoutTerminal("* -> line \"OK\"");
  // The main window's frame is the usual one from now on.
  ASSERT_TRUE(Eventually([&] { return desktop.Frame(WaitForWindow(kMain)).has_value(); }));
  WindowEvents events(desktop);
  ASSERT_TRUE(events.AreTold(desktop));
  for (int times = 0; times < 2; ++times) {
    Choose(kTools, QStringLiteral("Terminal Screen"));
    terminal = WaitForWindow(kTerminal);
    ASSERT_FALSE(terminal.isEmpty());
    ExpectOneSize(terminal, events);
    // Not with Alt+F4: in some desktops another program than the window manager has that key.
    desktop.Run(QStringLiteral("wmctrl"), {QStringLiteral("-i"), QStringLiteral("-c"),
                                           QStringLiteral("0x") + QString::number(terminal.toUInt(), 16)});
    ASSERT_TRUE(WaitForNoWindow(kTerminal));
  }
}

TEST_F(OnTheDesktop, TheDetailedListKeepsTheSizeWithWhichItOpens) {
  StartWithoutTerminal("* -> line \"OK\"");
  ASSERT_TRUE(Eventually([&] { return desktop.Frame(WaitForWindow(kMain)).has_value(); }));
  WindowEvents events(desktop);
  ASSERT_TRUE(events.AreTold(desktop));
  const QString title = QStringLiteral("^Quarn - Detailed COM Port List");
  OpenDialog(kPortMenu, QStringLiteral("Detailed COM Port List"), title);
  const QString list = WaitForWindow(title);
  ASSERT_FALSE(list.isEmpty());
  ExpectOneSize(list, events);
}

TEST_F(OnTheDesktop, TheMainWindowMayBeMinimised) {
  StartConnected("* -> line \"OK\"");
  const QString main = WaitForWindow(kMain);
  EXPECT_TRUE(
      desktop
          .Run(QStringLiteral("xprop"), {QStringLiteral("-id"), main, QStringLiteral("_NET_WM_WINDOW_TYPE")})
          .contains("_NET_WM_WINDOW_TYPE_NORMAL"));
  Focus(main);
  desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("windowminimize"), main});
  EXPECT_TRUE(Eventually([&] {
    return desktop.Run(QStringLiteral("xprop"), {QStringLiteral("-id"), main, QStringLiteral("WM_STATE")})
        .contains("Iconic");
  }));
}

TEST_F(OnTheDesktop, OnTwoMonitorsDialogsOpenWhereTheMainWindowIs) {
  SplitScreen();
  StartConnected("* -> line \"OK\"");
  MoveAside(kMain, {kRightFrom + 60, 260});
  for (const auto& [menu, item, title] :
       {std::tuple{kPortMenu, "COM Port Number", QStringLiteral("^Quarn - COM Port Number")},
        std::tuple{kPortMenu, "Detailed COM Port List", QStringLiteral("^Quarn - Detailed COM Port List")},
        std::tuple{QStringLiteral("Option"), "Main Dialog Option (M)",
                   QStringLiteral("^Quarn - Main Dialog Optiom")},
        std::tuple{kTools, "Function Key Table", kTable}}) {
    OpenDialog(menu, QString::fromLatin1(item), title);
    const QString window = WaitForWindow(title);
    ASSERT_FALSE(window.isEmpty()) << item;
    EXPECT_TRUE(Eventually([&] {
      const std::optional<QRect> outer = desktop.Outer(window);
      return outer && outer->left() >= kRightFrom && outer->right() < kWidth;
    })) << item
        << " stands at " << Geometry(window).left();
    if (title != kTable) AnswerBox(title, QStringLiteral("Escape"));
  }
}

TEST_F(OnTheDesktop, ASessionThatDoesNotAnswerDoesNotKeepItFromStarting) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  PlugIn("* -> line \"OK\"");
  const qint64 usualMs = StartUntilBothWindows();
  End(program);
  const SilentSocket silentBus(runtime.filePath(QStringLiteral("silent-bus")));
  const SilentSocket compositor(runtime.filePath(QStringLiteral("silent-wayland")));
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                     QStringLiteral("unix:path=") + runtime.filePath(QStringLiteral("silent-bus")));
  environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("silent-wayland"));
  environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
  environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
  program.setProcessEnvironment(environment);
  // On a busy computer; Quarn itself waits for a third of a second.
  constexpr int kDelayMs = 5000;
  EXPECT_LT(StartUntilBothWindows(), usualMs + kDelayMs);
}

}  // namespace
}  // namespace quarn::test
