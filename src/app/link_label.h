#pragma once

#include <QLabel>
#include <functional>

namespace quarn {

/// A web address that looks like a link and acts like a button: a click, or Space or Enter when it has the
/// focus, calls `activate`. Blue; a lighter blue on a dark desktop.
class LinkLabel final : public QLabel {
 public:
  LinkLabel(const QString& text, std::function<void()> activate, QWidget* parent);
  void Activate() { m_activate(); }

 protected:
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void ApplyColour();

  std::function<void()> m_activate;
  bool m_pressed = false;
};

}  // namespace quarn
