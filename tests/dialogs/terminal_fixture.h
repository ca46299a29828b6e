#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "dialogs/terminal/terminal_screen.h"
#include "settings/settings_table.h"
#include "support/recorded_messages.h"
#include "support/served_instrument.h"
#include "support/waits.h"
#include "ui/controls.h"
#include "ui/static_text.h"

namespace quarn::test {

/// A Terminal Screen on a real pseudo-terminal with an instrument behind it.
class TerminalFixture : public ::testing::Test {
 protected:
  TerminalFixture() {
    settings = DefaultSettings();
    settings.comPort = QStringLiteral("COM3");
    settings.comBps = QStringLiteral("115200");
    settings.comBuf = QStringLiteral("6K");
    // Else an instrument that a busy computer keeps from answering for half a second would count as silent.
    settings.rTimeout = QStringLiteral("OFF");
    state.currentPortName = settings.comPort;
  }
  ~TerminalFixture() override {
    delete window.data();
    QApplication::clipboard()->clear();
  }

  void Connect(std::string_view rules) {
    instrument = std::make_unique<ServedInstrument>(rules);
    OpenResult opened = OpenServedLine(*instrument);
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    SetServedTimeouts(*opened.line, {.readInterval = 12,
                                     .readTotalMultiplier = 10,
                                     .readTotalConstant = 50,
                                     .writeTotalMultiplier = 10,
                                     .writeTotalConstant = 50});
    connection.handle = PortHandle(opened.line);
    connection.connected.Update(PortChange::Opened);
  }

  CTerminalScreen& Open() {
    state.open.Add(Window::TerminalScreen);
    window = new CTerminalScreen(
        nullptr, {settings, connection, state, engine, log, commandLine, messages, savedRect});
    window->show();
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window, kLongestWaitMs));
    return *window;
  }

  QPushButton& Button(const char* caption) {
    auto* button = window->findChild<QPushButton*>(QLatin1String(caption));
    EXPECT_NE(button, nullptr) << caption;
    return *button;
  }
  void Click(const char* caption, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(&Button(caption), Qt::LeftButton, modifiers);
  }
  /// Presses a key; the control with the focus gets it.
  void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }
  void Type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), QLatin1String(text)); }
  QAction* MenuItem(const char* text) {
    for (QAction* each : window->ContextMenu().actions()) {
      if (each->text() == QLatin1String(text)) return each;
    }
    ADD_FAILURE() << "no menu item " << text;
    return nullptr;
  }
  QString DisplayedCommand() const {
    return window->findChild<StaticText*>(QStringLiteral("commandLine"))->Text();
  }
  void Tick() { QTest::qWait(PolledDialog::kTickMs + PolledDialog::kTickMs / 2); }
  /// Lets ticks run until the condition holds.
  template <typename Condition>
  static bool Until(Condition condition, int limitMs = kLongestWaitMs) {
    return QTest::qWaitFor(condition, limitMs);
  }
  QString Clipboard() const { return QApplication::clipboard()->text(); }

  SettingsRecord settings;
  PortConnection connection;
  SharedState state;
  OperationLog log;
  CommandLine commandLine;
  QRect savedRect;
  RecordedMessages messages;
  TransactionEngine engine{connection};
  std::unique_ptr<ServedInstrument> instrument;
  QPointer<CTerminalScreen> window;
};

}  // namespace quarn::test
