#include <algorithm>

#include "support/silent_socket_linux.h"
#include "system/e2e/dialogs.h"

namespace quarn::test {
namespace {

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

  /// The windows from the bottom to the top, as the window manager has stacked them; numbers as xdotool has
  /// them.
  [[nodiscard]] QStringList Stacking() const {
    const QByteArray line = desktop.Run(
        QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST_STACKING")});
    QStringList windows;
    for (const QByteArray& id : line.mid(line.indexOf('#') + 1).split(','))
      windows.append(QString::number(id.trimmed().toUInt(nullptr, 0)));
    return windows;
  }
  /// Whether the first window is in front of the second.
  [[nodiscard]] bool IsInFront(const QString& first, const QString& second) const {
    const QStringList stacking = Stacking();
    return stacking.contains(second) && stacking.indexOf(first) > stacking.indexOf(second);
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

TEST_F(OnTheDesktop, ASessionThatDoesNotAnswerDoesNotKeepItFromStarting) {
  const SilentSocket silentBus(runtime.filePath(QStringLiteral("silent-bus")));
  const SilentSocket compositor(runtime.filePath(QStringLiteral("silent-wayland")));
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                     QStringLiteral("unix:path=") + runtime.filePath(QStringLiteral("silent-bus")));
  environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("silent-wayland"));
  environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
  environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
  program.setProcessEnvironment(environment);
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  PlugIn("* -> line \"OK\"");
  StartProgram();
  EXPECT_FALSE(WaitForWindow(kMain).isEmpty());
  EXPECT_FALSE(WaitForWindow(kTerminal).isEmpty());
}

}  // namespace
}  // namespace quarn::test
