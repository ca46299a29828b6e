#pragma once

#include <QLabel>
#include <QString>
#include <QTextLayout>

namespace quarn {

/// Plain text that is never cut off: it wraps at the given width, between words if possible, otherwise inside
/// one (a path may have no blank). Line breaks and tabs in the text are respected. text() returns the text as
/// it was set, also for a screen reader.
class MessageText : public QLabel {
 public:
  MessageText(const QString& text, QWidget* parent);

  /// The width of its longest line without wrapping, in pixels.
  [[nodiscard]] int NaturalWidth() const { return m_naturalWidth; }
  /// Wraps at `width` pixels.
  void WrapAt(int width);

  [[nodiscard]] QSize sizeHint() const override { return m_size; }
  [[nodiscard]] QSize minimumSizeHint() const override { return m_size; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QTextLayout m_layout;
  int m_naturalWidth = 0;
  QSize m_size;
};

}  // namespace quarn
