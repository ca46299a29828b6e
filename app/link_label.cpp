#include "app/link_label.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QStylePainter>
#include <utility>

namespace quarn {
namespace {

constexpr QRgb kLinkColour = qRgb(0x00, 0x00, 0xFF);

}  // namespace

LinkLabel::LinkLabel(const QString& text, std::function<void()> activate, QWidget* parent)
    : QLabel(text, parent), m_activate(std::move(activate)) {
  setTextFormat(Qt::PlainText);
  QFont underlined = font();
  underlined.setUnderline(true);
  setFont(underlined);
  QPalette colours = palette();
  colours.setColor(QPalette::WindowText, QColor(kLinkColour));
  setPalette(colours);
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::TabFocus);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void LinkLabel::mousePressEvent(QMouseEvent* event) { m_pressed = event->button() == Qt::LeftButton; }

void LinkLabel::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !std::exchange(m_pressed, false)) return;
  // As with a button, whoever slides off before letting go has changed their mind.
  if (rect().contains(event->position().toPoint())) m_activate();
}

void LinkLabel::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  if (key != Qt::Key_Space && key != Qt::Key_Return && key != Qt::Key_Enter) {
    QLabel::keyPressEvent(event);
    return;
  }
  if (!event->isAutoRepeat()) m_activate();
}

void LinkLabel::focusInEvent(QFocusEvent* /*event*/) { update(); }

void LinkLabel::focusOutEvent(QFocusEvent* /*event*/) { update(); }

void LinkLabel::paintEvent(QPaintEvent* event) {
  QLabel::paintEvent(event);
  if (!hasFocus()) return;
  QStyleOptionFocusRect option;
  option.initFrom(this);
  option.backgroundColor = palette().color(backgroundRole());
  QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, option);
}

}  // namespace quarn
