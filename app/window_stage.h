#pragma once

#include "app/main_dialog.h"
#include "app/start_up.h"

namespace quarn {

/// Start-up on the real screen.
class WindowStage final : public StartUpStage {
 public:
  WindowStage(CQuarnDlg& dialog, PortSource& portSource, QStringList arguments);

  InstanceLock TakeLock() override;
  void ShowSplash() override;
  int Dpi() override;
  bool MenuBarWraps() override;
  int MessageFontHeight() override;
  void AcceptDrops() override;
  QString CommandLineFile() override;
  void PlaceMainDialog(int xPercent, int yPercent) override;
  void ShowMainDialog() override;

 private:
  CQuarnDlg& m_dialog;
  PortSource& m_portSource;
  const QStringList m_arguments;
};

}  // namespace quarn
