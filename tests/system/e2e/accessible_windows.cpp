#include "system/e2e/accessible_windows.h"

#include <QRegularExpression>
#include <algorithm>
#include <tuple>

namespace quarn::test {
namespace {

/// After this long without an effect, a key or click is taken for lost.
bool IsLabel(const Control& control) {
  return control.role == QLatin1String("label") || control.role == QLatin1String("link") ||
         control.role == QLatin1String("filler");
}

bool IsButton(const Control& control) { return control.role == QLatin1String("push button"); }

QStringList NamesInReadingOrder(QList<Control> controls, bool (*wanted)(const Control&)) {
  std::stable_sort(controls.begin(), controls.end(), [](const Control& a, const Control& b) {
    return std::tuple(a.place.top(), a.place.left()) < std::tuple(b.place.top(), b.place.left());
  });
  QStringList names;
  for (const Control& each : std::as_const(controls))
    if (wanted(each) && !each.name.isEmpty()) names.push_back(each.name);
  return names;
}

QList<Control> ChildrenOf(const Control& parent, const QList<Control>& all) {
  QList<Control> children;
  std::copy_if(all.begin(), all.end(), std::back_inserter(children),
               [&](const Control& each) { return each.parentPath == parent.path; });
  return children;
}

}  // namespace

AccessibleWindows::AccessibleWindows(QSize screen) : EndToEnd(screen), bus(runtime.path()) {
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.Address());
  environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
  program.setProcessEnvironment(environment);
}

std::optional<Control> AccessibleWindows::FindWindow(const QString& titlePattern) {
  const QRegularExpression pattern(titlePattern);
  QList<Control> windows = bus.Windows();
  windows.removeIf(
      [&](const Control& each) { return !each.showing || !pattern.match(each.name).hasMatch(); });
  if (windows.isEmpty()) return {};
  const auto active =
      std::find_if(windows.begin(), windows.end(), [](const Control& each) { return each.active; });
  return active != windows.end() ? *active : windows.first();
}

QList<Control> AccessibleWindows::Controls(const QString& titlePattern) {
  const std::optional<Control> window = FindWindow(titlePattern);
  if (!window) return {};
  QList<Control> controls = bus.Inside(*window);
  controls.removeIf([](const Control& each) { return !each.showing; });
  return controls;
}

QStringList AccessibleWindows::Texts(const QString& titlePattern) {
  return NamesInReadingOrder(Controls(titlePattern), &IsLabel);
}

QStringList AccessibleWindows::Buttons(const QString& titlePattern) {
  return NamesInReadingOrder(Controls(titlePattern), &IsButton);
}

std::optional<Control> AccessibleWindows::FindControl(const QString& titlePattern, const QString& name) {
  const QList<Control> controls = Controls(titlePattern);
  for (QString Control::*what : {&Control::name, &Control::description})
    for (const Control& each : controls)
      if (each.*what == name) return each;
  return {};
}

QString AccessibleWindows::TextOfControl(const QString& titlePattern, const QString& name) {
  const std::optional<Control> control = FindControl(titlePattern, name);
  if (!control) return {};
  const QString text = bus.Text(*control);
  return text.isNull() ? control->name : text;
}

QList<AccessibleWindows::Menu> AccessibleWindows::ReadMenus() {
  const std::optional<Control> window = FindWindow(kMain);
  if (!window) return {};
  const QList<Control> all = bus.Inside(*window);
  const auto bar = std::find_if(all.begin(), all.end(),
                                [](const Control& each) { return each.role == QLatin1String("menu bar"); });
  if (bar == all.end()) return {};
  QList<Menu> menus;
  for (const Control& title : ChildrenOf(*bar, all)) {
    const QList<Control> popups = ChildrenOf(title, all);
    if (popups.isEmpty()) continue;
    QList<Control> items = ChildrenOf(popups.first(), all);
    items.removeIf([](const Control& each) { return each.role == QLatin1String("separator"); });
    menus.push_back({title, popups.first(), items});
  }
  return menus;
}

