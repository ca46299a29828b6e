#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

#include "system/e2e/accessibility_bus.h"
#include "system/e2e/desktop.h"

namespace quarn::test {

/// An end-to-end test that reads what stands in the program's windows, and finds their controls by name.
/// Where several windows match a pattern, the one with the keyboard is meant.
///
/// The functions that read return what is there now, empty when there is no such window; wait with
/// `Eventually`. Those that act wait for what they act on.
class AccessibleWindows : public EndToEnd {
 protected:
  explicit AccessibleWindows(QSize screen = kUsualScreen);

  std::optional<Control> FindWindow(const QString& titlePattern);
  /// Everything visible in the window.
  QList<Control> Controls(const QString& titlePattern);
  /// What the labels and links show, in reading order: from top to bottom, then from left to right.
  QStringList Texts(const QString& titlePattern);
  /// What the buttons say, in reading order.
  QStringList Buttons(const QString& titlePattern);
  /// The visible control of this name or, where none is named so, with this description.
  std::optional<Control> FindControl(const QString& titlePattern, const QString& name);
  /// What stands in a control with this name: its contents if it holds text, else its name.
  QString TextOfControl(const QString& titlePattern, const QString& name);

  /// The menus of the main window; none has to be open. Separators are left out.
  QStringList Menus();
  QStringList MenuItems(const QString& menu);
  bool MenuItemEnabled(const QString& menu, const QString& item);
  bool MenuItemChecked(const QString& menu, const QString& item);
  /// Opens a menu of the main window and clicks on the item, all with the mouse.
  void ChooseFromMenu(const QString& menu, const QString& item);

  /// Clicks on a button with the mouse, once it is there and enabled. With `until`, clicks again as long
  /// as that does not hold: what comes right after a box has closed may be dropped, as it is when a person
  /// is too quick.
  void ClickButton(const QString& titlePattern, const QString& text, const std::function<bool()>& until = {});

  /// Waits for a box with these texts.
  ::testing::AssertionResult BoxSays(const QString& titlePattern, const QStringList& texts);
  /// Waits for a box, answers it with the button of this name or, if it has none, with this key, and waits
  /// until that box is gone.
  void AnswerBox(const QString& titlePattern, const QString& buttonOrKey);

  AccessibilityBus bus;

 private:
  struct Menu {
    Control title;
    Control popup;
    QList<Control> items;
  };
  QList<Menu> ReadMenus();
  std::optional<Menu> FindMenu(const QString& menu);
  std::optional<Control> FindItem(const QString& menu, const QString& item);
};

}  // namespace quarn::test
