#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

namespace quarn {

/// One line of text at the upper left of its rectangle, in the widget's font and window-text colour, on any
/// background. Cheaper than a label: setting the same text again costs nothing, and it takes no part in a
/// layout. A CR at the end is part of the text and not drawn.
class StaticText : public QWidget {
 public:
  explicit StaticText(QWidget* parent);
  [[nodiscard]] const QString& Text() const { return m_text; }
  void SetText(const QString& text);
  /// Makes it fill its rectangle, so that a text change need not repaint the background.
  void SetBackground(const QColor& colour);

  /// Makes it an edit field with this name for screen readers, with the text of SetFieldText. Otherwise it is
  /// a line of text, named by the text shown.
  void BecomeField(const QString& name);
  /// The text without the blinking caret, unlike the text shown.
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
  QColor m_background;  ///< invalid: transparent
};

}  // namespace quarn
