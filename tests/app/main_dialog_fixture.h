#pragma once

#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include "app/app_fixture.h"
#include "app/main_dialog.h"
#include "support/waits.h"
#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn::test {

/// The main dialog over a program of its own; what is asked and told is in the journal.
class MainDialog : public AppTest {
 protected:
  void SetUp() override {
    MakeFolders();
    WriteSettings(program.workingSettingsFile, {});
    dialog.SetTitle(QString());
    dialog.UpdateMenuState();
    dialog.ShowUserFile();
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog, kLongestWaitMs));
  }
  QAction* Action(int id) {
    for (QAction* action : dialog.findChildren<QAction*>()) {
      if (action->property(kControlIdProperty) == id) return action;
    }
    return nullptr;
  }
  template <typename Widget>
  Widget* Control(int id) {
    for (Widget* each : dialog.findChildren<Widget*>()) {
      if (each->property(kControlIdProperty) == id) return each;
    }
    return nullptr;
  }
  /// Of the primary screen, which need not begin at 0, 0.
  static QPoint ScreenCorner() { return QGuiApplication::primaryScreen()->geometry().topLeft(); }
  /// The main dialog with its frame, from that corner.
  [[nodiscard]] QRect MainOnScreen() const { return {dialog.pos() - ScreenCorner(), OuterSize(dialog)}; }
  QPushButton& Switch() { return *Control<QPushButton>(1001); }
  QWidget* TerminalScreen() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget != &dialog && widget->isVisible() &&
          widget->objectName() == QStringLiteral("CTerminalScreen")) {
        return widget;
      }
    }
    return nullptr;
  }

  QWidget* FunctionKeyTable() {
    auto* table = dialog.findChild<QDialog*>(QStringLiteral("CSetMem"));
    return table != nullptr && table->isVisible() ? table : nullptr;
  }
  static QList<QWidget*> Windows(const QString& title) {
    QList<QWidget*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->windowTitle() == title) windows.append(widget);
    }
    return windows;
  }
  /// The windows of this kind that are there to be seen.
  QList<QWidget*> Shown(const char* name) {
    QList<QWidget*> shown;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->objectName() == QLatin1String(name)) shown.append(widget);
    }
    return shown;
  }

  CQuarnDlg dialog{program};
};

}  // namespace quarn::test
