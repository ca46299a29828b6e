#include "ui/static_text.h"

#include <QPainter>

namespace quarn {

StaticText::StaticText(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

void StaticText::SetText(const QString& text) {
  if (text == m_text) return;
  m_text = text;
  setAccessibleName(text);
  update();
}

void StaticText::paintEvent(QPaintEvent* /*event*/) {
  QStringView line(m_text);
  if (line.endsWith(u'\r')) line.chop(1);
  if (line.isEmpty()) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(rect(), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, line.toString());
}

}  // namespace quarn
