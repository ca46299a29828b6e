#pragma once

#include <QStringList>
#include <functional>

#include "app/main_window.h"

namespace quarn::test {

/// Writes down what is asked of the main dialog.
class RecordedWindow final : public MainWindow {
 public:
  explicit RecordedWindow(QStringList& journal) : m_journal(journal) {}
  /// The user file that the window would show. If set, it is noted where it matters.
  std::function<QString()> userFile;

  void SetTitle(const QString& suffix) override { m_journal.append(QStringLiteral("title") + suffix); }
  void UpdateMenuState() override { Note("menu state"); }
  void ShowUserFile() override { Note("user file"); }
  void OpenTerminalScreen() override { m_journal.append(QStringLiteral("terminal")); }
  void StartTimer() override { m_journal.append(QStringLiteral("start timer")); }
  void StopTimer() override { m_journal.append(QStringLiteral("stop timer")); }

 private:
  void Note(const char* call) {
    m_journal.append(QLatin1String(call) + (userFile ? QLatin1Char(' ') + userFile() : QString()));
  }

  QStringList& m_journal;
};

}  // namespace quarn::test
