#pragma once

#include <memory>
#include <optional>

#include "app/main_dialog.h"
#include "app/start_requests.h"
#include "app/start_up.h"

namespace quarn {

/// Start-up on the real screen.
class WindowStage final : public StartUpStage {
 public:
  WindowStage(Program& program, QStringList arguments);

  InstanceLock TakeLock(QString& reason) override;
  void AskRunningProgram() override;
  void ShowSplash() override;
  MainWindow& Window() override { return *m_dialog; }
  PortMonitor& Monitor() override { return m_dialog->Monitor(); }
  int Dpi() override;
  QString TellHowToStart(int scalingPercent) override;
  bool MenuBarWraps() override;
  int MessageFontHeight() override;
  void AcceptDrops() override;
  QString FileArgument() override;
  void PlaceMainDialog(int xPercent, int yPercent) override;
  void ShowMainDialog() override;
  bool MayPlaceWindows() override;

  /// From now on no later start reaches this program.
  void EndRequests() { m_requests.reset(); }

 private:
  void PrepareUnderSplash();
  void TakeRequest(const QString& file);

  Program& m_program;
  const QStringList m_arguments;
  std::unique_ptr<CQuarnDlg> m_dialog;  ///< from the splash on
  bool m_isSplashUp = false;
  bool m_isDialogShown = false;
  /// The file of the last request that named one; empty if none did. nullopt: nothing waits for the dialog.
  std::optional<QString> m_waitingFile;
  std::optional<StartRequests> m_requests;  ///< from the lock on
};

}  // namespace quarn
