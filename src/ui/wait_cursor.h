#pragma once

#include <QCursor>
#include <QGuiApplication>

#include "base/wait_indicator.h"

namespace quarn {

/// The hourglass cursor over every window of the program.
class WaitCursor final : public WaitIndicator {
 public:
  void Show() override { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
  void Restore() override { QGuiApplication::restoreOverrideCursor(); }
};

}  // namespace quarn
