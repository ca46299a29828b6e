#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QFont>
#include <QLabel>
#include <QTest>

#include "support/readable_text.h"
#include "support/waits.h"
#include "ui/controls.h"

namespace quarn::test {

/// The child of this kind with this control number.
template <typename Widget>
Widget* Control(const QWidget& dialog, int controlId) {
  for (Widget* each : dialog.findChildren<Widget*>()) {
    if (each->property(kControlIdProperty) == controlId) return each;
  }
  ADD_FAILURE() << "no control " << controlId;
  return nullptr;
}

inline void ShowActive(QWidget& dialog) {
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog, kLongestWaitMs));
}

/// A key for the control that has the focus.
inline void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  ASSERT_NE(QApplication::focusWidget(), nullptr);
  QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}

/// Every visible label has the room that it asks for, inside the window.
inline void ExpectNothingClipped(const QWidget& dialog) {
  for (const QLabel* label : dialog.findChildren<QLabel*>()) {
    if (!label->isVisible()) continue;
    const std::string text = label->text().left(40).toStdString();
    EXPECT_GE(label->width(), label->sizeHint().width()) << text;
    EXPECT_GE(label->height(), label->sizeHint().height()) << text;
    const QRect place(label->mapTo(&dialog, QPoint(0, 0)), label->size());
    EXPECT_TRUE(dialog.rect().contains(place)) << text;
  }
}

/// The title bar has room for this title between the window's icon and its close box, each about as wide
/// as the font is high.
inline ::testing::AssertionResult TitleFits(const QWidget& dialog, const QString& title) {
  const QFontMetrics metrics = dialog.fontMetrics();
  const int needed = metrics.horizontalAdvance(title.trimmed()) + 3 * metrics.height();
  if (needed <= dialog.width()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << title.toStdString() << " needs " << needed << " of " << dialog.width();
}

/// Enlarges the program's font while it exists.
class FontScale {
 public:
  explicit FontScale(int percent) : m_before(QApplication::font()) {
    QFont larger = m_before;
    larger.setPointSizeF(m_before.pointSizeF() * percent / 100.0);
    QApplication::setFont(larger);
  }
  ~FontScale() { QApplication::setFont(m_before); }
  FontScale(const FontScale&) = delete;
  FontScale& operator=(const FontScale&) = delete;

 private:
  QFont m_before;
};

}  // namespace quarn::test
