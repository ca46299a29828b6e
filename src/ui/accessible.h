#pragma once

#include <QAccessible>
#include <QAccessibleWidget>
#include <QStringList>

class QAbstractButton;

namespace quarn {

/// Makes this interface, created from a pointer to the widget, the one that assistive tools use for every
/// widget of this class. Repeated calls are cheap. User-interface thread only.
template <typename Widget, typename Interface>
void MakeAccessibleAs() {
  [[maybe_unused]] static const bool done = [] {
    QAccessible::installFactory([](const QString& /*className*/, QObject* object) -> QAccessibleInterface* {
      auto* widget = dynamic_cast<Widget*>(object);
      return widget != nullptr ? new Interface(widget) : nullptr;
    });
    return true;
  }();
}

/// The interface of a radio button or a check box for assistive tools. Their "toggle" is a click: the mark
/// alone would change nothing but the picture.
class AccessibleChoice final : public QAccessibleWidget {
 public:
  explicit AccessibleChoice(QAbstractButton* button);

  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  [[nodiscard]] QAccessible::State state() const override;
  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString& actionName) override;

 private:
  /// Null while the widget is being destroyed.
  [[nodiscard]] QAbstractButton* Button() const;
};

class StaticText;

/// The interface of a StaticText for assistive tools: a line of text, or a field with text and caret. Only
/// keys change the text.
class AccessibleLine final : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  explicit AccessibleLine(StaticText* line);

  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  void* interface_cast(QAccessible::InterfaceType type) override;
  [[nodiscard]] QAccessible::Role role() const override;

  // QAccessibleTextInterface; offsets count characters from the start of the text.
  void selection(int index, int* start, int* end) const override;
  [[nodiscard]] int selectionCount() const override { return 0; }
  void addSelection(int /*start*/, int /*end*/) override {}
  void removeSelection(int /*index*/) override {}
  void setSelection(int /*index*/, int /*start*/, int /*end*/) override {}
  [[nodiscard]] int cursorPosition() const override;
  void setCursorPosition(int /*position*/) override {}
  [[nodiscard]] QString text(int start, int end) const override;
  [[nodiscard]] int characterCount() const override;
  [[nodiscard]] QRect characterRect(int offset) const override;
  [[nodiscard]] int offsetAtPoint(const QPoint& point) const override;
  void scrollToSubstring(int /*start*/, int /*end*/) override {}
  QString attributes(int offset, int* start, int* end) const override;

 private:
  /// Null while the widget is being destroyed.
  [[nodiscard]] const StaticText* Line() const;
  [[nodiscard]] QString FieldText() const;
};

}  // namespace quarn
