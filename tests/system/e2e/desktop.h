#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QMargins>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <optional>

#include "support/served_instrument.h"
#include "system/e2e/port_links.h"
#include "system/e2e/processes.h"

namespace quarn::test {

inline constexpr QSize kUsualScreen{1280, 1024};

/// A virtual X display with a window manager. Both end with the object. Instead of the window manager it can
/// have a Wayland compositor with an X server of its own, on which programs are then.
class Desktop {
 public:
  explicit Desktop(QSize screen);
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  [[nodiscard]] const QString& Display() const { return m_display; }
  /// Runs a tool on the display and returns what it prints; empty when it fails.
  QByteArray Run(const QString& tool, const QStringList& arguments) const;
  /// Moves and presses with xdotool what a person has at hand. Places are those of the screen.
  void Input(const QStringList& arguments) const;
  /// The ids of the visible windows whose titles match; empty when there is none.
  QStringList Windows(const QString& titlePattern) const;
  /// The frame of the window manager; nullopt until it is reported.
  [[nodiscard]] std::optional<QMargins> Frame(const QString& window) const;
  /// The place of the window with its frame; nullopt until it is known.
  [[nodiscard]] std::optional<QRect> Outer(const QString& window) const;
  /// The place of the window without its frame.
  [[nodiscard]] QRect Inner(const QString& window) const;
  [[nodiscard]] QProcessEnvironment Environment() const;
  [[nodiscard]] bool IsOnCompositor() const { return !m_told.isEmpty(); }

 private:
  bool StartServer(QSize screen);
  void StartManager();
  void StartCompositor(const QString& compositor, QSize screen);
  /// The value of a variable in the compositor's session.
  [[nodiscard]] QString Told(const QString& variable) const;
  /// The environment of the window manager, with its bus.
  QProcessEnvironment StartBus();

  ChildProcess m_server;
  ChildProcess m_bus;
  ChildProcess m_manager;
  QString m_display;
  QTemporaryDir m_session;
  QStringList m_told;  ///< the variables of the compositor's session
};

/// A desktop, an account of its own (home, settings and runtime folders), an instrument as COM3, and the
/// program.
class EndToEnd : public ::testing::Test {
 protected:
  explicit EndToEnd(QSize screen = kUsualScreen);
  ~EndToEnd() override;

  /// Writes the working settings file: the defaults with these values.
  void WriteSettings(const QList<QPair<QString, QString>>& values);
  [[nodiscard]] QString SettingsFile() const;
  /// Makes an instrument with these rules reachable as COM3.
  void PlugIn(std::string_view rules);
  /// Removes the instrument and its port; `PlugIn` brings them back. The link is removed first, because the
  /// system may give the number of a removed device to another one.
  void UnplugPort();
  void StartProgram(const QStringList& arguments = {});
  /// Runs the program once more, in the same account and on the same desktop.
  [[nodiscard]] std::unique_ptr<ProgramRun> StartAnother(const QStringList& arguments = {}) const;
  /// Starts with COM3 and waits for the Terminal Screen to have the keyboard.
  void StartConnected(std::string_view rules, const QList<QPair<QString, QString>>& values = {});

  QString WaitForWindow(const QString& titlePattern);
  bool WaitForNoWindow(const QString& titlePattern);
  QString Title(const QString& window);
  /// Waits until the Terminal Screen's title is this.
  ::testing::AssertionResult TerminalTitleBecomes(const QString& title);
  ::testing::AssertionResult WireBecomes(const std::string& bytes);

  void Type(const QString& text);
  void Press(const QStringList& keys);
  /// Opens the context menu with the mouse and chooses its item 1, 2, ... with the keyboard.
  void ChooseFromContextMenu(int item);
  /// "Copy Log - All " from the context menu, with mouse and keyboard.
  QByteArray CopiedLog();
  QByteArray ClipboardText();
  void SetClipboard(const QByteArray& text);
  /// Moves the pointer there and presses the button; 0 only moves.
  void ClickAt(const QString& window, QPoint place, int button = 1);
  void ClickOnScreen(QPoint place, int button = 1);
  QRect Geometry(const QString& window);
  void Focus(const QString& window);

  const QString kTerminal = QStringLiteral("^Quarn - Terminal Screeen");
  const QString kMain = QStringLiteral("^Quarn   \\(");
  const QString kPort = QStringLiteral("COM3");

  Desktop desktop;
  QTemporaryDir home;
  QTemporaryDir config;
  QTemporaryDir runtime;
  PortLinks portLinks;
  std::unique_ptr<ServedInstrument> instrument;
  ChildProcess program;
  QString terminal;
};

}  // namespace quarn::test
