#pragma once

#include <QLabel>
#include <functional>

namespace quarn {

/// A web address that looks like a link and acts like a button: a click, or Space or Enter when it has the
/// focus, calls `activate`.
class LinkLabel final : public QLabel {
 public:
  LinkLabel(const QString& text, std::function<void()> activate, QWidget* parent);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  std::function<void()> m_activate;
  bool m_pressed = false;
};

}  // namespace quarn
