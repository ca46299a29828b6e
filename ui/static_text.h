#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

namespace quarn {

/// One line of text at the upper left of its rectangle, in the widget's font and window-text colour, on
/// whatever lies behind it. Cheaper than a label: setting the text it already has costs nothing, and it
/// takes no part in a layout. A CR at the end is part of the text and not drawn.
class StaticText : public QWidget {
 public:
  explicit StaticText(QWidget* parent);
  [[nodiscard]] const QString& Text() const { return m_text; }
  void SetText(const QString& text);
  /// Fills its rectangle itself, so that a change of the text need not repaint what lies behind.
  void SetBackground(const QColor& colour);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString m_text;
  QColor m_background;  ///< invalid: what lies behind shows through
};

}  // namespace quarn
