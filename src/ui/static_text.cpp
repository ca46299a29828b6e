#include "ui/static_text.h"

#include <QAccessible>
#include <QCache>
#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QStaticText>

#include "ui/accessible.h"

namespace quarn {
namespace {

/// The line with its letters already placed. Lines keep it when they scroll: then each shows what another one
/// showed before.
const QStaticText& PlacedLine(const QString& line) {
  constexpr int kLines = 100;  // three screens
  static QCache<QString, QStaticText> lines(kLines);
  // Before the fonts go.
  [[maybe_unused]] static const bool cleared = (qAddPostRoutine([] { lines.clear(); }), true);
  if (const QStaticText* const known = lines.object(line)) return *known;
  auto* const placed = new QStaticText(line);
  placed->setTextFormat(Qt::PlainText);
  lines.insert(line, placed);
  return *placed;
}

}  // namespace

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
  painter.drawStaticText(0, 0, PlacedLine(line.toString()));
}

}  // namespace quarn
