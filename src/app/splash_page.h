#pragma once

#include <QBasicTimer>

#include "ui/window_place.h"

namespace quarn {

/// The splash: shows the program's name for two seconds, then closes automatically with result 1. Modal and
/// on top; keys, clicks and close requests do not end it earlier.
class CSplashPage final : public PlacedDialog {
 public:
  static constexpr int kDisplayMs = 2000;
  static constexpr int kResult = 1;

  explicit CSplashPage(QWidget* owner = nullptr, int displayMs = kDisplayMs);

  /// Called for Escape and by the window manager; does nothing.
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
