#pragma once

#include <functional>

#include "system/e2e/commands.h"

namespace quarn::test {

/// An end-to-end test of the dialogs that the menu opens: the effects of their controls, also on the working
/// settings file.
class Dialogs : public Commands {
 protected:
  using Commands::Commands;

  /// Opens a dialog from its menu and waits until its controls can be clicked on.
  void OpenDialog(const QString& menu, const QString& item, const QString& titlePattern);
  /// Moves a dialog off the main window, whose menu it may cover.
  void MoveAside(const QString& titlePattern, QPoint place);
  /// Clicks on the control with this name until the effect is seen: an early click may be lost.
  void ClickUntil(const QString& titlePattern, const QString& name, const std::function<bool()>& effect);
  /// Opens a drop-down list with the mouse and picks an item by typing it. The lists count from the top.
  void Pick(const QString& titlePattern, qsizetype list, const QString& item);
  /// The drop-down list; its name is the item it shows.
  std::optional<Control> FindList(const QString& titlePattern, qsizetype list);
  /// The number of visible windows of the program, including menus and lists.
  qsizetype CountWindows();
  void PressOk(const QString& titlePattern);
  /// Clicks on the button that the window manager puts on the frame.
  void ClickCloseBox(const QString& titlePattern);

  bool IsChecked(const QString& titlePattern, const QString& name);
  bool IsEnabled(const QString& titlePattern, const QString& name);
  /// Records the file for later comparisons. Call it when the program has started.
  void NoteSettingsFile() { m_noted = BytesOf(SettingsFile()); }
  /// The file is as recorded, with this value.
  [[nodiscard]] bool FileHas(const QByteArray& key, const QByteArray& value) const;
  /// Waits for the same, and records it.
  ::testing::AssertionResult FileBecomes(const QByteArray& key, const QByteArray& value);
  ::testing::AssertionResult FileBecomes(const QList<QPair<QByteArray, QByteArray>>& values);
  [[nodiscard]] ::testing::AssertionResult FileIsUnchanged() const;
  ::testing::AssertionResult TitleBecomes(const QString& titlePattern, const QString& title);

  /// Waits until a window has this size, with the frame that the window manager has put round it.
  ::testing::AssertionResult OuterSizeBecomes(const QString& window, QSize size);

  const QString kOk = QStringLiteral("OK");
  const QString kCancel = QStringLiteral("CANCEL");

 private:
  [[nodiscard]] QByteArray NotedWith(const QList<QPair<QByteArray, QByteArray>>& values) const;

  QByteArray m_noted;
};

}  // namespace quarn::test