std::optional<AccessibleWindows::Menu> AccessibleWindows::FindMenu(const QString& menu) {
  for (const Menu& each : ReadMenus())
    if (each.title.name == menu) return each;
  return {};
}

std::optional<Control> AccessibleWindows::FindItem(const QString& menu, const QString& item) {
  const std::optional<Menu> found = FindMenu(menu);
  if (!found) return {};
  for (const Control& each : found->items)
    if (each.name == item) return each;
  return {};
}

QStringList AccessibleWindows::Menus() {
  QStringList names;
  for (const Menu& each : ReadMenus()) names.push_back(each.title.name);
  return names;
}

QStringList AccessibleWindows::MenuItems(const QString& menu) {
  QStringList names;
  if (const std::optional<Menu> found = FindMenu(menu))
    for (const Control& each : found->items) names.push_back(each.name);
  return names;
}

bool AccessibleWindows::MenuItemEnabled(const QString& menu, const QString& item) {
  const std::optional<Control> found = FindItem(menu, item);
  return found && found->enabled;
}

bool AccessibleWindows::MenuItemChecked(const QString& menu, const QString& item) {
  const std::optional<Control> found = FindItem(menu, item);
  return found && found->checked;
}

void AccessibleWindows::ChooseFromMenu(const QString& menu, const QString& item) {
  ASSERT_TRUE(Eventually([&] { return MenuItemEnabled(menu, item); }))
      << "there is no " << menu.toStdString() << " - " << item.toStdString() << " to choose";
  Focus(WaitForWindow(kMain));
  const auto isOpen = [&] {
    const std::optional<Menu> found = FindMenu(menu);
    return found && found->popup.showing;
  };
  ASSERT_TRUE(Eventually([&] {
    if (const std::optional<Menu> found = FindMenu(menu)) ClickOnScreen(found->title.place.center());
    return Eventually(isOpen, kOneTryMs);
  })) << "the menu "
      << menu.toStdString() << " does not open";
  const std::optional<Control> target = FindItem(menu, item);
  ASSERT_TRUE(target);
  ClickOnScreen(target->place.center());
  EXPECT_TRUE(Eventually([&] { return !isOpen(); })) << "the menu " << menu.toStdString() << " stays open";
}

void AccessibleWindows::ClickButton(const QString& titlePattern, const QString& text,
                                    const std::function<bool()>& until) {
  const auto find = [&]() -> std::optional<Control> {
    for (const Control& each : Controls(titlePattern))
      if (IsButton(each) && each.enabled && each.name == text) return each;
    return {};
  };
  ASSERT_TRUE(Eventually([&] { return find().has_value(); }))
      << "there is no button " << text.toStdString() << " to click on";
  Focus(WaitForWindow(titlePattern));
  const auto click = [&] {
    if (const std::optional<Control> button = find()) ClickOnScreen(button->place.center());
  };
  if (!until) {
    click();
    return;
  }
  EXPECT_TRUE(Eventually([&] {
    click();
    return Eventually(until, kOneTryMs);
  })) << "the button "
      << text.toStdString() << " has no effect";
}

::testing::AssertionResult AccessibleWindows::BoxSays(const QString& titlePattern, const QStringList& texts) {
  QStringList found;
  if (Eventually([&] {
        found = Texts(titlePattern);
        return found == texts;
      }))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "the texts are \"" << found.join(QStringLiteral("\" \"")).toStdString() << '"';
}

void AccessibleWindows::AnswerBox(const QString& titlePattern, const QString& buttonOrKey) {
  const QString box = WaitForWindow(titlePattern);
  ASSERT_FALSE(box.isEmpty());
  const auto isGone = [&] { return !desktop.Windows(titlePattern).contains(box); };
  ASSERT_TRUE(Eventually([&] { return !Controls(titlePattern).isEmpty(); }));
  if (Buttons(titlePattern).contains(buttonOrKey)) {
    ClickButton(titlePattern, buttonOrKey, isGone);
    return;
  }
  Focus(box);
  EXPECT_TRUE(Eventually([&] {
    Press({buttonOrKey});
    return Eventually(isGone, kOneTryMs);
  })) << "the box does not go";
}

}  // namespace quarn::test
