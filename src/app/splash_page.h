#pragma once

#include <QBasicTimer>

#include "ui/placed_dialog.h"

namespace quarn {

/// What is starting, for two seconds; then it goes by itself, with result 1. Modal and on top; neither keys
/// nor clicks nor a close request end it earlier.
class CSplashPage final : public PlacedDialog {
 public:
  static constexpr int kDisplayMs = 2000;
  static constexpr int kResult = 1;

  explicit CSplashPage(QWidget* owner = nullptr, int displayMs = kDisplayMs);

  /// Escape and the window manager come here; they do nothing.
  void reject() override {}

 protected:
  void showEvent(QShowEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  int m_displayMs;
  QBasicTimer m_timer;
};

}  // namespace quarn
