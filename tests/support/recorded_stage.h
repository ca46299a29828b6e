#pragma once

#include <QStringList>

#include "app/start_up.h"

namespace quarn::test {

/// Records the steps of a start, and answers them as the test sets it.
class RecordedStage final : public StartUpStage {
 public:
  RecordedStage(QStringList& journal, MainWindow& window, PortMonitor& monitor)
      : m_journal(journal), m_window(window), m_monitor(monitor) {}
  InstanceLock lock = InstanceLock::Taken;
  int dpi = 96;
  bool wraps = false;
  int fontHeight = 12;
  QString file;
  QString untoldHow;  ///< what nobody could read on standard error
  bool mayPlaceWindows = true;

  InstanceLock TakeLock(QString& reason) override {
    if (lock == InstanceLock::Failed) reason = QStringLiteral("/lock: no room");
    return Note("lock", lock);
  }
  void AskRunningProgram() override { m_journal.append(QStringLiteral("ask")); }
  void ShowSplash() override { m_journal.append(QStringLiteral("splash")); }
  MainWindow& Window() override { return m_window; }
  PortMonitor& Monitor() override { return m_monitor; }
  int Dpi() override { return Note("dpi", dpi); }
  QString TellHowToStart(int percent) override {
    m_journal.append(QStringLiteral("how %1").arg(percent));
    return untoldHow;
  }
  bool MenuBarWraps() override { return Note("menu bar", wraps); }
  int MessageFontHeight() override { return fontHeight; }
  void AcceptDrops() override { m_journal.append(QStringLiteral("drops")); }
  QString FileArgument() override { return Note("command line", file); }
  void PlaceMainDialog(int x, int y) override {
    m_journal.append(QStringLiteral("place %1 %2").arg(x).arg(y));
  }
  void ShowMainDialog() override { m_journal.append(QStringLiteral("show")); }
  bool MayPlaceWindows() override { return mayPlaceWindows; }

 private:
  template <typename Value>
  Value Note(const char* what, Value value) {
    m_journal.append(QString::fromLatin1(what));
    return value;
  }
  QStringList& m_journal;
  MainWindow& m_window;
  PortMonitor& m_monitor;
};

}  // namespace quarn::test
