#include "ui/message_text.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTextOption>
#include <algorithm>
#include <cmath>

namespace quarn {
namespace {

constexpr int kTabCharacters = 8;

/// Converts every kind of line break to the one of a text layout.
QString WithLayoutBreaks(QString text) {
  text.replace(QStringLiteral("\r\n"), QString(QChar::LineSeparator));
  text.replace(QLatin1Char('\r'), QChar::LineSeparator);
  text.replace(QLatin1Char('\n'), QChar::LineSeparator);
  return text;
}

}  // namespace

MessageText::MessageText(const QString& text, QWidget* parent) : QLabel(text, parent) {
  // Some desktops use a special font for labels; it must be set before anything is measured.
  ensurePolished();
  // Names of files and devices are shown unchanged, even if they look like markup.
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  option.setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * kTabCharacters);
  m_layout.setFont(font());
  m_layout.setTextOption(option);
  m_layout.setText(WithLayoutBreaks(text));
  WrapAt(QWIDGETSIZE_MAX);
  m_naturalWidth = m_size.width();
}

void MessageText::WrapAt(int width) {
  double height = 0;
  double widest = 0;
  m_layout.beginLayout();
  for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
    line.setLineWidth(width);
    line.setPosition({0, height});
    height += line.height();
    widest = std::max(widest, line.naturalTextWidth());
  }
  m_layout.endLayout();
  m_size = {static_cast<int>(std::ceil(widest)), static_cast<int>(std::ceil(height))};
  updateGeometry();
}

void MessageText::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  m_layout.draw(&painter, {0, 0}, {}, event->rect());
}

}  // namespace quarn
