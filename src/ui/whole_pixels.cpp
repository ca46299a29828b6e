#include "ui/whole_pixels.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>
#include <utility>

namespace quarn {
namespace {

bool IsWhole(qreal pixels) {
  constexpr qreal kRounding = 0.001;
  return std::abs(pixels - std::round(pixels)) < kRounding;
}

/// A widget with a border that a layout has placed. Others have the rectangle that was given to them.
bool IsPlacedControl(const QWidget& widget) {
  const bool isControl = qobject_cast<const QPushButton*>(&widget) != nullptr ||
                         qobject_cast<const QLineEdit*>(&widget) != nullptr ||
                         qobject_cast<const QComboBox*>(&widget) != nullptr;
  return isControl && !widget.isWindow() && widget.parentWidget()->layout() != nullptr;
}

/// Corrects the size that a layout gives a control, before the control is painted.
class WholeControls final : public QObject {
 public:
  using QObject::QObject;

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::Resize || !watched->isWidgetType()) return false;
    auto& widget = static_cast<QWidget&>(*watched);
    if (!IsPlacedControl(widget)) return false;
    const qreal ratio = widget.devicePixelRatioF();
    const QSize least = widget.minimumSize();
    widget.resize(WholePixels(widget.width(), ratio, least.width()),
                  WholePixels(widget.height(), ratio, least.height()));
    return false;
  }
};

}  // namespace

int WholePixels(int length, qreal ratio, int least) {
  constexpr int kLongestStep = 8;
  int step = 1;
  while (!IsWhole(step * ratio)) {
    if (++step > kLongestStep) return length;
  }
  const int over = length % step;
  const bool isNearer = 2 * over < step && length - over >= least;
  return over == 0 || isNearer ? length - over : length - over + step;
}

void KeepControlsWhole() {
  static bool isKept = false;
  if (std::exchange(isKept, true)) return;
  qApp->installEventFilter(new WholeControls(qApp));
}

}  // namespace quarn
