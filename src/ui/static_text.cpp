#include "ui/static_text.h"

#include <QAccessible>
#include <QPaintEvent>
#include <QPainter>

#include "ui/accessible.h"

namespace quarn {

StaticText::StaticText(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  MakeAccessibleAs<StaticText, AccessibleLine>();
}

void StaticText::SetText(const QString& text) {
  if (text == m_text) return;
  m_text = text;
  if (!m_isField) setAccessibleName(text);
  update();
}

void StaticText::BecomeField(const QString& name) {
  m_isField = true;
  setAccessibleName(name);
}

void StaticText::SetFieldText(const QString& text, int caret) {
  if (text != m_fieldText) {
    QAccessibleTextUpdateEvent changed(this, 0, m_fieldText, text);
    m_fieldText = text;
    m_caret = caret;
    changed.setCursorPosition(caret);
    QAccessible::updateAccessibility(&changed);
  } else if (caret != m_caret) {
    m_caret = caret;
    QAccessibleTextCursorEvent moved(this, caret);
    QAccessible::updateAccessibility(&moved);
  }
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
