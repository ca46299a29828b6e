#include "system/e2e/dialogs.h"

#include <algorithm>

namespace quarn::test {
namespace {

/// After this time without an effect, a key or click counts as lost.
/// Larger than any frame of the window manager.
constexpr int kFrame = 60;

}  // namespace

void Dialogs::OpenDialog(const QString& menu, const QString& item, const QString& titlePattern) {
  Choose(menu, item);
  ASSERT_FALSE(WaitForWindow(titlePattern).isEmpty());
  ASSERT_TRUE(Eventually([&] { return FindControl(titlePattern, kOk).has_value(); }));
}

void Dialogs::MoveAside(const QString& titlePattern, QPoint place) {
  const QString dialog = WaitForWindow(titlePattern);
  EXPECT_TRUE(Eventually([&] {
    desktop.Run(QStringLiteral("xdotool"), {QStringLiteral("windowmove"), dialog, QString::number(place.x()),
                                            QString::number(place.y())});
    return Eventually(
        [&] {
          const std::optional<Control> window = FindWindow(titlePattern);
          return window && (window->place.topLeft() - place).manhattanLength() < kFrame;
        },
        kOneTryMs);
  }));
}

void Dialogs::ClickUntil(const QString& titlePattern, const QString& name,
                         const std::function<bool()>& effect) {
  ASSERT_TRUE(Eventually([&] { return IsEnabled(titlePattern, name); }))
      << "there is no " << name.toStdString() << " to click on";
  Focus(WaitForWindow(titlePattern));
  EXPECT_TRUE(Eventually([&] {
    if (const std::optional<Control> control = FindControl(titlePattern, name))
      ClickOnScreen(control->place.center());
    return Eventually(effect, kOneTryMs);
  })) << name.toStdString()
      << " has no effect";
}

std::optional<Control> Dialogs::FindList(const QString& titlePattern, qsizetype list) {
  QList<Control> lists = Controls(titlePattern);
  lists.removeIf([](const Control& each) { return each.role != QLatin1String("combo box"); });
  std::sort(lists.begin(), lists.end(),
            [](const Control& a, const Control& b) { return a.place.top() < b.place.top(); });
  if (list >= lists.size()) return {};
  return lists[list];
}

void Dialogs::Pick(const QString& titlePattern, qsizetype list, const QString& item) {
  std::optional<Control> found;
  ASSERT_TRUE(Eventually([&] {
    found = FindList(titlePattern, list);
    return found && found->enabled;
  }));
  Focus(WaitForWindow(titlePattern));
  EXPECT_TRUE(Eventually([&] {
    // Counted again for each try, because a message may have closed by itself meanwhile.
    const qsizetype before = CountWindows();
    if (found) ClickOnScreen(found->place.center());
    if (!Eventually([&] { return CountWindows() > before; }, kOneTryMs)) return false;
    Type(item);
    Press({QStringLiteral("Return")});
    return Eventually(
        [&] {
          found = FindList(titlePattern, list);
          return CountWindows() == before && found && found->name == item;
        },
        kOneTryMs);
  })) << item.toStdString()
      << " cannot be picked";
}

qsizetype Dialogs::CountWindows() {
  return desktop
      .Run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                       QStringLiteral("--class"), QStringLiteral("^quarn$")})
      .count('\n');
}

void Dialogs::PressOk(const QString& titlePattern) {
  const QString dialog = WaitForWindow(titlePattern);
  ClickButton(titlePattern, kOk, [&] { return !desktop.Windows(titlePattern).contains(dialog); });
}

void Dialogs::ClickCloseBox(const QString& titlePattern) {
  const QString dialog = WaitForWindow(titlePattern);
  const std::optional<Control> window = FindWindow(titlePattern);
  ASSERT_TRUE(window);
  Focus(dialog);
  constexpr QPoint kCloseBox(-10, -10);  // the manager's, from the contents' corner
  EXPECT_TRUE(Eventually([&] {
    ClickOnScreen(window->place.topRight() + kCloseBox);
    return Eventually([&] { return !desktop.Windows(titlePattern).contains(dialog); }, kOneTryMs);
  })) << "the close box does not close";
}

bool Dialogs::IsChecked(const QString& titlePattern, const QString& name) {
  const std::optional<Control> control = FindControl(titlePattern, name);
  return control && control->checked;
}

bool Dialogs::IsEnabled(const QString& titlePattern, const QString& name) {
  const std::optional<Control> control = FindControl(titlePattern, name);
  return control && control->enabled;
}

QByteArray Dialogs::NotedWith(const QList<QPair<QByteArray, QByteArray>>& values) const {
  QByteArray changed = m_noted;
  for (const auto& [key, value] : values) {
    const QByteArray start = "\r\n" + key + '=';
    EXPECT_EQ(changed.count(start), 1) << key.toStdString();
    const qsizetype from = changed.indexOf(start) + start.size();
    changed.replace(from, changed.indexOf("\r\n", from) - from, value);
  }
  return changed;
}

bool Dialogs::FileHas(const QByteArray& key, const QByteArray& value) const {
  return BytesOf(SettingsFile()) == NotedWith({{key, value}});
}

::testing::AssertionResult Dialogs::FileBecomes(const QByteArray& key, const QByteArray& value) {
  return FileBecomes({{key, value}});
}

::testing::AssertionResult Dialogs::FileBecomes(const QList<QPair<QByteArray, QByteArray>>& values) {
  const QByteArray expected = NotedWith(values);
  if (!Eventually([&] { return BytesOf(SettingsFile()) == expected; }))
    return ::testing::AssertionFailure() << BytesOf(SettingsFile()).toStdString() << "\ninstead of\n"
                                         << expected.toStdString();
  m_noted = expected;
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult Dialogs::FileIsUnchanged() const {
  if (BytesOf(SettingsFile()) == m_noted) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the file has changed:\n" << BytesOf(SettingsFile()).toStdString();
}

::testing::AssertionResult Dialogs::TitleBecomes(const QString& titlePattern, const QString& title) {
  QString found;
  if (Eventually([&] {
        found = Title(desktop.Windows(titlePattern).value(0));
        return found == title;
      }))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the title is \"" << found.toStdString() << '"';
}

::testing::AssertionResult Dialogs::OuterSizeBecomes(const QString& window, QSize size) {
  QSize found;
  if (Eventually([&] {
        const std::optional<QRect> outer = desktop.Outer(window);
        found = outer ? outer->size() : QSize();
        return found == size;
      }))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the size is " << found.width() << 'x' << found.height();
}

}  // namespace quarn::test
