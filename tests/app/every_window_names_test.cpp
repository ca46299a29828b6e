// Names and roles of the controls of every window, for assistive tools.

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QSet>

#include "app/every_window.h"
#include "app/link_label.h"
#include "dialogs/terminal/terminal_screen.h"
#include "settings/settings_table.h"
#include "ui/static_text.h"

namespace quarn::test {
namespace {

/// Every visible node of the window's accessibility tree, the window's own first.
void Collect(QAccessibleInterface* node, QList<QAccessibleInterface*>& nodes) {
  ASSERT_NE(node, nullptr);
  if (node->state().invisible) return;
  nodes.append(node);
  for (int i = 0; i < node->childCount(); ++i) Collect(node->child(i), nodes);
}

QList<QAccessibleInterface*> NodesOf(QWidget& window) {
  QList<QAccessibleInterface*> nodes;
  Collect(QAccessible::queryAccessibleInterface(&window), nodes);
  return nodes;
}

QString NameOf(QAccessibleInterface* node) { return node->text(QAccessible::Name); }

bool IsInteractive(QAccessible::Role role) {
  static const QSet<QAccessible::Role> roles{
      QAccessible::Button,       QAccessible::RadioButton, QAccessible::CheckBox, QAccessible::ComboBox,
      QAccessible::EditableText, QAccessible::Link,        QAccessible::ListItem, QAccessible::Cell,
      QAccessible::Row,          QAccessible::MenuItem,    QAccessible::PopupMenu};
  return roles.contains(role);
}

/// The expected role of a control of this kind; nullopt for a widget that is not a control.
std::optional<QAccessible::Role> RoleOfKind(const QWidget& widget) {
  if (qobject_cast<const QRadioButton*>(&widget) != nullptr) return QAccessible::RadioButton;
  if (qobject_cast<const QCheckBox*>(&widget) != nullptr) return QAccessible::CheckBox;
  if (qobject_cast<const QPushButton*>(&widget) != nullptr) return QAccessible::Button;
  if (qobject_cast<const QComboBox*>(&widget) != nullptr) return QAccessible::ComboBox;
  if (qobject_cast<const QLineEdit*>(&widget) != nullptr) return QAccessible::EditableText;
  if (dynamic_cast<const LinkLabel*>(&widget) != nullptr) return QAccessible::Link;
  if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
    return label->pixmap().isNull() ? QAccessible::StaticText : QAccessible::Graphic;
  }
  if (const auto* line = dynamic_cast<const StaticText*>(&widget)) {
    return line->IsField() ? QAccessible::EditableText : QAccessible::StaticText;
  }
  return {};
}

class EveryWindowsNames : public EveryWindow {};

TEST_P(EveryWindowsNames, AreThereForEachControl) {
  Visit([](QWidget& shown) {
    const QList<QAccessibleInterface*> nodes = NodesOf(shown);
    ASSERT_FALSE(nodes.isEmpty());
    EXPECT_NE(NameOf(nodes.first()), QString()) << "of the window";
    QSet<std::pair<int, QString>> told;
    for (QAccessibleInterface* node : nodes) {
      if (!IsInteractive(node->role())) continue;
      const std::string what = std::string(qAccessibleRoleString(node->role())) + ' ' +
                               (node->object() != nullptr ? node->object()->objectName().toStdString() : "");
      EXPECT_NE(NameOf(node).trimmed(), QString()) << what;
      if (const auto* box = qobject_cast<QComboBox*>(node->object())) {
        // On some systems the selected item is the name; then its label counts.
        EXPECT_NE(box->accessibleName(), QString()) << what;
        EXPECT_FALSE(node->relations(QAccessible::Label).isEmpty()) << what;
      }
      const std::pair<int, QString> one(node->role(), NameOf(node));
      EXPECT_FALSE(told.contains(one)) << "two are called " << one.second.toStdString() << ": " << what;
      told.insert(one);
    }
  });
}

TEST_P(EveryWindowsNames, ComeWithTheRightRole) {
  Visit([](QWidget& shown) {
    QHash<QObject*, QAccessible::Role> roles;
    for (QAccessibleInterface* node : NodesOf(shown)) roles.insert(node->object(), node->role());
    for (QWidget* widget : shown.findChildren<QWidget*>()) {
      const std::optional<QAccessible::Role> wanted = RoleOfKind(*widget);
      if (!wanted || !widget->isVisible() || widget->window() != &shown) continue;
      const std::string what = widget->objectName().toStdString();
      ASSERT_TRUE(roles.contains(widget)) << what << " is not in the tree";
      EXPECT_EQ(roles.value(widget), *wanted) << what;
    }
  });
}

TEST_P(EveryWindowsNames, TellAllThatALabelOrAPictureShows) {
  Visit([](QWidget& shown) {
    for (QAccessibleInterface* node : NodesOf(shown)) {
      if (const auto* label = qobject_cast<QLabel*>(node->object())) {
        const bool shows = !label->text().isEmpty() || !label->pixmap().isNull();
        EXPECT_EQ(NameOf(node).isEmpty(), !shows) << label->objectName().toStdString();
      }
      const auto* line = dynamic_cast<StaticText*>(node->object());
      if (line != nullptr && !line->IsField()) {
        EXPECT_EQ(NameOf(node), line->Text());
      }
    }
  });
}

TEST_P(EveryWindowsNames, ReachEachItemOfAMenu) {
  Visit([](QWidget& shown) {
    const auto* menu = qobject_cast<QMenu*>(&shown);
    if (menu == nullptr) return;
    QStringList names;
    for (QAccessibleInterface* node : NodesOf(shown)) {
      if (node->role() == QAccessible::MenuItem) names.append(NameOf(node));
    }
    QStringList texts;
    for (const QAction* action : menu->actions()) {
      if (!action->isSeparator()) texts.append(action->text().remove(u'&'));
    }
    EXPECT_FALSE(texts.isEmpty());
    EXPECT_EQ(names, texts);
  });
}

TEST_P(EveryWindowsNames, LetATestFindEachControl) {
  Visit([](QWidget& shown) {
    QSet<QString> found;
    for (const QWidget* widget : shown.findChildren<QWidget*>()) {
      const std::optional<QAccessible::Role> role = RoleOfKind(*widget);
      if (!role || !IsInteractive(*role) || widget->window() != &shown) continue;
      const QString name = widget->objectName();
      EXPECT_NE(name, QString()) << qAccessibleRoleString(*role) << " of "
                                 << shown.objectName().toStdString();
      EXPECT_FALSE(found.contains(name)) << "two are called " << name.toStdString();
      found.insert(name);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(All, EveryWindowsNames, ::testing::ValuesIn(WindowCases()), NameOfCase);

/// The Terminal Screen alone, with its command line.
class TerminalScreensNames : public MainDialog {
 protected:
  void SetUp() override {
    program.settings = DefaultSettings();
    MainDialog::SetUp();
  }
  CTerminalScreen& Open() {
    dialog.OpenTerminalScreen();
    return dynamic_cast<CTerminalScreen&>(*TerminalScreen());
  }
  QAccessibleInterface* CommandLine() {
    auto* shown = TerminalScreen()->findChild<StaticText*>(QStringLiteral("commandLine"));
    return QAccessible::queryAccessibleInterface(shown);
  }
};

TEST_F(TerminalScreensNames, TheCommandLineIsAFieldWithTextAndCaret) {
  QWidget& typedIn = *Open().focusWidget();
  QTest::keyClicks(&typedIn, QStringLiteral("meas?"));
  QTest::keyClick(&typedIn, Qt::Key_Left);
  QAccessibleInterface* field = CommandLine();
  EXPECT_EQ(NameOf(field), QStringLiteral("Command line"));
  EXPECT_EQ(field->text(QAccessible::Value), QStringLiteral("meas?"));
  QAccessibleTextInterface* text = field->textInterface();
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->text(0, text->characterCount()), QStringLiteral("meas?"));
  EXPECT_EQ(text->text(1, 3), QStringLiteral("ea"));
  EXPECT_EQ(text->cursorPosition(), 4);
  EXPECT_EQ(text->characterCount(), 5);
  const QRect first = text->characterRect(0);
  EXPECT_TRUE(field->rect().contains(first));
  EXPECT_EQ(text->characterRect(1).left(), first.right() + 1);
  EXPECT_EQ(text->offsetAtPoint(text->characterRect(3).center()), 3);
  EXPECT_EQ(text->offsetAtPoint(first.topLeft() - QPoint(5, 0)), -1);
  // The blinking caret is not part of the text.
  QTest::qWait(600);
  EXPECT_EQ(NameOf(field), QStringLiteral("Command line"));
  EXPECT_EQ(field->text(QAccessible::Value), QStringLiteral("meas?"));
}

TEST_F(TerminalScreensNames, TheLogsLinesAreRead) {
  program.log.AppendLogText("[id]\rSIM-1\r");
  QStringList lines;
  for (QAccessibleInterface* node : NodesOf(Open())) {
    if (node->role() == QAccessible::StaticText) lines.append(NameOf(node).trimmed());
  }
  lines.removeAll(QString());
  EXPECT_EQ(lines, (QStringList{">", "[id]", "SIM-1"}));
}

TEST_F(TerminalScreensNames, TheSwitchSaysWhatItSwitches) {
  QAccessibleInterface* node = QAccessible::queryAccessibleInterface(&Switch());
  EXPECT_EQ(NameOf(node), QStringLiteral("ON"));
  EXPECT_EQ(node->text(QAccessible::Description), QStringLiteral("Terminal Screen"));
}

TEST_F(TerminalScreensNames, TheLinkOfTheAboutBoxCanBePressed) {
  int pressed = 0;
  LinkLabel link(
      QStringLiteral("https://www.halvo.example"), [&] { ++pressed; }, nullptr);
  QAccessibleInterface* node = QAccessible::queryAccessibleInterface(&link);
  ASSERT_NE(node->actionInterface(), nullptr);
  ASSERT_TRUE(node->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
  node->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(pressed, 1);
}

}  // namespace
}  // namespace quarn::test
