#include "ui/controls.h"

#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace quarn {

void DialogButton::paintEvent(QPaintEvent* event) {
  QPushButton::paintEvent(event);
  if (!hasFocus() || !isDefault()) return;
  constexpr int kFromEdge = 3;
  QStyleOptionFocusRect line;
  line.initFrom(this);
  line.rect = rect().adjusted(kFromEdge, kFromEdge, -kFromEdge, -kFromEdge);
  line.backgroundColor = palette().color(QPalette::Button);
  QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, line);
}

}  // namespace quarn
