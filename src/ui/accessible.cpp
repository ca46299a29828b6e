#include "ui/accessible.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <algorithm>

#include "ui/static_text.h"

namespace quarn {

AccessibleChoice::AccessibleChoice(QAbstractButton* button)
    : QAccessibleWidget(button, button->autoExclusive() ? QAccessible::RadioButton : QAccessible::CheckBox) {}

QAbstractButton* AccessibleChoice::Button() const { return qobject_cast<QAbstractButton*>(object()); }

QString AccessibleChoice::text(QAccessible::Text kind) const {
  QString given = QAccessibleWidget::text(kind);
  const QAbstractButton* button = Button();
  if (kind != QAccessible::Name || !given.isEmpty() || button == nullptr) return given;
  return button->text().remove(u'&');
}

QAccessible::State AccessibleChoice::state() const {
  QAccessible::State state = QAccessibleWidget::state();
  const QAbstractButton* button = Button();
  state.checkable = true;
  state.checked = button != nullptr && button->isChecked();
  return state;
}

QStringList AccessibleChoice::actionNames() const {
  QStringList names = QAccessibleWidget::actionNames();
  const QAbstractButton* button = Button();
  if (button != nullptr && button->isEnabled()) names.prepend(toggleAction());
  return names;
}

void AccessibleChoice::doAction(const QString& actionName) {
  QAbstractButton* button = Button();
  if (button == nullptr || actionName != toggleAction()) {
    QAccessibleWidget::doAction(actionName);
  } else if (button->isEnabled()) {
    // Not at once: while input is held, no timer runs, and the click waits as one of the mouse does.
    button->animateClick();
  }
}

AccessibleLine::AccessibleLine(StaticText* line) : QAccessibleWidget(line) {}

const StaticText* AccessibleLine::Line() const { return dynamic_cast<const StaticText*>(object()); }

QString AccessibleLine::FieldText() const {
  const StaticText* line = Line();
  return line != nullptr ? line->FieldText() : QString();
}

QAccessible::Role AccessibleLine::role() const {
  const StaticText* line = Line();
  return line != nullptr && line->IsField() ? QAccessible::EditableText : QAccessible::StaticText;
}

QString AccessibleLine::text(QAccessible::Text kind) const {
  return kind == QAccessible::Value && role() == QAccessible::EditableText ? FieldText()
                                                                           : QAccessibleWidget::text(kind);
}

void* AccessibleLine::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TextInterface && role() == QAccessible::EditableText) {
    return static_cast<QAccessibleTextInterface*>(this);
  }
  return QAccessibleWidget::interface_cast(type);
}

void AccessibleLine::selection(int /*index*/, int* start, int* end) const { *start = *end = 0; }

int AccessibleLine::cursorPosition() const {
  const StaticText* line = Line();
  return line != nullptr ? line->Caret() : 0;
}

QString AccessibleLine::text(int start, int end) const { return FieldText().mid(start, end - start); }

int AccessibleLine::characterCount() const { return static_cast<int>(FieldText().size()); }

QRect AccessibleLine::characterRect(int offset) const {
  const StaticText* line = Line();
  if (line == nullptr) return {};
  const QFontMetrics metrics = line->fontMetrics();
  const int left = metrics.horizontalAdvance(FieldText(), offset);
  const int right = metrics.horizontalAdvance(FieldText(), offset + 1);
  return {line->mapToGlobal(QPoint(left, 0)), QSize(right - left, metrics.height())};
}

int AccessibleLine::offsetAtPoint(const QPoint& point) const {
  for (int offset = 0; offset < characterCount(); ++offset) {
    if (characterRect(offset).contains(point)) return offset;
  }
  return -1;
}

QString AccessibleLine::attributes(int /*offset*/, int* start, int* end) const {
  *start = 0;
  *end = characterCount();
  return {};
}

}  // namespace quarn
