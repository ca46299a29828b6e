#include "app/dialog_placement.h"

#include <algorithm>

namespace quarn {
namespace {

constexpr int kGap = 10;

}  // namespace

QPoint PlaceBelowOrAbove(const QRect& mainDialog, QSize dialog, QSize screen) {
  constexpr int kLift = 80;
  const int bottom = mainDialog.y() + mainDialog.height();
  int y = bottom + kGap;
  if (dialog.height() + y > screen.height()) {
    y = mainDialog.y() - kLift + (screen.height() - bottom - dialog.height());
  }
  return {mainDialog.x(), y};
}

QPoint PlaceBeside(const QRect& mainDialog, QSize dialog, QSize screen) {
  constexpr int kGapToTheLeft = 30;
  int x = mainDialog.x() + mainDialog.width() + kGap;
  if (dialog.width() + x > screen.width()) {
    x = screen.width() - dialog.width() - mainDialog.width() - kGapToTheLeft;
  }
  return {x, mainDialog.y()};
}

QPoint PlaceBelowOnScreen(const QRect& mainDialog, QSize dialog, QSize screen) {
  const QPoint wanted{mainDialog.x(), mainDialog.y() + mainDialog.height() + kGap};
  const QSize room = (screen - dialog).expandedTo({0, 0});
  return {std::clamp(wanted.x(), 0, room.width()), std::clamp(wanted.y(), 0, room.height())};
}

}  // namespace quarn
