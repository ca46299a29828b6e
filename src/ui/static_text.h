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

  /// What a screen reader is told: an edit field of this name, in which what SetFieldText says stands.
  /// Without it, a line of text; the text shown is its name.
  void BecomeField(const QString& name);
  /// Not the text shown, which blinks where the caret is.
  void SetFieldText(const QString& text, int caret);
  [[nodiscard]] bool IsField() const { return m_isField; }
  [[nodiscard]] const QString& FieldText() const { return m_fieldText; }
  [[nodiscard]] int Caret() const { return m_caret; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString m_text;
  QString m_fieldText;
  int m_caret = 0;
  bool m_isField = false;
  QColor m_background;  ///< invalid: what lies behind shows through
};

}  // namespace quarn
