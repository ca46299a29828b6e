// Every window with the keyboard alone: which controls can be reached, and whether the focus is visible.

#include <QAbstractScrollArea>
#include <QButtonGroup>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QSet>
#include <algorithm>

#include "app/every_window.h"
#include "app/link_label.h"

namespace quarn::test {
namespace {

constexpr int kMostSteps = 60;

struct NotByTab {
  const char* control;
  const char* reason;
};

/// Controls that Tab skips.
constexpr std::array<NotByTab, 1> kNotByTab{{
    {"rows", "the list follows the row that has the focus"},
}};

bool IsControl(const QWidget& widget) {
  return qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
         qobject_cast<const QComboBox*>(&widget) != nullptr ||
         qobject_cast<const QLineEdit*>(&widget) != nullptr ||
         qobject_cast<const QAbstractScrollArea*>(&widget) != nullptr ||
         dynamic_cast<const LinkLabel*>(&widget) != nullptr;
}

/// The group of exclusive buttons, which is one stop of Tab. The widget alone if it is in no group.
QList<QWidget*> GroupOf(QWidget* widget) {
  const auto* radio = qobject_cast<QRadioButton*>(widget);
  if (radio == nullptr || radio->group() == nullptr) return {widget};
  QList<QWidget*> group;
  for (QAbstractButton* each : radio->group()->buttons()) {
    if (each->isVisible() && each->isEnabled()) group.append(each);
  }
  return group;
}

/// The controls that the keyboard should reach; of each group the first in the list.
QSet<QWidget*> ToBeReached(const QWidget& window) {
  QSet<QWidget*> controls;
  for (QWidget* each : window.findChildren<QWidget*>()) {
    const bool passedBy = std::ranges::any_of(
        kNotByTab, [&](const NotByTab& row) { return each->objectName() == QLatin1String(row.control); });
    if (IsControl(*each) && each->isVisible() && each->isEnabled() && each->window() == &window &&
        !passedBy) {
      controls.insert(GroupOf(each).first());
    }
  }
  return controls;
}

void PressIn(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
  QTest::keyClick(window.windowHandle(), key, modifiers);
}

/// The control with the focus after each press, until the first one has it again.
QList<QWidget*> RoundTrip(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
  QList<QWidget*> stops;
  const QWidget* start = QApplication::focusWidget();
  do {
    PressIn(window, key, modifiers);
    stops.append(QApplication::focusWidget());
  } while (stops.last() != start && stops.size() < kMostSteps);
  return stops;
}

QSet<QWidget*> Groups(const QList<QWidget*>& stops) {
  QSet<QWidget*> groups;
  for (QWidget* each : stops) groups.insert(GroupOf(each).first());
  return groups;
}

QStringList Names(const QSet<QWidget*>& widgets) {
  QStringList names;
  for (const QWidget* each : widgets) names.append(each != nullptr ? each->objectName() : QString());
  names.sort();
  return names;
}

/// The part of the window's picture that shows this control.
QImage PictureOf(QWidget& window, const QWidget& control) {
  return window.grab(QRect(control.mapTo(&window, QPoint(0, 0)), control.size())).toImage();
}

/// Stops the blinking of a field's caret, so that pictures can be compared.
class SteadyCaret {
 public:
  SteadyCaret() { QApplication::setCursorFlashTime(0); }
  ~SteadyCaret() { QApplication::setCursorFlashTime(m_before); }
  SteadyCaret(const SteadyCaret&) = delete;
  SteadyCaret& operator=(const SteadyCaret&) = delete;

 private:
  int m_before = QApplication::cursorFlashTime();
};

class EveryWindowsKeys : public EveryWindow {};

TEST_P(EveryWindowsKeys, TabReachesEachControlAndComesRound) {
  Visit([](QWidget& shown) {
    const QSet<QWidget*> wanted = ToBeReached(shown);
    if (wanted.isEmpty()) return;
    ASSERT_NE(QApplication::focusWidget(), nullptr) << "the keyboard is nowhere";
    const QSet<QWidget*> reached = Groups(RoundTrip(shown, Qt::Key_Tab));
    EXPECT_EQ(reached, wanted) << "reached " << Names(reached).join(u' ').toStdString() << "\nwanted "
                               << Names(wanted).join(u' ').toStdString();
  });
}

TEST_P(EveryWindowsKeys, ShiftTabGoesTheSameWayBack) {
  Visit([](QWidget& shown) {
    if (ToBeReached(shown).isEmpty()) return;
    QList<QWidget*> there = RoundTrip(shown, Qt::Key_Tab);
    QList<QWidget*> back = RoundTrip(shown, Qt::Key_Backtab, Qt::ShiftModifier);
    ASSERT_EQ(there.last(), back.last());
    there.removeLast();
    back.removeLast();
    std::ranges::reverse(back);
    EXPECT_EQ(there, back);
  });
}

TEST_P(EveryWindowsKeys, ArrowsReachTheOthersOfAGroup) {
  Visit([](QWidget& shown) {
    for (QWidget* first : ToBeReached(shown)) {
      const QList<QWidget*> group = GroupOf(first);
      if (group.size() < 2) continue;
      for (int i = 0; i < kMostSteps && !group.contains(QApplication::focusWidget()); ++i) {
        PressIn(shown, Qt::Key_Tab);
      }
      QSet<QWidget*> reached;
      const auto look = [&] {
        reached.insert(QApplication::focusWidget());
        EXPECT_FALSE(QApplication::focusWidget()->visibleRegion().isEmpty()) << "it is out of sight";
      };
      for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Left, Qt::Key_Down, Qt::Key_Right}) {
        for (qsizetype i = 0; i < group.size(); ++i, look()) PressIn(shown, key);
      }
      EXPECT_EQ(reached, QSet<QWidget*>(group.begin(), group.end()));
    }
  });
}

TEST_P(EveryWindowsKeys, ArrowsReachEachItemOfAMenu) {
  Visit([](QWidget& shown) {
    auto* menu = qobject_cast<QMenu*>(&shown);
    if (menu == nullptr) return;
    QSet<QAction*> wanted;
    for (QAction* each : menu->actions()) {
      if (!each->isSeparator() && each->isEnabled()) wanted.insert(each);
    }
    QSet<QAction*> reached;
    for (qsizetype i = 0; i < menu->actions().size(); ++i) {
      PressIn(shown, Qt::Key_Down);
      reached.insert(menu->activeAction());
    }
    EXPECT_FALSE(wanted.isEmpty());
    EXPECT_EQ(reached, wanted);
  });
}

TEST_P(EveryWindowsKeys, OneSeesWhereTheFocusIs) {
  const SteadyCaret steady;
  Visit([](QWidget& shown) {
    if (ToBeReached(shown).size() < 2) return;
    for (QWidget* control : RoundTrip(shown, Qt::Key_Tab)) {
      // Once round to it and on to the next.
      for (int i = 0; i < kMostSteps && QApplication::focusWidget() != control; ++i) {
        PressIn(shown, Qt::Key_Tab);
      }
      const QImage with = PictureOf(shown, *control);
      PressIn(shown, Qt::Key_Tab);
      ASSERT_NE(QApplication::focusWidget(), control);
      EXPECT_NE(PictureOf(shown, *control), with) << control->objectName().toStdString();
    }
  });
}

INSTANTIATE_TEST_SUITE_P(All, EveryWindowsKeys, ::testing::ValuesIn(WindowCases()), NameOfCase);

}  // namespace
}  // namespace quarn::test
