#include "ui/static_text.h"

#include <QPaintEvent>
#include <QPainter>

namespace quarn {

StaticText::StaticText(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

void StaticText::SetText(const QString& text) {
  if (text == m_text) return;
  m_text = text;
  setAccessibleName(text);
  update();
}

void StaticText::SetBackground(const QColor& colour) {
  m_background = colour;
  setAttribute(Qt::WA_OpaquePaintEvent, colour.alpha() == 255);
  update();
}

void StaticText::paintEvent(QPaintEvent* event) {
  QStringView line(m_text);
  if (line.endsWith(u'\r')) line.chop(1);
  if (line.isEmpty() && !m_background.isValid()) return;
  QPainter painter(this);
  if (m_background.isValid()) painter.fillRect(event->rect(), m_background);
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(rect(), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, line.toString());
}

}  // namespace quarn
